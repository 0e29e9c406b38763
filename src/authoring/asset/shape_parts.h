// Shapes of importers made whole: joined, cleaned, and cut to what a mesh can count.
//
// Shapes here may have more than max_shape_vertices; lists of one shape agree. Pure.
#pragma once

#include "authoring/asset/shape.h"

#include <cstdint>
#include <vector>

// Takes out triangles without an area or with a position that is not finite, and returns how many. Coordinates that are
// not finite become 0; normals become unit vectors, or none when one of them is no direction. Vertices stay.
uint32_t clean_shape(shape_data& shape);

// Puts `part` behind what `whole` holds. Sets that only one of them has are 0 in the other; both have normals,
// or neither, or one of them is empty.
void append_shape(shape_data& whole, const shape_data& part);

// Vertices that are equal in every bit become one, and those of no triangle vanish. What stays keeps its order.
void join_vertices(shape_data& shape);

// The shape in pieces of at most `vertices` (3 or more) each, triangles in their order; a shape that is small enough
// stays as it is.
std::vector<shape_data> split_shape(const shape_data& shape, uint32_t vertices = max_shape_vertices);
