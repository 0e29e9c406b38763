// Materials, fonts, and what the section of objects says about both textures and shapes.
#include "authoring/show/lowering.h"

#include <iterator>

// ---- references -------------------------------------------------------------------------

static authored_record* reference_to(lowering& l, int32_t type, element_value id, const source_place& place)
{
    element node = {"texture"};
    add_attribute(node, "type", value_of_int(type));
    add_attribute(node, "id", std::move(id));
    return new_record(l, section_objects, std::move(node), place, "");
}

authored_record* lower_reference(lowering& l, const thing& made)
{
    const use_of_thing use = {&made, nullptr, 0};
    if (const auto known = l.made.find(use); known != l.made.end())
        return known->second.front();
    const reference_thing& reference = *as<reference_thing>(&made);
    element_value id = value_of_int(reference.id);
    int32_t type = reference.type;
    if (reference.what != nullptr && as<mesh_thing>(reference.what) != nullptr)
        id = value_of(lower_one_mesh(l, *reference.what, made.place));
    else if (reference.what != nullptr && as<effect_thing>(reference.what) != nullptr)
        id = value_of(lower_effect(l, *reference.what));
    else if (reference.what != nullptr) {
        const lowered_texture texture = lower_texture(l, *reference.what);
        id = value_of(texture.record);
        type = texture.type;
    }
    authored_record* record = reference_to(l, type, id, made.place);
    l.made[use] = {record};
    return record;
}

authored_record* object_of_shape(lowering& l, int32_t kind, authored_record* shape, const source_place& place)
{
    return l.places_references ? reference_to(l, kind, value_of(shape), place) : shape;
}

static authored_record* texture_reference(lowering& l, const thing& texture)
{
    if (as<reference_thing>(&texture) != nullptr)
        return lower_reference(l, texture);
    const lowered_texture lowered = lower_texture(l, texture);
    return reference_to(l, lowered.type, value_of(lowered.record), texture.place);
}

// ---- materials --------------------------------------------------------------------------

static void add_unit(lowering& l, element& node, uint32_t index, const unit_description& unit)
{
    if (unit.texture == nullptr)
        return;
    static constexpr const char* names[texture_unit_count] = {"texture1", "texture2", "texture3"};
    element& child = add_setting(node, names[index], value_of(texture_reference(l, *unit.texture)));
    add_attribute(child, "wrapmode", value_of_int(unit.wrap));
    add_attribute(child, "cgenmode", value_of_int(unit.coordinates));
    add_attribute(child, "rotation", value_of_int(unit.turn ? 1 : 0));
    add_attribute(child, "function", value_of_int(unit.combine));
}

static void add_fog(lowering& l, element& node, const fog_description& fog)
{
    add_setting(node, "fogtype", value_of_int(fog.quality));
    add_animated(l, node, "fogstart", fog.from);
    add_animated(l, node, "fogend", fog.to);
    if (fog.color != nullptr)
        add_setting(node, "fogcolor", value_of(lower_value(l, *fog.color)));
}

static void add_shader(lowering& l, element& node, const shader_description& shader, const source_place& place)
{
    add_setting(node, "enable_glsl", value_of_int(shader.enabled ? 1 : 0));
    if (shader.has_uniforms) {
        element& uniforms = add_child(node, "glsl_uniforms");
        for (uint32_t index = 0; index < user_uniform_count; ++index)
            add_attribute(
                uniforms, "u" + std::to_string(index + 1), value_of(function_of(l, shader.uniforms[index], place)));
    }
    if (!shader.vertex.empty())
        add_text(node, "vertex_shader", value_of(shader.vertex));
    if (!shader.fragment.empty())
        add_text(node, "fragment_shader", value_of(shader.fragment));
}

authored_record* lower_material(lowering& l, const thing& made, bool flat)
{
    if (as<raw_thing>(&made) != nullptr)
        return lower_raw(l, made);
    const material_thing& m = *as<material_thing>(&made);
    const use_of_thing use = {&made, nullptr, !m.depth && flat ? 1u : 0u};
    if (const auto known = l.made.find(use); known != l.made.end())
        return known->second.front();
    const bool lit = m.lights[0] != nullptr || m.lights[1] != nullptr;
    element node = {"material"};
    add_setting(node, "backface_culling", value_of_int(m.cull ? 1 : 0));
    add_setting(node, "depth_test", value_of_int(m.depth.value_or(!flat) ? 1 : 0));
    add_setting(node, "normalization", value_of_int(m.normalize.value_or(lit) ? 1 : 0));
    add_setting(node, "wireframe", value_of_int(m.wireframe ? 1 : 0));
    add_setting(node, "blend_function", value_of_int(m.blend));
    static constexpr const char* channels[] = {"red", "green", "blue", "alpha"};
    for (uint32_t channel = 0; channel < std::size(channels); ++channel)
        add_animated(l, node, channels[channel], m.color[channel]);
    add_animated(l, node, "linewidth", m.line_width);
    for (uint32_t light = 0; light < m.lights.size(); ++light)
        if (m.lights[light] != nullptr)
            add_setting(node, light == 0 ? "light1" : "light2", value_of(lower_value(l, *m.lights[light])));
    for (uint32_t index = 0; index < texture_unit_count; ++index)
        add_unit(l, node, index, m.units[index]);
    if (m.fog)
        add_fog(l, node, *m.fog);
    if (m.shader)
        add_shader(l, node, *m.shader, made.place);
    authored_record* record = new_record(l, section_materials, std::move(node), made.place, made.name);
    l.made[use] = {record};
    return record;
}

// A unit reads its own set, or the first where the mesh has fewer.
uint32_t sets_to_turn(const thing* made)
{
    const material_thing* material = as<material_thing>(made);
    uint32_t sets = 0;
    bool some_are_kept = false;
    if (material == nullptr)
        return 0;
    for (uint32_t index = 0; index < texture_unit_count; ++index) {
        const unit_description& unit = material->units[index];
        const image_thing* image = as<image_thing>(unit.texture);
        if (unit.texture == nullptr || unit.coordinates != coordinates_off)
            continue;
        if (image != nullptr && image->turned)
            sets |= 1u << index;
        else
            some_are_kept = true;
    }
    return sets != 0 && some_are_kept ? sets | kept_first_set : sets;
}
