// Pixels in memory, scaled, and written as PNG.
//
// Rows from the top, without gaps, bytes of sRGB; alpha is the last of four components and says how much of a
// colour there is. The same pixels give the same bytes everywhere.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

struct pixel_block {
    uint32_t width; // pixels
    uint32_t height;
    uint32_t components;        // 1 grey, 3 colours, 4 colours and alpha
    std::vector<uint8_t> bytes; // width x height x components
};

// The picture at another size: in linear light, each colour by its alpha, beyond the edges what lies there. Sides
// are 1..16,384, of both pictures. An empty block without memory.
pixel_block scale_pixels(const pixel_block& from, uint32_t width, uint32_t height);

// A PNG file of them; empty without memory.
std::vector<uint8_t> png_of_pixels(const pixel_block& pixels);

// What an entry of the pack decodes to, as the player decodes it: 3 or 4 components. An empty block where it is
// no picture.
pixel_block decoded_pixels(std::span<const uint8_t> file);
