// Tracks for the clips of a show: where each clip lies, and how long the pauses are.
//
// Clips come in drawing order with the ticks from which and to which they show. Those that overlap get tracks one
// above the other in that order; the others share tracks, as low as possible. What the player would not show as
// asked is told. Pure; nothing is kept.
//
// A clip shows from its first tick to its last, both included. Where two clips of a track meet on a whole second,
// that tick is the later one's, else the earlier one's; where they meet but lie on different tracks, the tick shows
// both. A tick is 1/100 s.
#pragma once

#include "authoring/problem.h"
#include "model/timeline.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct timed_clip {
    uint32_t from;      // ticks
    uint32_t to;        // ticks, behind `from`
    int32_t track = -1; // that it must lie on, from 0; -1: the planner chooses
    bool draws = true;  // false: without a scene
};

constexpr int32_t empty_clip = -1;

// A clip of the document. A clip of the source may have several: pieces that follow each other.
struct placed_clip {
    int32_t clip;          // place in the list that was given; empty_clip: one without a scene, in "Simple render"
    uint32_t track;        // from 0
    uint32_t space_before; // ticks
    uint32_t length;       // ticks
    uint32_t from;         // tick of the show at which it begins, behind its pause
    uint32_t skipped; // ticks of the clip that are in the pieces before: to be added to its offset, and time goes on
    int32_t clear;    // colour to be carried: filled in by plan_clear_colors (clear_colors.h), 0 before
};

struct track_problem {
    int32_t clip; // the clip to blame, as given; -1: none
    problem_severity severity;
    std::string text; // "ends where it begins": to be put behind the clip's name; with clip -1 a whole sentence
};

struct track_plan {
    std::vector<placed_clip> clips; // by track, then by time
    std::vector<track_problem> problems;
};

enum track_rules : uint8_t {
    tracks_of_show,    // something must be shown from the first tick to the last, or the show ends
    tracks_of_loading, // ticks are per cent, and nothing ends it
    tracks_as_given    // every clip names its track: pauses and lengths only, nothing is added, left out or split
};

// A clip that cannot be placed is left out and is an error: one that ends where it begins or behind tick 25,600, one
// for which no track is left, one that is pinned where another lies or where the player would never show it.
//
// While track 1 has no clip the screen is not cleared, and behind its last second the show is over. So holes of it
// in which others show are filled with empty clips; where a hole is too short for one, all tracks move up by one and
// a single empty clip lies below them.
//
// A moment in which no scene is drawn ends the show: an error at the first clip behind it.
track_plan plan_tracks(const std::vector<timed_clip>& clips, track_rules rules);

// Whether the player would never show a clip of a track whose span, its pause included, is start..end: it begins
// within a second and does not reach the next one.
bool is_lost_span(uint32_t start, uint32_t end);

// ---- what is shown ----------------------------------------------------------------------

struct free_timeline {
    void operator()(timeline* t) const
    {
        timeline_free(t);
    }
};

// The player's own tables for a plan.
struct shown_clips {
    std::unique_ptr<timeline, free_timeline> tables;
    std::array<size_t, track_count> first; // place in plan.clips of each track's first clip
};

shown_clips show_plan(const track_plan& plan);

// The ticks up to `last` from which on the tracks may show something else than before, ascending, 0 the first: between
// two of them clips_at tells the same.
std::vector<uint32_t> change_ticks(const track_plan& plan, uint32_t last);

// What the tracks show at a tick, in drawing order: places in plan.clips. Nothing where track 1 is over.
void clips_at(const shown_clips& shown, uint32_t tick, std::vector<size_t>& places);

// A time as messages say it: "4s", "3.51s".
std::string ticks_text(uint32_t ticks);
