// The few number conversions that every room shares.
//
// Whole numbers from real ones are truncated toward zero; what does not fit
// (and not-a-number) becomes -2147483648, as the processor's own conversion
// gives, on every word size and without undefined behaviour.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

constexpr int32_t unrepresentable = -2147483647 - 1;

// Truncation toward zero; out of range and not-a-number give `unrepresentable`.
inline int32_t truncate_to_int(long double value)
{
    if (value > -2147483649.0L && value < 2147483648.0L)
        return static_cast<int32_t>(value);
    return unrepresentable;
}

// The same for a double, for loops over pixels: the processor's own conversion where
// there is one. A number that the compiler knows it would convert itself, and what is
// too large to the largest.
inline int32_t truncate_to_int(double value)
{
#ifdef __SSE2__
    if (__builtin_constant_p(value))
        return truncate_to_int(static_cast<long double>(value));
    return _mm_cvttsd_si32(_mm_set_sd(value));
#else
    return truncate_to_int(static_cast<long double>(value));
#endif
}

// The low eight bits, as a byte store keeps them.
inline uint8_t low_byte(int32_t value)
{
    return static_cast<uint8_t>(static_cast<uint32_t>(value) & 0xFFu);
}

// The nearest single; what is too large becomes the largest finite one, so that a
// simulation fed with huge values never turns to infinity. Not-a-number stays.
inline float to_single(double value)
{
    constexpr double largest = std::numeric_limits<float>::max();
    return static_cast<float>(std::clamp(value, -largest, largest));
}
