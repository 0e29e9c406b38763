#include "picture.h"

#include "texgen/texture_graph.h"

#include <doctest/doctest.h>

#include <cstdlib>
#include <memory>

namespace {

// A graph of texture nodes on pictures of 2 x 2, all bytes of which are the same.
struct graph {
    table<texture_node> pool = table_new<texture_node>();
    std::vector<generated_image> images;
    std::vector<std::unique_ptr<picture>> image_pixels;

    graph() = default;
    graph(const graph&) = delete;
    graph& operator=(const graph&) = delete;
    ~graph()
    {
        for (uint32_t position = 1; position <= table_count(pool); ++position)
            std::free(table_at(pool, position)->pixels);
        table_free(pool);
    }
};

} // namespace

static texture_node& node_of(graph& g, uint32_t handle)
{
    return *table_get(g.pool, handle);
}

static uint32_t add_node(
    graph& g, uint8_t type, uint32_t input1, uint32_t input2, std::initializer_list<uint32_t> outputs)
{
    const uint32_t handle = table_add(g.pool);
    texture_node& node = node_of(g, handle);
    node = {};
    node.type = type;
    node.state = node_pending;
    node.input1 = input1;
    node.input2 = input2;
    std::fill_n(node.values, max_node_values, 1.0f);
    node.output_count = static_cast<uint32_t>(outputs.size());
    std::copy(outputs.begin(), outputs.end(), node.outputs);
    return handle;
}

static void add_image(graph& g, uint8_t value)
{
    g.image_pixels.push_back(std::make_unique<picture>(flat_picture(2, value)));
    generated_image image = {};
    image.pixels = g.image_pixels.back()->bytes.data();
    g.images.push_back(image);
}

static void evaluate(graph& g)
{
    generate_textures(g.pool, g.images, 2);
}

// The one byte value of a node's pixels; -1 without pixels, -2 where they differ.
static int value_of(graph& g, uint32_t handle)
{
    const uint8_t* pixels = node_of(g, handle).pixels;
    if (pixels == nullptr)
        return -1;
    return std::count(pixels, pixels + 12, pixels[0]) == 12 ? pixels[0] : -2;
}

static int state_of(graph& g, uint32_t handle)
{
    return node_of(g, handle).state;
}

// ---- what a node computes -----------------------------------------------------------------

TEST_CASE("a graph without nodes, or without a table, is evaluated at once")
{
    graph g;
    evaluate(g);
    CHECK(table_count(g.pool) == 0);
    generate_textures({}, g.images, 2);
}

TEST_CASE("a node without inputs operates on black")
{
    graph g;
    const uint32_t node = add_node(g, node_invert, 0, 0, {});
    evaluate(g);
    CHECK(value_of(g, node) == 255);
    CHECK(state_of(g, node) == node_done);
}

TEST_CASE("codes below 201 take a generated image, counted from 0, as second operand")
{
    graph g;
    add_image(g, 30);
    add_image(g, 40);
    const uint32_t ones = add_node(g, node_invert, 0, 0, {2, 3, 4, 5});
    const uint32_t less = add_node(g, node_minimum_image, ones, 0, {});
    const uint32_t more = add_node(g, node_maximum_image, 0, ones, {});
    const uint32_t sum = add_node(g, node_add_image, ones, 0, {});
    const uint32_t product = add_node(g, node_multiply_image, ones, 0, {});
    node_of(g, more).layer_id = 1;
    node_of(g, sum).layer_id = 1;
    node_of(g, sum).values[0] = 0.2f;
    node_of(g, product).values[0] = 0.01f;
    evaluate(g);
    CHECK(value_of(g, less) == 30);
    CHECK(value_of(g, more) == 40); // input 2 is not looked at
    CHECK(value_of(g, sum) == 91);
    CHECK(value_of(g, product) == 76); // 255 x 30 / 100
}

TEST_CASE("codes from 207 take input 2 as second operand and no generated image")
{
    graph g;
    add_image(g, 90);
    const uint32_t first = add_node(g, node_add_image, 0, 0, {3});
    const uint32_t second = add_node(g, node_multiply, 1, 0, {3});
    node_of(g, first).outputs[1] = second;
    node_of(g, first).output_count = 2;
    node_of(g, second).values[0] = 0.5f;
    const uint32_t both = add_node(g, node_add_2, first, second, {});
    evaluate(g);
    CHECK(value_of(g, both) == 135);
}

TEST_CASE("a generated image that does not exist, or has no pixels, is black")
{
    graph g;
    add_image(g, 90);
    g.images.push_back({});
    const uint32_t none = add_node(g, node_maximum_image, 0, 0, {});
    const uint32_t empty = add_node(g, node_maximum_image, 0, 0, {});
    const uint32_t far_off = add_node(g, node_maximum_image, 0, 0, {});
    node_of(g, none).layer_id = 2;
    node_of(g, empty).layer_id = 1;
    node_of(g, far_off).layer_id = 0xFFFFFFFF;
    evaluate(g);
    CHECK(value_of(g, none) == 0);
    CHECK(value_of(g, empty) == 0);
    CHECK(value_of(g, far_off) == 0);
}

TEST_CASE("an output node copies its first input")
{
    graph g;
    const uint32_t ones = add_node(g, node_invert, 0, 0, {2});
    const uint32_t output = add_node(g, node_output, ones, 0, {});
    evaluate(g);
    CHECK(value_of(g, output) == 255);
    CHECK(node_of(g, output).pixels != node_of(g, ones).pixels);
}

TEST_CASE("an unknown code computes nothing, is black at first use, and counts as done")
{
    graph g;
    const uint32_t unknown = add_node(g, 222, 0, 0, {2, 3});
    const uint32_t low = add_node(g, 7, unknown, 0, {});
    const uint32_t inverse = add_node(g, node_invert, unknown, 0, {});
    evaluate(g);
    CHECK(value_of(g, unknown) == 0);
    CHECK(value_of(g, low) == 0);
    CHECK(state_of(g, low) == node_done);
    CHECK(value_of(g, inverse) == 255);
}

TEST_CASE("neighbourhood operations work between nodes")
{
    graph g;
    build_cosine_table();
    const uint32_t ones = add_node(g, node_invert, 0, 0, {2, 3, 4, 5});
    const uint32_t blurred = add_node(g, node_blur, ones, 0, {});
    const uint32_t moved = add_node(g, node_offset, ones, 0, {});
    const uint32_t rippled = add_node(g, node_ripple, ones, 0, {});
    const uint32_t embossed = add_node(g, node_emboss, ones, 0, {});
    evaluate(g);
    CHECK(value_of(g, blurred) == 254);
    CHECK(value_of(g, moved) == 255);
    CHECK(value_of(g, rippled) == 255);
    CHECK(value_of(g, embossed) == 255);
}

// ---- order and readiness ------------------------------------------------------------------

TEST_CASE("marking leaves only the roots pending")
{
    graph g;
    const uint32_t root = add_node(g, node_invert, 0, 0, {2, 3});
    const uint32_t child = add_node(g, node_invert, 1, 0, {3});
    const uint32_t grandchild = add_node(g, node_add_2, 1, 2, {});
    const uint32_t apart = add_node(g, node_invert, 0, 0, {});
    mark_waiting(g.pool, node_of(g, root));
    CHECK(state_of(g, root) == node_pending);
    CHECK(state_of(g, child) == node_waiting);
    CHECK(state_of(g, grandchild) == node_waiting);
    CHECK(state_of(g, apart) == node_pending);
}

TEST_CASE("a child of two parents is computed once, after the second has finished")
{
    graph g;
    const uint32_t first = add_node(g, node_invert, 0, 0, {3});
    const uint32_t second = add_node(g, node_blur, 0, 0, {3});
    const uint32_t child = add_node(g, node_max_2, first, second, {});
    node_of(g, child).state = node_waiting;
    compute_node(g.images, g.pool, 2, node_of(g, first));
    CHECK(state_of(g, child) == node_waiting);
    CHECK(value_of(g, child) == -1);
    compute_node(g.images, g.pool, 2, node_of(g, second));
    CHECK(state_of(g, child) == node_done);
    CHECK(value_of(g, child) == 255);

    // Done is done: a further parent that finishes does not compute it again.
    std::fill_n(node_of(g, child).pixels, 12, uint8_t{99});
    compute_node(g.images, g.pool, 2, node_of(g, second));
    CHECK(value_of(g, child) == 99);
}

TEST_CASE("a child whose parents stand behind it in the pool waits for them")
{
    graph g;
    const uint32_t output = add_node(g, node_output, 2, 0, {});
    const uint32_t child = add_node(g, node_invert, 3, 0, {1});
    const uint32_t root = add_node(g, node_invert, 0, 0, {2});
    evaluate(g);
    CHECK(value_of(g, root) == 255);
    CHECK(value_of(g, child) == 0);
    CHECK(value_of(g, output) == 0);
    CHECK(state_of(g, output) == node_done);
}

TEST_CASE("an output that became ready is computed at once, with all below it, before the next output")
{
    // The last node waits for the grandchild, which does not list it: it is ready only
    // when the grandchild has been computed before the root comes to it.
    graph g;
    const uint32_t root = add_node(g, node_invert, 0, 0, {2, 4});
    add_node(g, node_invert, root, 0, {3});
    const uint32_t grandchild = add_node(g, node_invert, 2, 0, {});
    const uint32_t last = add_node(g, node_max_2, root, grandchild, {});
    evaluate(g);
    CHECK(state_of(g, last) == node_done);
    CHECK(value_of(g, last) == 255);
}

TEST_CASE("outputs are looked at in their order, and only when an input of theirs finishes")
{
    // The same with the outputs the other way round: nobody comes back to the last node.
    graph g;
    const uint32_t root = add_node(g, node_invert, 0, 0, {4, 2});
    add_node(g, node_invert, root, 0, {3});
    const uint32_t grandchild = add_node(g, node_invert, 2, 0, {});
    const uint32_t last = add_node(g, node_max_2, root, grandchild, {});
    evaluate(g);
    CHECK(state_of(g, grandchild) == node_done);
    CHECK(state_of(g, last) == node_waiting);
    CHECK(value_of(g, last) == -1);
}

TEST_CASE("roots are computed in pool order: an input that is not listed may not be there yet")
{
    graph g;
    const uint32_t early = add_node(g, node_invert, 2, 0, {});
    const uint32_t ones = add_node(g, node_invert, 0, 0, {});
    const uint32_t late = add_node(g, node_invert, ones, 0, {});
    evaluate(g);
    CHECK(value_of(g, early) == 255); // of black
    CHECK(value_of(g, ones) == 255);
    CHECK(value_of(g, late) == 0);
}

TEST_CASE("an output listed twice is computed once")
{
    graph g;
    const uint32_t root = add_node(g, node_invert, 0, 0, {2, 2, 2});
    const uint32_t child = add_node(g, node_multiply, root, 0, {2});
    node_of(g, child).values[0] = 0.5f;
    evaluate(g);
    CHECK(value_of(g, child) == 127);
}

// ---- graphs that are none -----------------------------------------------------------------

TEST_CASE("a cycle is never computed and ends quietly")
{
    graph g;
    const uint32_t a = add_node(g, node_invert, 2, 0, {2});
    const uint32_t b = add_node(g, node_invert, 1, 0, {1});
    const uint32_t own = add_node(g, node_invert, 3, 0, {3});
    evaluate(g);
    for (const uint32_t node : {a, b, own}) {
        CHECK(state_of(g, node) == node_waiting);
        CHECK(value_of(g, node) == -1);
    }
}

TEST_CASE("what hangs on a cycle is not computed, what feeds it is")
{
    graph g;
    const uint32_t root = add_node(g, node_invert, 0, 0, {2});
    const uint32_t a = add_node(g, node_add_2, 1, 3, {3});
    const uint32_t b = add_node(g, node_invert, 2, 0, {2, 4});
    const uint32_t output = add_node(g, node_output, 3, 0, {});
    evaluate(g);
    CHECK(value_of(g, root) == 255);
    for (const uint32_t node : {a, b, output}) {
        CHECK(state_of(g, node) == node_waiting);
        CHECK(value_of(g, node) == -1);
    }
}

TEST_CASE("outputs that lead back without being inputs end the walk")
{
    graph g;
    const uint32_t root = add_node(g, node_invert, 0, 0, {2});
    const uint32_t child = add_node(g, node_invert, root, 0, {2, 3, 1});
    const uint32_t grandchild = add_node(g, node_invert, child, 0, {2, 3});
    node_of(g, root).state = node_pending;
    compute_node(g.images, g.pool, 2, node_of(g, root));
    CHECK(value_of(g, child) == 0);
    CHECK(value_of(g, grandchild) == 255);
}

TEST_CASE("a node that waits for an input that does not exist is never computed")
{
    graph g;
    const uint32_t root = add_node(g, node_invert, 0, 0, {2});
    const uint32_t child = add_node(g, node_add_2, root, 4000, {3});
    const uint32_t output = add_node(g, node_output, child, 0, {});
    evaluate(g);
    CHECK(state_of(g, child) == node_waiting);
    CHECK(value_of(g, child) == -1);
    CHECK(value_of(g, output) == -1);
}

TEST_CASE("a root whose input does not exist operates on black")
{
    graph g;
    const uint32_t node = add_node(g, node_invert, 4000, 0xFFFFFFFF, {});
    evaluate(g);
    CHECK(value_of(g, node) == 255);
}

TEST_CASE("outputs that do not exist are passed over")
{
    graph g;
    const uint32_t root = add_node(g, node_invert, 0, 0, {0, 4000, 0xFFFFFFFF, 2});
    const uint32_t child = add_node(g, node_invert, root, 0, {});
    evaluate(g);
    CHECK(value_of(g, child) == 0);
}

TEST_CASE("a count of outputs beyond their room ends at the room")
{
    graph g;
    const uint32_t root = add_node(g, node_invert, 0, 0, {});
    node_of(g, root).output_count = 0xFFFFFFFF;
    node_of(g, root).outputs[254] = 2;
    const uint32_t child = add_node(g, node_invert, root, 0, {});
    evaluate(g);
    CHECK(value_of(g, child) == 0);
}

TEST_CASE("a chain of 4096 nodes is computed to its end")
{
    // In the pool from the end to the start, so that one walk goes through all.
    graph g;
    for (uint32_t handle = 1; handle <= 4096; ++handle)
        add_node(g, node_invert, handle < 4096 ? handle + 1 : 0, 0, {handle - 1});
    generate_textures(g.pool, g.images, 2);
    CHECK(value_of(g, 4096) == 255);
    CHECK(value_of(g, 2) == 255);
    CHECK(value_of(g, 1) == 0);
}

TEST_CASE("a graph of very many ways is gone through once")
{
    // 100 rows of 3 nodes, each feeding the three below it: 3^99 ways.
    graph g;
    for (uint32_t row = 0; row < 100; ++row)
        for (uint32_t column = 1; column <= 3; ++column) {
            const uint32_t above = 3 * row - 3;
            const uint32_t below = 3 * row + 3;
            add_node(g, node_max_2, row == 0 ? 0 : above + column, row == 0 ? 0 : above + column % 3 + 1,
                {below + 1, below + 2, below + 3});
        }
    node_of(g, 1).type = node_invert;
    evaluate(g);
    CHECK(value_of(g, 300) == 255);
    CHECK(state_of(g, 300) == node_done);
}
