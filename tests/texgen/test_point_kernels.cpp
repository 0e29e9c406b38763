// Each form of a kernel against its plain loop: all bytes, every length up to a few vectors, every address.

#include "texgen/point_kernels.h"

#include <doctest/doctest.h>

#include <vector>

// All values of a byte, and back again in another order; long enough for any length and address below.
static std::vector<uint8_t> varied_bytes(size_t count)
{
    std::vector<uint8_t> bytes(count);
    for (size_t n = 0; n < count; ++n)
        bytes[n] = static_cast<uint8_t>(n * 37 + n / 256);
    return bytes;
}

constexpr instruction_set faster_sets[] = {instructions_sse2, instructions_avx2};

TEST_CASE("invert gives the same bytes with all instructions, at any length and address")
{
    const std::vector<uint8_t> source = varied_bytes(1200);
    for (const instruction_set set : faster_sets) {
        if (!has_instructions(set)) {
            MESSAGE("this processor lacks instruction set ", static_cast<uint32_t>(set));
            continue;
        }
        for (size_t begin = 0; begin < 33; ++begin)
            for (size_t count = 0; count < 130; ++count) {
                std::vector<uint8_t> expected(200, 7);
                std::vector<uint8_t> made(200, 7);
                invert_bytes(instructions_plain, source.data() + begin, expected.data() + 1, count);
                invert_bytes(set, source.data() + begin, made.data() + 1, count);
                REQUIRE(made == expected);
            }
    }
}

TEST_CASE("invert works in place")
{
    for (const instruction_set set : {instructions_plain, instructions_sse2, instructions_avx2}) {
        if (!has_instructions(set))
            continue;
        std::vector<uint8_t> bytes = varied_bytes(513);
        const std::vector<uint8_t> before = bytes;
        invert_bytes(set, bytes.data(), bytes.data(), bytes.size());
        for (size_t n = 0; n < bytes.size(); ++n)
            REQUIRE(bytes[n] == 255 - before[n]);
    }
}
