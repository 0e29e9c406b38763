// The operation "Ripple": a picture whose pixels are displaced in waves and mixed from the four around their place.
#pragma once

#include <cstdint>

// Makes `out` of `a`, both size x size pixels of three bytes; they do not overlap. `values` are the amplitudes of x and
// y, as fractions of the picture's side, and the whole waves across it of x and y. Any numbers will do. Without memory
// for a copy of the picture it takes longer.
void ripple_picture(const float values[4], const uint8_t* a, uint8_t* out, uint32_t size);
