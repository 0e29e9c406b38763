// The clock of a render: frames, the moments of the command line, and ticks.
//
// Frame n stands at exactly n / rate seconds and shows the tick (1/100 s) that has begun
// by then, as the player's clock would. Everything is whole numbers: a run on another
// machine gives the same ticks.
#pragma once

#include "tools/frames/frame_rate.h"

#include <cstdint>
#include <string_view>

// Rates: 1/1000 to 1000 frames a second, both numbers at most this.
constexpr uint32_t max_rate_number = 1000000;

// The tick of a frame, saturated at the greatest 32-bit number.
uint32_t tick_of_frame(uint64_t frame, frame_rate rate);

enum moment_kind : int32_t { moment_unset, moment_time, moment_frame, moment_share };

// A point of a production as the command line gives it.
struct moment {
    moment_kind kind = moment_unset;
    uint64_t value = 0; // time: microseconds; frame: its number; share: 1/1000 of a per cent
};

// Reads "12.5", "1:23.25" (m:ss.mmm), "750f" (frame 750) or "40%" (of the production);
// at most six decimals for times and three for per cents. False for anything else, for
// more than 100 % and for more than a day.
bool read_moment(std::string_view text, moment& result);

// The first frame at or after a moment: where a segment begins, and where the one before
// it ends. `end` is the number of frames of the whole production.
uint64_t frame_from(const moment& when, frame_rate rate, uint64_t end);

// The frame that is on the screen at a moment; 100 % is the last one.
uint64_t frame_at(const moment& when, frame_rate rate, uint64_t end);

// Reads "60", "30000/1001" and decimals: 23.976 (or 23.98), 29.97, 47.952, 59.94, 119.88 and
// 239.76 are the whole number above them times 1000/1001; others are taken exactly, with at
// most three decimals ("12.5" is 25/2). False for anything else and for rates out of range.
bool read_frame_rate(std::string_view text, frame_rate& rate);
