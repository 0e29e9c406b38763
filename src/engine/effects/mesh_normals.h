// Vertex normals: the average of the face normals around each vertex, as the moving
// meshes use them (not normalised again after averaging, on purpose).
#pragma once

#include <cstdint>
#include <span>

constexpr double shortest_normal = 0.001; // a face normal below this length is left as long as it is

// For each triangle (a, b, c): e1 = a - b, e2 = b - c, n = e1 x e2 over its length (one
// below shortest_normal counts as 1), added to the three vertices; sums of more than one
// are divided by their count. `normals` has as many floats as `positions` (3 a vertex);
// indices beyond the vertices are passed over.
void compute_mesh_normals(
    std::span<const float> positions, std::span<const uint16_t> indices, std::span<float> normals);
