#include "render/bindings_gl.h"

#include <doctest/doctest.h>

#include <cstdint>
#include <cstring>

// Among `count` numbers each bit of each is told apart, and nothing behind them is looked at.
template <uint32_t count> static void check_every_bit()
{
    float a[count + 1];
    for (uint32_t i = 0; i <= count; ++i)
        a[i] = static_cast<float>(i) * 0.25f;
    float b[count + 1];
    std::memcpy(b, a, sizeof b);
    b[count] = 77.0f;
    CHECK(same_numbers<count>(a, b));
    for (uint32_t i = 0; i < count; ++i)
        for (uint32_t bit = 0; bit < 32; ++bit) {
            uint32_t bits = 0;
            std::memcpy(&bits, a + i, sizeof bits);
            bits ^= 1u << bit;
            std::memcpy(b + i, &bits, sizeof bits);
            CAPTURE(count);
            CAPTURE(i);
            CHECK(!same_numbers<count>(a, b));
            b[i] = a[i];
        }
}

TEST_CASE("Numbers are the same where no bit of any differs, however many they are")
{
    check_every_bit<1>();
    check_every_bit<3>();
    check_every_bit<4>();
    check_every_bit<9>(); // a normal matrix
    check_every_bit<16>();
    check_every_bit<24>();
}
