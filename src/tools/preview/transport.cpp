#include "tools/preview/transport.h"

#include <algorithm>
#include <cmath>

double stretch_position(const played_stretch& stretch, double playing_for)
{
    const double position = stretch.from + playing_for;
    const double length = stretch.loop_to - stretch.loop_from;
    if (!(length > 0) || position < stretch.loop_to)
        return position;
    return stretch.loop_from + std::fmod(position - stretch.loop_to, length);
}

played_stretch transport_stretch(const transport& t)
{
    const double loop_to = std::min(t.loop_to, t.end);
    const bool loops = t.has_loop && loop_to > t.loop_from;
    return {t.started, loops ? t.loop_from : 0, loops ? loop_to : 0};
}

// From here on it plays from where it is. What it would have to loop back from at once it begins at the loop's
// beginning.
static void start_anew(transport& t)
{
    const played_stretch stretch = transport_stretch(t);
    if (t.playing && !t.scrubbing && stretch.loop_to > 0 && t.position >= stretch.loop_to)
        t.position = stretch.loop_from;
    t.started = t.position;
    ++t.starts;
}

static double place_in(const transport& t, double seconds)
{
    return seconds > 0 ? std::min(seconds, t.end) : 0;
}

void transport_play(transport& t)
{
    t.playing = true;
    start_anew(t);
}

void transport_pause(transport& t)
{
    t.playing = false;
    start_anew(t);
}

void transport_go(transport& t, double seconds)
{
    t.position = place_in(t, seconds);
    start_anew(t);
}

void transport_scrub(transport& t, double seconds)
{
    t.scrubbing = true;
    transport_go(t, seconds);
}

void transport_let_go(transport& t)
{
    t.scrubbing = false;
    start_anew(t);
}

// The sound that plays knows the loop as it was: it begins anew.
static void set_loop(transport& t, double from, double to)
{
    t.loop_from = from;
    t.loop_to = to;
    t.has_loop = to > from;
    start_anew(t);
}

void transport_loop_from(transport& t, double seconds)
{
    const double from = place_in(t, seconds);
    set_loop(t, from, std::max(t.loop_to, from));
}

void transport_loop_to(transport& t, double seconds)
{
    const double to = place_in(t, seconds);
    set_loop(t, std::min(t.loop_from, to), to);
}

void transport_no_loop(transport& t)
{
    set_loop(t, 0, 0);
}

void transport_set_end(transport& t, double seconds)
{
    const double end = seconds > 0 ? seconds : 0;
    if (end == t.end)
        return;
    const played_stretch before = transport_stretch(t);
    t.end = end;
    const played_stretch after = transport_stretch(t);
    const bool loops_otherwise = before.loop_from != after.loop_from || before.loop_to != after.loop_to;
    if (t.position > end)
        transport_go(t, end);
    else if (loops_otherwise)
        start_anew(t);
}

void transport_advance(transport& t, double playing_for)
{
    if (!t.playing || t.scrubbing)
        return;
    t.position = stretch_position(transport_stretch(t), playing_for);
    if (t.position < t.end)
        return;
    t.position = t.end;
    transport_pause(t);
}
