#include "anim/animation_function.h"

#include "content/extended_trig.h"
#include "content/numbers.h"

#include <algorithm>
#include <cassert>
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

// ---- evaluation ---------------------------------------------------------------

static bool is_known_segment(int32_t type)
{
    return type >= 0 && type < segment_kind_count;
}

// Extended precision throughout; the caller rounds once.
static long double segment_value(int32_t type, const float p[max_segment_params], long double x)
{
    assert(is_known_segment(type));
    switch (static_cast<segment_kind>(type)) {
    case segment_constant:
        return p[0];
    case segment_linear:
        return x * p[0] + p[1];
    case segment_quadratic:
        return (x - p[1]) * (x - p[1]) * p[0] + p[2];
    case segment_sine:
        return extended_sine(x * p[1] - p[2]) * p[0] + p[3];
    case segment_spline:
        return spline_value(p, x);
    case segment_sine_linear:
        return extended_sine(p[1] * x - p[2]) * (x * p[0] + p[4]) + p[3];
    case segment_kind_count:
        break;
    }
    return 1.0L;
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
    function.cached_value = static_cast<float>(segment_value(type, function.segment_params[place.segment], place.time));
    return function.cached_value;
}
