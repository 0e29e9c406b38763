// Sound beside a video: cut and padded to the sample.
//
// A "sample" here is one of each of the two channels: samples are interleaved pairs
// (left, right), 16 bits.
#pragma once

#include "tools/frames/frame_rate.h"

#include <cstdint>
#include <span>
#include <vector>

// Samples `first` .. `first` + `length` - 1 of `pairs` (an odd last number is left out);
// silence where they have ended.
std::vector<int16_t> fit_sound(std::span<const int16_t> pairs, uint64_t first, uint64_t length);

// The same for the frames first_frame .. end_frame - 1 of a video: from the sample at
// the beginning of the first to the one at the beginning of the end.
std::vector<int16_t> fit_sound_to_frames(std::span<const int16_t> pairs, uint32_t samples_per_second,
    uint64_t first_frame, uint64_t end_frame, frame_rate rate);
