// Single words of an opened source.
#pragma once

#include "anim/animation_function.h"

#include <cstdint>
#include <string>
#include <vector>

// A number as Lua reads it back: "-0.0", where "-0" would be the whole number 0.
std::string lua_number(double value);

// A segment by the friendliest word that gives its very coefficients: linear(0, 360, 400); otherwise
// segment("Linear", 400, { 0.9, 0 }).
std::string segment_words(segment_kind kind, uint32_t length, const std::vector<double>& params);

// A text between long brackets, or between quotes where those would change it.
std::string long_text(const std::string& text);

// A text between double quotes as Lua reads it back, whatever bytes it has.
std::string lua_text(const std::string& text);
