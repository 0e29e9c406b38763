#include "render/frame_advance.h"

#include "effects/dynamic_texture.h"
#include "effects/mesh_effect.h"
#include "effects/mesh_normals.h"
#include "frame_bench.h"
#include "model/glyphs.h"
#include "model/values.h"
#include "render/scene_plan.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

// An effect that is stepped by hand, to compare with.
struct stepped_effect {
    mesh_effect e = {};

    explicit stepped_effect(mesh_effect_kind kind)
    {
        e.type = kind;
        init_mesh_effect(e);
    }
    ~stepped_effect()
    {
        free_mesh_effect(e);
    }
    stepped_effect(const stepped_effect&) = delete;
    stepped_effect& operator=(const stepped_effect&) = delete;

    void step(float param)
    {
        const float params[2] = {param, 0.0f};
        step_mesh_effect(e, params);
    }
    std::vector<float> positions() const
    {
        return {e.mesh.positions, e.mesh.positions + size_t{e.mesh.vertex_count} * 3};
    }
    std::vector<float> normals() const
    {
        return {e.mesh.normals, e.mesh.normals + size_t{e.mesh.vertex_count} * 3};
    }
};

// What `work` writes on standard error.
template <typename work> std::string told_while(const work& do_it)
{
    std::FILE* caught = std::tmpfile();
    std::fflush(stderr);
    const int kept = dup(2);
    dup2(fileno(caught), 2);
    do_it();
    std::fflush(stderr);
    dup2(kept, 2);
    close(kept);
    std::rewind(caught);
    char text[1024] = {};
    const size_t size = std::fread(text, 1, sizeof text - 1, caught);
    std::fclose(caught);
    return std::string(text, size);
}

} // namespace

// The picture that add_moving shows when its first parameter has a value.
static std::vector<uint8_t> moving_picture(float param)
{
    std::vector<uint8_t> pixels(size_t{64} * 64);
    const float params[3] = {param, 0.0f, 0.0f};
    render_dynamic_texture(effect_2d_test, 64, 64, 8, params, nullptr, pixels.data());
    return pixels;
}

static std::vector<uint8_t> fresh_pixels(const frame_bench& b, size_t picture)
{
    const auto begin = b.f.pixels.begin() + static_cast<ptrdiff_t>(b.f.pictures[picture].pixels);
    return {begin, begin + 64 * 64};
}

// An object whose time is the layer's time and `offset` more.
static scene_object later(scene_object object, float offset)
{
    object.time_offset = offset;
    return object;
}

// ---- which meshes ---------------------------------------------------------------------

TEST_CASE("meshes are listed in the order of layers and objects, each layer with its end")
{
    frame_bench b;
    uint32_t red = 0, blue = 0;
    add_material(b, &red);
    add_material(b, &blue);
    const uint32_t one = add_mesh(b);
    const uint32_t two = add_mesh(b);
    const uint32_t first
        = add_scene(b.content, {object_at_origin(object_model, one, red), object_at_origin(object_model, two, blue)});
    const uint32_t second = add_scene(b.content, {object_at_origin(object_model, two, red)});
    advance(b, layers_of({layer_of(first), layer_of(0), layer_of(77), layer_of(second)}));
    REQUIRE(b.f.meshes.size() == 3);
    CHECK(b.f.meshes[0].mesh == &arrays_of(b, one));
    CHECK(b.f.meshes[1].mesh == &arrays_of(b, two));
    CHECK(b.f.meshes[2].mesh == &arrays_of(b, two));
    CHECK(b.f.meshes[0].material == table_get(b.d.material_table, red));
    CHECK(b.f.meshes[1].material == table_get(b.d.material_table, blue));
    CHECK(b.f.meshes[2].material == table_get(b.d.material_table, red));
    const uint32_t ends[4] = {2, 2, 2, 3};
    CHECK(std::equal(ends, ends + 4, b.f.mesh_end));
    for (const mesh_to_draw& mesh : b.f.meshes) {
        CHECK(mesh.moved == no_index);
        CHECK(mesh.fresh_count == 0);
        CHECK(mesh.pen == 0.0f);
        CHECK(!mesh.facing_camera);
        CHECK(mesh.placement_count == 1);
    }
    CHECK(b.f.moved.empty());
    CHECK(b.f.vertices.empty());
}

TEST_CASE("a model needs an object, a mesh and a material, an effect's mesh no material")
{
    frame_bench b;
    uint32_t material = 0;
    add_material(b, &material);
    const uint32_t mesh = add_mesh(b);
    const uint32_t effect = add_effect(b, mesh_effect_swirl, 0);
    advance(b,
        layers_of(b,
            {object_at_origin(object_model, 0, material), object_at_origin(object_model, 9, material),
                object_at_origin(object_model, mesh, 0), object_at_origin(object_model, mesh, 9),
                object_at_origin(object_genmesh, 0, material), object_at_origin(object_genmesh, 9, material),
                object_at_origin(static_cast<object_kind>(3), mesh, material)}));
    CHECK(b.f.meshes.empty());
    CHECK(b.f.placements.empty());

    advance(b,
        layers_of(
            b, {object_at_origin(object_genmesh, effect, 0), object_at_origin(object_genmesh, effect, material)}));
    REQUIRE(b.f.meshes.size() == 2);
    CHECK(b.f.meshes[0].material == nullptr);
    CHECK(b.f.meshes[1].material != nullptr);
}

TEST_CASE("an object may name its mesh through a reference")
{
    frame_bench b;
    uint32_t material = 0;
    add_material(b, &material);
    add_mesh(b);
    const uint32_t second = add_mesh(b);
    const uint32_t reference = table_add(b.d.object_table, object_reference{object_model, second, 0});
    REQUIRE(reference == 1); // as a plain number it would be the first mesh
    advance(b, layers_of(b, {object_at_origin(object_model, reference, material)}));
    REQUIRE(b.f.meshes.size() == 1);
    CHECK(b.f.meshes[0].mesh == &arrays_of(b, second));
}

// ---- numbers of materials -------------------------------------------------------------------

// 0.25 up to tick 50, then a formula that does not exist: 1 at the first look at a time, and at
// the next the value before.
static uint32_t add_forgetful(frame_bench& b)
{
    animation_function function = empty_function();
    add_segment(function, segment_constant, 50, {0.25f});
    add_segment(function, segment_kind_count, 1000, {});
    const uint32_t handle = add_function(b.content, function);
    CHECK(function_value(b.d.function_table, handle, 10) == 0.25f);
    return handle;
}

// A uniform on the shader path, else red.
static float first_number(const frame_bench& b, uint32_t mesh)
{
    const material_numbers& numbers = b.f.numbers[b.f.meshes[mesh].numbers];
    return b.context.glsl ? numbers.uniforms[0] : numbers.color[0];
}

// What its draw holds of it.
static float drawn_number(const frame_bench& b, uint32_t mesh)
{
    const draw_command& draw = b.f.draws[mesh];
    return b.context.glsl ? b.f.programs[draw.program].uniforms[0] : b.f.materials[draw.material].color[0];
}

TEST_CASE("functions of materials are asked mesh by mesh, in the order of drawing")
{
    for (const bool glsl : {false, true}) {
        frame_bench b;
        b.context.glsl = glsl;
        const uint32_t forgetful = add_forgetful(b);
        uint32_t material = 0;
        material_record& record = add_material(b, &material);
        record.color[0] = static_cast<float>(forgetful);
        record.color_dynamic[0] = 1;
        give_program(record, 50).uniform_functions[0] = forgetful;
        const scene_object plain = object_at_origin(object_model, add_mesh(b), material);
        scene_object moving = plain;
        moving.values[0] = {static_cast<float>(forgetful), 1};
        const uint32_t twice = add_scene(b.content, {plain, plain});
        const uint32_t moved_first = add_scene(b.content, {moving});
        const frame_layers layers
            = layers_of({layer_of(twice, 100), layer_of(moved_first, 200), layer_of(moved_first, 300)});
        advance(b, layers);
        REQUIRE(b.f.meshes.size() == 4);
        CHECK(first_number(b, 0) == 1.0f);
        CHECK(first_number(b, 1) == 0.25f); // the second look at tick 100
        CHECK(first_number(b, 2) == 0.25f); // its place was the first one
        CHECK(first_number(b, 3) == 0.25f);
        CHECK(b.f.numbers.size() == 2); // equal ones in a row are kept once
        CHECK(b.f.placements[2].position[0] == 1.0f);
        CHECK(b.f.placements[3].position[0] == 1.0f);
        plan(b, layers);
        REQUIRE(b.f.draws.size() == 4);
        for (uint32_t mesh = 0; mesh < 4; ++mesh)
            CHECK(drawn_number(b, mesh) == first_number(b, mesh));
    }
}

TEST_CASE("a frame begins empty again, and its lists keep their storage")
{
    frame_bench b;
    uint32_t material = 0;
    material_record& record = add_material(b, &material);
    record.texture[0] = add_moving(b, 5, add_time(b));
    const uint32_t effect = add_effect(b, mesh_effect_swirl, add_time(b));
    const scene_object swirl = object_at_origin(object_genmesh, effect, material);
    const uint32_t scene = add_scene(b.content, {swirl, swirl});
    advance(b, layers_of({layer_of(scene, 1)}));
    const void* storage[] = {b.f.placements.data(), b.f.vertices.data(), b.f.pixels.data(), b.f.moved.data(),
        b.f.pictures.data(), b.f.meshes.data()};
    advance(b, layers_of({layer_of(scene, 2)}));
    const void* again[] = {b.f.placements.data(), b.f.vertices.data(), b.f.pixels.data(), b.f.moved.data(),
        b.f.pictures.data(), b.f.meshes.data()};
    CHECK(std::equal(std::begin(storage), std::end(storage), again));
    CHECK(b.f.placements.size() == 2);
    CHECK(b.f.vertices.size() == size_t{256} * 3 * 2); // positions and normals of one drawing
    CHECK(b.f.pixels.size() == size_t{64} * 64);
    CHECK(b.f.moved.size() == 2);
    CHECK(b.f.pictures.size() == 1);
    CHECK(b.f.meshes.size() == 2);
    advance(b, layers_of({layer_of(0)}));
    CHECK(b.f.placements.empty());
    CHECK(b.f.vertices.empty());
    CHECK(b.f.pixels.empty());
    CHECK(b.f.moved.empty());
    CHECK(b.f.pictures.empty());
    CHECK(b.f.meshes.empty());
}

// ---- copies ---------------------------------------------------------------------------

TEST_CASE("an object without manipulators has its own placement alone")
{
    frame_bench b;
    uint32_t material = 0;
    add_material(b, &material);
    scene_object object = object_at_origin(object_model, add_mesh(b), material);
    object.values[0] = {4.0f, 0};
    advance(b, layers_of(b, {object}));
    REQUIRE(b.f.placements.size() == 1);
    CHECK(b.f.placements[0].position[0] == 4.0f);
    CHECK(b.f.placements[0].scale[2] == 1.0f);
}

TEST_CASE("manipulators are applied one after the other with their values at the object's time")
{
    frame_bench b;
    uint32_t material = 0;
    add_material(b, &material);
    scene_object object = later(object_at_origin(object_model, add_mesh(b), material), 20.0f);
    object.values[0] = {1.0f, 0};
    add_manipulator(object, manipulator_x_multiplier, {2, 10});
    manipulator_record& grid = add_manipulator(object, manipulator_xyz_multiplier, {1, 0, 1, 0, 100});
    grid.params[1] = {static_cast<float>(add_time(b, 0.1f)), 1}; // 3 at tick 30
    advance(b, layers_of(b, {object_at_origin(object_model, 1, material), object}, 10));
    REQUIRE(b.f.meshes.size() == 2);
    CHECK(b.f.meshes[0].first_placement == 0);
    CHECK(b.f.meshes[0].placement_count == 1);
    CHECK(b.f.meshes[1].first_placement == 1);
    REQUIRE(b.f.meshes[1].placement_count == 6);
    const placement* copies = b.f.placements.data() + 1;
    CHECK(copies[0].position[0] == 1.0f);
    CHECK(copies[2].position[0] == 1.0f);
    CHECK(copies[2].position[1] == 200.0f);
    CHECK(copies[3].position[0] == 11.0f);
    CHECK(copies[5].position[1] == 200.0f);
}

TEST_CASE("the eighth manipulator and those after it are not looked at")
{
    frame_bench b;
    uint32_t material = 0;
    add_material(b, &material);
    scene_object object = object_at_origin(object_model, add_mesh(b), material);
    for (uint32_t i = 0; i < max_manipulators; ++i)
        add_manipulator(object, manipulator_x_multiplier, {2});
    object.manipulator_count = 200; // a number that the record cannot hold
    advance(b, layers_of(b, {object}));
    CHECK(b.f.placements.size() == 128);
}

TEST_CASE("an object whose manipulators leave no copy is listed with none")
{
    frame_bench b;
    uint32_t material = 0;
    add_material(b, &material);
    scene_object object = object_at_origin(object_model, add_mesh(b), material);
    add_manipulator(object, manipulator_x_multiplier, {0});
    advance(b, layers_of(b, {object}));
    REQUIRE(b.f.meshes.size() == 1); // its material is applied all the same
    CHECK(b.f.meshes[0].placement_count == 0);
}

TEST_CASE("camera-facing objects are marked")
{
    frame_bench b;
    uint32_t material = 0;
    add_material(b, &material);
    const scene_object object = object_at_origin(object_model, add_mesh(b), material);
    const uint32_t scene = add_scene(b.content, {object, object});
    table_get(b.d.scene_table, scene)->camera_facing[0] = 64; // the second
    advance(b, layers_of({layer_of(scene)}));
    REQUIRE(b.f.meshes.size() == 2);
    CHECK(!b.f.meshes[0].facing_camera);
    CHECK(b.f.meshes[1].facing_camera);
}

TEST_CASE("copies beyond the bound are left out, which is said once for each object")
{
    frame_bench b;
    uint32_t material = 0;
    add_material(b, &material);
    scene_object object = object_at_origin(object_model, add_mesh(b), material);
    add_manipulator(object, manipulator_x_multiplier, {131073});
    const scene_object whole = object_at_origin(object_model, 1, material);
    const uint32_t scene = add_scene(b.content, {whole, object, object});
    const std::string told = told_while([&] { advance(b, layers_of({layer_of(scene)})); });
    CHECK(told == cut_copies_line(b.d, scene, 1) + "\n" + cut_copies_line(b.d, scene, 2) + "\n");
    CHECK(told.find(", object 2: its manipulators make more than 131072 copies; the first 131072 are drawn.\n")
        != std::string::npos);
    CHECK(b.f.meshes[0].placement_count == 1);
    CHECK(b.f.meshes[1].placement_count == 131072);
    CHECK(told_while([&] { advance(b, layers_of({layer_of(scene)})); }).empty());
}

// ---- effects --------------------------------------------------------------------------

TEST_CASE("two objects that share an effect step it twice, and each is drawn with its own vertices")
{
    frame_bench b;
    const uint32_t effect = add_effect(b, mesh_effect_lake, add_time(b));
    const scene_object lake = object_at_origin(object_genmesh, effect, 0);
    const uint32_t scene = add_scene(b.content, {lake, later(lake, 1.0f)});
    const mesh_arrays& mesh = table_get(b.d.effect_table, effect)->mesh;
    stepped_effect by_hand(mesh_effect_lake);
    for (uint32_t time = 1; time < 11; time += 2) { // waters step once for a unit of time
        std::srand(time);
        advance(b, layers_of({layer_of(scene, time)}));
        REQUIRE(b.f.meshes.size() == 2);
        std::srand(time);
        by_hand.step(static_cast<float>(time));
        CHECK(drawn_positions(b, 0) == by_hand.positions());
        CHECK(drawn_normals(b, 0) == by_hand.normals());
        by_hand.step(static_cast<float>(time + 1));
        CHECK(drawn_positions(b, 1) == by_hand.positions());
        CHECK(drawn_normals(b, 1) == by_hand.normals());
    }
    CHECK(drawn_positions(b, 0) != drawn_positions(b, 1));
    const moved_vertices& last = b.f.moved[b.f.meshes[1].moved];
    CHECK(last.positions == mesh.positions); // no copy of what is there
    CHECK(last.kept_positions == not_kept);
    CHECK(last.kept_normals == not_kept);
    CHECK(b.f.vertices.size() == size_t{2} * 3 * mesh.vertex_count); // positions and normals of the first
}

TEST_CASE("three objects that share an effect have three moments of it, over layers too")
{
    frame_bench b;
    const uint32_t effect = add_effect(b, mesh_effect_lake, add_time(b));
    const scene_object lake = object_at_origin(object_genmesh, effect, 0);
    const uint32_t scene = add_scene(b.content, {lake, later(lake, 1.0f)});
    const uint32_t alone = add_scene(b.content, {lake});
    stepped_effect by_hand(mesh_effect_lake);
    for (uint32_t time = 1; time < 10; time += 3) { // what was kept of one frame is not in the next
        std::srand(time);
        advance(b, layers_of({layer_of(scene, time), layer_of(alone, time + 2)}));
        REQUIRE(b.f.meshes.size() == 3);
        std::srand(time);
        std::vector<float> before;
        for (uint32_t i = 0; i < 3; ++i) {
            CAPTURE(i);
            by_hand.step(static_cast<float>(time + i));
            CHECK(before != by_hand.positions());
            before = by_hand.positions();
            CHECK(drawn_positions(b, i) == by_hand.positions());
            CHECK(drawn_normals(b, i) == by_hand.normals());
        }
    }
}

TEST_CASE("a hidden object does not step its effect, one that shows does so at its own time")
{
    frame_bench b;
    const uint32_t effect = add_effect(b, mesh_effect_centerwave, add_time(b));
    const scene_object wave = object_at_origin(object_genmesh, effect, 0);
    scene_object hidden = later(wave, 7.0f);
    hidden.visibility = add_function(b.content, constant_function(0.0f));
    scene_object appearing = later(wave, 3.0f);
    appearing.visibility = add_function(b.content, linear_function(1.0f, -12.0f)); // 1 from tick 13 on
    const uint32_t scene = add_scene(b.content, {hidden, appearing});
    stepped_effect by_hand(mesh_effect_centerwave);
    const std::vector<float> still = by_hand.positions();
    advance(b, layers_of({layer_of(scene, 9)}));
    CHECK(b.f.meshes.empty());
    const mesh_arrays& mesh = table_get(b.d.effect_table, effect)->mesh;
    CHECK(std::equal(still.begin(), still.end(), mesh.positions));
    advance(b, layers_of({layer_of(scene, 10)}));
    REQUIRE(b.f.meshes.size() == 1);
    by_hand.step(13.0f);
    CHECK(drawn_positions(b, 0) == by_hand.positions());
    CHECK(drawn_positions(b, 0) != still);
}

TEST_CASE("an object without copies, and a swarm without triangles, step their effects all the same")
{
    frame_bench b;
    const uint32_t wave = add_effect(b, mesh_effect_centerwave, add_time(b));
    std::srand(6);
    const uint32_t swarm = add_effect(b, mesh_effect_particles, add_time(b));
    std::srand(6);
    stepped_effect swarm_by_hand(mesh_effect_particles);
    stepped_effect wave_by_hand(mesh_effect_centerwave);
    scene_object none = object_at_origin(object_genmesh, wave, 0);
    add_manipulator(none, manipulator_x_multiplier, {0});
    advance(b, layers_of(b, {none, object_at_origin(object_genmesh, swarm, 0)}, 20));
    wave_by_hand.step(20.0f);
    swarm_by_hand.step(20.0f);
    REQUIRE(b.f.meshes.size() == 2);
    CHECK(drawn_positions(b, 0) == wave_by_hand.positions());
    CHECK(drawn_positions(b, 1) == swarm_by_hand.positions());
    CHECK(drawn_normals(b, 1).empty());
}

TEST_CASE("an effect of a kind that does not exist is listed without vertices")
{
    frame_bench b;
    const uint32_t effect = add_effect(b, mesh_effect_kind_count, add_time(b));
    advance(b, layers_of(b, {object_at_origin(object_genmesh, effect, 0)}, 20));
    REQUIRE(b.f.meshes.size() == 1);
    CHECK(b.f.meshes[0].moved == no_index);
    CHECK(drawn_positions(b, 0).empty());
}

TEST_CASE("chance is taken in drawing order by effects and pictures alike")
{
    for (const bool turned : {false, true}) {
        frame_bench b;
        const uint32_t first = add_effect(b, mesh_effect_lake, add_time(b));
        const uint32_t second = add_effect(b, mesh_effect_lake, add_time(b));
        uint32_t material = 0;
        add_material(b, &material).texture[0] = add_moving(b, 5, add_time(b));
        dynamic_texture& amoba = *table_get(b.d.dynamic_texture_table, 1);
        free_dynamic_texture(amoba.state);
        amoba.type = effect_2d_amoba;
        amoba.state = init_dynamic_texture(effect_2d_amoba, 64, 64, 8);
        const scene_object lakes[2]
            = {object_at_origin(object_genmesh, first, 0), object_at_origin(object_genmesh, second, material)};
        const uint32_t scene = add_scene(b.content, {lakes[turned ? 1 : 0], lakes[turned ? 0 : 1]});

        stepped_effect by_hand[2] = {stepped_effect(mesh_effect_lake), stepped_effect(mesh_effect_lake)};
        effect_2d_state* colony = init_dynamic_texture(effect_2d_amoba, 64, 64, 8);
        for (uint32_t time = 1; time <= 3; ++time) {
            std::srand(time);
            advance(b, layers_of({layer_of(scene, time)}));
            std::srand(time);
            const float params[3] = {static_cast<float>(time), 0.0f, 0.0f};
            std::vector<uint8_t> grown(size_t{64} * 64);
            for (size_t i = 0; i < 2; ++i) {
                const bool is_second = (i == 1) != turned;
                by_hand[is_second].step(params[0]);
                if (is_second)
                    render_dynamic_texture(effect_2d_amoba, 64, 64, 8, params, colony, grown.data());
            }
            CHECK(drawn_positions(b, turned ? 1 : 0) == by_hand[0].positions());
            CHECK(drawn_positions(b, turned ? 0 : 1) == by_hand[1].positions());
            REQUIRE(b.f.pictures.size() == 1);
            CHECK(fresh_pixels(b, 0) == grown);
        }
        free_dynamic_texture(colony);
    }
}

// ---- pictures -------------------------------------------------------------------------

TEST_CASE("a picture shown at two times of one frame is computed twice, at one time once")
{
    frame_bench b;
    uint32_t material = 0;
    add_material(b, &material).texture[0] = add_moving(b, 5, add_time(b));
    const scene_object object = object_at_origin(object_model, add_mesh(b), material);
    const uint32_t scene = add_scene(b.content, {object, later(object, 50.0f)}); // pictures go by the layer's time
    advance(b, layers_of({layer_of(scene, 3), layer_of(scene, 4), layer_of(scene, 4)}));
    REQUIRE(b.f.meshes.size() == 6);
    REQUIRE(b.f.pictures.size() == 2);
    CHECK(b.f.pictures[0].texture == table_get(b.d.dynamic_texture_table, 1));
    CHECK(fresh_pixels(b, 0) == moving_picture(3.0f));
    CHECK(fresh_pixels(b, 1) == moving_picture(4.0f));
    CHECK(moving_picture(3.0f) != moving_picture(4.0f));
    const uint32_t fresh_counts[6] = {1, 0, 1, 0, 0, 0};
    for (size_t i = 0; i < 6; ++i)
        CHECK(b.f.meshes[i].fresh_count == fresh_counts[i]);
    CHECK(b.f.meshes[0].fresh == 0);
    CHECK(b.f.meshes[2].fresh == 1);
    advance(b, layers_of({layer_of(scene, 4)})); // the last one stands
    CHECK(b.f.pictures.empty());
    CHECK(b.f.pixels.empty());
}

TEST_CASE("the pictures of a material are computed in the order of its units, as many as the path has")
{
    frame_bench b;
    uint32_t handle = 0;
    const uint32_t time = add_time(b);
    material_record& material = add_material(b, &handle);
    for (uint32_t unit = 0; unit < texture_unit_count; ++unit)
        material.texture[unit] = add_moving(b, 7 - unit, time);
    const uint32_t scene = add_scene(b.content, {object_at_origin(object_model, add_mesh(b), handle)});
    b.context.caps.texture_units = 2;
    advance(b, layers_of({layer_of(scene, 1)}));
    REQUIRE(b.f.pictures.size() == 2);
    CHECK(b.f.pictures[0].texture->texture == 7);
    CHECK(b.f.pictures[1].texture->texture == 6);
    CHECK(b.f.meshes[0].fresh_count == 2);
    b.context.glsl = true; // programs have three units whatever the driver's fixed pipeline has
    advance(b, layers_of({layer_of(scene, 2)}));
    CHECK(b.f.pictures.size() == 3);
    material.texture[1] = 0; // an empty unit ends them
    advance(b, layers_of({layer_of(scene, 3)}));
    REQUIRE(b.f.pictures.size() == 1);
    CHECK(b.f.pictures[0].texture->texture == 7);
}

TEST_CASE("pictures that were not made, do not move, dangle, or belong to no drawn object are not computed")
{
    frame_bench b;
    uint32_t handle = 0;
    material_record& material = add_material(b, &handle);
    material.texture[0] = add_moving(b, 0, add_time(b)); // no OpenGL name
    material.texture[1] = add_image(b, 3);               // does not move
    material.texture[2] = table_add(b.d.object_table, object_reference{texture_dynamic, 9, 1});
    scene_object hidden = object_at_origin(object_model, add_mesh(b), handle);
    hidden.visibility = add_function(b.content, constant_function(0.0f));
    advance(b, layers_of(b, {object_at_origin(object_model, 1, handle), hidden}, 1));
    CHECK(b.f.pictures.empty());
    material.texture[0] = add_moving(b, 5, 0);
    advance(b, layers_of(b, {hidden}, 2));
    CHECK(b.f.pictures.empty());
}

// ---- the rippler -------------------------------------------------------------------------

static scene_object rippled(scene_object object, float amplitude)
{
    add_manipulator(object, manipulator_rippler, {0, amplitude, 0}); // every coordinate + amplitude
    return object;
}

// What add_mesh has, `amount` added to the first `moved` vertices.
static std::vector<float> moved_mesh(uint32_t vertices, uint32_t moved, float amount)
{
    std::vector<float> positions;
    for (uint32_t v = 0; v < vertices; ++v)
        for (const uint32_t times : {1u, 2u, 3u})
            positions.push_back(static_cast<float>(times * v) + (v < moved ? amount : 0.0f));
    return positions;
}

TEST_CASE("a rippled mesh is drawn with the cache's own vertices, which go through buffers")
{
    frame_bench b;
    uint32_t material = 0;
    add_material(b, &material);
    advance(b, layers_of(b, {rippled(object_at_origin(object_model, add_mesh(b, 4), material), 2.0f)}));
    REQUIRE(b.f.moved.size() == 1);
    const moved_vertices& moved = b.f.moved[0];
    CHECK(moved.positions == b.tools.rippler.positions);
    CHECK(moved.normals == b.tools.rippler.normals);
    CHECK(moved.vertex_count == 4);
    CHECK(moved.streamed);
    CHECK(moved.kept_positions == not_kept);
    CHECK(b.f.vertices.empty());
    CHECK(drawn_positions(b, 0) == moved_mesh(4, 4, 2.0f));
}

TEST_CASE("objects that share the rippler's cache are drawn with what it was for each")
{
    frame_bench b;
    uint32_t material = 0;
    add_material(b, &material);
    const uint32_t four = add_mesh(b, 4);
    const uint32_t three = add_mesh(b, 3);
    const scene_object plain = object_at_origin(object_model, four, material);
    const scene_object smaller = object_at_origin(object_model, three, material);
    advance(b, layers_of(b, {rippled(plain, 1.0f), rippled(smaller, 2.0f), plain, rippled(plain, 4.0f)}));
    REQUIRE(b.f.meshes.size() == 4);
    CHECK(drawn_positions(b, 0) == moved_mesh(4, 4, 1.0f));
    CHECK(drawn_positions(b, 1) == moved_mesh(3, 3, 3.0f)); // the three that it has
    CHECK(drawn_positions(b, 2) == moved_mesh(4, 0, 0.0f));
    CHECK(drawn_positions(b, 3) == moved_mesh(4, 4, 7.0f));
    CHECK(b.f.moved[b.f.meshes[0].moved].streamed); // also where they had to be kept
    CHECK(b.f.moved[b.f.meshes[0].moved].vertex_count == 4);
    CHECK(b.f.moved[b.f.meshes[1].moved].vertex_count == 3);
    CHECK(b.f.vertices.size() == size_t{2} * 3 * (4 + 3));
}

TEST_CASE("a mesh larger than the rippler's cache continues with its own vertices")
{
    frame_bench b;
    uint32_t material = 0;
    add_material(b, &material);
    const uint32_t small = add_mesh(b, 3);
    const uint32_t large = add_mesh(b, 5);
    advance(b,
        layers_of(b,
            {rippled(object_at_origin(object_model, small, material), 1.0f),
                rippled(object_at_origin(object_model, large, material), 2.0f),
                rippled(object_at_origin(object_model, small, material), 4.0f)}));
    REQUIRE(b.f.meshes.size() == 3);
    CHECK(drawn_positions(b, 1) == moved_mesh(5, 3, 3.0f));
    const moved_vertices& merged = b.f.moved[b.f.meshes[1].moved];
    CHECK(!merged.streamed);
    CHECK(merged.kept_positions != not_kept);
    std::vector<float> normals(9);
    compute_mesh_normals(moved_mesh(3, 3, 3.0f), std::vector<uint16_t>{0, 1, 2}, normals);
    for (int own = 0; own < 2; ++own)
        normals.insert(normals.end(), {0, 0, 1});
    CHECK(drawn_normals(b, 1) == normals);
    CHECK(drawn_positions(b, 2) == moved_mesh(3, 3, 7.0f));
}

TEST_CASE("a rippled mesh without normals has none, whole or merged")
{
    for (const uint32_t vertices : {3u, 5u}) {
        frame_bench b;
        uint32_t material = 0;
        add_material(b, &material);
        const uint32_t filling = add_mesh(b, 3);
        const uint32_t bare = add_mesh(b, vertices, 1, false);
        advance(b,
            layers_of(b,
                {rippled(object_at_origin(object_model, filling, material), 1.0f),
                    rippled(object_at_origin(object_model, bare, material), 1.0f),
                    rippled(object_at_origin(object_model, filling, material), 1.0f)}));
        REQUIRE(b.f.meshes.size() == 3);
        CHECK(drawn_positions(b, 1) == moved_mesh(vertices, 3, 2.0f));
        CHECK(drawn_normals(b, 1).empty());
    }
}

TEST_CASE("with an empty cache a rippled mesh, or an effect's, is drawn with its own vertices")
{
    frame_bench b;
    uint32_t material = 0;
    add_material(b, &material);
    const uint32_t empty = add_mesh(b, 0);
    std::srand(6);
    const uint32_t effect = add_effect(b, mesh_effect_kind_count, 0);
    advance(b,
        layers_of(b,
            {rippled(object_at_origin(object_model, empty, material), 1.0f),
                rippled(object_at_origin(object_genmesh, effect, material), 1.0f)}));
    REQUIRE(b.f.meshes.size() == 2);
    CHECK(b.f.meshes[0].moved == no_index);
    CHECK(b.f.meshes[1].moved == no_index);
    CHECK(b.tools.rippler.positions == nullptr);
}

TEST_CASE("a rippled effect is stepped, and drawn with the cache's vertices")
{
    frame_bench b;
    const uint32_t effect = add_effect(b, mesh_effect_centerwave, add_time(b));
    advance(b, layers_of(b, {rippled(object_at_origin(object_genmesh, effect, 0), 1.0f)}, 20));
    stepped_effect by_hand(mesh_effect_centerwave);
    by_hand.step(20.0f);
    std::vector<float> expected = by_hand.positions();
    for (float& coordinate : expected)
        coordinate = static_cast<float>(static_cast<double>(coordinate) + 1.0);
    CHECK(drawn_positions(b, 0) == expected);
    REQUIRE(b.f.moved.size() == 1);
    CHECK(b.f.moved[0].streamed);
}

TEST_CASE("every rippler of an object moves the cache, and copies stay what they are")
{
    frame_bench b;
    uint32_t material = 0;
    add_material(b, &material);
    scene_object object = object_at_origin(object_model, add_mesh(b), material);
    add_manipulator(object, manipulator_x_multiplier, {2, 5});
    object = rippled(rippled(object, 1.0f), 2.0f);
    advance(b, layers_of(b, {object}));
    CHECK(b.f.meshes[0].placement_count == 2);
    CHECK(b.f.placements[1].position[0] == 5.0f);
    CHECK(drawn_positions(b, 0) == moved_mesh(3, 3, 3.0f));
}

// ---- the model placer --------------------------------------------------------------------

TEST_CASE("a placer on an effect's mesh sees the vertices of that moment")
{
    frame_bench b;
    uint32_t material = 0;
    add_material(b, &material);
    const uint32_t effect = add_effect(b, mesh_effect_lake, add_time(b));
    const scene_object lake = object_at_origin(object_genmesh, effect, 0);
    scene_object placed = object_at_origin(object_model, add_mesh(b), material);
    manipulator_record& placer = add_manipulator(placed, manipulator_model_placer, {0, 0, 0, 0, 0, 0, 1, 1, 1});
    placer.model = effect;
    placer.model_type = placer_effect;
    std::srand(9);
    advance(b, layers_of(b, {placed, lake, placed, later(lake, 1.0f), placed}, 1));
    std::srand(9);
    stepped_effect by_hand(mesh_effect_lake);
    const size_t meshes[3] = {0, 2, 4};
    std::vector<float> before;
    for (size_t i = 0; i < 3; ++i) {
        CAPTURE(i);
        if (i > 0)
            by_hand.step(static_cast<float>(i));
        const std::vector<float> vertices = by_hand.positions();
        CHECK(vertices != before);
        before = vertices;
        const mesh_to_draw& mesh = b.f.meshes[meshes[i]];
        REQUIRE(mesh.placement_count == vertices.size() / 3);
        for (size_t v = 0; v < mesh.placement_count; ++v) {
            const float* position = b.f.placements[mesh.first_placement + v].position;
            REQUIRE(std::equal(position, position + 3, vertices.begin() + static_cast<ptrdiff_t>(3 * v)));
        }
    }
}

// ---- texts -------------------------------------------------------------------------------

// A font whose letters a and b are the mesh, 2 wide, and whose c has a mesh that does not exist.
static uint32_t add_font(frame_bench& b, uint32_t mesh, uint32_t a_material, uint32_t b_material)
{
    font_record font = {};
    font.glyphs[glyph_of_byte('a')] = {mesh, a_material, 0, 0.0f, 2.0f};
    font.glyphs[glyph_of_byte('b')] = {mesh, b_material, 0, 0.5f, 2.0f};
    font.glyphs[glyph_of_byte('c')] = {99, a_material, 0, 0.0f, 2.0f};
    return table_add(b.d.font_table, font);
}

static scene_object text_object(uint32_t font, const char* text)
{
    scene_object object = object_at_origin(object_text, 0, 0);
    object.font = font;
    std::snprintf(object.text, sizeof object.text, "%s", text);
    return object;
}

TEST_CASE("a text's letters are meshes with pens of their own and the object's copies, made once")
{
    frame_bench b;
    uint32_t red = 0;
    add_material(b, &red);
    const uint32_t mesh = add_mesh(b);
    scene_object text = text_object(add_font(b, mesh, red, 0), "abcb");
    add_manipulator(text, manipulator_x_multiplier, {3, 10});
    const uint32_t scene = add_scene(b.content, {text});
    table_get(b.d.scene_table, scene)->camera_facing[0] = 128;
    advance(b, layers_of({layer_of(scene)}));
    REQUIRE(b.f.meshes.size() == 3); // the c has no mesh
    const float pens[3] = {0.0f, 1.5f, 5.5f};
    for (size_t i = 0; i < 3; ++i) {
        const mesh_to_draw& letter = b.f.meshes[i];
        CHECK(letter.mesh == &arrays_of(b, mesh));
        CHECK(letter.material == (i == 0 ? table_get(b.d.material_table, red) : nullptr));
        CHECK(letter.pen == pens[i]);
        CHECK(letter.first_placement == 0);
        CHECK(letter.placement_count == 3);
        CHECK(letter.facing_camera);
        CHECK(letter.moved == no_index);
    }
    CHECK(b.f.placements.size() == 3);
}

TEST_CASE("a mesh says which object of its scene it belongs to, all letters of a text the same one")
{
    frame_bench b;
    uint32_t red = 0;
    add_material(b, &red);
    const uint32_t mesh = add_mesh(b);
    const scene_object model = object_at_origin(object_model, mesh, red);
    const scene_object nothing = object_at_origin(object_model, 0, red);
    const scene_object text = text_object(add_font(b, mesh, red, red), "ab");
    const scene_object swirl = object_at_origin(object_genmesh, add_effect(b, mesh_effect_swirl, 0), 0);
    const uint32_t first = add_scene(b.content, {nothing, model, text, nothing, swirl});
    const uint32_t second = add_scene(b.content, {model});
    advance(b, layers_of({layer_of(first), layer_of(second)}));
    const uint32_t objects[5] = {1, 2, 2, 4, 0};
    REQUIRE(b.f.meshes.size() == 5);
    for (size_t i = 0; i < 5; ++i)
        CHECK(b.f.meshes[i].object == objects[i]);
}

TEST_CASE("a rippler leaves texts alone")
{
    frame_bench b;
    uint32_t red = 0;
    add_material(b, &red);
    advance(b, layers_of(b, {rippled(text_object(add_font(b, add_mesh(b), red, red), "ab"), 1.0f)}));
    REQUIRE(b.f.meshes.size() == 2);
    CHECK(b.f.meshes[0].moved == no_index);
    CHECK(b.f.moved.empty());
    CHECK(b.tools.rippler.positions == nullptr);
}

TEST_CASE("a text without letters or without its font is not listed")
{
    frame_bench b;
    const uint32_t font = add_font(b, add_mesh(b), 0, 0);
    advance(b, layers_of(b, {text_object(font, ""), text_object(9, "ab"), text_object(0, "ab")}));
    CHECK(b.f.meshes.empty());
    CHECK(b.f.placements.empty());
}

TEST_CASE("a picture of a text's material is computed before the first letter that shows it")
{
    frame_bench b;
    uint32_t plain = 0, moving = 0;
    add_material(b, &plain);
    add_material(b, &moving).texture[0] = add_moving(b, 5, add_time(b));
    advance(b, layers_of(b, {text_object(add_font(b, add_mesh(b), plain, moving), "abb")}, 6));
    REQUIRE(b.f.meshes.size() == 3);
    CHECK(b.f.meshes[0].fresh_count == 0);
    CHECK(b.f.meshes[1].fresh_count == 1);
    CHECK(b.f.meshes[2].fresh_count == 0);
    CHECK(fresh_pixels(b, 0) == moving_picture(6.0f));
}

TEST_CASE("functions of a text's materials are asked letter by letter, as far as that tells")
{
    for (const bool glsl : {false, true}) {
        frame_bench b;
        b.context.glsl = glsl;
        uint32_t materials[2] = {};
        for (uint32_t& material : materials) {
            const uint32_t forgetful = add_forgetful(b);
            material_record& record = add_material(b, &material);
            record.color[0] = static_cast<float>(forgetful);
            record.color_dynamic[0] = 1;
            give_program(record, 50).uniform_functions[0] = forgetful;
        }
        const uint32_t mesh = add_mesh(b);
        const scene_object text = text_object(add_font(b, mesh, materials[0], materials[1]), "abcbbbcbaab");
        advance(b, layers_of(b, {text}, 100));
        REQUIRE(b.f.meshes.size() == 9);
        for (uint32_t i = 0; i < 9; ++i) {
            const bool is_a = i == 0 || i == 6 || i == 7;
            CAPTURE(i);
            CHECK(b.f.meshes[i].mesh == &arrays_of(b, mesh));
            CHECK(b.f.meshes[i].material == table_get(b.d.material_table, materials[is_a ? 0 : 1]));
            CHECK(first_number(b, i) == (i < 2 ? 1.0f : 0.25f)); // one look that differs for each material
        }
        CHECK(b.f.meshes[5].pen > b.f.meshes[4].pen);
    }
}

TEST_CASE("letters of one material have meshes of their own")
{
    frame_bench b;
    uint32_t red = 0;
    add_material(b, &red);
    const uint32_t meshes[2] = {add_mesh(b), add_mesh(b)};
    const uint32_t font = add_font(b, meshes[0], red, red);
    table_get(b.d.font_table, font)->glyphs[glyph_of_byte('b')].model = meshes[1];
    advance(b, layers_of(b, {text_object(font, "ababba")}));
    const uint32_t expected[6] = {0, 1, 0, 1, 1, 0};
    REQUIRE(b.f.meshes.size() == 6);
    for (size_t i = 0; i < 6; ++i)
        CHECK(b.f.meshes[i].mesh == &arrays_of(b, meshes[expected[i]]));
}
