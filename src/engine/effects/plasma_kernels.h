// Kernels of the two plasmas: a row of pixels at a time, from two fields P and Q.
//
// A byte of a channel is the truncated (C(q) + 1) * (C(p) + 1) * 63, 0..252: C is the cosine table, and p and q are
// what the channel's waves make of the fields. The fast forms compute plasma_run pixels at once. Rows of doubles that
// they read are padded to whole runs with any numbers of the row's own size; only the pixels asked for are written.
#pragma once

#include "content/instructions.h"
#include "effects/effect_picture.h"
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

// Whether all table steps of fields whose terms' magnitudes add up to no more than these bounds fit an integer with
// room to spare, which all but the plain forms below ask for; false for what is not a number.
bool plasma_steps_fit(std::span<const plasma_channel> channels, double p_bound, double q_bound);

// ---- fields that are sums ----------------------------------------------------------------

// Two fields whose values are a row's term plus a column's. Columns are padded with 0 to whole runs.
struct summed_plasma {
    const double* p_columns;
    const double* q_columns;
    std::span<const plasma_channel> channels;
};

// What a wave makes of the columns, apart from the rows: the table step of a pixel is the sum of the whole steps of
// its column and its row, and one more where what is left of both makes a step. The cosine of a sum of two angles comes
// from the cosines and sines of both.
struct wave_columns {
    float cosines[max_effect_side]; // of half the angle of the whole steps, times a factor
    float sines[max_effect_side];
    int32_t parts[max_effect_side];              // what is left of a step, of 2^30
    int32_t wholes[max_effect_side];             // steps
    int32_t least[max_effect_side / plasma_run]; // whole steps of a run of columns
    int32_t most[max_effect_side / plasma_run];
};

// Kept for one picture, for each channel.
struct summed_tables {
    wave_columns p[3];
    wave_columns q[3];
};

// Fills what rows of this width (1..512) read; the plain form needs no tables.
void fill_summed_tables(instruction_set set, const summed_plasma& plasma, uint32_t width, summed_tables& tables);

// Writes `count` pixels (1..) of one byte for each channel (1 or 3), of the row with these terms.
void summed_plasma_row(instruction_set set, const summed_plasma& plasma, const summed_tables& tables, double p_row,
    double q_row, uint8_t* out, uint32_t count);

// ---- fields on turned coordinates --------------------------------------------------------

// (1 - C((column + row) * scale)) * amplitude + drift.
struct turned_field {
    double scale; // table steps per pixel
    double amplitude;
    double drift;
};

// A row's own term and one for each column.
struct summed_field {
    const double* columns;
    double row;
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
