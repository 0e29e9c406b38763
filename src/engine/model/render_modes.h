// What each render mode means for its layer, as one row.
//
// Whoever asks what a mode does reads its row; nobody compares modes.
#pragma once

#include "model/timeline.h"

#include <cstdint>
#include <iterator>

enum mode_target : uint8_t {
    mode_draws_to_screen,
    mode_draws_to_texture, // the layer's rtex
    mode_draws_on          // wherever the layer before drew
};

struct render_mode_row {
    render_mode mode;
    mode_target target;
    bool quarter;          // the texture gets half the screen's width and height; else it keeps its size
    float aspect;          // of the projection; 0: the screen's
    bool clears_depth;     // where nothing else is cleared
    bool holds_back_clear; // the active layer right after it does not clear what it has drawn
    bool keeps_projection; // as long as its field of view is constant
};

constexpr float wide_aspect = 1.6f; // what the mode called 16:9 sets
constexpr float narrow_aspect = 1.333333f;

constexpr render_mode_row render_mode_rows[] = {
    {render_simple, mode_draws_to_screen, false, 0, false, false, false},
    {render_to_texture, mode_draws_to_texture, false, 0, false, false, false},
    {render_link, mode_draws_on, false, 0, false, false, true},
    {render_clear_depth, mode_draws_to_screen, false, 0, true, false, false},
    {render_to_texture_16_9, mode_draws_to_texture, false, wide_aspect, false, false, false},
    {render_quarter, mode_draws_to_texture, true, 0, false, false, false},
    {render_quarter_keep, mode_draws_to_texture, true, 0, false, true, false},
    {render_quarter_4_3, mode_draws_to_texture, true, narrow_aspect, false, false, false},
    {render_clear_depth_link, mode_draws_on, false, 0, true, false, true},
};

// A mode that does not exist draws on, with a projection of its own.
constexpr render_mode_row unknown_render_mode = {render_mode_count, mode_draws_on, false, 0, false, false, false};

constexpr bool render_mode_rows_are_in_order()
{
    for (uint32_t index = 0; index < std::size(render_mode_rows); ++index)
        if (render_mode_rows[index].mode != index)
            return false;
    return true;
}
static_assert(std::size(render_mode_rows) == render_mode_count, "a render mode has no row");
static_assert(render_mode_rows_are_in_order(), "a render mode's row is not in its place");

// The row of a layer's `type`; numbers that are no mode have unknown_render_mode.
constexpr const render_mode_row& render_mode_of(uint32_t type)
{
    return type < render_mode_count ? render_mode_rows[type] : unknown_render_mode;
}
