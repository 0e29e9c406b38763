// The arithmetic of the interface: where things lie, what stands on rulers, how numbers are written.
//
// Pure. Lengths are points of the window, y grows downward; times are seconds of the show.
#pragma once

#include "authoring/asset/music_check.h"

#include <cstdint>
#include <span>
#include <string>

struct box {
    float x = 0;
    float y = 0;
    float width = 0;
    float height = 0;
};

// ---- the window -----------------------------------------------------------------------------------

struct window_layout {
    box picture; // what the picture may use
    box side;    // panels; no width: there is no place for them
    box transport;
    box timeline;
};

// The places of the fixed parts. Without the overlay the picture has everything. `timeline` is the height that the
// timeline would like; it gets at most 38 % of the window's.
window_layout lay_out_window(float width, float height, bool overlay, float timeline);

// The largest box of a picture's sides that lies in the middle of another, at whole points.
box fit_picture(const box& place, uint32_t width, uint32_t height);

struct picture_size {
    uint32_t width;
    uint32_t height;
};

// The size in pixels of a picture that fills a place as far as its sides' ratio allows: even numbers, at least 64 x 36.
picture_size size_for_place(const box& place, float scale, uint32_t ratio_width, uint32_t ratio_height);

// ---- time on a line -------------------------------------------------------------------------------

// Seconds from..to drawn from x on, `width` points long.
struct time_scale {
    double from = 0;
    double to = 1;
    float x = 0;
    float width = 1;
};

float x_of_time(const time_scale& scale, double seconds);
double time_of_x(const time_scale& scale, float x);

constexpr double least_shown_seconds = 0.1;

// Shows `factor` times as much around the place `at`, which stays where it is; never less than least_shown_seconds and
// never beyond 0..end.
void zoom_time(time_scale& scale, double at, double factor, double end);
// Moves by so many seconds, as far as 0..end allows.
void pan_time(time_scale& scale, double seconds, double end);

// The step between figures on a ruler so that they are at least `least` points apart: 0.01 s to 10 minutes, round.
double ruler_step(const time_scale& scale, float least);
// Every how many bars a figure stands: 1, 2, 4, 8, ...
uint32_t bar_step(const time_scale& scale, double seconds_per_bar, float least);

// What sounds from one time to another: the extremes, and the greatest loudness. Columns are ticks; none: silence.
waveform_column waveform_between(std::span<const waveform_column> columns, double from, double to);

// ---- texts ------------------------------------------------------------------------------------------

std::string clock_text(double seconds);              // "1:23.250"
std::string ruler_text(double seconds, double step); // "1:20", with decimals where steps are below 1
std::string beat_text(double seconds, double bpm, double beats_per_bar); // "12.3": bar and beat from 1; empty: no beats
std::string value_text(double value);                                    // four figures that count: "0.35", "-12.5"
uint32_t decimals_of_step(double step);   // that numbers need to tell steps apart, 0 to 9; 3 for no step
std::string bytes_text(uint64_t bytes);   // "640 KB", "12.4 MB"
std::string milliseconds_text(double ms); // "0.42 ms", "16.7 ms", "120 ms"
std::string place_text(
    const std::string& file, uint32_t line, size_t letters); // "lake.lua:12", its front left out where too long

// ---- curves -----------------------------------------------------------------------------------------

struct value_range {
    float least = 0;
    float most = 1;
};

// What a curve of these values spans, a little more than they do; a constant stands in the middle. Values that are no
// numbers do not count.
value_range range_of_values(std::span<const float> values);
