#include "content/extended_trig.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <limits>

// The C library's own functions are the reference: slower, and reduced otherwise.
static long double greatest_error(long double from, long double to, int steps)
{
    long double error = 0.0L;
    for (int i = 0; i <= steps; ++i) {
        const long double angle = from + (to - from) * i / steps;
        const sine_cosine both = extended_sine_cosine(angle);
        error = std::max({error, std::fabs(both.sine - sinl(angle)), std::fabs(both.cosine - cosl(angle)),
            std::fabs(extended_sine(angle) - sinl(angle))});
    }
    return error;
}

TEST_CASE("Sine and cosine agree with the C library's to 63 bits, all around the circle")
{
    CHECK(greatest_error(-7.0L, 7.0L, 20000) < 0x1p-63L);
}

TEST_CASE("They agree for many turns and at the edge of the reduction")
{
    CHECK(greatest_error(-100000.0L, 100000.0L, 20000) < 0x1p-63L);
    CHECK(greatest_error(0.999e9L, 1.001e9L, 5000) < 0x1p-62L);
    CHECK(greatest_error(-1.001e9L, -0.999e9L, 5000) < 0x1p-62L);
    CHECK(greatest_error(1e12L, 1e18L, 1000) == 0.0L);
}

TEST_CASE("Near whole quarter turns the small one keeps its digits")
{
    for (int turns = -8; turns <= 8; ++turns)
        for (const long double aside : {0.0L, 1e-6L, -1e-9L, 3e-12L}) {
            const long double angle = turns * 1.57079632679489661923132169163975144L + aside;
            const sine_cosine both = extended_sine_cosine(angle);
            CAPTURE(turns);
            CHECK(static_cast<float>(both.sine) == static_cast<float>(sinl(angle)));
            CHECK(static_cast<float>(both.cosine) == static_cast<float>(cosl(angle)));
        }
}

TEST_CASE("No angle is sine 0 and cosine 1 exactly")
{
    CHECK(extended_sine(0.0L) == 0.0L);
    CHECK(extended_sine_cosine(0.0L).sine == 0.0L);
    CHECK(extended_sine_cosine(0.0L).cosine == 1.0L);
    CHECK(std::signbit(extended_sine_cosine(-0.0L).sine));
    CHECK(!std::signbit(extended_sine_cosine(0.0L).sine));
}

TEST_CASE("Angles that are no numbers give none")
{
    const long double infinity = std::numeric_limits<long double>::infinity();
    for (const long double angle : {infinity, -infinity, std::numeric_limits<long double>::quiet_NaN()}) {
        CHECK(std::isnan(extended_sine(angle)));
        CHECK(std::isnan(extended_sine_cosine(angle).sine));
        CHECK(std::isnan(extended_sine_cosine(angle).cosine));
    }
}
