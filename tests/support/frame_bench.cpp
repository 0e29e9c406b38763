#include "frame_bench.h"

#include "effects/dynamic_texture.h"
#include "effects/mesh_effect.h"
#include "render/frame_text.h"
#include "render/shader_source.h"
#include "texgen/cosine_table.h"

#include <algorithm>
#include <cstdlib>

frame_bench::frame_bench()
{
    build_cosine_table();
}

frame_bench::~frame_bench()
{
    reset_rippler_cache(tools.rippler);
    for (auto [handle, effect] : d.effect_table)
        free_mesh_effect(effect);
}

// ---- records ----------------------------------------------------------------------------

uint32_t add_image(frame_bench& b, uint32_t texture)
{
    image_texture image = {};
    image.texture = texture;
    const uint32_t handle = table_add(b.d.image_texture_table, image);
    return table_add(b.d.object_table, object_reference{texture_image, handle, 1});
}

uint32_t add_cube(frame_bench& b, uint32_t texture)
{
    cube_map cube = {};
    cube.texture = texture;
    const uint32_t handle = table_add(b.d.cube_map_table, cube);
    return table_add(b.d.object_table, object_reference{texture_cube, handle, 1});
}

uint32_t add_moving(frame_bench& b, uint32_t texture, uint32_t function)
{
    dynamic_texture moving = {};
    moving.type = effect_2d_test;
    moving.width = moving.height = 64;
    moving.bpp = 8;
    moving.functions[0] = function;
    moving.texture = texture;
    moving.state = init_dynamic_texture(moving.type, moving.width, moving.height, moving.bpp);
    const uint32_t handle = table_add(b.d.dynamic_texture_table, moving);
    return table_add(b.d.object_table, object_reference{texture_dynamic, handle, 1});
}

uint32_t add_values(frame_bench& b, std::initializer_list<float> values)
{
    value_record record = {};
    std::copy(values.begin(), values.end(), record.values);
    return table_add(b.d.transform_table, record);
}

uint32_t add_time(frame_bench& b, float slope)
{
    return add_function(b.content, linear_function(slope));
}

material_record& add_material(frame_bench& b, uint32_t* handle)
{
    constexpr float color[4] = {0.25f, 0.5f, 0.75f, 1.0f};
    material_record material = {};
    material.blend_function = blend_replace;
    std::copy_n(color, 4, material.color);
    const uint32_t made = table_add(b.d.material_table, material);
    if (handle != nullptr)
        *handle = made;
    return *table_get(b.d.material_table, made);
}

shader_program& give_program(material_record& material, uint32_t name)
{
    shader_program& program = *new_shader_program();
    program.program = name;
    program.position_location = 1;
    program.normal_location = 2;
    program.projection_location = 11;
    program.modelview_location = 12;
    program.normal_matrix_location = 13;
    program.texture_matrix_location = 14;
    for (int32_t i = 0; i < 2; ++i)
        program.light_position_location[i] = 15 + i;
    for (int32_t i = 0; i < static_cast<int32_t>(texture_unit_count); ++i)
        program.texcoord_location[i] = 3 + i;
    for (int32_t i = 0; i < static_cast<int32_t>(user_uniform_count); ++i)
        program.uniform_locations[i] = 21 + i;
    material.program = &program;
    return program;
}

uint32_t add_mesh(frame_bench& b, uint32_t vertices, uint32_t texcoord_sets, bool normals)
{
    const size_t floats = size_t{vertices} * (3 + (normals ? 3 : 0) + 2 * texcoord_sets);
    mesh_record mesh = {};
    mesh.data = static_cast<uint8_t*>(std::calloc(floats * sizeof(float) + 3 * sizeof(uint16_t), 1));
    mesh_arrays& arrays = mesh.arrays;
    arrays.vertex_count = vertices;
    arrays.index_count = 3;
    arrays.texcoord_sets = texcoord_sets;
    float* at = reinterpret_cast<float*>(mesh.data);
    arrays.positions = at;
    for (uint32_t v = 0; v < vertices; ++v)
        for (const uint32_t times : {1u, 2u, 3u})
            *at++ = static_cast<float>(times * v);
    arrays.normals = normals ? at : nullptr;
    for (uint32_t v = 0; v < vertices && normals; ++v, at += 3)
        at[2] = 1.0f;
    for (uint32_t set = 0; set < texcoord_sets; ++set) {
        arrays.texcoords[set] = at;
        for (uint32_t v = 0; v < vertices; ++v, at += 2) {
            at[0] = static_cast<float>(set);
            at[1] = static_cast<float>(v);
        }
    }
    arrays.indices = reinterpret_cast<uint16_t*>(at);
    for (uint16_t i = 0; i < 3; ++i)
        arrays.indices[i] = i;
    return table_add(b.d.mesh_table, mesh);
}

mesh_arrays& arrays_of(frame_bench& b, uint32_t mesh)
{
    return table_get(b.d.mesh_table, mesh)->arrays;
}

uint32_t add_effect(frame_bench& b, mesh_effect_kind kind, uint32_t function)
{
    mesh_effect effect = {};
    effect.type = kind;
    effect.functions[0] = function;
    init_mesh_effect(effect);
    return table_add(b.d.effect_table, effect);
}

manipulator_record& add_manipulator(scene_object& object, manipulator_kind kind, std::initializer_list<float> params)
{
    manipulator_record& manipulator = object.manipulators[object.manipulator_count++];
    manipulator.type = kind;
    uint32_t i = 0;
    for (const float param : params)
        manipulator.params[i++].value = param;
    return manipulator;
}

// ---- layers -----------------------------------------------------------------------------

layer_plan layer_of(uint32_t scene, uint32_t time)
{
    layer_plan layer = {};
    layer.time = time;
    layer.model_id = scene;
    layer.projection = projection_kept;
    layer.depth_test = 1;
    return layer;
}

frame_layers layers_of(const std::vector<layer_plan>& layers)
{
    frame_layers made = {};
    made.layer_count = static_cast<uint32_t>(layers.size());
    made.drawn = made.layer_count;
    std::copy(layers.begin(), layers.end(), made.layers);
    return made;
}

frame_layers layers_of(frame_bench& b, const std::vector<scene_object>& objects, uint32_t time)
{
    return layers_of({layer_of(add_scene(b.content, objects), time)});
}

// ---- steps --------------------------------------------------------------------------------

void advance(frame_bench& b, const frame_layers& layers)
{
    clear_advanced(b.f);
    for (uint32_t i = 0; i < layers.layer_count; ++i) {
        advance_layer(layers.layers[i], b.context, b.tools, b.f);
        b.f.mesh_end[i] = static_cast<uint32_t>(b.f.meshes.size());
    }
}

void plan(frame_bench& b, const frame_layers& layers)
{
    clear_planned(b.f);
    for (uint32_t i = 0; i < layers.layer_count; ++i) {
        const uint32_t first = i == 0 ? 0 : b.f.mesh_end[i - 1];
        plan_layer_commands(layers.layers[i], first, b.f.mesh_end[i], b.context, b.view, b.standing, b.f);
        b.f.command_end[i] = static_cast<uint32_t>(b.f.commands.size());
    }
}

void advance_and_plan(frame_bench& b, const frame_layers& layers)
{
    advance(b, layers);
    plan(b, layers);
}

std::string planned_text(frame_bench& b, const frame_layers& layers)
{
    advance_and_plan(b, layers);
    return frame_as_text(b.f);
}

// ---- what a frame has ---------------------------------------------------------------------

static std::vector<float> vertices_from(const float* from, uint32_t count)
{
    return from == nullptr ? std::vector<float>() : std::vector<float>(from, from + size_t{count} * 3);
}

std::vector<float> drawn_positions(const frame_bench& b, size_t mesh)
{
    const mesh_to_draw& drawn = b.f.meshes[mesh];
    if (drawn.moved == no_index)
        return vertices_from(drawn.mesh->positions, drawn.mesh->vertex_count);
    const moved_vertices& moved = b.f.moved[drawn.moved];
    const bool kept = moved.kept_positions != not_kept;
    return vertices_from(kept ? b.f.vertices.data() + moved.kept_positions : moved.positions, moved.vertex_count);
}

std::vector<float> drawn_normals(const frame_bench& b, size_t mesh)
{
    const mesh_to_draw& drawn = b.f.meshes[mesh];
    if (drawn.moved == no_index)
        return vertices_from(drawn.mesh->normals, drawn.mesh->vertex_count);
    const moved_vertices& moved = b.f.moved[drawn.moved];
    const bool kept = moved.kept_normals != not_kept;
    return vertices_from(kept ? b.f.vertices.data() + moved.kept_normals : moved.normals, moved.vertex_count);
}
