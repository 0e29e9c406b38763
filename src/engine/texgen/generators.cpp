#include "texgen/generators.h"

#include "content/numbers.h"
#include "texgen/generator_kernels.h"
#include "texgen/maze_tables.h"
#include "texgen/rounded_sine.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>

constexpr double pi = 3.14159265358979323846;
constexpr int32_t max_brick_count = 65536; // along one side; bounds the work of a document's whim

// ---- colours and bytes ----------------------------------------------------------

namespace {

struct color_bytes {
    uint8_t channel[3];
};

} // namespace

static uint8_t byte_of(double value)
{
    return low_byte(truncate_to_int(value));
}

// Three values of the parameters, each nominally 0..1, times a weight.
static color_bytes weighted_color(const float* color, double weight)
{
    return {byte_of(color[0] * weight), byte_of(color[1] * weight), byte_of(color[2] * weight)};
}

static uint8_t* put_pixel(uint8_t* pixel, const color_bytes& color)
{
    std::memcpy(pixel, color.channel, sizeof color.channel);
    return pixel + sizeof color.channel;
}

// Clamped to 0..1; what is not a number is 0.
static double clamp_to_unit(double value)
{
    if (!(value > 0.0))
        return 0.0;
    return std::min(value, 1.0);
}

// ---- random numbers ---------------------------------------------------------------

namespace {

// A linear congruential generator. Every picture seeds its own, so that it depends
// on its parameters only.
struct random_state {
    uint32_t state;
};

} // namespace

// The low 32 bits of the number as a 64-bit integer; 0 for what does not fit one.
static random_state seeded_from(float value)
{
    constexpr float limit = 9223372036854775808.0f;
    if (!(value >= -limit && value < limit))
        return {0};
    return {static_cast<uint32_t>(static_cast<uint64_t>(static_cast<int64_t>(value)))};
}

// 0 (inclusive) to 1 (exclusive) in steps of 1/32768.
static double draw(random_state& random)
{
    random.state = random.state * 1103515245u + 12345u;
    return static_cast<double>((random.state >> 16) & 0x7FFF) / 32768.0;
}

// ---- the kinds --------------------------------------------------------------------

// Repeats the first of `count` units to all of them, as often as it takes by doubling.
static void repeat_first(uint8_t* units, size_t unit, size_t count)
{
    const size_t bytes = unit * count;
    for (size_t filled = unit; filled < bytes; filled *= 2)
        std::memcpy(units + filled, units, std::min(filled, bytes - filled));
}

static void generate_color(const float* values, uint8_t* pixels, uint32_t size)
{
    put_pixel(pixels, weighted_color(values, 255.0));
    repeat_first(pixels, 3, size_t{size} * size);
}

// How many elements a row has that kernels read and fill: whole runs.
static size_t padded(uint32_t size)
{
    return (size_t{size} + generator_run - 1) / generator_run * generator_run;
}

static uint32_t word_of(const color_bytes& color)
{
    return uint32_t{color.channel[0]} | uint32_t{color.channel[1]} << 8 | uint32_t{color.channel[2]} << 16;
}

static void generate_sinus_plasma(const float* values, uint8_t* pixels, uint32_t size)
{
    const std::unique_ptr<double[]> across(new (std::nothrow) double[padded(size)]{});
    const std::unique_ptr<int16_t[]> split(new (std::nothrow) int16_t[2 * padded(size)]);
    if (across == nullptr || split == nullptr)
        return;
    const double step = 2.0 * pi / size;
    for (uint32_t x = 0; x < size; ++x)
        across[x] = rounded_sine(x * step * values[3]);
    uint32_t palette[256]; // a value carries the 255
    for (int32_t v = 0; v < 255; ++v)
        palette[v] = word_of(weighted_color(values, v));
    palette[255] = word_of(weighted_color(values, unrepresentable));

    const bool finite = std::isfinite(values[3]) && std::isfinite(values[4]); // as are their sines
    const instruction_set set = finite ? best_instructions() : instructions_plain;
    sine_rows rows = {.across = across.get(),
        .palette = palette,
        .values = {split.get(), split.get() + padded(size)},
        .scales = {make_byte_scale(values[0]), make_byte_scale(values[1]), make_byte_scale(values[2])}};
    prepare_sine_rows(set, rows, size);
    for (uint32_t y = 0; y < size; ++y, pixels += size_t{3} * size)
        sine_row(set, rows, rounded_sine(y * step * values[4]), pixels, size);
}

// Rows and columns mirror each other around the centre.
static void generate_radial_colors(const float* values, uint8_t* pixels, uint32_t size)
{
    radial_rings rings = {.inverse_radian = values[6],
        .center = static_cast<int32_t>(size / 2),
        .offset = std::clamp(truncate_to_int(values[7]), 0, 127),
        .center_color = {values[0], values[1], values[2]},
        .margin_color = {values[3], values[4], values[5]}};
    const std::unique_ptr<uint32_t[]> words(new (std::nothrow) uint32_t[padded(size + 1)]);
    if (words == nullptr)
        return;
    const instruction_set set = radial_rings_fit(rings) ? best_instructions() : instructions_plain;
    const uint32_t center = size / 2;
    const size_t row_bytes = size_t{3} * size;
    for (uint32_t y = 0; y < size; ++y) {
        if (y > center) {
            std::memcpy(pixels + row_bytes * y, pixels + row_bytes * (2 * center - y), row_bytes);
            continue;
        }
        radial_half_row(set, rings, y, words.get());
        for (uint32_t x = center + 1; x < size; ++x)
            words[x] = words[2 * center - x];
        store_words(best_instructions(), words.get(), pixels + row_bytes * y, size);
    }
}

// ---- maze -------------------------------------------------------------------------

namespace {

// A grid of corner bits, (cells + 1) x (cells + 1), row after row.
struct maze_grid {
    uint32_t cells;
    std::unique_ptr<uint8_t[]> bits; // null: no memory
};

} // namespace

// Every corner takes a draw, also those of the last row and column, which then
// repeat the first so that the picture tiles.
static maze_grid random_maze_grid(uint32_t cells, float field, float fullness)
{
    const size_t side = size_t{cells} + 1;
    maze_grid grid = {cells, std::unique_ptr<uint8_t[]>(new (std::nothrow) uint8_t[side * side])};
    if (grid.bits == nullptr)
        return grid;
    random_state random = seeded_from(field);
    const double shift = 2.0 * clamp_to_unit(fullness) - 1.0;
    for (size_t n = 0; n < side * side; ++n)
        grid.bits[n] = clamp_to_unit(shift + draw(random)) > 0.5 ? 1 : 0; // to the nearest; one half is even, 0
    for (size_t row = 0; row < side; ++row)
        grid.bits[row * side + cells] = grid.bits[row * side];
    std::copy_n(grid.bits.get(), side, grid.bits.get() + side * cells);
    return grid;
}

namespace {

// Which table draws a cell, and how it is turned: rows upside down, columns right to
// left, and then rows and columns exchanged.
struct maze_cell_plan {
    uint8_t table;
    bool flip_rows;
    bool flip_columns;
    bool transpose;
};

} // namespace

// By case 8 a + 4 b + 2 c + d of the corners top left, top right, bottom left and
// bottom right. Table 0 has the top left corner, 1 the bottom pair, 2 the top right
// and bottom left corners, 3 all but the top left. Cases 0 and 15 read no table.
// clang-format off
static constexpr maze_cell_plan maze_cell_plans[16] = {
    { 0, false, false, false }, //
    { 0, true,  true,  false }, //       d
    { 0, true,  false, false }, //     c
    { 1, false, false, false }, //     c d
    { 0, false, true,  false }, //   b
    { 1, false, false, true  }, //   b   d
    { 2, false, false, false }, //   b c
    { 3, false, false, false }, //   b c d
    { 0, false, false, false }, // a
    { 2, false, true,  false }, // a     d
    { 1, false, true,  true  }, // a   c
    { 3, false, true,  false }, // a   c d
    { 1, true,  false, false }, // a b
    { 3, true,  false, false }, // a b   d
    { 3, true,  true,  false }, // a b c
    { 0, false, false, false }, // a b c d
};
// clang-format on

static uint32_t maze_cell_case(const maze_grid& grid, uint32_t row, uint32_t column)
{
    assert(row < grid.cells && column < grid.cells);
    const size_t side = size_t{grid.cells} + 1;
    const uint8_t* top = grid.bits.get() + row * side + column;
    const uint8_t* bottom = top + side;
    return 8u * top[0] + 4u * top[1] + 2u * bottom[0] + bottom[1];
}

namespace {

// A row of a cell's weights: one table entry for each column.
struct maze_cell_row {
    const uint8_t* first;
    ptrdiff_t step;
};

} // namespace

static maze_cell_row find_cell_row(uint32_t level, uint32_t cell_case, uint32_t i)
{
    assert(cell_case > 0 && cell_case < 15);
    const maze_cell_plan plan = maze_cell_plans[cell_case];
    const uint32_t last = (1u << level) - 1;
    const uint32_t row = plan.flip_rows ? last - i : i;
    const uint32_t column = plan.flip_columns ? last : 0;
    const ptrdiff_t step = plan.transpose ? ptrdiff_t{1} << level : 1;
    const uint8_t* first = maze_table(level, plan.table).data();
    first += plan.transpose ? (column << level) + row : (row << level) + column;
    return {first, plan.flip_columns ? -step : step};
}

// Row `i` of a cell in words of the palette; the full case is not smoothed and so brighter than any corner.
static void paint_cell_row(uint32_t level, uint32_t cell_case, uint32_t i, const uint32_t* palette, uint32_t* words)
{
    const uint32_t side = 1u << level;
    if (cell_case == 0 || cell_case == 15) {
        std::fill_n(words, side, palette[cell_case == 0 ? 0 : 255]);
        return;
    }
    const maze_cell_row weights = find_cell_row(level, cell_case, i);
    for (uint32_t j = 0; j < side; ++j)
        words[j] = palette[weights.first[static_cast<ptrdiff_t>(j) * weights.step]];
}

static void generate_maze(const float* values, uint8_t* pixels, uint32_t size)
{
    const double wanted = std::nearbyint(static_cast<double>(values[3]));
    assert(maze_table(1, 0)[0] == maze_curve[255]); // build_maze_tables was called
    const auto level = static_cast<uint32_t>(std::fmin(std::fmax(wanted, 1.0), maze_level_count));
    const maze_grid grid = random_maze_grid(size >> level, values[4], values[5]);
    const std::unique_ptr<uint32_t[]> words(new (std::nothrow) uint32_t[size]{}); // a rest beside the cells is black
    if (grid.bits == nullptr || words == nullptr)
        return;
    uint32_t palette[256];
    for (int32_t weight = 0; weight < 256; ++weight)
        palette[weight] = word_of(weighted_color(values, weight));
    const uint32_t covered = grid.cells << level;
    const uint32_t last = (1u << level) - 1;
    for (uint32_t y = 0; y < covered; ++y) {
        for (uint32_t column = 0; column < grid.cells; ++column)
            paint_cell_row(
                level, maze_cell_case(grid, y >> level, column), y & last, palette, words.get() + (column << level));
        store_words(best_instructions(), words.get(), pixels + size_t{3} * size * y, size);
    }
    std::memset(pixels + size_t{3} * size * covered, 0, size_t{3} * size * (size - covered));
}

// ---- bricks -----------------------------------------------------------------------

namespace {

// One direction of a brick wall.
struct brick_rhythm {
    float period;   // pixels from joint to joint; infinite without bricks
    int32_t margin; // pixels of mortar on either side of a joint
};

} // namespace

static brick_rhythm make_rhythm(float count, float margin, uint32_t size)
{
    assert(size > 0);
    const int32_t bricks = std::clamp(truncate_to_int(count), 0, max_brick_count);
    return {static_cast<float>(size) / static_cast<float>(bricks), truncate_to_int(margin)};
}

namespace {

// Where a pixel lies: in which period, and whether in its brick or in the mortar.
struct brick_place {
    uint32_t period;
    bool is_brick;
};

} // namespace

// The position within the period is what repeated subtraction leaves, in extended
// precision; a division would put the last pixel of many a brick into the next one
// ("... a pixel on a joint belongs to the brick before it" tests it).
static brick_place find_brick(const brick_rhythm& rhythm, uint32_t position)
{
    assert(rhythm.period > 0.0f); // or it is never reached
    brick_place place = {0, false};
    const long double period = rhythm.period;
    long double t = position;
    while (t > period) {
        t -= period;
        ++place.period;
    }
    place.is_brick = t >= rhythm.margin && period - t >= rhythm.margin;
    return place;
}

// "Vertical" is the number of bricks along a row, "Horizontal" the number of courses.
static void generate_bricks(const float* values, uint8_t* pixels, uint32_t size)
{
    const color_bytes brick = weighted_color(values, 255.0);
    const color_bytes wall = weighted_color(values + 3, 255.0);
    const brick_rhythm courses = make_rhythm(values[6], values[8], size);
    const brick_rhythm joints = make_rhythm(values[7], values[9], size);
    const int64_t remainder = int64_t{truncate_to_int(values[10])} % size;
    const auto shift = static_cast<uint32_t>(remainder < 0 ? remainder + size : remainder); // a true modulo
    assert(shift < size);
    const std::unique_ptr<uint8_t[]> rows(new (std::nothrow) uint8_t[size_t{9} * size]);
    if (rows == nullptr)
        return;
    // A row is one of three: wall, bricks, bricks that are shifted.
    const size_t row_bytes = size_t{3} * size;
    uint8_t* wall_row = rows.get();
    uint8_t* brick_row = wall_row + row_bytes;
    uint8_t* shifted_row = brick_row + row_bytes;
    put_pixel(wall_row, wall);
    repeat_first(wall_row, 3, size);
    for (uint32_t x = 0; x < size; ++x)
        put_pixel(brick_row + size_t{3} * x, find_brick(joints, x).is_brick ? brick : wall);
    std::rotate_copy(brick_row, brick_row + size_t{3} * shift, brick_row + row_bytes, shifted_row);
    for (uint32_t y = 0; y < size; ++y) {
        const brick_place course = find_brick(courses, y);
        const uint8_t* bricks = course.period % 2 == 1 ? shifted_row : brick_row;
        std::memcpy(pixels + row_bytes * y, course.is_brick ? bricks : wall_row, row_bytes);
    }
}

// ---- noise ------------------------------------------------------------------------

static void generate_noise(const float* values, uint8_t* pixels, uint32_t size)
{
    const instruction_set set = noise_color_fits(values) ? best_instructions() : instructions_plain;
    noise_pixels(set, seeded_from(values[3]).state, values, pixels, size_t{size} * size);
}

void generate_image(generated_image& image, uint32_t size)
{
    const float* values = image.params.values;
    uint8_t* pixels = image.pixels;
    if (pixels == nullptr || size == 0)
        return;
    switch (static_cast<generator_kind>(image.params.kind)) {
    case generator_color:
        return generate_color(values, pixels, size);
    case generator_sinus_plasma:
        return generate_sinus_plasma(values, pixels, size);
    case generator_radial_colors:
        return generate_radial_colors(values, pixels, size);
    case generator_maze:
        return generate_maze(values, pixels, size);
    case generator_bricks:
        return generate_bricks(values, pixels, size);
    case generator_noise:
        return generate_noise(values, pixels, size);
    case generator_kind_count:
        break;
    }
    // An unknown kind keeps the pixels as they are.
}
