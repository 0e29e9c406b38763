#include "time_report.h"

#include "contact_sheet.h"
#include "output_file.h"

#include <algorithm>
#include <cstdio>

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

static std::string json_text(const std::string& text)
{
    std::string quoted = "\"";
    for (const char c : text) {
        const unsigned char byte = static_cast<unsigned char>(c);
        if (byte < 0x20) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", unsigned{byte});
            quoted += escape;
            continue;
        }
        if (c == '"' || c == '\\')
            quoted += '\\';
        quoted += c;
    }
    return quoted + "\"";
}

static std::string json_number(double value, int digits)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", digits, value);
    return text;
}

// Not-a-number is none either: JSON has no word for it.
static std::string json_time(double ms)
{
    return ms >= 0 && ms < 1e15 ? json_number(ms, 4) : "null";
}

static void append_frame(std::string& json, const frame_time& frame)
{
    json += "    {\"frame\": " + std::to_string(frame.frame) + ", \"seconds\": " + json_number(frame.seconds, 6)
        + ", \"cpu_ms\": " + json_time(frame.cpu_ms) + ", \"gpu_ms\": " + json_time(frame.gpu_ms) + ", \"tracks\": [";
    for (size_t i = 0; i < frame.tracks.size(); ++i) {
        const track_time& track = frame.tracks[i];
        json += std::string(i == 0 ? "" : ", ") + "{\"track\": " + std::to_string(track.track + 1)
            + ", \"cpu_ms\": " + json_time(track.cpu_ms) + ", \"gpu_ms\": " + json_time(track.gpu_ms) + "}";
    }
    json += "]}";
}

std::string time_report_json(const time_report& report)
{
    std::string json = "{\n  \"production\": " + json_text(report.production)
        + ",\n  \"driver\": " + json_text(report.driver) + ",\n  \"path\": " + json_text(report.path)
        + ",\n  \"width\": " + std::to_string(report.width) + ",\n  \"height\": " + std::to_string(report.height)
        + ",\n  \"frames_per_second\": [" + std::to_string(report.rate.numerator) + ", "
        + std::to_string(report.rate.denominator) + "],\n  \"frames\": [";
    for (size_t i = 0; i < report.frames.size(); ++i) {
        json += i == 0 ? "\n" : ",\n";
        append_frame(json, report.frames[i]);
    }
    return json + (report.frames.empty() ? "]\n}\n" : "\n  ]\n}\n");
}

bool write_time_report(const std::string& path, const time_report& report, std::string& error)
{
    const std::string json = time_report_json(report);
    return write_file(path, {reinterpret_cast<const uint8_t*>(json.data()), json.size()}, error);
}
