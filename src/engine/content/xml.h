// Element trees: a small permissive XML reader, and queries. They are changed and written by
// editing/xml_edit.
//
// The reader knows no entities, no namespaces, no validation and no errors: every
// text gives some tree. A node owns its strings, its attributes and everything
// below it; free a tree by its top node with xml_free. Trees may be as deep as
// memory allows: nothing here recurses.
#pragma once

#include "content/xml_nodes.h"

#include <cstdint>
#include <memory>
#include <string>

// Elements and attributes that one text may hold; behind them it counts as ended.
// Bounds what a small but hostile entry can make the reader allocate.
constexpr uint32_t xml_max_items = 1u << 23;

// The unnamed root of a new tree; its first_child is the document element. Linear
// in the length of `text`, which is not kept. Null only when there is no memory
// for the root; where memory runs out later the text counts as ended there.
//
// What the reader does, where one might not expect it (each is part of the format
// and pinned by a test in tests/content/test_xml.cpp):
// - a closing tag closes the current element, whatever its name says; at the root
//   it changes nothing, and an element opened there becomes the root's last child;
// - text is kept only for elements without child elements, verbatim; empty text is
//   null; a comment inside it stays part of it, an instruction ("<?...?>") cuts
//   off what stood before; "<!" that opens no comment is text;
// - "/>" ends the element wherever it stands: in quoted values, text and comments;
// - ">" ends the tag even inside a quoted value, whose attribute stays without one;
// - an attribute's name is everything before its "=", blanks included; only double
//   quotes delimit values.
xml_node* xml_parse(const char* text);

// The same with another bound in place of xml_max_items.
xml_node* xml_parse_bounded(const char* text, uint32_t max_items);

// What a text probably means and the reader, which never fails, takes otherwise. For
// documents that turned out to be wrong: a second look, by the same rules, that compares
// the names of the tags and counts the lines.
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

// The value of the first attribute of that name (case-sensitive); null when there
// is none, it has no value, or `node` is null. Valid until the attribute is set.
const char* xml_get_attribute(const xml_node* node, const char* name);

// Frees the node, its strings and attributes, and every descendant; its siblings
// and the link that leads to it stay. Null does nothing.
void xml_free(xml_node* node);

// A tree that is freed at the end of its scope.
struct free_tree {
    void operator()(xml_node* root) const
    {
        xml_free(root);
    }
};
using owned_tree = std::unique_ptr<xml_node, free_tree>;
