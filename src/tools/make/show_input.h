// A show that a command looks at: a pack, or a source, which is built in memory.
#pragma once

#include "authoring/show/show.h"
#include "content/pack.h"

#include <cstdint>
#include <string>
#include <vector>

struct show_source {
    std::string folder; // ends in "/"; empty: the working directory
    std::string file;   // of it
};

// The source that a path means, a folder's show.lua or the file itself; false with a line.
bool take_source(const std::string& path, show_source& source);

// Runs a source and makes what it describes. What it prints goes to standard output, or, where that is for JSON, to
// standard error.
void build(const show_source& source, bool json, built_show& built);

struct show_input {
    bool is_source = false;
    show_source source;         // of one
    built_show built;           // of one, with its problems; with errors among them there is no pack
    std::vector<uint8_t> bytes; // of its pack
    owned_pack pack;
};

// Opens a pack, or builds a source: a folder, or a file that ends in ".lua". False with a line where there is
// neither; true with errors of a source, which are the caller's to tell.
bool open_show(const std::string& path, bool json, show_input& show);

// The same for those who need the pack: errors of a source are told, and false.
bool open_whole_show(const std::string& path, show_input& show);
