#include "effects/mesh_effect.h"

#include "effects/mesh_effect_kinds.h"
#include "model/values.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <iterator>

// Whether everything that a kind needs is there (it is, unless memory ran out).
static bool is_complete(const mesh_effect& effect)
{
    const mesh_arrays& mesh = effect.mesh;
    const bool needs_state = effect.type != mesh_effect_swirl;
    const bool needs_normals = effect.type != mesh_effect_particles;
    return (effect.state != nullptr || !needs_state) && mesh.positions != nullptr
        && (mesh.normals != nullptr || !needs_normals) && (mesh.indices != nullptr || mesh.index_count == 0)
        && std::all_of(mesh.texcoords, mesh.texcoords + mesh.texcoord_sets, [](const float* set) { return set; });
}

static void init_kind(mesh_effect& effect)
{
    switch (static_cast<mesh_effect_kind>(effect.type)) {
    case mesh_effect_lake:
        return init_lake(effect, lake_side);
    case mesh_effect_centerwave:
        return init_centerwave(effect);
    case mesh_effect_swirl:
        return init_swirl(effect);
    case mesh_effect_particles:
        return init_swarm(effect);
    case mesh_effect_lake_2:
        return init_lake(effect, lake_2_side);
    case mesh_effect_kind_count:
        break;
    }
}

void init_mesh_effect(mesh_effect& effect)
{
    effect.state = nullptr;
    effect.mesh = {};
    init_kind(effect);
    if (!is_complete(effect))
        free_mesh_effect(effect);
}

void free_mesh_effect(mesh_effect& effect)
{
    std::free(effect.state);
    std::free(effect.mesh.positions);
    for (float* set : effect.mesh.texcoords)
        std::free(set);
    std::free(effect.mesh.normals);
    std::free(effect.mesh.indices);
    std::free(effect.mesh.line_indices);
    effect.state = nullptr;
    effect.mesh = {};
}

size_t mesh_effect_state_bytes(uint32_t type)
{
    switch (static_cast<mesh_effect_kind>(type)) {
    case mesh_effect_lake:
    case mesh_effect_lake_2:
        return sizeof(water_state);
    case mesh_effect_centerwave:
        return sizeof(centerwave_state);
    case mesh_effect_particles:
        return sizeof(swarm_state);
    case mesh_effect_swirl:
    case mesh_effect_kind_count:
        break;
    }
    return 0;
}

uint32_t mesh_effect_param_count(uint32_t type)
{
    return type == mesh_effect_swirl ? 2 : 1;
}

void step_mesh_effect(mesh_effect& effect, std::span<const float> params)
{
    assert(params.size() >= 2);
    const auto used = params.first(mesh_effect_param_count(effect.type));
    const bool finite = std::all_of(used.begin(), used.end(), [](float value) { return std::isfinite(value); });
    if (!finite || effect.mesh.positions == nullptr)
        return;
    assert(effect.type >= mesh_effect_kind_count || is_complete(effect));

    switch (static_cast<mesh_effect_kind>(effect.type)) {
    case mesh_effect_lake:
        return step_lake(effect, params[0]);
    case mesh_effect_centerwave:
        return step_centerwave(effect, params[0]);
    case mesh_effect_swirl:
        return step_swirl(effect, params[0], params[1]);
    case mesh_effect_particles:
        return step_swarm(effect, params[0]);
    case mesh_effect_lake_2:
        return step_lake_2(effect, params[0]);
    case mesh_effect_kind_count:
        break;
    }
}

void update_mesh_effect(
    uint32_t handle, const table<mesh_effect>& effects, const table<animation_function>& functions, uint32_t time)
{
    mesh_effect* effect = table_get(effects, handle);
    if (effect == nullptr)
        return;
    float params[2] = {0.0f, 0.0f};
    assert(mesh_effect_param_count(effect->type) <= std::size(params));
    for (uint32_t i = 0; i < mesh_effect_param_count(effect->type); ++i)
        if (effect->functions[i] != 0)
            params[i] = function_value(functions, effect->functions[i], time);
    step_mesh_effect(*effect, params);
}
