// The settings dialog: a window of six pictures in which the viewer makes the
// choices of player_settings. Main thread only.
#pragma once

#include "shell/settings.h"

enum dialog_result {
    dialog_started, // the settings are made
    dialog_quit,    // the window was closed: end with status 0
    dialog_failed   // no display or no background picture: end with status 1
};

// Starts SDL's video, keeps the desktop's size in the settings, and runs the dialog
// until the viewer starts or closes it. Its window stays open when started, for the
// display to replace.
// Closed: "Bye!" is printed, production_timeline freed and SDL shut down. Failed: one
// line says why.
dialog_result run_dialog(player_settings& settings);
