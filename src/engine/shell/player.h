// The player: the whole life of the process, from the dialog to "Bye!".
#pragma once

// Runs dialog, display, loading, music and main loop in order. Returns the exit status
// of the process (it may also end the process itself: closing the window while
// playing is exit(0)).
int run_player(int argc, char** argv);
