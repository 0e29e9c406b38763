#include "authoring/check/record_fields.h"

#include "authoring/check/lint.h"
#include "model/catalogues.h"
#include "model/timeline.h"
#include "model/values.h"

#include <algorithm>
#include <cassert>
#include <charconv>
#include <cmath>
#include <cstring>
#include <iterator>

// ---- values as texts ----------------------------------------------------------------

static std::string text_of(float value)
{
    char text[32];
    if (std::isnan(value)) {
        uint32_t bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        return "nan " + std::to_string(bits);
    }
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

uint64_t hash_of_bytes(const void* data, size_t size)
{
    const auto* bytes = static_cast<const uint8_t*>(data);
    uint64_t hash = 14695981039346656037u;
    for (size_t index = 0; index < size; ++index)
        hash = (hash ^ bytes[index]) * 1099511628211u;
    return hash;
}

static std::string text_of_bytes(const void* data, size_t size)
{
    if (data == nullptr)
        return "none";
    char text[64];
    std::snprintf(
        text, sizeof text, "%zu bytes, %016llx", size, static_cast<unsigned long long>(hash_of_bytes(data, size)));
    return text;
}

static void add(field_list& fields, const std::string& name, const std::string& value)
{
    fields.push_back({name, value, 0, 0});
}

static void add_number(field_list& fields, const std::string& name, int64_t value)
{
    add(fields, name, std::to_string(value));
}

static void add_real(field_list& fields, const std::string& name, float value)
{
    add(fields, name, text_of(value));
}

// A reference leads somewhere only if `records` has that record.
template <typename record_type>
static void add_handle(field_list& fields, const std::string& name, const table<record_type>& records,
    document_section section, uint32_t handle)
{
    const bool leads = table_get(records, handle) != nullptr;
    fields.push_back({name, std::to_string(handle), leads ? static_cast<uint32_t>(section) : 0, leads ? handle : 0});
}

static void add_function(field_list& fields, const std::string& name, const document& d, uint32_t handle)
{
    add_handle(fields, name, d.function_table, section_functions, handle);
}

static void add_animated(field_list& fields, const std::string& name, const document& d, bool dynamic, float value)
{
    if (!dynamic)
        return add_real(fields, name, value);
    add_function(fields, name, d, handle_of_value(value));
    fields.back().value = "function " + text_of(value);
}

static std::string numbered(const char* name, uint32_t number)
{
    return std::string(name) + " " + std::to_string(number);
}

// ---- pictures and meshes -----------------------------------------------------------

static void add_generated_image(field_list& fields, const generated_image& image)
{
    add_number(fields, "type", image.params.kind);
    for (uint32_t index = 0; index < max_generator_values; ++index)
        add_real(fields, numbered("parameter", index + 1), image.params.values[index]);
}

static void add_texture_node(field_list& fields, const document& d, const texture_node& node)
{
    add(fields, "name", node.name);
    add_number(fields, "type", node.type);
    add_number(fields, "texture_format", node.texture_format);
    add_number(fields, "texture_filter", node.texture_filter);
    const bool has_image = node.type < node_invert && node.layer_id < d.generated_image_count;
    fields.push_back({"layer_id", std::to_string(node.layer_id), has_image ? section_generated_images + 0u : 0u,
        has_image ? node.layer_id + 1 : 0});
    add_handle(fields, "input1", d.texture_table, section_texture_nodes, node.input1);
    add_handle(fields, "input2", d.texture_table, section_texture_nodes, node.input2);
    for (uint32_t index = 0; index < max_node_values; ++index)
        add_real(fields, numbered("parameter", index + 1), node.values[index]);
    for (uint32_t index = 0; index < node.output_count; ++index)
        add_handle(fields, numbered("output", index + 1), d.texture_table, section_texture_nodes, node.outputs[index]);
}

static void add_mesh(field_list& fields, const mesh_record& mesh)
{
    const mesh_arrays& arrays = mesh.arrays;
    add_number(fields, "vertices", arrays.vertex_count);
    add_number(fields, "coordinate sets", arrays.texcoord_sets);
    add_number(fields, "triangles", arrays.index_count / 3);
    const size_t vertex_bytes = size_t{arrays.vertex_count} * (24 + 8 * arrays.texcoord_sets);
    add(fields, "bytes of vertices", text_of_bytes(arrays.positions, vertex_bytes));
    add(fields, "bytes of triangles", text_of_bytes(arrays.indices, size_t{2} * arrays.index_count));
}

static void add_dynamic_texture(field_list& fields, const document& d, const dynamic_texture& texture)
{
    add(fields, "name", texture.name);
    add_number(fields, "type", texture.type);
    add_number(fields, "texture_format", texture.texture_format);
    add_number(fields, "texture_filter", texture.texture_filter);
    add_number(fields, "resolution", texture.width);
    add_number(fields, "bpp", texture.bpp);
    for (uint32_t index = 0; index < max_effect_2d_params; ++index)
        add_function(fields, numbered("p", index + 1), d, texture.functions[index]);
}

static void add_image_texture(field_list& fields, const image_texture& image)
{
    add_number(fields, "texture_format", image.texture_format);
    add_number(fields, "texture_filter", image.texture_filter);
    add_number(fields, "width", image.width);
    add_number(fields, "height", image.height);
    add_number(fields, "components", image.components);
    const auto level_bytes = [&image](uint32_t level) {
        return size_t{image.width >> level} * (image.height >> level) * image.components;
    };
    add(fields, "pixels", text_of_bytes(image.pixels, level_bytes(0)));
    add(fields, "level 1", text_of_bytes(image.level1, level_bytes(1)));
    add(fields, "level 2", text_of_bytes(image.level2, level_bytes(2)));
}

// Of one that was refused the faces may have other sizes than its own.
static void add_cube_map(field_list& fields, const cube_map& cube, bool refused)
{
    static constexpr const char* names[cube_face_count] = {"xp", "xn", "yp", "yn", "zp", "zn"};
    add_number(fields, "texture_format", cube.texture_format);
    add_number(fields, "texture_filter", cube.texture_filter);
    add_number(fields, "size", cube.size);
    for (uint32_t face = 0; face < cube_face_count; ++face)
        add(fields, names[face],
            text_of_bytes(refused ? nullptr : cube.faces[face], size_t{cube.size} * cube.size * cube.components[face]));
}

// ---- numbers, fonts, references -----------------------------------------------------

static void add_segment(record_fields& record, const animation_function& function, uint32_t index)
{
    field_list fields;
    const int32_t type = function.segment_type[index];
    add_number(fields, "type", type);
    add_number(fields, "length", static_cast<int32_t>(function.segment_length[index]));
    const bool known = type >= 0 && type < segment_kind_count;
    for (uint32_t param = 0; param < max_segment_params; ++param) {
        const bool named = known && param < function_types[type].param_count;
        add_real(fields, named ? function_types[type].param_name[param] : numbered("parameter", param + 1),
            function.segment_params[index][param]);
    }
    record.parts.push_back(std::move(fields));
}

static void add_animation_function(record_fields& record, const animation_function& function)
{
    add_number(record.fields, "type", function.value_type);
    add_number(record.fields, "loop_type", function.loop_type);
    add_real(record.fields, "loop_begin", function.loop_begin);
    add_real(record.fields, "loop_end", function.loop_end);
    for (uint32_t index = 0; index < function.segment_count; ++index)
        add_segment(record, function, index);
}

static void add_values(field_list& fields, const document& d, const value_record& record)
{
    for (uint32_t index = 0; index < std::size(record.values); ++index)
        add_animated(fields, numbered("value", index + 1), d, value_is_dynamic(record, index), record.values[index]);
}

static void add_font(record_fields& record, const document& d, const font_record& font)
{
    for (const glyph_record& glyph : font.glyphs) {
        field_list fields;
        add_handle(fields, "model", d.mesh_table, section_meshes, glyph.model);
        add_handle(fields, "material", d.material_table, section_materials, glyph.material);
        add_number(fields, "bitmap", static_cast<int32_t>(glyph.bitmap));
        add_real(fields, "offset", glyph.offset);
        add_real(fields, "width", glyph.width);
        record.parts.push_back(std::move(fields));
    }
}

// As a texture or as a mesh, by who names it.
static void add_object_reference(field_list& fields, const document& d, const object_reference& reference)
{
    add_number(fields, "type", reference.type);
    if (reference.named_by_material == 0 && reference.type == object_model)
        return add_handle(fields, "id", d.mesh_table, section_meshes, reference.id);
    if (reference.named_by_material == 0 && reference.type == object_genmesh)
        return add_handle(fields, "id", d.effect_table, section_mesh_effects, reference.id);
    switch (static_cast<texture_kind>(reference.type)) {
    case texture_generated:
        return add_handle(fields, "id", d.texture_table, section_texture_nodes, reference.id);
    case texture_image:
        return add_handle(fields, "id", d.image_texture_table, section_image_textures, reference.id);
    case texture_dynamic:
        return add_handle(fields, "id", d.dynamic_texture_table, section_dynamic_textures, reference.id);
    case texture_cube:
        return add_handle(fields, "id", d.cube_map_table, section_cube_maps, reference.id);
    case texture_kind_count:
        break;
    }
    add_number(fields, "id", reference.id);
}

// ---- materials ------------------------------------------------------------------------

static void add_texture_unit(field_list& fields, const document& d, const material_record& m, uint32_t unit)
{
    const std::string name = "texture" + std::to_string(unit + 1);
    add_handle(fields, name, d.object_table, section_objects, m.texture[unit]);
    add_number(fields, name + " wrapmode", m.wrapmode[unit]);
    add_number(fields, name + " cgenmode", m.cgenmode[unit]);
    add_number(fields, name + " rotation", m.rotation[unit]);
    add_number(fields, name + " function", m.combine_mode[unit]);
}

static void add_shader(field_list& fields, const char* name, const char* text)
{
    add(fields, name, text != nullptr ? "\"" + std::string(text) + "\"" : "none");
}

static void add_material(field_list& fields, const document& d, const material_record& m)
{
    static constexpr const char* colors[] = {"red", "green", "blue", "alpha"};
    add_number(fields, "backface_culling", m.backface_culling);
    add_number(fields, "depth_test", m.depth_test);
    add_number(fields, "normalization", m.normalization);
    add_number(fields, "wireframe", m.wireframe);
    add_number(fields, "blend_function", m.blend_function);
    for (uint32_t channel = 0; channel < std::size(colors); ++channel)
        add_animated(fields, colors[channel], d, m.color_dynamic[channel] != 0, m.color[channel]);
    add_animated(fields, "linewidth", d, m.linewidth_dynamic != 0, m.linewidth);
    add_handle(fields, "light1", d.transform_table, section_values, m.light1);
    add_handle(fields, "light2", d.transform_table, section_values, m.light2);
    for (uint32_t unit = 0; unit < texture_unit_count; ++unit)
        add_texture_unit(fields, d, m, unit);
    add_number(fields, "fogtype", m.fogtype);
    add_animated(fields, "fogstart", d, m.fogstart_dynamic != 0, m.fogstart);
    add_animated(fields, "fogend", d, m.fogend_dynamic != 0, m.fogend);
    add_handle(fields, "fogcolor", d.transform_table, section_values, m.fogcolor);
    add_number(fields, "enable_glsl", m.enable_glsl);
    for (uint32_t index = 0; index < user_uniform_count; ++index)
        add_function(fields, "u" + std::to_string(index + 1), d, m.user_uniforms[index]);
    add_shader(fields, "vertex_shader", m.custom_vertex_shader);
    add_shader(fields, "fragment_shader", m.custom_fragment_shader);
}

// ---- effects and scenes -----------------------------------------------------------------

static void add_effect(field_list& fields, const document& d, const mesh_effect& effect)
{
    add_number(fields, "type", effect.type);
    add(fields, "name", effect.name);
    for (uint32_t index = 0; index < max_mesh_effect_params; ++index)
        add_function(fields, numbered("p", index + 1), d, effect.functions[index]);
}

static void add_manipulator(field_list& fields, const document& d, const manipulator_record& m, uint32_t number)
{
    assert(m.type >= 0 && m.type < manipulator_kind_count);
    const manipulator_entry& entry = manipulators[m.type];
    const std::string name = numbered("manipulator", number) + " ";
    add_number(fields, name + "type", m.type);
    add_number(fields, name + "type of the model", m.model_type);
    if (m.model_type == placer_effect)
        add_handle(fields, name + "model", d.effect_table, section_mesh_effects, m.model);
    else
        add_handle(fields, name + "model", d.mesh_table, section_meshes, m.model);
    for (uint32_t index = 0; index < max_manipulator_params; ++index) {
        const std::string param
            = index < entry.param_count ? entry.param_name[index] : numbered("parameter", index + 1);
        add_animated(fields, name + param, d, m.params[index].dynamic != 0, m.params[index].value);
    }
}

static void add_placed(field_list& fields, const document& d, const scene_object& object)
{
    const uint32_t handle = resolve_scene_object(d, object);
    if (object.type == object_genmesh)
        add_handle(fields, "object", d.effect_table, section_mesh_effects, handle);
    else if (object.type == object_model)
        add_handle(fields, "object", d.mesh_table, section_meshes, handle);
    else
        add_number(fields, "object", object.object);
    fields.back().value = std::to_string(object.object); // as it is written, through section 10 or not
}

static field_list fields_of_object(const document& d, const scene_object& object, bool facing)
{
    static constexpr const char* names[placement_value_count]
        = {"x", "y", "z", "rotation x", "rotation y", "rotation z", "scale x", "scale y", "scale z"};
    field_list fields;
    add_number(fields, "type", object.type);
    add_placed(fields, d, object);
    add_handle(fields, "material", d.material_table, section_materials, object.material);
    add_handle(fields, "font", d.font_table, section_fonts, object.font);
    add(fields, "text", "\"" + std::string(object.text, strnlen(object.text, scene_text_size)) + "\"");
    for (uint32_t index = 0; index < placement_value_count; ++index)
        add_animated(fields, names[index], d, object.values[index].dynamic != 0, object.values[index].value);
    add_function(fields, "visibility", d, object.visibility);
    add_real(fields, "time offset", object.time_offset);
    add_number(fields, "camera facing", facing ? 1 : 0);
    for (uint32_t index = 0; index < object.manipulator_count; ++index)
        add_manipulator(fields, d, object.manipulators[index], index + 1);
    return fields;
}

static void add_scene(record_fields& record, const document& d, const scene_record& scene)
{
    add(record.fields, "name", scene.name);
    for (uint32_t index = 0; index < scene.object_count; ++index) {
        const bool facing = (scene.camera_facing[index / 8] & (128 >> index % 8)) != 0;
        record.parts.push_back(fields_of_object(d, scene.objects[index], facing));
    }
}

// ---- timeline -----------------------------------------------------------------------------

static field_list fields_of_clip(const document& d, const layer_record& clip)
{
    static constexpr const char* names[camera_value_count]
        = {"x", "y", "z", "rotation x", "rotation y", "rotation z", "field of view", "far plane"};
    field_list fields;
    add_handle(fields, "id", d.scene_table, section_scenes, clip.model_id);
    add_number(fields, "space_before", clip.space_before);
    add_number(fields, "length", clip.length);
    add_number(fields, "offset", static_cast<int32_t>(clip.offset));
    add_number(fields, "type", static_cast<int32_t>(clip.type));
    add_handle(fields, "rtex", d.image_texture_table, section_image_textures, clip.rtex);
    add_handle(fields, "clearcolor", d.transform_table, section_values, clip.clearcolor);
    for (uint32_t index = 0; index < camera_value_count; ++index) {
        const bool flat = index == camera_fov && clip.camera_mode[index] == fov_orthographic;
        const uint8_t dynamic = index == camera_fov ? fov_dynamic : 1;
        add_animated(fields, names[index], d, clip.camera_mode[index] == dynamic, clip.camera[index]);
        if (flat)
            fields.back().value = "ortographic";
    }
    return fields;
}

static void add_track(record_fields& record, const document& d, uint32_t track)
{
    assert(d.timeline != nullptr && track < track_count);
    for (uint32_t clip = 0; clip < d.timeline->layer_count[track]; ++clip)
        record.parts.push_back(fields_of_clip(d, d.timeline->layers[track][clip]));
}

static void add_music(field_list& fields, const read_document& read)
{
    const char* file = xml_get_attribute(document_music_element(read.root), "file");
    add(fields, "file", file != nullptr ? "\"" + std::string(file) + "\"" : "none");
}

// ---- any record -----------------------------------------------------------------------------

static uint32_t track_elements(const read_document& read)
{
    const xml_node* element = element_of(read, section_timeline, 0);
    uint32_t count = 0;
    for (const xml_node* node = element != nullptr ? element->first_child : nullptr; node != nullptr;
         node = node->next_sibling)
        ++count;
    return std::min(count, track_count);
}

uint32_t record_count(const read_document& read, uint32_t section)
{
    const document& d = read.d;
    switch (static_cast<document_section>(section)) {
    case section_generated_images:
        return d.generated_image_count;
    case section_texture_nodes:
        return table_count(d.texture_table);
    case section_meshes:
        return table_count(d.mesh_table);
    case section_functions:
        return table_count(d.function_table);
    case section_values:
        return table_count(d.transform_table);
    case section_dynamic_textures:
        return table_count(d.dynamic_texture_table);
    case section_image_textures:
        return table_count(d.image_texture_table);
    case section_cube_maps:
        return table_count(d.cube_map_table);
    case section_fonts:
        return table_count(d.font_table);
    case section_objects:
        return table_count(d.object_table);
    case section_materials:
        return table_count(d.material_table);
    case section_mesh_effects:
        return table_count(d.effect_table);
    case section_scenes:
        return table_count(d.scene_table);
    case section_timeline:
        return track_elements(read);
    case section_music:
        return 1;
    case no_more_sections:
        break;
    }
    return 0;
}

static const char* part_name_of(document_section section)
{
    switch (section) {
    case section_functions:
        return "segment";
    case section_fonts:
        return "glyph";
    case section_scenes:
        return "object";
    case section_timeline:
        return "clip";
    case section_generated_images:
    case section_texture_nodes:
    case section_meshes:
    case section_values:
    case section_dynamic_textures:
    case section_image_textures:
    case section_cube_maps:
    case section_objects:
    case section_materials:
    case section_mesh_effects:
    case section_music:
    case no_more_sections:
        break;
    }
    return nullptr;
}

record_fields fields_of_record(const read_document& read, uint32_t section, uint32_t record)
{
    assert(record >= 1 && record <= record_count(read, section)); // handles are positions while a document is read
    const document& d = read.d;
    const auto which = static_cast<document_section>(section);
    record_fields result = {{}, part_name_of(which), {}};
    switch (which) {
    case section_generated_images:
        add_generated_image(result.fields, d.generated_images[record - 1]);
        break;
    case section_texture_nodes:
        add_texture_node(result.fields, d, *table_get(d.texture_table, record));
        break;
    case section_meshes:
        add_mesh(result.fields, *table_get(d.mesh_table, record));
        break;
    case section_functions:
        add_animation_function(result, *table_get(d.function_table, record));
        break;
    case section_values:
        add_values(result.fields, d, *table_get(d.transform_table, record));
        break;
    case section_dynamic_textures:
        add_dynamic_texture(result.fields, d, *table_get(d.dynamic_texture_table, record));
        break;
    case section_image_textures:
        add_image_texture(result.fields, *table_get(d.image_texture_table, record));
        break;
    case section_cube_maps:
        add_cube_map(result.fields, *table_get(d.cube_map_table, record), has_error(read, section, record));
        break;
    case section_fonts:
        add_font(result, d, *table_get(d.font_table, record));
        break;
    case section_objects:
        add_object_reference(result.fields, d, *table_get(d.object_table, record));
        break;
    case section_materials:
        add_material(result.fields, d, *table_get(d.material_table, record));
        break;
    case section_mesh_effects:
        add_effect(result.fields, d, *table_get(d.effect_table, record));
        break;
    case section_scenes:
        add_scene(result, d, *table_get(d.scene_table, record));
        break;
    case section_timeline:
        add_track(result, d, record - 1);
        break;
    case section_music:
        add_music(result.fields, read);
        break;
    case no_more_sections:
        break;
    }
    return result;
}
