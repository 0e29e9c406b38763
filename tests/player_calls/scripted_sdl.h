// An SDL that a script plays: its functions stand in the test program and win over the
// library's. Each call is a line of the recording driver's list; the clock, the pointer,
// the events and the sound device are what the script says.
//
//     SDL_SetVideoMode(640, 480, 24, HWSURFACE | OPENGL | ASYNCBLIT)
//     SDL_UpperBlit(162 x 27, at 6, 9)
//     | Bye!                                 a line that the player printed
//     * the pack is closed                   found out before the line that follows
//
// Time passes only where the script lets it. Pictures are called by their size.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

struct scripted_click {
    int x;
    int y;
};

// What happens. All times in ms.
struct sdl_script {
    // The viewer: in the dialog a click takes two passes (down, up); behind the last one the
    // pointer rests.
    std::vector<scripted_click> clicks;
    std::map<uint32_t, uint8_t> events; // by the number of the look for one, from 1: its type
    uint32_t escape_from = 0;           // the look from which on Escape is held, and keys are Escape; 0: never
    // The clock.
    uint32_t now = 1000;
    uint32_t ms_per_reading = 0; // passes behind each reading of the clock by the main thread
    uint32_t ms_per_swap = 0;
    uint32_t ms_per_frame = 0;      // that composing one takes
    uint32_t ms_per_document = 0;   // that inflating one takes
    uint32_t ms_per_mesh = 0;       // that drawing one takes, outside of frames
    uint32_t interrupting_mesh = 0; // the one at which the process is asked to end, from 1; 0: never
    // The display.
    bool has_display = true;
    int desktop_width = 800;
    int desktop_height = 600;
    std::vector<uint32_t> failing_modes; // numbers of SDL_SetVideoMode's calls, from 1 (the dialog's)
    int broken_picture = -1;             // number of the dialog's picture that does not load, from 0
    std::string error = "the reason";    // SDL_GetError
    // The sound device.
    bool has_audio = true;
    uint16_t granted_samples = 8192; // frames a buffer
    uint32_t ms_to_start = 0;        // that SDL_PauseAudio(0) takes
    std::vector<uint32_t> requests;  // when each comes, behind SDL_PauseAudio(0)
    // The show.
    int64_t last_tick = 0;       // of the production; later frames are empty
    bool tells_standing = false; // a line where a frame of the production finds what one of the loading screen left
};

// Begins a run: SDL is fresh, and does what `script` says from here on.
void begin_script(const sdl_script& script);

// Adds a line to the list, behind what became of the pack.
void record_line(const std::string& line);

// Lets time pass; the sound device asks when its time has come.
void pass_time(uint32_t ms);

// The script as it stands.
sdl_script& current_script();
