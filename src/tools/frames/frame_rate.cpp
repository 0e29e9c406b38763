#include "tools/frames/frame_rate.h"

#include <limits>

static frame_rate usable(frame_rate rate)
{
    return rate.numerator == 0 || rate.denominator == 0 ? frame_rate{1, 1} : rate;
}

double time_of_frame(uint64_t frame, frame_rate rate)
{
    const frame_rate r = usable(rate);
    // Whole seconds apart, so that the one rounding is of a small number.
    const uint64_t whole = frame / r.numerator;
    const uint64_t rest = frame % r.numerator;
    return static_cast<double>(whole) * r.denominator
        + static_cast<double>(rest * r.denominator) / static_cast<double>(r.numerator);
}

uint64_t sample_of_frame(uint64_t frame, frame_rate rate, uint32_t samples_per_second)
{
    constexpr uint64_t greatest = std::numeric_limits<uint64_t>::max();
    const frame_rate r = usable(rate);
    // frame * denominator / numerator seconds, as whole seconds and a rest below the
    // numerator: neither product below leaves 64 bits unless the result does.
    if (frame > greatest / r.denominator)
        return greatest;
    const uint64_t scaled = frame * r.denominator;
    const uint64_t seconds = scaled / r.numerator;
    const uint64_t rest = scaled % r.numerator;
    const uint64_t part = rest * samples_per_second / r.numerator;
    if (samples_per_second != 0 && seconds > (greatest - part) / samples_per_second)
        return greatest;
    return seconds * samples_per_second + part;
}
