// Words for light and surfaces.
#include "authoring/lua/word_list.h"

#include "authoring/lua/sandbox.h"

#include <lua.hpp>

#include <cstdlib>

static void color_field(field_reader& r, const char* name, moving_number* three)
{
    if (!take(r, name))
        return;
    bool has_alpha = false;
    const auto color = color_at(r.L, lua_gettop(r.L), label(r, name), has_alpha);
    for (size_t channel = 0; channel < 3; ++channel)
        three[channel] = color[channel];
    done(r);
}

static int word_light(lua_State* L)
{
    field_reader r = read_fields(L, 1, "light", kind_light);
    value_thing light;
    light.is_light = true;
    color_field(r, "ambient", &light.values[0]);
    color_field(r, "diffuse", &light.values[3]);
    const moving_point at = point_field(r, "at", 0);
    for (size_t axis = 0; axis < 3; ++axis)
        light.values[6 + axis] = at[axis];
    push_thing(L, std::move(light));
    return 1;
}

static const thing* push_color(lua_State* L, int index, const std::string& what)
{
    bool has_alpha = false;
    const auto color = color_at(L, index, what, has_alpha);
    value_thing value;
    for (size_t channel = 0; channel < 3; ++channel)
        value.values[3 + channel] = color[channel];
    return push_thing(L, std::move(value));
}

static int word_color(lua_State* L)
{
    push_color(L, 1, "color");
    return 1;
}

const thing* value_at(lua_State* L, int index, const std::string& what)
{
    if (const thing* made = thing_at(L, index); as<value_thing>(made) != nullptr)
        return made;
    const thing* made = push_color(L, index, what);
    lua_pop(L, 1);
    return made;
}

// ---- materials --------------------------------------------------------------------------

static const thing* light_field(field_reader& r, const char* name)
{
    if (!take(r, name))
        return nullptr;
    const thing* made = thing_at(r.L, lua_gettop(r.L));
    const value_thing* value = as<value_thing>(made);
    if (value == nullptr || (!value->is_light && !state_of(r.L).show->keep_order)) {
        report_error(r.L,
            label(r, name) + " is " + (value != nullptr ? "a colour" : what_is(r.L, lua_gettop(r.L)))
                + ", and wants a light { }.");
        made = nullptr;
    }
    done(r);
    return made;
}

static unit_description unit_at(lua_State* L, int index, uint32_t unit, const std::string& what)
{
    unit_description made;
    if (lua_type(L, index) != LUA_TTABLE) {
        made.texture = texture_at(L, index, what);
        return made;
    }
    field_reader r = read_fields(L, index, what.c_str(), kind_unit);
    if (lua_rawlen(L, index) == 0) // without a name it has been told of
        need_field(r, "texture", "image \"file.png\"");
    if (take(r, "texture")) {
        made.texture = texture_at(L, lua_gettop(L), label(r, "texture"));
        done(r);
    }
    made.combine = choice_field(r, "combine", combine_choices[unit], 0);
    made.wrap = choice_field(r, "wrap", wrap_choices, wrap_repeat);
    made.coordinates = choice_field(r, "coordinates", coordinate_choices, coordinates_off);
    made.turn = flag_field(r, "turn", false);
    return made;
}

static void read_units(field_reader& r, material_thing& material)
{
    static constexpr const char* names[texture_unit_count] = {"texture", "texture2", "texture3"};
    for (uint32_t unit = 0; unit < texture_unit_count; ++unit) {
        if (!take(r, names[unit]))
            continue;
        material.units[unit] = unit_at(r.L, lua_gettop(r.L), unit, label(r, names[unit]));
        done(r);
    }
}

static void read_color(field_reader& r, material_thing& material)
{
    bool has_alpha = false;
    if (take(r, "color")) {
        material.color = color_at(r.L, lua_gettop(r.L), label(r, "color"), has_alpha);
        done(r);
    }
    if (has_field(r, "alpha") && has_alpha)
        report_warning(r.L, "material: alpha stands in color and in alpha: the latter counts.");
    if (has_field(r, "alpha"))
        material.color[3] = moving_field(r, "alpha", 1);
    const bool is_glass = material.color[3].curve != nullptr || material.color[3].constant < 1;
    const bool is_read = has_field(r, "texture") || has_field(r, "shader"); // there alpha may mix textures
    if (is_glass && !is_read && !has_field(r, "blend") && !state_of(r.L).show->keep_order)
        report(r.L, problem_note, current_place(r.L),
            "material: alpha is not seen, since blend is \"replace\": write blend = \"alpha\".");
}

static void read_fog(field_reader& outer, material_thing& material)
{
    if (!take(outer, "fog"))
        return;
    field_reader r = read_fields(outer.L, lua_gettop(outer.L), "fog", kind_fog);
    fog_description fog;
    fog.from = moving_field(r, "from", 0);
    fog.to = moving_field(r, "to", 1);
    fog.quality = choice_field(r, "quality", fog_choices, fog_nicest);
    if (take(r, "color")) {
        fog.color = value_at(r.L, lua_gettop(r.L), label(r, "color"));
        done(r);
    }
    material.fog = fog;
    done(outer);
}

static std::string shader_text(field_reader& r, const char* name)
{
    std::string text = text_field(r, name);
    const std::string fault = text_fault(text);
    const bool is_blank = text.find_first_not_of(" \t\r\n") == std::string::npos;
    if (is_blank && has_field(r, name) && !state_of(r.L).show->keep_order)
        report_error(r.L, label(r, name) + " is empty: write the text of a program, or leave the shader out.");
    if (!fault.empty())
        report_error(r.L, label(r, name) + " " + fault + ".");
    return text;
}

static void read_uniforms(field_reader& r, shader_description& shader)
{
    if (!take(r, "uniforms"))
        return;
    const int table = lua_gettop(r.L);
    shader.has_uniforms = lua_type(r.L, table) == LUA_TTABLE;
    if (!shader.has_uniforms)
        report_error(r.L, label(r, "uniforms") + " is " + what_is(r.L, table) + ", and wants { u1 = curve, ... }.");
    if (shader.has_uniforms && lua_rawlen(r.L, table) > 0)
        report_error(r.L, label(r, "uniforms") + " takes fields with names: write { u1 = curve, u2 = curve }.");
    lua_pushnil(r.L);
    while (shader.has_uniforms && lua_next(r.L, table) != 0) {
        if (lua_type(r.L, -2) != LUA_TSTRING) {
            lua_pop(r.L, 1);
            continue;
        }
        const std::string name = lua_type(r.L, -2) == LUA_TSTRING ? lua_tostring(r.L, -2) : "";
        const long number = name.size() > 1 && name[0] == 'u' ? std::strtol(name.c_str() + 1, nullptr, 10) : 0;
        if (number < 1 || number > static_cast<long>(user_uniform_count) || name != "u" + std::to_string(number))
            report_error(r.L, label(r, "uniforms") + " has no \"" + name + "\": they are u1 to u24.");
        else
            shader.uniforms[static_cast<size_t>(number - 1)] = moving_at(r.L, lua_gettop(r.L), "shader: " + name, 0);
        lua_pop(r.L, 1);
    }
    done(r);
}

static void read_shader(field_reader& outer, material_thing& material)
{
    if (!take(outer, "shader"))
        return;
    field_reader r = read_fields(outer.L, lua_gettop(outer.L), "shader", kind_shader);
    shader_description shader;
    shader.vertex = shader_text(r, "vertex");
    shader.fragment = shader_text(r, "fragment");
    const bool is_asked = r.table != 0 && !state_of(r.L).show->keep_order;
    if (is_asked && has_field(r, "vertex") != has_field(r, "fragment"))
        report_error(r.L,
            std::string("shader lacks \"") + (has_field(r, "fragment") ? "vertex" : "fragment")
                + "\": one without the other is not used.");
    else if (is_asked && !has_field(r, "vertex"))
        report_error(
            r.L, "shader lacks \"vertex\" and \"fragment\": write the texts of both, or leave the shader out.");
    read_uniforms(r, shader);
    shader.enabled = flag_field(r, "enabled", true);
    material.shader = shader;
    done(outer);
}

static int word_material(lua_State* L)
{
    field_reader r = read_fields(L, 1, "material", kind_material);
    material_thing material;
    read_units(r, material);
    read_color(r, material);
    material.blend = choice_field(r, "blend", blend_choices, blend_replace);
    if (has_field(r, "depth"))
        material.depth = flag_field(r, "depth", true);
    if (has_field(r, "normalize"))
        material.normalize = flag_field(r, "normalize", true);
    material.cull = flag_field(r, "cull", false);
    material.wireframe = flag_field(r, "wireframe", false);
    material.line_width = moving_field(r, "line_width", 1);
    material.lights = {light_field(r, "light"), light_field(r, "light2")};
    read_fog(r, material);
    read_shader(r, material);
    push_thing(L, std::move(material));
    return 1;
}

const thing* material_at(lua_State* L, int index, const std::string& what)
{
    const thing* made = thing_at(L, index);
    if (as<material_thing>(made) != nullptr || as<raw_thing>(made) != nullptr)
        return made;
    const bool is_texture = as<image_thing>(made) != nullptr || as<cube_map_thing>(made) != nullptr
        || as<dynamic_thing>(made) != nullptr || as<output_thing>(made) != nullptr || as<node_thing>(made) != nullptr
        || as<picture_thing>(made) != nullptr;
    report_error(L,
        what + " is " + what_is(L, index) + ", and wants a material "
            + (is_texture                               ? "{ texture = ... } with it."
                    : lua_type(L, index) == LUA_TSTRING ? "{ color = ... }."
                                                        : "{ }."));
    return nullptr;
}

void define_surface_words(lua_State* L)
{
    define_word(L, "light", guarded<word_light>);
    define_word(L, "color", guarded<word_color>);
    define_word(L, "material", guarded<word_material>);
}
