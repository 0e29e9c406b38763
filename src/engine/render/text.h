// Text: where the pen goes. Texts are UTF-8 bytes, at most 32.
#pragma once

#include "model/glyphs.h"

#include <cstdint>
#include <span>

struct font_record;

struct placed_glyph {
    uint8_t glyph; // 0..86, one with a mesh
    float pen;     // added to the x of every placement
};

constexpr uint32_t max_placed_glyphs = 32;

// The drawn glyphs of a text of at most 32 bytes (up to its first zero) and their
// pen positions. A blank glyph moves the pen by width - offset; a drawn one stands
// at pen - offset and moves the pen by exactly its width. Returns how many were
// written to `out`.
uint32_t layout_text(const char text[32], const font_record& font, std::span<placed_glyph, max_placed_glyphs> out);
