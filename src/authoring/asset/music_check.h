// Music of the author: whether the player plays it, how long it is, and where its beats are.
//
// The player plays Ogg Vorbis, 44,100 samples a second whatever the file says; all lengths here are what it plays.
// Problems and notes are texts to be put behind the file's name: "\"tune.mp3\" " + "is an MP3 file, ...". Files
// are read, nothing is kept.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

struct music_file_facts {
    uint32_t samples_per_second; // the file's own
    uint32_t channels;
    uint64_t samples;               // of each channel
    std::vector<std::string> notes; // allowed, and perhaps not meant
};

// Looks at the file at `path`. False, with the reason in `problem`, for what the player would play as silence.
[[nodiscard]] bool check_music(const std::string& path, music_file_facts& facts, std::string& problem);

// The kind of a file of sound that is no Ogg Vorbis, by its first bytes, with its article: "an MP3 file". Empty for
// one that nobody knows, and for Ogg Vorbis.
const char* music_file_kind(std::string_view file);

// How long the player plays it, in seconds.
double music_seconds(const music_file_facts& facts);

// What sounds during one tick, 1/100 s: of both channels, full scale is 1.
struct waveform_column {
    float lowest;
    float highest;
    float loudness; // the root of the mean square
};

// Of samples as a music_reader gives them.
waveform_column waveform_of(std::span<const int16_t> samples);

// Decodes the file, tick by tick, up to the 25,600 that a show can last. False as check_music.
[[nodiscard]] bool read_waveform(const std::string& path, std::vector<waveform_column>& columns, std::string& problem);

// A file that is decoded piece by piece, by one thread at a time.
struct music_reader;

struct close_music_reader {
    void operator()(music_reader* reader) const;
};
using owned_music_reader = std::unique_ptr<music_reader, close_music_reader>;

// Null as check_music.
owned_music_reader open_music_reader(const std::string& path, std::string& problem);

// Fills what it can of `samples`, an even number of them, as the player plays them: left and right in turns, 44,100
// pairs a second. How many pairs there were; fewer than there is room for: this was the end.
uint32_t read_pairs(music_reader& reader, std::span<int16_t> samples);
