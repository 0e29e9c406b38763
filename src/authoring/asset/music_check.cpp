#include "authoring/asset/music_check.h"

#include "authoring/asset/drawing_text.h"
#include "content/file_bytes.h"
#include "content/owners.h"
#include "content/vorbis_comments.h"
#include "model/timeline.h"

#define STB_VORBIS_HEADER_ONLY
#include <stb/stb_vorbis.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string_view>

using namespace std::string_view_literals;

constexpr uint32_t player_rate = 44100; // of its sound device
constexpr uint32_t ticks_per_second = 100;
constexpr uint32_t samples_per_tick = player_rate / ticks_per_second;
constexpr int decoder_room = 64 << 20; // bytes

namespace {

struct close_decoder {
    void operator()(stb_vorbis* decoder) const
    {
        stb_vorbis_close(decoder);
    }
};

struct sound_kind {
    const char* name; // with its article
    size_t at;        // bytes before its mark
    std::string_view mark;
};

} // namespace

// A decoder with all the memory that it takes, since it loses some of its own where a file breaks off in its
// tables. Tunes need less than one MiB, the rest is never touched.
struct music_reader {
    owned_block<char> room;
    std::unique_ptr<stb_vorbis, close_decoder> decoder;
};

// ---- what kind of file --------------------------------------------------------------------

constexpr sound_kind sound_kinds[] = {
    {"an MP3 file", 0, "ID3"sv},
    {"an MP3 file", 0, "\xFF\xFB"sv},
    {"an MP3 file", 0, "\xFF\xF3"sv},
    {"an MP3 file", 0, "\xFF\xFA"sv},
    {"an AAC file", 0, "\xFF\xF1"sv},
    {"an AAC file", 0, "\xFF\xF9"sv},
    {"a WAV file", 8, "WAVE"sv},
    {"a FLAC file", 0, "fLaC"sv},
    {"an AIFF file", 8, "AIF"sv},
    {"an MPEG-4 file", 4, "ftyp"sv},
    {"a Matroska file", 0, "\x1A\x45\xDF\xA3"sv},
    {"a tracker module", 0, "Extended Module"sv},
    {"a tracker module", 0, "IMPM"sv},
    {"a tracker module", 44, "SCRM"sv},
    {"a tracker module", 1080, "M.K."sv},
    {"a MIDI file", 0, "MThd"sv},
    {"an Opus file", 28, "OpusHead"sv},
    {"a FLAC file in Ogg", 28,
        "\x7F"
        "FLAC"sv},
    {"a Speex file", 28, "Speex   "sv},
    {"a Theora film", 28, "\x80theora"sv},
};

const char* music_file_kind(std::string_view file)
{
    for (const sound_kind& kind : sound_kinds)
        if (file.size() > kind.at && file.substr(kind.at).starts_with(kind.mark))
            return kind.name;
    return "";
}

static std::string kind_problem(std::string_view beginning)
{
    std::string problem = "is no Ogg Vorbis file";
    if (beginning.empty())
        return "is empty: music is an Ogg Vorbis file.";
    if (beginning.starts_with("OggS"))
        problem = "begins as Ogg and cannot be decoded as Vorbis: it is damaged, or holds something else.";
    if (const char* kind = music_file_kind(beginning); kind[0] != '\0')
        problem = std::string("is ") + kind;
    if (problem.back() != '.')
        problem += ": the player plays Ogg Vorbis. \"ffmpeg -i FILE -vn -ar 44100 -c:a libvorbis TUNE.ogg\" makes one.";
    return problem;
}

// Without a decoder, and with the reason, for what the player would play as silence.
static music_reader open_decoder(const std::string& path, std::string& problem)
{
    const char* reason = nullptr;
    owned_file file(open_plain_file(path.c_str(), &reason));
    if (!file) {
        problem = std::string("cannot be opened: ") + reason + ".";
        return {};
    }
    char beginning[1100];
    const size_t size = std::fread(beginning, 1, sizeof beginning, file.get());
    std::rewind(file.get());
    music_reader music = {owned_block<char>(static_cast<char*>(std::malloc(decoder_room))), nullptr};
    const stb_vorbis_alloc room = {music.room.get(), decoder_room};
    int error = 0;
    if (music.room && vorbis_comments_fit(file.get()))
        music.decoder.reset(stb_vorbis_open_file(file.release(), 1, &error, &room)); // closes it when it fails, too
    if (!music.room)
        problem = "needs more memory than there is.";
    else if (!music.decoder)
        problem = kind_problem({beginning, size});
    return music;
}

// ---- facts ---------------------------------------------------------------------------------

double music_seconds(const music_file_facts& facts)
{
    return static_cast<double>(facts.samples) / player_rate;
}

static void add_notes(music_file_facts& facts)
{
    const double seconds = music_seconds(facts);
    if (facts.samples_per_second != player_rate)
        facts.notes.push_back("has " + grouped_text(facts.samples_per_second)
            + " samples a second and the player plays 44,100: it sounds "
            + (facts.samples_per_second > player_rate ? "slower and deeper" : "faster and higher") + ", and lasts "
            + time_text(seconds) + " instead of "
            + time_text(static_cast<double>(facts.samples) / std::max(facts.samples_per_second, 1u))
            + ". Write it with 44,100.");
    if (facts.channels > 2)
        facts.notes.push_back("has " + std::to_string(facts.channels) + " channels, which the player puts into two.");
    if (facts.samples == 0)
        facts.notes.push_back("is silent: it has no samples.");
    if (seconds > max_track_end / ticks_per_second)
        facts.notes.push_back("lasts " + time_text(seconds) + ", and a show ends at "
            + time_text(max_track_end / ticks_per_second) + " at the latest.");
}

uint32_t read_pairs(music_reader& reader, std::span<int16_t> samples)
{
    const auto wanted = static_cast<uint32_t>(samples.size() / 2);
    uint32_t count = 0;
    while (count < wanted) {
        const int decoded = stb_vorbis_get_samples_short_interleaved(
            reader.decoder.get(), 2, samples.data() + count * 2, static_cast<int>((wanted - count) * 2));
        if (decoded <= 0)
            break;
        count += static_cast<uint32_t>(decoded);
    }
    return count;
}

// A file that does not tell its length is played through.
static uint64_t count_samples(music_reader& reader)
{
    uint64_t samples = stb_vorbis_stream_length_in_samples(reader.decoder.get());
    if (samples != 0)
        return samples;
    stb_vorbis_seek_start(reader.decoder.get());
    int16_t pairs[samples_per_tick * 2];
    while (const uint32_t count = read_pairs(reader, pairs))
        samples += count;
    return samples;
}

bool check_music(const std::string& path, music_file_facts& facts, std::string& problem)
{
    music_reader music = open_decoder(path, problem);
    if (!music.decoder)
        return false;
    problem.clear();
    const stb_vorbis_info info = stb_vorbis_get_info(music.decoder.get());
    facts = {info.sample_rate, static_cast<uint32_t>(info.channels), count_samples(music), {}};
    add_notes(facts);
    return true;
}

// ---- the waveform -----------------------------------------------------------------------------

waveform_column waveform_of(std::span<const int16_t> samples)
{
    constexpr float full_scale = 32768.0f;
    int lowest = 0;
    int highest = 0;
    double squares = 0;
    for (const int16_t sample : samples) {
        lowest = std::min<int>(lowest, sample);
        highest = std::max<int>(highest, sample);
        squares += static_cast<double>(sample) * sample;
    }
    const double mean = samples.empty() ? 0 : squares / static_cast<double>(samples.size());
    return {static_cast<float>(lowest) / full_scale, static_cast<float>(highest) / full_scale,
        static_cast<float>(std::sqrt(mean)) / full_scale};
}

bool read_waveform(const std::string& path, std::vector<waveform_column>& columns, std::string& problem)
{
    music_reader music = open_decoder(path, problem);
    if (!music.decoder)
        return false;
    problem.clear();
    columns.clear();
    int16_t pairs[samples_per_tick * 2];
    while (columns.size() < max_track_end) {
        const uint32_t count = read_pairs(music, pairs);
        if (count == 0)
            break;
        columns.push_back(waveform_of(std::span(pairs).first(count * 2)));
    }
    return true;
}

// ---- piece by piece -----------------------------------------------------------------------------

void close_music_reader::operator()(music_reader* reader) const
{
    delete reader;
}

owned_music_reader open_music_reader(const std::string& path, std::string& problem)
{
    owned_music_reader reader(new music_reader(open_decoder(path, problem)));
    if (!reader->decoder)
        return nullptr;
    problem.clear();
    return reader;
}
