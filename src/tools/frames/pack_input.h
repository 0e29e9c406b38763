// The pack of a run, as the command line names it: a file, a folder that has one, or
// standard input.
//
// A pipe is never waited for, but for standard input. The player does not look at a pack's
// first bytes, so a pack with others is taken as long as it holds a document.
#pragma once

#include <string>

struct pack_file;

struct production_files {
    std::string pack;   // path, or "standard input"
    std::string folder; // of the pack, with its last "/"; empty: the working directory
    std::string music;  // path of the music; empty: none
    std::string name;   // what the production is called: the pack's name, or for demo.dpk its folder's
};

// Opens what `name` names into `files`: empty: the first pack of the working directory, as
// the player takes it; a folder: its first pack; "-": what comes from standard input, kept
// in a file without a name. The caller closes. Null with one sentence in `problem`: there
// is none, it cannot be opened, or it is no pack.
[[nodiscard]] pack_file* open_pack_input(const std::string& name, production_files& files, std::string& problem);

// Whether a pack has an entry of that name.
bool pack_has_entry(const pack_file* pack, const char* name);
