#include "model/combine_mode.h"

#include <doctest/doctest.h>
#include <initializer_list>

static void check_modes(uint32_t unit, std::initializer_list<int> expected)
{
    int32_t number = -1; // the lists start one below 0
    for (const int mode : expected) {
        CAPTURE(unit);
        CAPTURE(number);
        CHECK(combine_mode_of_unit(unit, number) == mode);
        ++number;
    }
}

TEST_CASE("unit 1 has four modes, which the long list holds as 7 to 10")
{
    //             -1  0  1  2  3  4  5  6  7  8  9 10 11
    check_modes(0, {0, 0, 1, 2, 3, 0, 0, 0, 0, 1, 2, 3, 0});
}

TEST_CASE("unit 2 has six modes, and the long list's 6 is its 5")
{
    //             -1  0  1  2  3  4  5  6  7  8  9 10 11
    check_modes(1, {0, 0, 1, 2, 3, 4, 5, 5, 0, 0, 0, 0, 0});
}

TEST_CASE("unit 3 has its own mode and unit 2's list shifted by one")
{
    //             -1  0  1  2  3  4  5  6  7  8  9 10 11
    check_modes(2, {0, 0, 1, 2, 3, 4, 5, 6, 0, 0, 0, 0, 0});
}

TEST_CASE("what is in neither list is no mode, though it acts as 0")
{
    const char* known[] = {"1111   1111 ", "1111111     ", "1111111     ", "            "}; // of 0 to 11
    for (uint32_t unit = 0; unit < 4; ++unit)
        for (int32_t number = 0; number < 12; ++number) {
            CAPTURE(unit);
            CAPTURE(number);
            CHECK(is_combine_mode(unit, number) == (known[unit][number] == '1'));
        }
    CHECK_FALSE(is_combine_mode(0, -1));
}

TEST_CASE("numbers far outside and units that do not exist act as 0")
{
    CHECK(combine_mode_of_unit(0, 256 + 2) == 0);
    CHECK(combine_mode_of_unit(1, -2147483647 - 1) == 0);
    CHECK(combine_mode_of_unit(2, 2147483647) == 0);
    CHECK(combine_mode_of_unit(3, 2) == 0);
}
