#include "authoring/asset/font_outline.h"

#include <algorithm>
#include <cmath>

constexpr double curve_turn = 0.2618;     // radians, 15 degrees: from one piece of a curve to the next
constexpr uint32_t max_curve_pieces = 64; // of one curve
constexpr double grid = 64;               // points lie on parts of a font unit: equal ones are then equal
constexpr double straight = 1e-3;         // font units: a point so near to a line lies on it

static outline_point on_grid(outline_point p)
{
    return {std::round(p.x * grid) / grid, std::round(p.y * grid) / grid};
}

static double cross(outline_point a, outline_point b)
{
    return a.x * b.y - a.y * b.x;
}

static outline_point between(outline_point from, outline_point to)
{
    return {to.x - from.x, to.y - from.y};
}

static double length(outline_point a)
{
    return std::sqrt(a.x * a.x + a.y * a.y);
}

// Radians that the way a, b turns by, 0 where one of them has no length.
static double turn_between(outline_point a, outline_point b)
{
    return std::abs(std::atan2(cross(a, b), a.x * b.x + a.y * b.y));
}

// Pieces for a curve that bends away from its chords as its second differences say.
static uint32_t curve_pieces(const outline_pen& pen, double second_difference, double turn)
{
    const double by_distance = std::ceil(std::sqrt(second_difference / (8 * pen.tolerance)));
    const double by_turn = std::ceil(turn / curve_turn);
    return static_cast<uint32_t>(std::clamp(std::max(by_distance, by_turn), 1.0, double(max_curve_pieces)));
}

static void add_point(outline_pen& pen, outline_point to)
{
    if (pen.points >= max_outline_points) {
        pen.too_many = true;
        return;
    }
    if (pen.rings.empty())
        pen.rings.emplace_back();
    pen.rings.back().push_back(on_grid(to));
    ++pen.points;
}

void pen_move(outline_pen& pen, outline_point to)
{
    pen.rings.emplace_back();
    add_point(pen, to);
    pen.at = to;
}

void pen_line(outline_pen& pen, outline_point to)
{
    add_point(pen, to);
    pen.at = to;
}

void pen_conic(outline_pen& pen, outline_point control, outline_point to)
{
    const outline_point from = pen.at;
    const outline_point bend = {from.x - 2 * control.x + to.x, from.y - 2 * control.y + to.y};
    const double turn = turn_between(between(from, control), between(control, to));
    const uint32_t pieces = curve_pieces(pen, 2 * length(bend), turn);
    for (uint32_t i = 1; i <= pieces; ++i) {
        const double t = double(i) / pieces;
        const double s = 1 - t;
        const double a = s * s, b = 2 * s * t, c = t * t;
        add_point(pen, {a * from.x + b * control.x + c * to.x, a * from.y + b * control.y + c * to.y});
    }
    pen.at = to;
}

void pen_cubic(outline_pen& pen, outline_point control1, outline_point control2, outline_point to)
{
    const outline_point from = pen.at;
    const outline_point bend1 = {from.x - 2 * control1.x + control2.x, from.y - 2 * control1.y + control2.y};
    const outline_point bend2 = {control1.x - 2 * control2.x + to.x, control1.y - 2 * control2.y + to.y};
    const outline_point way1 = between(from, control1), way2 = between(control1, control2),
                        way3 = between(control2, to);
    const double turn = turn_between(way1, way2) + turn_between(way2, way3);
    const uint32_t pieces = curve_pieces(pen, 6 * std::max(length(bend1), length(bend2)), turn);
    for (uint32_t i = 1; i <= pieces; ++i) {
        const double t = double(i) / pieces;
        const double s = 1 - t;
        const double a = s * s * s, b = 3 * s * s * t, c = 3 * s * t * t, d = t * t * t;
        add_point(pen,
            {a * from.x + b * control1.x + c * control2.x + d * to.x,
                a * from.y + b * control1.y + c * control2.y + d * to.y});
    }
    pen.at = to;
}

size_t outline_point_count(const letter_outline& outline)
{
    size_t count = 0;
    for (const outline_ring& ring : outline)
        count += ring.size();
    return count;
}

double outline_area(const letter_outline& outline)
{
    double twice = 0;
    for (const outline_ring& ring : outline)
        for (size_t i = 0; i < ring.size(); ++i)
            twice += cross(ring[i], ring[(i + 1) % ring.size()]);
    return twice / 2;
}

namespace {
struct outline_edge {
    outline_point a;
    outline_point b;
    double left;
    double right;
};
} // namespace

static bool edges_meet(const outline_edge& e, const outline_edge& f, bool touching)
{
    if (std::max(e.a.y, e.b.y) < std::min(f.a.y, f.b.y) || std::max(f.a.y, f.b.y) < std::min(e.a.y, e.b.y))
        return false;
    const outline_point way_e = between(e.a, e.b), way_f = between(f.a, f.b);
    const double e_sides = cross(way_e, between(e.a, f.a)) * cross(way_e, between(e.a, f.b));
    const double f_sides = cross(way_f, between(f.a, e.a)) * cross(way_f, between(f.a, e.b));
    return touching ? e_sides <= 0 && f_sides <= 0 : e_sides < 0 && f_sides < 0;
}

size_t outline_crossings(const letter_outline& outline, bool touching, size_t limit)
{
    std::vector<outline_edge> edges;
    for (const outline_ring& ring : outline) {
        for (size_t i = 0; i < ring.size(); ++i) {
            const outline_point a = ring[i], b = ring[(i + 1) % ring.size()];
            edges.push_back({a, b, std::min(a.x, b.x), std::max(a.x, b.x)});
        }
    }
    std::stable_sort(
        edges.begin(), edges.end(), [](const outline_edge& e, const outline_edge& f) { return e.left < f.left; });
    size_t count = 0;
    for (size_t i = 0; i < edges.size(); ++i) {
        for (size_t j = i + 1; j < edges.size() && edges[j].left <= edges[i].right; ++j) {
            if (edges_meet(edges[i], edges[j], touching) && ++count >= limit)
                return count;
        }
    }
    return count;
}

// Whether b says nothing: on the straight way from a to c.
static bool lies_between(outline_point a, outline_point b, outline_point c)
{
    const outline_point way = between(a, c), step = between(a, b);
    const double whole = length(way);
    const double along = way.x * step.x + way.y * step.y;
    return whole > 0 && along >= 0 && along <= whole * whole && std::abs(cross(way, step)) <= straight * whole;
}

void thin_outline(letter_outline& outline, double distance)
{
    for (outline_ring& ring : outline) {
        outline_ring kept;
        for (const outline_point& p : ring) {
            if (!kept.empty() && length(between(kept.back(), p)) < distance)
                continue;
            while (kept.size() > 1 && lies_between(kept[kept.size() - 2], kept.back(), p))
                kept.pop_back();
            kept.push_back(p);
        }
        while (kept.size() > 1 && length(between(kept.back(), kept.front())) < distance)
            kept.pop_back();
        while (kept.size() > 2 && lies_between(kept[kept.size() - 2], kept.back(), kept.front()))
            kept.pop_back();
        ring = kept;
    }
    std::erase_if(outline, [](const outline_ring& ring) { return ring.size() < 3; });
}
