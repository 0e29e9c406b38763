#include "time_report.h"

#include "contact_sheet.h"
#include "tools/frames/output_file.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <nlohmann/json.hpp>

constexpr double moment_distance = 0.5; // s between two moments of the list
constexpr size_t dearest_tracks = 3;    // named per moment

double frame_cost(const frame_time& frame)
{
    return std::max(frame.cpu_ms, frame.gpu_ms);
}

static double track_cost(const track_time& track)
{
    return std::max(track.cpu_ms, track.gpu_ms);
}

std::vector<frame_time> slowest_moments(const time_report& report, uint32_t count)
{
    std::vector<size_t> order(report.frames.size());
    for (size_t i = 0; i < order.size(); ++i)
        order[i] = i;
    std::stable_sort(order.begin(), order.end(),
        [&](size_t a, size_t b) { return frame_cost(report.frames[a]) > frame_cost(report.frames[b]); });
    std::vector<frame_time> moments;
    for (const size_t i : order) {
        if (moments.size() >= count)
            break;
        const frame_time& frame = report.frames[i];
        const bool is_near = std::any_of(moments.begin(), moments.end(), [&](const frame_time& other) {
            return std::max(frame.seconds, other.seconds) - std::min(frame.seconds, other.seconds) < moment_distance;
        });
        if (!is_near)
            moments.push_back(frame);
    }
    return moments;
}

static std::string milliseconds(double ms)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.2f ms", ms);
    return ms < 0 ? "-" : text;
}

static std::string moment_line(const frame_time& frame)
{
    std::string line = time_label(frame.seconds) + "  frame " + std::to_string(frame.frame) + "  CPU "
        + milliseconds(frame.cpu_ms) + "  GPU " + milliseconds(frame.gpu_ms);
    std::vector<track_time> tracks = frame.tracks;
    std::stable_sort(tracks.begin(), tracks.end(),
        [](const track_time& a, const track_time& b) { return track_cost(a) > track_cost(b); });
    for (size_t i = 0; i < std::min(tracks.size(), dearest_tracks); ++i)
        line += (i == 0 ? "  track " : ", track ") + std::to_string(tracks[i].track + 1) + " "
            + milliseconds(track_cost(tracks[i]));
    return line;
}

std::vector<std::string> slowest_moment_lines(const time_report& report, uint32_t count)
{
    std::vector<std::string> lines;
    for (const frame_time& frame : slowest_moments(report, count))
        lines.push_back(moment_line(frame));
    return lines;
}

// ---- JSON -------------------------------------------------------------------------

namespace {

using json = nlohmann::ordered_json;

} // namespace

constexpr double ms_digits = 1e4; // kept behind the point: four of milliseconds ...
constexpr double s_digits = 1e6;  // ... and six of seconds

static std::string json_text(const json& value, int indent)
{
    return value.dump(indent, ' ', false, json::error_handler_t::replace); // of names that are no UTF-8
}

// Not-a-number is none either: JSON has no word for it.
static json json_time(double ms)
{
    return ms >= 0 && ms < 1e15 ? json(std::round(ms * ms_digits) / ms_digits) : json();
}

static json json_frame(const frame_time& frame)
{
    json tracks = json::array();
    for (const track_time& track : frame.tracks)
        tracks.push_back(
            {{"track", track.track + 1}, {"cpu_ms", json_time(track.cpu_ms)}, {"gpu_ms", json_time(track.gpu_ms)}});
    return {{"frame", frame.frame}, {"seconds", std::round(frame.seconds * s_digits) / s_digits},
        {"cpu_ms", json_time(frame.cpu_ms)}, {"gpu_ms", json_time(frame.gpu_ms)}, {"tracks", tracks}};
}

// A frame a line, which the library has no layout for.
static std::string json_lines(const std::vector<frame_time>& frames)
{
    std::string lines;
    for (const frame_time& frame : frames)
        lines += (lines.empty() ? "\n    " : ",\n    ") + json_text(json_frame(frame), -1);
    return lines.empty() ? "[]" : "[" + lines + "\n  ]";
}

std::string time_report_json(const time_report& report)
{
    const json head
        = {{"production", report.production}, {"driver", report.driver}, {"path", report.path}, {"width", report.width},
            {"height", report.height}, {"frames_per_second", {report.rate.numerator, report.rate.denominator}}};
    std::string text = json_text(head, 2);
    text.resize(text.size() - std::strlen("\n}"));
    return text + ",\n  \"frames\": " + json_lines(report.frames) + "\n}\n";
}

bool write_time_report(const std::string& path, const time_report& report, std::string& error)
{
    const std::string text = time_report_json(report);
    return write_file(path, {reinterpret_cast<const uint8_t*>(text.data()), text.size()}, error);
}
