// What whoever opens an OpenGL context for the player's drawing does next: asks the
// driver, takes over the report, and sets the state that never changes again.
//
// Needs a current context and a finished glewInit. Shared by the player's window and
// by programs that draw without one.
#pragma once

#include "shell/capability_report.h"
#include "shell/player_display.h"

// The driver's answers. Below OpenGL 1.5 the extension's buffer functions are put in
// the places of the later names, which the renderer uses.
driver_offer ask_driver_gl();

// Fills the capability records, texture formats, texture units and glsl_path of the
// display. Printing the report's text is the caller's.
void apply_report_gl(player_display& display, const capability_report& report);

// Depth test, blending (never off again), colour material, sphere maps. Also builds the
// maze tables. Viewport, projection and blend function belong to every frame.
void set_unchanging_state_gl();

// Clears colours and depth of the whole screen.
void clear_screen_gl();
