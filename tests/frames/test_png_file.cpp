#include "tools/frames/png_file.h"

#include "content/owners.h"
#include "model/image_decode.h"

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

// Waves with some grain.
static picture varied_picture(uint32_t width, uint32_t height)
{
    picture p = make_picture(width, height, 0, 0, 0);
    for (size_t i = 0; i < p.rgb.size(); ++i)
        p.rgb[i] = static_cast<uint8_t>(i / 5 + (i * i >> 7) % 8);
    return p;
}

TEST_CASE("Pictures of any size come back from every level as they were")
{
    for (uint32_t level = 0; level <= max_png_level; ++level)
        for (const auto& [width, height] : {std::pair{1u, 1u}, {1u, 7u}, {7u, 1u}, {2u, 3u}, {33u, 17u}, {301u, 90u}}) {
            const picture p = varied_picture(width, height);
            const std::vector<uint8_t> png = encode_png(p, {}, level);
            decoded_image image = {};
            CAPTURE(level);
            CAPTURE(width);
            REQUIRE(decode_image(png.data(), static_cast<uint32_t>(png.size()), 3, image) == image_decoded);
            const owned_block<uint8_t> pixels(image.pixels);
            REQUIRE(image.width == width);
            REQUIRE(image.height == height);
            REQUIRE(std::memcmp(pixels.get(), p.rgb.data(), p.rgb.size()) == 0);
        }
}

TEST_CASE("A picture that is not needed any more gives the same file, with or without room behind its pixels")
{
    for (const auto& [width, height] : {std::pair{1u, 1u}, {1u, 7u}, {7u, 1u}, {2u, 3u}, {33u, 17u}, {301u, 90u}}) {
        const picture p = varied_picture(width, height);
        picture tight = p;
        tight.rgb.shrink_to_fit();
        picture roomy = make_picture_to_fill(width, height);
        roomy.rgb.assign(p.rgb.begin(), p.rgb.end());
        const std::vector<png_text> texts = {{"Driver", "some"}};
        const std::vector<uint8_t> expected = encode_png(p, texts, 3);
        REQUIRE(!expected.empty());
        CHECK(encode_png(std::move(tight), texts, 3) == expected);
        CHECK(encode_png(std::move(roomy), texts, 3) == expected);
        CHECK(roomy.rgb.capacity() == 0);
    }
    picture broken = varied_picture(2, 2);
    broken.rgb.pop_back();
    CHECK(encode_png(std::move(broken)).empty());
    CHECK(encode_png(make_picture(1, 1, 0, 0, 0), {{"", "no keyword"}}).empty());
}

TEST_CASE("Higher levels pack a smooth picture into less, and those above the last are the last")
{
    const picture p = varied_picture(200, 100);
    const size_t stored = encode_png(p, {}, 0).size();
    const size_t fast = encode_png(p, {}, png_level_fast).size();
    const size_t small = encode_png(p, {}, png_level_small).size();
    CHECK(stored > p.rgb.size());
    CHECK(fast < p.rgb.size() / 2);
    CHECK(small < fast);
    CHECK(encode_png(p, {}, 4000) == encode_png(p, {}, max_png_level));
}

TEST_CASE("A file ends with the format's end chunk")
{
    constexpr uint8_t expected[] = {0, 0, 0, 0, 'I', 'E', 'N', 'D', 0xAE, 0x42, 0x60, 0x82};
    const std::vector<uint8_t> png = small_png({});
    REQUIRE(png.size() > sizeof expected);
    CHECK(std::memcmp(png.data() + png.size() - sizeof expected, expected, sizeof expected) == 0);
}

TEST_CASE("A keyword has at most 79 letters")
{
    CHECK_FALSE(small_png({{std::string(79, 'k'), "text"}}).empty());
    CHECK(small_png({{std::string(80, 'k'), "text"}}).empty());
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
