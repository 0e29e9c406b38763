// Pictures in memory: sizes, colours, differences.
//
// A picture owns its bytes: three a pixel (red, green, blue, sRGB), rows from the top,
// without gaps; a size of 0 x 0 is "none". Files: picture_file.h.
#pragma once

#include <cstdint>
#include <vector>

struct picture {
    uint32_t width = 0; // pixels
    uint32_t height = 0;
    std::vector<uint8_t> rgb; // width x height x 3 bytes
};

// A picture of one colour.
picture make_picture(uint32_t width, uint32_t height, uint8_t red, uint8_t green, uint8_t blue);

// A picture whose pixels are still to come, with room behind them for the byte a row that files have more:
// who packs it needs no other memory for that.
picture make_picture_to_fill(uint32_t width, uint32_t height);

// True when there are pixels and exactly as many bytes as the size tells.
bool is_whole(const picture& p);

// Of pixels and a byte a row: encoders count in int, and so do those who open the file.
constexpr uint64_t max_encoded_bytes = 1u << 30;

// Whether the picture is whole, and not above that.
bool can_be_encoded(const picture& p);

// ---- sizes ------------------------------------------------------------------------

// The picture at another size: each new pixel is the mean of the area that it covers,
// taken in linear light, not of the stored bytes. A star of one white pixel among four
// so keeps its light when it is made smaller, where a mean of bytes would dim it. For
// sizes above the picture's this repeats pixels, with mixed ones at their borders.
picture scale_picture(const picture& p, uint32_t width, uint32_t height);

// The picture with even sides: an odd one gets its last column or row twice. (Not by a filter
// of ffmpeg, which a user's own -vf would put out of place.)
picture even_picture(const picture& p);

// The greatest size inside width x height of the picture's own aspect, at least 1 x 1.
void fit_inside(const picture& p, uint32_t& width, uint32_t& height);

// Copies `from` into `to` with its upper left corner at (x, y); what falls outside is
// left out.
void paste_picture(picture& to, const picture& from, uint32_t x, uint32_t y);

// ---- colours ----------------------------------------------------------------------

// Linear light 0..1 of an sRGB byte, and back, rounded to the nearest byte
// (IEC 61966-2-1: c / 12.92 up to 0.04045, else ((c + 0.055) / 1.055) ^ 2.4).
float linear_light(uint8_t value);
uint8_t srgb_byte(float light); // clamps; not-a-number gives 0

// ---- differences ------------------------------------------------------------------

struct picture_comparison {
    bool same_size = false; // else nothing else is filled in
    double mean[3] = {};    // mean absolute difference of red, green, blue, 0..255
    double mean_of_all = 0; // over the three
    uint32_t greatest = 0;  // of any one byte, 0..255
    uint64_t differing_pixels = 0;
    picture difference; // absolute differences times `amplification`, at most 255
};

// Compares pixel by pixel. The picture of the difference is made only where
// `amplification` is not 0.
picture_comparison compare_pictures(const picture& a, const picture& b, uint32_t amplification);
