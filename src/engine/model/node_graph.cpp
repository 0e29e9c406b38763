#include "model/node_graph.h"

#include "model/document.h"
#include "model/read_element.h"

#include <algorithm>
#include <cassert>
#include <vector>

namespace {

// What becomes of each node, by its handle ([0] unused). Handles are positions while a
// document is read.
struct node_order {
    document_reader& reader;
    const table<texture_node>& nodes;
    std::vector<uint8_t> states; // node_state
};

} // namespace

static const texture_node* node_at(const node_order& order, uint32_t handle)
{
    return table_get(order.nodes, handle);
}

// Whether an input needs no waiting: none, or computed.
static bool is_done(const node_order& order, uint32_t handle)
{
    return handle == 0 || (node_at(order, handle) != nullptr && order.states[handle] == node_done);
}

static bool is_ready(const node_order& order, uint32_t handle)
{
    assert(node_at(order, handle) != nullptr);
    const texture_node& node = *node_at(order, handle);
    return order.states[handle] != node_done && is_done(order, node.input1) && is_done(order, node.input2);
}

// Goes from a node along the outputs, depth first, entering each node once: those that
// `enter` accepts, which marks them.
template <typename accept> static void walk(node_order& order, uint32_t start, accept enter)
{
    struct step {
        uint32_t handle;
        uint32_t next_output;
    };
    std::vector<step> path = {{start, 0}};
    while (!path.empty()) {
        const texture_node& node = *node_at(order, path.back().handle);
        assert(path.size() <= order.states.size() && path.back().next_output <= node.output_count);
        if (path.back().next_output == node.output_count) {
            path.pop_back();
            continue;
        }
        const uint32_t output = node.outputs[path.back().next_output++];
        if (node_at(order, output) != nullptr && enter(output))
            path.push_back({output, 0});
    }
}

static void check_input(const node_order& order, uint32_t handle, const char* what, uint32_t input)
{
    if (node_at(order, input) != nullptr && order.states[input] != node_done)
        warn(place_of_record(order.reader, section_texture_nodes, handle),
            line_of("%s %u is not computed before it and reads black.", what, input));
}

// A node that none lists as its output: it is computed whether its inputs are ready or not.
static void compute(node_order& order, uint32_t handle)
{
    assert(order.states[handle] == node_pending);
    const texture_node& node = *node_at(order, handle);
    check_input(order, handle, "input1", node.input1);
    if (node.input2 != node.input1)
        check_input(order, handle, "input2", node.input2);
    order.states[handle] = node_done;
    walk(order, handle, [&order](uint32_t output) {
        if (!is_ready(order, output))
            return false;
        order.states[output] = node_done;
        return true;
    });
}

void check_node_graph(document_reader& reader)
{
    const table<texture_node>& nodes = reader.target->texture_table;
    const uint32_t count = table_count(nodes);
    node_order order = {reader, nodes, std::vector<uint8_t>(count + 1, node_pending)};
    assert(count == 0 || record_table_handle_at(nodes.raw, count) == count); // handles are positions
    for (uint32_t handle = 1; handle <= count; ++handle) {
        if (order.states[handle] != node_pending)
            continue;
        walk(order, handle, [&order](uint32_t output) {
            const bool entered = order.states[output] != node_waiting;
            order.states[output] = node_waiting;
            return entered;
        });
    }
    for (uint32_t handle = 1; handle <= count; ++handle)
        if (order.states[handle] == node_pending)
            compute(order, handle);
    for (uint32_t handle = 1; handle <= count; ++handle)
        if (order.states[handle] != node_done)
            warn(place_of_record(reader, section_texture_nodes, handle),
                "the node is never computed and stays black: it waits for itself, or for a node that is never "
                "computed.");
}
