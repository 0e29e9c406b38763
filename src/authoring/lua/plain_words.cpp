// The words of Lua that every source has: its base functions, mathematics, and random numbers.
#include "authoring/lua/sandbox.h"
#include "authoring/lua/sandbox_state.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

static constexpr uint32_t most_lines_printed = 10'000;

static const char numbers_key = 0; // of the registry: the numbers that tables and functions have in texts

// ---- values ----------------------------------------------------------------------------------------------------

static const char* own_kind_name(lua_State* L, int index)
{
    if (luaL_getmetafield(L, index, "__name") == LUA_TSTRING) {
        const char* name = lua_tostring(L, -1);
        lua_pop(L, 1); // the metatable keeps it
        return name;
    }
    return nullptr;
}

std::string value_kind(lua_State* L, int index)
{
    switch (lua_type(L, index)) {
    case LUA_TNONE:
    case LUA_TNIL:
        return "nothing (nil)";
    case LUA_TBOOLEAN:
        return lua_toboolean(L, index) != 0 ? "true" : "false";
    case LUA_TNUMBER:
        return "a number";
    case LUA_TSTRING:
        return "a text";
    }
    const char* own = own_kind_name(L, lua_absindex(L, index));
    const std::string name = own != nullptr ? own : luaL_typename(L, index);
    const bool vowel = !name.empty() && std::string_view("aeiou").find(name[0]) != std::string_view::npos;
    return (vowel ? "an " : "a ") + name;
}

// "table: 3": its number is given when it is first asked for.
static std::string numbered_name(lua_State* L, int index)
{
    const char* own = own_kind_name(L, index);
    const std::string name = own != nullptr ? own : luaL_typename(L, index);
    lua_rawgetp(L, LUA_REGISTRYINDEX, &numbers_key);
    lua_pushvalue(L, index);
    lua_rawget(L, -2);
    lua_Integer number = lua_tointeger(L, -1);
    lua_pop(L, 1);
    if (number == 0) {
        lua_pushlstring(L, name.data(), name.size());
        lua_pushvalue(L, -1);
        lua_rawget(L, -3);
        number = lua_tointeger(L, -1) + 1;
        lua_pop(L, 1);
        lua_pushinteger(L, number);
        lua_rawset(L, -3); // the last number of its kind
        lua_pushvalue(L, index);
        lua_pushinteger(L, number);
        lua_rawset(L, -3);
    }
    lua_pop(L, 1);
    return name + ": " + std::to_string(number);
}

std::string value_text(lua_State* L, int index)
{
    index = lua_absindex(L, index);
    luaL_checkstack(L, 6, "too many values");
    size_t length = 0;
    if (luaL_callmeta(L, index, "__tostring") != 0) {
        if (lua_isstring(L, -1) == 0) {
            raise_error(L, "\"__tostring\" must give a text.");
        }
        const char* text = lua_tolstring(L, -1, &length);
        std::string result(text, length);
        lua_pop(L, 1);
        return result;
    }
    switch (lua_type(L, index)) {
    case LUA_TNIL:
        return "nil";
    case LUA_TBOOLEAN:
        return lua_toboolean(L, index) != 0 ? "true" : "false";
    case LUA_TNUMBER:
        if (lua_isinteger(L, index) == 0 && std::isnan(lua_tonumber(L, index))) {
            return "nan"; // some processors give it a sign
        }
        break;
    case LUA_TSTRING:
        break;
    default:
        return numbered_name(L, index);
    }
    lua_pushvalue(L, index); // a number may be a key of the table that is being walked: not it itself
    const char* text = lua_tolstring(L, -1, &length);
    std::string result(text, length);
    lua_pop(L, 1);
    charge_steps(L, length / 16);
    return result;
}

// ---- tables in order -------------------------------------------------------------------------------------------

namespace {

struct table_key {
    int type; // LUA_TNUMBER, LUA_TSTRING or LUA_TBOOLEAN
    bool is_integer;
    bool truth;
    lua_Integer integer;
    lua_Number number;
    std::string_view text; // lives in the table
};

} // namespace

static bool integer_below(lua_Integer i, lua_Number n)
{
    if (n >= 0x1p63) {
        return true;
    }
    return n >= -0x1p63 && i <= static_cast<lua_Integer>(std::floor(n)); // n is not whole: such a key is an integer
}

static bool key_below(const table_key& a, const table_key& b)
{
    if (a.type != b.type) {
        const auto rank = [](int type) { return type == LUA_TNUMBER ? 0 : type == LUA_TSTRING ? 1 : 2; };
        return rank(a.type) < rank(b.type);
    }
    if (a.type == LUA_TSTRING) {
        return a.text < b.text;
    }
    if (a.type == LUA_TBOOLEAN) {
        return !a.truth && b.truth;
    }
    if (a.is_integer && b.is_integer) {
        return a.integer < b.integer;
    }
    if (a.is_integer) {
        return integer_below(a.integer, b.number);
    }
    return b.is_integer ? !integer_below(b.integer, a.number) : a.number < b.number;
}

static table_key read_key(lua_State* L, int index)
{
    table_key key = {};
    key.type = lua_type(L, index);
    switch (key.type) {
    case LUA_TNUMBER:
        key.is_integer = lua_isinteger(L, index) != 0;
        key.integer = key.is_integer ? lua_tointeger(L, index) : 0;
        key.number = lua_tonumber(L, index);
        break;
    case LUA_TSTRING: {
        size_t length = 0;
        const char* text = lua_tolstring(L, index, &length);
        key.text = {text, length};
        break;
    }
    case LUA_TBOOLEAN:
        key.truth = lua_toboolean(L, index) != 0;
        break;
    default:
        raise_error(L,
            "a field's name here is " + value_kind(L, index)
                + ", and those have no order to walk in: keep a list beside the table.");
    }
    return key;
}

static void push_key(lua_State* L, const table_key& key)
{
    if (key.type == LUA_TSTRING) {
        lua_pushlstring(L, key.text.data(), key.text.size());
    } else if (key.type == LUA_TBOOLEAN) {
        lua_pushboolean(L, key.truth ? 1 : 0);
    } else if (key.is_integer) {
        lua_pushinteger(L, key.integer);
    } else {
        lua_pushnumber(L, key.number);
    }
}

size_t push_sorted_keys(lua_State* L, int index)
{
    index = lua_absindex(L, index);
    luaL_checkstack(L, 6, "too many values");
    std::vector<table_key> keys;
    for (lua_pushnil(L); lua_next(L, index) != 0; lua_pop(L, 1)) {
        keys.push_back(read_key(L, -2));
        if (keys.size() % 1024 == 0) {
            charge_steps(L, 1024);
        }
    }
    charge_steps(L, keys.size() * static_cast<size_t>(std::bit_width(keys.size())) / 4);
    std::sort(keys.begin(), keys.end(), key_below);
    lua_createtable(L, static_cast<int>(keys.size()), 0);
    for (size_t i = 0; i < keys.size(); ++i) {
        push_key(L, keys[i]);
        lua_rawseti(L, -2, static_cast<lua_Integer>(i + 1));
    }
    return keys.size();
}

// The next of pairs: table, sorted keys, how many were given.
static int give_next_pair(lua_State* L)
{
    lua_Integer i = lua_tointeger(L, lua_upvalueindex(3));
    for (;;) {
        ++i;
        if (lua_rawgeti(L, lua_upvalueindex(2), i) == LUA_TNIL) {
            return 1;
        }
        lua_pushvalue(L, -1);
        if (lua_rawget(L, lua_upvalueindex(1)) != LUA_TNIL) { // else it was taken out meanwhile
            lua_pushinteger(L, i);
            lua_replace(L, lua_upvalueindex(3));
            return 2;
        }
        lua_settop(L, 0);
        if (i % 1024 == 0) {
            charge_steps(L, 1024);
        }
    }
}

static void want_table(lua_State* L, const char* word)
{
    if (!lua_istable(L, 1)) {
        raise_error(L, std::string(word) + " walks a table, and this is " + value_kind(L, 1) + ".");
    }
}

static int pairs_word(lua_State* L)
{
    luaL_checkany(L, 1);
    if (luaL_getmetafield(L, 1, "__pairs") != LUA_TNIL) {
        lua_pushvalue(L, 1);
        lua_call(L, 1, 3);
        return 3;
    }
    want_table(L, "pairs");
    lua_settop(L, 1);
    push_sorted_keys(L, 1);
    lua_pushinteger(L, 0);
    lua_pushcclosure(L, give_next_pair, 3);
    return 1;
}

// The least key above the one given: each call looks at the whole table.
static int next_word(lua_State* L)
{
    want_table(L, "next");
    lua_settop(L, 2);
    const bool from_begin = lua_isnil(L, 2);
    const table_key after = from_begin ? table_key() : read_key(L, 2);
    table_key least = {};
    bool found = false;
    uint64_t count = 0;
    for (lua_pushnil(L); lua_next(L, 1) != 0; lua_pop(L, 1)) {
        const table_key key = read_key(L, -2);
        if ((from_begin || key_below(after, key)) && (!found || key_below(key, least))) {
            least = key;
            found = true;
        }
        if (++count % 1024 == 0) {
            charge_steps(L, 1024);
        }
    }
    charge_steps(L, count % 1024);
    if (!found) {
        lua_pushnil(L);
        return 1;
    }
    push_key(L, least);
    lua_pushvalue(L, -1);
    lua_rawget(L, 1);
    return 2;
}

// ---- base words ------------------------------------------------------------------------------------------------

static int tostring_word(lua_State* L)
{
    luaL_checkany(L, 1);
    const std::string text = value_text(L, 1);
    lua_pushlstring(L, text.data(), text.size());
    return 1;
}

static int print_word(lua_State* L)
{
    sandbox& s = sandbox_of(L);
    const int count = lua_gettop(L);
    std::string line;
    for (int i = 1; i <= count; ++i) {
        line += (i > 1 ? "\t" : "") + value_text(L, i);
        if (line.size() > s.options.text_limit) {
            stop_run(L, stop_text);
        }
    }
    charge_steps(L, line.size() / 16);
    if (s.options.print == nullptr || s.lines_printed > most_lines_printed) {
        return 0;
    }
    s.lines_printed += 1;
    const bool is_last = s.lines_printed > most_lines_printed;
    s.options.print(s.options.user, is_last ? "(what is printed after 10,000 lines is not shown)" : line.c_str());
    return 0;
}

static int pcall_word(lua_State* L)
{
    luaL_checkany(L, 1);
    lua_pushboolean(L, 1);
    lua_insert(L, 1);
    const int status = lua_pcall(L, lua_gettop(L) - 2, LUA_MULTRET, 0);
    if (status != LUA_OK) {
        keep_stopped(L, status);
        lua_pushboolean(L, 0);
        lua_insert(L, -2);
        return 2;
    }
    return lua_gettop(L);
}

// The handler given to xpcall, which does not see the end of a run: it could hold it up.
static int call_handler(lua_State* L)
{
    if (sandbox_of(L).stopped != stop_none) {
        return 1;
    }
    lua_settop(L, 1);
    lua_pushvalue(L, lua_upvalueindex(1));
    lua_insert(L, 1);
    lua_call(L, 1, 1);
    return 1;
}

static int xpcall_word(lua_State* L)
{
    luaL_checktype(L, 2, LUA_TFUNCTION);
    const int given = lua_gettop(L) - 2;
    lua_pushvalue(L, 2);
    lua_pushcclosure(L, call_handler, 1);
    lua_replace(L, 2);
    lua_pushvalue(L, 1); // handler at 2, the function, then what it is given
    lua_insert(L, 3);
    const int status = lua_pcall(L, given, LUA_MULTRET, 2);
    if (status != LUA_OK) {
        keep_stopped(L, status);
        lua_pushboolean(L, 0);
        lua_insert(L, -2);
        return 2;
    }
    lua_pushboolean(L, 1);
    lua_replace(L, 2);
    return lua_gettop(L) - 1;
}

static int setmetatable_word(lua_State* L)
{
    luaL_checktype(L, 1, LUA_TTABLE);
    if (!lua_istable(L, 2) && !lua_isnil(L, 2)) {
        raise_error(L, "setmetatable takes a table or nil, and this is " + value_kind(L, 2) + ".");
    }
    lua_settop(L, 2);
    if (luaL_getmetafield(L, 1, "__metatable") != LUA_TNIL) {
        raise_error(L, "this table's metatable cannot be changed.");
    }
    for (const char* hook : {"__gc", "__mode"}) { // what happens when memory is collected, nobody knows when
        if (lua_istable(L, 2)) {
            lua_pushstring(L, hook);
            if (lua_rawget(L, 2) != LUA_TNIL) {
                raise_error(L, std::string("a show's metatables have no \"") + hook + "\".");
            }
            lua_pop(L, 1);
        }
    }
    lua_settop(L, 2);
    lua_setmetatable(L, 1);
    return 1;
}

// Of tables alone: those of texts and objects are the program's own.
static int getmetatable_word(lua_State* L)
{
    luaL_checkany(L, 1);
    if (!lua_istable(L, 1) || lua_getmetatable(L, 1) == 0) {
        lua_pushnil(L);
        return 1;
    }
    luaL_getmetafield(L, 1, "__metatable");
    return 1;
}

// ---- random numbers --------------------------------------------------------------------------------------------

// splitmix64: spreads a seed over the state.
static uint64_t spread_seed(uint64_t& seed)
{
    seed += 0x9e3779b97f4a7c15;
    uint64_t z = seed;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
    z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
    return z ^ (z >> 31);
}

void set_random_seed(lua_State* L, uint64_t seed)
{
    for (uint64_t& word : sandbox_of(L).random) {
        word = spread_seed(seed);
    }
}

// xoshiro256**
static uint64_t random_bits(sandbox& s)
{
    uint64_t* const state = s.random;
    const uint64_t result = std::rotl(state[1] * 5, 7) * 9;
    const uint64_t shifted = state[1] << 17;
    state[2] ^= state[0];
    state[3] ^= state[1];
    state[1] ^= state[2];
    state[0] ^= state[3];
    state[2] ^= shifted;
    state[3] = std::rotl(state[3], 45);
    return result;
}

double random_number(lua_State* L)
{
    return static_cast<double>(random_bits(sandbox_of(L)) >> 11) * 0x1p-53;
}

// Each of 0 .. count - 1 alike; count 0: all 64 bits.
static uint64_t random_below(sandbox& s, uint64_t count)
{
    if (count == 0) {
        return random_bits(s);
    }
    const uint64_t uneven = (0 - count) % count; // numbers that would make the first ones likelier
    for (;;) {
        const uint64_t bits = random_bits(s);
        if (bits >= uneven) {
            return bits % count;
        }
    }
}

static int random_word(lua_State* L)
{
    const int given = lua_gettop(L);
    if (given == 0) {
        lua_pushnumber(L, random_number(L));
        return 1;
    }
    const lua_Integer low = given == 1 ? 1 : luaL_checkinteger(L, 1);
    const lua_Integer high = luaL_checkinteger(L, given == 1 ? 1 : 2);
    if (low > high) {
        raise_error(L, "math.random cannot choose from " + std::to_string(low) + " to " + std::to_string(high) + ".");
    }
    const uint64_t count = static_cast<uint64_t>(high) - static_cast<uint64_t>(low) + 1;
    lua_pushinteger(L, static_cast<lua_Integer>(static_cast<uint64_t>(low) + random_below(sandbox_of(L), count)));
    return 1;
}

static int randomseed_word(lua_State* L)
{
    if (lua_type(L, 1) != LUA_TNUMBER) {
        raise_error(L, "math.randomseed takes a number: equal numbers give equal shows.");
    }
    const lua_Number number = lua_tonumber(L, 1);
    set_random_seed(
        L, lua_isinteger(L, 1) != 0 ? static_cast<uint64_t>(lua_tointeger(L, 1)) : std::bit_cast<uint64_t>(number));
    return 0;
}

// ---- definition ------------------------------------------------------------------------------------------------

// Lua's own says of nothing only that it has no fields, and says it where the loop is.
static int ipairs_word(lua_State* L)
{
    if (!lua_istable(L, 1)) {
        raise_error(L, "ipairs walks a list, and this is " + value_kind(L, 1) + ".");
    }
    lua_settop(L, 1);
    lua_pushvalue(L, lua_upvalueindex(1));
    lua_insert(L, 1);
    lua_call(L, 1, 3);
    return 3;
}

static void define_base(lua_State* L)
{
    luaL_requiref(L, LUA_GNAME, luaopen_base, 0);
    for (const char* name : {"assert", "error", "rawget", "rawlen", "rawset", "select", "tonumber", "type"}) {
        lua_getfield(L, -1, name);
        define_value(L, name);
    }
    lua_getfield(L, -1, "ipairs");
    lua_pushcclosure(L, guarded<ipairs_word>, 1);
    define_value(L, "ipairs");
    lua_pop(L, 1);
    define_word(L, "getmetatable", guarded<getmetatable_word>);
    define_word(L, "next", guarded<next_word>);
    define_word(L, "pairs", guarded<pairs_word>);
    define_word(L, "pcall", guarded<pcall_word>);
    define_word(L, "print", guarded<print_word>);
    define_word(L, "setmetatable", guarded<setmetatable_word>);
    define_word(L, "tostring", guarded<tostring_word>);
    define_word(L, "xpcall", guarded<xpcall_word>);
    push_globals(L);
    define_value(L, "_G");
}

void define_plain_words(lua_State* L)
{
    lua_newtable(L); // forgets what is gone
    lua_newtable(L);
    lua_pushstring(L, "k");
    lua_setfield(L, -2, "__mode");
    lua_setmetatable(L, -2);
    lua_rawsetp(L, LUA_REGISTRYINDEX, &numbers_key);
    define_base(L);
    luaL_requiref(L, LUA_MATHLIBNAME, luaopen_math, 0);
    lua_pushcfunction(L, guarded<random_word>);
    lua_setfield(L, -2, "random");
    lua_pushcfunction(L, guarded<randomseed_word>);
    lua_setfield(L, -2, "randomseed");
    make_strict(L, -1, "math");
    define_value(L, "math");
    luaL_requiref(L, LUA_UTF8LIBNAME, luaopen_utf8, 0);
    make_strict(L, -1, "utf8");
    define_value(L, "utf8");
    lua_settop(L, 0);
}
