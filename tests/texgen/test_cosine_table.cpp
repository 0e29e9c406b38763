#include "texgen/cosine_table.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <limits>

TEST_CASE("the first entry of the cosine table is exactly 1, and so is the one a turn later")
{
    build_cosine_table();
    CHECK(cosine_table[0] == 1.0f);
    CHECK(cosine_table[4096] == 1.0f);
    CHECK(cosine_table[2048] == -1.0f);
}

TEST_CASE("the cosine table turns by 6.2831853, so its zeros are off by what that lacks")
{
    // A quarter of 6.2831853 is 1.570796325, pi/2 is 1.5707963267948966; three
    // quarters are 4.712388975 and 4.71238898038469.
    build_cosine_table();
    CHECK(cosine_table[1024] == doctest::Approx(1.7948966e-9).epsilon(1e-6));
    CHECK(cosine_table[3072] == doctest::Approx(-5.3846899e-9).epsilon(1e-6));
}

TEST_CASE("every entry of the cosine table is the cosine of its angle")
{
    build_cosine_table();
    float worst = 0.0f;
    for (uint32_t i = 0; i < cosine_table_size; ++i) {
        const long double right_angles = static_cast<long double>(i) / 1024.0L;
        const long double exact = std::cos(right_angles * 1.57079632679489661923L);
        worst = std::max(worst, static_cast<float>(std::fabs(cosine_table[i] - exact)));
    }
    CHECK(worst < 7e-8f);
}

TEST_CASE("the cosine of any whole number is an entry 4096 above its remainder")
{
    build_cosine_table();
    CHECK(cosine_at(0) == cosine_table[4096]);
    CHECK(cosine_at(1) == cosine_table[4097]);
    CHECK(cosine_at(4096) == cosine_table[4096]);
    CHECK(cosine_at(4095) == cosine_table[8191]);
    CHECK(cosine_at(9000) == cosine_table[4096 + 808]);
    CHECK(cosine_at(-1) == cosine_table[4095]);
    CHECK(cosine_at(-1024) == cosine_table[3072]);
    CHECK(cosine_at(-9000) == cosine_table[4096 - 808]);
    CHECK(cosine_at(std::numeric_limits<int32_t>::min()) == 1.0f);
}

TEST_CASE("half angles go once around half a turn, in steps that are half of the table's")
{
    build_cosine_table();
    for (uint32_t i = 0; i <= half_angle_count; ++i) {
        const double angle = i * 3.14159265358979323846 / 4096.0;
        CAPTURE(i);
        REQUIRE(static_cast<double>(half_angles[i].cosine) == doctest::Approx(std::cos(angle)).epsilon(1e-7));
        REQUIRE(static_cast<double>(half_angles[i].sine) == doctest::Approx(std::sin(angle)).epsilon(1e-7));
    }
}
