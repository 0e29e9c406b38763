// How the stage gets to any frame: what remembers earlier frames (waters, swarms, "Amoba", the rippler, pictures drawn
// into, the frame before that shows through, what materials left, the library's random numbers) is kept every few
// seconds, and frames are passed from the newest kept state before. So a picture is the same as in a run from the start
// at the stage's rate.
//
// A picture that would take longer than it may is shown roughly at first: with what is remembered by then. Tracks that
// are not drawn do not move either: states belong to the tracks that they were made with. From another camera nothing
// is kept.
#pragma once

#include "tools/preview/stage.h"

#include <cstdint>
#include <memory>
#include <vector>

constexpr double kept_every = 2.0;                            // seconds of the show
constexpr uint64_t most_kept_bytes = uint64_t{256} * 1048576; // above: every other one goes

struct kept_state;   // stage_state_gl.h
struct keeper_parts; // kept_states_gl.cpp

struct state_keeper {
    std::vector<std::unique_ptr<kept_state>> states; // ascending; the first stands before frame 0
    std::unique_ptr<keeper_parts> parts;
    bool remembers = false; // whether frames depend on others at all; otherwise every jump is exact at once
    bool exact = false;     // the picture is that of a run from the start
    bool settling = false;  // frames are being passed toward `target`
    uint64_t target = 0;
    double pass_ms = 0.3; // what passing a frame took of late
    uint64_t most_bytes = most_kept_bytes;

    state_keeper();
    ~state_keeper();
};

// After a load or a choice: forgets all and keeps the state before the first frame.
void keeper_restart(state_keeper& k, stage& s);

// Brings the stage to `frame` and draws it. Where that takes longer than `budget_ms`, the frame is drawn roughly at
// once (with what is remembered as it is), and the rest is keeper_settle's: `settling` says so. A frame that is shown
// already is drawn again only where it is seen otherwise (camera, tracks).
void keeper_go(state_keeper& k, stage& s, uint64_t frame, double budget_ms);

// Passes frames for at most `budget_ms`; when it arrives, draws the frame: true.
bool keeper_settle(state_keeper& k, stage& s, double budget_ms);

// How far it is, 0 to 1.
double keeper_progress(const state_keeper& k);

// Bytes that all kept states take.
uint64_t keeper_memory(const state_keeper& k);
