#include "texgen/texture_graph.h"

#include "content/owners.h"
#include "texgen/operations.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <iterator>

// ---- the walk along `outputs` -------------------------------------------------------

namespace {

// A way through the graph, depth first: each node with the output to look at next. A
// list instead of recursion, as a chain may be as long as the table. Both walks enter
// a node at most once, so that the way is never longer than all nodes and the start.
struct graph_path {
    struct {
        const texture_node* node;
        uint32_t next_output;
    } step[record_table_capacity + 1];
    uint32_t length;
};

} // namespace

static void enter_node(graph_path& path, const texture_node& node)
{
    assert(path.length < std::size(path.step));
    path.step[path.length] = {&node, 0};
    ++path.length;
}

// The next output of the node at the path's end; null when the node has no more and
// was left. A handle that names no node is passed over.
static texture_node* next_output(graph_path& path, const table<texture_node>& node_pool)
{
    assert(path.length > 0);
    auto& last = path.step[path.length - 1];
    const uint32_t count = std::min(last.node->output_count, max_node_outputs);
    while (last.next_output < count) {
        texture_node* output = table_get(node_pool, last.node->outputs[last.next_output]);
        ++last.next_output;
        if (output != nullptr)
            return output;
    }
    --path.length;
    return nullptr;
}

void mark_waiting(const table<texture_node>& node_pool, texture_node& node)
{
    graph_path path;
    path.length = 0;
    enter_node(path, node);
    while (path.length != 0) {
        texture_node* output = next_output(path, node_pool);
        if (output == nullptr || output->state == node_waiting)
            continue;
        output->state = node_waiting;
        enter_node(path, *output);
    }
}

// ---- one node -----------------------------------------------------------------------

// Nodes' pixels are released with free(), so they are taken with calloc().
static uint8_t* black_pixels(uint32_t size)
{
    return static_cast<uint8_t*>(std::calloc(size_t{size} * size, 3));
}

static const uint8_t* pixels_of_node(const table<texture_node>& node_pool, uint32_t handle)
{
    const texture_node* node = table_get(node_pool, handle);
    return node != nullptr ? node->pixels : nullptr;
}

static const uint8_t* second_source(
    std::span<const generated_image> generated_images, const table<texture_node>& node_pool, const texture_node& node)
{
    if (node.type >= node_invert)
        return pixels_of_node(node_pool, node.input2);
    return node.layer_id < generated_images.size() ? generated_images[node.layer_id].pixels : nullptr;
}

// Makes the node's pixels and marks it done. What is missing reads as black; without
// memory the node stays as it is, and so reads as black itself.
static void make_pixels(std::span<const generated_image> generated_images, const table<texture_node>& node_pool,
    uint32_t size, texture_node& node)
{
    node.state = node_done;
    if (node.pixels == nullptr)
        node.pixels = black_pixels(size);
    const uint8_t* a = pixels_of_node(node_pool, node.input1);
    const uint8_t* b = second_source(generated_images, node_pool, node);
    owned_block<uint8_t> black;
    if (a == nullptr || b == nullptr)
        black.reset(black_pixels(size));
    a = a != nullptr ? a : black.get();
    b = b != nullptr ? b : black.get();
    if (node.pixels == nullptr || a == nullptr || b == nullptr)
        return;
    if (node.type == node_output)
        std::memmove(node.pixels, a, size_t{3} * size * size);
    else
        apply_texture_operation(node.type, node.values, a, b, node.pixels, size);
}

// ---- the graph ----------------------------------------------------------------------

static bool is_input_done(const table<texture_node>& node_pool, uint32_t handle)
{
    if (handle == 0)
        return true;
    const texture_node* node = table_get(node_pool, handle);
    return node != nullptr && node->state == node_done;
}

static bool is_ready(const table<texture_node>& node_pool, const texture_node& node)
{
    return node.state != node_done && is_input_done(node_pool, node.input1) && is_input_done(node_pool, node.input2);
}

void compute_node(std::span<const generated_image> generated_images, const table<texture_node>& node_pool,
    uint32_t size, texture_node& node)
{
    graph_path path;
    path.length = 0;
    make_pixels(generated_images, node_pool, size, node);
    enter_node(path, node);
    while (path.length != 0) {
        texture_node* output = next_output(path, node_pool);
        if (output == nullptr || !is_ready(node_pool, *output))
            continue;
        make_pixels(generated_images, node_pool, size, *output);
        enter_node(path, *output);
    }
}

void generate_textures(
    const table<texture_node>& node_pool, std::span<const generated_image> generated_images, uint32_t size)
{
    for (auto [handle, node] : node_pool) {
        if (node.state == node_pending)
            mark_waiting(node_pool, node);
    }
    bool computed = true;
    while (computed) {
        computed = false;
        for (auto [handle, node] : node_pool) {
            if (node.state != node_pending)
                continue;
            compute_node(generated_images, node_pool, size, node);
            computed = true;
        }
    }
}

void generate_some_textures(const table<texture_node>& node_pool, std::span<const generated_image> generated_images,
    uint32_t size, std::span<const uint32_t> nodes)
{
    for (const uint32_t handle : nodes)
        if (texture_node* node = table_get(node_pool, handle))
            make_pixels(generated_images, node_pool, size, *node);
}
