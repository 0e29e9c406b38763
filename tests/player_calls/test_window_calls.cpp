// The face of windows by itself: what the player's run does not show of it.
#include "recording_gl.h"
#include "scripted_sdl.h"
#include "shell/window.h"

#include <doctest/doctest.h>

#include <SDL/SDL_events.h>

#include <cstring>

static void begin(const sdl_script& script)
{
    begin_gl_recording();
    begin_script(script);
}

TEST_CASE("an event is the window's end, Escape, or something that nobody asks for")
{
    sdl_script script;
    script.events = {{2, SDL_QUIT}, {3, SDL_KEYDOWN}, {4, SDL_KEYDOWN}, {5, SDL_KEYUP}};
    script.escape_from = 4;
    begin(script);
    CHECK(window_next_event() == window_event_none);
    CHECK(window_next_event() == window_event_closed);
    CHECK(window_next_event() == window_event_other);
    CHECK_FALSE(window_escape_held());
    CHECK(window_next_event() == window_event_escape);
    CHECK(window_escape_held());
    CHECK(window_next_event() == window_event_other);
    CHECK(window_next_event() == window_event_none);
}

TEST_CASE("a window has the samples that were asked for, or none")
{
    begin({});
    window_ask_for_samples(4);
    window_ask_for_samples(0);
    CHECK(take_gl_calls() == R"(
SDL_GL_SetAttribute(MULTISAMPLEBUFFERS, 1)
SDL_GL_SetAttribute(MULTISAMPLESAMPLES, 4)
SDL_GL_SetAttribute(MULTISAMPLEBUFFERS, 0)
SDL_GL_SetAttribute(MULTISAMPLESAMPLES, 0)
)");
}

TEST_CASE("a window is open from its opening to the end of them all, and one that fails is none")
{
    sdl_script script;
    script.failing_modes = {2};
    begin(script);
    app_window window;
    CHECK(window_open_opengl(window, {100, 50}, false));
    CHECK(window.surface != nullptr);
    window_name("a title", nullptr);
    CHECK_FALSE(window_open_opengl(window, {100, 50}, true));
    CHECK(window.surface == nullptr);
    CHECK(window_open_plain(window, {7, 5}));
    window_shut_down(window);
    CHECK(window.surface == nullptr);
    CHECK(take_gl_calls() == R"(
SDL_SetVideoMode(100, 50, 24, HWSURFACE | OPENGL | ASYNCBLIT)
SDL_WM_SetCaption("a title", nothing)
SDL_SetVideoMode(100, 50, 24, HWSURFACE | OPENGL | ASYNCBLIT | FULLSCREEN)
SDL_SetVideoMode(7, 5, 24, HWSURFACE)
SDL_Quit()
)");
}

TEST_CASE("a desktop of less than nothing has no size")
{
    sdl_script script;
    script.desktop_width = -1;
    script.desktop_height = -600;
    begin(script);
    CHECK(window_desktop_size().width == 0);
    CHECK(window_desktop_size().height == 0);
    script.desktop_width = 1366;
    script.desktop_height = 768;
    begin(script);
    CHECK(window_desktop_size().width == 1366);
    CHECK(window_desktop_size().height == 768);
}

TEST_CASE("a picture that does not load is drawn as nothing, and gives no palette")
{
    sdl_script script;
    script.broken_picture = 1;
    begin(script);
    uint8_t file[54] = "BM";
    const int32_t size[2] = {30, 20};
    std::memcpy(file + 18, size, sizeof size);
    app_window window;
    REQUIRE(window_open_plain(window, {100, 50}));
    const window_picture picture = window_load_picture(file);
    const window_picture nothing = window_load_picture(file);
    CHECK(nothing.surface == nullptr);
    take_gl_calls();
    begin_gl_recording();
    window_set_transparent(picture, nothing, {1, 2, 3});
    window_set_transparent(nothing, picture, {1, 2, 3});
    const window_rect none = window_draw(window, nothing, 3, 4);
    CHECK(none.width == 0);
    CHECK(none.height == 0);
    const window_rect place = window_draw(window, picture, 5, -6);
    CHECK(place.x == 5);
    CHECK(place.y == -6);
    CHECK(place.width == 30);
    CHECK(place.height == 20);
    window_update(window, place);
    CHECK(take_gl_calls() == R"(
SDL_UpperBlit(30 x 20, at 5, -6)
SDL_UpdateRects(1: 5, -6, 30 x 20)
)");
}
