#include "authoring/asset/music_check.h"
#include "content_files.h"

#include <cmath>
#include <doctest/doctest.h>

using namespace std::string_literals;

// One second, 441 Hz on the left at half of full scale, 882 Hz on the right at a quarter.
static const std::string tone_path = BRIMLOW_SOURCE_DIR "/tests/player/tone.ogg";

static std::string problem_of(const std::string& bytes)
{
    const temporary_directory folder;
    write_bytes(folder.path + "music", bytes);
    music_file_facts facts = {1, 2, 3, {"as it was"}};
    std::string problem;
    const bool taken = check_music(folder.path + "music", facts, problem);
    CHECK(!taken);
    CHECK(facts.notes.size() == 1);
    return problem;
}

static music_file_facts facts_of(const std::string& bytes)
{
    const temporary_directory folder;
    write_bytes(folder.path + "music", bytes);
    music_file_facts facts = {};
    std::string problem = "left over";
    REQUIRE(check_music(folder.path + "music", facts, problem));
    CHECK(problem.empty());
    return facts;
}

static void put_number(std::string& bytes, size_t at, uint32_t number)
{
    for (uint32_t i = 0; i < 4; ++i)
        bytes[at + i] = static_cast<char>(number >> 8 * i);
}

// Of a page of Ogg whose own sum is 0.
static uint32_t check_sum(const std::string& page)
{
    uint32_t sum = 0;
    for (const char byte : page) {
        sum ^= static_cast<uint32_t>(static_cast<unsigned char>(byte)) << 24;
        for (int bit = 0; bit < 8; ++bit)
            sum = sum << 1 ^ (sum >> 31 != 0 ? 0x04C11DB7u : 0u);
    }
    return sum;
}

// The tone, said to have another number of samples a second.
static std::string tone_with_rate(uint32_t rate)
{
    std::string bytes = read_bytes(tone_path);
    put_number(bytes, 40, rate); // behind a page's head, a packet's, the version, a byte for the channels
    return bytes;
}

// ---- what it is --------------------------------------------------------------------------

TEST_CASE("Ogg Vorbis of 44,100 samples a second is music, and its length is told")
{
    music_file_facts facts = {};
    std::string problem;
    REQUIRE(check_music(tone_path, facts, problem));
    CHECK(facts.samples_per_second == 44100);
    CHECK(facts.channels == 2);
    CHECK(facts.samples == 44100);
    CHECK(music_seconds(facts) == 1);
    CHECK(facts.notes.empty());
}

TEST_CASE("Music of another rate plays at the player's, which is noted")
{
    const music_file_facts facts = facts_of(tone_with_rate(48000));
    CHECK(music_seconds(facts) == 1); // 44,100 samples all the same
    REQUIRE(facts.notes.size() == 1);
    CHECK(facts.notes[0]
        == "has 48,000 samples a second and the player plays 44,100: it sounds slower and deeper, and lasts 0:01.00 "
           "instead of 0:00.92. Write it with 44,100.");
    CHECK(facts_of(tone_with_rate(22050)).notes.at(0).find("faster and higher, and lasts 0:01.00 instead of 0:02.00")
        != std::string::npos);
}

TEST_CASE("Music that is longer than a show can be is noted")
{
    std::string bytes = read_bytes(tone_path);
    const size_t last = bytes.rfind("OggS");
    put_number(bytes, last + 6, 256u * 44100 + 1); // the sample that the page ends with
    put_number(bytes, last + 22, 0);
    put_number(bytes, last + 22, check_sum(bytes.substr(last)));
    const music_file_facts facts = facts_of(bytes);
    CHECK(facts.samples == 256u * 44100 + 1);
    CHECK(facts.notes.at(0) == "lasts 4:16.00, and a show ends at 4:16.00 at the latest.");
}

TEST_CASE("Other files are refused by the name of their kind")
{
    CHECK(problem_of("ID3\3\0"s)
        == "is an MP3 file: the player plays Ogg Vorbis. \"ffmpeg -i FILE -vn -ar 44100 -c:a libvorbis TUNE.ogg\" "
           "makes one.");
    CHECK(problem_of("RIFF\0\0\0\0WAVEfmt "s).starts_with("is a WAV file: "));
    CHECK(problem_of("OggS"s + std::string(24, '\0') + "OpusHead").starts_with("is an Opus file: "));
    CHECK(problem_of("words").starts_with("is no Ogg Vorbis file: "));
    CHECK(problem_of("") == "is empty: music is an Ogg Vorbis file.");
    CHECK(problem_of(read_bytes(tone_path).substr(0, 2000))
        == "begins as Ogg and cannot be decoded as Vorbis: it is damaged, or holds something else.");
}

TEST_CASE("What is no file at all is refused with the system's reason")
{
    music_file_facts facts = {};
    std::string problem;
    CHECK(!check_music("/nowhere/tune.ogg", facts, problem));
    CHECK(problem == "cannot be opened: No such file or directory.");
    CHECK(!check_music("/tmp", facts, problem));
    CHECK(problem == "cannot be opened: it is a folder.");
    std::vector<waveform_column> columns = {{0, 0, 0}};
    CHECK(!read_waveform("/tmp", columns, problem));
    CHECK(columns.size() == 1);
}

TEST_CASE("Any beginning of a music file is music or refused with a line")
{
    const std::string bytes = read_bytes(tone_path);
    const temporary_directory folder;
    const std::string path = folder.path + "cut.ogg";
    for (size_t size = 0; size < bytes.size(); size += size < 128 ? 1 : 61) {
        write_bytes(path, bytes.substr(0, size));
        music_file_facts facts = {};
        std::string problem;
        std::vector<waveform_column> columns;
        const bool taken = check_music(path, facts, problem);
        CHECK(taken == problem.empty());
        const bool decoded = read_waveform(path, columns, problem);
        CHECK(decoded == taken);
        CHECK(columns.size() <= 101);
    }
}

// ---- the waveform ---------------------------------------------------------------------------

// The loudness of the tone as it was before it was packed, over the 441 samples of a tick.
static double loudness_of_tick(size_t tick)
{
    double squares = 0;
    for (size_t i = tick * 441; i < tick * 441 + 441; ++i) {
        const double turn = 2 * 3.14159265358979 * static_cast<double>(i) / 44100;
        squares += std::pow(0.5 * std::sin(441 * turn), 2) + std::pow(0.25 * std::sin(882 * turn), 2);
    }
    return std::sqrt(squares / (2 * 441));
}

TEST_CASE("The waveform has a column a tick, with the peaks and the loudness of both channels")
{
    std::vector<waveform_column> columns(7);
    std::string problem;
    REQUIRE(read_waveform(tone_path, columns, problem));
    REQUIRE(columns.size() == 100);
    for (size_t i = 2; i < 98; ++i) {
        CHECK(columns[i].lowest == doctest::Approx(-0.5).epsilon(0.03));
        CHECK(columns[i].highest == doctest::Approx(0.5).epsilon(0.03));
        CHECK(columns[i].loudness == doctest::Approx(loudness_of_tick(i)).epsilon(0.006));
    }
}

// ---- piece by piece -------------------------------------------------------------------------------

TEST_CASE("A file that is read in pieces has the samples that its waveform shows")
{
    std::vector<waveform_column> columns;
    std::string problem;
    REQUIRE(read_waveform(tone_path, columns, problem));
    problem = "left over";
    const owned_music_reader reader = open_music_reader(tone_path, problem);
    REQUIRE(reader);
    CHECK(problem.empty());
    std::vector<int16_t> samples;
    for (uint32_t pairs = 1;; pairs = pairs * 3 % 1000 + 1) {
        std::vector<int16_t> piece(pairs * 2);
        const uint32_t count = read_pairs(*reader, piece);
        samples.insert(samples.end(), piece.begin(), piece.begin() + count * 2);
        if (count < pairs)
            break;
    }
    REQUIRE(samples.size() == 44100 * 2);
    for (size_t i = 0; i < 100; ++i) {
        const waveform_column column = waveform_of(std::span(samples).subspan(i * 882, 882));
        CHECK(column.lowest == columns[i].lowest);
        CHECK(column.highest == columns[i].highest);
        CHECK(column.loudness == columns[i].loudness);
    }
    // The left side is the louder one.
    CHECK(samples[2 * 10025]
        == doctest::Approx(16384 * std::sin(2 * 3.14159265358979 * 441 * 10025 / 44100)).epsilon(0.05));
    CHECK(read_pairs(*reader, samples) == 0);
}

TEST_CASE("What cannot be decoded has no reader, and a reason")
{
    std::string problem;
    CHECK(!open_music_reader("/tmp", problem));
    CHECK(problem == "cannot be opened: it is a folder.");
    CHECK(waveform_of({}).loudness == 0);
}
