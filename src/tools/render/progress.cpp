#include "progress.h"

#include <cstdio>
#include <unistd.h>

namespace {

using seconds_count = std::chrono::duration<double>;

} // namespace

constexpr double terminal_interval = 0.2; // s
constexpr double line_interval = 10.0;

std::string progress_text(const progress& p, uint64_t seen, uint64_t frames, double seconds)
{
    const double rate = seconds > 0.0 ? static_cast<double>(frames) / seconds : 0.0;
    const double left = rate > 0.0 ? static_cast<double>(p.frames - frames) / rate : 0.0;
    const auto left_seconds = static_cast<uint64_t>(left < 1e9 ? left + 0.5 : 1e9);
    const std::string place = std::to_string(frames) + " of " + std::to_string(p.frames);
    const std::string what = p.wanted == p.frames
        ? place + " frames"
        : std::to_string(seen) + " of " + std::to_string(p.wanted) + " pictures, frame " + place;
    char text[96];
    std::snprintf(text, sizeof text, ", %.1f frames a second, %llu:%02llu left", rate,
        static_cast<unsigned long long>(left_seconds / 60), static_cast<unsigned long long>(left_seconds % 60));
    return what + text;
}

void progress_begin(progress& p, uint64_t frames, uint64_t wanted, bool quiet)
{
    p = {};
    p.begin = p.last = std::chrono::steady_clock::now();
    p.frames = frames;
    p.wanted = wanted;
    p.quiet = quiet;
    p.terminal = isatty(STDERR_FILENO) != 0;
}

void progress_show(progress& p, uint64_t seen, uint64_t frames)
{
    const auto now = std::chrono::steady_clock::now();
    const double since = seconds_count(now - p.last).count();
    if (since < (p.terminal ? terminal_interval : line_interval) || frames == 0 || p.quiet)
        return;
    const std::string text = progress_text(p, seen, frames, seconds_count(now - p.begin).count());
    std::fprintf(stderr, p.terminal ? "\r%s\x1b[K" : "%s\n", text.c_str());
    std::fflush(stderr);
    p.last = now;
    p.shown = true;
}

void progress_end(progress& p)
{
    if (p.terminal && p.shown)
        std::fputs("\r\x1b[K", stderr);
    p.shown = false;
}
