#include "y4m.h"

#include <cmath>
#include <doctest/doctest.h>

static std::vector<uint8_t> frame_of(const picture& p, yuv_matrix matrix)
{
    std::vector<uint8_t> bytes;
    y4m_frame(p, matrix, bytes);
    REQUIRE(bytes.size() >= 6);
    CHECK(std::string(bytes.begin(), bytes.begin() + 6) == "FRAME\n");
    return {bytes.begin() + 6, bytes.end()};
}

// Y, Cb, Cr of one colour.
static std::vector<uint8_t> yuv_of(uint8_t red, uint8_t green, uint8_t blue, yuv_matrix matrix)
{
    return frame_of(make_picture(1, 1, red, green, blue), matrix);
}

namespace {

using bytes_of = std::vector<uint8_t>;

} // namespace

TEST_CASE("Primaries have their well-known values in BT.601")
{
    // E.g. red: 16 + 219 x 0.299 = 81.5 -> 81 (65.481 + 16); Cb 128 - 224 x 0.168736.
    CHECK(yuv_of(0, 0, 0, yuv_bt601) == bytes_of{16, 128, 128});
    CHECK(yuv_of(255, 255, 255, yuv_bt601) == bytes_of{235, 128, 128});
    CHECK(yuv_of(255, 0, 0, yuv_bt601) == bytes_of{81, 90, 240});
    CHECK(yuv_of(0, 255, 0, yuv_bt601) == bytes_of{145, 54, 34});
    CHECK(yuv_of(0, 0, 255, yuv_bt601) == bytes_of{41, 240, 110});
}

TEST_CASE("Primaries have their well-known values in BT.709")
{
    // E.g. red: 16 + 219 x 0.2126 = 62.6; Cb 128 - 112 x 0.2126 / 0.9278 = 102.3.
    CHECK(yuv_of(255, 255, 255, yuv_bt709) == bytes_of{235, 128, 128});
    CHECK(yuv_of(255, 0, 0, yuv_bt709) == bytes_of{63, 102, 240});
    CHECK(yuv_of(0, 255, 0, yuv_bt709) == bytes_of{173, 42, 26});
    CHECK(yuv_of(0, 0, 255, yuv_bt709) == bytes_of{32, 240, 118});
}

TEST_CASE("Every grey is without colour and rounded to the nearest luma")
{
    for (uint32_t g = 0; g < 256; ++g) {
        const uint8_t b = static_cast<uint8_t>(g);
        const uint8_t luma = static_cast<uint8_t>(std::lround(16 + g * 219.0 / 255));
        CAPTURE(g);
        CHECK(yuv_of(b, b, b, yuv_bt601) == bytes_of{luma, 128, 128});
        CHECK(yuv_of(b, b, b, yuv_bt709) == bytes_of{luma, 128, 128});
    }
}

TEST_CASE("Chroma of 4:2:0 is of the mean of its pixels, also at odd borders")
{
    // 3 x 3: red, but for a blue right column and a blue bottom row.
    picture p = make_picture(3, 3, 0, 0, 255);
    for (const size_t pixel : {0u, 1u, 3u, 4u}) {
        p.rgb[pixel * 3] = 255;
        p.rgb[pixel * 3 + 2] = 0;
    }
    p.rgb[4 * 3] = 0; // and one blue pixel among the four
    p.rgb[4 * 3 + 2] = 255;
    const bytes_of yuv = frame_of(p, yuv_bt601);
    REQUIRE(yuv.size() == 9 + 4 + 4);
    CHECK(bytes_of(yuv.begin(), yuv.begin() + 9) == bytes_of{81, 81, 41, 81, 41, 41, 41, 41, 41});
    // Three reds (Cb 90.2, Cr 240) and one blue (240, 109.8): 127.7 and 207.4.
    CHECK(bytes_of(yuv.begin() + 9, yuv.end()) == bytes_of{128, 240, 240, 240, 207, 110, 110, 110});
}

TEST_CASE("The planes of colour have half the sides of the picture, rounded up")
{
    picture p = make_picture(2, 1, 255, 0, 0);
    p.rgb[3] = p.rgb[4] = p.rgb[5] = 255;
    CHECK(frame_of(p, yuv_bt601) == bytes_of{81, 235, 109, 184}); // the middle of 90 and 128, of 240 and 128
    CHECK(y4m_frame_size(2, 1) == 6 + 2 + 2);
    CHECK(y4m_frame_size(1919, 1079) == 6 + 1919 * 1079 + 2 * 960 * 540);
}

TEST_CASE("The stream begins with size, rate, sampling and range")
{
    CHECK(y4m_header(640, 480, {25, 1}) == "YUV4MPEG2 W640 H480 F25:1 Ip A1:1 C420jpeg XCOLORRANGE=LIMITED\n");
    CHECK(y4m_header(3, 2, {30000, 1001}) == "YUV4MPEG2 W3 H2 F30000:1001 Ip A1:1 C420jpeg XCOLORRANGE=LIMITED\n");
}

TEST_CASE("The matrix is the one that players guess from the size")
{
    CHECK(matrix_for_size(640, 480) == yuv_bt601);
    CHECK(matrix_for_size(720, 576) == yuv_bt601);
    CHECK(matrix_for_size(1279, 576) == yuv_bt601);
    CHECK(matrix_for_size(1280, 576) == yuv_bt709);
    CHECK(matrix_for_size(1920, 1080) == yuv_bt709);
}

TEST_CASE("A picture that is not whole gives no frame")
{
    std::vector<uint8_t> bytes = {1, 2, 3};
    y4m_frame({}, yuv_bt601, bytes);
    CHECK(bytes.empty());
}
