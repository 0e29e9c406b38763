#include "content/numbers.h"

#include <doctest/doctest.h>

#include <cmath>
#include <initializer_list>
#include <limits>

TEST_CASE("Numbers are truncated toward zero, up to the last that fits")
{
    struct {
        double value;
        int32_t whole;
    } const cases[] = {{0.0, 0}, {-0.0, 0}, {0.999, 0}, {-0.999, 0}, {1.5, 1}, {-1.5, -1}, {2147483647.0, 2147483647},
        {2147483647.9, 2147483647}, {-2147483648.0, unrepresentable}, {-2147483648.9, unrepresentable},
        {-2147483647.9, -2147483647}};
    for (const auto& c : cases) {
        CAPTURE(c.value);
        CHECK(truncate_to_int(c.value) == c.whole);
        CHECK(truncate_to_int(static_cast<long double>(c.value)) == c.whole);
    }
    CHECK(truncate_to_int(-7.75f) == -7);
}

TEST_CASE("What is out of range or no number becomes the least number")
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const double value :
        {2147483648.0, -2147483904.0, 4294967296.0, 1e300, -1e300, infinity, -infinity, std::nan("")}) {
        CAPTURE(value);
        CHECK(truncate_to_int(value) == unrepresentable);
        CHECK(truncate_to_int(static_cast<long double>(value)) == unrepresentable);
        CHECK(truncate_to_int(static_cast<float>(value)) == unrepresentable);
    }
}

TEST_CASE("Numbers that the compiler knows are truncated as all others")
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const int32_t whole[] = {truncate_to_int(infinity), truncate_to_int(-infinity), truncate_to_int(1e300),
        truncate_to_int(2147483648.0), truncate_to_int(-1e300)};
    for (const int32_t value : whole)
        CHECK(value == unrepresentable);
    CHECK(truncate_to_int(2147483647.5) == 2147483647);
    CHECK(truncate_to_int(-2147483648.5) == unrepresentable);
}

TEST_CASE("Bytes keep the low eight bits")
{
    CHECK(low_byte(255) == 255);
    CHECK(low_byte(256) == 0);
    CHECK(low_byte(-1) == 255);
    CHECK(low_byte(-300) == 212);
    CHECK(low_byte(unrepresentable) == 0);
}

TEST_CASE("A number becomes the nearest single, and never infinity")
{
    constexpr float largest = std::numeric_limits<float>::max();
    constexpr double infinity = std::numeric_limits<double>::infinity();
    CHECK(to_single(0.1) == 0.1f);
    CHECK(to_single(16777217.0) == 16777216.0f); // between two singles, the even one
    CHECK(to_single(16777219.0) == 16777220.0f);
    CHECK(to_single(static_cast<double>(largest)) == largest);
    for (const double value : {3.5e38, 1e300, infinity}) {
        CHECK(to_single(value) == largest);
        CHECK(to_single(-value) == -largest);
    }
    CHECK(std::isnan(to_single(std::nan(""))));
}
