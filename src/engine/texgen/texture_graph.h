// The texture graph: evaluates all texture nodes of a document, once, at load time.
//
// Nodes go pending -> waiting (somebody feeds them) -> pending (inputs done) -> done.
// A node whose inputs never become done (a cycle, an input that does not exist) and
// that somebody feeds is never computed and keeps null pixels. An input or generated
// image that is none, does not exist or has no pixels reads as black, and so does a
// node that got no memory. The computed pixels (3 x size x size bytes, released with
// free()) belong to the nodes until document_free_generated_images; uploading is
// texture_upload_gl's.
#pragma once

#include "model/record_table.h"
#include "model/records.h"

#include <cstdint>
#include <span>

// Sets `state` to waiting on every node reachable from `node` through `outputs`; what
// is waiting already is not gone through again. `node` itself only in a cycle.
void mark_waiting(const table<texture_node>& node_pool, texture_node& node);

// Computes one node and then, depth first and in the order of `outputs`, each that
// became ready: it is not done, and both of its inputs are done or none. So a node is
// computed by its last input, at once. Needs the cosine table.
void compute_node(std::span<const generated_image> generated_images, const table<texture_node>& node_pool,
    uint32_t size, texture_node& node);

// Evaluates the whole graph: roots first, in pool order, until nothing is pending.
void generate_textures(
    const table<texture_node>& node_pool, std::span<const generated_image> generated_images, uint32_t size);

// Computes these nodes alone, in this order: inputs stand before what they feed. The others keep null pixels.
void generate_some_textures(const table<texture_node>& node_pool, std::span<const generated_image> generated_images,
    uint32_t size, std::span<const uint32_t> nodes);
