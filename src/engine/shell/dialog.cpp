#include "shell/dialog.h"

#include "shell/dialog_images.h"
#include "shell/dialog_logic.h"
#include "shell/interrupt.h"
#include "shell/log.h"
#include "shell/player_choices.h"
#include "shell/player_display.h"
#include "shell/startup.h"

#include <cassert>
#include <string>

constexpr uint32_t pass_delay_ms = 30; // the dialog looks at the pointer no more often
constexpr window_color transparent = {192, 216, 247};

namespace {

// Kept to the end of the process; nobody frees them.
struct dialog_pictures {
    window_picture of[dialog_image_count];
};

} // namespace

static dialog_result fail_without_display(app_window& window)
{
    const std::string line = std::string("Error: cannot open the display: ") + window_problem();
    window_shut_down(window);
    log_message(0, line.c_str());
    return dialog_failed;
}

static void read_desktop_size(player_display& display)
{
    const window_size desktop = window_desktop_size();
    display.desktop_width = desktop.width;
    display.desktop_height = desktop.height;
}

static dialog_pictures load_pictures()
{
    dialog_pictures pictures = {};
    for (uint32_t i = 0; i < dialog_image_count; ++i)
        pictures.of[i] = window_load_picture(dialog_image_file(static_cast<dialog_image>(i)));
    const window_picture* of = pictures.of;
    window_set_transparent(of[dialog_image_resolution], of[dialog_image_resolution], transparent);
    window_set_transparent(of[dialog_image_aspect], of[dialog_image_aspect], transparent);
    // On purpose through the aspect highlight: every palette has the colour at index 15.
    window_set_transparent(of[dialog_image_check], of[dialog_image_aspect], transparent);
    window_set_transparent(of[dialog_image_path], of[dialog_image_path], transparent);
    return pictures;
}

static void draw(app_window& window, const dialog_pictures& pictures, const dialog_drawing& drawing)
{
    assert(drawing.count > 0 && drawing.count <= max_dialog_blits);
    window_rect background = {};
    for (uint32_t i = 0; i < drawing.count; ++i) {
        const dialog_blit& blit = drawing.blits[i];
        assert(blit.image < dialog_image_count);
        const window_rect place = window_draw(window, pictures.of[blit.image], blit.x, blit.y);
        if (blit.image == dialog_image_background)
            background = place; // with the size that was drawn
    }
    window_update(window, background);
}

static dialog_result dialog_loop(app_window& window, const dialog_pictures& pictures, player_choices& choices)
{
    assert(window.surface != nullptr);
    dialog_state state;
    dialog_begin(state, choices);
    for (;;) {
        const bool closed = window_next_event() == window_event_closed; // one a pass; no key does anything here
        if (closed || interrupted())
            return dialog_quit;

        const window_pointer pointer = window_look_at_pointer();
        const dialog_pass_result pass = dialog_pass(state, choices, pointer.x, pointer.y, pointer.left_down);
        if (pass.started)
            return dialog_started;
        if (pass.redraw) {
            window_clear(window);
            draw(window, pictures, plan_dialog_drawing(choices, pass.start_pressed));
        }
        window_wait(pass_delay_ms);
    }
}

dialog_result run_dialog(player_choices& choices, player_display& display)
{
    app_window& window = display.window;
    assert(window.surface == nullptr); // the first of the run
    if (!window_start())
        return fail_without_display(window);
    read_desktop_size(display);
    if (!window_open_plain(window, {dialog_width, dialog_height}))
        return fail_without_display(window);
    window_name(banner_text, banner_text);

    const dialog_pictures pictures = load_pictures();
    if (pictures.of[dialog_image_background].surface == nullptr) {
        log_message(0, "error creating surface :-S");
        return dialog_failed;
    }
    draw(window, pictures, plan_dialog_drawing(choices, false));
    window_ignore_pointer_events(); // the pointer is looked at instead
    return dialog_loop(window, pictures, choices);
}
