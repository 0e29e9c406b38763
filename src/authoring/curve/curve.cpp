#include "authoring/curve/curve.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>

// A turn as the player's own tables know it: shows are written in these numbers.
constexpr double turn = 6.2831853;

static uint32_t whole_ticks(double length)
{
    return static_cast<uint32_t>(std::clamp(std::round(length), 1.0, 4e9));
}

static curve single(int32_t kind, double length, std::vector<double> params)
{
    curve made;
    made.segments.push_back({kind, whole_ticks(length), std::move(params)});
    return made;
}

uint32_t curve_length(const curve& c)
{
    uint32_t length = 0;
    for (const curve_segment& segment : c.segments)
        length += segment.length;
    return length;
}

animation_function player_function(const curve& c)
{
    animation_function function = {};
    function.cached_time = no_cached_time;
    function.segment_count = static_cast<uint8_t>(std::min<size_t>(c.segments.size(), max_segments));
    for (uint32_t index = 0; index < function.segment_count; ++index) {
        const curve_segment& segment = c.segments[index];
        function.segment_type[index] = segment.kind;
        function.segment_length[index] = segment.length;
        for (size_t param = 0; param < std::min<size_t>(segment.params.size(), max_segment_params); ++param)
            function.segment_params[index][param] = static_cast<float>(segment.params[param]);
    }
    function.loop_type = static_cast<uint8_t>(c.loop);
    function.loop_begin = static_cast<float>(c.loop_from);
    function.loop_end = static_cast<float>(c.loop_to);
    return function;
}

double curve_at(const curve& c, double tick)
{
    animation_function function = player_function(c);
    return static_cast<double>(evaluate_function(function, static_cast<uint32_t>(std::clamp(tick, 0.0, 4e9))));
}

// ---- makers -----------------------------------------------------------------------------

curve constant_curve(double value, double length)
{
    return single(segment_constant, length, {value});
}

curve linear_curve(double from, double to, double length)
{
    return single(segment_linear, length, {(to - from) / whole_ticks(length), from});
}

curve wave_curve(double middle, double swing, double period, double phase, double length)
{
    return single(segment_sine, length, {swing, turn / period, phase * turn, middle});
}

curve swelling_wave_curve(double middle, double from_swing, double to_swing, double period, double phase, double length)
{
    const double slope = (to_swing - from_swing) / whole_ticks(length);
    return single(segment_sine_linear, length, {slope, turn / period, phase * turn, middle, from_swing});
}

// ---- splines ------------------------------------------------------------------------------

static std::string point_fault(const std::vector<curve_point>& points)
{
    if (points.size() < 2)
        return "has " + std::to_string(points.size()) + (points.size() == 1 ? " point" : " points")
            + ", and a curve goes through two at least";
    for (size_t index = 1; index < points.size(); ++index)
        if (points[index].time - points[index - 1].time < 1)
            return "has point " + std::to_string(index + 1) + " less than a tick behind the one before it";
    return {};
}

constexpr size_t points_of_segment = 12;

static curve_segment spline_segment(
    const std::vector<curve_point>& points, size_t first, size_t count, double begin, uint32_t length)
{
    assert(count <= points_of_segment && first + count <= points.size());
    curve_segment segment = {segment_spline, length, {}};
    for (size_t index = first; index < first + count; ++index) {
        segment.params.push_back(points[index].time - begin);
        segment.params.push_back(points[index].value);
    }
    return segment;
}

// Points of a spline, and how long it is shown. Behind twelve points the player's curve runs on as steep as it came;
// behind fewer it is flat. A point more makes it flat in any case.
static std::vector<curve_point> ended_points(std::vector<curve_point> points, uint32_t length)
{
    const curve_point last = points.back();
    if (points.size() >= points_of_segment && length > last.time)
        points.push_back({last.time + 1, last.value});
    return points;
}

// A segment's formula asks for the points to either side of where it is: a piece brings one more on each side than
// it shows, which lies in front of its beginning or behind its end, so that the pieces are one curve.
static void add_pieces(const std::vector<curve_point>& points, uint32_t length, curve& made)
{
    size_t shown = 0; // the first point of the piece
    uint32_t begin = 0;
    while (begin < length) {
        const size_t first = shown >= 1 ? shown - 1 : 0;
        const size_t count = std::min(points_of_segment, points.size() - first);
        const bool is_last = first + count == points.size();
        const size_t last = is_last ? points.size() - 1 : first + count - 2;
        const double shown_to = std::clamp<double>(std::floor(points[last].time), begin, length);
        const uint32_t end = is_last ? length : static_cast<uint32_t>(shown_to);
        if (end > begin) // else it lies in front of the curve's beginning
            made.segments.push_back(spline_segment(points, first, count, begin, end - begin));
        begin = end;
        shown = last;
    }
}

std::string spline_curve(const std::vector<curve_point>& points, double length, curve& made)
{
    const std::string fault = point_fault(points);
    if (!fault.empty())
        return fault;
    made = {};
    const uint32_t whole = whole_ticks(length > 0 ? length : std::ceil(points.back().time));
    const std::vector<curve_point> ended = ended_points(points, whole);
    if (ended.size() <= points_of_segment)
        made.segments.push_back(spline_segment(ended, 0, ended.size(), 0, whole));
    else
        add_pieces(ended, whole, made);
    if (made.segments.size() > max_segments)
        return "has " + std::to_string(points.size()) + " points, and a curve has room for about 140: make two";
    return {};
}

// ---- eases ----------------------------------------------------------------------------------

namespace {

// A way from 0 to 1 that slows down; ways that speed up are made of it, turned around.
struct ease_row {
    const char* name;
    double (*out)(double u); // defined a little beyond 0 and 1; null: made of formulas
    uint32_t steps;          // points of a spline that holds it within 0.002
    uint32_t half_steps;     // where it goes half the way
};

struct bounce_parabola {
    double until;
    double middle;
    double floor;
};

enum ease_side { ease_in, ease_out, ease_in_out };

struct ease_way {
    const ease_row& row;
    double from;
    double to;
    uint32_t length; // ticks
};

// A part of it that only speeds up or only slows down: the same share of the time and of the way.
struct ease_part {
    bool is_in;
    double first; // share, 0..1
    double last;
};

} // namespace

static double out_cubic(double u)
{
    return 1 - std::pow(1 - u, 3);
}

static double out_back(double u)
{
    constexpr double over = 1.70158;
    return 1 + (over + 1) * std::pow(u - 1, 3) + over * std::pow(u - 1, 2);
}

static double out_elastic(double u)
{
    return u == 1 ? 1 : std::pow(2, -10 * u) * std::sin((u * 10 - 0.75) * turn / 3) + 1;
}

// A bounce is made of parabolas, all of one height.
constexpr double bounce_height = 7.5625;
static constexpr bounce_parabola bounces[]
    = {{1 / 2.75, 0, 0}, {2 / 2.75, 1.5 / 2.75, 0.75}, {2.5 / 2.75, 2.25 / 2.75, 0.9375}, {1, 2.625 / 2.75, 0.984375}};

static double out_bounce(double u)
{
    for (const bounce_parabola& b : bounces)
        if (u <= b.until)
            return bounce_height * (u - b.middle) * (u - b.middle) + b.floor;
    return 1;
}

static constexpr ease_row eases[] = {{"quad", nullptr, 0, 0}, {"sine", nullptr, 0, 0}, {"cubic", out_cubic, 9, 9},
    {"back", out_back, 9, 9}, {"elastic", out_elastic, 64, 48}, {"bounce", out_bounce, 24, 24}};

static std::vector<ease_part> parts_of(ease_side side)
{
    switch (side) {
    case ease_in:
        return {{true, 0, 1}};
    case ease_out:
        return {{false, 0, 1}};
    case ease_in_out:
        break;
    }
    return {{true, 0, 0.5}, {false, 0.5, 1}};
}

static double eased(const ease_way& way, const ease_part& part, double t)
{
    const double u = (t - part.first) / (part.last - part.first);
    const double v = part.is_in ? 1 - way.row.out(1 - u) : way.row.out(u);
    return way.from + (way.to - way.from) * (part.first + (part.last - part.first) * v);
}

static curve_segment quad_out(double from, double to, uint32_t length)
{
    const double ticks = length;
    return {segment_quadratic, length, {(from - to) / (ticks * ticks), ticks, to}};
}

static curve_segment quad_in(double from, double to, uint32_t length)
{
    const double ticks = length;
    return {segment_quadratic, length, {(to - from) / (ticks * ticks), 0, from}};
}

// An odd length has its middle between two ticks: the parabolas meet there, and each has its own ticks.
static curve quad(ease_side side, double from, double to, uint32_t length)
{
    curve made;
    const uint32_t half = length / 2;
    if (side == ease_in || half == 0)
        made.segments = {quad_in(from, to, length)};
    else if (side == ease_out)
        made.segments = {quad_out(from, to, length)};
    else if (length % 2 == 0)
        made.segments = {quad_in(from, (from + to) / 2, half), quad_out((from + to) / 2, to, length - half)};
    else {
        const double steepness = 2 * (to - from) / (static_cast<double>(length) * length);
        made.segments = {{segment_quadratic, half, {steepness, 0, from}},
            {segment_quadratic, length - half, {-steepness, static_cast<double>(length - half), to}}};
    }
    return made;
}

// A quarter of a swing, or half of one: sin(x b - c) a + d.
static curve sine(ease_side side, double from, double to, uint32_t length)
{
    const double quarter = turn / 4 / length;
    if (side == ease_out)
        return single(segment_sine, length, {to - from, quarter, 0, from});
    if (side == ease_in)
        return single(segment_sine, length, {to - from, quarter, turn / 4, to});
    return single(segment_sine, length, {(to - from) / 2, 2 * quarter, turn / 4, (from + to) / 2});
}

// A point at every tick: exact.
static curve every_tick(const ease_way& way, ease_side side)
{
    const std::vector<ease_part> parts = parts_of(side);
    std::vector<curve_point> points;
    for (uint32_t tick = 0; tick <= way.length; ++tick) {
        const double t = static_cast<double>(tick) / way.length;
        points.push_back({static_cast<double>(tick), eased(way, t < parts[0].last ? parts[0] : parts.back(), t)});
    }
    curve made;
    const std::string fault = spline_curve(points, way.length, made);
    assert(fault.empty());
    return made;
}

// A point beyond either end gives the spline the slope that it has there.
static curve sampled(const ease_way& way, ease_side side)
{
    const int steps = static_cast<int>(side == ease_in_out ? way.row.half_steps : way.row.steps);
    curve made;
    for (const ease_part& part : parts_of(side)) {
        const uint32_t begin = curve_length(made);
        const uint32_t end = static_cast<uint32_t>(part.last * way.length);
        std::vector<curve_point> points;
        for (int step = -1; step <= steps + 1; ++step) {
            const double t = part.first + (part.last - part.first) * step / steps;
            points.push_back({t * way.length - begin, eased(way, part, t)});
        }
        curve piece;
        const std::string fault = spline_curve(points, end - begin, piece);
        assert(fault.empty());
        made = joined_curve(made, piece);
    }
    return made;
}

// Its parabolas one by one. Where one meets the next between two ticks, each has its own ticks.
static curve bounced(const ease_way& way, ease_side side)
{
    curve made;
    for (const ease_part& part : parts_of(side))
        for (size_t index = 0; index < std::size(bounces); ++index) {
            const double share = part.last - part.first;
            const bounce_parabola& b = bounces[part.is_in ? std::size(bounces) - 1 - index : index];
            const size_t before = std::size(bounces) - 2 - index; // of a turned one: where it begins
            const double until = !part.is_in      ? b.until
                : index + 1 == std::size(bounces) ? 1
                                                  : 1 - bounces[before].until;
            const uint32_t begin = curve_length(made);
            const uint32_t end = static_cast<uint32_t>((part.first + share * until) * way.length + 1e-9);
            const double distance = way.to - way.from;
            const double steepness = distance * bounce_height / (share * way.length * way.length);
            const double middle = part.first + share * (part.is_in ? 1 - b.middle : b.middle);
            const double floor = part.first + share * (part.is_in ? 1 - b.floor : b.floor);
            made.segments.push_back({segment_quadratic, end - begin,
                {part.is_in ? -steepness : steepness, middle * way.length - begin, way.from + distance * floor}});
        }
    return made;
}

static curve followed(const ease_way& way, ease_side side)
{
    if (way.length <= (side == ease_in_out ? 2 * way.row.half_steps : way.row.steps))
        return every_tick(way, side);
    return way.row.out == out_bounce ? bounced(way, side) : sampled(way, side);
}

static bool read_ease(const std::string& name, ease_side& side, const ease_row*& row)
{
    std::string plain;
    for (const char letter : name)
        if (letter != ' ' && letter != '_' && letter != '-')
            plain += static_cast<char>(letter >= 'A' && letter <= 'Z' ? letter - 'A' + 'a' : letter);
    for (const auto& [word, which] : {std::pair{"inout", ease_in_out}, {"in", ease_in}, {"out", ease_out}}) {
        if (!plain.starts_with(word))
            continue;
        for (const ease_row& candidate : eases) {
            if (plain != std::string(word) + candidate.name)
                continue;
            side = which;
            row = &candidate;
            return true;
        }
    }
    return false;
}

std::string ease_curve(const std::string& name, double from, double to, double length, curve& made)
{
    if (name == "linear") {
        made = linear_curve(from, to, length);
        return {};
    }
    ease_side side = ease_in;
    const ease_row* row = nullptr;
    if (!read_ease(name, side, row))
        return "is no ease";
    const uint32_t ticks = whole_ticks(length);
    if (row == &eases[0])
        made = quad(side, from, to, ticks);
    else if (row == &eases[1])
        made = sine(side, from, to, ticks);
    else
        made = followed({*row, from, to, ticks}, side);
    return {};
}

std::vector<std::string> ease_names()
{
    std::vector<std::string> names = {"linear"};
    for (const char* side : {"in ", "out ", "in out "})
        for (const ease_row& row : eases)
            names.push_back(std::string(side) + row.name);
    return names;
}

// ---- algebra ----------------------------------------------------------------------------------

static void scale_segment(curve_segment& segment, double factor, double offset)
{
    std::vector<double>& p = segment.params;
    const auto change = [&](size_t index, bool moves) {
        if (moves)
            p.resize(std::max(p.size(), index + 1));
        if (index < p.size())
            p[index] = p[index] * factor + (moves ? offset : 0);
    };
    switch (static_cast<segment_kind>(segment.kind)) {
    case segment_constant:
        return change(0, true);
    case segment_linear:
        change(0, false);
        return change(1, true);
    case segment_quadratic:
        change(0, false);
        return change(2, true);
    case segment_sine:
        change(0, false);
        return change(3, true);
    case segment_spline:
        for (size_t index = 1; index < p.size(); index += 2)
            change(index, true);
        return;
    case segment_sine_linear:
        change(0, false);
        change(4, false);
        return change(3, true);
    case segment_kind_count:
        return;
    }
}

curve scaled_curve(const curve& c, double factor, double offset)
{
    curve made = c;
    for (curve_segment& segment : made.segments)
        scale_segment(segment, factor, offset);
    return made;
}

curve joined_curve(const curve& c, const curve& next)
{
    curve made;
    made.segments = c.segments;
    made.segments.insert(made.segments.end(), next.segments.begin(), next.segments.end());
    made.integer = c.integer;
    return made;
}

std::string curve_fault(const curve& c)
{
    if (c.segments.empty())
        return "has nothing in it";
    if (c.segments.size() > max_segments)
        return "has " + std::to_string(c.segments.size()) + " pieces, and a curve has room for 16";
    if (c.loop != loop_off && std::floor(c.loop_to) <= std::floor(c.loop_from))
        return "cannot loop: its end does not lie behind its beginning";
    return {};
}
