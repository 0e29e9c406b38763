#include "music/music.h"

#include "content/file_bytes.h"
#include "content/printable.h"
#include "content/vorbis_comments.h"
#include "music/latest_request.h"

#define STB_VORBIS_HEADER_ONLY
#include <stb/stb_vorbis.h>

#include <cassert>
#include <cstring>
#include <string>

constexpr sound_spec requested_spec = {.rate = 44100, .channels = 2, .samples = 8192};
constexpr uint32_t bytes_per_frame = 4; // two channels of 16 bits
constexpr uint32_t start_patience_ms = 10000;

static void audio_callback(void* userdata, uint8_t* stream, int len)
{
    assert(userdata != nullptr);
    sound_feed& feed = *static_cast<sound_feed*>(userdata);
    const uint32_t bytes = len > 0 ? static_cast<uint32_t>(len) : 0;
    const uint32_t total = feed.bytes_total.load(std::memory_order_relaxed);
    const uint32_t now = sound_ticks(); // taken here, so that the stores lie close together
    feed.bytes_before_last.store(total, std::memory_order_relaxed);
    feed.bytes_total.store(total + bytes, std::memory_order_relaxed);
    feed.last_fill_ticks.store(now, std::memory_order_release); // behind its count, see read_latest_request

    uint32_t filled = 0; // bytes
    if (feed.decoder != nullptr) {
        const int frames = stb_vorbis_get_samples_short_interleaved(
            feed.decoder, 2, reinterpret_cast<short*>(stream), static_cast<int>(bytes / 2));
        filled = frames > 0 ? static_cast<uint32_t>(frames) * bytes_per_frame : 0;
    }
    if (filled < bytes)
        std::memset(stream + filled, 0, bytes - filled);
    feed.audio_started.store(1, std::memory_order_relaxed);
}

// A folder of that name beside the pack is no music: the file may lie under "music/".
static FILE* open_music_file(const char* file)
{
    assert(file != nullptr);
    FILE* opened = open_plain_file(file);
    if (opened == nullptr)
        opened = open_plain_file((std::string("music/") + file).c_str());
    return opened;
}

static void open_decoder(music_state& music)
{
    assert(music.music_file != nullptr && music.feed.decoder == nullptr);
    if (vorbis_comments_fit(music.music_file))
        music.feed.decoder = stb_vorbis_open_file(music.music_file, 1, &music.decoder_error, nullptr);
}

music_result music_open(music_state& music, const char* file)
{
    assert(music.music_file == nullptr && music.feed.audio_started.load(std::memory_order_relaxed) == 0);
    if (file == nullptr)
        return music_none;
    music.music_file = open_music_file(file);
    if (music.music_file == nullptr) {
        std::printf("Error: cannot open %s!\n", file);
        return music_none;
    }
    open_decoder(music);
    if (music.feed.decoder == nullptr)
        std::fprintf(stderr, "Warning: demo.xmlz: section 15 (music): \"%s\" is no Ogg Vorbis file: it plays silent.\n",
            printable(file).c_str());

    if (!sound_open(requested_spec, audio_callback, &music.feed, music.obtained_spec)) {
        std::fprintf(stderr, "Couldn't open audio: %s\n", sound_problem());
        return music_no_device;
    }
    sound_play();
    return music_playing;
}

void music_clear_counters(music_state& music)
{
    music.feed.bytes_total.store(0, std::memory_order_relaxed);
    music.feed.bytes_before_last.store(0, std::memory_order_relaxed);
}

uint32_t music_start_clock(const music_state& music, int32_t music_enabled, bool& given_up)
{
    given_up = false;
    const uint32_t last_fill = music.feed.last_fill_ticks.load(std::memory_order_relaxed);
    // The start is taken before the wait: what the device has already asked for counts.
    const uint32_t start = last_fill > 0.001 ? sound_ticks() - last_fill : 0;
    if (music_enabled != 1)
        return start;
    assert(music.music_file != nullptr); // music_open has begun it
    const uint32_t waiting_since = sound_ticks();
    while (music.feed.audio_started.load(std::memory_order_relaxed) != 1) {
        if (sound_ticks() - waiting_since > start_patience_ms) {
            given_up = true;
            return 0;
        }
        sound_wait(10);
    }
    std::printf("Audio buffer size:%u\n", static_cast<unsigned>(music.obtained_spec.samples));
    return start;
}

uint32_t music_clock_update(const music_state& music)
{
    const uint32_t now = sound_ticks(); // before the request's time: the clock's own reading is the older one
    const latest_request request = read_latest_request(music.feed.bytes_before_last, music.feed.last_fill_ticks);
    return audio_clock_ms(request.bytes_before, music.obtained_spec.samples, request.ticks, now);
}
