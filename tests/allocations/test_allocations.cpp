#include "counted_allocations.h"
#include "effects/dynamic_texture.h"
#include "frame_bench.h"
#include "render/compositor_gl.h"
#include "silent_gl.h"

#include <doctest/doctest.h>

#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>

namespace {

// What each step of a frame has asked for.
struct frame_count {
    uint64_t advance;
    uint64_t plan;
    uint64_t draw;
};

} // namespace

// ---- the counter ------------------------------------------------------------------------

TEST_CASE("every way to ask for memory is counted")
{
    const uint64_t before = allocations_so_far();
    void* volatile block = std::malloc(10);
    CHECK(allocations_so_far() == before + 1);
    block = std::realloc(block, 20);
    std::free(block);
    block = std::calloc(2, 10);
    std::free(block);
    block = std::aligned_alloc(64, 64);
    std::free(block);
    block = strdup("text");
    std::free(block);
    CHECK(allocations_so_far() == before + 5);
    int* volatile one = new int(1);
    delete one;
    int* volatile many = new int[7];
    delete[] many;
    CHECK(allocations_so_far() == before + 7);
    const std::vector<float> list(9);
    CHECK(allocations_so_far() == before + 8);
    CHECK(list.size() == 9);
}

// ---- a show with everything that moves ----------------------------------------------------

static uint32_t add_moving_of_kind(frame_bench& b, uint32_t kind, uint32_t function)
{
    const uint32_t reference = add_moving(b, 10 + kind, function);
    const uint32_t handle = table_get(b.d.object_table, reference)->id;
    dynamic_texture& texture = *table_get(b.d.dynamic_texture_table, handle);
    free_dynamic_texture(texture.state);
    texture.type = kind;
    texture.bpp = 24;
    texture.state = init_dynamic_texture(kind, texture.width, texture.height, texture.bpp);
    return reference;
}

// A material with a program, two moving pictures and all that fixed pipelines have.
static uint32_t add_full_material(frame_bench& b, uint32_t time)
{
    uint32_t handle = 0;
    material_record& material = add_material(b, &handle);
    material.texture[0] = add_moving_of_kind(b, handle % effect_2d_kind_count, time);
    material.texture[1] = add_moving_of_kind(b, (handle + 2) % effect_2d_kind_count, time);
    material.texture[2] = add_cube(b, 40);
    material.cgenmode[2] = coordinates_cube;
    material.rotation[0] = 1;
    material.light1 = add_values(b, {1, 2, 3, 4, 5, 6, 7, 8, 9});
    material.light2 = material.light1;
    material.fogtype = fog_nicest;
    material.fogend = static_cast<float>(time);
    material.fogend_dynamic = 1;
    material.wireframe = handle % 2 == 0 ? 1 : 0;
    material.linewidth = 2.0f;
    shader_program& program = give_program(material, 50 + handle);
    for (uint32_t& function : program.uniform_functions)
        function = time;
    return handle;
}

static scene_object manipulated(scene_object object, uint32_t effect)
{
    add_manipulator(object, manipulator_xyz_multiplier, {2, 2, 2, 1, 1, 1});
    add_manipulator(object, manipulator_x_multiplier, {3, 10});
    manipulator_record& placer = add_manipulator(object, manipulator_model_placer, {0, 0, 0, 30, 0, 0, 1, 1, 1});
    placer.model = effect;
    placer.model_type = placer_effect;
    add_manipulator(object, manipulator_rippler, {1, 1, 1});
    return object;
}

static scene_object add_text(frame_bench& b, uint32_t mesh, uint32_t material)
{
    font_record font = {};
    for (glyph_record& glyph : font.glyphs)
        glyph = {mesh, material, 0, 0.0f, 1.0f};
    scene_object text = object_at_origin(object_text, 0, 0);
    text.font = table_add(b.d.font_table, font);
    std::memcpy(text.text, "everything that moves and more.", sizeof text.text);
    return text;
}

// Every kind of effect, twice in a frame; rippled, multiplied and placed meshes, of which the
// first fills the rippler's cache and others are smaller and larger; letters; wireframes.
static uint32_t add_full_scene(frame_bench& b)
{
    const uint32_t time = add_time(b);
    std::vector<scene_object> objects;
    const uint32_t swarm = add_effect(b, mesh_effect_particles, time);
    for (const uint32_t vertices : {20u, 10u, 40u})
        for (const bool normals : {true, false}) {
            const uint32_t mesh = add_mesh(b, vertices, 2, normals);
            objects.push_back(manipulated(object_at_origin(object_model, mesh, add_full_material(b, time)), swarm));
        }
    for (uint32_t kind = 0; kind < mesh_effect_kind_count; ++kind) {
        const uint32_t effect = add_effect(b, static_cast<mesh_effect_kind>(kind), time);
        objects.push_back(object_at_origin(object_genmesh, effect, kind % 2 == 0 ? add_full_material(b, time) : 0));
        objects.push_back(objects.back());
        objects.back().time_offset = 1.0f;
        objects.push_back(manipulated(objects.back(), swarm));
    }
    objects.push_back(add_text(b, objects[0].object, objects[0].material));
    const uint32_t scene = add_scene(b.content, objects);
    table_get(b.d.scene_table, scene)->camera_facing[0] = 0x55;
    return scene;
}

static void add_layer_of(frame_bench& b, uint32_t track, uint32_t mode, uint32_t scene, uint32_t target = 0)
{
    layer_record layer = make_layer(mode, 20000, scene);
    layer.rtex = target;
    layer.offset = track; // pictures have other times in every layer
    add_layer(b.content, track, layer);
}

static void add_show(frame_bench& b)
{
    const uint32_t scene = add_full_scene(b);
    const uint32_t target = add_image_texture(b.content, 64, 64);
    table_get(b.d.image_texture_table, target)->texture = 30;
    const uint32_t quarter = add_image_texture(b.content, 64, 64);
    table_get(b.d.image_texture_table, quarter)->texture = 31;
    add_layer_of(b, 0, render_to_texture, scene, target);
    add_layer_of(b, 1, render_simple, scene);
    add_layer_of(b, 2, render_quarter, scene, quarter); // is recreated in the first frame
    add_layer_of(b, 3, render_clear_depth, scene);
    for (auto [handle, mesh] : b.d.mesh_table)
        mesh.arrays.index_buffer = 60 + handle; // so that lines have buffers, too
}

// ---- frames -----------------------------------------------------------------------------------

static frame_count count_frame(frame_bench& b, uint32_t time, renderer& r)
{
    const uint64_t begin = allocations_so_far();
    frame_layers layers = plan_layers(b.d, time, b.view, b.context.caps);
    const draw_context context = context_for(b.d, b.context.caps, b.context.glsl);
    advance_frame(layers, context, r);
    const uint64_t advanced = allocations_so_far();
    reserve_targets_gl(layers);
    plan_frame(layers, context, b.view, r);
    const uint64_t planned = allocations_so_far();
    draw_frame(layers, context, r);
    return {advanced - begin, planned - advanced, allocations_so_far() - planned};
}

TEST_CASE("from the third frame on frames take no memory, on both paths, with and without buffers")
{
    load_silent_gl();
    for (const bool glsl : {false, true})
        for (const uint8_t buffers : {uint8_t{0}, uint8_t{1}}) {
            CAPTURE(glsl);
            CAPTURE(buffers);
            frame_bench b;
            add_show(b);
            b.context.glsl = glsl;
            b.context.caps.vbo = b.context.caps.pbo = buffers;
            renderer r;
            const frame_count first = count_frame(b, 1, r);
            CHECK(first.advance > 0);
            CHECK(first.plan > 0);
            count_frame(b, 2, r);
            for (uint32_t time = 3; time < 40; ++time) {
                const frame_count count = count_frame(b, time, r);
                CAPTURE(time);
                REQUIRE(count.advance == 0);
                REQUIRE(count.plan == 0);
                REQUIRE(count.draw == 0);
            }
            CHECK(r.f.meshes.size() == 4 * (6 + 15 + 30)); // models, effects, letters
            CHECK(r.f.uploads.size() > 4);
            CHECK(r.f.placements.size() > 1000);
            CHECK(r.f.vertices.size() > 1000);
            CHECK((r.f.vertex_uploads.size() > 10) == (buffers == 1));
            release_renderer_gl(r);
        }
}

TEST_CASE("compose_frame, as the player calls it, takes no memory either")
{
    load_silent_gl();
    frame_bench b;
    add_show(b);
    renderer r;
    for (uint32_t time = 1; time < 3; ++time)
        compose_frame(b.d, time, b.view, b.context.caps, false, r);
    const uint64_t before = allocations_so_far();
    for (uint32_t time = 3; time < 10; ++time)
        compose_frame(b.d, time, b.view, b.context.caps, false, r);
    CHECK(allocations_so_far() == before);
    release_renderer_gl(r);
}

TEST_CASE("a frame in tiles is planned and drawn again and again without memory")
{
    load_silent_gl();
    frame_bench b;
    const uint32_t scene = add_full_scene(b);
    add_layer_of(b, 0, render_simple, scene);
    renderer r;
    for (uint32_t time = 1; time < 3; ++time)
        count_frame(b, time, r);
    frame_layers layers = plan_layers(b.d, 3, b.view, b.context.caps);
    const draw_context context = context_for(b.d, b.context.caps, false);
    advance_frame(layers, context, r);
    const standing_state before = r.standing;
    const uint64_t asked = allocations_so_far();
    for (uint32_t x = 0; x < 800; x += 200) {
        r.standing = before;
        b.view.tile = {x, 0, 200, 600};
        plan_frame(layers, context, b.view, r);
        draw_frame(layers, context, r);
    }
    CHECK(allocations_so_far() == asked);
    release_renderer_gl(r);
}
