#include "authoring/asset/picture_import.h"
#include "authoring/asset/pixels.h"
#include "document_text.h"

#include <algorithm>
#include <cstring>
#include <doctest/doctest.h>
#include <string>

using namespace std::string_literals;

static std::span<const uint8_t> bytes_of(const std::string& text)
{
    return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

static imported_picture imported(const std::string& file, const picture_options& options = {})
{
    imported_picture picture = {};
    std::string problem;
    REQUIRE_MESSAGE(import_picture(bytes_of(file), options, picture, problem), problem);
    CHECK(problem.empty());
    return picture;
}

static std::string problem_of(const std::string& file, const picture_options& options = {})
{
    imported_picture picture = {{1, 2}, 3, 4, 3, {"as it was"}};
    std::string problem;
    CHECK(!import_picture(bytes_of(file), options, picture, problem));
    CHECK((picture.bytes == std::vector<uint8_t>{1, 2} && picture.width == 3 && picture.notes.size() == 1));
    return problem;
}

static std::string notes_of(const std::string& file)
{
    std::string all;
    for (const std::string& note : imported(file).notes)
        all += note + "\n";
    return all;
}

// ---- JPEGs of one pixel --------------------------------------------------------------

static std::string segment(uint8_t marker, const std::string& content)
{
    const size_t length = content.size() + 2;
    return "\xFF"s + static_cast<char>(marker) + static_cast<char>(length >> 8) + static_cast<char>(length & 255)
        + content;
}

// Codes of one bit: no difference, and the end of the block.
static std::string jpeg(uint8_t frame, uint8_t bits, uint8_t components, const std::string& in_front = "")
{
    std::string frame_parts;
    std::string scan_parts;
    for (uint8_t c = 1; c <= components; ++c) {
        frame_parts += std::string{static_cast<char>(c), 0x11, 0};
        scan_parts += std::string{static_cast<char>(c), 0};
    }
    const std::string one_code = "\1"s + std::string(15, '\0') + '\0';
    return "\xFF\xD8"s + in_front + segment(0xDB, '\0' + std::string(64, '\1'))
        + segment(frame, static_cast<char>(bits) + "\0\1\0\1"s + static_cast<char>(components) + frame_parts)
        + segment(0xC4, '\0' + one_code) + segment(0xC4, '\x10' + one_code)
        + segment(0xDA, static_cast<char>(components) + scan_parts + "\0\x3F\0"s) + (components == 1 ? "\x3F"s : "\0"s)
        + "\xFF\xD9"s;
}

static std::string orientation_segment(char orientation)
{
    return segment(
        0xE1, "Exif\0\0"s + "MM\0*\0\0\0\x08"s + "\0\1"s + "\1\x12\0\3\0\0\0\1"s + '\0' + orientation + "\0\0"s);
}

static std::string little_orientation_segment(char orientation)
{
    return segment(0xE1, "Exif\0\0"s + "II*\0\x08\0\0\0"s + "\1\0"s + "\x12\1\3\0\1\0\0\0"s + orientation + "\0\0\0"s);
}

// ---- as they are ---------------------------------------------------------------------

TEST_CASE("A picture of an even size goes in byte for byte, and nothing is said of it")
{
    const std::string file = tga_picture(64, 32, 4);
    const imported_picture picture = imported(file);
    CHECK(std::equal(picture.bytes.begin(), picture.bytes.end(), bytes_of(file).begin(), bytes_of(file).end()));
    CHECK(picture.width == 64);
    CHECK(picture.height == 32);
    CHECK(picture.components == 4);
    CHECK(picture.notes.empty());
    CHECK(imported(file, {64, 32}).bytes == picture.bytes); // the size that it has
}

TEST_CASE("Grey pictures become colours, as the player decodes them")
{
    CHECK(imported(tga_picture(4, 4, 1)).components == 3);
    CHECK(imported(jpeg(0xC0, 8, 1)).components == 3);
}

TEST_CASE("Sides that are no powers of two, and those above 2,048, are noted")
{
    CHECK(notes_of(tga_picture(300, 256, 3))
        == "is 300 x 256 pixels: cards that want powers of two do not show it; size = {256, 256} suits every card.\n");
    CHECK(notes_of(tga_picture(4096, 1, 3)) == "is 4096 x 1 pixels: many older cards take sides up to 2,048.\n");
    CHECK(picture_size_notes(8192, 8192).at(0)
        == "is 8192 x 8192 pixels: many older cards take sides up to 2,048 or 4,096.");
    CHECK(picture_size_notes(2048, 2048).empty());
    CHECK(picture_size_notes(1, 1).empty());
    CHECK(picture_size_notes(724, 725).at(0).find("size = {512, 1024}") != std::string::npos); // 512 * sqrt 2 = 724.08
    CHECK(picture_size_notes(16383, 2).at(0).find("size = {16384, 2}") != std::string::npos);
}

TEST_CASE("What the player drops of a picture is noted")
{
    CHECK(notes_of("P5 2 1 65535\n\1\2\3\4"s) == "has 16 bits a colour, of which the player keeps eight.\n");
    CHECK(notes_of("P5 2 1 255\n\1\2"s).empty());
    CHECK(notes_of(jpeg(0xC0, 8, 1)).empty());
    CHECK(notes_of(jpeg(0xC0, 8, 4)).find("printing colours (CMYK)") != std::string::npos);
    CHECK(notes_of(jpeg(0xC0, 8, 1, orientation_segment(6))).find("turned by its camera") != std::string::npos);
    CHECK(notes_of(jpeg(0xC0, 8, 1, little_orientation_segment(3))).find("turned by its camera") != std::string::npos);
    CHECK(notes_of(jpeg(0xC0, 8, 1, orientation_segment(1))).empty());
    CHECK(notes_of(jpeg(0xC0, 8, 1, with(orientation_segment(6), "Exif", "Else"))).empty());
}

// ---- what the player cannot decode -----------------------------------------------------

TEST_CASE("Pictures of other programs are refused by the name of their kind")
{
    CHECK(problem_of("RIFF\0\0\0\0WEBPVP8 "s)
        == "is a WebP picture, which the player does not read: save it as PNG or JPEG.");
    CHECK(problem_of("\0\0\0\x1C"s + "ftypavif").starts_with("is an AVIF picture"));
    CHECK(problem_of("II*\0\0\0"s).starts_with("is a TIFF picture"));
    CHECK(problem_of("<svg/>").starts_with("is an SVG picture"));
    CHECK(problem_of("OggS and more") == "is no picture that the player reads: save it as PNG, JPEG or TGA.");
    CHECK(problem_of("").starts_with("is empty"));
}

TEST_CASE("A JPEG that the player cannot decode is refused with what it has")
{
    CHECK(problem_of(jpeg(0xC9, 8, 1)).starts_with("is a JPEG with arithmetic coding"));
    CHECK(problem_of(jpeg(0xC3, 8, 1)).starts_with("is a lossless or layered JPEG"));
    CHECK(problem_of(jpeg(0xC1, 12, 1)).starts_with("is a JPEG with 12 bits a colour, the player reads 8"));
    CHECK(problem_of(jpeg(0xC0, 8, 1).substr(0, 60))
        == "begins as JPEG and cannot be decoded: it is damaged or cut, save it again.");
}

TEST_CASE("Any beginning of a picture is imported or refused with a line")
{
    const std::string files[] = {jpeg(0xC0, 8, 4, orientation_segment(6)), "P5 2 1 65535\n\1\2\3\4"s,
        tga_picture(3, 3, 4), jpeg(0xC0, 8, 1, little_orientation_segment(3))};
    for (const std::string& file : files) {
        for (size_t size = 0; size < file.size(); ++size) {
            const std::vector<uint8_t> cut(file.begin(), file.begin() + static_cast<ptrdiff_t>(size));
            imported_picture picture = {};
            std::string problem;
            const bool taken = import_picture(cut, {}, picture, problem);
            CHECK(taken == problem.empty());
            CHECK((problem.empty() || problem.back() == '.'));
        }
    }
}

TEST_CASE("A picture that is too large for the player is refused with its size")
{
    CHECK(problem_of("P5 16385 1 255\n")
        == "is 16385 x 1 pixels: the player takes sides up to 16,384 and 256 MiB of "
           "pixels, four bytes each.");
    CHECK(problem_of("P5 16384 4097 255\n").starts_with("is 16384 x 4097 pixels"));
}

// ---- other sizes ------------------------------------------------------------------------

static pixel_block picture_of(
    uint32_t width, uint32_t height, uint32_t components, uint32_t (*value)(uint32_t x, uint32_t c))
{
    pixel_block block = {width, height, components, {}};
    for (uint32_t y = 0; y < height; ++y)
        for (uint32_t x = 0; x < width; ++x)
            for (uint32_t c = 0; c < components; ++c)
                block.bytes.push_back(static_cast<uint8_t>(value(x, c)));
    return block;
}

TEST_CASE("A scaled picture is a PNG that the player decodes, and only its new size is noted")
{
    const imported_picture picture = imported(tga_picture(300, 100, 4, 40), {128, 64});
    CHECK(picture_file_kind(picture.bytes) == "PNG"s);
    CHECK(picture.notes.empty());
    const pixel_block pixels = decoded_pixels(picture.bytes);
    CHECK(pixels.width == 128);
    CHECK(pixels.height == 64);
    CHECK(pixels.components == 4);
    for (size_t i = 0; i < pixels.bytes.size(); ++i)
        REQUIRE(pixels.bytes[i] == 40 + i % 4); // one colour stays that colour, up to its edges
    CHECK(imported(tga_picture(300, 100, 4, 40), {128, 64}).bytes == picture.bytes);
    CHECK(imported(tga_picture(64, 64, 3), {100, 100}).notes.size() == 1);
}

// Half of full light is 0.7354 of the way by sRGB's curve: 187.5.
TEST_CASE("Scaling means light, not bytes")
{
    const pixel_block stripes = picture_of(64, 4, 3, [](uint32_t x, uint32_t) { return x % 2 * 255; });
    const pixel_block half = scale_pixels(stripes, 32, 4);
    REQUIRE(half.bytes.size() == 32u * 4 * 3);
    for (uint32_t x = 4; x < 28; ++x) // the edges lack a neighbour
        CHECK(std::abs(half.bytes[x * 3] - 188) <= 1);
}

TEST_CASE("Colours that nobody sees do not colour what lies beside them")
{
    const pixel_block stripes = picture_of(
        64, 4, 4, [](uint32_t x, uint32_t c) { return x % 2 == 0 ? (c % 3 == 0) * 255u : (c == 1) * 255u; });
    const pixel_block half = scale_pixels(stripes, 32, 4); // red that is seen, green that is not
    for (uint32_t x = 4; x < 28; ++x) {
        CHECK(half.bytes[x * 4] == 255);
        CHECK(half.bytes[x * 4 + 1] == 0);
        CHECK(std::abs(half.bytes[x * 4 + 3] - 128) <= 1);
    }
}

TEST_CASE("Sizes that no picture has are refused")
{
    const std::string file = tga_picture(4, 4, 3);
    CHECK(problem_of(file, {0, 4}) == "cannot be scaled to 0 x 4 pixels: sides are 1 to 16,384, and both are needed.");
    CHECK(problem_of(file, {16385, 4}).starts_with("cannot be scaled to 16385 x 4"));
    CHECK(problem_of(file, {16384, 16384}).starts_with("cannot be scaled"));
}

TEST_CASE("Long thin pictures are scaled either way")
{
    pixel_block line = {16384, 1, 3, std::vector<uint8_t>(16384 * 3, 77)};
    const pixel_block dot = scale_pixels(line, 1, 1);
    CHECK(dot.bytes == std::vector<uint8_t>{77, 77, 77});
    const pixel_block column = scale_pixels(dot, 1, 16384);
    CHECK(std::count(column.bytes.begin(), column.bytes.end(), 77) == 16384 * 3);
}

// ---- levels -----------------------------------------------------------------------------

static std::string level_problem(uint16_t width, uint16_t height, uint32_t level, const imported_picture& base)
{
    imported_picture picture = {};
    std::string problem;
    const std::string file = tga_picture(width, height, 3);
    const bool taken = import_level(bytes_of(file), base, level, false, picture, problem);
    CHECK(taken == problem.empty());
    return problem;
}

TEST_CASE("A ready-made level is the half or the quarter of its picture, in whole pixels")
{
    const imported_picture base = imported(tga_picture(100, 50, 3));
    CHECK(level_problem(50, 25, 1, base).empty());
    CHECK(level_problem(25, 12, 2, base).empty());
    CHECK(level_problem(25, 13, 2, base) == "is 25 x 13 pixels: level 2 of a picture of 100 x 50 is 25 x 12.");
    CHECK(level_problem(25, 12, 1, base).starts_with("is 25 x 12 pixels: level 1"));
    CHECK(level_problem(50, 25, 1, imported(tga_picture(101, 51, 3))).empty());
    CHECK(level_problem(1, 1, 2, imported(tga_picture(2, 2, 3))).starts_with("has no use"));
}

TEST_CASE("A level is scaled where that is asked for")
{
    const imported_picture base = imported(tga_picture(64, 64, 3));
    imported_picture level = {};
    std::string problem;
    const std::string file = tga_picture(100, 100, 3);
    REQUIRE(import_level(bytes_of(file), base, 2, true, level, problem));
    CHECK(level.width == 16);
    CHECK(decoded_pixels(level.bytes).height == 16);
}

// ---- targets ----------------------------------------------------------------------------

TEST_CASE("A picture to be rendered to is black and small")
{
    const std::vector<uint8_t> file = target_picture(1024, 512);
    const pixel_block pixels = decoded_pixels(file);
    CHECK(pixels.width == 1024);
    CHECK(pixels.height == 512);
    CHECK(pixels.components == 3);
    CHECK(std::count(pixels.bytes.begin(), pixels.bytes.end(), 0) == 1024 * 512 * 3);
    CHECK(file.size() < 1000);
    CHECK(target_picture(0, 4).empty());
    CHECK(target_picture(16385, 4).empty());
}
