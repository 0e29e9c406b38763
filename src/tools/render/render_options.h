// What a run is asked for: the command line of brimlow-render as a record.
#pragma once

#include "tools/frames/frame_clock.h"
#include "tools/frames/lesser_card.h"
#include "tools/frames/png_file.h"

#include <cstdint>
#include <string>
#include <vector>

enum output_kind : int32_t {
    output_none,
    output_still,    // one PNG file
    output_pictures, // PNG files named by a pattern with %d
    output_video,    // through ffmpeg
    output_stream    // YUV4MPEG2 on standard output
};

// What becomes of outputs whose names are taken.
enum existing_choice : int32_t {
    existing_asked,    // the user is asked; where nobody can answer they are kept
    existing_replaced, // -y
    existing_kept      // -n: the run ends before it draws
};

struct render_options {
    bool help = false;
    bool version = false;
    std::string pack; // a file, a folder, or "-"; empty: the working directory

    // the picture
    uint32_t width = 1280; // pixels
    uint32_t height = 720;
    bool size_given = false;
    uint32_t aspect = 0; // aspect_choice of the player
    bool glsl = true;
    uint32_t samples = 0; // of antialiasing; 0: none
    lesser_card caps;
    bool seed_given = false;
    uint32_t seed = 0;
    bool window = false;
    uint32_t tile = 0; // greatest side of a tile, pixels; 0: the driver's limit

    // which moments
    frame_rate rate = {60, 1};
    moment from;
    moment to;
    std::vector<moment> stills;    // --at
    std::vector<uint32_t> loading; // per cents of the loading screen

    // what comes out
    output_kind kind = output_none;
    std::string output;
    bool png_level_given = false;
    uint32_t png_level = png_level_fast; // of -o: 0 (not packed) to max_png_level
    std::string crf;                     // of videos: quality as the encoder counts it; empty: ours
    std::vector<std::string> ffmpeg;     // more words for ffmpeg
    std::string contact_sheet;           // paths; empty: not wanted
    std::string shots;
    std::string times;
    std::string commands; // "-": standard output
    std::string compare;
    bool flashes = false;
    existing_choice existing = existing_asked;
    bool verbose = false; // tells the driver and what it has
    bool quiet = false;   // tells problems only
};
