// Words for numbers that move, for ways through space and for cameras.
#include "authoring/lua/word_list.h"

#include "authoring/curve/camera.h"
#include "authoring/curve/curve.h"
#include "authoring/lua/sandbox.h"

#include <lua.hpp>

#include <algorithm>
#include <cmath>
#include <limits>

static const curve& curve_of(const moving_number& number)
{
    return as<curve_thing>(number.curve)->c;
}

// Whether each number can be written down.
static bool is_finite(const curve& c)
{
    for (const curve_segment& segment : c.segments)
        for (const double param : segment.params)
            if (!(std::fabs(param) <= std::numeric_limits<float>::max()))
                return false;
    return true;
}

static void push_curve(lua_State* L, curve c)
{
    if (!is_finite(c)) {
        report_error(L, "a curve reaches numbers that cannot be written down: they end at 3.4e38.");
        c = constant_curve(0, 1);
    }
    push_thing(L, curve_thing{std::move(c)});
}

// ---- segments ---------------------------------------------------------------------------

static int word_constant(lua_State* L)
{
    const double value = number_at(L, 1, "constant: its value", 0);
    push_curve(L, constant_curve(value, length_at(L, 2, "constant: its length", 1)));
    return 1;
}

static int word_linear(lua_State* L)
{
    const double from = number_at(L, 1, "linear: where it begins", 0);
    const double to = number_at(L, 2, "linear: where it ends", 0);
    push_curve(L, linear_curve(from, to, length_at(L, 3, "linear: its length", 1)));
    return 1;
}

static int word_ease(lua_State* L)
{
    if (lua_type(L, 1) != LUA_TSTRING) {
        report_error(L,
            "ease is given " + what_is(L, 1)
                + " first, and wants its name: write ease(\"out quad\", from, to, length).");
        push_curve(L, constant_curve(0, 1));
        return 1;
    }
    const std::string name = text_at(L, 1, "ease: its name");
    const double from = number_at(L, 2, "ease: where it begins", 0);
    const double to = number_at(L, 3, "ease: where it ends", 0);
    const double length = length_at(L, 4, "ease: its length", 1);
    curve made = linear_curve(from, to, length);
    const std::string fault = ease_curve(name, from, to, length, made);
    if (!fault.empty())
        report_error(L, "\"" + name + "\" " + fault + suggestion(name, ease_names()));
    push_curve(L, std::move(made));
    return 1;
}

static double period_field(field_reader& r)
{
    need_field(r, "period", "\"2s\"");
    const double period = time_field(r, "period", 100);
    if (period > 0)
        return period;
    report_error(r.L, label(r, "period") + " has to be above 0.");
    return 100;
}

static int word_wave(lua_State* L)
{
    field_reader r = read_fields(L, 1, "wave", kind_wave);
    const double period = period_field(r);
    push_curve(L,
        wave_curve(number_field(r, "middle", 0), number_field(r, "swing", 1), period, number_field(r, "phase", 0),
            length_field(r, "length", period)));
    return 1;
}

static int word_swelling_wave(lua_State* L)
{
    field_reader r = read_fields(L, 1, "swelling_wave", kind_swelling_wave);
    need_field(r, "length", "\"4s\"");
    push_curve(L,
        swelling_wave_curve(number_field(r, "middle", 0), number_field(r, "from_swing", 0),
            number_field(r, "to_swing", 1), period_field(r), number_field(r, "phase", 0),
            length_field(r, "length", 100)));
    return 1;
}

// A list of { time, ... } at `index` is read point by point; `width` numbers follow the time.
static bool point_entry(lua_State* L, int index, const std::string& word, lua_Unsigned width)
{
    if (lua_type(L, index) == LUA_TTABLE && lua_rawlen(L, index) == width)
        return true;
    report_error(L,
        word + " wants points like " + (width == 2 && word == "spline" ? "{ \"1s\", 0.5 }" : "{ \"1s\", { x, y, z } }")
            + ", and one of them is " + what_is(L, index) + ".");
    return false;
}

static double point_time(lua_State* L, int index, const std::string& word)
{
    lua_rawgeti(L, index, 1);
    const double time = time_at(L, lua_gettop(L), word + ": a point's time", 0);
    lua_pop(L, 1);
    return time;
}

// What to write instead of points that make no curve, behind what is wrong with them.
static std::string point_hint(const std::string& fault)
{
    return fault.find("less than a tick") != std::string::npos ? ": write them in the order of their times." : ".";
}

static int word_spline(lua_State* L)
{
    field_reader r = read_fields(L, 1, "spline", kind_spline, {}, true);
    std::vector<curve_point> points;
    bool are_points = r.table != 0; // where one is none, the others are not told too
    for (lua_Integer number = 1; are_points && lua_rawgeti(L, r.table, number) != LUA_TNIL; ++number) {
        charge_steps(L, 4);
        are_points = point_entry(L, lua_gettop(L), "spline", 2);
        if (are_points) {
            const double time = point_time(L, lua_gettop(L), "spline");
            lua_rawgeti(L, -1, 2);
            points.push_back({time, number_at(L, lua_gettop(L), "spline: a point's value", 0)});
            lua_pop(L, 1);
        }
        lua_pop(L, 1);
    }
    curve made = constant_curve(0, 1);
    const std::string fault = spline_curve(points, length_field(r, "length", 0), made);
    if (!fault.empty() && are_points)
        report_error(L, "spline " + fault + point_hint(fault));
    push_curve(L, std::move(made));
    return 1;
}

// A formula's own coefficients: segment("Sinus", length, { a, b, c, d }).
static int word_segment(lua_State* L)
{
    curve made;
    curve_segment segment = {static_cast<int32_t>(choice_at(L, 1, "segment", segment_choices, 0)), 1, {}};
    const bool is_known = lua_type(L, 1) == LUA_TNUMBER
        || (lua_type(L, 1) == LUA_TSTRING && find_choice(segment_choices, lua_tostring(L, 1)) >= 0);
    const double length = time_at(L, 2, "segment: its length", 1);
    segment.length = static_cast<uint32_t>(std::clamp(std::round(length), 0.0, 4294967295.0));
    if (lua_type(L, 3) != LUA_TTABLE)
        report_error(L, "segment wants its coefficients as a list: segment(\"Linear\", \"4s\", { a, b }).");
    else
        each_entry(L, 3, [&](int at) { segment.params.push_back(number_at(L, at, "segment: a coefficient", 0)); });
    const uint32_t takes
        = segment.kind < segment_kind_count ? function_types[segment.kind].param_count : max_segment_params;
    const bool fits = segment.kind == segment_spline ? segment.params.size() <= takes : segment.params.size() == takes;
    if (is_known && !fits && lua_type(L, 3) == LUA_TTABLE && !state_of(L).show->keep_order)
        report_error(L,
            "segment: \"" + std::string(segment_choices.name(static_cast<uint32_t>(segment.kind))) + "\" takes "
                + std::to_string(takes) + (takes == 1 ? " coefficient" : " coefficients") + ", and is given "
                + std::to_string(segment.params.size()) + ".");
    segment.params.resize(std::min<size_t>(segment.params.size(), max_segment_params));
    made.segments.push_back(std::move(segment));
    push_curve(L, std::move(made));
    return 1;
}

// ---- curves of curves -------------------------------------------------------------------

// `whole` becomes false where something else is among them, which is reported once.
static curve joined(field_reader& r, bool& whole)
{
    curve made;
    whole = r.table != 0;
    if (!whole)
        return made;
    each_entry(r.L, r.table, [&](int at) {
        const thing* part = thing_at(r.L, at);
        if (!whole)
            return;
        whole = as<curve_thing>(part) != nullptr;
        if (!whole)
            report_error(r.L,
                std::string(r.word) + " joins curves, and " + what_is(r.L, at)
                    + " is none: write linear(from, to, length), or constant(value, length).");
        else
            made = joined_curve(made, as<curve_thing>(part)->c);
    });
    return made;
}

static int make_curve(lua_State* L, const char* word, int32_t loop)
{
    field_reader r = read_fields(L, 1, word, kind_curve, {}, true);
    bool whole = false;
    curve made = joined(r, whole);
    made.loop = loop;
    made.loop_from = time_field(r, "from", 0);
    made.loop_to = time_field(r, "to", loop == loop_off ? 0 : curve_length(made));
    made.integer = flag_field(r, "integer", false);
    const std::string fault = curve_fault(made);
    const std::string hint = made.segments.empty() ? ": write " + std::string(word) + " { linear(0, 1, \"4s\") }."
        : made.segments.size() > max_segments      ? ": make two of it, or a spline."
                                                   : ": write a to that is later than from.";
    if (!fault.empty() && whole && !state_of(L).show->keep_order)
        report_error(L, std::string(word) + " " + fault + hint);
    push_curve(L, std::move(made));
    return 1;
}

static int word_curve(lua_State* L)
{
    return make_curve(L, "curve", loop_off);
}

// animation { segments, loop = ... }: a function of the document as it stands there, with a record of its own.
static int word_animation(lua_State* L)
{
    field_reader r = read_fields(L, 1, "animation", kind_curve, {{"loop", false}}, true);
    bool whole = false;
    curve made = joined(r, whole);
    made.loop = static_cast<int32_t>(whole_field(r, "loop", INT32_MIN, INT32_MAX, 0));
    made.loop_from = time_field(r, "from", 0);
    made.loop_to = time_field(r, "to", 0);
    made.integer = flag_field(r, "integer", false);
    push_thing(L, curve_thing{std::move(made)})->explicit_record = true;
    return 1;
}

static int word_loop(lua_State* L)
{
    return make_curve(L, "loop", loop_around);
}

static int word_pingpong(lua_State* L)
{
    return make_curve(L, "pingpong", loop_ping_pong);
}

// ---- arithmetic -------------------------------------------------------------------------

static int with_number(lua_State* L, const char* sign, double (*factor)(double), double (*offset)(double))
{
    const int number = lua_type(L, 1) == LUA_TNUMBER ? 1 : 2;
    const curve_thing* moving = as<curve_thing>(thing_at(L, 3 - number));
    if (moving == nullptr || lua_type(L, number) != LUA_TNUMBER)
        raise_error(L, what_is(L, 1) + " " + sign + " " + what_is(L, 2) + ": a curve is computed with numbers only.");
    const double value = number_at(L, number, std::string("a curve ") + sign + " a number", 1);
    push_curve(L, scaled_curve(moving->c, factor(value), offset(value)));
    return 1;
}

static double one(double)
{
    return 1;
}

static double none(double)
{
    return 0;
}

static double itself(double value)
{
    return value;
}

static int curve_add(lua_State* L)
{
    return with_number(L, "+", one, itself);
}

static int curve_subtract(lua_State* L)
{
    if (lua_type(L, 1) == LUA_TNUMBER)
        return with_number(
            L, "-", [](double) { return -1.0; }, itself);
    return with_number(L, "-", one, [](double value) { return -value; });
}

static int curve_multiply(lua_State* L)
{
    return with_number(L, "*", itself, none);
}

static int curve_divide(lua_State* L)
{
    if (lua_type(L, 2) != LUA_TNUMBER || lua_tonumber(L, 2) == 0)
        raise_error(L, "a curve is divided by numbers only, and not by 0.");
    return with_number(
        L, "/", [](double value) { return 1 / value; }, none);
}

static int curve_negate(lua_State* L)
{
    const curve_thing* moving = as<curve_thing>(thing_at(L, 1));
    if (moving == nullptr)
        raise_error(L, what_is(L, 1) + " has no opposite.");
    push_curve(L, scaled_curve(moving->c, -1, 0));
    return 1;
}

static int curve_join(lua_State* L)
{
    const curve_thing* first = as<curve_thing>(thing_at(L, 1));
    const curve_thing* second = as<curve_thing>(thing_at(L, 2));
    if (first == nullptr || second == nullptr)
        raise_error(L,
            what_is(L, 1) + " .. " + what_is(L, 2)
                + ": two curves are joined so, or two texts: write constant(value, length) for a "
                  "curve that stands still.");
    push_curve(L, joined_curve(first->c, second->c));
    return 1;
}

void add_arithmetic(lua_State* L)
{
    static constexpr luaL_Reg operators[] = {{"__add", guarded<curve_add>}, {"__sub", guarded<curve_subtract>},
        {"__mul", guarded<curve_multiply>}, {"__div", guarded<curve_divide>}, {"__unm", guarded<curve_negate>},
        {"__concat", guarded<curve_join>}, {nullptr, nullptr}};
    luaL_setfuncs(L, operators, 0);
}

// ---- ways through space ---------------------------------------------------------------------

static int word_path(lua_State* L)
{
    field_reader r = read_fields(L, 1, "path", kind_spline, {}, true);
    std::array<std::vector<curve_point>, 3> points;
    bool are_points = r.table != 0; // where one is none, the others are not told too
    for (lua_Integer number = 1; are_points && lua_rawgeti(L, r.table, number) != LUA_TNIL; ++number) {
        charge_steps(L, 8);
        are_points = point_entry(L, lua_gettop(L), "path", 2);
        if (are_points) {
            const double time = point_time(L, lua_gettop(L), "path");
            lua_rawgeti(L, -1, 2);
            const moving_point at = point_at(L, lua_gettop(L), "path: a point", 0);
            for (size_t axis = 0; axis < 3; ++axis) {
                if (at[axis].curve != nullptr)
                    report_error(L,
                        "path: a point stands still, and " + std::string(1, static_cast<char>('x' + axis))
                            + " of this one is a curve: add points.");
                points[axis].push_back({time, at[axis].constant});
            }
            lua_pop(L, 1);
        }
        lua_pop(L, 1);
    }
    const double length = length_field(r, "length", 0);
    path_thing path;
    for (size_t axis = 0; axis < 3; ++axis) {
        curve made;
        const std::string fault = spline_curve(points[axis], length, made);
        if (!fault.empty() && are_points)
            report_error(L, "path " + fault + point_hint(fault));
        if (!fault.empty())
            break;
        path.at[axis] = {0, push_thing(L, curve_thing{std::move(made)})};
        lua_pop(L, 1);
    }
    push_thing(L, std::move(path));
    return 1;
}

static camera_number plain(const moving_number& number)
{
    return {number.constant, number.curve != nullptr ? &curve_of(number) : nullptr};
}

static std::array<camera_number, 3> plain(const moving_point& point)
{
    return {plain(point[0]), plain(point[1]), plain(point[2])};
}

static moving_number number_of(lua_State* L, const turned_number& number)
{
    if (!number.moving)
        return {number.constant + 0.0, nullptr}; // no negative zero
    const thing* made = push_thing(L, curve_thing{*number.moving});
    lua_pop(L, 1);
    return {0, made};
}

static moving_point turned_towards(
    lua_State* L, const moving_point& eye, const moving_point& target, const moving_number& roll)
{
    turned_number angles[3];
    const std::string fault = look_at(plain(eye), plain(target), angles);
    if (!fault.empty())
        report_error(L, "look_at " + fault + (fault.starts_with("has the eye") ? ": move one of them." : "."));
    return {{number_of(L, angles[0]), number_of(L, angles[1]), roll}};
}

static void read_camera(field_reader& r, camera_thing& camera)
{
    camera.at = point_field(r, "at", 0);
    if (has_field(r, "world")) {
        camera.at = point_field(r, "world", 0);
        camera.moves_world = true;
        if (has_field(r, "at") || has_field(r, "look_at"))
            report_error(r.L, std::string(r.word) + ": world takes the place of at, and look_at needs at.");
    }
    camera.fov = moving_field(r, "fov", 60);
    camera.far = moving_field(r, "far", 600);
    if (has_field(r, "look_at") && has_field(r, "rotation"))
        report_error(r.L, std::string(r.word) + " has look_at and rotation: one of them says where it looks.");
    if (has_field(r, "look_at"))
        camera.rotation = turned_towards(r.L, camera.at, point_field(r, "look_at", 0), moving_field(r, "roll", 0));
    else
        camera.rotation = point_field(r, "rotation", 0);
    if (has_field(r, "roll") && !has_field(r, "look_at"))
        report_error(r.L, std::string(r.word) + ": roll goes with look_at; the third number of rotation leans too.");
}

static int word_camera(lua_State* L)
{
    field_reader r = read_fields(L, 1, "camera", kind_camera);
    camera_thing camera;
    read_camera(r, camera);
    push_thing(L, std::move(camera));
    return 1;
}

camera_thing camera_at(lua_State* L, int index, const std::string& what)
{
    camera_thing camera;
    const thing* made = thing_at(L, index);
    if (as<camera_thing>(made) != nullptr)
        return *as<camera_thing>(made);
    if (as<path_thing>(made) != nullptr) {
        report_error(L, what + " is a path: write where it looks, path:look_at { 0, 0, 0 }.");
    } else if (lua_type(L, index) != LUA_TTABLE) {
        report_error(
            L, what + " is " + what_is(L, index) + ", and wants camera { at = { x, y, z }, look_at = { x, y, z } }.");
    } else {
        field_reader r = read_fields(L, index, "camera", kind_camera);
        read_camera(r, camera);
    }
    return camera;
}

// path:look_at(point or path, { roll, fov, far })
static int method_look_at(lua_State* L)
{
    const path_thing* path = as<path_thing>(thing_at(L, 1));
    if (path == nullptr)
        raise_error(L, "look_at belongs to a path: write path { ... }:look_at { x, y, z }.");
    field_reader r = read_fields(L, 3, "look_at", kind_camera);
    camera_thing camera;
    camera.at = path->at;
    camera.fov = moving_field(r, "fov", 60);
    camera.far = moving_field(r, "far", 600);
    camera.rotation = turned_towards(L, path->at, point_at(L, 2, "look_at", 0), moving_field(r, "roll", 0));
    push_thing(L, std::move(camera));
    return 1;
}

// ---- what curves and paths can do -------------------------------------------------------------

static int method_at(lua_State* L)
{
    const double tick = time_at(L, 2, "at", 0);
    const thing* made = thing_at(L, 1);
    if (const path_thing* path = as<path_thing>(made)) {
        lua_createtable(L, 3, 0);
        for (int axis = 0; axis < 3; ++axis) {
            const moving_number& number = path->at[static_cast<size_t>(axis)];
            lua_pushnumber(L, number.curve != nullptr ? curve_at(curve_of(number), tick) : number.constant);
            lua_rawseti(L, -2, axis + 1);
        }
        return 1;
    }
    const curve_thing* moving = as<curve_thing>(made);
    if (moving == nullptr)
        raise_error(L, "at belongs to a curve or a path.");
    lua_pushnumber(L, curve_at(moving->c, tick));
    return 1;
}

static int method_length(lua_State* L)
{
    const thing* made = thing_at(L, 1);
    if (const path_thing* path = as<path_thing>(made))
        made = path->at[0].curve;
    const curve_thing* moving = as<curve_thing>(made);
    if (moving == nullptr)
        raise_error(L, "length belongs to a curve or a path.");
    lua_pushinteger(L, curve_length(moving->c));
    return 1;
}

bool push_curve_method(lua_State* L, const thing& made, const std::string& name)
{
    const path_thing* path = as<path_thing>(&made);
    if (path == nullptr && as<curve_thing>(&made) == nullptr)
        return false;
    if (name == "at")
        lua_pushcfunction(L, guarded<method_at>);
    else if (name == "length")
        lua_pushcfunction(L, guarded<method_length>);
    else if (path != nullptr && name == "look_at")
        lua_pushcfunction(L, guarded<method_look_at>);
    else if (path != nullptr && (name == "x" || name == "y" || name == "z")) {
        const moving_number& number = path->at[static_cast<size_t>(name[0] - 'x')];
        if (number.curve != nullptr)
            push_thing(L, const_cast<thing*>(number.curve)); // ours
        else
            lua_pushnumber(L, number.constant);
    } else {
        return false;
    }
    return true;
}

std::vector<std::string> curve_methods()
{
    return {"at", "length"};
}

std::vector<std::string> path_methods()
{
    return {"at", "length", "look_at", "x", "y", "z"};
}

// ticks("4 bars"): a time as a number, to compute with.
static int word_ticks(lua_State* L)
{
    lua_pushnumber(L, time_at(L, 1, "ticks", 0));
    return 1;
}

void define_curve_words(lua_State* L)
{
    define_word(L, "constant", guarded<word_constant>);
    define_word(L, "linear", guarded<word_linear>);
    define_word(L, "ease", guarded<word_ease>);
    define_word(L, "wave", guarded<word_wave>);
    define_word(L, "swelling_wave", guarded<word_swelling_wave>);
    define_word(L, "spline", guarded<word_spline>);
    define_word(L, "segment", guarded<word_segment>);
    define_word(L, "curve", guarded<word_curve>);
    define_word(L, "loop", guarded<word_loop>);
    define_word(L, "pingpong", guarded<word_pingpong>);
    define_word(L, "animation", guarded<word_animation>);
    define_word(L, "path", guarded<word_path>);
    define_word(L, "camera", guarded<word_camera>);
    define_word(L, "ticks", guarded<word_ticks>);
}
