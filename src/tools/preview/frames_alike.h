// Whether a frame is drawn the same whatever stood before it: it is planned from two different pasts, and the plans are
// compared by what drawing looks at.
//
// Pure.
#pragma once

#include "render/frame.h"

#include <cstdint>
#include <vector>

// The units whose pictures a program looks at, by bit.
struct sampled_units {
    uint32_t flat = 0;
    uint32_t cube = 0;
};

using units_of_program = sampled_units (*)(uint32_t program);

// The planned part of a frame.
struct planned_frame {
    std::vector<frame_command> commands;
    std::vector<viewport_command> viewports;
    std::vector<clear_command> clears;
    std::vector<draw_command> draws;
    std::vector<view_state> views;
    std::vector<material_state> materials;
    std::vector<program_state> programs;
    std::vector<copy_transform> copies;
};

planned_frame plan_of(const frame& f);

// Whether both are drawn the same, of two plans of one frame of a show without moving meshes. `units` is asked for
// programs (the shader path).
bool drawn_alike(const planned_frame& a, const planned_frame& b, units_of_program units);

// What no show leaves: whatever is drawn with some of it looks different. `units`: so many may have been used by then;
// the others are as they begin.
standing_state strange_standing_state(uint32_t units);
