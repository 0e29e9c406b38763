// Words for pictures: files, targets, cube maps, generated pictures and their graph, pictures that move.
#include "authoring/lua/word_list.h"

#include "authoring/lua/sandbox.h"

#include <lua.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

// ---- files ----------------------------------------------------------------------------

static void read_format(field_reader& r, std::optional<uint32_t>& format)
{
    if (has_field(r, "format"))
        format = choice_field(r, "format", format_choices, 0);
}

static void read_levels(field_reader& r, image_thing& image)
{
    if (!take(r, "levels"))
        return;
    uint32_t count = 0;
    if (lua_type(r.L, -1) != LUA_TTABLE)
        report_error(r.L, label(r, "levels") + " wants a list of two files.");
    else
        each_entry(r.L, lua_gettop(r.L), [&](int at) {
            if (count < image.levels.size())
                image.levels[count] = text_at(r.L, at, label(r, "levels"));
            ++count;
        });
    if (count > image.levels.size() || (count == 1 && !state_of(r.L).show->keep_order))
        report_error(r.L, label(r, "levels") + " wants two files, of half and of a quarter of the size.");
    done(r);
}

static void read_image(lua_State* L, int table, image_thing& image)
{
    field_reader r = read_fields(L, table, "image", kind_image);
    image.filter = choice_field(r, "filter", filter_choices, image.filter);
    read_format(r, image.format);
    image.size = size_field(r, "size", image.size);
    read_levels(r, image);
    if (!image.levels[0].empty() && image.filter != filter_mipmaps && !state_of(L).show->keep_order)
        report_warning(L, "image: levels are mipmaps, which this filter does not show: write filter = \"mipmaps\".");
    if (has_field(r, "name"))
        image.name = text_field(r, "name");
}

// image "file" or image("file", { ... })
static int word_image(lua_State* L)
{
    image_thing image;
    image.file = file_at(L, 1, "image", "image \"file.png\"");
    read_image(L, 2, image);
    push_thing(L, std::move(image));
    return 1;
}

static int word_target(lua_State* L)
{
    field_reader r = read_fields(L, 1, "target", kind_target);
    image_thing image;
    image.size = {256, 256};
    image.filter = choice_field(r, "filter", filter_choices, filter_linear);
    for (uint32_t side = 0; side < 2; ++side)
        image.size[side] = pixels_field(r, side == 0 ? "width" : "height", 256);
    image.format = choice_field(r, "format", format_choices, 0);
    image.turned = flag_field(r, "upright", true);
    push_thing(L, std::move(image));
    return 1;
}

static constexpr const char* face_names[cube_face_count] = {"xp", "xn", "yp", "yn", "zp", "zn"};

static void read_cube_map(lua_State* L, int table, cube_map_thing& cube, bool has_pattern)
{
    field_reader r = read_fields(L, table, "cube_map", kind_cube_map);
    cube.filter = choice_field(r, "filter", filter_choices, cube.filter);
    cube.format = choice_field(r, "format", format_choices, cube.format);
    for (uint32_t face = 0; face < cube_face_count; ++face) {
        if (!has_pattern)
            need_field(r, face_names[face], "\"file.jpg\"");
        if (has_field(r, face_names[face]))
            cube.files[face] = text_field(r, face_names[face]);
    }
}

static int word_cube_map(lua_State* L)
{
    cube_map_thing cube;
    const bool has_pattern = lua_type(L, 1) == LUA_TSTRING;
    if (has_pattern) {
        const std::string pattern = text_at(L, 1, "cube_map");
        const size_t star = pattern.find('*');
        if (star == std::string::npos)
            report_error(
                L, "cube_map \"" + pattern + "\" has no * where xp, xn, yp, yn, zp and zn stand: write \"sky_*.jpg\".");
        for (uint32_t face = 0; face < cube_face_count && star != std::string::npos; ++face)
            cube.files[face] = std::string(pattern).replace(star, 1, face_names[face]);
    }
    read_cube_map(L, has_pattern ? 2 : 1, cube, has_pattern);
    push_thing(L, std::move(cube));
    return 1;
}

// ---- pictures that move -------------------------------------------------------------------

static void read_params(
    field_reader& r, const std::vector<parameter_field_row>& rows, std::vector<moving_number>& params)
{
    params.resize(rows.size());
    for (size_t index = 0; index < rows.size(); ++index)
        params[index] = moving_field(r, rows[index].name.c_str(), params[index].constant);
}

static void read_dynamic(lua_State* L, int table, dynamic_thing& dynamic)
{
    const auto rows = dynamic_fields(dynamic.type);
    field_reader r = read_fields(L, table, "dynamic", kind_dynamic, rows);
    std::vector<moving_number> given = dynamic.params;
    read_params(r, rows, given);
    for (size_t index = 0; index < rows.size(); ++index)
        if (has_field(r, rows[index].name.c_str()) || dynamic.params.size() <= index)
            dynamic.params.resize(rows.size()), dynamic.params[index] = given[index];
    dynamic.size = size_field(r, "size", dynamic.size);
    for (const uint32_t side : dynamic.size)
        if (side != 64 && side != 128 && side != 256 && side != 512)
            report_error(L, "dynamic: size is " + std::to_string(side) + ", and it can be 64, 128, 256 or 512.");
    const double bits = number_field(r, "bits", dynamic.bits);
    if (bits != 8 && bits != 24)
        report_error(L, "dynamic: bits is " + number_text(bits) + ", and it can be 8 or 24.");
    dynamic.bits = bits == 8 ? 8 : 24;
    dynamic.filter = choice_field(r, "filter", filter_choices, dynamic.filter);
    dynamic.format = choice_field(r, "format", format_choices, dynamic.bits == 8 ? 2 : 0);
    if (has_field(r, "name"))
        dynamic.name = text_field(r, "name");
}

static int word_dynamic(lua_State* L)
{
    dynamic_thing dynamic;
    dynamic.type = choice_at(L, 1, "dynamic", dynamic_choices, 0);
    dynamic.name = dynamic_choices.name(dynamic.type);
    dynamic.params.resize(dynamic_fields(dynamic.type).size());
    if (!lua_isnoneornil(L, 2))
        read_dynamic(L, 2, dynamic);
    push_thing(L, std::move(dynamic));
    return 1;
}

// ---- generated pictures -------------------------------------------------------------------

static int generate(lua_State* L, uint32_t generator)
{
    const auto rows = generator_fields(generator);
    const std::string word = "texture." + parameter_field(generator_choices.name(generator));
    field_reader r = read_fields(L, 1, word.c_str(), kind_count, rows);
    picture_thing picture;
    picture.generator = generator;
    for (const parameter_field_row& row : rows) {
        if (!row.is_color) {
            picture.values.push_back(number_field(r, row.name.c_str(), 0));
            continue;
        }
        bool has_alpha = false;
        std::array<moving_number, 4> color = {{{1, nullptr}, {1, nullptr}, {1, nullptr}, {1, nullptr}}};
        if (take(r, row.name.c_str())) {
            color = color_at(L, lua_gettop(L), label(r, row.name.c_str()), has_alpha);
            done(r);
        }
        for (uint32_t channel = 0; channel < 3; ++channel) {
            if (color[channel].curve != nullptr)
                report_error(L,
                    label(r, row.name.c_str())
                        + " cannot move: generated pictures are made once, dynamic ones in every frame.");
            picture.values.push_back(color[channel].constant);
        }
    }
    push_thing(L, std::move(picture));
    return 1;
}

static int word_generate(lua_State* L)
{
    return generate(L, static_cast<uint32_t>(lua_tointeger(L, lua_upvalueindex(1))));
}

// A node of what an operation is given: a generated picture becomes one by being added to nothing.
static const thing* node_of(lua_State* L, int index, const std::string& what)
{
    thing* made = thing_at(L, index);
    if (as<node_thing>(made) != nullptr)
        return made;
    if (as<picture_thing>(made) != nullptr) {
        node_thing node = {node_add_image, made->name, nullptr, nullptr, made, {1, 1}};
        const thing* wrapped = push_thing(L, std::move(node));
        lua_pop(L, 1);
        return wrapped;
    }
    report_error(L, what + " is " + what_is(L, index) + ", and wants a generated picture, like texture.noise { }.");
    return nullptr;
}

namespace {
struct node_operation_row {
    const char* word;
    uint8_t with_picture; // codes; 0: there is no such
    uint8_t with_node;
    uint8_t alone;
};
} // namespace

static constexpr node_operation_row operations[] = {
    {"add", node_add_image, node_add_2, 0},
    {"multiply", node_multiply_image, node_mul_2, node_multiply},
    {"maximum", node_maximum_image, node_max_2, 0},
    {"minimum", node_minimum_image, node_min_2, 0},
    {"invert", 0, 0, node_invert},
    {"offset", 0, 0, node_offset},
    {"ripple", 0, 0, node_ripple},
    {"blur", 0, 0, node_blur},
    {"emboss", 0, 0, node_emboss},
};

// The numbers of an operation: in order, or by name in a table. Scales are 1 where they are not given.
static std::vector<double> operation_values(lua_State* L, int first, const node_operation_row& row, uint8_t code)
{
    std::vector<double> values;
    const auto fields = node_fields(code);
    if (lua_type(L, first) == LUA_TTABLE) {
        field_reader r = read_fields(L, first, row.word, kind_output, fields);
        for (const parameter_field_row& field : fields)
            values.push_back(number_field(r, field.name.c_str(), field.name.starts_with("scale") ? 1 : 0));
        return values;
    }
    const int given = lua_gettop(L) - first + 1;
    if (given > static_cast<int>(fields.size()))
        report_error(L,
            std::string(row.word) + " is given " + std::to_string(given) + " numbers, and takes "
                + std::to_string(fields.size()) + ".");
    for (int index = 0; index < static_cast<int>(fields.size()); ++index)
        values.push_back(index < given
                ? number_at(L, first + index, std::string(row.word) + ": " + fields[static_cast<size_t>(index)].name, 0)
                : fields[static_cast<size_t>(index)].name.starts_with("scale") ? 1
                                                                               : 0);
    return values;
}

static std::string node_name(lua_State* L, int table, const char* word)
{
    std::string name;
    if (lua_type(L, table) != LUA_TTABLE)
        return word;
    lua_getfield(L, table, "name");
    name = lua_type(L, -1) == LUA_TSTRING ? lua_tostring(L, -1) : word;
    lua_pop(L, 1);
    return name;
}

// Filter and format of a node that is no texture: kept as they are.
static void read_node_look(lua_State* L, int table, const char* word, node_thing& node)
{
    if (lua_type(L, table) != LUA_TTABLE)
        return;
    field_reader r = {L, table, word, &kind_of(kind_output)};
    node.filter = choice_field(r, "filter", filter_choices, node.filter);
    node.format = choice_field(r, "format", format_choices, node.format);
}

static int method_operation(lua_State* L)
{
    const node_operation_row& row = operations[lua_tointeger(L, lua_upvalueindex(1))];
    const thing* second = thing_at(L, 2);
    const bool has_second = as<picture_thing>(second) != nullptr || as<node_thing>(second) != nullptr;
    node_thing node;
    if (!has_second && row.alone == 0) {
        report_error(L,
            std::string(row.word) + " is given " + what_is(L, 2)
                + ", and wants a generated picture or a node, like texture.noise { }.");
        lua_settop(L, 1); // what is meant with it is unknown
        push_thing(L, node_thing{node_invert, row.word, node_of(L, 1, row.word), nullptr, nullptr, {}});
        return 1;
    }
    node.code = !has_second ? row.alone : as<picture_thing>(second) != nullptr ? row.with_picture : row.with_node;
    if (node.code == 0) {
        report_error(L, std::string(row.word) + " works on one picture alone.");
        node.code = row.alone;
    }
    node.name = node_name(L, has_second ? 3 : 2, row.word);
    read_node_look(L, has_second ? 3 : 2, row.word, node);
    node.values = operation_values(L, has_second ? 3 : 2, row, node.code);
    node.input1 = node_of(L, 1, row.word);
    if (node.code > node_emboss)
        node.input2 = second;
    if (node.code < node_invert)
        node.picture = second;
    push_thing(L, std::move(node));
    return 1;
}

// A generated picture as a node, or what it is added to nothing by: picture:node { scale_1 =, scale_2 =, name = }.
static int method_node(lua_State* L)
{
    const thing* picture = thing_at(L, 1);
    if (as<picture_thing>(picture) == nullptr)
        raise_error(L, "node belongs to a generated picture.");
    field_reader r = read_fields(L, 2, "node", kind_output, node_fields(node_add_image));
    node_thing node = {node_add_image, text_field(r, "name"), nullptr, nullptr, picture,
        {number_field(r, "scale_1", 1), number_field(r, "scale_2", 1)}};
    read_node_look(L, 2, "node", node);
    push_thing(L, std::move(node));
    return 1;
}

// texture.black { }: what a node without an input reads.
static int word_black(lua_State* L)
{
    read_fields(L, 1, "texture.black", kind_count);
    push_thing(L, node_thing{});
    return 1;
}

static int method_texture(lua_State* L)
{
    output_thing output;
    output.node = node_of(L, 1, "texture");
    output.name = as<node_thing>(output.node) != nullptr ? as<node_thing>(output.node)->name : "";
    field_reader r = read_fields(L, 2, "texture", kind_output);
    output.filter = choice_field(r, "filter", filter_choices, output.filter);
    output.format = choice_field(r, "format", format_choices, output.format);
    if (has_field(r, "name"))
        output.name = text_field(r, "name");
    push_thing(L, std::move(output));
    return 1;
}

bool push_picture_method(lua_State* L, const thing& made, const std::string& name)
{
    if (as<picture_thing>(&made) == nullptr && as<node_thing>(&made) == nullptr)
        return false;
    for (size_t index = 0; index < std::size(operations); ++index) {
        if (name == operations[index].word) {
            lua_pushinteger(L, static_cast<lua_Integer>(index));
            lua_pushcclosure(L, guarded<method_operation>, 1);
            return true;
        }
    }
    if (name == "node") {
        lua_pushcfunction(L, guarded<method_node>);
        return true;
    }
    if (name != "texture")
        return false;
    lua_pushcfunction(L, guarded<method_texture>);
    return true;
}

std::vector<std::string> picture_methods()
{
    std::vector<std::string> names = {"texture", "node"};
    for (const node_operation_row& row : operations)
        names.emplace_back(row.word);
    return names;
}

// ---- what units show ----------------------------------------------------------------------

const thing* texture_at(lua_State* L, int index, const std::string& what)
{
    thing* made = thing_at(L, index);
    if (as<picture_thing>(made) != nullptr || as<node_thing>(made) != nullptr) {
        output_thing output;
        output.node = node_of(L, index, what);
        output.name = as<node_thing>(output.node) != nullptr ? as<node_thing>(output.node)->name : "";
        return output_of_node(L, std::move(output));
    }
    const bool is_texture = as<image_thing>(made) != nullptr || as<output_thing>(made) != nullptr
        || as<dynamic_thing>(made) != nullptr || as<cube_map_thing>(made) != nullptr
        || as<reference_thing>(made) != nullptr;
    if (is_texture)
        return made;
    report_error(L, what + " is " + what_is(L, index) + ", and wants a texture, like image \"file.png\".");
    return nullptr;
}

// The same node used twice as a texture is one texture.
const thing* output_of_node(lua_State* L, output_thing output)
{
    for (const auto& known : state_of(L).show->things) {
        const output_thing* other = as<output_thing>(known.get());
        if (other != nullptr && other->node == output.node && other->filter == output.filter
            && other->format == output.format && other->name == output.name)
            return known.get();
    }
    const thing* made = push_thing(L, std::move(output));
    lua_pop(L, 1);
    return made;
}

// ---- the list -------------------------------------------------------------------------------

void configure_picture(lua_State* L, const thing& made)
{
    made.used = true;
    if (const image_thing* known = as<image_thing>(&made)) {
        image_thing image = *known;
        read_image(L, 2, image);
        push_thing(L, std::move(image));
    } else if (const cube_map_thing* cube = as<cube_map_thing>(&made)) {
        cube_map_thing changed = *cube;
        read_cube_map(L, 2, changed, true);
        push_thing(L, std::move(changed));
    } else {
        dynamic_thing changed = *as<dynamic_thing>(&made);
        read_dynamic(L, 2, changed);
        push_thing(L, std::move(changed));
    }
}

void define_picture_words(lua_State* L)
{
    define_word(L, "image", guarded<word_image>);
    define_word(L, "target", guarded<word_target>);
    define_word(L, "cube_map", guarded<word_cube_map>);
    define_word(L, "dynamic", guarded<word_dynamic>);
    lua_newtable(L);
    for (uint32_t generator = 0; generator < generator_choices.count; ++generator) {
        lua_pushinteger(L, generator);
        lua_pushcclosure(L, guarded<word_generate>, 1);
        lua_setfield(L, -2, parameter_field(generator_choices.name(generator)).c_str());
    }
    lua_pushcfunction(L, guarded<word_black>);
    lua_setfield(L, -2, "black");
    make_strict(L, lua_gettop(L), "texture");
    define_value(L, "texture");
}
