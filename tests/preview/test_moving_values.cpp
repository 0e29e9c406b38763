#include "tools/preview/moving_values.h"

#include "effects/manipulator.h"
#include "frame_bench.h"
#include "model/glyphs.h"
#include "render/shader_source.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

// The value of an object that follows a function.
static animated_value follows(uint32_t function)
{
    return {static_cast<float>(function), 1};
}

// A clip of 400 ticks, 100 after the show's begin, whose functions begin at tick 50.
static picked_object place(frame_bench& b, const scene_object& object)
{
    layer_record clip
        = make_layer(render_simple, 400, add_scene(b.content, {object_at_origin(object_model, 0, 0), object}));
    clip.space_before = 100;
    clip.offset = 50;
    const uint32_t layer = add_layer(b.content, 3, clip);
    return {3, layer, clip.model_id, 1, 0};
}

static layer_record& clip_of(frame_bench& b, const picked_object& picked)
{
    return b.d.timeline->layers[picked.track][picked.layer];
}

static std::string names_of(const moving_values& values)
{
    std::string text;
    for (const moving_value& value : values.values)
        text += (text.empty() ? "" : "; ") + value.name;
    return text;
}

TEST_CASE("A moving value says its span, its function, what it is now and how it goes")
{
    frame_bench b;
    add_time(b);
    const uint32_t function = add_time(b, 2);
    scene_object object = object_at_origin(object_model, 0, 0);
    object.values[1] = follows(function);
    const moving_values values = moving_values_of(b.d, place(b, object), 300, 5);
    CHECK(values.from == 1.0);
    CHECK(values.to == 5.0);
    REQUIRE(values.values.size() == 1);
    const moving_value& y = values.values[0];
    CHECK(y.name == "y");
    CHECK(y.function == function);
    CHECK(y.time_shift == -50);
    CHECK(y.now == 2 * 250);
    CHECK(y.values == std::vector<float>{2 * 50, 2 * 150, 2 * 250, 2 * 350, 2 * 449}); // the last tick that is seen
}

TEST_CASE("An object's own values are asked at its own time, its material's and the camera's at the clip's")
{
    frame_bench b;
    const uint32_t time = add_time(b);
    uint32_t handle = 0;
    material_record& material = add_material(b, &handle);
    material.color[0] = static_cast<float>(time);
    material.color_dynamic[0] = 1;
    scene_object object = object_at_origin(object_model, 0, handle);
    object.values[0] = follows(time);
    object.time_offset = -20.5f;
    const picked_object picked = place(b, object);
    clip_of(b, picked).camera_mode[camera_far] = 1;
    clip_of(b, picked).camera[camera_far] = static_cast<float>(time);
    const moving_values values = moving_values_of(b.d, picked, 300, 2);
    REQUIRE(names_of(values) == "x; material: red; camera: far");
    CHECK(values.values[0].now == 229); // 250 - 20.5, truncated
    CHECK(values.values[0].time_shift == -71);
    CHECK(values.values[0].values == std::vector<float>{29, 428});
    for (const size_t i : {size_t{1}, size_t{2}}) {
        CHECK(values.values[i].now == 250);
        CHECK(values.values[i].time_shift == -50);
        CHECK(values.values[i].values == std::vector<float>{50, 449});
    }
}

TEST_CASE("All values of an object's place, and its visibility, have names")
{
    frame_bench b;
    scene_object object = object_at_origin(object_model, 0, 0);
    const uint32_t time = add_time(b);
    std::fill_n(object.values, placement_value_count, follows(time));
    object.visibility = time;
    CHECK(names_of(moving_values_of(b.d, place(b, object), 0, 0))
        == "x; y; z; rotation x; rotation y; rotation z; scale x; scale y; scale z; visibility");
}

TEST_CASE("Values that stand still are left out, and those whose function does not exist")
{
    frame_bench b;
    scene_object object = object_at_origin(object_model, 0, 0);
    object.values[0] = {static_cast<float>(add_time(b)), 0};
    object.values[1] = follows(77);
    object.values[2] = {-1, 1};
    object.visibility = 99;
    CHECK(names_of(moving_values_of(b.d, place(b, object), 0, 10)).empty());
}

TEST_CASE("Manipulators' values have their parameters' names")
{
    frame_bench b;
    const uint32_t time = add_time(b);
    scene_object object = object_at_origin(object_model, 0, 0);
    add_manipulator(object, manipulator_x_multiplier).params[0] = follows(time);
    add_manipulator(object, manipulator_rippler).params[2] = follows(time);
    manipulator_record& unknown = add_manipulator(object, manipulator_rippler);
    unknown.type = 50;
    unknown.params[0] = follows(time);
    CHECK(names_of(moving_values_of(b.d, place(b, object), 0, 0))
        == "manipulator 1: X number; manipulator 2: Wavelength");
}

TEST_CASE("A mesh effect's values are those of its kind, at the object's time")
{
    frame_bench b;
    scene_object object = object_at_origin(object_genmesh, add_effect(b, mesh_effect_swirl, add_time(b)), 0);
    table_get(b.d.effect_table, object.object)->functions[1] = add_time(b, 2);
    object.time_offset = 5;
    const moving_values values = moving_values_of(b.d, place(b, object), 100, 0);
    REQUIRE(names_of(values) == "Swirl: X; Swirl: Y");
    CHECK(values.values[1].now == 2 * 55);
    object.type = object_model; // the number means another thing then
    CHECK(names_of(moving_values_of(b.d, place(b, object), 100, 0)).empty());
}

TEST_CASE("A material's values are those that count for it")
{
    frame_bench b;
    const auto time = static_cast<float>(add_time(b));
    uint32_t handle = 0;
    material_record& material = add_material(b, &handle);
    material.color[3] = material.linewidth = material.fogstart = material.fogend = time;
    material.color_dynamic[3] = material.linewidth_dynamic = material.fogstart_dynamic = material.fogend_dynamic = 1;
    value_record moving = {};
    std::fill_n(moving.values, 9, time);
    moving.dynamic_flags[0] = 128 + 16; // ambient red, red
    moving.dynamic_flags[1] = 64;       // y
    material.light2 = material.fogcolor = table_add(b.d.transform_table, moving);
    material.texture[0] = add_image(b, 7);
    material.texture[1] = add_moving(b, 8, static_cast<uint32_t>(time));
    std::fill_n(material.user_uniforms, 2, static_cast<uint32_t>(time));
    const scene_object object = object_at_origin(object_model, 0, handle);
    const auto names = [&] { return names_of(moving_values_of(b.d, place(b, object), 0, 0)); };
    CHECK(names()
        == "material: alpha; material: light 2, ambient red; material: light 2, red; material: light 2, y; "
           "material: picture 2, Test parameter1");
    material.light2 = material.texture[0] = 0; // the first empty unit ends them
    material.wireframe = 1;
    material.fogtype = fog_nicest;
    CHECK(
        names() == "material: alpha; material: line width; material: fog red; material: fog start; material: fog end");
    material.wireframe = material.fogtype = 0;
    char source[] = "void main() {}";
    material.enable_glsl = 1;
    material.custom_vertex_shader = material.custom_fragment_shader = source;
    CHECK(names() == "material: alpha; material: u1; material: u2");
    material.custom_vertex_shader = material.custom_fragment_shader = nullptr; // not the document's to free
}

TEST_CASE("A text has the materials of its letters, each once")
{
    frame_bench b;
    const auto time = static_cast<float>(add_time(b));
    uint32_t first = 0, second = 0, third = 0;
    for (uint32_t* handle : {&first, &second, &third}) {
        material_record& material = add_material(b, handle);
        material.color[0] = time;
        material.color_dynamic[0] = 1;
    }
    const uint32_t mesh = add_mesh(b);
    font_record font = {};
    font.glyphs[glyph_of_byte('a')] = {mesh, second, 0, 0, 1};
    font.glyphs[glyph_of_byte('b')] = {mesh, first, 0, 0, 1};
    font.glyphs[glyph_of_byte('c')] = {mesh, third, 0, 0, 1};
    scene_object object = object_at_origin(object_text, 0, third);
    object.font = table_add(b.d.font_table, font);
    std::snprintf(object.text, sizeof object.text, "abba");
    CHECK(names_of(moving_values_of(b.d, place(b, object), 0, 0)) == "material: red; material 2: red");
}

TEST_CASE("The camera of the clip stands where the eye is, the other way round than documents move the world")
{
    frame_bench b;
    const auto time = static_cast<float>(add_time(b));
    const picked_object picked = place(b, object_at_origin(object_model, 0, 0));
    layer_record& clip = clip_of(b, picked);
    std::fill_n(clip.camera, camera_value_count, time);
    std::fill_n(clip.camera_mode, camera_value_count, uint8_t{1}); // for the field of view: flat
    moving_values values = moving_values_of(b.d, picked, 110, 2);
    REQUIRE(names_of(values)
        == "camera: x; camera: y; camera: z; camera: rotation x; camera: rotation y; camera: rotation z; camera: far");
    CHECK(values.values[2].now == -60);
    CHECK(values.values[2].values == std::vector<float>{-50, -449});
    CHECK(values.values[3].now == 60);
    clip.camera_mode[camera_fov] = fov_dynamic;
    values = moving_values_of(b.d, picked, 110, 2);
    CHECK(values.values[6].name == "camera: field of view");
}

TEST_CASE("Asking changes nothing that drawing remembers")
{
    frame_bench b;
    const uint32_t time = add_time(b);
    scene_object object = object_at_origin(object_model, 0, 0);
    object.values[0] = follows(time);
    animation_function& function = *table_get(b.d.function_table, time);
    function.cached_time = 123;
    function.cached_value = 7;
    const moving_values values = moving_values_of(b.d, place(b, object), 173, 3);
    CHECK(values.values[0].now == 123); // computed, not what was remembered
    CHECK(function.cached_time == 123);
    CHECK(function.cached_value == 7);
}

TEST_CASE("Of what does not exist nothing moves, and a moment before the clip counts as its first")
{
    frame_bench b;
    const uint32_t time = add_time(b);
    scene_object object = object_at_origin(object_model, 0, 0);
    object.values[0] = follows(time);
    const picked_object picked = place(b, object);
    const auto count = [&](const picked_object& what) { return moving_values_of(b.d, what, 0, 3).values.size(); };
    CHECK(count({32, 0, picked.scene, 1, 0}) == 0);
    CHECK(count({3, 1, picked.scene, 1, 0}) == 0);
    CHECK(count({3, 0, 99, 1, 0}) == 0);
    CHECK(count({3, 0, picked.scene, 2, 0}) == 0);
    CHECK(moving_values_of(b.d, picked, 0, 1).values[0].now == 50);
    CHECK(moving_values_of(b.d, picked, 0, 1).values[0].values == std::vector<float>{50});
}
