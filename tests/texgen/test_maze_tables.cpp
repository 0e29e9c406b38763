#include "texgen/maze_tables.h"

#include <doctest/doctest.h>

#include <vector>

TEST_CASE("the maze curve rises from 0 to 253")
{
    CHECK(maze_curve[0] == 0);
    CHECK(maze_curve[10] == 0);
    CHECK(maze_curve[11] == 1);
    CHECK(maze_curve[31] == 5);
    CHECK(maze_curve[64] == 19);
    CHECK(maze_curve[126] == 72);
    CHECK(maze_curve[127] == 74);
    CHECK(maze_curve[128] == 75);
    CHECK(maze_curve[192] == 157);
    CHECK(maze_curve[254] == 252);
    CHECK(maze_curve[255] == 253);
    uint32_t sum = 0;
    for (uint32_t i = 0; i < 256; ++i) {
        sum += maze_curve[i];
        if (i > 0)
            CHECK(maze_curve[i] >= maze_curve[i - 1]);
    }
    CHECK(sum == 23592);
}

TEST_CASE("maze tables have the square of their side, and there are none beyond 7 levels and 4 tables")
{
    build_maze_tables();
    for (uint32_t level = 1; level <= 7; ++level)
        for (uint32_t table = 0; table < 4; ++table)
            CHECK(maze_table(level, table).size() == (size_t{1} << level) * (size_t{1} << level));
    CHECK(maze_table(0, 0).empty());
    CHECK(maze_table(8, 0).empty());
    CHECK(maze_table(1, 4).empty());
    CHECK(maze_table(7, 3).data() + maze_table(7, 3).size() > maze_table(7, 2).data());
}

TEST_CASE("full corners of every maze table are 253 at all levels, also at 3 and 6")
{
    build_maze_tables();
    for (uint32_t level = 1; level <= 7; ++level) {
        CAPTURE(level);
        const size_t last = (size_t{1} << level) - 1;
        const size_t row = last * (last + 1); // start of the last row
        CHECK(maze_table(level, 0)[0] == 253);
        CHECK(maze_table(level, 0)[last] == 0);
        CHECK(maze_table(level, 0)[row + last] == 0);
        for (size_t j = 0; j <= last; ++j) {
            CHECK(maze_table(level, 1)[j] == 0);
            CHECK(maze_table(level, 1)[row + j] == 253);
        }
        CHECK(maze_table(level, 2)[0] == 0);
        CHECK(maze_table(level, 2)[last] == 253);
        CHECK(maze_table(level, 2)[row] == 253);
        CHECK(maze_table(level, 2)[row + last] == 0);
        CHECK(maze_table(level, 3)[0] == 0);
        CHECK(maze_table(level, 3)[last] == 253);
        CHECK(maze_table(level, 3)[row] == 253);
        CHECK(maze_table(level, 3)[row + last] == 253);
    }
}

TEST_CASE("maze tables are read by row, then column")
{
    // Level 2: sides of 4, last row and column 3. Row 1, column 2 of each:
    // T0 255 x 1 x 2 / 9 = 56, T1 255 x 1 / 3 = 85, T2 255 x (1 x 1 + 2 x 2) / 9 = 141,
    // T3 255 x (1 x 1 + 2 x 3) / 9 = 198.
    build_maze_tables();
    CHECK(maze_table(2, 0)[4 + 2] == 15);
    CHECK(maze_table(2, 1)[4 + 2] == 34);
    CHECK(maze_table(2, 2)[4 + 2] == 90);
    CHECK(maze_table(2, 3)[4 + 2] == 166);
    CHECK(maze_table(2, 1)[2 * 4 + 1] == 127); // 170 before the curve
}

TEST_CASE("every maze weight is truncated first and curved then")
{
    // In whole numbers: m^2 times the weight before the curve. A weight that is a whole
    // number may come out one less, where the order of the operations rounds it down.
    build_maze_tables();
    for (uint32_t level = 1; level <= 7; ++level) {
        const uint32_t side = 1u << level;
        const uint32_t m = side - 1;
        uint32_t rounded_down = 0;
        for (uint32_t i = 0; i < side; ++i)
            for (uint32_t j = 0; j < side; ++j) {
                const uint32_t exact[4] = {255 * (m - j) * (m - i), 255 * i * m, 255 * ((m - j) * i + j * (m - i)),
                    255 * ((m - j) * i + j * m)};
                for (uint32_t table = 0; table < 4; ++table) {
                    const uint8_t weight = maze_table(level, table)[i * side + j];
                    const uint32_t whole = exact[table] / (m * m);
                    if (weight == maze_curve[whole])
                        continue;
                    REQUIRE(exact[table] % (m * m) == 0);
                    REQUIRE(weight == maze_curve[whole - 1]);
                    ++rounded_down;
                }
            }
        CHECK(rounded_down <= (level == 4 || level == 6 ? 5u : 0u));
    }
}
