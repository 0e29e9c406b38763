#include "tools/preview/sound_feed.h"

#include "music/music.h"

#include <doctest/doctest.h>

#include <vector>

// Pair n of the music is told by its samples; none is silent.
static std::vector<int16_t> numbered_music(uint32_t pairs)
{
    std::vector<int16_t> music;
    for (uint32_t i = 0; i < pairs; ++i) {
        music.push_back(static_cast<int16_t>(1 + (i & 0x3FFF)));
        music.push_back(static_cast<int16_t>(1 + (i >> 14)));
    }
    return music;
}

constexpr int64_t silence = -1;

static int64_t number_of(int16_t left, int16_t right)
{
    return left == 0 && right == 0 ? silence : left - 1 + (int64_t{right - 1} << 14);
}

static music_feed feed_of(const std::vector<int16_t>& music)
{
    music_feed feed;
    feed.pairs = music.data();
    feed.pair_count = music.size() / 2;
    return feed;
}

// Which pairs of the music a request is answered with.
static std::vector<int64_t> request(music_feed& feed, uint32_t pairs, uint32_t now = 1)
{
    std::vector<int16_t> samples(pairs * 2, 99);
    feed_fill(feed, samples, now);
    std::vector<int64_t> numbers;
    for (uint32_t i = 0; i < pairs; ++i)
        numbers.push_back(number_of(samples[i * 2], samples[i * 2 + 1]));
    return numbers;
}

// ---- samples ----------------------------------------------------------------------------------------

TEST_CASE("from a frame's time on the frame's own sample sounds")
{
    const std::vector<int16_t> music = numbered_music(300000);
    music_feed feed = feed_of(music);
    for (int64_t frame = 0; frame < 400; ++frame) {
        feed_start(feed, {static_cast<double>(frame) / 60, 0, 0});
        CHECK(request(feed, 1)[0] == frame * 735);
        feed_start(feed, {static_cast<double>(frame) * 1001 / 60000, 0, 0});
        CHECK(request(feed, 1)[0] == frame * 1001 * 44100 / 60000);
    }
}

TEST_CASE("requests of any size follow each other without a gap")
{
    const std::vector<int16_t> music = numbered_music(5000);
    music_feed feed = feed_of(music);
    feed_start(feed, {0.01, 0, 0});
    int64_t next = 441;
    for (const uint32_t pairs : {1u, 512u, 0u, 1023u, 64u})
        for (const int64_t number : request(feed, pairs))
            REQUIRE(number == next++);
    CHECK(feed.bytes_total == 1600 * 4);
}

TEST_CASE("behind the music it is silent, and time goes on")
{
    const std::vector<int16_t> music = numbered_music(1000);
    music_feed feed = feed_of(music);
    feed_start(feed, {0.02, 0, 0});
    const std::vector<int64_t> numbers = request(feed, 300);
    CHECK(numbers[117] == 999);
    CHECK(numbers[118] == silence);
    CHECK(numbers[299] == silence);
    CHECK(request(feed, 300)[0] == silence);
    CHECK(feed.bytes_total == 2400);
    feed_start(feed, {1e9, 0, 0});
    CHECK(request(feed, 1)[0] == silence);
}

TEST_CASE("without music it is silent, and time goes on")
{
    music_feed feed;
    feed_start(feed, {0, 0, 0});
    CHECK(request(feed, 100)[99] == silence);
    CHECK(feed.bytes_total == 400);
}

TEST_CASE("music that is still being decoded sounds at its place as soon as it is there")
{
    const std::vector<int16_t> music = numbered_music(1000);
    music_feed feed = feed_of(music);
    feed.pair_count = 0;
    feed_start(feed, {0, 0, 0});
    CHECK(request(feed, 100)[99] == silence);
    feed.pair_count = 150;
    const std::vector<int64_t> numbers = request(feed, 100);
    CHECK(numbers[0] == 100);
    CHECK(numbers[49] == 149);
    CHECK(numbers[50] == silence);
    feed.pair_count = 1000;
    CHECK(request(feed, 100)[0] == 200);
}

TEST_CASE("a loop goes round without a gap")
{
    const std::vector<int16_t> music = numbered_music(3000);
    music_feed feed = feed_of(music);
    feed_start(feed, {0.01, 0.02, 0.04}); // 441; 882 to 1764
    int64_t next = 441;
    for (int request_number = 0; request_number < 20; ++request_number)
        for (const int64_t number : request(feed, 256)) {
            REQUIRE(number == next);
            next = next == 1763 ? 882 : next + 1;
        }
}

TEST_CASE("a loop from frame to frame begins and ends with their own samples")
{
    const std::vector<int16_t> music = numbered_music(735 * 140);
    music_feed feed = feed_of(music);
    for (int64_t frame = 1; frame < 120; ++frame) {
        const double from = static_cast<double>(frame) / 60;
        feed_start(feed, {from, from, static_cast<double>(frame + 2) / 60});
        const std::vector<int64_t> numbers = request(feed, 735 * 5);
        for (const int64_t i : {0, 1469, 1470, 1471, 2939, 2940, 2941, 3674})
            REQUIRE(numbers[static_cast<size_t>(i)] == frame * 735 + i % 1470);
    }
}

TEST_CASE("a loop of no whole number of samples is in step after a thousand turns")
{
    // In units of 1/10,000,000 sample: the loop from 0.0100003 to 0.0223460 s, begun at 0.0150001.
    constexpr int64_t unit = 10000000;
    constexpr int64_t from = 150001 * int64_t{44100};
    constexpr int64_t loop_from = 100003 * int64_t{44100};
    constexpr int64_t loop_to = 223460 * int64_t{44100};
    const std::vector<int16_t> music = numbered_music(1000);
    music_feed feed = feed_of(music);
    feed_start(feed, {0.0150001, 0.0100003, 0.0223460});
    int64_t pair = 0;
    for (int request_number = 0; request_number < 1100; ++request_number)
        for (const int64_t number : request(feed, 500)) {
            int64_t place = from + pair++ * unit;
            if (place >= loop_to)
                place = loop_from + (place - loop_to) % (loop_to - loop_from);
            REQUIRE(number == place / unit);
        }
}

TEST_CASE("a loop shorter than a sample is answered")
{
    const std::vector<int16_t> music = numbered_music(1000);
    music_feed feed = feed_of(music);
    feed_start(feed, {0.01, 0.01, 0.0100001});
    const std::vector<int64_t> numbers = request(feed, 500);
    CHECK(numbers[0] == 441);
    CHECK(numbers[499] == 441);
}

TEST_CASE("muted music is silent and comes back at its place")
{
    const std::vector<int16_t> music = numbered_music(1000);
    music_feed feed = feed_of(music);
    feed_start(feed, {0, 0, 0});
    request(feed, 100);
    feed.muted = true;
    CHECK(request(feed, 100)[0] == silence);
    feed.muted = false;
    CHECK(request(feed, 100)[0] == 200);
}

TEST_CASE("what is stopped is silent and counts nothing")
{
    const std::vector<int16_t> music = numbered_music(1000);
    music_feed feed = feed_of(music);
    CHECK(request(feed, 100)[0] == silence);
    feed_start(feed, {0, 0, 0});
    request(feed, 100);
    feed_stop(feed);
    CHECK(request(feed, 100, 77)[0] == silence);
    CHECK(feed.bytes_total == 400);
    CHECK(feed.last_request_ticks == 77);
}

TEST_CASE("a start counts from nothing, and its first sample is its place's")
{
    const std::vector<int16_t> music = numbered_music(1000);
    music_feed feed = feed_of(music);
    feed_start(feed, {0, 0, 0});
    request(feed, 100, 5);
    request(feed, 100, 7);
    feed_start(feed, {0.01, 0, 0});
    CHECK(feed.bytes_before_last == 0);
    CHECK(feed_clock(feed, 100, 50) == 0);
    CHECK(request(feed, 100, 9)[0] == 441);
}

// ---- time -------------------------------------------------------------------------------------------

TEST_CASE("the clock is the player's")
{
    music_feed feed;
    feed_start(feed, {3, 0, 0});
    CHECK(feed_clock(feed, 1024, 100) == 0);
    request(feed, 1024, 100);
    CHECK(feed_clock(feed, 1024, 120) == 0); // one buffer waits, none is known to be heard
    request(feed, 1024, 123);
    CHECK(feed_clock(feed, 1024, 123) == 0);
    CHECK(feed_clock(feed, 1024, 130) == 0.007);
    request(feed, 1024, 146);
    for (uint32_t now = 146; now < 200; ++now)
        CHECK(feed_clock(feed, 1024, now) == audio_clock_ms(8192, 1024, 146, now) / 1000.0);
    CHECK(feed_clock(feed, 1024, 150) == 0.027); // 1024 pairs are 23.2 ms
}

TEST_CASE("the clock goes on when a loop has gone round for days")
{
    music_feed feed;
    feed_start(feed, {0, 0, 1});
    feed.bytes_before_last = 176400ull * 250000 + 4 * 1024;
    feed.last_fill_ticks = 1000;
    CHECK(feed_clock(feed, 1024, 1030) == doctest::Approx(250000.030).epsilon(1e-12));
    feed.bytes_before_last = 176400ull * 250000 + 4 * 1024 - 4;
    CHECK(feed_clock(feed, 1024, 1030) == doctest::Approx(250000.029).epsilon(1e-12));
}

namespace {

// A device of 441 pairs a buffer that asks every 10 ms, and a clock that is read in between.
struct device_run {
    music_feed feed;
    playing_clock clock;
    uint32_t buffer_pairs = 441;
    uint32_t now = 1000;
    double time = 0;               // told last
    double largest_step = 0;       // from one reading to the next
    int64_t first_heard = silence; // of the latest request
};

} // namespace

static void run_for(device_run& run, uint32_t ms, bool asks)
{
    for (const uint32_t end = run.now + ms; run.now < end; ++run.now) {
        if (asks && run.now % 10 == 0)
            run.first_heard = request(run.feed, 441, run.now)[0];
        const double time = clock_read(run.clock, run.feed, run.buffer_pairs, run.now);
        REQUIRE(time >= run.time);
        run.largest_step = std::max(run.largest_step, time - run.time);
        run.time = time;
    }
}

static device_run started(const std::vector<int16_t>& music, const played_stretch& stretch, uint32_t buffer_pairs)
{
    device_run run;
    run.feed = feed_of(music);
    run.buffer_pairs = buffer_pairs;
    clock_start(run.clock, run.feed, stretch, buffer_pairs, run.now);
    return run;
}

TEST_CASE("while the device asks its clock counts")
{
    const std::vector<int16_t> music = numbered_music(400000);
    device_run run = started(music, {1, 0, 0}, 441);
    run_for(run, 3000, true);
    // The last request came 9 ms ago; 300 buffers were asked for, one of them waits and the latest is not counted.
    CHECK(run.time == doctest::Approx(2.989));
    CHECK(run.first_heard == 44100 + 299 * 441);
    CHECK(run.largest_step < 0.0021);
}

TEST_CASE("without a device a steady clock counts")
{
    device_run run = started({}, {1, 0, 0}, 0);
    run_for(run, 3000, false);
    CHECK(run.time == doctest::Approx(2.999));
}

TEST_CASE("a device that opens late joins at the clock's place")
{
    const std::vector<int16_t> music = numbered_music(400000);
    device_run run = started(music, {1, 0, 0}, 0);
    run_for(run, 1500, false);
    run.buffer_pairs = 441;
    run_for(run, 1, true);
    CHECK(run.clock.by_device);
    run_for(run, 10, true); // the first request after that
    CHECK(run.first_heard == 2.5 * 44100);
    run_for(run, 989, true);
    // Of 2.5 s, two buffers passed until one was known to be heard.
    CHECK(run.time > 2.475);
    CHECK(run.time < 2.5);
}

TEST_CASE("a device that never asks does not stop the clock")
{
    device_run run = started({}, {1, 0, 0}, 441);
    run_for(run, 500, false);
    CHECK(run.time == 0);
    run_for(run, 1000, false);
    CHECK(run.time == doctest::Approx(0.999).epsilon(0.005));
    CHECK(run.largest_step < 0.0021);
}

TEST_CASE("a device that stops asking does not stop the clock, and is in step when it asks again")
{
    const std::vector<int16_t> music = numbered_music(800000);
    device_run run = started(music, {1, 0, 0}, 441);
    run_for(run, 2000, true);
    run_for(run, 4000, false);
    CHECK(run.time == doctest::Approx(5.989).epsilon(0.0005));
    CHECK(!run.clock.by_device);
    CHECK(run.largest_step < 0.0021);
    run_for(run, 1, true);
    const double joined = run.clock.begun;
    run_for(run, 10, true);
    CHECK(run.first_heard == static_cast<int64_t>((1 + joined) * 44100 + 0.001));
    run_for(run, 1000, true);
    CHECK(run.time == doctest::Approx(joined + 0.99).epsilon(0.002));
}

TEST_CASE("a device that joins late is in its loop")
{
    const std::vector<int16_t> music = numbered_music(400000);
    device_run run = started(music, {1, 1, 1.25}, 0);
    run_for(run, 600, false);
    run.buffer_pairs = 441;
    run_for(run, 11, true);
    CHECK(run.first_heard == 48510); // at 1.1 s: 0.6 s are two turns and a tenth of a second
    run_for(run, 150, true);
    CHECK(run.first_heard == 44100);
}

TEST_CASE("a device that asks late and then twice does not turn the clock back")
{
    const std::vector<int16_t> music = numbered_music(400000);
    device_run run = started(music, {1, 0, 0}, 441);
    run_for(run, 500, true);
    run_for(run, 27, false);
    run_for(run, 3, true); // the next request is one of three
    run_for(run, 500, true);
    CHECK(run.clock.by_device);
}

TEST_CASE("a device of long buffers is no device that stopped")
{
    const std::vector<int16_t> music = numbered_music(400000);
    device_run run = started(music, {0, 0, 0}, 44100);
    for (uint32_t i = 0; i < 4; ++i) {
        request(run.feed, 44100, run.now);
        run_for(run, 1000, false);
    }
    CHECK(run.clock.by_device);
    CHECK(run.time == doctest::Approx(2.999));
}

TEST_CASE("a clock that was started again counts from nothing")
{
    const std::vector<int16_t> music = numbered_music(400000);
    device_run run = started(music, {1, 0, 0}, 441);
    run_for(run, 700, true);
    clock_start(run.clock, run.feed, {2, 0, 0}, 441, run.now);
    run.time = 0;
    run_for(run, 15, true);
    CHECK(run.time < 0.02);
    CHECK(run.first_heard >= 2 * 44100);
}
