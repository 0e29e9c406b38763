// Kernels of the two plasmas: a row of pixels at a time, from two fields P and Q.
//
// A byte of a channel is the truncated (C(q) + 1) * (C(p) + 1) * 63, 0..252: C is the cosine table, and p and q are
// what the channel's waves make of the fields. The fast forms compute plasma_run pixels at once. Rows of doubles that
// they read are padded to whole runs with any numbers of the row's own size; only the pixels asked for are written.
#pragma once

#include "content/instructions.h"
#include "texgen/cosine_table.h"

#include <cstdint>
#include <span>

constexpr uint32_t plasma_run = 64; // pixels

// How a field becomes a place in the cosine table.
struct plasma_wave {
    double density; // table steps per unit of the field
    double drift;   // table steps
};

// One colour: the product of two waves.
struct plasma_channel {
    plasma_wave p;
    plasma_wave q;
};

// Whether all table steps of fields within -bound..bound fit an integer with room to spare, which all but the plain
// forms below ask for; false for what is not a number.
bool plasma_steps_fit(std::span<const plasma_channel> channels, double p_bound, double q_bound);

// ---- fields that are sums ----------------------------------------------------------------

// The terms of a row's pixels: the row's one and one for each column.
struct summed_field {
    const double* columns;
    double row;
};

// Writes `count` pixels (1..) of one byte for each channel (1 or 3).
void summed_plasma_row(instruction_set set, std::span<const plasma_channel> channels, const summed_field& p,
    const summed_field& q, uint8_t* out, uint32_t count);

// ---- fields on turned coordinates --------------------------------------------------------

// (1 - C((column + row) * scale)) * amplitude + drift.
struct turned_field {
    double scale; // table steps per pixel
    double amplitude;
    double drift;
};

struct turned_plasma {
    turned_field p;
    turned_field q;
    std::span<const plasma_channel> channels;
};

// A field has only as many values as the cosine table has entries. What a channel's wave makes of each is kept here for
// one picture: half the cosine's angle has this cosine, times a factor. Four floats an entry, or one for one channel.
struct wave_table {
    float halves[cosine_table_size * 4];
};

struct turned_tables {
    wave_table p;
    wave_table q;
};

// Table steps that a field's rows take, `least` <= `most`.
struct step_range {
    double least;
    double most;
};

// Fills what rows within these steps read; the plain form needs no tables.
void fill_turned_tables(
    instruction_set set, const turned_plasma& plasma, step_range p, step_range q, turned_tables& tables);

// Writes `count` pixels (1..) of one byte for each channel (1 or 3).
void turned_plasma_row(instruction_set set, const turned_plasma& plasma, const turned_tables& tables,
    const summed_field& p, const summed_field& q, uint8_t* out, uint32_t count);
