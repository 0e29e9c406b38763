#include "effects/manipulator.h"

#include "content/matrix.h"
#include "content/numbers.h"
#include "effects/mesh_normals.h"
#include "texgen/cosine_table.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstdlib>
#include <utility>

constexpr double steps_per_radian = 651.8986; // 4096 / (2 pi): entries of the cosine table

// ---- lists -------------------------------------------------------------------------------

// Makes room for the product of `factors`, each below 2^32, which ends after max_placements.
// A factor of 0 makes the list empty, wherever it stands.
static void size_as_product(placement_list& list, std::span<const uint64_t> factors)
{
    uint64_t count = 1;
    bool cut = false;
    for (const uint64_t factor : factors) {
        cut = factor != 0 && (cut || count * factor > max_placements);
        count = std::min<uint64_t>(count * factor, max_placements);
    }
    list.items.resize(static_cast<size_t>(count));
    list.cut = cut;
}

// value + step x n; the first copy is exactly the input, whatever the step is.
static float stepped(float value, float step, uint32_t n)
{
    return n == 0 ? value : to_single(static_cast<double>(value) + static_cast<double>(step) * n);
}

// ---- "XYZ Multiplier", "X Multiplier" ----------------------------------------------------

// `steps` has nine values: position, rotation, scale; `n` is the copy's number on each axis.
static placement stepped_placement(const placement& from, std::span<const float> steps, const uint32_t n[3])
{
    placement to;
    for (uint32_t axis = 0; axis < 3; ++axis) {
        to.position[axis] = stepped(from.position[axis], steps[axis], n[axis]);
        to.rotation[axis] = stepped(from.rotation[axis], steps[3 + axis], n[axis]);
        to.scale[axis] = stepped(from.scale[axis], steps[6 + axis], n[axis]);
    }
    return to;
}

// A whole number from a parameter; below 0 (and not-a-number): 0.
static uint32_t copy_count(float value)
{
    return static_cast<uint32_t>(std::max(truncate_to_int(static_cast<double>(value)), 0));
}

// Copies on a grid, z varying fastest.
static void multiply_xyz(const placement_list& list, std::span<const float> params, placement_list& result)
{
    const uint32_t counts[3] = {copy_count(params[0]), copy_count(params[1]), copy_count(params[2])};
    const uint64_t factors[4] = {list.items.size(), counts[0], counts[1], counts[2]};
    size_as_product(result, factors);

    uint32_t source = 0;
    uint32_t n[3] = {0, 0, 0};
    for (placement& item : result.items) {
        item = stepped_placement(list.items[source], params.subspan(3, 9), n);
        if (++n[2] == counts[2]) {
            n[2] = 0;
            if (++n[1] == counts[1]) {
                n[1] = 0;
                if (++n[0] == counts[0]) {
                    n[0] = 0;
                    ++source;
                }
            }
        }
    }
}

// Copies in a row: every value steps with the copy's number.
static void multiply_x(const placement_list& list, std::span<const float> params, placement_list& result)
{
    const uint32_t copies = copy_count(params[0]);
    const uint64_t factors[2] = {list.items.size(), copies};
    size_as_product(result, factors);

    for (uint32_t i = 0; i < result.items.size(); ++i) {
        const uint32_t k = i % copies;
        const uint32_t n[3] = {k, k, k};
        result.items[i] = stepped_placement(list.items[i / copies], params.subspan(1, 9), n);
    }
}

// ---- "Rippler" ---------------------------------------------------------------------------

void reset_rippler_cache(rippler_cache& cache)
{
    std::free(cache.positions);
    std::free(cache.normals);
    cache = {};
}

// Takes the positions of the first mesh ever; later ones find the cache filled.
static bool fill_rippler_cache(rippler_cache& cache, const mesh_arrays& mesh)
{
    if (cache.positions != nullptr)
        return true;
    const size_t floats = size_t{mesh.vertex_count} * 3;
    if (floats == 0 || mesh.positions == nullptr)
        return false;
    cache.positions = static_cast<float*>(std::calloc(floats, sizeof(float)));
    cache.normals = static_cast<float*>(std::calloc(floats, sizeof(float)));
    if (cache.positions == nullptr || cache.normals == nullptr) {
        std::free(cache.positions);
        std::free(cache.normals);
        cache.positions = nullptr;
        cache.normals = nullptr;
        return false;
    }
    std::copy_n(mesh.positions, floats, cache.positions);
    cache.vertex_count = mesh.vertex_count;
    return true;
}

// The displacement adds up from call to call: nothing ever restores the mesh (on purpose).
static void ripple(const mesh_arrays& mesh, std::span<const float> params, rippler_cache& cache)
{
    if (!fill_rippler_cache(cache, mesh))
        return;

    const double time = static_cast<double>(params[0]);
    const double amplitude = static_cast<double>(params[1]);
    const double wavelength = static_cast<double>(params[2]);
    const std::span<float> positions(cache.positions, size_t{cache.vertex_count} * 3);
    if (std::isfinite(time) && std::isfinite(amplitude) && std::isfinite(wavelength)) {
        for (float& coordinate : positions) {
            const double c = static_cast<double>(coordinate);
            const int32_t steps = truncate_to_int(c * wavelength * steps_per_radian + time * steps_per_radian);
            coordinate = to_single(c + amplitude * static_cast<double>(cosine_at(steps)));
        }
    }
    const uint32_t index_count = mesh.indices != nullptr ? mesh.index_count : 0;
    compute_mesh_normals(positions, {mesh.indices, index_count}, {cache.normals, positions.size()});
}

// ---- "Model placer" ----------------------------------------------------------------------

// The mesh's first vertices under the placer's own transform, three floats each.
static void transform_vertices(
    const mesh_arrays& mesh, uint32_t count, std::span<const float> params, std::vector<float>& vertices)
{
    float matrix[16];
    copy_matrix(identity, matrix);
    translate(matrix, params[0], params[1], params[2]);
    rotate_x(matrix, params[3]);
    rotate_y(matrix, params[4]);
    rotate_z(matrix, params[5]);
    scale(matrix, params[6], params[7], params[8]);

    vertices.resize(size_t{count} * 3);
    for (size_t v = 0; v < count; ++v)
        transform_point(matrix, mesh.positions + 3 * v, vertices.data() + 3 * v);
}

// One copy of every placement at every vertex; only positions move.
static void place_on_mesh(const placement_list& list, std::span<const float> params, const mesh_arrays& mesh,
    std::vector<float>& vertices, placement_list& result)
{
    const uint64_t factors[2] = {list.items.size(), mesh.vertex_count};
    size_as_product(result, factors);
    const uint32_t count = static_cast<uint32_t>(result.items.size());
    transform_vertices(mesh, std::min(mesh.vertex_count, count), params, vertices);
    for (uint32_t i = 0; i < count; ++i) {
        const float* vertex = vertices.data() + size_t{i % mesh.vertex_count} * 3;
        placement& item = result.items[i];
        item = list.items[i / mesh.vertex_count];
        for (uint32_t axis = 0; axis < 3; ++axis)
            item.position[axis]
                = to_single(static_cast<double>(vertex[axis]) + static_cast<double>(item.position[axis]));
    }
}

// ---- all kinds ---------------------------------------------------------------------------

uint32_t manipulator_param_count(int32_t kind)
{
    switch (static_cast<manipulator_kind>(kind)) {
    case manipulator_xyz_multiplier:
        return 12;
    case manipulator_x_multiplier:
        return 10;
    case manipulator_rippler:
        return 3;
    case manipulator_model_placer:
        return 9;
    case manipulator_kind_count:
        break;
    }
    return 0;
}

// Writes the new list of a kind; false: the list stays as it is.
static bool manipulate(const placement_list& list, int32_t kind, std::span<const float> params, const mesh_arrays* mesh,
    const mesh_arrays* place_model, manipulator_tools& tools)
{
    switch (static_cast<manipulator_kind>(kind)) {
    case manipulator_xyz_multiplier:
        multiply_xyz(list, params, tools.spare);
        return true;
    case manipulator_x_multiplier:
        multiply_x(list, params, tools.spare);
        return true;
    case manipulator_rippler:
        if (mesh != nullptr)
            ripple(*mesh, params, tools.rippler);
        return false;
    case manipulator_model_placer:
        if (place_model == nullptr || (place_model->positions == nullptr && place_model->vertex_count != 0))
            return false;
        place_on_mesh(list, params, *place_model, tools.vertices, tools.spare);
        return true;
    case manipulator_kind_count:
        break;
    }
    return false; // beyond the catalogue
}

void apply_manipulator(placement_list& list, int32_t kind, std::span<const float> params, const mesh_arrays* mesh,
    const mesh_arrays* place_model, manipulator_tools& tools)
{
    assert(params.size() >= manipulator_param_count(kind));
    if (!manipulate(list, kind, params, mesh, place_model, tools))
        return;
    tools.spare.cut = tools.spare.cut || (list.cut && !tools.spare.items.empty());
    std::swap(list, tools.spare);
}
