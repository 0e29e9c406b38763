// The single kinds of mesh effects, as mesh_effect.cpp puts them together.
//
// Each init allocates the state and the mesh's arrays into an effect that has neither;
// an allocation that fails leaves a null behind (mesh_effect.cpp then frees the rest).
// Each step runs one update with finite parameters and recomputes positions and, where
// the kind has them, normals. Internal to this room.
#pragma once

#include "model/records.h"

#include <cstdint>
#include <cstdlib>

// Shared by the kinds.
template <typename T> T* allocate_cleared(size_t count)
{
    return static_cast<T*>(std::calloc(count, sizeof(T)));
}

// One draw of the C library's generator, 0 up to but not including 1.
inline double random_unit()
{
    return std::rand() / 2147483648.0;
}

// ---- waters: an N x N grid of vertices in the x-z plane, heights in y --------------------

constexpr uint32_t lake_side = 30; // also the centre wave's
constexpr uint32_t lake_2_side = 60;
constexpr uint32_t max_water_entries = lake_2_side * lake_2_side;

struct water_state {
    int32_t last;                         // whole time of the last step
    int32_t step_count;                   // since the last drop; "Lake water 2" only
    bool normals_made;                    // the mesh's normals belong to its heights; "Lake water 2" only
    int32_t fields[3][max_water_entries]; // side x side entries are used: before the step, and two that change places
};

void init_lake(mesh_effect& effect, uint32_t side);
void step_lake(mesh_effect& effect, float time);
void step_lake_2(mesh_effect& effect, float time);

struct centerwave_state {
    float last; // time of the last update
};

void init_centerwave(mesh_effect& effect);
void step_centerwave(mesh_effect& effect, float time);

// ---- points ------------------------------------------------------------------------------

constexpr uint32_t swirl_vertices = 256;

void init_swirl(mesh_effect& effect); // has no state
void step_swirl(mesh_effect& effect, float x, float y);

constexpr uint32_t swarm_size = 32;

// A coordinate of all particles, and its velocity per unit of time.
struct swarm_axis {
    float position[swarm_size];
    float velocity[swarm_size];
};

struct swarm_state {
    float last; // time of the last update
    swarm_axis axes[3];
};

void init_swarm(mesh_effect& effect);
void step_swarm(mesh_effect& effect, float time);
