// The frames of a production as pictures, in order.
//
// Frames are drawn strictly one after the other, because effects remember the frames
// before. A picture is read while the next frame is drawn: up to two wait in the driver, but of tiles none.
#pragma once

#include "session_gl.h"
#include "shell/settings.h"
#include "time_report.h"
#include "tools/frames/picture.h"

#include "render/compositor_gl.h"

#include <cstdint>
#include <string>
#include <vector>

constexpr uint32_t pictures_in_flight = 2;

// A frame that was drawn and not yet taken.
struct drawn_frame {
    uint64_t number;
    picture image;           // with tiles it is put together at once
    uint32_t buffer;         // OpenGL name; 0: the image is there
    double cpu_ms;           // of the whole frame
    frame_cost_record costs; // of its layers
    double gpu_ms[track_count];
};

struct frame_source {
    gl_session* session = nullptr;
    player_settings* settings = nullptr;
    renderer drawing; // what it remembers from frame to frame
    frame_rate rate;
    bool measures = false; // the times of layers are wanted
    bool tells_commands = false;
    std::string commands; // as text, of the frame that was drawn last, where they are told
    std::vector<frame_tile> tiles;
    drawn_frame waiting[pictures_in_flight] = {};
    uint32_t first_waiting = 0;
    uint32_t waiting_count = 0;
    double gl_seconds = 0; // spent in OpenGL calls so far
};

// A picture is of the settings' screen size.
void source_begin(frame_source& source, gl_session& session, player_settings& settings, frame_rate rate, bool measures);

// Advances a frame for what effects make of it. Nobody sees its picture; where `pixels` is
// false nothing is drawn, which saves most of the time.
void source_pass(frame_source& source, uint64_t frame, bool pixels);

// Draws a frame and begins to read it; not while the source is full.
void source_draw(frame_source& source, uint64_t frame);

// Whether a picture is to be taken before the next frame is drawn.
bool source_is_full(const frame_source& source);

// Why a frame cannot be put together from tiles, as one sentence; empty when it can, and
// where there is one tile only.
std::string source_tiling_problem(const frame_source& source, uint64_t frame);

// Takes the oldest waiting frame; `times` may be null. False: none waits.
bool source_take(frame_source& source, uint64_t& frame, picture& image, frame_time* times);

// Draws the loading screen at a per cent of the loading, as the player does, and reads it
// where `image` is not null.
void source_draw_loading(frame_source& source, uint32_t per_cent, picture* image);
