// A kernel for the particles of a swarm, which are pulled toward the origin.
#pragma once

#include "content/instructions.h"
#include "effects/mesh_effect_kinds.h"

// Moves all particles by `dt` (0 or more, finite) of their velocities, and then these by the pull. What passes a
// single's range stays at its end. Writes the new places to `vertices`, three coordinates each.
void move_particles(instruction_set set, swarm_axis (&axes)[3], double dt, float* vertices);

// The places as they are.
void write_particles(const swarm_axis (&axes)[3], float* vertices);
