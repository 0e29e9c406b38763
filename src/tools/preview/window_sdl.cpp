#include "tools/preview/window.h"

#include <SDL.h>
#include <imgui.h>
#include <imgui_impl_opengl2.h>
#include <imgui_impl_sdl.h>

#include <algorithm>
#include <string>

// ---- the face of all windows ------------------------------------------------------------------

// Where there is no display, the library would go on without anything that shows its windows, unless it was told to.
static bool shows_windows()
{
    const std::string driver = SDL_GetCurrentVideoDriver();
    return SDL_getenv("SDL_VIDEODRIVER") != nullptr || (driver != "offscreen" && driver != "dummy");
}

bool window_start()
{
    SDL_SetHint(SDL_HINT_VIDEO_X11_NET_WM_BYPASS_COMPOSITOR, "0");
    if (SDL_Init(SDL_INIT_VIDEO | SDL_INIT_TIMER) != 0)
        return false;
    if (shows_windows())
        return true;
    SDL_Quit();
    SDL_SetError("neither DISPLAY nor WAYLAND_DISPLAY leads to one");
    return false;
}

const char* window_problem()
{
    const char* problem = SDL_GetError();
    return problem != nullptr && problem[0] != 0 ? problem : "no reason is known";
}

void window_shut_down(app_window& window)
{
    if (window.surface != nullptr)
        SDL_DestroyWindow(static_cast<SDL_Window*>(window.surface));
    window.surface = nullptr;
    SDL_Quit();
}

void window_ask_for_samples(uint32_t samples)
{
    SDL_GL_SetAttribute(SDL_GL_MULTISAMPLEBUFFERS, samples > 0 ? 1 : 0);
    SDL_GL_SetAttribute(SDL_GL_MULTISAMPLESAMPLES, static_cast<int>(samples));
}

bool window_open_opengl(app_window& window, window_size size, bool fullscreen)
{
    SDL_GL_SetAttribute(SDL_GL_DOUBLEBUFFER, 1);
    const Uint32 flags = SDL_WINDOW_OPENGL | SDL_WINDOW_RESIZABLE | SDL_WINDOW_ALLOW_HIGHDPI
        | (fullscreen ? static_cast<Uint32>(SDL_WINDOW_FULLSCREEN_DESKTOP) : 0u);
    window.surface = SDL_CreateWindow("brimlow-preview", SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED,
        static_cast<int>(size.width), static_cast<int>(size.height), flags);
    return window.surface != nullptr;
}

void window_swap(app_window& window)
{
    SDL_GL_SwapWindow(static_cast<SDL_Window*>(window.surface));
}

uint32_t window_ticks()
{
    return SDL_GetTicks();
}

// ---- the preview's ------------------------------------------------------------------------------

static SDL_Window* own_window(const preview_window& w)
{
    return static_cast<SDL_Window*>(w.window.surface);
}

static void measure(preview_window& w)
{
    int width = 0, height = 0, pixels = 0;
    SDL_GetWindowSize(own_window(w), &width, &height);
    SDL_GL_GetDrawableSize(own_window(w), &pixels, nullptr);
    w.width = static_cast<uint32_t>(std::max(width, 1));
    w.height = static_cast<uint32_t>(std::max(height, 1));
    w.scale = std::max(1.0f, static_cast<float>(pixels) / static_cast<float>(w.width));
}

bool preview_window_open(
    preview_window& w, uint32_t width, uint32_t height, const std::string& title, std::string& problem)
{
    if (!window_start()) {
        problem = std::string("there is no display: ") + window_problem();
        return false;
    }
    if (!window_open_opengl(w.window, {width, height}, false)) {
        problem = std::string("no window can be opened: ") + window_problem();
        window_shut_down(w.window);
        return false;
    }
    SDL_GL_SetAttribute(SDL_GL_SHARE_WITH_CURRENT_CONTEXT, 1);
    w.interface_context = SDL_GL_CreateContext(own_window(w));
    w.picture_context = w.interface_context != nullptr ? SDL_GL_CreateContext(own_window(w)) : nullptr;
    if (w.picture_context == nullptr) {
        problem = std::string("this machine offers no OpenGL: ") + window_problem();
        window_shut_down(w.window);
        return false;
    }
    measure(w);
    preview_window_set_title(w, title);
    preview_window_use_interface(w);
    SDL_GL_SetSwapInterval(1);
    IMGUI_CHECKVERSION();
    ImGui::CreateContext();
    ImGui::GetIO().IniFilename = nullptr;
    ImGui_ImplSDL2_InitForOpenGL(own_window(w), w.interface_context);
    ImGui_ImplOpenGL2_Init();
    return true;
}

static uint32_t key_of(const SDL_Keysym& key)
{
    switch (key.sym) {
    case SDLK_LEFT:
        return key_left;
    case SDLK_RIGHT:
        return key_right;
    case SDLK_HOME:
        return key_home;
    case SDLK_END:
        return key_end;
    case SDLK_ESCAPE:
        return key_escape;
    case SDLK_TAB:
        return key_tab;
    case SDLK_F1:
        return key_f1;
    default:
        return key.sym < 0x80 ? static_cast<uint32_t>(key.sym) : 0;
    }
}

static void take_event(preview_window& w, const SDL_Event& event, window_input& input)
{
    input.any = true;
    ImGui_ImplSDL2_ProcessEvent(&event);
    switch (event.type) {
    case SDL_QUIT:
        input.closed = true;
        break;
    case SDL_WINDOWEVENT:
        measure(w);
        break;
    case SDL_KEYDOWN:
        if (const uint32_t key = key_of(event.key.keysym); key != 0 && !ImGui::GetIO().WantTextInput)
            input.keys.push_back({key, (event.key.keysym.mod & KMOD_SHIFT) != 0,
                (event.key.keysym.mod & KMOD_CTRL) != 0, event.key.repeat != 0});
        break;
    default:
        break;
    }
}

void preview_window_take_input(preview_window& w, window_input& input, uint32_t wait_ms)
{
    input = {};
    SDL_Event event;
    if (wait_ms > 0 && SDL_WaitEventTimeout(&event, static_cast<int>(wait_ms)) != 0)
        take_event(w, event, input);
    while (SDL_PollEvent(&event) != 0)
        take_event(w, event, input);
}

void preview_window_use_picture(preview_window& w)
{
    SDL_GL_MakeCurrent(own_window(w), w.picture_context);
}

void preview_window_use_interface(preview_window& w)
{
    SDL_GL_MakeCurrent(own_window(w), w.interface_context);
}

void preview_window_begin_frame(preview_window& w)
{
    preview_window_use_interface(w);
    ImGui_ImplOpenGL2_NewFrame();
    ImGui_ImplSDL2_NewFrame();
    ImGui::NewFrame();
}

void preview_window_end_frame(preview_window& w)
{
    ImGui::Render();
    ImGui_ImplOpenGL2_RenderDrawData(ImGui::GetDrawData());
    window_swap(w.window);
}

void preview_window_set_fullscreen(preview_window& w, bool fullscreen)
{
    w.fullscreen = fullscreen;
    SDL_SetWindowFullscreen(own_window(w), fullscreen ? static_cast<Uint32>(SDL_WINDOW_FULLSCREEN_DESKTOP) : 0u);
    measure(w);
}

void preview_window_set_title(preview_window& w, const std::string& title)
{
    SDL_SetWindowTitle(own_window(w), title.c_str());
}

void preview_window_copy_text(const std::string& text)
{
    SDL_SetClipboardText(text.c_str());
}

void preview_window_close(preview_window& w)
{
    if (w.interface_context == nullptr)
        return;
    preview_window_use_interface(w);
    ImGui_ImplOpenGL2_Shutdown();
    ImGui_ImplSDL2_Shutdown();
    ImGui::DestroyContext();
    SDL_GL_DeleteContext(w.picture_context);
    SDL_GL_DeleteContext(w.interface_context);
    w.picture_context = w.interface_context = nullptr;
    window_shut_down(w.window);
}
