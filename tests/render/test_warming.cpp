#include "render/warming.h"

#include "frame_bench.h"

#include <doctest/doctest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

// A bench with a timeline.
struct warming_bench : frame_bench {
    frame warmed = {};
    std::vector<warmed_target> targets; // lent

    uint32_t scene(const std::vector<scene_object>& objects)
    {
        return add_scene(content, objects);
    }
    void show(uint32_t track, uint32_t scene, uint32_t length = 1000, uint32_t pause = 0)
    {
        layer_record layer = make_layer(render_simple, length, scene);
        layer.space_before = pause;
        add_layer(content, track, layer);
    }
    size_t draws()
    {
        warmed = {};
        plan_warming(context, standing, targets, warmed);
        CHECK(warmed.commands.empty());
        CHECK(warmed.materials.size() == warmed.draws.size());
        return warmed.draws.size();
    }
    const material_state& state(size_t draw) const
    {
        return warmed.materials[warmed.draws[draw].material];
    }
};

// The bytes of all records of a table.
template <typename record_type> std::string bytes_of(const table<record_type>& records)
{
    std::string bytes;
    for (auto [handle, record] : records)
        bytes.append(reinterpret_cast<const char*>(&record), sizeof record);
    return bytes;
}

} // namespace

// A material with blending of its own, so that it is drawn in a way of its own.
static uint32_t material_of(frame_bench& b, uint8_t blending)
{
    uint32_t handle = 0;
    add_material(b, &handle).blend_function = blending;
    return handle;
}

// ---- what is drawn ------------------------------------------------------------------

TEST_CASE("each way of drawing of each scene is drawn once, wherever it comes again")
{
    warming_bench b;
    const uint32_t mesh = add_mesh(b);
    const scene_object first = object_at_origin(object_model, mesh, material_of(b, blend_alpha));
    const scene_object second = object_at_origin(object_model, mesh, material_of(b, blend_add));
    b.show(0, b.scene({first, second, first}));
    b.show(0, b.scene({second}));
    b.show(3, b.scene({object_at_origin(object_model, mesh, material_of(b, blend_subtract))}));
    REQUIRE(b.draws() == 3);
    CHECK(b.state(0).blending == blend_alpha);
    CHECK(b.state(1).blending == blend_add);
    CHECK(b.state(2).blending == blend_subtract);
}

TEST_CASE("a scene that no layer shows and a layer that is never seen are not warmed")
{
    warming_bench b;
    const uint32_t mesh = add_mesh(b);
    b.scene({object_at_origin(object_model, mesh, material_of(b, blend_alpha))});
    b.show(0, b.scene({object_at_origin(object_model, mesh, material_of(b, blend_add))}), 1050);
    b.show(0, b.scene({object_at_origin(object_model, mesh, material_of(b, blend_replace))}), 40); // inside one second
    b.show(
        2, b.scene({object_at_origin(object_model, mesh, material_of(b, blend_subtract))}), 500, 1300); // after the end
    REQUIRE(b.draws() == 1);
    CHECK(b.state(0).blending == blend_add);
}

TEST_CASE("hidden objects are warmed, for they may come to be shown")
{
    warming_bench b;
    scene_object hidden = object_at_origin(object_model, add_mesh(b), material_of(b, blend_add));
    hidden.visibility = add_function(b.content, constant_function(0.0f));
    b.show(0, b.scene({hidden}));
    CHECK(b.draws() == 1);
}

TEST_CASE("the letters of texts and the meshes of effects are warmed, a mesh without triangles is not")
{
    warming_bench b;
    font_record font = {};
    font.glyphs[0] = {add_mesh(b), material_of(b, blend_alpha), 0, 0.0f, 1.0f}; // a
    font.glyphs[1] = {add_mesh(b), material_of(b, blend_subtract), 0, 0.0f, 1.0f};
    scene_object text = object_at_origin(object_text, 0, 0);
    text.font = table_add(b.d.font_table, font);
    std::memcpy(text.text, "aaa", 4);
    const uint32_t lake = add_effect(b, mesh_effect_lake, 0);
    const uint32_t swarm = add_effect(b, mesh_effect_particles, 0);
    b.show(0,
        b.scene({text, object_at_origin(object_genmesh, lake, material_of(b, blend_add)),
            object_at_origin(object_genmesh, swarm, material_of(b, blend_replace))}));
    REQUIRE(b.draws() == 2);
    CHECK(b.state(0).blending == blend_alpha);
    CHECK(b.state(1).blending == blend_add);
    CHECK(b.warmed.draws[1].positions.data == table_get(b.d.effect_table, lake)->mesh.positions);
}

TEST_CASE("a mesh without a material is drawn with what stands, as the show's frames go on")
{
    warming_bench b;
    const uint32_t lake = add_effect(b, mesh_effect_lake, 0);
    const scene_object bare = object_at_origin(object_genmesh, lake, 0);
    b.show(0, b.scene({bare, object_at_origin(object_model, add_mesh(b), material_of(b, blend_add))}));
    REQUIRE(b.draws() == 3);
    CHECK_FALSE(b.state(0).applied); // the first frame's
    CHECK(b.state(1).blending == blend_add);
    CHECK(b.state(2).blending == blend_add); // the second one's
    CHECK(b.warmed.draws[2].positions.data == b.warmed.draws[0].positions.data);
    CHECK_FALSE(b.standing.material.applied); // the caller's own is not touched
}

TEST_CASE("a unit that an earlier material left on makes another way of drawing")
{
    warming_bench b;
    const uint32_t mesh = add_mesh(b);
    const uint32_t picture = add_image(b, 7);
    uint32_t two_units = 0;
    material_record& two = add_material(b, &two_units);
    two.texture[0] = two.texture[1] = two.texture[2] = picture;
    uint32_t one_unit = 0;
    add_material(b, &one_unit).texture[0] = picture; // the second is switched off, the third stays
    b.show(0, b.scene({object_at_origin(object_model, mesh, one_unit)}), 300);
    b.show(0,
        b.scene({object_at_origin(object_model, mesh, two_units), object_at_origin(object_model, mesh, one_unit)}),
        300);
    REQUIRE(b.draws() == 3);
    CHECK_FALSE(b.state(0).units[2].on);
    CHECK(b.state(2).units[2].on);
    CHECK_FALSE(b.state(2).units[1].on);
}

TEST_CASE("meshes with and without normals and coordinates are different ways of drawing, others are not")
{
    warming_bench b;
    const uint32_t material = material_of(b, blend_add);
    b.show(0,
        b.scene({object_at_origin(object_model, add_mesh(b, 3, 1, true), material),
            object_at_origin(object_model, add_mesh(b, 3, 0, true), material),
            object_at_origin(object_model, add_mesh(b, 3, 1, false), material),
            object_at_origin(object_model, add_mesh(b, 9, 1, true), material),
            object_at_origin(object_model, add_mesh(b, 4, 2, true), material)}));
    CHECK(b.draws() == 3);
}

TEST_CASE("flat and deep layers are warmed as they are")
{
    warming_bench b;
    const scene_object bare = object_at_origin(object_genmesh, add_effect(b, mesh_effect_lake, 0), 0);
    layer_record flat = make_layer(render_simple, 500, b.scene({bare}));
    flat.camera_mode[camera_fov] = fov_orthographic;
    add_layer(b.content, 0, flat);
    b.show(0, 1);
    REQUIRE(b.draws() == 2);
    CHECK_FALSE(b.state(0).depth_test);
    CHECK(b.state(1).depth_test);
}

TEST_CASE("the picture of a turned view is warmed with its constant angle, or with one that is not 0")
{
    warming_bench b;
    uint32_t handle = 0;
    material_record& material = add_material(b, &handle);
    material.texture[0] = add_image(b, 7);
    material.rotation[0] = 1;
    const uint32_t scene = b.scene({object_at_origin(object_model, add_mesh(b), handle)});
    layer_record still = make_layer(render_simple, 500, scene);
    layer_record turning = still;
    turning.camera_mode[camera_rotation_y] = 1;
    turning.camera[camera_rotation_y] = 1; // the handle of a function that is not there
    add_layer(b.content, 0, still);
    add_layer(b.content, 0, turning);
    REQUIRE(b.draws() == 2);
    CHECK(b.state(0).units[0].matrix[0] == 1.0f);
    CHECK(b.state(1).units[0].matrix[0] == doctest::Approx(std::cos(3.14159265 / 180.0)));
    CHECK(b.state(1).units[0].matrix[0] != 1.0f);
}

// ---- draws ----------------------------------------------------------------------------

TEST_CASE("draws have one triangle without a size, a wireframe's on the shader path one line, and print nothing")
{
    warming_bench b;
    uint32_t handle = 0;
    material_record& wire = add_material(b, &handle);
    wire.wireframe = 1;
    give_program(wire, 50);
    const uint32_t mesh = add_mesh(b);
    b.show(0, b.scene({object_at_origin(object_model, mesh, handle)}));
    for (const bool glsl : {false, true}) {
        b.context.glsl = glsl;
        REQUIRE(b.draws() == 1);
        const draw_command& draw = b.warmed.draws[0];
        CHECK(draw.lines == glsl);
        REQUIRE(draw.index_count == (glsl ? 2 : 3));
        for (uint32_t i = 0; i < draw.index_count; ++i)
            CHECK(static_cast<const uint16_t*>(draw.indices.data)[i] == 0);
        CHECK(draw.copy_count == 1);
        CHECK(b.warmed.programs.size() == (glsl ? 1 : 0));
        CHECK(arrays_of(b, mesh).line_indices == nullptr); // they are made, and said to be, by the show
    }
}

TEST_CASE("a program that did not build draws nothing while a show is warmed either")
{
    warming_bench b;
    b.context.glsl = true;
    uint32_t handle = 0;
    give_program(add_material(b, &handle), 0);
    const scene_object bare = object_at_origin(object_genmesh, add_effect(b, mesh_effect_lake, 0), 0);
    b.show(0, b.scene({object_at_origin(object_model, add_mesh(b), handle), bare}));
    CHECK(b.draws() == 0);
}

TEST_CASE("with buffers the arrays of meshes are theirs, those of effects lie in memory")
{
    warming_bench b;
    b.context.caps.vbo = 1;
    const uint32_t mesh = add_mesh(b);
    arrays_of(b, mesh).position_buffer = 31;
    arrays_of(b, mesh).normal_buffer = 32;
    arrays_of(b, mesh).texcoord_buffer[0] = 33;
    const uint32_t lake = add_effect(b, mesh_effect_lake, 0);
    const uint32_t material = material_of(b, blend_add);
    b.show(
        0, b.scene({object_at_origin(object_model, mesh, material), object_at_origin(object_genmesh, lake, material)}));
    REQUIRE(b.draws() == 2);
    CHECK(b.warmed.draws[0].positions.buffer == 31);
    CHECK(b.warmed.draws[0].normals.buffer == 32);
    for (const array_source& coordinates : b.warmed.draws[0].coordinates)
        CHECK(coordinates.buffer == 33);
    CHECK(b.warmed.draws[1].positions.buffer == 0);
}

// ---- what does not move -----------------------------------------------------------------

TEST_CASE("warming asks no function, steps no effect, computes no picture and takes no random number")
{
    warming_bench b;
    const uint32_t time = add_time(b);
    uint32_t handle = 0;
    material_record& material = add_material(b, &handle);
    material.color[0] = static_cast<float>(time);
    material.color_dynamic[0] = 1;
    material.texture[0] = add_moving(b, 9, time);
    scene_object lake = object_at_origin(object_genmesh, add_effect(b, mesh_effect_lake, time), handle);
    lake.values[0] = {static_cast<float>(time), 1};
    lake.visibility = time;
    add_manipulator(lake, manipulator_rippler, {1, 1, 1});
    scene_object swarm = object_at_origin(object_genmesh, add_effect(b, mesh_effect_particles, time), handle);
    b.show(0, b.scene({lake, swarm}));

    const auto all = [&b] {
        std::string bytes = bytes_of(b.d.function_table) + bytes_of(b.d.dynamic_texture_table)
            + bytes_of(b.d.effect_table) + bytes_of(b.d.material_table) + bytes_of(b.d.scene_table)
            + bytes_of(b.d.mesh_table);
        for (auto [number, effect] : b.d.effect_table)
            bytes.append(reinterpret_cast<const char*>(effect.mesh.positions), size_t{effect.mesh.vertex_count} * 12);
        return bytes;
    };
    const std::string before = all();
    std::srand(5);
    const int next = std::rand();
    std::srand(5);
    CHECK(b.draws() == 1);
    CHECK(std::rand() == next);
    CHECK(all() == before);
}

// ---- bounds -----------------------------------------------------------------------------

TEST_CASE("a show without a timeline, without layers and with nothing but dangling references is warmed in no time")
{
    warming_bench b;
    CHECK(b.draws() == 0);
    b.show(0, 77);
    b.show(1,
        b.scene({object_at_origin(object_model, 8, 9), object_at_origin(object_genmesh, 8, 9),
            object_at_origin(object_text, 8, 9), object_at_origin(static_cast<object_kind>(12), 8, 9)}));
    CHECK(b.draws() == 0);
    CHECK(find_warmed_targets(b.d, b.view, b.context.caps).empty());
    timeline* t = b.d.timeline;
    b.d.timeline = nullptr;
    CHECK(b.draws() == 0);
    CHECK(find_warmed_targets(b.d, b.view, b.context.caps).empty());
    b.d.timeline = t;
}

TEST_CASE("looking ends where a show has more than it should be waited for")
{
    for (const uint32_t scenes : {150u, max_warming_looks / max_scene_objects / 2 + 8}) { // each is looked at twice
        warming_bench b;
        const uint32_t mesh = add_mesh(b);
        const scene_object object = object_at_origin(object_model, mesh, material_of(b, blend_add));
        for (uint32_t number = 0; number < scenes; ++number)
            b.show(number / 150, b.scene(std::vector<scene_object>(max_scene_objects, object)), 100);
        b.show(2, b.scene({object_at_origin(object_model, mesh, material_of(b, blend_alpha))}), 100, 14900);
        CHECK(b.draws() == (scenes == 150 ? 2 : 1));
    }
}

// ---- targets ----------------------------------------------------------------------------

TEST_CASE("targets have the size and format that their first frame gives them")
{
    warming_bench b;
    const uint32_t kept = add_image_texture(b.content, 256, 128);
    const uint32_t quarter = add_image_texture(b.content, 256, 256);
    const uint32_t large = add_image_texture(b.content, 2048, 64);
    add_image_texture(b.content, 8, 8); // nobody draws into it
    table_get(b.d.image_texture_table, kept)->format = 6408;
    const uint32_t scene = b.scene({});
    for (const auto& [type, target] : {std::pair{render_to_texture, kept}, std::pair{render_quarter, quarter},
             std::pair{render_to_texture, large}, std::pair{render_quarter, kept}, std::pair{render_simple, 4u}}) {
        layer_record layer = make_layer(type, 500, scene);
        layer.rtex = target;
        add_layer(b.content, 0, layer);
    }
    const std::vector<warmed_target> targets = find_warmed_targets(b.d, b.view, b.context.caps);
    REQUIRE(targets.size() == 3);
    const auto is = [](const warmed_target& t, uint32_t texture, uint32_t width, uint32_t height, uint32_t format) {
        return t.texture == texture && t.width == width && t.height == height && t.format == format;
    };
    CHECK(is(targets[0], kept, 256, 128, 6408));
    CHECK(is(targets[1], quarter, 400, 300, recreated_target_format));
    CHECK(is(targets[2], large, 800, 600, recreated_target_format));
    CHECK(table_get(b.d.image_texture_table, quarter)->width == 256);
}

TEST_CASE("a target is its own texture until a layer draws into it, and the lent one from then on")
{
    warming_bench b;
    uint32_t handle = 0;
    const uint32_t picture = add_image(b, 7);
    const uint32_t target = table_get(b.d.object_table, picture)->id;
    add_material(b, &handle).texture[0] = picture;
    const scene_object shown = object_at_origin(object_model, add_mesh(b), handle);
    b.targets = {{target, 400, 300, recreated_target_format, 99}};
    b.show(0, b.scene({shown}), 1000);
    layer_record into = make_layer(render_quarter, 500, b.scene({}));
    into.rtex = target;
    into.space_before = 300;
    add_layer(b.content, 3, into);
    b.show(5, b.scene({shown}), 1000);
    REQUIRE(b.draws() == 2);
    CHECK(b.state(0).units[0].flat_texture == 7);
    CHECK(b.state(1).units[0].flat_texture == 99);
    CHECK(table_get(b.d.image_texture_table, target)->texture == 7);
}
