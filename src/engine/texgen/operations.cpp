#include "texgen/operations.h"

#include "content/numbers.h"
#include "texgen/cosine_table.h"
#include "texgen/neighbour_kernels.h"
#include "texgen/point_kernels.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>

constexpr double cosine_turn = 4096.0; // steps of the cosine table in a full turn

// ---- neighbourhood operations -------------------------------------------------------
//
// They read pixels around the one that they write, so source and result differ.

static const uint8_t* pixel_at(const uint8_t* picture, uint32_t size, uint32_t x, uint32_t y)
{
    assert(x < size && y < size);
    return picture + size_t{3} * (size_t{y} * size + x);
}

static uint32_t wrap(int64_t position, uint32_t size)
{
    assert(size > 0);
    const int64_t remainder = position % size;
    return static_cast<uint32_t>(remainder < 0 ? remainder + size : remainder);
}

// A short copy, which does not ask each time how it is done best.
static void copy_part(const uint8_t* a, uint8_t* out, size_t count)
{
    constexpr size_t step = 32;
    if (count < step) {
        std::memcpy(out, a, count);
        return;
    }
    for (size_t n = 0; n + step < count; n += step)
        std::memcpy(out + n, a + n, step);
    std::memcpy(out + count - step, a + count - step, step);
}

// Rows that begin with their byte `begin` and go on with what stood before it. A long part is copied from all rows at
// one go, with the ends of the next or last rows, over which the short part is written.
static void turn_rows(const uint8_t* a, uint8_t* out, size_t row, size_t count, size_t begin)
{
    if (count == 0)
        return;
    const size_t end = row - begin;
    const bool first_at_once = begin <= row / 4;
    const bool last_at_once = end <= row / 4;
    if (first_at_once)
        std::memcpy(out, a + begin, count * row - begin);
    if (last_at_once)
        std::memcpy(out + end, a, count * row - end);
    for (size_t y = 0; y < count && begin != 0; ++y, a += row, out += row) {
        if (!first_at_once)
            copy_part(a + begin, out, end);
        if (!last_at_once)
            copy_part(a, out + end, begin);
    }
}

// "X offset" moves along the rows and "Y offset" along the columns: crossed on
// purpose, as documents count on it.
static void offset_picture(const float* values, const uint8_t* a, uint8_t* out, uint32_t size)
{
    const uint32_t rows = wrap(truncate_to_int(values[0]), size);
    const size_t begin = size_t{3} * wrap(truncate_to_int(values[1]), size);
    const size_t row = size_t{3} * size;
    turn_rows(a + row * rows, out, row, size - rows, begin);
    turn_rows(a, out + row * (size - rows), row, rows, begin);
}

namespace {

// A sample's place along one axis: the pixel before it, the one behind it, and how
// far it lies between them.
struct sample_place {
    uint32_t before;
    uint32_t behind;
    double fraction; // 0..1
};

} // namespace

static sample_place place_sample(double position, uint32_t size)
{
    if (position < 0.0)
        position += size;
    if (!std::isfinite(position))
        position = 0.0;
    const double whole = std::floor(position);
    double pixel = std::fmod(whole, size);
    if (pixel < 0.0)
        pixel += size;
    const auto before = static_cast<uint32_t>(pixel);
    assert(before < size);
    return {before, (before + 1) % size, position - whole};
}

// The corners are weighted by their distances themselves, and the last corner's
// distance leaves the x fraction out: the look of existing productions.
static void mix_corners(const uint8_t* a, uint32_t size, const sample_place& u, const sample_place& v, uint8_t* out)
{
    const double fx = u.fraction;
    const double fy = v.fraction;
    const double d00 = std::sqrt(fx * fx + fy * fy);
    const double d10 = std::sqrt((1.0 - fx) * (1.0 - fx) + fy * fy);
    const double d01 = std::sqrt(fx * fx + (1.0 - fy) * (1.0 - fy));
    const double d11 = std::sqrt(fy * fy + (1.0 - fy) * (1.0 - fy));
    const uint8_t* p00 = pixel_at(a, size, u.before, v.before);
    const uint8_t* p10 = pixel_at(a, size, u.behind, v.before);
    const uint8_t* p01 = pixel_at(a, size, u.before, v.behind);
    const uint8_t* p11 = pixel_at(a, size, u.behind, v.behind);
    for (uint32_t c = 0; c < 3; ++c) {
        const double sum = p00[c] * d00 + p10[c] * d10 + p01[c] * d01 + p11[c] * d11;
        out[c] = low_byte(truncate_to_int(sum / (d00 + d10 + d01 + d11)));
    }
}

// Whole waves across the picture; a sign is of no matter to a cosine.
static double wave_count(float wavelength)
{
    return std::fabs(static_cast<double>(truncate_to_int(wavelength)));
}

// The x displacement follows the row and the "Y wavelength", the y displacement the
// column and the "X wavelength".
static void ripple(const float* values, const uint8_t* a, uint8_t* out, uint32_t size)
{
    assert(cosine_table[0] == 1.0f); // build_cosine_table was called
    const double x_reach = static_cast<double>(values[0]) * size;
    const double y_reach = static_cast<double>(values[1]) * size;
    const double x_waves = wave_count(values[2]);
    const double y_waves = wave_count(values[3]);
    for (uint32_t y = 0; y < size; ++y) {
        const double x_shift = x_reach * cosine_at(truncate_to_int(y_waves * cosine_turn / size * y));
        for (uint32_t x = 0; x < size; ++x, out += 3) {
            const double column = static_cast<double>(x) / size;
            const double y_shift = y_reach * cosine_at(truncate_to_int(column * x_waves * cosine_turn));
            mix_corners(a, size, place_sample(x + x_shift, size), place_sample(y + y_shift, size), out);
        }
    }
}

static uint32_t emboss_direction(float value)
{
    return static_cast<uint32_t>(std::clamp(truncate_to_int(value), 1, 4));
}

// They read pixels that they have written already where the result is the source: the source is then a copy. Without
// memory for it the result keeps its contents.
static void apply_neighbourhood_operation(
    node_code code, const float* values, const uint8_t* a, uint8_t* result, uint32_t size)
{
    assert(code >= node_offset && code <= node_emboss);
    std::unique_ptr<uint8_t[]> copy;
    if (result == a) {
        const size_t bytes = size_t{3} * size * size;
        copy.reset(new (std::nothrow) uint8_t[bytes]);
        if (copy == nullptr)
            return;
        std::memcpy(copy.get(), a, bytes);
        a = copy.get();
    }
    if (code == node_offset)
        offset_picture(values, a, result, size);
    else if (code == node_ripple)
        ripple(values, a, result, size);
    else if (code == node_blur)
        blur_picture(best_instructions(), a, result, size);
    else
        emboss_picture(best_instructions(), emboss_direction(values[0]), a, result, size);
}

void apply_texture_operation(uint8_t code, const float values[max_node_values], const uint8_t* a, const uint8_t* b,
    uint8_t* result, uint32_t size)
{
    if (size == 0)
        return;
    assert(a != nullptr && result != nullptr);
    assert(b != nullptr || (code >= node_invert && code <= node_emboss) || code == node_output);
    const instruction_set set = best_instructions();
    const size_t count = size_t{3} * size * size;
    const scaled_bytes first = {a, values[0]};
    const scaled_bytes second = {b, values[1]};
    switch (static_cast<node_code>(code)) {
    case node_add_image:
    case node_add_2:
        return add_bytes(set, first, second, result, count);
    case node_multiply_image:
        return multiply_bytes_capped(set, {a, b, values[0]}, result, count);
    case node_mul_2:
        return multiply_bytes_clamped(set, {a, b, values[0]}, result, count);
    case node_maximum_image:
    case node_max_2:
        return take_greater_bytes(set, first, second, result, count);
    case node_minimum_image:
    case node_min_2:
        return take_lesser_bytes(set, first, second, result, count);
    case node_invert:
        return invert_bytes(set, a, result, count);
    case node_multiply:
        return scale_bytes(set, first, result, count);
    case node_offset:
    case node_ripple:
    case node_blur:
    case node_emboss:
        return apply_neighbourhood_operation(static_cast<node_code>(code), values, a, result, size);
    case node_output:
        break;
    }
    // Not an operation: the result keeps its contents.
}
