// The frame compositor: draws one frame of a document at a time.
#pragma once

#include "model/capabilities.h"
#include "model/document.h"
#include "render/frame_plan.h"

#include <cstdint>

// What the layers of one frame cost, for those who look for the dear ones. Each layer's
// OpenGL commands are counted by the timer query of its number (GL_TIME_ELAPSED), whose
// result comes later; `queries` are the caller's, 0 for none.
struct layer_cost {
    uint32_t track;
    double cpu_ms; // from the first command to the last, without waiting for them
};

struct frame_cost_record {
    uint32_t layer_count;
    layer_cost layers[track_count];
    uint32_t queries[track_count]; // OpenGL names, by layer
};

// Draws the frame of `time` (ticks of 1/100 s) and returns how many layers with a model
// it drew; 0 means that nothing is left to draw. Never asks what time it is.
// With a tile in the view, only that part of the screen is drawn, into the lower left
// corner of the frame buffer; render targets are not cut, so a frame that has them is
// not right in tiles. `costs` may be null: then nothing is measured.
uint32_t compose_frame(document& d, uint32_t time, const frame_view& view, const gl_caps& caps, bool glsl,
    frame_cost_record* costs = nullptr);
