// PNG files in memory: pictures with words beside them.
//
// A text is Latin-1; what PNG does not allow in one (all below a space but line ends, and 127
// to 160) is kept as "?". A keyword has 1 to 79 letters; an empty text is none.
#pragma once

#include "tools/frames/picture.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

struct png_text {
    std::string keyword;
    std::string text;
};

// How hard pixels are packed: 0 not at all, 1 fast, up to 12 slower and smaller.
constexpr uint32_t png_level_fast = 1;
constexpr uint32_t png_level_small = 6; // a tenth less than 1, for four times the time
constexpr uint32_t max_png_level = 12;

// The picture as a PNG file with its texts (tEXt) before the pixels; empty for a picture that
// is not whole or above max_encoded_bytes, and when there is no memory. The same pixels give
// the same bytes. While it works it has the pixels once more, and behind them what they are packed to twice.
std::vector<uint8_t> encode_png(
    const picture& p, const std::vector<png_text>& texts = {}, uint32_t level = png_level_fast);

// The same file of a picture that nobody needs any more, without having its pixels once more: they are filtered
// where they lie, and are gone afterwards.
std::vector<uint8_t> encode_png(picture&& p, const std::vector<png_text>& texts = {}, uint32_t level = png_level_fast);

// The first text of a keyword before the pixels of a file; empty when there is none. Stops at
// damage.
std::string read_png_text(std::span<const uint8_t> png, std::string_view keyword);

// A text as it is kept and read again.
std::string as_png_text(std::string_view text);
