#include "shell/dialog.h"

#include "content/reason.h"
#include "shell/dialog_images.h"
#include "shell/dialog_logic.h"
#include "shell/interrupt.h"
#include "shell/log.h"
#include "shell/player_choices.h"
#include "shell/player_display.h"
#include "shell/startup.h"

#include <SDL/SDL.h>

#include <algorithm>
#include <string>

constexpr int window_depth = 24;     // bits per pixel
constexpr Uint32 pass_delay_ms = 30; // the dialog looks at the pointer no more often

struct key_color {
    Uint8 red;
    Uint8 green;
    Uint8 blue;
};
constexpr key_color transparent = {192, 216, 247};

// Kept to the end of the process; nobody frees them.
struct dialog_pictures {
    SDL_Surface* surface[dialog_image_count]; // null: not loadable; drawn as nothing
};

static dialog_result fail_without_display()
{
    const std::string line = std::string("Error: cannot open the display: ") + given_reason(SDL_GetError());
    SDL_Quit();
    log_message(0, line.c_str());
    return dialog_failed;
}

static void read_desktop_size(player_display& display)
{
    const SDL_VideoInfo* info = SDL_GetVideoInfo();
    if (info == nullptr)
        return;
    display.desktop_width = static_cast<uint32_t>(std::max(info->current_w, 0));
    display.desktop_height = static_cast<uint32_t>(std::max(info->current_h, 0));
}

static SDL_Surface* load_picture(dialog_image image)
{
    const std::span<const uint8_t> file = dialog_image_file(image);
    return SDL_LoadBMP_RW(SDL_RWFromConstMem(file.data(), static_cast<int>(file.size())), 0);
}

// `format_of` is the picture whose palette the key colour is looked up in.
static void set_key(SDL_Surface* picture, const SDL_Surface* format_of)
{
    if (picture == nullptr || format_of == nullptr)
        return;
    const Uint32 key = SDL_MapRGB(format_of->format, transparent.red, transparent.green, transparent.blue);
    SDL_SetColorKey(picture, SDL_SRCCOLORKEY, key);
}

static dialog_pictures load_pictures()
{
    dialog_pictures pictures = {};
    for (uint32_t i = 0; i < dialog_image_count; ++i)
        pictures.surface[i] = load_picture(static_cast<dialog_image>(i));
    SDL_Surface* const* surface = pictures.surface;
    set_key(surface[dialog_image_resolution], surface[dialog_image_resolution]);
    set_key(surface[dialog_image_aspect], surface[dialog_image_aspect]);
    // On purpose through the aspect highlight: every palette has the key at index 15.
    set_key(surface[dialog_image_check], surface[dialog_image_aspect]);
    set_key(surface[dialog_image_path], surface[dialog_image_path]);
    return pictures;
}

static void draw(SDL_Surface* screen, const dialog_pictures& pictures, const dialog_drawing& drawing)
{
    SDL_Rect background = {};
    for (uint32_t i = 0; i < drawing.count; ++i) {
        const dialog_blit& blit = drawing.blits[i];
        SDL_Surface* picture = pictures.surface[blit.image];
        SDL_Rect place = {blit.x, blit.y, 0, 0};
        if (picture != nullptr)
            SDL_UpperBlit(picture, nullptr, screen, &place);
        if (blit.image == dialog_image_background)
            background = place; // with the size that was drawn
    }
    SDL_UpdateRects(screen, 1, &background);
}

static dialog_result dialog_loop(SDL_Surface* screen, const dialog_pictures& pictures, player_choices& choices)
{
    dialog_state state;
    dialog_begin(state, choices);
    for (;;) {
        SDL_Event event; // one a pass; no key does anything here
        const bool closed = SDL_PollEvent(&event) != 0 && event.type == SDL_QUIT;
        if (closed || interrupted())
            return dialog_quit;

        int x = 0;
        int y = 0;
        SDL_GetMouseState(&x, &y);
        const bool left_down = (SDL_GetMouseState(nullptr, nullptr) & SDL_BUTTON_LMASK) != 0;
        const dialog_pass_result pass = dialog_pass(state, choices, x, y, left_down);
        if (pass.started)
            return dialog_started;
        if (pass.redraw) {
            SDL_FillRect(screen, nullptr, 0);
            draw(screen, pictures, plan_dialog_drawing(choices, pass.start_pressed));
        }
        SDL_Delay(pass_delay_ms);
    }
}

dialog_result run_dialog(player_choices& choices, player_display& display)
{
    if (SDL_Init(SDL_INIT_VIDEO) != 0)
        return fail_without_display();
    read_desktop_size(display);
    SDL_Surface* screen = SDL_SetVideoMode(dialog_width, dialog_height, window_depth, SDL_HWSURFACE);
    if (screen == nullptr)
        return fail_without_display();
    SDL_WM_SetCaption(banner_text, banner_text);

    const dialog_pictures pictures = load_pictures();
    if (pictures.surface[dialog_image_background] == nullptr) {
        log_message(0, "error creating surface :-S");
        return dialog_failed;
    }
    draw(screen, pictures, plan_dialog_drawing(choices, false));
    SDL_EventState(SDL_MOUSEMOTION, SDL_IGNORE); // the pointer is sampled instead
    return dialog_loop(screen, pictures, choices);
}
