#include "effects/dynamic_texture_plasma.h"

#include "content/numbers.h"
#include "texgen/cosine_table.h"

#include <cassert>
#include <cmath>
#include <iterator>

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

namespace {

struct wave {
    double density; // table steps per unit of the field
    double drift;   // table steps
};

struct colour_channel {
    wave p;
    wave q;
};

} // namespace

static colour_channel make_channel(uint32_t channel, double cb, double cc, double t)
{
    assert(channel < 3);
    const double* k = colour_coefficients + 2 * channel;
    return {
        .p = {.density = (k[0] * (cb - 1.0) + 1.0) * k[12] * steps_per_radian, .drift = k[6] * t * steps_per_radian},
        .q = {.density = (k[1] * (cc - 1.0) + 1.0) * k[13] * steps_per_radian, .drift = k[7] * t * steps_per_radian}};
}

namespace {

struct colour_waves {
    colour_channel channels[3]; // R, G, B
};

} // namespace

static colour_waves make_colours(double cb, double cc, double t)
{
    return {{make_channel(0, cb, cc, t), make_channel(1, cb, cc, t), make_channel(2, cb, cc, t)}};
}

// Both factors lie in 0..2, so that the value lies in 0..252.
static uint8_t channel_value(const colour_channel& channel, double p, double q)
{
    const double from_q = table_cosine(channel.q.density * q + channel.q.drift) + 1.0;
    const double from_p = table_cosine(channel.p.density * p + channel.p.drift) + 1.0;
    return low_byte(truncate_to_int(from_q * from_p * 63.0));
}

// Writes one pixel and returns the place of the next.
static uint8_t* write_pixel(uint8_t* out, uint32_t channels, const colour_waves& colours, double p, double q)
{
    assert(channels <= std::size(colours.channels));
    for (uint32_t c = 0; c < channels; ++c)
        *out++ = channel_value(colours.channels[c], p, q);
    return out;
}

// ---- the two fields ----------------------------------------------------------------------

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

    double column_terms[max_effect_side];
    for (uint32_t x = 0; x < out.width; ++x)
        column_terms[x] = (1.0 - table_cosine(x * fx)) * 63.0 + 0.06 * t;

    uint8_t* pixel = out.pixels;
    for (uint32_t y = 0; y < out.height; ++y) {
        const double row_term = (1.0 - table_cosine(y * fy)) * 63.0 + 0.08 * t;
        for (uint32_t x = 0; x < out.width; ++x) {
            const double p = amplitude * c * column_terms[x] + a * row_term;
            const double q = a * column_terms[x] + b * row_term;
            pixel = write_pixel(pixel, out.channels, colours, p, q);
        }
    }
}

void render_rotating_plasma(const effect_picture& out, float step)
{
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

    uint8_t* pixel = out.pixels;
    for (uint32_t y = 0; y < out.height; ++y) {
        for (uint32_t x = 0; x < out.width; ++x) {
            const double along = (sin_r * y + cos_r * x) * gx;
            const double across = (sin_r * x + (1.0 - cos_r) * y) * gy;
            const double p = (1.0 - table_cosine(along)) * amplitude + 0.08 * a * t;
            const double q = (1.0 - table_cosine(across)) * amplitude + 0.06 * a * t;
            pixel = write_pixel(pixel, out.channels, colours, p, q);
        }
    }
}
