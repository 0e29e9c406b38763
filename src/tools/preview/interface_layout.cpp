#include "tools/preview/interface_layout.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>

constexpr float transport_height = 44;
constexpr float side_share = 0.235f; // of the window's width
constexpr float least_side = 300;
constexpr float most_side = 430;
constexpr float least_width_with_side = 860; // narrower windows have no room for panels
constexpr float timeline_share = 0.38f;

// ---- the window -----------------------------------------------------------------------------------

window_layout lay_out_window(float width, float height, bool overlay, float timeline)
{
    if (!overlay)
        return {{0, 0, width, height}, {width, 0, 0, height}, {0, height, width, 0}, {0, height, width, 0}};
    const float timeline_height = std::floor(std::min(timeline, height * timeline_share));
    const float above = std::max(0.0f, height - timeline_height - transport_height);
    const float side
        = width < least_width_with_side ? 0 : std::floor(std::clamp(width * side_share, least_side, most_side));
    window_layout layout;
    layout.picture = {0, 0, width - side, above};
    layout.side = {width - side, 0, side, above};
    layout.transport = {0, above, width, transport_height};
    layout.timeline = {0, above + transport_height, width, timeline_height};
    return layout;
}

box fit_picture(const box& place, uint32_t width, uint32_t height)
{
    if (width == 0 || height == 0 || place.width <= 0 || place.height <= 0)
        return {place.x, place.y, 0, 0};
    const float factor = std::min(place.width / static_cast<float>(width), place.height / static_cast<float>(height));
    box fitted;
    fitted.width = std::round(static_cast<float>(width) * factor);
    fitted.height = std::round(static_cast<float>(height) * factor);
    fitted.x = std::floor(place.x + (place.width - fitted.width) / 2);
    fitted.y = std::floor(place.y + (place.height - fitted.height) / 2);
    return fitted;
}

picture_size size_for_place(const box& place, float scale, uint32_t ratio_width, uint32_t ratio_height)
{
    const box fitted = fit_picture({0, 0, place.width * scale, place.height * scale}, ratio_width, ratio_height);
    const auto even = [](float side, uint32_t least) { return std::max(static_cast<uint32_t>(side) & ~1u, least); };
    return {even(fitted.width, 64), even(fitted.height, 36)};
}

// ---- time on a line -------------------------------------------------------------------------------

float x_of_time(const time_scale& scale, double seconds)
{
    return scale.x + static_cast<float>((seconds - scale.from) / (scale.to - scale.from) * scale.width);
}

double time_of_x(const time_scale& scale, float x)
{
    return scale.from + static_cast<double>(x - scale.x) / scale.width * (scale.to - scale.from);
}

void zoom_time(time_scale& scale, double at, double factor, double end)
{
    const double shown = scale.to - scale.from;
    const double wanted = std::clamp(shown * factor, std::min(least_shown_seconds, end), end);
    const double share = shown > 0 ? (at - scale.from) / shown : 0;
    scale.from = at - share * wanted;
    scale.to = scale.from + wanted;
    pan_time(scale, 0, end);
}

void pan_time(time_scale& scale, double seconds, double end)
{
    const double shown = std::min(scale.to - scale.from, end);
    scale.from = std::clamp(scale.from + seconds, 0.0, end - shown);
    scale.to = scale.from + shown;
}

double ruler_step(const time_scale& scale, float least)
{
    constexpr double steps[] = {0.01, 0.02, 0.05, 0.1, 0.2, 0.5, 1, 2, 5, 10, 15, 30, 60, 120, 300, 600};
    const double points_a_second = scale.width / (scale.to - scale.from);
    for (const double step : steps)
        if (step * points_a_second >= least)
            return step;
    return steps[std::size(steps) - 1];
}

uint32_t bar_step(const time_scale& scale, double seconds_per_bar, float least)
{
    const double points_a_bar = seconds_per_bar * scale.width / (scale.to - scale.from);
    uint32_t step = 1;
    while (step < 1u << 20 && points_a_bar * step < least)
        step *= 2;
    return step;
}

waveform_column waveform_between(std::span<const waveform_column> columns, double from, double to)
{
    waveform_column merged = {0, 0, 0};
    if (columns.empty() || !(to >= 0) || !(from * 100 < static_cast<double>(columns.size())))
        return merged;
    const auto first = static_cast<size_t>(std::max(0.0, from * 100));
    const auto behind = std::min(columns.size(), std::max(first + 1, static_cast<size_t>(to * 100)));
    for (size_t n = first; n < behind; ++n) {
        merged.lowest = std::min(merged.lowest, columns[n].lowest);
        merged.highest = std::max(merged.highest, columns[n].highest);
        merged.loudness = std::max(merged.loudness, columns[n].loudness);
    }
    return merged;
}

// ---- texts ------------------------------------------------------------------------------------------

template <typename... values> static std::string written(const char* format, values... each)
{
    char text[64];
    std::snprintf(text, sizeof text, format, each...);
    return text;
}

std::string clock_text(double seconds)
{
    const auto ms = static_cast<uint64_t>(std::max(0.0, seconds) * 1000 + 1e-6);
    return written("%llu:%02u.%03u", static_cast<unsigned long long>(ms / 60000), static_cast<unsigned>(ms / 1000 % 60),
        static_cast<unsigned>(ms % 1000));
}

std::string ruler_text(double seconds, double step)
{
    const int decimals = step < 0.1 ? 2 : step < 1 ? 1 : 0;
    const double unit = decimals == 2 ? 100 : decimals == 1 ? 10 : 1;
    const auto units = static_cast<uint64_t>(std::llround(std::max(0.0, seconds) * unit));
    const auto whole = units / static_cast<uint64_t>(unit);
    const auto rest = static_cast<unsigned>(units % static_cast<uint64_t>(unit));
    const std::string text
        = written("%llu:%02u", static_cast<unsigned long long>(whole / 60), static_cast<unsigned>(whole % 60));
    return decimals == 0 ? text : text + written(".%0*u", decimals, rest);
}

std::string beat_text(double seconds, double bpm, double beats_per_bar)
{
    if (bpm <= 0 || beats_per_bar <= 0)
        return "";
    const double beats = std::max(0.0, seconds) * bpm / 60 + 1e-6;
    const double bar = std::floor(beats / beats_per_bar);
    const double beat = std::floor(beats - bar * beats_per_bar);
    return written("%.0f.%.0f", bar + 1, beat + 1);
}

std::string value_text(double value)
{
    if (!std::isfinite(value))
        return "no number";
    const double size = std::fabs(value);
    const int decimals = size >= 1000 ? 0 : size >= 100 ? 1 : size >= 10 ? 2 : 3;
    std::string text = written("%.*f", decimals, std::fabs(value) < 0.0005 ? 0.0 : value);
    if (text.find('.') == std::string::npos)
        return text;
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.')
        text.pop_back();
    return text;
}

uint32_t decimals_of_step(double step)
{
    if (!(step > 0))
        return 3;
    uint32_t decimals = 0;
    for (; decimals < 9 && step < 0.999; step *= 10)
        ++decimals;
    return decimals;
}

std::string bytes_text(uint64_t bytes)
{
    const double kilobytes = static_cast<double>(bytes) / 1024;
    if (kilobytes < 1000)
        return written("%.0f KB", std::ceil(kilobytes));
    return kilobytes < 100 * 1024 ? written("%.1f MB", kilobytes / 1024) : written("%.0f MB", kilobytes / 1024);
}

std::string milliseconds_text(double ms)
{
    return written(ms < 9.995 ? "%.2f ms" : ms < 99.95 ? "%.1f ms" : "%.0f ms", ms);
}

std::string place_text(const std::string& file, uint32_t line, size_t letters)
{
    const std::string behind = line > 0 ? ":" + std::to_string(line) : "";
    if (file.size() + behind.size() <= letters || behind.size() + 2 > letters)
        return file + behind;
    size_t from = file.size() + behind.size() + 1 - letters;
    while (from < file.size() && (static_cast<uint8_t>(file[from]) & 0xC0) == 0x80) // never within a letter
        ++from;
    return "…" + file.substr(from) + behind;
}

// ---- curves -----------------------------------------------------------------------------------------

value_range range_of_values(std::span<const float> values)
{
    value_range range = {INFINITY, -INFINITY};
    for (const float value : values)
        if (std::isfinite(value)) {
            range.least = std::min(range.least, value);
            range.most = std::max(range.most, value);
        }
    if (range.least > range.most)
        return {0, 1};
    const float span = range.most - range.least;
    const float more = span > 0 ? span * 0.08f : std::max(std::fabs(range.most) * 0.5f, 0.5f);
    return {range.least - more, range.most + more};
}
