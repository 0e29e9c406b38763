// What element trees are built of: for the reader, and for editing, which changes trees.
#pragma once

#include "content/xml.h"

// A detached node in which everything is empty; null without memory.
xml_node* xml_new_empty_node();

// The first attribute of that name, with a value or without; null when there is none.
xml_attribute* xml_find_attribute(const xml_node* node, const char* name);

// Appends an attribute that takes over `name` and has no value yet; null without memory.
xml_attribute* xml_append_attribute(xml_node* node, char* name);

// Puts a detached node behind the parent's last child, null: as its first one.
void xml_append_child(xml_node* parent, xml_node* last_child, xml_node* child);
