// The letters of contact sheets, and writing with them.
//
// DejaVu Sans in two sizes; its files lie inside the program (sheet_fonts.S). Texts are
// UTF-8; a letter that the font lacks is written as "?".
#pragma once

#include "tools/frames/picture.h"

#include <cstdint>
#include <string>
#include <string_view>

enum sheet_font : int32_t {
    small_sheet_font, // capitals are 12 pixels high
    large_sheet_font, // bold, capitals are 22 pixels high
    sheet_font_count
};

struct sheet_color {
    uint8_t red;
    uint8_t green;
    uint8_t blue;
};

// From the upper border of a line to its base line, whole pixels.
int32_t font_ascent(sheet_font font);

// Pixels from the first pen position to the last, rounded up.
uint32_t text_width(sheet_font font, std::string_view text);

// Writes with the upper left corner of the line at (x, y); what is outside is left out.
void draw_text(picture& p, sheet_font font, int32_t x, int32_t y, std::string_view text, sheet_color color);

// The text, or its beginning with "..." behind it, in at most `width` pixels; empty
// where not even that fits.
std::string cut_text(sheet_font font, std::string_view text, uint32_t width);
