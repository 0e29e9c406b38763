// Materials: what stands after one has been applied, on the fixed-function path and on the
// shader path - as plain records, without OpenGL.
//
// Everything is set for the next draw and nothing is restored afterwards: units after the
// first empty one, and whatever a material does not speak of, keep what an earlier material
// left. Dangling references count as none. Times are ticks of 1/100 s.
#pragma once

#include "model/capabilities.h"
#include "model/document.h"
#include "model/records.h"
#include "render/frame.h"

#include <cstdint>

// What applying a material needs besides the material.
struct material_context {
    const document* d;
    const gl_caps* caps;
    float camera_angles[2]; // degrees: the layer's rotation about y, then about x
    const float* modelview; // the camera's, 16 numbers: where the lights are
};

// Units that materials can use: three, on the fixed path at most the driver's.
uint32_t unit_limit(const gl_caps& caps, bool glsl);

// Asks a material's functions at a layer's function time. A function may answer differently
// when it is asked again, so this is done in drawing order, once for each mesh.
material_numbers evaluate_material(const material_record& material, const document& d, uint32_t time, bool glsl);

// Applies a material to what stands; the numbers are of the same path.
void apply_material_fixed(const material_record& material, const material_numbers& numbers,
    const material_context& context, standing_state& standing);
void apply_material_glsl(const material_record& material, const material_numbers& numbers,
    const material_context& context, standing_state& standing);

// A picture is bound to the first unit, for an upload or a copy into it: what that unit sees
// from then on, wrapping as the last material that named it said, drawn or not.
void bind_flat_texture(standing_state& standing, uint32_t texture);

// A texture is deleted: no unit has it any more.
void forget_texture(standing_state& standing, uint32_t texture);
