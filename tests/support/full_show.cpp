#include "full_show.h"

#include "effects/dynamic_texture.h"

#include <cstring>
#include <vector>

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
    material.cgenmode[0] = static_cast<uint8_t>(handle % coordinate_generation_count);
    material.blend_function = static_cast<uint8_t>(handle % blend_kind_count);
    for (uint32_t unit = 0; unit < texture_unit_count; ++unit)
        material.combine_mode[unit] = static_cast<uint8_t>((handle + unit) % first_unit_combine_count);
    material.normalization = handle / 2 % 2 == 0 ? 1 : 0;
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

// Three copies and rippled; hundreds of them where `many`.
static scene_object manipulated(scene_object object, uint32_t effect, bool many)
{
    add_manipulator(object, manipulator_x_multiplier, {3, 10});
    if (!many) {
        add_manipulator(object, manipulator_rippler, {1, 1, 1});
        return object;
    }
    add_manipulator(object, manipulator_xyz_multiplier, {2, 2, 2, 1, 1, 1});
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

uint32_t add_full_scene(frame_bench& b, bool many)
{
    const uint32_t time = add_time(b);
    std::vector<scene_object> objects;
    const uint32_t swarm = add_effect(b, mesh_effect_particles, time);
    for (const uint32_t vertices : {20u, 10u, 40u})
        for (const bool normals : {true, false}) {
            const uint32_t mesh = add_mesh(b, vertices, 2, normals);
            objects.push_back(
                manipulated(object_at_origin(object_model, mesh, add_full_material(b, time)), swarm, many));
        }
    for (uint32_t kind = 0; kind < mesh_effect_kind_count; ++kind) {
        const uint32_t effect = add_effect(b, static_cast<mesh_effect_kind>(kind), time);
        objects.push_back(object_at_origin(object_genmesh, effect, kind % 2 == 0 ? add_full_material(b, time) : 0));
        objects.push_back(objects.back());
        objects.back().time_offset = 1.0f;
        objects.push_back(manipulated(objects.back(), swarm, many));
    }
    objects.push_back(add_text(b, objects[0].object, objects[0].material));
    const uint32_t scene = add_scene(b.content, objects);
    table_get(b.d.scene_table, scene)->camera_facing[0] = 0x55;
    return scene;
}

void add_layer_of(frame_bench& b, uint32_t track, uint32_t mode, uint32_t scene, uint32_t target)
{
    layer_record layer = make_layer(mode, 20000, scene);
    layer.rtex = target;
    layer.offset = track; // pictures have other times in every layer
    add_layer(b.content, track, layer);
}

void add_full_show(frame_bench& b, bool many)
{
    const uint32_t scene = add_full_scene(b, many);
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
