// The six generators: pictures made from nothing but parameters.
//
// Pictures are square, 8-bit R, G, B, row after row without gaps. Values become
// bytes by truncation, low eight bits.
#pragma once

#include "model/records.h"

#include <cstdint>

// Fills image.pixels (3 x size x size bytes, the caller's) from image.params. A kind
// beyond the catalogue leaves the pixels as they are. Needs the cosine and maze tables.
void generate_image(generated_image& image, uint32_t size);
