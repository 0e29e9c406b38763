#include "progress.h"

#include <doctest/doctest.h>

TEST_CASE("Progress tells the frames done, their rate and the time left")
{
    CHECK(progress_text(120, 750, 4.0) == "120 of 750 frames, 30.0 frames a second, 0:21 left");
    CHECK(progress_text(10, 7210, 1.0) == "10 of 7210 frames, 10.0 frames a second, 12:00 left");
    CHECK(progress_text(5, 5, 2.0) == "5 of 5 frames, 2.5 frames a second, 0:00 left");
}

TEST_CASE("Without any time there is no rate")
{
    CHECK(progress_text(0, 100, 0.0) == "0 of 100 frames, 0.0 frames a second, 0:00 left");
}
