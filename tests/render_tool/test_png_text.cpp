#include "png_text.h"

#include "picture.h"

#include <cstring>
#include <doctest/doctest.h>

static std::vector<uint8_t> small_png()
{
    return encode_png(make_picture(2, 2, 10, 20, 30));
}

TEST_CASE("A text is found again by its keyword")
{
    std::vector<uint8_t> png = small_png();
    png_add_text(png, "Driver", "softpipe 1.0");
    png_add_text(png, "Other", "");
    CHECK(png_read_text(png, "Driver") == "softpipe 1.0");
    CHECK(png_read_text(png, "Other").empty());
    CHECK(png_read_text(png, "Drive").empty());
    CHECK(png_read_text(small_png(), "Driver").empty());
}

// "Title" and "PngSuite" with the check sum that zlib gives them.
TEST_CASE("The chunk is that of the format, its check sum included")
{
    std::vector<uint8_t> png = small_png();
    png_add_text(png, "Title", "PngSuite");
    constexpr uint8_t expected[] = {0, 0, 0, 14, 't', 'E', 'X', 't', 'T', 'i', 't', 'l', 'e', 0, 'P', 'n', 'g', 'S',
        'u', 'i', 't', 'e', 0x4F, 0x55, 0xCF, 0x4C};
    CHECK(std::memcmp(png.data() + 33, expected, sizeof expected) == 0);
}

TEST_CASE("Files that are no PNG, or end early, have no text and stay as they are")
{
    std::vector<uint8_t> other = {1, 2, 3};
    png_add_text(other, "Driver", "x");
    CHECK(other == std::vector<uint8_t>{1, 2, 3});

    std::vector<uint8_t> png = small_png();
    png_add_text(png, "Driver", "softpipe");
    for (size_t size = 0; size < 33 + 12 + 15; ++size) {
        const std::vector<uint8_t> cut(png.begin(), png.begin() + static_cast<ptrdiff_t>(size));
        CHECK(png_read_text(cut, "Driver").empty());
    }
    png[8] = 0xFF; // a chunk as long as nothing can be
    CHECK(png_read_text(png, "Driver").empty());
}
