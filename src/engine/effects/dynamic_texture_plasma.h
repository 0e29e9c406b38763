// The two plasmas among the dynamic textures: interference on straight coordinates
// ("Effect 1") and on turning ones ("Rotate").
//
// Pure computation on a picture of the caller; internal to this room.
#pragma once

#include <cstdint>

constexpr uint32_t max_effect_side = 512; // pixels; no document has a larger dynamic texture

// A picture that is written: width x height pixels of `channels` bytes (3: R, G, B;
// 1: the red value only), rows without gaps; no side is above max_effect_side.
struct effect_picture {
    uint8_t* pixels;
    uint32_t width;
    uint32_t height;
    uint32_t channels;
};

void render_plasma(const effect_picture& out, float step);
void render_rotating_plasma(const effect_picture& out, float step);
