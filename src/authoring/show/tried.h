// Numbers of a source that are tried by hand, x = try(0.35, 0, 1): what a build is asked to take in their place, and
// what it found.
//
// A call is known by its file and its place among those of the file's text (lua/tries.h).
#pragma once

#include <cstdint>
#include <string>

// A value in the place of the one that the source has.
struct try_override {
    std::string file;   // below the show's folder
    uint32_t site = 0;  // which of its file's calls, from 0
    double written = 0; // what the source had there when the value was chosen; another number there counts again
    double value = 0;
};

// A call that was made.
struct tried_call {
    std::string file;
    uint32_t line = 0; // from 1
    uint32_t site = 0;
    std::string label;  // what its value is for: "x"; may be empty
    double written = 0; // what the source has; of a call that is made several times and computes it, the first time
    double value = 0;   // what the build took
    double least = 0;
    double most = 1;
    double step = 0;        // by which its slider goes
    bool can_write = false; // the number stands in the source as such
};
