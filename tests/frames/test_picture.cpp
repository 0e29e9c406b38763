#include "tools/frames/picture.h"

#include <algorithm>
#include <cmath>
#include <doctest/doctest.h>
#include <limits>
#include <string>

static picture gradient(uint32_t width, uint32_t height)
{
    picture p = make_picture(width, height, 0, 0, 0);
    for (size_t i = 0; i < p.rgb.size(); ++i)
        p.rgb[i] = static_cast<uint8_t>(i * 7 + i / 31);
    return p;
}

static void set_pixel(picture& p, uint32_t x, uint32_t y, uint8_t red, uint8_t green, uint8_t blue)
{
    uint8_t* pixel = &p.rgb[(size_t{y} * p.width + x) * 3];
    pixel[0] = red;
    pixel[1] = green;
    pixel[2] = blue;
}

TEST_CASE("Linear light follows the sRGB curve")
{
    // By a calculator: 10/255 = 0.0392 is on the straight part; 188/255 is about half.
    CHECK(linear_light(0) == 0.0f);
    CHECK(linear_light(255) == 1.0f);
    CHECK(linear_light(10) == doctest::Approx(0.00303527));
    CHECK(linear_light(128) == doctest::Approx(0.2158605));
    CHECK(linear_light(188) == doctest::Approx(0.5028865));
}

TEST_CASE("Every byte comes back from its linear light")
{
    for (uint32_t b = 0; b < 256; ++b)
        CHECK(srgb_byte(linear_light(static_cast<uint8_t>(b))) == b);
}

TEST_CASE("Light becomes the nearest byte, whatever the light")
{
    for (uint32_t i = 0; i <= 20000; ++i) {
        const double light = i / 20000.0;
        const double value = light <= 0.0031308 ? light * 12.92 : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
        CAPTURE(light);
        CHECK(std::abs(srgb_byte(static_cast<float>(light)) - value * 255) < 0.51);
    }
    CHECK(srgb_byte(-1) == 0);
    CHECK(srgb_byte(2) == 255);
    CHECK(srgb_byte(std::numeric_limits<float>::quiet_NaN()) == 0);
    CHECK(srgb_byte(std::numeric_limits<float>::infinity()) == 255);
}

// ---- sizes ------------------------------------------------------------------------

TEST_CASE("Black and white in equal parts become the byte of half the light")
{
    picture p = make_picture(2, 1, 0, 0, 0);
    set_pixel(p, 0, 0, 255, 255, 255);
    const picture small = scale_picture(p, 1, 1);
    CHECK(small.rgb == std::vector<uint8_t>{188, 188, 188}); // not 128
}

TEST_CASE("A pixel on a border counts by the area that is covered")
{
    // 3 pixels to 2: the middle one is half of each. Light (1 + 0.5 x 0) / 1.5 = 2/3
    // is byte 213 (0.66539 = 213, 0.67244 = 214).
    picture p = make_picture(3, 1, 0, 0, 0);
    set_pixel(p, 0, 0, 255, 255, 255);
    CHECK(scale_picture(p, 2, 1).rgb == std::vector<uint8_t>{213, 213, 213, 0, 0, 0});
    picture q = make_picture(1, 3, 0, 0, 0);
    set_pixel(q, 0, 2, 255, 0, 255);
    CHECK(scale_picture(q, 1, 2).rgb == std::vector<uint8_t>{0, 0, 0, 213, 0, 213});
}

TEST_CASE("A picture of one colour keeps it at every size")
{
    const picture p = make_picture(97, 31, 17, 128, 254);
    for (const uint32_t size : {1u, 2u, 30u, 96u, 98u, 200u}) {
        const picture scaled = scale_picture(p, size, size);
        CAPTURE(size);
        CHECK(scaled.rgb == make_picture(size, size, 17, 128, 254).rgb);
    }
}

TEST_CASE("A picture to be filled is whole, with room for a byte more in every row")
{
    const picture p = make_picture_to_fill(7, 5);
    CHECK(is_whole(p));
    CHECK(p.width == 7);
    CHECK(p.rgb.capacity() >= 7 * 5 * 3 + 5);
}

TEST_CASE("Twice the size repeats every pixel, the same size changes nothing")
{
    picture p = make_picture(2, 1, 10, 20, 30);
    set_pixel(p, 1, 0, 40, 50, 60);
    CHECK(scale_picture(p, 4, 2).rgb
        == std::vector<uint8_t>{10, 20, 30, 10, 20, 30, 40, 50, 60, 40, 50, 60, //
            10, 20, 30, 10, 20, 30, 40, 50, 60, 40, 50, 60});
    CHECK(scale_picture(gradient(5, 7), 5, 7).rgb == gradient(5, 7).rgb);
    CHECK(scale_picture(p, 0, 5).rgb.empty());
    CHECK(scale_picture({}, 5, 5).rgb.empty());
}

TEST_CASE("A size is fitted into a place with its aspect kept")
{
    const auto fitted = [](uint32_t width, uint32_t height, uint32_t into_width, uint32_t into_height) {
        fit_inside(make_picture(width, height, 0, 0, 0), into_width, into_height);
        return std::to_string(into_width) + "x" + std::to_string(into_height);
    };
    CHECK(fitted(1920, 1080, 320, 320) == "320x180");
    CHECK(fitted(640, 480, 320, 180) == "240x180");
    CHECK(fitted(10, 10, 1000, 50) == "50x50");
    CHECK(fitted(1000, 1, 10, 10) == "10x1");
}

TEST_CASE("Pasting stays inside")
{
    picture to = make_picture(3, 3, 0, 0, 0);
    paste_picture(to, make_picture(5, 5, 9, 9, 9), 2, 1);
    picture expected = make_picture(3, 3, 0, 0, 0);
    set_pixel(expected, 2, 1, 9, 9, 9);
    set_pixel(expected, 2, 2, 9, 9, 9);
    CHECK(to.rgb == expected.rgb);
    paste_picture(to, make_picture(5, 5, 1, 1, 1), 3, 0);
    CHECK(to.rgb == expected.rgb);
}

// ---- differences ------------------------------------------------------------------

TEST_CASE("Differences are counted by channel, by pixel and in the worst place")
{
    picture a = make_picture(2, 2, 100, 100, 100);
    picture b = a;
    set_pixel(b, 0, 0, 104, 100, 98);
    set_pixel(b, 1, 1, 100, 90, 100);
    const picture_comparison c = compare_pictures(a, b, 20);
    CHECK(c.same_size);
    CHECK(c.mean[0] == 1.0); // 4 / 4 pixels
    CHECK(c.mean[1] == 2.5);
    CHECK(c.mean[2] == 0.5);
    CHECK(c.mean_of_all == doctest::Approx(4.0 / 3));
    CHECK(c.greatest == 10);
    CHECK(c.differing_pixels == 2);
    CHECK(c.difference.rgb == std::vector<uint8_t>{80, 0, 40, 0, 0, 0, 0, 0, 0, 0, 200, 0});
    CHECK(compare_pictures(a, b, 1000).difference.rgb[0] == 255);
    CHECK(compare_pictures(a, b, 0).difference.rgb.empty());
}

TEST_CASE("Equal pictures have no difference, and other sizes none to speak of")
{
    const picture a = gradient(8, 8);
    const picture_comparison same = compare_pictures(a, a, 1);
    CHECK(same.same_size);
    CHECK(same.mean_of_all == 0);
    CHECK(same.differing_pixels == 0);
    CHECK_FALSE(compare_pictures(a, gradient(8, 9), 1).same_size);
    CHECK_FALSE(compare_pictures({}, {}, 1).same_size);
}

TEST_CASE("Odd sides become even by their last column and row")
{
    const picture odd = gradient(5, 3);
    const picture even = even_picture(odd);
    REQUIRE(even.width == 6);
    REQUIRE(even.height == 4);
    REQUIRE(is_whole(even));
    for (uint32_t y = 0; y < 4; ++y)
        for (uint32_t x = 0; x < 6; ++x)
            for (uint32_t k = 0; k < 3; ++k)
                CHECK(even.rgb[(y * 6 + x) * 3 + k] == odd.rgb[(std::min(y, 2u) * 5 + std::min(x, 4u)) * 3 + k]);
    CHECK(even_picture(gradient(5, 4)).width == 6);
    CHECK(even_picture(gradient(5, 4)).height == 4);
    CHECK(even_picture(gradient(4, 1)).height == 2);
    CHECK(even_picture(gradient(4, 2)).rgb == gradient(4, 2).rgb);
    CHECK(even_picture({}).rgb.empty());
}
