#include "shell/dialog_images.h"

#include <doctest/doctest.h>

#include <vector>

constexpr uint8_t key_index = 15;

// Reads little-endian numbers of a file that a test checks the size of.
static uint32_t number_at(std::span<const uint8_t> file, size_t offset, size_t bytes)
{
    uint32_t value = 0;
    for (size_t i = 0; i < bytes; ++i)
        value |= static_cast<uint32_t>(file[offset + i]) << (8 * i);
    return value;
}

namespace {

// A picture's colour numbers, top row first.
struct indexed_picture {
    int32_t width;
    int32_t height;
    std::vector<uint8_t> index;
};

} // namespace

static indexed_picture unpack(dialog_image image)
{
    const std::span<const uint8_t> file = dialog_image_file(image);
    indexed_picture picture
        = {static_cast<int32_t>(number_at(file, 18, 4)), static_cast<int32_t>(number_at(file, 22, 4)), {}};
    const size_t stride = (static_cast<size_t>(picture.width) + 7) / 8 * 4;
    const size_t pixels = number_at(file, 10, 4);
    for (int32_t y = picture.height - 1; y >= 0; --y)
        for (int32_t x = 0; x < picture.width; ++x) {
            const uint8_t pair = file[pixels + static_cast<size_t>(y) * stride + static_cast<size_t>(x) / 2];
            picture.index.push_back(x % 2 == 0 ? pair >> 4 : pair & 15);
        }
    return picture;
}

static uint8_t pixel(const indexed_picture& picture, int32_t x, int32_t y)
{
    return picture.index[static_cast<size_t>(y * picture.width + x)];
}

TEST_CASE("dialog images: each is a whole 4-bit uncompressed BMP of its size with 16 colours")
{
    const uint32_t size[dialog_image_count][2] = {{461, 384}, {162, 27}, {75, 27}, {22, 22}, {247, 62}, {228, 29}};
    for (uint32_t i = 0; i < dialog_image_count; ++i) {
        CAPTURE(i);
        const std::span<const uint8_t> file = dialog_image_file(static_cast<dialog_image>(i));
        const uint32_t row_bytes = (size[i][0] + 7) / 8 * 4;
        REQUIRE(file.size() == 14 + 40 + 64 + row_bytes * size[i][1]);
        CHECK(file[0] == 'B');
        CHECK(file[1] == 'M');
        CHECK(number_at(file, 2, 4) == file.size());
        CHECK(number_at(file, 10, 4) == 14 + 40 + 64); // palette of 16 entries
        CHECK(number_at(file, 14, 4) == 40);
        CHECK(number_at(file, 18, 4) == size[i][0]);
        CHECK(number_at(file, 22, 4) == size[i][1]);
        CHECK(number_at(file, 28, 2) == 4); // bits per pixel
        CHECK(number_at(file, 30, 4) == 0); // no compression
    }
}

TEST_CASE("dialog images: every palette has the key colour at its last entry and nowhere else")
{
    for (uint32_t i = 0; i < dialog_image_count; ++i) {
        const std::span<const uint8_t> file = dialog_image_file(static_cast<dialog_image>(i));
        for (size_t entry = 0; entry < 16; ++entry) {
            const uint32_t rgb = number_at(file, 54 + entry * 4, 3);
            CHECK((rgb == (192u << 16 | 216u << 8 | 247u)) == (entry == key_index));
        }
    }
}

TEST_CASE("dialog images: there is none beyond the list")
{
    CHECK(dialog_image_file(dialog_image_count).empty());
}

// The highlights are drawn over the labels: what they cover must be plain ground, the
// same in every row.
static bool covers_only_ground(dialog_image highlight, const dialog_blit& place)
{
    const indexed_picture background = unpack(dialog_image_background);
    const indexed_picture frame = unpack(highlight);
    const uint8_t ground = pixel(background, place.x + 2, place.y + frame.height / 2);
    for (int32_t y = 0; y < frame.height; ++y)
        for (int32_t x = 0; x < frame.width; ++x)
            if (pixel(frame, x, y) != key_index && pixel(background, place.x + x, place.y + y) != ground)
                return false;
    return true;
}

TEST_CASE("dialog images: no highlight covers any part of a label")
{
    player_choices choices;
    for (uint32_t row = 0; row < resolution_count; ++row) {
        CAPTURE(row);
        choices.resolution_index = row;
        choices.aspect_index = row % aspect_count;
        choices.use_glsl = row % 2 == 0 ? 1 : 0;
        const dialog_drawing drawing = plan_dialog_drawing(choices, false);
        CHECK(covers_only_ground(dialog_image_resolution, drawing.blits[1]));
        CHECK(covers_only_ground(dialog_image_aspect, drawing.blits[2]));
        CHECK(covers_only_ground(dialog_image_path, drawing.blits[3]));
    }
}

TEST_CASE("dialog images: highlights and mark show something and leave something open")
{
    for (const dialog_image image :
        {dialog_image_resolution, dialog_image_aspect, dialog_image_check, dialog_image_path}) {
        const indexed_picture picture = unpack(image);
        size_t open = 0;
        for (const uint8_t index : picture.index)
            open += index == key_index ? 1 : 0;
        CHECK(open > 0);
        CHECK(open < picture.index.size());
    }
}

TEST_CASE("dialog images: the pressed start button differs from the one on the background, but not at its edge")
{
    const indexed_picture background = unpack(dialog_image_background);
    const indexed_picture pressed = unpack(dialog_image_pressed);
    int32_t different = 0;
    int32_t different_at_edge = 0;
    for (int32_t y = 0; y < pressed.height; ++y)
        for (int32_t x = 0; x < pressed.width; ++x) {
            const bool differs = pixel(pressed, x, y) != pixel(background, 196 + x, 188 + y);
            const bool edge = x == 0 || y == 0 || x == pressed.width - 1 || y == pressed.height - 1;
            different += differs ? 1 : 0;
            different_at_edge += differs && edge ? 1 : 0;
        }
    CHECK(different > 236 * 52 / 2);
    CHECK(different_at_edge == 0);
}
