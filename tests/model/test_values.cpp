#include "model/values.h"

#include "builders.h"

#include <doctest/doctest.h>

#include <cmath>
#include <limits>

TEST_CASE("A handle held as a float is truncated")
{
    CHECK(handle_of_value(3.0f) == 3);
    CHECK(handle_of_value(3.99f) == 3);
    CHECK(handle_of_value(4096.0f) == 4096);
}

TEST_CASE("What is no handle counts as none")
{
    CHECK(handle_of_value(0.0f) == 0);
    CHECK(handle_of_value(0.5f) == 0);
    CHECK(handle_of_value(-1.0f) == 0);
    CHECK(handle_of_value(-0.5f) == 0);
    CHECK(handle_of_value(std::nanf("")) == 0);
    CHECK(handle_of_value(std::numeric_limits<float>::infinity()) == 0);
    CHECK(handle_of_value(1e20f) == 0);
}

TEST_CASE("A constant is its value at every time")
{
    test_document t;
    CHECK(value_at(t.d.function_table, 2.5f, false, 0) == 2.5f);
    CHECK(value_at(t.d.function_table, animated_value{2.5f, 0}, 900) == 2.5f);
    CHECK(value_at({}, 2.5f, false, 0) == 2.5f);
}

TEST_CASE("A dynamic value follows the function of its handle")
{
    test_document t;
    add_function(t, constant_function(9.0f));
    const uint32_t handle = add_function(t, linear_function(2.0f, 1.0f));
    REQUIRE(handle == 2);
    CHECK(value_at(t.d.function_table, 2.0f, true, 10) == 21.0f);
    CHECK(value_at(t.d.function_table, animated_value{2.0f, 1}, 20) == 41.0f);
    CHECK(function_value(t.d.function_table, 2, 30) == 61.0f);
}

TEST_CASE("A dangling or missing function is 1")
{
    test_document t;
    add_function(t, constant_function(9.0f));
    CHECK(function_value(t.d.function_table, 0, 5) == 1.0f);
    CHECK(function_value(t.d.function_table, 2, 5) == 1.0f);
    CHECK(function_value(t.d.function_table, 99999, 5) == 1.0f);
    CHECK(function_value({}, 1, 5) == 1.0f);
    CHECK(value_at(t.d.function_table, -3.0f, true, 5) == 1.0f);
    CHECK(value_at(t.d.function_table, std::nanf(""), true, 5) == 1.0f);
}

TEST_CASE("Dynamic marks are bits from the highest down, six in the first byte")
{
    value_record record = {};
    const uint8_t first[6] = {128, 64, 32, 16, 8, 4};
    for (uint32_t i = 0; i < 6; ++i) {
        record.dynamic_flags[0] = first[i];
        for (uint32_t j = 0; j < 9; ++j)
            CHECK(value_is_dynamic(record, j) == (i == j));
    }
    record.dynamic_flags[0] = 0;
    const uint8_t second[3] = {128, 64, 32};
    for (uint32_t i = 0; i < 3; ++i) {
        record.dynamic_flags[1] = second[i];
        for (uint32_t j = 0; j < 9; ++j)
            CHECK(value_is_dynamic(record, j) == (6 + i == j));
    }
}
