// What is said on a terminal: one line at a time, whatever names hold.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// The text with everything that a terminal would act on written out: control characters,
// those of Unicode too, and bytes that are no UTF-8 become "\x1b".
std::string printable(const std::string& text);

// "1 frame", "12 frames".
std::string counted(uint64_t count, const char* thing);

// "a", "a and b", "a, b and c".
std::string enumerated(const std::vector<std::string>& parts);

// Prints a whole line on standard error, printable.
void say(const std::string& line);
