// What the layers of one frame cost, for those who look for the dear ones: a stopwatch of
// this computer's time, not of the production's.
#pragma once

#include "model/timeline.h"

#include <cassert>
#include <chrono>
#include <cstdint>

struct layer_cost {
    uint32_t track;
    double cpu_ms; // advancing, planning and giving the commands, without waiting for them
};

// Each layer's OpenGL commands are counted by the timer query of its number
// (GL_TIME_ELAPSED), whose result comes later; `queries` are the caller's, 0 for none.
struct frame_cost_record {
    uint32_t layer_count;
    layer_cost layers[track_count];
    uint32_t queries[track_count]; // OpenGL names, by layer
};

using cost_clock = std::chrono::steady_clock;

// Both do nothing where nothing is measured (null).
inline cost_clock::time_point start_cost(const frame_cost_record* costs)
{
    return costs != nullptr ? cost_clock::now() : cost_clock::time_point();
}

inline void add_cost(frame_cost_record* costs, uint32_t layer, cost_clock::time_point begin)
{
    if (costs == nullptr)
        return;
    assert(layer < costs->layer_count);
    const std::chrono::duration<double, std::milli> took = cost_clock::now() - begin;
    costs->layers[layer].cpu_ms += took.count();
}
