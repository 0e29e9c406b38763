#include "music/music.h"

#include <doctest/doctest.h>

TEST_CASE("the clock stands still until a whole buffer was taken before the latest request")
{
    // 8192 frames of four bytes: 32,768 bytes a buffer.
    CHECK(audio_clock_ms(0, 8192, 500, 600) == 0);
    CHECK(audio_clock_ms(32767, 8192, 500, 600) == 0);
    CHECK(audio_clock_ms(32768, 8192, 500, 600) == 100); // nothing heard yet, 100 ms since the request
}

TEST_CASE("the clock counts what was heard and the time since the latest request")
{
    // 176,400 bytes are one second of sound.
    CHECK(audio_clock_ms(32768 + 176400, 8192, 500, 500) == 1000);
    CHECK(audio_clock_ms(32768 + 176400, 8192, 500, 523) == 1023);
    CHECK(audio_clock_ms(4 * 1024 + 88200, 1024, 2000, 2007) == 507);
}

TEST_CASE("the clock's fractions are cut off")
{
    // One buffer of 8192 frames is 185.759... ms.
    CHECK(audio_clock_ms(2 * 32768, 8192, 500, 500) == 185);
    CHECK(audio_clock_ms(32768 + 176, 8192, 500, 500) == 0); // 0.9977 ms
    CHECK(audio_clock_ms(32768 + 177, 8192, 500, 500) == 1); // 1.0034 ms
}

TEST_CASE("without a request the clock stands at 0")
{
    CHECK(audio_clock_ms(1000000, 8192, 0, 600) == 0);
    CHECK(audio_clock_ms(1000000, 8192, 1, 1) > 0);
}

TEST_CASE("a request between the readings does not take the clock below 0")
{
    CHECK(audio_clock_ms(32768, 8192, 600, 590) == 0);
}

TEST_CASE("the clock ends where its number does")
{
    CHECK(audio_clock_ms(0xFFFFFFFFu, 1, 1, 0xFFFFFFFFu) == 0xFFFFFFFFu);
}

TEST_CASE("a show without a music file is no error")
{
    CHECK(music_open(nullptr) == music_none);
}
