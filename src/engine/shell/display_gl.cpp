#include "shell/display_gl.h"

#include "shell/capability_report.h"
#include "shell/display_ladder.h"
#include "shell/driver_gl.h"
#include "shell/log.h"
#include "shell/player_choices.h"
#include "shell/player_display.h"

#include <GL/glew.h>

#include <cassert>
#include <cstdio>

constexpr window_size small_size = {320, 240}; // the mode that tells a missing driver from a bad choice
constexpr uint32_t antialiasing_samples = 2;   // a pixel

static bool open_chosen_mode(player_display& display, bool fullscreen)
{
    return window_open_opengl(display.window, {display.screen_width, display.screen_height}, fullscreen);
}

static bool attempt(display_step step, player_display& display, bool fullscreen)
{
    switch (step) {
    case display_step_chosen:
        return open_chosen_mode(display, fullscreen);
    case display_step_without_antialiasing:
        window_ask_for_samples(0);
        return open_chosen_mode(display, fullscreen);
    case display_step_small:
        return window_open_opengl(display.window, small_size, false);
    case display_step_open:
    case display_step_open_plain:
    case display_step_no_driver:
    case display_step_other_resolution:
        break;
    }
    assert(false); // no attempt
    return false;
}

// The window is gone before the line appears.
static display_result fail(app_window& window, const char* line)
{
    assert(line != nullptr);
    window_shut_down(window);
    log_message(0, line);
    return display_failed;
}

static display_result open_window(player_display& display, const player_choices& choices)
{
    display_step step = display_step_chosen;
    while (!display_step_opened(step)) {
        step = next_display_step(step, attempt(step, display, choices.fullscreen == 1), choices.antialiasing == 1);
        const char* line = display_step_message(step);
        if (display_step_failed(step))
            return fail(display.window, line);
        if (line != nullptr)
            log_message(0, line);
    }
    return display_open;
}

// The first visible frame is black.
static void begin_drawing(app_window& window, bool fullscreen)
{
    assert(window.surface != nullptr);
    clear_screen_gl();
    window_swap(window);
    set_unchanging_state_gl();
    window_swap(window);
    if (fullscreen)
        window_hide_pointer();
}

void prepare_display(player_display& display, const player_choices& choices)
{
    choose_screen_size(display, choices);
    if (choices.antialiasing == 1)
        window_ask_for_samples(antialiasing_samples);
    display.glsl_path = static_cast<int8_t>(choices.use_glsl);
}

display_result open_display(player_display& display, const player_choices& choices)
{
    assert(display.screen_width > 0 && display.screen_height > 0); // prepare_display was called
    assert(display.glsl_path == choices.use_glsl);
    window_start_timer();
    if (open_window(display, choices) != display_open)
        return display_failed;

    glewInit(); // its flags tell, not its result
    if (!GLEW_VERSION_1_3)
        return fail(display.window, "Error: OpenGL 1.3 required, please install a proper OpenGL driver.");

    const capability_report report = report_capabilities(ask_driver_gl(), choices);
    std::fputs(report.text.c_str(), stdout);
    apply_report_gl(display, report);
    begin_drawing(display.window, choices.fullscreen == 1);
    return display_open;
}
