// A document under construction: its records before and after they get their numbers.
#pragma once

#include "authoring/problem.h"
#include "authoring/show/element.h"
#include "model/document.h"

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

struct authored_document {
    std::string entry; // "demo.xmlz"
    std::string title;
    std::string music; // name of the file; empty: none
    std::vector<std::unique_ptr<authored_record>> records;
    std::map<std::string, authored_record*> shared; // by section and element_key: records that equal ones become
    std::array<std::vector<authored_record*>, no_more_sections> sections; // in order, once they have numbers
};

// A new record of a section.
authored_record* add_authored(
    authored_document& document, document_section section, element content, const source_place& place);

// The record of equal content, or a new one.
authored_record* add_shared(
    authored_document& document, document_section section, element content, const source_place& place);

// Gives numbers. `keep_order`: every record, in the order in which they were made. Otherwise those that tracks
// lead to, by first use; the others stay out and keep the number 0.
void number_records(authored_document& document, bool keep_order);

// The whole text, after number_records.
std::string document_text(const authored_document& document);

// The source's place of a part of a document as findings name it: `part` and `inner` count from 1 (object 5 of a
// scene, clip 7 of a track); 0: the record itself.
source_place place_in_document(
    const authored_document& document, document_section section, uint32_t record, uint32_t part);
