#include "authoring/asset/font_bevel.h"

#include <algorithm>
#include <cassert>
#include <cmath>

constexpr double longest_miter = 4; // a corner's point moves no farther than this many bevels
constexpr double room_left = 0.9;   // of the way to a thin stroke's middle is used
constexpr double slope = 0.5;       // how fast the reach changes along the border
constexpr double tangent = 0.98;    // an edge nearer than this part of the way is in the way
constexpr uint32_t shrinkings = 6;  // of a bevel that does not fit as planned
constexpr double shrinking = 0.7;

namespace {
// An edge of a ring as it moves inwards: the line of points p with `inward` * p = `place` + what it moved.
struct moving_edge {
    outline_point along;  // of length 1
    outline_point inward; // of length 1
    double place;
    size_t before; // the neighbours that are still there
    size_t after;
    bool gone;
};

// An edge of the border and the box about it.
struct border_edge {
    outline_point a;
    outline_point b;
    outline_point low;
    outline_point high;
};
} // namespace

static double dot(outline_point a, outline_point b)
{
    return a.x * b.x + a.y * b.y;
}

static outline_point minus(outline_point a, outline_point b)
{
    return {a.x - b.x, a.y - b.y};
}

static outline_point plus(outline_point a, outline_point b, double times)
{
    return {a.x + b.x * times, a.y + b.y * times};
}

static double distance_to_edge(outline_point p, outline_point a, outline_point b)
{
    const outline_point way = minus(b, a), step = minus(p, a);
    const double square = dot(way, way);
    const double part = square > 0 ? std::clamp(dot(step, way) / square, 0.0, 1.0) : 0.0;
    const outline_point off = plus(step, way, -part);
    return std::sqrt(dot(off, off));
}

static std::vector<moving_edge> ring_edges(const outline_ring& ring)
{
    const size_t count = ring.size();
    std::vector<moving_edge> edges(count);
    for (size_t i = 0; i < count; ++i) {
        const outline_point way = minus(ring[(i + 1) % count], ring[i]);
        const double length = std::sqrt(dot(way, way));
        const outline_point along = length > 0 ? outline_point{way.x / length, way.y / length} : outline_point{1, 0};
        const outline_point inward = {-along.y, along.x};
        edges[i] = {along, inward, dot(inward, ring[i]), (i + count - 1) % count, (i + 1) % count, false};
    }
    return edges;
}

// Where two neighbours' lines meet after `moved`; `corner` is a border point between them.
static outline_point meeting(const moving_edge& a, const moving_edge& b, outline_point corner, double moved)
{
    const double turn = a.along.x * b.along.y - a.along.y * b.along.x;
    const outline_point sum = plus(a.inward, b.inward, 1);
    const double size = std::sqrt(dot(sum, sum));
    if (std::abs(turn) < 1e-6) // straight on; or back, where no point is right: what stays counts as in the way
        return size > 1 ? plus(corner, sum, moved / size) : corner;
    const double first = a.place + moved, second = b.place + moved;
    const outline_point met
        = {(first * b.inward.y - second * a.inward.y) / turn, (second * a.inward.x - first * b.inward.x) / turn};
    const outline_point way = minus(met, corner);
    const double far = std::sqrt(dot(way, way));
    return far <= longest_miter * moved ? met : plus(corner, way, longest_miter * moved / far);
}

// Marks the edges that have shrunk to nothing after `moved`, with what their going makes vanish.
static void drop_vanished(std::vector<moving_edge>& edges, const outline_ring& ring, double moved)
{
    size_t left = edges.size();
    size_t unchanged = 0;
    for (size_t i = 0; unchanged < left && left > 3;) {
        moving_edge& edge = edges[i];
        const outline_point from = meeting(edges[edge.before], edge, ring[i], moved);
        const outline_point to = meeting(edge, edges[edge.after], ring[(i + 1) % ring.size()], moved);
        ++unchanged;
        if (dot(minus(to, from), edge.along) < 0) {
            edge.gone = true;
            edges[edge.before].after = edge.after;
            edges[edge.after].before = edge.before;
            --left;
            unchanged = 0;
            i = edge.before;
        } else {
            i = edge.after;
        }
    }
}

// The edge at or before, or at or after, that is still there.
static size_t edge_left(const std::vector<moving_edge>& edges, size_t i, bool forward)
{
    while (edges[i].gone)
        i = forward ? edges[i].after : edges[i].before;
    return i;
}

// How much nearer than now the nearest edge might be to a point that has moved, where its own edges, or for
// the tip of a hollow its own corner, are `own` away. Negative: it came too far.
static double slack_at(outline_point p, double own, const std::vector<border_edge>& border)
{
    const double wanted = own * tangent;
    const double seen = 2 * own; // what is farther away says nothing
    double nearest = seen;
    for (const border_edge& edge : border) {
        if (edge.high.x < p.x - seen || edge.low.x > p.x + seen || edge.high.y < p.y - seen || edge.low.y > p.y + seen)
            continue;
        nearest = std::min(nearest, distance_to_edge(p, edge.a, edge.b));
    }
    return nearest - wanted;
}

static std::vector<border_edge> border_of(const letter_outline& outline)
{
    std::vector<border_edge> border;
    for (const outline_ring& ring : outline) {
        for (size_t i = 0; i < ring.size(); ++i) {
            const outline_point a = ring[i], b = ring[(i + 1) % ring.size()];
            border.push_back(
                {a, b, {std::min(a.x, b.x), std::min(a.y, b.y)}, {std::max(a.x, b.x), std::max(a.y, b.y)}});
        }
    }
    return border;
}

// Whether the border turns to the right at a point: the letter's inside lies all around it.
static bool is_hollow(const outline_ring& ring, size_t i)
{
    const outline_point in = minus(ring[i], ring[(i + ring.size() - 1) % ring.size()]);
    const outline_point out = minus(ring[(i + 1) % ring.size()], ring[i]);
    return in.x * out.y - in.y * out.x < 0;
}

// Whether a point leaps from one step to the next: its edges have met an edge from elsewhere.
static bool leaps(const bevel_way& way, uint32_t step, double bevel)
{
    const outline_point moved = minus(way.at[step], way.at[step - 1]);
    return std::sqrt(dot(moved, moved)) > 1.01 * longest_miter * bevel / bevel_steps;
}

// How far a point may go: up to where another edge comes nearer than its own.
static double reach_of(const bevel_way& way, double bevel, bool hollow, const std::vector<border_edge>& border)
{
    double slack = 0;
    for (uint32_t step = 1; step <= bevel_steps; ++step) {
        const double moved = bevel * step / bevel_steps;
        if (leaps(way, step, bevel))
            return room_left * bevel * (step - 1) / bevel_steps;
        const outline_point gone = minus(way.at[step], way.at[0]);
        const double own = hollow && step < way.joined ? std::sqrt(dot(gone, gone)) : moved;
        const double next = slack_at(way.at[step], own, border);
        if (next < 0) {
            const double part = slack / std::max(slack - next, 1e-12);
            return room_left * bevel * (step - 1 + part) / bevel_steps;
        }
        slack = next;
    }
    return bevel;
}

// The reach falls and rises gently along a ring.
static void smooth_reach(bevel_way* ways, const outline_ring& ring)
{
    const size_t count = ring.size();
    const auto limit = [&](size_t i, size_t from) {
        const outline_point step = minus(ring[i], ring[from]);
        ways[i].reach = std::min(ways[i].reach, ways[from].reach + slope * std::sqrt(dot(step, step)));
    };
    for (size_t i = 0; i < 2 * count; ++i)
        limit((i + 1) % count, i % count);
    for (size_t i = 2 * count; i > 0; --i)
        limit((i - 1) % count, i % count);
}

static void plan_ring(const outline_ring& ring, double bevel, bevel_way* ways)
{
    const size_t count = ring.size();
    for (size_t i = 0; i < count; ++i) {
        ways[i].at[0] = ring[i];
        ways[i].joined = bevel_steps + 1;
    }
    for (uint32_t step = 1; step <= bevel_steps; ++step) {
        const double moved = bevel * step / bevel_steps;
        std::vector<moving_edge> edges = ring_edges(ring);
        drop_vanished(edges, ring, moved);
        for (size_t i = 0; i < count; ++i) {
            const size_t before = edge_left(edges, (i + count - 1) % count, false);
            const size_t after = edge_left(edges, i, true);
            if (before != (i + count - 1) % count || after != i)
                ways[i].joined = std::min(ways[i].joined, step);
            ways[i].at[step] = meeting(edges[before], edges[after], ring[i], moved);
        }
    }
}

// The rings when every point has gone all its way.
static letter_outline reached(const letter_outline& outline, const std::vector<bevel_way>& ways, double bevel)
{
    letter_outline result;
    size_t number = 0;
    for (const outline_ring& ring : outline) {
        outline_ring& moved = result.emplace_back();
        for (size_t i = 0; i < ring.size(); ++i)
            moved.push_back(bevel_point(ways[number++], bevel, 1));
    }
    return result;
}

std::vector<bevel_way> plan_bevel(const letter_outline& outline, double bevel)
{
    assert(bevel > 0);
    std::vector<bevel_way> ways(outline_point_count(outline));
    const std::vector<border_edge> border = border_of(outline);
    size_t first = 0;
    for (const outline_ring& ring : outline) {
        plan_ring(ring, bevel, ways.data() + first);
        for (size_t i = 0; i < ring.size(); ++i)
            ways[first + i].reach = reach_of(ways[first + i], bevel, is_hollow(ring, i), border);
        smooth_reach(ways.data() + first, ring);
        first += ring.size();
    }
    for (uint32_t i = 0; i < shrinkings; ++i) {
        const letter_outline rim = reached(outline, ways, bevel);
        if (outline_crossings(rim, false, 1) == 0 && outline_area(rim) > 0)
            return ways;
        for (bevel_way& way : ways)
            way.reach *= shrinking;
    }
    return {};
}

outline_point bevel_point(const bevel_way& way, double bevel, double part)
{
    const double steps = std::clamp(part * way.reach / bevel, 0.0, 1.0) * bevel_steps;
    const uint32_t step = std::min(static_cast<uint32_t>(steps), bevel_steps - 1);
    return plus(way.at[step], minus(way.at[step + 1], way.at[step]), steps - step);
}
