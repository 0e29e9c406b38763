// What lies under a point of the picture: the frame's draws followed at one pixel, without OpenGL.
//
// Pure. Goes by what was advanced and planned last; depth, culling, clears and the order of drawing count, the
// transparency of textures does not.
#pragma once

#include "render/frame.h"
#include "render/layer_plan.h"

#include <cstdint>
#include <vector>

// An object of a scene where it is drawn.
struct picked_object {
    uint32_t track = 0;
    uint32_t layer = 0;
    uint32_t scene = 0;  // handle
    uint32_t object = 0; // from 0, in the scene
    float depth = 0;     // 0 near, 1 far

    bool operator==(const picked_object&) const = default;
};

// All that is drawn at the pixel's place, x and y in pixels from the upper left of a picture of width x height; what is
// seen on top comes first. What draws into textures, and what is all but transparent (alpha below 1/50), is left out.
std::vector<picked_object> pick(
    const frame& f, const frame_layers& layers, uint32_t width, uint32_t height, double x, double y);
