#include "sandbox_runs.h"

#include <doctest/doctest.h>
#include <lua.hpp>

#include <chrono>
#include <ctime>
#include <new>

namespace {

struct hostile_source {
    const char* source;
    const char* told; // begins the one line that is told; empty: the source ends well
};

} // namespace

static constexpr const char* endless = "the program ran for more than 3,000,000 steps: is this loop endless?";
static constexpr const char* too_much = "the program needs more than 64 MiB of memory";
static constexpr const char* too_long = "a text grew beyond 1 MiB: does it grow here without an end?";
static constexpr const char* too_deep = "functions call each other too deep";
static constexpr const char* too_many = "more than 40,000 values are handed over at once";

// Each ends in time, in one clear line, and leaks nothing.
static const hostile_source endless_sources[] = {
    {"while true do end", endless},
    {"repeat until false", endless},
    {"::again:: goto again", endless},
    {"for i = 1, math.huge do end", endless},
    {"local function f() return f() end f()", endless},
    {"for i in function() return 1 end do end", endless},
    {"for _ in ipairs(setmetatable({}, {__index = function() return 1 end})) do end", endless},
    {"pcall(function() while true do end end) print 'still here'", endless},
    {"while true do pcall(function() while true do end end) end", endless},
    {"xpcall(function() while true do end end, function() while true do end end)", endless},
    {"xpcall(error, function() while true do end end)", endless},
    {"local t <close> = setmetatable({}, {__close = function() while true do end end})", endless},
    {"local t <close> = setmetatable({}, {__close = function() while true do end end}) while true do end", endless},
    {"tostring(setmetatable({}, {__tostring = function() while true do end end}))", endless},
    {"error(setmetatable({}, {__tostring = function() while true do end end}))", "error was called with a table"},
    {"local t = setmetatable({}, {__index = function() while true do end end}) print(t.x)", endless},
    {"local t = setmetatable({}, {__eq = function() while true do end end}) print(t == setmetatable({}, "
     "getmetatable(t)))",
        endless},
    {"for k in pairs(setmetatable({}, {__pairs = function() while true do end end})) do end", endless},
    {"table.sort({1, 2, 3}, function() while true do end end)", endless},
    {"local s = ('x'):gsub('x', function() while true do end end)", endless},
    {"local s = ('a'):rep(200) print(s:find(('a*'):rep(20) .. 'b'))", endless},
    {"print(('a'):rep(3000):find('.-.-.-.-b'))", endless},
    {"print(('('):rep(100000):find(('%b()'):rep(1)))", endless},
    {"print(('x'):rep(1000):match(('(x-)'):rep(30) .. 'y'))", endless},
    {"for m in ('a'):rep(2000):gmatch('a-a-a-b') do end", endless},
    {"print((('a'):rep(3000):gsub('a*a*a*b', '')))", endless},
    {"while true do local s = ('x'):rep(1e6) end", endless},
    {"local s = ('x'):rep(9e5) while true do local t = s .. 'y' end", endless},
    {"while true do string.format('%s', ('x'):rep(1e5)) end", endless},
    {"while true do table.concat({('x'):rep(1e5), 'y'}) end", endless},
    {"local s = ('x'):rep(1e6) while true do s:find('y', 1, true) end", endless},
    {"local t = {} for i = 1, 1e4 do t[i] = i end while true do for k in pairs(t) do break end end", endless},
    {"local t = {} for i = 1, 1e4 do t[i] = i end while true do next(t) end", endless},
    {"local t = {} for i = 1, 1e4 do t[i] = i end while true do table.insert(t, 1, 1) table.remove(t, 1) end", endless},
    {"local t = {} for i = 1, 1e4 do t[i] = i end while true do table.move(t, 1, 1e4, 2) end", endless},
    {"local t = {} for i = 1, 1e4 do t[i] = 1 end while true do table.sort(t) end", endless},
    {"while true do print 'x' end", endless},
};

static const hostile_source greedy_sources[] = {
    {"local t = {} for i = 1, 1e9 do t[i] = i end", too_much},
    {"local t = {} while true do t = {t} end", too_much},
    {"local t = {} for i = 1, 1e9 do t['k' .. i] = {} end", too_much},
    {"local t = {} pcall(function() while true do t[#t + 1] = {} end end) print 'still here'", too_much},
    {"local t = {} for i = 1, 1e5 do t[i] = ('x'):rep(1e4) .. i end", too_much},
    {"local s = 'x' while true do s = s .. s end", too_long},
    {"local s = ('x'):rep(1e10)", too_long},
    {"local s = ('x'):rep(1 << 62)", too_long},
    {"local s = ('x'):rep(1e6, ('y'):rep(1e6))", too_long},
    {"pcall(string.rep, 'x', 1e10) print 'still here'", too_long},
    {"local s = ('x'):rep(1e6):gsub('x', 'xxxxxxxx')", too_long},
    {"local s = ('x'):rep(9e5) print(s, s)", too_long},
    {"local t = {} for i = 1, 100 do t[i] = ('x'):rep(1e5) end print(#table.concat(t))", too_long},
    {"local t = setmetatable({}, {}) getmetatable(t).__index = function(t, k) return t[k] end print(t.x)", too_deep},
    {"local t = setmetatable({}, {}) getmetatable(t).__tostring = function(t) return tostring(t) end print(t)",
        too_deep},
    {"local t = setmetatable({}, {}) getmetatable(t).__index = t print(t.x)",
        "metatables lead to each other in a circle."},
    {"local t = setmetatable({}, {}) getmetatable(t).__call = t t()", too_many},
    {"local t = setmetatable({}, {}) getmetatable(t).__call = t pcall(t) print 'still here'", too_many},
    {"table.unpack({}, 1, 1e8)", "more values are unpacked"},
    {"print(table.unpack(setmetatable({}, {__len = function() return 1 << 60 end})))", "more values are unpacked"},
    {"table.insert(setmetatable({}, {__len = function() return 1 << 60 end}), 1, 1)",
        "table.insert: this table says that it has 1152921504606846976 elements."},
    {"table.remove(setmetatable({}, {__len = function() return 1 << 60 end}), 1)", "table.remove: this table says"},
    {"table.sort(setmetatable({}, {__len = function() return 1 << 60 end}))", "table.sort: this table says"},
    {"table.move({}, 1, 1 << 62, 2)", "table.move: these are too many elements."},
    {"table.move({}, 1, 2, math.maxinteger)", "table.move: these are too many elements."},
    {"table.concat(setmetatable({}, {__len = function() return 1 << 60 end}))", "element 1 is nothing (nil)"},
};

static const hostile_source harmless_sources[] = {
    {"string.rep('', 1 << 62)", ""},
    {"table.sort({3, 1, 2, 5, 4}, function() return true end)", ""},
    {"table.sort({3, 1, 2, 5, 4}, function() return false end)", ""},
    {"local function f(n) return pcall(f, n) end f(1)", ""}, // pcall stands for the depth's error, 200 deep
    {"print(pcall(error))", ""},
    {"print(pcall(error, {}))", ""},
    {"print(xpcall(error, error, 'x'))", ""},
    {"print(xpcall(error, function(e) error(e) end, 'x'))", ""},
    {"print(select(-1, pcall(string.format, '%d', 'x')))", ""},
    {"setmetatable({}, {__index = setmetatable({}, {__index = {}})})", ""},
};

// What a source can find by every way we know of.
static const hostile_source reaching_sources[] = {
    {"io.open('/etc/passwd')", "a show has no \"io\""},
    {"os.execute('true')", "a show has no \"os\""},
    {"debug.getregistry()", "a show has no \"debug\""},
    {"package.loadlib('x', 'y')", "a show has no \"package\""},
    {"load('return 1')()", "a show has no \"load\""},
    {"dofile('x')", "a show has no \"dofile\""},
    {"loadfile('x')", "a show has no \"loadfile\""},
    {"coroutine.wrap(print)()", "a show has no \"coroutine\""},
    {"collectgarbage()", "a show has no \"collectgarbage\""},
    {"_G.io.open('x')", "a show has no \"io\""},
    {"print(rawget(_G, 'io'), rawget(_G, 'load'), rawget(_G, 'require'))", ""},
    {"local e = _ENV print(e.os)", "a show has no \"os\""},
    {"string.dump(print)", "a text has no \"dump\""},
    {"print(('').dump)", "a text has no \"dump\""},
    {"print(getmetatable('').__index)", "what stands here is nothing (nil), and has no fields."},
    {"setmetatable('', {})", "value 1 of setmetatable is a text and should be a table."},
    {"setmetatable(_G, {})", "this table's metatable cannot be changed."},
    {"setmetatable(math, {})", "this table's metatable cannot be changed."},
    {"print(getmetatable(_G).__index)", "what stands here is true or false, which has no fields."},
    {"setmetatable({}, {__gc = function() while true do end end})", "a show's metatables have no \"__gc\"."},
    {"setmetatable({}, {__mode = 'k'})", "a show's metatables have no \"__mode\"."},
    {"local mt = {} setmetatable({}, mt) mt.__gc = function() while true do end end for i = 1, 1e5 do local t = {} end",
        ""},
    {"string.format('%p', {})", "string.format has no \"%p\" here"},
    {"string.format('%-10p', print)", "string.format has no \"%p\" here"},
    {"string.format('%99999d', 1)", "invalid conversion"},
    {"string.format(('%s'):rep(500))", "value 2 given here is missing."},
    {"string.pack('i', 1)", "a text has no \"pack\""},
    {"\x1bLua", "this is a compiled program"},
    {"math.randomseed()", "math.randomseed takes a number"},
};

static void check_hostile(const hostile_source& hostile, uint64_t steps = 3'000'000)
{
    CAPTURE(std::string(hostile.source));
    const auto begun = std::chrono::steady_clock::now();
    const sandbox_run run = run_source(hostile.source, steps);
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begun;
    CHECK(took.count() < 120.0); // much more than the limit: other programs run beside
    for (const std::string& line : run.printed) {
        CHECK(line.find("still here") == std::string::npos);
        CHECK(line.find("0x") == std::string::npos);
    }
    CHECK(run.ended == (hostile.told[0] == '\0'));
    CHECK(run.told.size() == (run.ended ? 0 : 1));
    for (const std::string& line : run.told) {
        const bool has_line = line.starts_with("show.lua:1: ") || line.find("compiled") != std::string::npos;
        CHECK_MESSAGE(has_line, line);
        CHECK_MESSAGE(line.find(hostile.told) != std::string::npos, line);
        CHECK_MESSAGE(line.find('\n') == std::string::npos, line);
    }
}

TEST_CASE("a source that never ends is ended at its line")
{
    for (const hostile_source& hostile : endless_sources) {
        check_hostile(hostile);
    }
}

TEST_CASE("a source that takes more and more is ended at its line")
{
    for (const hostile_source& hostile : greedy_sources) {
        check_hostile(hostile, 50'000'000);
    }
}

TEST_CASE("what looks hostile and does no harm runs to its end")
{
    for (const hostile_source& hostile : harmless_sources) {
        check_hostile(hostile);
    }
}

TEST_CASE("a source reaches nothing outside")
{
    for (const hostile_source& hostile : reaching_sources) {
        check_hostile(hostile);
    }
}

TEST_CASE("a source gets the steps of its limit and hardly more")
{
    sandbox_run run;
    const owned_sandbox s = sandbox_open(small_limits(run));
    CHECK(!sandbox_run_text(*s, "show.lua", "while true do end"));
    CHECK(sandbox_steps(*s) > 3'000'000);
    CHECK(sandbox_steps(*s) <= 3'001'000);
    CHECK(sandbox_run_text(*s, "show.lua", "for i = 1, 1000000 do end"));
    CHECK(sandbox_steps(*s) < 2'000'000); // each run's own
}

TEST_CASE("a run's line is that of the loop, with the lines that led to it")
{
    CHECK(outcome_of("local function spin()\n  while true do\n  end\nend\nspin()\n").starts_with("show.lua:"));
    CHECK(outcome_of("local function late()\n  error 'no'\nend\nlocal function early()\n  late()\nend\n\nearly()\n")
        == "show.lua:2: no (called from show.lua:5, show.lua:8).");
}

TEST_CASE("functions may call each other some ten thousand deep, and not without an end")
{
    CHECK(outcome_of("local function f(n) return n == 0 and 0 or 1 + f(n - 1) end print(f(20000))") == "20000");
    sandbox_options options;
    const owned_sandbox s = sandbox_open(options);
    CHECK(!sandbox_run_text(*s, "show.lua", "local function f() return 1 + f() end\nf()"));
    CHECK(told_by(*s)[0].starts_with("show.lua:1: functions call each other too deep"));
}

TEST_CASE("what is printed ends after ten thousand lines")
{
    const sandbox_run run = run_source("for i = 1, 20000 do print(i) end");
    CHECK(run.ended);
    REQUIRE(run.printed.size() == 10'001);
    CHECK(run.printed[9'999] == "10000");
    CHECK(run.printed[10'000] == "(what is printed after 10,000 lines is not shown)");
}

TEST_CASE("computing that single instructions hide is ended by its time")
{
    sandbox_run run;
    sandbox_options options = small_limits(run);
    options.time_limit = 0.3;
    options.step_limit = UINT64_MAX;
    const owned_sandbox s = sandbox_open(options);
    const auto begun = std::chrono::steady_clock::now();
    CHECK(!sandbox_run_text(*s, "show.lua", "local s = ('1'):rep(1e6)\nwhile true do local n = s + 1 end"));
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begun;
    CHECK(took.count() < 120.0);
    CHECK(told_by(*s)[0] == "show.lua:2: the program computed for more than 0 seconds: is this loop endless?");
}

TEST_CASE("pairs walks numbers by value, then texts by their bytes, then false and true")
{
    CHECK(outcome_of("local t = {b = 1, a = 2, B = 3, ['\\xff'] = 4, [true] = 5, [false] = 6, [2] = 7, [-1] = 8,"
                     " [1.5] = 9, [1 << 53] = 10, [2^70] = 11, [-1/0] = 12, [''] = 13}\n"
                     "local s = '' for k, v in pairs(t) do s = s .. v .. ' ' end print(s)")
        == "12 8 9 7 10 11 13 3 2 1 4 6 5 ");
    CHECK(outcome_of("local t = {1, 2, 3, x = 1} for k in pairs(t) do t[k] = nil end print(next(t))") == "nil");
    CHECK(outcome_of("local t = {a = 1, b = 2, c = 3} for k in pairs(t) do t.b = nil print(k) end") == "a\nc");
    CHECK(outcome_of("local t = {b = 1, a = 2} local k, v = next(t) print(k, v, next(t, k)) print(next(t, 'b'))")
        == "a\t2\tb\t1\nnil");
    CHECK(outcome_of("for k in pairs {[print] = 1} do end")
        == "show.lua:1: a field's name here is a function, and those have no order to walk in: keep a list beside the "
           "table.");
    CHECK(outcome_of("pairs(5)") == "show.lua:1: pairs walks a table, and this is a number.");
}

TEST_CASE("texts of tables and functions have numbers in the order of asking")
{
    CHECK(outcome_of("local a, b = {}, {} print(b, a, print, b) print(('%s %5.1f %q %%s'):format(a, 1.25, 'x'))")
        == "table: 1\ttable: 2\tfunction: 1\ttable: 1\ntable: 2   1.2 \"x\" %s");
    CHECK(outcome_of("print(1, 1.0, 1e100, 0.1, -0.0, 1/0, 0/0, -(0/0), nil, true, 'x')")
        == "1\t1.0\t1e+100\t0.1\t-0.0\tinf\tnan\tnan\tnil\ttrue\tx");
    CHECK(
        outcome_of(
            "print(setmetatable({}, {__name = 'scene'}), setmetatable({}, {__tostring = function() return 'me' end}))")
        == "scene: 1\tme");
}

// The numbers were computed by another program, from the generator's definition.
TEST_CASE("random numbers are those of xoshiro256** with a seed spread by splitmix64")
{
    CHECK(
        outcome_of(
            "print(math.random(), math.random(), math.random()) print(math.random(6), math.random(6), math.random(6))")
        == "0.70292183315885\t0.52043661993886\t0.57410570001972\n6\t6\t5");
    CHECK(outcome_of("math.randomseed(2026) print(math.random(), math.random(), math.random())"
                     " print(math.random(6), math.random(6), math.random(6))")
        == "0.57373150279327\t0.28367946027486\t0.81250942675762\n1\t1\t5");
    CHECK(outcome_of(
              "for i = 1, 1000 do local n = math.random(-2, 2) assert(n >= -2 and n <= 2) end print(math.random(7, 7))")
        == "7");
    CHECK(outcome_of("math.random(0)") == "show.lua:1: math.random cannot choose from 1 to 0.");
    CHECK(outcome_of("print(math.type(math.random(math.mininteger, math.maxinteger)))") == "integer");
}

TEST_CASE("sorting is stable")
{
    CHECK(
        outcome_of("local t = {} for i = 1, 50 do t[i] = {key = i * 7 % 5, place = i} end\n"
                   "table.sort(t, function(a, b) return a.key < b.key end)\n"
                   "for i = 2, 50 do local a, b = t[i - 1], t[i]\n"
                   "assert(a.key < b.key or (a.key == b.key and a.place < b.place)) end print(t[1].place, t[50].place)")
        == "5\t47");
    CHECK(outcome_of(
              "local t = {3, 1, 2} table.sort(t) print(t[1], t[2], t[3]) table.sort(t, function(a, b) return a > b end)"
              " print(t[1], t[2], t[3])")
        == "1\t2\t3\n3\t2\t1");
}

TEST_CASE("a table's own words do as Lua's")
{
    CHECK(outcome_of("local t = {1, 2, 4} table.insert(t, 3, 3) table.insert(t, 5) print(table.concat(t, ' '))"
                     " print(table.remove(t, 1), table.remove(t), table.concat(t, ' '), table.remove({}))"
                     " print(table.concat(table.move({1, 2, 3}, 1, 3, 2), ' '), #table.move({1, 2}, 1, 2, 3, {}))")
        == "1 2 3 4 5\n1\t5\t2 3 4\tnil\n1 1 2 3\t0");
    CHECK(outcome_of("table.insert({}, 3, 1)") == "show.lua:1: table.insert: the place 3 is outside 1 to 1.");
    CHECK(outcome_of("table.insert({}, 1, 1, 1)")
        == "show.lua:1: table.insert takes a table, a place (or none) and a value.");
    CHECK(outcome_of("table.remove({}, 5)") == "show.lua:1: table.remove: the place 5 is outside 1 to 1.");
}

TEST_CASE("a word that is hidden by a global is told, once")
{
    CHECK(outcome_of("x = 1\nx = 2\nprint = 5\nprint = 6\nlocal y = x")
        == "show.lua:3: \"print\" is a word of the language, which is hidden from here on: give yours another name, or "
           "make "
           "it local.");
}

static int scene_word(lua_State* L)
{
    report(L, problem_warning, current_place(L), "a scene is here.");
    charge_steps(L, 10);
    return 0;
}

static int failing_word(lua_State*)
{
    throw std::bad_alloc();
}

static int raising_word(lua_State* L)
{
    raise_error(L, "this is " + value_kind(L, 1) + " with " + value_text(L, 1) + std::string(100, '.'));
}

static int define_own_words(lua_State* L)
{
    define_word(L, "scene", guarded<scene_word>);
    define_word(L, "failing", guarded<failing_word>);
    define_word(L, "raising", guarded<raising_word>);
    lua_newtable(L);
    lua_pushinteger(L, 1);
    lua_setfield(L, -2, "bricks");
    make_strict(L, -1, "texture");
    define_value(L, "texture");
    return 0;
}

static std::string outcome_with_words(const std::string& text)
{
    static const library_text library[] = {{"fades",
        "function fade(t) scene() if not t then raising(t) end return both() end\n"
        "function both() return 'both' end\n"}};
    sandbox_run run;
    sandbox_options options = small_limits(run);
    options.library = library;
    const owned_sandbox s = sandbox_open(options);
    REQUIRE(sandbox_run_function(*s, define_own_words));
    REQUIRE(sandbox_run_library(*s, "fades"));
    sandbox_run_text(*s, "show.lua", text);
    std::string lines;
    for (const std::vector<std::string>& list : {run.printed, told_by(*s)}) {
        for (const std::string& line : list) {
            lines += line + "\n";
        }
    }
    return lines;
}

TEST_CASE("words report at the line of the show, also through the library")
{
    CHECK(outcome_with_words("scene()\n\nscene()\n") == "show.lua:1: a scene is here.\nshow.lua:3: a scene is here.\n");
    CHECK(outcome_with_words("\nprint(fade {})\nfade()\n")
              .starts_with("both\nshow.lua:2: a scene is here.\n"
                           "show.lua:3: a scene is here.\n"
                           "show.lua:3: this is nothing (nil) with nil.."));
    CHECK(outcome_with_words("failing()") == "show.lua:1: this cannot be computed: std::bad_alloc.\n");
    CHECK(outcome_with_words("print(pcall(raising, 1))").starts_with("false\tshow.lua:1: this is a number with 1.."));
    CHECK(outcome_with_words("print(sceen)") == "show.lua:1: there is no \"sceen\" (did you mean \"scene\"?).\n");
    CHECK(outcome_with_words("print(texture.brick)")
        == "show.lua:1: texture has no \"brick\" (did you mean \"bricks\"?).\n");
    CHECK(outcome_with_words("scene = 1 both = 2 print(fade {})").starts_with("both\nshow.lua:1: \"scene\" is a word"));
}

TEST_CASE("problems beyond two hundred are counted")
{
    sandbox_run run;
    const owned_sandbox s = sandbox_open(small_limits(run));
    REQUIRE(sandbox_run_function(*s, define_own_words));
    CHECK(sandbox_run_text(*s, "show.lua", "for i = 1, 250 do scene() end"));
    const problem_list problems = sandbox_problems(*s);
    REQUIRE(problems.size() == 201);
    CHECK(problems[200].text == "and 50 problems more, which are not shown.");
}

TEST_CASE("a sandbox runs on after a source that was ended")
{
    sandbox_run run;
    const owned_sandbox s = sandbox_open(small_limits(run));
    CHECK(!sandbox_run_text(*s, "show.lua", "while true do end"));
    CHECK(sandbox_run_text(*s, "show.lua", "print 'again'"));
    CHECK(run.printed == std::vector<std::string>{"again"});
    CHECK(told_by(*s).size() == 1);
}

TEST_CASE("excused time does not count")
{
    sandbox_run run;
    sandbox_options options = small_limits(run);
    options.time_limit = 0.05;
    const owned_sandbox s = sandbox_open(options);
    REQUIRE(sandbox_run_function(*s, [](lua_State* L) {
        define_word(L, "import", [](lua_State* state) {
            const excused_time excused(state);
            const std::clock_t begun = std::clock();
            while (std::clock() - begun < CLOCKS_PER_SEC / 5) { }
            return 0;
        });
        return 0;
    }));
    CHECK(sandbox_run_text(*s, "show.lua", "import() for i = 1, 10000 do end"));
}
