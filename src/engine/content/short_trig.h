// Sine and cosine of short angles in double precision, for numbers that are wanted in single precision: what they may
// be off by is known, and where that could matter extended precision decides.
//
// Longer angles are short ones and quarter turns.
#pragma once

#include "content/extended_trig.h"

// A quarter turn in two parts. The first one is short, so that quarter turns below 2^21 times it are exact.
constexpr double quarter_high = static_cast<double>(quarter_turn_high);
constexpr double quarter_low = static_cast<double>(quarter_turn_middle + quarter_turn_low);

// Taylor's series within 45 degrees of 0; what is left out is below 2^-60. Sums of two and four terms side by side,
// since each step of a long chain waits for the one before.
inline double short_sine(double x)
{
    const double q = x * x;
    const double q2 = q * q;
    const double first = (-1.0 / 6 + q * (1.0 / 120)) + q2 * (-1.0 / 5040 + q * (1.0 / 362880));
    const double last = (-1.0 / 39916800 + q * (1.0 / 6227020800.0)) + q2 * (-1.0 / 1307674368000.0);
    return x + x * q * (first + q2 * q2 * last);
}

inline double short_cosine(double x)
{
    const double q = x * x;
    const double q2 = q * q;
    const double first = (1.0 / 24 - q * (1.0 / 720)) + q2 * (1.0 / 40320 - q * (1.0 / 3628800));
    const double last = (1.0 / 479001600 - q * (1.0 / 87178291200.0)) + q2 * (1.0 / 20922789888000.0);
    return 1.0 - q * (0.5 - q * (first + q2 * q2 * last));
}
