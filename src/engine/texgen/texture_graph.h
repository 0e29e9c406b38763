// The texture graph: evaluates all texture nodes of a document, once, at load time.
//
// Nodes go pending -> waiting (somebody feeds them) -> pending (inputs done) -> done.
// A node whose inputs never become done is never computed. Cycles and dangling
// handles end quietly. The computed pixels stay in the nodes (owned by them) until
// document_free_generated_images; uploading is texture_upload_gl's.
#pragma once

#include "model/record_table.h"
#include "model/records.h"

#include <cstdint>
#include <span>

// Sets `state` to waiting on every node reachable from `node` through `outputs`.
void mark_waiting(record_table* node_pool, texture_node& node);

// Computes one node and then, recursively, those of its outputs that became ready.
void compute_node(std::span<const generated_image> generated_images, record_table* node_pool, uint32_t size,
    texture_node& node);

// Evaluates the whole graph: roots first, in pool order, until nothing is pending.
void generate_textures(record_table* node_pool, std::span<const generated_image> generated_images, uint32_t size);
