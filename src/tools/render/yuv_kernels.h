// Kernels of the planes of luma and chroma: rows of pixels of any length, at any address. What is written overlaps
// nothing that is read.
//
// Weights are of bytes 0..255 in 1 / 2^20; all of them together, at most 2^20. Results are rounded to the nearest, by
// adding a half and cutting off.
#pragma once

#include "content/instructions.h"

#include <cstddef>
#include <cstdint>

constexpr uint32_t weight_bits = 20; // sums of four pixels times a weight stay within 32 bits

// The three bytes of pixels, each kind in a row of its own.
struct split_row {
    uint8_t* red;
    uint8_t* green;
    uint8_t* blue;
};

// Splits `count` pixels of three bytes.
void split_pixels(instruction_set set, const uint8_t* rgb, const split_row& to, size_t count);

struct luma_weights {
    uint32_t red;
    uint32_t green;
    uint32_t blue;
};

// 16 + red x its weight + ...
void luma_row(instruction_set set, const split_row& row, const luma_weights& weights, uint8_t* luma, size_t count);

// What a chroma plane is made of: one colour of full weight, less the two others.
struct chroma_weights {
    uint32_t first_other;  // red, for Cb; green, for Cr
    uint32_t second_other; // green, for Cb; blue, for Cr
};

// 128 + the mean of 2 x 2 pixels, of blue less the others (Cb), of red less the others (Cr). `count` samples: rows of
// twice as many pixels.
void chroma_row(instruction_set set, const split_row& top, const split_row& bottom, const chroma_weights& for_cb,
    const chroma_weights& for_cr, uint8_t* cb, uint8_t* cr, size_t count);
