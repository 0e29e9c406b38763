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

FAST_INLINE static uint32_t normal_map_pixel(int32_t red, int32_t green)
{
    return static_cast<uint32_t>((red & 0xFF) | (green & 0xFF) << 8 | 255 << 16);
}

static void normal_map_run_again(const column_sums& red, const column_sums& green, uint32_t begin, uint32_t* pixels)
{
    for (uint32_t n = begin; n < begin + effect_run; ++n)
        *pixels++ = normal_map_pixel(truncate_to_int((red.columns[n] + red.row) * 255.0),
            truncate_to_int((green.columns[n] + green.row) * 255.0));
}

// In singles a sum is right to 3 * 10^-5. Where one is nearer than `doubt` to a whole number, the run is computed
// again.
constexpr float doubt = 5e-5f;

FAST_INLINE static void normal_map_run(
    const column_sums& red, const column_sums& green, uint32_t begin, uint32_t* pixels)
{
    const float* reds = red.scaled_columns + begin;
    const float* greens = green.scaled_columns + begin;
    const float row_red = static_cast<float>(red.row * 255.0);
    const float row_green = static_cast<float>(green.row * 255.0);
    int32_t different = 0;
    for (uint32_t n = 0; n < effect_run; ++n) {
        const int32_t r = static_cast<int32_t>(reds[n] + (row_red - doubt));
        const int32_t g = static_cast<int32_t>(greens[n] + (row_green - doubt));
        different |= r ^ static_cast<int32_t>(reds[n] + (row_red + doubt));
        different |= g ^ static_cast<int32_t>(greens[n] + (row_green + doubt));
        pixels[n] = normal_map_pixel(r, g);
    }
    if (different != 0)
        normal_map_run_again(red, green, begin, pixels);
}

FAST_INLINE static void normal_map_fast(
    instruction_set set, const column_sums& red, const column_sums& green, uint8_t* out, uint32_t count)
{
    for (uint32_t begin = 0; begin < count; begin += effect_run) {
        uint32_t pixels[effect_run];
        normal_map_run(red, green, begin, pixels);
        const uint32_t run = std::min(effect_run, count - begin);
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
