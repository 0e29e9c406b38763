#include "texgen/maze_tables.h"

#include "content/numbers.h"

#include <cassert>
#include <cstddef>
#include <iterator>

constexpr uint32_t tables_per_level = 4;

// A level starts behind the four tables of every smaller one: 4 x (4 + 16 + ..).
static constexpr size_t level_begin(uint32_t level)
{
    size_t begin = 0;
    for (uint32_t k = 1; k < level; ++k)
        begin += tables_per_level << (2 * k);
    return begin;
}

static uint8_t table_bytes[level_begin(maze_level_count + 1)];

// A soft start and an almost straight end; the top is 253, so a smoothed corner
// never reaches the full colour.
// clang-format off
const uint8_t maze_curve[256] = {
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1,
    1, 1, 2, 2, 2, 2, 2, 3, 3, 3, 3, 3, 4, 4, 4, 5,
    5, 5, 6, 6, 6, 7, 7, 7, 8, 8, 8, 9, 9, 10, 10, 11,
    11, 11, 12, 12, 13, 13, 14, 14, 15, 15, 16, 17, 17, 18, 18, 19,
    19, 20, 21, 21, 22, 23, 23, 24, 24, 25, 26, 27, 27, 28, 29, 29,
    30, 31, 32, 32, 33, 34, 35, 35, 36, 37, 38, 39, 40, 40, 41, 42,
    43, 44, 45, 46, 47, 47, 48, 49, 50, 51, 52, 53, 54, 55, 56, 57,
    58, 59, 60, 61, 62, 63, 64, 65, 66, 67, 68, 69, 70, 71, 72, 74,
    75, 76, 77, 78, 79, 80, 81, 83, 84, 85, 86, 87, 88, 90, 91, 92,
    93, 94, 96, 97, 98, 99, 101, 102, 103, 104, 106, 107, 108, 109, 111, 112,
    113, 115, 116, 117, 119, 120, 121, 123, 124, 125, 127, 128, 129, 131, 132, 133,
    135, 136, 138, 139, 140, 142, 143, 145, 146, 147, 149, 150, 152, 153, 155, 156,
    157, 159, 160, 162, 163, 165, 166, 168, 169, 171, 172, 174, 175, 176, 178, 179,
    181, 182, 184, 185, 187, 188, 190, 192, 193, 195, 196, 198, 199, 201, 202, 204,
    205, 207, 208, 210, 211, 213, 214, 216, 218, 219, 221, 222, 224, 225, 227, 228,
    230, 232, 233, 235, 236, 238, 239, 241, 242, 244, 246, 247, 249, 250, 252, 253,
};
// clang-format on

// The weight before the curve, 0..255, at row i and column j of a cell whose last
// row and column are m. The order of the operations is part of the result: it
// decides which side of a whole number an exact one falls on.
static double corner_weight(uint32_t table, double m, double i, double j)
{
    switch (table) {
    case 0:
        return (m - j) * ((m - i) * (1.0 / m) * (255.0 / m));
    case 1:
        return i * (255.0 * m / (m * m));
    case 2:
        return ((m - j) * (i / m) + j * ((m - i) / m)) * 255.0 / m;
    case 3:
        return ((m - j) * (i / m) + j * ((m - i) / m + i / m)) * 255.0 / m;
    }
    return 0.0;
}

static void build_table(uint32_t level, uint32_t table)
{
    assert(level >= 1 && level <= maze_level_count && table < tables_per_level);
    const uint32_t side = 1u << level;
    uint8_t* bytes = table_bytes + level_begin(level) + (static_cast<size_t>(table) << (2 * level));
    for (uint32_t i = 0; i < side; ++i)
        for (uint32_t j = 0; j < side; ++j)
            *bytes++ = maze_curve[low_byte(truncate_to_int(corner_weight(table, side - 1, i, j)))];
    assert(bytes <= std::end(table_bytes));
}

void build_maze_tables()
{
    for (uint32_t level = 1; level <= maze_level_count; ++level)
        for (uint32_t table = 0; table < tables_per_level; ++table)
            build_table(level, table);
}

std::span<const uint8_t> maze_table(uint32_t level, uint32_t table)
{
    if (level < 1 || level > maze_level_count || table >= tables_per_level)
        return {};
    const size_t bytes = size_t{1} << (2 * level);
    return {table_bytes + level_begin(level) + table * bytes, bytes};
}
