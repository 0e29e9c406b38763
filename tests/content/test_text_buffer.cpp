#include "content/text_buffer.h"

#include <cstdlib>
#include <doctest/doctest.h>
#include <string>

TEST_CASE("pieces are appended and counted without their terminating zero")
{
    char* buffer = static_cast<char*>(std::malloc(16));
    uint32_t capacity = 16;
    uint32_t used = 0;
    CHECK(buffer_printf(&buffer, &capacity, &used, "a%d", 12));
    CHECK(buffer_printf(&buffer, &capacity, &used, "%s;", "b"));
    CHECK(std::string(buffer) == "a12b;");
    CHECK(used == 5);
    CHECK(capacity == 16);
    std::free(buffer);
}

TEST_CASE("the capacity doubles when used, length and three exceed it")
{
    char* buffer = static_cast<char*>(std::malloc(8));
    uint32_t capacity = 8;
    uint32_t used = 0;
    buffer_printf(&buffer, &capacity, &used, "12345"); // 0 + 5 + 3 = 8
    CHECK(capacity == 8);
    buffer_printf(&buffer, &capacity, &used, "6"); // 5 + 1 + 3 = 9
    CHECK(capacity == 16);
    buffer_printf(&buffer, &capacity, &used, "%050d", 0); // 6 + 50 + 3 = 59
    CHECK(capacity == 64);
    CHECK(used == 56);
    CHECK(std::string(buffer) == "123456" + std::string(50, '0'));
    std::free(buffer);
}

TEST_CASE("an empty piece still gives a terminated text")
{
    char* buffer = nullptr;
    uint32_t capacity = 0;
    uint32_t used = 0;
    CHECK(buffer_printf(&buffer, &capacity, &used, "%s", ""));
    CHECK(capacity == 16384);
    CHECK(used == 0);
    CHECK(buffer[0] == '\0');
    std::free(buffer);
}

TEST_CASE("a piece is cut at 4095 bytes")
{
    char* buffer = nullptr;
    uint32_t capacity = 0;
    uint32_t used = 0;
    const std::string longer(10000, 'x');
    CHECK(buffer_printf(&buffer, &capacity, &used, "<%s>", longer.c_str()));
    CHECK(used == 4095);
    CHECK(std::string(buffer) == "<" + longer.substr(0, 4094));
    std::free(buffer);
}

TEST_CASE("a buffer that may not grow stays as it is")
{
    char* buffer = nullptr;
    uint32_t capacity = 0;
    uint32_t used = 0;
    const std::string piece(4095, 'x');
    while (used + piece.size() + 3 <= text_buffer_max_capacity)
        REQUIRE(buffer_printf(&buffer, &capacity, &used, "%s", piece.c_str()));
    const uint32_t full = used;
    CHECK(capacity == text_buffer_max_capacity);
    CHECK_FALSE(buffer_printf(&buffer, &capacity, &used, "%s", piece.c_str()));
    CHECK(used == full);
    CHECK(capacity == text_buffer_max_capacity);
    CHECK(buffer[full] == '\0');
    std::free(buffer);
}
