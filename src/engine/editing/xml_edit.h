// Element trees for who makes documents: from a file, changed, and written back as text.
//
// Trees are those of content/xml.h and are owned and freed as there: what a change replaces
// keeps its memory until its tree is freed. Texts that are handed in are copied.
#pragma once

#include "content/xml.h"

#include <cstdint>

// Parses a whole file. Null when it cannot be read or is larger than 256 MiB.
xml_node* xml_load_file(const char* path);

// Replaces the value of the first attribute of that name, or appends a new one.
// `value` is copied and may be null (no value). The stored copy, or null.
char* xml_set_attribute(xml_node* node, const char* name, const char* value);
char* xml_set_attribute_u32(xml_node* node, const char* name, uint32_t value); // "%u"
char* xml_set_attribute_i32(xml_node* node, const char* name, int32_t value);  // "%d"
char* xml_set_attribute_f32(xml_node* node, const char* name, float value);    // "%f", cut at 31 bytes

// The top node of a new tree; `name` is copied and may be null.
xml_node* xml_new_node(const char* name);

// A new node behind the parent's last child; walks over the children.
xml_node* xml_add_child(xml_node* parent, const char* name);

// Replaces the text by a copy; null removes it.
void xml_set_text(xml_node* node, const char* text);
void xml_set_text_u32(xml_node* node, uint32_t value);      // "%u"
void xml_set_text_f32(xml_node* node, float value);         // "%f", cut at 31 bytes
void xml_set_text_f32_precise(xml_node* node, float value); // "%.12f", cut at 31 bytes

// The text of the node and its subtree in a new zero-terminated block (free() it),
// two blanks per level, nothing escaped. An element with text is written without
// its children. Every piece goes through buffer_printf and is cut at 4095 bytes,
// an element's text together with its closing tag being one piece. A nameless
// node is written as "<", and ends with "/>" or "</>". Null for null, and when the
// text would pass text_buffer_max_capacity or memory runs out.
char* xml_write(const xml_node* node);
