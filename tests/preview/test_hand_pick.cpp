#include "tools/preview/hand_pick.h"

#include "frame_bench.h"

#include <doctest/doctest.h>

#include <cstdlib>
#include <string>
#include <vector>

// A rectangle of a flat scene, by shares of the screen.
static scene_object rectangle(frame_bench& b, float left, float top, float right, float low)
{
    mesh_record mesh = {};
    const float corners[] = {left, top, 0, left, low, 0, right, low, 0, right, top, 0};
    const uint16_t indices[] = {0, 1, 2, 0, 2, 3};
    mesh.data = static_cast<uint8_t*>(std::malloc(sizeof corners + sizeof indices));
    mesh.arrays.vertex_count = 4;
    mesh.arrays.index_count = 6;
    mesh.arrays.positions = reinterpret_cast<float*>(mesh.data);
    mesh.arrays.indices = reinterpret_cast<uint16_t*>(mesh.data + sizeof corners);
    std::copy(std::begin(corners), std::end(corners), mesh.arrays.positions);
    std::copy(std::begin(indices), std::end(indices), mesh.arrays.indices);
    uint32_t material = 0;
    add_material(b, &material).depth_test = 0;
    return object_at_origin(object_model, table_add(b.d.mesh_table, mesh), material);
}

static std::string order_at(const std::vector<std::vector<float>>& rectangles, double x, double y)
{
    frame_bench b;
    std::vector<scene_object> objects;
    for (const std::vector<float>& r : rectangles)
        objects.push_back(rectangle(b, r[0], r[1], r[2], r[3]));
    layer_plan layer = layer_of(add_scene(b.content, objects));
    layer.viewport_width = 800;
    layer.viewport_height = 600;
    layer.projection = projection_orthographic;
    layer.depth_test = 0;
    const frame_layers layers = layers_of({layer});
    advance_and_plan(b, layers);
    std::string text;
    for (const picked_object& object : pick_for_hand(b.f, layers, 800, 600, x, y))
        text += std::to_string(object.object);
    return text;
}

TEST_CASE("What covers the picture from corner to corner comes last, in its own order")
{
    // A sky, a house, its door, a vignette over all, a fade over that.
    const std::vector<std::vector<float>> all
        = {{0, 0, 1, 1}, {0.2f, 0.2f, 0.8f, 0.8f}, {0.4f, 0.4f, 0.6f, 0.6f}, {0, 0, 1, 1}, {-1, -1, 2, 2}};
    CHECK(order_at(all, 400, 300) == "21430");
    CHECK(order_at(all, 200, 300) == "1430");
    CHECK(order_at(all, 10, 10) == "430");
}

TEST_CASE("What misses a corner does not cover the picture")
{
    CHECK(order_at({{0.1f, 0.1f, 0.9f, 0.9f}, {0, 0, 1, 0.99f}}, 400, 300) == "10");
    CHECK(order_at({{0.1f, 0.1f, 0.9f, 0.9f}, {0.01f, 0, 1, 1}}, 400, 300) == "10");
    CHECK(order_at({{0.1f, 0.1f, 0.9f, 0.9f}, {0, 0, 1, 1}}, 400, 300) == "01");
}
