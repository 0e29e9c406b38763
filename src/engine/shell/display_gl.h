// The OpenGL window: opened by the viewer's choices, probed, reported, and put into
// the state that the renderer expects. Main thread only.
#pragma once

struct player_choices;
struct player_display;

enum display_result {
    display_open,
    display_failed // one line says why, the window is gone: end with status 0
};

// The first step: fills screen size, aspect and glsl_path of the display from the viewer's
// choices, and asks for antialiasing. What else is to be started before the window opens
// is started after this.
void prepare_display(player_display& display, const player_choices& choices);

// The second step: opens the window and fills both capability records, the texture units,
// the texture formats and glsl_path of the display from the driver's answers. Starts the
// timer. Prints the capability report, shows a black frame and builds the maze
// tables.
display_result open_display(player_display& display, const player_choices& choices);
