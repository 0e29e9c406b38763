// The main loop on the timer, and every way out of it.
#include "played.h"

#include <doctest/doctest.h>

#include <SDL/SDL_events.h>

constexpr scripted_click music_box = {289, 82};

static sdl_script silent_show(uint32_t ms_per_swap, int64_t last_tick)
{
    sdl_script script;
    script.clicks = {music_box, start_button}; // the dialog ends at 1090 ms, in its fourth look
    script.ms_per_swap = ms_per_swap;
    script.last_tick = last_tick;
    return script;
}

// The production's own timeline went over to its document, and what was asked to be freed in its place is nothing.
static const std::string freed = "document_free(demo.xmlz)\ntimeline_free()\ntimeline_free(nothing)\n";

static std::string frame(uint32_t tick)
{
    return "compose_frame(production at " + std::to_string(tick)
        + ", 800 x 600, 1.3333, vbo 1 pbo 1 npot 1, 4 units, nv 1 ati 0, glsl)";
}

// Behind loading, which looks at the clock three times in this small show.
static std::string playing_of(const played_run& run)
{
    return part_of(run.calls, frame(0), "");
}

TEST_CASE("frames are drawn at a tenth of the milliseconds, then counted, looked behind and swapped")
{
    sdl_script script = silent_show(33, 9); // two swaps before the show: 1156 at its start
    script.ms_per_reading = 1;              // loading looks three times; the timer starts at 1159
    const played_run run = play(script, {});
    CHECK(playing_of(run)
        == "\n" + frame(0) + "\nSDL_PollEvent() = none\nSDL_GL_SwapBuffers()\nSDL_GetTicks() = 1193\n" + frame(3)
            + "\nSDL_PollEvent() = none\nSDL_GL_SwapBuffers()\nSDL_GetTicks() = 1227\n" + frame(6)
            + "\nSDL_PollEvent() = none\nSDL_GL_SwapBuffers()\nSDL_GetTicks() = 1261\n" // 102 ms
            + frame(10) + " = 0\n* the pack is closed\n| Benchmark result: 29.41 fps\n| Bye!\n" + freed
            + "SDL_Quit()\n" // 3 / 0.102
              "run_player() = 0\n");
    CHECK(run.status == 0);
}

TEST_CASE("the timer starts behind loading, and the first frame is that of time 0")
{
    sdl_script script = silent_show(10, 0);
    script.now = 500000;
    script.ms_per_reading = 400;
    const played_run run = play(script, {.functions = 2});
    CHECK(lines_of(run.calls, {"compose_frame(production"}) == "\n" + frame(0) + "\n" + frame(41) + " = 0\n");
}

TEST_CASE("Escape closes the pack and ends it without a benchmark and without another swap")
{
    sdl_script script = silent_show(10, 1000);
    script.escape_from = 6; // the second of the show
    const played_run run = play(script, {});
    CHECK(playing_of(run)
        == "\n" + frame(0) + "\nSDL_PollEvent() = none\nSDL_GL_SwapBuffers()\nSDL_GetTicks() = 1120\n" + frame(1)
            + "\nSDL_PollEvent() = none\n* the pack is closed\n| Bye!\n" + freed + "SDL_Quit()\nrun_player() = 0\n");
    CHECK(run.status == 0);
}

TEST_CASE("closing the window ends the process at once, in the middle of the frame")
{
    sdl_script script = silent_show(10, 1000);
    script.events = {{6, SDL_QUIT}};
    script.escape_from = 6;
    const played_run run = play(script, {});
    CHECK(playing_of(run)
        == "\n" + frame(0) + "\nSDL_PollEvent() = none\nSDL_GL_SwapBuffers()\nSDL_GetTicks() = 1120\n" + frame(1)
            + "\nSDL_PollEvent() = 12\n");
    CHECK(run.status == 0);
}

TEST_CASE("one event is taken off a frame, and only a closed window counts")
{
    sdl_script script = silent_show(10, 2);
    script.events = {{5, SDL_KEYDOWN}, {6, SDL_MOUSEBUTTONDOWN}, {7, SDL_ACTIVEEVENT}};
    const played_run run = play(script, {});
    CHECK(lines_of(playing_of(run), {"compose_frame", "SDL_PollEvent"})
        == "\n" + frame(0) + "\nSDL_PollEvent() = 2\n" + frame(1) + "\nSDL_PollEvent() = 5\n" + frame(2)
            + "\nSDL_PollEvent() = 1\n" + frame(3) + " = 0\n");
}
