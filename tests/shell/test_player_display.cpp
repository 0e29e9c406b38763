#include "shell/player_choices.h"
#include "shell/player_display.h"

#include <doctest/doctest.h>

#include <bit>

// The screen of a viewer who chose these rows on that desktop.
static player_display screen_of(uint32_t desktop_width, uint32_t desktop_height, uint32_t resolution, uint32_t aspect)
{
    player_display display;
    display.desktop_width = desktop_width;
    display.desktop_height = desktop_height;
    player_choices choices;
    choices.resolution_index = resolution;
    choices.aspect_index = aspect;
    choose_screen_size(display, choices);
    return display;
}

TEST_CASE("display: before the driver is asked it has two texture units and nothing else")
{
    const player_display display;
    CHECK(display.caps.flag_3 == 0xFF);
    CHECK(display.caps.texture_units == 2);
    CHECK(display.caps.vbo == 0);
    CHECK(display.loading_caps.flag_3 == 0xFF);
    CHECK(display.loading_caps.texture_units == 2);
    CHECK(display.screen_width == 0);
    CHECK(display.glsl_path == 0);
}

TEST_CASE("display: every resolution row gives its size")
{
    const uint32_t size[12][2] = {{1366, 768}, {320, 240}, {400, 300}, {512, 384}, {640, 480}, {800, 600}, {1024, 768},
        {1280, 720}, {1280, 1024}, {1440, 900}, {1600, 1200}, {1920, 1080}};
    for (uint32_t row = 0; row < 12; ++row) {
        const player_display display = screen_of(1366, 768, row, 0);
        CHECK(display.screen_width == size[row][0]);
        CHECK(display.screen_height == size[row][1]);
    }
}

TEST_CASE("display: a row beyond the list leaves the size unset")
{
    const player_display display = screen_of(1366, 768, 12, 0);
    CHECK(display.screen_width == 0);
    CHECK(display.screen_height == 0);
}

TEST_CASE("display: a desktop without a size counts as 640 x 480")
{
    for (const uint32_t side : {0u, 800u}) {
        const player_display wide = screen_of(side, 0, 0, 0);
        const player_display high = screen_of(0, side, 0, 0);
        CHECK(wide.screen_width == 640);
        CHECK(wide.screen_height == 480);
        CHECK(wide.aspect == 4.0f / 3.0f);
        CHECK(high.screen_width == 640);
        CHECK(high.screen_height == 480);
    }
}

TEST_CASE("display: the chosen aspects are fixed numbers, whatever the size")
{
    const uint32_t bits[] = {0, 0x3FAAAAAB, 0x3FE38E39, 0x3FCCCCCD};
    for (uint32_t aspect = 1; aspect < 4; ++aspect)
        for (const uint32_t row : {4u, 11u})
            CHECK(std::bit_cast<uint32_t>(screen_of(0, 0, row, aspect).aspect) == bits[aspect]);
}

TEST_CASE("display: 16:9 at 640 x 480 keeps the 4:3 window")
{
    const player_display display = screen_of(0, 0, 4, aspect_16_9);
    CHECK(display.aspect == doctest::Approx(1.7777778));
    CHECK(display.screen_width * 3 == display.screen_height * 4);
}

TEST_CASE("display: the automatic aspect is width by height of the chosen size")
{
    CHECK(screen_of(1000, 250, 0, 0).aspect == 4.0f);
    CHECK(screen_of(1000, 250, 8, 0).aspect == 1.25f);
}

TEST_CASE("display: a size of one's own is taken as it is, with a row of the aspect list")
{
    player_display display;
    set_screen_size(display, 1, 3, aspect_automatic);
    CHECK(display.aspect == 1.0f / 3.0f);
    set_screen_size(display, 1001, 7, aspect_16_10);
    const frame_view view = screen_view(display);
    CHECK(view.width == 1001);
    CHECK(view.height == 7);
    CHECK(view.aspect == 1.6f);
    CHECK(view.tile.width == 0); // the whole of it
}
