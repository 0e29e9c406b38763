// Elements as they stand: for whoever knows the documents.
#pragma once

#include "authoring/show/element.h"
#include "content/xml.h"
#include "model/document.h"

#include <string>

// What the sections' elements are called in documents that are written here ("materials"), by number.
extern const char* const section_elements[no_more_sections];

// Reads one element of the section called `name`. Empty, or what is wrong: a whole sentence.
std::string raw_element(const std::string& name, const std::string& text, document_section& section, element& content);

// An element of a tree, its children with it.
element element_of(const xml_node& node);
