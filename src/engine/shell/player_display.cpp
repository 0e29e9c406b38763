#include "shell/player_display.h"

#include "shell/player_choices.h"

#include <cassert>

namespace {

struct screen_size {
    uint32_t width;
    uint32_t height;
};

} // namespace

// By resolution_index; row 0 is the desktop's size.
constexpr screen_size resolution_sizes[resolution_count] = {{0, 0}, {320, 240}, {400, 300}, {512, 384}, {640, 480},
    {800, 600}, {1024, 768}, {1280, 720}, {1280, 1024}, {1440, 900}, {1600, 1200}, {1920, 1080}};

// What a desktop without a size counts as.
constexpr screen_size fallback_desktop = {640, 480};

static screen_size desktop_size(const player_display& display)
{
    if (display.desktop_width == 0 || display.desktop_height == 0)
        return fallback_desktop;
    return {display.desktop_width, display.desktop_height};
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

void set_screen_size(player_display& display, uint32_t width, uint32_t height, uint32_t aspect_index)
{
    assert(width > 0 && height > 0);
    display.screen_width = width;
    display.screen_height = height;
    display.aspect = aspect_of(aspect_index, width, height);
}

void choose_screen_size(player_display& display, const player_choices& choices)
{
    if (choices.resolution_index >= resolution_count)
        return;
    const screen_size size
        = choices.resolution_index == 0 ? desktop_size(display) : resolution_sizes[choices.resolution_index];
    set_screen_size(display, size.width, size.height, choices.aspect_index);
}

frame_view screen_view(const player_display& display)
{
    assert(display.screen_width > 0 && display.screen_height > 0);
    return {display.screen_width, display.screen_height, display.aspect};
}
