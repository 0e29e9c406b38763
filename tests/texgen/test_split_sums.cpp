#include "texgen/split_sums.h"

#include <doctest/doctest.h>

#include <cmath>
#include <initializer_list>

namespace {

struct split_result {
    int32_t whole;
    bool is_sure;
};

} // namespace

static split_result sum_of(double a, double b)
{
    int16_t whole = 0;
    int16_t part = 0;
    split_into({&whole, &part}, 0, a);
    const split_addend addend = make_split_addend(b);
    return {whole_of_sum(whole, part, addend), certainty_of_sum(part, addend) >= doubtful_sum};
}

TEST_CASE("the whole number below a sum is that of the numbers, wherever it is not in doubt")
{
    uint32_t doubtful = 0;
    for (int32_t n = 0; n < 100000; ++n) {
        const double a = n * 0.0618033988749895 - 3000.0;
        const double b = 700.0 - n * 0.0414213562373095;
        const split_result made = sum_of(a, b);
        CAPTURE(n);
        if (made.is_sure)
            REQUIRE(made.whole == static_cast<int32_t>(std::floor(a + b)));
        doubtful += made.is_sure ? 0u : 1u;
    }
    CHECK(doubtful < 20); // three of 65,536
}

TEST_CASE("a sum that is a whole number, or misses one by less than 1 / 65536, is in doubt, however it is made up")
{
    for (const double miss : {0.0, 1e-16, 1e-14, 1e-9, 1e-5, -1e-16, -1e-14, -1e-9, -1e-5})
        for (const double a : {0.0, 1e-17, -1e-17, 0.5, -0.5, 1e-6, -1e-6, 127.0, -127.0, 126.99999, 1.0 / 3.0, -254.7})
            for (const double whole : {0.0, 1.0, -1.0, 254.0, -300.0}) {
                CAPTURE(miss);
                CAPTURE(a);
                CAPTURE(whole);
                CHECK(!sum_of(a, whole - a + miss).is_sure);
                CHECK(!sum_of(whole - a + miss, a).is_sure);
            }
}

TEST_CASE("the whole number below a negative number is below it, and below a whole number is itself")
{
    CHECK(whole_below(0.0) == 0);
    CHECK(whole_below(0.999) == 0);
    CHECK(whole_below(-0.001) == -1);
    CHECK(whole_below(-3.0) == -3);
    CHECK(whole_below(-3.5) == -4);
    CHECK(split_part(-3.5, -4) == 32768);
    CHECK(split_part(-1e-20, -1) == 65535); // rounds to a whole one
}
