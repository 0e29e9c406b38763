// Where the show is in time: playing, paused, looping, scrubbed.
//
// Pure. Positions are seconds of the show; what is no number counts as 0. Whoever drives it hands in how long it has
// been playing since it was last started: by the sound where there is some, else by a clock.
//
// A loop that ends behind the show's end ends with it, and one that begins there is none, until the show is longer
// again: its sides stay as they were set. While it plays, a place at the loop's end or behind it is its beginning.
#pragma once

#include <cstdint>

struct transport {
    double position = 0; // where it is now
    double started = 0;  // where playing was last started
    double end = 0;      // length of the show
    bool playing = false;
    bool scrubbing = false; // a hand holds the timeline: it stands still and is silent
    bool has_loop = false;
    double loop_from = 0;
    double loop_to = 0;
    uint32_t starts = 0; // grows whenever the sound has to begin anew at `started`
};

// What is played from a start on: from `from` to the end of everything, or around a loop. Seconds.
struct played_stretch {
    double from = 0;
    double loop_from = 0;
    double loop_to = 0; // not above loop_from: no loop
};

// The place in the show after so many seconds of playing.
double stretch_position(const played_stretch& stretch, double playing_for);

void transport_play(transport& t);
void transport_pause(transport& t);
// Anywhere from 0 to the end; whether it plays stays.
void transport_go(transport& t, double seconds);
// A hand takes the timeline, moves it, lets it go.
void transport_scrub(transport& t, double seconds);
void transport_let_go(transport& t);
// The loop's sides, from 0 to the end; the other side gives way when they would cross: it goes to the same place. Both
// at one place: no loop.
void transport_loop_from(transport& t, double seconds);
void transport_loop_to(transport& t, double seconds);
void transport_no_loop(transport& t);
// A show of another length takes the place of the one before.
void transport_set_end(transport& t, double seconds);
// `playing_for`: seconds since `started`, as the sound or a clock counts. Loops without a new start, and stops at the
// end.
void transport_advance(transport& t, double playing_for);
// What is heard from `started` on.
played_stretch transport_stretch(const transport& t);
