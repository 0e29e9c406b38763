// A kernel for the normals of the waters' grids.
#pragma once

#include "content/instructions.h"

#include <cstdint>

constexpr uint32_t max_grid_side = 60; // vertices; the largest of the waters

// Normals of a grid of side x side vertices (2..max_grid_side), three floats each, whose vertex (i, j) stands at
// (i, heights[i * side + j], j), with the cells (k, k + 1, k + side + 1) and (k, k + side + 1, k + side) of all k. They
// have the bits that compute_mesh_normals gives for these triangles, all first ones before all second ones. Heights are
// finite.
void compute_grid_normals(instruction_set set, const float* heights, uint32_t side, float* normals);
