#include "tools/preview/transport.h"

#include <doctest/doctest.h>

#include <cmath>
#include <limits>

static transport show_of(double end)
{
    transport t;
    transport_set_end(t, end);
    return t;
}

static transport playing_at(double end, double position)
{
    transport t = show_of(end);
    transport_go(t, position);
    transport_play(t);
    return t;
}

static transport looping(double end, double from, double to)
{
    transport t = show_of(end);
    transport_loop_from(t, from);
    transport_loop_to(t, to);
    return t;
}

TEST_CASE("playing goes on from where it was started")
{
    transport t = playing_at(60, 12);
    CHECK(t.started == 12);
    transport_advance(t, 0.5);
    CHECK(t.position == 12.5);
    transport_advance(t, 3);
    CHECK(t.position == 15);
    CHECK(t.started == 12);
}

TEST_CASE("what is paused stands still, and goes on from there")
{
    transport t = playing_at(60, 12);
    transport_advance(t, 1.25);
    transport_pause(t);
    transport_advance(t, 9);
    CHECK(t.position == 13.25);
    transport_play(t);
    CHECK(t.started == 13.25);
    transport_advance(t, 0);
    CHECK(t.position == 13.25);
}

TEST_CASE("the sound begins anew with each start, pause and jump, and not while it plays")
{
    transport t = show_of(60);
    uint32_t starts = t.starts;
    transport_play(t);
    CHECK(t.starts != starts);
    starts = t.starts;
    transport_advance(t, 1);
    transport_advance(t, 2);
    CHECK(t.starts == starts);
    transport_go(t, 5);
    CHECK(t.starts != starts);
    CHECK(t.started == 5);
    starts = t.starts;
    transport_pause(t);
    CHECK(t.starts != starts);
}

TEST_CASE("a jump plays on where it was playing, and stays in the show")
{
    transport t = playing_at(60, 12);
    transport_go(t, 70);
    CHECK(t.position == 60);
    CHECK(t.playing);
    transport_go(t, -3);
    CHECK(t.position == 0);
    CHECK(t.playing);
    transport_go(t, std::nan(""));
    CHECK(t.position == 0);
    transport_go(t, std::numeric_limits<double>::infinity());
    CHECK(t.position == 60);
    transport_pause(t);
    transport_go(t, 3);
    CHECK(!t.playing);
}

TEST_CASE("the end stops it")
{
    transport t = playing_at(60, 59);
    transport_advance(t, 0.75);
    CHECK(t.playing);
    const uint32_t starts = t.starts;
    transport_advance(t, 1.5);
    CHECK(!t.playing);
    CHECK(t.position == 60);
    CHECK(t.starts != starts); // the music is silent behind the end
}

TEST_CASE("a loop keeps what it was late by")
{
    transport t = looping(60, 10, 12);
    transport_go(t, 11);
    transport_play(t);
    const uint32_t starts = t.starts;
    transport_advance(t, 1.25);
    CHECK(t.position == 10.25);
    transport_advance(t, 2.5);
    CHECK(t.position == 11.5);
    transport_advance(t, 3);
    CHECK(t.position == 10);
    CHECK(t.starts == starts); // the sound loops by itself
    CHECK(t.playing);
}

TEST_CASE("several turns of a loop that were missed are all taken")
{
    transport t = looping(60, 10, 12);
    transport_go(t, 10);
    transport_play(t);
    transport_advance(t, 7.5);
    CHECK(t.position == 11.5);
}

TEST_CASE("playing before a loop plays into it")
{
    transport t = looping(60, 10, 12);
    transport_go(t, 5);
    transport_play(t);
    transport_advance(t, 4);
    CHECK(t.position == 9);
    transport_advance(t, 7.5);
    CHECK(t.position == 10.5);
}

TEST_CASE("a place behind a loop is its beginning while it plays")
{
    transport t = looping(60, 10, 12);
    transport_go(t, 30);
    CHECK(t.position == 30); // paused, it can stand anywhere
    transport_play(t);
    CHECK(t.position == 10);
    CHECK(t.started == 10);
    transport_go(t, 12);
    CHECK(t.position == 10);
    transport_no_loop(t);
    transport_go(t, 12);
    CHECK(t.position == 12);
}

TEST_CASE("a loop that is set around another place takes what plays behind it to its beginning")
{
    transport t = playing_at(60, 30);
    transport_advance(t, 1);
    transport_loop_from(t, 10);
    CHECK(t.position == 31); // no loop yet
    const uint32_t starts = t.starts;
    transport_loop_to(t, 12);
    CHECK(t.position == 10);
    CHECK(t.starts != starts);
    transport_advance(t, 0.5);
    CHECK(t.position == 10.5);
}

TEST_CASE("a loop that ends where it plays begins at once")
{
    transport t = playing_at(60, 30);
    transport_loop_from(t, 30);
    transport_advance(t, 2);
    transport_loop_to(t, 32);
    CHECK(t.has_loop);
    CHECK(t.position == 30);
}

TEST_CASE("the first side of a loop alone makes none")
{
    transport t = show_of(60);
    transport_loop_from(t, 10);
    CHECK(!t.has_loop);
    transport_loop_to(t, 12);
    CHECK(t.has_loop);
    CHECK(t.loop_from == 10);
    CHECK(t.loop_to == 12);
}

TEST_CASE("without its loop it plays on, and the next side begins another")
{
    transport t = looping(60, 10, 12);
    transport_go(t, 11);
    transport_play(t);
    transport_no_loop(t);
    CHECK(!t.has_loop);
    transport_advance(t, 4);
    CHECK(t.position == 15);
    transport_loop_from(t, 5);
    CHECK(!t.has_loop);
}

TEST_CASE("the end alone makes a loop from the beginning")
{
    transport t = show_of(60);
    transport_loop_to(t, 12);
    CHECK(t.has_loop);
    CHECK(t.loop_from == 0);
}

TEST_CASE("a side of a loop that crosses the other takes it along")
{
    transport t = looping(60, 10, 12);
    transport_loop_from(t, 20);
    CHECK(!t.has_loop);
    CHECK(t.loop_to == 20);
    transport_loop_to(t, 25);
    CHECK(t.has_loop);
    CHECK(t.loop_from == 20);
    transport_loop_to(t, 5);
    CHECK(!t.has_loop);
    CHECK(t.loop_from == 5);
}

TEST_CASE("sides of a loop lie in the show")
{
    transport t = show_of(60);
    transport_loop_from(t, -5);
    transport_loop_to(t, 90);
    CHECK(t.loop_from == 0);
    CHECK(t.loop_to == 60);
    CHECK(t.has_loop);
    transport_loop_to(t, std::nan(""));
    CHECK(!t.has_loop);
}

TEST_CASE("a loop to the end goes round and does not stop")
{
    transport t = looping(60, 58, 60);
    transport_go(t, 59);
    transport_play(t);
    transport_advance(t, 1.5);
    CHECK(t.playing);
    CHECK(t.position == 58.5);
}

TEST_CASE("a hand on the timeline holds it, and it plays on when it is let go")
{
    transport t = playing_at(60, 12);
    transport_advance(t, 1);
    transport_scrub(t, 20);
    transport_scrub(t, 21);
    transport_advance(t, 5);
    CHECK(t.position == 21);
    CHECK(t.playing);
    transport_let_go(t);
    CHECK(t.started == 21);
    transport_advance(t, 0.5);
    CHECK(t.position == 21.5);
}

TEST_CASE("what was paused stays paused when the timeline is let go")
{
    transport t = show_of(60);
    transport_scrub(t, 20);
    transport_let_go(t);
    transport_advance(t, 5);
    CHECK(t.position == 20);
    CHECK(!t.playing);
}

TEST_CASE("a hand can hold places behind a loop, which plays from its beginning when it is let go")
{
    transport t = looping(60, 10, 12);
    transport_play(t);
    transport_scrub(t, 40);
    CHECK(t.position == 40);
    transport_let_go(t);
    CHECK(t.position == 10);
}

TEST_CASE("a show that became shorter stands at its end")
{
    transport t = show_of(60);
    transport_go(t, 50);
    transport_set_end(t, 40);
    CHECK(t.position == 40);
    transport_set_end(t, 60);
    CHECK(t.position == 40);
}

TEST_CASE("a show of another length plays on without a new start")
{
    transport t = playing_at(60, 12);
    const uint32_t starts = t.starts;
    transport_set_end(t, 50);
    transport_set_end(t, 70);
    CHECK(t.starts == starts);
    transport_advance(t, 55);
    CHECK(t.position == 67);
}

TEST_CASE("a loop ends with a show that became shorter, and is whole again with a longer one")
{
    transport t = looping(60, 30, 50);
    transport_go(t, 35);
    transport_play(t);
    const uint32_t starts = t.starts;
    transport_set_end(t, 40);
    CHECK(t.starts != starts); // the sound knows another loop
    transport_advance(t, 6);
    CHECK(t.playing);
    CHECK(t.position == 31);
    transport_set_end(t, 60);
    transport_advance(t, 18);
    CHECK(t.position == 49);
    CHECK(t.loop_to == 50);
}

TEST_CASE("a loop that lies behind the end of a show that became shorter is none")
{
    transport t = looping(60, 30, 50);
    transport_go(t, 10);
    transport_play(t);
    transport_set_end(t, 20);
    transport_advance(t, 11);
    CHECK(!t.playing);
    CHECK(t.position == 20);
    CHECK(t.has_loop);
    transport_go(t, 20);
    transport_play(t);
    CHECK(t.position == 20);
}

TEST_CASE("what is heard from a start on is what time does")
{
    transport t = looping(60, 10, 12.5);
    transport_go(t, 5);
    transport_play(t);
    const played_stretch stretch = transport_stretch(t);
    CHECK(stretch.from == 5);
    CHECK(stretch.loop_from == 10);
    CHECK(stretch.loop_to == 12.5);
    CHECK(stretch_position(stretch, 7.5) == 10);
    CHECK(stretch_position(stretch, 7.25) == 12.25);
    CHECK(stretch_position(stretch, 12.75) == 10.25); // two turns and a quarter
    transport_no_loop(t);
    CHECK(stretch_position(transport_stretch(t), 100) == 105);
}
