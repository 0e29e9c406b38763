#include "authoring/asset/font_solid.h"

#include "authoring/asset/font_bevel.h"
#include "authoring/asset/font_tessellate.h"

#include <array>
#include <cassert>
#include <cmath>

constexpr double smooth_cosine = 0.8660254037844386; // of 30 degrees: a greater angle is a corner

// A rim's quarter circle, from the side to the face. Written out: the C library's last bits differ between machines.
constexpr uint32_t rounding = 3; // pieces
constexpr std::array<double, rounding + 1> rim_cosine = {1, smooth_cosine, 0.5, 0};
constexpr std::array<double, rounding + 1> rim_sine = {0, 0.5, smooth_cosine, 1};

namespace {
// What a letter's shape is made from.
struct solid_plan {
    letter_solid solid;
    double bevel;                // units of the outline
    std::vector<bevel_way> ways; // one a point of the border, ring after ring; empty: no bevel
};

// A border point with one of its sides: what stands on it from front to back.
struct side_column {
    size_t point;         // of the border, ring after ring
    outline_point place;  // on the border
    outline_point normal; // outwards, of length 1
};
} // namespace

static void add_vertex(
    shape_data& shape, const letter_solid& solid, outline_point at, double z, const std::array<double, 3>& normal)
{
    for (const double value : {at.x * solid.scale, at.y * solid.scale, z})
        shape.positions.push_back(static_cast<float>(value));
    for (const double value : {at.x / solid.line_height, (solid.line_top - at.y) / solid.line_height})
        shape.coordinates[0].push_back(static_cast<float>(value));
    for (const double value : normal)
        shape.normals.push_back(static_cast<float>(value));
}

static bool same_position(const shape_data& shape, uint32_t a, uint32_t b)
{
    const float* const p = &shape.positions[size_t(a) * 3];
    const float* const q = &shape.positions[size_t(b) * 3];
    return p[0] == q[0] && p[1] == q[1] && p[2] == q[2];
}

// A triangle, but for one whose points fell together.
static void add_triangle(shape_data& shape, uint32_t a, uint32_t b, uint32_t c)
{
    if (!same_position(shape, a, b) && !same_position(shape, b, c) && !same_position(shape, c, a))
        shape.triangles.insert(shape.triangles.end(), {a, b, c});
}

static bool add_face(shape_data& shape, const letter_solid& solid, const letter_outline& face, bool front)
{
    std::vector<outline_point> points;
    std::vector<uint32_t> triangles;
    if (!outline_triangles(face, points, triangles))
        return false;
    const uint32_t first = shape_vertex_count(shape);
    const double z = front ? solid.depth / 2 : -solid.depth / 2;
    for (const outline_point& p : points)
        add_vertex(shape, solid, p, z, {0, 0, front ? 1.0 : -1.0});
    for (size_t i = 0; i + 2 < triangles.size(); i += 3) {
        const uint32_t second = triangles[i + (front ? 1 : 2)], third = triangles[i + (front ? 2 : 1)];
        add_triangle(shape, first + triangles[i], first + second, first + third);
    }
    return true;
}

// The border of front and back: the outline, moved inwards where there is a bevel.
static letter_outline face_outline(const letter_outline& outline, const solid_plan& plan)
{
    letter_outline face = outline;
    size_t number = 0;
    if (!plan.ways.empty())
        for (outline_ring& ring : face)
            for (outline_point& p : ring)
                p = bevel_point(plan.ways[number++], plan.bevel, 1);
    return face;
}

// Vertices of one column: the front's rim, then the back's the other way round. Without a bevel two.
static void add_column(shape_data& shape, const solid_plan& plan, const side_column& column)
{
    const letter_solid& solid = plan.solid;
    const std::array<double, 3> flat = {column.normal.x, column.normal.y, 0};
    if (plan.ways.empty()) {
        add_vertex(shape, solid, column.place, solid.depth / 2, flat);
        add_vertex(shape, solid, column.place, -solid.depth / 2, flat);
        return;
    }
    const bevel_way& way = plan.ways[column.point];
    for (uint32_t i = 0; i < 2 * (rounding + 1); ++i) {
        const bool front = i <= rounding;
        const uint32_t step = front ? rounding - i : i - rounding - 1; // 0: at the side, `rounding`: at the face
        const double z = solid.depth / 2 - solid.bevel * (1 - rim_sine[step]);
        const double out = plan.bevel * rim_cosine[step]; // an ellipse where the reach is short
        const double up = way.reach * rim_sine[step];
        const double size = std::sqrt(out * out + up * up);
        std::array<double, 3> normal = flat;
        if (size > 0)
            normal = {column.normal.x * out / size, column.normal.y * out / size, (front ? up : -up) / size};
        add_vertex(shape, solid, bevel_point(way, plan.bevel, 1 - rim_cosine[step]), front ? z : -z, normal);
    }
}

// The quads between two neighbouring columns.
static void add_wall(shape_data& shape, uint32_t from, uint32_t to, uint32_t rings)
{
    for (uint32_t i = 0; i + 1 < rings; ++i) {
        add_triangle(shape, from + i + 1, to + i + 1, to + i);
        add_triangle(shape, from + i + 1, to + i, from + i);
    }
}

static outline_point edge_normal(outline_point a, outline_point b)
{
    const double x = b.y - a.y, y = a.x - b.x;
    const double size = std::sqrt(x * x + y * y);
    return size > 0 ? outline_point{x / size, y / size} : outline_point{1, 0};
}

static void add_sides(shape_data& shape, const solid_plan& plan, const outline_ring& ring, size_t first_point)
{
    const uint32_t rings = plan.ways.empty() ? 2 : 2 * (rounding + 1);
    const size_t count = ring.size();
    std::vector<uint32_t> leaving(count), arriving(count); // columns of the edge that begins, that ends at a point
    for (size_t i = 0; i < count; ++i) {
        const outline_point before = ring[(i + count - 1) % count], at = ring[i], after = ring[(i + 1) % count];
        const outline_point in = edge_normal(before, at), out = edge_normal(at, after);
        arriving[i] = leaving[i] = shape_vertex_count(shape);
        if (in.x * out.x + in.y * out.y >= smooth_cosine) {
            // The mean of both, to which the longer one adds more: a straight line before a curve keeps its own.
            add_column(shape, plan, {first_point + i, at, edge_normal(before, after)});
            continue;
        }
        add_column(shape, plan, {first_point + i, at, in});
        leaving[i] = shape_vertex_count(shape);
        add_column(shape, plan, {first_point + i, at, out});
    }
    for (size_t i = 0; i < count; ++i)
        add_wall(shape, leaving[i], arriving[(i + 1) % count], rings);
}

bool make_letter_shape(const letter_outline& outline, const letter_solid& solid, shape_data& shape)
{
    assert(solid.scale > 0 && solid.line_height > 0 && solid.bevel <= solid.depth / 2);
    shape = {};
    solid_plan plan = {solid, solid.bevel / solid.scale, {}};
    if (solid.bevel > 0)
        plan.ways = plan_bevel(outline, plan.bevel);
    const letter_outline face = face_outline(outline, plan);
    if (!add_face(shape, solid, face, true))
        return false;
    if (!(solid.depth > 0))
        return true;
    size_t first_point = 0;
    for (const outline_ring& ring : outline) {
        add_sides(shape, plan, ring, first_point);
        first_point += ring.size();
    }
    return add_face(shape, solid, face, false);
}
