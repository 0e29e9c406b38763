// Each form of the grids' normals against those of the same triangles as any mesh has them, bit for bit.

#include "effects/mesh_normals.h"
#include "effects/normal_kernels.h"
#include "faster_sets.h"

#include <doctest/doctest.h>

#include <bit>
#include <cmath>
#include <vector>

static std::vector<uint16_t> grid_indices(uint32_t side)
{
    std::vector<uint16_t> indices;
    for (const bool second : {false, true})
        for (uint32_t i = 0; i + 1 < side; ++i)
            for (uint32_t j = 0; j + 1 < side; ++j) {
                const uint32_t k = i * side + j;
                for (const uint32_t vertex : {k, second ? k + side + 1 : k + 1, second ? k + side : k + side + 1})
                    indices.push_back(static_cast<uint16_t>(vertex));
            }
    return indices;
}

static std::vector<uint32_t> bits_of(const std::vector<float>& values)
{
    std::vector<uint32_t> bits;
    for (const float value : values)
        bits.push_back(std::bit_cast<uint32_t>(value));
    return bits;
}

static std::vector<uint32_t> normals_as_of_any_mesh(const std::vector<float>& heights, uint32_t side)
{
    std::vector<float> positions;
    for (uint32_t k = 0; k < side * side; ++k)
        positions.insert(positions.end(), {static_cast<float>(k / side), heights[k], static_cast<float>(k % side)});
    std::vector<float> normals(positions.size(), 77.0f);
    compute_mesh_normals(positions, grid_indices(side), normals);
    return bits_of(normals);
}

static std::vector<uint32_t> normals_of_a_grid(instruction_set set, const std::vector<float>& heights, uint32_t side)
{
    std::vector<float> normals(heights.size() * 3, 77.0f);
    compute_grid_normals(set, heights.data(), side, normals.data());
    return bits_of(normals);
}

// Flat, whole, wavy, steep and hardly there.
static std::vector<float> surface(uint32_t shape, uint32_t side)
{
    std::vector<float> heights(size_t{side} * side);
    for (uint32_t k = 0; k < side * side; ++k) {
        const double scattered = static_cast<double>(static_cast<int32_t>((k + shape) * 2654435761u)) / 2147483648.0;
        const double all[] = {0.0, std::trunc(scattered * 7.0), std::sin(k * 0.37), scattered * 1e9,
            std::trunc(scattered * 2e9), scattered * 1e-30, k % 5 == 0 ? 3e38 : scattered};
        heights[k] = static_cast<float>(all[shape]);
    }
    return heights;
}

TEST_CASE("a grid has the normals that its triangles have as any mesh, with all instructions")
{
    std::vector<instruction_set> sets = faster_sets();
    sets.push_back(instructions_plain);
    for (const instruction_set set : sets)
        for (const uint32_t side : {2u, 3u, 4u, 5u, 9u, 30u, 31u, 59u, 60u})
            for (uint32_t shape = 0; shape < 7; ++shape) {
                const std::vector<float> heights = surface(shape, side);
                CAPTURE(static_cast<uint32_t>(set));
                CAPTURE(side);
                CAPTURE(shape);
                CHECK(normals_of_a_grid(set, heights, side) == normals_as_of_any_mesh(heights, side));
            }
}
