// The command line of brimlow-make, as a record.
//
// Pure: nothing is opened here. Every misuse is one sentence.
#pragma once

#include "command_table.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

// A file that goes into a pack.
struct make_source {
    std::string directory; // ends in "/", or is empty
    std::string name;      // of the file behind that, and of the entry
};

struct make_options {
    make_command command = command_count;
    bool help = false; // of the command, or of the program
    bool version = false;
    bool force = false;             // files that exist are replaced
    bool json = false;              // told as JSON
    bool textures = false;          // graph: only what textures are made of
    double bpm = 0;                 // inspect, of the drawing: beats a minute; 0: not known
    uint32_t beats_per_bar = 4;     // the same
    double first_beat = 0;          // the same: seconds
    std::string other;              // diff: the show to compare with
    std::string input;              // the pack; the file that wrap and unwrap read; the folder of a new show; a source
    std::string output;             // what is written: the pack; the file of wrap and unwrap; empty: a default
    std::string prefix;             // extract: what stands in front of every name: the folder, and --prefix
    std::vector<std::string> names; // extract, remove, inspect: entries; none: all, or the file itself
    std::vector<make_source> sources; // add, create
};

// Reads the arguments behind the program's name. False: `problem` holds one sentence
// without its full stop; of `options` only the command is then to be used, for the hint.
bool read_options(std::span<const char* const> arguments, make_options& options, std::string& problem);
