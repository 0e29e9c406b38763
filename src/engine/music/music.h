// Music: one Ogg Vorbis file, decoded in the audio callback, and the clock that it
// drives.
//
// One piece of music for the whole program. The callback writes four aligned words
// that the main thread reads without a lock. Times are milliseconds.
#pragma once

#include <cstdint>

enum music_result : int {
    music_playing,  // audio runs (with silence where the file is no Ogg Vorbis file, or a broken one)
    music_none,     // nothing to play; one line was printed when the file is missing
    music_no_device // audio could not be opened; the line went to standard error
};

// Opens `file` (null: none), or the same name under "music/", and starts the audio
// device. Only regular files are music. One that cannot be decoded plays silent, which a
// line on standard error says.
music_result music_open(const char* file);

// Forgets what has been played so far.
void music_clear_counters();

// Waits for the first audio buffer and prints "Audio buffer size:%u\n" when
// `music_enabled` is 1. Returns the starting time. `given_up` becomes true when the
// device asked for nothing within ten seconds.
uint32_t music_start_clock(int32_t music_enabled, bool& given_up);

// The production time from the audio position.
uint32_t music_clock_update();

// The clock's arithmetic, without a device: bytes taken before the latest request, frames
// per buffer, the time of that request, and now. 0 until one buffer is known to be heard.
uint32_t audio_clock_ms(uint32_t bytes_before_last, uint32_t samples, uint32_t last_fill_ticks, uint32_t now);
