// The layers of a moment: which it shows, into which target, cleared how, seen from
// where - as plain records, without OpenGL.
//
// The frame is advanced and planned from them (frame_advance, frame_plan). Times are
// ticks of 1/100 s, sizes pixels, angles degrees.
#pragma once

#include "model/capabilities.h"
#include "model/document.h"
#include "model/timeline.h"

#include <cstdint>

enum projection_kind : uint8_t {
    projection_kept, // the one in force stays
    projection_perspective,
    projection_orthographic // (0, 0) top left, (1, 1) bottom right
};

enum clear_bits : uint8_t { clear_nothing = 0, clear_depth = 1, clear_color = 2 };

struct layer_plan {
    uint32_t track;
    uint32_t layer;
    uint32_t time;          // function time: local time + offset
    uint32_t flush_texture; // image_texture handle to copy the frame buffer into first; 0 none
    uint32_t flush_width;   // size of that copy
    uint32_t flush_height;
    uint32_t target;         // image_texture handle that the layer draws for; 0: none of its own
    uint32_t recreate_width; // not 0: recreate the target's texture at this size first
    uint32_t recreate_height;
    uint32_t recreate_texture; // OpenGL name for it, which whoever draws reserves before planning
    uint32_t viewport_width;   // 0: the viewport stays
    uint32_t viewport_height;
    uint8_t clear;      // clear_bits
    uint8_t depth_test; // 1 enable, 0 disable
    uint8_t projection; // projection_kind
    float fov;          // degrees; for the perspective projection
    float aspect;
    float far_distance;
    float clear_color[3]; // takes effect at the next clear
    float position[3];    // camera translation
    float rotation[3];    // about x, y, z
    uint32_t model_id;    // scene handle; 0 draws nothing
};

struct frame_layers {
    uint32_t layer_count; // active layers, in track order
    layer_plan layers[track_count];
    uint32_t drawn; // layers with a scene: what compose_frame returns
};

// A part of a picture that is too large to be drawn at once: a rectangle of the whole
// screen, x and y counted from its lower left corner.
struct frame_tile {
    uint32_t x; // pixels
    uint32_t y;
    uint32_t width; // 0: no tile, the whole screen is drawn
    uint32_t height;
};

struct frame_view {
    uint32_t width; // screen, pixels
    uint32_t height;
    float aspect; // width / height for projection
    frame_tile tile = {0, 0, 0, 0};
};

// The layers of `time`. Texture sizes are those of the document's records;
// a recreated target counts with its new size for the rest of the frame. The
// document's function caches change, nothing else.
frame_layers plan_layers(const document& d, uint32_t time, const frame_view& view, const gl_caps& caps);

// What a layer that draws into a texture makes of its size: the texture is made anew where that is not the one it has.
struct target_fit {
    bool recreate;
    uint32_t width; // pixels, from then on
    uint32_t height;
};

// For a texture of width x height pixels that the layer's `rtex` names, on a screen of the view's size.
target_fit fit_target(
    const layer_record& layer, uint32_t width, uint32_t height, const frame_view& view, const gl_caps& caps);

// A side of a render target without non-power-of-two textures: 64 below 128, 128
// below 256, else 256.
uint32_t round_target_side(uint32_t side);
