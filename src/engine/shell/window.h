// The program's window, what can be drawn into it without OpenGL, and what the viewer does
// there; the only place that knows which library opens windows (window_sdl.cpp): another
// library means another file behind these functions.
//
// One window at a time, main thread only. Positions and sizes are pixels from its top left
// corner, times milliseconds. What the handles stand for is the library's, and goes when it is
// shut down.
#pragma once

#include <cstdint>
#include <span>

struct app_window {
    void* surface = nullptr; // null: none is open
};

// A picture with a palette, to be drawn into a plain window.
struct window_picture {
    void* surface = nullptr; // null: it could not be loaded, and is drawn as nothing
};

struct window_size {
    uint32_t width;
    uint32_t height;
};

struct window_rect {
    int16_t x;
    int16_t y;
    uint16_t width;
    uint16_t height;
};

struct window_color {
    uint8_t red;
    uint8_t green;
    uint8_t blue;
};

struct window_pointer {
    int32_t x;
    int32_t y;
    bool left_down; // its left button
};

enum window_event {
    window_event_none,   // nothing has happened
    window_event_closed, // the viewer closed the window
    window_event_escape, // Escape was pressed
    window_event_other
};

// ---- start and end ----------------------------------------------------------------------

// Makes the library ready for windows. False: there is no display (window_problem).
[[nodiscard]] bool window_start();

// Why window_start or the opening of a window failed, in the library's words; never empty.
const char* window_problem();

// Closes the window and everything else that the library has opened, sound devices too.
void window_shut_down(app_window& window);

// The size of the desktop, before the first window is open; zeros where nobody knows.
window_size window_desktop_size();

// ---- windows ------------------------------------------------------------------------------

// Opens a window for pictures. False: window_problem says why.
[[nodiscard]] bool window_open_plain(app_window& window, window_size size);

// Asks for antialiasing in windows opened for OpenGL from here on; 0: none.
void window_ask_for_samples(uint32_t samples);

// Opens a window for OpenGL, with its context, in the place of the one that is open. False:
// window_problem says why; another size, or fewer samples, may do.
[[nodiscard]] bool window_open_opengl(app_window& window, window_size size, bool fullscreen);

// Names the window, and its icon (null: as the library likes it).
void window_name(const char* title, const char* icon);

// Shows what OpenGL has drawn.
void window_swap(app_window& window);

// Over the window no pointer is shown.
void window_hide_pointer();

// ---- pictures in a plain window -------------------------------------------------------------

// Loads a whole BMP file, which must stay where it is.
window_picture window_load_picture(std::span<const uint8_t> file);

// `color` becomes transparent in a picture: the palette entry that stands for it in the picture
// `palette_of`. Either picture may be none: nothing changes then.
void window_set_transparent(window_picture picture, window_picture palette_of, window_color color);

// Fills the window with black.
void window_clear(app_window& window);

// Draws a picture with its top left corner at x, y. The place that it takes, as far as it lies
// in the window; without a size for no picture.
window_rect window_draw(app_window& window, window_picture picture, int16_t x, int16_t y);

// Shows what was drawn in a part of the window.
void window_update(app_window& window, window_rect part);

// ---- the viewer -----------------------------------------------------------------------------

// The next thing that happened, if any.
window_event window_next_event();

// Movements of the pointer are no events from here on.
void window_ignore_pointer_events();

// Where the pointer is now.
window_pointer window_look_at_pointer();

// Whether Escape is held down now, as far as events have been taken.
bool window_escape_held();

// ---- time -----------------------------------------------------------------------------------

void window_start_timer();
uint32_t window_ticks();
void window_wait(uint32_t ms);
