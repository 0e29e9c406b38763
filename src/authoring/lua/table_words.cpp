// The library "table". Those of Lua's own functions that may run without end on a table that lies about its length are
// written anew, with a charge for each element; sorting is stable, so that equal elements keep their order.
#include "authoring/lua/sandbox.h"
#include "authoring/lua/sandbox_state.h"

#include <algorithm>
#include <bit>
#include <utility>

static constexpr lua_Integer longest_list = lua_Integer{1} << 24;

static lua_Integer list_length(lua_State* L, const char* word)
{
    if (!lua_istable(L, 1)) {
        raise_error(L, std::string(word) + " takes a table, and this is " + value_kind(L, 1) + ".");
    }
    const lua_Integer length = luaL_len(L, 1);
    if (length < 0 || length > longest_list) {
        raise_error(L, std::string(word) + ": this table says that it has " + std::to_string(length) + " elements.");
    }
    return length;
}

static int insert_word(lua_State* L)
{
    const lua_Integer end = list_length(L, "table.insert") + 1;
    if (lua_gettop(L) != 2 && lua_gettop(L) != 3) {
        raise_error(L, "table.insert takes a table, a place (or none) and a value.");
    }
    lua_Integer at = end;
    if (lua_gettop(L) == 3) {
        at = luaL_checkinteger(L, 2);
        if (at < 1 || at > end) {
            raise_error(
                L, "table.insert: the place " + std::to_string(at) + " is outside 1 to " + std::to_string(end) + ".");
        }
        charge_steps(L, static_cast<uint64_t>(end - at));
        for (lua_Integer i = end; i > at; --i) {
            lua_geti(L, 1, i - 1);
            lua_seti(L, 1, i);
        }
    }
    lua_seti(L, 1, at);
    return 0;
}

static int remove_word(lua_State* L)
{
    const lua_Integer length = list_length(L, "table.remove");
    lua_Integer at = luaL_optinteger(L, 2, length);
    if (lua_gettop(L) > 1 && (at < 1 || at > length + 1) && !(length == 0 && at == 0)) {
        raise_error(L,
            "table.remove: the place " + std::to_string(at) + " is outside 1 to " + std::to_string(length + 1) + ".");
    }
    lua_geti(L, 1, at);
    charge_steps(L, static_cast<uint64_t>(at < length ? length - at : 0));
    for (; at < length; ++at) {
        lua_geti(L, 1, at + 1);
        lua_seti(L, 1, at);
    }
    lua_pushnil(L);
    lua_seti(L, 1, at);
    return 1;
}

static int move_word(lua_State* L)
{
    const lua_Integer first = luaL_checkinteger(L, 2);
    const lua_Integer last = luaL_checkinteger(L, 3);
    const lua_Integer to = luaL_checkinteger(L, 4);
    const int target = lua_isnoneornil(L, 5) ? 1 : 5;
    luaL_checktype(L, 1, LUA_TTABLE);
    luaL_checktype(L, target, LUA_TTABLE);
    lua_settop(L, 5);
    if (last >= first) {
        const uint64_t span = static_cast<uint64_t>(last) - static_cast<uint64_t>(first);
        if (span >= static_cast<uint64_t>(longest_list) || to > LUA_MAXINTEGER - static_cast<lua_Integer>(span)) {
            raise_error(L, "table.move: these are too many elements.");
        }
        charge_steps(L, span + 1);
        const bool overlaps = target == 1 && to > first && to <= last;
        for (uint64_t n = 0; n <= span; ++n) {
            const lua_Integer i = static_cast<lua_Integer>(overlaps ? span - n : n);
            lua_geti(L, 1, first + i);
            lua_seti(L, target, to + i);
        }
    }
    lua_pushvalue(L, target);
    return 1;
}

// Whether the value at `a` comes before the one at `b`: by the function at index 2, or by "<".
static bool comes_before(lua_State* L, int a, int b)
{
    if (lua_isnil(L, 2)) {
        return lua_compare(L, a, b, LUA_OPLT) != 0;
    }
    lua_pushvalue(L, 2);
    lua_pushvalue(L, a < 0 ? a - 1 : a);
    lua_pushvalue(L, b < 0 ? b - 2 : b);
    lua_call(L, 2, 1);
    const bool before = lua_toboolean(L, -1) != 0;
    lua_pop(L, 1);
    return before;
}

// Merges the sorted runs first..middle and middle..end (ends excluded) of the list at index `from` into that at `to`.
static void merge_runs(lua_State* L, int from, int to, lua_Integer first, lua_Integer middle, lua_Integer end)
{
    lua_Integer left = first;
    lua_Integer right = middle;
    for (lua_Integer i = first; i < end; ++i) {
        bool take_right = left >= middle;
        if (left < middle && right < end) {
            lua_rawgeti(L, from, left);
            lua_rawgeti(L, from, right);
            take_right = comes_before(L, -1, -2);
            lua_pop(L, 2);
        }
        lua_rawgeti(L, from, take_right ? right++ : left++);
        lua_rawseti(L, to, i);
    }
}

// Always the same comparisons, n log n of them, whatever they answer.
static int sort_word(lua_State* L)
{
    const lua_Integer length = list_length(L, "table.sort");
    if (!lua_isnoneornil(L, 2)) {
        luaL_checktype(L, 2, LUA_TFUNCTION);
    }
    lua_settop(L, 2);
    charge_steps(
        L, static_cast<uint64_t>(length) * static_cast<uint64_t>(std::bit_width(static_cast<uint64_t>(length))));
    lua_createtable(L, static_cast<int>(length), 0);
    lua_createtable(L, static_cast<int>(length), 0);
    for (lua_Integer i = 1; i <= length; ++i) {
        lua_geti(L, 1, i);
        lua_rawseti(L, 3, i);
    }
    int from = 3;
    int to = 4;
    for (lua_Integer width = 1; width < length; width *= 2) {
        for (lua_Integer first = 1; first <= length; first += 2 * width) {
            const lua_Integer middle = std::min(first + width, length + 1);
            merge_runs(L, from, to, first, middle, std::min(middle + width, length + 1));
        }
        std::swap(from, to);
    }
    for (lua_Integer i = 1; i <= length; ++i) {
        lua_rawgeti(L, from, i);
        lua_seti(L, 1, i);
    }
    return 0;
}

void define_table_words(lua_State* L)
{
    luaL_requiref(L, LUA_TABLIBNAME, luaopen_table, 0);
    const luaL_Reg own[] = {{"insert", guarded<insert_word>}, {"move", guarded<move_word>},
        {"remove", guarded<remove_word>}, {"sort", guarded<sort_word>}, {nullptr, nullptr}};
    luaL_setfuncs(L, own, 0);
    make_strict(L, -1, "table");
    define_value(L, "table");
}
