// Which generated textures are the same, and that what one needs is enough to make it.
#include "picture.h"

#include "texgen/cosine_table.h"
#include "texgen/texture_graph.h"
#include "texgen/texture_keys.h"

#include <doctest/doctest.h>

#include <cstdlib>
#include <cstring>

namespace {

// A graph of texture nodes over flat images of 4 x 4.
struct key_graph {
    table<texture_node> pool = table_new<texture_node>();
    std::vector<generated_image> images;
    std::vector<picture> image_pixels;

    key_graph() = default;
    key_graph(const key_graph&) = delete;
    key_graph& operator=(const key_graph&) = delete;
    ~key_graph()
    {
        for (auto [handle, node] : pool)
            std::free(node.pixels);
        table_free(pool);
    }

    void image(float value)
    {
        image_pixels.push_back(flat_picture(4, static_cast<uint8_t>(value)));
        generated_image made = {};
        made.params.values[0] = value;
        images.push_back(made);
    }
    uint32_t node(uint8_t type, uint32_t input1 = 0, uint32_t input2 = 0, float value = 1)
    {
        texture_node made = {};
        made.type = type;
        made.state = node_pending;
        made.input1 = input1;
        made.input2 = input2;
        made.values[0] = value;
        return table_add(pool, made);
    }
    texture_node& at(uint32_t handle)
    {
        return *table_get(pool, handle);
    }
    // Every input names its node as an output.
    void connect()
    {
        for (auto [handle, node] : pool)
            for (const uint32_t input : {node.input1, node.input2})
                if (input != 0
                    && (input != node.input2 || node.input1 != node.input2 || at(input).output_count == 0
                        || at(input).outputs[at(input).output_count - 1] != handle))
                    at(input).outputs[at(input).output_count++] = handle;
    }
    texture_graph_keys keys() const
    {
        return find_texture_keys(pool, images);
    }
    void give_images_pixels()
    {
        for (size_t i = 0; i < images.size(); ++i)
            images[i].pixels = image_pixels[i].bytes.data();
    }
};

} // namespace

// 1 (image 0) -> 2 inverted -> 3 out; 1 -> 4 added to 5 (image 1) -> 6 out
static void fill_graph(key_graph& g)
{
    g.image(100);
    g.image(30);
    g.node(node_add_image);
    g.node(node_invert, 1);
    g.node(node_output, 2);
    g.node(node_add_2, 1, 5);
    g.node(node_add_image, 0, 0, 0.5f);
    g.at(5).layer_id = 1;
    g.node(node_output, 4);
    g.connect();
}

TEST_CASE("an output's key is that of the way that leads to it")
{
    key_graph plain;
    fill_graph(plain);
    const texture_graph_keys expected = plain.keys();
    REQUIRE(expected.in_order);
    CHECK(expected.keys[3] != expected.keys[6]);
    CHECK(expected.keys[2] == source_key{});

    const auto same = [&expected](void (*change)(key_graph & g)) {
        key_graph g;
        fill_graph(g);
        change(g);
        const texture_graph_keys found = g.keys();
        return std::string(found.keys[3] == expected.keys[3] ? "same" : "new")
            + (found.keys[6] == expected.keys[6] ? " same" : " new");
    };
    CHECK(same([](key_graph&) {}) == "same same");
    CHECK(same([](key_graph& g) { g.at(5).values[0] = 0.25f; }) == "same new");
    CHECK(same([](key_graph& g) { g.at(5).layer_id = 0; }) == "same new");
    CHECK(same([](key_graph& g) { g.images[1].params.values[23] = 1; }) == "same new");
    CHECK(same([](key_graph& g) { g.images[1].params.kind = 2; }) == "same new");
    CHECK(same([](key_graph& g) { g.images[0].params.values[0] = 1; }) == "new new");
    CHECK(same([](key_graph& g) { g.at(2).type = node_blur; }) == "new same");
    CHECK(same([](key_graph& g) { g.at(3).texture_format = 4; }) == "new same");
    CHECK(same([](key_graph& g) { g.at(6).texture_filter = 2; }) == "same new");
    CHECK(same([](key_graph& g) { std::strcpy(g.at(1).name, "renamed"); }) == "same same");
    CHECK(same([](key_graph& g) { std::swap(g.at(4).input1, g.at(4).input2); }) == "same new");
}

TEST_CASE("keys do not depend on how nodes and images are numbered")
{
    key_graph plain;
    fill_graph(plain);
    key_graph moved; // the same, behind a node and an image of its own
    moved.image(7);
    moved.image(30);
    moved.image(100);
    moved.node(node_output, 2);
    moved.node(node_add_2, 5, 3);
    moved.node(node_add_image, 0, 0, 0.5f);
    moved.at(3).layer_id = 1;
    moved.node(node_invert, 5);
    moved.node(node_add_image);
    moved.at(5).layer_id = 2;
    moved.node(node_output, 4);
    moved.connect();
    CHECK(moved.keys().keys[6] == plain.keys().keys[3]);
    CHECK(moved.keys().keys[1] == plain.keys().keys[6]);
}

TEST_CASE("in a graph that is not in order every output depends on all of it, and on its own number")
{
    const auto keys_of = [](void (*change)(key_graph & g)) {
        key_graph g;
        fill_graph(g);
        change(g);
        return g.keys();
    };
    const auto lost_output = [](key_graph& g) { g.at(2).output_count = 0; };
    const auto odd_output = [](key_graph& g) { g.at(2).outputs[g.at(2).output_count++] = 5; };
    const auto circle = [](key_graph& g) {
        g.at(1).input1 = 2;
        g.at(2).outputs[g.at(2).output_count++] = 1;
    };
    const auto dangling = [](key_graph& g) { g.at(5).input2 = 77; };
    const auto dangling_output = [](key_graph& g) { g.at(5).outputs[g.at(5).output_count++] = 77; };
    for (void (*change)(key_graph & g) : {+lost_output, +odd_output, +circle, +dangling, +dangling_output})
        CHECK_FALSE(keys_of(change).in_order);
    const texture_graph_keys odd = keys_of(odd_output);
    CHECK(odd.keys[3] == keys_of(odd_output).keys[3]);
    CHECK(odd.keys[3] != odd.keys[6]);
    CHECK(odd.keys[3] != keys_of([](key_graph& g) {
        g.at(2).outputs[g.at(2).output_count++] = 5;
        g.at(5).values[0] = 0.25f; // does not lead to it
    }).keys[3]);
}

TEST_CASE("the nodes and images that outputs need are enough to make them, and no others are made")
{
    build_cosine_table();
    for (const uint32_t wanted_output : {3u, 6u}) {
        key_graph whole;
        fill_graph(whole);
        whole.give_images_pixels();
        generate_textures(whole.pool, whole.images, 4);

        key_graph part;
        fill_graph(part);
        std::vector<bool> wanted(record_table_capacity + 1);
        wanted[wanted_output] = true;
        const std::vector<uint32_t> nodes = nodes_needed(part.pool, part.keys(), wanted);
        const std::vector<bool> images = images_needed(part.pool, nodes, 2);
        CHECK(nodes.size() == (wanted_output == 3 ? 3 : 4));
        CHECK(images[0]);
        CHECK(images[1] == (wanted_output == 6));
        part.give_images_pixels();
        generate_some_textures(part.pool, part.images, 4, nodes);
        for (auto [handle, node] : part.pool) {
            const bool is_needed = std::find(nodes.begin(), nodes.end(), handle) != nodes.end();
            REQUIRE((node.pixels != nullptr) == is_needed);
            if (is_needed)
                CHECK(std::memcmp(node.pixels, whole.at(handle).pixels, 4 * 4 * 3) == 0);
        }
    }
}

TEST_CASE("a chain as long as the table is followed to its end")
{
    key_graph g;
    g.image(1);
    g.node(node_add_image);
    for (uint32_t n = 1; n + 1 < record_table_capacity; ++n)
        g.node(node_invert, n);
    g.node(node_output, record_table_capacity - 1);
    g.connect();
    const texture_graph_keys keys = g.keys();
    CHECK(keys.in_order);
    std::vector<bool> wanted(record_table_capacity + 1);
    wanted[record_table_capacity] = true;
    CHECK(nodes_needed(g.pool, keys, wanted).size() == record_table_capacity);
    g.images[0].params.values[0] = 2;
    CHECK(g.keys().keys[record_table_capacity] != keys.keys[record_table_capacity]);
}
