// Opens the user's editor at a line.
//
// Which one it is say $VISUAL and $EDITOR, as words of a shell without its other powers. What is not known of an editor
// can be written there: EDITOR='myeditor --at={line} {file}'.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// What the environment says. Null or blank: nothing.
struct editor_settings {
    const char* visual = nullptr; // $VISUAL, which wins
    const char* editor = nullptr; // $EDITOR
};

struct editor_call {
    std::vector<std::string> words; // the program and its arguments
    bool in_terminal = false;       // it shows itself in the terminal that it is started in
};

// The call with the file and the line (from 1) where that editor wants them; `{file}` and `{line}` are put in; behind a
// program that is not known stands the file alone. False: `problem` is one sentence without its full stop, as below.
[[nodiscard]] bool editor_command(
    const editor_settings& settings, const std::string& path, uint32_t line, editor_call& call, std::string& problem);

// The words that stand before a program's to start it in a terminal: those of $TERMINAL, or of `fallback` where that is
// null or blank. Empty: $TERMINAL has quotes that are not closed.
std::vector<std::string> terminal_command(const char* terminal, const std::string& fallback);

// Starts it, apart from the preview: it goes on when that ends, and shares no files and no terminal with it. True: it
// runs. False: nothing was started.
[[nodiscard]] bool start_editor(const std::string& path, uint32_t line, std::string& problem);
