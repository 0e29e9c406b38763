#include "texgen/rounded_sine.h"

#include <doctest/doctest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <limits>

// The library's extended sine, rounded.
static double library_sine(double angle)
{
    return static_cast<double>(std::sin(static_cast<long double>(angle)));
}

static bool is_same(double angle)
{
    const double expected = library_sine(angle);
    const double made = rounded_sine(angle);
    return std::memcmp(&expected, &made, sizeof made) == 0 || (std::isnan(expected) && std::isnan(made));
}

static uint32_t count_different(double first, double step, uint32_t count)
{
    uint32_t different = 0;
    for (uint32_t n = 0; n < count; ++n)
        different += is_same(first + n * step) ? 0u : 1u;
    return different;
}

TEST_CASE("a rounded sine has the bits of the library's extended one, between two directions of the table and on them")
{
    CHECK(count_different(-7.0, 14.0 / 20011, 20011) == 0);
    CHECK(count_different(-20000.0, 40000.0 / 20011, 20011) == 0);
    CHECK(count_different(-1.1e8, 2.2e8 / 20011, 20011) == 0);
    CHECK(count_different(0.0, 3.14159265358979323846 / 64, 10000) == 0);
    CHECK(count_different(0.0, 2.0 * 3.14159265358979323846 / 1024, 10000) == 0);
}

// Doubles next to half turns: their sines are down to 10^-18, for which the angle's last bits are not enough.
TEST_CASE("a rounded sine has the library's bits where hardly anything of many half turns is left")
{
    for (const double angle : {28922353.340556759, 42511739.620260298, 57844706.681113519, 73177673.741966739,
             85023479.240520597, 3.1415926535897931, 22.0, 355.0, 103993.0, 245850922.0 / 78256779.0})
        for (const double sign : {1.0, -1.0}) {
            CAPTURE(angle);
            CHECK(is_same(sign * angle));
        }
    for (uint32_t half_turns = 1; half_turns < 31830000; half_turns += 4999) {
        CAPTURE(half_turns);
        REQUIRE(is_same(3.14159265358979323846 * half_turns));
    }
}

TEST_CASE("a rounded sine has the library's bits for angles of any size, and what is no angle")
{
    for (int exponent = -1074; exponent < 1024; ++exponent)
        for (const double mantissa : {1.0, 1.3, 1.7, -1.9}) {
            CAPTURE(exponent);
            CAPTURE(mantissa);
            REQUIRE(is_same(std::ldexp(mantissa, exponent)));
        }
    for (const double odd : {0.0, -0.0, std::numeric_limits<double>::infinity(),
             -std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
        CAPTURE(odd);
        CHECK(is_same(odd));
    }
}
