// The music of the preview: decoded whole, so that it can begin anywhere, and heard in step with the picture.
//
// The device asks on a thread of its own (music/device.h); what it shares with the main thread are aligned words. The
// clock counts as the player's does (music/music.h, audio_clock_ms).
#pragma once

#include "authoring/asset/music_check.h"
#include "music/device.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// Decoded music, 44,100 pairs of samples a second as the player plays it. Decoding runs on a thread of its own.
struct preview_music {
    std::string path;
    std::vector<int16_t> pairs;
    std::vector<waveform_column> columns; // one a tick, for drawing
    std::string problem;                  // why there is none
    std::atomic<bool> ready = false;
};

struct sound_output; // sound.cpp

struct preview_sound {
    std::shared_ptr<preview_music> music; // null: none
    std::unique_ptr<sound_output> output; // null: there is no device
    bool device_failed = false;
    bool muted = false;

    preview_sound();
    ~preview_sound();
};

// Begins to decode another file in the place of the one there is (the same path with the same content stays); "" for none.
void sound_take(preview_sound& s, const std::string& path);

// From here on the device plays from this place of the show (silence behind the end), or nothing.
void sound_play_from(preview_sound& s, double seconds);
void sound_stop(preview_sound& s);

// How long it has been playing since sound_play_from, by the device's clock; by a steady clock where there is no device or
// it has asked for nothing yet. Never less than before.
double sound_playing_for(const preview_sound& s);

void sound_mute(preview_sound& s, bool muted);
void sound_close(preview_sound& s);
