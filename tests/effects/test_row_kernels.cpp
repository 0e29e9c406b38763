// Each form of the row kernels against the plain one, byte for byte.

#include "effects/row_kernels.h"
#include "faster_sets.h"
#include "texgen/cosine_table.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <iterator>
#include <vector>

constexpr uint32_t room = 512; // columns that a row of the tests has room for

TEST_CASE("bytes lie side by side in the same way with all instructions, at any length, and none behind them")
{
    std::vector<uint8_t> green(room);
    std::vector<uint8_t> blue(room);
    for (uint32_t x = 0; x < room; ++x) {
        green[x] = static_cast<uint8_t>(x * 37 + 1);
        blue[x] = static_cast<uint8_t>(255 - x * 11);
    }
    for (const instruction_set set : faster_sets())
        for (uint32_t count = 1; count <= 200; ++count) {
            std::vector<uint8_t> expected(room * 3, 7);
            std::vector<uint8_t> made(room * 3, 7);
            interleave_row(instructions_plain, 200, green.data(), blue.data(), expected.data(), count);
            interleave_row(set, 200, green.data(), blue.data(), made.data(), count);
            CAPTURE(static_cast<uint32_t>(set));
            CAPTURE(count);
            REQUIRE(made == expected);
        }
}

static std::vector<uint8_t> normal_map(
    instruction_set set, const std::vector<double>& columns, double red, double green, uint32_t count)
{
    std::vector<int16_t> wholes(columns.size());
    std::vector<int16_t> parts(columns.size());
    const split_numbers scaled = {wholes.data(), parts.data()};
    for (size_t x = 0; x < columns.size(); ++x)
        split_into(scaled, x, columns[x] * 255.0);
    std::vector<uint8_t> out(room * 3, 7);
    normal_map_row(set, {columns.data(), scaled, red}, {columns.data(), scaled, green}, out.data(), count);
    return out;
}

// All entries of a period in columns, and every seventh in rows: sums on whole numbers and beside them.
TEST_CASE("a normal map's rows have the same bytes with all instructions for sums of all cosines")
{
    build_cosine_table();
    for (const instruction_set set : faster_sets())
        for (uint32_t first = 0; first < 4096; first += room) {
            std::vector<double> columns;
            for (uint32_t x = 0; x < room; ++x)
                columns.push_back(static_cast<double>(cosine_table[4096 + first + x]));
            uint32_t different = 0;
            for (uint32_t row = 0; row < 8190; row += 7) {
                const auto red = static_cast<double>(cosine_table[row]);
                const auto green = static_cast<double>(cosine_table[row + 1]);
                different += normal_map(set, columns, red, green, room)
                        != normal_map(instructions_plain, columns, red, green, room)
                    ? 1u
                    : 0u;
            }
            CAPTURE(static_cast<uint32_t>(set));
            CAPTURE(first);
            CHECK(different == 0);
        }
}

TEST_CASE("a normal map's rows of any length have the same bytes with all instructions, and none behind them")
{
    std::vector<double> columns;
    for (uint32_t x = 0; x < room; ++x)
        columns.push_back(static_cast<double>(static_cast<int32_t>(x * 2654435761u)) / 2147483648.0);
    for (const instruction_set set : faster_sets())
        for (uint32_t count = 1; count <= 200; ++count)
            REQUIRE(normal_map(set, columns, 0.5, -1.0, count)
                == normal_map(instructions_plain, columns, 0.5, -1.0, count));
}

TEST_CASE("a normal map's rows have the same bytes with all instructions beside whole numbers on both sides of 0")
{
    const double misses[] = {0.0, 1e-16, 1e-12, 1e-8, 5e-8, 1e-7, 2e-7, 1e-4};
    std::vector<double> columns;
    for (uint32_t x = 0; x < room; ++x) {
        const double miss = misses[x / 2 % std::size(misses)];
        columns.push_back(std::clamp((x - 256.0) / 255.0 + (x % 2 == 0 ? miss : -miss), -1.0, 1.0));
    }
    for (const instruction_set set : faster_sets())
        for (const double red : {0.0, 1.0, -1.0, 51.0 / 255.0, 1e-13, -1e-13, 0.25})
            for (const double miss : misses)
                REQUIRE(normal_map(set, columns, red, miss - red, room)
                    == normal_map(instructions_plain, columns, red, miss - red, room));
}
