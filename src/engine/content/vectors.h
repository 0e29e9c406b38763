// Steps of fast kernels, written for one element: the compiler has a vector instruction for each, and makes vectors of
// the loop around them, as wide as the function that it stands in allows. Where it makes them badly, a loop is written
// with vectors of this file's types: sixteen bytes with SSE2, thirty-two with AVX2.
#pragma once

#include "content/instructions.h"

#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

// The upper half of a product: a * b / 65536.
FAST_INLINE uint16_t upper_product(uint16_t a, uint16_t b)
{
    return static_cast<uint16_t>((uint32_t{a} * b) >> 16);
}

// The lower half.
FAST_INLINE uint16_t lower_product(uint16_t a, uint16_t b)
{
    return static_cast<uint16_t>(uint32_t{a} * b);
}

// The sum, without what passes 65,535.
FAST_INLINE uint16_t short_sum(uint16_t a, uint16_t b)
{
    return static_cast<uint16_t>(a + b);
}

FAST_INLINE uint8_t at_most_255(uint16_t value)
{
    return value > 255 ? uint8_t{255} : static_cast<uint8_t>(value);
}

// a + b, at most 255.
FAST_INLINE uint8_t full_sum(uint8_t a, uint8_t b)
{
    const auto room = static_cast<uint8_t>(255 - a);
    return static_cast<uint8_t>(a + (b < room ? b : room));
}

// Nothing here is ever called, so it does not matter how thirty-two bytes are passed.
#pragma GCC diagnostic ignored "-Wpsabi"

using four_singles = float __attribute__((vector_size(16)));
using four_words = int32_t __attribute__((vector_size(16)));
using four_bits = uint32_t __attribute__((vector_size(16)));
using eight_shorts = uint16_t __attribute__((vector_size(16)));
using eight_singles = float __attribute__((vector_size(32)));
using eight_words = int32_t __attribute__((vector_size(32)));
using eight_bits = uint32_t __attribute__((vector_size(32)));
using sixteen_shorts = uint16_t __attribute__((vector_size(32)));

// What lies there, at any address.
template <typename vector> FAST_INLINE vector load_vector(const void* from)
{
    vector loaded;
    std::memcpy(&loaded, from, sizeof loaded);
    return loaded;
}

FAST_INLINE sixteen_shorts lesser_shorts(sixteen_shorts a, sixteen_shorts b)
{
    return a < b ? a : b;
}

// SSE2 has this for signed ones only: what a has above b, if any, is taken off it.
FAST_INLINE eight_shorts lesser_shorts(eight_shorts a, eight_shorts b)
{
#ifdef __SSE2__
    return a
        - reinterpret_cast<eight_shorts>(_mm_subs_epu16(reinterpret_cast<__m128i>(a), reinterpret_cast<__m128i>(b)));
#else
    return a < b ? a : b;
#endif
}

FAST_INLINE four_singles larger_singles(four_singles a, four_singles b)
{
#ifdef __SSE2__
    return reinterpret_cast<four_singles>(_mm_max_ps(reinterpret_cast<__m128>(a), reinterpret_cast<__m128>(b)));
#else
    return a > b ? a : b;
#endif
}

// Whether any bit of a vector is set.
template <typename vector> FAST_INLINE bool any_lane(vector lanes)
{
    uint64_t parts[sizeof lanes / sizeof(uint64_t)];
    std::memcpy(parts, &lanes, sizeof parts);
    uint64_t any = 0;
    for (const uint64_t part : parts)
        any |= part;
    return any != 0;
}
