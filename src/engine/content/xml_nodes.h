// What element trees are built of: for the reader, and for editing, which changes trees.
#pragma once

#include <cstdint>

struct xml_attribute {
    char* name;  // owned
    char* value; // owned; null: the text ended the tag before the value did
};

struct xml_node {
    char* name;                // owned; null for the root, and for a tag that the text breaks off before its name
    xml_attribute* attributes; // owned, in document order, duplicates kept; append through xml_append_attribute only
    int32_t attribute_count;
    char* text;             // owned; null: none. Only elements without child elements have text
    xml_node* next_sibling; // owned by the parent; null: the last
    xml_node* first_child;  // owned; null: none
    xml_node* parent;       // null for the root and for detached nodes
};

// A detached node in which everything is empty; null without memory.
xml_node* xml_new_empty_node();

// The first attribute of that name, with a value or without; null when there is none.
xml_attribute* xml_find_attribute(const xml_node* node, const char* name);

// Appends an attribute that takes over `name` and has no value yet; null without memory.
xml_attribute* xml_append_attribute(xml_node* node, char* name);

// Puts a detached node behind the parent's last child, null: as its first one.
void xml_append_child(xml_node* parent, xml_node* last_child, xml_node* child);
