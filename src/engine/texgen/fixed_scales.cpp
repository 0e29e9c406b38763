#include "texgen/fixed_scales.h"

#include "content/numbers.h"

#include <algorithm>
#include <cmath>

// The n of 2^(n - 1) <= scale < 2^n, without its sign; 0 of a scale of 0.
static int binary_exponent(float scale)
{
    int exponent = 0;
    std::frexp(scale, &exponent);
    return exponent;
}

static int32_t scaled_byte(const byte_scale& scale, uint32_t byte)
{
    return static_cast<int32_t>(std::min(byte * scale.whole + (byte * scale.part >> 16), 255u));
}

static bool agrees_on_all_bytes(const byte_scale& fixed, float scale)
{
    for (uint32_t byte = 0; byte < 256; ++byte)
        if (scaled_byte(fixed, byte) != std::min(truncate_to_int(byte * static_cast<double>(scale)), 255))
            return false;
    return true;
}

// The parts that truncate all bytes alike are an interval between two fractions with denominators up to 255, at least
// 1 / (255 * 254) wide. So it holds a multiple of 1/65536: the one below the scale or the one above.
byte_scale make_byte_scale(float scale)
{
    if (scale == 1.0f)
        return {.whole = 1, .part = 0, .exists = true};
    if (!(scale >= 0.0f && scale < 2147483648.0f))
        return {};
    const double whole = std::floor(static_cast<double>(scale));
    const double part = (scale - whole) * 65536.0; // below 65,536, since a single has 24 bits
    byte_scale fixed = {static_cast<uint16_t>(std::min(whole, 255.0)), static_cast<uint16_t>(part), true};
    if (agrees_on_all_bytes(fixed, scale))
        return fixed;
    fixed.part = static_cast<uint16_t>(std::min(fixed.part + 1, 65535));
    fixed.exists = agrees_on_all_bytes(fixed, scale);
    return fixed;
}

// A single below 2^n and not below 2^(n - 1) is a multiple of 2^(n - 24): with the shift, it is whole. Below 2^-16 all
// products truncate to 0.
product_scale make_product_scale(float scale)
{
    if (!(scale >= 0.0f && scale < 1.0f))
        return {};
    if (scale < 1.0f / 65536.0f)
        return {.upper_part = 0, .lower_part = 0, .shift = 0, .exists = true};
    const int shift = std::max(-8 - binary_exponent(scale), 0);
    const auto part = static_cast<uint32_t>(std::ldexp(static_cast<double>(scale), 32 + shift));
    return {
        .upper_part = static_cast<uint16_t>(part >> 16),
        .lower_part = static_cast<uint16_t>(part),
        .shift = static_cast<uint16_t>(shift),
        .exists = true,
    };
}

// The numbers have 15 bits each behind the sign, together 30, of which the greater scale decides how many are whole.
// A scale that is no multiple of the last of them has no form.
sum_scale make_sum_scale(float scale1, float scale2)
{
    if (scale1 == 1.0f && scale2 == 1.0f)
        return {.upper1 = 16384, .upper2 = 16384, .lower1 = 0, .lower2 = 0, .shift = 14, .exists = true};
    if (!std::isfinite(scale1) || !std::isfinite(scale2))
        return {};
    const int exponent = std::max({binary_exponent(scale1), binary_exponent(scale2), -8});
    if (exponent > 15)
        return {};
    const double fixed1 = std::ldexp(static_cast<double>(scale1), 30 - exponent);
    const double fixed2 = std::ldexp(static_cast<double>(scale2), 30 - exponent);
    const double upper1 = std::floor(fixed1 / 32768.0);
    const double upper2 = std::floor(fixed2 / 32768.0);
    return {
        .upper1 = static_cast<int16_t>(upper1),
        .upper2 = static_cast<int16_t>(upper2),
        .lower1 = static_cast<int16_t>(fixed1 - upper1 * 32768.0),
        .lower2 = static_cast<int16_t>(fixed2 - upper2 * 32768.0),
        .shift = 15 - exponent,
        .exists = fixed1 == std::floor(fixed1) && fixed2 == std::floor(fixed2),
    };
}
