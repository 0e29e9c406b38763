// The library of the language: the Lua files of share/brimlow/library, laid whole into the program.
//
// Texts are constant and live as long as the program.
#pragma once

#include <span>
#include <string_view>

struct library_text {
    std::string_view name; // what require is given: "fades" of fades.lua
    std::string_view text; // the file
};

// All of them, in the order of their names.
std::span<const library_text> library_texts();

// The one of that name, or null.
const library_text* find_library_text(std::span<const library_text> texts, std::string_view name);
