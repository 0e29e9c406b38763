// The rules of element trees read a byte at a time, one state after another, with a block of
// memory for every node and string: what the reader's trees, and the second look at a text,
// are compared with.
#pragma once

#include "content/xml_fault.h"

#include <cstdint>

struct plain_attribute {
    char* name;
    char* value;
};

struct plain_node {
    char* name;
    plain_attribute* attributes;
    int32_t attribute_count;
    char* text;
    plain_node* next_sibling;
    plain_node* first_child;
    plain_node* parent;
};

// As xml_parse_bounded and xml_free.
plain_node* plain_parse(const char* text, uint32_t max_items);
void plain_free(plain_node* node);

// As xml_find_fault.
xml_fault plain_find_fault(const char* text);
