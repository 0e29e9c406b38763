// Kernels of the operations that look at a pixel and the eight around it: square pictures of 3 bytes a pixel, which
// wrap around at the edges. Source and result are apart. Any size from 1.
#pragma once

#include "content/instructions.h"

#include <cstdint>

// out = the sum of nine pixels, times 0.111111111, truncated.
void blur_picture(instruction_set set, const uint8_t* a, uint8_t* out, uint32_t size);

// out = a relief, lit from one of four corners: the pixel itself, what is brighter there, what is darker opposite.
// Directions: 1..4.
void emboss_picture(instruction_set set, uint32_t direction, const uint8_t* a, uint8_t* out, uint32_t size);
