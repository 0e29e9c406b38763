// Opens the user's editor at a line.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// The words of the command: $VISUAL or $EDITOR with the file and the line put where that editor wants them, in a terminal
// where it needs one. Pure but for the two texts. Empty: neither is set.
std::vector<std::string> editor_command(
    const char* visual, const char* editor, const std::string& path, uint32_t line);

// Starts it and goes on. False: `problem` is one sentence.
[[nodiscard]] bool start_editor(const std::string& path, uint32_t line, std::string& problem);
