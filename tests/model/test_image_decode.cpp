#include "model/image_decode.h"

#include "document_text.h"

#include "content/owners.h"

#include <cstdlib>
#include <cstring>
#include <doctest/doctest.h>
#include <stb/stb_image.h>

static image_status decode(const std::string& bytes, uint32_t components, decoded_image& image)
{
    // A block of exactly the size, so that the sanitizer sees every step beyond.
    const owned_block<uint8_t> exact(static_cast<uint8_t*>(std::malloc(bytes.size())));
    std::memcpy(exact.get(), bytes.data(), bytes.size());
    return decode_image(exact.get(), static_cast<uint32_t>(bytes.size()), components, image);
}

static void check_first_pixel(const std::string& bytes, uint32_t components, const std::vector<int>& expected)
{
    decoded_image image{};
    REQUIRE(decode(bytes, components, image) == image_decoded);
    CHECK(image.width == 3);
    CHECK(image.height == 2);
    REQUIRE(image.components == expected.size());
    for (size_t c = 0; c < expected.size(); ++c)
        CHECK(image.pixels[c] == expected[c]);
    std::free(image.pixels);
}

TEST_CASE("pictures of three and four components stay as they are")
{
    check_first_pixel(tga_picture(3, 2, 3), 0, {10, 11, 12});
    check_first_pixel(tga_picture(3, 2, 4), 0, {10, 11, 12, 13});
}

TEST_CASE("grey becomes three components, grey with alpha four")
{
    check_first_pixel(tga_picture(3, 2, 1), 0, {10, 10, 10});
    check_first_pixel(tga_picture(3, 2, 2), 0, {10, 10, 10, 11});
}

TEST_CASE("a count that is asked for is what comes")
{
    check_first_pixel(tga_picture(3, 2, 3), 4, {10, 11, 12, 255});
    check_first_pixel(tga_picture(3, 2, 4), 3, {10, 11, 12});
    check_first_pixel(tga_picture(3, 2, 1), 4, {10, 10, 10, 255});
}

TEST_CASE("grey of 16 bits spreads within its own bytes")
{
    // 3 x 2 samples of two bytes. Which of the two the decoder takes is its own business.
    const std::string grey = "P5 3 2 65535\n" + std::string(12, '\x55');
    check_first_pixel(grey, 0, {0x55, 0x55, 0x55});
    check_first_pixel(grey, 4, {0x55, 0x55, 0x55, 255});
    const std::string colors = "P6 3 2 65535\n" + std::string(36, '\x66');
    check_first_pixel(colors, 4, {0x66, 0x66, 0x66, 255});
    check_first_pixel(colors, 3, {0x66, 0x66, 0x66});
}

// ---- JPEG -------------------------------------------------------------------------------

namespace {

struct jpeg_kind {
    uint32_t components;    // 1 grey, 3 colours, 4 with black
    const char* names;      // of the components
    uint8_t first_sampling; // of the first component: 0x11, 0x21, 0x22
    int adobe_transform;    // -1: the file does not say
};

// The bits of a scan.
struct jpeg_bits {
    std::string bytes;
    uint32_t held = 0;
    uint32_t count = 0;
};

} // namespace

static void put_bits(jpeg_bits& bits, uint32_t value, uint32_t length)
{
    for (uint32_t i = length; i-- > 0;) {
        bits.held = bits.held << 1 | (value >> i & 1);
        if (++bits.count % 8 != 0)
            continue;
        const uint8_t byte = static_cast<uint8_t>(bits.held);
        bits.bytes += static_cast<char>(byte);
        if (byte == 0xFF)
            bits.bytes += '\0';
    }
}

// A block of one value: how it differs from the block before, and then nothing. Each of the twelve lengths of a
// difference has a code of four bits, its number; the end of a block is a single 0.
static void put_flat_block(jpeg_bits& bits, int difference)
{
    uint32_t length = 0;
    for (int left = std::abs(difference); left != 0; left >>= 1)
        ++length;
    put_bits(bits, length, 4);
    put_bits(bits, static_cast<uint32_t>(difference < 0 ? difference - 1 : difference), length);
    put_bits(bits, 0, 1);
}

static std::string jpeg_segment(char marker, const std::string& content)
{
    const size_t length = content.size() + 2;
    return std::string("\xFF") + marker + static_cast<char>(length >> 8) + static_cast<char>(length) + content;
}

// A picture of flat blocks with values of chance.
static std::string jpeg_picture(uint32_t width, uint32_t height, const jpeg_kind& kind, uint32_t& chance)
{
    std::string frame
        = {8, 0, static_cast<char>(height), 0, static_cast<char>(width), static_cast<char>(kind.components)};
    std::string scan = {static_cast<char>(kind.components)};
    for (uint32_t c = 0; c < kind.components; ++c) {
        frame += std::string({kind.names[c], static_cast<char>(c == 0 ? kind.first_sampling : 0x11), 0});
        scan += std::string({kind.names[c], 0});
    }
    std::string lengths(16, '\0'); // of the codes of a table
    lengths[3] = 12;
    std::string jpeg = "\xFF\xD8";
    if (kind.adobe_transform >= 0)
        jpeg += jpeg_segment('\xEE', std::string("Adobe\0\0\0\0\0\0", 11) + static_cast<char>(kind.adobe_transform));
    jpeg += jpeg_segment('\xDB', '\0' + std::string(64, '\1'));
    jpeg += jpeg_segment('\xC0', frame);
    jpeg += jpeg_segment('\xC4', '\0' + lengths + std::string({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));
    jpeg += jpeg_segment('\xC4', '\x10' + std::string(1, '\1') + std::string(15, '\0') + '\0');
    jpeg += jpeg_segment('\xDA', scan + std::string({0, 63, 0}));
    const uint32_t across = kind.first_sampling >> 4;
    const uint32_t down = kind.first_sampling & 15;
    const uint32_t groups = ((width + 8 * across - 1) / (8 * across)) * ((height + 8 * down - 1) / (8 * down));
    jpeg_bits bits;
    int last[4] = {};
    for (uint32_t group = 0; group < groups; ++group)
        for (uint32_t c = 0; c < kind.components; ++c)
            for (uint32_t block = 0; block < (c == 0 ? across * down : 1); ++block) {
                chance = chance * 1664525u + 1013904223u;
                const int value = static_cast<int>(chance >> 21) - 1024; // eight times what a sample differs from 128
                put_flat_block(bits, value - last[c]);
                last[c] = value;
            }
    put_bits(bits, 127, 7);
    return jpeg + bits.bytes + "\xFF\xD9";
}

// The decoder's own three components, made one by one.
static void check_jpeg(const std::string& jpeg)
{
    int width, height, found;
    const owned_block<uint8_t> expected(stbi_load_from_memory(
        reinterpret_cast<const uint8_t*>(jpeg.data()), static_cast<int>(jpeg.size()), &width, &height, &found, 3));
    REQUIRE(expected != nullptr);
    const size_t count = static_cast<size_t>(width * height);
    for (const uint32_t wanted : {0u, 3u, 4u}) {
        decoded_image image{};
        REQUIRE(decode(jpeg, wanted, image) == image_decoded);
        const owned_block<uint8_t> pixels(image.pixels);
        REQUIRE(image.components == (wanted == 4 ? 4 : 3));
        bool same = true;
        for (size_t i = 0; i < count; ++i) {
            same = same && std::memcmp(&pixels[i * image.components], &expected[i * 3], 3) == 0;
            same = same && (wanted != 4 || pixels[i * 4 + 3] == 255);
        }
        CHECK(same);
    }
}

TEST_CASE("a JPEG has the colours that the decoder makes one by one, whatever kind it is")
{
    uint32_t chance = 1;
    for (const jpeg_kind& kind : {jpeg_kind{1, "\1", 0x11, -1}, {3, "\1\2\3", 0x11, -1}, {3, "\1\2\3", 0x21, -1},
             {3, "\1\2\3", 0x22, 1}, {3, "RGB", 0x11, -1}, {3, "\1\2\3", 0x11, 0}, {4, "\1\2\3\4", 0x11, 0},
             {4, "\1\2\3\4", 0x11, 2}, {4, "\1\2\3\4", 0x11, -1}})
        for (uint32_t width = 1; width < 80; ++width)
            check_jpeg(jpeg_picture(width, 1 + chance % 40, kind, chance));
    for (uint32_t i = 0; i < 20; ++i)
        check_jpeg(jpeg_picture(127, 127, {3, "\1\2\3", 0x22, -1}, chance));
}

TEST_CASE("grey with alpha gives its alpha up where three components are asked for")
{
    check_first_pixel(tga_picture(3, 2, 2), 3, {10, 10, 10});
    check_first_pixel(tga_picture(3, 2, 2), 4, {10, 10, 10, 11});
}

TEST_CASE("what is no picture is undecodable and leaves the result alone")
{
    decoded_image image{7, 7, 7, nullptr};
    CHECK(decode("", 0, image) == image_undecodable);
    CHECK(decode("this is no picture at all", 0, image) == image_undecodable);
    CHECK(decode(tga_picture(3, 2, 3).substr(0, 10), 0, image) == image_undecodable);
    CHECK(image.width == 7);
    CHECK(image.pixels == nullptr);
}

TEST_CASE("a picture is measured before memory is taken")
{
    const std::string head = tga_picture(1, 1, 3);
    const auto declares = [&](uint16_t width, uint16_t height) {
        std::string picture = head;
        std::memcpy(&picture[12], &width, 2);
        std::memcpy(&picture[14], &height, 2);
        decoded_image image{};
        const image_status status = decode(picture, 0, image);
        std::free(image.pixels);
        return status;
    };
    CHECK(declares(16385, 1) == image_too_large);
    CHECK(declares(1, 65535) == image_too_large);
    CHECK(declares(16384, 4097) == image_too_large); // 256 MiB is 16384 x 4096 x 4
    CHECK(declares(16384, 1) != image_too_large);
}

TEST_CASE("a picture cut anywhere neither crashes nor leaks")
{
    const std::string bytes = tga_picture(5, 4, 3);
    for (size_t size = 0; size < bytes.size(); ++size) {
        decoded_image image{};
        if (decode(bytes.substr(0, size), 0, image) == image_decoded)
            std::free(image.pixels);
        CHECK(size < bytes.size());
    }
}

TEST_CASE("a level's name has its mark before the last four characters")
{
    CHECK(std::strcmp(name_of_level("rock.png", 1).text, "rock_mm1.png") == 0);
    CHECK(std::strcmp(name_of_level("rock.png", 2).text, "rock_mm2.png") == 0);
    CHECK(std::strcmp(name_of_level("rock.jpeg", 1).text, "rock._mm1jpeg") == 0);
    CHECK(std::strcmp(name_of_level("rock", 1).text, "_mm1rock") == 0);
}

TEST_CASE("names too short or too long have no levels")
{
    CHECK(name_of_level("abc", 1).text[0] == 0);
    CHECK(name_of_level("", 1).text[0] == 0);
    const std::string longest = std::string(23, 'x') + ".png"; // 27 + 4 is 31
    CHECK(std::strcmp(name_of_level(longest.c_str(), 1).text, (std::string(23, 'x') + "_mm1.png").c_str()) == 0);
    CHECK(name_of_level((longest + "x").c_str(), 1).text[0] == 0);
    CHECK(name_of_level(std::string(1000, 'x').c_str(), 2).text[0] == 0);
}
