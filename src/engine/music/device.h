// The sound device, and the only place that knows which library plays sound
// (device_sdl.cpp): another library means another file behind these functions.
//
// One device per process. It is never closed by itself: it ends with its library, when the
// windows are shut down or the process ends. Times are milliseconds.
#pragma once

#include <cstdint>

struct sound_spec {
    int rate;         // Hz
    uint8_t channels; // of signed 16-bit little-endian samples
    uint16_t samples; // frames a buffer
};

// Fills `len` bytes at `stream`, all of them, on the device's own thread. `userdata` is what
// sound_open was given.
using sound_callback = void (*)(void* userdata, uint8_t* stream, int len);

// Makes the library ready for sound. That it fails is told by sound_open.
void sound_start();

// Opens the device for `wanted`, and leaves what it granted in `obtained`. It stays still
// until sound_play. `userdata` must stay where it is from then on. False when it cannot be
// opened.
[[nodiscard]] bool sound_open(const sound_spec& wanted, sound_callback callback, void* userdata, sound_spec& obtained);

// Why sound_open failed, in the library's words; never empty.
const char* sound_problem();

// From here on the device asks for samples.
void sound_play();

// The clock by which requests are timed, and a pause. Both on any thread.
uint32_t sound_ticks();
void sound_wait(uint32_t ms);
