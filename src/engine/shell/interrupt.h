// Ctrl-C and SIGTERM: the first asks the player to end as if its window were closed, the
// second ends the process at once, whatever it does.
#pragma once

// Takes both signals over, unless they are ignored (as for a program that a script starts
// in the background). Before SDL starts, which else would take them for itself.
void catch_interrupts();

// True from the first of them on. Asked where closing the window is looked for.
bool interrupted();
