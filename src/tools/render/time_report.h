// Where the time of a render went: per frame and per track.
//
// Milliseconds throughout; `no_time` where nothing was measured (no timer queries).
#pragma once

#include "tools/frames/frame_rate.h"

#include <cstdint>
#include <string>
#include <vector>

constexpr double no_time = -1.0;

struct track_time {
    uint32_t track = 0; // as the timeline counts them, from 0; reports count from 1
    double cpu_ms = no_time;
    double gpu_ms = no_time;
};

struct frame_time {
    uint64_t frame = 0;
    double seconds = 0;      // where it stands in the production
    double cpu_ms = no_time; // the whole frame
    double gpu_ms = no_time;
    std::vector<track_time> tracks; // those that drew
};

struct time_report {
    std::string production; // file name of the pack
    std::string driver;     // the driver's name and version, as it gives them
    std::string path;       // "glsl" or "fixed"
    uint32_t width = 0;     // pixels
    uint32_t height = 0;
    frame_rate rate;
    std::vector<frame_time> frames;
};

// The time by which frames are ranked: the longer of the two.
double frame_cost(const frame_time& frame);

// The slowest frames, slowest first, at most `count`, each at least half a second away
// from those before it in the list: ten places to look at, not ten frames of one.
std::vector<frame_time> slowest_moments(const time_report& report, uint32_t count);

// These as text, one line each: time, CPU and GPU time, and the three dearest tracks.
std::vector<std::string> slowest_moment_lines(const time_report& report, uint32_t count);

// The whole report as JSON text, a line for every frame; times that were not measured are
// null. What is no UTF-8 in the name of a production becomes U+FFFD.
std::string time_report_json(const time_report& report);

[[nodiscard]] bool write_time_report(const std::string& path, const time_report& report, std::string& error);
