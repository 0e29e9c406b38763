// What two shows differ in: their packs entry by entry, their documents record by record.
//
// Documents are compared as the player reads them, and references by what they lead to: a record that was put in
// front of others is one difference, and so is a function that a hundred materials follow.
#pragma once

#include "authoring/check/read_documents.h"

#include <cstdint>
#include <string>
#include <vector>

enum change_kind : uint8_t { change_added, change_removed, change_changed, change_moved };

struct field_change {
    std::string field;
    std::string before; // "2", "2 (now 3)" where that record has another number now; empty: there was none
    std::string after;  // empty: there is none
};

// A segment, glyph, object or clip.
struct part_change {
    change_kind kind;
    std::string name; // "object"
    uint32_t before;  // its number, from 1; 0: none
    uint32_t after;
    std::vector<field_change> fields; // of changed and moved ones
};

struct record_change {
    change_kind kind;
    uint32_t section;
    uint32_t before; // its number, from 1; 0: none
    uint32_t after;
    std::string label; // what the document calls it, a name or a file; may be empty
    std::vector<field_change> fields;
    std::vector<part_change> parts;
};

struct document_change {
    std::string name; // "demo.xmlz"
    change_kind kind;
    std::string problem; // why it could not be read whole, which comes first; empty: it could
    std::vector<record_change> records;
};

struct entry_change {
    change_kind kind;
    std::string name;
    uint32_t size_before; // bytes
    uint32_t size_after;
};

struct pack_difference {
    std::vector<entry_change> entries; // without the two documents, in the order of the names
    std::vector<document_change> documents;
};

// Documents whose bytes are equal are not read. A null pack is an empty one.
pack_difference diff_packs(const pack_file* before, const pack_file* after);

// The records of two documents that differ, in the order of the sections.
std::vector<record_change> diff_documents(const read_document& before, const read_document& after);

bool is_without_difference(const pack_difference& difference);

// One line for each difference, and one for each field of it; empty: none.
std::string difference_text(const pack_difference& difference);

// One object: {"equal": false, "entries": [...], "documents": [...]}, with a newline.
std::string difference_json(const pack_difference& difference);

// Whether both were read to the very same records, in the same order, with the same numbers in every field, and with
// the same warnings. If not, `why` says where first.
bool documents_equal(const read_document& a, const read_document& b, std::string& why);
