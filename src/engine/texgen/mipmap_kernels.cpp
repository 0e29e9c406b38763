#include "texgen/mipmap_kernels.h"

#include "content/vectors.h"

#include <algorithm>
#include <cassert>
#include <cstring>

#ifdef __SSE2__
#include <immintrin.h>
#endif

static void halve_plain(const row_pair& rows, uint8_t* out, size_t width)
{
    for (size_t x = 0; x < width; ++x)
        for (size_t c = 0; c < rows.components; ++c) {
            const size_t left = 2 * x * rows.components + c;
            const size_t right = left + rows.components;
            const int sum = rows.upper[left] + rows.upper[right] + rows.lower[left] + rows.lower[right];
            *out++ = static_cast<uint8_t>(sum >> 2);
        }
}

// ---- four components --------------------------------------------------------------------

constexpr uint64_t even_bytes = 0x00FF00FF00FF00FF;

FAST_INLINE static uint64_t two_pixels(const uint8_t* bytes)
{
    uint64_t pixels;
    std::memcpy(&pixels, bytes, sizeof pixels);
    return pixels;
}

// Both pixels of a pair lie in one number, their components as every second byte of two sums.
FAST_INLINE static void halve_4_fast(const row_pair rows, uint8_t* __restrict out, size_t width)
{
    for (size_t x = 0; x < width; ++x) {
        const uint64_t upper = two_pixels(rows.upper + 8 * x);
        const uint64_t lower = two_pixels(rows.lower + 8 * x);
        const uint64_t even = (upper & even_bytes) + (lower & even_bytes);
        const uint64_t odd = (upper >> 8 & even_bytes) + (lower >> 8 & even_bytes);
        const uint64_t even_means = (even + (even >> 32)) >> 2 & even_bytes;
        const uint64_t odd_means = (odd + (odd >> 32)) >> 2 & even_bytes;
        const auto pixel = static_cast<uint32_t>(even_means | odd_means << 8);
        std::memcpy(out + 4 * x, &pixel, sizeof pixel);
    }
}

// ---- three components -------------------------------------------------------------------

constexpr size_t block_pixels = 256; // of the result at a time

// The means of all bytes with those one pixel further, from which every second pixel is taken.
FAST_INLINE static void halve_3_fast(const row_pair rows, uint8_t* __restrict out, size_t width)
{
    uint8_t means[6 * block_pixels];
    for (size_t begin = 0; begin < width; begin += block_pixels) {
        const size_t length = std::min(width - begin, block_pixels);
        const uint8_t* upper = rows.upper + 6 * begin;
        const uint8_t* lower = rows.lower + 6 * begin;
        for (size_t n = 0; n < 6 * length - 3; ++n)
            means[n]
                = static_cast<uint8_t>(static_cast<uint16_t>(upper[n] + upper[n + 3] + lower[n] + lower[n + 3]) >> 2);
        uint8_t* pixel = out + 3 * begin;
        for (size_t x = 0; x + 1 < length; ++x)
            std::memcpy(pixel + 3 * x, means + 6 * x, 4); // the next pixel is written over the fourth
        std::memcpy(pixel + 3 * (length - 1), means + 6 * (length - 1), 3);
    }
}

static void halve_3_sse2(const row_pair& rows, uint8_t* out, size_t width)
{
    halve_3_fast(rows, out, width);
}

#ifdef __SSE2__

// 12 bytes from `bytes` and 12 from 24 bytes on, each in a half of the vector. Reads 40 bytes.
FAST_AVX2 FAST_INLINE static __m256i load_two_avx2(const uint8_t* bytes)
{
    const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
    const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + 24));
    return _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
}

// The sums of components beside each other: each half has four pixels before, six sums behind.
FAST_AVX2 FAST_INLINE static __m256i pair_sums_avx2(__m256i pixels)
{
    const __m128i half = _mm_setr_epi8(0, 3, 1, 4, 2, 5, 6, 9, 7, 10, 8, 11, -1, -1, -1, -1);
    const __m256i pairs = _mm256_shuffle_epi8(pixels, _mm256_broadcastsi128_si256(half));
    return _mm256_maddubs_epi16(pairs, _mm256_set1_epi8(1));
}

FAST_AVX2 FAST_INLINE static __m256i means_avx2(const uint8_t* upper, const uint8_t* lower)
{
    const __m256i sums = _mm256_add_epi16(pair_sums_avx2(load_two_avx2(upper)), pair_sums_avx2(load_two_avx2(lower)));
    return _mm256_srli_epi16(sums, 2);
}

// Eight pixels at a time. Reads 52 bytes of 48 and writes 28 of 24, so that the last pixels are left to the plain loop.
FAST_AVX2 static void halve_3_avx2(const row_pair& rows, uint8_t* out, size_t width)
{
    const __m128i half = _mm_setr_epi8(0, 1, 2, 3, 4, 5, 8, 9, 10, 11, 12, 13, -1, -1, -1, -1);
    const __m256i closed_up = _mm256_broadcastsi128_si256(half);
    size_t x = 0;
    for (; x + 10 <= width; x += 8) {
        const uint8_t* upper = rows.upper + 6 * x;
        const uint8_t* lower = rows.lower + 6 * x;
        const __m256i means = _mm256_packus_epi16(means_avx2(upper, lower), means_avx2(upper + 12, lower + 12));
        const __m256i pixels = _mm256_shuffle_epi8(means, closed_up);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 3 * x), _mm256_castsi256_si128(pixels));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 3 * x + 12), _mm256_extracti128_si256(pixels, 1));
    }
    halve_plain({rows.upper + 6 * x, rows.lower + 6 * x, 3}, out + 3 * x, width - x);
}

#else

static void halve_3_avx2(const row_pair& rows, uint8_t* out, size_t width)
{
    halve_3_fast(rows, out, width);
}

#endif

static void halve_4_sse2(const row_pair& rows, uint8_t* out, size_t width)
{
    halve_4_fast(rows, out, width);
}

FAST_AVX2 static void halve_4_avx2(const row_pair& rows, uint8_t* out, size_t width)
{
    halve_4_fast(rows, out, width);
}

void halve_row_pair(instruction_set set, const row_pair& rows, uint8_t* out, size_t width)
{
    assert(rows.components == 3 || rows.components == 4);
    switch (set) {
    case instructions_avx2:
        return rows.components == 3 ? halve_3_avx2(rows, out, width) : halve_4_avx2(rows, out, width);
    case instructions_sse2:
        return rows.components == 3 ? halve_3_sse2(rows, out, width) : halve_4_sse2(rows, out, width);
    case instructions_plain:
    case instruction_set_count:
        break;
    }
    halve_plain(rows, out, width);
}
