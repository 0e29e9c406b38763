// The clock of the run: how far playing is, and before it loading.
#pragma once

#include <cstdint>

struct player_clock {
    uint32_t production_time_ms = 0; // playing time
    uint32_t start_ticks = 0;        // ms on the timer at the start of playing, without music
    uint32_t frame_count = 0;        // frames drawn in the main loop
    uint32_t progress_ticks = 0;     // ms on the timer at the last loading frame
    uint32_t loading_frames = 0;     // that were shown
    int32_t progress_total = 0;      // items of the production, and items made so far
    int32_t progress_done = 0;
};
