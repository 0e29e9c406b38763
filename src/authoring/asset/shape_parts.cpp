#include "authoring/asset/shape_parts.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <utility>

// ---- vertices ------------------------------------------------------------------

// Calls visit(list, numbers each) for the lists that the shape has, in one order.
template <typename visitor> static void for_each_list(const shape_data& shape, const visitor& visit)
{
    visit(shape.positions, 3);
    for (const std::vector<float>& set : shape.coordinates)
        visit(set, 2);
    visit(shape.normals, 3);
}

static uint32_t vertex_hash(const shape_data& shape, size_t vertex)
{
    uint64_t hash = 1469598103934665603u;
    for_each_list(shape, [&](const std::vector<float>& list, size_t each) {
        for (size_t i = 0; !list.empty() && i < each; ++i)
            hash = (hash ^ std::bit_cast<uint32_t>(list[each * vertex + i])) * 1099511628211u;
    });
    return static_cast<uint32_t>(hash ^ (hash >> 32));
}

// In every bit.
static bool are_equal(const shape_data& shape, size_t a, size_t b)
{
    bool equal = true;
    for_each_list(shape, [&](const std::vector<float>& list, size_t each) {
        for (size_t i = 0; !list.empty() && i < each; ++i)
            equal = equal && std::bit_cast<uint32_t>(list[each * a + i]) == std::bit_cast<uint32_t>(list[each * b + i]);
    });
    return equal;
}

// The first vertex that equals this one and was asked for before, else itself. `slots` holds vertices + 1, 0 is
// free; it has a power of two of them, more than there are vertices.
static uint32_t first_equal(const shape_data& shape, uint32_t vertex, std::vector<uint32_t>& slots)
{
    size_t slot = vertex_hash(shape, vertex) & (slots.size() - 1);
    while (slots[slot] != 0 && !are_equal(shape, slots[slot] - 1, vertex))
        slot = (slot + 1) & (slots.size() - 1);
    if (slots[slot] == 0)
        slots[slot] = vertex + 1;
    return slots[slot] - 1;
}

static void append_vertex(shape_data& to, const shape_data& from, size_t vertex)
{
    const auto append = [&](std::vector<float>& list, const std::vector<float>& source, size_t each) {
        for (size_t i = 0; !source.empty() && i < each; ++i)
            list.push_back(source[each * vertex + i]);
    };
    append(to.positions, from.positions, 3);
    for (size_t set = 0; set < to.coordinates.size(); ++set)
        append(to.coordinates[set], from.coordinates[set], 2);
    append(to.normals, from.normals, 3);
}

// ---- cleaning ------------------------------------------------------------------

static bool has_area(const shape_data& shape, size_t first)
{
    double e[2][3];
    for (size_t axis = 0; axis < 3; ++axis) {
        const double at = shape.positions[3 * size_t{shape.triangles[first]} + axis];
        for (size_t edge = 0; edge < 2; ++edge)
            e[edge][axis] = shape.positions[3 * size_t{shape.triangles[first + 1 + edge]} + axis] - at;
    }
    const double x = e[0][1] * e[1][2] - e[0][2] * e[1][1];
    const double y = e[0][2] * e[1][0] - e[0][0] * e[1][2];
    const double z = e[0][0] * e[1][1] - e[0][1] * e[1][0];
    const double square = x * x + y * y + z * z;
    return square > 0 && std::isfinite(square);
}

static bool make_unit_normals(std::vector<float>& normals)
{
    for (size_t first = 0; first + 2 < normals.size(); first += 3) {
        const double x = normals[first], y = normals[first + 1], z = normals[first + 2];
        const double length = std::sqrt(x * x + y * y + z * z);
        if (!(length > 0) || !std::isfinite(length))
            return false;
        if (std::fabs(length - 1) < 1e-6)
            continue; // as exact as the file
        for (size_t axis = 0; axis < 3; ++axis)
            normals[first + axis] = static_cast<float>(normals[first + axis] / length);
    }
    return true;
}

uint32_t clean_shape(shape_data& shape)
{
    size_t kept = 0;
    for (size_t first = 0; first + 2 < shape.triangles.size(); first += 3) {
        if (!has_area(shape, first))
            continue;
        std::copy_n(shape.triangles.begin() + static_cast<ptrdiff_t>(first), 3,
            shape.triangles.begin() + static_cast<ptrdiff_t>(kept));
        kept += 3;
    }
    const size_t dropped = (shape.triangles.size() - kept) / 3;
    shape.triangles.resize(kept);
    for (std::vector<float>& set : shape.coordinates) {
        for (float& number : set)
            number = std::isfinite(number) ? number : 0.0f;
    }
    if (!make_unit_normals(shape.normals))
        shape.normals.clear();
    return static_cast<uint32_t>(dropped);
}

// ---- joining and cutting ---------------------------------------------------------

void append_shape(shape_data& whole, const shape_data& part)
{
    assert(whole.positions.empty() || part.positions.empty() || whole.normals.empty() == part.normals.empty());
    const uint32_t before = shape_vertex_count(whole);
    const size_t vertices = size_t{before} + shape_vertex_count(part);
    whole.positions.insert(whole.positions.end(), part.positions.begin(), part.positions.end());
    whole.normals.insert(whole.normals.end(), part.normals.begin(), part.normals.end());
    for (size_t set = 0; set < whole.coordinates.size(); ++set) {
        std::vector<float>& to = whole.coordinates[set];
        const std::vector<float>& from = part.coordinates[set];
        if (to.empty() && from.empty())
            continue;
        to.resize(2 * size_t{before}); // zeros, where it had no such set
        to.insert(to.end(), from.begin(), from.end());
        to.resize(2 * vertices);
    }
    for (const uint32_t vertex : part.triangles)
        whole.triangles.push_back(before + vertex);
}

void join_vertices(shape_data& shape)
{
    const uint32_t vertices = shape_vertex_count(shape);
    std::vector<bool> used(vertices);
    for (const uint32_t vertex : shape.triangles)
        used[vertex] = true;
    shape_data joined;
    std::vector<uint32_t> slots(std::bit_ceil(2 * size_t{vertices} + 1));
    std::vector<uint32_t> number(vertices);
    for (uint32_t vertex = 0; vertex < vertices; ++vertex) {
        if (!used[vertex])
            continue;
        const uint32_t first = first_equal(shape, vertex, slots);
        number[vertex] = first == vertex ? shape_vertex_count(joined) : number[first];
        if (first == vertex)
            append_vertex(joined, shape, vertex);
    }
    for (const uint32_t vertex : shape.triangles)
        joined.triangles.push_back(number[vertex]);
    shape = std::move(joined);
}

std::vector<shape_data> split_shape(const shape_data& shape, uint32_t vertices)
{
    assert(vertices >= 3);
    if (shape_vertex_count(shape) <= vertices)
        return {shape};
    std::vector<shape_data> pieces(1);
    std::vector<uint32_t> piece_of(shape_vertex_count(shape), 0); // the last piece with that vertex, from 1
    std::vector<uint32_t> number(shape_vertex_count(shape));      // its number there
    for (size_t first = 0; first + 2 < shape.triangles.size(); first += 3) {
        uint32_t added = 0; // a triangle may name a vertex twice: it then counts too much, which harms nobody
        for (size_t corner = 0; corner < 3; ++corner)
            added += piece_of[shape.triangles[first + corner]] != pieces.size();
        if (shape_vertex_count(pieces.back()) + added > vertices)
            pieces.emplace_back();
        for (size_t corner = 0; corner < 3; ++corner) {
            const uint32_t vertex = shape.triangles[first + corner];
            if (piece_of[vertex] != pieces.size()) {
                piece_of[vertex] = static_cast<uint32_t>(pieces.size());
                number[vertex] = shape_vertex_count(pieces.back());
                append_vertex(pieces.back(), shape, vertex);
            }
            pieces.back().triangles.push_back(number[vertex]);
        }
    }
    return pieces;
}
