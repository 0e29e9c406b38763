#include "authoring/asset/font_bevel.h"

#include <cmath>
#include <doctest/doctest.h>
#include <numbers>

static outline_point end_of(const std::vector<bevel_way>& ways, size_t number, double bevel)
{
    return bevel_point(ways[number], bevel, 1);
}

static bool is_at(outline_point p, double x, double y)
{
    return std::abs(p.x - x) < 1e-6 && std::abs(p.y - y) < 1e-6;
}

static letter_outline rectangle(double width, double height)
{
    return {{{0, 0}, {width, 0}, {width, height}, {0, height}}};
}

TEST_CASE("The rim of a square keeps an even width")
{
    const std::vector<bevel_way> ways = plan_bevel(rectangle(100, 100), 10);
    REQUIRE(ways.size() == 4);
    CHECK(is_at(end_of(ways, 0, 10), 10, 10));
    CHECK(is_at(end_of(ways, 2, 10), 90, 90));
    CHECK(is_at(bevel_point(ways[1], 10, 0.3), 97, 3));
    CHECK(is_at(bevel_point(ways[1], 10, 0), 100, 0));
}

TEST_CASE("A hollow corner moves into the letter")
{
    const letter_outline corner = {{{0, 0}, {100, 0}, {100, 50}, {50, 50}, {50, 100}, {0, 100}}};
    const std::vector<bevel_way> ways = plan_bevel(corner, 10);
    REQUIRE(ways.size() == 6);
    CHECK(is_at(end_of(ways, 3, 10), 40, 40));
    CHECK(is_at(end_of(ways, 2, 10), 90, 40));
}

TEST_CASE("Rims of a thin stroke stop before they meet")
{
    const std::vector<bevel_way> ways = plan_bevel(rectangle(100, 10), 20);
    REQUIRE(ways.size() == 4);
    for (const bevel_way& way : ways) {
        CHECK(way.reach > 4.0); // not much less than 0.9 of the middle, 5
        CHECK(way.reach <= 4.6);
    }
    CHECK(end_of(ways, 0, 20).y < end_of(ways, 3, 20).y);
}

TEST_CASE("An edge shorter than the bevel vanishes in the corner of its neighbours")
{
    const letter_outline cut = {{{0, 0}, {100, 0}, {100, 98}, {98, 100}, {0, 100}}};
    const std::vector<bevel_way> ways = plan_bevel(cut, 10);
    REQUIRE(ways.size() == 5);
    CHECK(is_at(end_of(ways, 2, 10), 90, 90));
    CHECK(is_at(end_of(ways, 3, 10), 90, 90));
    CHECK(ways[2].reach == 10);
}

TEST_CASE("The points of a tiny rounding go together")
{
    // A square whose upper right corner is rounded with radius 3, in six pieces.
    letter_outline outline = {{{0, 0}, {100, 0}}};
    for (int i = 0; i <= 6; ++i) {
        const double angle = i * std::numbers::pi / 12;
        outline[0].push_back({97 + 3 * std::cos(angle), 97 + 3 * std::sin(angle)});
    }
    outline[0].push_back({0, 100});
    const std::vector<bevel_way> ways = plan_bevel(outline, 12);
    REQUIRE(ways.size() == 10);
    for (size_t i = 2; i <= 8; ++i)
        CHECK(is_at(end_of(ways, i, 12), 88, 88));
}

TEST_CASE("Hollow corners on both sides of a thin bar do not pass each other")
{
    // An H whose bar is 8 high between stems of 40.
    const letter_outline outline = {{{0, 0}, {40, 0}, {40, 46}, {60, 46}, {60, 0}, {100, 0}, {100, 100}, {60, 100},
        {60, 54}, {40, 54}, {40, 100}, {0, 100}}};
    const std::vector<bevel_way> ways = plan_bevel(outline, 6);
    REQUIRE(ways.size() == 12);
    CHECK(end_of(ways, 2, 6).y < end_of(ways, 9, 6).y);
    CHECK(end_of(ways, 3, 6).y < end_of(ways, 8, 6).y);
    CHECK(is_at(end_of(ways, 0, 6), 6, 6)); // far from the bar nothing is held back
}

TEST_CASE("The tip of a sharp hollow does not run far into the letter")
{
    // A notch of 4 degrees: where its edges' lines meet lies 28 bevels away.
    const letter_outline outline = {{{0, 0}, {100, 0}, {100, 100}, {51, 100}, {50, 71.4}, {49, 100}, {0, 100}}};
    const std::vector<bevel_way> ways = plan_bevel(outline, 5);
    REQUIRE(ways.size() == 7);
    const outline_point tip = end_of(ways, 4, 5);
    CHECK(tip.x == doctest::Approx(50));
    CHECK(tip.y == doctest::Approx(71.4 - 20)); // four bevels
}

TEST_CASE("A hollow corner goes on with the neighbour that it has met")
{
    // A beak at the right: its short edge vanishes at once. Then x = 100 and the slope move on together.
    const letter_outline outline = {{{0, 0}, {100, 0}, {100, 50}, {99.6, 50.08}, {49.6, 150.08}, {0, 150.08}}};
    const std::vector<bevel_way> ways = plan_bevel(outline, 10);
    REQUIRE(ways.size() == 6);
    const double y = 249.28 - 10 * std::sqrt(5.0) - 180;
    CHECK(is_at(end_of(ways, 2, 10), 90, y));
    CHECK(is_at(end_of(ways, 3, 10), 90, y));
}

TEST_CASE("No rim crosses another, however wild the letter")
{
    uint32_t state = 7;
    const auto random = [&state] {
        state = state * 1664525 + 1013904223;
        return double(state >> 8) / (1 << 24);
    };
    uint32_t bevelled = 0;
    for (int i = 0; i < 300; ++i) {
        letter_outline outline(1);
        const int points = 5 + i % 30;
        for (int k = 0; k < points; ++k) {
            const double angle = 2 * std::numbers::pi * (k + 0.9 * random()) / points;
            const double radius = 20 + 80 * random();
            outline[0].push_back({radius * std::cos(angle), radius * std::sin(angle)});
        }
        const std::vector<bevel_way> ways = plan_bevel(outline, 15);
        if (ways.empty())
            continue;
        ++bevelled;
        letter_outline rim(1);
        for (const bevel_way& way : ways)
            rim[0].push_back(bevel_point(way, 15, 1));
        CHECK(outline_crossings(rim, false, 1) == 0);
        CHECK(outline_area(rim) > 0);
        CHECK(outline_area(rim) < outline_area(outline));
        for (size_t k = 0; k < ways.size(); ++k) { // and none changes its width at once
            const outline_point a = ways[k].at[0], b = ways[(k + 1) % ways.size()].at[0];
            const double change = std::abs(ways[k].reach - ways[(k + 1) % ways.size()].reach);
            CHECK(change <= 0.5 * std::hypot(b.x - a.x, b.y - a.y) + 1e-9);
        }
    }
    CHECK(bevelled > 200);
}
