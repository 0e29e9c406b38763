#include "shell/settings.h"

struct screen_size {
    uint32_t width;
    uint32_t height;
};

// By resolution_index; row 0 is the desktop's size.
constexpr screen_size resolution_sizes[resolution_count] = {{0, 0}, {320, 240}, {400, 300}, {512, 384}, {640, 480},
    {800, 600}, {1024, 768}, {1280, 720}, {1280, 1024}, {1440, 900}, {1600, 1200}, {1920, 1080}};

// What a desktop without a size counts as.
constexpr screen_size fallback_desktop = {640, 480};

void settings_defaults(player_settings& settings)
{
    settings = player_settings{};
    settings.resolution_index = 0;
    settings.aspect_index = 0;
    settings.fullscreen = 1;
    settings.antialiasing = 1;
    settings.music_enabled = 1;
    settings.use_vbo = 1;
    settings.use_glsl = 1;
    settings.caps = initial_caps;
    settings.loading_caps = initial_caps;
}

static screen_size desktop_size(const player_settings& settings)
{
    if (settings.desktop_width == 0 || settings.desktop_height == 0)
        return fallback_desktop;
    return {settings.desktop_width, settings.desktop_height};
}

// The picture's shape is the viewer's choice, whatever the size: 4:3 on a wide screen is fine.
static float aspect_of(uint32_t aspect_index, uint32_t width, uint32_t height)
{
    switch (static_cast<aspect_choice>(aspect_index)) {
    case aspect_automatic:
        return static_cast<float>(width) / static_cast<float>(height);
    case aspect_4_3:
        return 4.0f / 3.0f;
    case aspect_16_9:
        return 16.0f / 9.0f;
    case aspect_16_10:
        return 1.6f;
    case aspect_count:
        break;
    }
    return static_cast<float>(width) / static_cast<float>(height);
}

void settings_choose_size(player_settings& settings)
{
    if (settings.resolution_index >= resolution_count)
        return;
    const screen_size size
        = settings.resolution_index == 0 ? desktop_size(settings) : resolution_sizes[settings.resolution_index];
    settings.screen_width = size.width;
    settings.screen_height = size.height;
    settings.aspect = aspect_of(settings.aspect_index, size.width, size.height);
}
