// Blur and emboss: each form against the plain one, which test_operations.cpp holds, for pictures of any size.

#include "picture.h"
#include "texgen/neighbour_kernels.h"

#include <doctest/doctest.h>

constexpr instruction_set faster_sets[] = {instructions_sse2, instructions_avx2};

constexpr uint32_t untouched_bytes = 40; // behind a result

// 0 is the blur, 1..4 the directions of an emboss.
static std::vector<uint8_t> filtered(instruction_set set, uint32_t filter, const picture& a)
{
    std::vector<uint8_t> made(a.bytes.size() + untouched_bytes, 77);
    if (filter == 0)
        blur_picture(set, a.bytes.data(), made.data(), a.size);
    else
        emboss_picture(set, filter, a.bytes.data(), made.data(), a.size);
    for (size_t n = a.bytes.size(); n < made.size(); ++n)
        REQUIRE(made[n] == 77);
    return made;
}

static void require_same_filters(const picture& a)
{
    CAPTURE(a.size);
    for (const instruction_set set : faster_sets) {
        if (!has_instructions(set)) {
            MESSAGE("this processor lacks instruction set ", static_cast<uint32_t>(set));
            continue;
        }
        for (uint32_t filter = 0; filter <= 4; ++filter)
            REQUIRE(filtered(set, filter, a) == filtered(instructions_plain, filter, a));
    }
}

TEST_CASE("blur and emboss give the same bytes with all instructions for pictures of any size")
{
    for (uint32_t size = 1; size <= 70; ++size)
        require_same_filters(scrambled_picture(size, size));
}

TEST_CASE("blur and emboss give the same bytes with all instructions where a row is longer than a block of it")
{
    for (const uint32_t size : {256u, 513u, 514u, 515u, 1030u})
        require_same_filters(scrambled_picture(size, size));
}

// The extremes of what nine bytes and their factors come to.
TEST_CASE("blur and emboss give the same bytes with all instructions in black and white")
{
    require_same_filters(flat_picture(40, 255));
    require_same_filters(flat_picture(40, 0));
    for (uint32_t bits = 1; bits < 6; ++bits) {
        picture a = scrambled_picture(40, bits);
        for (uint8_t& byte : a.bytes)
            byte = (byte >> bits & 1) != 0 ? 255 : 0;
        require_same_filters(a);
    }
}

// One pixel's sum of nine goes through all that it can be.
TEST_CASE("a blur truncates every sum alike with all instructions")
{
    for (uint32_t sum = 0; sum <= 9 * 255; ++sum) {
        picture a = flat_picture(3, static_cast<uint8_t>(sum / 9));
        for (uint32_t n = 0; n < sum % 9; ++n)
            for (uint32_t c = 0; c < 3; ++c)
                ++a.bytes[3 * n + c];
        const uint8_t expected = static_cast<uint8_t>(uint64_t{sum} * 111111111 / 1000000000);
        for (const instruction_set set : {instructions_plain, instructions_sse2, instructions_avx2}) {
            if (!has_instructions(set))
                continue;
            const std::vector<uint8_t> made = filtered(set, 0, a);
            for (size_t n = 0; n < a.bytes.size(); ++n)
                REQUIRE(made[n] == expected);
        }
    }
}
