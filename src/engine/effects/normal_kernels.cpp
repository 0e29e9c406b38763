#include "effects/normal_kernels.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstddef>

// Rows are padded on both sides: with a column of no triangles, and up to whole vectors.
constexpr uint32_t row_room = 64;
static_assert(max_grid_side + 2 <= row_room);

namespace {

struct vector_row {
    double x[row_room];
    double y[row_room];
    double z[row_room];
};

// The face normals of a row of cells, cell j at place j + 1; places without a cell are 0 and add nothing.
struct cell_row {
    vector_row first;
    vector_row second;
};

} // namespace

// ---- plain -------------------------------------------------------------------------------

static void add_plain(float* normal, double x, double y, double z)
{
    normal[0] = static_cast<float>(static_cast<double>(normal[0]) + x);
    normal[1] = static_cast<float>(static_cast<double>(normal[1]) + y);
    normal[2] = static_cast<float>(static_cast<double>(normal[2]) + z);
}

// The triangles one after the other. The edges of a cell are whole numbers but for their heights, so that nothing is
// left of the products with 0 and 1, and no normal is shorter than 1.
static void grid_normals_plain(const float* heights, uint32_t side, float* normals)
{
    std::fill_n(normals, size_t{3} * side * side, 0.0f);
    for (uint32_t half = 0; half < 2; ++half)
        for (uint32_t i = 0; i + 1 < side; ++i)
            for (uint32_t j = 0; j + 1 < side; ++j) {
                const uint32_t k = i * side + j;
                const double a = static_cast<double>(heights[k]);
                const double middle = static_cast<double>(heights[half == 0 ? k + 1 : k + side]);
                const double across = static_cast<double>(heights[k + side + 1]);
                const double x = half == 0 ? middle - across : (a - across) + (across - middle);
                const double z = half == 0 ? a - middle : middle - across;
                const double length = std::sqrt(x * x + 1.0 + z * z);
                for (const uint32_t vertex : {k, half == 0 ? k + 1 : k + side, k + side + 1})
                    add_plain(normals + size_t{3} * vertex, x / length, 1.0 / length, z / length);
            }
    for (uint32_t i = 0; i < side; ++i)
        for (uint32_t j = 0; j < side; ++j) {
            const bool above = i > 0;
            const bool below = i + 1 < side;
            const bool left = j > 0;
            const bool right = j + 1 < side;
            const double count = 2.0 * (above && left) + (below && left) + (above && right) + 2.0 * (below && right);
            for (uint32_t axis = 0; axis < 3; ++axis) {
                float& component = normals[3 * (i * side + j) + axis];
                component = static_cast<float>(static_cast<double>(component) / count);
            }
        }
}

// ---- a row at a time ---------------------------------------------------------------------

FAST_INLINE static void divide_by_length(vector_row& n, uint32_t width)
{
    for (uint32_t j = 1; j < width; ++j) {
        const double length = std::sqrt(n.x[j] * n.x[j] + 1.0 + n.z[j] * n.z[j]);
        n.x[j] /= length;
        n.y[j] = 1.0 / length;
        n.z[j] /= length;
    }
}

// The cells between a row of vertices and the one below it.
FAST_INLINE static void fill_cells(const float* heights, uint32_t side, cell_row& cells)
{
    double above[row_room];
    double below[row_room];
    for (uint32_t j = 0; j < side; ++j) {
        above[j] = static_cast<double>(heights[j]);
        below[j] = static_cast<double>(heights[side + j]);
    }
    for (uint32_t j = 1; j < side; ++j) {
        cells.first.x[j] = above[j] - below[j];
        cells.first.z[j] = above[j - 1] - above[j];
        cells.second.x[j] = (above[j - 1] - below[j]) + (below[j] - below[j - 1]);
        cells.second.z[j] = below[j - 1] - below[j];
    }
    divide_by_length(cells.first, side);
    divide_by_length(cells.second, side);
}

// What a vertex adds up, in the order of its triangles: single sums of double terms.
FAST_INLINE static void add_faces(const double* first_above, const double* first_below, const double* second_above,
    const double* second_below, const double* counts, uint32_t side, float* sums)
{
    for (uint32_t j = 0; j < side; ++j) {
        float sum = static_cast<float>(first_above[j]);
        sum = static_cast<float>(static_cast<double>(sum) + first_below[j]);
        sum = static_cast<float>(static_cast<double>(sum) + first_below[j + 1]);
        sum = static_cast<float>(static_cast<double>(sum) + second_above[j]);
        sum = static_cast<float>(static_cast<double>(sum) + second_above[j + 1]);
        sum = static_cast<float>(static_cast<double>(sum) + second_below[j + 1]);
        sums[j] = static_cast<float>(static_cast<double>(sum) / counts[j]);
    }
}

FAST_INLINE static void write_row(
    const cell_row& above, const cell_row& below, const double* counts, uint32_t side, float* normals)
{
    float x[row_room];
    float y[row_room];
    float z[row_room];
    add_faces(above.first.x, below.first.x, above.second.x, below.second.x, counts, side, x);
    add_faces(above.first.y, below.first.y, above.second.y, below.second.y, counts, side, y);
    add_faces(above.first.z, below.first.z, above.second.z, below.second.z, counts, side, z);
    for (uint32_t j = 0; j < side; ++j) {
        normals[3 * j] = x[j];
        normals[3 * j + 1] = y[j];
        normals[3 * j + 2] = z[j];
    }
}

// How many triangles meet at each vertex of a row.
FAST_INLINE static void count_triangles(bool above, bool below, uint32_t side, double* counts)
{
    const double left = 2.0 * above + below;
    const double right = above + 2.0 * below;
    std::fill_n(counts, side, left + right);
    counts[0] = right;
    counts[side - 1] = left;
}

FAST_INLINE static void grid_normals_fast(const float* heights, uint32_t side, float* normals)
{
    cell_row rows[2] = {};
    const cell_row none = {};
    const cell_row* above = &none;
    double counts[row_room];
    for (uint32_t i = 0; i < side; ++i) {
        const bool has_below = i + 1 < side;
        if (has_below)
            fill_cells(heights + size_t{i} * side, side, rows[i % 2]);
        if (i < 2 || !has_below)
            count_triangles(i > 0, has_below, side, counts);
        const cell_row* below = has_below ? &rows[i % 2] : &none;
        write_row(*above, *below, counts, side, normals + size_t{3} * side * i);
        above = below;
    }
}

FAST_AVX2 static void grid_normals_avx2(const float* heights, uint32_t side, float* normals)
{
    grid_normals_fast(heights, side, normals);
}

void compute_grid_normals(instruction_set set, const float* heights, uint32_t side, float* normals)
{
    assert(side >= 2 && side <= max_grid_side);
    switch (set) {
    case instructions_avx2:
        return grid_normals_avx2(heights, side, normals);
    case instructions_sse2:
        return grid_normals_fast(heights, side, normals);
    case instructions_plain:
    case instruction_set_count:
        break;
    }
    grid_normals_plain(heights, side, normals);
}
