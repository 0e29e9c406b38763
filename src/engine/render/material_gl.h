// Materials: sets the OpenGL state of a material, on the fixed-function path and on
// the shader path.
//
// Everything is set for the next draw and nothing is restored afterwards, with one
// exception: the shader path's generic attribute arrays are switched off by
// end_program_arrays. One path serves a whole run; the state kept here between calls
// (which coordinate arrays are on, which program is in use) belongs to the one context.
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
// mesh has none: its vertices all have the coordinates (0, 0).
struct unit_coordinates {
    const float* set[texture_unit_count]; // client arrays, or null with a buffer
    uint32_t buffer[texture_unit_count];  // OpenGL buffer names; 0: client arrays
};

void choose_unit_coordinates(const mesh_arrays& mesh, bool use_buffers, unit_coordinates& out);

// True where vertex buffers are wanted and there.
bool buffers_usable(const gl_caps& caps);

// Sets the state of a material. A null material changes nothing, but that coordinate
// arrays which are on are pointed at this mesh's coordinates (they would be read
// beyond their end otherwise).
void apply_material_fixed(
    const material_record* material, const material_context& context, const unit_coordinates& coordinates);
void apply_material_glsl(
    const material_record* material, const material_context& context, const unit_coordinates& coordinates);

// What the shader path draws with: copies of the last applied program's locations.
enum program_state : uint8_t {
    program_never, // no material has been applied yet
    program_ready,
    program_failed // the last material's program did not build: nothing is drawn with it
};

struct program_in_use {
    uint8_t state;      // program_state
    uint32_t program;   // OpenGL name
    int32_t projection; // locations, -1: none
    int32_t modelview;
    int32_t normal_matrix;
    int32_t position; // attributes
    int32_t normal;
    int32_t texcoord[texture_unit_count];
};

const program_in_use& current_program();

// Feeds a generic attribute from the bound array buffer or client memory (`components`
// floats a vertex); nothing for location -1. Switched off again by end_program_arrays.
void feed_attribute(int32_t location, int32_t components, const void* data);
void end_program_arrays();

// Loads a matrix of render/matrix.h into OpenGL: 0 modelview, 1 projection, 2 texture.
void load_matrix(int selector);
