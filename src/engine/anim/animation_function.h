// Animation functions: piecewise functions of time that drive every dynamic value.
//
// Up to 16 segments lie end to end, each with its own formula; the whole may
// loop or ping-pong over a range. Time is counted in ticks of 1/100 s. A record
// belongs to its table and remembers its last value, so one thread evaluates it.
// Bad input: an empty function and an unknown formula evaluate to 1.0.
#pragma once

#include <cstdint>

enum segment_kind : int32_t {
    segment_constant = 0,    // a
    segment_linear = 1,      // a * x + b
    segment_quadratic = 2,   // a * (x - b)^2 + c
    segment_sine = 3,        // a * sin(x * b - c) + d
    segment_spline = 4,      // Catmull-Rom through twelve points
    segment_sine_linear = 5, // (a * x + e) * sin(x * b - c) + d
    segment_kind_count
};

enum loop_kind : uint8_t { loop_off = 0, loop_around = 1, loop_ping_pong = 2, loop_kind_count };

constexpr uint32_t max_segments = 16;
constexpr uint32_t max_segment_params = 24;
constexpr uint32_t no_cached_time = 0xFFFFFFFFu;

struct animation_function {
    uint8_t value_type;                                     // 0 float, 1 integer; kept, not used
    uint8_t segment_count;                                  // segments in use, 0..16
    int32_t segment_type[max_segments];                     // segment_kind of each segment
    uint32_t segment_length[max_segments];                  // ticks
    float segment_params[max_segments][max_segment_params]; // a, b, c, d, e or x1, y1 .. x12, y12
    uint8_t loop_type;                                      // loop_kind
    float loop_begin;                                       // ticks
    float loop_end;                                         // ticks
    float cached_value;                                     // value at cached_time
    uint32_t cached_time;                                   // caller's time of the last evaluation
};

// The function's value at `time` ticks. Changes only the record's cache.
float evaluate_function(animation_function& function, uint32_t time);
