#include "authoring/lua/words.h"

#include "authoring/lua/sandbox.h"
#include "authoring/lua/word_list.h"

#include <lua.hpp>

#include <algorithm>

// ---- what things can do -------------------------------------------------------------------

static std::vector<std::string> methods_of(const thing& made)
{
    if (as<picture_thing>(&made) != nullptr || as<node_thing>(&made) != nullptr)
        return picture_methods();
    if (as<curve_thing>(&made) != nullptr)
        return curve_methods();
    if (as<path_thing>(&made) != nullptr)
        return path_methods();
    if (as<scene_thing>(&made) != nullptr)
        return scene_methods();
    return {};
}

// Whether another picture is asked for what generated ones can do.
static bool is_of_pictures(const thing& made, const std::string& name)
{
    const std::vector<std::string> names = picture_methods();
    const bool is_picture = as<image_thing>(&made) != nullptr || as<cube_map_thing>(&made) != nullptr
        || as<dynamic_thing>(&made) != nullptr || as<output_thing>(&made) != nullptr;
    return is_picture && std::find(names.begin(), names.end(), name) != names.end();
}

static int thing_index(lua_State* L)
{
    const thing& made = *thing_at(L, 1);
    const std::string name = lua_type(L, 2) == LUA_TSTRING ? lua_tostring(L, 2) : "";
    if (push_picture_method(L, made, name) || push_curve_method(L, made, name) || push_scene_method(L, made, name))
        return 1;
    const std::vector<std::string> methods = methods_of(made);
    raise_error(L,
        what_is(L, 1) + " has no \"" + name + "\""
            + (!methods.empty() ? suggestion(name, methods)
                    : is_of_pictures(made, name)
                    ? ": only generated pictures are worked on, like texture.noise { }:blur()."
                    : std::string(", and nothing else that could be asked of it.")));
}

static int thing_newindex(lua_State* L)
{
    raise_error(L, what_is(L, 1) + " cannot be changed: make another one, " + "with the fields that it is to have.");
}

static int thing_call(lua_State* L)
{
    thing& made = *thing_at(L, 1);
    const bool is_shape
        = as<mesh_thing>(&made) != nullptr || as<effect_thing>(&made) != nullptr || as<font_thing>(&made) != nullptr;
    const bool is_picture = as<image_thing>(&made) != nullptr || as<cube_map_thing>(&made) != nullptr
        || as<dynamic_thing>(&made) != nullptr;
    if (as<scene_thing>(&made) != nullptr)
        call_scene(L, made);
    else if (is_shape && configures_shape(L, made))
        configure_shape(L, made);
    else if (is_shape || as<reference_thing>(&made) != nullptr)
        place(L, made);
    else if (as<placed_thing>(&made) != nullptr)
        configure_placed(L, made);
    else if (as<entry_thing>(&made) != nullptr)
        configure_entry(L, made);
    else if (is_picture)
        configure_picture(L, made);
    else
        raise_error(L,
            what_is(L, 1) + " is not called: "
                + (as<curve_thing>(&made) != nullptr || as<path_thing>(&made) != nullptr
                        ? "its value at a time is curve:at(\"1s\")."
                        : "it is finished as it is; make another one, with the fields that it is to have."));
    return 1;
}

static int thing_text(lua_State* L)
{
    const thing& made = *thing_at(L, 1);
    lua_pushstring(L, (what_is(L, 1) + (made.name.empty() ? "" : " \"" + made.name + "\"")).c_str());
    return 1;
}

static int thing_equal(lua_State* L)
{
    lua_pushboolean(L, thing_at(L, 1) != nullptr && thing_at(L, 1) == thing_at(L, 2));
    return 1;
}

static void define_things(lua_State* L)
{
    static constexpr luaL_Reg methods[]
        = {{"__index", guarded<thing_index>}, {"__newindex", guarded<thing_newindex>}, {"__call", guarded<thing_call>},
            {"__tostring", guarded<thing_text>}, {"__eq", guarded<thing_equal>}, {nullptr, nullptr}};
    luaL_newmetatable(L, "thing");
    luaL_setfuncs(L, methods, 0);
    add_arithmetic(L);
    lua_pushstring(L, "locked");
    lua_setfield(L, -2, "__metatable"); // a source cannot reach it
    lua_pop(L, 1);
}

// ---- all words ------------------------------------------------------------------------------

int add_words(lua_State* L)
{
    define_things(L);
    define_curve_words(L);
    define_picture_words(L);
    define_shape_words(L);
    define_surface_words(L);
    define_scene_words(L);
    define_try_word(L);
    return 0;
}
