#include "texgen/point_kernels.h"

#include "content/numbers.h"
#include "content/vectors.h"
#include "texgen/fixed_scales.h"

#include <algorithm>
#include <cstring>

#ifdef __SSE2__
#include <immintrin.h>
#endif

static uint8_t clamped_byte(int32_t value)
{
    return static_cast<uint8_t>(std::clamp(value, 0, 255));
}

// Only the top is capped; a negative number keeps its low eight bits, on purpose.
static uint8_t capped_byte(int32_t value)
{
    return low_byte(std::min(value, 255));
}

static int32_t truncated(uint8_t byte, float scale)
{
    return truncate_to_int(byte * static_cast<double>(scale));
}

// ---- invert -------------------------------------------------------------------------

static void invert_plain(const uint8_t* a, uint8_t* out, size_t count)
{
    for (size_t n = 0; n < count; ++n)
        out[n] = static_cast<uint8_t>(255 - a[n]);
}

// The compiler makes vectors of this loop, as wide as its caller's instructions.
FAST_INLINE static void invert_fast(const uint8_t* a, uint8_t* out, size_t count)
{
    for (size_t n = 0; n < count; ++n)
        out[n] = static_cast<uint8_t>(~a[n]);
}

static void invert_sse2(const uint8_t* a, uint8_t* out, size_t count)
{
    invert_fast(a, out, count);
}

FAST_AVX2 static void invert_avx2(const uint8_t* a, uint8_t* out, size_t count)
{
    invert_fast(a, out, count);
}

void invert_bytes(instruction_set set, const uint8_t* a, uint8_t* out, size_t count)
{
    switch (set) {
    case instructions_avx2:
        return invert_avx2(a, out, count);
    case instructions_sse2:
        return invert_sse2(a, out, count);
    case instructions_plain:
    case instruction_set_count:
        break;
    }
    invert_plain(a, out, count);
}

// ---- scale --------------------------------------------------------------------------

FAST_INLINE static uint16_t scaled(uint8_t byte, const byte_scale& scale)
{
    return short_sum(lower_product(byte, scale.whole), upper_product(byte, scale.part));
}

static bool is_one(const byte_scale& scale)
{
    return scale.whole == 1 && scale.part == 0;
}

static void scale_plain(const scaled_bytes& a, uint8_t* out, size_t count)
{
    for (size_t n = 0; n < count; ++n)
        out[n] = capped_byte(truncated(a.bytes[n], a.scale));
}

FAST_INLINE static void scale_fast(const uint8_t* a, const byte_scale scale, uint8_t* out, size_t count)
{
    for (size_t n = 0; n < count; ++n)
        out[n] = at_most_255(scaled(a[n], scale));
}

static void scale_sse2(const uint8_t* a, const byte_scale& scale, uint8_t* out, size_t count)
{
    scale_fast(a, scale, out, count);
}

FAST_AVX2 static void scale_avx2(const uint8_t* a, const byte_scale& scale, uint8_t* out, size_t count)
{
    scale_fast(a, scale, out, count);
}

void scale_bytes(instruction_set set, const scaled_bytes& a, uint8_t* out, size_t count)
{
    const byte_scale scale = make_byte_scale(a.scale);
    if (!scale.exists)
        return scale_plain(a, out, count);
    switch (set) {
    case instructions_avx2:
        return scale_avx2(a.bytes, scale, out, count);
    case instructions_sse2:
        return scale_sse2(a.bytes, scale, out, count);
    case instructions_plain:
    case instruction_set_count:
        break;
    }
    scale_plain(a, out, count);
}

// ---- add ----------------------------------------------------------------------------

static void add_plain(const scaled_bytes& a, const scaled_bytes& b, uint8_t* out, size_t count)
{
    const double scale1 = a.scale;
    const double scale2 = b.scale;
    for (size_t n = 0; n < count; ++n)
        out[n] = clamped_byte(truncate_to_int(a.bytes[n] * scale1 + b.bytes[n] * scale2));
}

FAST_INLINE static void add_unscaled_fast(const uint8_t* a, const uint8_t* b, uint8_t* out, size_t count)
{
    for (size_t n = 0; n < count; ++n)
        out[n] = full_sum(a[n], b[n]);
}

FAST_INLINE static uint8_t scaled_sum(uint8_t a, uint8_t b, const sum_scale& scale)
{
    const int32_t upper = a * scale.upper1 + b * scale.upper2;
    const int32_t lower = a * scale.lower1 + b * scale.lower2;
    return clamped_byte((upper + (lower >> 15)) >> scale.shift);
}

static void add_rest(const uint8_t* a, const uint8_t* b, const sum_scale& scale, uint8_t* out, size_t count)
{
    for (size_t n = 0; n < count; ++n)
        out[n] = scaled_sum(a[n], b[n], scale);
}

#ifdef __SSE2__

static __m128i four_sums_sse2(__m128i pairs, __m128i upper, __m128i lower, __m128i shift)
{
    const __m128i carried = _mm_srli_epi32(_mm_madd_epi16(pairs, lower), 15);
    return _mm_sra_epi32(_mm_add_epi32(_mm_madd_epi16(pairs, upper), carried), shift);
}

static void add_scaled_sse2(const uint8_t* a, const uint8_t* b, const sum_scale& scale, uint8_t* out, size_t count)
{
    const __m128i upper = _mm_set1_epi32((scale.upper2 * 65536) | (scale.upper1 & 0xFFFF));
    const __m128i lower = _mm_set1_epi32((scale.lower2 * 65536) | (scale.lower1 & 0xFFFF));
    const __m128i shift = _mm_cvtsi32_si128(scale.shift);
    const __m128i zero = _mm_setzero_si128();
    size_t n = 0;
    for (; n + 16 <= count; n += 16) {
        const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(a + n));
        const __m128i y = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + n));
        const __m128i low = _mm_unpacklo_epi8(x, y);
        const __m128i high = _mm_unpackhi_epi8(x, y);
        const __m128i s0 = four_sums_sse2(_mm_unpacklo_epi8(low, zero), upper, lower, shift);
        const __m128i s1 = four_sums_sse2(_mm_unpackhi_epi8(low, zero), upper, lower, shift);
        const __m128i s2 = four_sums_sse2(_mm_unpacklo_epi8(high, zero), upper, lower, shift);
        const __m128i s3 = four_sums_sse2(_mm_unpackhi_epi8(high, zero), upper, lower, shift);
        const __m128i sums = _mm_packus_epi16(_mm_packs_epi32(s0, s1), _mm_packs_epi32(s2, s3));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + n), sums);
    }
    add_rest(a + n, b + n, scale, out + n, count - n);
}

FAST_AVX2 FAST_INLINE static __m256i load_avx2(const uint8_t* bytes)
{
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes));
}

FAST_AVX2 FAST_INLINE static void store_avx2(uint8_t* bytes, __m256i vector)
{
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(bytes), vector);
}

FAST_AVX2 static __m256i eight_sums_avx2(__m256i pairs, __m256i upper, __m256i lower, __m128i shift)
{
    const __m256i carried = _mm256_srli_epi32(_mm256_madd_epi16(pairs, lower), 15);
    return _mm256_sra_epi32(_mm256_add_epi32(_mm256_madd_epi16(pairs, upper), carried), shift);
}

// Halves of vectors are taken apart and put together alike, so that the order comes out as it was.
FAST_AVX2 static void add_scaled_avx2(
    const uint8_t* a, const uint8_t* b, const sum_scale& scale, uint8_t* out, size_t count)
{
    const __m256i upper = _mm256_set1_epi32((scale.upper2 * 65536) | (scale.upper1 & 0xFFFF));
    const __m256i lower = _mm256_set1_epi32((scale.lower2 * 65536) | (scale.lower1 & 0xFFFF));
    const __m128i shift = _mm_cvtsi32_si128(scale.shift);
    const __m256i zero = _mm256_setzero_si256();
    size_t n = 0;
    for (; n + 32 <= count; n += 32) {
        const __m256i x = load_avx2(a + n);
        const __m256i y = load_avx2(b + n);
        const __m256i low = _mm256_unpacklo_epi8(x, y);
        const __m256i high = _mm256_unpackhi_epi8(x, y);
        const __m256i s0 = eight_sums_avx2(_mm256_unpacklo_epi8(low, zero), upper, lower, shift);
        const __m256i s1 = eight_sums_avx2(_mm256_unpackhi_epi8(low, zero), upper, lower, shift);
        const __m256i s2 = eight_sums_avx2(_mm256_unpacklo_epi8(high, zero), upper, lower, shift);
        const __m256i s3 = eight_sums_avx2(_mm256_unpackhi_epi8(high, zero), upper, lower, shift);
        const __m256i sums = _mm256_packus_epi16(_mm256_packs_epi32(s0, s1), _mm256_packs_epi32(s2, s3));
        store_avx2(out + n, sums);
    }
    add_rest(a + n, b + n, scale, out + n, count - n);
}

#else

static void add_scaled_sse2(const uint8_t* a, const uint8_t* b, const sum_scale& scale, uint8_t* out, size_t count)
{
    add_rest(a, b, scale, out, count);
}

static void add_scaled_avx2(const uint8_t* a, const uint8_t* b, const sum_scale& scale, uint8_t* out, size_t count)
{
    add_rest(a, b, scale, out, count);
}

#endif

static void add_unscaled_sse2(const uint8_t* a, const uint8_t* b, uint8_t* out, size_t count)
{
    add_unscaled_fast(a, b, out, count);
}

#ifdef __SSE2__

FAST_AVX2 static void add_unscaled_avx2(const uint8_t* a, const uint8_t* b, uint8_t* out, size_t count)
{
    size_t n = 0;
    for (; n + 64 <= count; n += 64) {
        const __m256i first = _mm256_adds_epu8(load_avx2(a + n), load_avx2(b + n));
        const __m256i second = _mm256_adds_epu8(load_avx2(a + n + 32), load_avx2(b + n + 32));
        store_avx2(out + n, first);
        store_avx2(out + n + 32, second);
    }
    add_unscaled_fast(a + n, b + n, out + n, count - n);
}

#else

static void add_unscaled_avx2(const uint8_t* a, const uint8_t* b, uint8_t* out, size_t count)
{
    add_unscaled_fast(a, b, out, count);
}

#endif

void add_bytes(instruction_set set, const scaled_bytes& a, const scaled_bytes& b, uint8_t* out, size_t count)
{
    const sum_scale scale = make_sum_scale(a.scale, b.scale);
    const bool unscaled = a.scale == 1.0f && b.scale == 1.0f;
    if (!scale.exists)
        return add_plain(a, b, out, count);
    switch (set) {
    case instructions_avx2:
        return unscaled ? add_unscaled_avx2(a.bytes, b.bytes, out, count)
                        : add_scaled_avx2(a.bytes, b.bytes, scale, out, count);
    case instructions_sse2:
        return unscaled ? add_unscaled_sse2(a.bytes, b.bytes, out, count)
                        : add_scaled_sse2(a.bytes, b.bytes, scale, out, count);
    case instructions_plain:
    case instruction_set_count:
        break;
    }
    add_plain(a, b, out, count);
}

// ---- multiply -----------------------------------------------------------------------

static void multiply_capped_plain(const byte_pair& pair, uint8_t* out, size_t count)
{
    const double scale = pair.scale;
    for (size_t n = 0; n < count; ++n)
        out[n] = capped_byte(truncate_to_int(pair.a[n] * pair.b[n] * scale));
}

static void multiply_clamped_plain(const byte_pair& pair, uint8_t* out, size_t count)
{
    const double scale = pair.scale;
    for (size_t n = 0; n < count; ++n)
        out[n] = clamped_byte(truncate_to_int(pair.a[n] * pair.b[n] * scale));
}

// Of the product of 16 and 32 bits the upper 16.
FAST_INLINE static uint16_t scaled_product(uint8_t a, uint8_t b, const product_scale& scale)
{
    const uint16_t product = lower_product(a, b);
    const uint16_t middle = lower_product(product, scale.upper_part);
    const uint16_t sum = short_sum(middle, upper_product(product, scale.lower_part));
    const uint16_t carry = sum < middle ? 1 : 0;
    return short_sum(upper_product(product, scale.upper_part), carry);
}

FAST_INLINE static void multiply_fast(
    const uint8_t* a, const uint8_t* b, const product_scale scale, uint8_t* out, size_t count)
{
    for (size_t n = 0; n < count; ++n)
        out[n] = at_most_255(scaled_product(a[n], b[n], scale));
}

// By less than 1/512: the shift is done by a product.
FAST_INLINE static void multiply_down_fast(
    const uint8_t* a, const uint8_t* b, const product_scale scale, uint8_t* out, size_t count)
{
    const auto rest = static_cast<uint16_t>(65536u >> scale.shift);
    for (size_t n = 0; n < count; ++n)
        out[n] = static_cast<uint8_t>(upper_product(scaled_product(a[n], b[n], scale), rest));
}

FAST_INLINE static void multiply_unscaled_fast(const uint8_t* a, const uint8_t* b, uint8_t* out, size_t count)
{
    for (size_t n = 0; n < count; ++n)
        out[n] = at_most_255(lower_product(a[n], b[n]));
}

// By more than 1: what is 255 before, is so behind.
FAST_INLINE static void multiply_up_fast(
    const uint8_t* a, const uint8_t* b, const byte_scale scale, uint8_t* out, size_t count)
{
    for (size_t n = 0; n < count; ++n)
        out[n] = at_most_255(scaled(at_most_255(lower_product(a[n], b[n])), scale));
}

namespace {

// The scale of two pictures' product: below 1, or else.
struct fixed_product {
    product_scale down;
    byte_scale up;
};

} // namespace

#ifdef __SSE2__

// In the order of the vector's halves, unlike what the compiler makes of the loop above.
FAST_AVX2 static void multiply_unscaled_avx2(const uint8_t* a, const uint8_t* b, uint8_t* out, size_t count)
{
    const __m256i zero = _mm256_setzero_si256();
    const __m256i top = _mm256_set1_epi16(255);
    size_t n = 0;
    for (; n + 32 <= count; n += 32) {
        const __m256i x = load_avx2(a + n);
        const __m256i y = load_avx2(b + n);
        const __m256i low = _mm256_mullo_epi16(_mm256_unpacklo_epi8(x, zero), _mm256_unpacklo_epi8(y, zero));
        const __m256i high = _mm256_mullo_epi16(_mm256_unpackhi_epi8(x, zero), _mm256_unpackhi_epi8(y, zero));
        store_avx2(out + n, _mm256_packus_epi16(_mm256_min_epu16(low, top), _mm256_min_epu16(high, top)));
    }
    multiply_unscaled_fast(a + n, b + n, out + n, count - n);
}

#else

static void multiply_unscaled_avx2(const uint8_t* a, const uint8_t* b, uint8_t* out, size_t count)
{
    multiply_unscaled_fast(a, b, out, count);
}

#endif

FAST_INLINE static void multiply_all(
    const uint8_t* a, const uint8_t* b, const fixed_product scale, uint8_t* out, size_t count)
{
    if (scale.down.exists && scale.down.shift == 0)
        multiply_fast(a, b, scale.down, out, count);
    else if (scale.down.exists)
        multiply_down_fast(a, b, scale.down, out, count);
    else
        multiply_up_fast(a, b, scale.up, out, count);
}

static void multiply_sse2(const byte_pair& pair, const fixed_product& scale, uint8_t* out, size_t count)
{
    if (is_one(scale.up))
        multiply_unscaled_fast(pair.a, pair.b, out, count);
    else
        multiply_all(pair.a, pair.b, scale, out, count);
}

FAST_AVX2 static void multiply_avx2(const byte_pair& pair, const fixed_product& scale, uint8_t* out, size_t count)
{
    if (is_one(scale.up))
        multiply_unscaled_avx2(pair.a, pair.b, out, count);
    else
        multiply_all(pair.a, pair.b, scale, out, count);
}

// Below `largest` no product overflows.
static fixed_product make_fixed_product(float scale)
{
    constexpr float largest = 2147483648.0f / (255 * 255);
    fixed_product fixed = {make_product_scale(scale), {}};
    if (scale >= 1.0f && scale < largest)
        fixed.up = make_byte_scale(scale);
    return fixed;
}

// False if no fast form exists for these instructions or this scale.
static bool multiply_by_fixed(instruction_set set, const byte_pair& pair, uint8_t* out, size_t count)
{
    const fixed_product scale = make_fixed_product(pair.scale);
    if (!scale.down.exists && !scale.up.exists)
        return false;
    switch (set) {
    case instructions_avx2:
        multiply_avx2(pair, scale, out, count);
        return true;
    case instructions_sse2:
        multiply_sse2(pair, scale, out, count);
        return true;
    case instructions_plain:
    case instruction_set_count:
        break;
    }
    return false;
}

void multiply_bytes_capped(instruction_set set, const byte_pair& pair, uint8_t* out, size_t count)
{
    if (!multiply_by_fixed(set, pair, out, count))
        multiply_capped_plain(pair, out, count);
}

void multiply_bytes_clamped(instruction_set set, const byte_pair& pair, uint8_t* out, size_t count)
{
    if (!multiply_by_fixed(set, pair, out, count))
        multiply_clamped_plain(pair, out, count);
}

// ---- the greater and the lesser -------------------------------------------------------

static void take_greater_plain(const scaled_bytes& a, const scaled_bytes& b, uint8_t* out, size_t count)
{
    for (size_t n = 0; n < count; ++n)
        out[n] = capped_byte(std::max(truncated(a.bytes[n], a.scale), truncated(b.bytes[n], b.scale)));
}

static void take_lesser_plain(const scaled_bytes& a, const scaled_bytes& b, uint8_t* out, size_t count)
{
    for (size_t n = 0; n < count; ++n)
        out[n] = capped_byte(std::min(truncated(a.bytes[n], a.scale), truncated(b.bytes[n], b.scale)));
}

namespace {

// Two pictures with scales that have a form in whole numbers.
struct fixed_pair {
    const uint8_t* a;
    const uint8_t* b;
    byte_scale scale1;
    byte_scale scale2;
};

} // namespace

FAST_INLINE static void take_greater_fast(const fixed_pair pair, uint8_t* out, size_t count)
{
    for (size_t n = 0; n < count; ++n)
        out[n] = at_most_255(std::max(scaled(pair.a[n], pair.scale1), scaled(pair.b[n], pair.scale2)));
}

FAST_INLINE static void take_lesser_fast(const fixed_pair pair, uint8_t* out, size_t count)
{
    for (size_t n = 0; n < count; ++n)
        out[n] = at_most_255(std::min(scaled(pair.a[n], pair.scale1), scaled(pair.b[n], pair.scale2)));
}

FAST_INLINE static void take_greater_unscaled_fast(const fixed_pair pair, uint8_t* out, size_t count)
{
    for (size_t n = 0; n < count; ++n)
        out[n] = std::max(pair.a[n], pair.b[n]);
}

FAST_INLINE static void take_lesser_unscaled_fast(const fixed_pair pair, uint8_t* out, size_t count)
{
    for (size_t n = 0; n < count; ++n)
        out[n] = std::min(pair.a[n], pair.b[n]);
}

static bool is_unscaled(const fixed_pair& pair)
{
    return is_one(pair.scale1) && is_one(pair.scale2);
}

static void take_greater_sse2(const fixed_pair& pair, uint8_t* out, size_t count)
{
    is_unscaled(pair) ? take_greater_unscaled_fast(pair, out, count) : take_greater_fast(pair, out, count);
}

FAST_AVX2 static void take_greater_avx2(const fixed_pair& pair, uint8_t* out, size_t count)
{
    is_unscaled(pair) ? take_greater_unscaled_fast(pair, out, count) : take_greater_fast(pair, out, count);
}

static void take_lesser_sse2(const fixed_pair& pair, uint8_t* out, size_t count)
{
    is_unscaled(pair) ? take_lesser_unscaled_fast(pair, out, count) : take_lesser_fast(pair, out, count);
}

FAST_AVX2 static void take_lesser_avx2(const fixed_pair& pair, uint8_t* out, size_t count)
{
    is_unscaled(pair) ? take_lesser_unscaled_fast(pair, out, count) : take_lesser_fast(pair, out, count);
}

static fixed_pair make_fixed_pair(const scaled_bytes& a, const scaled_bytes& b)
{
    return {a.bytes, b.bytes, make_byte_scale(a.scale), make_byte_scale(b.scale)};
}

void take_greater_bytes(instruction_set set, const scaled_bytes& a, const scaled_bytes& b, uint8_t* out, size_t count)
{
    const fixed_pair pair = make_fixed_pair(a, b);
    if (!pair.scale1.exists || !pair.scale2.exists)
        return take_greater_plain(a, b, out, count);
    switch (set) {
    case instructions_avx2:
        return take_greater_avx2(pair, out, count);
    case instructions_sse2:
        return take_greater_sse2(pair, out, count);
    case instructions_plain:
    case instruction_set_count:
        break;
    }
    take_greater_plain(a, b, out, count);
}

void take_lesser_bytes(instruction_set set, const scaled_bytes& a, const scaled_bytes& b, uint8_t* out, size_t count)
{
    const fixed_pair pair = make_fixed_pair(a, b);
    if (!pair.scale1.exists || !pair.scale2.exists)
        return take_lesser_plain(a, b, out, count);
    switch (set) {
    case instructions_avx2:
        return take_lesser_avx2(pair, out, count);
    case instructions_sse2:
        return take_lesser_sse2(pair, out, count);
    case instructions_plain:
    case instruction_set_count:
        break;
    }
    take_lesser_plain(a, b, out, count);
}
