// An OpenGL context without a display (or in a window), probed and put into the state
// that the renderer expects, as the player does it for its window.
//
// One session per process. Nothing here is freed before the process ends but what
// session_close gives back.
#pragma once

#include "render_options.h"
#include "shell/player_choices.h"
#include "shell/player_display.h"
#include "shell/window.h"

#include <cstdint>
#include <string>

struct gl_session {
    app_window window;  // none: no frame is shown
    uint32_t width = 0; // of the surface, pixels: the picture's size, or a tile's
    uint32_t height = 0;
    uint32_t samples = 0; // of antialiasing that the driver gave
    std::string driver;   // renderer and version, in the driver's words
    std::string report;   // the capability report, whole lines
    bool timer_queries = false;
    uint32_t resolved = 0;   // OpenGL framebuffer: the samples of each pixel made one; 0: none yet
    bool stop_asked = false; // the window was closed, or Escape was pressed in it
    void* display = nullptr; // EGLDisplay, EGLSurface, EGLContext
    void* surface = nullptr;
    void* context = nullptr;
};

// What a viewer of the player would have chosen to see what the options ask for: no whole
// screen and no sound device, a rendering path, a shape. The size is no row of the list.
player_choices choices_for(const render_options& options);

// Opens a surface for the picture's size, or for tiles where the size passes the driver's
// limit or --tile; fills in capabilities, formats and path of the display. False with one
// sentence in `problem`: there is no OpenGL for it.
[[nodiscard]] bool session_open(
    gl_session& session, const render_options& options, player_display& display, std::string& problem);

// Between these two, glReadPixels reads the finished picture. With antialiasing that is a
// copy: not every driver joins the samples of a surface that it reads.
void session_begin_reading(gl_session& session);
void session_end_reading(const gl_session& session);

// Ends a frame: shows it in the window and looks at the window's events; without a
// window nothing.
void session_end_frame(gl_session& session);

void session_close(gl_session& session);
