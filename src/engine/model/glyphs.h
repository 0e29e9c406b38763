// Which glyph of the 87 a byte of a text means.
//
// Texts are UTF-8. Glyph numbers are 0..86 in the font's order (a, A, á, Á, b, .. ?, !,
// the digits, &, /, space).
#pragma once

#include <cstdint>

constexpr uint8_t glyph_lead_byte = 100; // a two-byte character begins here
constexpr uint8_t glyph_none = 101;      // no glyph

// The glyphs' characters as zero-terminated UTF-8, in glyph order.
extern const char glyph_characters[87][3];

uint8_t glyph_of_byte(uint8_t c);

// The byte after a lead byte. Which lead byte came first does not matter.
uint8_t glyph_of_second_byte(uint8_t c);
