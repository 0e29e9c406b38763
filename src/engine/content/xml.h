// Element trees: a small permissive XML reader, and queries. They are changed and written by
// editing/xml_edit.
//
// The reader knows no entities, no namespaces, no validation and no errors: every
// text gives some tree. Everything of a tree lies in memory that belongs to its top
// node and is freed with that; see content/xml_nodes.h. Trees may be as deep as
// memory allows: nothing here recurses. Where a text probably means something else
// than the reader takes it for, content/xml_fault.h finds out.
#pragma once

#include "content/xml_nodes.h"

#include <cstdint>
#include <memory>

// Elements and attributes that one text may hold; behind them it counts as ended.
// Bounds what a small but hostile entry can make the reader allocate.
constexpr uint32_t xml_max_items = 1u << 23;

// The unnamed root of a new tree; its first_child is the document element. Linear
// in the length of `text`, which is not kept. Null only when there is no memory
// for the root and a copy of the text; where memory runs out later the text counts
// as ended there.
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

// The value of the first attribute of that name (case-sensitive); null when there
// is none, it has no value, or `node` is null. Valid until the attribute is set.
const char* xml_get_attribute(const xml_node* node, const char* name);

// Frees the tree whose top node this is: what xml_parse and its like gave. Null does
// nothing, nor does a node below the top, which is freed with its tree.
void xml_free(xml_node* node);

// A tree that is freed at the end of its scope.
struct free_tree {
    void operator()(xml_node* root) const
    {
        xml_free(root);
    }
};
using owned_tree = std::unique_ptr<xml_node, free_tree>;
