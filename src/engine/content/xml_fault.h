// What a text probably means and the reader of content/xml.h, which never fails, takes
// otherwise. For documents that turned out to be wrong: a second look, by the same rules,
// that compares the names of the tags and counts the lines.
#pragma once

#include <cstdint>
#include <string>

enum xml_fault_kind : uint32_t {
    xml_no_fault,
    xml_unclosed_element,  // its closing tag is lost
    xml_stray_closing_tag, // closes an element that it was not meant for
    xml_unquoted_value,    // an attribute without double quotes
    xml_cut_value,         // a value with ">" or "/>" in it, which ends the tag
    xml_cut_comment,       // a comment with "/>" in it, which ends the element around it
    xml_unfinished_comment
};

struct xml_fault {
    xml_fault_kind kind;
    uint32_t line;    // from 1, where the element, tag, attribute or comment begins
    std::string name; // of the element, the tag or the attribute
};

// The fault to mend first; xml_no_fault when the tags match. Closing tags of another name
// are no fault where all elements are closed in the end. Gives up, without a fault, beyond
// 2^20 elements and attributes.
xml_fault xml_find_fault(const char* text);
