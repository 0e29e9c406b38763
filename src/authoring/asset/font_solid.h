// A letter's shape: its flat face, or with a depth its front, back and sides, with a rounded rim on request.
//
// Pure; the caller owns everything.
#pragma once

#include "authoring/asset/font_outline.h"
#include "authoring/asset/shape.h"

struct letter_solid {
    double scale;       // of the scene, for one unit of the outline
    double depth;       // units of the scene: from z = -depth / 2 to depth / 2; 0: flat at z = 0
    double bevel;       // units of the scene, 0..depth / 2
    double line_top;    // units of the outline: where v is 0
    double line_height; // units of the outline, above 0: v grows by 1 on it downwards, u to the right
};

// The shape of a clean outline: normals and one set of coordinates, counter-clockwise in front. Sides are smooth along
// curves and hard at corners above 30 degrees. False: the tessellator gave up.
[[nodiscard]] bool make_letter_shape(const letter_outline& outline, const letter_solid& solid, shape_data& shape);
