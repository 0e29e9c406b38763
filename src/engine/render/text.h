// Text: which glyph of the 87 a byte means, and where the pen goes.
//
// Texts are UTF-8 bytes, at most 32. Glyph numbers are 0..86 in the font's order
// (a, A, á, Á, b, .. ?, !, the digits, &, /, space).
#pragma once

#include <cstdint>
#include <span>

struct font_record;

constexpr uint8_t glyph_lead_byte = 100; // a two-byte character begins here
constexpr uint8_t glyph_none = 101;      // no glyph

// The glyphs' characters as zero-terminated UTF-8, in glyph order.
extern const char glyph_characters[87][3];

uint8_t glyph_of_byte(uint8_t c);

// The byte after a lead byte. Which lead byte came first does not matter.
uint8_t glyph_of_second_byte(uint8_t c);

struct placed_glyph {
    uint8_t glyph; // 0..86, one with a model
    float pen;     // added to the x of every placement
};

constexpr uint32_t max_placed_glyphs = 32;

// The drawn glyphs of a text of at most 32 bytes (up to its first zero) and their
// pen positions. A blank glyph moves the pen by width - offset; a drawn one stands
// at pen - offset and moves the pen by exactly its width. Returns how many were
// written to `out`.
uint32_t layout_text(const char text[32], const font_record& font, std::span<placed_glyph, max_placed_glyphs> out);
