#include "authoring/asset/font_tessellate.h"

#include <algorithm>
#include <doctest/doctest.h>

static outline_ring square(double left, double bottom, double side, bool clockwise = false)
{
    outline_ring ring = {{left, bottom}, {left + side, bottom}, {left + side, bottom + side}, {left, bottom + side}};
    if (clockwise)
        std::reverse(ring.begin(), ring.end());
    return ring;
}

static letter_outline border_of(const letter_outline& outline, bool even_odd = false)
{
    letter_outline border;
    REQUIRE(outline_border(outline, even_odd, border));
    CHECK(outline_crossings(border, false, 1) == 0);
    return border;
}

// The surface of the triangles; each must run counter-clockwise.
static double triangle_area(const std::vector<outline_point>& points, const std::vector<uint32_t>& triangles)
{
    double twice = 0;
    for (size_t i = 0; i + 2 < triangles.size(); i += 3) {
        const outline_point a = points[triangles[i]], b = points[triangles[i + 1]], c = points[triangles[i + 2]];
        const double part = (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
        CHECK(part > 0);
        twice += part;
    }
    return twice / 2;
}

TEST_CASE("Two rings that overlap become one")
{
    const letter_outline border = border_of({square(0, 0, 2), square(1, 1, 2)});
    REQUIRE(border.size() == 1);
    CHECK(border[0].size() == 8);
    CHECK(outline_area(border) == 7.0);
}

TEST_CASE("A ring within another is a hole where it runs the other way")
{
    CHECK(outline_area(border_of({square(0, 0, 4), square(1, 1, 2, true)})) == 12.0);
    CHECK(outline_area(border_of({square(0, 0, 4, true), square(1, 1, 2)})) == 12.0);
    CHECK(outline_area(border_of({square(0, 0, 4), square(1, 1, 2)})) == 16.0);
    CHECK(outline_area(border_of({square(0, 0, 4), square(1, 1, 2)}, true)) == 12.0);
}

TEST_CASE("A ring that crosses itself fills both its loops")
{
    const letter_outline border = border_of({{{0, 0}, {2, 2}, {2, 0}, {0, 2}}});
    CHECK(outline_area(border) == 2.0);
}

TEST_CASE("An outline without a surface has no border")
{
    CHECK(border_of({}).empty());
    CHECK(outline_area(border_of({{{0, 0}, {4, 0}, {2, 0}}})) == 0.0);
    CHECK(outline_area(border_of({square(0, 0, 2), square(0, 0, 2, true)})) == 0.0);
}

TEST_CASE("The triangles of a letter with two holes cover it and nothing else")
{
    const letter_outline outline = {square(0, 0, 10), square(1, 1, 2, true), square(5, 5, 3, true)};
    std::vector<outline_point> points;
    std::vector<uint32_t> triangles;
    REQUIRE(outline_triangles(outline, points, triangles));
    CHECK(points.size() == 12);
    CHECK(points[4].x == outline[1][0].x);
    CHECK(triangle_area(points, triangles) == doctest::Approx(100 - 4 - 9));
}

TEST_CASE("Rings that touch in a point share its bits")
{
    // The corner of the second ring lies on the first one's: no new place may come of it.
    const letter_outline outline = {{{0, 0}, {0.3, 0}, {0.3, 0.7}}, {{0.3, 0.7}, {0.6, 0.9}, {0.1, 1.1}}};
    std::vector<outline_point> points;
    std::vector<uint32_t> triangles;
    REQUIRE(outline_triangles(outline, points, triangles));
    CHECK(points.size() == 6);
    CHECK(triangles.size() == 6);
}
