// Loading a document again, in the place of one that is there: what stays the same keeps its OpenGL objects.
//
// 1. offer_records: a handover gets all that the document before has, but for the pictures in `drawn_into` (handles of
//    image_texture_table), whose pixels have changed.
// 2. load_document with the handover, into another document. Both name what was taken.
// 3. Where that worked, leave_taken, and the document before is unloaded; else give_taken_back, and the new one is. Of
//    what the document before has drawn nothing need be told again in the second case but the bindings
//    (forget_objects).
//
// After that the new document is what it would be if it had been loaded alone, and its handover is the `made_with` of
// the next time. Both are loaded with the same options.

#pragma once

#include "model/capabilities.h"
#include "model/record_handover.h"

#include <cstdint>
#include <vector>

// `made_with`: the handover with which `before` was loaded.
void offer_records(
    record_handover& h, document& before, const record_handover& made_with, const std::vector<uint32_t>& drawn_into);

// The document before forgets what was taken. The pictures are as nobody had ever shown them.
void leave_taken(record_handover& h, document& target);

// The new document forgets it.
void give_taken_back(record_handover& h, document& target);

// ---- for loading ------------------------------------------------------------------------

// All nodes are there: takes the outputs that are the same, computes what the others depend on, uploads them, drops the
// pixels.
void make_texture_graph_again(record_handover& h, document& d, const texture_format_table& formats);

// Takes the program of a material whose texts are there, by its key (key_of_program). False: it has to be built. One that
// failed is built each time, so that it is told each time.
bool take_program(record_handover& h, const source_key& key, uint32_t handle, const material_record& material);
