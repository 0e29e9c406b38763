#include "authoring/open/open_document.h"

#include "authoring/open/open_words.h"
#include "authoring/show/kinds.h"
#include "authoring/show/raw.h"
#include "model/combine_mode.h"
#include "model/glyphs.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iterator>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace {

struct opening {
    const xml_node* sections[no_more_sections] = {};
    std::vector<std::string> names[no_more_sections]; // of the records, by number - 1: "meshes.cube"
    std::set<int64_t> shown; // references that a material names: textures, whatever their number is for an object
    raw_records raw;
    std::string indent;
    std::string out;
    bool is_sayable = true;                                // of the record under way
    std::unordered_set<std::string> taken = {};            // all names
    std::unordered_map<std::string, uint32_t> copies = {}; // of a name that more records wish for: the last one taken
};

} // namespace

// ---- the tree ---------------------------------------------------------------------------

static std::string text_of(const xml_node& node, const char* attribute)
{
    const char* value = xml_get_attribute(&node, attribute);
    return value != nullptr ? value : "";
}

static int64_t int_of(const xml_node& node, const char* attribute)
{
    return std::strtoll(text_of(node, attribute).c_str(), nullptr, 10);
}

static double real_of(const xml_node& node, const char* attribute)
{
    return std::strtod(text_of(node, attribute).c_str(), nullptr);
}

static std::string number_of(const xml_node& node, const char* attribute)
{
    return lua_number(real_of(node, attribute));
}

static std::vector<const xml_node*> children_of(const xml_node* node)
{
    std::vector<const xml_node*> children;
    for (const xml_node* child = node != nullptr ? node->first_child : nullptr; child != nullptr;
         child = child->next_sibling)
        children.push_back(child);
    return children;
}

static bool is_called(const xml_node& node, const char* name)
{
    return node.name != nullptr && std::strcmp(node.name, name) == 0;
}

static double text_number(const xml_node& node)
{
    return node.text != nullptr ? std::strtod(node.text, nullptr) : 0;
}

bool can_be_opened(const xml_node& root)
{
    return root.first_child != nullptr && children_of(root.first_child).size() >= section_timeline;
}

// ---- names ------------------------------------------------------------------------------

static bool is_keyword(const std::string& name)
{
    static const std::set<std::string> keywords
        = {"and", "break", "do", "else", "elseif", "end", "false", "for", "function", "goto", "if", "in", "local",
            "nil", "not", "or", "repeat", "return", "then", "true", "until", "while"};
    return keywords.count(name) != 0;
}

// A name as Lua takes it behind a point; empty when nothing is left of it.
static std::string identifier(const std::string& wish)
{
    std::string name;
    for (const char letter : wish.substr(0, wish.rfind('.'))) {
        const auto byte = static_cast<unsigned char>(letter);
        if (byte < 128 && std::isalnum(byte) != 0)
            name += static_cast<char>(std::tolower(byte));
        else if (!name.empty() && name.back() != '_')
            name += '_';
    }
    while (!name.empty() && name.back() == '_')
        name.pop_back();
    if (!name.empty() && std::isdigit(static_cast<unsigned char>(name[0])) != 0)
        name = "n" + name;
    return is_keyword(name) ? name + "_" : name;
}

static constexpr const char* tables[no_more_sections] = {"", "generated", "nodes", "meshes", "functions", "values",
    "dynamic_textures", "images", "cube_maps", "fonts", "references", "materials", "effects", "scenes", "", ""};

static void name_record(opening& o, uint32_t section, uint32_t number, const std::string& wish)
{
    std::vector<std::string>& names = o.names[section];
    if (names.size() < number)
        names.resize(number);
    if (!names[number - 1].empty())
        return;
    std::string base = identifier(wish + ".");
    if (base.empty())
        base = "n" + std::to_string(number);
    const std::string wished = std::string(tables[section]) + "." + base;
    std::string name = wished;
    if (!o.taken.insert(name).second) {
        uint32_t& copy = o.copies.try_emplace(wished, 1).first->second;
        do
            name = wished + "_" + std::to_string(++copy);
        while (!o.taken.insert(name).second);
    }
    names[number - 1] = name;
}

static std::string stem(const std::string& file)
{
    return file.substr(0, file.rfind('.'));
}

// What another record is called; "nil" and not sayable where there is none, or one written as it stands that no word
// takes: of those materials alone are taken.
static std::string linked(opening& o, uint32_t section, int64_t number)
{
    const std::vector<std::string>& names = o.names[section];
    const bool is_there = number >= 1 && number <= static_cast<int64_t>(names.size());
    if (!is_there || (section != section_materials && o.raw.count({section, static_cast<uint32_t>(number)}) != 0)) {
        o.is_sayable = false;
        return "nil";
    }
    return names[static_cast<size_t>(number - 1)];
}

// ---- values -----------------------------------------------------------------------------

// An animated element: a number, or the function that it follows.
static std::string moving(opening& o, const xml_node& node, bool dynamic_unless_static = false)
{
    const std::string type = text_of(node, "type");
    const bool is_dynamic = dynamic_unless_static ? type != "static" : type == "dynamic";
    return is_dynamic ? linked(o, section_functions, int_of(node, "value")) : number_of(node, "value");
}

static std::string three(opening& o, const std::vector<const xml_node*>& nodes, size_t first)
{
    return "{ " + moving(o, *nodes[first]) + ", " + moving(o, *nodes[first + 1]) + ", " + moving(o, *nodes[first + 2])
        + " }";
}

static std::string choice(opening& o, const choice_list& choices, int64_t number)
{
    if (number >= 0 && number < choices.count)
        return lua_text(choices.name(static_cast<uint32_t>(number)));
    if (number < 0 || number > 255)
        o.is_sayable = false;
    return std::to_string(number);
}

static std::string call(const std::string& word, const std::vector<std::string>& fields)
{
    std::string text = word + " {";
    for (size_t index = 0; index < fields.size(); ++index)
        text += (index == 0 ? " " : ", ") + fields[index];
    return text + (fields.empty() ? "}" : " }");
}

static std::string file_call(const std::string& word, const std::string& file, const std::vector<std::string>& fields)
{
    return fields.empty() ? word + "(" + lua_text(file) + ")" : call(word + "(" + lua_text(file) + ",", fields) + ")";
}

// ---- the sections -----------------------------------------------------------------------

static std::string open_generated(opening& o, const xml_node& node)
{
    const int64_t type = int_of(node, "type");
    if (type < 0 || type >= generator_kind_count) {
        o.is_sayable = false;
        return {};
    }
    const auto values = children_of(&node);
    std::vector<std::string> fields;
    size_t at = 0;
    const auto next = [&] { return at < values.size() ? lua_number(text_number(*values[at++])) : std::string("0"); };
    for (const parameter_field_row& row : generator_fields(static_cast<uint32_t>(type))) {
        const std::string first = next();
        if (row.is_color) {
            const std::string second = next();
            fields.push_back(row.name + " = { " + first + ", " + second + ", " + next() + " }");
        } else {
            fields.push_back(row.name + " = " + first);
        }
    }
    o.is_sayable = o.is_sayable && at == values.size();
    return call("texture." + parameter_field(generator_choices.name(static_cast<uint32_t>(type))), fields);
}

static std::string open_mesh(opening&, const xml_node& node)
{
    return file_call("mesh", text_of(node, "filename"), {});
}

static std::string open_segment(opening& o, const xml_node& node)
{
    const int64_t type = int_of(node, "type");
    const int64_t length = int_of(node, "length");
    std::vector<double> params;
    for (const xml_node* child : children_of(&node))
        params.push_back(text_number(*child));
    if (type < 0 || type >= segment_kind_count || length < 0) {
        o.is_sayable = false;
        return {};
    }
    return segment_words(static_cast<segment_kind>(type), static_cast<uint32_t>(length), params);
}

static std::string open_function(opening& o, const xml_node& node)
{
    std::vector<std::string> fields;
    for (const xml_node* child : children_of(&node))
        fields.push_back(open_segment(o, *child));
    const int64_t loop = int_of(node, "loop_type");
    if (loop != 0)
        fields.push_back("loop = " + std::to_string(loop));
    if (number_of(node, "loop_begin") != "0")
        fields.push_back("from = " + number_of(node, "loop_begin"));
    if (number_of(node, "loop_end") != "0")
        fields.push_back("to = " + number_of(node, "loop_end"));
    if (int_of(node, "type") == 1)
        fields.push_back("integer = true");
    o.is_sayable = o.is_sayable && int_of(node, "type") >= 0 && int_of(node, "type") <= 1;
    return call("animation", fields);
}

static std::string open_value(opening& o, const xml_node& node)
{
    const auto values = children_of(node.first_child);
    if (values.size() != 9) {
        o.is_sayable = false;
        return {};
    }
    const std::string ambient = three(o, values, 0);
    const std::string diffuse = three(o, values, 3);
    const std::string at = three(o, values, 6);
    if (ambient == "{ 0, 0, 0 }" && at == "{ 0, 0, 0 }")
        return "color(" + diffuse + ")";
    return call("light", {"at = " + at, "ambient = " + ambient, "diffuse = " + diffuse});
}

static std::vector<std::string> format_fields(opening& o, const xml_node& node)
{
    return {"filter = " + choice(o, filter_choices, int_of(node, "texture_filter")),
        "format = " + choice(o, format_choices, int_of(node, "texture_format"))};
}

// Handles in the leading children called "p".
static void add_params(
    opening& o, const xml_node& node, const std::vector<parameter_field_row>& rows, std::vector<std::string>& fields)
{
    size_t index = 0;
    for (const xml_node* child : children_of(&node)) {
        if (!is_called(*child, "p"))
            break;
        const auto handle = static_cast<int64_t>(text_number(*child));
        if (index >= rows.size())
            o.is_sayable = false;
        else if (handle != 0)
            fields.push_back(rows[index].name + " = " + linked(o, section_functions, handle));
        ++index;
    }
}

static std::string open_dynamic(opening& o, const xml_node& node)
{
    const int64_t type = int_of(node, "type");
    if (type < 0 || type >= effect_2d_kind_count) {
        o.is_sayable = false;
        return {};
    }
    std::vector<std::string> fields;
    add_params(o, node, dynamic_fields(static_cast<uint32_t>(type)), fields);
    const std::string resolution = text_of(node, "resolution");
    const bool is_known = resolution == "64x64" || resolution == "128x128" || resolution == "256x256";
    fields.push_back("size = " + (is_known ? resolution.substr(0, resolution.find('x')) : std::string("512")));
    fields.push_back(text_of(node, "bpp") == "8" ? "bits = 8" : "bits = 24");
    for (const std::string& field : format_fields(o, node))
        fields.push_back(field);
    if (text_of(node, "name") != dynamic_choices.name(static_cast<uint32_t>(type)))
        fields.push_back("name = " + lua_text(text_of(node, "name")));
    return call("dynamic(" + lua_text(dynamic_choices.name(static_cast<uint32_t>(type))) + ",", fields) + ")";
}

static std::string open_image(opening& o, const xml_node& node)
{
    return file_call("image", text_of(node, "filename"), format_fields(o, node));
}

static std::string open_cube_map(opening& o, const xml_node& node)
{
    std::vector<std::string> fields;
    for (const char* face : {"xp", "xn", "yp", "yn", "zp", "zn"})
        fields.push_back(std::string(face) + " = " + lua_text(text_of(node, face)));
    for (const std::string& field : format_fields(o, node))
        fields.push_back(field);
    return call("cube_map", fields);
}

static std::string glyph_key(uint32_t glyph)
{
    const std::string letter = glyph + 1 == glyph_count ? "space" : glyph_characters[glyph];
    const bool is_plain = !letter.empty() && std::isalpha(static_cast<unsigned char>(letter[0])) != 0;
    return is_plain ? letter : "[" + lua_text(letter) + "]";
}

static std::string open_font(opening& o, const xml_node& node)
{
    std::string text = "font { glyphs = {\n";
    const auto glyphs = children_of(&node);
    for (uint32_t index = 0; index < glyph_count && index < glyphs.size(); ++index) {
        const xml_node& glyph = *glyphs[index];
        std::vector<std::string> fields;
        if (int_of(glyph, "model") != 0)
            fields.push_back("mesh = " + linked(o, section_meshes, int_of(glyph, "model")));
        if (int_of(glyph, "material") != 0)
            fields.push_back("material = " + linked(o, section_materials, int_of(glyph, "material")));
        if (int_of(glyph, "bitmap") != 0)
            fields.push_back("bitmap = " + std::to_string(int_of(glyph, "bitmap")));
        if (number_of(glyph, "offset") != "0")
            fields.push_back("offset = " + number_of(glyph, "offset"));
        fields.push_back("width = " + number_of(glyph, "width"));
        text += o.indent + "    " + call(glyph_key(index) + " =", fields) + ",\n";
    }
    return text + o.indent + "} }";
}

// The kind and number of a reference: what it names when a word made that, else both as they are.
static std::string open_reference(opening& o, const xml_node& node, uint32_t number)
{
    static constexpr uint32_t textures[]
        = {section_texture_nodes, section_image_textures, section_dynamic_textures, section_cube_maps};
    const int64_t type = int_of(node, "type");
    const int64_t id = int_of(node, "id");
    if (o.shown.count(number) == 0 && (type == object_model || type == object_genmesh)) {
        const uint32_t section = type == object_model ? section_meshes : section_mesh_effects;
        const bool is_there = id >= 1 && id <= static_cast<int64_t>(o.names[section].size())
            && o.raw.count({section, static_cast<uint32_t>(id)}) == 0;
        return "reference(" + (is_there ? linked(o, section, id) : std::to_string(type) + ", " + std::to_string(id))
            + ")";
    }
    if (type >= 0 && type < static_cast<int64_t>(std::size(textures))) {
        const bool sayable = o.is_sayable;
        const std::string name = linked(o, textures[type], id);
        const bool is_output = type != texture_generated
            || (o.is_sayable
                && int_of(*children_of(o.sections[section_texture_nodes])[static_cast<size_t>(id - 1)], "type")
                    == node_output);
        if (o.is_sayable && is_output)
            return "reference(" + name + ")";
        o.is_sayable = sayable;
    }
    return "reference(" + std::to_string(type) + ", " + std::to_string(id) + ")";
}

// ---- texture nodes ----------------------------------------------------------------------

static const char* operation_word(uint8_t code)
{
    switch (static_cast<node_code>(code)) {
    case node_add_image:
    case node_add_2:
        return "add";
    case node_multiply_image:
    case node_mul_2:
    case node_multiply:
        return "multiply";
    case node_maximum_image:
    case node_max_2:
        return "maximum";
    case node_minimum_image:
    case node_min_2:
        return "minimum";
    case node_invert:
        return "invert";
    case node_offset:
        return "offset";
    case node_ripple:
        return "ripple";
    case node_blur:
        return "blur";
    case node_emboss:
        return "emboss";
    case node_output:
        return "texture";
    }
    return nullptr;
}

// Only what is made of earlier nodes is written by its operation. No node is a black picture.
static std::string earlier_node(opening& o, int64_t handle, uint32_t number)
{
    if (handle == 0)
        return "texture.black {}";
    if (handle >= number)
        o.is_sayable = false;
    return linked(o, section_texture_nodes, handle);
}

static std::string open_node(opening& o, const xml_node& node, uint32_t number)
{
    const auto code = static_cast<uint8_t>(int_of(node, "type"));
    const auto children = children_of(&node);
    const char* word = operation_word(code);
    if (word == nullptr || children.empty()) {
        o.is_sayable = false;
        return {};
    }
    const auto input1 = static_cast<int64_t>(text_number(*children[0]));
    if (code == node_output) {
        std::vector<std::string> fields = format_fields(o, node);
        fields.push_back("name = " + lua_text(text_of(node, "name")));
        return call(earlier_node(o, input1, number) + ":texture", fields);
    }
    size_t at = 1;
    int64_t input2 = 0;
    if (at < children.size() && is_called(*children[at], "input"))
        input2 = static_cast<int64_t>(text_number(*children[at++]));
    while (at < children.size() && is_called(*children[at], "output"))
        ++at;
    std::vector<std::string> fields;
    for (const parameter_field_row& row : node_fields(code))
        fields.push_back(
            row.name + " = " + (at < children.size() ? lua_number(text_number(*children[at++])) : std::string("0")));
    fields.push_back("name = " + lua_text(text_of(node, "name")));
    if (int_of(node, "texture_filter") != filter_linear)
        fields.push_back("filter = " + choice(o, filter_choices, int_of(node, "texture_filter")));
    if (int_of(node, "texture_format") != 0)
        fields.push_back("format = " + choice(o, format_choices, int_of(node, "texture_format")));
    o.is_sayable = o.is_sayable && at == children.size();
    if (code == node_add_image && input1 == 0)
        return call(linked(o, section_generated_images, int_of(node, "layer_id") + 1) + ":node", fields);
    const std::string first = earlier_node(o, input1, number);
    if (code < node_invert)
        return call(first + ":" + word + "(" + linked(o, section_generated_images, int_of(node, "layer_id") + 1) + ",",
                   fields)
            + ")";
    if (code >= node_add_2)
        return call(first + ":" + word + "(" + earlier_node(o, input2, number) + ",", fields) + ")";
    o.is_sayable = o.is_sayable && input2 == 0;
    return call(first + ":" + word, fields);
}

// ---- materials --------------------------------------------------------------------------

static std::string open_unit(opening& o, const xml_node& node, uint32_t unit)
{
    std::vector<std::string> fields = {"texture = " + linked(o, section_objects, int_of(node, "value"))};
    const uint8_t mode = combine_mode_of_unit(unit, static_cast<uint8_t>(int_of(node, "function")));
    if (mode != 0)
        fields.push_back("combine = " + choice(o, combine_choices[unit], mode));
    if (int_of(node, "wrapmode") != 0)
        fields.push_back("wrap = " + choice(o, wrap_choices, int_of(node, "wrapmode")));
    if (int_of(node, "cgenmode") != 0)
        fields.push_back("coordinates = " + choice(o, coordinate_choices, int_of(node, "cgenmode")));
    if (int_of(node, "rotation") != 0)
        fields.push_back("turn = true");
    return fields.size() == 1 ? fields[0].substr(std::strlen("texture = ")) : call("", fields).substr(1);
}

namespace {

struct material_settings {
    std::vector<const xml_node*> nodes;
};

} // namespace

static const xml_node* setting(const material_settings& m, const char* name)
{
    const auto found = std::find_if(
        m.nodes.rbegin(), m.nodes.rend(), [name](const xml_node* node) { return is_called(*node, name); });
    return found != m.nodes.rend() ? *found : nullptr;
}

static std::string setting_number(opening& o, const material_settings& m, const char* name)
{
    const xml_node* node = setting(m, name);
    return node != nullptr ? moving(o, *node, true) : "0";
}

static int64_t setting_int(const material_settings& m, const char* name)
{
    const xml_node* node = setting(m, name);
    return node != nullptr ? int_of(*node, "value") : 0;
}

static void add_material_flags(const material_settings& m, std::vector<std::string>& fields)
{
    const auto flag = [&](const char* name, const char* word, bool fallback, bool always) {
        const bool on = setting_int(m, name) != 0;
        if (always || on != fallback)
            fields.push_back(std::string(word) + (on ? " = true" : " = false"));
    };
    flag("depth_test", "depth", true, true);
    flag("backface_culling", "cull", false, false);
    flag("normalization", "normalize", false, true);
    flag("wireframe", "wireframe", false, false);
}

static void add_shader(opening& o, const material_settings& m, std::vector<std::string>& fields)
{
    const xml_node* vertex = setting(m, "vertex_shader");
    const xml_node* fragment = setting(m, "fragment_shader");
    const xml_node* uniforms = setting(m, "glsl_uniforms");
    if (vertex == nullptr && fragment == nullptr && uniforms == nullptr && setting_int(m, "enable_glsl") == 0)
        return;
    std::vector<std::string> parts;
    for (const auto& [name, node] : {std::pair{"vertex", vertex}, {"fragment", fragment}})
        if (node != nullptr && node->text != nullptr)
            parts.push_back(std::string(name) + " = " + long_text(node->text));
    std::vector<std::string> handles;
    for (uint32_t index = 1; uniforms != nullptr && index <= user_uniform_count; ++index) {
        const std::string name = "u" + std::to_string(index);
        if (int_of(*uniforms, name.c_str()) != 0)
            handles.push_back(name + " = " + linked(o, section_functions, int_of(*uniforms, name.c_str())));
    }
    if (uniforms != nullptr)
        parts.push_back(call("uniforms =", handles));
    if (setting_int(m, "enable_glsl") == 0)
        parts.push_back("enabled = false");
    fields.push_back(call("shader =", parts));
}

static std::string open_material(opening& o, const xml_node& node)
{
    const material_settings m = {children_of(&node)};
    std::vector<std::string> fields;
    static constexpr const char* units[][2]
        = {{"texture1", "texture"}, {"texture2", "texture2"}, {"texture3", "texture3"}};
    for (uint32_t unit = 0; unit < texture_unit_count; ++unit) {
        const xml_node* found = setting(m, units[unit][0]);
        if (found != nullptr && int_of(*found, "value") != 0)
            fields.push_back(std::string(units[unit][1]) + " = " + open_unit(o, *found, unit));
        else if (found != nullptr && int_of(*found, "function") != 0)
            o.is_sayable = false; // an empty unit that says more than nothing
    }
    fields.push_back("color = { " + setting_number(o, m, "red") + ", " + setting_number(o, m, "green") + ", "
        + setting_number(o, m, "blue") + ", " + setting_number(o, m, "alpha") + " }");
    fields.push_back("blend = " + choice(o, blend_choices, setting_int(m, "blend_function")));
    add_material_flags(m, fields);
    if (const std::string width = setting_number(o, m, "linewidth"); width != "1")
        fields.push_back("line_width = " + width);
    for (const auto& [name, word] : {std::pair{"light1", "light"}, {"light2", "light2"}})
        if (setting_int(m, name) != 0)
            fields.push_back(std::string(word) + " = " + linked(o, section_values, setting_int(m, name)));
    if (setting_int(m, "fogtype") != 0 || setting_int(m, "fogcolor") != 0 || setting_number(o, m, "fogstart") != "0"
        || setting_number(o, m, "fogend") != "0") {
        std::vector<std::string> fog = {"from = " + setting_number(o, m, "fogstart"),
            "to = " + setting_number(o, m, "fogend"), "quality = " + choice(o, fog_choices, setting_int(m, "fogtype"))};
        if (setting_int(m, "fogcolor") != 0)
            fog.push_back("color = " + linked(o, section_values, setting_int(m, "fogcolor")));
        fields.push_back(call("fog =", fog));
    }
    add_shader(o, m, fields);
    return call("material", fields);
}

static std::string open_effect(opening& o, const xml_node& node)
{
    const int64_t type = int_of(node, "type");
    if (type < 0 || type >= mesh_effect_kind_count) {
        o.is_sayable = false;
        return {};
    }
    std::vector<std::string> fields;
    add_params(o, node, effect_fields(static_cast<uint32_t>(type)), fields);
    if (text_of(node, "name") != effect_choices.name(static_cast<uint32_t>(type)))
        fields.push_back("name = " + lua_text(text_of(node, "name")));
    return file_call("effect", effect_choices.name(static_cast<uint32_t>(type)), fields);
}

// ---- scenes -----------------------------------------------------------------------------

static std::string open_manipulator(opening& o, const xml_node& node)
{
    const int64_t type = int_of(node, "type");
    if (type < 0 || type >= manipulator_kind_count) {
        o.is_sayable = false;
        return {};
    }
    auto params = children_of(&node);
    std::vector<std::string> fields;
    if (!params.empty() && is_called(*params[0], "manipulator")) {
        const bool is_effect = static_cast<int32_t>(real_of(*params[0], "type")) == placer_effect;
        fields.push_back("model = "
            + linked(o, is_effect ? section_mesh_effects : section_meshes,
                static_cast<int64_t>(real_of(*params[0], "model"))));
        params.erase(params.begin());
    }
    const auto rows = manipulator_fields(static_cast<uint32_t>(type));
    o.is_sayable = o.is_sayable && params.size() == rows.size();
    for (size_t index = 0; index < rows.size() && index < params.size(); ++index)
        if (const std::string value = moving(o, *params[index]);
            value != (rows[index].name.starts_with("scale") && !rows[index].name.ends_with("step") ? "1" : "0"))
            fields.push_back(rows[index].name + " = " + value);
    return call(parameter_field(manipulator_choices.name(static_cast<uint32_t>(type))), fields);
}

// The reference that an object's number means, where there is one that may be meant; else the shape itself.
static std::string open_shape(opening& o, int64_t kind, int64_t number)
{
    const auto references = children_of(o.sections[section_objects]);
    if (number >= 1 && number <= static_cast<int64_t>(references.size()) && o.shown.count(number) == 0
        && int_of(*references[static_cast<size_t>(number - 1)], "type") == kind)
        return linked(o, section_objects, number);
    return linked(o, kind == object_model ? section_meshes : section_mesh_effects, number);
}

static std::string open_placed(opening& o, const xml_node& node)
{
    const auto children = children_of(&node);
    const int64_t kind = int_of(node, "type");
    if (children.size() != placement_value_count + 4 || kind < 0 || kind >= object_kind_count) {
        o.is_sayable = false;
        return {};
    }
    std::vector<std::string> fields;
    if (int_of(node, "material") != 0)
        fields.push_back("material = " + linked(o, section_materials, int_of(node, "material")));
    const std::string at = three(o, children, 0);
    const std::string rotation = three(o, children, 3);
    const std::string scale = three(o, children, 6);
    if (at != "{ 0, 0, 0 }")
        fields.push_back("at = " + at);
    if (rotation != "{ 0, 0, 0 }")
        fields.push_back("rotation = " + rotation);
    if (scale != "{ 1, 1, 1 }")
        fields.push_back("scale = " + scale);
    if (int_of(*children[9], "value") != 0)
        fields.push_back("visible = " + linked(o, section_functions, int_of(*children[9], "value")));
    if (number_of(*children[10], "value") != "0")
        fields.push_back("time_offset = " + number_of(*children[10], "value"));
    if (int_of(*children[11], "value") == 1)
        fields.push_back("facing = true");
    std::vector<std::string> chain;
    for (const xml_node* child : children_of(children[12]))
        chain.push_back(open_manipulator(o, *child));
    if (!chain.empty())
        fields.push_back(call("manipulators =", chain));
    if (kind == object_text) {
        o.is_sayable = o.is_sayable && int_of(node, "material") == 0;
        return call(linked(o, section_fonts, int_of(node, "font")) + " " + lua_text(text_of(node, "text")), fields);
    }
    return call(open_shape(o, kind, int_of(node, "object")), fields);
}

static std::string open_scene(opening& o, const xml_node& node)
{
    std::string text = "scene(" + lua_text(text_of(node, "name")) + ", {";
    for (const xml_node* child : children_of(&node))
        text += "\n" + o.indent + "    " + open_placed(o, *child) + ",";
    return text + (node.first_child != nullptr ? "\n" + o.indent : "") + "})";
}

// ---- the timeline -----------------------------------------------------------------------

static std::string open_camera(opening& o, const std::vector<const xml_node*>& values, bool is_flat)
{
    std::vector<std::string> fields;
    const std::string world = three(o, values, 0);
    const std::string rotation = three(o, values, 3);
    if (world != "{ 0, 0, 0 }")
        fields.push_back("world = " + world);
    if (rotation != "{ 0, 0, 0 }")
        fields.push_back("rotation = " + rotation);
    if (!is_flat)
        fields.push_back("fov = " + moving(o, *values[6]));
    fields.push_back("far = " + moving(o, *values[7]));
    return call("camera =", fields);
}

static std::string open_clip(opening& o, const xml_node& node, int64_t& end)
{
    const auto values = children_of(&node);
    if (values.size() < camera_value_count) {
        o.is_sayable = false;
        return {};
    }
    const int64_t from = end + int_of(node, "space_before");
    end = from + int_of(node, "length");
    const bool is_flat = text_of(*values[6], "type") == "ortographic";
    std::vector<std::string> fields = {"from = " + std::to_string(from), "to = " + std::to_string(end)};
    if (int_of(node, "type") != 0)
        fields.push_back("mode = " + choice(o, mode_choices, int_of(node, "type")));
    const int64_t mode = int_of(node, "type");
    if (mode >= 0 && mode < render_mode_count && render_modes[mode].uses_target != 0 && int_of(node, "rtex") != 0)
        fields.push_back("into = " + linked(o, section_image_textures, int_of(node, "rtex")));
    if (is_flat)
        fields.push_back("flat = true");
    fields.push_back(open_camera(o, values, is_flat));
    if (int_of(node, "clearcolor") != 0)
        fields.push_back("next_clear = " + linked(o, section_values, int_of(node, "clearcolor")));
    if (int_of(node, "offset") != 0)
        fields.push_back("time_offset = " + std::to_string(int_of(node, "offset")));
    return call(int_of(node, "id") == 0 ? "pause" : linked(o, section_scenes, int_of(node, "id")), fields);
}

static std::string open_track(opening& o, const xml_node& node)
{
    std::string text = "track {";
    int64_t end = 0;
    for (const xml_node* child : children_of(&node))
        text += "\n" + o.indent + "    " + open_clip(o, *child, end) + ",";
    return text + (node.first_child != nullptr ? "\n" + o.indent : "") + "}";
}

// ---- names by use -----------------------------------------------------------------------

static std::string wish_for(opening& o, uint32_t section, const xml_node& node, uint32_t number)
{
    switch (section) {
    case section_meshes:
    case section_image_textures:
        return stem(text_of(node, "filename"));
    case section_cube_maps:
        return stem(text_of(node, "xp"));
    case section_texture_nodes:
    case section_dynamic_textures:
    case section_mesh_effects:
    case section_scenes:
        return text_of(node, "name");
    case section_generated_images: {
        const int64_t type = int_of(node, "type");
        return type >= 0 && type < generator_kind_count
            ? parameter_field(generator_choices.name(static_cast<uint32_t>(type)))
            : "";
    }
    case section_materials: {
        const material_settings m = {children_of(&node)};
        const int64_t reference = setting_int(m, "texture1");
        if (reference >= 1 && reference <= static_cast<int64_t>(o.names[section_objects].size())) {
            const std::string& name = o.names[section_objects][static_cast<size_t>(reference - 1)];
            return name.substr(name.find('.') + 1);
        }
        return "plain";
    }
    default:
        return std::string(tables[section]).substr(0, std::strlen(tables[section]) - 1) + "_" + std::to_string(number);
    }
}

static void name_references(opening& o)
{
    static constexpr uint32_t textures[]
        = {section_texture_nodes, section_image_textures, section_dynamic_textures, section_cube_maps};
    uint32_t number = 0;
    for (const xml_node* node : children_of(o.sections[section_objects])) {
        const int64_t type = int_of(*node, "type");
        const int64_t id = int_of(*node, "id");
        std::string wish = "reference_" + std::to_string(++number);
        if (type >= 0 && type < static_cast<int64_t>(std::size(textures)) && id >= 1
            && id <= static_cast<int64_t>(o.names[textures[type]].size())) {
            const std::string& name = o.names[textures[type]][static_cast<size_t>(id - 1)];
            wish = name.substr(name.find('.') + 1);
        }
        name_record(o, section_objects, number, wish);
    }
}

static void note_shown_textures(opening& o)
{
    for (const xml_node* material : children_of(o.sections[section_materials]))
        for (const char* unit : {"texture1", "texture2", "texture3"})
            o.shown.insert(setting_int({children_of(material)}, unit));
}

// A function is called after the first who follows it.
static void name_functions(opening& o)
{
    const auto note = [&o](const xml_node& node, const std::string& user, const char* what) {
        const int64_t handle = int_of(node, "value");
        if (text_of(node, "type") == "dynamic" && handle >= 1 && handle <= 4096)
            name_record(o, section_functions, static_cast<uint32_t>(handle), user + "_" + what);
    };
    static constexpr const char* placement[]
        = {"x", "y", "z", "rotation_x", "rotation_y", "rotation_z", "scale_x", "scale_y", "scale_z"};
    for (const xml_node* scene : children_of(o.sections[section_scenes]))
        for (const xml_node* placed : children_of(scene)) {
            const auto children = children_of(placed);
            for (size_t index = 0; index < std::size(placement) && index < children.size(); ++index)
                note(*children[index], text_of(*scene, "name"), placement[index]);
        }
    static constexpr const char* camera[] = {"x", "y", "z", "rotation_x", "rotation_y", "rotation_z", "fov", "far"};
    for (const xml_node* track : children_of(o.sections[section_timeline]))
        for (const xml_node* clip : children_of(track)) {
            const auto children = children_of(clip);
            const int64_t id = int_of(*clip, "id");
            const auto& scenes = o.names[section_scenes];
            const std::string user = id >= 1 && id <= static_cast<int64_t>(scenes.size())
                ? scenes[static_cast<size_t>(id - 1)].substr(7)
                : "clip";
            for (size_t index = 0; index < std::size(camera) && index < children.size(); ++index)
                note(*children[index], user + "_camera", camera[index]);
        }
    uint32_t number = 0;
    for (const xml_node* material : children_of(o.sections[section_materials])) {
        ++number;
        const std::string& name = o.names[section_materials][number - 1];
        for (const xml_node* child : children_of(material))
            note(*child, name.substr(name.find('.') + 1), child->name != nullptr ? child->name : "");
    }
    number = 0;
    for ([[maybe_unused]] const xml_node* function : children_of(o.sections[section_functions])) {
        ++number;
        name_record(o, section_functions, number, "function_" + std::to_string(number));
    }
}

static void name_all(opening& o)
{
    for (uint32_t section = section_generated_images; section < section_timeline; ++section) {
        if (section == section_functions || section == section_objects)
            continue;
        if (section == section_materials)
            name_references(o);
        uint32_t number = 0;
        for (const xml_node* node : children_of(o.sections[section])) {
            ++number;
            name_record(o, section, number, wish_for(o, section, *node, number));
        }
    }
    name_functions(o);
}

// ---- all of it --------------------------------------------------------------------------

static std::string open_record(opening& o, uint32_t section, const xml_node& node, uint32_t number)
{
    switch (static_cast<document_section>(section)) {
    case section_generated_images:
        return open_generated(o, node);
    case section_texture_nodes:
        return open_node(o, node, number);
    case section_meshes:
        return open_mesh(o, node);
    case section_functions:
        return open_function(o, node);
    case section_values:
        return open_value(o, node);
    case section_dynamic_textures:
        return open_dynamic(o, node);
    case section_image_textures:
        return open_image(o, node);
    case section_cube_maps:
        return open_cube_map(o, node);
    case section_fonts:
        return open_font(o, node);
    case section_objects:
        return open_reference(o, node, number);
    case section_materials:
        return open_material(o, node);
    case section_mesh_effects:
        return open_effect(o, node);
    case section_scenes:
        return open_scene(o, node);
    case section_timeline:
        return open_track(o, node);
    case section_music:
    case no_more_sections:
        break;
    }
    return {};
}

static std::string raw_words(uint32_t section, const xml_node& node)
{
    std::string text;
    write_element(element_of(node), 0, text);
    return std::string("raw(\"") + section_elements[section] + "\", " + long_text(text) + ")";
}

// Functions come first: all else may follow them. Textures stand in front of what shows them as they do in documents.
static constexpr uint32_t order[] = {section_functions, section_values, section_generated_images, section_texture_nodes,
    section_meshes, section_dynamic_textures, section_image_textures, section_cube_maps, section_mesh_effects,
    section_objects, section_materials, section_fonts, section_scenes, section_timeline};

std::string open_document(const xml_node& root, const raw_records& raw, const std::string& indent)
{
    opening o = {{}, {}, {}, raw, indent, {}, true};
    assert(can_be_opened(root));
    uint32_t count = 0;
    for (const xml_node* section : children_of(root.first_child))
        if (++count < no_more_sections)
            o.sections[count] = section;
    name_all(o);
    note_shown_textures(o);
    for (const uint32_t section : order) {
        const auto records = children_of(o.sections[section]);
        if (records.empty())
            continue;
        if (section != section_timeline)
            o.out += indent + "local " + tables[section] + " = {}\n";
        for (uint32_t number = 1; number <= records.size(); ++number) {
            const xml_node& node = *records[number - 1];
            o.is_sayable = raw.count({section, number}) == 0;
            const std::string words = o.is_sayable ? open_record(o, section, node, number) : "";
            if (!o.is_sayable)
                o.raw.insert({section, number});
            const std::string name = section != section_timeline ? o.names[section][number - 1] + " = " : "";
            o.out += indent + name + (o.is_sayable ? words : raw_words(section, node)) + "\n";
        }
        o.out += "\n";
    }
    return o.out;
}
