// player_settings: the one record of the run.
//
// Filled stage by stage: the dialog's choices, the display's findings, the
// documents, the clock. One instance lives for the whole run in the entry
// function. Options are +1 (on) and -1 (off) and are tested with == 1.
#pragma once

#include "model/capabilities.h"
#include "model/document.h"
#include "render/frame_plan.h"

#include <cstdint>
#include <cstdio>

constexpr uint32_t resolution_count = 12; // rows of the resolution list; row 0 is the desktop's size

enum aspect_choice : uint32_t {
    aspect_automatic = 0, // width / height of the chosen size
    aspect_4_3 = 1,
    aspect_16_9 = 2,
    aspect_16_10 = 3,
    aspect_count
};

struct player_settings {
    uint32_t resolution_index; // 0..11, row of the resolution list
    uint32_t aspect_index;     // aspect_choice, row of the aspect list
    int32_t fullscreen;        // +1 on, -1 off
    int32_t antialiasing;
    int32_t music_enabled; // becomes -1 when no music can be played
    int32_t use_vbo;
    int32_t use_glsl;       // 1 shaders, 0 fixed-function combiners
    uint32_t desktop_width; // pixels, read before the dialog opens
    uint32_t desktop_height;
    FILE* pack;            // open until the main loop ends
    uint32_t screen_width; // pixels
    uint32_t screen_height;
    float aspect;                  // width / height for projection
    int8_t glsl_path;              // handed to every frame
    gl_caps caps;                  // for the production
    gl_caps loading_caps;          // for the loading screen: no vbo, pbo, npot
    int32_t max_texture_units_raw; // as the driver says, then capped at 4
    texture_format_table texture_formats;
    timeline* loading_timeline; // until its document takes it over
    timeline* production_timeline;
    document loading; // the loading screen's tables and timeline
    document production;
    uint32_t production_time_ms; // playing time
    uint32_t start_ticks;        // SDL_GetTicks() at the start of playing, without music
    uint32_t frame_count;        // frames drawn in the main loop
    uint32_t progress_ticks;     // SDL_GetTicks() of the last loading frame
    int32_t progress_total;      // items of the production, and items made so far
    int32_t progress_done;
};

// Everything zero but the dialog's defaults and initial_caps.
void settings_defaults(player_settings& settings);

// screen_width, screen_height and aspect from the chosen rows. A desktop without a
// size counts as 640 x 480; a resolution_index of 12 or more changes nothing.
void settings_choose_size(player_settings& settings);
