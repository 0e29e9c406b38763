// What is drawn in the frames of a run, as text: its headings, and where it is written.
#pragma once

#include "tools/frames/frame_rate.h"
#include "tools/frames/output_file.h"

#include "render/layer_plan.h"

#include <cstdint>
#include <string>

// "frame 750, 12.50 s" and, below an empty line, "tile 64 x 48 at 0, 48" (from the lower left
// corner): whole lines. What is drawn in the frame, or in the tile, stands below.
std::string frame_heading(uint64_t frame, frame_rate rate);
std::string tile_heading(const frame_tile& tile);

// Where the text goes, frame by frame: into a file, or to standard output.
struct commands_output {
    bool wanted = false;
    bool begun = false;       // an empty line parts frames
    int standard_output = -1; // below 0: into the file
    std::string path;
    new_file file;
};

// `path` is a file, "-" for the descriptor `standard_output`, or empty: then nothing is
// wanted, and the others do nothing. False comes with one sentence in `problem`.
[[nodiscard]] bool commands_begin(
    commands_output& output, const std::string& path, int standard_output, std::string& problem);
[[nodiscard]] bool commands_write(commands_output& output, const std::string& frame, std::string& problem);

// Puts the file into its place, or removes it. Twice is harmless.
[[nodiscard]] bool commands_keep(commands_output& output, std::string& problem);
void commands_drop(commands_output& output);
