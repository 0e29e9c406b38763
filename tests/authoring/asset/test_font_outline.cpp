#include "authoring/asset/font_outline.h"

#include <algorithm>
#include <cmath>
#include <doctest/doctest.h>
#include <numbers>

static outline_pen pen_of(double tolerance)
{
    outline_pen pen = {};
    pen.tolerance = tolerance;
    return pen;
}

static double degrees_between(outline_point a, outline_point b, outline_point c)
{
    const double turn = std::atan2(c.y - b.y, c.x - b.x) - std::atan2(b.y - a.y, b.x - a.x);
    return std::abs(std::remainder(turn, 2 * std::numbers::pi)) * 180 / std::numbers::pi;
}

static outline_ring square(double left, double bottom, double side)
{
    return {{left, bottom}, {left + side, bottom}, {left + side, bottom + side}, {left, bottom + side}};
}

TEST_CASE("The pieces of a cubic curve keep within the tolerance")
{
    // A quarter circle of radius 1000; the curve itself leaves it by no more than 0.28.
    for (const double tolerance : {0.5, 2.0, 8.0}) {
        outline_pen pen = pen_of(tolerance);
        pen_move(pen, {1000, 0});
        pen_cubic(pen, {1000, 552.2847498}, {552.2847498, 1000}, {0, 1000});
        const outline_ring& ring = pen.rings[0];
        for (size_t i = 0; i + 1 < ring.size(); ++i) {
            CHECK(std::hypot(ring[i].x, ring[i].y) == doctest::Approx(1000).epsilon(0.0004));
            const double middle = std::hypot((ring[i].x + ring[i + 1].x) / 2, (ring[i].y + ring[i + 1].y) / 2);
            CHECK(middle > 1000 - tolerance - 0.3);
        }
        CHECK(ring.back().x == 0.0);
        CHECK(ring.back().y == 1000.0);
        CHECK(ring.size() < 40); // and no more of them than it takes
    }
}

TEST_CASE("The pieces of a conic curve keep within the tolerance")
{
    // y = 2x - x^2 / 500 from (0, 0) over (500, 500) to (1000, 0): farthest from its chord at the chord's middle.
    outline_pen pen = pen_of(1);
    pen_move(pen, {0, 0});
    pen_conic(pen, {500, 1000}, {1000, 0});
    const outline_ring& ring = pen.rings[0];
    CHECK(ring.size() == 24); // the square root of 2 * 2000 / 8, rounded up: 23 pieces
    for (size_t i = 0; i + 1 < ring.size(); ++i) {
        const double x = (ring[i].x + ring[i + 1].x) / 2, y = (ring[i].y + ring[i + 1].y) / 2;
        CHECK(ring[i].y == doctest::Approx(2 * ring[i].x - ring[i].x * ring[i].x / 500).epsilon(0.001));
        CHECK(2 * x - x * x / 500 - y < 1.03);
    }
}

TEST_CASE("However coarse, the pieces of a curve turn by no more than 15 degrees")
{
    outline_pen pen = pen_of(1e6);
    pen_move(pen, {1000, 0});
    pen_cubic(pen, {1000, 552.2847498}, {552.2847498, 1000}, {0, 1000});
    const outline_ring& ring = pen.rings[0];
    CHECK(ring.size() == 7);
    for (size_t i = 0; i + 2 < ring.size(); ++i)
        CHECK(degrees_between(ring[i], ring[i + 1], ring[i + 2]) < 20);
}

TEST_CASE("A letter of too many points is cut and says so")
{
    outline_pen pen = pen_of(1);
    pen_move(pen, {0, 0});
    for (size_t i = 1; i < max_outline_points; ++i)
        pen_line(pen, {double(i), double(i % 2)});
    CHECK(!pen.too_many);
    pen_line(pen, {0, 5});
    CHECK(pen.too_many);
    CHECK(outline_point_count(pen.rings) == max_outline_points);
}

TEST_CASE("Edges that cross are counted, and those that meet on request")
{
    CHECK(outline_crossings({square(0, 0, 2), square(1, 1, 2)}, false, 100) == 2);
    CHECK(outline_crossings({square(0, 0, 2), square(5, 5, 2)}, false, 100) == 0);
    CHECK(outline_crossings({{{0, 0}, {2, 2}, {2, 0}, {0, 2}}}, false, 100) == 1);
    CHECK(outline_crossings({{{0, 0}, {10, 0}, {0, 10}}, square(7, 7, 2)}, false, 100) == 0);
    CHECK(outline_crossings({{{0, 0}, {2, 2}, {0, 2}}, {{1.9, 3}, {6, 0}, {6, 3}}}, false, 100) == 0); // only the lines
    CHECK(outline_crossings({square(0, 0, 2)}, true, 100) == 4); // neighbours meet
    CHECK(outline_crossings({square(0, 0, 2), square(0, 0, 2)}, true, 3) == 3);
}

TEST_CASE("The surface of a hole is taken away")
{
    outline_ring hole = square(1, 1, 2);
    std::reverse(hole.begin(), hole.end());
    CHECK(outline_area({square(0, 0, 4), hole}) == 12.0);
}

TEST_CASE("Points that say nothing are left out")
{
    letter_outline outline = {{{0, 0}, {5, 0}, {10, 0}, {10, 0.01}, {10, 10}, {0, 10}, {0, 4}}, {{1, 1}, {2, 2}},
        {{1, 1}, {2, 2}, {1.01, 1.01}}};
    thin_outline(outline, 0.1);
    REQUIRE(outline.size() == 1);
    REQUIRE(outline[0].size() == 4);
    CHECK(outline_area(outline) == 100.0);
}
