// The reading of a document from its element tree, one record at a time.
//
// Reading fills records from elements and checks them; it makes no OpenGL object. Whoever
// drives it (the loading sequence, a tool) takes one record after the other, makes what the
// record needs, and goes on. Problems are collected in the reader.
#pragma once

#include "model/document.h"
#include "model/reading.h"

#include <cstdint>

enum read_step : uint32_t {
    read_record,      // `record` of `section` was read into `handle`
    read_section_end, // all records of `section` were read
    read_done,        // nothing is left
    read_failed       // the last problem is fatal
};

// Prepares to read the document below `root` (the unnamed root of the tree) into
// `target`, which document_create has prepared.
void document_reader_begin(document_reader& reader, document& target, const xml_node* root, const pack_file* pack);

// Reads the next record, or ends the section under way. Where it fails, the last problem
// names what is wrong with the text's tags, too, if the pack holds the document. One with
// fewer than fourteen sections fails at its first step; sections beyond the last are
// passed over; section 15 has no records of its own here, but its children are
// still counted as items and stepped over one by one (handle 0).
// References to records of sections yet to come are checked at the section's end
// where they can be resolved; dangling ones become warnings.
read_step document_read_step(document_reader& reader);
