#include "progress.h"

#include <doctest/doctest.h>

static std::string text_of(uint64_t total, uint64_t wanted, uint64_t seen, uint64_t frames, double seconds)
{
    progress p;
    p.frames = total;
    p.wanted = wanted;
    return progress_text(p, seen, frames, seconds);
}

TEST_CASE("Progress tells the frames done, their rate and the time left")
{
    CHECK(text_of(750, 750, 120, 120, 4.0) == "120 of 750 frames, 30.0 frames a second, 0:21 left");
    CHECK(text_of(7210, 7210, 10, 10, 1.0) == "10 of 7210 frames, 10.0 frames a second, 12:00 left");
    CHECK(text_of(5, 5, 5, 5, 2.0) == "5 of 5 frames, 2.5 frames a second, 0:00 left");
}

TEST_CASE("Where not all frames are seen the pictures are counted apart")
{
    CHECK(text_of(750, 12, 3, 120, 4.0) == "3 of 12 pictures, frame 120 of 750, 30.0 frames a second, 0:21 left");
}

TEST_CASE("Without any time there is no rate")
{
    CHECK(text_of(100, 100, 0, 0, 0.0) == "0 of 100 frames, 0.0 frames a second, 0:00 left");
}

TEST_CASE("Progress is shown now and then, and never to who wants quiet")
{
    for (const bool quiet : {false, true}) {
        progress p;
        progress_begin(p, 10, 10, quiet);
        progress_show(p, 5, 5);
        CHECK_FALSE(p.shown); // too soon
        p.last -= std::chrono::minutes(1);
        progress_show(p, 5, 5);
        CHECK(p.shown == !quiet);
    }
}
