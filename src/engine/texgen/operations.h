// The fourteen operations of texture nodes, pixel by pixel.
//
// Images are 3 x size x size bytes. Point operations treat them as flat bytes;
// neighbourhood operations (offset, ripple, blur, emboss) wrap around at the edges.
#pragma once

#include "model/records.h"

#include <cstdint>

// result = operation `code` of a and b with the node's values. `a` and `b` have
// 3 x size x size bytes; so has `result`, which may be `a` or `b`. `b` may be null for
// operations with one input. Codes that are no operation (also 255) leave the result.
void apply_texture_operation(uint8_t code, const float values[max_node_values], const uint8_t* a, const uint8_t* b,
    uint8_t* result, uint32_t size);
