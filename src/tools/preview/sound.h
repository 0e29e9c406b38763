// The music of the preview: decoded whole, so that it can begin anywhere, and heard in step with the picture.
//
// The device is opened with the first music and asks on a thread of its own (music/device.h); opening it and decoding
// run on threads, too, so that no picture waits for them. All of it is the main thread's to call. How samples and times
// hang together is told in sound_feed.h: the clock counts as the player's does (music/music.h).
#pragma once

#include "authoring/asset/music_check.h"
#include "tools/preview/transport.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

// Decoded music, 44,100 pairs of samples a second as the player plays it, up to where a show ends at the latest.
// Decoding runs on a thread of its own: until `ready`, sound_columns tells what there is of the columns.
struct preview_music {
    std::string path;
    std::vector<int16_t> pairs;           // left and right in turns
    std::vector<waveform_column> columns; // one a tick, for drawing
    std::string problem;                  // why there is none, a line without its full stop; only when ready
    std::atomic<uint32_t> ticks = 0;      // columns that are there, with their pairs
    std::atomic<bool> unwanted = false;   // another takes its place
    std::atomic<bool> ready = false;
};

struct sound_output; // sound.cpp

struct preview_sound {
    std::shared_ptr<preview_music> music; // null: the show has none
    std::unique_ptr<sound_output> output; // always there
    std::atomic<bool> device_failed = false;
    bool muted = false;

    preview_sound();
    ~preview_sound();
};

// Begins to decode another file in the place of the one there is (the same path with the same content stays); "" for
// none.
void sound_take(preview_sound& s, const std::string& path);

// What of the music is there to be drawn, a column a tick from the beginning on; more of it comes while it is decoded.
std::span<const waveform_column> sound_columns(const preview_sound& s);

// Why nothing is heard: a line without its full stop. Empty: all is well, or not known yet.
std::string sound_trouble(const preview_sound& s);

// From here on the device plays this stretch of the show (silence behind the music), or nothing.
void sound_play_from(preview_sound& s, const played_stretch& stretch);
void sound_stop(preview_sound& s);

// How long it has been playing since sound_play_from, by the device's clock; by a steady clock where there is no device
// or it asks for nothing. Never less than before.
double sound_playing_for(const preview_sound& s);

void sound_mute(preview_sound& s, bool muted);

// Ends the threads. The device is silent from here on, and closes with the windows; only then may `s` go.
void sound_close(preview_sound& s);
