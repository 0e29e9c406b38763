// The OpenGL window: opened by the viewer's choices, probed, reported, and put into
// the state that the renderer expects. Main thread only.
#pragma once

struct player_choices;
struct player_display;

enum display_result {
    display_open,
    display_failed // one line says why, SDL is shut down: end with status 0
};

// Fills screen size, aspect, glsl_path, both capability records, the texture units and
// the texture formats of the display, from the viewer's choices and the driver's
// answers. Starts SDL's timer and, with music, its audio. Prints the capability report
// and shows a black frame. Resets the renderer's matrices and builds the maze tables.
display_result open_display(player_display& display, const player_choices& choices);
