// Where a camera looks: the two angles that turn it towards something, for cameras and targets that move.
//
// Angles as documents have them, degrees: the first about x looks down, the second about y to the right; the world
// is turned about y first, then about x. An angle is the first pair that looks from the eye (at the negative z
// axis with angles of 0) at the target. Pure.
#pragma once

#include "authoring/curve/curve.h"

#include <array>
#include <optional>
#include <string>

struct camera_number {
    double constant;
    const curve* moving; // null: it stands still
};

struct turned_number {
    double constant = 0;
    std::optional<curve> moving; // none: it stands still
};

// How far a curve that was sampled may look past its target, degrees.
constexpr double look_at_tolerance = 0.05;

// Fills in angles[0] and angles[1]. What moves is sampled until the direction is within look_at_tolerance of the
// true one at every tick, or all 16 segments are used. The heading goes on without a jump; straight up and down
// it stays what it was. Where eye and target loop, so do the angles. Empty, or what is wrong, to be put behind
// "look_at": the eye stands where it looks, or curves loop in different ways.
std::string look_at(
    const std::array<camera_number, 3>& eye, const std::array<camera_number, 3>& target, turned_number angles[2]);

// The direction's angles, degrees: {down, right}. `heading` is what the second stays near to, and is straight up.
std::array<double, 2> angles_towards(const std::array<double, 3>& direction, double heading);
