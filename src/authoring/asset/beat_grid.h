// The beat grid: a drawing of the music with its bars and beats, to be laid beside a show's source.
//
// Pure; times are seconds of the music as the player plays it.
#pragma once

#include "authoring/asset/music_check.h"

#include <cstdint>
#include <string>
#include <vector>

struct beat_grid {
    std::string title;           // above the drawing
    double beats_per_minute = 0; // 10 to 1000; 0: not known, lines for seconds instead
    uint32_t beats_per_bar = 4;  // 1 to 64
    double first_beat = 0;       // seconds, 0 to 256: where bar 1 begins
};

// A drawing of the music in rows of a few bars: the waveform, lines for beats, stronger ones for bars with their
// number above and their time and tick below. Empty where the numbers of `grid` are outside of what is said there.
std::string beat_grid_svg(const std::vector<waveform_column>& columns, const beat_grid& grid);
