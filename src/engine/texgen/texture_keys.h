// Which generated textures are the same in two documents: a key of each output node, made of all that its pixels
// depend on.
//
// Pure. In a graph in order - what a node names as its input names the node as its output, and nothing goes round in a
// circle - that is the way that leads to the node. Otherwise it matters in which order nodes are met, and all of the
// graph counts for every output.
#pragma once

#include "model/record_handover.h"
#include "model/record_table.h"
#include "model/records.h"

#include <cstdint>
#include <span>
#include <vector>

struct texture_graph_keys {
    bool in_order = false;
    std::vector<uint32_t> order;  // handles of all nodes, inputs before what they feed; in a graph in order
    std::vector<source_key> keys; // by handle; none for what is no output node
};

texture_graph_keys find_texture_keys(
    const table<texture_node>& node_pool, std::span<const generated_image> generated_images);

// The nodes that the `wanted` ones (by handle) depend on, themselves included, in an order for generate_some_textures.
std::vector<uint32_t> nodes_needed(
    const table<texture_node>& node_pool, const texture_graph_keys& graph, std::vector<bool> wanted);

// Which generated images these nodes lay over their inputs, by number.
std::vector<bool> images_needed(
    const table<texture_node>& node_pool, std::span<const uint32_t> nodes, size_t image_count);
