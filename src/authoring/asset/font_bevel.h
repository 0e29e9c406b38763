// Where the points of a letter's rim go when it is bevelled: inwards from the border, step by step.
//
// Every border point moves as its two edges do, so that straight rims keep an even width. Edges shorter than the
// bevel vanish into the corner that their neighbours make. Where a stroke is too thin for two rims, its points
// stop before its middle. Pure.
#pragma once

#include "authoring/asset/font_outline.h"

#include <cstdint>
#include <vector>

constexpr uint32_t bevel_steps = 8; // of a point's way

// The way of one border point.
struct bevel_way {
    outline_point at[bevel_steps + 1]; // after step / bevel_steps of the bevel; [0] is the border
    uint32_t joined;                   // the first step that it goes together with a neighbour; bevel_steps + 1: none
    double reach;                      // how far it may go, 0..the bevel, in units of the outline
};

// One way for every point of a clean outline, ring after ring; `bevel` is above 0. Empty where no bevel fits
// without rings that cross.
std::vector<bevel_way> plan_bevel(const letter_outline& outline, double bevel);

// Where the point is after `part` (0..1) of its reach.
outline_point bevel_point(const bevel_way& way, double bevel, double part);
