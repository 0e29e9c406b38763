// Mesh effects: waters, swirl and swarm, simulated on the processor.
//
// Pure computation. The state and the arrays of the mesh belong to the record
// (free_mesh_effect). Chance comes from the C library's rand.
#pragma once

#include "model/record_table.h"
#include "model/records.h"

#include <cstddef>
#include <cstdint>
#include <span>

// Allocates the state and the mesh of effect.type. A kind beyond the catalogue gets
// neither.
void init_mesh_effect(mesh_effect& effect);

// Frees state and mesh; twice is harmless.
void free_mesh_effect(mesh_effect& effect);

// Bytes of a kind's state, for those who copy it; 0 for kinds without one.
size_t mesh_effect_state_bytes(uint32_t type);

// Animated parameters of a kind: 2 for the swirl, else 1.
uint32_t mesh_effect_param_count(uint32_t type);

// Runs one update with the parameter values (at least two entries) and recomputes
// normals where the kind has them. Not-a-number and infinity change nothing.
void step_mesh_effect(mesh_effect& effect, std::span<const float> params);

// Evaluates the parameters at `time` (handle 0 gives 0, a dangling one 1.0) and steps.
// A dangling effect does nothing.
void update_mesh_effect(
    uint32_t handle, const table<mesh_effect>& effects, const table<animation_function>& functions, uint32_t time);
