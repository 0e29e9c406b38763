#include "picture.h"

#include <doctest/doctest.h>

#include <limits>
#include <string>

static const float not_a_number = std::numeric_limits<float>::quiet_NaN();
static const float infinity = std::numeric_limits<float>::infinity();

// The result of a point operation for one pair of bytes.
static int for_bytes(uint8_t code, float scale1, float scale2, uint8_t a, uint8_t b)
{
    const picture second = flat_picture(2, b);
    const picture made = operated(code, {scale1, scale2}, flat_picture(2, a), &second);
    CHECK(made == flat_picture(2, made.bytes[0]));
    return made.bytes[0];
}

// ---- point operations -----------------------------------------------------------------

TEST_CASE("both additions scale, add, truncate and clamp on both sides")
{
    for (const uint8_t code : {node_add_image, node_add_2}) {
        CHECK(for_bytes(code, 0.5f, 1.5f, 100, 60) == 140);
        CHECK(for_bytes(code, 0.5f, 0.25f, 3, 1) == 1); // 1.5 + 0.25
        CHECK(for_bytes(code, 1.0f, 1.0f, 200, 100) == 255);
        CHECK(for_bytes(code, 1.0f, -1.0f, 100, 200) == 0);
        CHECK(for_bytes(code, -1.0f, 1.0f, 100, 200) == 100);
    }
}

TEST_CASE("the two multiplications of two pictures differ below 0: one wraps, the other clamps")
{
    CHECK(for_bytes(node_multiply_image, -0.01f, 0, 200, 100) == 57); // -199.99... -> -199
    CHECK(for_bytes(node_mul_2, -0.01f, 0, 200, 100) == 0);
    CHECK(for_bytes(node_multiply_image, -0.5f, 0, 2, 3) == 253);
    CHECK(for_bytes(node_mul_2, -0.5f, 0, 2, 3) == 0);
}

TEST_CASE("the multiplications of two pictures take the product times the first value, capped at 255")
{
    for (const uint8_t code : {node_multiply_image, node_mul_2}) {
        CHECK(for_bytes(code, 1.0f / 255.0f, 9.0f, 200, 100) == 78); // 78.43
        CHECK(for_bytes(code, 1.0f, 0, 16, 15) == 240);
        CHECK(for_bytes(code, 1.0f, 0, 16, 16) == 255);
        CHECK(for_bytes(code, 0.5f, 0, 3, 5) == 7);
    }
}

TEST_CASE("maximum and minimum compare what scaling and truncation left, capped at 255")
{
    for (const uint8_t code : {node_maximum_image, node_max_2}) {
        CHECK(for_bytes(code, 0.5f, 2.0f, 201, 40) == 100);
        CHECK(for_bytes(code, 0.5f, 2.0f, 201, 60) == 120);
        CHECK(for_bytes(code, 1.5f, 1.0f, 200, 10) == 255);
        CHECK(for_bytes(code, -1.0f, -1.0f, 100, 50) == 206); // -50 wraps
    }
    for (const uint8_t code : {node_minimum_image, node_min_2}) {
        CHECK(for_bytes(code, 0.5f, 2.0f, 201, 40) == 80);
        CHECK(for_bytes(code, 0.5f, 2.0f, 201, 60) == 100);
        CHECK(for_bytes(code, 1.5f, 1.5f, 200, 250) == 255);
        CHECK(for_bytes(code, -1.0f, -1.0f, 100, 50) == 156); // -100 wraps
    }
}

TEST_CASE("invert is the complement of every byte")
{
    picture a = flat_picture(16, 0);
    for (size_t n = 0; n < 256; ++n)
        a.bytes[n] = static_cast<uint8_t>(n);
    const picture made = operated(node_invert, {}, a);
    for (size_t n = 0; n < 256; ++n)
        CHECK(made.bytes[n] == 255 - n);
}

TEST_CASE("multiply scales every byte, caps it at 255 and wraps below 0")
{
    CHECK(for_bytes(node_multiply, 0.5f, 0, 127, 0) == 63);
    CHECK(for_bytes(node_multiply, 2.0f, 0, 127, 0) == 254);
    CHECK(for_bytes(node_multiply, 2.0f, 0, 128, 0) == 255);
    CHECK(for_bytes(node_multiply, -1.0f, 0, 10, 0) == 246);
    CHECK(for_bytes(node_multiply, -0.99f, 0, 1, 0) == 0); // truncated toward zero
}

TEST_CASE("what fits no integer is the least one: 0 as a byte, clamped or not")
{
    for (const float scale : {1e30f, -1e30f, infinity, not_a_number})
        for (const uint8_t code : {node_add_image, node_multiply_image, node_maximum_image, node_minimum_image,
                 node_multiply, node_add_2, node_mul_2, node_max_2, node_min_2})
            CHECK(for_bytes(code, scale, scale, 3, 5) == 0);
}

TEST_CASE("point operations treat every byte by itself")
{
    const picture a = scrambled_picture(16, 1);
    const picture b = scrambled_picture(16, 2);
    const picture sum = operated(node_add_2, {0.25f, 0.5f}, a, &b);
    const picture greater = operated(node_max_2, {1, 1}, a, &b);
    const picture lesser = operated(node_minimum_image, {1, 1}, a, &b);
    for (size_t n = 0; n < a.bytes.size(); ++n) {
        CHECK(sum.bytes[n] == (a.bytes[n] + 2 * b.bytes[n]) / 4);
        CHECK(greater.bytes[n] == std::max(a.bytes[n], b.bytes[n]));
        CHECK(lesser.bytes[n] == std::min(a.bytes[n], b.bytes[n]));
    }
}

TEST_CASE("codes that are no operation leave the result as it is")
{
    const picture a = scrambled_picture(4, 1);
    for (const uint8_t code : std::initializer_list<uint8_t>{0, 100, 105, 200, 211, 254, 255})
        CHECK(operated(code, {1, 1}, a, &a) == flat_picture(4, 77));
}

TEST_CASE("every operation may write where it reads")
{
    const picture a = scrambled_picture(8, 1);
    const picture b = scrambled_picture(8, 2);
    const float values[max_node_values] = {2.0f, 0.5f, 1.0f, 1.0f};
    for (const uint8_t code :
        std::initializer_list<uint8_t>{101, 102, 103, 104, 201, 202, 203, 204, 205, 206, 207, 208, 209, 210}) {
        const picture apart = operated(code, {2.0f, 0.5f, 1.0f, 1.0f}, a, &b);
        picture in_place = a;
        apply_texture_operation(
            code, values, in_place.bytes.data(), b.bytes.data(), in_place.bytes.data(), in_place.size);
        CHECK(in_place == apart);
        in_place = b;
        apply_texture_operation(
            code, values, a.bytes.data(), in_place.bytes.data(), in_place.bytes.data(), in_place.size);
        CHECK(in_place == apart);
    }
}

// ---- offset ---------------------------------------------------------------------------

static bool is_moved(const picture& made, const picture& a, uint32_t columns, uint32_t rows)
{
    for (uint32_t y = 0; y < a.size; ++y)
        for (uint32_t x = 0; x < a.size; ++x)
            if (pixel_of(made, x, y) != pixel_of(a, (x + columns) % a.size, (y + rows) % a.size))
                return false;
    return true;
}

TEST_CASE("the X offset moves rows and the Y offset columns, wrapping")
{
    const picture a = scrambled_picture(8, 5);
    CHECK(is_moved(operated(node_offset, {1, 0}, a), a, 0, 1));
    CHECK(is_moved(operated(node_offset, {0, 1}, a), a, 1, 0));
    CHECK(is_moved(operated(node_offset, {3, 5}, a), a, 5, 3));
}

TEST_CASE("offsets are truncated; negative and large ones wrap around")
{
    const picture a = scrambled_picture(8, 5);
    CHECK(is_moved(operated(node_offset, {-1, -3}, a), a, 5, 7));
    CHECK(is_moved(operated(node_offset, {-1.9f, 2.9f}, a), a, 2, 7));
    CHECK(is_moved(operated(node_offset, {11, 16}, a), a, 0, 3));
    CHECK(is_moved(operated(node_offset, {-11, -20}, a), a, 4, 5));
    CHECK(is_moved(operated(node_offset, {not_a_number, 1e30f}, a), a, 0, 0)); // -2147483648
    const picture odd = scrambled_picture(7, 5);
    CHECK(is_moved(operated(node_offset, {-8, -15}, odd), odd, 6, 6));
}

TEST_CASE("an offset moves by any number of rows and columns")
{
    for (const uint32_t size : {1u, 2u, 3u, 5u, 16u, 33u})
        for (uint32_t columns = 0; columns < size; ++columns)
            for (const uint32_t rows : {0u, 1 % size, size / 2, size - 1}) {
                const picture a = scrambled_picture(size, columns + 1);
                const picture made = operated(node_offset, {static_cast<float>(rows), static_cast<float>(columns)}, a);
                CHECK(is_moved(made, a, columns, rows));
            }
}

// ---- ripple ---------------------------------------------------------------------------

TEST_CASE("a ripple of no amplitude mixes the three neighbours in equal parts, without the pixel itself")
{
    const picture a = scrambled_picture(8, 9);
    const picture made = operated(node_ripple, {0, 0, 3, 2}, a);
    for (uint32_t y = 0; y < 8; ++y)
        for (uint32_t x = 0; x < 8; ++x)
            for (uint32_t c = 0; c < 3; ++c) {
                const int sum = channel_at(a, (x + 1) % 8, y, c) + channel_at(a, x, (y + 1) % 8, c)
                    + channel_at(a, (x + 1) % 8, (y + 1) % 8, c);
                CHECK(channel_at(made, x, y, c) == sum / 3);
            }
}

TEST_CASE("a ripple's far corner is weighted by the y fraction alone")
{
    // Half a pixel to the right: the distances are 1/2, 1/2, sqrt(5)/2 and, without the
    // x fraction, 1: together 3.118.
    picture a = flat_picture(4, 0);
    channel_at(a, 2, 2, 0) = 255;
    const picture made = operated(node_ripple, {0.125f, 0, 0, 0}, a);
    CHECK(channel_at(made, 1, 1, 0) == 81); // 255 x 1 / 3.118
    CHECK(channel_at(made, 2, 1, 0) == 91); // 255 x 1.118 / 3.118
    CHECK(channel_at(made, 1, 2, 0) == 40); // 255 x 0.5 / 3.118
    CHECK(channel_at(made, 2, 2, 0) == 40);
}

TEST_CASE("a ripple's amplitudes are fractions of the size, x along columns, y along rows")
{
    const picture a = scrambled_picture(8, 9);
    const picture still = operated(node_ripple, {0, 0, 0, 0}, a);
    CHECK(is_moved(operated(node_ripple, {0.125f, 0, 0, 0}, a), still, 1, 0));
    CHECK(is_moved(operated(node_ripple, {0, 0.25f, 0, 0}, a), still, 0, 2));
    CHECK(is_moved(operated(node_ripple, {-0.125f, -0.25f, 0, 0}, a), still, 7, 6));
}

TEST_CASE("ripples of more than one picture wrap too")
{
    const picture a = scrambled_picture(8, 9);
    const picture still = operated(node_ripple, {0, 0, 0, 0}, a);
    CHECK(is_moved(operated(node_ripple, {3.125f, -2.25f, 0, 0}, a), still, 1, 6));
    CHECK(is_moved(operated(node_ripple, {-5.125f, 1000000.25f, 0, 0}, a), still, 7, 2));
    // A fraction stays one when it comes from far below: -8.5 - 2 pictures is 7.5.
    CHECK(operated(node_ripple, {-3.0625f, 0, 0, 0}, a) == operated(node_ripple, {0.9375f, 0, 0, 0}, a));
}

TEST_CASE("a displacement that is hardly below 0 rounds to the first pixel, not to the last")
{
    // The size is added before the place is split: 8 - 8e-20 is 8, which wraps to 0.
    const picture a = scrambled_picture(8, 9);
    const picture still = operated(node_ripple, {0, 0, 0, 0}, a);
    CHECK(operated(node_ripple, {-1e-20f, -1e-20f, 0, 0}, a) == still);
}

TEST_CASE("the x displacement of a ripple follows the row with the Y wavelength")
{
    // One wave on 8 rows: at row 4 the cosine is -1, at row 0 it is 1.
    const picture a = scrambled_picture(8, 9);
    const picture still = operated(node_ripple, {0, 0, 0, 0}, a);
    const picture made = operated(node_ripple, {0.125f, 0, 0, 1}, a);
    const picture across = operated(node_ripple, {0, 0.125f, 1, 0}, a);
    for (uint32_t n = 0; n < 8; ++n) {
        CHECK(pixel_of(made, n, 0) == pixel_of(still, (n + 1) % 8, 0));
        CHECK(pixel_of(made, n, 4) == pixel_of(still, (n + 7) % 8, 4));
        CHECK(pixel_of(across, 0, n) == pixel_of(still, 0, (n + 1) % 8));
        CHECK(pixel_of(across, 4, n) == pixel_of(still, 4, (n + 7) % 8));
    }
}

TEST_CASE("wavelengths of a ripple are truncated and lose their sign")
{
    const picture a = scrambled_picture(16, 9);
    const picture made = operated(node_ripple, {0.1f, 0.2f, 3, 2}, a);
    CHECK(operated(node_ripple, {0.1f, 0.2f, 3.9f, 2.9f}, a) == made);
    CHECK(operated(node_ripple, {0.1f, 0.2f, -3.9f, -2}, a) == made);
}

// One channel of a ripple's sample at (u, v), written another way: distances by hypot,
// the place by stepping back whole pictures.
static long double sample(const picture& a, long double u, long double v, uint32_t c)
{
    const auto size = static_cast<long double>(a.size);
    while (u < 0)
        u += size;
    while (v < 0)
        v += size;
    while (u >= size)
        u -= size;
    while (v >= size)
        v -= size;
    const auto x = static_cast<uint32_t>(u);
    const auto y = static_cast<uint32_t>(v);
    const long double right = 1 - (u - x);
    const long double left = u - x;
    const long double below = 1 - (v - y);
    const long double above = v - y;
    long double sum = 0;
    long double weights = 0;
    for (uint32_t corner = 0; corner < 4; ++corner) {
        const bool is_right = corner == 1 || corner == 3;
        const bool is_below = corner >= 2;
        const long double across = corner == 3 ? above : is_right ? right : left;
        const long double weight = std::hypot(across, is_below ? below : above);
        sum += weight * channel_at(a, (x + is_right) % a.size, (y + is_below) % a.size, c);
        weights += weight;
    }
    return sum / weights;
}

TEST_CASE("every pixel of a ripple is the sample at its displaced place")
{
    for (const uint32_t size : {256u, 24u}) {
        const picture a = scrambled_picture(size, 77);
        const picture made = operated(node_ripple, {0.11f, 0.07f, 3, 5}, a);
        uint32_t wrong = 0;
        for (uint32_t y = 0; y < size; ++y)
            for (uint32_t x = 0; x < size; ++x) {
                const float wave_x = cosine_at(static_cast<int32_t>((5 * 4096.0L / size) * y));
                const float wave_y = cosine_at(static_cast<int32_t>((3 * 4096.0L / size) * x));
                const long double u = x + 0.11f * static_cast<long double>(wave_x) * size;
                const long double v = y + 0.07f * static_cast<long double>(wave_y) * size;
                for (uint32_t c = 0; c < 3; ++c)
                    wrong += !truncates_to(sample(a, u, v, c), channel_at(made, x, y, c));
            }
        CHECK(wrong == 0);
    }
}

TEST_CASE("amplitudes and wavelengths that are no numbers ripple without harm")
{
    const picture a = scrambled_picture(8, 9);
    for (const float value : {1e30f, -1e30f, 3e38f, infinity, -infinity, not_a_number, 1e-40f})
        for (uint32_t slot = 0; slot < 4; ++slot) {
            float values[max_node_values] = {0.1f, 0.1f, 1, 1};
            values[slot] = value;
            picture made = flat_picture(8, 77);
            apply_texture_operation(node_ripple, values, a.bytes.data(), nullptr, made.bytes.data(), 8);
            CHECK(made != flat_picture(8, 77));
        }
}

TEST_CASE("an infinite amplitude samples the first pixel")
{
    const picture a = scrambled_picture(8, 9);
    const picture still = operated(node_ripple, {0, 0, 0, 0}, a);
    const picture made = operated(node_ripple, {infinity, not_a_number, 0, 0}, a);
    CHECK(pixel_of(made, 5, 6) == pixel_of(still, 0, 0));
}

// ---- blur -----------------------------------------------------------------------------

TEST_CASE("a blur of white is 254, as a ninth is a little short")
{
    CHECK(operated(node_blur, {}, flat_picture(8, 255)) == flat_picture(8, 254));
    CHECK(operated(node_blur, {}, flat_picture(8, 9)) == flat_picture(8, 8));
    CHECK(operated(node_blur, {}, flat_picture(8, 0)) == flat_picture(8, 0));
}

TEST_CASE("a blur spreads a pixel over its nine neighbours, around the edges")
{
    picture a = flat_picture(5, 0);
    channel_at(a, 0, 4, 1) = 255;
    const picture made = operated(node_blur, {}, a);
    for (const uint32_t y : {3u, 4u, 0u})
        for (const uint32_t x : {4u, 0u, 1u})
            CHECK(pixel_of(made, x, y) == 0x001C00); // 28.33
    CHECK(std::count(made.bytes.begin(), made.bytes.end(), 28) == 9);
}

TEST_CASE("every pixel of a blur is a ninth of its neighbourhood's sum")
{
    const picture a = scrambled_picture(32, 3);
    const picture made = operated(node_blur, {}, a);
    for (uint32_t y = 0; y < 32; ++y)
        for (uint32_t x = 0; x < 32; ++x) {
            int sum = 0;
            for (uint32_t n = 0; n < 9; ++n)
                sum += channel_at(a, (x + 31 + n % 3) % 32, (y + 31 + n / 3) % 32, 2);
            // Times 111111111 / 10^9 in whole numbers: one less than a ninth where it is whole.
            CHECK(channel_at(made, x, y, 2) == static_cast<int>(int64_t{sum} * 111111111 / 1000000000));
        }
}

// ---- emboss ---------------------------------------------------------------------------

// A grey of 100 with one pixel of 110 at (2, 2) of 5 x 5: around it, mirrored, stands
// ten times the kernel.
static std::string kernel_seen(float direction)
{
    picture a = flat_picture(5, 100);
    for (uint32_t c = 0; c < 3; ++c)
        channel_at(a, 2, 2, c) = 110;
    const picture made = operated(node_emboss, {direction}, a);
    std::string seen;
    for (uint32_t y = 3; y >= 1; --y)
        for (uint32_t x = 3; x >= 1; --x)
            seen += std::to_string((channel_at(made, x, y, 0) - 100) / 10) + " ";
    return seen;
}

TEST_CASE("emboss has four kernels with 1 in the middle")
{
    CHECK(kernel_seen(1) == "-2 -1 0 -1 1 1 0 1 2 ");
    CHECK(kernel_seen(2) == "0 -1 -2 1 1 -1 2 1 0 ");
    CHECK(kernel_seen(3) == "2 1 0 1 1 -1 0 -1 -2 ");
    CHECK(kernel_seen(4) == "0 1 2 -1 1 1 -2 -1 0 ");
}

TEST_CASE("an emboss direction is truncated and clamped to 1..4")
{
    CHECK(kernel_seen(0) == kernel_seen(1));
    CHECK(kernel_seen(9) == kernel_seen(4));
    CHECK(kernel_seen(2.9f) == kernel_seen(2));
    CHECK(kernel_seen(-100) == kernel_seen(1));
    CHECK(kernel_seen(not_a_number) == kernel_seen(1));
}

TEST_CASE("emboss clamps on both sides and wraps around the edges")
{
    picture a = flat_picture(4, 0);
    channel_at(a, 0, 0, 0) = 200;
    const picture made = operated(node_emboss, {1}, a);
    CHECK(channel_at(made, 3, 3, 0) == 255); // 2 x 200
    CHECK(channel_at(made, 1, 1, 0) == 0);   // -2 x 200
    CHECK(channel_at(made, 3, 0, 0) == 200);
    CHECK(channel_at(made, 0, 3, 0) == 200);
    CHECK(channel_at(made, 0, 0, 0) == 200);
    CHECK(channel_at(made, 1, 3, 0) == 0);
}
