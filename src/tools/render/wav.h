// Sound beside a video: cut and padded to the sample, as a WAV file.
//
// A "sample" here is one of each of the two channels: samples are interleaved pairs
// (left, right), 16 bits.
#pragma once

#include "frame_rate.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

constexpr uint32_t wav_header_size = 44;                       // bytes
constexpr uint64_t wav_max_samples = (0xFFFFFFFFull - 36) / 4; // what its 32-bit lengths can tell

// Samples `first` .. `first` + `length` - 1 of `pairs` (an odd last number is left out);
// silence where they have ended.
std::vector<int16_t> fit_sound(std::span<const int16_t> pairs, uint64_t first, uint64_t length);

// The same for the frames first_frame .. end_frame - 1 of a video: from the sample at
// the beginning of the first to the one at the beginning of the end.
std::vector<int16_t> fit_sound_to_frames(std::span<const int16_t> pairs, uint32_t samples_per_second,
    uint64_t first_frame, uint64_t end_frame, frame_rate rate);

// The 44 bytes in front of `samples` samples: RIFF, 16-bit PCM, two channels.
std::vector<uint8_t> wav_header(uint64_t samples, uint32_t samples_per_second);

// False with `error` also for more than wav_max_samples.
[[nodiscard]] bool write_wav(
    const std::string& path, std::span<const int16_t> pairs, uint32_t samples_per_second, std::string& error);
