#include "authoring/asset/font_solid.h"

#include "shape_measures.h"

#include <algorithm>
#include <cmath>
#include <doctest/doctest.h>
#include <numbers>
#include <set>

static letter_outline square(double side)
{
    return {{{0, 0}, {side, 0}, {side, side}, {0, side}}};
}

static letter_outline ring_of(uint32_t corners, double radius)
{
    letter_outline outline(1);
    for (uint32_t i = 0; i < corners; ++i) {
        const double angle = 2 * std::numbers::pi * i / corners;
        outline[0].push_back({radius * std::cos(angle), radius * std::sin(angle)});
    }
    return outline;
}

static shape_data shape_of(const letter_outline& outline, double depth, double bevel)
{
    shape_data shape;
    REQUIRE(make_letter_shape(outline, {0.5, depth, bevel, 3, 4}, shape));
    CHECK(shape_fault(shape).empty());
    return shape;
}

static void check_closed(const shape_measures& measures)
{
    CHECK(measures.open_edges == 0);
    CHECK(measures.wrong_normals == 0);
    CHECK(measures.uneven_normals == 0);
}

TEST_CASE("A flat letter is its face at z = 0")
{
    const shape_data shape = shape_of(square(2), 0, 0);
    CHECK(shape.positions.size() == 12);
    CHECK(shape.triangles.size() == 6);
    for (size_t i = 0; i < 4; ++i) {
        CHECK(shape.positions[3 * i + 2] == 0.0f);
        CHECK(shape.normals[3 * i + 2] == 1.0f);
    }
    const shape_measures measures = measure_shape(shape);
    CHECK(measures.front == doctest::Approx(1));
    CHECK(measures.back == 0.0);
}

TEST_CASE("A texture lies over the letters' line, its first row on top")
{
    const shape_data shape = shape_of(square(2), 0, 0); // scale 0.5; the line is 4 high, its top at 3
    for (size_t i = 0; i < 4; ++i) {
        const double x = shape.positions[3 * i] * 2, y = shape.positions[3 * i + 1] * 2;
        CHECK(shape.coordinates[0][2 * i] == doctest::Approx(x / 4));
        CHECK(shape.coordinates[0][2 * i + 1] == doctest::Approx((3 - y) / 4));
    }
}

TEST_CASE("A letter with depth is closed, about z = 0, with hard corners")
{
    const shape_data shape = shape_of(square(2), 0.4, 0);
    CHECK(shape_vertex_count(shape) == 4 + 4 + 16); // front, back, and two columns of two at each corner
    CHECK(shape.triangles.size() == 3 * 12);
    const shape_measures measures = measure_shape(shape);
    check_closed(measures);
    CHECK(measures.volume == doctest::Approx(0.4));
    CHECK(measures.front == doctest::Approx(1));
    CHECK(measures.back == doctest::Approx(1));
    for (size_t i = 0; i < shape.normals.size(); i += 3)
        CHECK(std::abs(shape.normals[i]) + std::abs(shape.normals[i + 1]) + std::abs(shape.normals[i + 2]) == 1.0f);
    for (size_t i = 2; i < shape.positions.size(); i += 3)
        CHECK(std::abs(shape.positions[i]) == 0.2f);
}

TEST_CASE("Sides are smooth along curves")
{
    const shape_data shape = shape_of(ring_of(24, 10), 1, 0); // turns by 15 degrees
    CHECK(shape_vertex_count(shape) == 24 + 24 + 48);
    check_closed(measure_shape(shape));
    for (size_t i = 3 * 24; i < 3 * (24 + 48); i += 3) {
        CHECK(shape.normals[i] == doctest::Approx(shape.positions[i] / 5).epsilon(1e-4));
        CHECK(shape.normals[i + 1] == doctest::Approx(shape.positions[i + 1] / 5).epsilon(1e-4));
    }
    CHECK(shape_vertex_count(shape_of(ring_of(8, 10), 1, 0)) == 8 + 8 + 32); // turns by 45 degrees
}

TEST_CASE("A straight side keeps its normal up to the curve that follows it")
{
    // A stadium: straight from (0, -1) to (40, -1), then a half circle of 12 pieces, and back.
    letter_outline outline = {{{0, -1}}};
    for (uint32_t i = 0; i <= 12; ++i) {
        const double angle = (i / 12.0 - 0.5) * std::numbers::pi;
        outline[0].push_back({40 + std::cos(angle), std::sin(angle)});
    }
    outline[0].push_back({0, 1});
    const shape_data shape = shape_of(outline, 1, 0);
    for (size_t i = 0; i < shape.positions.size(); i += 3) {
        if (shape.positions[i] == 20.0f && shape.positions[i + 1] == -0.5f && shape.normals[i + 2] == 0.0f)
            CHECK(shape.normals[i + 1] < -0.99999f);
    }
}

TEST_CASE("A bevel takes from a square what its rounded rim leaves out")
{
    const shape_data shape = shape_of(square(2), 0.4, 0.1);
    const shape_measures measures = measure_shape(shape);
    check_closed(measures);
    // Slices of the block, whose side is 1: between the rings at 0, 30, 60 and 90 degrees of the quarter circle.
    double volume = 0.2; // between the rims
    for (int i = 0; i < 3; ++i) {
        const double a = i * std::numbers::pi / 6, b = (i + 1) * std::numbers::pi / 6;
        const double side_a = 1 - 0.2 * (1 - std::cos(a)), side_b = 1 - 0.2 * (1 - std::cos(b));
        const double height = 0.1 * (std::sin(b) - std::sin(a));
        volume += 2 * height / 3 * (side_a * side_a + side_b * side_b + side_a * side_b);
    }
    CHECK(measures.volume == doctest::Approx(volume));
    CHECK(measures.front - measures.back == doctest::Approx(0).epsilon(1e-6));
    std::set<float> heights;
    for (size_t i = 2; i < shape.positions.size(); i += 3)
        heights.insert(shape.positions[i]);
    CHECK(heights.size() == 8);
    CHECK(*heights.rbegin() == 0.2f);
}

TEST_CASE("The rim's normals turn from the side to the front")
{
    const shape_data shape = shape_of(ring_of(40, 10), 0.4, 0.1);
    check_closed(measure_shape(shape));
    uint32_t slanting = 0;
    for (size_t i = 0; i < shape.normals.size(); i += 3) {
        if (shape.normals[i + 2] != doctest::Approx(0.5))
            continue;
        ++slanting; // 30 degrees up the quarter circle
        CHECK(shape.positions[i + 2] == doctest::Approx(0.1 + 0.1 * 0.5));
        CHECK(std::hypot(shape.positions[i], shape.positions[i + 1])
            == doctest::Approx(5 - 0.1 * (1 - std::sqrt(0.75))).epsilon(1e-3));
    }
    CHECK(slanting == 40);
}
