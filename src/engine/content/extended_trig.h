// Sine and cosine in extended precision, fast on both word sizes.
//
// The 32-bit C library takes some 2.4 microseconds for an angle beyond 45 degrees
// and 60 nanoseconds below; a frame asks for thousands. So the quarter turns are
// taken off here first. Both word sizes compute the same bits; against the exact
// value the error is below 2^-63. Angles are radians; not-a-number and infinity
// give not-a-number.
#pragma once

#include <cassert>
#include <cmath>
#include <cstdint>

// A quarter turn in three parts. The first two are short, so that a number of
// quarter turns below 2^31 times either of them is exact.
constexpr long double quarter_turn_high = 0x6487ed51p-30L;
constexpr long double quarter_turn_middle = 0x85a308dp-61L;
constexpr long double quarter_turn_low = 0xc4c6628b80dc1cd1p-127L;
constexpr long double quarter_turns_per_radian = 0.636619772367581343075535053490057448L; // 2 / pi
constexpr long double max_reduced_angle = 1.0e9L; // radians; larger ones are left to the C library

struct sine_cosine {
    long double sine;
    long double cosine;
};

struct reduced_angle {
    long double rest;  // radians, within 45 degrees of 0 but for rounding
    uint32_t quadrant; // quarter turns taken off, modulo 4
};

inline bool is_reducible(long double angle)
{
    return std::fabs(angle) <= max_reduced_angle; // not-a-number is not
}

// `angle` within max_reduced_angle.
inline reduced_angle reduce_angle(long double angle)
{
    assert(is_reducible(angle));
    const long double half = angle < 0.0L ? -0.5L : 0.5L;
    const int32_t turns = static_cast<int32_t>(angle * quarter_turns_per_radian + half);
    const long double rest
        = ((angle - turns * quarter_turn_high) - turns * quarter_turn_middle) - turns * quarter_turn_low;
    return {rest, static_cast<uint32_t>(turns) & 3u};
}

inline long double extended_sine(long double angle)
{
    if (!is_reducible(angle))
        return sinl(angle);
    const reduced_angle reduced = reduce_angle(angle);
    const long double value = (reduced.quadrant & 1) != 0 ? cosl(reduced.rest) : sinl(reduced.rest);
    return (reduced.quadrant & 2) != 0 ? -value : value;
}

inline sine_cosine extended_sine_cosine(long double angle)
{
    if (angle == 0.0L) // nine of ten turns of a frame: most placements do not turn
        return {angle, 1.0L};
    if (!is_reducible(angle))
        return {sinl(angle), cosl(angle)};
    const reduced_angle reduced = reduce_angle(angle);
    const long double s = sinl(reduced.rest);
    const long double c = cosl(reduced.rest);
    switch (reduced.quadrant) {
    case 0:
        return {s, c};
    case 1:
        return {c, -s};
    case 2:
        return {-s, -c};
    }
    return {-c, s}; // three quarter turns
}
