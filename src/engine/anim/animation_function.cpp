#include "anim/animation_function.h"

#include "content/extended_trig.h"
#include "content/numbers.h"
#include "content/short_trig.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cmath>
#include <iterator>

// ---- time ---------------------------------------------------------------------

// The caller's time brought into the loop. Times up to and including the loop's
// end are left alone, so the first pass runs from 0 straight through. All
// arithmetic is unsigned and wraps at 32 bits; a modulus of 0 means no loop.
static uint32_t loop_time(const animation_function& function, uint32_t time)
{
    const uint32_t begin = static_cast<uint32_t>(truncate_to_int(function.loop_begin));
    const uint32_t end = static_cast<uint32_t>(truncate_to_int(function.loop_end));
    if (time <= end)
        return time;

    const uint32_t range = end - begin;
    if (function.loop_type == loop_around && range != 0)
        return (time - begin) % range + begin;
    if (function.loop_type == loop_ping_pong && 2 * range != 0) {
        // Quirk: the begin is not added back, so that the function swings between
        // 0 and the range ("ping-pong does not add its begin back").
        const uint32_t place = (time - begin) % (2 * range);
        return place <= range ? place : 2 * range - place;
    }
    return time;
}

namespace {

struct segment_place {
    uint32_t segment;
    uint32_t time; // ticks from the segment's start, at most its length
};

} // namespace

// A boundary belongs to the earlier segment; beyond the last one its end is held.
static segment_place find_segment(const animation_function& function, uint32_t time)
{
    assert(function.segment_count > 0);
    const uint32_t count = std::min<uint32_t>(function.segment_count, max_segments);
    uint32_t i = 0;
    while (time > function.segment_length[i]) {
        if (i + 1 == count)
            return {i, function.segment_length[i]};
        time -= function.segment_length[i];
        ++i;
    }
    return {i, time};
}

// ---- spline -------------------------------------------------------------------

constexpr int spline_points = static_cast<int>(max_segment_params) / 2;
constexpr int first_spline_point = 2;                                     // two padding points lead
constexpr int last_spline_point = first_spline_point + spline_points - 1; // and two follow

namespace {

struct spline_point {
    long double x;
    long double y;
};

} // namespace

// The control points with two padding points on either side, made strictly
// increasing: a point less than one tick after its predecessor moves there and
// takes the predecessor's value. So unused points (0, 0) become a flat tail.
static void pad_spline(const float params[max_segment_params], spline_point points[last_spline_point + 3])
{
    points[0] = {-999999.0L, params[1]};
    points[1] = {params[0] - 1.0L, params[1]};
    for (int k = 0; k < spline_points; ++k) {
        const spline_point& previous = points[first_spline_point + k - 1];
        spline_point& point = points[first_spline_point + k];
        point = {params[2 * k], params[2 * k + 1]};
        if (previous.x + 1.0L > point.x)
            point = {previous.x + 1.0L, previous.y};
    }
    const spline_point& last = points[last_spline_point];
    points[last_spline_point + 1] = {last.x + 999999.0L, last.y};
    points[last_spline_point + 2] = {9999999.0L, last.y};
}

// The value at distance `width` beyond `inner`, on the line from it away from
// `outer`'s side: the neighbour moved along its chord.
static long double equalised_neighbour(long double rise, long double run, long double width, long double value)
{
    return (run == 0.0L ? 0.0L : rise / run) * width + value;
}

// Catmull-Rom through the control points. Left of the first padded interval the
// value is the first point's, right of the last complete one the last point's.
static long double spline_value(const float params[max_segment_params], long double x)
{
    spline_point points[last_spline_point + 3];
    pad_spline(params, points);
    if (!(x > points[1].x))
        return points[1].y;

    int j = first_spline_point;
    while (j <= last_spline_point + 1 && x > points[j].x)
        ++j;
    if (j > last_spline_point + 1)
        return points[last_spline_point].y;

    assert(j >= 2 && j + 1 < static_cast<int>(std::size(points)));
    const spline_point& p0 = points[j - 2];
    const spline_point& p1 = points[j - 1];
    const spline_point& p2 = points[j];
    const spline_point& p3 = points[j + 1];
    const long double width = p2.x - p1.x;
    if (width == 0.0L)
        return p1.y;

    const long double y0 = equalised_neighbour(p1.y - p0.y, p0.x - p1.x, width, p1.y);
    const long double y3 = equalised_neighbour(p3.y - p2.y, p3.x - p2.x, width, p2.y);
    const long double u = (x - p1.x) / width;
    return 0.5L
        * (2.0L * p1.y + (p2.y - y0) * u + (2.0L * y0 - 5.0L * p1.y + 4.0L * p2.y - y3) * (u * u)
            + (-y0 + 3.0L * p1.y - 3.0L * p2.y + y3) * (u * u * u));
}

// ---- in double precision --------------------------------------------------------

// Values are carried in extended precision and rounded once to single precision. Double precision
// leads to the same single one unless a boundary between two of those lies within its error: once
// in some 100,000 times, and then extended precision decides. Errors below are how far a value may
// be from the one in extended precision, with a factor of two and more to spare.

constexpr double step = 0x1p-52; // of double precision, relative

// False, and nothing written, where extended precision must decide, as for zeros whose sign is in
// doubt and for what is endless or no number. Without an error the value is the same, zeros too.
static bool settles(double value, double error, float& single)
{
    const float low = static_cast<float>(value - error);
    const float high = static_cast<float>(-(-value - error)); // value + error, but for the sign of zeros
    if (!std::isfinite(error) || std::bit_cast<uint32_t>(low) != std::bit_cast<uint32_t>(high))
        return false;
    single = low;
    return true;
}

constexpr double max_short_angle = 1.0e6; // radians; larger ones are left to extended precision

// `angle` within max_short_angle. Off by less than 4 steps, and as much as the angle is.
static double sine_of(double angle)
{
    assert(std::fabs(angle) <= max_short_angle);
    const double half = angle < 0.0 ? -0.5 : 0.5;
    const int32_t quarters = static_cast<int32_t>(angle * 0.63661977236758134 + half);
    const double rest = (angle - quarters * quarter_high) - quarters * quarter_low;
    const double value = (quarters & 1) != 0 ? short_cosine(rest) : short_sine(rest);
    return (quarters & 2) != 0 ? -value : value;
}

// factor * sin(x * p1 - p2) + p3; `factor_size` is the sum of what the factor is made of, without signs.
static bool settles_product(
    const float p[max_segment_params], double factor, double factor_size, double x, float& single)
{
    const double turned = x * static_cast<double>(p[1]);
    const double angle = turned - static_cast<double>(p[2]);
    if (!(std::fabs(angle) <= max_short_angle))
        return false;
    const double added = static_cast<double>(p[3]);
    const double angle_size = std::fabs(turned) + std::fabs(static_cast<double>(p[2]));
    const double error = (factor_size * (angle_size + 8.0) + std::fabs(added)) * (2.0 * step);
    return error > 0.0 && settles(sine_of(angle) * factor + added, error, single);
}

static bool settles_sine(const float p[max_segment_params], double x, float& single)
{
    const double factor = static_cast<double>(p[0]);
    return settles_product(p, factor, std::fabs(factor), x, single);
}

static bool settles_sine_linear(const float p[max_segment_params], double x, float& single)
{
    const double grown = x * static_cast<double>(p[0]);
    const double begin = static_cast<double>(p[4]);
    return settles_product(p, grown + begin, std::fabs(grown) + std::fabs(begin), x, single);
}

namespace {

struct near_point {
    double x;
    double y;
};

} // namespace

// Whether adding ticks to a place is exact, so that comparing what they lead to cannot go wrong.
static bool adds_exactly(double place)
{
    const double size = std::fabs(place);
    return (size >= 0x1p-20 && size <= 0x1p28) || size == 0.0;
}

// The point behind `previous`, as pad_spline makes it; k counts from the first control point. False: the place
// of the one behind it would not be exact.
static bool next_point(const float params[max_segment_params], int k, const near_point& previous, near_point& point)
{
    if (k >= spline_points) {
        point = {k == spline_points ? previous.x + 999999.0 : 9999999.0, previous.y};
        return true;
    }
    point = {static_cast<double>(params[2 * k]), static_cast<double>(params[2 * k + 1])};
    if (previous.x + 1.0 > point.x) {
        point = {previous.x + 1.0, previous.y};
        return true;
    }
    return adds_exactly(point.x);
}

// The same sum as in extended precision. Each of its terms is at most 24 times the largest of what
// it is made of, and takes some ten steps.
static bool settles_between(const near_point p[4], double x, float& single)
{
    const double width = p[2].x - p[1].x;
    const double moved0 = (p[1].y - p[0].y) / (p[0].x - p[1].x) * width;
    const double run3 = p[3].x - p[2].x;
    const double moved3 = (run3 == 0.0 ? 0.0 : (p[3].y - p[2].y) / run3) * width;
    const double y0 = moved0 + p[1].y;
    const double y1 = p[1].y;
    const double y2 = p[2].y;
    const double y3 = moved3 + p[2].y;
    const double u = (x - p[1].x) / width;
    const double value = 0.5
        * (2.0 * y1 + (y2 - y0) * u + (2.0 * y0 - 5.0 * y1 + 4.0 * y2 - y3) * (u * u)
            + (-y0 + 3.0 * y1 - 3.0 * y2 + y3) * (u * u * u));
    const double size = std::fabs(moved0) + std::fabs(y1) + std::fabs(moved3) + std::fabs(y2);
    return settles(value, size * (256.0 * step), single);
}

// Looks at no more points than it needs. What lies outside all padded points is left to extended precision.
static bool settles_spline(const float params[max_segment_params], double x, float& single)
{
    near_point points[last_spline_point + 3];
    points[0] = {-999999.0, static_cast<double>(params[1])};
    points[1] = {static_cast<double>(params[0]) - 1.0, points[0].y};
    if (!(x > points[1].x) || !adds_exactly(static_cast<double>(params[0])))
        return false;
    int j = first_spline_point - 1;
    do {
        ++j;
        if (j > last_spline_point + 1 || !next_point(params, j - first_spline_point, points[j - 1], points[j]))
            return false;
    } while (x > points[j].x);
    return next_point(params, j + 1 - first_spline_point, points[j], points[j + 1])
        && settles_between(points + j - 2, x, single);
}

// ---- evaluation ---------------------------------------------------------------

static bool is_known_segment(int32_t type)
{
    return type >= 0 && type < segment_kind_count;
}

// The shortest formulas are as fast in extended precision.
static float segment_value(int32_t type, const float p[max_segment_params], uint32_t time)
{
    assert(is_known_segment(type));
    const long double x = time;
    float single = 1.0f;
    switch (static_cast<segment_kind>(type)) {
    case segment_constant:
        return p[0];
    case segment_linear:
        return static_cast<float>(x * p[0] + p[1]);
    case segment_quadratic:
        return static_cast<float>((x - p[1]) * (x - p[1]) * p[0] + p[2]);
    case segment_sine:
        if (!settles_sine(p, time, single))
            single = static_cast<float>(extended_sine(x * p[1] - p[2]) * p[0] + p[3]);
        return single;
    case segment_spline:
        if (!settles_spline(p, time, single))
            single = static_cast<float>(spline_value(p, x));
        return single;
    case segment_sine_linear:
        if (!settles_sine_linear(p, time, single))
            single = static_cast<float>(extended_sine(p[1] * x - p[2]) * (x * p[0] + p[4]) + p[3]);
        return single;
    case segment_kind_count:
        break;
    }
    return single;
}

float evaluate_function(animation_function& function, uint32_t time)
{
    if (function.segment_count == 0)
        return 1.0f;
    if (time == function.cached_time)
        return function.cached_value;
    function.cached_time = time;

    const uint32_t looped = function.loop_type == loop_off ? time : loop_time(function, time);
    const segment_place place = find_segment(function, looped);
    assert(place.segment < max_segments && place.time <= function.segment_length[place.segment]);
    const int32_t type = function.segment_type[place.segment];
    // Quirk: the time is remembered already but the value is not, so that a second
    // call at the same time returns the value before ("an unknown formula gives 1
    // once and then what was cached").
    if (!is_known_segment(type))
        return 1.0f;
    function.cached_value = segment_value(type, function.segment_params[place.segment], place.time);
    return function.cached_value;
}
