#include "tools/frames/frame_rate.h"

#include <doctest/doctest.h>

TEST_CASE("A frame stands at its number times the length of a frame")
{
    CHECK(time_of_frame(0, {25, 1}) == 0.0);
    CHECK(time_of_frame(1, {25, 1}) == doctest::Approx(0.04));
    CHECK(time_of_frame(100, {25, 1}) == 4.0);
    CHECK(time_of_frame(30000, {30000, 1001}) == 1001.0);
    CHECK(time_of_frame(3, {1, 2}) == 6.0); // one frame every two seconds
}

TEST_CASE("The sample of a frame is the last one that has begun")
{
    CHECK(sample_of_frame(1, {25, 1}, 44100) == 1764); // 44100 / 25
    CHECK(sample_of_frame(1, {60, 1}, 22050) == 367);  // 367.5
    CHECK(sample_of_frame(2, {60, 1}, 22050) == 735);
    CHECK(sample_of_frame(1, {30000, 1001}, 48000) == 1601); // 1601.6
    CHECK(sample_of_frame(5, {30000, 1001}, 48000) == 8008); // 5 x 1601.6, exactly
}

TEST_CASE("Samples do not drift over a day of rational frames")
{
    // 24 h of 30000/1001 at 44100: frame 30000 x k is second 1001 x k, exactly.
    CHECK(sample_of_frame(30000ull * 86, {30000, 1001}, 44100) == 86ull * 1001 * 44100);
}

TEST_CASE("Numbers at the ends of their types neither overflow nor divide by zero")
{
    CHECK(sample_of_frame(UINT64_MAX, {1, 4000000000u}, 192000) == UINT64_MAX);
    CHECK(sample_of_frame(UINT64_MAX, {1, 1}, 2) == UINT64_MAX);
    CHECK(sample_of_frame(UINT64_MAX, {1, 1}, 1) == UINT64_MAX);
    CHECK(sample_of_frame(4294967295u, {4294967295u, 4294967295u}, 4294967295u) == 4294967295ull * 4294967295ull);
    CHECK(sample_of_frame(7, {25, 1}, 0) == 0);
    CHECK(sample_of_frame(3, {0, 1}, 10) == 30); // a zero in the rate: one a second
    CHECK(time_of_frame(3, {25, 0}) == 3.0);
}
