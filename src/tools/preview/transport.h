// Where the show is in time: playing, paused, looping, scrubbed.
//
// Pure. Positions are seconds of the show. Whoever drives it hands in how long it has been playing since it was last
// started: by the sound where there is some, else by a clock.
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

void transport_play(transport& t);
void transport_pause(transport& t);
// Anywhere from 0 to the end; whether it plays stays.
void transport_go(transport& t, double seconds);
// A hand takes the timeline, moves it, lets it go.
void transport_scrub(transport& t, double seconds);
void transport_let_go(transport& t);
// The loop's sides; the other side gives way when they would cross. Both at one place: no loop.
void transport_loop_from(transport& t, double seconds);
void transport_loop_to(transport& t, double seconds);
void transport_no_loop(transport& t);
// A show of another length takes the place of the one before.
void transport_set_end(transport& t, double seconds);
// `playing_for`: seconds since `started`, as the sound or a clock counts. Loops, and stops at the end.
void transport_advance(transport& t, double playing_for);
