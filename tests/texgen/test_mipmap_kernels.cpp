// Halving two rows: each form against the plain loop. What is read is exactly as much memory as the rows need, which
// the address sanitizer holds.

#include "texgen/mipmap_kernels.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <vector>

static std::vector<uint8_t> scrambled_bytes(size_t count, uint32_t seed)
{
    std::vector<uint8_t> bytes(count);
    for (uint8_t& byte : bytes) {
        seed = seed * 1664525u + 1013904223u;
        byte = static_cast<uint8_t>(seed >> 24);
    }
    return bytes;
}

// Behind the row stand 7s, which are not written over.
static std::vector<uint8_t> halved(instruction_set set, const row_pair& rows, size_t width)
{
    constexpr size_t behind = 32;
    std::vector<uint8_t> out(width * rows.components + behind, 7);
    halve_row_pair(set, rows, out.data(), width);
    CHECK(std::count(out.end() - behind, out.end(), 7) == behind);
    out.resize(width * rows.components);
    return out;
}

constexpr instruction_set all_sets[] = {instructions_plain, instructions_sse2, instructions_avx2};

TEST_CASE("halved rows are truncated means of two by two pixels with all instructions, at any width and address")
{
    for (const uint32_t components : {3u, 4u})
        for (size_t width = 1; width <= 70; ++width) {
            const size_t row = 2 * width * components;
            const std::vector<uint8_t> pixels = scrambled_bytes(2 * row + width % 32, static_cast<uint32_t>(width));
            const uint8_t* upper = pixels.data() + width % 32;
            const uint8_t* lower = upper + row;
            std::vector<uint8_t> expected(width * components);
            for (size_t n = 0; n < expected.size(); ++n) {
                const size_t left = n / components * 2 * components + n % components;
                const int sum = upper[left] + upper[left + components] + lower[left] + lower[left + components];
                expected[n] = static_cast<uint8_t>(sum / 4);
            }
            for (const instruction_set set : all_sets)
                if (has_instructions(set)) {
                    CAPTURE(width);
                    CAPTURE(static_cast<uint32_t>(set));
                    REQUIRE(halved(set, {upper, lower, components}, width) == expected);
                }
        }
}

TEST_CASE("halved rows are the same with all instructions where they are longer than a block")
{
    for (const uint32_t components : {3u, 4u})
        for (const size_t width : {255u, 256u, 257u, 511u, 512u, 513u, 1025u}) {
            const size_t row = 2 * width * components;
            const std::vector<uint8_t> pixels = scrambled_bytes(2 * row, 3);
            const row_pair rows = {pixels.data(), pixels.data() + row, components};
            const std::vector<uint8_t> expected = halved(instructions_plain, rows, width);
            for (const instruction_set set : all_sets)
                if (has_instructions(set))
                    REQUIRE(halved(set, rows, width) == expected);
        }
}

TEST_CASE("halved rows keep the greatest sums, and let no component run into the next")
{
    for (const uint32_t components : {3u, 4u})
        for (uint32_t component = 0; component < components; ++component) {
            std::vector<uint8_t> pixels(size_t{2} * 80 * components, 0);
            for (size_t n = component; n < pixels.size(); n += components)
                pixels[n] = 255;
            const row_pair rows = {pixels.data(), pixels.data() + pixels.size() / 2, components};
            for (const instruction_set set : all_sets)
                if (has_instructions(set)) {
                    const std::vector<uint8_t> made = halved(set, rows, 40);
                    for (size_t n = 0; n < made.size(); ++n)
                        REQUIRE(made[n] == (n % components == component ? 255 : 0));
                }
        }
}
