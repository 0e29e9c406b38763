#include "picture.h"

#include <doctest/doctest.h>

#include <cstdlib>
#include <limits>
#include <set>

// Of pixels that were 77 before.
static picture maze(float level, float field, float fullness, uint32_t size = 256)
{
    return generated(generator_maze, {1.0f, 0.5f, 0.0f, level, field, fullness}, size, 77);
}

namespace {

// The corner bits of a maze of half fullness, worked out from the draws alone: a corner
// is set above one half. The draw is (state >> 16) & 0x7FFF of the known generator.
struct corner_bits {
    uint32_t cells;
    std::vector<int> bit;

    int at(uint32_t row, uint32_t column) const
    {
        return bit[(row % cells) * (cells + 1) + column % cells]; // the grid is periodic
    }
};

} // namespace

static corner_bits half_full_corners(uint32_t cells, uint32_t seed)
{
    corner_bits corners = {cells, {}};
    for (uint32_t n = 0; n < (cells + 1) * (cells + 1); ++n) {
        seed = seed * 1103515245u + 12345u;
        corners.bit.push_back(((seed >> 16) & 0x7FFF) > 0x4000 ? 1 : 0);
    }
    return corners;
}

TEST_CASE("a full maze is 255 times its colour everywhere, an empty one black")
{
    for (float level = 1; level <= 7; ++level) {
        CHECK(maze(level, 12, 1.0f) == generated(generator_color, {1.0f, 0.5f, 0.0f}));
        CHECK(maze(level, 12, 0.0f) == flat_picture(256, 0));
    }
    CHECK(maze(3, 12, 7.0f) == maze(3, 12, 1.0f));
    CHECK(maze(3, 12, -7.0f) == maze(3, 12, 0.0f));
}

TEST_CASE("a maze's corners follow the draws of its field, row after row")
{
    // From 1 the draws are 16838, 5758, 10113, ... of 32768. At size 7 there are two
    // cells across, so nine corners: 16838 is above one half, 5758 and 10113 are not,
    // 17515 and 31051 are, 5627 is not. Those of the last column and row are drawn too,
    // and overwritten.
    const picture made = maze(7, 1, 0.5f);
    CHECK(channel_at(made, 0, 0, 0) == 253);     // corner (0, 0): 16838
    CHECK(channel_at(made, 128, 0, 0) == 0);     // corner (0, 1): 5758
    CHECK(channel_at(made, 255, 0, 0) == 253);   // last column repeats (0, 0), not 10113
    CHECK(channel_at(made, 0, 128, 0) == 253);   // corner (1, 0): 17515
    CHECK(channel_at(made, 128, 128, 0) == 253); // corner (1, 1): 31051
    CHECK(channel_at(made, 0, 255, 0) == 253);   // last row repeats (0, 0)
    CHECK(channel_at(made, 128, 255, 0) == 0);   // and (0, 1)
    CHECK(channel_at(made, 255, 255, 0) == 253);
}

TEST_CASE("all 16 corner patterns interpolate their corners, through the curve but for the full one")
{
    build_maze_tables();
    std::set<int> patterns;
    uint32_t wrong = 0;
    for (uint32_t level = 1; level <= 7; ++level)
        for (uint32_t seed = 1; seed <= 12; ++seed) {
            const picture made = maze(static_cast<float>(level), static_cast<float>(seed), 0.5f);
            const corner_bits corners = half_full_corners(256u >> level, seed);
            const uint32_t m = (1u << level) - 1;
            for (uint32_t y = 0; y < 256; ++y)
                for (uint32_t x = 0; x < 256; ++x) {
                    const uint32_t row = y >> level;
                    const uint32_t column = x >> level;
                    const uint32_t i = y & m;
                    const uint32_t j = x & m;
                    const int a = corners.at(row, column);
                    const int b = corners.at(row, column + 1);
                    const int c = corners.at(row + 1, column);
                    const int d = corners.at(row + 1, column + 1);
                    patterns.insert(8 * a + 4 * b + 2 * c + d);
                    const uint32_t areas
                        = (a ? (m - i) * (m - j) : 0) + (b ? (m - i) * j : 0) + (c ? i * (m - j) : 0) + (d ? i * j : 0);
                    const uint32_t weight = 255 * areas / (m * m);
                    const bool whole = 255 * areas % (m * m) == 0;
                    const int value = a + b + c + d == 4 ? 255 : maze_curve[weight];
                    // A whole weight may come out one less by the order of the table's operations.
                    const int lower = a + b + c + d == 1 && whole && weight > 0 ? maze_curve[weight - 1] : value;
                    const int red = channel_at(made, x, y, 0);
                    wrong += (red != value && red != lower) || channel_at(made, x, y, 1) != red / 2
                        || channel_at(made, x, y, 2) != 0;
                }
        }
    CHECK(wrong == 0);
    CHECK(patterns.size() == 16);
}

TEST_CASE("the fullness shifts the draws before they are rounded")
{
    // 0.3 sets the corners whose draw is above 0.9, 0.7 those above 0.1.
    for (const auto& [fullness, limit] : {std::pair{0.3f, 0.9}, {0.7f, 0.1}}) {
        const picture made = maze(1, 99, fullness);
        uint32_t state = 99;
        uint32_t wrong = 0;
        for (uint32_t row = 0; row < 128; ++row)
            for (uint32_t column = 0; column <= 128; ++column) {
                state = state * 1103515245u + 12345u;
                const bool set = (state >> 16 & 0x7FFF) / 32768.0 > limit;
                if (column < 128)
                    wrong += (channel_at(made, 2 * column, 2 * row, 0) > 0) != set;
            }
        CHECK(wrong == 0);
    }
}

TEST_CASE("a maze's size is rounded to the nearest integer and clamped to 1..7")
{
    CHECK(maze(0.5f, 5, 0.5f) == maze(1, 5, 0.5f));
    CHECK(maze(-3.0f, 5, 0.5f) == maze(1, 5, 0.5f));
    CHECK(maze(1.4f, 5, 0.5f) == maze(1, 5, 0.5f));
    CHECK(maze(1.6f, 5, 0.5f) == maze(2, 5, 0.5f));
    CHECK(maze(2.5f, 5, 0.5f) == maze(2, 5, 0.5f)); // ties to even
    CHECK(maze(3.5f, 5, 0.5f) == maze(4, 5, 0.5f));
    CHECK(maze(9.0f, 5, 0.5f) == maze(7, 5, 0.5f));
    CHECK(maze(1e30f, 5, 0.5f) == maze(7, 5, 0.5f));
    CHECK(maze(std::numeric_limits<float>::quiet_NaN(), 5, 0.5f) == maze(1, 5, 0.5f));
    CHECK(maze(1, 5, 0.5f) != maze(2, 5, 0.5f));
}

TEST_CASE("a maze's field is truncated, and a fullness that is no number is empty")
{
    CHECK(maze(4, 5.9f, 0.5f) == maze(4, 5, 0.5f));
    CHECK(maze(4, 5, 0.5f) != maze(4, 6, 0.5f));
    CHECK(maze(4, 5, std::numeric_limits<float>::quiet_NaN()) == flat_picture(256, 0));
}

TEST_CASE("a maze tiles: its last row and column meet the first across the edge")
{
    // To within the 2 that a full cell, which is not smoothed, is brighter than a corner.
    const picture made = maze(5, 31, 0.5f);
    int worst = 0;
    for (uint32_t n = 0; n < 256; ++n) {
        worst = std::max(worst, std::abs(channel_at(made, n, 255, 0) - channel_at(made, n, 0, 0)));
        worst = std::max(worst, std::abs(channel_at(made, 255, n, 0) - channel_at(made, 0, n, 0)));
    }
    CHECK(worst <= 2);
}

TEST_CASE("a picture that is no whole number of cells is black beside them")
{
    const picture made = maze(2, 3, 1.0f, 10);
    CHECK(pixel_of(made, 7, 7) == 0xFF7F00);
    CHECK(pixel_of(made, 8, 0) == 0);
    CHECK(pixel_of(made, 0, 8) == 0);
    CHECK(maze(7, 3, 1.0f, 64) == flat_picture(64, 0));
}
