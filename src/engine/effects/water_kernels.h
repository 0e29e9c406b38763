// Kernels of the waters: a wave that spreads, and the surface between two steps. Fields are rows of whole heights, one
// after the other.
#pragma once

#include "content/instructions.h"

#include <cstdint>

// One step of the wave equation for `count` entries: an entry of `b` becomes half the sum of the four around it in `a`,
// less itself, less a thirty-second of that, at most 4. Sums wrap at 32 bits, but not before they are halved. Reads one
// entry before and behind those of `a`, and `side` entries.
void spread_wave_entries(instruction_set set, const int32_t* a, int32_t* b, uint32_t side, uint32_t count);

// The three fields that a surface is mixed of.
struct water_fields {
    const int32_t* before; // the last step
    const int32_t* heights[2];
};

// A fifth of the fields' mix, `phase` (0..1) after the step.
void blend_heights(instruction_set set, const water_fields& fields, double phase, uint32_t count, float* heights);

// The same, truncated to whole heights.
void blend_whole_heights(instruction_set set, const water_fields& fields, double phase, uint32_t count, float* heights);
