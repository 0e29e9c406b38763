// Kernels of mipmaps: rows of pixels halved.
#pragma once

#include "content/instructions.h"

#include <cstddef>
#include <cstdint>

// Two rows, from which one of half as many pixels is made.
struct row_pair {
    const uint8_t* upper;
    const uint8_t* lower;
    size_t components; // 3 or 4
};

// out = `width` pixels, each the truncated mean of two by two: the rows have 2 x width pixels at least. `out` is apart.
void halve_row_pair(instruction_set set, const row_pair& rows, uint8_t* out, size_t width);
