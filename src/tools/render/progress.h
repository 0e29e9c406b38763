// Progress on standard error: a line that is written over on a terminal, else a line
// every ten seconds.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

struct progress {
    std::chrono::steady_clock::time_point begin;
    std::chrono::steady_clock::time_point last; // when something was shown
    uint64_t total = 0;                         // frames
    bool terminal = false;
    bool shown = false;
};

// "120 of 750 frames, 34.2 frames a second, 0:18 left"
std::string progress_text(uint64_t done, uint64_t total, double seconds);

void progress_begin(progress& p, uint64_t total);
void progress_show(progress& p, uint64_t done);

// Ends the line on a terminal.
void progress_end(progress& p);
