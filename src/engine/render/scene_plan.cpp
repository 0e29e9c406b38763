#include "render/scene_plan.h"

#include "content/numbers.h"
#include "model/values.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

uint32_t object_time(uint32_t layer_time, float offset)
{
    return static_cast<uint32_t>(truncate_to_int(static_cast<double>(layer_time) + static_cast<double>(offset)));
}

bool object_is_visible(const scene_object& object, const table<animation_function>& functions, uint32_t time)
{
    return object.visibility == 0 || !(function_value(functions, object.visibility, time) < 1.0f);
}

bool faces_camera(const scene_record& scene, uint32_t object_number)
{
    return object_number < max_scene_objects
        && (scene.camera_facing[object_number / 8] & (128 >> (object_number % 8))) != 0;
}

// ---- placements -----------------------------------------------------------------

placement object_placement(const scene_object& object, const table<animation_function>& functions, uint32_t time)
{
    float values[placement_value_count];
    for (uint32_t i = 0; i < placement_value_count; ++i)
        values[i] = value_at(functions, object.values[i], time);
    placement own;
    std::copy_n(values, 3, own.position);
    std::copy_n(values + 3, 3, own.rotation);
    std::copy_n(values + 6, 3, own.scale);
    return own;
}

const mesh_arrays* manipulator_model(const manipulator_record& manipulator, const document& d)
{
    if (manipulator.model_type == 1) {
        const mesh_effect* effect = table_get(d.effect_table, manipulator.model);
        return effect == nullptr ? nullptr : &effect->mesh;
    }
    if (manipulator.model_type != 0)
        return nullptr;
    const mesh_record* mesh = table_get(d.mesh_table, manipulator.model);
    return mesh == nullptr ? nullptr : &mesh->arrays;
}

placed_copies place_copies(const scene_object& object, const document& d, uint32_t time, const mesh_arrays* mesh)
{
    placed_copies copies = {placement_list_new(object_placement(object, d.function_table, time)), false};
    const uint32_t count = std::min(object.manipulator_count, max_manipulators);
    for (uint32_t i = 0; i < count && copies.list != nullptr; ++i) {
        const manipulator_record& manipulator = object.manipulators[i];
        const uint32_t param_count = std::min(manipulator_param_count(manipulator.type), max_manipulator_params);
        float params[max_manipulator_params] = {};
        for (uint32_t p = 0; p < param_count; ++p)
            params[p] = value_at(d.function_table, manipulator.params[p], time);
        copies.list = apply_manipulator(copies.list, manipulator.type, params, mesh, manipulator_model(manipulator, d));
        copies.rippled |= manipulator.type == manipulator_rippler && mesh != nullptr;
    }
    return copies;
}

std::string cut_copies_line(const document& d, uint32_t scene_handle, uint32_t object_number)
{
    return "Warning: " + record_label(d, section_scenes, scene_handle) + ", object " + std::to_string(object_number + 1)
        + ": its manipulators make more than " + std::to_string(max_placements) + " copies; the first "
        + std::to_string(max_placements) + " are drawn.";
}

// ---- vertex arrays --------------------------------------------------------------

// `taken` vertices of the cache, then the mesh's own. Null when memory is out.
static float* merge_vertices(const float* cached, const float* own, uint32_t taken, uint32_t count)
{
    float* merged = static_cast<float*>(std::malloc(size_t{count} * 3 * sizeof(float)));
    if (merged == nullptr)
        return nullptr;
    std::copy_n(cached, size_t{taken} * 3, merged);
    std::copy(own + size_t{taken} * 3, own + size_t{count} * 3, merged + size_t{taken} * 3);
    return merged;
}

rippled_arrays merge_rippled_arrays(const mesh_arrays& mesh, const rippler_cache& cache)
{
    rippled_arrays arrays = {};
    const uint32_t taken = std::min(mesh.vertex_count, cache.vertex_count);
    if (taken == 0 || cache.positions == nullptr || cache.normals == nullptr || mesh.positions == nullptr)
        return arrays;
    if (taken == mesh.vertex_count) {
        arrays.from_cache = true;
        arrays.positions = cache.positions;
        arrays.normals = mesh.normals == nullptr ? nullptr : cache.normals;
        return arrays;
    }
    arrays.owned_positions = merge_vertices(cache.positions, mesh.positions, taken, mesh.vertex_count);
    if (mesh.normals != nullptr)
        arrays.owned_normals = merge_vertices(cache.normals, mesh.normals, taken, mesh.vertex_count);
    arrays.positions = arrays.owned_positions;
    arrays.normals = arrays.owned_normals;
    return arrays;
}

void release_rippled_arrays(rippled_arrays& arrays)
{
    std::free(arrays.owned_positions);
    std::free(arrays.owned_normals);
    arrays = {};
}

void generate_line_index_array(mesh_arrays& mesh)
{
    std::puts("GenerateLineIndexArray");
    std::free(mesh.line_indices);
    const uint32_t triangles = mesh.index_count / 3;
    mesh.line_indices
        = static_cast<uint16_t*>(std::malloc(std::max<size_t>(size_t{triangles} * 6, 1) * sizeof(uint16_t)));
    if (mesh.line_indices == nullptr)
        return;
    uint16_t* line = mesh.line_indices;
    for (uint32_t t = 0; t < triangles; ++t) {
        const uint16_t* corner = mesh.indices + size_t{t} * 3;
        for (uint32_t edge = 0; edge < 3; ++edge) {
            *line++ = corner[edge];
            *line++ = corner[(edge + 1) % 3];
        }
    }
}
