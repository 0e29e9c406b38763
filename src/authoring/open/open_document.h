// A document back into source: what a show's author could have written to get it.
//
// The source keeps the order of records (show { keep_order = true }), so building it gives the same document: every
// record with its number. A record that no word can say is written as it stands (raw), and so may any other be.
// Pure.
#pragma once

#include "content/xml.h"
#include "model/document.h"

#include <cstdint>
#include <set>
#include <string>
#include <utility>

// Records that are to be written as they stand: section and number.
using raw_records = std::set<std::pair<uint32_t, uint32_t>>;

// The Lua text of a document without its show { } and without loading(): each record a statement, by sections.
// `root` is the root of a tree that the player reads. Lines begin with `indent`.
std::string open_document(const xml_node& root, const raw_records& raw, const std::string& indent);

// Whether a tree has what a document needs to be opened record by record: a document element with fourteen sections.
bool can_be_opened(const xml_node& root);
