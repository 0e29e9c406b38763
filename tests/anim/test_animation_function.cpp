#include "anim/animation_function.h"

#include "builders.h"

#include <doctest/doctest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

// The value at a time without the help of a cache.
static float fresh_value(animation_function function, uint32_t time)
{
    function.cached_time = no_cached_time;
    function.cached_value = 0.0f;
    return evaluate_function(function, time);
}

// A function whose value is its mapped time, with a loop.
static animation_function looping(uint8_t loop_type, float begin, float end)
{
    animation_function function = linear_function();
    function.loop_type = loop_type;
    function.loop_begin = begin;
    function.loop_end = end;
    return function;
}

// ---- cache ----------------------------------------------------------------------

TEST_CASE("An empty function is 1 and remembers nothing")
{
    animation_function function = empty_function();
    CHECK(evaluate_function(function, 5) == 1.0f);
    CHECK(function.cached_time == no_cached_time);
    CHECK(function.cached_value == 0.0f);
}

TEST_CASE("An empty function is 1 even at the time that a fresh record holds")
{
    animation_function function = empty_function();
    CHECK(evaluate_function(function, 0xFFFFFFFFu) == 1.0f);
}

TEST_CASE("A fresh function asked at the last possible time gives the cached 0")
{
    animation_function function = constant_function(7.0f);
    CHECK(evaluate_function(function, 0xFFFFFFFFu) == 0.0f);
}

TEST_CASE("Asking twice at one time does not compute twice")
{
    animation_function function = constant_function(7.0f);
    CHECK(evaluate_function(function, 10) == 7.0f);
    function.segment_params[0][0] = 8.0f;
    CHECK(evaluate_function(function, 10) == 7.0f);
    CHECK(evaluate_function(function, 11) == 8.0f);
}

TEST_CASE("The cache is keyed on the caller's time, not on the looped one")
{
    animation_function function = looping(loop_around, 0, 100);
    CHECK(evaluate_function(function, 150) == 50.0f);
    CHECK(function.cached_time == 150);
    CHECK(function.cached_value == 50.0f);
}

TEST_CASE("An unknown formula gives 1 once and then what was cached")
{
    for (const int32_t type : {6, 255, -1, std::numeric_limits<int32_t>::min()}) {
        animation_function function = constant_function(7.0f);
        add_segment(function, type, 100, {3.0f});
        CHECK(evaluate_function(function, 50) == 7.0f);
        CHECK(evaluate_function(function, 150) == 1.0f);
        CHECK(evaluate_function(function, 150) == 7.0f);
        CHECK(function.cached_time == 150);
    }
}

TEST_CASE("An unknown formula on a fresh record gives 1 and then 0")
{
    animation_function function = one_segment(17, 100, {3.0f});
    CHECK(evaluate_function(function, 50) == 1.0f);
    CHECK(evaluate_function(function, 50) == 0.0f);
}

// ---- segments -------------------------------------------------------------------

TEST_CASE("A boundary belongs to the earlier segment and the end is held")
{
    animation_function function = linear_function(1.0f, 0.0f, 500);
    add_segment(function, segment_linear, 500, {1.0f, 10000.0f});
    CHECK(fresh_value(function, 0) == 0.0f);
    CHECK(fresh_value(function, 500) == 500.0f);
    CHECK(fresh_value(function, 501) == 10001.0f);
    CHECK(fresh_value(function, 1000) == 10500.0f);
    CHECK(fresh_value(function, 1001) == 10500.0f);
    CHECK(fresh_value(function, 10000) == 10500.0f);
    CHECK(fresh_value(function, 0xFFFFFFFEu) == 10500.0f);
}

TEST_CASE("A segment of no length is passed over after its own tick")
{
    animation_function function = linear_function(1.0f, 0.0f, 0);
    add_segment(function, segment_linear, 0, {1.0f, 100.0f});
    add_segment(function, segment_linear, 10, {1.0f, 200.0f});
    CHECK(fresh_value(function, 0) == 0.0f);
    CHECK(fresh_value(function, 1) == 201.0f);
}

TEST_CASE("All sixteen segments are walked")
{
    animation_function function = empty_function();
    for (uint32_t i = 0; i < max_segments; ++i)
        add_segment(function, segment_constant, 10, {static_cast<float>(i)});
    CHECK(fresh_value(function, 1) == 0.0f);
    CHECK(fresh_value(function, 155) == 15.0f);
    CHECK(fresh_value(function, 900) == 15.0f);
}

TEST_CASE("A segment count beyond the table reads no further than the table")
{
    animation_function function = empty_function();
    for (uint32_t i = 0; i < max_segments; ++i)
        add_segment(function, segment_constant, 1, {static_cast<float>(i)});
    function.segment_count = 255;
    CHECK(fresh_value(function, 4000000000u) == 15.0f);
}

TEST_CASE("Each formula gives its value")
{
    CHECK(fresh_value(one_segment(segment_constant, 100, {4.25f}), 30) == 4.25f);
    CHECK(fresh_value(one_segment(segment_linear, 100, {0.5f, -2.0f}), 30) == 13.0f);
    CHECK(fresh_value(one_segment(segment_quadratic, 100, {2.0f, 10.0f, 3.0f}), 30) == 803.0f);
    // sin(30 * 0.25 - 7.5) = 0
    CHECK(fresh_value(one_segment(segment_sine, 100, {5.0f, 0.25f, 7.5f, 1.5f}), 30) == 1.5f);
    CHECK(fresh_value(one_segment(segment_sine, 100, {5.0f, 0.25f, 6.5f, 1.5f}), 30)
        == doctest::Approx(1.5 + 5.0 * 0.84147098480789650665));
}

TEST_CASE("In the fifth formula d is added last and e belongs to the growing factor")
{
    // sin(2 * 0.5 - 0) = 0.8414709848; times (2 * 3 + 100), plus 1000
    CHECK(fresh_value(one_segment(segment_sine_linear, 100, {3.0f, 0.5f, 0.0f, 1000.0f, 100.0f}), 2)
        == doctest::Approx(1000.0 + 106.0 * 0.84147098480789650665));
}

TEST_CASE("The time is not rounded to single precision before it is used")
{
    // 16777217 = 2^24 + 1 has no single-precision form; times 1, minus 2^24, is 1.
    const animation_function function = linear_function(1.0f, -16777216.0f, 0xFFFFFFF0u);
    CHECK(fresh_value(function, 16777217) == 1.0f);
    CHECK(fresh_value(function, 4294967040u) == 4278189824.0f);
}

TEST_CASE("Steps between are not rounded to single precision")
{
    // (2^24 + 1) - 2^24 - 1 would lose the 1; 16777217 * 3 - 50331648 = 3
    CHECK(fresh_value(linear_function(3.0f, -50331648.0f, 0xFFFFFFF0u), 16777217) == 3.0f);
}

// ---- loops ----------------------------------------------------------------------

TEST_CASE("A loop plays to its end and then repeats its range")
{
    const animation_function function = looping(loop_around, 1000, 3000);
    CHECK(fresh_value(function, 500) == 500.0f);
    CHECK(fresh_value(function, 3000) == 3000.0f);
    CHECK(fresh_value(function, 3001) == 1001.0f);
    CHECK(fresh_value(function, 4999) == 2999.0f);
    CHECK(fresh_value(function, 5000) == 1000.0f);
    CHECK(fresh_value(function, 5001) == 1001.0f);
}

TEST_CASE("Ping-pong does not add its begin back")
{
    const animation_function function = looping(loop_ping_pong, 1000, 3000);
    CHECK(fresh_value(function, 3000) == 3000.0f);
    CHECK(fresh_value(function, 3500) == 1500.0f);
    CHECK(fresh_value(function, 5000) == 0.0f);
    CHECK(fresh_value(function, 5500) == 500.0f);
    CHECK(fresh_value(function, 6000) == 1000.0f);
    CHECK(fresh_value(function, 6999) == 1999.0f);
    CHECK(fresh_value(function, 7000) == 2000.0f);
    CHECK(fresh_value(function, 7001) == 1999.0f);
}

TEST_CASE("Loop bounds are truncated")
{
    const animation_function function = looping(loop_around, 10.9f, 20.9f);
    CHECK(fresh_value(function, 20) == 20.0f);
    CHECK(fresh_value(function, 21) == 11.0f);
    CHECK(fresh_value(function, 30) == 10.0f);
}

TEST_CASE("An end equal to the begin does not loop, also when only truncation makes it so")
{
    for (const uint8_t type : {loop_around, loop_ping_pong}) {
        CHECK(fresh_value(looping(type, 100, 100), 250) == 250.0f);
        CHECK(fresh_value(looping(type, 100.2f, 100.9f), 250) == 250.0f);
        CHECK(fresh_value(looping(type, 0, 0), 250) == 250.0f);
    }
}

TEST_CASE("An unknown loop type leaves the time alone")
{
    CHECK(fresh_value(looping(3, 10, 20), 250) == 250.0f);
    CHECK(fresh_value(looping(255, 10, 20), 250) == 250.0f);
    CHECK(fresh_value(looping(loop_off, 10, 20), 250) == 250.0f);
}

TEST_CASE("Loop arithmetic wraps at 32 bits")
{
    // begin -50 is 4294967246; the range is 20 + 50 = 70; (25 + 50) mod 70 = 5, back to -45.
    animation_function function = looping(loop_around, -50, 20);
    function.segment_length[0] = 0xFFFFFFFFu;
    CHECK(fresh_value(function, 25) == static_cast<float>(0u - 45u));
    // the range 4294967296 - 10 + 0 wraps to 0xFFFFFFF6; 5 - 10 is 0xFFFFFFFB, rest 5, plus 10.
    CHECK(fresh_value(looping(loop_around, 10, 0), 5) == 15.0f);
}

TEST_CASE("A ping-pong whose double range is 2^32 does not loop")
{
    // begin -2147483648, end 0: the range is 2^31.
    CHECK(fresh_value(looping(loop_ping_pong, -2147483648.0f, 0.0f), 77) == 77.0f);
}

TEST_CASE("Loop bounds that are no numbers or too large crash nothing")
{
    const float bad[] = {std::nanf(""), std::numeric_limits<float>::infinity(), -std::numeric_limits<float>::infinity(),
        1e30f, -1e30f, 3e9f};
    for (const uint8_t type : {loop_around, loop_ping_pong})
        for (const float begin : bad)
            for (const float end : bad)
                for (const uint32_t time : {0u, 1u, 5000u, 0x80000000u, 0x80000001u, 0xFFFFFFFEu})
                    fresh_value(looping(type, begin, end), time);
    // Both count as -2147483648, which is 2147483648 without a sign: an empty range.
    CHECK(fresh_value(looping(loop_around, bad[0], bad[1]), 900) == 900.0f);
    // An end out of range is so late that no loop begins.
    CHECK(fresh_value(looping(loop_around, 100, 1e30f), 900) == 900.0f);
}

// ---- spline ---------------------------------------------------------------------

static animation_function spline(std::initializer_list<float> points)
{
    return one_segment(segment_spline, 2000000000, points);
}

TEST_CASE("A spline without points is the first value everywhere")
{
    const animation_function function = spline({});
    for (const uint32_t time : {0u, 1u, 5u, 11u, 12u, 500u, 2000000u})
        CHECK(fresh_value(function, time) == 0.0f);
    CHECK(fresh_value(spline({0, 4.5f}), 0) == 4.5f);
    CHECK(fresh_value(spline({0, 4.5f}), 7) == 4.5f);
    CHECK(fresh_value(spline({0, 4.5f}), 900) == 4.5f);
}

TEST_CASE("A spline of two points reaches the second and stays there")
{
    const animation_function function = spline({0, 0, 1000, 10});
    CHECK(fresh_value(function, 0) == 0.0f);
    CHECK(fresh_value(function, 500) == doctest::Approx(5.0)); // flat on both sides: half way at half time
    CHECK(fresh_value(function, 1000) == 10.0f);
    for (const uint32_t time : {1001u, 1005u, 1010u, 1011u, 5000u, 900000u, 1900000u})
        CHECK(fresh_value(function, time) == 10.0f);
}

TEST_CASE("A spline passes through every control point")
{
    const animation_function function
        = spline({10, 1, 20, -3, 35, 4, 60, 4, 100, -7.5f, 110, 8, 200, 2, 300, 3, 310, -9, 400, 1, 500, 6, 600, -2});
    const float expected[12][2] = {{10, 1}, {20, -3}, {35, 4}, {60, 4}, {100, -7.5f}, {110, 8}, {200, 2}, {300, 3},
        {310, -9}, {400, 1}, {500, 6}, {600, -2}};
    for (const auto& point : expected)
        CHECK(fresh_value(function, static_cast<uint32_t>(point[0])) == point[1]);
}

TEST_CASE("A spline with equal steps is the uniform curve")
{
    // Neighbours 2, 4, 8, 6 at one step each: at half way (-2 + 9 * 4 + 9 * 8 - 6) / 16.
    CHECK(fresh_value(spline({0, 2, 100, 4, 200, 8, 300, 6}), 150) == 6.25f);
}

TEST_CASE("Neighbours at other distances are moved along their chords")
{
    // Points 0, 8 at 100 and 200; before them -4 at 50 and after them 20 at 500. The chords have slopes 0.08 and
    // 0.04, so the neighbours count as -8 and 12; half way is (8 + 9 * 0 + 9 * 8 - 12) / 16 = 4.25.
    CHECK(fresh_value(spline({50, -4, 100, 0, 200, 8, 500, 20}), 150) == doctest::Approx(4.25));
}

TEST_CASE("Points less than a tick apart take their predecessor's value, chained")
{
    // 10.5 is pushed to 11 and 11.5 to 12, both with the value 1; 13 stays.
    const animation_function function = spline({10, 1, 10.5f, 50, 11.5f, 60, 13, 2});
    CHECK(fresh_value(function, 10) == 1.0f);
    CHECK(fresh_value(function, 11) == 1.0f);
    CHECK(fresh_value(function, 12) == 1.0f);
    CHECK(fresh_value(function, 13) == 2.0f);
}

TEST_CASE("A point exactly a tick after its predecessor is kept")
{
    const animation_function function = spline({10, 1, 11, 50, 12, 60});
    CHECK(fresh_value(function, 11) == 50.0f);
    CHECK(fresh_value(function, 12) == 60.0f);
}

TEST_CASE("Left of the first interval a spline is flat")
{
    const animation_function function = spline({1000, 3, 2000, 50});
    CHECK(fresh_value(function, 0) == 3.0f);
    CHECK(fresh_value(function, 998) == 3.0f);
    CHECK(fresh_value(function, 999) == 3.0f);
    CHECK(fresh_value(function, 1000) == 3.0f);
}

TEST_CASE("Far beyond the last point a spline is the last value")
{
    // Twelve points in use; 999,999 ticks after the last one the padding ends.
    const animation_function function
        = spline({0, 0, 10, 1, 20, 2, 30, 3, 40, 4, 50, 5, 60, 6, 70, 7, 80, 8, 90, 9, 100, 10, 110, 12});
    CHECK(fresh_value(function, 110) == 12.0f);
    CHECK(fresh_value(function, 1000109) == 12.0f); // the padding point itself
    CHECK(fresh_value(function, 1000110) == 12.0f);
    CHECK(fresh_value(function, 2000000000) == 12.0f);
}

TEST_CASE("The padding after the last point continues the last chord")
{
    // Half way to the padding point (w = 999,999): the chord before has slope 0.2, so the neighbour counts as
    // 12.2 - 0.2 w; the three after are 12.2. (-(12.2 - 0.2 w) + 9 * 12.2 + 9 * 12.2 - 12.2) / 16 = 12.2 + 0.0125 w.
    const animation_function function
        = spline({0, 0, 10, 1, 20, 2, 30, 3, 40, 4, 50, 5, 60, 6, 70, 7, 80, 8, 90, 9, 100, 10, 111, 12.2f});
    // 111 + 499,999.5 is no tick; the two around it differ by less than the tolerance.
    CHECK(fresh_value(function, 500110) == doctest::Approx(12.2 + 0.0125 * 999999).epsilon(1e-5));
}

TEST_CASE("A spline that ends near the fixed last padding point divides by nothing")
{
    // The twelfth point puts the first padding point at 9,999,999, where the second one stands too.
    const animation_function function = spline(
        {0, 0, 100, 1, 200, 2, 300, 2, 400, 2, 500, 2, 600, 2, 700, 2, 800, 2, 900, 2, 8999000, 2, 9000000, 2});
    CHECK(fresh_value(function, 9000000) == 2.0f);
    CHECK(fresh_value(function, 9000001) == 2.0f);
    CHECK(fresh_value(function, 9500000) == 2.0f);
    CHECK(fresh_value(function, 9999999) == 2.0f);
    CHECK(std::isfinite(fresh_value(spline({9000000, 1, 9999000, 5, 20000000, 7}), 20500000)));
}

TEST_CASE("Spline points that are no numbers or endless crash nothing")
{
    const float infinity = std::numeric_limits<float>::infinity();
    for (const float bad : {std::nanf(""), infinity, -infinity, 3e38f, -3e38f})
        for (uint32_t slot = 0; slot < max_segment_params; ++slot) {
            animation_function function = spline({0, 0, 100, 5, 200, 6, 300, 7});
            function.segment_params[0][slot] = bad;
            for (const uint32_t time : {0u, 1u, 150u, 299u, 400u, 5000000u, 1999999999u})
                fresh_value(function, time);
        }
    CHECK(fresh_value(spline({std::nanf(""), 6.0f}), 50) == 6.0f); // left of everything
}

// ---- exact bits -----------------------------------------------------------------

// Worked out in exact arithmetic by tests/support/reference_numbers.py; both word
// sizes must give these bits.
static animation_function reference_function(size_t number)
{
    switch (number) {
    case 0:
        return one_segment(segment_linear, 6000, {0.1f, -3.7f});
    case 1:
        return one_segment(segment_quadratic, 6000, {0.013f, 17.3f, -2.1f});
    case 2:
        return one_segment(segment_sine, 6000, {2.5f, 0.0137f, 0.7f, -1.25f});
    case 3:
        return one_segment(segment_sine_linear, 6000, {0.003f, 0.021f, 1.1f, 0.4f, -0.6f});
    case 4:
        return one_segment(segment_spline, 6000,
            {10.5f, 0.1f, 200.25f, 3.3f, 200.75f, 9.9f, 700, -4.7f, 1500.125f, 2.2f, 2000, 2.3f, 2400.5f, -8.1f, 3000,
                0.7f, 3600, 5.5f, 4200, -5.5f, 4800, 1.25f, 5000, 0.3f});
    default:
        return one_segment(segment_spline, 6000, {0, 0.2f, 1000, 10.1f});
    }
}

constexpr size_t reference_count = 6;

TEST_CASE("Formulas give the bits of exact arithmetic rounded once")
{
    const uint32_t times[5] = {0, 37, 1480, 2072, 4995};
    const uint32_t expected[reference_count][5] = {
        {0xC06CCCCDu, 0x32000000u, 0x43104CCDu, 0x434B8000u, 0x43F7E667u},
        {0x3FE537F2u, 0x403C7DADu, 0x46D94693u, 0x47566133u, 0x489D472Cu},
        {0xC0371328u, 0xBFDD68A0u, 0x3ED23230u, 0x3E0BE2D4u, 0xC06D33F4u},
        {0x3F6F4A1Au, 0x3F0E2290u, 0xC059EDA1u, 0xC0A6E977u, 0xBFADAF6Du},
        {0x3DCCCCCDu, 0x3ED113FBu, 0x40067568u, 0x3F592CBEu, 0x3EA07ABAu},
        {0x3E4CCCCDu, 0x3ECE5328u, 0x4121999Au, 0x4121999Au, 0x4121999Au},
    };
    for (size_t number = 0; number < reference_count; ++number)
        for (size_t i = 0; i < 5; ++i) {
            CAPTURE(number);
            CAPTURE(times[i]);
            CHECK(std::bit_cast<uint32_t>(fresh_value(reference_function(number), times[i])) == expected[number][i]);
        }
}

TEST_CASE("A sweep over all formulas has the hash of exact arithmetic")
{
    uint32_t hash = 2166136261u;
    for (size_t number = 0; number < reference_count; ++number) {
        animation_function function = reference_function(number);
        for (uint32_t time = 0; time < 6000; time += 37) {
            const uint32_t bits = std::bit_cast<uint32_t>(evaluate_function(function, time));
            for (int shift = 0; shift < 32; shift += 8)
                hash = (hash ^ ((bits >> shift) & 0xFF)) * 16777619u;
        }
    }
    CHECK(hash == 0x826F214Eu);
}

// ---- double precision beside extended precision ---------------------------------------------

namespace {

struct long_point {
    long double x;
    long double y;
};

} // namespace

// The spline's rule as it stands, all of it in extended precision; x lies behind the first point.
static float long_spline(const float p[max_segment_params], long double x)
{
    std::vector<long_point> points = {{-999999.0L, p[1]}, {p[0] - 1.0L, p[1]}};
    for (size_t k = 0; k < 24; k += 2) {
        const long_point last = points.back();
        points.push_back(last.x + 1.0L > p[k] ? long_point{last.x + 1.0L, last.y} : long_point{p[k], p[k + 1]});
    }
    points.push_back({points.back().x + 999999.0L, points.back().y});
    points.push_back({9999999.0L, points.back().y});
    size_t j = 2;
    while (x > points[j].x)
        ++j;
    const long_point p0 = points[j - 2], p1 = points[j - 1], p2 = points[j], p3 = points[j + 1];
    const long double w = p2.x - p1.x;
    const long double y0 = (p1.y - p0.y) / (p0.x - p1.x) * w + p1.y;
    const long double y3 = (p3.y - p2.y) / (p3.x - p2.x) * w + p2.y;
    const long double u = (x - p1.x) / w;
    return static_cast<float>(0.5L
        * (2.0L * p1.y + (p2.y - y0) * u + (2.0L * y0 - 5.0L * p1.y + 4.0L * p2.y - y3) * (u * u)
            + (-y0 + 3.0L * p1.y - 3.0L * p2.y + y3) * (u * u * u)));
}

static float long_sine(int32_t type, const float p[max_segment_params], long double x)
{
    const long double factor = type == segment_sine ? p[0] : x * p[0] + p[4];
    return static_cast<float>(sinl(x * p[1] - p[2]) * factor + p[3]);
}

namespace {

// Numbers of all sizes that documents have, round ones among them.
struct number_source {
    std::mt19937 generator;

    uint32_t random()
    {
        return static_cast<uint32_t>(generator());
    }
    float next(float largest)
    {
        const double unit = static_cast<double>(random()) / 4294967296.0 * 2.0 - 1.0;
        switch (random() % 4) {
        case 0:
            return 0.0f;
        case 1:
            return static_cast<float>(std::trunc(unit * static_cast<double>(largest)));
        case 2:
            return static_cast<float>(unit * static_cast<double>(largest));
        }
        return static_cast<float>(unit * std::exp2(-static_cast<double>(random() % 30)));
    }
};

} // namespace

static uint32_t bits_of(float value)
{
    return std::bit_cast<uint32_t>(value);
}

TEST_CASE("Sines have the bits of extended precision, whatever their parameters")
{
    number_source source = {std::mt19937(5)};
    uint32_t wrong = 0;
    for (uint32_t n = 0; n < 100000; ++n) {
        const int32_t type = n % 2 != 0 ? segment_sine : segment_sine_linear;
        const animation_function function = one_segment(type, 0xFFFFFFFE,
            {source.next(100), source.next(2), source.next(1000), source.next(100), source.next(100)});
        const uint32_t time = source.random() >> (source.random() % 32);
        wrong += bits_of(fresh_value(function, time)) != bits_of(long_sine(type, function.segment_params[0], time));
    }
    CHECK(wrong == 0);
}

TEST_CASE("Splines have the bits of extended precision, whatever their points")
{
    number_source source = {std::mt19937(6)};
    uint32_t wrong = 0;
    for (uint32_t n = 0; n < 20000; ++n) {
        animation_function function = one_segment(segment_spline, 0xFFFFFFFE, {});
        float* params = function.segment_params[0];
        float place = std::fabs(source.next(100)) * static_cast<float>(n % 2);
        const uint32_t used = source.random() % 13;
        for (uint32_t k = 0; k < used; ++k) {
            params[2 * k] = place;
            params[2 * k + 1] = source.next(100);
            place += std::fabs(source.next(n % 3 == 0 ? 3.0f : 1000.0f));
        }
        for (uint32_t n_times = 0; n_times < 10; ++n_times) {
            const uint32_t time = source.random() % (100u + static_cast<uint32_t>(place) * 5 / 4);
            if (static_cast<float>(time) > params[0])
                wrong += bits_of(fresh_value(function, time)) != bits_of(long_spline(params, time));
        }
    }
    CHECK(wrong == 0);
}

// 1 + 2^-23, of which half a step more lies between two singles; a tie would go up.
constexpr float odd_single = 1.00000012f;

TEST_CASE("A sine that comes as near to the middle of two singles as double precision sees goes to the right one")
{
    const float nearly_quarter = 1.5707963f + 0x1p-16f;
    const animation_function below = one_segment(segment_sine, 100, {0x1p-24f, 0.0f, -nearly_quarter, odd_single});
    CHECK(fresh_value(below, 3) == odd_single);
    const animation_function sloping
        = one_segment(segment_sine_linear, 100, {0x1p-26f, 0.0f, -nearly_quarter, odd_single, 0.0f});
    CHECK(fresh_value(sloping, 4) == odd_single);
}

TEST_CASE("A spline that comes as near to the middle of two singles as double precision sees goes to the right one")
{
    const float low = 1.0f - 0x1p-21f + 0x1p-23f; // the top between two odd singles is an eighth of this step higher
    const animation_function top = one_segment(
        segment_spline, 1000000, {-65536.5f, low, -0.5f, odd_single, 65535.5f, odd_single, 131071.5f, low});
    CHECK(fresh_value(top, 32768) == odd_single);
}

TEST_CASE("Spline points that double precision cannot tell apart are told apart")
{
    const animation_function close = one_segment(segment_spline, 1000, {0x1p-60f, 2.0f, 1.0f, 9.0f, 5.0f, 1.0f});
    CHECK(fresh_value(close, 1) == 2.0f); // the second point is less than a tick away and takes the first one's value
    const animation_function first = one_segment(segment_spline, 1000, {-0x1p-60f, 0.0f, 0.0f, 1.0f, 3550.0f, 2.0f});
    CHECK(fresh_value(first, 0) != 0.0f);
    CHECK(bits_of(fresh_value(first, 0)) == bits_of(long_spline(first.segment_params[0], 0)));
    const animation_function distant
        = one_segment(segment_spline, 0xFFFFFFFE, {-0x1p56f, 2.0f, -0x1p56f, 1e6f, 0.0f, 1.0f, 0x1p32f, 5.0f});
    const uint32_t middle = 0x80000000;
    CHECK(bits_of(fresh_value(distant, middle)) == bits_of(long_spline(distant.segment_params[0], middle)));
}

TEST_CASE("A sine of an angle that no double holds is left to extended precision")
{
    const animation_function fast = one_segment(segment_sine, 0xFFFFFFFE, {1.0f, 77.7f, 0.0f, 0.0f});
    for (const uint32_t time : {1u, 12000u, 13000u, 400000000u, 4000000000u})
        CHECK(bits_of(fresh_value(fast, time)) == bits_of(long_sine(segment_sine, fast.segment_params[0], time)));
}

TEST_CASE("A value of nothing keeps the sign of its zero")
{
    for (const float factor : {0.0f, -0.0f})
        for (const float added : {0.0f, -0.0f})
            for (const int32_t type : {segment_sine, segment_sine_linear})
                for (const uint32_t time : {1u, 9u}) { // a positive and a negative sine
                    const animation_function function = one_segment(type, 100, {factor, 0.5f, 0.0f, added, factor});
                    CAPTURE(factor);
                    CAPTURE(added);
                    CAPTURE(time);
                    const float expected = long_sine(type, function.segment_params[0], time);
                    CHECK(bits_of(fresh_value(function, time)) == bits_of(expected));
                }
    const animation_function still = one_segment(segment_sine, 100, {0.0f, -0.0f, 0.0f, -0.0f});
    CHECK(bits_of(fresh_value(still, 7)) == bits_of(-0.0f)); // so does the sine of -0
    for (const float value : {0.0f, -0.0f}) {
        const animation_function function
            = one_segment(segment_spline, 100, {0.0f, value, 10.0f, value, 20.0f, -value, 30.0f, value});
        for (const uint32_t time : {5u, 10u, 15u, 25u, 60u})
            CHECK(bits_of(fresh_value(function, time)) == bits_of(long_spline(function.segment_params[0], time)));
    }
}
