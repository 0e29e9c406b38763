// What the tests measure of a shape, from its triangles alone.
#pragma once

#include "authoring/asset/shape.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <vector>

struct shape_measures {
    double front;            // surface that looks along z, as seen from there
    double back;             // that looks the other way
    double volume;           // of a closed shape whose triangles look outwards
    uint32_t open_edges;     // edges that no triangle of the other side meets the other way round
    uint32_t wrong_normals;  // corners whose normal points to the back of their triangle
    uint32_t uneven_normals; // normals that are not of length 1
};

inline std::array<double, 3> vertex_at(const shape_data& shape, uint32_t vertex)
{
    const float* const p = &shape.positions[size_t(vertex) * 3];
    return {p[0], p[1], p[2]};
}

// A number for each vertex, the same for those at one position.
inline std::vector<uint32_t> position_numbers(const shape_data& shape)
{
    std::vector<std::array<double, 3>> places;
    for (uint32_t i = 0; i < shape_vertex_count(shape); ++i)
        places.push_back(vertex_at(shape, i));
    std::vector<std::array<double, 3>> sorted = places;
    std::sort(sorted.begin(), sorted.end());
    std::vector<uint32_t> numbers;
    for (const auto& place : places)
        numbers.push_back(
            static_cast<uint32_t>(std::lower_bound(sorted.begin(), sorted.end(), place) - sorted.begin()));
    return numbers;
}

// Edges without an edge of another triangle that runs the other way between the same places.
inline uint32_t count_open_edges(const shape_data& shape)
{
    const std::vector<uint32_t> numbers = position_numbers(shape);
    std::vector<uint64_t> there, back;
    for (size_t i = 0; i + 2 < shape.triangles.size(); i += 3) {
        for (size_t k = 0; k < 3; ++k) {
            const uint64_t from = numbers[shape.triangles[i + k]], to = numbers[shape.triangles[i + (k + 1) % 3]];
            there.push_back(from << 32 | to);
            back.push_back(to << 32 | from);
        }
    }
    std::sort(there.begin(), there.end());
    std::sort(back.begin(), back.end());
    std::vector<uint64_t> open;
    std::set_difference(there.begin(), there.end(), back.begin(), back.end(), std::back_inserter(open));
    return static_cast<uint32_t>(open.size());
}

inline shape_measures measure_shape(const shape_data& shape)
{
    using point = std::array<double, 3>;
    shape_measures result = {};
    result.open_edges = count_open_edges(shape);
    for (size_t i = 0; i + 2 < shape.triangles.size(); i += 3) {
        const point a = vertex_at(shape, shape.triangles[i]), b = vertex_at(shape, shape.triangles[i + 1]),
                    c = vertex_at(shape, shape.triangles[i + 2]);
        const point u = {b[0] - a[0], b[1] - a[1], b[2] - a[2]}, v = {c[0] - a[0], c[1] - a[1], c[2] - a[2]};
        const point n = {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
        (n[2] > 0 ? result.front : result.back) += std::abs(n[2]) / 2;
        result.volume += (a[0] * n[0] + a[1] * n[1] + a[2] * n[2]) / 6;
        const double size = std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]);
        for (size_t k = 0; k < 3; ++k) {
            const float* const normal = &shape.normals[size_t(shape.triangles[i + k]) * 3];
            if (normal[0] * n[0] + normal[1] * n[1] + normal[2] * n[2] < -1e-3 * size)
                ++result.wrong_normals;
        }
    }
    for (size_t i = 0; i + 2 < shape.normals.size(); i += 3) {
        const double square = double(shape.normals[i]) * shape.normals[i]
            + double(shape.normals[i + 1]) * shape.normals[i + 1] + double(shape.normals[i + 2]) * shape.normals[i + 2];
        result.uneven_normals += std::abs(square - 1) > 1e-4 ? 1u : 0u;
    }
    return result;
}
