#include "tools/preview/picture_outline.h"

#include "content/matrix.h"

#include <doctest/doctest.h>

namespace {

// One layer that draws one triangle as object 4 of scene 2, seen as it is: x and y of -1..1 are the picture.
struct small_frame {
    float positions[9] = {-0.5f, -0.5f, 0, 0.5f, -0.5f, 0, 0, 0.75f, 0};
    mesh_arrays mesh = {};
    frame f = {};
    frame_layers layers = {};
    picked_object picked = {.track = 3, .layer = 1, .scene = 2, .object = 4, .depth = 0};

    small_frame()
    {
        mesh.positions = positions;
        mesh.vertex_count = 3;
        f.meshes.push_back({});
        f.meshes[0].mesh = &mesh;
        f.meshes[0].object = 4;
        f.meshes[0].moved = no_index;
        f.meshes[0].placement_count = 1;
        f.placements.push_back({{1, 2, 3}, {0, 90, 0}, {1, 1, 1}});
        f.views.push_back({});
        copy_matrix(identity, f.views[0].projection);
        add_copy(0, 0, 0);
        f.draws.push_back({});
        f.draws[0].copy_count = 1;
        f.commands.push_back({command_draw, 0});
        layers.layer_count = 1;
        layers.layers[0].track = 3;
        layers.layers[0].layer = 1;
        layers.layers[0].model_id = 2;
        f.command_end[0] = 1;
        f.mesh_end[0] = 1;
    }
    void add_copy(float x, float y, float z)
    {
        f.copies.push_back({});
        copy_matrix(identity, f.copies.back().modelview);
        translate(f.copies.back().modelview, x, y, z);
    }
};

} // namespace

TEST_CASE("An outline holds all corners of an object, from the picture's upper left")
{
    const small_frame s;
    const std::optional<box> outline = outline_of(s.f, s.layers, s.picked);
    REQUIRE(outline);
    CHECK(outline->x == 0.25f);
    CHECK(outline->width == 0.5f);
    CHECK(outline->y == 0.125f); // 0.75 of the way up is an eighth from above
    CHECK(outline->height == 0.625f);
}

TEST_CASE("An outline holds all copies")
{
    small_frame s;
    s.add_copy(0.5f, 0, 0);
    s.f.draws[0].copy_count = 2;
    CHECK(outline_of(s.f, s.layers, s.picked)->width == 0.75f);
}

TEST_CASE("Corners that were moved are where they were moved to")
{
    small_frame s;
    s.f.vertices = {0, 0, 0, -1, -1, 0, 1, -1, 0, 1, 1, 0};
    s.f.moved.push_back({nullptr, nullptr, nullptr, 3, 3, not_kept, false}); // behind the first three numbers
    s.f.meshes[0].moved = 0;
    CHECK(outline_of(s.f, s.layers, s.picked)->width == 1);
    CHECK(outline_of(s.f, s.layers, s.picked)->height == 1);
    const float elsewhere[] = {0, 0, 0, 0.5f, 0, 0, 0, 0.5f, 0};
    s.f.moved[0] = {nullptr, elsewhere, nullptr, 3, not_kept, not_kept, false};
    CHECK(outline_of(s.f, s.layers, s.picked)->width == 0.25f);
}

TEST_CASE("What lies behind the eye does not widen an outline")
{
    small_frame s;
    set_perspective(s.f.views[0].projection, 90, 1, 1, 100);
    s.f.copies[0].modelview[14] = -2; // two before the eye: half as large
    CHECK(outline_of(s.f, s.layers, s.picked)->width == doctest::Approx(0.25));
    s.positions[2] = 5; // its first corner: three behind it
    CHECK(outline_of(s.f, s.layers, s.picked)->x == doctest::Approx(0.5));
    s.positions[2] = 1.5f; // between the eye and the near plane
    CHECK(outline_of(s.f, s.layers, s.picked)->x == doctest::Approx(0.5));
    s.positions[2] = s.positions[5] = s.positions[8] = 5;
    CHECK_FALSE(outline_of(s.f, s.layers, s.picked));
}

TEST_CASE("Other objects and other layers have outlines and places of their own")
{
    const small_frame s;
    for (const picked_object& other : {picked_object{3, 1, 2, 5, 0}, picked_object{3, 1, 9, 4, 0},
             picked_object{3, 0, 2, 4, 0}, picked_object{2, 1, 2, 4, 0}}) {
        CHECK_FALSE(outline_of(s.f, s.layers, other));
        CHECK_FALSE(placement_of(s.f, s.layers, other));
    }
    CHECK(placement_of(s.f, s.layers, s.picked)->position[2] == 3);
    CHECK(placement_of(s.f, s.layers, s.picked)->rotation[1] == 90);
}
