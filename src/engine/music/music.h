// Music: one Ogg Vorbis file, decoded in the audio callback, and the clock that it
// drives.
//
// The state of the music is its caller's. Once the device plays, the callback uses it on a
// thread of its own, so it stays where it is until the process ends: it can be neither
// copied nor moved. Times are milliseconds.
#pragma once

#include "music/device.h"

#include <atomic>
#include <cstdint>
#include <cstdio>

struct stb_vorbis;

// What the audio callback shares with the main thread. The decoder is the callback's alone
// once the device is open; the words are one aligned word each, which it writes and the main
// thread reads without a lock.
struct sound_feed {
    stb_vorbis* decoder = nullptr;           // null when the file cannot be decoded: silence
    std::atomic<uint32_t> bytes_total;       // requested by the device so far
    std::atomic<uint32_t> bytes_before_last; // the same before the latest request
    std::atomic<uint32_t> last_fill_ticks;   // when the latest request came; 0: none yet
    std::atomic<uint32_t> audio_started;     // 1 from the first request on
};
static_assert(std::atomic<uint32_t>::is_always_lock_free && sizeof(std::atomic<uint32_t>) == sizeof(uint32_t));

struct music_state {
    FILE* music_file = nullptr;    // read by the decoder, which closes it
    int decoder_error = 0;         // not examined
    sound_spec obtained_spec = {}; // what the device granted
    sound_feed feed;
};

enum music_result : int {
    music_playing,  // audio runs (with silence where the file is no Ogg Vorbis file, or a broken one)
    music_none,     // nothing to play; one line was printed when the file is missing
    music_no_device // audio could not be opened; the line went to standard error
};

// Opens `file` (null: none), or the same name under "music/", and starts the audio
// device. Only regular files are music. One that cannot be decoded plays silent, which a
// line on standard error says. `music` is a fresh state.
music_result music_open(music_state& music, const char* file);

// Forgets what has been played so far.
void music_clear_counters(music_state& music);

// Waits for the first audio buffer and prints "Audio buffer size:%u\n" when
// `music_enabled` is 1. Returns the starting time. `given_up` becomes true when the
// device asked for nothing within ten seconds.
uint32_t music_start_clock(const music_state& music, int32_t music_enabled, bool& given_up);

// The production time from the audio position.
uint32_t music_clock_update(const music_state& music);

// The clock's arithmetic, without a device: bytes taken before the latest request, frames
// per buffer, the time of that request, and now. 0 until one buffer is known to be heard.
uint32_t audio_clock_ms(uint32_t bytes_before_last, uint32_t samples, uint32_t last_fill_ticks, uint32_t now);
