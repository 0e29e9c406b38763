// Each form of the generators' kernels against the plain one, byte for byte.

#include "content/numbers.h"
#include "faster_sets.h"
#include "picture.h"
#include "texgen/generator_kernels.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

static std::vector<uint32_t> scattered_words(uint32_t count)
{
    std::vector<uint32_t> words;
    for (uint32_t n = 0; n < count; ++n)
        words.push_back(n * 2654435761u >> 8);
    return words;
}

TEST_CASE("words become the same pixels with all instructions, at any length and address, and none behind them")
{
    const std::vector<uint32_t> words = scattered_words(300);
    for (const instruction_set set : faster_sets())
        for (uint32_t begin = 0; begin < 17; ++begin)
            for (uint32_t count = 1; count <= 150; ++count) {
                std::vector<uint8_t> expected(500, 7);
                std::vector<uint8_t> made(500, 7);
                store_words(instructions_plain, words.data() + begin, expected.data() + begin, count);
                store_words(set, words.data() + begin, made.data() + begin, count);
                CAPTURE(static_cast<uint32_t>(set));
                CAPTURE(count);
                REQUIRE(made == expected);
            }
}

// A row of sines by one form, with the colours of a palette, or with these.
static std::vector<uint8_t> row_of_sines(instruction_set set, const std::vector<double>& across, double down,
    const std::vector<uint32_t>& palette, const float* color, uint32_t count)
{
    std::vector<int16_t> split(2 * across.size());
    sine_rows rows = {.across = across.data(),
        .palette = palette.data(),
        .values = {split.data(), split.data() + across.size()},
        .scales = {}};
    for (uint32_t c = 0; c < 3 && color != nullptr; ++c)
        rows.scales[c] = make_byte_scale(color[c]);
    prepare_sine_rows(set, rows, count);
    std::vector<uint8_t> out(256 * 3, 7);
    sine_row(set, rows, down, out.data(), count);
    return out;
}

TEST_CASE("rows of sines have the same bytes with all instructions, also where sums are whole numbers or beside them")
{
    const std::vector<uint32_t> palette = scattered_words(256);
    std::vector<double> across;
    for (uint32_t x = 0; x < 256; ++x)
        across.push_back(std::sin(x * 0.024543692606170259));
    for (const instruction_set set : faster_sets())
        for (const uint32_t count : {1u, 5u, 64u, 100u, 256u})
            for (uint32_t y = 0; y < 256; ++y)
                for (const double miss : {0.0, 1.1e-16, -2.2e-16, 1e-9, -1e-6, 3e-5}) {
                    const double down = std::clamp(across[y] + miss, -1.0, 1.0);
                    CAPTURE(static_cast<uint32_t>(set));
                    CAPTURE(count);
                    CAPTURE(y);
                    REQUIRE(row_of_sines(set, across, down, palette, nullptr, count)
                        == row_of_sines(instructions_plain, across, down, palette, nullptr, count));
                }
}

TEST_CASE("rows of sines have the colours of their palette with all instructions, also where scales make them")
{
    std::vector<double> across;
    for (uint32_t x = 0; x < 256; ++x)
        across.push_back(-1.0 + x / 127.5);
    const float colors[][3] = {{1.0f, 0.5f, 0.0f}, {0.7f, 0.3f, 0.999f}, {1e-30f, 0.00392f, 0.333333f},
        {1.1f, 0.5f, 0.2f}, {0.5f, -0.5f, 0.2f}, {0.1f, 0.2f, 3e9f}};
    for (const instruction_set set : faster_sets())
        for (const auto& color : colors) {
            std::vector<uint32_t> palette(256);
            for (uint32_t v = 0; v < 255; ++v)
                for (uint32_t c = 0; c < 3; ++c)
                    palette[v] |= uint32_t{low_byte(truncate_to_int(static_cast<double>(color[c]) * v))} << (8 * c);
            for (const double down : {-1.0, -0.3, 0.0, 0.777, 1.0}) {
                CAPTURE(static_cast<uint32_t>(set));
                CAPTURE(down);
                REQUIRE(row_of_sines(set, across, down, palette, color, 256)
                    == row_of_sines(instructions_plain, across, down, palette, color, 256));
            }
        }
}

// The words of a half row; what lies behind it is the kernel's own.
static std::vector<uint32_t> half_row(instruction_set set, const radial_rings& rings, uint32_t y)
{
    std::vector<uint32_t> words(256, 7);
    radial_half_row(set, rings, y, words.data());
    words.resize(static_cast<size_t>(rings.center) + 1);
    return words;
}

TEST_CASE("rings have the same bytes with all instructions, of any size, width and colour")
{
    constexpr double broken = std::numeric_limits<double>::quiet_NaN();
    constexpr double endless = std::numeric_limits<double>::infinity();
    for (const instruction_set set : faster_sets())
        for (const int32_t center : {1, 2, 31, 63, 64, 65, 128, 190})
            for (const double inverse_radian : {0.0, 0.3, 1.0, 1.3, 7.7, -2.0, broken, endless, 1e300})
                for (const int32_t offset : {0, 1, 12, 127}) {
                    const radial_rings rings = {inverse_radian, center, offset,
                        {static_cast<double>(0.9f), static_cast<double>(0.2f), -3e6}, {0.0, 1.0, 4e6}};
                    if (!radial_rings_fit(rings))
                        continue;
                    for (uint32_t y = 0; y <= static_cast<uint32_t>(center); y += 3) {
                        CAPTURE(static_cast<uint32_t>(set));
                        CAPTURE(center);
                        CAPTURE(inverse_radian);
                        CAPTURE(y);
                        REQUIRE(half_row(set, rings, y) == half_row(instructions_plain, rings, y));
                    }
                }
}

TEST_CASE("only colours whose bytes fit an integer are for the fast forms")
{
    constexpr float broken = std::numeric_limits<float>::quiet_NaN();
    for (const float odd : {128.0f, -0.001f, broken, std::numeric_limits<float>::infinity()}) {
        const float color[] = {1.0f, 0.5f, odd};
        CHECK(!noise_color_fits(color));
    }
    for (const float odd : {4.1e6f, -4.1e6f, broken, std::numeric_limits<float>::infinity()}) {
        const auto channel = static_cast<double>(odd);
        CHECK(!radial_rings_fit({1.0, 128, 0, {1.0, 1.0, 1.0}, {1.0, channel, 1.0}}));
        CHECK(!radial_rings_fit({1.0, 128, 0, {channel, 1.0, 1.0}, {1.0, 1.0, 1.0}}));
    }
    const float color[] = {127.9f, -0.0f, 1e-40f};
    CHECK(noise_color_fits(color));
    CHECK(radial_rings_fit({1.0, 128, 127, {4e6, 1.0, 1.0}, {1.0, 1.0, -4e6}}));
    CHECK(!radial_rings_fit({1.0, 127, 127, {1.0, 1.0, 1.0}, {1.0, 1.0, 1.0}})); // no way from centre to margin
}

TEST_CASE("noise has the same bytes with all instructions, at any length, and none behind it")
{
    const float colors[][3] = {{0.9f, 0.8f, 0.7f}, {1.0f, 64.0f, 127.9f}, {0.0f, 1e-30f, 1.5f}};
    for (const instruction_set set : faster_sets())
        for (const auto& color : colors)
            for (uint32_t count = 0; count <= 300; ++count) {
                std::vector<uint8_t> expected(1000, 7);
                std::vector<uint8_t> made(1000, 7);
                noise_pixels(instructions_plain, count * 77777, color, expected.data(), count);
                noise_pixels(set, count * 77777, color, made.data(), count);
                CAPTURE(static_cast<uint32_t>(set));
                CAPTURE(count);
                REQUIRE(made == expected);
            }
}

// All 32,768 draws, which the generator goes through in no time: of colours whose bytes are whole numbers often, or
// nearly so, at the ends of what a single can tell apart.
TEST_CASE("noise has the same bytes with all instructions for every draw and colours beside whole bytes")
{
    const float colors[][3] = {{1.0f, 0.99999994f, 1.0000001f}, {128.0f / 255.0f, 256.0f / 255.0f, 64.0f},
        {1.0f / 255.0f, 0.9f / 255.0f, 0.8999f / 255.0f}, {2.0f / 255.0f, 3.0f / 255.0f, 127.0f},
        {0.5f, 0.50196081f, 0.00392157f}, {0.003922f, 0.1f, 32.0f / 255.0f}};
    constexpr uint32_t count = 300000;
    std::vector<uint8_t> expected(size_t{3} * count);
    std::vector<uint8_t> made(size_t{3} * count);
    for (const instruction_set set : faster_sets())
        for (const auto& color : colors) {
            noise_pixels(instructions_plain, 1, color, expected.data(), count);
            noise_pixels(set, 1, color, made.data(), count);
            CAPTURE(static_cast<uint32_t>(set));
            CAPTURE(color[0]);
            CHECK(made == expected);
        }
}

// The hash was made by loops over single pixels; ctest runs it with all instructions and in both word sizes.
TEST_CASE("generated pictures of any size and values are the same in every build")
{
    constexpr float broken = std::numeric_limits<float>::quiet_NaN();
    constexpr float endless = std::numeric_limits<float>::infinity();
    const struct {
        int32_t kind;
        std::initializer_list<float> values;
    } pictures[] = {{0, {0.3f, broken, -900.0f}}, {1, {1.0f, 0.5f, -0.3f, 1.0f, 1.0f}},
        {1, {0.9f, 300.0f, 1e9f, 0.0f, 5.5f}}, {1, {0.9f, 0.3f, 0.1f, endless, 1.0f}},
        {1, {0.9f, 0.3f, 0.1f, 1.0f, broken}}, {2, {0.9f, 0.2f, 0.1f, 0.0f, 0.3f, 0.8f, 1.3f, 12.0f}},
        {2, {0.9f, 0.2f, 0.1f, 0.0f, 0.3f, 0.8f, 2.0f, 127.0f}},
        {2, {0.9f, 1e12f, 0.1f, broken, 0.3f, 0.8f, 1.3f, 12.0f}},
        {2, {0.9f, 0.2f, 0.1f, 0.0f, 0.3f, 0.8f, endless, 3.0f}},
        {2, {0.9f, 0.2f, 0.1f, 0.0f, 0.3f, 0.8f, -1.0f, -5.0f}}, {3, {0.9f, 0.8f, 0.7f, 1.0f, 17.0f, 0.5f}},
        {3, {0.9f, 500.0f, broken, 2.5f, -17.0f, 0.6f}}, {3, {0.9f, 0.8f, 0.7f, 4.0f, 5.0f, 0.5f}},
        {3, {0.9f, 0.8f, 0.7f, 7.0f, 5.0f, 0.4f}}, {3, {0.9f, 0.8f, 0.7f, 3.0f, 5.0f, 1.0f}},
        {4, {0.8f, 0.3f, 0.2f, 0.6f, 0.6f, 0.6f, 12.0f, 7.0f, 1.0f, 2.0f, 18.0f}},
        {4, {0.8f, 0.3f, 0.2f, 0.6f, 0.6f, 0.6f, 3.0f, 70000.0f, 0.0f, 0.0f, -19.0f}},
        {4, {0.8f, 0.3f, 0.2f, 0.6f, 0.6f, 0.6f, broken, -3.0f, 1.0f, -2.0f, endless}},
        {5, {0.9f, 0.8f, 0.7f, 4242.0f}}, {5, {1e7f, -0.8f, broken, -1.0f}}, {5, {0.9f, 0.8f, 0.7f, endless}},
        {6, {1.0f}}};
    uint64_t hash = 14695981039346656037u;
    for (const auto& p : pictures)
        for (const uint32_t size : {1u, 2u, 3u, 17u, 64u, 129u, 200u})
            for (const uint8_t byte : generated(p.kind, p.values, size).bytes)
                hash = (hash ^ byte) * 1099511628211u;
    CHECK(hash == 148331803985119045u);
}
