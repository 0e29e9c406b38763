// Reading the numbers of one element, and saying what is wrong and where.
//
// Numbers are decimal with a point, whatever the locale: whole ones by strtol
// (clamped to 32 bits), real ones by strtod, stored in single precision; what
// follows the digits is ignored and an empty text reads 0. A function that returns
// false has added the fatal problem to the reader; its output is then undefined.
#pragma once

#include "content/xml.h"
#include "model/reading.h"
#include "model/record_table.h"
#include "model/records.h"

#include <cstdint>
#include <cstring>
#include <string>

// A spot of the document as messages name it: a record, or a part of one. Parts
// point to what they are part of, so places live on the stack while they are used.
struct document_place {
    document_reader& reader;
    uint32_t section;            // number of the section, from 1
    const document_place* outer; // null: the record itself
    const char* name;            // "record", "object", "red"; null: the section itself
    uint32_t number;             // from 1; 0: the name stands alone
};

document_place place_of_section(document_reader& reader, uint32_t section);
document_place place_of_record(document_reader& reader, uint32_t section, uint32_t record);
document_place place_of_part(const document_place& outer, const char* name, uint32_t number = 0);

// Adds "Error: demo.xmlz: WHAT" or "Warning: demo.xmlz: WHAT". Warnings are counted, and the
// first 4096 kept.
void add_problem(document_reader& reader, bool fatal, const std::string& what);

// Adds "Error: demo.xmlz: section 13 (scenes), record 2, object 5: " and `what` as a
// fatal problem. Always false.
bool fail(const document_place& at, const std::string& what);

// Adds the same line as a warning, which begins with "Warning: ". A warning says what the
// document asks for and the show will not do, and what it does instead.
void warn(const document_place& at, const std::string& what);

// Warns of a number outside its catalogue: "WHAT N is outside 0..LAST: INSTEAD."
void warn_outside(const document_place& at, const char* what, int64_t number, int64_t last, const char* instead);

// Warns of "WHAT N" unless it is in the catalogue 0..last; true when it is.
bool check_choice(const document_place& at, const char* what, int64_t number, int64_t last, const char* instead);

// A text of the document between double quotes, as a terminal may show it, cut behind at
// most 64 bytes and a whole letter. Null is "".
std::string quoted(const char* text);

// Like printf, into a string of at most 255 bytes.
[[gnu::format(printf, 1, 2)]] std::string line_of(const char* format, ...);

// ---- numbers --------------------------------------------------------------------
//
// Numbers with something else behind their digits, without digits, beyond 32 bits or not
// finite are read all the same, and warned about.

// The attribute's text; null, and a fatal problem, when it is missing or without a value. Of
// several the first one counts, with a warning.
const char* read_attribute(const document_place& at, const xml_node& node, const char* attribute);

bool read_int(const document_place& at, const xml_node& node, const char* attribute, int32_t& value);
bool read_real(const document_place& at, const xml_node& node, const char* attribute, float& value);

// A whole number that refers to a record; negative ones become handles of nothing.
bool read_handle(const document_place& at, const xml_node& node, const char* attribute, uint32_t& handle);

// The element's own text as a number.
bool read_text_int(const document_place& at, const xml_node& node, int32_t& value);
bool read_text_real(const document_place& at, const xml_node& node, float& value);

// An animated element: a constant, or with `dynamic` a function's handle held as a float.
// Warns when there is no such function, 0 included, and of every type but "static" and "dynamic".
enum animated_rule {
    dynamic_if_named,     // only the type "dynamic" is
    dynamic_unless_static // every type but "static" is
};
bool read_animated(const document_place& at, const xml_node& node, animated_rule rule, animated_value& value);

// A dynamic value's handle, as the document writes it.
bool read_function_value(const document_place& at, const xml_node& node, float& value);

// A number of one byte: its low eight bits, with a warning when it has more. Whatever
// is asked about such a number is asked about its byte.
bool read_byte(const document_place& at, const xml_node& node, const char* attribute, uint8_t& value);

// `texture_format`, fatal outside 0..8, and `texture_filter`, a byte: above 2 it does what
// `above` says, with a warning.
bool read_format_and_filter(
    const document_place& at, const xml_node& node, const char* above, uint8_t& format, uint8_t& filter);

// ---- children -------------------------------------------------------------------

uint32_t count_children(const xml_node& node);

// Fatal when there are fewer children than `needed`.
bool need_children(const document_place& at, const xml_node& node, uint32_t needed);

inline bool is_named(const xml_node& node, const char* name)
{
    return node.name != nullptr && std::strcmp(node.name, name) == 0;
}

// Warns of children beyond the `read` ones.
void check_child_count(const document_place& at, const xml_node& node, uint32_t read);

// Warns when a kind, called `kind`, gets fewer than the `takes` parameters of its
// catalogue: those missing are 0.
void check_parameter_count(const document_place& at, const char* kind, uint32_t given, uint32_t takes);

// Copies at most size - 1 bytes, with a warning when there are more, and clears the rest.
// Null copies nothing.
void copy_name(const document_place& at, char* field, uint32_t size, const char* text);

// The handles in the leading children named "p" for the parameters of a kind; beyond
// `capacity` they are read and dropped. Warns of handles of functions that do not exist (0 is
// none), of fewer than the kind `takes`, and of those dropped.
struct parameter_list {
    const char* kind; // its name in the catalogue
    uint32_t takes;
    uint32_t capacity;
};
bool read_function_handles(
    const document_place& at, const xml_node& node, const parameter_list& parameters, uint32_t* handles);

// ---- references -----------------------------------------------------------------

// Warns "WHAT N does not exist.".
void warn_of_missing(const document_place& at, const char* what, uint32_t handle);

// The same, unless the handle is 0 or its record is there.
template <typename record_type>
void check_handle(const document_place& at, const table<record_type>& records, const char* what, uint32_t handle)
{
    if (handle != 0 && table_get(records, handle) == nullptr)
        warn_of_missing(at, what, handle);
}

// ---- records --------------------------------------------------------------------

// The fatal problem of a table that takes no more.
void fail_full_table(const document_place& at);

// A new cleared record whose handle goes into reader.handle; null, and a fatal problem,
// when the table is full.
template <typename record_type> record_type* add_record(const document_place& at, const table<record_type>& records)
{
    const uint32_t handle = table_add(records);
    if (handle == 0) {
        fail_full_table(at);
        return nullptr;
    }
    at.reader.handle = handle;
    return table_get(records, handle);
}
