#include "shell/display_gl.h"

#include "render/matrix.h"
#include "shell/capability_report.h"
#include "shell/display_ladder.h"
#include "shell/driver_gl.h"
#include "shell/log.h"
#include "shell/player_choices.h"
#include "shell/player_display.h"

#include <GL/glew.h>
#include <SDL/SDL.h>

#include <cassert>
#include <cstdio>

constexpr int window_depth = 24; // bits per pixel
constexpr Uint32 window_flags = SDL_HWSURFACE | SDL_OPENGL | SDL_ASYNCBLIT;
constexpr int small_width = 320; // the mode that tells a missing driver from a bad choice
constexpr int small_height = 240;

static void ask_for_multisampling(int buffers, int samples)
{
    SDL_GL_SetAttribute(SDL_GL_MULTISAMPLEBUFFERS, buffers);
    SDL_GL_SetAttribute(SDL_GL_MULTISAMPLESAMPLES, samples);
}

static bool open_chosen_mode(const player_display& display, bool fullscreen)
{
    const Uint32 flags = fullscreen ? window_flags | SDL_FULLSCREEN : window_flags;
    const int width = static_cast<int>(display.screen_width);
    const int height = static_cast<int>(display.screen_height);
    return SDL_SetVideoMode(width, height, window_depth, flags) != nullptr;
}

static bool attempt(display_step step, const player_display& display, bool fullscreen)
{
    switch (step) {
    case display_step_chosen:
        return open_chosen_mode(display, fullscreen);
    case display_step_without_antialiasing:
        ask_for_multisampling(0, 0);
        return open_chosen_mode(display, fullscreen);
    case display_step_small:
        return SDL_SetVideoMode(small_width, small_height, window_depth, window_flags) != nullptr;
    case display_step_open:
    case display_step_open_plain:
    case display_step_no_driver:
    case display_step_other_resolution:
        break;
    }
    return false;
}

// The window is gone before the line appears.
static display_result fail(const char* line)
{
    SDL_Quit();
    log_message(0, line);
    return display_failed;
}

static display_result open_window(const player_display& display, const player_choices& choices)
{
    display_step step = display_step_chosen;
    while (!display_step_opened(step)) {
        step = next_display_step(step, attempt(step, display, choices.fullscreen == 1), choices.antialiasing == 1);
        const char* line = display_step_message(step);
        if (display_step_failed(step))
            return fail(line);
        if (line != nullptr)
            log_message(0, line);
    }
    return display_open;
}

// The first visible frame is black.
static void begin_drawing(const player_choices& choices)
{
    init_matrices();
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    SDL_GL_SwapBuffers();
    set_unchanging_state_gl();
    SDL_GL_SwapBuffers();
    if (choices.fullscreen == 1)
        SDL_ShowCursor(SDL_DISABLE);
}

void prepare_display(player_display& display, const player_choices& choices)
{
    choose_screen_size(display, choices);
    if (choices.antialiasing == 1)
        ask_for_multisampling(1, 2);
    display.glsl_path = static_cast<int8_t>(choices.use_glsl);
}

display_result open_display(player_display& display, const player_choices& choices)
{
    assert(display.screen_width > 0 && display.screen_height > 0);
    SDL_Init(SDL_INIT_TIMER);
    if (open_window(display, choices) != display_open)
        return display_failed;

    glewInit(); // its flags tell, not its result
    if (!GLEW_VERSION_1_3)
        return fail("Error: OpenGL 1.3 required, please install a proper OpenGL driver.");

    const capability_report report = report_capabilities(ask_driver_gl(), choices);
    std::fputs(report.text.c_str(), stdout);
    apply_report_gl(display, report);
    begin_drawing(choices);
    return display_open;
}
