// The settings dialog: a window of six pictures in which the viewer makes the
// choices of the run. Main thread only.
#pragma once

struct player_choices;
struct player_display;

enum dialog_result {
    dialog_started, // the choices are made
    dialog_quit,    // the window was closed: end with status 0
    dialog_failed   // no display or no background picture: end with status 1
};

// Starts the windows, keeps the desktop's size in the display, and runs the dialog
// until the viewer starts or closes it. Its window stays open when started, for the
// display to replace, and when closed, for the caller to say good-bye and shut it down.
// Failed: one line says why.
dialog_result run_dialog(player_choices& choices, player_display& display);
