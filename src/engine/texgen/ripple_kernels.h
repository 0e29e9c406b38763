// Kernels of the operation "Ripple": rows of displaced pixels.
#pragma once

#include "content/instructions.h"

#include <cstddef>
#include <cstdint>

constexpr uint32_t ripple_run = 64;                // pixels that the fast forms compute at once
constexpr uint32_t max_fast_ripple_side = 1 << 14; // pixels

// How many columns a row's shifts have room for: whole runs.
constexpr size_t ripple_columns(uint32_t size)
{
    return (size_t{size} + ripple_run - 1) / ripple_run * ripple_run;
}

// A picture as words R | G << 8 | B << 16, whose first row and column come once more behind its last, and a word more:
// every pixel has its right and its lower neighbour, and two words can be read at once.
constexpr size_t ripple_words(uint32_t size)
{
    return (size_t{size} + 1) * (size_t{size} + 1) + 1;
}

void spread_to_words(const uint8_t* pixels, uint32_t size, uint32_t* words);

struct ripple_source {
    const uint8_t* pixels; // size x size, three bytes each
    const uint32_t* words; // the same, for the fast forms
    uint32_t size;
};

// What the fast forms remember of a run of columns from row to row; a first fraction below 0
// says that there is nothing yet.
struct last_corner_run {
    double fraction[ripple_run]; // of the place along y
    double weight[ripple_run];   // of the corner right and below
};

// What moves a row's pixels.
struct ripple_shift {
    uint32_t y;
    double x_shift;                // pixels
    const double* y_shifts;        // pixels; ripple_columns(size) of them
    last_corner_run* last_corners; // for the fast forms: one for each run of columns
};

// Writes a row: size pixels of three bytes. The fast forms ask for shifts within -size..size, and a size of at most
// max_fast_ripple_side.
void ripple_row(instruction_set set, const ripple_source& source, const ripple_shift& shift, uint8_t* out);
