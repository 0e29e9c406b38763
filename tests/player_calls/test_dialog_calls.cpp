// The settings dialog as SDL sees it.
#include "played.h"

#include <doctest/doctest.h>

#include <SDL/SDL_events.h>

constexpr scripted_click fullscreen_box = {289, 20};
constexpr scripted_click nowhere = {440, 290};

static const std::string opening = R"(
| Changing SDL_AUDIODRIVER to alsa.
| Brimlow Engine v1.0
SDL_Init(VIDEO)
SDL_GetVideoInfo()
SDL_SetVideoMode(461, 384, 24, HWSURFACE)
SDL_WM_SetCaption("Brimlow Engine v1.0", "Brimlow Engine v1.0")
SDL_MapRGB(162 x 27, 192, 216, 247) = 15
SDL_SetColorKey(162 x 27, SRCCOLORKEY, 15)
SDL_MapRGB(75 x 27, 192, 216, 247) = 15
SDL_SetColorKey(75 x 27, SRCCOLORKEY, 15)
SDL_MapRGB(75 x 27, 192, 216, 247) = 15
SDL_SetColorKey(22 x 22, SRCCOLORKEY, 15)
SDL_MapRGB(228 x 29, 192, 216, 247) = 15
SDL_SetColorKey(228 x 29, SRCCOLORKEY, 15)
SDL_UpperBlit(461 x 384, at 0, 0)
SDL_UpperBlit(162 x 27, at 6, 9)
SDL_UpperBlit(75 x 27, at 185, 8)
SDL_UpperBlit(228 x 29, at 207, 346)
SDL_UpperBlit(22 x 22, at 279, 10)
SDL_UpperBlit(22 x 22, at 279, 40)
SDL_UpperBlit(22 x 22, at 279, 71)
SDL_UpperBlit(22 x 22, at 279, 103)
SDL_UpdateRects(1: 0, 0, 461 x 384)
SDL_EventState(MOUSEMOTION, IGNORE)
)";

static const std::string closing = R"(SDL_PollEvent() = 12
| Bye!
timeline_free()
SDL_Quit()
run_player() = 0
)";

TEST_CASE("the dialog is opened, drawn and closed in this order; the check mark's key comes from the aspect highlight")
{
    sdl_script script;
    script.events = {{1, SDL_QUIT}};
    const played_run run = play(script, {});
    CHECK(run.calls == opening + closing);
    CHECK(run.status == 0);
}

TEST_CASE("a pass looks for one event and sleeps 30 ms; only a change while the button is down is drawn")
{
    sdl_script script;
    script.clicks = {fullscreen_box, nowhere};
    script.events = {{2, SDL_KEYDOWN}, {5, SDL_QUIT}};
    const played_run run = play(script, {});
    CHECK(run.calls == opening + R"(SDL_PollEvent() = none
SDL_FillRect(all, 0)
SDL_UpperBlit(461 x 384, at 0, 0)
SDL_UpperBlit(162 x 27, at 6, 9)
SDL_UpperBlit(75 x 27, at 185, 8)
SDL_UpperBlit(228 x 29, at 207, 346)
SDL_UpperBlit(22 x 22, at 279, 40)
SDL_UpperBlit(22 x 22, at 279, 71)
SDL_UpperBlit(22 x 22, at 279, 103)
SDL_UpdateRects(1: 0, 0, 461 x 384)
SDL_Delay(30)
SDL_PollEvent() = 2
SDL_Delay(30)
SDL_PollEvent() = none
SDL_Delay(30)
SDL_PollEvent() = none
SDL_Delay(30)
)" + closing);
}

TEST_CASE("the start button is drawn pressed, and its release ends the dialog without another pass")
{
    sdl_script script;
    script.clicks = {start_button};
    script.last_tick = -1;
    const played_run run = play(script, {});
    CHECK(part_of(run.calls, "SDL_PollEvent() = none", "| Found demo.dpk.") == R"(
SDL_PollEvent() = none
SDL_FillRect(all, 0)
SDL_UpperBlit(461 x 384, at 0, 0)
SDL_UpperBlit(162 x 27, at 6, 9)
SDL_UpperBlit(75 x 27, at 185, 8)
SDL_UpperBlit(228 x 29, at 207, 346)
SDL_UpperBlit(22 x 22, at 279, 10)
SDL_UpperBlit(22 x 22, at 279, 40)
SDL_UpperBlit(22 x 22, at 279, 71)
SDL_UpperBlit(22 x 22, at 279, 103)
SDL_UpperBlit(247 x 62, at 196, 188)
SDL_UpdateRects(1: 0, 0, 461 x 384)
SDL_Delay(30)
SDL_PollEvent() = none
| Found demo.dpk.
)");
}

TEST_CASE("without a display SDL is shut down before the line, which ends in a reason or says that there is none")
{
    sdl_script script;
    script.has_display = false;
    const played_run refused = play(script, {});
    CHECK(part_of(refused.calls, "SDL_Init(VIDEO)", "") == R"(
SDL_Init(VIDEO)
SDL_Quit()
| Error: cannot open the display: the reason
run_player() = 1
)");
    CHECK(refused.status == 1);
    script.error = "";
    CHECK(count_of(play(script, {}).calls, "| Error: cannot open the display: no reason given") == 1);
}

TEST_CASE("a dialog whose window does not open is a missing display")
{
    sdl_script script;
    script.failing_modes = {1};
    const played_run run = play(script, {});
    CHECK(part_of(run.calls, "SDL_SetVideoMode(461, 384, 24, HWSURFACE)", "") == R"(
SDL_SetVideoMode(461, 384, 24, HWSURFACE)
SDL_Quit()
| Error: cannot open the display: the reason
run_player() = 1
)");
}

TEST_CASE("a background that does not load ends it, another picture is left out")
{
    sdl_script script;
    script.events = {{1, SDL_QUIT}};
    script.broken_picture = 0;
    const played_run background = play(script, {});
    CHECK(lines_of(background.calls, {"| error", "SDL_Quit", "SDL_UpperBlit", "run_player"}) == R"(
| error creating surface :-S
run_player() = 1
)");
    script.broken_picture = 2; // the aspect highlight, by which the check mark's key is looked up
    const played_run highlight = play(script, {});
    CHECK(lines_of(highlight.calls, {"SDL_SetColorKey", "SDL_UpperBlit", "run_player"}) == R"(
SDL_SetColorKey(162 x 27, SRCCOLORKEY, 15)
SDL_SetColorKey(228 x 29, SRCCOLORKEY, 15)
SDL_UpperBlit(461 x 384, at 0, 0)
SDL_UpperBlit(162 x 27, at 6, 9)
SDL_UpperBlit(228 x 29, at 207, 346)
SDL_UpperBlit(22 x 22, at 279, 10)
SDL_UpperBlit(22 x 22, at 279, 40)
SDL_UpperBlit(22 x 22, at 279, 71)
SDL_UpperBlit(22 x 22, at 279, 103)
run_player() = 0
)");
}
