// Fonts, object references, materials, and what holds between them.
#include "model/read_sections.h"

#include "model/catalogues.h"
#include "model/combine_mode.h"
#include "model/document.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <iterator>

// ---- fonts ------------------------------------------------------------------------

static bool read_glyph(const document_place& at, const xml_node& node, glyph_record& glyph)
{
    return read_handle(at, node, "model", glyph.model) && read_handle(at, node, "material", glyph.material)
        && read_handle(at, node, "bitmap", glyph.bitmap) && read_real(at, node, "offset", glyph.offset)
        && read_real(at, node, "width", glyph.width);
}

bool read_font(const document_place& at, const xml_node& node)
{
    const document& d = *at.reader.target;
    font_record* font = add_record(at, d.font_table);
    if (font == nullptr || !need_children(at, node, glyph_count))
        return false;
    const xml_node* child = node.first_child;
    for (uint32_t index = 0; index < glyph_count; ++index, child = child->next_sibling) {
        const document_place here = place_of_part(at, "glyph", index + 1);
        if (!read_glyph(here, *child, font->glyphs[index]))
            return false;
        uint32_t& model = font->glyphs[index].model;
        check_handle(here, d.mesh_table, "model", model);
        if (table_get(d.mesh_table, model) == nullptr)
            model = 0; // a blank, also to the pen
    }
    check_child_count(at, node, glyph_count);
    return true;
}

static void check_glyph_materials(document_reader& reader)
{
    const document& d = *reader.target;
    for (auto [record, font] : d.font_table) { // handles are positions while a document is read
        const document_place at = place_of_record(reader, section_fonts, record);
        for (uint32_t index = 0; index < glyph_count; ++index)
            check_handle(
                place_of_part(at, "glyph", index + 1), d.material_table, "material", font.glyphs[index].material);
    }
}

// ---- object references --------------------------------------------------------------

// What the pair means is its user's to say, so it is checked where it is used.
bool read_object_reference(const document_place& at, const xml_node& node)
{
    object_reference* reference = add_record(at, at.reader.target->object_table);
    return reference != nullptr && read_int(at, node, "type", reference->type)
        && read_handle(at, node, "id", reference->id);
}

static void mark_material_textures(document& d)
{
    for (auto [handle, material] : d.material_table) {
        for (const uint32_t texture : material.texture) {
            if (object_reference* reference = table_get(d.object_table, texture))
                reference->named_by_material = 1;
        }
    }
}

// ---- materials ------------------------------------------------------------------------

namespace {

enum setting_kind : uint32_t {
    setting_backface_culling,
    setting_depth_test,
    setting_normalization,
    setting_wireframe,
    setting_blend_function,
    setting_red,
    setting_green,
    setting_blue,
    setting_alpha,
    setting_linewidth,
    setting_light1,
    setting_light2,
    setting_texture1,
    setting_texture2,
    setting_texture3,
    setting_fogtype,
    setting_fogstart,
    setting_fogend,
    setting_fogcolor,
    setting_enable_glsl,
    setting_glsl_uniforms,
    setting_vertex_shader,
    setting_fragment_shader,
    setting_kind_count
};

} // namespace

constexpr const char* setting_names[]
    = {"backface_culling", "depth_test", "normalization", "wireframe", "blend_function", "red", "green", "blue",
        "alpha", "linewidth", "light1", "light2", "texture1", "texture2", "texture3", "fogtype", "fogstart", "fogend",
        "fogcolor", "enable_glsl", "glsl_uniforms", "vertex_shader", "fragment_shader"};
static_assert(std::size(setting_names) == setting_kind_count);

static setting_kind kind_of_setting(const xml_node& node)
{
    uint32_t kind = 0;
    while (kind < setting_kind_count && !is_named(node, setting_names[kind]))
        ++kind;
    return static_cast<setting_kind>(kind);
}

// A byte too: 256 is off.
static bool read_flag(const document_place& at, const xml_node& node, uint8_t& flag)
{
    if (!read_byte(at, node, "value", flag))
        return false;
    flag = flag != 0 ? 1 : 0;
    return true;
}

static bool read_blend_function(const document_place& at, const xml_node& node, uint8_t& blend_function)
{
    if (!read_byte(at, node, "value", blend_function))
        return false;
    check_choice(
        at, "blend_function", blend_function, blend_kind_count - 1, "the blending of the material before stays");
    return true;
}

static bool read_fogtype(const document_place& at, const xml_node& node, uint8_t& fogtype)
{
    if (!read_byte(at, node, "value", fogtype))
        return false;
    constexpr uint8_t last = fog_kind_count - 1;
    check_choice(at, "fogtype", fogtype, last, "it acts as 2");
    fogtype = std::min(fogtype, last); // all but fog_none is fog
    return true;
}

static bool read_material_value(const document_place& at, const xml_node& node, float& value, uint8_t& dynamic)
{
    animated_value animated{};
    if (!read_animated(at, node, dynamic_unless_static, animated))
        return false;
    value = animated.value;
    dynamic = animated.dynamic;
    return true;
}

// A light or the fog colour: `at` is the setting, the message names the material.
static bool read_value_handle(const document_place& at, const xml_node& node, uint32_t& handle)
{
    assert(at.outer != nullptr);
    if (!read_handle(at, node, "value", handle))
        return false;
    check_handle(*at.outer, at.reader.target->transform_table, at.name, handle);
    return true;
}

template <typename picture_record>
static bool check_picture(
    const document_place& at, const table<picture_record>& pictures, const char* what, uint32_t handle)
{
    check_handle(at, pictures, what, handle);
    return table_get(pictures, handle) != nullptr;
}

// Warns when a unit's reference leads to no texture: nothing, an unknown kind, a record
// that does not exist, or a texture node that is no output. False for these and for 0: the
// unit is empty.
static bool check_texture(const document_place& material, const char* setting, uint32_t handle)
{
    assert(setting != nullptr);
    const document& d = *material.reader.target;
    check_handle(material, d.object_table, setting, handle);
    const auto* reference = table_get(d.object_table, handle);
    if (reference == nullptr)
        return false;
    const document_place at = place_of_part(material, setting, handle);
    switch (static_cast<texture_kind>(reference->type)) {
    case texture_generated: {
        const auto* node = table_get(d.texture_table, reference->id);
        if (node != nullptr && node->type != node_output)
            warn(at, line_of("texture node %u is no output node.", reference->id));
        return check_picture(at, d.texture_table, "texture node", reference->id) && node->type == node_output;
    }
    case texture_image:
        return check_picture(at, d.image_texture_table, "image texture", reference->id);
    case texture_dynamic:
        return check_picture(at, d.dynamic_texture_table, "dynamic texture", reference->id);
    case texture_cube:
        return check_picture(at, d.cube_map_table, "cube map", reference->id);
    case texture_kind_count:
        break;
    }
    warn(at, line_of("kind %d is no texture.", reference->type));
    return false;
}

// A mode of a unit: what its catalogue lacks acts as 0.
static uint8_t known_mode(const document_place& at, const char* what, uint8_t mode, uint8_t last)
{
    return check_choice(at, what, mode, last, "it acts as 0") ? mode : 0;
}

static void check_combine_mode(const document_place& at, uint32_t unit, uint8_t function)
{
    assert(unit < texture_unit_count);
    if (!is_combine_mode(unit, function))
        warn(at, line_of("function %u is no combine mode of unit %u: it acts as 0.", function, unit + 1));
}

// Reflections that are fixed in the world and cube maps need each other. `handle` leads to a texture.
static void check_coordinates(const document_place& at, uint32_t handle, uint8_t cgenmode)
{
    const auto* reference = table_get(at.reader.target->object_table, handle);
    if (reference == nullptr || (reference->type == texture_cube) == (cgenmode == coordinates_cube))
        return;
    warn(at,
        line_of("cgenmode %u %s a cube map: with shaders the material draws nothing.", cgenmode,
            cgenmode == coordinates_cube ? "without" : "with"));
}

static bool read_texture_unit(const document_place& at, const xml_node& node, material_record& material, uint32_t unit)
{
    assert(unit < texture_unit_count && at.outer != nullptr);
    uint8_t wrapmode = 0;
    uint8_t cgenmode = 0;
    uint8_t rotation = 0;
    uint8_t function = 0;
    if (!read_handle(at, node, "value", material.texture[unit]) || !read_byte(at, node, "wrapmode", wrapmode)
        || !read_byte(at, node, "cgenmode", cgenmode) || !read_byte(at, node, "rotation", rotation)
        || !read_byte(at, node, "function", function))
        return false;
    material.wrapmode[unit] = known_mode(at, "wrapmode", wrapmode, wrap_kind_count - 1);
    material.cgenmode[unit] = known_mode(at, "cgenmode", cgenmode, coordinate_generation_count - 1);
    material.rotation[unit] = rotation != 0 ? 1 : 0;
    material.combine_mode[unit] = combine_mode_of_unit(unit, function);
    check_combine_mode(at, unit, function);
    if (check_texture(*at.outer, at.name, material.texture[unit]))
        check_coordinates(at, material.texture[unit], material.cgenmode[unit]);
    return true;
}

static bool read_uniforms(const document_place& at, const xml_node& node, material_record& material)
{
    for (uint32_t index = 0; index < user_uniform_count; ++index) {
        const std::string name = "u" + std::to_string(index + 1);
        if (!read_handle(at, node, name.c_str(), material.user_uniforms[index]))
            return false;
        check_handle(place_of_part(at, name.c_str()), at.reader.target->function_table, "function",
            material.user_uniforms[index]);
    }
    return true;
}

// The record's own copy of a shader text; the last element of a name counts.
static bool read_shader_text(const document_place& at, const xml_node& node, char*& text)
{
    std::free(text);
    text = nullptr;
    if (node.text == nullptr)
        return true;
    text = strdup(node.text);
    return text != nullptr || fail(at, "not enough memory.");
}

static bool read_setting(const document_place& at, setting_kind kind, const xml_node& node, material_record& m)
{
    switch (kind) {
    case setting_backface_culling:
        return read_flag(at, node, m.backface_culling);
    case setting_depth_test:
        return read_flag(at, node, m.depth_test);
    case setting_normalization:
        return read_flag(at, node, m.normalization);
    case setting_wireframe:
        return read_flag(at, node, m.wireframe);
    case setting_blend_function:
        return read_blend_function(at, node, m.blend_function);
    case setting_red:
    case setting_green:
    case setting_blue:
    case setting_alpha:
        return read_material_value(at, node, m.color[kind - setting_red], m.color_dynamic[kind - setting_red]);
    case setting_linewidth:
        return read_material_value(at, node, m.linewidth, m.linewidth_dynamic);
    case setting_light1:
        return read_value_handle(at, node, m.light1);
    case setting_light2:
        return read_value_handle(at, node, m.light2);
    case setting_texture1:
    case setting_texture2:
    case setting_texture3:
        return read_texture_unit(at, node, m, kind - setting_texture1);
    case setting_fogtype:
        return read_fogtype(at, node, m.fogtype);
    case setting_fogstart:
        return read_material_value(at, node, m.fogstart, m.fogstart_dynamic);
    case setting_fogend:
        return read_material_value(at, node, m.fogend, m.fogend_dynamic);
    case setting_fogcolor:
        return read_value_handle(at, node, m.fogcolor);
    case setting_enable_glsl:
        return read_flag(at, node, m.enable_glsl);
    case setting_glsl_uniforms:
        return read_uniforms(at, node, m);
    case setting_vertex_shader:
        return read_shader_text(at, node, m.custom_vertex_shader);
    case setting_fragment_shader:
        return read_shader_text(at, node, m.custom_fragment_shader);
    case setting_kind_count:
        break;
    }
    return true;
}

// What the settings together ask for and do not get.
static void check_material(const document_place& at, const material_record& m)
{
    for (uint32_t unit = 1; unit < texture_unit_count; ++unit)
        if (m.texture[unit] != 0 && m.texture[unit - 1] == 0)
            warn(at, line_of("texture%u is not used: texture%u is empty.", unit + 1, unit));
    if (m.light2 != 0 && m.light1 == 0)
        warn(at, "light2 without light1 lights only with shaders.");
}

// A program of the material's own that is not used. One that is switched off is meant to be.
static void check_own_program(const document_place& at, const material_record& m, const bool seen[setting_kind_count])
{
    const bool has_vertex = m.custom_vertex_shader != nullptr;
    const bool has_fragment = m.custom_fragment_shader != nullptr;
    if (m.enable_glsl != 0 && has_vertex != has_fragment)
        warn(at, line_of("the %s shader without the other is not used.", has_vertex ? "vertex" : "fragment"));
    if (m.enable_glsl != 0 && !has_vertex && !has_fragment && seen[setting_vertex_shader]
        && seen[setting_fragment_shader])
        warn(at, "vertex_shader and fragment_shader have no text: the generated program is used.");
    if (!seen[setting_enable_glsl] && has_vertex && has_fragment)
        warn(at, "vertex_shader and fragment_shader are not used: there is no enable_glsl.");
}

bool read_material(const document_place& at, const xml_node& node)
{
    material_record* material = add_record(at, at.reader.target->material_table);
    if (material == nullptr)
        return false;
    bool seen[setting_kind_count] = {};
    for (const xml_node* child = node.first_child; child != nullptr; child = child->next_sibling) {
        const setting_kind kind = kind_of_setting(*child);
        if (kind == setting_kind_count) {
            warn(at, "setting " + quoted(child->name) + " is unknown.");
            continue;
        }
        const document_place here = place_of_part(at, setting_names[kind]);
        if (seen[kind])
            warn(here, "the setting stands here again, and the last one counts.");
        seen[kind] = true;
        if (!read_setting(here, kind, *child, *material))
            return false;
    }
    check_material(at, *material);
    check_own_program(at, *material, seen);
    return true;
}

void finish_materials(document_reader& reader)
{
    check_glyph_materials(reader);
    mark_material_textures(*reader.target);
}
