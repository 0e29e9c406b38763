// Records that nobody names.
#include "authoring/check/lint.h"

#include "model/values.h"

#include <cassert>

namespace {

// Which records of a section somebody names, by handle ([0] unused).
struct named_records {
    std::vector<bool> marks[no_more_sections];
};

} // namespace

static void name(named_records& named, uint32_t section, uint32_t handle)
{
    assert(section < no_more_sections);
    if (handle < named.marks[section].size())
        named.marks[section][handle] = true;
}

static void name_value(named_records& named, bool dynamic, float value)
{
    if (dynamic)
        name(named, section_functions, handle_of_value(value));
}

static void name_values(named_records& named, const animated_value* values, uint32_t count)
{
    for (uint32_t index = 0; index < count; ++index)
        name_value(named, values[index].dynamic != 0, values[index].value);
}

// ---- who names what -----------------------------------------------------------------

// Nodes are named by the outputs that depend on them, images by the nodes that are named.
static void name_nodes(const document& d, named_records& named)
{
    std::vector<uint32_t> waiting;
    for (auto [handle, node] : d.texture_table)
        if (node.type == node_output)
            waiting.push_back(node.input1);
    while (!waiting.empty()) {
        const uint32_t handle = waiting.back();
        waiting.pop_back();
        const texture_node* node = table_get(d.texture_table, handle);
        if (node == nullptr || named.marks[section_texture_nodes][handle])
            continue;
        name(named, section_texture_nodes, handle);
        if (node->type < node_invert)
            name(named, section_generated_images, node->layer_id + 1);
        waiting.insert(waiting.end(), {node->input1, node->input2});
    }
}

static void name_texture(const document& d, named_records& named, uint32_t handle)
{
    const object_reference* reference = table_get(d.object_table, handle);
    if (reference == nullptr)
        return;
    name(named, section_objects, handle);
    switch (static_cast<texture_kind>(reference->type)) {
    case texture_generated:
        return name(named, section_texture_nodes, reference->id);
    case texture_image:
        return name(named, section_image_textures, reference->id);
    case texture_dynamic:
        return name(named, section_dynamic_textures, reference->id);
    case texture_cube:
        return name(named, section_cube_maps, reference->id);
    case texture_kind_count:
        break;
    }
}

static void name_of_material(const document& d, named_records& named, const material_record& m)
{
    for (uint32_t channel = 0; channel < 4; ++channel)
        name_value(named, m.color_dynamic[channel] != 0, m.color[channel]);
    name_value(named, m.linewidth_dynamic != 0, m.linewidth);
    name_value(named, m.fogstart_dynamic != 0, m.fogstart);
    name_value(named, m.fogend_dynamic != 0, m.fogend);
    for (const uint32_t value : {m.light1, m.light2, m.fogcolor})
        name(named, section_values, value);
    for (const uint32_t texture : m.texture)
        name_texture(d, named, texture);
    for (const uint32_t function : m.user_uniforms)
        name(named, section_functions, function);
}

static void name_of_object(const document& d, named_records& named, const scene_object& object)
{
    const uint32_t handle = resolve_scene_object(d, object);
    if (object.type == object_model)
        name(named, section_meshes, handle);
    if (object.type == object_genmesh)
        name(named, section_mesh_effects, handle);
    if (object.type == object_text)
        name(named, section_fonts, object.font);
    name(named, section_materials, object.material);
    const auto* reference = table_get(d.object_table, object.object);
    if (reference != nullptr && reference->type == object.type && reference->named_by_material == 0)
        name(named, section_objects, object.object);
    name_values(named, object.values, placement_value_count);
    name(named, section_functions, object.visibility);
    for (uint32_t index = 0; index < object.manipulator_count; ++index) {
        const manipulator_record& manipulator = object.manipulators[index];
        name_values(named, manipulator.params, max_manipulator_params);
        name(named, manipulator.model_type == placer_effect ? section_mesh_effects : section_meshes, manipulator.model);
    }
}

static void name_of_clip(named_records& named, const layer_record& clip)
{
    name(named, section_scenes, clip.model_id);
    name(named, section_image_textures, clip.rtex);
    name(named, section_values, clip.clearcolor);
    for (uint32_t index = 0; index < camera_value_count; ++index) {
        const uint8_t dynamic = index == camera_fov ? fov_dynamic : 1;
        name_value(named, clip.camera_mode[index] == dynamic, clip.camera[index]);
    }
}

static void name_of_smaller_records(const document& d, named_records& named)
{
    for (auto [handle, record] : d.transform_table)
        for (uint32_t index = 0; index < 9; ++index)
            name_value(named, value_is_dynamic(record, index), record.values[index]);
    for (auto [handle, texture] : d.dynamic_texture_table)
        for (const uint32_t function : texture.functions)
            name(named, section_functions, function);
    for (auto [handle, effect] : d.effect_table)
        for (const uint32_t function : effect.functions)
            name(named, section_functions, function);
    for (auto [handle, font] : d.font_table)
        for (const glyph_record& glyph : font.glyphs) {
            name(named, section_meshes, glyph.model);
            name(named, section_materials, glyph.material);
        }
}

// ---- who is left ----------------------------------------------------------------------

// Who could name a record of this section; null: its records are not asked for.
static const char* possible_user(document_section section)
{
    switch (section) {
    case section_generated_images:
    case section_texture_nodes:
        return "it reaches no texture that a material uses";
    case section_meshes:
        return "no object, glyph or manipulator uses it";
    case section_functions:
    case section_values:
    case section_materials:
        return "nobody uses it";
    case section_dynamic_textures:
    case section_cube_maps:
    case section_objects:
        return "no material uses it";
    case section_image_textures:
        return "no material and no clip uses it";
    case section_fonts:
        return "no text uses it";
    case section_mesh_effects:
        return "no object and no manipulator uses it";
    case section_scenes:
        return "no clip shows it";
    case section_timeline:
    case section_music:
    case no_more_sections:
        break;
    }
    return nullptr;
}

static void make_room(const document& d, named_records& named)
{
    for (std::vector<bool>& marks : named.marks)
        marks.assign(1, true);
    const auto room = [&named](uint32_t section, uint32_t count) { named.marks[section].resize(count + 1, false); };
    room(section_generated_images, d.generated_image_count);
    room(section_texture_nodes, table_count(d.texture_table));
    room(section_meshes, table_count(d.mesh_table));
    room(section_functions, table_count(d.function_table));
    room(section_values, table_count(d.transform_table));
    room(section_dynamic_textures, table_count(d.dynamic_texture_table));
    room(section_image_textures, table_count(d.image_texture_table));
    room(section_cube_maps, table_count(d.cube_map_table));
    room(section_fonts, table_count(d.font_table));
    room(section_objects, table_count(d.object_table));
    room(section_materials, table_count(d.material_table));
    room(section_mesh_effects, table_count(d.effect_table));
    room(section_scenes, table_count(d.scene_table));
}

// Rule: no record of the document names it. Those that only unused ones name are not told of: they show when these
// are gone.
void lint_unused_records(const lint_target& t)
{
    named_records named;
    make_room(t.d, named);
    name_nodes(t.d, named);
    name_of_smaller_records(t.d, named);
    for (auto [handle, material] : t.d.material_table)
        name_of_material(t.d, named, material);
    for (auto [handle, scene] : t.d.scene_table)
        for (uint32_t index = 0; index < scene.object_count; ++index)
            name_of_object(t.d, named, scene.objects[index]);
    for (uint32_t track = 0; t.d.timeline != nullptr && track < track_count; ++track)
        for (uint32_t clip = 0; clip < t.d.timeline->layer_count[track]; ++clip)
            name_of_clip(named, t.d.timeline->layers[track][clip]);
    for (uint32_t section = section_generated_images; section < section_timeline; ++section)
        for (uint32_t handle = 1; handle < named.marks[section].size(); ++handle)
            if (!named.marks[section][handle])
                add_finding(t, problem_note, section, handle,
                    std::string(possible_user(static_cast<document_section>(section))) + ".");
}
