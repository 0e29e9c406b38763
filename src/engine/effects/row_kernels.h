// Kernels of the dynamic textures whose rows are sums of a row's and a column's value.
//
// The fast forms compute effect_run pixels at once. What they read is that long: rows of bytes and doubles are padded
// to whole runs, with doubles of the row's own size. Only the pixels asked for are written.
#pragma once

#include "content/instructions.h"
#include "texgen/split_sums.h"

#include <cstdint>

constexpr uint32_t effect_run = 64; // pixels

// Writes `count` pixels R, G, B: one red for all, the others from `green` and `blue`.
void interleave_row(
    instruction_set set, uint8_t red, const uint8_t* green, const uint8_t* blue, uint8_t* out, uint32_t count);

// Values of columns, to which a row adds its own; all within -1..1.
struct column_sums {
    const double* columns;
    split_numbers scaled_columns; // the same times 255, split; padded, too
    double row;
};

// Writes `count` pixels R, G, B: 255 times the sums, truncated, of which a byte keeps the low eight bits, and 255.
void normal_map_row(
    instruction_set set, const column_sums& red, const column_sums& green, uint8_t* out, uint32_t count);
