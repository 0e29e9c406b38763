// A pack back into a show's folder: its source, and the files that it names.
//
// Pure: files are handed out, not written.
#pragma once

#include "authoring/open/open_document.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

struct pack_file;

struct opened_file {
    std::string name; // below the folder
    std::vector<uint8_t> bytes;
};

// How a document is written: records as they stand, or the whole of it as its text.
struct opening_rules {
    raw_records raw;
    bool as_text = false; // also where the document is none that can be opened
};

struct opened_show {
    std::vector<opened_file> files; // "show.lua" first
    std::string music;              // that the show names; empty: none
};

constexpr uint32_t opened_document_count = 2;
extern const char* const opened_documents[opened_document_count]; // "demo.xmlz", "loading.xmlz"

// Opens a pack: an entry that several have the name of is the first one. Damaged entries are left out, and told as
// lines in `notes`.
void open_pack(const pack_file* pack, const std::array<opening_rules, opened_document_count>& rules, opened_show& show,
    std::vector<std::string>& notes);
