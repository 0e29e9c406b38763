#include "texgen/mipmaps.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <string>
#include <vector>

// The levels below a picture as text, "width x height @alignment", one after the other.
static std::string level_sizes(uint32_t width, uint32_t height, uint32_t components)
{
    const std::vector<uint8_t> pixels(size_t{width} * height * components);
    mipmap_chain chain = begin_mipmaps(width, height, pixels.data(), components, nullptr, nullptr);
    std::string text;
    while (next_mipmap(chain))
        text += std::to_string(chain.made.width) + "x" + std::to_string(chain.made.height) + "@"
            + std::to_string(chain.made.unpack_alignment) + " ";
    return text;
}

// The red bytes of the first levels of a picture whose pixels have red = green = blue.
static std::vector<std::vector<int>> grey_levels(uint32_t width, uint32_t height, const std::vector<int>& grey)
{
    std::vector<uint8_t> pixels;
    for (const int value : grey)
        pixels.insert(pixels.end(), 3, static_cast<uint8_t>(value));
    mipmap_chain chain = begin_mipmaps(width, height, pixels.data(), 3, nullptr, nullptr);
    std::vector<std::vector<int>> levels;
    while (next_mipmap(chain)) {
        levels.emplace_back();
        for (size_t n = 0; n < size_t{chain.made.width} * chain.made.height; ++n)
            levels.back().push_back(chain.made.pixels[3 * n]);
    }
    return levels;
}

namespace {

using grey_rows = std::vector<std::vector<int>>;

} // namespace

TEST_CASE("a 256 x 256 picture has levels 1 to 8, the last two with alignments 2 and 1")
{
    CHECK(level_sizes(256, 256, 3) == "128x128@4 64x64@4 32x32@4 16x16@4 8x8@4 4x4@4 2x2@2 1x1@1 ");
}

TEST_CASE("a 256 x 64 picture halves its longer side on to 4 x 1, 2 x 1, 1 x 1")
{
    CHECK(level_sizes(256, 64, 3) == "128x32@4 64x16@4 32x8@4 16x4@4 8x2@2 4x1@1 2x1@1 1x1@1 ");
    CHECK(level_sizes(64, 256, 4) == "32x128@4 16x64@4 8x32@4 4x16@4 2x8@2 1x4@1 1x2@1 1x1@1 ");
}

TEST_CASE("a picture of 1 x N halves its one longer side")
{
    CHECK(level_sizes(1, 8, 3) == "1x4@1 1x2@1 1x1@1 ");
    CHECK(level_sizes(8, 1, 3) == "4x1@1 2x1@1 1x1@1 ");
}

TEST_CASE("levels that are no powers of two are uploaded with alignment 1")
{
    CHECK(level_sizes(100, 60, 3) == "50x30@1 25x15@1 12x7@1 6x3@1 3x1@1 1x1@1 ");
    CHECK(level_sizes(3, 3, 3) == "1x1@1 ");
}

TEST_CASE("a 1 x 1 picture has no levels")
{
    CHECK(level_sizes(1, 1, 3).empty());
}

TEST_CASE("component counts other than 3 and 4 have no levels, the compressed formats neither")
{
    const std::vector<uint8_t> pixels(16 * 16 * 4);
    for (const uint32_t components : {0u, 1u, 2u, 5u, 34029u, 34030u}) {
        mipmap_chain chain = begin_mipmaps(16, 16, pixels.data(), components, nullptr, nullptr);
        CHECK_FALSE(next_mipmap(chain));
        CHECK(chain.level == 0);
    }
}

TEST_CASE("a picture without pixels or without a side has no levels")
{
    const uint8_t pixel[4] = {};
    mipmap_chain chain = begin_mipmaps(16, 16, nullptr, 3, nullptr, nullptr);
    CHECK_FALSE(next_mipmap(chain));
    chain = begin_mipmaps(0, 16, pixel, 3, nullptr, nullptr);
    CHECK_FALSE(next_mipmap(chain));
}

TEST_CASE("a pixel of a level is the truncated mean of four")
{
    // 10 + 20 + 30 + 43 = 103; 255 four times; 0 + 0 + 0 + 3; 1 + 2 + 2 + 2 = 7.
    const grey_rows levels = grey_levels(4, 4, {10, 20, 255, 255, 30, 43, 255, 255, 0, 0, 1, 2, 0, 3, 2, 2});
    REQUIRE(levels.size() == 2);
    CHECK(levels[0] == std::vector<int>{25, 255, 0, 1});
}

TEST_CASE("a 1 x 1 level reads the top rows only: the two upper pixels of four")
{
    CHECK(grey_levels(2, 2, {10, 21, 200, 250}) == grey_rows{{15}});
}

TEST_CASE("a level of one column reads the top rows only, a pair of each")
{
    // 2 x 4: rows 0 and 1 make both pixels, rows 2 and 3 are not read.
    const grey_rows levels = grey_levels(2, 4, {10, 20, 30, 50, 100, 100, 200, 200});
    CHECK(levels == grey_rows{{15, 40}, {27}});
}

TEST_CASE("a picture of one column is averaged in vertical pairs")
{
    CHECK(grey_levels(1, 4, {10, 20, 100, 200}) == grey_rows{{15, 150}, {82}});
    CHECK(grey_levels(1, 5, {10, 20, 100, 200, 7}) == grey_rows{{15, 150}, {82}});
}

TEST_CASE("a level of one row reads the top rows only: pairs of the first")
{
    CHECK(grey_levels(4, 2, {10, 20, 100, 203, 1, 2, 3, 4}) == grey_rows{{15, 151}, {83}});
    CHECK(grey_levels(4, 1, {10, 20, 100, 203}) == grey_rows{{15, 151}, {83}});
}

TEST_CASE("odd widths are read with their real rows")
{
    // 5 x 4, the last column is dropped; then 2 x 2 to 1 x 1.
    const grey_rows levels = grey_levels(5, 4,
        {
            1, 3, 10, 10, 99, //
            5, 7, 10, 30, 99, //
            0, 0, 8, 8, 99,   //
            4, 4, 8, 8, 99,   //
        });
    CHECK(levels == grey_rows{{4, 15, 2, 8}, {9}});
    // 3 x 2: pixels 0 and 1 of the first row of three.
    CHECK(grey_levels(3, 2, {10, 30, 99, 99, 99, 99}) == grey_rows{{20}});
    // 3 x 4: the pair at the start of rows 0 and 1.
    CHECK(grey_levels(3, 4, {10, 30, 99, 50, 70, 99, 99, 99, 99, 99, 99, 99}) == grey_rows{{20, 60}, {40}});
}

TEST_CASE("channels do not mix, alpha included")
{
    const uint8_t pixels[16] = {10, 20, 30, 40, 20, 40, 60, 80, 9, 9, 9, 9, 9, 9, 9, 9};
    mipmap_chain chain = begin_mipmaps(2, 2, pixels, 4, nullptr, nullptr);
    REQUIRE(next_mipmap(chain));
    CHECK(chain.made.pixels[0] == 15);
    CHECK(chain.made.pixels[1] == 30);
    CHECK(chain.made.pixels[2] == 45);
    CHECK(chain.made.pixels[3] == 60);
}

TEST_CASE("a ready-made level is taken as it is and becomes the source of the next one")
{
    const std::vector<uint8_t> base(8 * 8 * 3, 10);
    const std::vector<uint8_t> level1(4 * 4 * 3, 100);
    const std::vector<uint8_t> level2(2 * 2 * 3, 200);
    mipmap_chain chain = begin_mipmaps(8, 8, base.data(), 3, level1.data(), nullptr);
    REQUIRE(next_mipmap(chain));
    CHECK(chain.made.pixels[0] == 100);
    REQUIRE(next_mipmap(chain));
    CHECK(chain.made.pixels[0] == 100);

    chain = begin_mipmaps(8, 8, base.data(), 3, nullptr, level2.data());
    REQUIRE(next_mipmap(chain));
    CHECK(chain.made.pixels[0] == 10);
    REQUIRE(next_mipmap(chain));
    CHECK(chain.made.pixels[11] == 200);
    REQUIRE(next_mipmap(chain));
    CHECK(chain.made.pixels[2] == 200);
    CHECK_FALSE(next_mipmap(chain));
    CHECK(chain.level == 3);
}

TEST_CASE("no size reads beyond its source, and a flat picture stays flat")
{
    for (uint32_t width = 1; width <= 18; ++width)
        for (uint32_t height = 1; height <= 18; ++height) {
            const std::vector<uint8_t> pixels(size_t{width} * height * 3, 91);
            mipmap_chain chain = begin_mipmaps(width, height, pixels.data(), 3, nullptr, nullptr);
            uint32_t levels = 0;
            while (next_mipmap(chain)) {
                ++levels;
                const size_t bytes = size_t{chain.made.width} * chain.made.height * 3;
                REQUIRE(std::count(chain.made.pixels.get(), chain.made.pixels.get() + bytes, 91)
                    == static_cast<std::ptrdiff_t>(bytes));
            }
            uint32_t expected = 0;
            while ((std::max(width, height) >> expected) > 1)
                ++expected;
            REQUIRE(levels == expected);
        }
}
