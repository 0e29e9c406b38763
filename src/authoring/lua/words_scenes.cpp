// Words for scenes and the timeline: placing things, multiplying them, clips and tracks, the loading screen.
#include "authoring/lua/word_list.h"

#include "authoring/lua/sandbox.h"
#include "authoring/show/entries.h"
#include "authoring/show/raw.h"
#include "content/pack.h"

#include <lua.hpp>

#include <algorithm>
#include <cmath>
#include <limits>

// ---- manipulators -----------------------------------------------------------------------

static const thing* model_at(lua_State* L, int index, const std::string& what)
{
    const thing* made = thing_at(L, index);
    if (as<mesh_thing>(made) != nullptr || as<effect_thing>(made) != nullptr)
        return made;
    report_error(L,
        what + " is " + what_is(L, index) + ", and wants a mesh or an effect"
            + (what == "on_vertices" ? " first: write on_vertices(mesh, { scale = 2 })." : "."));
    return nullptr;
}

// xyz_multiplier { x_number = 3, ... } and the others of the catalogue.
static int word_manipulator(lua_State* L)
{
    manipulator_thing made;
    made.type = static_cast<uint32_t>(lua_tointeger(L, lua_upvalueindex(1)));
    const std::string word = parameter_field(manipulator_choices.name(made.type));
    auto rows = manipulator_fields(made.type);
    const size_t count = rows.size();
    const bool places = manipulators[made.type].places_model != 0;
    if (places)
        rows.push_back({"model", false});
    field_reader r = read_fields(L, 1, word.c_str(), kind_count, rows);
    for (size_t index = 0; index < count; ++index) {
        const bool is_scale = rows[index].name.starts_with("scale") && !rows[index].name.ends_with("step");
        made.params.push_back(moving_field(r, rows[index].name.c_str(), is_scale ? 1 : 0));
    }
    if (places && take(r, "model")) {
        made.model = model_at(L, lua_gettop(L), label(r, "model"));
        done(r);
    }
    push_thing(L, std::move(made));
    return 1;
}

static void add_steps(field_reader& r, manipulator_thing& made)
{
    for (const moving_point& point : {point_field(r, "step", 0), point_field(r, "turn", 0), scale_field(r, "grow", 0)})
        made.params.insert(made.params.end(), point.begin(), point.end());
}

static int word_row(lua_State* L)
{
    manipulator_thing made;
    made.type = manipulator_x_multiplier;
    if (lua_type(L, 1) == LUA_TTABLE) {
        report_error(L, "row is given a table first, and wants how many: write row(3, { step = { 1, 0, 0 } }).");
        push_thing(L, std::move(made));
        return 1;
    }
    made.params = {moving_at(L, 1, "row: how many", 1)};
    field_reader r = read_fields(L, 2, "row", kind_steps);
    add_steps(r, made);
    push_thing(L, std::move(made));
    return 1;
}

static int word_grid(lua_State* L)
{
    manipulator_thing made;
    made.type = manipulator_xyz_multiplier;
    if (lua_type(L, 1) != LUA_TTABLE || lua_rawlen(L, 1) != 3) {
        report_error(L,
            "grid is given " + what_is(L, 1)
                + " first, and wants how many to each side: write grid({ 3, 3, 3 }, { "
                  "step = { 1, 1, 1 } }).");
        push_thing(L, std::move(made));
        return 1;
    }
    const moving_point numbers = point_at(L, 1, "grid: how many", 1);
    made.params = {numbers.begin(), numbers.end()};
    field_reader r = read_fields(L, 2, "grid", kind_steps);
    add_steps(r, made);
    push_thing(L, std::move(made));
    return 1;
}

static int word_on_vertices(lua_State* L)
{
    manipulator_thing made;
    made.type = manipulator_model_placer;
    made.model = model_at(L, 1, "on_vertices");
    field_reader r = read_fields(L, 2, "on_vertices", kind_on_vertices);
    for (const moving_point& point :
        {point_field(r, "at", 0), point_field(r, "rotation", 0), scale_field(r, "scale", 1)})
        made.params.insert(made.params.end(), point.begin(), point.end());
    push_thing(L, std::move(made));
    return 1;
}

// ---- placing ----------------------------------------------------------------------------

static const thing* visible_field(field_reader& r)
{
    if (!take(r, "visible"))
        return nullptr;
    const int at = lua_gettop(r.L);
    const thing* made = thing_at(r.L, at);
    if (as<curve_thing>(made) == nullptr && lua_type(r.L, at) == LUA_TBOOLEAN)
        made = lua_toboolean(r.L, at) != 0 ? nullptr : push_thing(r.L, curve_thing{constant_curve(0, 1)});
    else if (as<curve_thing>(made) == nullptr) {
        report_error(r.L,
            label(r, "visible") + " is " + what_is(r.L, at)
                + ", and wants true, false, or a curve: it is drawn while that is not 0.");
        made = nullptr;
    }
    lua_settop(r.L, at);
    done(r);
    return made;
}

// Fields of a font that stand behind a text, reported as what they are; so nobody asks for them again.
static std::vector<parameter_field_row> fields_of_font(lua_State* L, int table, const placed_thing& placed)
{
    std::vector<parameter_field_row> rows;
    if (placed.kind != object_text || lua_type(L, table) != LUA_TTABLE)
        return rows;
    for (const field_row& row : kind_of(kind_font).fields) {
        if (std::string(row.name) == "material" || lua_getfield(L, table, row.name) == LUA_TNIL)
            continue;
        rows.push_back({row.name, false});
        report_error(L,
            std::string("object: ") + row.name
                + " belongs to the font, in front of the text: write font \"file.ttf\" { " + row.name + " = ... }.");
    }
    lua_settop(L, table);
    return rows;
}

static void read_placed(lua_State* L, int table, placed_thing& placed)
{
    field_reader r = read_fields(L, table, "object", kind_placed, fields_of_font(L, table, placed));
    if (take(r, "material")) {
        placed.material = material_at(L, lua_gettop(L), label(r, "material"));
        done(r);
    }
    if (has_field(r, "at"))
        placed.at = point_field(r, "at", 0);
    if (has_field(r, "rotation"))
        placed.rotation = point_field(r, "rotation", 0);
    if (has_field(r, "scale"))
        placed.scale = scale_field(r, "scale", 1);
    if (has_field(r, "visible"))
        placed.visible = visible_field(r);
    placed.time_offset = time_field(r, "time_offset", placed.time_offset);
    placed.facing = flag_field(r, "facing", placed.facing);
    placed.align = choice_field(r, "align", align_choices, placed.align);
    if (placed.align != 0 && placed.kind != object_text)
        report_error(L, "object: align is for texts: a mesh is moved by at.");
    if (!take(r, "manipulators"))
        return;
    placed.manipulators.clear();
    const auto add = [&](int at) {
        const thing* made = thing_at(L, at);
        if (as<manipulator_thing>(made) == nullptr)
            report_error(L,
                label(r, "manipulators") + " has " + what_is(L, at)
                    + " in it, and wants row, grid, on_vertices, rippler ...");
        else
            placed.manipulators.push_back(made);
    };
    if (lua_type(L, -1) == LUA_TTABLE)
        each_entry(L, lua_gettop(L), add);
    else
        add(lua_gettop(L));
    if (placed.manipulators.size() > max_manipulators)
        report_error(
            L, "object: " + std::to_string(placed.manipulators.size()) + " manipulators, and an object takes 7.");
    done(r);
}

static void check_text(lua_State* L, const std::string& text)
{
    const std::string fault = attribute_fault(text);
    if (!fault.empty())
        report_error(L, "the text \"" + text + "\" " + fault + ".");
    if (text.size() > scene_text_size)
        report_error(L,
            "the text \"" + text + "\" has " + std::to_string(text.size())
                + " bytes, and 32 are drawn: make two of it.");
}

void place(lua_State* L, const thing& made)
{
    placed_thing placed;
    placed.what = &made;
    if (as<font_thing>(&made) != nullptr) {
        placed.kind = object_text;
        if (lua_type(L, 2) == LUA_TNUMBER)
            report_error(L,
                "a font is given " + what_is(L, 2)
                    + ", and wants a text: write \"2000\" for 2000, or tostring(number).");
        else
            placed.text = text_at(L, 2, "what a font is given");
        check_text(L, placed.text);
    } else {
        const reference_thing* reference = as<reference_thing>(&made);
        if (reference != nullptr && reference->type == -1)
            report_error(L, "a reference to a texture stands in a material: only meshes and effects are placed.");
        const bool moves = as<effect_thing>(&made) != nullptr || (reference != nullptr && reference->type == 1);
        placed.kind = moves ? object_genmesh : object_model;
        read_placed(L, 2, placed);
    }
    push_thing(L, std::move(placed));
}

void configure_placed(lua_State* L, const thing& made)
{
    made.used = true;
    placed_thing placed = *as<placed_thing>(&made);
    read_placed(L, 2, placed);
    push_thing(L, std::move(placed));
}

// ---- scenes -----------------------------------------------------------------------------

static void add_to_scene(lua_State* L, scene_thing& scene, int index)
{
    const thing* made = thing_at(L, index);
    if (as<placed_thing>(made) != nullptr) {
        scene.placed.push_back(made);
        made->used = true;
        return;
    }
    const bool can_be_placed = as<mesh_thing>(made) != nullptr || as<effect_thing>(made) != nullptr;
    report_error(L,
        "a scene is given " + what_is(L, index) + ", and wants placed objects"
            + (can_be_placed                            ? ": write { material = ... } behind it."
                    : lua_type(L, index) == LUA_TSTRING ? ", like letters \"Hello\" { material = red }, with a font."
                                                        : ", like ball { material = red }."));
}

static int word_scene(lua_State* L)
{
    const bool has_name = lua_type(L, 1) == LUA_TSTRING;
    const std::string name = has_name ? text_at(L, 1, "scene: its name") : "";
    if (!has_name)
        report_error(L, "scene is given " + what_is(L, 1) + " first, and wants a name: write scene \"walk\" { ... }.");
    const std::string fault = attribute_fault(name);
    if (!fault.empty())
        report_error(L, "scene \"" + name + "\" " + fault + ".");
    thing* made = push_thing(L, scene_thing{});
    made->name = name;
    if (lua_type(L, 2) == LUA_TTABLE)
        each_entry(L, 2, [&](int at) { add_to_scene(L, std::get<scene_thing>(made->value), at); });
    return 1;
}

static int method_add(lua_State* L)
{
    thing* made = thing_at(L, 1);
    if (as<scene_thing>(made) == nullptr)
        raise_error(L, "add belongs to a scene: write walk:add(object).");
    const int count = lua_gettop(L);
    for (int index = 2; index <= count; ++index) {
        if (lua_type(L, index) == LUA_TTABLE)
            each_entry(L, index, [&](int at) { add_to_scene(L, std::get<scene_thing>(made->value), at); });
        else
            add_to_scene(L, std::get<scene_thing>(made->value), index);
    }
    lua_settop(L, 1);
    return 1;
}

bool push_scene_method(lua_State* L, const thing& made, const std::string& name)
{
    if (as<scene_thing>(&made) == nullptr || name != "add")
        return false;
    lua_pushcfunction(L, guarded<method_add>);
    return true;
}

std::vector<std::string> scene_methods()
{
    return {"add"};
}

// ---- clips ------------------------------------------------------------------------------

static const thing* target_field(field_reader& r)
{
    if (!take(r, "into"))
        return nullptr;
    const thing* made = thing_at(r.L, lua_gettop(r.L));
    const image_thing* image = as<image_thing>(made);
    if (image == nullptr || (!image->file.empty() && !state_of(r.L).show->keep_order)) {
        report_error(r.L,
            label(r, "into") + " is " + what_is(r.L, lua_gettop(r.L)) + (image != nullptr ? " of a file" : "")
                + ", and wants a target { }.");
        made = nullptr;
    }
    done(r);
    return made;
}

static std::optional<double> whole_time(field_reader& r, const char* name, bool& has_fault)
{
    if (!has_field(r, name))
        return {};
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    const double ticks = time_field(r, name, none);
    has_fault = has_fault || std::isnan(ticks);
    if (std::isnan(ticks))
        return 0;
    if (ticks < 0)
        report_error(
            r.L, label(r, name) + " lies " + number_text(-ticks) + " ticks before the show begins: that is at 0.");
    constexpr double latest = 4294967295; // that a document can say: what is too late for the player is found there
    return std::round(std::clamp(ticks, 0.0, latest));
}

// What a clip and a track have in common.
static void read_common(field_reader& r, clip_thing& clip)
{
    clip.from = whole_time(r, "from", clip.has_fault);
    clip.to = whole_time(r, "to", clip.has_fault);
    if (has_field(r, "flat"))
        clip.flat = flag_field(r, "flat", false);
    if (take(r, "camera")) {
        clip.camera = camera_at(r.L, lua_gettop(r.L), label(r, "camera"));
        done(r);
    }
}

static const thing* value_field(field_reader& r, const char* name)
{
    if (!take(r, name))
        return nullptr;
    const thing* made = value_at(r.L, lua_gettop(r.L), label(r, name));
    done(r);
    return made;
}

static clip_thing read_clip(lua_State* L, int table, const thing* scene, bool has_list = false)
{
    field_reader r = read_fields(L, table, "clip", kind_clip, {}, has_list);
    clip_thing clip;
    clip.scene = scene;
    read_common(r, clip);
    if (!clip.from && was_misspelt(r, "from")) // which has been reported
        clip.from = 0;
    if (!clip.to && was_misspelt(r, "to"))
        clip.to = clip.from.value_or(0) + 1;
    clip.into = target_field(r);

    clip.mode = choice_field(r, "mode", mode_choices, clip.into != nullptr ? render_to_texture : render_simple);
    const bool has_target = clip.mode < render_mode_count && render_modes[clip.mode].uses_target != 0;
    if (clip.into != nullptr && !has_target)
        report_error(L,
            "clip: into is a target, and the mode \"" + std::string(mode_choices.name(clip.mode))
                + "\" draws elsewhere: leave one of them out.");
    if (clip.into == nullptr && has_target && !state_of(L).show->keep_order)
        report_error(L,
            "clip: the mode \"" + std::string(mode_choices.name(clip.mode))
                + "\" draws into a target: write into = target { }.");
    clip.clear = value_field(r, "clear");
    clip.next_clear = value_field(r, "next_clear");
    clip.time_offset = std::round(time_field(r, "time_offset", 0));
    if (std::fabs(clip.time_offset) > INT32_MAX) {
        report_error(L, label(r, "time_offset") + " is too long: it is kept in ticks, up to 2147483647 of them.");
        clip.time_offset = 0;
    }
    return clip;
}

// A clip has names, a filling has none.
static bool has_names(lua_State* L, int table)
{
    lua_pushnil(L);
    while (lua_next(L, table) != 0) {
        lua_pop(L, 1);
        if (lua_type(L, -1) == LUA_TSTRING) {
            lua_pop(L, 1);
            return true;
        }
    }
    return false;
}

void call_scene(lua_State* L, thing& made)
{
    if (lua_type(L, 2) != LUA_TTABLE)
        raise_error(L, "a scene is given " + what_is(L, 2) + ", and wants { objects } or { from =, to = }.");
    if (has_names(L, 2)) {
        const bool has_list = lua_rawlen(L, 2) > 0;
        if (has_list)
            report_error(L,
                "scene \"" + made.name
                    + "\": objects and fields stand in one table: write two, { objects } that fill it and { from =, to "
                      "= } that make a clip.");
        push_thing(L, read_clip(L, 2, &made, has_list));
        return;
    }
    each_entry(L, 2, [&](int at) { add_to_scene(L, std::get<scene_thing>(made.value), at); });
    lua_pushvalue(L, 1);
}

static int word_pause(lua_State* L)
{
    push_thing(L, read_clip(L, 1, nullptr));
    return 1;
}

static void check_clip_times(lua_State* L, const thing& made, const clip_thing& clip)
{
    const std::string name = clip.scene != nullptr ? "the clip of \"" + clip.scene->name + "\"" : "the pause";
    const auto say = [&](const std::string& text) { report(L, problem_error, made.place, name + " " + text + "."); };
    if (!clip.from || !clip.to)
        say(std::string("lacks \"") + (clip.from ? "to" : "from") + "\": write "
            + (clip.from ? "to = \"4s\"" : "from = \"0s\"") + " in it, or in its track");
    else if (*clip.to <= *clip.from && !state_of(L).show->keep_order)
        say("ends at tick " + number_text(*clip.to) + ", and begins at " + number_text(*clip.from)
            + ": write a later to");
}

// The clip as it is on a track: what it does not say comes from there.
static const thing* clip_on_track(lua_State* L, const thing& made, const clip_thing& common)
{
    clip_thing clip = *as<clip_thing>(&made);
    clip.from = clip.from ? clip.from : common.from;
    clip.to = clip.to ? clip.to : common.to;
    clip.camera = clip.camera ? clip.camera : common.camera;
    clip.flat = clip.flat ? clip.flat : common.flat;
    if (!clip.has_fault && !common.has_fault)
        check_clip_times(L, made, clip);
    made.used = true;
    thing* placed = add_thing(*state_of(L).show, std::move(clip), made.place, state_of(L).document);
    placed->used = true;
    return placed;
}

static int word_track(lua_State* L)
{
    if (lua_type(L, 1) != LUA_TTABLE)
        raise_error(
            L, "track is given " + what_is(L, 1) + ", and wants clips: track { walk { from = \"0s\", to = \"4s\" } }.");
    word_state& s = state_of(L);
    field_reader r = read_fields(L, 1, "track", kind_track, {}, true);
    clip_thing common;
    read_common(r, common);
    if (was_misspelt(r, "from")) // which has been reported
        common.from = common.from.value_or(0);
    if (was_misspelt(r, "to"))
        common.to = common.to.value_or(common.from.value_or(0) + 1);
    std::vector<const thing*> clips;
    each_entry(L, 1, [&](int at) {
        const thing* made = thing_at(L, at);
        if (as<clip_thing>(made) != nullptr) {
            clips.push_back(clip_on_track(L, *made, common));
        } else if (as<scene_thing>(made) != nullptr) {
            clip_thing bare;
            bare.scene = made;
            clips.push_back(clip_on_track(L, *add_thing(*s.show, bare, current_place(L), s.document), common));
        } else {
            report_error(L,
                "a track is given " + what_is(L, at) + ", and wants clips: write walk { from = \"0s\", to = \"4s\" }.");
        }
    });
    s.show->tracks[s.document].push_back(std::move(clips));
    return 0;
}

// ---- documents --------------------------------------------------------------------------

namespace {

// The loading screen's, until an error or the end: whoever catches the error goes on with the show.
struct loading_document {
    word_state& state;

    explicit loading_document(word_state& s)
        : state(s)
    {
        state.document = 1;
    }
    ~loading_document()
    {
        state.document = 0;
    }
    loading_document(const loading_document&) = delete;
    loading_document& operator=(const loading_document&) = delete;
};

} // namespace

static int word_loading(lua_State* L)
{
    if (lua_type(L, 1) != LUA_TFUNCTION)
        raise_error(L, "loading is given " + what_is(L, 1) + ", and wants a function: loading(function() ... end).");
    word_state& s = state_of(L);
    if (s.document != 0)
        raise_error(L, "loading stands inside loading: write what belongs to it into the outer one.");
    lua_settop(L, 1);
    const loading_document inside(s);
    lua_call(L, 0, 0);
    return 0;
}

static int word_show(lua_State* L)
{
    field_reader r = read_fields(L, 1, "show", kind_show);
    show_description& show = *state_of(L).show;
    if (!show.things.empty())
        report_error(
            L, "show comes first, in front of everything that is made: the length of a beat counts from there on.");
    if (has_field(r, "title"))
        show.title = text_field(r, "title");
    const std::string fault = attribute_fault(show.title);
    if (!fault.empty())
        report_error(L, label(r, "title") + " " + fault + ".");
    if (has_field(r, "music")) {
        show.music = text_field(r, "music");
        if (const std::string music_fault = attribute_fault(show.music); !music_fault.empty())
            report_error(L, label(r, "music") + " " + music_fault + ".");
        show.music_place = current_place(L);
    }
    show.bpm = number_field(r, "bpm", show.bpm);
    if (show.bpm < 0)
        report_error(L, "show: bpm is below 0: write how many beats a minute has, 120 say.");
    show.beats_per_bar = number_field(r, "beats_per_bar", show.beats_per_bar);
    if (has_field(r, "seed"))
        set_random_seed(L, static_cast<uint64_t>(whole_field(r, "seed", 0, int64_t{1} << 53, 1)));
    show.aspect = number_field(r, "aspect", show.aspect);
    if (show.aspect < 0.1 || show.aspect > 10) {
        report_error(L, "show: aspect is the width of a screen by its height, like 16 / 9.");
        show.aspect = 4.0 / 3;
    }
    show.keep_order = flag_field(r, "keep_order", show.keep_order);
    return 0;
}

// ---- what the document says, word for word ------------------------------------------------

static int word_reference(lua_State* L)
{
    reference_thing reference;
    if (lua_type(L, 1) == LUA_TNUMBER) {
        reference.type = static_cast<int32_t>(whole_at(L, 1, "reference: its kind", INT32_MIN, INT32_MAX, 0));
        reference.id = whole_at(L, 2, "reference: its number", INT32_MIN, 4294967295, 0);
        push_thing(L, std::move(reference));
        return 1;
    }
    reference.what = thing_at(L, 1);
    if (as<mesh_thing>(reference.what) != nullptr || as<effect_thing>(reference.what) != nullptr)
        reference.type = as<mesh_thing>(reference.what) != nullptr ? object_model : object_genmesh;
    else
        reference.what = texture_at(L, 1, "reference"), reference.type = -1;
    push_thing(L, std::move(reference));
    return 1;
}

static int make_entry(lua_State* L, const char* word, bool is_document)
{
    entry_thing entry;
    entry.file = text_at(L, 1, word);
    field_reader r = read_fields(L, 2, word, kind_entry);
    entry.name = text_field(r, "name");
    entry.is_document = is_document;
    if (is_document && entry.name.empty())
        entry.name = stem_of(entry.file) + ".xmlz";
    if (is_document && entry.name != "demo.xmlz" && entry.name != "loading.xmlz")
        report_error(L,
            "document: a show has the documents \"demo.xmlz\" and \"loading.xmlz\", and \"" + entry.name
                + "\" is none of them: write { name = \"demo.xmlz\" } behind the file.");
    if (entry.name.size() >= pack_name_size)
        report_error(
            L, std::string(word) + ": the name \"" + entry.name + "\" is longer than 31 bytes: give it a shorter one.");
    push_thing(L, std::move(entry))->used = true;
    return 1;
}

void configure_entry(lua_State* L, thing& made)
{
    entry_thing& entry = std::get<entry_thing>(made.value);
    field_reader r = read_fields(L, 2, entry.is_document ? "document" : "entry", kind_entry);
    if (has_field(r, "name"))
        entry.name = text_field(r, "name");
    lua_pushvalue(L, 1);
}

// entry "file": a file of the pack that no other word brings.
static int word_entry(lua_State* L)
{
    return make_entry(L, "entry", false);
}

// document "demo.xml": the text of a whole document, as it stands; no word adds to it.
static int word_document(lua_State* L)
{
    return make_entry(L, "document", true);
}

static int word_raw(lua_State* L)
{
    const std::string name = text_at(L, 1, "raw: the section's name");
    const std::string text = text_at(L, 2, "raw: the element");
    raw_thing raw;
    std::string fault = raw_element(name, text, raw.section, raw.content);
    if (!fault.empty())
        report_error(L, "raw: " + fault);
    if (!fault.empty())
        return 0;
    word_state& s = state_of(L);
    const bool is_track = raw.section == section_timeline;
    thing* made = push_thing(L, std::move(raw));
    if (is_track)
        s.show->tracks[s.document].push_back({made});
    return 1;
}

void define_scene_words(lua_State* L)
{
    for (uint32_t type = 0; type < manipulator_choices.count; ++type) {
        lua_pushinteger(L, type);
        lua_pushcclosure(L, guarded<word_manipulator>, 1);
        define_value(L, parameter_field(manipulator_choices.name(type)).c_str());
    }
    define_word(L, "row", guarded<word_row>);
    define_word(L, "grid", guarded<word_grid>);
    define_word(L, "on_vertices", guarded<word_on_vertices>);
    define_word(L, "scene", guarded<word_scene>);
    define_word(L, "pause", guarded<word_pause>);
    define_word(L, "track", guarded<word_track>);
    define_word(L, "loading", guarded<word_loading>);
    define_word(L, "show", guarded<word_show>);
    define_word(L, "reference", guarded<word_reference>);
    define_word(L, "raw", guarded<word_raw>);
    define_word(L, "entry", guarded<word_entry>);
    define_word(L, "document", guarded<word_document>);
}
