// The library "string", also as methods of texts. What may run without end in C (patterns, repetition) is written
// anew with a charge for the work; what shows addresses or bytes of this machine is left out.
#include "authoring/lua/pattern.h"
#include "authoring/lua/sandbox.h"
#include "authoring/lua/sandbox_state.h"

#include <algorithm>
#include <cstring>

static constexpr uint64_t trials_a_step = 2;
static constexpr size_t longest_pattern_told = 60;
static constexpr const char* pattern_characters = "^$*+?.([%-";

// ---- patterns --------------------------------------------------------------------------------------------------

static void charge_trials(void* user, uint64_t count)
{
    charge_steps(static_cast<lua_State*>(user), count / trials_a_step);
}

static std::string_view text_at(lua_State* L, int index)
{
    size_t length = 0;
    const char* text = luaL_checklstring(L, index, &length);
    return {text, length};
}

// The matcher of `pattern`, and whether a "^" at its beginning, taken off, holds it to one place.
static pattern_match begin_match(lua_State* L, std::string_view subject, std::string_view pattern, bool& anchored)
{
    pattern_match m = {};
    m.subject = subject;
    anchored = pattern.starts_with('^');
    m.pattern = anchored ? pattern.substr(1) : pattern;
    m.tried = charge_trials;
    m.user = L;
    return m;
}

[[noreturn]] static void raise_wrong_pattern(lua_State* L, const pattern_match& m, const std::string& why)
{
    const bool is_long = m.pattern.size() > longest_pattern_told;
    raise_error(L,
        "the pattern \"" + std::string(m.pattern.substr(0, longest_pattern_told)) + (is_long ? "...\"" : "\"")
            + " is wrong: " + why + ".");
}

// match_pattern; raises for a pattern that is none.
static size_t match_or_raise(lua_State* L, pattern_match& m, size_t begin)
{
    const size_t end = match_pattern(m, begin);
    if (m.fault != nullptr) {
        raise_wrong_pattern(L, m, m.fault);
    }
    return end;
}

static void push_capture(lua_State* L, const pattern_match& m, size_t i, size_t begin, size_t end)
{
    if (i == 0 && m.capture_count == 0) {
        lua_pushlstring(L, m.subject.data() + begin, end - begin);
        return;
    }
    if (i >= m.capture_count) {
        raise_error(L, "the pattern has no capture " + std::to_string(i + 1) + ".");
    }
    const pattern_capture& c = m.captures[i];
    if (c.length == open_capture) {
        raise_wrong_pattern(L, m, "a \")\" is missing");
    }
    if (c.length == position_capture) {
        lua_pushinteger(L, static_cast<lua_Integer>(c.begin + 1));
    } else {
        lua_pushlstring(L, m.subject.data() + c.begin, c.length);
    }
}

// Pushes all captures; without one the whole match, when that is wanted.
static int push_captures(lua_State* L, const pattern_match& m, size_t begin, size_t end, bool whole)
{
    const size_t count = m.capture_count == 0 && whole ? 1 : m.capture_count;
    luaL_checkstack(L, static_cast<int>(count), "too many captures");
    for (size_t i = 0; i < count; ++i) {
        push_capture(L, m, i, begin, end);
    }
    return static_cast<int>(count);
}

// The optional place at `index`, from 0; one before the beginning is the beginning.
static size_t begin_at(lua_State* L, int index, size_t length)
{
    const lua_Integer given = luaL_optinteger(L, index, 1);
    if (given > 0) {
        return static_cast<size_t>(given) - 1;
    }
    const lua_Integer from_end
        = given == 0 || given < -static_cast<lua_Integer>(length) ? -static_cast<lua_Integer>(length) : given;
    return length - static_cast<size_t>(-from_end);
}

static int find_plain(lua_State* L, std::string_view subject, std::string_view wanted, size_t begin)
{
    charge_steps(L, (subject.size() - begin) / 16);
    const void* found = memmem(subject.data() + begin, subject.size() - begin, wanted.data(), wanted.size());
    if (found == nullptr) {
        lua_pushnil(L);
        return 1;
    }
    const size_t at = static_cast<size_t>(static_cast<const char*>(found) - subject.data());
    lua_pushinteger(L, static_cast<lua_Integer>(at + 1));
    lua_pushinteger(L, static_cast<lua_Integer>(at + wanted.size()));
    return 2;
}

static int find_or_match(lua_State* L, bool is_find)
{
    const std::string_view subject = text_at(L, 1);
    const std::string_view pattern = text_at(L, 2);
    size_t begin = begin_at(L, 3, subject.size());
    if (begin > subject.size()) {
        lua_pushnil(L);
        return 1;
    }
    if (is_find && (lua_toboolean(L, 4) != 0 || pattern.find_first_of(pattern_characters) == std::string_view::npos)) {
        return find_plain(L, subject, pattern, begin);
    }
    bool anchored = false;
    pattern_match m = begin_match(L, subject, pattern, anchored);
    do {
        const size_t end = match_or_raise(L, m, begin);
        if (end != no_match && is_find) {
            lua_pushinteger(L, static_cast<lua_Integer>(begin + 1));
            lua_pushinteger(L, static_cast<lua_Integer>(end));
            return 2 + push_captures(L, m, begin, end, false);
        }
        if (end != no_match) {
            return push_captures(L, m, begin, end, true);
        }
    } while (++begin <= subject.size() && !anchored);
    lua_pushnil(L);
    return 1;
}

static int find_word(lua_State* L)
{
    return find_or_match(L, true);
}

static int match_word(lua_State* L)
{
    return find_or_match(L, false);
}

// The iterator of gmatch: subject, pattern, where to go on, where the last match ended (-1: none yet).
static int give_next_match(lua_State* L)
{
    const std::string_view subject = text_at(L, lua_upvalueindex(1));
    bool anchored = false;
    pattern_match m = begin_match(L, subject, {}, anchored);
    m.pattern = text_at(L, lua_upvalueindex(2)); // "^" is a character here: an anchor would end the walk at once
    const lua_Integer last = lua_tointeger(L, lua_upvalueindex(4));
    for (size_t begin = static_cast<size_t>(lua_tointeger(L, lua_upvalueindex(3))); begin <= subject.size(); ++begin) {
        const size_t end = match_or_raise(L, m, begin);
        if (end != no_match && static_cast<lua_Integer>(end) != last) {
            lua_pushinteger(L, static_cast<lua_Integer>(end));
            lua_pushvalue(L, -1);
            lua_replace(L, lua_upvalueindex(3));
            lua_replace(L, lua_upvalueindex(4));
            return push_captures(L, m, begin, end, true);
        }
    }
    lua_pushinteger(L, static_cast<lua_Integer>(subject.size() + 1));
    lua_replace(L, lua_upvalueindex(3));
    return 0;
}

static int gmatch_word(lua_State* L)
{
    const std::string_view subject = text_at(L, 1);
    text_at(L, 2);
    const size_t begin = std::min(begin_at(L, 3, subject.size()), subject.size() + 1);
    lua_settop(L, 2);
    lua_pushinteger(L, static_cast<lua_Integer>(begin));
    lua_pushinteger(L, -1);
    lua_pushcclosure(L, guarded<give_next_match>, 4);
    return 1;
}

static void add_replacement_text(lua_State* L, luaL_Buffer& result, const pattern_match& m, size_t begin, size_t end)
{
    const std::string_view with = text_at(L, 3);
    for (size_t i = 0; i < with.size(); ++i) {
        if (with[i] != '%') {
            luaL_addchar(&result, with[i]);
            continue;
        }
        const char digit = ++i < with.size() ? with[i] : '\0';
        if (digit == '%') {
            luaL_addchar(&result, '%');
        } else if (digit == '0') {
            luaL_addlstring(&result, m.subject.data() + begin, end - begin);
        } else if (digit >= '1' && digit <= '9') {
            push_capture(L, m, static_cast<size_t>(digit - '1'), begin, end);
            luaL_tolstring(L, -1, nullptr); // a position is a number
            lua_remove(L, -2);
            luaL_addvalue(&result);
        } else {
            raise_error(L, "string.gsub: in the new text \"%\" stands before a digit or another \"%\".");
        }
    }
}

// What takes the place of a match: by the text, table or function at index 3.
static void add_replacement(lua_State* L, luaL_Buffer& result, const pattern_match& m, size_t begin, size_t end)
{
    if (lua_type(L, 3) == LUA_TNUMBER || lua_type(L, 3) == LUA_TSTRING) {
        add_replacement_text(L, result, m, begin, end);
        return;
    }
    if (lua_istable(L, 3)) {
        push_capture(L, m, 0, begin, end);
        lua_gettable(L, 3);
    } else {
        lua_pushvalue(L, 3);
        lua_call(L, push_captures(L, m, begin, end, true), 1);
    }
    if (lua_toboolean(L, -1) == 0) {
        lua_pop(L, 1);
        luaL_addlstring(&result, m.subject.data() + begin, end - begin);
    } else if (lua_isstring(L, -1) == 0) {
        raise_error(L, "string.gsub: the new text is " + value_kind(L, -1) + ".");
    } else {
        luaL_addvalue(&result);
    }
}

static int gsub_word(lua_State* L)
{
    const std::string_view subject = text_at(L, 1);
    const std::string_view pattern = text_at(L, 2);
    const int kind = lua_type(L, 3);
    if (kind != LUA_TNUMBER && kind != LUA_TSTRING && kind != LUA_TTABLE && kind != LUA_TFUNCTION) {
        raise_error(L,
            "string.gsub takes a text, a table or a function as its third value, and this is " + value_kind(L, 3)
                + ".");
    }
    const lua_Integer most = luaL_optinteger(L, 4, static_cast<lua_Integer>(subject.size() + 1));
    bool anchored = false;
    pattern_match m = begin_match(L, subject, pattern, anchored);
    lua_Integer count = 0;
    size_t at = 0;
    size_t last = no_match;
    luaL_Buffer result;
    luaL_buffinit(L, &result);
    while (count < most) {
        const size_t end = match_or_raise(L, m, at);
        if (end != no_match && end != last) {
            ++count;
            add_replacement(L, result, m, at, end);
            at = end;
            last = end;
        } else if (at < subject.size()) {
            luaL_addchar(&result, subject[at++]);
        } else {
            break;
        }
        if (anchored) {
            break;
        }
    }
    luaL_addlstring(
        &result, subject.data() + std::min(at, subject.size()), subject.size() - std::min(at, subject.size()));
    luaL_pushresult(&result);
    lua_pushinteger(L, count);
    return 2;
}

// ---- other texts -----------------------------------------------------------------------------------------------

static int rep_word(lua_State* L)
{
    const std::string_view text = text_at(L, 1);
    const lua_Integer count = luaL_checkinteger(L, 2);
    const std::string_view between = lua_isnoneornil(L, 3) ? std::string_view("") : text_at(L, 3);
    const size_t each = text.size() + between.size();
    if (count <= 0 || each == 0) {
        lua_pushliteral(L, "");
        return 1;
    }
    if (static_cast<size_t>(count) > sandbox_of(L).options.text_limit / each + 1) {
        stop_run(L, stop_text);
    }
    const size_t size = each * static_cast<size_t>(count) - between.size();
    charge_steps(L, size / 16);
    luaL_Buffer result;
    char* to = luaL_buffinitsize(L, &result, size);
    for (lua_Integer i = 0; i < count; ++i) {
        std::memcpy(to, text.data(), text.size());
        to += text.size();
        if (i + 1 < count) {
            std::memcpy(to, between.data(), between.size());
            to += between.size();
        }
    }
    luaL_pushresultsize(&result, size);
    return 1;
}

// Puts the texts that "%s" stands for in the place of what was given, so that Lua's format shows no addresses.
static int format_word(lua_State* L)
{
    const std::string format(text_at(L, 1));
    int value = 1;
    for (size_t i = 0; i < format.size(); ++i) {
        if (format[i] != '%' || (i + 1 < format.size() && format[i + 1] == '%')) {
            i += format[i] == '%' ? size_t{1} : size_t{0};
            continue;
        }
        i = format.find_first_not_of("-+ #0123456789.", i + 1);
        if (i == std::string::npos) {
            break;
        }
        ++value;
        if (format[i] == 'p') {
            raise_error(L, "string.format has no \"%p\" here: where things lie in memory is different each time.");
        }
        if (format[i] == 's' && value <= lua_gettop(L)) {
            const std::string text = value_text(L, value);
            lua_pushlstring(L, text.data(), text.size());
            lua_replace(L, value);
        }
    }
    lua_pushvalue(L, lua_upvalueindex(1));
    lua_insert(L, 1);
    lua_call(L, lua_gettop(L) - 1, 1);
    return 1;
}

void define_text_words(lua_State* L)
{
    luaL_requiref(L, LUA_STRLIBNAME, luaopen_string, 0); // texts have it as their methods
    for (const char* name : {"dump", "pack", "packsize", "unpack"}) {
        lua_pushnil(L);
        lua_setfield(L, -2, name);
    }
    const luaL_Reg own[] = {{"find", guarded<find_word>}, {"gmatch", guarded<gmatch_word>},
        {"gsub", guarded<gsub_word>}, {"match", guarded<match_word>}, {"rep", guarded<rep_word>}, {nullptr, nullptr}};
    luaL_setfuncs(L, own, 0);
    lua_getfield(L, -1, "format");
    lua_pushcclosure(L, guarded<format_word>, 1);
    lua_setfield(L, -2, "format");
    make_strict(L, -1, "a text");
    define_value(L, "string");
}
