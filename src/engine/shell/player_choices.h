// What the viewer chose: on the command line and in the settings dialog.
//
// Options are +1 (on) and -1 (off) and are tested with == 1. A fresh record holds the
// choices of a viewer who only presses the start button.
#pragma once

#include <cstdint>

constexpr uint32_t resolution_count = 12; // rows of the resolution list; row 0 is the desktop's size

enum aspect_choice : uint32_t {
    aspect_automatic = 0, // width / height of the chosen size
    aspect_4_3 = 1,
    aspect_16_9 = 2,
    aspect_16_10 = 3,
    aspect_count
};

struct player_choices {
    uint32_t resolution_index = 0;            // 0..11, row of the resolution list
    uint32_t aspect_index = aspect_automatic; // aspect_choice, row of the aspect list
    int32_t fullscreen = 1;                   // +1 on, -1 off
    int32_t antialiasing = 1;
    int32_t music_enabled = 1; // becomes -1 when no music can be played
    int32_t use_vbo = 1;
    int32_t use_glsl = 1;   // 1 shaders, 0 fixed-function combiners
    bool force_pbo = false; // pixel buffers even where they may be slow
};

// Takes over what the command line of the process asks for. Only the first argument is
// looked at: one that begins with "-forcepbo" sets force_pbo, any other changes nothing.
void read_command_line(player_choices& choices, int argc, const char* const* argv);
