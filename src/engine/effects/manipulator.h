// Manipulators: turn a list of placements into a longer or changed one, or deform
// the model itself.
//
// Pure computation. A placement list is one allocated record with an allocated
// array; each manipulator frees the list it is given and returns a new one. Lists end
// after max_placements (the first are kept).
#pragma once

#include "model/records.h"

#include <cstdint>
#include <span>

struct placement {
    float position[3];
    float rotation[3]; // degrees
    float scale[3];
};

struct placement_list {
    placement* items; // owned; may be null when count is 0
    uint32_t count;
    bool cut; // it ends too early: it, or a list that it was made from, had more than max_placements
};

constexpr uint32_t max_placements = 131072;

placement_list* placement_list_new(const placement& only);
void placement_list_free(placement_list* list);

// Animated parameters of a kind: 12, 10, 3, 9; 0 beyond the catalogue.
uint32_t manipulator_param_count(int32_t kind);

// The "Rippler"'s vertices: one cache for the whole program, filled once from the
// first model ever, changed in place by every call from then on.
struct rippler_cache {
    float* positions; // 3 a vertex; null before the first use
    float* normals;
    uint32_t vertex_count;    // of the model that filled it
    uint32_t position_buffer; // OpenGL names, made by scene_gl where buffers are used
    uint32_t normal_buffer;
};

rippler_cache& shared_rippler_cache();

// Frees the cache's memory (tests, and programs that play more than one document).
void reset_rippler_cache();

// Applies one manipulator. `mesh` is the object's own model (rippler; may be null),
// `place_model` the model placer's (may be null). `params` has at least
// manipulator_param_count entries. `list` is consumed; a kind beyond the catalogue
// returns it unchanged. The rippler sets nothing in `mesh`: drawing takes positions and
// normals from the cache afterwards (see rippled_vertex_count). Numbers of copies are
// truncated; below 1 (and what is no whole number of 32 bits) the result is empty. A
// rippler parameter that is not finite moves nothing. No list stays no list; null comes
// back also when memory is out.
placement_list* apply_manipulator(placement_list* list, int32_t kind, std::span<const float> params,
    const mesh_arrays* mesh, const mesh_arrays* place_model);

// How many of a mesh's vertices come from the cache: min of both counts.
uint32_t rippled_vertex_count(const mesh_arrays& mesh);
