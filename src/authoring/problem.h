// What is wrong with a show, or may be, and where: one line each.
//
// Found while a source is run, while its files are read, and while its documents are looked over; told
// by brimlow-make and the preview as "show.lua:12: error: ..." or, for a pack that has no source,
// "demo.xmlz: section 11 (materials), record 4: warning: ...".
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Where something stands in a source.
struct source_place {
    std::string file = {}; // below the show's folder; empty: none is known
    uint32_t line = 0;     // from 1; 0: none is known
};

enum problem_severity : uint8_t {
    problem_error,   // the player refuses it, or nothing can be built
    problem_warning, // the player does something else than was written
    problem_note     // allowed, and probably not meant
};

struct show_problem {
    problem_severity severity;
    std::string file;  // of the source, below its folder; or the document, "demo.xmlz"
    uint32_t line;     // from 1; 0: none is known
    std::string where; // of a document: "section 11 (materials), record 4"; empty: none
    std::string text;  // what is wrong and what to write instead, without its place; one line, ends with a full stop
};

using problem_list = std::vector<show_problem>;
