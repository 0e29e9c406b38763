// Kernels of the generated pictures. Pixels are three bytes, words R | G << 8 | B << 16.
//
// The fast forms compute generator_run pixels at once. Rows that they read or fill for themselves are that long: padded
// to whole runs. Pictures get only the pixels asked for.
#pragma once

#include "content/instructions.h"
#include "texgen/fixed_scales.h"
#include "texgen/split_sums.h"

#include <cstddef>
#include <cstdint>

constexpr uint32_t generator_run = 64; // pixels

// Writes `count` (1..) pixels.
void store_words(instruction_set set, const uint32_t* words, uint8_t* out, uint32_t count);

// The rows of a sine plasma: pixel x has the colour of 127 + 63.5 * (across[x] + down), truncated.
struct sine_rows {
    const double* across;    // -1..1, padded with such numbers; for the plain form also what is not a number
    const uint32_t* palette; // 256 words: the colours of 0..254, and of what is not a number
    split_numbers values;    // room for 127 + 63.5 * across, split, padded
    byte_scale scales[3];    // of the colour; where one does not exist or is above 1, the palette does
};

// Fills the split values of `count` (1..) columns; the plain form needs none.
void prepare_sine_rows(instruction_set set, const sine_rows& rows, uint32_t count);

void sine_row(instruction_set set, const sine_rows& rows, double down, uint8_t* out, uint32_t count);

// Rings of two colours.
struct radial_rings {
    double inverse_radian;
    int32_t center;         // pixels from the left and from above
    int32_t offset;         // pixels that keep the centre's colour
    double center_color[3]; // nominally 0..1
    double margin_color[3];
};

// Whether the fast forms may be asked for these: an offset below the centre, and colours whose bytes fit an integer.
bool radial_rings_fit(const radial_rings& rings);

// Fills words 0..center of row `y`, those left of the centre and its own; the rest of a row mirrors them.
void radial_half_row(instruction_set set, const radial_rings& rings, uint32_t y, uint32_t* words);

// Whether the fast forms may be asked for noise of this colour: none of it is negative, or so large that a byte with 16
// bits behind it does not fit an integer.
bool noise_color_fits(const float color[3]);

// Writes `count` pixels of noise: draws of the linear congruential generator, times 255, times the colour, truncated.
void noise_pixels(instruction_set set, uint32_t state, const float color[3], uint8_t* out, size_t count);
