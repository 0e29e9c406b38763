// What element trees are built of: for the reader, and for editing, which changes trees.
//
// All that a tree is made of, its nodes, attributes and strings, lies in blocks of memory
// that belong to its top node and are freed together with it. Nothing is freed before: what
// is replaced stays there until then.
#pragma once

#include <cstddef>
#include <cstdint>

struct xml_attribute {
    char* name;
    char* value; // null: the text ended the tag before the value did
};

struct xml_memory;

struct xml_node {
    char* name;                 // null for the root, and for a tag that the text breaks off before its name
    xml_attribute* attributes;  // in document order, duplicates kept; append through xml_append_attribute only
    int32_t attribute_count;    //
    int32_t attribute_capacity; // of `attributes`
    char* text;                 // null: none. Only elements without child elements have text
    xml_node* next_sibling;     // null: the last
    xml_node* first_child;      // null: none
    xml_node* parent;           // null for the top node
    xml_memory* memory;         // of the whole tree
};

// A tree of one node in which everything is empty; null without memory. `room`: bytes that
// can be taken next without another block.
xml_node* xml_new_tree(size_t room);

// Memory of the tree that `node` belongs to, aligned for all that a tree is made of; null
// without memory.
void* xml_take(xml_node* node, size_t bytes);

// A copy of `length` bytes in the tree's memory, with a zero behind them; null without memory.
char* xml_take_copy(xml_node* node, const char* bytes, size_t length);

// A node in which everything is empty, behind the parent's last child, null: as its first
// one; null without memory.
xml_node* xml_new_child(xml_node* parent, xml_node* last_child);

// The first attribute of that name, with a value or without; null when there is none.
xml_attribute* xml_find_attribute(const xml_node* node, const char* name);

// Appends an attribute without a value; `name` lies in the tree's memory. Null without memory.
xml_attribute* xml_append_attribute(xml_node* node, char* name);

// Frees the tree whose top node this is.
void xml_free_tree(xml_node* top);
