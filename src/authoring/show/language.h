// The words of the language as they are called: what stands in brackets, what comes back, and where an example is.
// The fields of their tables are the kinds' own (kinds.h).
//
// From both tables the reference (docs/language.md) and the annotations for editors (share/brimlow/library/
// annotations.lua) are written.
#pragma once

#include "authoring/show/kinds.h"

// A parameter in brackets, or a field of a word that the library makes of others.
struct parameter_row {
    const char* name;
    const char* type; // as annotations have it: "number", "moving", "time", "curve"; a "?" behind it: may be left out
    const char* help;
};

// What names a word's further fields.
enum field_catalogue : uint8_t {
    no_catalogue,
    generator_catalogue,
    dynamic_catalogue,
    effect_catalogue,
    manipulator_catalogue,
};

struct word_row {
    const char* name;                               // "linear"; "curve:at" is what a curve can do
    const char* call;                               // how it is written
    const char* help;                               // one to three sentences
    const char* example;                            // the folder in productions/examples
    const char* gives;                              // the class of what comes back; "": nothing
    std::span<const parameter_row> parameters = {}; // before the table of fields
    kind_id fields = kind_count;                    // of the table; kind_count: it takes none
    std::span<const parameter_row> own_fields = {}; // of the library's words
    field_catalogue catalogue = no_catalogue;       // names further fields, of each of its entries
    uint8_t entry = 0;                              // the manipulator that the word is
    const char* list = nullptr;                     // the class of what the table lists beside its fields; null: none
};

std::span<const word_row> language_words();

// What fields take: a few words for a reader, and the type for an editor.
std::string field_takes(const field_row& field);
std::string field_annotation(const field_row& field);
