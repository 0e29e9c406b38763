#include "picture.h"

#include <doctest/doctest.h>

#include <limits>

static const float not_a_number = std::numeric_limits<float>::quiet_NaN();
static const float infinity = std::numeric_limits<float>::infinity();

// ---- color, unknown kinds -------------------------------------------------------------

TEST_CASE("a colour is 255 times its values, truncated")
{
    const picture made = generated(generator_color, {0.2f, 0.5f, 1.0f});
    CHECK(pixel_of(made, 0, 0) == 0x337FFF);
    CHECK(pixel_of(made, 255, 255) == 0x337FFF);
    CHECK(std::count(made.bytes.begin(), made.bytes.end(), 0x7F) == 65536);
}

TEST_CASE("a colour beyond 0..1 keeps the low eight bits")
{
    // 510 = 0x1FE, -25.5 becomes -25 = 0x..E7, and what fits no integer is 0.
    CHECK(pixel_of(generated(generator_color, {2.0f, -0.1f, 1e30f}, 2), 1, 1) == 0xFEE700);
    CHECK(pixel_of(generated(generator_color, {not_a_number, infinity, -infinity}, 2), 1, 1) == 0);
}

TEST_CASE("an unknown generator leaves the pixels as they are")
{
    CHECK(generated(6, {1, 1, 1}, 8, 55) == flat_picture(8, 55));
    CHECK(generated(-1, {1, 1, 1}, 8, 55) == flat_picture(8, 55));
}

TEST_CASE("a picture without pixels or of size 0 is not touched")
{
    generated_image image = {};
    for (int32_t kind = 0; kind < generator_kind_count; ++kind) {
        image.params.kind = kind;
        generate_image(image, 256);
        uint8_t pixel = 9;
        image.pixels = &pixel;
        generate_image(image, 0);
        CHECK(pixel == 9);
        image.pixels = nullptr;
    }
}

// ---- sinus plasma ---------------------------------------------------------------------

TEST_CASE("a plasma is 127 in the middle of its waves and 254 at most")
{
    const picture made = generated(generator_sinus_plasma, {1.0f, 0.5f, 0.0f, 1.0f, 1.0f});
    CHECK(pixel_of(made, 0, 0) == 0x7F3F00);   // 127
    CHECK(pixel_of(made, 64, 0) == 0xBE5F00);  // 190.5 becomes 190 before the colour: 95
    CHECK(pixel_of(made, 64, 64) == 0xFE7F00); // 254
    CHECK(pixel_of(made, 0, 192) == 0x3F1F00); // 63.5
    CHECK(pixel_of(made, 192, 192) == 0x000000);
    CHECK(*std::max_element(made.bytes.begin(), made.bytes.end()) == 254);
}

TEST_CASE("a plasma's repeats are waves along x and along y")
{
    const picture made = generated(generator_sinus_plasma, {1, 1, 1, 2.0f, 0.0f});
    CHECK(channel_at(made, 32, 7, 0) == 190);
    CHECK(channel_at(made, 96, 7, 0) == 63);
    CHECK(channel_at(made, 160, 200, 0) == 190);
    CHECK(channel_at(generated(generator_sinus_plasma, {1, 1, 1, 0.0f, 2.0f}), 7, 96, 0) == 63);
}

TEST_CASE("every pixel of a plasma follows the product form of two sines")
{
    // sin a + sin b = 2 sin((a + b) / 2) cos((a - b) / 2)
    const long double turn = 6.28318530717958647692L;
    for (const auto& [repeat_x, repeat_y] : {std::pair{3.0f, 2.0f}, {0.37f, 5.25f}, {-1.5f, 0.1f}}) {
        const picture made = generated(generator_sinus_plasma, {1, 0.25f, 3, repeat_x, repeat_y});
        uint32_t wrong = 0;
        for (uint32_t y = 0; y < 256; ++y)
            for (uint32_t x = 0; x < 256; ++x) {
                const long double a = x * turn * repeat_x / 256;
                const long double b = y * turn * repeat_y / 256;
                const long double v = 127 + 127 * std::sin((a + b) / 2) * std::cos((a - b) / 2);
                const int red = channel_at(made, x, y, 0);
                wrong += !truncates_to(v, red) || channel_at(made, x, y, 1) != red / 4
                    || channel_at(made, x, y, 2) != (red * 3) % 256;
            }
        CHECK(wrong == 0);
    }
}

TEST_CASE("a plasma of infinite waves is a picture all the same")
{
    const picture made = generated(generator_sinus_plasma, {1, 1, 1, infinity, not_a_number}, 4);
    CHECK(made.bytes.size() == 48);
}

// ---- radial colors --------------------------------------------------------------------

// Red in the centre, blue at the margin.
static picture red_to_blue(float inverse_radian, float offset)
{
    return generated(generator_radial_colors, {1, 0, 0, 0, 0, 1, inverse_radian, offset});
}

TEST_CASE("radial colours go from the centre's to the margin's with twice the distance")
{
    const picture made = red_to_blue(1.0f, 0.0f);
    CHECK(pixel_of(made, 128, 128) == 0xFF0000);
    CHECK(pixel_of(made, 78, 128) == 0x9B0064); // distance 50: 155 and 100
    CHECK(pixel_of(made, 128, 78) == 0x9B0064);
    CHECK(pixel_of(made, 98, 88) == 0x9B0064); // 30, 40, 50
    CHECK(pixel_of(made, 1, 128) == 0x0100FE); // distance 127
    CHECK(pixel_of(made, 0, 128) == 0x0000FF); // distance 128, beyond 127
    CHECK(pixel_of(made, 0, 0) == 0x0000FF);
}

TEST_CASE("radial colours leave the offset out and stretch the rest to the margin")
{
    const picture made = red_to_blue(1.0f, 64.0f);
    CHECK(pixel_of(made, 64, 128) == 0xFF0000); // distance 64
    CHECK(pixel_of(made, 32, 128) == 0x7F0080); // 128 x 32 / 64 = 64: 128 and 127
}

TEST_CASE("radial colours subtract the offset after the scaling by the inverse radian")
{
    const picture made = red_to_blue(2.0f, 32.0f);
    CHECK(pixel_of(made, 112, 128) == 0xFF0000); // 2 x 16 - 32 = 0
    CHECK(pixel_of(made, 96, 128) == 0xA90055);  // 128 x 32 / 96 = 42.67: 169.67 and 85.33
}

TEST_CASE("an offset of 127 leaves one pixel from the centre's colour to the margin's")
{
    const picture made = red_to_blue(1.0f, 127.0f);
    CHECK(pixel_of(made, 1, 128) == 0xFF0000);
    CHECK(pixel_of(made, 0, 128) == 0x0000FF);
}

TEST_CASE("a radial offset is truncated and clamped to 0..127")
{
    CHECK(red_to_blue(1.0f, 200.0f) == red_to_blue(1.0f, 127.0f));
    CHECK(red_to_blue(1.0f, -5.0f) == red_to_blue(1.0f, 0.0f));
    CHECK(red_to_blue(1.0f, 9.99f) == red_to_blue(1.0f, 9.0f));
    CHECK(red_to_blue(1.0f, not_a_number) == red_to_blue(1.0f, 0.0f));
}

TEST_CASE("an inverse radian of 0, of nothing or below is the centre's colour everywhere")
{
    CHECK(red_to_blue(0.0f, 0.0f) == red_to_blue(-1.0f, 0.0f));
    CHECK(red_to_blue(0.0f, 0.0f) == red_to_blue(not_a_number, 0.0f));
    CHECK(pixel_of(red_to_blue(0.0f, 0.0f), 0, 0) == 0xFF0000);
}

TEST_CASE("every pixel of radial colours is its two colours in proportion")
{
    const picture made = generated(generator_radial_colors, {0.9f, 0.3f, 0.0f, 0.1f, 0.7f, 0.5f, 1.3f, 20.5f});
    const float center[3] = {0.9f, 0.3f, 0.0f};
    const float margin[3] = {0.1f, 0.7f, 0.5f};
    uint32_t wrong = 0;
    for (int y = 0; y < 256; ++y)
        for (int x = 0; x < 256; ++x) {
            const long double distance
                = std::hypot(static_cast<long double>(x - 128), static_cast<long double>(y - 128));
            long double share = std::max((1.3f * distance - 20) / 108 * 256 / 255, 0.0L);
            if (share > 254.0L / 255)
                share = 1;
            for (uint32_t c = 0; c < 3; ++c) {
                const long double exact = 255 * (center[c] + share * (static_cast<long double>(margin[c]) - center[c]));
                wrong += !truncates_to(exact, channel_at(made, static_cast<uint32_t>(x), static_cast<uint32_t>(y), c));
            }
        }
    CHECK(wrong == 0);
}

// ---- noise ----------------------------------------------------------------------------

TEST_CASE("noise follows the generator's draws, one for all channels of a pixel")
{
    // From 1 the draws are 16838, 5758, 10113, 17515, 31051, 5627, 23010, 7419 of
    // 32768; times 255 that is 131.03, 44.81, 78.70, 136.30, 241.64, 43.79, 179.06, 57.73.
    const picture made = generated(generator_noise, {1.0f, 0.5f, 0.0f, 1.0f});
    const int expected[8] = {131, 44, 78, 136, 241, 43, 179, 57};
    for (uint32_t x = 0; x < 8; ++x) {
        CHECK(channel_at(made, x, 0, 0) == expected[x]);
        CHECK(channel_at(made, x, 0, 2) == 0);
    }
    CHECK(channel_at(made, 0, 0, 1) == 65); // 65.5
    CHECK(channel_at(made, 1, 0, 1) == 22); // 22.4
}

TEST_CASE("noise runs on from row to row")
{
    const picture wide = generated(generator_noise, {1, 1, 1, 7.0f}, 16);
    const picture narrow = generated(generator_noise, {1, 1, 1, 7.0f}, 8);
    CHECK(std::equal(narrow.bytes.begin(), narrow.bytes.end(), wide.bytes.begin()));
}

TEST_CASE("a seed is a 64-bit integer of which the low 32 bits count")
{
    const auto noise = [](float seed) { return generated(generator_noise, {1, 1, 1, seed}, 4); };
    CHECK(noise(1.9f) == noise(1.0f));
    CHECK(noise(-0.9f) == noise(0.0f));
    CHECK(noise(4294967296.0f) == noise(0.0f));         // 2^32
    CHECK(noise(-256.0f) == noise(4294967040.0f));      // 2^32 - 256
    CHECK(noise(5000000000.0f) == noise(705032704.0f)); // less 2^32
    CHECK(noise(1e30f) == noise(0.0f));
    CHECK(noise(not_a_number) == noise(0.0f));
    CHECK(noise(1.0f) != noise(2.0f));
}

TEST_CASE("each picture seeds its generator afresh")
{
    const picture first = generated(generator_noise, {1, 1, 1, 3.0f}, 32);
    generated(generator_maze, {1, 1, 1, 3.0f, 4.0f, 0.5f}, 32);
    CHECK(generated(generator_noise, {1, 1, 1, 3.0f}, 32) == first);
}

// ---- bricks ---------------------------------------------------------------------------

constexpr uint32_t brick = 0xFF0000;
constexpr uint32_t wall = 0x0000FF;

// Red bricks in blue mortar: courses, bricks of a row, their margins, second line offset.
static picture bricks(float horizontal, float vertical, float mh, float mv, float offset)
{
    return generated(generator_bricks, {1, 0, 0, 0, 0, 1, horizontal, vertical, mh, mv, offset});
}

TEST_CASE("bricks lie between margins along the row and across the courses")
{
    const picture made = bricks(4, 4, 2, 3, 10);
    CHECK(pixel_of(made, 2, 32) == wall);
    CHECK(pixel_of(made, 3, 32) == brick);
    CHECK(pixel_of(made, 61, 32) == brick);
    CHECK(pixel_of(made, 62, 32) == wall);
    CHECK(pixel_of(made, 66, 32) == wall);
    CHECK(pixel_of(made, 67, 32) == brick);
    CHECK(pixel_of(made, 32, 1) == wall);
    CHECK(pixel_of(made, 32, 2) == brick);
    CHECK(pixel_of(made, 32, 62) == brick);
    CHECK(pixel_of(made, 32, 63) == wall);
}

TEST_CASE("every second course is shifted by the second line offset")
{
    const picture made = bricks(4, 4, 0, 3, 10);
    for (uint32_t x = 0; x < 256; ++x) {
        CHECK(pixel_of(made, x, 100) == pixel_of(made, (x + 10) % 256, 30));
        CHECK(pixel_of(made, x, 150) == pixel_of(made, x, 30));
    }
    CHECK(pixel_of(made, 51, 100) == brick);
    CHECK(pixel_of(made, 52, 100) == wall);
}

TEST_CASE("the horizontal number counts courses, the vertical one bricks of a row")
{
    const picture made = bricks(2, 8, 0, 1, 0);
    CHECK(pixel_of(made, 32, 0) == wall);
    CHECK(pixel_of(made, 96, 0) == wall);
    CHECK(pixel_of(made, 16, 128) == brick);
    CHECK(pixel_of(bricks(8, 2, 1, 0, 0), 16, 32) == wall);
    CHECK(pixel_of(bricks(8, 2, 1, 0, 0), 32, 16) == brick);
}

TEST_CASE("a pixel on a joint belongs to the brick before it")
{
    // Strictly greater: at 64 the rest is the whole period and nothing is left of it.
    const picture made = bricks(4, 4, 0, 1, 16);
    CHECK(pixel_of(made, 64, 0) == wall);
    CHECK(pixel_of(made, 65, 0) == brick);
    CHECK(pixel_of(made, 48, 64) == brick); // row 64 still counts as course 0 ...
    CHECK(pixel_of(made, 64, 64) == wall);
    CHECK(pixel_of(made, 48, 65) == wall); // ... and row 65 as course 1, with 64 moved to 48
    CHECK(pixel_of(made, 64, 65) == brick);
}

TEST_CASE("bricks of all counts follow exact arithmetic with the single-precision period")
{
    // In units of 2^-30: the period is a whole number P, and what repeated subtraction
    // leaves of x > 0 is x - P (ceil(x / P) - 1).
    for (int count = 1; count <= 256; ++count)
        for (int margin = 0; margin <= 2; ++margin) {
            const picture made = bricks(1, static_cast<float>(count), 0, static_cast<float>(margin), 0);
            const auto unit = int64_t{1} << 30;
            const auto period
                = static_cast<int64_t>(static_cast<double>(256.0f / static_cast<float>(count)) * 1073741824.0);
            uint32_t wrong = 0;
            for (uint32_t x = 0; x < 256; ++x) {
                const int64_t position = x * unit;
                const int64_t rest = x == 0 ? 0 : position - (position - 1) / period * period;
                const bool is_brick = rest >= margin * unit && period - rest >= margin * unit;
                wrong += pixel_of(made, x, 0) != (is_brick ? brick : wall);
            }
            CAPTURE(count);
            CAPTURE(margin);
            CHECK(wrong == 0);
        }
}

TEST_CASE("no bricks and no courses are one endless brick")
{
    const picture made = bricks(0, 0, 3, 2, 5);
    CHECK(pixel_of(made, 1, 3) == wall);
    CHECK(pixel_of(made, 2, 2) == wall);
    CHECK(pixel_of(made, 2, 3) == brick);
    CHECK(pixel_of(made, 255, 255) == brick);
    CHECK(bricks(-4, -1e30f, 3, 2, 5) == made);
    CHECK(bricks(not_a_number, 0.9f, 3, 2, 5) == made);
}

TEST_CASE("counts above 65,536 act as 65,536 and end")
{
    CHECK(bricks(65536, 70000, 0, 0, 0) == bricks(1e9f, 65536, 0, 0, 0));
    CHECK(pixel_of(bricks(65536, 65536, 0, 0, 0), 255, 255) == brick);
    CHECK(pixel_of(bricks(65536, 65536, 1, 0, 0), 255, 255) == wall);
}

TEST_CASE("the second line offset is a true modulo of the size")
{
    const picture made = bricks(4, 3, 1, 2, 246);
    CHECK(bricks(4, 3, 1, 2, -10) == made);
    CHECK(bricks(4, 3, 1, 2, -522) == made);
    CHECK(bricks(4, 3, 1, 2, 758) == made);
    CHECK(bricks(4, 3, 1, 2, 246.9f) == made);
    CHECK(bricks(4, 3, 1, 2, -256) == bricks(4, 3, 1, 2, 0));
    CHECK(bricks(4, 3, 1, 2, not_a_number) == bricks(4, 3, 1, 2, 0)); // -2147483648
    CHECK(made != bricks(4, 3, 1, 2, 0));
}

TEST_CASE("numbers and margins of bricks are truncated")
{
    CHECK(bricks(4.9f, 3.9f, 1.9f, 2.9f, 0) == bricks(4, 3, 1, 2, 0));
}

TEST_CASE("brick colours are multiplied by 255 and truncated")
{
    const picture made = generated(generator_bricks, {0.5f, 0.1f, 2.0f, 0.25f, 0.9f, 0.0f, 1, 1, 0, 1, 0}, 8);
    CHECK(pixel_of(made, 4, 4) == 0x7F19FE); // 127.5, 25.5, 510
    CHECK(pixel_of(made, 0, 4) == 0x3FE500); // 63.75, 229.5
}
