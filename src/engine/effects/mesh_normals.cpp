#include "effects/mesh_normals.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstddef>

constexpr size_t max_indexed_vertices = 65536; // what indices of 16 bits can name

namespace {

struct vector3 {
    double x, y, z;
};

} // namespace

static vector3 vertex_at(std::span<const float> positions, size_t vertex)
{
    const float* p = positions.data() + 3 * vertex;
    return {static_cast<double>(p[0]), static_cast<double>(p[1]), static_cast<double>(p[2])};
}

static vector3 difference(const vector3& a, const vector3& b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

static vector3 face_normal(const vector3& a, const vector3& b, const vector3& c)
{
    const vector3 e1 = difference(a, b);
    const vector3 e2 = difference(b, c);
    const vector3 n = {e1.y * e2.z - e1.z * e2.y, e1.z * e2.x - e1.x * e2.z, e1.x * e2.y - e1.y * e2.x};
    const double length = std::sqrt(n.x * n.x + n.y * n.y + n.z * n.z);
    const double divisor = length < shortest_normal ? 1.0 : length;
    return {n.x / divisor, n.y / divisor, n.z / divisor};
}

static void add_to_normal(float* normal, const vector3& n)
{
    normal[0] = static_cast<float>(static_cast<double>(normal[0]) + n.x);
    normal[1] = static_cast<float>(static_cast<double>(normal[1]) + n.y);
    normal[2] = static_cast<float>(static_cast<double>(normal[2]) + n.z);
}

void compute_mesh_normals(std::span<const float> positions, std::span<const uint16_t> indices, std::span<float> normals)
{
    assert(positions.size() % 3 == 0 && normals.size() % 3 == 0);
    const size_t vertex_count = std::min({positions.size() / 3, normals.size() / 3, max_indexed_vertices});
    uint32_t triangle_counts[max_indexed_vertices]; // of which the first vertex_count are used
    std::fill_n(triangle_counts, vertex_count, 0u);
    std::fill(normals.begin(), normals.end(), 0.0f);

    for (size_t i = 0; i + 3 <= indices.size(); i += 3) {
        const size_t a = indices[i];
        const size_t b = indices[i + 1];
        const size_t c = indices[i + 2];
        if (a >= vertex_count || b >= vertex_count || c >= vertex_count)
            continue;
        const vector3 n = face_normal(vertex_at(positions, a), vertex_at(positions, b), vertex_at(positions, c));
        for (const size_t vertex : {a, b, c}) {
            add_to_normal(normals.data() + 3 * vertex, n);
            ++triangle_counts[vertex];
        }
    }

    // The average of unit vectors is shorter than one; it is not normalised again.
    for (size_t vertex = 0; vertex < vertex_count; ++vertex) {
        if (triangle_counts[vertex] <= 1)
            continue;
        for (size_t axis = 0; axis < 3; ++axis) {
            float& component = normals[3 * vertex + axis];
            component = static_cast<float>(static_cast<double>(component) / triangle_counts[vertex]);
        }
    }
}
