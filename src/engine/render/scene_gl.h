// Scene drawing: the placed objects of one scene, with their placements, effects,
// texts and materials.
#pragma once

#include "model/capabilities.h"
#include "model/document.h"

#include <cstdint>

struct draw_context {
    document* d;
    const gl_caps* caps;
    bool glsl;         // the shader path
    uint32_t time;     // function time of the layer, ticks
    float rotation[3]; // the layer's rotations about x, y, z, degrees
};

// Draws the scene of a handle; nothing for a dangling one. The modelview matrix is the
// same on return as on entry.
void draw_model(uint32_t scene, const draw_context& context);
