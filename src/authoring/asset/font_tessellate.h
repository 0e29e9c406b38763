// Outlines without crossings, and their triangles, by GLU's tessellator; it needs no OpenGL context.
//
// Units are those of the outline. False, with results of no meaning, where the tessellator gives up.
#pragma once

#include "authoring/asset/font_outline.h"

#include <cstdint>
#include <vector>

// The border of what the rings of `outline` fill, as a clean outline. Rings fill where they run around a point
// in one direction more often than in the other, or with `even_odd` an odd number of times.
[[nodiscard]] bool outline_border(const letter_outline& outline, bool even_odd, letter_outline& border);

// The triangles of a clean outline, counter-clockwise: three numbers each of `points`, which begin with those
// of the outline, ring after ring.
[[nodiscard]] bool outline_triangles(
    const letter_outline& outline, std::vector<outline_point>& points, std::vector<uint32_t>& triangles);
