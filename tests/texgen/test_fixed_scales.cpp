// Scales as whole numbers: which exist, and that they say of every operand what the real numbers say.

#include "texgen/fixed_scales.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

// Singles of all sizes between two, a few thousand of them: their bits counted on by a prime.
template <typename Visit> static void for_scales_between(float least, float greatest, Visit&& visit)
{
    uint32_t bits = 0;
    std::memcpy(&bits, &least, sizeof bits);
    for (float scale = least; scale < greatest; bits += 60013, std::memcpy(&scale, &bits, sizeof bits))
        visit(scale);
}

TEST_CASE("every scale of a byte that overflows nothing has a form in whole numbers, exact for all 256 bytes")
{
    for_scales_between(1e-9f, 8421504.0f, [](float scale) {
        const byte_scale fixed = make_byte_scale(scale);
        CAPTURE(scale);
        REQUIRE(fixed.exists);
        for (uint32_t byte = 0; byte < 256; ++byte) {
            const double exact = std::min(std::floor(byte * static_cast<double>(scale)), 255.0);
            REQUIRE(std::min(byte * fixed.whole + (byte * fixed.part >> 16), 255u) == exact);
        }
    });
}

TEST_CASE("scales of bytes that are negative, overflow or are no number have no form")
{
    for (const float scale : {-0.5f, -1e-30f, 8421505.0f, 1e20f, std::numeric_limits<float>::infinity(),
             std::numeric_limits<float>::quiet_NaN()})
        CHECK_FALSE(make_byte_scale(scale).exists);
    CHECK(make_byte_scale(0.0f).exists);
    CHECK(make_byte_scale(8421504.0f).exists); // 255 times it is the greatest below 2^31
}

TEST_CASE("every scale of a product below 1 has a form, exact for all products where they step")
{
    for_scales_between(1e-9f, 1.0f, [](float scale) {
        const product_scale fixed = make_product_scale(scale);
        CAPTURE(scale);
        REQUIRE(fixed.exists);
        REQUIRE((fixed.shift == 0 || scale < 1.0f / 512.0f));
        const uint64_t part = fixed.upper_part * 65536ull + fixed.lower_part;
        for (uint32_t step = 1; step <= 255; ++step) {
            const auto product = static_cast<uint64_t>(std::min(std::ceil(step / static_cast<double>(scale)), 65025.0));
            for (const uint64_t operand : {product - 1, product}) {
                const double exact = std::floor(static_cast<double>(operand) * static_cast<double>(scale));
                REQUIRE((operand * part >> 32 >> fixed.shift) == exact);
            }
        }
    });
    CHECK_FALSE(make_product_scale(1.0f).exists);
    CHECK_FALSE(make_product_scale(-0.1f).exists);
    CHECK_FALSE(make_product_scale(std::numeric_limits<float>::quiet_NaN()).exists);
}

static double value_of(int16_t upper, int16_t lower, int32_t shift)
{
    return std::ldexp(upper * 32768.0 + lower, -15 - shift);
}

TEST_CASE("two scales of a sum are taken apart without loss, or have no form")
{
    const float scales[] = {0.0f, 1.0f, -1.0f, 0.5f, 0.1f, -0.1f, 0.8f, 1.35f, 2.0f, 127.9f, -128.0f, 0.008f, 1e-4f};
    for (const float scale1 : scales)
        for (const float scale2 : scales) {
            const sum_scale fixed = make_sum_scale(scale1, scale2);
            CAPTURE(scale1);
            CAPTURE(scale2);
            if (!fixed.exists)
                continue;
            CHECK(value_of(fixed.upper1, fixed.lower1, fixed.shift) == scale1);
            CHECK(value_of(fixed.upper2, fixed.lower2, fixed.shift) == scale2);
            CHECK(fixed.lower1 >= 0);
            CHECK(fixed.lower2 >= 0);
        }
    CHECK(make_sum_scale(0.52f, 0.62f).exists);
    CHECK(make_sum_scale(-0.01f, 0.9f).exists);
    CHECK(make_sum_scale(100.0f, 0.25f).exists);
    CHECK_FALSE(make_sum_scale(1.0f, 1e-20f).exists);
    CHECK_FALSE(make_sum_scale(40000.0f, 1.0f).exists);
    CHECK_FALSE(make_sum_scale(1.0f, std::numeric_limits<float>::quiet_NaN()).exists);
    CHECK_FALSE(make_sum_scale(std::numeric_limits<float>::infinity(), 1.0f).exists);
}
