#include "tools/frames/png_file.h"

#include <cstring>
#include <doctest/doctest.h>

static std::vector<uint8_t> small_png(const std::vector<png_text>& texts)
{
    return encode_png(make_picture(2, 2, 10, 20, 30), texts);
}

TEST_CASE("A text is found again by its keyword")
{
    const std::vector<uint8_t> png
        = small_png({{"Driver", "softpipe 1.0"}, {"Other", ""}, {"Driver", "the second"}, {"Author", "Zo\xEB\nand I"}});
    CHECK(read_png_text(png, "Driver") == "softpipe 1.0");
    CHECK(read_png_text(png, "Other").empty());
    CHECK(read_png_text(png, "Drive").empty());
    CHECK(read_png_text(png, "Author") == "Zo\xEB\nand I");
    CHECK(read_png_text(small_png({}), "Driver").empty());
}

TEST_CASE("Long texts are kept, too")
{
    const std::string driver(3000, 'x');
    const std::vector<uint8_t> png = small_png({{"Driver", driver}, {"Author", std::string(100, 'y')}});
    CHECK(read_png_text(png, "Driver") == driver);
    CHECK(read_png_text(png, "Author") == std::string(100, 'y'));
}

// "Title" and "PngSuite" with the check sum that zlib gives them.
TEST_CASE("The chunk is that of the format and stands behind the header, its check sum included")
{
    const std::vector<uint8_t> png = small_png({{"Title", "PngSuite"}});
    constexpr uint8_t expected[] = {0, 0, 0, 14, 't', 'E', 'X', 't', 'T', 'i', 't', 'l', 'e', 0, 'P', 'n', 'g', 'S',
        'u', 'i', 't', 'e', 0x4F, 0x55, 0xCF, 0x4C};
    REQUIRE(png.size() > 33 + sizeof expected);
    CHECK(std::memcmp(png.data() + 33, expected, sizeof expected) == 0);
}

TEST_CASE("What the format has no letters for is kept as question marks, and the picture all the same")
{
    CHECK(as_png_text("A\xE2\x84\xA2\tB\x7F") == "A\xE2?\xA2?B?");
    CHECK(read_png_text(small_png({{"Driver", "A\xE2\x84\xA2\tB"}}), "Driver") == "A\xE2?\xA2?B");
    CHECK(read_png_text(small_png({{"Driver", " 'twixt  two "}}), "Driver") == " 'twixt  two ");
    CHECK(small_png({{"", "no keyword"}}).empty());
}

TEST_CASE("Files that are no PNG, or end early, have no text")
{
    CHECK(read_png_text(std::vector<uint8_t>{1, 2, 3}, "Driver").empty());
    CHECK(read_png_text({}, "Driver").empty());
    std::vector<uint8_t> png = small_png({{"Driver", "softpipe"}});
    for (size_t size = 0; size < 33 + 12 + 15; ++size) {
        const std::vector<uint8_t> cut(png.begin(), png.begin() + static_cast<ptrdiff_t>(size));
        CHECK(read_png_text(cut, "Driver").empty());
    }
    png[8] = 0xFF; // a chunk as long as nothing can be
    CHECK(read_png_text(png, "Driver").empty());
}
