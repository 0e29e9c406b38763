#include "tiles.h"

#include "builders.h"

#include <array>
#include <doctest/doctest.h>

// How often each pixel of a picture is covered.
static std::vector<uint32_t> coverage(uint32_t width, uint32_t height, const std::vector<frame_tile>& tiles)
{
    std::vector<uint32_t> counts(size_t{width} * height);
    for (const frame_tile& tile : tiles)
        for (uint32_t y = tile.y; y < tile.y + tile.height; ++y)
            for (uint32_t x = tile.x; x < tile.x + tile.width; ++x)
                ++counts.at(size_t{y} * width + x);
    return counts;
}

TEST_CASE("Tiles cover every pixel once and are not larger than asked for")
{
    for (const auto& [width, height, side_x, side_y] : {std::array<uint32_t, 4>{1, 1, 1, 1}, {10, 7, 3, 3},
             {9, 9, 3, 3}, {5, 40, 16, 7}, {30, 2, 29, 2}, {8, 8, 100, 100}}) {
        const std::vector<frame_tile> tiles = plan_tiles(width, height, side_x, side_y);
        for (const frame_tile& tile : tiles) {
            CHECK(tile.width >= 1);
            CHECK(tile.width <= side_x);
            CHECK(tile.height <= side_y);
        }
        CHECK(coverage(width, height, tiles) == std::vector<uint32_t>(size_t{width} * height, 1));
        CHECK(tiles.size() == size_t{(width + side_x - 1) / side_x} * ((height + side_y - 1) / side_y));
    }
}

TEST_CASE("A picture of 15360 x 8640 is made of twelve tiles of 4096")
{
    CHECK(plan_tiles(15360, 8640, 4096, 4096).size() == 12);
}

static frame_layers two_layers()
{
    frame_layers layers = {};
    layers.layer_count = 2;
    layers.layers[0].clear = clear_color | clear_depth;
    layers.layers[0].projection = projection_perspective;
    layers.layers[0].viewport_width = 640;
    layers.layers[1].track = 5;
    return layers;
}

TEST_CASE("Frames that need their textures or the frame before are not tiled")
{
    CHECK(tiling_problem({}, two_layers()).empty());

    frame_layers layers = two_layers();
    layers.layers[1].target = 3;
    CHECK(tiling_problem({}, layers) == "track 6 draws into a texture");
    layers = two_layers();
    layers.layers[1].flush_texture = 3;
    CHECK(tiling_problem({}, layers) == "track 6 draws into a texture");
    layers = two_layers();
    layers.layers[0].clear = clear_depth;
    CHECK(tiling_problem({}, layers) == "it is drawn over the frame before");
    layers = two_layers();
    layers.layers[0].clear = clear_color;
    CHECK(tiling_problem({}, layers) == "it is drawn over the frame before");
    CHECK_FALSE(tiling_problem({}, {}).empty());
}

TEST_CASE("A frame whose first layer keeps the view of the frame before is tiled")
{
    frame_layers layers = two_layers();
    layers.layers[0].projection = projection_kept;
    CHECK(tiling_problem({}, layers).empty());
}

TEST_CASE("A frame begins on the screen where the last layer that chose a view chose the screen's")
{
    static constexpr frame_view view = {64, 48, 4.0f / 3.0f};
    static constexpr frame_rate one = {1, 1};
    const auto begins = [](std::initializer_list<uint32_t> modes, uint64_t frame, uint32_t second_track = render_link) {
        test_document t;
        const uint32_t scene = add_scene(t);
        const uint32_t image = add_image_texture(t, 16, 16);
        for (const uint32_t mode : modes) { // a second each
            layer_record layer = make_layer(mode, 100, scene);
            layer.rtex = mode == render_to_texture ? image : 0;
            add_layer(t, 0, layer);
        }
        layer_record above = make_layer(second_track, 1000, scene);
        above.rtex = second_track == render_to_texture ? image : 0;
        add_layer(t, 1, above);
        return begins_on_screen(t.d, view, initial_caps, one, frame);
    };
    CHECK(begins({render_simple}, 0));
    CHECK(!begins({render_link, render_simple}, 0)); // nobody has chosen one yet
    CHECK(begins({render_link, render_simple}, 1));
    CHECK(begins({render_simple, render_link, render_link}, 2));
    CHECK(begins({render_to_texture, render_simple, render_link}, 2));
    CHECK(!begins({render_to_texture}, 0));
    CHECK(!begins({render_simple, render_to_texture, render_link, render_link}, 3));
    CHECK(!begins({render_simple, render_link}, 1, render_to_texture)); // the later track's counts
    CHECK(begins({render_simple, render_simple}, 1, render_to_texture));
}

TEST_CASE("Frames that show what others drew into a texture are not tiled")
{
    document d = {};
    document_create(d, "test", timeline_new());
    d.timeline->layer_count[2] = 1;
    d.timeline->layers[2][0].rtex = 7;
    scene_object* objects = static_cast<scene_object*>(std::calloc(1, sizeof(scene_object)));
    material_record material = {};
    material.texture[1] = table_add(d.object_table, object_reference{texture_image, 7, 1});
    objects[0].material = table_add(d.material_table, material);
    scene_record scene = {};
    scene.object_count = 1;
    scene.objects = objects;
    frame_layers layers = two_layers();
    layers.layers[1].model_id = table_add(d.scene_table, scene);
    CHECK(tiling_problem(d, layers) == "track 6 shows a texture that layers draw into");

    table_get(d.object_table, 1)->id = 8; // an ordinary picture
    CHECK(tiling_problem(d, layers).empty());
    table_get(d.object_table, 1)->id = 7;
    table_get(d.object_table, 1)->type = texture_cube;
    CHECK(tiling_problem(d, layers).empty());
    document_free(d);
}
