// The clips of a show as its timeline is drawn: which scene, from when to when, and where the source says so.
//
// Pure. Times are ticks.
#pragma once

#include "model/document.h"
#include "tools/preview/show_build.h"

#include <cstdint>
#include <string>
#include <vector>

struct timeline_clip {
    uint32_t track = 0;
    uint32_t layer = 0;
    uint32_t from = 0; // its pause is over
    uint32_t to = 0;
    uint32_t scene = 0;        // handle; 0: draws nothing
    bool into_texture = false; // is not seen itself
    std::string name;          // of the clip in the source, else of its scene
    source_place place;
};

struct timeline_row {
    uint32_t track = 0;
    std::vector<timeline_clip> clips; // in the order of time
};

// The tracks that have clips, in drawing order.
std::vector<timeline_row> rows_of_timeline(const document& d, const show_build& build);

// The clip of a row that is shown at a tick; null: none.
const timeline_clip* clip_at(const timeline_row& row, uint32_t tick);
