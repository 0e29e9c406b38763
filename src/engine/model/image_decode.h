// Decoding the pictures of a pack: PNG, JPEG, TGA and whatever else the system's
// image decoder reads.
//
// Pixels are bytes, rows from the top, 3 (RGB) or 4 (RGBA) a pixel, without gaps; they
// belong to the caller: free(). A picture is measured before memory is taken: nothing
// with a side above 16,384 pixels or more than 256 MiB of pixels is decoded.
#pragma once

#include <cstdint>

constexpr uint32_t max_image_side = 16384;     // pixels
constexpr uint64_t max_image_bytes = 1u << 28; // decoded, four bytes a pixel

struct decoded_image {
    uint32_t width; // pixels
    uint32_t height;
    uint32_t components; // 3 or 4
    uint8_t* pixels;     // width x height x components bytes, owned
};

enum image_status : uint32_t {
    image_decoded,
    image_undecodable, // no picture, of no known kind, or broken
    image_too_large
};

// Width and height of the picture in `size` bytes at `data`, without decoding it.
image_status measure_image(const uint8_t* data, uint32_t size, uint32_t& width, uint32_t& height);

// Decodes it with 3 or 4 components; with `components` 0 as it is stored, where 1 (grey)
// becomes 3 and 2 (grey and alpha) becomes 4. `image` changes only with image_decoded.
image_status decode_image(const uint8_t* data, uint32_t size, uint32_t components, decoded_image& image);

// The name of a picture's ready-made mipmap level 1 or 2: "_mm1" or "_mm2" in front of
// the last four characters. Empty when the name is shorter than these or the result
// does not fit a pack's index (31 bytes): there is no such level.
struct level_name {
    char text[32];
};
level_name name_of_level(const char* image_name, uint32_t level);
