#include "shell/window.h"

#include "content/reason.h"

#include <SDL/SDL.h>

#include <algorithm>
#include <cassert>

constexpr int window_depth = 24; // bits per pixel

static SDL_Surface* surface_of(const app_window& window)
{
    assert(window.surface != nullptr);
    return static_cast<SDL_Surface*>(window.surface);
}

static SDL_Surface* surface_of(window_picture picture)
{
    return static_cast<SDL_Surface*>(picture.surface);
}

// ---- start and end ----------------------------------------------------------------------

bool window_start()
{
    return SDL_Init(SDL_INIT_VIDEO) == 0;
}

const char* window_problem()
{
    return given_reason(SDL_GetError());
}

void window_shut_down(app_window& window)
{
    SDL_Quit();
    window.surface = nullptr;
}

window_size window_desktop_size()
{
    const SDL_VideoInfo* info = SDL_GetVideoInfo();
    if (info == nullptr)
        return {0, 0};
    return {static_cast<uint32_t>(std::max(info->current_w, 0)), static_cast<uint32_t>(std::max(info->current_h, 0))};
}

// ---- windows ------------------------------------------------------------------------------

static bool open_mode(app_window& window, window_size size, Uint32 flags)
{
    assert(size.width > 0 && size.height > 0);
    window.surface = SDL_SetVideoMode(static_cast<int>(size.width), static_cast<int>(size.height), window_depth, flags);
    return window.surface != nullptr;
}

bool window_open_plain(app_window& window, window_size size)
{
    return open_mode(window, size, SDL_HWSURFACE);
}

void window_ask_for_samples(uint32_t samples)
{
    SDL_GL_SetAttribute(SDL_GL_MULTISAMPLEBUFFERS, samples > 0 ? 1 : 0);
    SDL_GL_SetAttribute(SDL_GL_MULTISAMPLESAMPLES, static_cast<int>(samples));
}

bool window_open_opengl(app_window& window, window_size size, bool fullscreen)
{
    constexpr Uint32 flags = SDL_HWSURFACE | SDL_OPENGL | SDL_ASYNCBLIT;
    return open_mode(window, size, fullscreen ? flags | SDL_FULLSCREEN : flags);
}

void window_name(const char* title, const char* icon)
{
    assert(title != nullptr);
    SDL_WM_SetCaption(title, icon);
}

void window_swap(app_window&)
{
    SDL_GL_SwapBuffers();
}

void window_hide_pointer()
{
    SDL_ShowCursor(SDL_DISABLE);
}

// ---- pictures in a plain window -------------------------------------------------------------

window_picture window_load_picture(std::span<const uint8_t> file)
{
    assert(!file.empty());
    return {SDL_LoadBMP_RW(SDL_RWFromConstMem(file.data(), static_cast<int>(file.size())), 0)};
}

void window_set_transparent(window_picture picture, window_picture palette_of, window_color color)
{
    if (picture.surface == nullptr || palette_of.surface == nullptr)
        return;
    const Uint32 key = SDL_MapRGB(surface_of(palette_of)->format, color.red, color.green, color.blue);
    SDL_SetColorKey(surface_of(picture), SDL_SRCCOLORKEY, key);
}

void window_clear(app_window& window)
{
    SDL_FillRect(surface_of(window), nullptr, 0);
}

window_rect window_draw(app_window& window, window_picture picture, int16_t x, int16_t y)
{
    SDL_Rect place = {x, y, 0, 0};
    if (picture.surface != nullptr)
        SDL_UpperBlit(surface_of(picture), nullptr, surface_of(window), &place); // which puts the size in
    return {place.x, place.y, place.w, place.h};
}

void window_update(app_window& window, window_rect part)
{
    SDL_Rect rect = {part.x, part.y, part.width, part.height};
    SDL_UpdateRects(surface_of(window), 1, &rect);
}

// ---- the viewer -----------------------------------------------------------------------------

window_event window_next_event()
{
    SDL_Event event = {};
    if (SDL_PollEvent(&event) == 0)
        return window_event_none;
    if (event.type == SDL_QUIT)
        return window_event_closed;
    const bool escape = event.type == SDL_KEYDOWN && event.key.keysym.sym == SDLK_ESCAPE;
    return escape ? window_event_escape : window_event_other;
}

void window_ignore_pointer_events()
{
    SDL_EventState(SDL_MOUSEMOTION, SDL_IGNORE);
}

window_pointer window_look_at_pointer()
{
    int x = 0;
    int y = 0;
    SDL_GetMouseState(&x, &y);
    return {x, y, (SDL_GetMouseState(nullptr, nullptr) & SDL_BUTTON_LMASK) != 0};
}

bool window_escape_held()
{
    return SDL_GetKeyState(nullptr)[SDLK_ESCAPE] != 0;
}

// ---- time -----------------------------------------------------------------------------------

void window_start_timer()
{
    SDL_Init(SDL_INIT_TIMER);
}

uint32_t window_ticks()
{
    return SDL_GetTicks();
}

void window_wait(uint32_t ms)
{
    SDL_Delay(ms);
}
