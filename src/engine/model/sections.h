// The sections of a document, each listed once: its number, its name, and who reads it.
//
// A new section is a number in document_section and a row here; what is then still missing
// (the table of its records, what they own, what is made of them) does not compile.
#pragma once

#include "model/document.h"

struct document_reader;
struct document_place;

struct section_row {
    document_section number;
    const char* name;                                                 // in messages
    bool is_progress;                                                 // reading a record moves the loading screen on
    bool (*read_one)(const document_place& at, const xml_node& node); // false after a fatal problem
    void (*finish)(document_reader& reader); // after the last record; null: nothing is left to do
};

// The row of a section; null for numbers that are none.
const section_row* find_section(uint32_t number);
