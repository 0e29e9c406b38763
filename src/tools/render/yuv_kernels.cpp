#include "yuv_kernels.h"

#include "content/vectors.h"

#include <cstring>

// ---- pixels apart --------------------------------------------------------------------------

static void split_plain(const uint8_t* rgb, const split_row& to, size_t begin, size_t count)
{
    for (size_t n = begin; n < count; ++n) {
        to.red[n] = rgb[n * 3];
        to.green[n] = rgb[n * 3 + 1];
        to.blue[n] = rgb[n * 3 + 2];
    }
}

namespace {

using sixteen_bytes = uint8_t __attribute__((vector_size(16)));
using thirty_two_bytes = uint8_t __attribute__((vector_size(32)));

struct three_vectors {
    sixteen_bytes v[3];
};

} // namespace

// Of 48 bytes in a row, those of the second half between those of the first: byte n goes to 2n, modulo 47.
FAST_INLINE static three_vectors shuffled(const three_vectors& a)
{
    constexpr sixteen_bytes lower = {0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23};
    constexpr sixteen_bytes upper_half = {8, 9, 10, 11, 12, 13, 14, 15, 8, 9, 10, 11, 12, 13, 14, 15};
    return {{__builtin_shuffle(a.v[0], __builtin_shuffle(a.v[1], upper_half), lower),
        __builtin_shuffle(__builtin_shuffle(a.v[0], upper_half), a.v[2], lower),
        __builtin_shuffle(a.v[1], __builtin_shuffle(a.v[2], upper_half), lower)}};
}

// Four times takes byte n to 16n modulo 47: byte 3n + k, of colour k of pixel n, to n + 16k.
static void split_sse2(const uint8_t* rgb, const split_row& to, size_t count)
{
    size_t n = 0;
    for (; n + 16 <= count; n += 16) {
        three_vectors t;
        std::memcpy(&t, rgb + n * 3, sizeof t);
        t = shuffled(shuffled(shuffled(shuffled(t))));
        std::memcpy(to.red + n, &t.v[0], sizeof t.v[0]);
        std::memcpy(to.green + n, &t.v[1], sizeof t.v[1]);
        std::memcpy(to.blue + n, &t.v[2], sizeof t.v[2]);
    }
    split_plain(rgb, to, n, count);
}

// Sixteen bytes, and those 48 behind them: the same ones of the next sixteen pixels.
FAST_AVX2 static inline thirty_two_bytes twice_sixteen(const uint8_t* from)
{
    sixteen_bytes lower;
    sixteen_bytes upper;
    std::memcpy(&lower, from, sizeof lower);
    std::memcpy(&upper, from + 48, sizeof upper);
    return __builtin_shufflevector(lower, upper, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19,
        20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31);
}

// A third of the bytes of each sixteen: from byte 0, 1 or 2 on.
constexpr thirty_two_bytes third_0 = {255, 0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0, 255, 255, 0, 0, 255, 0, 0,
    255, 0, 0, 255, 0, 0, 255, 0, 0, 255};
constexpr thirty_two_bytes third_1 = {
    0, 255, 0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0};
constexpr thirty_two_bytes third_2 = {
    0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0, 255, 0};

// Every third byte modulo 16, in each sixteen: where the colours of its pixels stand.
constexpr thirty_two_bytes red_order = {0, 3, 6, 9, 12, 15, 2, 5, 8, 11, 14, 1, 4, 7, 10, 13, 16, 19, 22, 25, 28, 31,
    18, 21, 24, 27, 30, 17, 20, 23, 26, 29};
constexpr thirty_two_bytes green_order = {1, 4, 7, 10, 13, 0, 3, 6, 9, 12, 15, 2, 5, 8, 11, 14, 17, 20, 23, 26, 29, 16,
    19, 22, 25, 28, 31, 18, 21, 24, 27, 30};
constexpr thirty_two_bytes blue_order = {2, 5, 8, 11, 14, 1, 4, 7, 10, 13, 0, 3, 6, 9, 12, 15, 18, 21, 24, 27, 30, 17,
    20, 23, 26, 29, 16, 19, 22, 25, 28, 31};

FAST_AVX2 static void split_avx2(const uint8_t* rgb, const split_row& to, size_t count)
{
    size_t n = 0;
    for (; n + 32 <= count; n += 32) {
        const thirty_two_bytes a = twice_sixteen(rgb + n * 3);
        const thirty_two_bytes b = twice_sixteen(rgb + n * 3 + 16);
        const thirty_two_bytes c = twice_sixteen(rgb + n * 3 + 32);
        const thirty_two_bytes red = __builtin_shuffle((a & third_0) | (b & third_2) | (c & third_1), red_order);
        const thirty_two_bytes green = __builtin_shuffle((a & third_1) | (b & third_0) | (c & third_2), green_order);
        const thirty_two_bytes blue = __builtin_shuffle((a & third_2) | (b & third_1) | (c & third_0), blue_order);
        std::memcpy(to.red + n, &red, sizeof red);
        std::memcpy(to.green + n, &green, sizeof green);
        std::memcpy(to.blue + n, &blue, sizeof blue);
    }
    split_plain(rgb, to, n, count);
}

void split_pixels(instruction_set set, const uint8_t* rgb, const split_row& to, size_t count)
{
    switch (set) {
    case instructions_avx2:
        return split_avx2(rgb, to, count);
    case instructions_sse2:
        return split_sse2(rgb, to, count);
    case instructions_plain:
    case instruction_set_count:
        break;
    }
    split_plain(rgb, to, 0, count);
}

// ---- luma ----------------------------------------------------------------------------------

static void luma_plain(const split_row& row, const luma_weights& w, uint8_t* luma, size_t count)
{
    for (size_t n = 0; n < count; ++n) {
        const uint32_t sum = w.red * row.red[n] + w.green * row.green[n] + w.blue * row.blue[n];
        luma[n] = static_cast<uint8_t>(16 + ((sum + (1u << (weight_bits - 1))) >> weight_bits));
    }
}

namespace {

// Weights of red, green and blue in parts.
struct luma_parts {
    uint16_t upper[3];
    uint16_t lower[3];
};

} // namespace

static luma_parts parts_of(const luma_weights& w)
{
    return {
        {static_cast<uint16_t>(w.red >> 4), static_cast<uint16_t>(w.green >> 4), static_cast<uint16_t>(w.blue >> 4)},
        {static_cast<uint16_t>(w.red), static_cast<uint16_t>(w.green), static_cast<uint16_t>(w.blue)}};
}

FAST_INLINE static uint16_t upper_part(uint8_t byte, uint16_t weight)
{
    return upper_product(static_cast<uint16_t>(byte << 8), weight);
}

// In lanes of 16 bits: a product is 4096 times its upper part, and a rest. The upper parts of three fit a lane; the
// rests come from the lower halves of the products, of which the upper parts are taken off, modulo 65536.
FAST_INLINE static uint8_t fast_luma(const luma_parts& w, uint8_t red, uint8_t green, uint8_t blue)
{
    const uint16_t upper = short_sum(
        short_sum(upper_part(red, w.upper[0]), upper_part(green, w.upper[1])), upper_part(blue, w.upper[2]));
    const uint16_t lower = short_sum(
        short_sum(lower_product(red, w.lower[0]), lower_product(green, w.lower[1])), lower_product(blue, w.lower[2]));
    const auto rest = static_cast<uint16_t>(lower - (upper << 12));
    const uint16_t sum = short_sum(short_sum(upper, rest >> 12), 16 * 256 + 128);
    return static_cast<uint8_t>(sum >> 8);
}

FAST_INLINE static void luma_fast(const uint8_t* __restrict red, const uint8_t* __restrict green,
    const uint8_t* __restrict blue, const luma_parts w, uint8_t* __restrict luma, size_t count)
{
    for (size_t n = 0; n < count; ++n)
        luma[n] = fast_luma(w, red[n], green[n], blue[n]);
}

// Apart from its caller: beside where the weights are made the compiler widens them ahead of the loop, and then misses
// that it has an instruction for the upper half of a product.
[[gnu::noinline]] static void luma_sse2(const split_row& row, const luma_parts& w, uint8_t* luma, size_t count)
{
    luma_fast(row.red, row.green, row.blue, w, luma, count);
}

FAST_AVX2 static void luma_avx2(const split_row& row, const luma_parts& w, uint8_t* luma, size_t count)
{
    luma_fast(row.red, row.green, row.blue, w, luma, count);
}

void luma_row(instruction_set set, const split_row& row, const luma_weights& weights, uint8_t* luma, size_t count)
{
    switch (set) {
    case instructions_avx2:
        return luma_avx2(row, parts_of(weights), luma, count);
    case instructions_sse2:
        return luma_sse2(row, parts_of(weights), luma, count);
    case instructions_plain:
    case instruction_set_count:
        break;
    }
    luma_plain(row, weights, luma, count);
}

// ---- chroma --------------------------------------------------------------------------------

namespace {

// Weights in parts, and what is added to the products: 16384 times `whole`, and `rest`.
struct chroma_parts {
    uint16_t upper[2];
    uint16_t lower[2];
    uint16_t whole;
    uint16_t rest;
};

} // namespace

static int32_t plain_sum(const uint8_t* top, const uint8_t* bottom, size_t n)
{
    return top[n * 2] + top[n * 2 + 1] + bottom[n * 2] + bottom[n * 2 + 1];
}

static uint8_t plain_sample(const chroma_weights& w, int32_t full, int32_t first_other, int32_t second_other)
{
    const int32_t first = static_cast<int32_t>(w.first_other) * (full - first_other);
    const int32_t second = static_cast<int32_t>(w.second_other) * (full - second_other);
    constexpr int32_t bits = weight_bits + 2; // of four pixels
    return static_cast<uint8_t>(128 + ((first + second + (1 << (bits - 1))) >> bits));
}

static void chroma_plain(const split_row& top, const split_row& bottom, const chroma_weights& for_cb,
    const chroma_weights& for_cr, uint8_t* cb, uint8_t* cr, size_t count)
{
    for (size_t n = 0; n < count; ++n) {
        const int32_t red = plain_sum(top.red, bottom.red, n);
        const int32_t green = plain_sum(top.green, bottom.green, n);
        const int32_t blue = plain_sum(top.blue, bottom.blue, n);
        cb[n] = plain_sample(for_cb, blue, red, green);
        cr[n] = plain_sample(for_cr, red, green, blue);
    }
}

constexpr uint16_t above_negative = 1024; // added to differences of -1020 to 1020

static chroma_parts parts_of(const chroma_weights& w)
{
    const uint32_t added = (128u << 22) + (1u << 21) - above_negative * (w.first_other + w.second_other);
    return {{static_cast<uint16_t>(w.first_other >> 3), static_cast<uint16_t>(w.second_other >> 3)},
        {static_cast<uint16_t>(w.first_other), static_cast<uint16_t>(w.second_other)},
        static_cast<uint16_t>(added >> 14), static_cast<uint16_t>(added & 0x3FFF)};
}

FAST_INLINE static uint16_t sum_of_two(const uint8_t* row, size_t n)
{
    uint16_t two = 0;
    std::memcpy(&two, row + n * 2, sizeof two);
    return static_cast<uint16_t>((two & 255) + (two >> 8));
}

FAST_INLINE static uint16_t sum_of_four(const uint8_t* top, const uint8_t* bottom, size_t n)
{
    return short_sum(sum_of_two(top, n), sum_of_two(bottom, n));
}

// As luma: a product is 16384 times its upper part, and a rest; two rests fit a lane, but not with what is added.
FAST_INLINE static uint8_t fast_sample(
    const chroma_parts& w, uint16_t full, uint16_t first_other, uint16_t second_other)
{
    const auto first = static_cast<uint16_t>(full - first_other + above_negative);
    const auto second = static_cast<uint16_t>(full - second_other + above_negative);
    const uint16_t upper = short_sum(upper_product(static_cast<uint16_t>(first << 5), w.upper[0]),
        upper_product(static_cast<uint16_t>(second << 5), w.upper[1]));
    const uint16_t lower = short_sum(lower_product(first, w.lower[0]), lower_product(second, w.lower[1]));
    const auto rest = static_cast<uint16_t>(lower - (upper << 14));
    const auto carried = static_cast<uint16_t>(short_sum(rest & 0x3FFF, w.rest) >> 14);
    const uint16_t sum = short_sum(short_sum(upper, w.whole), short_sum(rest >> 14, carried));
    return static_cast<uint8_t>(sum >> 8);
}

FAST_INLINE static void chroma_fast(const split_row& top, const split_row& bottom, const chroma_parts& for_cb,
    const chroma_parts& for_cr, uint8_t* __restrict cb, uint8_t* __restrict cr, size_t count)
{
    const chroma_parts b = for_cb;
    const chroma_parts r = for_cr;
    const uint8_t* __restrict reds[2] = {top.red, bottom.red};
    const uint8_t* __restrict greens[2] = {top.green, bottom.green};
    const uint8_t* __restrict blues[2] = {top.blue, bottom.blue};
    for (size_t n = 0; n < count; ++n) {
        const uint16_t red = sum_of_four(reds[0], reds[1], n);
        const uint16_t green = sum_of_four(greens[0], greens[1], n);
        const uint16_t blue = sum_of_four(blues[0], blues[1], n);
        cb[n] = fast_sample(b, blue, red, green);
        cr[n] = fast_sample(r, red, green, blue);
    }
}

[[gnu::noinline]] static void chroma_sse2(const split_row& top, const split_row& bottom, const chroma_parts& for_cb,
    const chroma_parts& for_cr, uint8_t* cb, uint8_t* cr, size_t count)
{
    chroma_fast(top, bottom, for_cb, for_cr, cb, cr, count);
}

FAST_AVX2 static void chroma_avx2(const split_row& top, const split_row& bottom, const chroma_parts& for_cb,
    const chroma_parts& for_cr, uint8_t* cb, uint8_t* cr, size_t count)
{
    chroma_fast(top, bottom, for_cb, for_cr, cb, cr, count);
}

void chroma_row(instruction_set set, const split_row& top, const split_row& bottom, const chroma_weights& for_cb,
    const chroma_weights& for_cr, uint8_t* cb, uint8_t* cr, size_t count)
{
    switch (set) {
    case instructions_avx2:
        return chroma_avx2(top, bottom, parts_of(for_cb), parts_of(for_cr), cb, cr, count);
    case instructions_sse2:
        return chroma_sse2(top, bottom, parts_of(for_cb), parts_of(for_cr), cb, cr, count);
    case instructions_plain:
    case instruction_set_count:
        break;
    }
    chroma_plain(top, bottom, for_cb, for_cr, cb, cr, count);
}
