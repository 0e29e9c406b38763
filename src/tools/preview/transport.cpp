#include "tools/preview/transport.h"

#include <algorithm>

static void start_anew(transport& t)
{
    t.started = t.position;
    ++t.starts;
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
    t.position = std::clamp(seconds, 0.0, t.end);
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

void transport_loop_from(transport& t, double seconds)
{
    t.loop_from = seconds;
    t.has_loop = t.loop_to > t.loop_from;
}

void transport_loop_to(transport& t, double seconds)
{
    t.loop_to = seconds;
    t.has_loop = t.loop_to > t.loop_from;
}

void transport_no_loop(transport& t)
{
    t.has_loop = false;
}

void transport_set_end(transport& t, double seconds)
{
    t.end = seconds;
    if (t.position > t.end)
        transport_go(t, t.end);
}

void transport_advance(transport& t, double playing_for)
{
    if (!t.playing || t.scrubbing)
        return;
    t.position = t.started + playing_for;
    if (t.has_loop && t.position >= t.loop_to)
        transport_go(t, t.loop_from);
    else if (t.position >= t.end) {
        transport_go(t, t.end);
        transport_pause(t);
    }
}
