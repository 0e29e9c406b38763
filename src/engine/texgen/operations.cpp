#include "texgen/operations.h"

#include "content/numbers.h"
#include "texgen/neighbour_kernels.h"
#include "texgen/point_kernels.h"
#include "texgen/ripple.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>

// ---- neighbourhood operations -------------------------------------------------------
//
// They read pixels around the one that they write, so source and result differ.

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
        ripple_picture(values, a, result, size);
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
