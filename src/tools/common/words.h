// What is said on a terminal: one line at a time, whatever names hold.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// "a", "a and b", "a, b and c".
std::string enumerated(const std::vector<std::string>& parts);

// The words of a text as a shell reads them: blanks part them, but not between "..." or
// '...' or behind a backslash. False for quotes that are not closed and a last backslash.
bool split_words(std::string_view text, std::vector<std::string>& words);

// Prints a whole line on standard error, as content/printable.h shows it.
void say(const std::string& line);
