#include "music/music.h"

#include <algorithm>

constexpr uint32_t bytes_per_frame = 4;              // two channels of 16 bits
constexpr double ms_per_byte = 0.005668934240362812; // 1000 / 176,400

uint32_t audio_clock_ms(uint32_t bytes_before_last, uint32_t samples, uint32_t last_fill_ticks, uint32_t now)
{
    const uint32_t buffer_bytes = bytes_per_frame * samples;
    if (!(last_fill_ticks > 0.001) || buffer_bytes > bytes_before_last)
        return 0;
    const double heard = static_cast<double>(bytes_before_last - buffer_bytes) * ms_per_byte;
    const double time = heard - static_cast<double>(last_fill_ticks) + static_cast<double>(now);
    constexpr double last_time = 4294967295.0;
    return static_cast<uint32_t>(std::clamp(time, 0.0, last_time)); // a request between the two readings may lie ahead
}
