#include "shell/settings.h"

#include <doctest/doctest.h>

#include <bit>

static player_settings with_desktop(uint32_t width, uint32_t height)
{
    player_settings settings;
    settings_defaults(settings);
    settings.desktop_width = width;
    settings.desktop_height = height;
    return settings;
}

TEST_CASE("settings: the defaults switch everything on and know nothing else yet")
{
    player_settings settings;
    settings_defaults(settings);
    CHECK(settings.resolution_index == 0);
    CHECK(settings.aspect_index == 0);
    CHECK(settings.fullscreen == 1);
    CHECK(settings.antialiasing == 1);
    CHECK(settings.music_enabled == 1);
    CHECK(settings.use_vbo == 1);
    CHECK(settings.use_glsl == 1);
    CHECK(settings.caps.flag_3 == 0xFF);
    CHECK(settings.caps.texture_units == 2);
    CHECK(settings.loading_caps.flag_3 == 0xFF);
    CHECK(settings.pack == nullptr);
    CHECK(settings.screen_width == 0);
    CHECK(settings.production_time_ms == 0);
    CHECK(settings.production.scene_table.raw == nullptr);
}

TEST_CASE("settings: every resolution row gives its size")
{
    const uint32_t size[12][2] = {{1366, 768}, {320, 240}, {400, 300}, {512, 384}, {640, 480}, {800, 600}, {1024, 768},
        {1280, 720}, {1280, 1024}, {1440, 900}, {1600, 1200}, {1920, 1080}};
    for (uint32_t row = 0; row < 12; ++row) {
        player_settings settings = with_desktop(1366, 768);
        settings.resolution_index = row;
        settings_choose_size(settings);
        CHECK(settings.screen_width == size[row][0]);
        CHECK(settings.screen_height == size[row][1]);
    }
}

TEST_CASE("settings: a row beyond the list leaves the size unset")
{
    player_settings settings = with_desktop(1366, 768);
    settings.resolution_index = 12;
    settings_choose_size(settings);
    CHECK(settings.screen_width == 0);
    CHECK(settings.screen_height == 0);
}

TEST_CASE("settings: a desktop without a size counts as 640 x 480")
{
    player_settings settings = with_desktop(0, 0);
    settings_choose_size(settings);
    CHECK(settings.screen_width == 640);
    CHECK(settings.screen_height == 480);
    CHECK(settings.aspect == 4.0f / 3.0f);
}

TEST_CASE("settings: the chosen aspects are fixed numbers, whatever the size")
{
    const uint32_t bits[] = {0, 0x3FAAAAAB, 0x3FE38E39, 0x3FCCCCCD};
    for (uint32_t aspect = 1; aspect < 4; ++aspect) {
        for (const uint32_t row : {4u, 11u}) {
            player_settings settings = with_desktop(0, 0);
            settings.resolution_index = row;
            settings.aspect_index = aspect;
            settings_choose_size(settings);
            CHECK(std::bit_cast<uint32_t>(settings.aspect) == bits[aspect]);
        }
    }
}

TEST_CASE("settings: 16:9 at 640 x 480 keeps the 4:3 window")
{
    player_settings settings = with_desktop(0, 0);
    settings.resolution_index = 4;
    settings.aspect_index = aspect_16_9;
    settings_choose_size(settings);
    CHECK(settings.aspect == doctest::Approx(1.7777778));
    CHECK(settings.screen_width * 3 == settings.screen_height * 4);
}

TEST_CASE("settings: the automatic aspect is width by height of the chosen size")
{
    player_settings settings = with_desktop(1000, 250);
    settings_choose_size(settings);
    CHECK(settings.aspect == 4.0f);
    settings.resolution_index = 8;
    settings_choose_size(settings);
    CHECK(settings.aspect == 1.25f);
}
