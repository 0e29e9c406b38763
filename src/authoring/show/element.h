// The text of a document under construction: elements whose values may be the numbers that other records
// will get.
//
// Names and texts have no entities to hide behind: what a text may not hold is for element_text_fault to say.
#pragma once

#include "authoring/problem.h"
#include "model/document.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

struct authored_record;

// A text, or the number of a record, which is known when all records are.
struct element_value {
    std::string text;
    const authored_record* link = nullptr; // its number is written, and `text` is not used
    int32_t shift = 0;                     // added to that number
};

struct element_attribute {
    std::string name;
    element_value value;
};

struct element {
    std::string name;
    std::vector<element_attribute> attributes = {};
    std::optional<element_value> text = {}; // then there are no children
    std::vector<element> children = {};
    source_place place = {}; // of a part that stands elsewhere than its record; no file: the record's own
};

// One record. Others name it by its address, which stays.
struct authored_record {
    document_section section;
    element content;
    source_place place;  // where the source made it
    std::string name;    // what the source calls it; may be empty
    uint32_t id = 0;     // from 1, in the order in which records were made
    uint32_t number = 0; // in its section, from 1; 0: it has none yet
    bool is_raw = false; // written by the source as it stands
};

// The shortest text that reads back as the same number in single precision: "0.1", "1e-07", "-0". Not-a-number
// and numbers beyond single precision have none: "0".
std::string number_text(double value);

element_value value_of(const std::string& text);
element_value value_of(double number);
element_value value_of_int(int64_t number);
element_value value_of(const authored_record* link); // null: "0"

// Appends an attribute, a child, a child with a text, and returns what was made.
element& add_child(element& parent, const std::string& name);
element& add_text(element& parent, const std::string& name, element_value value);
void add_attribute(element& node, const std::string& name, element_value value);

// <name value="..."/>
element& add_setting(element& parent, const std::string& name, element_value value);

// Why a text may not stand in an attribute ('"', "/>") or an element ("<", "/>"), to be put behind what it is:
// "has a \" in it, which ends it". Empty when it may.
std::string attribute_fault(const std::string& text);
std::string text_fault(const std::string& text);

// Appends the element as lines, two blanks a level. Links are written as their numbers.
void write_element(const element& node, uint32_t depth, std::string& out);

// The same in one line, with links told apart by their records, for comparing before there are numbers.
std::string element_key(const element& node);
