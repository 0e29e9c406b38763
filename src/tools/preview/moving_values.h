// The values of an object that move: which they are, and how they go over time.
//
// Pure: functions are asked as copies, so that nothing that drawing remembers is touched.
#pragma once

#include "model/document.h"
#include "tools/preview/pick.h"

#include <cstdint>
#include <string>
#include <vector>

struct moving_value {
    std::string name;          // "x", "rotation y", "material: alpha", "camera: field of view", "manipulator 1: Copies"
    uint32_t function = 0;     // handle
    int64_t time_shift = 0;    // ticks from the show's time to the function's
    std::vector<float> values; // over the span, as many as were asked for
    float now = 0;
};

struct moving_values {
    double from = 0; // seconds of the show: the clip's span
    double to = 0;
    std::vector<moving_value> values;
};

// Of a scene's object as `picked.layer` of `picked.track` shows it: its place, angles, scale, visibility, manipulators,
// mesh effect; its material's colours, lights, fog, line width, uniforms, moving pictures; the clip's camera, whose
// place is the eye's. `tick` is now; values at `samples` moments from the clip's first tick to its last. What stands
// still and what leads to no function is left out.
moving_values moving_values_of(const document& d, const picked_object& picked, uint32_t tick, uint32_t samples);
