// The documents of a show as the player reads them, for those who look them over.
//
// Reading goes on behind a record that the player refuses, so that one run finds all that is wrong: what is
// left of such a record stays in its table, and the handles of the others are right. No OpenGL object is made.
#pragma once

#include "content/xml.h"
#include "model/document.h"
#include "model/reading.h"
#include "model/record_handover.h"

#include <cstdint>
#include <memory>
#include <vector>

constexpr const char* show_document_name = "demo.xmlz";
constexpr const char* loading_document_name = "loading.xmlz";

struct read_document {
    document d;
    owned_tree tree;                        // null: the caller's, or there is none
    const xml_node* root;                   // the tree that was read; null: none
    bool present;                           // there is such a document, whole or not
    uint32_t errors;                        // problems that the player ends with
    std::vector<document_problem> problems; // in the order of the text; those at most 4096 that are warnings
    uint32_t warning_count;                 // all warnings
};

struct free_read_document {
    void operator()(read_document* document) const;
};
using owned_read_document = std::unique_ptr<read_document, free_read_document>;

// Reads the document below `root`, which has to outlive the result, as `name` (one of the two above): entries
// come from `pack`, which may be null. Never null.
owned_read_document read_document_tree(const char* name, const xml_node* root, const pack_file* pack);

// A document that was read before, and how: whoever reads a show again and again need not decode the same pictures each
// time. Empty: there was none.
struct known_document {
    owned_read_document read; // without its tree; what a later one took is gone from it
    record_handover made_with;
};

// The same of the entry `name` of a pack. `present` is false where there is none; one that is damaged is a
// problem of the document as a whole. Meshes and pictures of equal bytes are taken out of `known`, which may be null;
// the result is the same. Then know_document is to be called before the next time.
owned_read_document read_packed_document(const char* name, const pack_file* pack, known_document* known = nullptr);

// Hands a document that read_packed_document has given, and nobody needs any more, to the next reading. One with errors
// is not kept, as a record may be half of one.
void know_document(known_document& known, owned_read_document document);

// Whether a problem ends the reading at this record.
bool has_error(const read_document& document, uint32_t section, uint32_t record);
