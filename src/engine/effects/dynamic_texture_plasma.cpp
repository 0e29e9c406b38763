#include "effects/dynamic_texture_plasma.h"

#include "content/numbers.h"
#include "effects/plasma_kernels.h"
#include "texgen/cosine_table.h"

#include <algorithm>
#include <cassert>
#include <cmath>

static_assert(max_effect_side % plasma_run == 0);

constexpr double steps_per_radian = 651.8986469; // 4096 / (2 pi): entries of the cosine table

// What sets the three colours apart. A channel takes every table of six pairs at its
// own pair (P's, then Q's): 0..5 sway, 6..11 drift with time, 12..17 density.
constexpr double colour_coefficients[18] = {0.1, 0.12, 0.09, 0.07, 0.13, 0.135, // sway
    0.18, 0.2, 0.17, 0.22, 0.12, 0.2,                                           // drift
    0.12, 0.15, 0.13, 0.14, 0.1, 0.08};                                         // density

// The C library's double functions differ in their last bit between word sizes and
// processors; rounded from extended precision they agree.
static double cosine(double radians)
{
    return static_cast<double>(std::cos(static_cast<long double>(radians)));
}

static double sine(double radians)
{
    return static_cast<double>(std::sin(static_cast<long double>(radians)));
}

static double table_cosine(double steps)
{
    assert(cosine_table[0] == 1.0f); // build_cosine_table was called
    return static_cast<double>(cosine_at(truncate_to_int(steps)));
}

// ---- colours -----------------------------------------------------------------------------

static plasma_channel make_channel(uint32_t channel, double cb, double cc, double t)
{
    assert(channel < 3);
    const double* k = colour_coefficients + 2 * channel;
    return {
        .p = {.density = (k[0] * (cb - 1.0) + 1.0) * k[12] * steps_per_radian, .drift = k[6] * t * steps_per_radian},
        .q = {.density = (k[1] * (cc - 1.0) + 1.0) * k[13] * steps_per_radian, .drift = k[7] * t * steps_per_radian}};
}

namespace {

struct colour_waves {
    plasma_channel channels[3]; // R, G, B
};

} // namespace

static colour_waves make_colours(double cb, double cc, double t)
{
    return {{make_channel(0, cb, cc, t), make_channel(1, cb, cc, t), make_channel(2, cb, cc, t)}};
}

// Times so far away that steps leave the integers, and what is not a number, go the plain way.
static instruction_set instructions_for(std::span<const plasma_channel> channels, double p_bound, double q_bound)
{
    return plasma_steps_fit(channels, p_bound, q_bound) ? best_instructions() : instructions_plain;
}

// ---- the two fields ----------------------------------------------------------------------
//
// Each is a function of a row's term and a column's term. Columns beyond the picture's width, up to a whole run of the
// kernels, are 0.

void render_plasma(const effect_picture& out, float step)
{
    assert(out.width <= max_effect_side);
    const double t = 0.5 * static_cast<double>(step);
    const double amplitude = sine(0.1 * t) + 1.88;
    const double c = cosine(0.01 * t);
    const double s = sine(0.01 * t);
    const double a = s * amplitude;
    const double b = (1.0 - c) * amplitude; // not the cosine: the field shears as it turns
    const double ca = cosine(0.11 * t);
    const double cb = cosine(0.13 * t + 6.0);
    const double cc = cosine(0.17 * t + 8.0);
    const double fy = (0.2 * ca + 0.8) * 12.96912246068074;
    const double fx = (0.3 * ca + 0.7) * 9.72684185518603;
    const colour_waves colours = make_colours(cb, cc, t);
    const auto channels = std::span(colours.channels).first(out.channels);

    double p_columns[max_effect_side] = {};
    double q_columns[max_effect_side] = {};
    for (uint32_t x = 0; x < out.width; ++x) {
        const double column_term = (1.0 - table_cosine(x * fx)) * 63.0 + 0.06 * t;
        p_columns[x] = amplitude * c * column_term;
        q_columns[x] = a * column_term;
    }
    const double farthest = 2.0 * (126.0 + 0.08 * std::fabs(t)); // the sum of a row's and a column's term
    const double bound = 3.0 * farthest; // no factor of a term is larger than the amplitude's 2.88
    const instruction_set set = instructions_for(channels, bound, 2.0 * bound);
    const summed_plasma plasma = {p_columns, q_columns, channels};
    summed_tables tables; // for one picture
    fill_summed_tables(set, plasma, out.width, tables);

    uint8_t* row = out.pixels;
    for (uint32_t y = 0; y < out.height; ++y, row += out.width * out.channels) {
        const double row_term = (1.0 - table_cosine(y * fy)) * 63.0 + 0.08 * t;
        summed_plasma_row(set, plasma, tables, a * row_term, b * row_term, row, out.width);
    }
}

// The table steps of a field between the corners of a picture, where it is least and most.
static step_range steps_between(double columns, double rows, double scale)
{
    return {(std::min(columns, 0.0) + std::min(rows, 0.0)) * scale - 1.0,
        (std::max(columns, 0.0) + std::max(rows, 0.0)) * scale + 1.0};
}

void render_rotating_plasma(const effect_picture& out, float step)
{
    assert(out.width <= max_effect_side);
    const double t = 0.5 * static_cast<double>(step);
    const double a = (sine(0.1 * t) + 1.88) * 20.0;
    const double amplitude = 63.0 * a;
    const double ca = cosine(0.11 * t);
    const double gx = (0.0024543671875 * ca + 0.00981746875) * steps_per_radian;
    const double gy = (0.0027611630859375 * ca + 0.0064427138671875) * steps_per_radian;
    const double cb = cosine(0.13 * t) + 6.0; // outside the cosine, unlike the other plasma: it makes the look
    const double cc = cosine(0.17 * t) + 8.0;
    const double sin_r = sine(0.15 * t);
    const double cos_r = cosine(0.15 * t);
    const colour_waves colours = make_colours(cb, cc, t);
    const auto channels = std::span(colours.channels).first(out.channels);
    const turned_plasma plasma = {.p = {.scale = gx, .amplitude = amplitude, .drift = 0.08 * a * t},
        .q = {.scale = gy, .amplitude = amplitude, .drift = 0.06 * a * t},
        .channels = std::span(colours.channels).first(out.channels)};

    double p_columns[max_effect_side] = {};
    double q_columns[max_effect_side] = {};
    for (uint32_t x = 0; x < out.width; ++x) {
        p_columns[x] = cos_r * x;
        q_columns[x] = sin_r * x;
    }
    const double bound = 2.0 * amplitude + 0.08 * a * std::fabs(t);
    const instruction_set set = instructions_for(plasma.channels, bound, bound);
    turned_tables tables; // for one picture
    fill_turned_tables(set, plasma, steps_between(cos_r * out.width, sin_r * out.height, gx),
        steps_between(sin_r * out.width, (1.0 - cos_r) * out.height, gy), tables);

    uint8_t* row = out.pixels;
    for (uint32_t y = 0; y < out.height; ++y, row += out.width * out.channels)
        turned_plasma_row(set, plasma, tables, {p_columns, sin_r * y}, {q_columns, (1.0 - cos_r) * y}, row, out.width);
}
