// Manipulators: turn a list of placements into a longer or changed one, or deform
// the mesh itself.
//
// Pure computation. Lists keep their storage from frame to frame and end after
// max_placements (the first are kept).
#pragma once

#include "model/records.h"

#include <cstdint>
#include <span>
#include <vector>

struct placement {
    float position[3];
    float rotation[3]; // degrees
    float scale[3];
};

struct placement_list {
    std::vector<placement> items;
    bool cut; // it ends too early: it, or a list that it was made from, had more than max_placements
};

// Animated parameters of a kind, as many as the catalogue names; 0 beyond it.
uint32_t manipulator_param_count(int32_t kind);

// The "Rippler"'s vertices: one cache for the whole program, filled once from the
// first mesh ever, changed in place by every call from then on.
struct rippler_cache {
    float* positions; // 3 a vertex; null before the first use; owned
    float* normals;
    uint32_t vertex_count; // of the mesh that filled it
};

// Frees the cache's memory and makes it empty.
void reset_rippler_cache(rippler_cache& cache);

// What manipulators work with besides their list; kept by the caller from call to call.
struct manipulator_tools {
    rippler_cache rippler;
    placement_list list;         // scratch: of the object at hand
    placement_list spare;        // scratch: the list that is being made
    std::vector<float> vertices; // scratch: of the "Model placer", 3 a vertex
};

// Applies one manipulator to `list`. `mesh` is the object's own (rippler; may be null),
// `place_model` the mesh of the "Model placer" (may be null). `params` has at least
// manipulator_param_count entries. A kind beyond the catalogue changes nothing. The rippler
// sets nothing in `mesh`: drawing takes positions and normals from the cache afterwards.
// Numbers of copies are truncated; below 1 (and what is no whole number of 32 bits) the
// result is empty. A rippler parameter that is not finite moves nothing.
void apply_manipulator(placement_list& list, int32_t kind, std::span<const float> params, const mesh_arrays* mesh,
    const mesh_arrays* place_model, manipulator_tools& tools);
