#include "render/scene_plan.h"

#include "content/numbers.h"
#include "model/values.h"

#include <algorithm>
#include <cassert>
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

const mesh_arrays* manipulator_mesh(const manipulator_record& manipulator, const document& d)
{
    switch (static_cast<placer_mesh_kind>(manipulator.model_type)) {
    case placer_mesh: {
        const mesh_record* mesh = table_get(d.mesh_table, manipulator.model);
        return mesh == nullptr ? nullptr : &mesh->arrays;
    }
    case placer_effect: {
        const mesh_effect* effect = table_get(d.effect_table, manipulator.model);
        return effect == nullptr ? nullptr : &effect->mesh;
    }
    case placer_mesh_kind_count:
        break;
    }
    return nullptr;
}

std::string cut_copies_line(const document& d, uint32_t scene_handle, uint32_t object_number)
{
    return "Warning: " + record_label(d, section_scenes, scene_handle) + ", object " + std::to_string(object_number + 1)
        + ": its manipulators make more than " + std::to_string(max_placements) + " copies; the first "
        + std::to_string(max_placements) + " are drawn.";
}

// ---- lines ----------------------------------------------------------------------

void generate_line_index_array(mesh_arrays& mesh)
{
    assert(mesh.indices != nullptr || mesh.index_count == 0);
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
    assert(line == mesh.line_indices + size_t{triangles} * 6);
}
