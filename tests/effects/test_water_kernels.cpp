// Each form of the waters' kernels against the plain one.

#include "effects/water_kernels.h"
#include "faster_sets.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <vector>

constexpr uint32_t side = 30;
constexpr uint32_t entries = side * side;

// Whole numbers between -reach and reach.
static std::vector<int32_t> scattered(uint32_t seed, uint32_t reach)
{
    std::vector<int32_t> field(entries);
    for (uint32_t k = 0; k < entries; ++k) {
        const auto number = static_cast<int32_t>((k + seed) * 2654435761u);
        field[k] = reach == 0 ? number : number % static_cast<int32_t>(reach + 1);
    }
    return field;
}

static std::vector<int32_t> spread(instruction_set set, const std::vector<int32_t>& a, std::vector<int32_t> b)
{
    spread_wave_entries(set, a.data() + side, b.data() + side, side, entries - 2 * side);
    return b;
}

TEST_CASE("a wave spreads to the same heights with all instructions, also where sums pass 32 bits")
{
    for (const instruction_set set : faster_sets())
        for (const uint32_t reach : {1u, 6u, 100u, 0u}) // 0: all numbers there are
            for (uint32_t seed = 0; seed < 20; ++seed) {
                const std::vector<int32_t> a = scattered(seed * 977, reach);
                const std::vector<int32_t> b = scattered(seed * 1999 + 5, reach);
                CAPTURE(static_cast<uint32_t>(set));
                CAPTURE(reach);
                CAPTURE(seed);
                CHECK(spread(set, a, b) == spread(instructions_plain, a, b));
            }
}

TEST_CASE("a wave's entries are half of their surroundings less themselves, damped, and at most 4")
{
    std::vector<int32_t> a(entries, 0);
    std::vector<int32_t> b(entries, 0);
    const uint32_t middle = 15 * side + 15;
    a[middle - 1] = -101;
    a[middle + side] = -100;
    b[middle] = 99;       // -201 >> 1 = -101, - 99 = -200; -200 >> 5 = -7
    a[middle + 100] = 40; // around it: 20, less nothing, at most 4
    a[0] = 2147483647;    // beside what is computed
    a[middle + 210] = a[middle + 212] = a[middle + 211 + side] = 2147483647; // 6442450941 >> 1 = 3221225470
    for (const instruction_set set : {instructions_plain, instructions_sse2, instructions_avx2}) {
        if (!has_instructions(set))
            continue;
        const std::vector<int32_t> out = spread(set, a, b);
        CHECK(out[middle] == -193);
        CHECK(out[middle + 101] == 4);
        CHECK(out[middle + 211] == -1073741826 + 33554433); // as 32 bits, and a thirty-second less
        CHECK(out[side - 1] == 0);
    }
}

TEST_CASE("surfaces between two steps have the same heights with all instructions")
{
    for (const instruction_set set : faster_sets())
        for (const uint32_t reach : {6u, 1000u, 0u})
            for (const double phase : {0.0, 0.25, 1.0 / 3.0, 0.999, 1.0})
                for (const uint32_t count : {1u, 7u, 33u, entries}) {
                    const std::vector<int32_t> fields[3]
                        = {scattered(1, reach), scattered(5000, reach), scattered(70000, reach)};
                    const water_fields of = {fields[0].data(), {fields[1].data(), fields[2].data()}};
                    std::vector<float> expected(entries, 7.0f);
                    std::vector<float> made(entries, 7.0f);
                    CAPTURE(static_cast<uint32_t>(set));
                    CAPTURE(reach);
                    CAPTURE(phase);
                    CAPTURE(count);
                    blend_heights(instructions_plain, of, phase, count, expected.data());
                    blend_heights(set, of, phase, count, made.data());
                    CHECK(made == expected);
                    blend_whole_heights(instructions_plain, of, phase, count, expected.data());
                    blend_whole_heights(set, of, phase, count, made.data());
                    CHECK(made == expected);
                }
}
