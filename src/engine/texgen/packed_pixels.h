// Pixels that a kernel has made as whole words, on their way into a picture of three bytes a pixel.
#pragma once

#include "content/instructions.h"
#include "content/vectors.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#ifdef __SSE2__

// The twelve lower bytes of four words, whose highest ones are 0, close together. First pairs of words move together,
// then both pairs; beyond SSE2 one instruction does it.
FAST_INLINE __m128i close_together(instruction_set set, __m128i words)
{
    if (set == instructions_avx2) {
        typedef uint8_t sixteen_bytes __attribute__((vector_size(16)));
        return reinterpret_cast<__m128i>(__builtin_shuffle(reinterpret_cast<sixteen_bytes>(words),
            sixteen_bytes{0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 3, 7, 11, 15}));
    }
    const __m128i even = _mm_and_si128(words, _mm_set1_epi64x(0xFFFFFF));
    const __m128i odd = _mm_srli_epi64(_mm_andnot_si128(_mm_set1_epi64x(0xFFFFFF), words), 8);
    const __m128i pairs = _mm_or_si128(even, odd);
    const __m128i first = _mm_move_epi64(pairs);
    return _mm_or_si128(first, _mm_srli_si128(_mm_xor_si128(pairs, first), 2));
}

#endif

// The same of eight words, of which 24 bytes are left: four in either half, then both halves together.
FAST_INLINE void store_eight_together(const uint32_t* pixels, uint8_t* out)
{
    typedef uint8_t many_bytes __attribute__((vector_size(32)));
    many_bytes bytes;
    std::memcpy(&bytes, pixels, sizeof bytes);
    bytes = __builtin_shuffle(bytes,
        many_bytes{0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 3, 7, 11, 15, 16, 17, 18, 20, 21, 22, 24, 25, 26, 28, 29, 30,
            19, 23, 27, 31});
    const eight_words words
        = __builtin_shuffle(reinterpret_cast<eight_words>(bytes), eight_words{0, 1, 2, 4, 5, 6, 3, 7});
    std::memcpy(out, &words, sizeof words);
}

// Writes `count` (one or more) pixels R | G << 8 | B << 16 as 3 * count bytes. The fourth byte of a word must be 0.
// Bytes are written more than once, also of pixels behind these: of `following` ones at most, which are still to be
// written; nothing else behind them changes. For processors that store low bytes first. `set` is known where this is
// compiled.
FAST_INLINE void store_packed_pixels([[maybe_unused]] instruction_set set, const uint32_t* pixels, uint8_t* out,
    size_t count, [[maybe_unused]] size_t following)
{
    assert(count > 0);
    size_t n = 0;
#ifdef __SSE2__
    if (set == instructions_avx2) { // 32 bytes, of which the next pixels overwrite eight
        const size_t eights = (following >= 3 ? count : count - std::min<size_t>(count, 3 - following)) / 8;
#pragma GCC unroll 4
        for (size_t eight = 0; eight < eights; ++eight)
            store_eight_together(pixels + 8 * eight, out + 24 * eight);
        n = 8 * eights;
        out += 24 * eights;
    }
    for (; n + 4 <= count && n + 6 <= count + following; n += 4, out += 12) { // 16 bytes, of which they overwrite four
        const __m128i words = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pixels + n));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), close_together(set, words));
    }
    if (n == count)
        return;
#endif
    for (; n + 1 < count; ++n, out += 3)
        std::memcpy(out, pixels + n, sizeof *pixels);
    std::memcpy(out, pixels + count - 1, 3);
}
