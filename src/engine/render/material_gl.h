// Materials: sets the OpenGL state of a material, on the fixed-function path and on
// the shader path.
//
// Everything is set for the next draw and nothing is restored afterwards.
#pragma once

#include "model/capabilities.h"
#include "model/document.h"
#include "model/records.h"

#include <cstdint>

// What applying a material needs besides the material.
struct material_context {
    document* d;
    const gl_caps* caps;
    uint32_t time;          // function time of the layer
    float camera_angles[2]; // degrees: the layer's rotation about y, then about x
};

// Coordinate sets of the three units: a mesh with one set gives it to all, with two
// unit 2 takes the second (unit 3 the first), with three each its own. Null where the
// mesh has none.
struct unit_coordinates {
    const float* set[texture_unit_count];   // client arrays, or null with a buffer
    uint32_t buffer[texture_unit_count];    // OpenGL buffer names; 0: client arrays
};

void choose_unit_coordinates(const mesh_arrays& mesh, bool use_buffers, unit_coordinates& out);

// Nothing for a null material.
void apply_material_fixed(const material_record* material, const material_context& context,
    const unit_coordinates& coordinates);
void apply_material_glsl(const material_record* material, const material_context& context,
    const unit_coordinates& coordinates);

// Loads a matrix of render/matrix.h into OpenGL: 0 modelview, 1 projection, 2 texture.
void load_matrix(int selector);
