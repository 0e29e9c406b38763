// What became of building a show: a pack to be played, or what is wrong, and where in the source everything comes
// from. It travels from the process that builds to the one that shows, as bytes.
//
// Pure.
#pragma once

#include "authoring/problem.h"
#include "model/document.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

// Where a record of demo.xmlz, or a part of it, comes from: object 5 of a scene, clip 7 of a track.
struct source_mark {
    uint32_t section = 0; // document_section
    uint32_t record = 0;  // its number, from 1
    uint32_t part = 0;    // from 1; 0: the record itself
    source_place place;
    std::string name; // what the source calls it; may be empty
};

// A number that is tried by hand: x = try(0.35, 0, 1).
struct tried_number {
    std::string file;   // below the show's folder
    uint32_t line = 0;  // from 1
    uint32_t site = 0;  // which try of its file, from 0
    std::string label;  // what the source calls it: "x"
    double written = 0; // as the file has it
    double value = 0;   // that the build took
    double least = 0;
    double most = 1;
    bool can_write = false; // the file has a plain number there
    double step = 0;        // by which its slider goes
};

// A value that is tried in the place of the one that the file has.
struct tried_value {
    std::string file;
    uint32_t site = 0;
    double written = 0; // what the file had when it was chosen: another number there counts again
    double value = 0;
};

struct show_build {
    uint64_t number = 0;            // of the request
    bool can_play = false;          // `pack` is there
    std::string folder;             // of the show, no "/" at its end
    std::string file;               // of the source, below the folder; or of the pack
    bool from_source = false;       // otherwise it is a pack that was read as it is
    std::vector<uint8_t> pack;      // its bytes
    problem_list problems;          // also warnings and notes
    std::vector<std::string> files; // that it took or looked for, below the folder: whose changes count
    std::string music;              // path of its file; empty: none
    std::string title;
    double bpm = 0; // 0: not known
    double beats_per_bar = 4;
    std::vector<source_mark> marks; // ascending by section, record and part (marks_are_ordered)
    std::vector<tried_number> tries;
    std::vector<std::string> printed; // lines that the source printed
    double seconds = 0;               // that building took
};

// Whether a build may have these: then they are found among thousands at once.
bool marks_are_ordered(std::span<const source_mark> marks);

// The place of a record or of a part of it; the record's own where the part has none.
source_place place_of_mark(const show_build& build, uint32_t section, uint32_t record, uint32_t part);
// What the source calls it; empty: nothing.
std::string name_of_mark(const show_build& build, uint32_t section, uint32_t record, uint32_t part);

// As bytes, and back. Nothing for bytes that are not a whole one.
std::vector<uint8_t> encode_build(const show_build& build);
std::optional<show_build> decode_build(std::span<const uint8_t> bytes);
