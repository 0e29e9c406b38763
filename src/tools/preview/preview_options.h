// What the preview is asked for: its command line as a record.
#pragma once

#include "tools/frames/frame_clock.h"
#include "tools/preview/stage.h"

#include <span>
#include <string>

struct preview_options {
    bool help = false;
    bool version = false;
    std::string show; // a source, a folder, a pack; empty: the working directory
    stage_wish wish;
    bool size_given = false;      // the picture has this size; otherwise that of its place in the window
    uint32_t window_width = 1440; // points
    uint32_t window_height = 900;
    frame_rate rate = {60, 1};
    moment at; // where it begins; unset: the beginning
    bool paused = false;
    bool muted = false;
    bool fullscreen = false;
    std::string control;  // path of the socket; empty: none
    int32_t builder = -1; // the descriptor of a process that builds (builder.h); not told
};

// Reads the arguments behind the program's name. False: `problem` holds one sentence without its full stop.
bool read_preview_options(std::span<const char* const> arguments, preview_options& options, std::string& problem);
