// What the sound device is given, and the clock that follows from it.
//
// Pure: requests in, samples and times out. The sample that sounds at a time of the show is the one of that time, floor
// of seconds times 44,100, from the first sample of a start on and however often a loop has gone round. Ticks are
// milliseconds of the device's clock. Nothing here locks: its user does.
#pragma once

#include "tools/preview/transport.h"

#include <cstdint>
#include <span>

constexpr uint32_t music_rate = 44100; // pairs of samples a second

// What the device asks for is counted as the player counts it (music/music.h), from each start anew.
struct music_feed {
    const int16_t* pairs = nullptr; // left and right in turns; may be null where there are none
    uint64_t pair_count = 0;        // silence behind them
    played_stretch stretch;
    bool playing = false;
    bool muted = false;
    uint64_t bytes_total = 0;        // asked for since the start
    uint64_t bytes_before_last = 0;  // the same before the latest request
    uint32_t last_fill_ticks = 0;    // when that came; 0: none since the start
    uint32_t last_request_ticks = 0; // when the device last asked, also while nothing played; 0: never
};

// From the next request on it plays a stretch, or nothing.
void feed_start(music_feed& feed, const played_stretch& stretch);
void feed_stop(music_feed& feed);

// A request: fills `samples`, an even number of them.
void feed_fill(music_feed& feed, std::span<int16_t> samples, uint32_t now);

// How long it has been playing by the device: 0 until a buffer of so many pairs is known to be heard.
double feed_clock(const music_feed& feed, uint32_t buffer_pairs, uint32_t now);

// How long it has been playing since clock_start, whatever the device does. One that is not there, that has not asked
// for half a second or that never asked stops no clock: a steady one goes on in its place, and the music begins anew at
// the place of that clock when the device asks again.
struct playing_clock {
    played_stretch stretch;   // from clock_start
    double begun = 0;         // seconds of playing at the feed's latest start, or when the steady clock took over
    uint32_t begun_ticks = 0; // when that was
    double told = 0;          // it never goes back
    bool by_device = false;
};

// Starts the feed too. `buffer_pairs`: of the device; 0: none is open.
void clock_start(
    playing_clock& clock, music_feed& feed, const played_stretch& stretch, uint32_t buffer_pairs, uint32_t now);
double clock_read(playing_clock& clock, music_feed& feed, uint32_t buffer_pairs, uint32_t now);
