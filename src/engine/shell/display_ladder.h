// The ladder of attempts at an OpenGL window: which comes next, and what is said.
//
// Pure decision; display_gl.cpp makes the attempts.
#pragma once

enum display_step {
    display_step_chosen,               // attempt: the chosen mode
    display_step_without_antialiasing, // attempt: the same mode, multisampling off
    display_step_small,                // attempt: 320 x 240 in a window; only to know what to say
    display_step_open,                 // the chosen mode is open
    display_step_open_plain,           // it is, without antialiasing
    display_step_no_driver,            // failure: no mode works
    display_step_other_resolution      // failure: another mode would work
};

// The step after an attempt. `opened` tells its outcome, `antialiasing` whether the
// first one asked for multisampling. A step that is no attempt is its own next.
display_step next_display_step(display_step step, bool opened, bool antialiasing);

// The line to print on reaching a step; null for none.
const char* display_step_message(display_step step);

bool display_step_failed(display_step step);
bool display_step_opened(display_step step);
