// Pixels that a kernel has made as whole words, on their way into a picture of three bytes a pixel.
#pragma once

#include "content/instructions.h"

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

// Writes `count` (one or more) pixels R | G << 8 | B << 16 as 3 * count bytes, and nothing behind them. The fourth byte
// of a word must be 0; where more pixels follow, bytes are written more than once. For processors that store low bytes
// first. `set` is known where this is compiled.
FAST_INLINE void store_packed_pixels(
    [[maybe_unused]] instruction_set set, const uint32_t* pixels, uint8_t* out, size_t count)
{
    assert(count > 0);
    size_t n = 0;
#ifdef __SSE2__
    for (; n + 6 <= count; n += 4, out += 12) { // 16 bytes, of which the next pixels overwrite four
        const __m128i words = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pixels + n));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), close_together(set, words));
    }
#endif
    for (; n + 1 < count; ++n, out += 3)
        std::memcpy(out, pixels + n, sizeof *pixels);
    std::memcpy(out, pixels + count - 1, 3);
}
