// A show's source becomes a pack: the whole way, in memory.
#pragma once

#include "authoring/check/findings.h"
#include "authoring/show/show.h"

#include <span>
#include <string>

// What whoever builds a show again and again owns, and hands to each build, so that it costs little. Builds are the
// same with and without.
struct build_memory {
    kept_work files;
    known_documents documents;
};

struct build_request {
    std::string folder;                                    // of the show
    std::string file;                                      // of it: "show.lua"
    void (*print)(void* user, const char* line) = nullptr; // takes what the source prints; null: dropped
    void* user = nullptr;
    std::span<const try_override> tries = {}; // values in the place of numbers that the source has
    build_memory* kept = nullptr; // from one build to the next; null: nothing is
    int compression = 9;       // of documents and meshes: 0 (none) to 9, for packs that nobody keeps
};

// Runs the source and makes the documents and entries of what it describes. What is wrong is in `built.problems`,
// in the order of the source's files and lines; with an error among them there is nothing to be played.
void build_source(const build_request& request, built_show& built);

// The source that a path means: a folder's show.lua, or the file itself. False: neither is there.
bool find_source(const std::string& path, std::string& folder, std::string& file);
