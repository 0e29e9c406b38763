// Each form of the ripple against the plain one, byte for byte.

#include "faster_sets.h"
#include "picture.h"
#include "texgen/cosine_table.h"
#include "texgen/ripple_kernels.h"

#include <doctest/doctest.h>

#include <limits>
#include <vector>

static std::vector<uint8_t> source_picture(uint32_t size, bool flat)
{
    std::vector<uint8_t> bytes(size_t{3} * size * size);
    for (size_t n = 0; n < bytes.size(); ++n)
        bytes[n] = static_cast<uint8_t>(flat ? 85 * (n % 3) + 77 : n * 2654435761u >> 13);
    return bytes;
}

// Every row with shifts of its own; behind each row stand 7s, where the next one is written.
static std::vector<uint8_t> rippled(
    instruction_set set, const std::vector<uint8_t>& pixels, uint32_t size, const std::vector<double>& shifts)
{
    std::vector<uint32_t> words(ripple_words(size));
    spread_to_words(pixels.data(), size, words.data());
    std::vector<double> y_shifts(ripple_columns(size));
    for (uint32_t x = 0; x < size; ++x)
        y_shifts[x] = shifts[(x * 7 + 3) % shifts.size()] * size;
    std::vector<last_corner_run> last(ripple_columns(size) / ripple_run);
    for (last_corner_run& run : last)
        run.fraction[0] = -1.0;
    std::vector<uint8_t> out(pixels.size() + 8, 7);
    for (uint32_t y = 0; y < size; ++y) {
        const double x_shift = shifts[y % shifts.size()] * size;
        ripple_row(set, {pixels.data(), words.data(), size}, {y, x_shift, y_shifts.data(), last.data()},
            out.data() + size_t{3} * size * y);
    }
    return out;
}

TEST_CASE("rippled rows have the same bytes with all instructions, at any size and shift of one picture")
{
    const std::vector<double> none = {0.0};
    const std::vector<double> whole = {1.0, -1.0, 0.5, -0.5, 0.25, 0.0};
    const std::vector<double> tiny = {-1e-19, 1e-19, -1e-12, 1e-300, -0.0};
    std::vector<double> scattered;
    for (uint32_t n = 0; n < 500; ++n)
        scattered.push_back(static_cast<double>(static_cast<int32_t>(n * 2654435761u)) / 2147483648.0);
    std::vector<double> rounded; // with y they do not fit a double, so that the fractions change from row to row
    for (const double shift : scattered)
        rounded.push_back(shift / 3.0);
    std::vector<double> halves(ripple_run); // the same, behind columns that stand still
    for (uint32_t x = ripple_run / 2; x < ripple_run; ++x)
        halves[(x * 7 + 3) % ripple_run] = rounded[x];
    for (const instruction_set set : faster_sets())
        for (const uint32_t size : {1u, 2u, 3u, 5u, 17u, 63u, 64u, 65u, 130u, 256u})
            for (const bool flat : {false, true})
                for (const std::vector<double>& shifts : {none, whole, tiny, scattered, rounded, halves}) {
                    const std::vector<uint8_t> source = source_picture(size, flat);
                    CAPTURE(static_cast<uint32_t>(set));
                    CAPTURE(size);
                    CAPTURE(flat);
                    CAPTURE(shifts.size());
                    CHECK(rippled(set, source, size, shifts) == rippled(instructions_plain, source, size, shifts));
                }
}

TEST_CASE("a picture as words has its first row and column once more behind its last")
{
    const std::vector<uint8_t> pixels = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    std::vector<uint32_t> words(ripple_words(2), 99);
    spread_to_words(pixels.data(), 2, words.data());
    CHECK(words
        == std::vector<uint32_t>{
            0x030201, 0x060504, 0x030201, 0x090807, 0x0c0b0a, 0x090807, 0x030201, 0x060504, 0x030201, 0});
}

// The hash was made with the plain form; ctest runs it with all instructions and in both word sizes.
TEST_CASE("ripples of any values are the same in every build")
{
    build_cosine_table();
    constexpr float huge = std::numeric_limits<float>::max();
    constexpr float broken = std::numeric_limits<float>::quiet_NaN();
    uint64_t hash = 14695981039346656037u;
    for (const uint32_t size : {1u, 7u, 64u, 150u})
        for (const std::initializer_list<float>& values : {std::initializer_list<float>{0.1f, 0.1f, 2.0f, 3.0f},
                 {1.0f, -1.0f, 1.0f, 1.0f}, {1.0001f, 0.3f, 5.0f, 7.0f}, {-7.3f, 12.9f, -2.0f, 3.9f},
                 {0.0f, 0.0f, 0.0f, 0.0f}, {broken, 0.1f, 1.0f, 1.0f}, {0.1f, huge, 1.0f, 1.0f},
                 {0.1f, 0.2f, broken, huge}, {0.5f, 1e-20f, 1e9f, -1e9f}})
            for (const uint8_t byte : operated(204, values, scrambled_picture(size, 3)).bytes)
                hash = (hash ^ byte) * 1099511628211u;
    CHECK(hash == 470438391182735198u);
}
