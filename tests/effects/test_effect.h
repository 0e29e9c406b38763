// What the tests of mesh effects share: an effect that frees itself, and views of what
// it holds.
#pragma once

#include "effects/mesh_effect.h"
#include "effects/mesh_effect_kinds.h"
#include "texgen/cosine_table.h"

#include <array>
#include <cstdlib>
#include <vector>

// An effect that is freed at the end of the test.
struct test_effect {
    mesh_effect e;

    explicit test_effect(uint32_t type)
        : e{}
    {
        build_cosine_table();
        e.type = type;
        init_mesh_effect(e);
    }
    ~test_effect()
    {
        free_mesh_effect(e);
    }
    test_effect(const test_effect&) = delete;
    test_effect& operator=(const test_effect&) = delete;
};

inline void step(test_effect& effect, float first, float second = 0.0f)
{
    const float params[2] = {first, second};
    step_mesh_effect(effect.e, params);
}

inline water_state& water(test_effect& effect)
{
    return *static_cast<water_state*>(effect.e.state);
}

inline swarm_state& swarm(test_effect& effect)
{
    return *static_cast<swarm_state*>(effect.e.state);
}

// A particle's place and velocity: x, y, z, vx, vy, vz.
inline std::array<float, 6> particle(const swarm_state& swarm, uint32_t i)
{
    std::array<float, 6> values;
    for (uint32_t axis = 0; axis < 3; ++axis) {
        values[axis] = swarm.axes[axis].position[i];
        values[3 + axis] = swarm.axes[axis].velocity[i];
    }
    return values;
}

inline void place_particle(swarm_state& swarm, uint32_t i, const std::array<float, 6>& values)
{
    for (uint32_t axis = 0; axis < 3; ++axis) {
        swarm.axes[axis].position[i] = values[axis];
        swarm.axes[axis].velocity[i] = values[3 + axis];
    }
}

inline std::vector<float> positions(const test_effect& effect)
{
    return {effect.e.mesh.positions, effect.e.mesh.positions + effect.e.mesh.vertex_count * 3};
}

inline std::vector<float> normals(const test_effect& effect)
{
    return {effect.e.mesh.normals, effect.e.mesh.normals + effect.e.mesh.vertex_count * 3};
}

inline std::vector<float> heights(const test_effect& effect)
{
    std::vector<float> result;
    for (uint32_t k = 0; k < effect.e.mesh.vertex_count; ++k)
        result.push_back(effect.e.mesh.positions[3 * k + 1]);
    return result;
}

// Real arithmetic on the C library's generator, as the tests replay it.
inline double random_real()
{
    return std::rand() / 2147483648.0;
}
