// Words for shapes: models of files, meshes of one's own numbers, meshes that move, fonts.
#include "authoring/lua/word_list.h"

#include "authoring/lua/sandbox.h"
#include "authoring/near_name.h"
#include "authoring/show/entries.h"
#include "model/glyphs.h"

#include <lua.hpp>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

// ---- models ---------------------------------------------------------------------------

static std::array<float, 3> angles_field(field_reader& r, const char* name)
{
    std::array<float, 3> angles = {};
    const moving_point point = point_field(r, name, 0);
    for (size_t axis = 0; axis < 3; ++axis) {
        if (point[axis].curve != nullptr)
            report_error(r.L, label(r, name) + " cannot move here: turn the placed object by its rotation.");
        angles[axis] = static_cast<float>(point[axis].constant);
    }
    return angles;
}

static void read_mesh(lua_State* L, int table, mesh_thing& mesh)
{
    field_reader r = read_fields(L, table, "mesh", kind_mesh);
    mesh.options.fit = number_field(r, "fit", mesh.options.fit);
    if (mesh.options.fit != 0 && static_cast<float>(mesh.options.fit) <= 0) { // 1e-50 is 0 in single precision
        report_error(L,
            "mesh: fit is " + number_text(mesh.options.fit)
                + ": write the length, above 0, that its longest side is to have.");
        mesh.options.fit = 0;
    }
    mesh.options.center = flag_field(r, "center", mesh.options.center);
    if (has_field(r, "turn"))
        mesh.options.turn = angles_field(r, "turn");
    if (has_field(r, "part"))
        mesh.options.part = text_field(r, "part");
    mesh.options.normals = static_cast<model_normals>(
        choice_field(r, "normals", normal_choices, static_cast<uint32_t>(mesh.options.normals)));
    if (has_field(r, "name"))
        mesh.name = text_field(r, "name");
}

static int word_mesh(lua_State* L)
{
    mesh_thing mesh;
    mesh.file = file_at(L, 1, "mesh", "mesh \"file.obj\" { fit = 2 }");
    if (!lua_isnoneornil(L, 2))
        read_mesh(L, 2, mesh);
    push_thing(L, std::move(mesh));
    return 1;
}

// ---- parts of models ------------------------------------------------------------------------

static void push_color(lua_State* L, const std::array<float, 4>& rgba)
{
    lua_createtable(L, 4, 0);
    for (int channel = 0; channel < 4; ++channel) {
        lua_pushnumber(
            L, std::strtod(number_text(static_cast<double>(rgba[static_cast<size_t>(channel)])).c_str(), nullptr));
        lua_rawseti(L, -2, channel + 1);
    }
}

static void push_part(lua_State* L, const std::string& file, const model_part& part)
{
    lua_newtable(L);
    lua_pushstring(L, part.material.c_str());
    lua_setfield(L, -2, "name");
    if (!part.textures.empty() && part.textures[0][0] != '*') { // others lie in the file itself
        const size_t slash = part.textures[0].find_last_of("/\\");
        const std::string folder = file.substr(0, file.find_last_of('/') + 1);
        lua_pushstring(L, (folder + part.textures[0].substr(slash == std::string::npos ? 0 : slash + 1)).c_str());
        lua_setfield(L, -2, "texture");
    }
    push_color(L, part.diffuse);
    lua_setfield(L, -2, "color");
    mesh_thing mesh;
    mesh.file = file;
    mesh.options.part = part.material;
    push_thing(L, std::move(mesh));
    lua_setfield(L, -2, "mesh");
}

// parts "spider.obj": a list with an entry for each of the file's materials, { name =, texture =, color =, mesh = }.
static int word_parts(lua_State* L)
{
    const std::string file = file_at(L, 1, "parts", "parts \"file.obj\"");
    show_description& show = *state_of(L).show;
    std::string problem;
    want_file(show, file);
    const std::string path = path_in_folder(show.folder, file, problem);
    const imported_model* model = nullptr;
    if (!path.empty()) {
        const excused_time reading(L);
        model = keep_part(work_of(show), path, {0, false, {}, {}, normals_kept}, problem);
    }
    if (!problem.empty())
        report_error(L, problem);
    lua_newtable(L);
    std::vector<std::string> seen;
    for (const model_part& part : model != nullptr ? model->parts : std::vector<model_part>()) {
        if (std::find(seen.begin(), seen.end(), part.material) != seen.end())
            continue;
        seen.push_back(part.material);
        push_part(L, file, part);
        lua_rawseti(L, -2, static_cast<lua_Integer>(seen.size()));
    }
    return 1;
}

// ---- shapes ---------------------------------------------------------------------------

// A list of lists of `width` numbers each.
static std::vector<float> numbers_field(field_reader& r, const char* name, int width)
{
    std::vector<float> numbers;
    if (!take(r, name))
        return numbers;
    const int list = lua_gettop(r.L);
    const lua_Unsigned count = lua_type(r.L, list) == LUA_TTABLE ? lua_rawlen(r.L, list) : 0;
    charge_steps(r.L, count * static_cast<lua_Unsigned>(width));
    for (lua_Unsigned entry = 1; entry <= count; ++entry) {
        lua_rawgeti(r.L, list, static_cast<lua_Integer>(entry));
        const bool whole = lua_type(r.L, -1) == LUA_TTABLE && lua_rawlen(r.L, -1) == static_cast<lua_Unsigned>(width);
        if (!whole) {
            report_error(r.L,
                label(r, name) + ": entry " + std::to_string(entry) + " is " + what_is(r.L, lua_gettop(r.L))
                    + ", and wants " + (width == 2 ? "{ u, v }." : "{ x, y, z }."));
            lua_pop(r.L, 2);
            return {};
        }
        for (int index = 1; index <= width; ++index) {
            lua_rawgeti(r.L, -1, index);
            if (lua_type(r.L, -1) != LUA_TNUMBER) {
                report_error(r.L,
                    label(r, name) + ": entry " + std::to_string(entry) + " has " + what_is(r.L, lua_gettop(r.L))
                        + " in it, and wants numbers.");
                lua_pop(r.L, 3);
                return {};
            }
            numbers.push_back(static_cast<float>(number_at(r.L, lua_gettop(r.L), label(r, name), 0)));
            lua_pop(r.L, 1);
        }
        lua_pop(r.L, 1);
    }
    if (lua_type(r.L, list) != LUA_TTABLE)
        report_error(r.L, label(r, name) + " is " + what_is(r.L, list) + ", and wants a list.");
    done(r);
    return numbers;
}

static bool has_empty_list(field_reader& r, const char* name)
{
    if (!take(r, name))
        return false;
    const bool is_empty = lua_type(r.L, -1) == LUA_TTABLE && lua_rawlen(r.L, -1) == 0;
    done(r);
    return is_empty;
}

// Whether a list, if it is given, has an entry for each position; reports otherwise.
static bool counts_agree(field_reader& r, const char* name, uint32_t positions)
{
    if (!take(r, name))
        return true;
    const lua_Unsigned count = lua_type(r.L, -1) == LUA_TTABLE ? lua_rawlen(r.L, -1) : positions;
    done(r);
    if (count != positions)
        report_error(r.L,
            label(r, name) + " has " + std::to_string(count) + " entries, and there are " + std::to_string(positions)
                + " positions: each of them wants one.");
    return count == positions;
}

static int word_shape(lua_State* L)
{
    field_reader r = read_fields(L, 1, "shape", kind_shape);
    need_field(r, "positions", "{ { x, y, z }, ... }");
    need_field(r, "triangles", "{ { 1, 2, 3 }, ... }");
    mesh_thing mesh;
    mesh.shape.positions = numbers_field(r, "positions", 3);
    mesh.shape.coordinates = {
        numbers_field(r, "coordinates", 2), numbers_field(r, "coordinates2", 2), numbers_field(r, "coordinates3", 2)};
    mesh.shape.normals = numbers_field(r, "normals", 3);
    const uint32_t vertices = shape_vertex_count(mesh.shape);
    const bool lacks_positions = vertices == 0; // then it has been said
    if (has_empty_list(r, "positions"))
        report_error(L, "shape: positions has no entries: write { { x, y, z }, ... }.");
    for (const float number : lacks_positions ? std::vector<float>() : numbers_field(r, "triangles", 3)) {
        if (number < 1 || number > static_cast<float>(vertices) || number != std::floor(number)) {
            report_error(L,
                "shape: triangle " + std::to_string(mesh.shape.triangles.size() / 3 + 1) + " names position "
                    + number_text(number) + ", and there are positions 1 to " + std::to_string(vertices) + ".");
            mesh.shape.triangles.clear();
            break;
        }
        mesh.shape.triangles.push_back(static_cast<uint32_t>(number) - 1);
    }
    const bool counts = lacks_positions
        || (counts_agree(r, "coordinates", vertices) && counts_agree(r, "coordinates2", vertices)
            && counts_agree(r, "coordinates3", vertices) && counts_agree(r, "normals", vertices));
    const std::string fault = shape_fault(mesh.shape);
    if (!fault.empty() && counts && !lacks_positions)
        report_error(L, "shape: " + fault + ".");
    mesh.name = text_field(r, "name");
    if (mesh.name.empty())
        mesh.name = "shape" + std::to_string(++state_of(L).nameless);
    push_thing(L, std::move(mesh));
    return 1;
}

// ---- meshes that move -------------------------------------------------------------------

static void read_effect(lua_State* L, int table, effect_thing& effect)
{
    const auto rows = effect_fields(effect.type);
    field_reader r = read_fields(L, table, "effect", kind_effect, rows);
    for (size_t index = 0; index < rows.size(); ++index)
        if (has_field(r, rows[index].name.c_str()))
            effect.params[index] = moving_field(r, rows[index].name.c_str(), 0);
    if (has_field(r, "name"))
        effect.name = text_field(r, "name");
}

static int word_effect(lua_State* L)
{
    effect_thing effect;
    effect.type = choice_at(L, 1, "effect", effect_choices, 0);
    effect.name = effect_choices.name(effect.type);
    effect.params.resize(effect_fields(effect.type).size());
    if (!lua_isnoneornil(L, 2))
        read_effect(L, 2, effect);
    push_thing(L, std::move(effect));
    return 1;
}

// ---- fonts ------------------------------------------------------------------------------

static int32_t glyph_of_text(const std::string& letter)
{
    for (uint32_t glyph = 0; glyph < glyph_count; ++glyph)
        if (letter == glyph_characters[glyph] || (glyph + 1 == glyph_count && (letter == " " || letter == "space")))
            return static_cast<int32_t>(glyph);
    return -1;
}

static const thing* mesh_field(field_reader& r, const char* name)
{
    if (!take(r, name))
        return nullptr;
    const thing* made = thing_at(r.L, lua_gettop(r.L));
    if (as<mesh_thing>(made) == nullptr) {
        report_error(r.L, label(r, name) + " is " + what_is(r.L, lua_gettop(r.L)) + ", and wants a mesh.");
        made = nullptr;
    }
    done(r);
    return made;
}

static glyph_thing read_glyph(lua_State* L, int table)
{
    field_reader r = read_fields(L, table, "glyph", kind_glyph);
    glyph_thing glyph;
    glyph.mesh = mesh_field(r, "mesh");
    if (take(r, "material")) {
        glyph.material = material_at(L, lua_gettop(L), label(r, "material"));
        done(r);
    }
    glyph.offset = number_field(r, "offset", 0);
    glyph.width = number_field(r, "width", 0);
    glyph.bitmap = static_cast<uint32_t>(whole_field(r, "bitmap", 0, 4294967295, 0));
    return glyph;
}

static void read_glyphs(field_reader& r, font_thing& font)
{
    font.glyphs.resize(glyph_count);
    if (!take(r, "glyphs"))
        return;
    const int table = lua_gettop(r.L);
    if (lua_type(r.L, table) != LUA_TTABLE) {
        report_error(r.L, label(r, "glyphs") + " is " + what_is(r.L, table) + ", and wants a table of letters.");
        return done(r);
    }
    lua_pushnil(r.L);
    while (lua_next(r.L, table) != 0) {
        std::string letter;
        if (lua_type(r.L, -2) == LUA_TSTRING)
            letter = lua_tostring(r.L, -2);
        else if (lua_isinteger(r.L, -2) != 0 && lua_tointeger(r.L, -2) >= 0 && lua_tointeger(r.L, -2) <= 9)
            letter = std::to_string(lua_tointeger(r.L, -2));
        const int32_t glyph = glyph_of_text(letter);
        if (glyph < 0)
            report_error(r.L,
                label(r, "glyphs") + ": a font has no letter \"" + letter
                    + "\": it has a-z, A-Z, á é í ó ö ő ř ú ü ű and their capitals, 0-9, ? ! & / and space.");
        else
            font.glyphs[static_cast<size_t>(glyph)] = read_glyph(r.L, lua_gettop(r.L));
        lua_pop(r.L, 1);
    }
    done(r);
}

static void read_font(lua_State* L, int table, font_thing& font)
{
    field_reader r = read_fields(L, table, "font", kind_font);
    font.options.height = number_field(r, "height", font.options.height);
    font.options.depth = number_field(r, "depth", font.options.depth);
    font.options.bevel = number_field(r, "bevel", font.options.bevel);
    font.options.tracking = number_field(r, "tracking", font.options.tracking);
    font.options.detail = number_field(r, "detail", font.options.detail);
    if (font.options.height <= 0) {
        report_error(L, "font: height has to be above 0: it is that of a capital H, 0.1 in flat scenes, say.");
        font.options.height = 1;
    }
    if (has_field(r, "letters")) {
        const std::string letters = text_field(r, "letters");
        font.all_letters = letters == "all";
        if (!font.all_letters)
            report_error(
                L, "font: letters is \"" + letters + "\", and can be \"all\": without it, those that texts use.");
    }
    if (take(r, "material")) {
        font.material = material_at(L, lua_gettop(L), label(r, "material"));
        done(r);
    }
    read_glyphs(r, font);
}

static int word_font(lua_State* L)
{
    font_thing font;
    const bool has_file = lua_type(L, 1) == LUA_TSTRING;
    if (has_file)
        font.file = file_at(L, 1, "font", "font \"Serif.ttf\" { height = 0.1 }");
    if (!has_file || !lua_isnoneornil(L, 2))
        read_font(L, has_file ? 2 : 1, font);
    push_thing(L, std::move(font));
    return 1;
}

// ---- configuring ------------------------------------------------------------------------

static bool has_any(lua_State* L, int table, const std::vector<std::string>& names)
{
    for (const std::string& name : names) {
        lua_pushstring(L, name.c_str());
        const bool there = lua_rawget(L, table) != LUA_TNIL;
        lua_pop(L, 1);
        if (there)
            return true;
    }
    return false;
}

static std::vector<std::string> fields_of(kind_id kind)
{
    std::vector<std::string> names;
    for (const field_row& row : kind_of(kind).fields)
        names.emplace_back(row.name);
    return names;
}

// Whether each field is none that a placed object has, and one of them is nearly one of `names`.
static bool has_nearly(lua_State* L, int table, const std::vector<std::string>& names)
{
    const std::vector<std::string> of_placed = fields_of(kind_placed);
    bool has_near = false;
    if (lua_rawlen(L, table) > 0)
        return false;
    lua_pushnil(L);
    while (lua_next(L, table) != 0) {
        lua_pop(L, 1);
        const std::string name = lua_type(L, -1) == LUA_TSTRING ? lua_tostring(L, -1) : "";
        const bool is_placed = std::find(of_placed.begin(), of_placed.end(), name) != of_placed.end()
            || !near_name(name, of_placed).empty();
        if (is_placed) {
            lua_pop(L, 1);
            return false;
        }
        has_near = has_near || !near_name(name, names).empty();
    }
    return has_near;
}

bool configures_shape(lua_State* L, const thing& made)
{
    if (lua_type(L, 2) != LUA_TTABLE)
        return false;
    if (as<font_thing>(&made) != nullptr)
        return true;
    std::vector<std::string> names = fields_of(as<effect_thing>(&made) != nullptr ? kind_effect : kind_mesh);
    if (const effect_thing* effect = as<effect_thing>(&made))
        for (const parameter_field_row& row : effect_fields(effect->type))
            names.push_back(row.name);
    return has_any(L, 2, names) || has_nearly(L, 2, names);
}

// Fields of a file and of a place in one table: which are for what nobody could tell a table later.
static bool is_placed_too(lua_State* L, const thing& made)
{
    std::vector<std::string> placed = fields_of(kind_placed);
    std::erase(placed, "name"); // which a mesh has too
    if (as<font_thing>(&made) != nullptr || !has_any(L, 2, placed))
        return false;
    const std::string word
        = as<mesh_thing>(&made) != nullptr ? "mesh \"file.obj\" { fit = 2 }" : "effect \"...\" { ... }";
    report_error(L,
        "fields of " + what_is(L, 1) + " and of its place stand in one table: write two, " + word
            + " { material = ..., at = ... }.");
    placed_thing nearly;
    nearly.kind = as<mesh_thing>(&made) != nullptr ? object_model : object_genmesh;
    nearly.what = &made;
    push_thing(L, std::move(nearly));
    return true;
}

void configure_shape(lua_State* L, const thing& made)
{
    made.used = true;
    if (is_placed_too(L, made))
        return;
    if (const mesh_thing* known = as<mesh_thing>(&made)) {
        mesh_thing mesh = *known;
        if (mesh.file.empty())
            report_error(L, "a shape's numbers are its own: these fields are for meshes of files.");
        else
            read_mesh(L, 2, mesh);
        push_thing(L, std::move(mesh));
    } else if (const effect_thing* effect = as<effect_thing>(&made)) {
        effect_thing changed = *effect;
        read_effect(L, 2, changed);
        push_thing(L, std::move(changed));
    } else {
        font_thing font = *as<font_thing>(&made);
        read_font(L, 2, font);
        push_thing(L, std::move(font));
    }
}

void define_shape_words(lua_State* L)
{
    define_word(L, "mesh", guarded<word_mesh>);
    define_word(L, "parts", guarded<word_parts>);
    define_word(L, "shape", guarded<word_shape>);
    define_word(L, "effect", guarded<word_effect>);
    define_word(L, "font", guarded<word_font>);
}
