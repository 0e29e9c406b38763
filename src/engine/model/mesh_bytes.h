// The bytes of a mesh in a pack, little-endian:
//
//   offset           size       field
//   0                2          V, vertices
//   2                2          T, texture coordinate sets, 1..3
//   4                12 V       positions, three floats a vertex
//   4 + 12 V         8 V T      coordinate sets one after the other, two floats a vertex
//   4 + (12 + 8T) V  12 V       normals
//   4 + (24 + 8T) V  the rest   indices of two bytes, three a triangle
#pragma once

#include "model/records.h"

#include <cstdint>
#include <string>

// Lays `arrays` over the `size` inflated bytes at `data`, which is aligned for floats and stays
// the caller's. Empty when they are a mesh, else what is wrong ("index 9 passes its 4 vertices"):
// counts and size that disagree, a number of coordinate sets that is not 1..3, an index that
// passes the vertices. V = 0 without indices is an empty mesh. An odd last byte and one or two
// left-over indices are dropped.
std::string lay_out_mesh(uint8_t* data, uint32_t size, mesh_arrays& arrays);
