// The settings dialog as numbers: what the pointer does to the choices, and what
// has to be drawn. No window and no pictures here; dialog.cpp owns those.
//
// Positions are window pixels of the 461 x 384 dialog, from its top left corner.
// The regions and the places of the highlights are those that the artwork shows,
// which is why their spacing is irregular.
#pragma once

#include "shell/player_choices.h"

#include <cstdint>

constexpr uint32_t dialog_width = 461;
constexpr uint32_t dialog_height = 384;

// What one pass leaves for the next. All zero but the previous choices at the start
// (dialog_begin).
struct dialog_state {
    uint32_t previous_resolution; // choices as drawn last
    uint32_t previous_aspect;
    int32_t previous_glsl;
    uint8_t previous_start_hit; // 1: the start button was hit when drawn last
    uint8_t start_armed;        // 1: the pointer was on the start button with the button held down
    int32_t toggle_latch;       // 1: this press has toggled a check box already
};

struct dialog_pass_result {
    bool redraw;        // draw plan_dialog_drawing now
    bool start_pressed; // with the start button in its pressed state
    bool started;       // the viewer started: leave the dialog
};

// The state for the choices as they stand.
void dialog_begin(dialog_state& state, const player_choices& choices);

// One look at the pointer. While the left button is down the choices follow the
// pointer, and a check box toggles once a press; the start is decided when the
// button goes up on an armed start button. Nothing is redrawn while it is up.
dialog_pass_result dialog_pass(dialog_state& state, player_choices& choices, int32_t x, int32_t y, bool left_down);

enum dialog_image : uint32_t {
    dialog_image_background = 0,
    dialog_image_resolution = 1, // highlight of a resolution row
    dialog_image_aspect = 2,     // highlight of an aspect row
    dialog_image_check = 3,      // mark of a ticked box
    dialog_image_pressed = 4,    // start button, pressed
    dialog_image_path = 5,       // highlight of a rendering path
    dialog_image_count
};

struct dialog_blit {
    dialog_image image;
    int16_t x;
    int16_t y;
};

constexpr uint32_t max_dialog_blits = 9; // background, three highlights, four marks, start button

// What to draw, in order.
struct dialog_drawing {
    uint32_t count;
    dialog_blit blits[max_dialog_blits];
};

// The whole dialog for these choices. Rows beyond the lists are drawn as their last.
dialog_drawing plan_dialog_drawing(const player_choices& choices, bool start_pressed);
