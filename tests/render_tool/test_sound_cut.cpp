#include "sound_cut.h"

#include <doctest/doctest.h>
#include <utility>

namespace {

using samples = std::vector<int16_t>;

} // namespace

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
