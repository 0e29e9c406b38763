#include "tools/preview/sound_feed.h"

#include "music/music.h"

#include <algorithm>
#include <cassert>
#include <cmath>

constexpr uint32_t pair_bytes = 4;
constexpr uint64_t bytes_per_second = music_rate * pair_bytes;
constexpr uint32_t patience_ms = 500;
constexpr double rounding = 1e-6; // pairs: what rounding leaves just below a whole one counts as it

namespace {

// Pairs that lie side by side in the music, too.
struct pair_run {
    uint64_t first; // in the music
    uint64_t count; // at least 1
};

} // namespace

// ---- samples --------------------------------------------------------------------------------------

static uint64_t whole_pairs(double pairs)
{
    return static_cast<uint64_t>(std::max(0.0, std::floor(pairs + rounding)));
}

// What sounds from pair `at` since the start on.
static pair_run run_at(const played_stretch& stretch, uint64_t at)
{
    const double loop = (stretch.loop_to - stretch.loop_from) * music_rate;
    const double before_loop = (stretch.loop_to - stretch.from) * music_rate;
    const auto n = static_cast<double>(at);
    if (!(loop > 0))
        return {whole_pairs(stretch.from * music_rate) + at, UINT64_MAX};
    double lap_begins = 0; // pairs since the start
    double lap_ends = before_loop;
    double place = stretch.from * music_rate;
    if (n + rounding >= before_loop) {
        lap_begins = before_loop + std::floor((n + rounding - before_loop) / loop) * loop;
        lap_ends = lap_begins + loop;
        place = stretch.loop_from * music_rate;
    }
    const auto end = static_cast<uint64_t>(std::ceil(lap_ends - rounding));
    return {whole_pairs(place + (n - lap_begins)), std::max<uint64_t>(end, at + 1) - at};
}

// What the music has of them; the rest stays silent.
static void copy_pairs(const music_feed& feed, uint64_t first, std::span<int16_t> samples)
{
    const uint64_t there = first < feed.pair_count ? feed.pair_count - first : 0;
    const auto count = static_cast<size_t>(std::min<uint64_t>(there, samples.size() / 2)) * 2;
    if (count > 0)
        std::copy_n(feed.pairs + first * 2, count, samples.begin());
}

void feed_start(music_feed& feed, const played_stretch& stretch)
{
    feed.stretch = stretch;
    feed.playing = true;
    feed.bytes_total = feed.bytes_before_last = 0;
    feed.last_fill_ticks = 0;
}

void feed_stop(music_feed& feed)
{
    feed.playing = false;
}

void feed_fill(music_feed& feed, std::span<int16_t> samples, uint32_t now)
{
    assert(samples.size() % 2 == 0 && (feed.pairs != nullptr || feed.pair_count == 0));
    feed.last_request_ticks = std::max(now, 1u);
    std::fill(samples.begin(), samples.end(), static_cast<int16_t>(0));
    if (!feed.playing)
        return;
    const uint64_t begin = feed.bytes_total / pair_bytes;
    feed.bytes_before_last = feed.bytes_total;
    feed.bytes_total += samples.size_bytes();
    feed.last_fill_ticks = feed.last_request_ticks;
    if (feed.muted)
        return;
    for (size_t done = 0; done < samples.size();) {
        const pair_run run = run_at(feed.stretch, begin + done / 2);
        const auto count = static_cast<size_t>(std::min<uint64_t>(run.count, (samples.size() - done) / 2)) * 2;
        copy_pairs(feed, run.first, samples.subspan(done, count));
        done += count;
    }
}

// ---- time -----------------------------------------------------------------------------------------

// The player's clock counts 32 bits of bytes, seven hours; a loop may go round for longer. Whole thousands of seconds
// are taken off before.
double feed_clock(const music_feed& feed, uint32_t buffer_pairs, uint32_t now)
{
    constexpr uint64_t part_seconds = 1000;
    const uint64_t buffer_bytes = uint64_t{buffer_pairs} * pair_bytes;
    const uint64_t heard = feed.bytes_before_last > buffer_bytes ? feed.bytes_before_last - buffer_bytes : 0;
    const uint64_t parts = heard / (part_seconds * bytes_per_second);
    const uint64_t rest = feed.bytes_before_last - parts * part_seconds * bytes_per_second;
    const uint32_t ms = audio_clock_ms(static_cast<uint32_t>(rest), buffer_pairs, feed.last_fill_ticks, now);
    return static_cast<double>(parts * part_seconds) + ms / 1000.0;
}

// A device with long buffers asks seldom.
static uint32_t patience(uint32_t buffer_pairs)
{
    return std::max(patience_ms, static_cast<uint32_t>(uint64_t{3000} * buffer_pairs / music_rate));
}

static bool device_asks(const music_feed& feed, uint32_t buffer_pairs, uint32_t now)
{
    return buffer_pairs > 0 && feed.last_request_ticks != 0 && now - feed.last_request_ticks <= patience(buffer_pairs);
}

static void begin_clock(playing_clock& clock, double begun, bool by_device, uint32_t now)
{
    clock.begun = begun;
    clock.begun_ticks = now;
    clock.by_device = by_device;
}

void clock_start(
    playing_clock& clock, music_feed& feed, const played_stretch& stretch, uint32_t buffer_pairs, uint32_t now)
{
    clock.stretch = stretch;
    clock.told = 0;
    begin_clock(clock, 0, buffer_pairs > 0, now);
    feed_start(feed, stretch);
}

static double steady_time(const playing_clock& clock, uint32_t now)
{
    return clock.begun + (now - clock.begun_ticks) / 1000.0;
}

// The music goes on at the place of the steady clock, behind which the device has fallen.
static void follow_device(playing_clock& clock, music_feed& feed, uint32_t now)
{
    begin_clock(clock, std::max(clock.told, steady_time(clock, now)), true, now);
    played_stretch rest = clock.stretch;
    rest.from += clock.begun; // however often its loop went round
    feed_start(feed, rest);
}

double clock_read(playing_clock& clock, music_feed& feed, uint32_t buffer_pairs, uint32_t now)
{
    const bool asks = device_asks(feed, buffer_pairs, now);
    const bool has_time = buffer_pairs > 0 && now - clock.begun_ticks <= patience(buffer_pairs);
    if (clock.by_device && !asks && !has_time)
        begin_clock(clock, clock.told, false, now);
    else if (!clock.by_device && asks)
        follow_device(clock, feed, now);
    const double time = clock.by_device ? clock.begun + feed_clock(feed, buffer_pairs, now) : steady_time(clock, now);
    clock.told = std::max(clock.told, time);
    return clock.told;
}
