#include "wav.h"

#include "content/file_bytes.h"
#include "content/owners.h"

#include <doctest/doctest.h>
#include <unistd.h>
#include <utility>

using samples = std::vector<int16_t>;

TEST_CASE("The header of a WAV file is right to the byte")
{
    // 3 samples at 44100: 12 bytes of data, 48 behind the first eight, 176400 a second.
    const std::vector<uint8_t> expected = {'R', 'I', 'F', 'F', 48, 0, 0, 0, 'W', 'A', 'V', 'E', 'f', 'm', 't', ' ', 16,
        0, 0, 0, 1, 0, 2, 0, 0x44, 0xAC, 0, 0, 0x10, 0xB1, 2, 0, 4, 0, 16, 0, 'd', 'a', 't', 'a', 12, 0, 0, 0};
    CHECK(wav_header(3, 44100) == expected);
    CHECK(expected.size() == wav_header_size);
}

TEST_CASE("Lengths beyond what the header can tell are the greatest that it can")
{
    const std::vector<uint8_t> header = wav_header(UINT64_MAX, 44100);
    // (2^32 - 1 - 36) / 4 whole samples: 4294967256 bytes of data.
    CHECK(std::vector<uint8_t>(header.begin() + 40, header.end()) == std::vector<uint8_t>{0xD8, 0xFF, 0xFF, 0xFF});
    CHECK(std::vector<uint8_t>(header.begin() + 4, header.begin() + 8) == std::vector<uint8_t>{0xFC, 0xFF, 0xFF, 0xFF});
}

TEST_CASE("A WAV file holds its samples low byte first, left before right")
{
    char path[] = "/tmp/brimlow-wav-XXXXXX";
    const int file = mkstemp(path);
    REQUIRE(file >= 0);
    close(file);
    std::string error;
    const samples pairs = {1, -2, 0x1234, -32768, 77}; // the last has no partner
    REQUIRE(write_wav(path, pairs, 8000, error));
    uint8_t* bytes = nullptr;
    uint32_t size = 0;
    const bool read = read_whole_file(path, 1000, &bytes, &size);
    unlink(path);
    REQUIRE(read);
    const owned_block<uint8_t> owner(bytes);
    REQUIRE(size == 44 + 8);
    CHECK(bytes[40] == 8);
    CHECK(std::vector<uint8_t>(bytes + 44, bytes + 52) == std::vector<uint8_t>{1, 0, 0xFE, 0xFF, 0x34, 0x12, 0, 0x80});
    CHECK_FALSE(write_wav("/nonexistent/a.wav", pairs, 8000, error));
    CHECK(error == "cannot write \"/nonexistent/a.wav\": No such file or directory");
}

TEST_CASE("Sound is cut at its beginning and its end")
{
    const samples sound = {1, -1, 2, -2, 3, -3, 4, -4};
    CHECK(fit_sound(sound, 0, 4) == sound);
    CHECK(fit_sound(sound, 1, 2) == samples{2, -2, 3, -3});
    CHECK(fit_sound(sound, 2, 0).empty());
}

TEST_CASE("Sound that has ended is silence")
{
    const samples sound = {1, -1, 2, -2};
    CHECK(fit_sound(sound, 0, 3) == samples{1, -1, 2, -2, 0, 0});
    CHECK(fit_sound(sound, 1, 2) == samples{2, -2, 0, 0});
    CHECK(fit_sound(sound, 2, 1) == samples{0, 0});
    CHECK(fit_sound(sound, UINT64_MAX, 1) == samples{0, 0});
    CHECK(fit_sound({}, 0, 2) == samples{0, 0, 0, 0});
    const samples odd = {1, -1, 2};
    CHECK(fit_sound(odd, 0, 2) == samples{1, -1, 0, 0});
}

TEST_CASE("Segments that meet at a frame meet at a sample: together they are the whole")
{
    samples sound;
    for (int16_t i = 0; i < 9000; ++i) {
        sound.push_back(i);
        sound.push_back(static_cast<int16_t>(-i));
    }
    const frame_rate rate = {30000, 1001};
    const samples whole = fit_sound_to_frames(sound, 44100, 0, 7, rate);
    CHECK(whole.size() == 2 * 10300); // 7 x 1001 / 30000 x 44100 = 10300.29
    samples joined;
    for (const auto& [from, to] : {std::pair{0, 1}, std::pair{1, 4}, std::pair{4, 7}}) {
        const samples part
            = fit_sound_to_frames(sound, 44100, static_cast<uint64_t>(from), static_cast<uint64_t>(to), rate);
        joined.insert(joined.end(), part.begin(), part.end());
    }
    CHECK(joined == whole);
    CHECK(fit_sound_to_frames(sound, 44100, 5, 5, rate).empty());
    CHECK(fit_sound_to_frames(sound, 44100, 6, 5, rate).empty());
}
