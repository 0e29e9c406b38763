#include "texgen/rounded_sine.h"

#include "content/extended_trig.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

static_assert(std::numeric_limits<long double>::digits == 64);

constexpr int32_t quarter_parts = 32; // directions in a quarter turn
constexpr int32_t turn_parts = 4 * quarter_parts;
constexpr double largest_angle = 1e8; // as parts it fits an integer

namespace {

struct extended_direction {
    long double cosine;
    long double sine;
};

struct direction_table {
    extended_direction entries[turn_parts];
};

} // namespace

// `n` parts from 0, 0..32. No angle above an eighth of a turn is asked for, where its last bit would matter more.
static constexpr extended_direction direction_of(int32_t n)
{
    constexpr long double part = 3.14159265358979323846264338327950288L / (2 * quarter_parts);
    const long double angle = part * (n <= quarter_parts / 2 ? n : quarter_parts - n);
    const extended_direction made = {__builtin_cosl(angle), __builtin_sinl(angle)};
    return n <= quarter_parts / 2 ? made : extended_direction{made.sine, made.cosine};
}

static constexpr direction_table make_directions()
{
    direction_table made = {};
    for (int32_t n = 0; n < quarter_parts; ++n) {
        const extended_direction first = direction_of(n);
        made.entries[n] = first;
        made.entries[n + quarter_parts] = {-first.sine, first.cosine};
        made.entries[n + 2 * quarter_parts] = {-first.cosine, -first.sine};
        made.entries[n + 3 * quarter_parts] = {first.sine, -first.cosine};
    }
    return made;
}

static constexpr direction_table directions = make_directions(); // by the compiler, rounded once

// The sine of an angle by a near direction; the rest is below 1/40, so that double does for all but the first terms of
// its series. Wrong by less than four units of the last of 64 bits.
static long double near_sine(double angle)
{
    const double parts = angle * (quarter_parts * static_cast<double>(quarter_turns_per_radian));
    const auto nearest = static_cast<int32_t>(parts + (parts < 0.0 ? -0.5 : 0.5));
    constexpr long double as_quarter = 1.0L / quarter_parts;
    const long double rest
        = ((angle - nearest * (quarter_turn_high * as_quarter)) - nearest * (quarter_turn_middle * as_quarter))
        - nearest * (quarter_turn_low * as_quarter);
    const extended_direction& from = directions.entries[static_cast<uint32_t>(nearest) % turn_parts];
    const long double square = rest * rest;
    const auto z = static_cast<double>(square);
    const double sine_rest = z * (-1.0 / 6 + z * (1.0 / 120 + z * (-1.0 / 5040 + z * (1.0 / 362880))));
    const double cosine_rest = z * z * (1.0 / 24 + z * (-1.0 / 720 + z * (1.0 / 40320)));
    const long double sine = rest + rest * sine_rest;
    const long double cosine_less_1 = cosine_rest - 0.5L * square;
    return from.sine + (from.sine * cosine_less_1 + from.cosine * sine);
}

// Whether two that differ by a few units of the last bit are rounded to different doubles: the eleven bits that a
// double lacks are near their half.
static bool is_between_doubles(long double value)
{
    uint64_t mantissa = 0;
    std::memcpy(&mantissa, &value, sizeof mantissa);
    constexpr uint64_t doubt = 8;
    return ((mantissa - (1024 - doubt)) & 2047) <= 2 * doubt;
}

// Close to many half turns little of the angle is left, and the third part of a quarter turn is not long enough for it:
// off by 2^-128 of the angle.
static bool has_lost_digits(long double value, double angle)
{
    return std::fabs(value) < static_cast<long double>(std::fabs(angle)) * 0x1p-60L;
}

double rounded_sine(double angle)
{
    constexpr double least = 1e-200; // smaller ones are near the end of the doubles
    if (std::fabs(angle) >= least && std::fabs(angle) <= largest_angle) {
        const long double value = near_sine(angle);
        if (!has_lost_digits(value, angle) && !is_between_doubles(value))
            return static_cast<double>(value);
    }
    return static_cast<double>(std::sin(static_cast<long double>(angle)));
}
