#include "tools/preview/window.h"

#include "tools/preview/steady_seconds.h"

#include <SDL.h>
#include <SDL_syswm.h>
#include <imgui.h>
#include <imgui_impl_opengl2.h>
#include <imgui_impl_sdl.h>

#include <algorithm>
#include <cmath>
#include <string>

constexpr float least_width = 480; // points
constexpr float least_height = 300;

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
    SDL_SetHint(SDL_HINT_MOUSE_FOCUS_CLICKTHROUGH, "1");     // a click from another window counts
    SDL_SetHint(SDL_HINT_VIDEO_MINIMIZE_ON_FOCUS_LOSS, "0"); // full screen on one monitor, the editor on another
    const bool only_x11 = SDL_getenv("SDL_VIDEODRIVER") == nullptr && SDL_getenv("WAYLAND_DISPLAY") == nullptr;
    if (only_x11) // nobody names a display of the other kind, and looking for it prints a line of its library
        SDL_SetHint(SDL_HINT_VIDEODRIVER, "x11");
    const bool started = SDL_Init(SDL_INIT_VIDEO | SDL_INIT_TIMER) == 0;
    if (started && shows_windows())
        return true;
    if (!started && !only_x11)
        return false; // the library says why
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
    const Uint32 flags = SDL_WINDOW_OPENGL | SDL_WINDOW_RESIZABLE | SDL_WINDOW_ALLOW_HIGHDPI | SDL_WINDOW_HIDDEN
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

// ---- sizes ---------------------------------------------------------------------------------------

static SDL_Window* own_window(const preview_window& w)
{
    return static_cast<SDL_Window*>(w.window.surface);
}

// How large the desktop wants its letters, where its windows are measured in pixels: X's "Xft.dpi", of 96. Where the
// monitor's own pixels are hidden (Wayland) it is in the sizes already.
static float desktop_scale(SDL_Window* window)
{
    SDL_SysWMinfo info;
    SDL_VERSION(&info.version);
    if (SDL_GetWindowWMInfo(window, &info) != SDL_TRUE || info.subsystem != SDL_SYSWM_X11)
        return 1;
    using default_of = char* (*)(Display*, const char*, const char*);
    void* library = SDL_LoadObject("libX11.so.6"); // the one that the window library holds already
    if (library == nullptr)
        return 1;
    const auto ask = reinterpret_cast<default_of>(SDL_LoadFunction(library, "XGetDefault"));
    const char* dpi = ask != nullptr ? ask(info.info.x11.display, "Xft", "dpi") : nullptr;
    const float scale = dpi != nullptr ? static_cast<float>(SDL_strtod(dpi, nullptr)) / 96 : 1;
    SDL_UnloadObject(library);
    return scale >= 1 ? std::min(scale, 4.0f) : 1;
}

static void measure(preview_window& w)
{
    int width = 0, height = 0, pixels = 0;
    SDL_GetWindowSize(own_window(w), &width, &height);
    SDL_GL_GetDrawableSize(own_window(w), &pixels, nullptr);
    const float unit_pixels = static_cast<float>(std::max(pixels, 1)) / static_cast<float>(std::max(width, 1));
    w.width = static_cast<uint32_t>(std::max(1.0f, static_cast<float>(width) / w.own_points));
    w.height = static_cast<uint32_t>(std::max(1.0f, static_cast<float>(height) / w.own_points));
    w.scale = std::max(1.0f, unit_pixels * w.own_points);
    const Uint32 flags = SDL_GetWindowFlags(own_window(w));
    w.hidden = (flags & (SDL_WINDOW_MINIMIZED | SDL_WINDOW_HIDDEN)) != 0;
    SDL_DisplayMode mode = {};
    const int display = SDL_GetWindowDisplayIndex(own_window(w));
    const bool is_known = display >= 0 && SDL_GetCurrentDisplayMode(display, &mode) == 0;
    w.rest_seconds = 1.0 / std::max(100, is_known ? mode.refresh_rate : 0);
}

static int display_of_pointer()
{
    SDL_Point pointer = {};
    SDL_GetGlobalMouseState(&pointer.x, &pointer.y);
    return std::max(0, SDL_GetPointDisplayIndex(&pointer));
}

// As large as it was asked for, or as its monitor has room beside panels and its own frame.
static void place_window(preview_window& w, window_size points)
{
    constexpr float room = 0.94f;
    const auto display = static_cast<unsigned>(display_of_pointer());
    SDL_Rect usable = {0, 0, 1024, 768};
    SDL_GetDisplayUsableBounds(static_cast<int>(display), &usable);
    const auto fitting = [&](uint32_t wanted, int there) {
        const float most = static_cast<float>(there)
            * (static_cast<float>(wanted) * w.own_points < static_cast<float>(there) ? 1 : room);
        return static_cast<int>(std::min(static_cast<float>(wanted) * w.own_points, most));
    };
    SDL_SetWindowSize(own_window(w), fitting(points.width, usable.w), fitting(points.height, usable.h));
    SDL_SetWindowPosition(own_window(w), static_cast<int>(SDL_WINDOWPOS_CENTERED_DISPLAY(display)),
        static_cast<int>(SDL_WINDOWPOS_CENTERED_DISPLAY(display)));
    SDL_SetWindowMinimumSize(
        own_window(w), static_cast<int>(least_width * w.own_points), static_cast<int>(least_height * w.own_points));
}

// ---- opening -------------------------------------------------------------------------------------

static Uint32 wake_event = 0; // its number

static void push_wake_event()
{
    SDL_Event event = {};
    event.type = wake_event;
    SDL_PushEvent(&event);
}

static bool make_contexts(preview_window& w)
{
    SDL_GL_SetAttribute(SDL_GL_SHARE_WITH_CURRENT_CONTEXT, 1);
    w.interface_context = SDL_GL_CreateContext(own_window(w));
    w.picture_context = w.interface_context != nullptr ? SDL_GL_CreateContext(own_window(w)) : nullptr;
    return w.picture_context != nullptr;
}

static void ready_interface(preview_window& w)
{
    preview_window_use_interface(w);
    SDL_GL_SetSwapInterval(1);
    IMGUI_CHECKVERSION();
    ImGui::CreateContext();
    ImGui::GetIO().IniFilename = nullptr;
    ImGui_ImplSDL2_InitForOpenGL(own_window(w), w.interface_context);
    ImGui_ImplOpenGL2_Init();
}

bool preview_window_open(
    preview_window& w, uint32_t width, uint32_t height, const std::string& title, std::string& problem)
{
    if (!window_start()) {
        problem = std::string("no window can be opened: ") + window_problem();
        return false;
    }
    SDL_EnableScreenSaver(); // a show that is being written is no film
    SDL_EventState(SDL_DROPFILE, SDL_DISABLE);
    if (!window_open_opengl(w.window, {width, height}, false)) {
        problem = std::string("no window can be opened: ") + window_problem();
        window_shut_down(w.window);
        return false;
    }
    if (!make_contexts(w)) {
        problem = std::string("no window can be opened: this machine offers no OpenGL: ") + window_problem();
        window_shut_down(w.window);
        return false;
    }
    w.own_points = desktop_scale(own_window(w));
    place_window(w, {width, height});
    preview_window_set_title(w, title);
    SDL_ShowWindow(own_window(w));
    measure(w);
    ready_interface(w);
    wake_event = SDL_RegisterEvents(1);
    w.waking = std::make_unique<waker>();
    if (!waker_open(*w.waking, push_wake_event))
        w.waking.reset(); // then waiting ends with its time
    return true;
}

// ---- what the viewer does ---------------------------------------------------------------------------

// The keypad's keys without its lock. Signs that it types come as text.
static uint32_t key_of_keypad(SDL_Keycode key)
{
    switch (key) {
    case SDLK_KP_4:
        return key_left;
    case SDLK_KP_6:
        return key_right;
    case SDLK_KP_7:
        return key_home;
    case SDLK_KP_1:
        return key_end;
    default:
        return 0;
    }
}

// A letter or digit by its place on the keyboard, where the layout has another alphabet's there, or a sign above the
// digit.
static uint32_t key_of_place(SDL_Scancode place)
{
    if (place >= SDL_SCANCODE_A && place <= SDL_SCANCODE_Z)
        return 'a' + static_cast<uint32_t>(place - SDL_SCANCODE_A);
    if (place == SDL_SCANCODE_1 || place == SDL_SCANCODE_2)
        return '1' + static_cast<uint32_t>(place - SDL_SCANCODE_1);
    return 0;
}

// By what the layout has on the key without shift. With shift, a key of signs may type any other: that comes as text.
static uint32_t key_of(const SDL_Keysym& key)
{
    const bool shift = (key.mod & KMOD_SHIFT) != 0;
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
    case SDLK_COMMA:
    case SDLK_PERIOD:
        return shift ? 0 : static_cast<uint32_t>(key.sym);
    default:
        break;
    }
    const bool is_letter = (key.sym >= 'a' && key.sym <= 'z') || (key.sym >= '0' && key.sym <= '9') || key.sym == ' ';
    if (is_letter)
        return static_cast<uint32_t>(key.sym);
    const uint32_t by_place = (key.sym & SDLK_SCANCODE_MASK) == 0 ? key_of_place(key.scancode) : 0;
    return by_place == 0 && (key.mod & KMOD_NUM) == 0 ? key_of_keypad(key.sym) : by_place;
}

static void take_key(preview_window& w, const SDL_KeyboardEvent& event, window_input& input)
{
    const bool is_others = (event.keysym.mod & (KMOD_ALT | KMOD_GUI)) != 0; // the desktop's, or a menu's
    const uint32_t key = is_others ? 0 : key_of(event.keysym);
    w.key_had_meaning = key != 0 || is_others;
    if (key == 0 || ImGui::GetIO().WantTextInput)
        return;
    input.keys.push_back(
        {key, (event.keysym.mod & KMOD_SHIFT) != 0, (event.keysym.mod & KMOD_CTRL) != 0, event.repeat != 0});
}

// Signs count wherever the layout has them.
static void take_text(const preview_window& w, const char* text, window_input& input)
{
    const bool is_sign = text[0] != 0 && text[1] == 0 && SDL_strchr(",.12", text[0]) != nullptr;
    if (is_sign && !w.key_had_meaning && !ImGui::GetIO().WantTextInput)
        input.keys.push_back({static_cast<uint32_t>(text[0]), false, false, false});
}

static void take_event(preview_window& w, const SDL_Event& event, window_input& input)
{
    if (event.type == wake_event)
        return;
    input.any = true;
    ImGui_ImplSDL2_ProcessEvent(&event);
    const float scale = w.scale;
    switch (event.type) {
    case SDL_QUIT:
        input.closed = true;
        break;
    case SDL_WINDOWEVENT:
        measure(w);
        input.scale_changed |= w.scale != scale;
        break;
    case SDL_KEYDOWN:
        take_key(w, event.key, input);
        break;
    case SDL_MOUSEBUTTONDOWN: // the window's own count: both clicks may come between two frames
        input.double_click |= event.button.button == SDL_BUTTON_LEFT && event.button.clicks == 2;
        break;
    case SDL_TEXTINPUT:
        take_text(w, event.text.text, input);
        break;
    default:
        break;
    }
}

void preview_window_take_input(
    preview_window& w, window_input& input, uint32_t wait_ms, std::span<const int> descriptors)
{
    input = {};
    w.typing = ImGui::GetIO().WantTextInput;
    SDL_Event event;
    if (wait_ms > 0) {
        if (w.waking != nullptr)
            waker_arm(*w.waking, descriptors);
        if (SDL_WaitEventTimeout(&event, static_cast<int>(wait_ms)) != 0)
            take_event(w, event, input);
    }
    while (SDL_PollEvent(&event) != 0)
        take_event(w, event, input);
}

// ---- drawing -------------------------------------------------------------------------------------

uint32_t preview_window_rests(const preview_window& w)
{
    if (w.hidden)
        return 1000000;
    return static_cast<uint32_t>(std::ceil(std::max(0.0, w.shown_at + w.rest_seconds - steady_seconds()) * 1000));
}

void preview_window_use_picture(preview_window& w)
{
    SDL_GL_MakeCurrent(own_window(w), w.picture_context);
}

void preview_window_use_interface(preview_window& w)
{
    SDL_GL_MakeCurrent(own_window(w), w.interface_context);
}

// While a button is held the pointer is the window's alone, and then X11 tells the library's asking for its place on the
// screen nothing new: a drag would stand still. What comes as events is right.
static ImVec2 mouse_place(const preview_window& w, ImVec2 on_screen)
{
    int x = 0;
    int y = 0;
    SDL_GetMouseState(&x, &y);
    return SDL_GetMouseFocus() == own_window(w) ? ImVec2(static_cast<float>(x), static_cast<float>(y)) : on_screen;
}

void preview_window_begin_frame(preview_window& w)
{
    preview_window_use_interface(w);
    ImGui_ImplOpenGL2_NewFrame();
    ImGui_ImplSDL2_NewFrame();
    ImGuiIO& io = ImGui::GetIO();
    io.DisplaySize = {io.DisplaySize.x / w.own_points, io.DisplaySize.y / w.own_points};
    io.DisplayFramebufferScale = {w.scale, w.scale};
    io.MousePos = mouse_place(w, io.MousePos);
    io.MousePos = {io.MousePos.x / w.own_points, io.MousePos.y / w.own_points}; // one outside stays far outside
    ImGui::NewFrame();
}

void preview_window_end_frame(preview_window& w)
{
    ImGui::Render();
    ImGui_ImplOpenGL2_RenderDrawData(ImGui::GetDrawData());
    window_swap(w.window);
    w.shown_at = steady_seconds();
}

void preview_window_renew_letters(preview_window& w)
{
    preview_window_use_interface(w);
    ImGui_ImplOpenGL2_DestroyFontsTexture(); // the next frame makes another
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
    if (w.waking != nullptr)
        waker_close(*w.waking);
    w.waking.reset();
    preview_window_use_interface(w);
    ImGui_ImplOpenGL2_Shutdown();
    ImGui_ImplSDL2_Shutdown();
    ImGui::DestroyContext();
    SDL_GL_DeleteContext(w.picture_context);
    SDL_GL_DeleteContext(w.interface_context);
    w.picture_context = w.interface_context = nullptr;
    window_shut_down(w.window);
}
