// What a hand means that points into the picture: what lies there, in the order in which clicks go through it.
//
// Pure.
#pragma once

#include "tools/preview/pick.h"

// As pick, but what covers the picture from corner to corner - a vignette, a fade, a sky - comes behind what does not:
// it lies under every point, so nobody means it first.
std::vector<picked_object> pick_for_hand(
    const frame& f, const frame_layers& layers, uint32_t width, uint32_t height, double x, double y);

// The same object of the same clip, at whatever depth.
bool is_same_object(const picked_object& a, const picked_object& b);
