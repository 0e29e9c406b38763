#include "texgen/generator_kernels.h"

#include "content/numbers.h"
#include "content/vectors.h"
#include "texgen/packed_pixels.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <cstring>

constexpr auto run_length = static_cast<int32_t>(generator_run);
constexpr double largest_color = 4e6; // 255 times the sum of two fits an integer

static uint32_t word_of(double red, double green, double blue)
{
    return uint32_t{low_byte(truncate_to_int(red))} | uint32_t{low_byte(truncate_to_int(green))} << 8
        | uint32_t{low_byte(truncate_to_int(blue))} << 16;
}

static uint8_t* put_word(uint8_t* out, uint32_t word)
{
    *out++ = static_cast<uint8_t>(word);
    *out++ = static_cast<uint8_t>(word >> 8);
    *out++ = static_cast<uint8_t>(word >> 16);
    return out;
}

// ---- words -------------------------------------------------------------------------------

FAST_AVX2 static void store_words_avx2(const uint32_t* words, uint8_t* out, uint32_t count)
{
    store_packed_pixels(instructions_avx2, words, out, count, 0);
}

void store_words(instruction_set set, const uint32_t* words, uint8_t* out, uint32_t count)
{
    switch (set) {
    case instructions_avx2:
        return store_words_avx2(words, out, count);
    case instructions_sse2:
        return store_packed_pixels(instructions_sse2, words, out, count, 0);
    case instructions_plain:
    case instruction_set_count:
        break;
    }
    for (uint32_t n = 0; n < count; ++n)
        out = put_word(out, words[n]);
}

// ---- sines -------------------------------------------------------------------------------

static void sine_row_plain(const sine_rows& rows, double down, uint8_t* out, uint32_t count)
{
    for (uint32_t x = 0; x < count; ++x) {
        const int32_t value = truncate_to_int(127.0 + 63.5 * (rows.across[x] + down));
        out = put_word(out, rows.palette[value < 0 ? 255 : value]);
    }
}

FAST_INLINE static void prepare_sines_fast(const sine_rows& rows, uint32_t count)
{
    for (size_t begin = 0; begin < count; begin += generator_run)
        for (size_t x = begin; x < begin + generator_run; ++x)
            split_into(rows.values, x, 127.0 + 63.5 * rows.across[x]);
}

// The values of a run of pixels, 0..254. Sines that cancel make whole numbers.
FAST_INLINE static void sine_values(
    const sine_rows& rows, uint32_t begin, double down, const split_addend& addend, uint16_t* values)
{
    const int16_t* wholes = rows.values.wholes + begin;
    const int16_t* parts = rows.values.parts + begin;
    int16_t least = INT16_MAX;
    for (uint32_t n = 0; n < generator_run; ++n) {
        values[n] = static_cast<uint16_t>(whole_of_sum(wholes[n], parts[n], addend));
        least = std::min(least, certainty_of_sum(parts[n], addend));
    }
    if (least >= doubtful_sum)
        return;
    const double* across = rows.across + begin;
    int32_t whole[generator_run];
    for (uint32_t n = 0; n < generator_run; ++n)
        whole[n] = static_cast<int32_t>(127.0 + 63.5 * (across[n] + down));
    for (uint32_t n = 0; n < generator_run; ++n)
        values[n] = static_cast<uint16_t>(whole[n]);
}

FAST_INLINE static uint16_t scaled_value(uint16_t value, const byte_scale& scale)
{
    return short_sum(lower_product(value, scale.whole), upper_product(value, scale.part));
}

FAST_INLINE static void scale_values(const byte_scale* scales, const uint16_t* values, uint32_t* words)
{
    uint16_t red_green[generator_run];
    uint16_t blue[generator_run];
    for (uint32_t n = 0; n < generator_run; ++n) {
        const uint16_t green = scaled_value(values[n], scales[1]);
        red_green[n] = static_cast<uint16_t>(scaled_value(values[n], scales[0]) | green << 8);
        blue[n] = scaled_value(values[n], scales[2]);
    }
    for (uint32_t n = 0; n < generator_run; ++n)
        words[n] = red_green[n] | uint32_t{blue[n]} << 16;
}

FAST_INLINE static void sine_row_fast(
    instruction_set set, const sine_rows& rows, double down, uint8_t* out, uint32_t count)
{
    const split_addend addend = make_split_addend(63.5 * down);
    const bool is_scaled = std::all_of(rows.scales, rows.scales + 3,
        [](const byte_scale& scale) { return scale.exists && scale.whole + (scale.part != 0) <= 1; });
    for (uint32_t begin = 0; begin < count; begin += generator_run) {
        uint16_t values[generator_run];
        uint32_t words[generator_run];
        sine_values(rows, begin, down, addend, values);
        if (is_scaled)
            scale_values(rows.scales, values, words);
        else
            for (uint32_t n = 0; n < generator_run; ++n)
                words[n] = rows.palette[values[n]];
        const uint32_t run = std::min(generator_run, count - begin);
        store_packed_pixels(set, words, out + size_t{3} * begin, run, count - begin - run);
    }
}

FAST_AVX2 static void prepare_sines_avx2(const sine_rows& rows, uint32_t count)
{
    prepare_sines_fast(rows, count);
}

void prepare_sine_rows(instruction_set set, const sine_rows& rows, uint32_t count)
{
    switch (set) {
    case instructions_avx2:
        return prepare_sines_avx2(rows, count);
    case instructions_sse2:
        return prepare_sines_fast(rows, count);
    case instructions_plain:
    case instruction_set_count:
        break;
    }
}

FAST_AVX2 static void sine_row_avx2(const sine_rows& rows, double down, uint8_t* out, uint32_t count)
{
    sine_row_fast(instructions_avx2, rows, down, out, count);
}

void sine_row(instruction_set set, const sine_rows& rows, double down, uint8_t* out, uint32_t count)
{
    switch (set) {
    case instructions_avx2:
        return sine_row_avx2(rows, down, out, count);
    case instructions_sse2:
        return sine_row_fast(instructions_sse2, rows, down, out, count);
    case instructions_plain:
    case instruction_set_count:
        break;
    }
    sine_row_plain(rows, down, out, count);
}

// ---- rings -------------------------------------------------------------------------------

// How far a pixel is on the way from the centre's colour to the margin's, 0..255.
FAST_INLINE static double margin_weight(const radial_rings& rings, double distance)
{
    const double beyond = rings.inverse_radian * distance - rings.offset;
    const double t = rings.center * ((beyond > 0.0 ? beyond : 0.0) / (rings.center - rings.offset));
    const double twice = 2.0 * t;
    return t <= 127.0 ? twice : 255.0;
}

static void radial_half_row_plain(const radial_rings& rings, double dy, uint32_t* words)
{
    for (int32_t x = 0; x <= rings.center; ++x) {
        const double dx = rings.center - x;
        const double a = margin_weight(rings, std::sqrt(dx * dx + dy * dy));
        const double b = 255.0 - a;
        *words++ = word_of(a * rings.margin_color[0] + b * rings.center_color[0],
            a * rings.margin_color[1] + b * rings.center_color[1],
            a * rings.margin_color[2] + b * rings.center_color[2]);
    }
}

FAST_INLINE static void radial_half_row_fast(const radial_rings& rings, double dy, uint32_t* words)
{
    for (int32_t begin = 0; begin <= rings.center; begin += run_length, words += run_length) {
        double weights[generator_run];
        for (int32_t n = 0; n < run_length; ++n) {
            const double dx = rings.center - begin - n;
            weights[n] = margin_weight(rings, std::sqrt(dx * dx + dy * dy));
        }
        int32_t bytes[3][generator_run];
        for (uint32_t c = 0; c < 3; ++c) {
            const double margin = rings.margin_color[c];
            const double center = rings.center_color[c];
            for (uint32_t n = 0; n < generator_run; ++n)
                bytes[c][n] = static_cast<int32_t>(weights[n] * margin + (255.0 - weights[n]) * center);
        }
        for (uint32_t n = 0; n < generator_run; ++n)
            words[n]
                = static_cast<uint32_t>((bytes[0][n] & 0xFF) | (bytes[1][n] & 0xFF) << 8 | (bytes[2][n] & 0xFF) << 16);
    }
}

FAST_AVX2 static void radial_half_row_avx2(const radial_rings& rings, double dy, uint32_t* words)
{
    radial_half_row_fast(rings, dy, words);
}

bool radial_rings_fit(const radial_rings& rings)
{
    const auto fits = [](double color) { return std::fabs(color) <= largest_color; };
    return rings.center > rings.offset && std::all_of(rings.center_color, rings.center_color + 3, fits)
        && std::all_of(rings.margin_color, rings.margin_color + 3, fits);
}

void radial_half_row(instruction_set set, const radial_rings& rings, uint32_t y, uint32_t* words)
{
    const double dy = rings.center - static_cast<double>(y);
    switch (set) {
    case instructions_avx2:
        return radial_half_row_avx2(rings, dy, words);
    case instructions_sse2:
        return radial_half_row_fast(rings, dy, words);
    case instructions_plain:
    case instruction_set_count:
        break;
    }
    radial_half_row_plain(rings, dy, words);
}

// ---- noise -------------------------------------------------------------------------------

namespace {

// One or more draws of the generator: state * factor + term.
struct random_step {
    uint32_t factor;
    uint32_t term;
};

} // namespace

constexpr random_step one_draw = {1103515245, 12345};

static constexpr random_step steps_of(uint32_t draws)
{
    random_step step = {1, 0};
    for (uint32_t n = 0; n < draws; ++n)
        step = {step.factor * one_draw.factor, step.term * one_draw.factor + one_draw.term};
    return step;
}

static void noise_plain(uint32_t state, const float* color, uint8_t* out, size_t count)
{
    for (size_t n = 0; n < count; ++n) {
        state = state * one_draw.factor + one_draw.term;
        const double weight = static_cast<double>((state >> 16) & 0x7FFF) / 32768.0 * 255.0;
        out = put_word(out, word_of(color[0] * weight, color[1] * weight, color[2] * weight));
    }
}

// A byte of noise with 16 bits behind it, in singles: color * draw is made of few enough bits to be exact in double,
// and a single is wrong by its last bit. So the byte may only be wrong where these 16 bits are all 0.
//
// A colour so dark that its bytes are all 0 would be in doubt everywhere: it is made lighter.
static float noise_scale(float color)
{
    return color * 255.0f < 0.9f ? 2.0f / 300.0f : 2.0f * color; // 65536 / 32768
}

// Every state of a run is the one of the run before, a run of draws later. False where a byte is in doubt.
template <typename singles, typename words, typename bits, typename shorts>
FAST_INLINE static bool noise_run(const float* scales, uint32_t* states, uint32_t* pixels)
{
    constexpr random_step run_of_draws = steps_of(generator_run);
    shorts least = ~shorts{};
    for (uint32_t n = 0; n < generator_run; n += sizeof(words) / sizeof(int32_t)) {
        const auto state = load_vector<bits>(states + n);
        const auto draw = reinterpret_cast<words>(state >> 16 & 0x7FFF);
        const singles weight = __builtin_convertvector(draw, singles) * 255.0f;
        const words red = __builtin_convertvector(weight * scales[0], words);
        const words green = __builtin_convertvector(weight * scales[1], words);
        const words blue = __builtin_convertvector(weight * scales[2], words);
        for (const words bytes : {red, green, blue})
            least = lesser_shorts(reinterpret_cast<shorts>(bytes), least);
        const words pixel = (red >> 16 & 0xFF) | (green >> 8 & 0xFF00) | (blue & 0xFF0000);
        std::memcpy(pixels + n, &pixel, sizeof pixel);
        const bits next = state * run_of_draws.factor + run_of_draws.term;
        std::memcpy(states + n, &next, sizeof next);
    }
    return !any_lane((reinterpret_cast<words>(least) & 0xFFFF) == 0);
}

FAST_INLINE static void noise_fast(instruction_set set, uint32_t state, const float* color, uint8_t* out, size_t count)
{
    constexpr random_step run_of_draws = steps_of(generator_run);
    const float scales[] = {noise_scale(color[0]), noise_scale(color[1]), noise_scale(color[2])};
    uint32_t states[generator_run];
    uint32_t before = state; // a run's first draw
    for (uint32_t& of_pixel : states)
        of_pixel = state = state * one_draw.factor + one_draw.term;
    for (size_t begin = 0; begin < count; begin += generator_run) {
        const size_t run = std::min<size_t>(generator_run, count - begin);
        uint32_t pixels[generator_run];
        const bool is_sure = set == instructions_avx2
            ? noise_run<eight_singles, eight_words, eight_bits, sixteen_shorts>(scales, states, pixels)
            : noise_run<four_singles, four_words, four_bits, eight_shorts>(scales, states, pixels);
        if (is_sure)
            store_packed_pixels(set, pixels, out + 3 * begin, run, count - begin - run);
        else
            noise_plain(before, color, out + 3 * begin, run);
        before = before * run_of_draws.factor + run_of_draws.term;
    }
}

FAST_AVX2 static void noise_avx2(uint32_t state, const float* color, uint8_t* out, size_t count)
{
    noise_fast(instructions_avx2, state, color, out, count);
}

bool noise_color_fits(const float color[3])
{
    return std::all_of(color, color + 3, [](float channel) { return channel >= 0.0f && channel < 128.0f; });
}

void noise_pixels(instruction_set set, uint32_t state, const float color[3], uint8_t* out, size_t count)
{
    switch (set) {
    case instructions_avx2:
        return noise_avx2(state, color, out, count);
    case instructions_sse2:
        return noise_fast(instructions_sse2, state, color, out, count);
    case instructions_plain:
    case instruction_set_count:
        break;
    }
    noise_plain(state, color, out, count);
}
