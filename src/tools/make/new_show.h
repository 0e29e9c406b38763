// The files of a new show: those of share/brimlow/new and a font, laid whole into the program.
#pragma once

#include <cstdint>
#include <span>

struct new_show_file {
    const char* name; // below the show's folder: "show.lua", ".brimlow/words.lua"
    std::span<const uint8_t> bytes;
};

std::span<const new_show_file> new_show_files();
