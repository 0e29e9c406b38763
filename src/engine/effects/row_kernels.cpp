#include "effects/row_kernels.h"

#include "content/numbers.h"
#include "texgen/packed_pixels.h"

#include <algorithm>
#include <cstddef>

// ---- bytes side by side ------------------------------------------------------------------

static void interleave_plain(uint8_t red, const uint8_t* green, const uint8_t* blue, uint8_t* out, uint32_t count)
{
    for (uint32_t x = 0; x < count; ++x) {
        *out++ = red;
        *out++ = green[x];
        *out++ = blue[x];
    }
}

FAST_INLINE static void interleave_fast(
    instruction_set set, uint8_t red, const uint8_t* green, const uint8_t* blue, uint8_t* out, uint32_t count)
{
    for (uint32_t begin = 0; begin < count; begin += effect_run) {
        const uint32_t run = std::min(effect_run, count - begin);
        uint32_t pixels[effect_run];
        for (uint32_t n = 0; n < effect_run; ++n)
            pixels[n] = red | uint32_t{green[n]} << 8 | uint32_t{blue[n]} << 16;
        green += effect_run;
        blue += effect_run;
        store_packed_pixels(set, pixels, out + size_t{3} * begin, run, count - begin - run);
    }
}

FAST_AVX2 static void interleave_avx2(
    uint8_t red, const uint8_t* green, const uint8_t* blue, uint8_t* out, uint32_t count)
{
    interleave_fast(instructions_avx2, red, green, blue, out, count);
}

void interleave_row(
    instruction_set set, uint8_t red, const uint8_t* green, const uint8_t* blue, uint8_t* out, uint32_t count)
{
    switch (set) {
    case instructions_avx2:
        return interleave_avx2(red, green, blue, out, count);
    case instructions_sse2:
        return interleave_fast(instructions_sse2, red, green, blue, out, count);
    case instructions_plain:
    case instruction_set_count:
        break;
    }
    interleave_plain(red, green, blue, out, count);
}

// ---- normal maps -------------------------------------------------------------------------

static void normal_map_plain(const column_sums& red, const column_sums& green, uint8_t* out, uint32_t count)
{
    for (uint32_t x = 0; x < count; ++x) {
        *out++ = low_byte(truncate_to_int((red.columns[x] + red.row) * 255.0));
        *out++ = low_byte(truncate_to_int((green.columns[x] + green.row) * 255.0));
        *out++ = 255;
    }
}

// Truncation is towards 0, and so one above the whole number below what is negative and not whole itself.
FAST_INLINE static uint16_t truncated_sum(int16_t whole, int16_t part, const split_addend& row)
{
    const int16_t below = whole_of_sum(whole, part, row);
    return static_cast<uint16_t>(below + (below < 0 ? 1 : 0));
}

// The same in double.
FAST_INLINE static void truncated_sums(const column_sums& sums, uint32_t begin, int32_t* made)
{
    const double* columns = sums.columns + begin;
    for (uint32_t n = 0; n < effect_run; ++n)
        made[n] = static_cast<int32_t>((columns[n] + sums.row) * 255.0);
}

FAST_INLINE static void normal_map_run(const column_sums& red, const split_addend& red_row, const column_sums& green,
    const split_addend& green_row, uint32_t begin, uint32_t* pixels)
{
    const int16_t* red_wholes = red.scaled_columns.wholes + begin;
    const int16_t* red_parts = red.scaled_columns.parts + begin;
    const int16_t* green_wholes = green.scaled_columns.wholes + begin;
    const int16_t* green_parts = green.scaled_columns.parts + begin;
    uint16_t made[effect_run];
    int16_t least = INT16_MAX;
    for (uint32_t n = 0; n < effect_run; ++n) {
        const uint16_t r = truncated_sum(red_wholes[n], red_parts[n], red_row);
        const uint16_t g = truncated_sum(green_wholes[n], green_parts[n], green_row);
        made[n] = static_cast<uint16_t>((r & 0xFF) | g << 8);
        least = std::min(least, certainty_of_sum(red_parts[n], red_row));
        least = std::min(least, certainty_of_sum(green_parts[n], green_row));
    }
    for (uint32_t n = 0; n < effect_run; ++n)
        pixels[n] = made[n] | 255u << 16;
    if (least >= doubtful_sum)
        return;
    int32_t reds[effect_run];
    int32_t greens[effect_run];
    truncated_sums(red, begin, reds);
    truncated_sums(green, begin, greens);
    for (uint32_t n = 0; n < effect_run; ++n)
        pixels[n] = static_cast<uint32_t>((reds[n] & 0xFF) | (greens[n] & 0xFF) << 8 | 255 << 16);
}

FAST_INLINE static void normal_map_fast(
    instruction_set set, const column_sums& red, const column_sums& green, uint8_t* out, uint32_t count)
{
    const split_addend red_row = make_split_addend(red.row * 255.0);
    const split_addend green_row = make_split_addend(green.row * 255.0);
    for (uint32_t begin = 0; begin < count; begin += effect_run) {
        const uint32_t run = std::min(effect_run, count - begin);
        uint32_t pixels[effect_run];
        normal_map_run(red, red_row, green, green_row, begin, pixels);
        store_packed_pixels(set, pixels, out + size_t{3} * begin, run, count - begin - run);
    }
}

FAST_AVX2 static void normal_map_avx2(const column_sums& red, const column_sums& green, uint8_t* out, uint32_t count)
{
    normal_map_fast(instructions_avx2, red, green, out, count);
}

void normal_map_row(instruction_set set, const column_sums& red, const column_sums& green, uint8_t* out, uint32_t count)
{
    switch (set) {
    case instructions_avx2:
        return normal_map_avx2(red, green, out, count);
    case instructions_sse2:
        return normal_map_fast(instructions_sse2, red, green, out, count);
    case instructions_plain:
    case instruction_set_count:
        break;
    }
    normal_map_plain(red, green, out, count);
}
