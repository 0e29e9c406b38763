// Lines of a source as they are quoted beside what is wrong with them.
#pragma once

#include <cstdint>
#include <string>

// Line `line`, from 1, of a file, without the blanks before it; tabs are blanks, and what is no letter is left out.
// Empty where there is none, and where the line is blank.
std::string quote_line(const std::string& path, uint32_t line);
