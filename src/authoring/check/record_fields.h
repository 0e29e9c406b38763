// The records of a document as lists of named texts, so that they can be compared and told.
//
// A field holds all that was read: numbers as the shortest text that reads back as the same bits, bytes of meshes
// and pictures as their number and a hash. Names are those of the documents and catalogues.
#pragma once

#include "authoring/check/read_documents.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

struct record_field {
    std::string name;
    std::string value; // as it was read: "0.5", "function 3", "12"
    uint32_t section;  // of the record that the value leads to; 0: it is no reference, or one that leads nowhere
    uint32_t record;   // in that section, from 1
};

using field_list = std::vector<record_field>;

struct record_fields {
    field_list fields;     // as many for each record of a section, but for lists of outputs
    const char* part_name; // "segment", "glyph", "object", "clip"; null: the records of this section have no parts
    std::vector<field_list> parts; // in their order
};

// FNV-1a, 64 bits: two blocks that differ have other numbers but once in ten million million million.
uint64_t hash_of_bytes(const void* data, size_t size);

// How many records a section has; of the timeline its tracks, as many as are read. The music is one record.
uint32_t record_count(const read_document& read, uint32_t section);

// The fields of a record, from 1 to record_count.
record_fields fields_of_record(const read_document& read, uint32_t section, uint32_t record);
