// Kernels of decoded pictures: components of pixels.
#pragma once

#include "content/instructions.h"

#include <cstddef>
#include <cstdint>

// `count` pixels of four bytes become as many of the first three, in place: the first 3 x count bytes of `pixels`.
// What the others are is left open.
void drop_fourth_components(instruction_set set, uint8_t* pixels, size_t count);
