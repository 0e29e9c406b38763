// Frames, seconds and samples of sound: exact, on whole numbers.
//
// Frame n stands at n * denominator / numerator seconds. 64-bit arithmetic throughout;
// a rate with a zero in it counts as 1 / 1.
#pragma once

#include <cstdint>

struct frame_rate {
    uint32_t numerator = 25;  // frames ...
    uint32_t denominator = 1; // ... in so many seconds
};

// Where frame `frame` stands, in seconds, rounded once.
double time_of_frame(uint64_t frame, frame_rate rate);

// The number of the sample that sounds where frame `frame` begins: the last one that
// has begun by then (rounded down). Segments of a video that meet at a frame so meet
// at a sample too. Saturates at the greatest 64-bit number.
uint64_t sample_of_frame(uint64_t frame, frame_rate rate, uint32_t samples_per_second);
