#include "effects/manipulator.h"

#include "content/numbers.h"
#include "effects/mesh_normals.h"
#include "render/matrix.h"
#include "texgen/cosine_table.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstdlib>
#include <vector>

constexpr double steps_per_radian = 651.8986; // 4096 / (2 pi): entries of the cosine table

// ---- lists -------------------------------------------------------------------------------

// A list of `count` placements whose values are still to be set; empty when memory is
// short.
static placement_list* allocate_list(uint32_t count)
{
    auto* list = static_cast<placement_list*>(std::calloc(1, sizeof(placement_list)));
    if (list == nullptr || count == 0)
        return list;
    list->items = static_cast<placement*>(std::calloc(count, sizeof(placement)));
    list->count = list->items != nullptr ? count : 0;
    return list;
}

placement_list* placement_list_new(const placement& only)
{
    placement_list* list = allocate_list(1);
    if (list != nullptr && list->count == 1)
        list->items[0] = only;
    return list;
}

void placement_list_free(placement_list* list)
{
    if (list == nullptr)
        return;
    std::free(list->items);
    std::free(list);
}

static placement_list* copy_list(const placement_list& list)
{
    placement_list* copy = allocate_list(list.count);
    if (copy != nullptr)
        std::copy_n(list.items, copy->count, copy->items);
    return copy;
}

// A list of the product of `factors`, each below 2^32, which ends after max_placements. A
// factor of 0 makes it empty, wherever it stands.
static placement_list* allocate_product(std::span<const uint64_t> factors)
{
    uint64_t count = 1;
    bool cut = false;
    for (const uint64_t factor : factors) {
        cut = factor != 0 && (cut || count * factor > max_placements);
        count = std::min<uint64_t>(count * factor, max_placements);
    }
    placement_list* list = allocate_list(static_cast<uint32_t>(count));
    if (list != nullptr)
        list->cut = cut;
    return list;
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
static placement_list* multiply_xyz(const placement_list& list, std::span<const float> params)
{
    const uint32_t counts[3] = {copy_count(params[0]), copy_count(params[1]), copy_count(params[2])};
    const uint64_t factors[4] = {list.count, counts[0], counts[1], counts[2]};
    placement_list* result = allocate_product(factors);
    if (result == nullptr)
        return nullptr;

    uint32_t source = 0;
    uint32_t n[3] = {0, 0, 0};
    for (placement& item : std::span(result->items, result->count)) {
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
    return result;
}

// Copies in a row: every value steps with the copy's number.
static placement_list* multiply_x(const placement_list& list, std::span<const float> params)
{
    const uint32_t copies = copy_count(params[0]);
    const uint64_t factors[2] = {list.count, copies};
    placement_list* result = allocate_product(factors);
    if (result == nullptr)
        return nullptr;

    for (uint32_t i = 0; i < result->count; ++i) {
        const uint32_t k = i % copies;
        const uint32_t n[3] = {k, k, k};
        result->items[i] = stepped_placement(list.items[i / copies], params.subspan(1, 9), n);
    }
    return result;
}

// ---- "Rippler" ---------------------------------------------------------------------------

rippler_cache& shared_rippler_cache()
{
    static rippler_cache cache;
    return cache;
}

void reset_rippler_cache()
{
    rippler_cache& cache = shared_rippler_cache();
    std::free(cache.positions);
    std::free(cache.normals);
    cache = {};
}

// Takes the positions of the first model ever; later models find the cache filled.
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

// The displacement adds up from call to call: nothing ever restores the model (on purpose).
static void ripple(const mesh_arrays& mesh, std::span<const float> params)
{
    rippler_cache& cache = shared_rippler_cache();
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

uint32_t rippled_vertex_count(const mesh_arrays& mesh)
{
    return std::min(mesh.vertex_count, shared_rippler_cache().vertex_count);
}

// ---- "Model placer" ----------------------------------------------------------------------

// The model's first vertices under the placer's own transform, three floats each. Works in
// the shared modelview and puts it back from a copy of its own, because drawing may be in
// the middle of its own save and restore.
static std::vector<float> transformed_vertices(const mesh_arrays& model, uint32_t count, std::span<const float> params)
{
    float modelview[16];
    std::copy_n(matrices.modelview, 16, modelview);
    reset_modelview();
    translate(params[0], params[1], params[2]);
    rotate_x(params[3], select_modelview);
    rotate_y(params[4], select_modelview);
    rotate_z(params[5], select_modelview);
    scale(params[6], params[7], params[8]);

    std::vector<float> vertices(size_t{count} * 3);
    for (size_t v = 0; v < count; ++v)
        transform_point(matrices.modelview, model.positions + 3 * v, vertices.data() + 3 * v);
    std::copy_n(modelview, 16, matrices.modelview);
    return vertices;
}

// One copy of every placement at every vertex; only positions move.
static placement_list* place_on_model(
    const placement_list& list, std::span<const float> params, const mesh_arrays& model)
{
    const uint64_t factors[2] = {list.count, model.vertex_count};
    placement_list* result = allocate_product(factors);
    if (result == nullptr || result->count == 0)
        return result;

    const uint32_t used = std::min(model.vertex_count, result->count);
    const std::vector<float> vertices = transformed_vertices(model, used, params);
    for (uint32_t i = 0; i < result->count; ++i) {
        const float* vertex = vertices.data() + size_t{i % model.vertex_count} * 3;
        placement& item = result->items[i];
        item = list.items[i / model.vertex_count];
        for (uint32_t axis = 0; axis < 3; ++axis)
            item.position[axis]
                = to_single(static_cast<double>(vertex[axis]) + static_cast<double>(item.position[axis]));
    }
    return result;
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

// The new list of a kind of the catalogue.
static placement_list* manipulated_list(const placement_list& list, manipulator_kind kind,
    std::span<const float> params, const mesh_arrays* mesh, const mesh_arrays* place_model)
{
    switch (kind) {
    case manipulator_xyz_multiplier:
        return multiply_xyz(list, params);
    case manipulator_x_multiplier:
        return multiply_x(list, params);
    case manipulator_rippler:
        if (mesh != nullptr)
            ripple(*mesh, params);
        return copy_list(list);
    case manipulator_model_placer:
        if (place_model != nullptr && (place_model->positions != nullptr || place_model->vertex_count == 0))
            return place_on_model(list, params, *place_model);
        return copy_list(list);
    case manipulator_kind_count:
        break;
    }
    return nullptr;
}

placement_list* apply_manipulator(placement_list* list, int32_t kind, std::span<const float> params,
    const mesh_arrays* mesh, const mesh_arrays* place_model)
{
    assert(params.size() >= manipulator_param_count(kind));
    if (list == nullptr || kind < 0 || kind >= manipulator_kind_count)
        return list;
    placement_list* result = manipulated_list(*list, static_cast<manipulator_kind>(kind), params, mesh, place_model);
    if (result != nullptr)
        result->cut = result->cut || (list->cut && result->count != 0);
    placement_list_free(list);
    return result;
}
