#include "sandbox_runs.h"

#include "authoring/lua/sandbox_state.h"
#include "authoring/lua/words.h"
#include "authoring/show/language.h"

#include <doctest/doctest.h>
#include <lua.hpp>

#include <cstring>
#include <fstream>
#include <iterator>
#include <set>

namespace {

using names_of_words = std::set<std::string>;

} // namespace

static int take_words(lua_State* L)
{
    auto& names = *static_cast<names_of_words*>(sandbox_user(L));
    push_words(L);
    lua_pushnil(L);
    while (lua_next(L, -2) != 0) {
        names.insert(lua_tostring(L, -2));
        lua_pop(L, 1);
    }
    lua_pop(L, 1);
    return 0;
}

// The words of a sandbox, the language's among them or not.
static names_of_words words_of_sandbox(bool with_language)
{
    names_of_words names;
    sandbox_options options;
    options.user = &names;
    const owned_sandbox s = sandbox_open(options);
    if (with_language) {
        REQUIRE(sandbox_run_function(*s, add_words));
        REQUIRE(sandbox_run_library(*s, "words"));
    }
    REQUIRE(sandbox_run_function(*s, take_words));
    return names;
}

static names_of_words words_of_table()
{
    names_of_words names;
    for (const word_row& word : language_words())
        if (std::strpbrk(word.name, ":.") == nullptr) // what things and tables of words can do
            names.insert(word.name);
    return names;
}

TEST_CASE("every word of the language stands in its table, and every word of the table is known")
{
    names_of_words known = words_of_sandbox(true);
    for (const std::string& plain : words_of_sandbox(false))
        known.erase(plain);
    known.insert("require"); // Lua has it, and it does something of its own here
    const names_of_words written = words_of_table();
    std::string unlike; // what is in one of them only
    const names_of_words* both[] = {&known, &written};
    for (const names_of_words* names : both)
        for (const std::string& name : *names)
            unlike += known.contains(name) && written.contains(name) ? "" : name + " ";
    CHECK(unlike == "");
}

TEST_CASE("the annotations for editors are Lua, and define every word")
{
    std::ifstream file(BRIMLOW_SOURCE_DIR "/share/brimlow/library/annotations.lua");
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    lua_State* L = luaL_newstate();
    REQUIRE(luaL_loadbuffer(L, text.data(), text.size(), "annotations") == LUA_OK);
    REQUIRE(lua_pcall(L, 0, 0, 0) == LUA_OK);
    for (const std::string& word : words_of_table()) {
        INFO(word);
        CHECK((lua_getglobal(L, word.c_str()) != LUA_TNIL || word == "require"));
        lua_pop(L, 1);
    }
    lua_close(L);
}

TEST_CASE("words of the table give examples and say what they are")
{
    for (const word_row& word : language_words()) {
        INFO(word.name);
        CHECK(std::string(word.help).ends_with("."));
        std::ifstream example(BRIMLOW_SOURCE_DIR "/productions/examples/" + std::string(word.example) + "/show.lua");
        CHECK(example.good());
    }
}
