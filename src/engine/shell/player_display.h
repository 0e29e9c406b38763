// What the display offers: the sizes of desktop and screen, and what the driver can do.
//
// The desktop's size is filled in before the dialog opens, the screen's from the viewer's
// choices, the rest from the driver's answers (driver_gl.h). Sizes are in pixels.
#pragma once

#include "model/capabilities.h"
#include "render/frame_plan.h"
#include "shell/window.h"

#include <cstdint>

struct player_choices;

struct player_display {
    app_window window;          // the dialog's, then the one that OpenGL draws into
    uint32_t desktop_width = 0; // 0: nobody knows
    uint32_t desktop_height = 0;
    uint32_t screen_width = 0;
    uint32_t screen_height = 0;
    float aspect = 0;                    // width / height for projection
    int8_t glsl_path = 0;                // 1 shaders; handed to every frame
    gl_caps caps = initial_caps;         // for the production
    gl_caps loading_caps = initial_caps; // for the loading screen: no vbo, pbo, npot
    int32_t max_texture_units_raw = 0;   // as the driver says, then capped at 4
    texture_format_table texture_formats = {};
};

// screen_width, screen_height and aspect from the chosen rows. A desktop without a
// size counts as 640 x 480; a resolution_index of 12 or more changes nothing.
void choose_screen_size(player_display& display, const player_choices& choices);

// The same for a size of one's own, each side at least 1.
void set_screen_size(player_display& display, uint32_t width, uint32_t height, uint32_t aspect_index);

// The whole screen, as a frame is drawn for it.
frame_view screen_view(const player_display& display);
