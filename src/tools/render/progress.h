// Progress on standard error: a line that is written over on a terminal, else a line
// every ten seconds.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

struct progress {
    std::chrono::steady_clock::time_point begin;
    std::chrono::steady_clock::time_point last; // when something was shown
    uint64_t frames = 0;                        // to be gone through
    uint64_t wanted = 0;                        // those of them that are seen
    bool terminal = false;
    bool quiet = false; // nothing is shown
    bool shown = false;
};

// "120 of 750 frames, 34.2 frames a second, 0:18 left"; where not all are seen,
// "3 of 12 pictures, frame 340 of 750, ...". `frames` have been gone through.
std::string progress_text(const progress& p, uint64_t seen, uint64_t frames, double seconds);

void progress_begin(progress& p, uint64_t frames, uint64_t wanted, bool quiet);
void progress_show(progress& p, uint64_t seen, uint64_t frames);

// Ends the line on a terminal.
void progress_end(progress& p);
