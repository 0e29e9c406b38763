// The picture that a dynamic texture's kinds write.
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
