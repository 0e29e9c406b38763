#include "sound_cut.h"

#include <algorithm>

std::vector<int16_t> fit_sound(std::span<const int16_t> pairs, uint64_t first, uint64_t length)
{
    std::vector<int16_t> result(static_cast<size_t>(length * 2), 0);
    const uint64_t available = pairs.size() / 2;
    if (first < available) {
        const uint64_t count = std::min(length, available - first);
        std::copy_n(pairs.begin() + static_cast<std::ptrdiff_t>(first * 2), count * 2, result.begin());
    }
    return result;
}

std::vector<int16_t> fit_sound_to_frames(std::span<const int16_t> pairs, uint32_t samples_per_second,
    uint64_t first_frame, uint64_t end_frame, frame_rate rate)
{
    if (end_frame <= first_frame)
        return {};
    const uint64_t first = sample_of_frame(first_frame, rate, samples_per_second);
    return fit_sound(pairs, first, sample_of_frame(end_frame, rate, samples_per_second) - first);
}
