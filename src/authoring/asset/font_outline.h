// The outline of a letter: closed rings of points, drawn from a font's lines and curves.
//
// Units are the font's own, x to the right and y up. A clean outline has its inside to the left of every ring,
// so that outer rings run counter-clockwise and holes clockwise, and no ring crosses another or itself
// (font_tessellate.h makes it). Pure; the caller owns everything.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

struct outline_point {
    double x;
    double y;
};

using outline_ring = std::vector<outline_point>; // closed: the last point is followed by the first
using letter_outline = std::vector<outline_ring>;

constexpr size_t max_outline_points = 8192;     // of one letter
constexpr size_t max_outline_crossings = 50000; // pairs of edges that meet, its neighbours among them

// Draws an outline. Curves become straight pieces that keep within `tolerance` of them and turn by no more than
// 15 degrees from one to the next, so that a greater angle is a corner of the letter. All zero but for
// the tolerance to begin with.
struct outline_pen {
    double tolerance; // above 0
    letter_outline rings;
    outline_point at;
    size_t points;
    bool too_many; // more than max_outline_points: the rest was dropped
};

void pen_move(outline_pen& pen, outline_point to); // begins a ring
void pen_line(outline_pen& pen, outline_point to);
void pen_conic(outline_pen& pen, outline_point control, outline_point to);
void pen_cubic(outline_pen& pen, outline_point control1, outline_point control2, outline_point to);

// Points of all rings.
size_t outline_point_count(const letter_outline& outline);

// Its surface, where rings run as in a clean outline.
double outline_area(const letter_outline& outline);

// Pairs of edges that cross, counted up to `limit`. With `touching` those too that only meet.
size_t outline_crossings(const letter_outline& outline, bool touching, size_t limit);

// Without points nearer than `distance` to the point before, points on the straight line between their neighbours,
// and rings of fewer than three points.
void thin_outline(letter_outline& outline, double distance);
