#include "model/image_decode.h"

#include "document_text.h"

#include "content/owners.h"

#include <cstdlib>
#include <cstring>
#include <doctest/doctest.h>

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
