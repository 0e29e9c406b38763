// Each form of a kernel against its plain loop, and that against the formula in whole numbers.

#include "yuv_kernels.h"

#include <algorithm>
#include <cmath>
#include <doctest/doctest.h>
#include <vector>

constexpr instruction_set all_sets[] = {instructions_plain, instructions_sse2, instructions_avx2};

static uint32_t fixed(double value)
{
    return static_cast<uint32_t>(std::lround(value * 1048576));
}

// Of BT.601 and BT.709, and the greatest that are allowed.
static const luma_weights lumas[]
    = {{fixed(219 / 255.0 * 0.299), fixed(219 / 255.0 * 0.587), fixed(219 / 255.0 * 0.114)},
        {fixed(219 / 255.0 * 0.2126), fixed(219 / 255.0 * 0.7152), fixed(219 / 255.0 * 0.0722)}, {1048574, 1, 1},
        {349525, 349525, 349526}};

static const chroma_weights chromas[] = {{fixed(112 / 255.0 * 0.299 / 0.886), fixed(112 / 255.0 * 0.587 / 0.886)},
    {fixed(112 / 255.0 * 0.114 / 0.701), fixed(112 / 255.0 * 0.587 / 0.701)},
    {fixed(112 / 255.0 * 0.2126 / 0.9278), fixed(112 / 255.0 * 0.7152 / 0.9278)}, {524287, 1}, {262143, 262145}};

namespace {

struct colour_rows {
    std::vector<uint8_t> bytes[3];
    split_row row;

    explicit colour_rows(size_t count)
    {
        for (std::vector<uint8_t>& kind : bytes)
            kind.assign(count, 7);
        row = {bytes[0].data(), bytes[1].data(), bytes[2].data()};
    }
    colour_rows(const colour_rows&) = delete;
    colour_rows& operator=(const colour_rows&) = delete;
};

} // namespace

TEST_CASE("Pixels are split into their colours with all instructions, at any length and address")
{
    std::vector<uint8_t> pixels(600);
    for (size_t n = 0; n < pixels.size(); ++n)
        pixels[n] = static_cast<uint8_t>(n * 37 + n / 256);
    for (const instruction_set set : all_sets)
        for (size_t begin = 0; has_instructions(set) && begin < 33; ++begin)
            for (size_t count = 0; count < 130; ++count) {
                colour_rows made(200);
                colour_rows expected(200);
                for (size_t n = 0; n < count; ++n)
                    for (size_t k = 0; k < 3; ++k)
                        expected.bytes[k][n] = pixels[begin + n * 3 + k];
                split_pixels(set, pixels.data() + begin, made.row, count);
                for (size_t k = 0; k < 3; ++k)
                    REQUIRE(made.bytes[k] == expected.bytes[k]);
            }
}

TEST_CASE("Luma of every colour is the formula's with all instructions")
{
    for (const luma_weights& w : lumas)
        for (uint32_t red = 0; red < 256; red += 1) {
            colour_rows rows(65536);
            std::vector<uint8_t> expected(65536);
            for (uint32_t n = 0; n < 65536; ++n) {
                const uint8_t green = static_cast<uint8_t>(n >> 8);
                const uint8_t blue = static_cast<uint8_t>(n);
                rows.row.red[n] = static_cast<uint8_t>(red);
                rows.row.green[n] = green;
                rows.row.blue[n] = blue;
                const int64_t sum = int64_t{w.red} * red + int64_t{w.green} * green + int64_t{w.blue} * blue;
                expected[n] = static_cast<uint8_t>(16 + (sum + 524288) / 1048576);
            }
            for (const instruction_set set : all_sets) {
                std::vector<uint8_t> made(65536);
                if (has_instructions(set)) {
                    luma_row(set, rows.row, w, made.data(), made.size());
                    REQUIRE(made == expected);
                }
            }
        }
}

// Four bytes of that sum: two of a row and two of the next.
static void put_sum(uint8_t* top, uint8_t* bottom, size_t n, int32_t sum)
{
    uint8_t four[4];
    for (int32_t i = 0; i < 4; ++i)
        four[i] = static_cast<uint8_t>(std::clamp(sum - 255 * i, 0, 255));
    top[n * 2] = four[n % 4];
    top[n * 2 + 1] = four[(n + 1) % 4];
    bottom[n * 2] = four[(n + 2) % 4];
    bottom[n * 2 + 1] = four[(n + 3) % 4];
}

static uint8_t expected_chroma(const chroma_weights& w, int64_t full, int64_t first, int64_t second)
{
    const int64_t sum = w.first_other * (full - first) + w.second_other * (full - second);
    return static_cast<uint8_t>(128 + std::floor(static_cast<double>(sum + 2097152) / 4194304));
}

// What a sample depends on are two differences; blue is less than red by `step`, or more.
static void check_chroma(const chroma_weights& for_cb, const chroma_weights& for_cr, int32_t step)
{
    constexpr size_t count = 1021;
    colour_rows top(count * 2);
    colour_rows bottom(count * 2);
    std::vector<uint8_t> expected_cb(count);
    std::vector<uint8_t> expected_cr(count);
    for (int32_t green = 0; green <= 1020; ++green) {
        const int32_t red = std::clamp(step, 0, 1020);
        const int32_t blue = std::clamp(-step, 0, 1020);
        const size_t n = static_cast<size_t>(green);
        put_sum(top.row.red, bottom.row.red, n, red);
        put_sum(top.row.green, bottom.row.green, n, green);
        put_sum(top.row.blue, bottom.row.blue, n, blue);
        expected_cb[n] = expected_chroma(for_cb, blue, red, green);
        expected_cr[n] = expected_chroma(for_cr, red, green, blue);
    }
    for (const instruction_set set : all_sets) {
        std::vector<uint8_t> cb(count);
        std::vector<uint8_t> cr(count);
        if (!has_instructions(set))
            continue;
        chroma_row(set, top.row, bottom.row, for_cb, for_cr, cb.data(), cr.data(), count);
        REQUIRE(cb == expected_cb);
        REQUIRE(cr == expected_cr);
    }
}

TEST_CASE("Chroma is the formula's with all instructions, for every difference of red and blue, and every green")
{
    for (size_t i = 0; i < std::size(chromas); ++i)
        for (int32_t step = -1020; step <= 1020; ++step)
            check_chroma(chromas[i], chromas[(i + 1) % std::size(chromas)], step);
}

TEST_CASE("Rows of luma and chroma have any length and address, and nothing is written behind them")
{
    colour_rows top(400);
    colour_rows bottom(400);
    for (size_t k = 0; k < 3; ++k)
        for (size_t n = 0; n < 400; ++n) {
            top.bytes[k][n] = static_cast<uint8_t>(n * 31 + k * 71);
            bottom.bytes[k][n] = static_cast<uint8_t>(n * 57 + k * 11 + 5);
        }
    for (const instruction_set set : all_sets)
        for (size_t begin = 0; has_instructions(set) && begin < 35; ++begin)
            for (size_t count = 0; count < 100; ++count) {
                const auto from = [begin](const colour_rows& rows) {
                    return split_row{rows.row.red + begin, rows.row.green + begin, rows.row.blue + begin};
                };
                std::vector<uint8_t> made[3];
                std::vector<uint8_t> expected[3];
                for (size_t k = 0; k < 3; ++k)
                    made[k] = expected[k] = std::vector<uint8_t>(120, 9);
                luma_row(instructions_plain, from(top), lumas[0], expected[0].data(), count);
                luma_row(set, from(top), lumas[0], made[0].data(), count);
                chroma_row(instructions_plain, from(top), from(bottom), chromas[0], chromas[1], expected[1].data(),
                    expected[2].data(), count);
                chroma_row(set, from(top), from(bottom), chromas[0], chromas[1], made[1].data(), made[2].data(), count);
                for (size_t k = 0; k < 3; ++k)
                    REQUIRE(made[k] == expected[k]);
                REQUIRE(made[0][count] == 9);
            }
}
