// The letters of contact sheets, and writing with them.
//
// Two sizes, ASCII and Latin-1 and a few marks, from DejaVu Sans (make_sheet_font.py).
// Texts are UTF-8; a letter that the table lacks is written as "?".
#pragma once

#include "picture.h"

#include <cstdint>
#include <string>
#include <string_view>

struct sheet_glyph {
    uint32_t letter; // its code point
    int32_t advance; // pixels to the next letter
    int32_t left;    // of the ink, pixels from the pen
    int32_t top;     // pixels from the base line, downward
    uint32_t width;  // of the ink, pixels
    uint32_t height;
    const char* coverage; // width x height hexadecimal digits: f is all ink
};

struct sheet_font {
    const sheet_glyph* glyphs; // letters ascending
    uint32_t glyph_count;
    int32_t ascent;  // pixels above the base line
    int32_t descent; // below
    int32_t space;   // width of a space
};

extern const sheet_font small_sheet_font; // 16 pixels
extern const sheet_font large_sheet_font; // 30 pixels, bold

struct sheet_color {
    uint8_t red;
    uint8_t green;
    uint8_t blue;
};

// Pixels from the first pen position to the last.
uint32_t text_width(const sheet_font& font, std::string_view text);

// Writes with the upper left corner of the line at (x, y); what is outside is left out.
void draw_text(picture& p, const sheet_font& font, int32_t x, int32_t y, std::string_view text, sheet_color color);

// The text, or its beginning with "..." behind it, in at most `width` pixels; empty
// where not even that fits.
std::string cut_text(const sheet_font& font, std::string_view text, uint32_t width);
