// Clear colours for clips that say what they want behind them.
//
// The player sets a clip's clear colour after the clip's own clear, so that it counts for the next clear: that of
// the clip that is drawn next, or, behind the last clip of a frame, that of the first clip of the next frame. Here
// each clip says what it wants to be cleared with; what comes out is what each must carry.
//
// Which clips clear: the one on track 1, and those that copy a picture into its target first, but for one right
// behind a clip in the mode that keeps the small picture. The first frame behind a cut still has the colour that was
// carried before it: the very first frame of a show that of the loading screen.
#pragma once

#include "authoring/curve/tracks.h"

#include <cstdint>
#include <vector>

constexpr int32_t no_clear_wish = -1;

// What a clip of the source wants, as the clips given to plan_tracks. Colours are numbers of the caller's; 0 is black.
struct clear_request {
    uint32_t mode = 0;         // render_mode
    bool has_target = false;   // a picture to be rendered into
    int32_t wanted = -1;       // the colour behind it; no_clear_wish: none said, black
    int32_t next = -1;         // the colour that it must carry, whoever is drawn next; no_clear_wish: none said
    bool wanted_moves = false; // `wanted` follows curves
    double function_start = 0; // tick of the show at which its functions are at 0: its `from` less its offset
};

// Fills in `clear` of the plan's clips. Where a clip must carry one colour first and then another it is split; the
// pieces show the same at every tick. Adds to the plan's problems what cannot be had: a clip that cannot be cut where
// it must be, a wish of a clip that clears nothing, a `next` that takes another clip's wish, a moving colour that
// follows the time of another clip. Empty clips want what the clip drawn behind them wants, up to the next clear.
void plan_clear_colors(const std::vector<clear_request>& requests, track_rules rules, track_plan& plan);
