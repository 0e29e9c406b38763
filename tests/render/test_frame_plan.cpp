#include "render/frame_plan.h"

#include "content/matrix.h"
#include "frame_bench.h"
#include "render/frame_text.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

// ---- reading plans ----------------------------------------------------------------------

// The lines of a text that hold `part`, each with its newline.
static std::string lines_with(const std::string& text, std::string_view part)
{
    std::string kept;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        if (line.find(part) != std::string::npos)
            kept += line + "\n";
    return kept;
}

// The commands alone, without what stands and where copies are.
static std::string commands_of(const std::string& text)
{
    std::string kept;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        if (!line.starts_with(' '))
            kept += line + "\n";
    return kept;
}

static std::string planned_commands(frame_bench& b, const frame_layers& layers)
{
    return commands_of(planned_text(b, layers));
}

static void check_point(const float m[16], const float (&point)[3], const float (&expected)[3])
{
    float moved[3];
    transform_point(m, point, moved);
    for (int i = 0; i < 3; ++i) {
        CAPTURE(i);
        CHECK(moved[i] == doctest::Approx(expected[i]).epsilon(1e-5));
    }
}

// A material of one picture, and a triangle with it.
static scene_object pictured_triangle(frame_bench& b, uint32_t texture)
{
    uint32_t handle = 0;
    add_material(b, &handle).texture[0] = add_image(b, texture);
    return object_at_origin(object_model, add_mesh(b), handle);
}

// An effect's mesh may be drawn without a material: a swirl of 256 vertices, 255 triangles.
static scene_object bare_swirl(frame_bench& b)
{
    return object_at_origin(object_genmesh, add_effect(b, mesh_effect_swirl, 0), 0);
}

constexpr char swirl_draw[] = "draw 1 x 765 indices with state ";
constexpr char swirl_arrays[] = ", positions in memory, normals in memory, indices in memory\n";

static std::string draw_of_swirl(uint32_t state)
{
    return swirl_draw + std::to_string(state) + swirl_arrays;
}

static std::string draw_of_triangle(uint32_t state)
{
    const std::string coordinates = ", coordinates in memory";
    return "draw 1 x 3 indices with state " + std::to_string(state) + ", positions in memory, normals in memory"
        + coordinates + coordinates + coordinates + ", indices in memory\n";
}

// ---- the text ---------------------------------------------------------------------------

TEST_CASE("a frame of the fixed path as text")
{
    frame_bench b;
    uint32_t handle = 0;
    material_record& material = add_material(b, &handle);
    material.texture[0] = add_image(b, 7);
    material.wrapmode[0] = wrap_edge_clamp;
    material.combine_mode[0] = 3;
    material.texture[1] = add_cube(b, 8);
    material.cgenmode[1] = coordinates_cube;
    material.backface_culling = material.depth_test = material.normalization = material.wireframe = 1;
    material.linewidth = 2.5f;
    material.light1 = add_values(b, {1, 2, 3, 4, 5, 6, 7, 8, 9});
    material.fogtype = fog_fastest;
    material.fogstart = 1.0f / 3.0f;
    material.fogend = 1e9f;
    scene_object object = object_at_origin(object_model, add_mesh(b), handle);
    object.values[0].value = 5.0f;
    layer_plan layer = layer_of(add_scene(b.content, {object}));
    layer.clear = clear_color | clear_depth;
    layer.viewport_width = 800;
    layer.viewport_height = 600;
    layer.position[2] = -4.0f;
    CHECK(planned_text(b, layers_of({layer}))
        == "viewport 800 x 600\n"
           "clear color to 0 0 0 0 depth\n"
           "  view 0: projection 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1, camera 1 0 0 0 0 1 0 0 0 0 1 0 0 0 -4 1\n"
           "  state 0: depth 1, cull 1, blend 2, line width 2.5, normalize 1, wireframe 1, color 0.25 0.5 0.75 1\n"
           "    light 1 at 7 8 9, ambient 1 2 3, diffuse 4 5 6\n"
           "    lights given under 1 0 0 0 0 1 0 0 0 0 1 0 0 0 -4 1\n"
           "    fog 1 of 1 1 1 from 0.333333 to 1e+09\n"
           "    unit 1 picture 7, wrap 1, coordinates 0, combine 3, matrix 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1\n"
           "    unit 2 cube map 8, wrap 0, coordinates 2, combine 0, matrix 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1\n"
           "    unit 3 picture 0, wrap 0\n"
            + draw_of_triangle(0) + "    at 1 0 0 0 0 1 0 0 0 0 1 0 5 0 -4 1\n");
}

TEST_CASE("a frame of the shader path as text")
{
    frame_bench b;
    b.context.glsl = true;
    uint32_t handle = 0;
    material_record& material = add_material(b, &handle);
    shader_program& program = give_program(material, 50);
    program.uniform_functions[2] = add_time(b);
    material.texture[0] = add_image(b, 7);
    material.cgenmode[0] = coordinates_cube;
    material.light2 = add_values(b, {1, 2, 3, 4, 5, 6, 7, 8, 9});
    const scene_object object = object_at_origin(object_model, add_mesh(b, 3, 0, false), handle);
    CHECK(planned_text(b, layers_of(b, {bare_swirl(b), object}, 6))
        == "  view 0: projection 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1, camera 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1\n"
           "  state 0: depth 1, no material\n"
           "    no program yet\n"
            + draw_of_swirl(0)
            + "    at 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1\n"
              "  state 1: depth 0, cull 0, blend 2, line width 0, normalize 0, wireframe 0, color 0 0 0 0\n"
              "    unit 1 picture 7, wrap 0\n"
              "    program 50, texture matrix 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1, light 2 at 7 8 9, u3 6\n"
              "draw 1 x 3 indices with state 1, positions in memory, indices in memory\n"
              "    at 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1\n");
}

TEST_CASE("what stands is written once, before the first mesh that is drawn with it")
{
    frame_bench b;
    const scene_object first = pictured_triangle(b, 7);
    const scene_object second = pictured_triangle(b, 8);
    const uint32_t scene = add_scene(b.content, {first, first, second, second, first});
    const std::string text = planned_text(b, layers_of({layer_of(0), layer_of(scene)}));
    CHECK(lines_with(text, "view").starts_with("  view 1: ")); // nothing is seen through view 0
    CHECK(lines_with(lines_with(text, "    unit"), "picture 7").find('\n') != std::string::npos);
    CHECK(commands_of(text)
        == draw_of_triangle(0) + draw_of_triangle(0) + draw_of_triangle(1) + draw_of_triangle(1) + draw_of_triangle(2));
    CHECK(lines_with(text, "  state ").find("state 2") != std::string::npos);
    CHECK(b.f.materials.size() == 3);
}

TEST_CASE("numbers of a text have six digits at most and no negative zero")
{
    frame_bench b;
    scene_object object = pictured_triangle(b, 7);
    object.values[0].value = -0.0f;
    object.values[1].value = 1234567.0f;
    object.values[2].value = 1e-7f;
    table_get(b.d.material_table, object.material)->color[1] = -0.0f;
    CHECK(lines_with(planned_text(b, layers_of(b, {object})), "    at ")
        == "    at 1 0 0 0 0 1 0 0 0 0 1 0 0 1.23457e+06 1e-07 1\n");
    CHECK(lines_with(frame_as_text(b.f), ", color").ends_with(", color 0.25 0 0.75 1\n"));
}

// ---- targets, clearing --------------------------------------------------------------------

// A picture that layers draw into, 64 x 64, of that OpenGL name.
static uint32_t add_target(frame_bench& b, uint32_t texture, uint32_t side = 64)
{
    const uint32_t handle = add_image_texture(b.content, side, side);
    table_get(b.d.image_texture_table, handle)->texture = texture;
    return handle;
}

static void add_mode(frame_bench& b, uint32_t track, uint32_t mode, uint32_t scene, uint32_t rtex = 0)
{
    layer_record layer = make_layer(mode, 1000, scene);
    layer.rtex = rtex;
    add_layer(b.content, track, layer);
}

// The layers of a tick; those that recreate their targets get the names 90, 91 and so on.
static frame_layers layers_at(frame_bench& b, uint32_t time)
{
    frame_layers layers = plan_layers(b.d, time, b.view, b.context.caps);
    uint32_t name = 90;
    for (uint32_t i = 0; i < layers.layer_count; ++i)
        if (layers.layers[i].recreate_width != 0)
            layers.layers[i].recreate_texture = name++;
    return layers;
}

TEST_CASE("a layer copies, recreates, sets its viewport, clears and draws, in this order")
{
    frame_bench b;
    const uint32_t scene = add_scene(b.content, {pictured_triangle(b, 5)});
    const uint32_t plain = add_target(b, 7);
    const uint32_t quarter = add_target(b, 8);
    add_mode(b, 0, render_simple, scene);
    add_mode(b, 1, render_to_texture, scene, plain);
    add_mode(b, 2, render_quarter, scene, quarter);
    add_mode(b, 3, render_clear_depth, scene);
    add_mode(b, 4, render_link, scene);
    CHECK(planned_commands(b, layers_at(b, 10))
        == "viewport 800 x 600\nclear color to 0 0 0 0 depth\n" + draw_of_triangle(0) + "viewport 64 x 64\n"
            + draw_of_triangle(1)
            + "copy 64 x 64 into texture 7\nrecreate texture 8 as 90, 400 x 300\nviewport 400 x 300\n"
              "clear color to 0 0 0 1 depth\n"
            + draw_of_triangle(2) + "copy 400 x 300 into texture 90\nviewport 800 x 600\nclear color to 0 0 0 1 depth\n"
            + draw_of_triangle(3) + draw_of_triangle(4));
    const uint32_t ends[5] = {3, 5, 10, 14, 15};
    CHECK(std::equal(ends, ends + 5, b.f.command_end));
    CHECK(lines_with(planned_commands(b, layers_at(b, 20)), "recreate").empty()); // it has its size now
}

TEST_CASE("a recreated target's record says what it is going to be")
{
    frame_bench b;
    const uint32_t handle = add_target(b, 8);
    image_texture& target = *table_get(b.d.image_texture_table, handle);
    target.components = 4;
    target.format = 99;
    target.pixels = static_cast<uint8_t*>(std::malloc(16));
    add_mode(b, 0, render_simple, 0);
    add_mode(b, 1, render_quarter, 0, handle);
    advance_and_plan(b, layers_at(b, 10));
    CHECK(target.width == 400);
    CHECK(target.height == 300);
    CHECK(target.components == 3);
    CHECK(target.format == recreated_target_format);
    CHECK(target.pixels == nullptr);
    CHECK(target.texture == 90);
}

TEST_CASE("a target may be recreated twice in a frame")
{
    frame_bench b;
    const uint32_t target = add_target(b, 8, 1000);
    add_mode(b, 0, render_simple, 0);
    add_mode(b, 1, render_to_texture, 0, target); // larger than the screen
    add_mode(b, 2, render_quarter, 0, target);
    add_mode(b, 3, render_simple, 0);
    CHECK(lines_with(planned_commands(b, layers_at(b, 10)), "texture")
        == "recreate texture 8 as 90, 800 x 600\n"
           "copy 800 x 600 into texture 90\n"
           "recreate texture 90 as 91, 400 x 300\n"
           "copy 400 x 300 into texture 91\n");
}

TEST_CASE("materials of the frame see a recreated target under its new name")
{
    frame_bench b;
    const uint32_t target = add_target(b, 8);
    uint32_t handle = 0;
    const uint32_t reference = table_add(b.d.object_table, object_reference{texture_image, target, 1});
    add_material(b, &handle).texture[0] = reference;
    const uint32_t scene = add_scene(b.content, {object_at_origin(object_model, add_mesh(b), handle)});
    add_mode(b, 0, render_simple, scene);
    add_mode(b, 1, render_quarter, 0, target);
    add_mode(b, 2, render_simple, scene);
    const std::string pictures = lines_with(planned_text(b, layers_at(b, 10)), "unit 1");
    CHECK(pictures.find("picture 8,") < pictures.find("picture 90,"));
    CHECK(pictures.find("picture 90,") != std::string::npos);
}

TEST_CASE("targets that do not exist are neither copied into nor recreated")
{
    frame_bench b;
    layer_plan layer = layer_of(0);
    layer.flush_texture = 9;
    layer.flush_width = layer.flush_height = 64;
    layer.target = 9;
    layer.recreate_width = layer.recreate_height = 32;
    CHECK(planned_text(b, layers_of({layer})).empty());
}

TEST_CASE("a copy and a recreation leave their picture in the first unit for meshes without a material")
{
    frame_bench b;
    const uint32_t target = add_target(b, 8);
    const scene_object triangle = pictured_triangle(b, 5);
    table_get(b.d.material_table, 1)->wrapmode[0] = wrap_edge_clamp;
    const uint32_t both = add_scene(b.content, {triangle});
    const uint32_t bare = add_scene(b.content, {bare_swirl(b)});
    layer_plan copying = layer_of(bare);
    copying.flush_texture = target;
    copying.flush_width = copying.flush_height = 64;
    layer_plan recreating = layer_of(bare);
    recreating.target = target;
    recreating.recreate_width = recreating.recreate_height = 32;
    recreating.recreate_texture = 90;
    const std::string text
        = planned_text(b, layers_of({layer_of(both), layer_of(bare), copying, layer_of(both), recreating}));
    std::string units = lines_with(text, "unit 1");
    for (size_t at; (at = units.find(", coordinates")) != std::string::npos;)
        units.erase(at, units.find('\n', at) - at);
    CHECK(units
        == "    unit 1 picture 5, wrap 1\n"
           "    unit 1 picture 5, wrap 1\n"
           "    unit 1 picture 8, wrap as it is\n"
           "    unit 1 picture 5, wrap 1\n"
           "    unit 1 picture 90, wrap as it is\n");
}

TEST_CASE("a target's old texture is in no unit any more")
{
    frame_bench b;
    const uint32_t target = add_target(b, 8);
    uint32_t handle = 0;
    material_record& material = add_material(b, &handle);
    material.texture[0] = add_image(b, 5);
    material.texture[1] = table_add(b.d.object_table, object_reference{texture_image, target, 1});
    const uint32_t both = add_scene(b.content, {object_at_origin(object_model, add_mesh(b), handle)});
    const uint32_t bare = add_scene(b.content, {bare_swirl(b)});
    layer_plan recreating = layer_of(bare);
    recreating.target = target;
    recreating.recreate_width = recreating.recreate_height = 32;
    recreating.recreate_texture = 90;
    const std::string units = lines_with(planned_text(b, layers_of({layer_of(both), recreating})), "unit 2");
    CHECK(units.find("picture 8,") < units.find("picture 0,"));
    CHECK(units.find("picture 0,") != std::string::npos);
}

TEST_CASE("a clear has the colour of the layer before, of the last frame too")
{
    frame_bench b;
    layer_plan red = layer_of(0), green = layer_of(0), blue = layer_of(0);
    red.clear_color[0] = green.clear_color[1] = blue.clear_color[2] = 0.5f;
    red.clear = clear_color | clear_depth;
    green.clear = clear_depth;
    blue.clear = clear_color;
    const frame_layers layers = layers_of({red, layer_of(0), green, blue});
    CHECK(planned_text(b, layers) == "clear color to 0 0 0 0 depth\nclear depth\nclear color to 0 0.5 0 1\n");
    CHECK(planned_text(b, layers) == "clear color to 0 0 0.5 1 depth\nclear depth\nclear color to 0 0.5 0 1\n");
    const clear_command screen = plan_clear_screen(b.standing);
    CHECK(screen.bits == (clear_color | clear_depth));
    CHECK(screen.color[2] == 0.5f);
    CHECK(screen.color[3] == 1.0f);
}

TEST_CASE("a layer without a viewport keeps the one in force, a tile is one for the screen alone")
{
    frame_bench b;
    layer_plan screen = layer_of(0), kept = layer_of(0), target = layer_of(0);
    screen.viewport_width = 800;
    screen.viewport_height = 600;
    target.viewport_width = target.viewport_height = 64;
    target.target = 1;
    const frame_layers layers = layers_of({screen, kept, target});
    CHECK(planned_text(b, layers) == "viewport 800 x 600\nviewport 64 x 64\n");
    b.view.tile = {400, 300, 300, 200};
    CHECK(planned_text(b, layers) == "viewport 300 x 200\nviewport 64 x 64\n");
}

// ---- projection, camera -----------------------------------------------------------------------

TEST_CASE("projections are set by the layer or stay, from frame to frame too")
{
    frame_bench b;
    layer_plan wide = layer_of(0), flat = layer_of(0);
    wide.projection = projection_perspective;
    wide.fov = 90.0f;
    wide.aspect = 2.0f;
    wide.far_distance = 100.0f;
    flat.projection = projection_orthographic;
    advance_and_plan(b, layers_of({layer_of(0), wide, layer_of(0), flat, layer_of(0)}));
    REQUIRE(b.f.views.size() == 5);
    float perspective[16], orthographic[16];
    set_perspective(perspective, 90.0f, 2.0f, 0.1f, 100.0f);
    set_orthographic(orthographic, 0, 1, 1, 0, -1, 1);
    const float* expected[5] = {identity, perspective, perspective, orthographic, orthographic};
    for (int i = 0; i < 5; ++i) {
        CAPTURE(i);
        CHECK(std::equal(expected[i], expected[i] + 16, b.f.views[static_cast<size_t>(i)].projection));
    }
    advance_and_plan(b, layers_of({layer_of(0)}));
    CHECK(std::equal(orthographic, orthographic + 16, b.f.views[0].projection));
}

TEST_CASE("a tile spreads its part of the picture over the whole, once for a projection that stays")
{
    frame_bench b;
    layer_plan flat = layer_of(0), target = layer_of(0);
    flat.projection = projection_orthographic;
    target.target = 1;
    b.view.tile = {200, 300, 400, 150}; // of 800 x 600, from the lower left corner
    const frame_layers layers = layers_of({flat, layer_of(0), target});
    for (int again = 0; again < 2; ++again) { // the other tiles of a frame keep it, too
        advance_and_plan(b, layers);
        for (size_t i = 0; i < 2; ++i) {
            CAPTURE(i);
            const float* projection = b.f.views[i].projection;
            check_point(projection, {0.25f, 0.5f, 0}, {-1, -1, 0}); // (200, 300): y counts downward here
            check_point(projection, {0.75f, 0.25f, 0}, {1, 1, 0});  // (600, 450)
        }
        check_point(b.f.views[2].projection, {0, 1, 0}, {-1, -1, 0});
        check_point(b.f.views[2].projection, {1, 0, 0}, {1, 1, 0});
    }
}

TEST_CASE("a tile of a perspective shifts by the distance")
{
    frame_bench b;
    layer_plan wide = layer_of(0);
    wide.projection = projection_perspective;
    wide.fov = 90.0f;
    wide.aspect = 1.0f;
    wide.far_distance = 100.0f;
    b.view.tile = {400, 300, 400, 300}; // the upper right quarter
    advance_and_plan(b, layers_of({wide}));
    const float* m = b.f.views[0].projection;
    // At distance 5 the quarter reaches from (0, 0) to (5, 5).
    const float x = m[0] * 0 + m[8] * -5 + m[12], right = m[0] * 5 + m[8] * -5 + m[12];
    CHECK(x / 5 == doctest::Approx(-1));
    CHECK(right / 5 == doctest::Approx(1));
    const float y = m[5] * 0 + m[9] * -5 + m[13], top = m[5] * 5 + m[9] * -5 + m[13];
    CHECK(y / 5 == doctest::Approx(-1));
    CHECK(top / 5 == doctest::Approx(1));
}

TEST_CASE("a camera turns about z, x and y from outside in, and moves first")
{
    frame_bench b;
    layer_plan layer = layer_of(0);
    layer.position[0] = 10.0f;
    layer.rotation[0] = 90.0f;
    layer.rotation[2] = 90.0f;
    advance_and_plan(b, layers_of({layer}));
    // (-9, 2, 3) is moved to (1, 2, 3); about x y goes to z, z to -y: (1, -3, 2); about z: (3, 1, 2)
    check_point(b.f.views[0].camera, {-9, 2, 3}, {3, 1, 2});
    layer.rotation[0] = 90.0f;
    layer.rotation[1] = 90.0f;
    layer.rotation[2] = 0.0f;
    advance_and_plan(b, layers_of({layer}));
    // (1, 2, 3): about y z goes to x, x to -z: (3, 2, -1); about x: (3, 1, 2)
    check_point(b.f.views[0].camera, {-9, 2, 3}, {3, 1, 2});
    layer.rotation[0] = 0.0f;
    layer.rotation[2] = 90.0f;
    advance_and_plan(b, layers_of({layer}));
    check_point(b.f.views[0].camera, {-9, 2, 3}, {-2, 3, -1}); // (3, 2, -1) about z
}

// ---- copies --------------------------------------------------------------------------------------

TEST_CASE("a copy is scaled, turned about z, y and x, and moved, before the camera")
{
    frame_bench b;
    scene_object object = pictured_triangle(b, 7);
    const float values[9] = {10, 20, 30, 90, 0, 90, 2, 3, 4};
    for (uint32_t i = 0; i < 9; ++i)
        object.values[i].value = values[i];
    layer_plan layer = layer_of(add_scene(b.content, {object}));
    layer.position[0] = 100.0f;
    advance_and_plan(b, layers_of({layer}));
    // (1, 1, 1) is (2, 3, 4); about z: (-3, 2, 4); about x: (-3, -4, 2); moved, and the camera's move
    REQUIRE(b.f.copies.size() == 1);
    check_point(b.f.copies[0].modelview, {1, 1, 1}, {107, 16, 32});
    CHECK(b.f.copies[0].modelview[15] == 1.0f);

    scene_object& placed = table_get(b.d.scene_table, 1)->objects[0];
    placed.values[3].value = 90.0f;
    placed.values[4].value = 90.0f;
    placed.values[5].value = 0.0f;
    advance_and_plan(b, layers_of({layer}));
    // (2, 3, 4) about y: (4, 3, -2); about x: (4, 2, 3)
    check_point(b.f.copies[0].modelview, {1, 1, 1}, {114, 22, 33});
    placed.values[3].value = 0.0f;
    placed.values[5].value = 90.0f;
    advance_and_plan(b, layers_of({layer}));
    // (2, 3, 4) about z: (-3, 2, 4); about y: (4, 2, 3)
    check_point(b.f.copies[0].modelview, {1, 1, 1}, {114, 22, 33});
}

TEST_CASE("every copy has its place, and draws know theirs")
{
    frame_bench b;
    scene_object row = pictured_triangle(b, 7);
    add_manipulator(row, manipulator_x_multiplier, {3, 10});
    advance_and_plan(b, layers_of(b, {row, pictured_triangle(b, 8), row}));
    REQUIRE(b.f.draws.size() == 3);
    const uint32_t first[3] = {0, 3, 4}, count[3] = {3, 1, 3};
    for (size_t i = 0; i < 3; ++i) {
        CHECK(b.f.draws[i].first_copy == first[i]);
        CHECK(b.f.draws[i].copy_count == count[i]);
    }
    const float x[7] = {0, 10, 20, 0, 0, 10, 20};
    for (size_t i = 0; i < 7; ++i)
        CHECK(b.f.copies[i].modelview[12] == x[i]);
}

TEST_CASE("a draw says which mesh of the frame it draws, over layers too")
{
    frame_bench b;
    scene_object nothing = pictured_triangle(b, 7);
    add_manipulator(nothing, manipulator_x_multiplier, {0});
    const uint32_t scene = add_scene(b.content, {nothing, bare_swirl(b), nothing, pictured_triangle(b, 8)});
    advance_and_plan(b, layers_of({layer_of(scene), layer_of(scene)}));
    const uint32_t meshes[4] = {1, 3, 5, 7}; // those without copies are listed and not drawn
    REQUIRE(b.f.draws.size() == 4);
    for (size_t i = 0; i < 4; ++i)
        CHECK(b.f.draws[i].mesh == meshes[i]);
}

TEST_CASE("camera-facing copies undo every turn of the camera, but not their own")
{
    frame_bench b;
    const scene_object facing = pictured_triangle(b, 7);
    scene_object turned = facing;
    turned.values[5].value = 90.0f;
    turned.values[0].value = 1.0f;
    const uint32_t scene = add_scene(b.content, {facing, turned, turned});
    table_get(b.d.scene_table, scene)->camera_facing[0] = 128 | 64;
    layer_plan layer = layer_of(scene);
    const float rotation[3] = {20, 50, 70};
    std::copy_n(rotation, 3, layer.rotation);
    layer.position[2] = -5.0f;
    advance_and_plan(b, layers_of({layer}));
    REQUIRE(b.f.copies.size() == 3);
    float at_origin[3], at_one[3];
    transform_point(b.f.views[0].camera, std::array<float, 3>{0, 0, 0}.data(), at_origin);
    transform_point(b.f.views[0].camera, std::array<float, 3>{1, 0, 0}.data(), at_one);
    check_point(b.f.copies[0].modelview, {1, 2, 3}, {at_origin[0] + 1, at_origin[1] + 2, at_origin[2] + 3});
    check_point(b.f.copies[1].modelview, {1, 2, 3}, {at_one[0] - 2, at_one[1] + 1, at_one[2] + 3});
    float other[3];
    transform_point(b.f.copies[2].modelview, std::array<float, 3>{1, 2, 3}.data(), other);
    CHECK(std::fabs(other[2] - (at_one[2] + 3)) > 0.1f);
}

TEST_CASE("a letter's pen is added to the x of its copies")
{
    frame_bench b;
    const scene_object letter = pictured_triangle(b, 7);
    font_record font = {};
    font.glyphs[0] = {letter.object, letter.material, 0, 0.0f, 2.5f};
    scene_object text = object_at_origin(object_text, 0, 0);
    text.font = table_add(b.d.font_table, font);
    std::strcpy(text.text, "aa");
    text.values[0].value = 10.0f;
    text.values[6].value = 3.0f; // the pen is not scaled
    advance_and_plan(b, layers_of(b, {text}));
    REQUIRE(b.f.copies.size() == 2);
    CHECK(b.f.copies[0].modelview[12] == 10.0f);
    CHECK(b.f.copies[1].modelview[12] == 12.5f);
}

TEST_CASE("programs have normal matrices")
{
    frame_bench b;
    b.context.glsl = true;
    scene_object object = pictured_triangle(b, 7);
    give_program(*table_get(b.d.material_table, object.material), 50);
    object.values[6].value = 2.0f;
    object.values[7].value = 4.0f;
    advance_and_plan(b, layers_of(b, {object}));
    REQUIRE(b.f.copies.size() == 1);
    const float inverse[9] = {0.5f, 0, 0, 0, 0.25f, 0, 0, 0, 1};
    CHECK(std::equal(inverse, inverse + 9, b.f.copies[0].normal_matrix));
}

namespace {

struct turned_object {
    float angle;
    float scale;
    float x;
    bool facing_camera;
};

} // namespace

// Plans a layer of such objects, seen by a camera that turns, and takes the matrices of their copies.
static std::vector<copy_transform> planned_copies(frame_bench& b, std::span<const turned_object> turned)
{
    std::vector<scene_object> objects;
    uint8_t facing = 0;
    for (size_t i = 0; i < turned.size(); ++i) {
        scene_object object = pictured_triangle(b, 7);
        give_program(*table_get(b.d.material_table, object.material), 50);
        object.values[0].value = turned[i].x;
        object.values[4].value = turned[i].angle;
        object.values[7].value = turned[i].scale;
        facing |= static_cast<uint8_t>(turned[i].facing_camera ? 128 >> i : 0);
        objects.push_back(object);
    }
    const uint32_t scene = add_scene(b.content, objects);
    table_get(b.d.scene_table, scene)->camera_facing[0] = facing;
    layer_plan layer = layer_of(scene);
    const float rotation[3] = {20, 50, 70};
    std::copy_n(rotation, 3, layer.rotation);
    advance_and_plan(b, layers_of({layer}));
    return b.f.copies;
}

TEST_CASE("copies have the matrices that each has alone, whatever the one before shares with it")
{
    frame_bench b;
    b.context.glsl = true;
    const turned_object objects[] = {{30, 1, 0, false}, {30, 1, 5, false}, {30, 2, 5, false}, {40, 2, 5, false},
        {40, 2, 5, true}, {40, 3, 5, true}, {40, 3, 5, false}, {30, 1, 0, false}};
    const std::vector<copy_transform> together = planned_copies(b, objects);
    REQUIRE(together.size() == std::size(objects));
    for (size_t i = 0; i < together.size(); ++i) {
        CAPTURE(i);
        const std::vector<copy_transform> alone = planned_copies(b, std::span(objects).subspan(i, 1));
        CHECK(std::equal(together[i].modelview, together[i].modelview + 16, alone[0].modelview));
        CHECK(std::equal(together[i].normal_matrix, together[i].normal_matrix + 9, alone[0].normal_matrix));
    }
}

// ---- arrays ----------------------------------------------------------------------------------------

// Gives a mesh buffers from a name on.
static void give_buffers(mesh_arrays& mesh, uint32_t first)
{
    mesh.position_buffer = first;
    mesh.normal_buffer = first + 1;
    mesh.index_buffer = first + 2;
    for (uint32_t set = 0; set < max_texcoord_sets; ++set)
        mesh.texcoord_buffer[set] = first + 3 + set;
}

TEST_CASE("arrays are in buffers where these are used, and in memory where there are none")
{
    frame_bench b;
    const scene_object object = pictured_triangle(b, 7);
    const frame_layers layers = layers_of(b, {object});
    give_buffers(arrays_of(b, object.object), 60);
    CHECK(planned_commands(b, layers) == draw_of_triangle(0));
    b.context.caps.vbo = 1;
    CHECK(planned_commands(b, layers)
        == "draw 1 x 3 indices with state 0, positions in buffer 60, normals in buffer 61, coordinates in buffer 63, "
           "coordinates in buffer 63, coordinates in buffer 63, indices in buffer 62\n");
    for (const array_source& array : {b.f.draws[0].positions, b.f.draws[0].normals, b.f.draws[0].indices})
        CHECK(array.data == nullptr);
    arrays_of(b, object.object).normal_buffer = 0; // one that could not be made
    CHECK(planned_commands(b, layers).find("normals in memory") != std::string::npos);
}

TEST_CASE("units take the coordinate sets that a mesh has, the first where it has no more")
{
    frame_bench b;
    uint32_t material = 0;
    add_material(b, &material);
    const int sets[5][3] = {{-1, -1, -1}, {0, 0, 0}, {0, 1, 0}, {0, 1, 2}, {0, 1, 2}};
    for (uint32_t count = 0; count < 5; ++count) {
        const uint32_t mesh = add_mesh(b, 3, std::min(count, max_texcoord_sets));
        arrays_of(b, mesh).texcoord_sets = count; // 4: more than a mesh can have
        advance_and_plan(b, layers_of(b, {object_at_origin(object_model, mesh, material)}));
        for (uint32_t unit = 0; unit < texture_unit_count; ++unit) {
            CAPTURE(count);
            CAPTURE(unit);
            const int set = sets[count][unit];
            const float* expected = set < 0 ? nullptr : arrays_of(b, mesh).texcoords[set];
            CHECK(b.f.draws[0].coordinates[unit].data == expected);
        }
    }
}

TEST_CASE("an effect's vertices are in memory, those kept for an earlier drawing too")
{
    frame_bench b;
    b.context.caps.vbo = 1;
    const uint32_t effect = add_effect(b, mesh_effect_centerwave, add_time(b));
    const scene_object wave = object_at_origin(object_genmesh, effect, 0);
    scene_object later = wave;
    later.time_offset = 3.0f;
    const std::string text = planned_commands(b, layers_of(b, {wave, later}, 5));
    CHECK(lines_with(text, "positions in memory, normals in memory").size() == text.size());
    const mesh_arrays& mesh = table_get(b.d.effect_table, effect)->mesh;
    CHECK(b.f.draws[0].positions.data == b.f.vertices.data());
    CHECK(b.f.draws[0].normals.data == b.f.vertices.data() + size_t{mesh.vertex_count} * 3);
    CHECK(b.f.draws[1].positions.data == mesh.positions);
    CHECK(b.f.draws[1].normals.data == mesh.normals);
}

TEST_CASE("rippled vertices go into the buffers for them before each mesh, where these are used")
{
    frame_bench b;
    scene_object first = pictured_triangle(b, 7);
    add_manipulator(first, manipulator_rippler, {0, 1, 0});
    scene_object bare = first;
    bare.object = add_mesh(b, 3, 1, false);
    const frame_layers layers = layers_of(b, {first, bare});
    const std::string coordinates = ", coordinates in memory, coordinates in memory, coordinates in memory";
    CHECK(planned_commands(b, layers)
        == draw_of_triangle(0) + "draw 1 x 3 indices with state 0, positions in memory" + coordinates
            + ", indices in memory\n");
    CHECK(b.f.draws[1].positions.data == b.tools.rippler.positions);
    b.context.caps.vbo = 1;
    CHECK(planned_commands(b, layers)
        == "upload 3 moved vertices\n"
           "draw 1 x 3 indices with state 0, positions streamed, normals streamed"
            + coordinates
            + ", indices in memory\n"
              "upload 3 moved vertices\n"
              "draw 1 x 3 indices with state 0, positions streamed"
            + coordinates + ", indices in memory\n");
    REQUIRE(b.f.vertex_uploads.size() == 2);
    CHECK(b.f.vertex_uploads[0].positions == b.f.vertices.data()); // kept
    CHECK(b.f.vertex_uploads[0].normals == b.f.vertices.data() + 9);
    CHECK(b.f.vertex_uploads[1].positions == b.tools.rippler.positions);
    CHECK(b.f.vertex_uploads[1].normals == nullptr);
}

// ---- wireframes --------------------------------------------------------------------------------------

// `do_it` with standard output caught.
template <typename work> static std::string printed_while(const work& do_it)
{
    std::FILE* caught = std::tmpfile();
    std::fflush(stdout);
    const int kept = dup(1);
    dup2(fileno(caught), 1);
    do_it();
    std::fflush(stdout);
    dup2(kept, 1);
    close(kept);
    std::rewind(caught);
    char text[256] = {};
    const size_t size = std::fread(text, 1, sizeof text - 1, caught);
    std::fclose(caught);
    return std::string(text, size);
}

TEST_CASE("a wireframe is drawn by the fixed pipeline's own lines, by programs from a list of lines")
{
    frame_bench b;
    const scene_object object = pictured_triangle(b, 7);
    material_record& material = *table_get(b.d.material_table, object.material);
    material.wireframe = 1;
    const frame_layers layers = layers_of(b, {object, bare_swirl(b)});
    CHECK(planned_commands(b, layers) == draw_of_triangle(0) + draw_of_swirl(0));
    CHECK(arrays_of(b, object.object).line_indices == nullptr);

    give_program(material, 50);
    b.context.glsl = true;
    std::string lines = draw_of_triangle(0);
    lines.replace(lines.find("3 indices"), 9, "6 line indices");
    const std::string bare = draw_of_swirl(0); // has no material that asks for lines
    CHECK(printed_while([&] { CHECK(planned_commands(b, layers) == lines + bare); }) == "GenerateLineIndexArray\n");
    CHECK(b.f.draws[0].lines);
    CHECK(b.f.draws[0].indices.data == arrays_of(b, object.object).line_indices);
    CHECK(!b.f.draws[1].lines);
    CHECK(printed_while([&] { CHECK(planned_commands(b, layers) == lines + bare); }).empty()); // made once
}

TEST_CASE("lines go into a buffer of their own once, and are drawn from it afterwards")
{
    frame_bench b;
    const scene_object object = pictured_triangle(b, 7);
    material_record& material = *table_get(b.d.material_table, object.material);
    material.wireframe = 1;
    give_program(material, 50);
    b.context.glsl = true;
    b.context.caps.vbo = 1;
    mesh_arrays& mesh = arrays_of(b, object.object);
    const frame_layers layers = layers_of(b, {object});
    std::string text;
    printed_while([&] { text = planned_commands(b, layers); });
    CHECK(lines_with(text, "upload").empty()); // a mesh without buffers has none for lines
    mesh.index_buffer = 60;
    b.context.caps.vbo = 0;
    CHECK(lines_with(planned_commands(b, layers), "upload").empty()); // nor where none are used
    b.context.caps.vbo = 1;
    text = planned_commands(b, layers);
    CHECK(text.starts_with("upload lines of 3 indices\ndraw 1 x 6 line indices"));
    CHECK(text.ends_with("indices in memory\n")); // there is no buffer yet
    mesh.line_index_buffer = 61;
    text = planned_commands(b, layers);
    CHECK(lines_with(text, "upload").empty());
    CHECK(text.ends_with("indices in buffer 61\n"));
}

// ---- materials -----------------------------------------------------------------------------------------

TEST_CASE("a mesh without a material is drawn with what stands, from frame to frame")
{
    frame_bench b;
    const scene_object bare = bare_swirl(b);
    const scene_object pictured = pictured_triangle(b, 7);
    const std::string text = planned_text(b, layers_of(b, {bare, pictured, bare, bare}));
    CHECK(commands_of(text) == draw_of_swirl(0) + draw_of_triangle(1) + draw_of_swirl(1) + draw_of_swirl(1));
    CHECK(lines_with(text, "no material") == "  state 0: depth 1, no material\n");
    const std::string next = planned_text(b, layers_of(b, {bare}));
    const std::string rest = ", cull 0, blend 2, line width 0, normalize 0, wireframe 0, color 0.25 0.5 0.75 1\n";
    CHECK(lines_with(text, "state 1:").starts_with("  state 1: depth 0" + rest));
    CHECK(lines_with(next, "  state") == "  state 0: depth 1" + rest); // the layer's own
    CHECK(lines_with(next, "unit 1 picture 7").size() > 0);
}

TEST_CASE("a layer sets the depth test for what comes before its first material")
{
    frame_bench b;
    const uint32_t bare = add_scene(b.content, {bare_swirl(b)});
    layer_plan flat = layer_of(bare);
    flat.depth_test = 0;
    const std::string text = planned_text(b, layers_of({flat, layer_of(bare)}));
    CHECK(lines_with(text, "  state") == "  state 0: depth 0, no material\n  state 1: depth 1, no material\n");
}

TEST_CASE("meshes of one material share what stands, those of another layer do not")
{
    frame_bench b;
    uint32_t handle = 0;
    material_record& material = add_material(b, &handle);
    material.color[0] = static_cast<float>(add_time(b));
    material.color_dynamic[0] = 1;
    const scene_object object = object_at_origin(object_model, add_mesh(b), handle);
    const uint32_t scene = add_scene(b.content, {object, object});
    const std::string text = planned_text(b, layers_of({layer_of(scene, 3), layer_of(scene, 4)}));
    CHECK(b.f.materials.size() == 2);
    CHECK(lines_with(text, "  state").find("color 3 0.5") < lines_with(text, "  state").find("color 4 0.5"));
    CHECK(b.f.draws[1].material == 0);
    CHECK(b.f.draws[2].material == 1);
    CHECK(b.f.draws[3].view == 1);
}

TEST_CASE("materials see the camera of their layer: lights, turning pictures")
{
    frame_bench b;
    uint32_t handle = 0;
    material_record& material = add_material(b, &handle);
    material.light1 = add_values(b, {0, 0, 0, 0, 0, 0, 1, 2, 3});
    material.texture[0] = add_cube(b, 7);
    layer_plan layer = layer_of(add_scene(b.content, {object_at_origin(object_model, add_mesh(b), handle)}));
    layer.position[0] = 10.0f;
    layer.rotation[1] = 90.0f;
    advance_and_plan(b, layers_of({layer}));
    REQUIRE(b.f.materials.size() == 1);
    CHECK(std::equal(b.f.views[0].camera, b.f.views[0].camera + 16, b.f.materials[0].light_view));
    float back[16];
    copy_matrix(identity, back);
    rotate_y(back, -90.0f);
    CHECK(std::equal(back, back + 16, b.f.materials[0].units[0].matrix));
    layer.rotation[0] = 90.0f;
    layer.rotation[1] = 0.0f;
    advance_and_plan(b, layers_of({layer}));
    copy_matrix(identity, back);
    rotate_x(back, -90.0f);
    CHECK(std::equal(back, back + 16, b.f.materials[0].units[0].matrix));
}

TEST_CASE("a mesh without triangles or copies draws nothing, but its material stands")
{
    for (const bool swarm : {false, true}) {
        frame_bench b;
        scene_object nothing = pictured_triangle(b, 7);
        if (swarm)
            nothing = object_at_origin(
                object_genmesh, add_effect(b, mesh_effect_particles, 0), nothing.material); // no indices
        else
            add_manipulator(nothing, manipulator_x_multiplier, {0});
        const std::string text = planned_text(b, layers_of(b, {nothing, bare_swirl(b)}));
        CHECK(commands_of(text) == draw_of_swirl(0));
        CHECK(lines_with(text, "unit 1 picture 7").size() > 0);
    }
}

TEST_CASE("meshes that lack vertices, positions, indices or their count draw nothing")
{
    for (int lacking = 0; lacking < 4; ++lacking) {
        frame_bench b;
        const scene_object object = pictured_triangle(b, 7);
        mesh_arrays& mesh = arrays_of(b, object.object);
        if (lacking == 0)
            mesh.vertex_count = 0;
        else if (lacking == 1)
            mesh.positions = nullptr;
        else if (lacking == 2)
            mesh.index_count = 0;
        else
            mesh.indices = nullptr;
        CHECK(planned_text(b, layers_of(b, {object})).empty());
    }
}

TEST_CASE("a program that did not build draws nothing until another material is applied")
{
    frame_bench b;
    b.context.glsl = true;
    const scene_object good = pictured_triangle(b, 7);
    const scene_object bad = pictured_triangle(b, 8);
    const scene_object none = pictured_triangle(b, 9);
    give_program(*table_get(b.d.material_table, good.material), 50);
    give_program(*table_get(b.d.material_table, bad.material), 0);
    const scene_object bare = bare_swirl(b);
    const std::string text = planned_text(b, layers_of(b, {good, bad, bare, none, bare, good, bare}));
    CHECK(commands_of(text) == draw_of_triangle(0) + draw_of_triangle(1) + draw_of_swirl(1));
    CHECK(planned_text(b, layers_of(b, {bad})).empty());
    CHECK(planned_text(b, layers_of(b, {bare})).empty()); // nor in the next frame
    b.context.glsl = false;                               // the fixed path has no use for programs
    CHECK(planned_commands(b, layers_of(b, {bare})) == draw_of_swirl(0));
}

TEST_CASE("without a program yet the fixed pipeline draws, with one all that has no material does so, too")
{
    frame_bench b;
    b.context.glsl = true;
    const scene_object good = pictured_triangle(b, 7);
    give_program(*table_get(b.d.material_table, good.material), 50);
    const scene_object bare = bare_swirl(b);
    advance_and_plan(b, layers_of(b, {bare, good, bare}));
    REQUIRE(b.f.draws.size() == 3);
    CHECK(b.f.draws[0].program == no_index);
    CHECK(b.f.draws[1].program == 1);
    CHECK(b.f.draws[2].program == 1);
    CHECK(b.f.programs[1].program == 50);
    CHECK(b.f.programs.size() == b.f.materials.size());
    b.context.glsl = false;
    advance_and_plan(b, layers_of(b, {good}));
    CHECK(b.f.draws[0].program == no_index);
    CHECK(b.f.programs.empty());
}

// ---- pictures that are computed --------------------------------------------------------------------------

TEST_CASE("a picture's pixels go up before the mesh that needs them, again when its time has changed")
{
    frame_bench b;
    uint32_t handle = 0;
    add_material(b, &handle).texture[0] = add_moving(b, 5, add_time(b));
    const scene_object object = object_at_origin(object_model, add_mesh(b), handle);
    const uint32_t scene = add_scene(b.content, {pictured_triangle(b, 7), object, object});
    const std::string text = planned_commands(b, layers_of({layer_of(scene, 3), layer_of(scene, 4)}));
    const std::string layer = "upload texture 5\n";
    CHECK(text
        == draw_of_triangle(0) + layer + draw_of_triangle(1) + draw_of_triangle(1) + draw_of_triangle(2) + layer
            + draw_of_triangle(3) + draw_of_triangle(3));
    REQUIRE(b.f.uploads.size() == 2);
    CHECK(b.f.uploads[0].pixels == 0);
    CHECK(b.f.uploads[1].pixels == size_t{64} * 64);
    CHECK(b.f.uploads[1].texture == table_get(b.d.dynamic_texture_table, 1));
}

TEST_CASE("an upload binds its picture to the first unit, which the material then takes back")
{
    frame_bench b;
    uint32_t handle = 0;
    material_record& material = add_material(b, &handle);
    material.texture[0] = add_image(b, 7);
    material.texture[1] = add_moving(b, 5, add_time(b));
    const scene_object object = object_at_origin(object_model, add_mesh(b), handle);
    const std::string text = planned_text(b, layers_of(b, {object}, 3));
    CHECK(commands_of(text).starts_with("upload texture 5\ndraw"));
    CHECK(lines_with(text, "unit 1 picture 7,").size() > 0);
    CHECK(lines_with(text, "unit 2 picture 5,").size() > 0);

    // A program that did not build takes nothing back, and the fixed pipeline draws later.
    frame_bench other;
    other.context.glsl = true;
    uint32_t broken = 0;
    add_material(other, &broken).texture[0] = add_moving(other, 5, add_time(other));
    advance_and_plan(other, layers_of(other, {object_at_origin(object_model, add_mesh(other), broken)}, 3));
    CHECK(other.standing.material.units[0].flat_texture == 5);
    CHECK(other.f.uploads.size() == 1);
}

TEST_CASE("a material is applied anew after an upload, which leaves its picture in the first unit")
{
    frame_bench b;
    uint32_t handle = 0, other = 0;
    add_material(b, &handle).texture[0] = add_moving(b, 5, add_time(b));
    material_record& second = add_material(b, &other);
    second.texture[0] = add_image(b, 7);
    second.texture[1] = add_moving(b, 6, add_time(b));
    const uint32_t mesh = add_mesh(b);
    const scene_object shows = object_at_origin(object_model, mesh, other);
    const scene_object moves = object_at_origin(object_model, mesh, handle);
    const frame_layers layers = layers_of(b, {shows, moves, shows, shows}, 3);
    advance(b, layers);
    REQUIRE(b.f.pictures.size() == 2);
    b.f.meshes[3].fresh = 1; // an upload before a mesh whose material stands already
    b.f.meshes[3].fresh_count = 1;
    plan(b, layers);
    REQUIRE(b.f.draws.size() == 4);
    const uint32_t first_unit[4] = {7, 5, 7, 7};
    for (size_t i = 0; i < 4; ++i)
        CHECK(b.f.materials[b.f.draws[i].material].units[0].flat_texture == first_unit[i]);
    CHECK(b.standing.material.units[0].flat_texture == 7);
}

// ---- a function of what was advanced -----------------------------------------------------------------------

// A frame with a bit of everything: targets, effects, rippled and rowed meshes, letters,
// moving pictures, wireframes.
static frame_layers full_frame(frame_bench& b)
{
    scene_object pictured = pictured_triangle(b, 7);
    add_manipulator(pictured, manipulator_x_multiplier, {3, 10, 1, 1, 45});
    scene_object rippled = pictured_triangle(b, 8);
    add_manipulator(rippled, manipulator_rippler, {0, 1, 0.5f});
    uint32_t moving = 0;
    add_material(b, &moving).texture[0] = add_moving(b, 5, add_time(b));
    scene_object wave = object_at_origin(object_genmesh, add_effect(b, mesh_effect_lake, add_time(b)), moving);
    scene_object later = wave;
    later.time_offset = 1.0f;
    later.material = 0;
    font_record font = {};
    font.glyphs[0] = {pictured.object, pictured.material, 0, 0.0f, 2.5f};
    scene_object text = object_at_origin(object_text, 0, 0);
    text.font = table_add(b.d.font_table, font);
    std::strcpy(text.text, "aa");
    material_record& wired = *table_get(b.d.material_table, rippled.material);
    wired.wireframe = 1;
    wired.linewidth = 2.0f;
    for (auto [handle, material] : b.d.material_table)
        give_program(material, 50 + handle);
    const uint32_t scene = add_scene(b.content, {pictured, rippled, wave, later, text, rippled});
    add_mode(b, 0, render_simple, scene);
    add_mode(b, 1, render_to_texture, scene, add_target(b, 30));
    add_mode(b, 2, render_simple, scene);
    return layers_at(b, 2);
}

TEST_CASE("a plan made twice from what stood before is the same")
{
    for (const bool glsl : {false, true})
        for (const uint8_t buffers : {uint8_t{0}, uint8_t{1}}) {
            frame_bench b;
            b.context.glsl = glsl;
            b.context.caps.vbo = buffers;
            const frame_layers layers = full_frame(b);
            printed_while([&] { advance_and_plan(b, layers); });
            advance(b, layers);
            const standing_state before = b.standing;
            plan(b, layers);
            const std::string first = frame_as_text(b.f);
            const std::vector<frame_command> commands = b.f.commands;
            b.standing = before;
            plan(b, layers);
            CHECK(frame_as_text(b.f) == first);
            CHECK(b.f.commands.size() == commands.size());
            CHECK(lines_with(first, "draw ").size() > 1000);
        }
}

TEST_CASE("planning begins empty again, and its lists keep their storage")
{
    frame_bench b;
    b.context.glsl = true;
    b.context.caps.vbo = 1;
    const frame_layers layers = full_frame(b);
    printed_while([&] { advance_and_plan(b, layers); });
    const auto storage = [&] {
        return std::vector<const void*>{b.f.commands.data(), b.f.texture_copies.data(), b.f.viewports.data(),
            b.f.clears.data(), b.f.uploads.data(), b.f.vertex_uploads.data(), b.f.draws.data(), b.f.views.data(),
            b.f.materials.data(), b.f.programs.data(), b.f.copies.data()};
    };
    const auto sizes = [&] {
        return std::vector<size_t>{b.f.commands.size(), b.f.texture_copies.size(), b.f.viewports.size(),
            b.f.clears.size(), b.f.vertex_uploads.size(), b.f.draws.size(), b.f.views.size(), b.f.materials.size(),
            b.f.programs.size(), b.f.copies.size()};
    };
    const std::vector<const void*> storage_before = storage();
    const std::vector<size_t> sizes_before = sizes();
    plan(b, layers);
    CHECK(storage() == storage_before);
    CHECK(sizes() == sizes_before);
    CHECK(std::find(storage_before.begin(), storage_before.end(), nullptr) == storage_before.end());
    b.f.recreations.push_back({});
    b.f.line_uploads.push_back({});
    clear_planned(b.f);
    CHECK(frame_as_text(b.f).empty());
    CHECK(sizes() == std::vector<size_t>(sizes_before.size(), 0));
    CHECK(b.f.uploads.empty());
    CHECK(b.f.recreations.empty());
    CHECK(b.f.line_uploads.empty());
}
