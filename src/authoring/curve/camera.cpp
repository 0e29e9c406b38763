#include "authoring/curve/camera.h"

#include <algorithm>
#include <cmath>

constexpr double degrees = 180 / 3.14159265358979323846;

// What is nearer than this has no direction: single precision knows none.
constexpr double nowhere = 1e-6;

// Angles that differ by less are the same, degrees.
constexpr double no_turn = 1e-4;

std::array<double, 2> angles_towards(const std::array<double, 3>& direction, double heading)
{
    const double flat = std::hypot(direction[0], direction[2]);
    const double down = -std::atan2(direction[1], flat) * degrees;
    if (flat < 1e-9 * std::fabs(direction[1]))
        return {down, heading};
    const double right = std::atan2(direction[0], -direction[2]) * degrees;
    return {down, right + 360 * std::round((heading - right) / 360)};
}

namespace {

// A number at one tick after the other.
struct asked_number {
    double constant;
    bool moves;
    animation_function function;
};

} // namespace

static std::array<asked_number, 3> asked_numbers(const std::array<camera_number, 3>& place)
{
    std::array<asked_number, 3> asked = {};
    for (size_t axis = 0; axis < 3; ++axis) {
        asked[axis].constant = place[axis].constant;
        asked[axis].moves = place[axis].moving != nullptr;
        if (asked[axis].moves)
            asked[axis].function = player_function(*place[axis].moving);
    }
    return asked;
}

static double at_tick(asked_number& number, uint32_t tick)
{
    return number.moves ? static_cast<double>(evaluate_function(number.function, tick)) : number.constant;
}

namespace {

struct sampled_look {
    std::vector<std::array<double, 2>> angles; // at each tick
    bool is_lost = false;                      // the eye is where it looks
};

} // namespace

static sampled_look sample(
    const std::array<camera_number, 3>& eye, const std::array<camera_number, 3>& target, uint32_t length)
{
    sampled_look look;
    std::array<asked_number, 3> asked_eye = asked_numbers(eye);
    std::array<asked_number, 3> asked_target = asked_numbers(target);
    double heading = 0;
    for (uint32_t tick = 0; tick <= length; ++tick) {
        std::array<double, 3> direction = {};
        for (size_t axis = 0; axis < 3; ++axis)
            direction[axis] = at_tick(asked_target[axis], tick) - at_tick(asked_eye[axis], tick);
        if (std::hypot(direction[0], direction[1], direction[2]) < nowhere) {
            look.is_lost = true;
            look.angles.push_back(look.angles.empty() ? std::array<double, 2>{} : look.angles.back());
            continue;
        }
        look.angles.push_back(angles_towards(direction, heading));
        heading = look.angles.back()[1];
    }
    return look;
}

// The error of one angle's curve in the direction, degrees: a heading counts less the steeper the look.
static double error_at(const sampled_look& look, size_t angle, uint32_t tick, double value)
{
    const double off = std::fabs(value - look.angles[tick][angle]);
    return angle == 0 ? off : off * std::cos(look.angles[tick][0] / degrees);
}

static curve through(const sampled_look& look, size_t angle, const std::vector<uint32_t>& ticks, uint32_t length)
{
    std::vector<curve_point> points;
    for (const uint32_t tick : ticks)
        points.push_back({static_cast<double>(tick), look.angles[tick][angle]});
    curve made;
    spline_curve(points, length, made);
    return made;
}

// The tick between each two points where the curve is furthest off, if that is too far.
static std::vector<uint32_t> worst_ticks(
    const sampled_look& look, size_t angle, const curve& made, const std::vector<uint32_t>& ticks)
{
    std::vector<uint32_t> worst;
    animation_function function = player_function(made);
    for (size_t index = 1; index < ticks.size(); ++index) {
        double most = look_at_tolerance / 2; // the two angles' errors add up
        uint32_t where = 0;
        for (uint32_t tick = ticks[index - 1] + 1; tick < ticks[index]; ++tick) {
            const double off = error_at(look, angle, tick, static_cast<double>(evaluate_function(function, tick)));
            if (off > most) {
                most = off;
                where = tick;
            }
        }
        if (where != 0)
            worst.push_back(where);
    }
    return worst;
}

static turned_number fitted(const sampled_look& look, size_t angle, uint32_t length)
{
    turned_number made;
    made.constant = look.angles.front()[angle];
    const auto differs = [&](const auto& other) { return std::fabs(other[angle] - made.constant) > no_turn; };
    if (length == 0 || std::none_of(look.angles.begin(), look.angles.end(), differs))
        return made;
    std::vector<uint32_t> ticks = {0, length};
    constexpr size_t most_points = 140; // of 16 segments
    for (;;) {
        made.moving = through(look, angle, ticks, length);
        std::vector<uint32_t> more = worst_ticks(look, angle, *made.moving, ticks);
        more.resize(std::min(more.size(), most_points - ticks.size()));
        if (more.empty())
            return made;
        ticks.insert(ticks.end(), more.begin(), more.end());
        std::sort(ticks.begin(), ticks.end());
    }
}

// Everything that moves, of an eye and its target.
static std::vector<const curve*> moving_curves(
    const std::array<camera_number, 3>& eye, const std::array<camera_number, 3>& target)
{
    std::vector<const curve*> curves;
    for (const auto* place : {&eye, &target})
        for (const camera_number& number : *place)
            if (number.moving != nullptr)
                curves.push_back(number.moving);
    return curves;
}

static bool do_loop_alike(const curve& a, const curve& b)
{
    return a.loop == b.loop && (a.loop == loop_off || (a.loop_from == b.loop_from && a.loop_to == b.loop_to));
}

std::string look_at(
    const std::array<camera_number, 3>& eye, const std::array<camera_number, 3>& target, turned_number angles[2])
{
    const std::vector<const curve*> curves = moving_curves(eye, target);
    uint32_t length = 0;
    for (const curve* moving : curves) {
        length = std::max(length, std::min(curve_length(*moving), 25600u));
        if (!do_loop_alike(*moving, *curves[0]))
            return "follows curves that loop in different ways, and its angles cannot: give all the same loop, or none";
    }
    const sampled_look look = sample(eye, target, length);
    for (size_t angle = 0; angle < 2; ++angle) {
        angles[angle] = fitted(look, angle, length);
        if (angles[angle].moving && !curves.empty()) {
            angles[angle].moving->loop = curves[0]->loop;
            angles[angle].moving->loop_from = curves[0]->loop_from;
            angles[angle].moving->loop_to = curves[0]->loop_to;
        }
    }
    return look.is_lost ? "has the eye where it looks, and no direction comes of that" : "";
}
