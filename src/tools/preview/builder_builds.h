// Builds for the preview: a source, or a pack as it is, becomes a show_build.
//
// Called in the process that builds (builder.h). Files are read, none is written.
#pragma once

#include "tools/preview/show_build.h"

#include <string>
#include <vector>

struct build_memory;

struct build_wish {
    std::string folder; // of the show, without "/" at its end
    std::string file;   // of it: the source, or the pack
    std::vector<tried_value> tries = {};
    bool from_source = true; // otherwise `file` is a pack
};

// What is asked for; its number is the caller's. `kept` is handed from one build to the next, so that these cost
// little; null: nothing is kept. The pack is not compressed: nobody keeps it.
show_build build_of_wish(const build_wish& wish, build_memory* kept = nullptr);

// A pack as a build of its own: read as it is, with what check finds. One that cannot be read, or is none, gives a
// build that cannot be played and says why.
show_build build_of_pack(const std::string& path, build_memory* kept = nullptr);
