// A document that is being read: where the reading stands, and what was found wrong.
//
// The reading moves on in document_reader; those who read elements look here, and add
// problems. Problems are whole lines of text: a fatal one ends the reading, a warning does not.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

struct decode_ahead;
struct document;
struct pack_file;
struct record_handover;
struct xml_node;

// A part of a record, or of another part: object 5, manipulator 2, visibility.
struct document_part {
    std::string name;
    uint32_t number; // from 1; 0: the name stands alone

    bool operator==(const document_part&) const = default;
};

// The line says all; where it is about stands beside it for those who tell it otherwise.
struct document_problem {
    bool fatal;
    std::string text;                 // a whole line: "Error: demo.xmlz: section 13 (scenes), record 2, ..."
    size_t place_length;              // of `text`: bytes in front of what is wrong
    uint32_t section;                 // 0: the document as a whole
    uint32_t record;                  // from 1; 0: the section as a whole
    std::vector<document_part> parts; // of the record, from the outermost in
};

// What the meshes and pictures of one document may unfold to: an entry can be named by
// many records, and a small one can unfold to much.
constexpr uint64_t max_unfolded_bytes = uint64_t{2} << 30;

// Where the reading stands. Starts with document_reader_begin.
struct document_reader {
    document* target;
    const xml_node* section_node; // the section under way, null at the end
    const xml_node* record_node;  // the record to read next
    const pack_file* pack;        // where entries come from; not owned, may be null
    decode_ahead* ahead;          // what unpacks entries beforehand; not owned, null: nobody does
    record_handover* handover;    // what meshes and pictures may be taken from, undecoded; not owned, null: nothing
    uint32_t section;             // number of the section under way, from 1
    uint32_t record;              // number of the record read last, from 1
    uint32_t handle;              // its handle (for section 14: its track number + 1), 0: none was made
    bool section_finished;        // the step ended a section instead of reading a record
    uint32_t layer_start;         // running position of the track under way, ticks
    uint64_t unfolded_bytes;      // decoded meshes and pictures so far
    uint32_t warning_count;       // all warnings; `problems` keeps the first 4096 of them
    std::vector<document_problem> problems;
};
