// A number that moves: formulas one after the other, as the player evaluates them (anim/animation_function.h).
//
// Lengths are whole ticks, times are ticks from the curve's beginning. Pure. Coefficients are kept in double
// precision and become single ones in the document.
#pragma once

#include "anim/animation_function.h"

#include <cstdint>
#include <string>
#include <vector>

struct curve_segment {
    int32_t kind;               // segment_kind
    uint32_t length;            // ticks
    std::vector<double> params; // of its formula, at most max_segment_params
};

struct curve {
    std::vector<curve_segment> segments = {};
    int32_t loop = loop_off; // loop_kind
    double loop_from = 0;    // ticks
    double loop_to = 0;
    bool integer = false; // kept as "Integer" in the document; nothing depends on it
};

struct curve_point {
    double time; // ticks
    double value;
};

// Ticks from its beginning to its end, without loops.
uint32_t curve_length(const curve& c);

// What the player shows at a tick.
double curve_at(const curve& c, double tick);

// The player's record of a curve, for whoever asks for many ticks. Segments behind the sixteenth are left out.
animation_function player_function(const curve& c);

// ---- makers -------------------------------------------------------------------------
//
// `length` is rounded to whole ticks, and at least 1; values are taken as they are.

curve constant_curve(double value, double length);
curve linear_curve(double from, double to, double length);
curve wave_curve(double middle, double swing, double period, double phase, double length); // phase in swings
curve swelling_wave_curve(
    double middle, double from_swing, double to_swing, double period, double phase, double length);

// An ease by its name: "linear", and "in", "out" or "in out" with quad, cubic, sine, back, elastic or bounce.
// Empty, or what is wrong, to be put behind the name. Linear, quad, sine and bounce are exact, the others within 0.002
// of the way between `from` and `to`.
std::string ease_curve(const std::string& name, double from, double to, double length, curve& made);
std::vector<std::string> ease_names();

// Catmull-Rom through any number of points: as many segments as it takes. `length` 0: to the last point. Empty, or
// what is wrong: fewer than two points, points that are not at least a tick apart, too many for 16 segments.
std::string spline_curve(const std::vector<curve_point>& points, double length, curve& made);

// ---- algebra ------------------------------------------------------------------------

// Every value times `factor`, plus `offset`: exact in every formula. Loops stay.
curve scaled_curve(const curve& c, double factor, double offset);

// `next` behind `c`; loops of both are lost.
curve joined_curve(const curve& c, const curve& next);

// What keeps a curve from being written: no segment, more than 16, a loop whose end does not lie behind its
// beginning. Empty when nothing does.
std::string curve_fault(const curve& c);
