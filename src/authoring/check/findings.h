// What is wrong with a show's documents, or may be: all of it in one run.
//
// Findings come from two sources. The first is the player's own reading: what it refuses is an error, what it
// warns of a warning. The second looks for what it reads without a word: what it quietly does otherwise is a
// warning, what only costs the author an evening a note. The second keeps to what is right nearly always.
#pragma once

#include "authoring/check/finding.h"
#include "authoring/check/read_documents.h"
#include "authoring/problem.h"
#include "content/xml.h"

#include <cstdint>
#include <string>
#include <vector>

// What whoever checks a show again and again owns, and hands to each check: as it stands it belongs to the check
// before.
struct known_documents {
    known_document loading;
    known_document show;
};

// Both documents of a pack, and the pack: entries that nobody names, names that stand twice. In the order
// loading.xmlz, demo.xmlz, the pack; a document's findings are ordered by section and record.
// What is `known` of the pack before costs less; null: nothing is.
finding_list check_documents(const pack_file* pack, const music_facts& music = {}, known_documents* known = nullptr);

// One document as a tree, called "demo.xmlz" or "loading.xmlz"; its entries come from `pack`, which may be null.
finding_list check_tree(const char* name, const xml_node* root, const pack_file* pack, const music_facts& music = {});

// The file that the show's music element names; empty: none, or no such document.
std::string music_file_of(const pack_file* pack);

// Where a finding's record, or the part of it, stands in a source: sets both and says true, or leaves them.
using find_source_line
    = bool (*)(const void* context, const document_finding& finding, std::string& file, uint32_t& line);

// Findings as everyone tells them. Where `find_line` knows the source's line, that is the place; else it is the
// document's: file "demo.xmlz", where "section 13 (scenes), record 2, object 5".
problem_list findings_as_problems(
    const finding_list& findings, find_source_line find_line = nullptr, const void* context = nullptr);
