// A finding: what is wrong with a part of a document, or may be.
#pragma once

#include "authoring/problem.h"
#include "model/reading.h"

#include <cstdint>
#include <string>
#include <vector>

struct document_finding {
    problem_severity severity;
    std::string document;             // "demo.xmlz"; empty: the pack itself
    uint32_t section;                 // document_section; 0: the document as a whole
    uint32_t record;                  // from 1; 0: the section as a whole
    std::vector<document_part> parts; // of the record, from the outermost in: object 5, manipulator 2
    std::string text;                 // what is wrong, without its place; ends with a full stop
};

using finding_list = std::vector<document_finding>;

// What is known of the file that a show's music element names: whoever can listen to it fills this in.
struct music_facts {
    bool looked_for; // false: nothing is said of the music
    bool found;      // beside the pack, or in its folder "music"
    bool is_vorbis;  // the player plays it
    double seconds;  // its length
};
