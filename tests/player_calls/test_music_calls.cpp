// The sound device and the clock that it drives.
#include "played.h"

#include <doctest/doctest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

// The show starts at 1030 ms, and its sound too.
static sdl_script musical_show(std::vector<uint32_t> requests, int64_t last_tick)
{
    sdl_script script;
    script.clicks = {start_button};
    script.requests = std::move(requests);
    script.last_tick = last_tick;
    return script;
}

static const scripted_show show = {.music = "tone.ogg"};

static std::string sound_and_frames(const played_run& run)
{
    std::string text = lines_of(run.calls,
        {"SDL_OpenAudio", "SDL_PauseAudio", "request", "filled", "| Audio", "| The audio", "compose_frame(production",
            "| Benchmark", "! ", "| Error"});
    for (size_t at = text.find(", 800 x 600"); at != std::string::npos; at = text.find(", 800 x 600", at))
        text.erase(at, text.find(", glsl)", at) + 6 - at);
    return text;
}

TEST_CASE("the device is opened for 44,100 Hz and played at once, and its first request is waited for")
{
    sdl_script script = musical_show({25}, -1);
    const played_run run = play(script, show);
    CHECK(part_of(run.calls, "SDL_OpenAudio(44100 Hz, S16LSB, 2 channels, 8192 samples)", "") == R"(
SDL_OpenAudio(44100 Hz, S16LSB, 2 channels, 8192 samples)
SDL_PauseAudio(0)
document_free(loading.xmlz)
timeline_free()
SDL_GetTicks() = 1030
SDL_GetTicks() = 1030
SDL_Delay(10)
SDL_GetTicks() = 1040
SDL_Delay(10)
SDL_GetTicks() = 1050
SDL_Delay(10)
request of 32768 bytes
filled with sound, sound
| Audio buffer size:8192
compose_frame(production at 0, 800 x 600, 1.3333, vbo 1 pbo 1 npot 1, 4 units, nv 1 ati 0, glsl) = 0
* the pack is closed
| Benchmark result: nan fps
| Bye!
document_free(demo.xmlz)
timeline_free()
timeline_free(nothing)
SDL_Quit()
run_player() = 0
)");
}

TEST_CASE("the clock stands until the second request, then counts what was taken less one buffer")
{
    // 1024 frames are 4096 bytes, and 23.2199... ms of sound.
    sdl_script script = musical_show({5, 30, 50, 80}, 5);
    script.granted_samples = 1024;
    script.ms_per_swap = 10; // frames at 10, 20, ... ms behind the start of the sound
    const played_run run = play(script, show);
    CHECK(sound_and_frames(run) == R"(
SDL_OpenAudio(44100 Hz, S16LSB, 2 channels, 8192 samples)
SDL_PauseAudio(0)
request of 4096 bytes
filled with sound, sound
| Audio buffer size:1024
compose_frame(production at 0)
compose_frame(production at 0)
request of 4096 bytes
filled with sound, sound
compose_frame(production at 0)
compose_frame(production at 1)
request of 4096 bytes
filled with sound, sound
compose_frame(production at 2)
compose_frame(production at 3)
compose_frame(production at 4)
request of 4096 bytes
filled with sound, sound
compose_frame(production at 4)
compose_frame(production at 5)
compose_frame(production at 6) = 0
| Benchmark result: 136.36 fps
)");
}

TEST_CASE("a device that has asked before the show begins has the first frame at the time since, and is forgotten then")
{
    // Requests 1030 and 1070, both before the counters are cleared; the show begins at 1095, 25 ms later.
    sdl_script script = musical_show({0, 40, 90, 140}, 100);
    script.ms_to_start = 65;
    script.ms_per_swap = 20;
    script.last_tick = 2;
    const played_run run = play(script, show);
    CHECK(sound_and_frames(run) == R"(
SDL_OpenAudio(44100 Hz, S16LSB, 2 channels, 8192 samples)
SDL_PauseAudio(0)
request of 32768 bytes
filled with sound, sound
request of 32768 bytes
filled with sound, sound
| Audio buffer size:8192
compose_frame(production at 2)
compose_frame(production at 0)
request of 32768 bytes
filled with sound, sound
compose_frame(production at 0)
compose_frame(production at 0)
request of 32768 bytes
filled with sound, sound
compose_frame(production at 0)
compose_frame(production at 2)
compose_frame(production at 4) = 0
| Benchmark result: 133.33 fps
)");
}

TEST_CASE("what the music does not fill is silence")
{
    const std::vector<uint32_t> requests = {0, 0, 0, 0, 0, 0, 0};
    const std::string tone = sound_and_frames(play(musical_show(requests, -1), show)); // 44,100 frames in all
    const std::string sound = "request of 32768 bytes\nfilled with sound, sound\n";
    const std::string silence = "request of 32768 bytes\nfilled with silence, silence\n";
    const std::string opened = "\nSDL_OpenAudio(44100 Hz, S16LSB, 2 channels, 8192 samples)\nSDL_PauseAudio(0)\n";
    const std::string ended
        = "| Audio buffer size:8192\ncompose_frame(production at 0) = 0\n| Benchmark result: nan fps\n";
    CHECK(tone
        == opened + sound + sound + sound + sound + sound + "request of 32768 bytes\nfilled with sound, silence\n"
            + silence + ended);
    for (const std::string music :
        {"demo.dpk", "odd.ogg"}) { // no music at all, and music that the decoder is not let near
        const std::string warning
            = "\n! Warning: demo.xmlz: section 15 (music): \"" + music + "\" is no Ogg Vorbis file: it plays silent.";
        CHECK(sound_and_frames(play(musical_show({0, 0}, -1), {.music = music}))
            == warning + opened + silence + silence + ended);
    }
}

TEST_CASE("a device that does not open ends the process with a reason on standard error")
{
    sdl_script script = musical_show({}, 0);
    script.has_audio = false;
    const played_run run = play(script, show);
    CHECK(part_of(run.calls, "SDL_OpenAudio(44100 Hz, S16LSB, 2 channels, 8192 samples)", "") == R"(
SDL_OpenAudio(44100 Hz, S16LSB, 2 channels, 8192 samples)
! Couldn't open audio: the reason
run_player() = 1
)");
    CHECK(run.status == 1);
    script.error = "";
    CHECK(count_of(play(script, show).calls, "! Couldn't open audio: no reason given") == 1);
}

TEST_CASE("music that is missing leaves the device closed and the time to the timer")
{
    sdl_script script = musical_show({}, 3);
    script.ms_per_swap = 25;
    CHECK(sound_and_frames(play(script, {.music = "none.ogg"})) == R"(
| Error: cannot open none.ogg!
compose_frame(production at 0)
compose_frame(production at 2)
compose_frame(production at 5) = 0
| Benchmark result: 40.00 fps
)");
}

TEST_CASE("a device that asks for nothing is given up after ten seconds, and the timer starts then")
{
    sdl_script script = musical_show({}, 3);
    script.ms_per_swap = 25;
    const played_run run = play(script, show);
    CHECK(count_of(run.calls, "SDL_Delay(10)") == 1001); // the last look finds more than 10,000 ms
    CHECK(sound_and_frames(run) == R"(
SDL_OpenAudio(44100 Hz, S16LSB, 2 channels, 8192 samples)
SDL_PauseAudio(0)
| The audio device asks for nothing, so the timer keeps the time.
compose_frame(production at 0)
compose_frame(production at 2)
compose_frame(production at 5) = 0
| Benchmark result: 40.00 fps
)");
}
