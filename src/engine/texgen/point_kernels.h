// Kernels of the operations on single bytes of pictures: rows of any length, at any address. `out` may be a source, not
// overlap one otherwise.
#pragma once

#include "content/instructions.h"

#include <cstddef>
#include <cstdint>

// out = 255 - a.
void invert_bytes(instruction_set set, const uint8_t* a, uint8_t* out, size_t count);
