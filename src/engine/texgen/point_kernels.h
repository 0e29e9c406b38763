// Kernels of the operations on single bytes of pictures: rows of any length, at any address. `out` may be a source, not
// overlap one otherwise.
//
// Scales are real numbers, products and sums of them are double; they become whole by truncate_to_int. Any scale is
// good: what passes 255 is 255, what is too large for an integer, or no number, is the least one.
#pragma once

#include "content/instructions.h"

#include <cstddef>
#include <cstdint>

struct scaled_bytes {
    const uint8_t* bytes;
    float scale;
};

struct byte_pair {
    const uint8_t* a;
    const uint8_t* b;
    float scale; // of the product
};

// out = 255 - a.
void invert_bytes(instruction_set set, const uint8_t* a, uint8_t* out, size_t count);

// out = the scaled byte. Below 0 its low eight bits are kept.
void scale_bytes(instruction_set set, const scaled_bytes& a, uint8_t* out, size_t count);

// out = the sum of both, scaled; below 0 it is 0.
void add_bytes(instruction_set set, const scaled_bytes& a, const scaled_bytes& b, uint8_t* out, size_t count);

// out = the scaled product. Below 0 one keeps its low eight bits, the other is 0.
void multiply_bytes_capped(instruction_set set, const byte_pair& pair, uint8_t* out, size_t count);
void multiply_bytes_clamped(instruction_set set, const byte_pair& pair, uint8_t* out, size_t count);

// out = the greater, the lesser of both, scaled and truncated. Below 0 its low eight bits are kept.
void take_greater_bytes(instruction_set set, const scaled_bytes& a, const scaled_bytes& b, uint8_t* out, size_t count);
void take_lesser_bytes(instruction_set set, const scaled_bytes& a, const scaled_bytes& b, uint8_t* out, size_t count);
