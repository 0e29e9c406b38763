#include "progress.h"

#include <cstdio>
#include <unistd.h>

using seconds_count = std::chrono::duration<double>;

constexpr double terminal_interval = 0.2; // s
constexpr double line_interval = 10.0;

std::string progress_text(uint64_t done, uint64_t total, double seconds)
{
    const double rate = seconds > 0.0 ? static_cast<double>(done) / seconds : 0.0;
    const double left = rate > 0.0 ? static_cast<double>(total - done) / rate : 0.0;
    const auto left_seconds = static_cast<uint64_t>(left < 1e9 ? left + 0.5 : 1e9);
    char text[160];
    std::snprintf(text, sizeof text, "%llu of %llu frames, %.1f frames a second, %llu:%02llu left",
        static_cast<unsigned long long>(done), static_cast<unsigned long long>(total), rate,
        static_cast<unsigned long long>(left_seconds / 60), static_cast<unsigned long long>(left_seconds % 60));
    return text;
}

void progress_begin(progress& p, uint64_t total)
{
    p = {};
    p.begin = p.last = std::chrono::steady_clock::now();
    p.total = total;
    p.terminal = isatty(STDERR_FILENO) != 0;
}

void progress_show(progress& p, uint64_t done)
{
    const auto now = std::chrono::steady_clock::now();
    const double since = seconds_count(now - p.last).count();
    if (since < (p.terminal ? terminal_interval : line_interval) || done == 0)
        return;
    const std::string text = progress_text(done, p.total, seconds_count(now - p.begin).count());
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
