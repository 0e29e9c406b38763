#include "authoring/lua/reading.h"

#include "authoring/lua/sandbox.h"
#include "authoring/near_name.h"
#include "authoring/show/units.h"

#include <lua.hpp>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

word_state& state_of(lua_State* L)
{
    return *static_cast<word_state*>(sandbox_user(L));
}

// ---- things -----------------------------------------------------------------------------

static constexpr const char* thing_type = "thing";

void push_thing(lua_State* L, thing* made)
{
    *static_cast<thing**>(lua_newuserdatauv(L, sizeof(thing*), 0)) = made;
    luaL_setmetatable(L, thing_type);
}

thing* push_thing(lua_State* L, thing_value value)
{
    word_state& s = state_of(L);
    constexpr size_t most = 200'000;
    if (s.show->things.size() >= most)
        raise_error(L, "the show is made of more than 200,000 things: is this loop endless?");
    thing* made = add_thing(*s.show, std::move(value), current_place(L), s.document);
    push_thing(L, made);
    return made;
}

thing* thing_at(lua_State* L, int index)
{
    void* held = luaL_testudata(L, index, thing_type);
    return held != nullptr ? *static_cast<thing**>(held) : nullptr;
}

static const char* thing_word(const thing& made)
{
    static constexpr const char* words[] = {"a curve", "a path", "a camera", "a light or colour", "a generated picture",
        "a texture node", "a generated texture", "an image", "a cube map", "a dynamic texture", "a mesh", "an effect",
        "a font", "a material", "a manipulator", "a placed object", "a scene", "a clip", "a reference", "an entry",
        "a raw element"};
    static_assert(std::size(words) == std::variant_size_v<thing_value>);
    return words[made.value.index()];
}

std::string what_is(lua_State* L, int index)
{
    if (const thing* made = thing_at(L, index))
        return thing_word(*made);
    switch (lua_type(L, index)) {
    case LUA_TNIL:
    case LUA_TNONE:
        return "nothing";
    case LUA_TBOOLEAN:
        return lua_toboolean(L, index) != 0 ? "true" : "false";
    case LUA_TNUMBER:
        return "the number " + number_text(lua_tonumber(L, index));
    case LUA_TSTRING:
        return "the text \"" + std::string(lua_tostring(L, index)).substr(0, 40) + "\"";
    case LUA_TTABLE:
        return "a table";
    case LUA_TFUNCTION:
        return "a function";
    default:
        return "something else";
    }
}

// ---- saying what is wrong ---------------------------------------------------------------

void report_error(lua_State* L, const std::string& text)
{
    report(L, problem_error, current_place(L), text);
}

void report_warning(lua_State* L, const std::string& text)
{
    report(L, problem_warning, current_place(L), text);
}

std::string suggestion(const std::string& wrong, const std::vector<std::string>& names)
{
    const std::string near = near_name(wrong, names);
    if (!near.empty())
        return ": did you mean \"" + near + "\"?";
    if (names.empty())
        return ".";
    std::string all = names.size() == 1 ? ": there is " : ": there are ";
    for (size_t index = 0; index < names.size(); ++index)
        all += (index == 0 ? "" : index + 1 == names.size() ? " and " : ", ") + ("\"" + names[index] + "\"");
    return all + ".";
}

// ---- single values ------------------------------------------------------------------------

static void report_kind(lua_State* L, int index, const std::string& what, const char* wants)
{
    report_error(L, what + " is " + what_is(L, index) + ", and wants " + wants + ".");
}

double number_at(lua_State* L, int index, const std::string& what, double fallback)
{
    if (lua_type(L, index) != LUA_TNUMBER) {
        report_kind(
            L, index, what, lua_isnumber(L, index) != 0 ? "a number: leave the quotation marks out" : "a number");
        return fallback;
    }
    const double value = lua_tonumber(L, index);
    if (std::isfinite(static_cast<float>(value))) // documents have single precision
        return value;
    if (std::isfinite(value))
        report_error(L, what + " is too large a number: they end at 3.4e38.");
    else
        report_error(L, what + " is no number that can be written down: look for a division by 0.");
    return fallback;
}

int64_t whole_at(lua_State* L, int index, const std::string& what, int64_t least, int64_t most, int64_t fallback)
{
    const double value = number_at(L, index, what, static_cast<double>(fallback));
    if (value >= static_cast<double>(least) && value <= static_cast<double>(most) && value == std::floor(value))
        return static_cast<int64_t>(value);
    report_error(L,
        what + " is " + number_text(value) + ", and is a whole number from " + std::to_string(least) + " to "
            + std::to_string(most) + ".");
    return fallback;
}

double time_at(lua_State* L, int index, const std::string& what, double fallback)
{
    if (lua_type(L, index) == LUA_TNUMBER)
        return number_at(L, index, what, fallback);
    if (lua_type(L, index) != LUA_TSTRING) {
        report_kind(L, index, what, "a time: ticks, or a text like \"4s\" or \"8b\"");
        return fallback;
    }
    show_description& show = *state_of(L).show;
    show.has_units = true;
    double ticks = fallback;
    const std::string text = lua_tostring(L, index);
    const std::string fault = read_time(text, {show.bpm, show.beats_per_bar}, ticks);
    if (!fault.empty())
        report_error(L, what + " \"" + text + "\" " + fault + ".");
    if (std::isfinite(static_cast<float>(ticks)))
        return ticks;
    report_error(L, what + " \"" + text + "\" is longer than a number can say.");
    return fallback;
}

double length_at(lua_State* L, int index, const std::string& what, double fallback)
{
    const double ticks = time_at(L, index, what, fallback);
    if (ticks >= 0)
        return ticks;
    report_error(L, what + " is below 0: what goes backwards in time is written from its end to its beginning.");
    return fallback;
}

bool flag_at(lua_State* L, int index, const std::string& what, bool fallback)
{
    if (lua_type(L, index) == LUA_TBOOLEAN)
        return lua_toboolean(L, index) != 0;
    report_kind(L, index, what, "true or false");
    return fallback;
}

std::string text_at(lua_State* L, int index, const std::string& what)
{
    if (lua_type(L, index) != LUA_TSTRING) {
        report_kind(L, index, what, "a text");
        return {};
    }
    size_t length = 0;
    const char* text = lua_tolstring(L, index, &length);
    if (std::strlen(text) == length)
        return text;
    report_error(L, what + " has a zero byte in it.");
    return {};
}

std::string file_at(lua_State* L, int index, const char* word, const char* example)
{
    if (lua_type(L, index) == LUA_TSTRING && lua_rawlen(L, index) > 0)
        return text_at(L, index, word);
    report_error(L,
        std::string(word) + " is given " + what_is(L, index) + " first, and wants the name of a file: write " + example
            + ".");
    return {};
}

moving_number moving_at(lua_State* L, int index, const std::string& what, double fallback)
{
    if (lua_type(L, index) == LUA_TNUMBER)
        return {number_at(L, index, what, fallback), nullptr};
    thing* made = thing_at(L, index);
    if (as<curve_thing>(made) != nullptr)
        return {0, made};
    report_kind(L, index, what,
        lua_isnumber(L, index) != 0 ? "a number or a curve: leave the quotation marks out" : "a number or a curve");
    return {fallback, nullptr};
}

static std::string counted_entries(lua_Unsigned count)
{
    return count == 0 ? "no entries without names" : std::to_string(count) + (count == 1 ? " entry" : " entries");
}

// Whether a table has exactly the entries 1..count; reports otherwise.
static bool is_list_of(
    lua_State* L, int index, const std::string& what, lua_Unsigned least, lua_Unsigned most, const char* wants)
{
    if (lua_type(L, index) == LUA_TTABLE && lua_rawlen(L, index) >= least && lua_rawlen(L, index) <= most)
        return true;
    if (lua_type(L, index) == LUA_TTABLE)
        report_error(L, what + " has " + counted_entries(lua_rawlen(L, index)) + ", and wants " + wants + ".");
    else
        report_kind(L, index, what, wants);
    return false;
}

moving_point point_at(lua_State* L, int index, const std::string& what, double fallback)
{
    moving_point point = {{{fallback, nullptr}, {fallback, nullptr}, {fallback, nullptr}}};
    if (const auto* path = as<path_thing>(thing_at(L, index)))
        return path->at;
    if (!is_list_of(L, index, what, 3, 3, "{ x, y, z }"))
        return point;
    static constexpr const char* names[] = {"x", "y", "z"};
    for (int axis = 0; axis < 3; ++axis) {
        lua_rawgeti(L, index, axis + 1);
        point[static_cast<size_t>(axis)] = moving_at(L, lua_gettop(L), what + "'s " + names[axis], fallback);
        lua_pop(L, 1);
    }
    return point;
}

moving_point scale_at(lua_State* L, int index, const std::string& what, double fallback)
{
    const moving_number same = {fallback, nullptr};
    if (lua_type(L, index) == LUA_TTABLE
        && !is_list_of(L, index, what, 3, 3, "{ x, y, z }, or one number for all three"))
        return {{same, same, same}};
    if (lua_type(L, index) == LUA_TTABLE || as<path_thing>(thing_at(L, index)) != nullptr)
        return point_at(L, index, what, fallback);
    const moving_number all = moving_at(L, index, what, fallback);
    return {{all, all, all}};
}

uint32_t choice_at(lua_State* L, int index, const std::string& what, const choice_list& choices, uint32_t fallback)
{
    if (lua_type(L, index) == LUA_TNUMBER) { // whoever knows the document's numbers may write them
        const double number = lua_tonumber(L, index);
        if (number >= 0 && number < choices.count && number == std::floor(number))
            return static_cast<uint32_t>(number);
        if (number >= 0 && number <= 255 && number == std::floor(number) && state_of(L).show->keep_order)
            return static_cast<uint32_t>(number);
        report_error(L,
            what + " is the number " + number_text(number) + ", and " + choices.what + "s count from 0 to "
                + std::to_string(choices.count - 1) + ".");
        return fallback;
    }
    if (lua_type(L, index) != LUA_TSTRING) {
        report_kind(L, index, what, ("the name of a " + std::string(choices.what)).c_str());
        return fallback;
    }
    const std::string name = lua_tostring(L, index);
    const int32_t found = find_choice(choices, name);
    if (found >= 0)
        return static_cast<uint32_t>(found);
    report_error(
        L, what + ": there is no " + choices.what + " \"" + name + "\"" + suggestion(name, choice_names(choices)));
    return fallback;
}

static std::array<moving_number, 4> constant_color(const std::array<double, 4>& rgba)
{
    return {{{rgba[0], nullptr}, {rgba[1], nullptr}, {rgba[2], nullptr}, {rgba[3], nullptr}}};
}

std::array<moving_number, 4> color_at(lua_State* L, int index, const std::string& what, bool& has_alpha)
{
    has_alpha = false;
    std::array<double, 4> rgba = {1, 1, 1, 1};
    if (lua_type(L, index) == LUA_TSTRING) {
        const std::string text = lua_tostring(L, index);
        const std::string fault = read_color(text, rgba, has_alpha);
        if (!fault.empty())
            report_error(L, what + " \"" + text + "\" " + fault + ".");
        return constant_color(rgba);
    }
    std::array<moving_number, 4> color = constant_color(rgba);
    if (!is_list_of(L, index, what, 3, 4, "\"#rrggbb\" or { red, green, blue }"))
        return color;
    static constexpr const char* names[] = {"red", "green", "blue", "alpha"};
    has_alpha = lua_rawlen(L, index) == 4;
    for (int channel = 0; channel < (has_alpha ? 4 : 3); ++channel) {
        lua_rawgeti(L, index, channel + 1);
        color[static_cast<size_t>(channel)] = moving_at(L, lua_gettop(L), what + "'s " + names[channel], 1);
        lua_pop(L, 1);
    }
    constexpr double brightest = 8; // of what is meant so; light may be brighter than white
    const bool is_bytes = std::any_of(color.begin(), color.end(),
        [](const moving_number& n) { return n.curve == nullptr && n.constant > brightest; });
    if (is_bytes)
        report_warning(L,
            what
                + ": red, green and blue go from 0 to 1, and these look like bytes: write \"#rrggbb\", or "
                  "divide them by 255.");
    return color;
}

// ---- tables with fields -------------------------------------------------------------------

static std::vector<std::string> names_of(const kind_row& kind, const std::vector<parameter_field_row>& more)
{
    std::vector<std::string> names;
    for (const parameter_field_row& row : more)
        names.push_back(row.name);
    for (const field_row& row : kind.fields)
        names.emplace_back(row.name);
    return names;
}

// Reports the first entry without a name of a table that takes none.
static void check_entries(lua_State* L, int table, const char* word, const std::vector<std::string>& names)
{
    lua_rawgeti(L, table, 1);
    if (!lua_isnil(L, -1))
        report_error(L,
            std::string(word) + " takes fields with names, and " + what_is(L, lua_gettop(L))
                + " stands there without one: write name = value, like " + (names.empty() ? "name" : names.front())
                + " = ...");
    lua_pop(L, 1);
}

field_reader read_fields(lua_State* L, int index, const char* word, kind_id kind,
    const std::vector<parameter_field_row>& more, bool has_list)
{
    static constexpr kind_row no_fields = {kind_count, "", "", {}};
    field_reader r = {L, 0, word, kind < kind_count ? &kind_of(kind) : &no_fields};
    const std::vector<std::string> names = names_of(*r.kind, more);
    if (lua_type(L, index) != LUA_TTABLE) {
        if (!lua_isnoneornil(L, index))
            report_error(L,
                std::string(word) + " is given " + what_is(L, index) + ", and wants "
                    + (has_list ? "a list: " + std::string(word) + " { ... }."
                                : "fields: " + std::string(word) + " { "
                                + (names.empty() ? "" : names.front() + " = ... ") + "}."));
        return r;
    }
    r.table = index;
    if (!has_list)
        check_entries(L, index, word, names);
    std::vector<std::string> wrong; // in order, whatever order the table has
    lua_pushnil(L);
    while (lua_next(L, index) != 0) {
        const bool is_known = lua_type(L, -2) == LUA_TSTRING
            && std::find(names.begin(), names.end(), lua_tostring(L, -2)) != names.end();
        if (!is_known && lua_type(L, -2) == LUA_TSTRING)
            wrong.emplace_back(lua_tostring(L, -2));
        lua_pop(L, 1);
    }
    std::sort(wrong.begin(), wrong.end());
    for (const std::string& name : wrong) {
        report_error(L, std::string(word) + " has no field \"" + name + "\"" + suggestion(name, names));
        r.suggested.push_back(near_name(name, names));
    }
    return r;
}

bool take(field_reader& r, const char* name)
{
    if (r.table == 0)
        return false;
    lua_pushstring(r.L, name);
    lua_rawget(r.L, r.table);
    if (!lua_isnil(r.L, -1))
        return true;
    lua_pop(r.L, 1);
    return false;
}

void done(field_reader& r)
{
    lua_pop(r.L, 1);
}

std::string label(const field_reader& r, const char* name)
{
    return std::string(r.word) + ": " + name;
}

bool has_field(field_reader& r, const char* name)
{
    if (!take(r, name))
        return false;
    done(r);
    return true;
}

template <typename result, typename reader>
static result field_by(field_reader& r, const char* name, result fallback, reader&& read)
{
    if (!take(r, name))
        return fallback;
    result value = read(lua_gettop(r.L));
    done(r);
    return value;
}

double number_field(field_reader& r, const char* name, double fallback)
{
    return field_by(r, name, fallback, [&](int at) { return number_at(r.L, at, label(r, name), fallback); });
}

double time_field(field_reader& r, const char* name, double fallback)
{
    return field_by(r, name, fallback, [&](int at) { return time_at(r.L, at, label(r, name), fallback); });
}

double length_field(field_reader& r, const char* name, double fallback)
{
    return field_by(r, name, fallback, [&](int at) { return length_at(r.L, at, label(r, name), fallback); });
}

bool flag_field(field_reader& r, const char* name, bool fallback)
{
    return field_by(r, name, fallback, [&](int at) { return flag_at(r.L, at, label(r, name), fallback); });
}

std::string text_field(field_reader& r, const char* name)
{
    return field_by(r, name, std::string(), [&](int at) { return text_at(r.L, at, label(r, name)); });
}

moving_number moving_field(field_reader& r, const char* name, double fallback)
{
    return field_by(r, name, moving_number{fallback, nullptr},
        [&](int at) { return moving_at(r.L, at, label(r, name), fallback); });
}

moving_point point_field(field_reader& r, const char* name, double fallback)
{
    return field_by(r, name, moving_point{{{fallback, nullptr}, {fallback, nullptr}, {fallback, nullptr}}},
        [&](int at) { return point_at(r.L, at, label(r, name), fallback); });
}

moving_point scale_field(field_reader& r, const char* name, double fallback)
{
    return field_by(r, name, moving_point{{{fallback, nullptr}, {fallback, nullptr}, {fallback, nullptr}}},
        [&](int at) { return scale_at(r.L, at, label(r, name), fallback); });
}

uint32_t choice_field(field_reader& r, const char* name, const choice_list& choices, uint32_t fallback)
{
    return field_by(r, name, fallback, [&](int at) { return choice_at(r.L, at, label(r, name), choices, fallback); });
}

int64_t whole_field(field_reader& r, const char* name, int64_t least, int64_t most, int64_t fallback)
{
    return field_by(
        r, name, fallback, [&](int at) { return whole_at(r.L, at, label(r, name), least, most, fallback); });
}

static uint32_t pixels_at(lua_State* L, int index, const std::string& what, uint32_t fallback)
{
    const double side = number_at(L, index, what, fallback);
    if (side >= 1 && side <= 16384 && side == std::floor(side))
        return static_cast<uint32_t>(side);
    report_error(L, what + " is " + number_text(side) + ", and sides are whole numbers of pixels from 1 to 16384.");
    return fallback;
}

std::array<uint32_t, 2> size_field(field_reader& r, const char* name, std::array<uint32_t, 2> fallback)
{
    return field_by(r, name, fallback, [&](int at) -> std::array<uint32_t, 2> {
        const std::string what = label(r, name);
        if (lua_type(r.L, at) == LUA_TNUMBER) {
            const uint32_t side = pixels_at(r.L, at, what, fallback[0]);
            return {side, side};
        }
        if (!is_list_of(r.L, at, what, 2, 2, "{ width, height }"))
            return fallback;
        lua_rawgeti(r.L, at, 1);
        lua_rawgeti(r.L, at, 2);
        const std::array<uint32_t, 2> size = {pixels_at(r.L, lua_gettop(r.L) - 1, what + "'s width", 0),
            pixels_at(r.L, lua_gettop(r.L), what + "'s height", 0)};
        lua_pop(r.L, 2);
        return size[0] == 0 || size[1] == 0 ? fallback : size; // half a size is none
    });
}

uint32_t pixels_field(field_reader& r, const char* name, uint32_t fallback)
{
    return field_by(r, name, fallback, [&](int at) { return pixels_at(r.L, at, label(r, name), fallback); });
}

bool was_misspelt(const field_reader& r, const char* name)
{
    return std::find(r.suggested.begin(), r.suggested.end(), name) != r.suggested.end();
}

void need_field(field_reader& r, const char* name, const char* example)
{
    if ((r.table == 0 || !has_field(r, name)) && !was_misspelt(r, name))
        report_error(r.L, std::string(r.word) + " lacks \"" + name + "\": write " + name + " = " + example + ".");
}

// ---- lists --------------------------------------------------------------------------------

void charge_entry(lua_State* L, int depth)
{
    constexpr int deepest = 100; // each level is one of the machine's own stack, too
    if (depth > deepest)
        raise_error(L, "lists stand more than 100 deep in one another: is one of them in itself?");
    charge_steps(L, 1);
    luaL_checkstack(L, 8, "lists inside lists");
}

int push_entry(lua_State* L, int table, long long number)
{
    lua_rawgeti(L, table, number);
    if (!lua_isnil(L, -1))
        return lua_gettop(L);
    lua_pop(L, 1);
    return 0;
}

bool is_list(lua_State* L, int index)
{
    return lua_type(L, index) == LUA_TTABLE;
}

void drop(lua_State* L, int count)
{
    lua_pop(L, count);
}
