// The preview's window: what shell/window.h says of windows, and what only a program of many controls asks of one.
//
// Two OpenGL contexts share their objects: one draws the picture and knows its own state (gl_state.h), the other draws
// the interface, whose library changes what it likes. Sizes of the window, places in it and all of the interface are
// points; a point has `scale` pixels, which changes when the window goes to another monitor. Main thread only.
#pragma once

#include "shell/window.h"
#include "tools/preview/waker.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

struct preview_window {
    app_window window;
    void* picture_context = nullptr;
    void* interface_context = nullptr;
    uint32_t width = 0; // points
    uint32_t height = 0;
    float scale = 1;      // pixels a point
    float own_points = 1; // of the library's units, in which it tells sizes and places, a point has so many
    bool fullscreen = false;
    bool hidden = false;           // minimised, or on no screen: nothing needs to be drawn
    bool key_had_meaning = false;  // the latest key; otherwise the sign that it types may have one
    bool typing = false;           // a field of the interface takes the keys
    double shown_at = 0;           // steady seconds when it was last drawn
    double rest_seconds = 0.01;    // from then on until it may be drawn again
    std::unique_ptr<waker> waking; // ends waiting for the sake of descriptors
};

// What keys mean to the preview: a letter or sign as it is typed without shift (' ', 'a', ','), or one of these.
enum preview_key : uint32_t { key_left = 0x110000, key_right, key_home, key_end, key_escape, key_tab, key_f1 };

struct pressed_key {
    uint32_t key;
    bool shift;
    bool control;
    bool repeated; // it is held
};

struct window_input {
    std::vector<pressed_key> keys; // those that no field of the interface takes
    bool closed = false;           // the viewer closed the window
    bool double_click = false;     // of the left button
    bool any = false;              // something happened at all
    bool scale_changed = false;    // the interface needs letters of another size
};

// Opens it with both contexts and readies the interface; no larger than its monitor has room. False: `problem` is one
// sentence without its full stop.
[[nodiscard]] bool preview_window_open(
    preview_window& w, uint32_t width, uint32_t height, const std::string& title, std::string& problem);

// What has happened; waits at most so long for the first event, or until one of the descriptors (without those below 0)
// is readable.
void preview_window_take_input(
    preview_window& w, window_input& input, uint32_t wait_ms, std::span<const int> descriptors = {});

// How long it takes until the window may be drawn again, ms: a hundred times a second where the driver does not wait
// for the monitor. 0: now. Far more than a second: nobody would see it.
uint32_t preview_window_rests(const preview_window& w);

void preview_window_use_picture(preview_window& w);
void preview_window_use_interface(preview_window& w);

// Around the making of the interface of one frame. The end draws it and shows the window.
void preview_window_begin_frame(preview_window& w);
void preview_window_end_frame(preview_window& w);

// The interface's letters were changed.
void preview_window_renew_letters(preview_window& w);

void preview_window_set_fullscreen(preview_window& w, bool fullscreen);
void preview_window_set_title(preview_window& w, const std::string& title);
void preview_window_copy_text(const std::string& text); // to the clipboard

void preview_window_close(preview_window& w);
