// Steps of fast kernels, written for one element: the compiler has a vector instruction for each, and makes vectors of
// the loop around them, as wide as the function that it stands in allows.
#pragma once

#include "content/instructions.h"

#include <cstdint>

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
