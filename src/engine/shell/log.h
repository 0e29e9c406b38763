// The program's message printer.
#pragma once

// Prints `text` and a newline on standard output. `level` is always 0 and ignored.
void log_message(int level, const char* text);
