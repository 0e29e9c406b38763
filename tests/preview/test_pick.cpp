#include "tools/preview/pick.h"

#include "content/matrix.h"
#include "frame_bench.h"
#include "model/glyphs.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

// ---- scenes -----------------------------------------------------------------------------------

namespace {

using point = std::array<float, 3>;

} // namespace

// A mesh of these triangles, three corners each.
static uint32_t add_triangles(frame_bench& b, const std::vector<point>& corners)
{
    const size_t floats = corners.size() * 3;
    mesh_record mesh = {};
    mesh.data = static_cast<uint8_t*>(std::malloc(floats * sizeof(float) + corners.size() * sizeof(uint16_t)));
    mesh.arrays.vertex_count = mesh.arrays.index_count = static_cast<uint32_t>(corners.size());
    mesh.arrays.positions = reinterpret_cast<float*>(mesh.data);
    mesh.arrays.indices = reinterpret_cast<uint16_t*>(mesh.arrays.positions + floats);
    for (size_t i = 0; i < corners.size(); ++i) {
        std::copy_n(corners[i].data(), 3, mesh.arrays.positions + i * 3);
        mesh.arrays.indices[i] = static_cast<uint16_t>(i);
    }
    return table_add(b.d.mesh_table, mesh);
}

// A rectangle at a depth, its front toward +z.
static uint32_t add_quad(frame_bench& b, float left, float low, float right, float high, float z = 0)
{
    return add_triangles(
        b, {{left, low, z}, {right, low, z}, {right, high, z}, {left, low, z}, {right, high, z}, {left, high, z}});
}

static uint32_t add_plain_material(frame_bench& b, bool depth_test)
{
    uint32_t handle = 0;
    add_material(b, &handle).depth_test = depth_test ? 1 : 0;
    return handle;
}

static scene_object quad_object(
    frame_bench& b, float left, float low, float right, float high, float z = 0, bool depth_test = true)
{
    return object_at_origin(object_model, add_quad(b, left, low, right, high, z), add_plain_material(b, depth_test));
}

// The screen's, 800 x 600; (0, 0) is its upper left corner, (1, 1) the lower right one.
static layer_plan flat_layer(uint32_t scene)
{
    layer_plan layer = layer_of(scene);
    layer.viewport_width = 800;
    layer.viewport_height = 600;
    layer.projection = projection_orthographic;
    layer.depth_test = 0;
    return layer;
}

// Seen from the origin along -z: at a distance of 1, the picture's upper edge is 1 above its middle.
static layer_plan deep_layer(uint32_t scene)
{
    layer_plan layer = layer_of(scene);
    layer.viewport_width = 800;
    layer.viewport_height = 600;
    layer.projection = projection_perspective;
    layer.fov = 90;
    layer.aspect = 800.0f / 600.0f;
    layer.far_distance = 100;
    return layer;
}

static std::vector<picked_object> picked(frame_bench& b, const std::vector<layer_plan>& plans, double x, double y)
{
    const frame_layers layers = layers_of(plans);
    advance_and_plan(b, layers);
    return pick(b.f, layers, 800, 600, x, y);
}

// The numbers of the objects, on top first: "2 0".
static std::string numbers_of(const std::vector<picked_object>& found)
{
    std::string text;
    for (const picked_object& object : found)
        text += (text.empty() ? "" : " ") + std::to_string(object.object);
    return text;
}

static std::string flat_objects(frame_bench& b, const std::vector<scene_object>& objects, double x, double y)
{
    return numbers_of(picked(b, {flat_layer(add_scene(b.content, objects))}, x, y));
}

static std::string deep_objects(
    frame_bench& b, const std::vector<scene_object>& objects, double x = 400, double y = 300)
{
    return numbers_of(picked(b, {deep_layer(add_scene(b.content, objects))}, x, y));
}

// ---- places ---------------------------------------------------------------------------------------

TEST_CASE("A rectangle of a flat scene is found in its pixels and in no other")
{
    frame_bench b;
    const std::vector<scene_object> objects = {quad_object(b, 0.25f, 0.5f, 0.5f, 0.75f, 0, false)};
    CHECK(flat_objects(b, objects, 200, 300) == "0");
    CHECK(flat_objects(b, objects, 200.9, 300.9) == "0");
    CHECK(flat_objects(b, objects, 399.9, 449.9) == "0");
    CHECK(flat_objects(b, objects, 199.9, 300) == "");
    CHECK(flat_objects(b, objects, 400, 300) == "");
    CHECK(flat_objects(b, objects, 200, 299.9) == "");
    CHECK(flat_objects(b, objects, 200, 450) == "");
}

TEST_CASE("What was found says its track, layer, scene, object and depth")
{
    frame_bench b;
    scene_object nothing = object_at_origin(object_model, 0, 1);
    const uint32_t scene = add_scene(b.content, {nothing, quad_object(b, -1, -1, 1, 1, -2)});
    layer_plan layer = deep_layer(scene);
    layer.track = 3;
    layer.layer = 17;
    const std::vector<picked_object> found = picked(b, {deep_layer(0), layer}, 400, 300);
    REQUIRE(found.size() == 1);
    CHECK(found[0].track == 3);
    CHECK(found[0].layer == 17);
    CHECK(found[0].scene == scene);
    CHECK(found[0].object == 1);
    CHECK(found[0].depth == doctest::Approx((100.1 / 99.9 - 20.0 / 99.9 / 2) / 2 + 0.5)); // near 0.1, far 100, at 2
}

TEST_CASE("Outside of the picture nothing is found, and where there is no number")
{
    frame_bench b;
    const std::vector<scene_object> objects = {quad_object(b, -1, -1, 2, 2, 0, false)};
    CHECK(flat_objects(b, objects, 0, 0) == "0");
    CHECK(flat_objects(b, objects, 799.9, 599.9) == "0");
    for (const double outside : {-0.1, 800.0, 1e300, -HUGE_VAL, std::nan("")})
        CHECK(flat_objects(b, objects, outside, 10) == "");
    for (const double outside : {-0.1, 600.0, std::nan("")})
        CHECK(flat_objects(b, objects, 10, outside) == "");
}

TEST_CASE("A viewport of another size moves what is drawn in it")
{
    frame_bench b;
    layer_plan layer = flat_layer(add_scene(b.content, {quad_object(b, -1, -1, 2, 2, 0, false)}));
    layer.viewport_width = 400;
    layer.viewport_height = 300; // the lower left quarter
    CHECK(numbers_of(picked(b, {layer}, 399, 300)) == "0");
    CHECK(numbers_of(picked(b, {layer}, 400, 300)) == "");
    CHECK(numbers_of(picked(b, {layer}, 399, 299)) == "");
}

// ---- what lies over what ----------------------------------------------------------------------------

TEST_CASE("Without a depth test what is drawn later lies on top")
{
    frame_bench b;
    const std::vector<scene_object> objects = {quad_object(b, -1, -1, 1, 1, -2, false),
        quad_object(b, -1, -1, 1, 1, -9, false), quad_object(b, -1, -1, 0, 1, -1, false)};
    CHECK(deep_objects(b, objects) == "1 0");
    CHECK(deep_objects(b, objects, 399) == "2 1 0");
}

TEST_CASE("With a depth test what is nearer lies on top, in whatever order it is drawn")
{
    frame_bench b;
    const float depths[3] = {-2, -4, -8};
    int order[3] = {0, 1, 2};
    do {
        std::vector<scene_object> objects;
        for (const int i : order)
            objects.push_back(quad_object(b, -9, -9, 9, 9, depths[i]));
        const auto place = [&](int i) { return std::to_string(std::find(order, order + 3, i) - order); };
        CHECK(deep_objects(b, objects) == place(0) + " " + place(1) + " " + place(2));
    } while (std::next_permutation(order, order + 3));
}

TEST_CASE("Of two that are equally deep the one that is drawn later lies on top")
{
    frame_bench b;
    CHECK(deep_objects(b, {quad_object(b, -1, -1, 1, 1, -3), quad_object(b, -2, -2, 2, 2, -3)}) == "1 0");
}

TEST_CASE("What has no depth test lies over what is nearer, and hides nothing from it")
{
    frame_bench b;
    const scene_object near = quad_object(b, -1, -1, 1, 1, -2);
    const scene_object flat = quad_object(b, -9, -9, 9, 9, -5, false);
    const scene_object far = quad_object(b, -9, -9, 9, 9, -8);
    CHECK(deep_objects(b, {near, flat, far}) == "1 0 2");
    CHECK(deep_objects(b, {flat, far}) == "1 0");
}

TEST_CASE("An object is listed once, where its uppermost part lies")
{
    frame_bench b;
    const uint32_t material = add_plain_material(b, true);
    const uint32_t both = add_triangles(b,
        {{-9, -9, -2}, {9, -9, -2}, {0, 9, -2}, {-9, -9, -8}, {9, -9, -8}, {0, 9, -8}, {-9, -9, -3}, {9, -9, -3},
            {0, 9, -3}});
    CHECK(deep_objects(b, {quad_object(b, -9, -9, 9, 9, -5), object_at_origin(object_model, both, material)}) == "1 0");
    CHECK(deep_objects(b, {object_at_origin(object_model, both, material), quad_object(b, -9, -9, 9, 9, -5)}) == "0 1");
}

TEST_CASE("A clear of the depth lets all later drawing lie on top")
{
    frame_bench b;
    const uint32_t near = add_scene(b.content, {quad_object(b, -9, -9, 9, 9, -1)});
    const uint32_t far = add_scene(b.content, {quad_object(b, -9, -9, 9, 9, -5), quad_object(b, -9, -9, 9, 9, -7)});
    layer_plan second = deep_layer(far);
    second.track = 1;
    CHECK(picked(b, {deep_layer(near), second}, 400, 300)[0].track == 0);
    second.clear = clear_depth;
    const std::vector<picked_object> found = picked(b, {deep_layer(near), second}, 400, 300);
    REQUIRE(found.size() == 3);
    CHECK(found[0].track == 1);
    CHECK(found[1].track == 1);
    CHECK(found[2].track == 0);
}

TEST_CASE("What was drawn before a clear of the colour is gone")
{
    frame_bench b;
    const uint32_t scene = add_scene(b.content, {quad_object(b, -9, -9, 9, 9, -1)});
    layer_plan second = deep_layer(scene);
    second.track = 1;
    second.clear = clear_color | clear_depth;
    const std::vector<picked_object> found = picked(b, {deep_layer(scene), second}, 400, 300);
    REQUIRE(found.size() == 1);
    CHECK(found[0].track == 1);
}

TEST_CASE("Layers that draw into a texture do not count, nor do those that draw on there")
{
    frame_bench b;
    const uint32_t scene = add_scene(b.content, {quad_object(b, -9, -9, 9, 9, -5)});
    const uint32_t hole = add_scene(b.content, {quad_object(b, -9, -9, 9, 9, -9)});
    layer_plan texture = deep_layer(scene), on_texture = layer_of(scene), screen = deep_layer(hole),
               on = layer_of(scene);
    texture.target = add_image_texture(b.content, 64, 64);
    on_texture.track = 1;
    screen.track = 2;
    on.track = 3;
    on.projection = projection_kept;
    CHECK(numbers_of(picked(b, {texture, on_texture}, 400, 300)) == "");
    const std::vector<picked_object> found = picked(b, {texture, on_texture, screen, on}, 400, 300);
    REQUIRE(found.size() == 2); // the depth of what was drawn for the texture stays
    CHECK(found[0].track == 3);
    CHECK(found[1].track == 2);
}

// ---- triangles ----------------------------------------------------------------------------------------

TEST_CASE("Back faces are found unless the material leaves them out")
{
    frame_bench b;
    const scene_object front = quad_object(b, -1, -1, 1, 1, -2);
    scene_object back = quad_object(b, -1, -1, 1, 1, -2);
    back.values[4].value = 180; // about y: beyond the eye
    back.values[2].value = -4;
    CHECK(deep_objects(b, {front}) == "0");
    CHECK(deep_objects(b, {back}) == "0");
    for (const scene_object& object : {front, back})
        table_get(b.d.material_table, object.material)->backface_culling = 1;
    CHECK(deep_objects(b, {front}) == "0");
    CHECK(deep_objects(b, {back}) == "");
}

TEST_CASE("A floor that goes on behind the eye is found before it, and nothing that is behind it")
{
    frame_bench b;
    const uint32_t material = add_plain_material(b, true);
    const uint32_t floor
        = add_triangles(b, {{-50, -1, 50}, {50, -1, 50}, {50, -1, -50}, {-50, -1, 50}, {50, -1, -50}, {-50, -1, -50}});
    const std::vector<scene_object> objects = {object_at_origin(object_model, floor, material)};
    CHECK(deep_objects(b, objects, 400, 599) == "0");
    CHECK(deep_objects(b, objects, 400, 307) == "0"); // 300 / 50 pixels below the middle, and a little
    CHECK(deep_objects(b, objects, 400, 305) == "");
    CHECK(deep_objects(b, objects, 400, 0) == "");
    CHECK(deep_objects(b, {quad_object(b, -9, -9, 9, 9, 2)}) == "");
}

TEST_CASE("What is nearer than the near plane or farther than the far one is not found")
{
    frame_bench b;
    CHECK(deep_objects(b, {quad_object(b, -9, -9, 9, 9, -0.09f)}) == "");
    CHECK(deep_objects(b, {quad_object(b, -9, -9, 9, 9, -0.11f)}) == "0");
    CHECK(deep_objects(b, {quad_object(b, -9, -9, 9, 9, -99.0f)}) == "0");
    CHECK(deep_objects(b, {quad_object(b, -9, -9, 9, 9, -101.0f)}) == "");
}

TEST_CASE("Triangles without an area, without numbers and with corners that do not exist are not found")
{
    frame_bench b;
    const uint32_t material = add_plain_material(b, true);
    const uint32_t edge = add_triangles(b, {{-1, 0, -2}, {1, 0, -2}, {0.5f, 0, -2}});
    const uint32_t broken = add_triangles(b, {{-1, -1, -2}, {NAN, -1, -2}, {0, 1, -2}});
    const uint32_t wild = add_quad(b, -1, -1, 1, 1, -2);
    arrays_of(b, wild).indices[1] = arrays_of(b, wild).indices[4] = 60000;
    for (const uint32_t mesh : {edge, broken, wild})
        CHECK(deep_objects(b, {object_at_origin(object_model, mesh, material)}) == "");
}

// Whether a pixel's centre lies in a triangle of the picture, by which side of each edge it lies on.
static bool lies_in(const std::array<std::array<double, 2>, 3>& corners, double x, double y)
{
    int sides = 0;
    for (size_t k = 0; k < 3; ++k) {
        const auto& from = corners[k];
        const auto& to = corners[(k + 1) % 3];
        sides += (to[0] - from[0]) * (y - from[1]) - (to[1] - from[1]) * (x - from[0]) > 0 ? 1 : -1;
    }
    return sides == 3 || sides == -3;
}

TEST_CASE("Of many triangles those are found that a drawing by hand has in the pixel, nearest first")
{
    frame_bench b;
    std::mt19937 random(7);
    const auto between = [&](float least, float most) {
        return least + (most - least) * static_cast<float>(random() % 10000) / 10000;
    };
    std::vector<scene_object> objects;
    std::vector<std::vector<point>> triangles;
    for (int i = 0; i < 40; ++i) {
        const float z = between(-20, -2); // each in a plane of its own, so that its depth is known
        std::vector<point> corners;
        for (int k = 0; k < 3; ++k)
            corners.push_back({z * between(-1.6f, 1.6f), z * between(-1.2f, 1.2f), z});
        objects.push_back(object_at_origin(object_model, add_triangles(b, corners), add_plain_material(b, true)));
        triangles.push_back(corners);
    }
    for (int i = 0; i < 200; ++i) {
        const double x = static_cast<double>(random() % 800), y = static_cast<double>(random() % 600);
        std::vector<std::pair<float, int>> expected;
        for (int t = 0; t < 40; ++t) {
            std::array<std::array<double, 2>, 3> seen;
            for (size_t k = 0; k < 3; ++k) {
                const point& corner = triangles[static_cast<size_t>(t)][k];
                const auto distance = static_cast<double>(-corner[2]);
                seen[k] = {400 + 300 * static_cast<double>(corner[0]) / distance,
                    300 - 300 * static_cast<double>(corner[1]) / distance};
            }
            if (lies_in(seen, x + 0.5, y + 0.5))
                expected.push_back({-triangles[static_cast<size_t>(t)][0][2], t});
        }
        std::sort(expected.begin(), expected.end());
        std::string text;
        for (const auto& [distance, number] : expected)
            text += (text.empty() ? "" : " ") + std::to_string(number);
        CAPTURE(x);
        CAPTURE(y);
        CHECK(deep_objects(b, objects, x, y) == text);
    }
}

// ---- copies, letters, what moves -------------------------------------------------------------------------

TEST_CASE("Every copy is found where it stands, and between them nothing")
{
    frame_bench b;
    scene_object row = quad_object(b, 0, 0, 0.05f, 1, 0, false);
    add_manipulator(row, manipulator_x_multiplier, {3, 0.25f}); // 0.25 apart: every 200 pixels
    for (const double x : {0.0, 39.0, 200.0, 239.0, 400.0, 439.0})
        CHECK(flat_objects(b, {row}, x, 300) == "0");
    for (const double x : {40.0, 199.0, 240.0, 440.0, 600.0, 799.0})
        CHECK(flat_objects(b, {row}, x, 300) == "");
}

TEST_CASE("Copies behind the eye and around it are told apart")
{
    frame_bench b;
    scene_object column = quad_object(b, -1, -1, 1, 1, 6);
    add_manipulator(column, manipulator_x_multiplier, {4, 0, 0, -5}); // at z 6, 1, -4, -9
    CHECK(deep_objects(b, {column}) == "0");
    CHECK(deep_objects(b, {column}, 400 + 74, 300) == "0"); // 300 / 4 pixels to the side: the one at -4
    CHECK(deep_objects(b, {column}, 400 + 76, 300) == "");
    scene_object behind = quad_object(b, -1, -1, 1, 1, 6);
    add_manipulator(behind, manipulator_x_multiplier, {2, 0, 0, -5});
    CHECK(deep_objects(b, {behind}) == "");
}

TEST_CASE("What faces the camera is found where the camera's turn brings it")
{
    frame_bench b;
    scene_object sign = quad_object(b, -1, -1, 1, 1);
    sign.values[2].value = -5;
    table_get(b.d.material_table, sign.material)->backface_culling = 1;
    const uint32_t scene = add_scene(b.content, {sign});
    layer_plan layer = deep_layer(scene);
    layer.rotation[1] = 90; // the eye is 5 to the left of the sign and looks to the right
    layer.position[0] = 5;
    layer.position[2] = 5;
    const auto width_of = [&] {
        int width = 0;
        for (int x = 0; x < 800; ++x)
            width += picked(b, {layer}, x, 300).empty() ? 0 : 1;
        return width;
    };
    CHECK(width_of() <= 1); // seen from its edge
    table_get(b.d.scene_table, scene)->camera_facing[0] = 128;
    CHECK(width_of() == 120); // 2 wide at a distance of 5
}

TEST_CASE("Letters belong to their text")
{
    frame_bench b;
    font_record font = {};
    const uint32_t material = add_plain_material(b, false);
    const uint32_t mesh = add_quad(b, 0, 0, 0.05f, 1);
    font.glyphs[glyph_of_byte('a')] = {mesh, material, 0, 0.0f, 0.1f};
    scene_object text = object_at_origin(object_text, 0, 0);
    text.font = table_add(b.d.font_table, font);
    std::snprintf(text.text, sizeof text.text, "aaa");
    const std::vector<scene_object> objects = {object_at_origin(object_model, 0, 0), text};
    for (const double x : {20.0, 100.0, 180.0})
        CHECK(flat_objects(b, objects, x, 300) == "1");
    for (const double x : {60.0, 140.0, 220.0, 260.0})
        CHECK(flat_objects(b, objects, x, 300) == "");
}

// Where the centre of a mesh's triangle lies in the picture of deep_layer, moved by so much.
static std::array<double, 2> place_of_triangle(const frame_bench& b, size_t mesh, size_t triangle, const point& by)
{
    const std::vector<float> positions = drawn_positions(b, mesh);
    double middle[3] = {static_cast<double>(by[0]), static_cast<double>(by[1]), static_cast<double>(by[2])};
    for (size_t k = 0; k < 3; ++k)
        for (size_t axis = 0; axis < 3; ++axis)
            middle[axis]
                += static_cast<double>(positions[size_t{b.f.meshes[mesh].mesh->indices[triangle * 3 + k]} * 3 + axis])
                / 3;
    return {400 - 300 * middle[0] / middle[2], 300 + 300 * middle[1] / middle[2]};
}

TEST_CASE("Effects are found where their vertices were moved to, each object of one with its own moment")
{
    frame_bench b;
    const uint32_t effect = add_effect(b, mesh_effect_lake, add_time(b, 0.1f));
    scene_object first = object_at_origin(object_genmesh, effect, add_plain_material(b, false));
    first.values[1].value = -40;
    first.values[2].value = -60;
    scene_object second = first;
    second.values[0].value = 500; // out of sight
    const uint32_t scene = add_scene(b.content, {first, second});
    int found = 0, tried = 0;
    const frame_layers layers = layers_of({deep_layer(scene)});
    for (int step = 0; step < 3; ++step)
        advance_and_plan(b, layers);
    REQUIRE(b.f.meshes.size() == 2);
    REQUIRE(b.f.moved[0].kept_positions != not_kept);
    const mesh_arrays& moved_on = *b.f.meshes[0].mesh; // what lies there now is the second object's
    std::fill_n(moved_on.positions, size_t{moved_on.vertex_count} * 3, 0.0f);
    for (size_t triangle = 0; triangle < b.f.meshes[0].mesh->index_count / 3; triangle += 97) {
        const auto [x, y] = place_of_triangle(b, 0, triangle, {0, -40, -60});
        if (!(x >= 1 && x < 799 && y >= 1 && y < 599))
            continue;
        ++tried;
        found += numbers_of(pick(b.f, layers, 800, 600, x, y)) == "0" ? 1 : 0;
    }
    CHECK(tried > 0);
    CHECK(found >= tried * 9 / 10); // the centre of a small triangle may be no pixel's
}

TEST_CASE("Rippled vertices are found where the rippler moved them, in memory and in buffers")
{
    for (const uint8_t buffers : {uint8_t{0}, uint8_t{1}}) {
        frame_bench b;
        b.context.caps.vbo = buffers;
        scene_object object = quad_object(b, -1, -1, 1, 1, -4);
        arrays_of(b, object.object).normals = arrays_of(b, object.object).positions; // some
        add_manipulator(object, manipulator_rippler, {1, 0, 1});
        const frame_layers layers = layers_of({deep_layer(add_scene(b.content, {object}))});
        advance_and_plan(b, layers);
        REQUIRE(b.f.moved.size() == 1);
        const_cast<float*>(b.f.moved[0].positions)[0] = -3; // what the rippler moved a corner to: far to the left
        CHECK(numbers_of(pick(b.f, layers, 800, 600, 400 - 300 * 1.4 / 4, 300 + 300 * 0.7 / 4)) == "0");
    }
}

// ---- lines --------------------------------------------------------------------------------------------------

TEST_CASE("Wireframes are found within three pixels of their lines, on both paths")
{
    for (const bool glsl : {false, true}) {
        frame_bench b;
        b.context.glsl = glsl;
        uint32_t handle = 0;
        material_record& material = add_material(b, &handle);
        material.wireframe = 1;
        material.linewidth = 1;
        if (glsl)
            give_program(material, 50);
        scene_object twice = object_at_origin(object_model, add_quad(b, 0.25f, 0.25f, 0.75f, 0.75f), handle);
        add_manipulator(twice, manipulator_x_multiplier, {2}); // at one place
        const std::vector<scene_object> objects = {twice};
        for (const double x : {197.0, 200.0, 202.0, 597.0, 600.0, 602.0})
            CHECK(flat_objects(b, objects, x, 250) == "0");
        for (const double x : {100.0, 195.0, 204.0, 300.0, 595.0, 604.0})
            CHECK(flat_objects(b, objects, x, 250) == "");
        CHECK(flat_objects(b, objects, 400, 300) == "0"); // the line from corner to corner
    }
}

TEST_CASE("Lines of back faces are found unless the material leaves them out")
{
    frame_bench b;
    uint32_t handle = 0;
    material_record& material = add_material(b, &handle);
    material.wireframe = 1;
    material.linewidth = 1;
    scene_object back = object_at_origin(object_model, add_quad(b, -1, -1, 1, 1), handle);
    back.values[2].value = -4;
    back.values[4].value = 180;
    CHECK(deep_objects(b, {back}) == "0");
    material.backface_culling = 1;
    CHECK(deep_objects(b, {back}) == "");
    back.values[4].value = 0;
    CHECK(deep_objects(b, {back}) == "0");
}

TEST_CASE("A wide line is found as wide as it is")
{
    frame_bench b;
    uint32_t handle = 0;
    material_record& material = add_material(b, &handle);
    material.wireframe = 1;
    material.linewidth = 20;
    const std::vector<scene_object> objects
        = {object_at_origin(object_model, add_quad(b, 0.25f, 0.25f, 0.75f, 0.75f), handle)};
    CHECK(flat_objects(b, objects, 191, 250) == "0");
    CHECK(flat_objects(b, objects, 189, 250) == "");
}

TEST_CASE("Lines that come from behind the eye are found before it")
{
    frame_bench b;
    uint32_t handle = 0;
    material_record& material = add_material(b, &handle);
    material.wireframe = 1;
    material.linewidth = 1;
    const uint32_t mesh = add_triangles(b, {{0, -1, 50}, {0, -1, -50}, {1, -1, -50}});
    const std::vector<scene_object> objects = {object_at_origin(object_model, mesh, handle)};
    CHECK(deep_objects(b, objects, 401, 500) == "0"); // 1.5 before the eye, away from it
    CHECK(deep_objects(b, objects, 503, 500) == "0"); // and toward it: x 0.515
    CHECK(deep_objects(b, objects, 410, 500) == "");
    CHECK(deep_objects(b, objects, 401, 100) == "");
}

TEST_CASE("A line lies on the surface that it was drawn on, and is hidden by what is before it")
{
    frame_bench b;
    uint32_t handle = 0;
    material_record& material = add_material(b, &handle);
    material.wireframe = material.depth_test = 1;
    material.linewidth = 1;
    const uint32_t mesh = add_quad(b, -1, -1, 1, 1, -5);
    const scene_object wires = object_at_origin(object_model, mesh, handle);
    scene_object sloping = object_at_origin(object_model, add_quad(b, -1, -1, 1, 1), handle), body = sloping;
    body.material = add_plain_material(b, true);
    sloping.values[2].value = body.values[2].value = -5;
    sloping.values[4].value = body.values[4].value = 60;
    for (const double x : {398.0, 400.0, 402.0})
        CHECK(deep_objects(b, {body, sloping}, x) == "1 0");
    CHECK(deep_objects(b, {quad_object(b, -1, -1, 1, 1, -4), wires}) == "0 1");
}

// ---- what shows nothing ---------------------------------------------------------------------------------------

static material_record& material_of(frame_bench& b, const scene_object& object)
{
    return *table_get(b.d.material_table, object.material);
}

TEST_CASE("What is all but transparent is left out, and yet hides what is behind it")
{
    frame_bench b;
    const scene_object veil = quad_object(b, -1, -1, 1, 1, -2);
    const scene_object wall = quad_object(b, -9, -9, 9, 9, -5);
    material_of(b, veil).blend_function = blend_alpha;
    material_of(b, veil).color[3] = 0.021f;
    CHECK(deep_objects(b, {wall, veil}) == "1 0");
    material_of(b, veil).color[3] = 0.019f;
    CHECK(deep_objects(b, {wall, veil}) == "0");
    CHECK(deep_objects(b, {veil, wall}) == "1"); // hidden, but it is all there is
    material_of(b, veil).blend_function = blend_replace;
    CHECK(deep_objects(b, {wall, veil}) == "1 0");
}

TEST_CASE("What is added shows by its colour, what is subtracted by its colour and its alpha")
{
    frame_bench b;
    const scene_object light = quad_object(b, -1, -1, 1, 1, -2);
    material_record& material = material_of(b, light);
    const auto shows = [&](uint8_t blending, float brightness, float alpha) {
        material.blend_function = blending;
        std::fill_n(material.color, 3, brightness);
        material.color[3] = alpha;
        return deep_objects(b, {light}) == "0";
    };
    CHECK(shows(blend_add, 0.5f, 0));
    CHECK(!shows(blend_add, 0.01f, 1));
    CHECK(shows(blend_subtract, 0.5f, 0.5f));
    CHECK(!shows(blend_subtract, 0.5f, 0.01f));
    CHECK(!shows(blend_subtract, 0.01f, 0.5f));
    CHECK(shows(blend_premultiplied, 0, 0.5f));
    CHECK(shows(blend_premultiplied, 0.5f, 0));
    CHECK(!shows(blend_premultiplied, 0.01f, 0.01f));
}

TEST_CASE("A picture that brings its own alpha shows whatever the colour says")
{
    for (const bool glsl : {false, true}) {
        frame_bench b;
        b.context.glsl = glsl;
        const scene_object object = quad_object(b, -1, -1, 1, 1, -2);
        material_record& material = material_of(b, object);
        material.blend_function = blend_alpha;
        material.color[3] = 0;
        material.texture[0] = add_image(b, 7);
        if (glsl)
            give_program(material, 50);
        const auto shows = [&](uint8_t first, uint8_t second) {
            material.combine_mode[0] = first;
            material.combine_mode[1] = second;
            return deep_objects(b, {object}) == "0";
        };
        CHECK(!shows(first_multiply_color, 0));
        CHECK(shows(first_replace, 0));
        CHECK(shows(first_ignore_alpha, 0));
        material.texture[1] = add_image(b, 8);
        CHECK(!shows(first_multiply_color, second_multiply_previous));
        CHECK(shows(first_multiply_color, second_interpolate_color));
    }
}

TEST_CASE("On the shader path a moving alpha counts as it is now, and a program of the material's own always shows")
{
    frame_bench b;
    b.context.glsl = true;
    const scene_object object = quad_object(b, -1, -1, 1, 1, -2);
    material_record& material = material_of(b, object);
    material.blend_function = blend_alpha;
    shader_program& program = give_program(material, 50);
    program.uniform_functions[0] = add_time(b, 1); // green and alpha move: the second uniform is the alpha
    program.uniform_functions[1] = add_time(b, 0.001f);
    material.color_dynamic[1] = material.color_dynamic[3] = 1;
    layer_plan layer = deep_layer(add_scene(b.content, {object}));
    layer.time = 19;
    CHECK(picked(b, {layer}, 400, 300).empty());
    layer.time = 21;
    CHECK(picked(b, {layer}, 400, 300).size() == 1);
    layer.time = 0;
    char source[] = "void main() {}";
    material.enable_glsl = 1;
    material.custom_vertex_shader = material.custom_fragment_shader = source;
    CHECK(picked(b, {layer}, 400, 300).size() == 1);
    material.custom_vertex_shader = material.custom_fragment_shader = nullptr; // not the document's to free
}
