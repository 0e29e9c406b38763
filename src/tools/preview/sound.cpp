#include "tools/preview/sound.h"

#include "model/timeline.h"
#include "music/device.h"
#include "tools/preview/sound_feed.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <mutex>
#include <sys/stat.h>
#include <thread>

// Short buffers: after a jump the clock stands for two of them.
constexpr sound_spec wanted_spec = {.rate = music_rate, .channels = 2, .samples = 1024};
constexpr uint32_t tick_pairs = music_rate / 100;

namespace {

// Which content a path had.
struct file_version {
    dev_t device = 0;
    ino_t number = 0;
    off_t size = -1; // none
    timespec changed = {};
};

} // namespace

// Locked for as long as a buffer takes to be copied, or a number to be read.
struct sound_output {
    std::mutex lock;
    music_feed feed;
    playing_clock clock;
    uint32_t buffer_pairs = 0;            // of the device; 0: it is not open (yet)
    std::shared_ptr<preview_music> heard; // that `feed` reads
    std::string device_problem;           // when device_failed

    std::thread opening;
    std::thread decoding;
    file_version version; // of the music
};

preview_sound::preview_sound()
    : output(std::make_unique<sound_output>())
{
}

preview_sound::~preview_sound() = default;

// ---- the device -----------------------------------------------------------------------------------

// What has been decoded by now. Its place in memory is settled before its first tick is told of.
static void look_at_music(sound_output& output)
{
    const uint32_t ticks = output.heard ? output.heard->ticks.load(std::memory_order_acquire) : 0;
    output.feed.pairs = ticks > 0 ? output.heard->pairs.data() : nullptr;
    output.feed.pair_count = uint64_t{ticks} * tick_pairs;
}

static void fill_buffer(void* userdata, uint8_t* stream, int len)
{
    assert(userdata != nullptr && len >= 0);
    sound_output& output = *static_cast<sound_output*>(userdata);
    const auto bytes = static_cast<size_t>(len);
    std::memset(stream, 0, bytes);
    const std::lock_guard<std::mutex> guard(output.lock);
    look_at_music(output);
    feed_fill(output.feed, std::span(reinterpret_cast<int16_t*>(stream), bytes / 4 * 2), sound_ticks());
}

static void open_device(sound_output& output, std::atomic<bool>& failed)
{
    sound_start();
    sound_spec obtained = {};
    if (!sound_open(wanted_spec, fill_buffer, &output, obtained)) {
        output.device_problem = sound_problem();
        failed.store(true, std::memory_order_release);
        return;
    }
    {
        const std::lock_guard<std::mutex> guard(output.lock);
        output.buffer_pairs = obtained.samples;
    }
    sound_play();
}

// ---- the music ------------------------------------------------------------------------------------

// Every tick is told of when it is there: the music can be heard while it is being decoded.
static void decode(preview_music& music, music_reader& reader)
{
    music.pairs.reserve(size_t{max_track_end} * tick_pairs * 2); // never moved, and touched only where music is
    music.columns.reserve(max_track_end);
    for (uint32_t tick = 0; tick < max_track_end && !music.unwanted.load(std::memory_order_relaxed); ++tick) {
        int16_t samples[tick_pairs * 2] = {};
        const uint32_t count = read_pairs(reader, samples);
        if (count == 0)
            break;
        music.pairs.insert(music.pairs.end(), std::begin(samples), std::end(samples));
        music.columns.push_back(waveform_of(std::span(samples).first(size_t{count} * 2)));
        music.ticks.store(tick + 1, std::memory_order_release);
    }
}

static void decode_file(std::shared_ptr<preview_music> music)
{
    std::string problem;
    if (const owned_music_reader reader = open_music_reader(music->path, problem))
        decode(*music, *reader);
    else
        music->problem = "the music \"" + music->path.substr(music->path.rfind('/') + 1) + "\" "
            + problem.substr(0, problem.find_last_not_of('.') + 1);
    music->ready.store(true, std::memory_order_release);
}

static file_version version_of(const std::string& path)
{
    struct stat facts = {};
    if (path.empty() || stat(path.c_str(), &facts) != 0)
        return {};
    return {facts.st_dev, facts.st_ino, facts.st_size, facts.st_mtim};
}

static bool is_same(const file_version& a, const file_version& b)
{
    return a.device == b.device && a.number == b.number && a.size == b.size && a.changed.tv_sec == b.changed.tv_sec
        && a.changed.tv_nsec == b.changed.tv_nsec;
}

static void hear(preview_sound& s)
{
    std::shared_ptr<preview_music> before = s.music; // freed behind the lock
    const std::lock_guard<std::mutex> guard(s.output->lock);
    std::swap(s.output->heard, before);
}

static void forget_music(preview_sound& s)
{
    if (s.music)
        s.music->unwanted.store(true, std::memory_order_relaxed);
    if (s.output->decoding.joinable())
        s.output->decoding.join(); // it looks once a tick
    s.music.reset();
}

void sound_take(preview_sound& s, const std::string& path)
{
    const file_version version = version_of(path);
    const bool is_there = s.music && s.music->path == path && is_same(s.output->version, version);
    if (is_there || (path.empty() && !s.music))
        return;
    forget_music(s);
    if (!path.empty()) {
        if (!s.output->opening.joinable())
            s.output->opening = std::thread(open_device, std::ref(*s.output), std::ref(s.device_failed));
        s.output->version = version;
        s.music = std::make_shared<preview_music>();
        s.music->path = path;
        s.output->decoding = std::thread(decode_file, s.music);
    }
    hear(s);
}

std::span<const waveform_column> sound_columns(const preview_sound& s)
{
    const uint32_t ticks = s.music ? s.music->ticks.load(std::memory_order_acquire) : 0;
    return ticks > 0 ? std::span<const waveform_column>(s.music->columns.data(), ticks)
                     : std::span<const waveform_column>();
}

std::string sound_trouble(const preview_sound& s)
{
    if (s.device_failed.load(std::memory_order_acquire))
        return "there is no sound, as no device can be opened: " + s.output->device_problem;
    const bool is_known = s.music && s.music->ready.load(std::memory_order_acquire);
    return is_known ? s.music->problem : "";
}

// ---- playing --------------------------------------------------------------------------------------

void sound_play_from(preview_sound& s, const played_stretch& stretch)
{
    const std::lock_guard<std::mutex> guard(s.output->lock);
    clock_start(s.output->clock, s.output->feed, stretch, s.output->buffer_pairs, sound_ticks());
}

void sound_stop(preview_sound& s)
{
    const std::lock_guard<std::mutex> guard(s.output->lock);
    feed_stop(s.output->feed);
}

double sound_playing_for(const preview_sound& s)
{
    sound_output& output = *s.output;
    const std::lock_guard<std::mutex> guard(output.lock);
    return clock_read(output.clock, output.feed, output.buffer_pairs, sound_ticks());
}

void sound_mute(preview_sound& s, bool muted)
{
    s.muted = muted;
    const std::lock_guard<std::mutex> guard(s.output->lock);
    s.output->feed.muted = muted;
}

void sound_close(preview_sound& s)
{
    sound_stop(s);
    forget_music(s);
    if (s.output->opening.joinable())
        s.output->opening.join();
    hear(s);
}
