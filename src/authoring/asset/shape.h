// A shape: vertices and triangles before they become a mesh of a pack.
//
// x is right, y up, z towards the viewer; front faces run counter-clockwise; v = 0 is the first row of a
// picture, its top. Pure; nothing is kept.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

constexpr uint32_t max_shape_vertices = 65535; // those that two bytes can count

struct shape_data {
    std::vector<float> positions;                  // 3 a vertex
    std::array<std::vector<float>, 3> coordinates; // 2 a vertex, sets one after the other; empty: no such set
    std::vector<float> normals;                    // 3 a vertex; empty: none yet
    std::vector<uint32_t> triangles;               // 3 vertex numbers each, from 0
};

// Vertices of a shape.
inline uint32_t shape_vertex_count(const shape_data& shape)
{
    return static_cast<uint32_t>(shape.positions.size() / 3);
}

// What keeps the shape from being a mesh, "vertex 9 of triangle 2 does not exist: there are 8"; empty when nothing
// does: lists whose lengths disagree, a set behind one that is empty, numbers that are not finite, vertices that do
// not exist, more than max_shape_vertices of them. Vertices, triangles and sets are counted from 1, as a source does.
// One without coordinates or normals is whole, shape_bytes fills in; so is one without vertices.
std::string shape_fault(const shape_data& shape);

// The content of a mesh entry (model/mesh_bytes.h), without its envelope. A shape without coordinates gets one
// set of zeros, one without normals smooth and welded ones (make_smooth_normals). The shape has no fault.
std::vector<uint8_t> shape_bytes(const shape_data& shape);

// Reads a mesh entry's content back, number for number, those that are not finite too: shape_bytes gives the same
// bytes, but for an odd last byte and one or two left-over indices. Empty, or what is wrong with the bytes; the shape
// is then empty.
std::string shape_from_bytes(const std::vector<uint8_t>& bytes, shape_data& shape);

// One normal a vertex, the mean of its triangles' by their angles. Vertices at one position share them where
// `weld` is set. A vertex without a triangle that has a normal gets (0, 1, 0). The triangles' vertices exist, here
// and in make_flat_normals.
void make_smooth_normals(shape_data& shape, bool weld);

// One vertex a corner, with its triangle's normal: there may be more than max_shape_vertices then. Vertices of no
// triangle are gone; triangles without an area get (0, 1, 0).
void make_flat_normals(shape_data& shape);

// Every v becomes 1 - v, in the sets whose bits are set (1, 2, 4).
void turn_coordinates(shape_data& shape, uint32_t sets);

// Scales about the origin: the longest side of the bounding box becomes `side` (above 0). A shape without a size
// stays as it is.
void fit_shape(shape_data& shape, float side);

// Moves the middle of the bounding box to the origin.
void center_shape(shape_data& shape);

// Turned about x, then y, then z, in degrees, counter-clockwise seen from an axis' end; normals too. Quarter turns
// are exact.
void turn_shape(shape_data& shape, const std::array<float, 3>& degrees);
