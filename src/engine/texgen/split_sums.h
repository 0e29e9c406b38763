// Sums of two real numbers, truncated, in words of 16 bits: a kernel makes sixteen at once where doubles go by four.
//
// A number is split into the whole number below it and what is left, in 1 / 65536. The whole number below a sum is then
// that of both whole numbers, and one more where what is left of both makes one. Where the sum is so near to a whole
// number that the parts' last bits decide, it is doubtful, and has to be computed from the numbers themselves.
#pragma once

#include "content/instructions.h"

#include <cstddef>
#include <cstdint>

// Many numbers, one after the other. Parts are less 32768, since processors compare signed words.
struct split_numbers {
    int16_t* wholes;
    int16_t* parts;
};

// A number that is added to many.
struct split_addend {
    int16_t whole;
    int16_t part;       // made so that doubtful sums are the least words
    int16_t most_alone; // a part up to this makes no whole number with this one's
};

constexpr int16_t doubtful_sum = -32768 + 3; // a sum of parts below this is in doubt

// The part of a number above the whole number below it, 0..65535.
FAST_INLINE int32_t split_part(double value, int32_t whole)
{
    const auto part = static_cast<int32_t>((value - whole) * 65536.0);
    return part < 65535 ? part : 65535;
}

// The whole number below a number that an integer holds, or itself.
FAST_INLINE int32_t whole_below(double value)
{
    const auto truncated = static_cast<int32_t>(value);
    return truncated - (value < truncated ? 1 : 0);
}

// Fills entry `n`; `value` within -16000..16000.
FAST_INLINE void split_into(const split_numbers& numbers, size_t n, double value)
{
    const int32_t whole = whole_below(value);
    numbers.wholes[n] = static_cast<int16_t>(whole);
    numbers.parts[n] = static_cast<int16_t>(split_part(value, whole) - 32768);
}

FAST_INLINE split_addend make_split_addend(double value)
{
    const int32_t whole = whole_below(value);
    const int32_t part = split_part(value, whole);
    return {.whole = static_cast<int16_t>(whole),
        .part = static_cast<int16_t>(part + 2), // what both parts have lost is less than 2
        .most_alone = static_cast<int16_t>(32767 - part)};
}

// The whole number below a sum.
FAST_INLINE int16_t whole_of_sum(int16_t whole, int16_t part, const split_addend& addend)
{
    return static_cast<int16_t>(whole + addend.whole + (part > addend.most_alone ? 1 : 0));
}

// How certain that is: not below doubtful_sum. Wraps, since parts are those of a turn.
FAST_INLINE int16_t certainty_of_sum(int16_t part, const split_addend& addend)
{
    return static_cast<int16_t>(part + addend.part);
}
