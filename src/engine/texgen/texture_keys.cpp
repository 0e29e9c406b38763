#include "texgen/texture_keys.h"

#include <algorithm>
#include <cassert>

// ---- whether a graph is in order ------------------------------------------------------

static bool has_output(const texture_node& node, uint32_t handle)
{
    const uint32_t* end = node.outputs + std::min(node.output_count, max_node_outputs);
    return std::find(node.outputs, end, handle) != end;
}

static bool is_fed_by(const table<texture_node>& pool, uint32_t input, uint32_t handle)
{
    const texture_node* node = input != 0 ? table_get(pool, input) : nullptr;
    return input == 0 || (node != nullptr && has_output(*node, handle));
}

static bool feeds_as_told(const table<texture_node>& pool, const texture_node& node, uint32_t handle)
{
    for (uint32_t i = 0; i < std::min(node.output_count, max_node_outputs); ++i) {
        const texture_node* output = table_get(pool, node.outputs[i]);
        if (output == nullptr || (output->input1 != handle && output->input2 != handle))
            return false;
    }
    return true;
}

static bool edges_agree(const table<texture_node>& pool)
{
    for (auto [handle, node] : pool)
        if (!is_fed_by(pool, node.input1, handle) || !is_fed_by(pool, node.input2, handle)
            || !feeds_as_told(pool, node, handle))
            return false;
    return true;
}

// Inputs of a node that are still to come.
static std::vector<uint8_t> count_inputs(const table<texture_node>& pool)
{
    std::vector<uint8_t> counts(record_table_capacity + 1);
    for (auto [handle, node] : pool)
        counts[handle] = static_cast<uint8_t>((node.input1 != 0) + (node.input2 != 0 && node.input2 != node.input1));
    return counts;
}

static bool is_named_before(const texture_node& node, uint32_t index)
{
    return std::find(node.outputs, node.outputs + index, node.outputs[index]) != node.outputs + index;
}

// Shorter than the pool where something goes round in a circle.
static std::vector<uint32_t> order_of_nodes(const table<texture_node>& pool)
{
    std::vector<uint8_t> left = count_inputs(pool);
    std::vector<uint32_t> order;
    for (auto [handle, node] : pool)
        if (left[handle] == 0)
            order.push_back(handle);
    for (size_t next = 0; next < order.size(); ++next) {
        const texture_node& node = *table_get(pool, order[next]);
        for (uint32_t i = 0; i < std::min(node.output_count, max_node_outputs); ++i) {
            if (!is_named_before(node, i) && --left[node.outputs[i]] == 0)
                order.push_back(node.outputs[i]);
        }
    }
    return order;
}

// ---- keys -------------------------------------------------------------------------------

static void add_image(source_key& key, std::span<const generated_image> images, const texture_node& node)
{
    if (node.type >= node_invert)
        return;
    const bool is_there = node.layer_id < images.size();
    add_number(key, is_there);
    if (!is_there)
        return;
    add_number(key, images[node.layer_id].params.kind);
    add_to_key(key, images[node.layer_id].params.values, sizeof images[node.layer_id].params.values);
}

static void add_operation(source_key& key, std::span<const generated_image> images, const texture_node& node)
{
    add_number(key, node.type);
    add_to_key(key, node.values, sizeof node.values);
    add_image(key, images, node);
}

static void add_key(source_key& key, const source_key& other)
{
    add_number(key, other.low);
    add_number(key, other.high);
}

// Of every node, by handle.
static std::vector<source_key> keys_of_ways(
    const table<texture_node>& pool, std::span<const generated_image> images, std::span<const uint32_t> order)
{
    std::vector<source_key> ways(record_table_capacity + 1);
    for (const uint32_t handle : order) {
        const texture_node& node = *table_get(pool, handle);
        add_operation(ways[handle], images, node);
        add_key(ways[handle], ways[node.input1]); // [0]: no input
        add_key(ways[handle], ways[node.input2]);
    }
    return ways;
}

// Everything of the graph, as it is numbered.
static source_key key_of_everything(const table<texture_node>& pool, std::span<const generated_image> images)
{
    source_key key;
    for (auto [handle, node] : pool) {
        add_number(key, handle);
        add_operation(key, images, node);
        add_number(key, node.input1);
        add_number(key, node.input2);
        add_to_key(key, node.outputs, std::min(node.output_count, max_node_outputs) * sizeof node.outputs[0]);
    }
    return key;
}

texture_graph_keys find_texture_keys(
    const table<texture_node>& node_pool, std::span<const generated_image> generated_images)
{
    texture_graph_keys graph;
    graph.keys.resize(record_table_capacity + 1);
    if (edges_agree(node_pool))
        graph.order = order_of_nodes(node_pool);
    graph.in_order = graph.order.size() == table_count(node_pool);
    const std::vector<source_key> ways = keys_of_ways(node_pool, generated_images, graph.order);
    const source_key everything = graph.in_order ? source_key{} : key_of_everything(node_pool, generated_images);
    for (auto [handle, node] : node_pool) {
        if (node.type != node_output)
            continue;
        source_key& key = graph.keys[handle];
        add_number(key, node.texture_format);
        add_number(key, node.texture_filter);
        add_key(key, graph.in_order ? ways[handle] : everything);
        if (!graph.in_order)
            add_number(key, handle);
    }
    return graph;
}

// ---- what is needed -----------------------------------------------------------------------

std::vector<uint32_t> nodes_needed(
    const table<texture_node>& node_pool, const texture_graph_keys& graph, std::vector<bool> wanted)
{
    assert(graph.in_order && wanted.size() > record_table_capacity);
    std::vector<uint32_t> needed;
    for (auto handle = graph.order.rbegin(); handle != graph.order.rend(); ++handle) {
        if (!wanted[*handle])
            continue;
        const texture_node& node = *table_get(node_pool, *handle);
        wanted[node.input1] = true; // [0]: no input
        wanted[node.input2] = true;
        needed.push_back(*handle);
    }
    std::reverse(needed.begin(), needed.end());
    return needed;
}

std::vector<bool> images_needed(
    const table<texture_node>& node_pool, std::span<const uint32_t> nodes, size_t image_count)
{
    std::vector<bool> needed(image_count);
    for (const uint32_t handle : nodes) {
        const texture_node* node = table_get(node_pool, handle);
        if (node != nullptr && node->type < node_invert && node->layer_id < image_count)
            needed[node->layer_id] = true;
    }
    return needed;
}
