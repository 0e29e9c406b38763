#include "music/latest_request.h"
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
    music_state music;
    CHECK(music_open(music, nullptr) == music_none);
}

TEST_CASE("clearing forgets what was played of this music, not when the device last asked")
{
    music_state music;
    music_state other;
    for (music_state* each : {&music, &other}) {
        each->feed.bytes_total = 65536;
        each->feed.bytes_before_last = 32768;
        each->feed.last_fill_ticks = 1234;
        each->feed.audio_started = 1;
    }
    music_clear_counters(music);
    CHECK(music.feed.bytes_total == 0);
    CHECK(music.feed.bytes_before_last == 0);
    CHECK(music.feed.last_fill_ticks == 1234);
    CHECK(music.feed.audio_started == 1);
    CHECK(other.feed.bytes_total == 65536);
    CHECK(other.feed.bytes_before_last == 32768);
}

TEST_CASE("a music that nothing was asked of stands at time 0")
{
    music_state music;
    bool given_up = true;
    CHECK(music_clock_update(music) == 0);
    CHECK(music_start_clock(music, -1, given_up) == 0);
    CHECK_FALSE(given_up);
}

namespace {

// The two words of the callback, and a request that comes while they are read: its count is
// stored before the reading of number `count_at`, its time before that of number `time_at`.
struct request_words {
    uint32_t bytes = 1000;
    uint32_t ticks = 10;
    uint32_t readings = 0;
    uint32_t count_at;
    uint32_t time_at;
};

struct watched_word {
    request_words* words;
    uint32_t request_words::*value;

    uint32_t load(std::memory_order) const
    {
        const uint32_t reading = words->readings++;
        words->bytes = reading >= words->count_at ? 2000 : 1000;
        words->ticks = reading >= words->time_at ? 20 : 10;
        return words->*value;
    }
};

} // namespace

static latest_request read_while(uint32_t count_at, uint32_t time_at)
{
    request_words words;
    words.count_at = count_at;
    words.time_at = time_at;
    return read_latest_request(watched_word{&words, &request_words::bytes}, {&words, &request_words::ticks});
}

TEST_CASE("a request that comes while the latest one is read counts with both words or with none")
{
    for (uint32_t at = 0; at < 6; ++at) {
        const latest_request request = read_while(at, at);
        const bool fits = request.bytes_before == 2000 ? request.ticks == 20 : request.ticks == 10;
        CHECK_MESSAGE(fits, at);
    }
    CHECK(read_while(0, 0).bytes_before == 2000);
    CHECK(read_while(6, 6).bytes_before == 1000);
}

TEST_CASE("a new time is never read with an old count, whenever the callback stores them")
{
    for (uint32_t count_at = 0; count_at < 6; ++count_at)
        for (uint32_t time_at = count_at; time_at < 8; ++time_at) {
            const latest_request request = read_while(count_at, time_at);
            CHECK((request.ticks == 10 || request.bytes_before == 2000));
        }
}
