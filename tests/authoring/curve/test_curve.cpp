#include "authoring/curve/curve.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

constexpr double pi = std::numbers::pi;

// ---- makers ---------------------------------------------------------------------------

static std::vector<double> params_of(const curve& c)
{
    REQUIRE(c.segments.size() == 1);
    return c.segments[0].params;
}

static curve eased(const std::string& name, double from, double to, double length)
{
    curve made;
    REQUIRE(ease_curve(name, from, to, length, made) == "");
    return made;
}

TEST_CASE("Simple curves have the coefficients that one would write by hand")
{
    CHECK(params_of(constant_curve(3, 50)) == std::vector<double>{3});
    CHECK(params_of(linear_curve(2, 7, 400)) == std::vector<double>{5.0 / 400, 2});
    CHECK(params_of(wave_curve(1, 0.5, 200, 0.25, 800))
        == std::vector<double>{0.5, 6.2831853 / 200, 0.25 * 6.2831853, 1});
    CHECK(params_of(swelling_wave_curve(1, 0.5, 2.5, 200, 0.25, 800))
        == std::vector<double>{2.0 / 800, 6.2831853 / 200, 0.25 * 6.2831853, 1, 0.5});
    CHECK(params_of(eased("out quad", 1, 4, 50)) == std::vector<double>{-3.0 / 2500, 50, 4});
    CHECK(params_of(eased("in quad", 1, 4, 50)) == std::vector<double>{3.0 / 2500, 0, 1});
    CHECK(eased("linear", 2, 7, 400).segments[0].kind == segment_linear);
}

TEST_CASE("Curves are what they are named for")
{
    CHECK(curve_at(linear_curve(2, 7, 400), 200) == 4.5);
    const curve wave = wave_curve(1, 0.5, 200, 0.25, 800);
    CHECK(curve_at(wave, 0) == doctest::Approx(0.5));
    CHECK(curve_at(wave, 50) == doctest::Approx(1));
    CHECK(curve_at(wave, 100) == doctest::Approx(1.5));
    const curve swelling = swelling_wave_curve(1, 0.5, 2.5, 200, 0, 800);
    CHECK(curve_at(swelling, 50) == doctest::Approx(1 + 0.625));
    CHECK(curve_at(swelling, 650) == doctest::Approx(1 + 2.125));
}

TEST_CASE("Lengths are whole ticks and at least one")
{
    CHECK(constant_curve(1, 0).segments[0].length == 1);
    CHECK(constant_curve(1, 49.5).segments[0].length == 50);
    CHECK(linear_curve(0, 50, 49.5).segments[0].params[0] == 1);
    CHECK(curve_length(joined_curve(constant_curve(1, 30), constant_curve(1, 50))) == 80);
}

// ---- eases ----------------------------------------------------------------------------

static double bounce(double t)
{
    constexpr double s = 7.5625;
    if (t < 1 / 2.75)
        return s * t * t;
    if (t < 2 / 2.75)
        return s * (t - 1.5 / 2.75) * (t - 1.5 / 2.75) + 0.75;
    if (t < 2.5 / 2.75)
        return s * (t - 2.25 / 2.75) * (t - 2.25 / 2.75) + 0.9375;
    return s * (t - 2.625 / 2.75) * (t - 2.625 / 2.75) + 0.984375;
}

static double true_out(const std::string& family, double t)
{
    if (family == "quad")
        return 1 - (1 - t) * (1 - t);
    if (family == "cubic")
        return 1 - (1 - t) * (1 - t) * (1 - t);
    if (family == "sine")
        return std::sin(t * pi / 2);
    if (family == "back")
        return 1 + 2.70158 * std::pow(t - 1, 3) + 1.70158 * std::pow(t - 1, 2);
    if (family == "elastic")
        return t == 0 ? 0 : t == 1 ? 1 : std::pow(2, -10 * t) * std::sin((t * 10 - 0.75) * 2 * pi / 3) + 1;
    return bounce(t);
}

static double true_ease(const std::string& side, const std::string& family, double t)
{
    if (side == "out")
        return true_out(family, t);
    if (side == "in")
        return 1 - true_out(family, 1 - t);
    return t < 0.5 ? (1 - true_out(family, 1 - 2 * t)) / 2 : (1 + true_out(family, 2 * t - 1)) / 2;
}

TEST_CASE("Every ease lies within 0.002 of what it is named for, at every tick")
{
    for (const std::string family : {"quad", "cubic", "sine", "back", "elastic", "bounce"})
        for (const std::string side : {"in", "out", "in out"})
            for (const uint32_t length : {1u, 2u, 7u, 24u, 43u, 100u, 333u, 1000u, 5001u}) {
                const curve made = eased(side + " " + family, -2, 8, length);
                CHECK(curve_fault(made) == "");
                CHECK(curve_length(made) == length);
                double worst = 0;
                for (uint32_t tick = 0; tick <= length; ++tick) {
                    const double t = static_cast<double>(tick) / length;
                    worst = std::max(worst, std::fabs((curve_at(made, tick) + 2) / 10 - true_ease(side, family, t)));
                }
                CAPTURE(side);
                CAPTURE(family);
                CAPTURE(length);
                CAPTURE(made.segments.size());
                CHECK(worst <= (family == "quad" || family == "sine" ? 1e-6 : 0.002));
            }
}

TEST_CASE("Eases are named in any spelling, and other names are none")
{
    for (const char* name : {"in out sine", "In-Out Sine", "inoutsine", "in_out_sine"})
        CHECK(curve_at(eased(name, 0, 1, 100), 50) == doctest::Approx(0.5));
    curve made;
    for (const char* name : {"", "sine", "in", "out quadd", "in in quad"})
        CHECK(ease_curve(name, 0, 1, 100, made) == "is no ease");
    CHECK(ease_names().size() == 19);
    for (const std::string& name : ease_names()) {
        const curve c = eased(name, 5, 3, 77);
        CHECK(curve_at(c, 0) == doctest::Approx(5));
        CHECK(curve_at(c, 77) == doctest::Approx(3));
    }
}

// ---- splines --------------------------------------------------------------------------

// One Catmull-Rom curve through all points, as the player draws one through twelve: the neighbours of an interval
// moved along their chords, flat before the first point and behind the last one.
static double true_spline(const std::vector<curve_point>& points, double time)
{
    if (time >= points.back().time)
        return points.back().value;
    size_t right = 1;
    while (time > points[right].time)
        ++right;
    const curve_point& p1 = points[right - 1];
    const curve_point& p2 = points[right];
    const double width = p2.time - p1.time;
    const auto slope
        = [](const curve_point& a, const curve_point& b) { return (b.value - a.value) / (b.time - a.time); };
    const double before = right >= 2 ? slope(points[right - 2], p1) : 0;
    const double behind = right + 1 < points.size() ? slope(p2, points[right + 1]) : 0;
    // A cubic with the slopes of the chords on either side averaged.
    const double chord = slope(p1, p2);
    const double m1 = (before + chord) / 2 * width;
    const double m2 = (chord + behind) / 2 * width;
    const double u = (time - p1.time) / width;
    return (2 * u * u * u - 3 * u * u + 1) * p1.value + (u * u * u - 2 * u * u + u) * m1
        + (-2 * u * u * u + 3 * u * u) * p2.value + (u * u * u - u * u) * m2;
}

TEST_CASE("A spline through many points is one curve, however many pieces it has")
{
    std::mt19937 random(7);
    for (const size_t count : {2u, 3u, 11u, 12u, 13u, 14u, 19u, 20u, 40u, 80u, 112u, 140u})
        for (const bool is_whole : {true, false}) {
            CAPTURE(count);
            CAPTURE(is_whole);
            std::vector<curve_point> points;
            double time = 0;
            for (size_t point = 0; point < count; ++point) {
                points.push_back({time, static_cast<double>(random() % 1000) / 1000});
                time += is_whole ? 1 + static_cast<double>(random() % 60)
                                 : 1.5 + static_cast<double>(random() % 480) / 8;
            }
            curve made;
            REQUIRE(spline_curve(points, 0, made) == "");
            REQUIRE(curve_fault(made) == "");
            CHECK((made.segments.size() > 1) == (count > 12 || (count == 12 && !is_whole)));
            double worst = 0;
            for (uint32_t tick = 0; tick <= points.back().time; ++tick)
                worst = std::max(worst, std::fabs(curve_at(made, tick) - true_spline(points, tick)));
            // Times of points are single precision in a document; whole ticks are exact.
            CHECK(worst < (is_whole ? 1e-6 : 1e-4));
            // A curve that ends between two ticks is still coming to rest at the second.
            CHECK(std::fabs(curve_at(made, 999999) - points.back().value) < (is_whole ? 1e-6 : 0.02));
        }
}

TEST_CASE("A spline lasts as long as it is told to")
{
    const std::vector<curve_point> points = {{0, 1}, {200, 5}};
    curve made;
    REQUIRE(spline_curve(points, 0, made) == "");
    CHECK(curve_length(made) == 200);
    REQUIRE(spline_curve(points, 500, made) == "");
    CHECK(curve_length(made) == 500);
    CHECK(curve_at(made, 400) == 5);
    REQUIRE(spline_curve(points, 100, made) == "");
    CHECK(curve_at(made, 150) == curve_at(made, 100));
    // Behind exactly twelve points the player's formula would run on.
    std::vector<curve_point> steep;
    for (uint32_t point = 0; point < 60; ++point) {
        steep.push_back({point * 10.0, point * 3.0});
        REQUIRE((steep.size() < 2 || spline_curve(steep, 1000, made) == ""));
        CHECK((steep.size() < 2 || curve_at(made, 900) == point * 3.0));
    }
}

TEST_CASE("Points that make no spline are told")
{
    curve made;
    CHECK(spline_curve({{0, 1}}, 0, made) == "has 1 point, and a curve goes through two at least");
    CHECK(
        spline_curve({{0, 1}, {50, 2}, {50.5, 3}}, 0, made) == "has point 3 less than a tick behind the one before it");
    CHECK(spline_curve({{0, 1}, {50, 2}, {40, 3}}, 0, made) == "has point 3 less than a tick behind the one before it");
    std::vector<curve_point> points;
    for (uint32_t point = 0; point < 200; ++point)
        points.push_back({point * 10.0, 0});
    CHECK(spline_curve(points, 0, made) == "has 200 points, and a curve has room for about 140: make two");
    points.clear();
    for (int point = -30; point < 30; ++point) // some lie in front of the beginning
        points.push_back({point * 10.0, static_cast<double>(point % 5)});
    CHECK(spline_curve(points, 0, made) == "");
    for (uint32_t tick = 0; tick <= 290; ++tick)
        CHECK(curve_at(made, tick) == doctest::Approx(true_spline(points, tick)).epsilon(1e-5));
}

// ---- algebra --------------------------------------------------------------------------

// Every formula, one behind the other.
static curve all_formulas()
{
    curve made;
    REQUIRE(spline_curve({{0, 1}, {40, -2}, {90, 3}}, 100, made) == "");
    for (const curve& next : {constant_curve(3, 10), linear_curve(1, 4, 70), eased("in quad", -1, 2, 60),
             wave_curve(1, 2, 50, 0.1, 100), swelling_wave_curve(1, 0.5, 3, 40, 0.2, 100)})
        made = joined_curve(made, next);
    return made;
}

TEST_CASE("A scaled and lifted curve is scaled and lifted everywhere")
{
    const curve plain = all_formulas();
    CHECK(curve_length(plain) == 440);
    for (const auto& [factor, offset] : {std::pair{-1.0, 0.0}, {2.0, 0.0}, {0.5, 3.0}, {1.0, -7.0}, {0.0, 1.0}}) {
        const curve made = scaled_curve(plain, factor, offset);
        CHECK(made.segments.size() == plain.segments.size());
        for (uint32_t tick = 0; tick <= 450; ++tick)
            CHECK(curve_at(made, tick) == doctest::Approx(curve_at(plain, tick) * factor + offset).epsilon(1e-6));
    }
}

TEST_CASE("Formulas that lack numbers are lifted as if they were 0")
{
    curve bare;
    for (int32_t kind = 0; kind < segment_kind_count; ++kind) {
        if (kind == segment_spline)
            continue;
        bare.segments = {{kind, 100, {}}};
        CHECK(curve_at(scaled_curve(bare, 2, 5), 30) == curve_at(bare, 30) * 2 + 5);
    }
}

TEST_CASE("A spline that stops short of twelve points is lifted as it is shown")
{
    curve raw;
    raw.segments = {{segment_spline, 300, {100, 2, 200, 4}}};
    const curve lifted = scaled_curve(raw, 3, 1);
    for (uint32_t tick = 0; tick <= 300; tick += 10)
        CHECK(curve_at(lifted, tick) == doctest::Approx(curve_at(raw, tick) * 3 + 1).epsilon(1e-6));
}

TEST_CASE("A joined curve shows one behind the other, and loses loops")
{
    curve first = linear_curve(0, 10, 100);
    first.loop = loop_around;
    const curve made = joined_curve(first, linear_curve(20, 30, 100));
    CHECK(made.loop == loop_off);
    CHECK(curve_at(made, 100) == 10); // a boundary is the earlier one's
    CHECK(curve_at(made, 150) == 25);
    CHECK(curve_at(made, 900) == 30);
}

TEST_CASE("Loops go on as the player's do, and stay when a curve is scaled")
{
    curve c = linear_curve(0, 100, 100);
    c.loop = loop_around;
    c.loop_from = 20;
    c.loop_to = 100;
    CHECK(curve_at(c, 100) == 100);
    CHECK(curve_at(c, 110) == 30);
    CHECK(curve_at(scaled_curve(c, 2, 1), 110) == 61);
    c.loop = loop_ping_pong;
    CHECK(curve_at(c, 110) == 70); // between 0 and 80 from now on: the beginning is not added back
}

TEST_CASE("Curves that cannot be written say why")
{
    CHECK(curve_fault({}) == "has nothing in it");
    curve c = constant_curve(1, 10);
    CHECK(curve_fault(c) == "");
    c.segments.resize(17, c.segments[0]);
    CHECK(curve_fault(c) == "has 17 pieces, and a curve has room for 16");
    c.segments.resize(16);
    CHECK(curve_fault(c) == "");
    c.loop = loop_around;
    c.loop_from = 50;
    c.loop_to = 50.9; // the player drops the fraction
    CHECK(curve_fault(c) == "cannot loop: its end does not lie behind its beginning");
    c.loop_to = 51;
    CHECK(curve_fault(c) == "");
}
