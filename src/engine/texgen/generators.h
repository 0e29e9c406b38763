// The generators: pictures made from nothing but parameters.
//
// Pictures are square, 8-bit R, G, B, row after row without gaps. Parameters are
// single precision, everything between is computed in double; values become bytes
// by truncation, low eight bits. The same parameters give the same bytes in every
// build. No value of a parameter is refused: counts and sizes are brought into
// range, and what is not a number acts as the smallest.
#pragma once

#include "model/records.h"

#include <cstdint>

// Fills image.pixels (3 x size x size bytes, the caller's) from image.params. A kind
// beyond the catalogue, null pixels or size 0 change nothing. Needs the maze tables.
void generate_image(generated_image& image, uint32_t size);
