#include "authoring/asset/beat_grid.h"

#include "authoring/asset/drawing_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <span>
#include <string_view>

namespace {

// Pixels.
constexpr double page_width = 1280;
constexpr double margin = 36;
constexpr double row_width = page_width - 2 * margin;
constexpr double head_height = 84;
constexpr double wave_height = 92;
constexpr double above_wave = 20; // for the numbers of bars
constexpr double below_wave = 40; // for times and ticks
constexpr double row_height = above_wave + wave_height + below_wave;

constexpr double longest_row = 20;    // seconds, where it may hold more than one bar
constexpr uint32_t most_bars = 16;    // in a row
constexpr double narrowest_beat = 5;  // pixels; closer lines are left out
constexpr double narrowest_tick = 44; // the same for the ticks below them

// Rows of bars that lie end to end.
struct row_plan {
    double beat;           // seconds
    uint32_t beats;        // a bar
    uint32_t bars;         // a row
    double start;          // seconds, where the first row begins; at most 0
    int64_t first_bar;     // its number
    uint32_t rows;         // at least 1
    double loudest;        // of all samples: drawn to the edge of its row
    bool shows_bar_number; // beats are known
};

struct outline_point {
    double x; // pixels; the others are distances from the middle
    double above;
    double below;
    double loudness;
};

struct drawing {
    std::string text;
};

} // namespace

constexpr const char* style = "<style>\n"
                              "text { font-family: 'DejaVu Sans', Verdana, sans-serif; fill: #22303c }\n"
                              ".title { font-size: 22px; font-weight: bold }\n"
                              ".facts { font-size: 13px; fill: #5b6b78 }\n"
                              ".bar { font-size: 12px; font-weight: bold; fill: #2f6f9f }\n"
                              ".time { font-size: 10.5px }\n"
                              ".tick { font-size: 9.5px; fill: #7d8c98 }\n"
                              ".odd { fill: #f3f6f8 }\n"
                              ".even { fill: #ffffff }\n"
                              ".beat { stroke: #b9c6d0; stroke-width: 1 }\n"
                              ".barline { stroke: #22303c; stroke-width: 1.4 }\n"
                              ".middle { stroke: #b9c6d0; stroke-width: 0.7 }\n"
                              ".peaks { fill: #a9cbe2 }\n"
                              ".body { fill: #2f6f9f }\n"
                              "</style>\n";

// ---- texts ------------------------------------------------------------------------------------

static void add_number(drawing& d, double value)
{
    char text[64];
    const double rounded = std::round(value * 100) / 100 + 0.0;
    d.text.append(text, std::to_chars(text, text + sizeof text, rounded).ptr);
}

static std::string number_text(double value)
{
    drawing d;
    add_number(d, value);
    return d.text;
}

static void add_text(drawing& d, double x, double y, const char* kind, const std::string& text)
{
    d.text += "<text x=\"" + number_text(x) + "\" y=\"" + number_text(y) + "\" class=\"" + kind + "\">" + text
        + "</text>\n";
}

static void add_line(drawing& d, double x1, double y1, double x2, double y2, const char* kind)
{
    d.text += "<line x1=\"" + number_text(x1) + "\" y1=\"" + number_text(y1) + "\" x2=\"" + number_text(x2) + "\" y2=\""
        + number_text(y2) + "\" class=\"" + kind + "\"/>\n";
}

// ---- the plan -----------------------------------------------------------------------------------

static double loudest_of(const std::vector<waveform_column>& columns)
{
    float loudest = 0.01f; // of silence
    for (const waveform_column& column : columns)
        loudest = std::max({loudest, column.highest, -column.lowest});
    return loudest;
}

static row_plan plan_rows(const std::vector<waveform_column>& columns, const beat_grid& grid)
{
    row_plan plan = {1, 5, 4, 0, 1, 1, loudest_of(columns), false}; // seconds in fives
    const double seconds = static_cast<double>(columns.size()) / 100;
    if (grid.beats_per_minute > 0) {
        plan.beat = 60 / grid.beats_per_minute;
        plan.beats = grid.beats_per_bar;
        const double bar = plan.beat * plan.beats;
        plan.bars = 1;
        while (plan.bars * 2 <= most_bars && plan.bars * 2 * bar <= longest_row)
            plan.bars *= 2;
        const double bars_before = std::ceil(grid.first_beat / bar - 1e-9); // an upbeat fills whole bars
        plan.start = grid.first_beat - bars_before * bar;
        plan.first_bar = 1 - static_cast<int64_t>(bars_before);
        plan.shows_bar_number = true;
    }
    const double row_seconds = plan.beat * plan.beats * plan.bars;
    plan.rows = std::max(1u, static_cast<uint32_t>(std::ceil((seconds - plan.start) / row_seconds - 1e-9)));
    return plan;
}

// ---- rows ---------------------------------------------------------------------------------------

// What some ticks that share a pixel come to.
static waveform_column joined_ticks(std::span<const waveform_column> ticks)
{
    waveform_column joined = ticks.front();
    for (const waveform_column& tick : ticks) {
        joined.lowest = std::min(joined.lowest, tick.lowest);
        joined.highest = std::max(joined.highest, tick.highest);
        joined.loudness = std::max(joined.loudness, tick.loudness);
    }
    return joined;
}

// A point a tick, or a pixel where ticks lie closer; none for no ticks.
static std::vector<outline_point> outline_of(
    std::span<const waveform_column> ticks, double x0, double pixels_per_tick, double scale)
{
    std::vector<outline_point> points;
    const auto step = static_cast<size_t>(std::max(std::ceil(1 / pixels_per_tick), 1.0));
    for (size_t at = 0; at < ticks.size(); at += step) {
        const waveform_column column = joined_ticks(ticks.subspan(at, std::min(step, ticks.size() - at)));
        points.push_back({x0 + static_cast<double>(at) * pixels_per_tick, column.highest * scale,
            -column.lowest * scale, column.loudness * scale});
    }
    return points;
}

static void add_point(drawing& d, double x, double y)
{
    add_number(d, x);
    d.text += ' ';
    add_number(d, y);
    d.text += ' ';
}

// There along the upper edge, back along the lower one; silence is a thin line.
static void add_outline(drawing& d, const std::vector<outline_point>& points, double middle, bool is_loudness)
{
    constexpr double least = 0.5; // pixels
    if (points.empty())
        return;
    d.text += is_loudness ? "<path class=\"body\" d=\"M" : "<path class=\"peaks\" d=\"M";
    for (const outline_point& point : points)
        add_point(d, point.x, middle - std::max(is_loudness ? point.loudness : point.above, least));
    for (size_t i = points.size(); i-- > 0;)
        add_point(d, points[i].x, middle + std::max(is_loudness ? points[i].loudness : points[i].below, least));
    d.text += "Z\"/>\n";
}

// Lines of beats, with their ticks where there is room.
static void add_beats(drawing& d, const row_plan& plan, uint32_t row, double top)
{
    const double beat_width = row_width / (plan.bars * plan.beats);
    for (uint32_t beat = 0; beat < plan.bars * plan.beats && beat_width >= narrowest_beat; ++beat) {
        const double x = margin + beat * beat_width;
        const double seconds = plan.start + (static_cast<double>(row) * plan.bars * plan.beats + beat) * plan.beat;
        if (beat % plan.beats == 0)
            continue;
        add_line(d, x, top, x, top + wave_height, "beat");
        if (beat_width >= narrowest_tick)
            add_text(d, x + 2, top + wave_height + 28, "tick", number_text(seconds * 100));
    }
}

static void add_bars(drawing& d, const row_plan& plan, uint32_t row, double top)
{
    const double bar_width = row_width / plan.bars;
    for (uint32_t bar = 0; bar < plan.bars; ++bar)
        d.text += "<rect x=\"" + number_text(margin + bar * bar_width) + "\" y=\"" + number_text(top) + "\" width=\""
            + number_text(bar_width) + "\" height=\"" + number_text(wave_height) + "\" class=\""
            + (bar % 2 == 0 ? "odd" : "even") + "\"/>\n";
    add_beats(d, plan, row, top);
    add_line(d, margin, top + wave_height / 2, margin + row_width, top + wave_height / 2, "middle");
    for (uint32_t bar = 0; bar < plan.bars; ++bar) {
        const double x = margin + bar * bar_width;
        const int64_t number = int64_t{row} * plan.bars + bar;
        const double seconds = plan.start + static_cast<double>(number) * plan.beat * plan.beats;
        add_line(d, x, top - above_wave + 6, x, top + wave_height + 5, "barline");
        if (plan.shows_bar_number)
            add_text(d, x + 5, top - 6, "bar", std::to_string(plan.first_bar + number));
        add_text(d, x + 2, top + wave_height + 16, "time", time_text(seconds));
        add_text(d, x + 2, top + wave_height + 28, "tick", number_text(seconds * 100));
    }
    add_line(d, margin + row_width, top, margin + row_width, top + wave_height, "barline");
}

static void add_row(
    drawing& d, const row_plan& plan, uint32_t row, const std::vector<waveform_column>& columns, double top)
{
    const double row_ticks = plan.beat * plan.beats * plan.bars * 100;
    const double begin = plan.start * 100 + row * row_ticks;
    const double pixels_per_tick = row_width / row_ticks;
    const auto first = static_cast<size_t>(std::max(std::ceil(begin - 1e-6), 0.0));
    const double last = std::ceil(begin + row_ticks - 1e-6);
    const size_t end = std::min(columns.size(), static_cast<size_t>(std::max(last, 0.0)));
    const double x0 = margin + (static_cast<double>(first) - begin) * pixels_per_tick;
    add_bars(d, plan, row, top);
    if (first >= end)
        return;
    const std::span<const waveform_column> ticks(columns.data() + first, end - first);
    const std::vector<outline_point> points
        = outline_of(ticks, x0, pixels_per_tick, (wave_height / 2 - 2) / plan.loudest);
    add_outline(d, points, top + wave_height / 2, false);
    add_outline(d, points, top + wave_height / 2, true);
}

// ---- the page -------------------------------------------------------------------------------------

static bool grid_is_sound(const beat_grid& grid)
{
    const bool beats = grid.beats_per_minute == 0 || (grid.beats_per_minute >= 10 && grid.beats_per_minute <= 1000);
    return beats && grid.beats_per_bar >= 1 && grid.beats_per_bar <= 64 && grid.first_beat >= 0
        && grid.first_beat <= 256;
}

static std::string facts_line(double seconds, const beat_grid& grid)
{
    std::string line = time_text(seconds) + " · " + number_text(seconds * 100) + " ticks";
    if (grid.beats_per_minute > 0)
        line += " · " + number_text(grid.beats_per_minute) + " beats a minute, " + std::to_string(grid.beats_per_bar)
            + " to a bar · a beat is " + number_text(6000 / grid.beats_per_minute) + " ticks, a bar "
            + number_text(6000 / grid.beats_per_minute * grid.beats_per_bar) + " · bar 1 begins at "
            + time_text(grid.first_beat);
    return line;
}

std::string beat_grid_svg(const std::vector<waveform_column>& columns, const beat_grid& grid)
{
    if (!grid_is_sound(grid))
        return "";
    const double seconds = static_cast<double>(columns.size()) / 100;
    const row_plan plan = plan_rows(columns, grid);
    const std::string width = number_text(page_width);
    const std::string height = number_text(head_height + plan.rows * row_height + margin / 2);
    drawing d;
    d.text = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + width + "\" height=\"" + height
        + "\" viewBox=\"0 0 " + width + " " + height + "\">\n" + style + "<rect width=\"" + width + "\" height=\""
        + height + "\" fill=\"#ffffff\"/>\n";
    add_text(d, margin, 38, "title", escaped_text(grid.title));
    add_text(d, margin, 62, "facts", facts_line(seconds, grid));
    for (uint32_t row = 0; row < plan.rows; ++row)
        add_row(d, plan, row, columns, head_height + row * row_height + above_wave);
    return d.text + "</svg>\n";
}
