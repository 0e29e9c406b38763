// Storing what was computed in double as single precision.
#pragma once

#include <algorithm>
#include <limits>

// The nearest single; what is too large becomes the largest finite one, so that a
// simulation fed with huge values never turns to infinity. Not-a-number stays.
inline float to_single(double value)
{
    constexpr double largest = std::numeric_limits<float>::max();
    return static_cast<float>(std::clamp(value, -largest, largest));
}
