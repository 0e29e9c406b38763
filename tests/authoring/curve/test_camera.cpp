#include "authoring/curve/camera.h"

#include "content/matrix.h"

#include <doctest/doctest.h>

#include <cmath>

namespace {

using point = std::array<double, 3>;
using moving_point = std::array<camera_number, 3>;

} // namespace

static moving_point still(double x, double y, double z)
{
    return {{{x, nullptr}, {y, nullptr}, {z, nullptr}}};
}

static point place_at(const moving_point& p, uint32_t tick)
{
    point place;
    for (size_t axis = 0; axis < 3; ++axis)
        place[axis] = p[axis].moving != nullptr ? curve_at(*p[axis].moving, tick) : p[axis].constant;
    return place;
}

static double angle_at(const turned_number& number, uint32_t tick)
{
    return number.moving ? curve_at(*number.moving, tick) : number.constant;
}

// How far the target lies from the middle of the picture, degrees: by the matrix that the compositor makes of a
// document's camera. The player looks along the negative z axis.
static double degrees_off(const point& eye, const point& target, double down, double right)
{
    float camera[16];
    copy_matrix(identity, camera);
    rotate_z(camera, 0);
    rotate_x(camera, static_cast<float>(down));
    rotate_y(camera, static_cast<float>(right));
    translate(camera, static_cast<float>(-eye[0]), static_cast<float>(-eye[1]), static_cast<float>(-eye[2]));
    const float at[3] = {static_cast<float>(target[0]), static_cast<float>(target[1]), static_cast<float>(target[2])};
    float seen[3];
    transform_point(camera, at, seen);
    return std::atan2(std::hypot(seen[0], seen[1]), -seen[2]) * 180 / 3.14159265358979;
}

// The worst over all ticks up to `length`.
static double worst_off(
    const moving_point& eye, const moving_point& target, const turned_number angles[2], uint32_t length)
{
    double worst = 0;
    for (uint32_t tick = 0; tick <= length; ++tick)
        worst = std::max(worst,
            degrees_off(
                place_at(eye, tick), place_at(target, tick), angle_at(angles[0], tick), angle_at(angles[1], tick)));
    return worst;
}

TEST_CASE("A camera that stands still gets constants that look at its target")
{
    for (const point& target : {point{0, 0, -5}, {0, 0, 5}, {3, 0, 0}, {-3, 0, 0}, {1, 2, 3}, {1, -2, -3}, {0, 4, 0},
             {0, -4, 0}, {1e-3, 5, 0}}) {
        const moving_point eye = still(0.5, 1, -2);
        const moving_point at = still(target[0] + 0.5, target[1] + 1, target[2] - 2);
        turned_number angles[2];
        CHECK(look_at(eye, at, angles) == "");
        CHECK(!angles[0].moving);
        CHECK(!angles[1].moving);
        CHECK(worst_off(eye, at, angles, 0) < 0.01);
    }
}

TEST_CASE("The first angle looks down and the second to the right")
{
    turned_number angles[2];
    look_at(still(0, 0, 0), still(0, -1, -1), angles);
    CHECK(angles[0].constant == doctest::Approx(45));
    CHECK(angles[1].constant == doctest::Approx(0));
    look_at(still(0, 0, 0), still(1, 0, -1), angles);
    CHECK(angles[0].constant == doctest::Approx(0));
    CHECK(angles[1].constant == doctest::Approx(45));
}

TEST_CASE("A camera on a path stays on its target within 0.05 degrees")
{
    curve x;
    curve y;
    curve z;
    REQUIRE(spline_curve({{0, -4}, {200, 0}, {500, 5}, {800, 2}}, 0, x) == "");
    REQUIRE(spline_curve({{0, 1}, {200, 2}, {500, 0}, {800, 3}}, 0, y) == "");
    REQUIRE(spline_curve({{0, 3}, {200, 5}, {500, -4}, {800, -6}}, 0, z) == "");
    const moving_point eye = {{{0, &x}, {0, &y}, {0, &z}}};
    turned_number angles[2];
    CHECK(look_at(eye, still(0, 0.5, 0), angles) == "");
    CHECK(worst_off(eye, still(0, 0.5, 0), angles, 900) <= look_at_tolerance);
    CHECK(curve_fault(*angles[0].moving) == "");
    CHECK(curve_fault(*angles[1].moving) == "");
    // Two that move.
    const curve sway = wave_curve(0, 1, 300, 0, 800);
    const moving_point target = {{{0, &sway}, {0.5, nullptr}, {-1, nullptr}}};
    CHECK(look_at(eye, target, angles) == "");
    CHECK(worst_off(eye, target, angles, 900) <= look_at_tolerance);
}

TEST_CASE("A heading goes around without a jump")
{
    // Two and a half rounds about the target.
    const curve x = wave_curve(0, 5, 400, -0.25, 1000);
    const curve z = wave_curve(0, 5, 400, 0, 1000);
    const moving_point eye = {{{0, &x}, {2, nullptr}, {0, &z}}};
    turned_number angles[2];
    CHECK(look_at(eye, still(0, 0, 0), angles) == "");
    CHECK(worst_off(eye, still(0, 0, 0), angles, 1000) <= look_at_tolerance);
    CHECK(!angles[0].moving); // always as steep
    REQUIRE(angles[1].moving);
    for (uint32_t tick = 1; tick <= 1000; ++tick)
        REQUIRE(std::fabs(angle_at(angles[1], tick) - angle_at(angles[1], tick - 1)) < 2);
    CHECK(std::fabs(angle_at(angles[1], 1000) - angle_at(angles[1], 0)) == doctest::Approx(900).epsilon(1e-4));
}

TEST_CASE("Straight up and down the heading stays what it was")
{
    const curve y = linear_curve(-3, 3, 600);
    const moving_point eye = {{{0, nullptr}, {10, nullptr}, {0, nullptr}}};
    const moving_point target = {{{0, nullptr}, {0, &y}, {0, nullptr}}};
    turned_number angles[2];
    CHECK(look_at(eye, target, angles) == "");
    CHECK(!angles[0].moving);
    CHECK(angles[0].constant == doctest::Approx(90));
    CHECK(angles[1].constant == 0);
    CHECK(angles_towards({0, 1, 0}, 123)[1] == 123);
    CHECK(angles_towards({0, 1, 0}, 123)[0] == doctest::Approx(-90));
    CHECK(angles_towards({0, 0, 1}, -170)[1] == doctest::Approx(-180));
    CHECK(angles_towards({0, 0, 1}, 700)[1] == doctest::Approx(540 + 0));
}

TEST_CASE("An eye where it looks is told")
{
    turned_number angles[2];
    CHECK(look_at(still(1, 2, 3), still(1, 2, 3), angles)
        == "has the eye where it looks, and no direction comes of that");
    const curve x = linear_curve(-1, 1, 200);
    CHECK(look_at({{{0, &x}, {0, nullptr}, {0, nullptr}}}, still(0, 0, 0), angles) != "");
    CHECK(look_at({{{0, &x}, {0, nullptr}, {1, nullptr}}}, still(0, 0, 0), angles) == "");
}

TEST_CASE("A camera on a loop looks at its target in every round")
{
    curve x = wave_curve(0, 5, 400, -0.25, 400);
    curve z = wave_curve(0, 5, 400, 0, 400);
    for (curve* c : {&x, &z}) {
        c->loop = loop_around;
        c->loop_to = 400;
    }
    const moving_point eye = {{{0, &x}, {2, nullptr}, {0, &z}}};
    turned_number angles[2];
    CHECK(look_at(eye, still(0, 0, 0), angles) == "");
    CHECK(worst_off(eye, still(0, 0, 0), angles, 3000) <= look_at_tolerance);
    // Loops that do not go together have no curve of 16 segments.
    z.loop_to = 300;
    CHECK(look_at(eye, still(0, 0, 0), angles)
        == "follows curves that loop in different ways, and its angles cannot: give all the same loop, or none");
    z.loop = loop_off;
    CHECK(look_at(eye, still(0, 0, 0), angles) != "");
}
