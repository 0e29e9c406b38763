#include "sandbox_runs.h"

#include <doctest/doctest.h>
#include <lua.hpp>

#include <random>

// One program for both: what Lua's own library answers is what ours must.
static const char* const comparison = R"(
local function joined(...)
    local t = table.pack(...)
    for i = 1, t.n do t[i] = tostring(t[i]) end
    return table.concat(t, ',')
end
local function answer(f, ...)
    local results = table.pack(pcall(f, ...))
    if not results[1] then return 'error' end
    return joined(table.unpack(results, 2, results.n))
end
local function walked(s, p, init)
    local parts = {}
    for a, b in s:gmatch(p, init) do parts[#parts + 1] = joined(a, b) end
    return table.concat(parts, ';')
end
local s, p, init = subject, pattern, place
local lines = {
    answer(string.find, s, p, init), answer(string.match, s, p, init), answer(walked, s, p, init),
    answer(string.gsub, s, p, '<%0%1>'), answer(string.gsub, s, p, '[%%]', 2),
    answer(string.gsub, s, p, {a = 'A', ab = false}), answer(string.gsub, s, p, function(a, b) return b end),
    answer(string.find, s, p, init, true) }
result(table.concat(lines, '\n'))
)";

static std::string taken_result;

static int result_word(lua_State* L)
{
    size_t length = 0;
    const char* text = lua_tolstring(L, 1, &length);
    taken_result.assign(text, length);
    return 0;
}

static std::string own_answer(lua_State* L, const std::string& subject, const std::string& pattern, int place)
{
    lua_pushlstring(L, subject.data(), subject.size());
    lua_setglobal(L, "subject");
    lua_pushlstring(L, pattern.data(), pattern.size());
    lua_setglobal(L, "pattern");
    lua_pushinteger(L, place);
    lua_setglobal(L, "place");
    taken_result = "nothing";
    REQUIRE(luaL_dostring(L, comparison) == LUA_OK);
    return taken_result;
}

static std::string quoted_for_lua(const std::string& text)
{
    std::string quoted = "'";
    for (const char c : text) {
        char code[8];
        std::snprintf(code, sizeof code, "\\x%02x", static_cast<unsigned>(static_cast<unsigned char>(c)));
        quoted += code;
    }
    return quoted + "'";
}

static std::string sandbox_answer(sandbox& s, const std::string& subject, const std::string& pattern, int place)
{
    const std::string given = "local subject, pattern, place = " + quoted_for_lua(subject) + ", "
        + quoted_for_lua(pattern) + ", " + std::to_string(place) + "\n";
    taken_result = "nothing";
    sandbox_run_text(s, "show.lua", given + comparison);
    return taken_result;
}

static std::string random_text(std::mt19937& random, const std::vector<std::string>& parts, size_t most)
{
    std::string text;
    for (size_t n = random() % (most + 1); n > 0; --n) {
        text += parts[random() % parts.size()];
    }
    return text;
}

static void compare_both(lua_State* L, sandbox& s, const std::string& subject, const std::string& pattern, int place)
{
    const std::string expected = own_answer(L, subject, pattern, place);
    const std::string given = sandbox_answer(s, subject, pattern, place);
    CHECK_MESSAGE(given == expected,
        "pattern " << pattern << ", subject " << subject << ", from " << place << ":\n"
                   << given << "\nand should be\n"
                   << expected);
}

TEST_CASE("patterns answer as those of Lua's own library do")
{
    lua_State* L = luaL_newstate();
    luaL_openlibs(L);
    lua_register(L, "result", result_word);
    sandbox_run run;
    sandbox_options options = small_limits(run);
    const owned_sandbox s = sandbox_open(options);
    REQUIRE(sandbox_run_function(*s, [](lua_State* state) {
        define_word(state, "result", result_word);
        return 0;
    }));
    for (const char* pattern : {"", "^", "$", "^$", "a", "^a", "a$", "a*", "a-", "a+b?", "(a)(b)", "()", "(a()b)",
             "((a)b)", "%a+", "[%a_][%w_]*", "[^%s]+", "[a-c]", "[a-]", "[-a]", "[]]", "[^]]", "[]a]", "[%]]", "[a%-c]",
             "%b()", "%bab", "%f[%a]%a+", "%f[%z]", "(a*)%1", "(.)%1", "%%", "%.", "%", "[a", "[", "[^", "[%", "[%]",
             "(a", "a)", "%b", "%bx", "%f", "%fa", "%1", "(a)%2", "(%1)", "()%1", "a$b", "x^y", "[a-%%]", "[%a-z]",
             "%g+", "%c", "%p+", "%x+", "%X+", "%u%l*", "%S+", "[%s%d]+", "a.-b", ".-$", "[[]", "[^^]", "%z", "%-",
             "(a?)(b?)(c?)", "[\xff-\x80]", "[\x80-\xff]"}) {
        for (const char* subject : {"", "a", "ab", "aab", "hello world", "THE (quick (brown) fox) 12_3", "a]b[c-d^%$",
                 "key = value, k2 = v2", "\xc3\xa4\xff\x80", "aaa bbb\tccc\n", "((()))", "x1y22z333"}) {
            for (const int place : {1, 2, -2, 0, 40, -40}) {
                compare_both(L, *s, subject, pattern, place);
            }
        }
    }
    std::mt19937 random(9);
    const std::vector<std::string> pieces = {"a", "b", "c", ".", "%a", "%d", "[ab]", "[^a]", "[a-c]", "*", "+", "-",
        "?", "(", ")", "()", "%1", "%2", "%b()", "%f[a]", "^", "$", "%", "[", "]", "%s", "x"};
    const std::vector<std::string> letters = {"a", "b", "c", "1", " ", "(", ")", "ab", "x"};
    for (int i = 0; i < 4000; ++i) {
        const std::string pattern = random_text(random, pieces, 7);
        const std::string subject = random_text(random, letters, 9);
        compare_both(L, *s, subject, pattern, static_cast<int>(random() % 5) - 2);
    }
    lua_close(L);
}

TEST_CASE("a pattern that is none says why")
{
    CHECK(outcome_of("('x'):find('(')") == "show.lua:1: the pattern \"(\" is wrong: a \")\" is missing.");
    CHECK(outcome_of("('x'):find('[a')") == "show.lua:1: the pattern \"[a\" is wrong: a \"]\" is missing.");
    CHECK(outcome_of("('x'):find('x%')") == "show.lua:1: the pattern \"x%\" is wrong: it ends with \"%\".");
    CHECK(outcome_of("('x'):find(('x*'):rep(300))").ends_with("is wrong: it is too long."));
    CHECK(outcome_of("('x'):gsub('x', '%2')") == "show.lua:1: the pattern has no capture 2.");
    CHECK(outcome_of("('x'):gsub('x', '%y')")
        == "show.lua:1: string.gsub: in the new text \"%\" stands before a digit or another \"%\".");
    CHECK(outcome_of("('x'):gsub('x', print, 1, {})") == "x");
    CHECK(outcome_of("('x'):gsub('x')").starts_with("show.lua:1: string.gsub takes a text, a table or a function"));
}
