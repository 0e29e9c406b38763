#include "authoring/lua/wording.h"
#include "sandbox_runs.h"

#include <doctest/doctest.h>

namespace {

struct mistake {
    const char* source;
    const char* told; // the text, without its place "show.lua:2: "
};

} // namespace

static const mistake running_mistakes[] = {
    {"prnt('x')", "there is no \"prnt\" (did you mean \"print\"?)."},
    {"local sun = 1 print(son)", "there is no \"son\" (did you mean \"sun\"?)."},
    {"local speed = 1 local function f() return sped end f()", "there is no \"sped\" (did you mean \"speed\"?)."},
    {"quux()", "there is no \"quux\"."},
    {"math.sine(1)", "math has no \"sine\" (did you mean \"sin\"?)."},
    {"local t = table.unpak {}", "table has no \"unpak\" (did you mean \"unpack\"?)."},
    {"('x'):uper()", "a text has no \"uper\" (did you mean \"upper\"?)."},
    {"local t = {} t.inser(1)", "there is no \"inser\" to call (did you mean \"insert\"?)."},
    {"local t = {} t:quux()", "there is no \"quux\" to call."},
    {"local t = 5 t()", "\"t\" is a number, which cannot be called."},
    {"local t t()", "\"t\" is nothing (nil), which cannot be called."},
    {"local t = {} t.x.y = 1", "\"x\" is nothing (nil), and has no fields."},
    {"local t t.x = 1", "\"t\" is nothing (nil), and has no fields."},
    {"local t = 5 t.x = 1", "\"t\" is a number, which has no fields."},
    {"local t = {} return t.x + 1", "\"x\" is nothing (nil), which cannot be computed with."},
    {"return {} + 1", "what stands here is a table, which cannot be computed with."},
    {"return {} & 1", "what stands here is a table, which cannot be computed with."},
    {"return 'x' .. {}", "what stands here is a table, which \"..\" cannot join to a text."},
    {"local a return 'x' .. a", "\"a\" is nothing (nil), which \"..\" cannot join to a text."},
    {"return #5", "what stands here is a number, which has no length (\"#\")."},
    {"return 1 < 'x'", "a number cannot be compared with a text."},
    {"return {} < {}", "two values that are each a table cannot be compared with \"<\" or \">\"."},
    {"local z = 0 return 1 // z", "a whole number is divided by 0."},
    {"local z = 0 return 1 % z", "a whole number is divided by 0."},
    {"return 1.5 | 1", "this number is not whole, and must be."},
    {"for i = 1, 'x' do end", "the last value of this \"for\" is a text and should be a number."},
    {"for i = {}, 2 do end", "the first value of this \"for\" is a table and should be a number."},
    {"for i = 1, 2, 0 do end", "the step of this \"for\" is 0."},
    {"for a in {} do end", "this \"for\" walks a table: write ipairs(list) or pairs(table)."},
    {"local t = {} t[nil] = 1", "a field is set whose name is nothing (nil)."},
    {"local t = {} t[0/0] = 1", "a field is set whose name is no number."},
    {"table.concat({1, {}})", "element 2 is a table, and table.concat joins texts and numbers."},
    {"math.floor('x')", "value 1 of floor is a text and should be a number."},
    {"math.floor()", "value 1 of floor is nothing and should be a number."},
    {"ipairs()", "ipairs walks a list, and this is nothing (nil)."},
    {"assert(false)", "assert was given false or nothing (nil)."},
    {"assert(nil, 'no such thing')", "no such thing."},
    {"error('my text')", "my text."},
    {"error('my text', 0)", "my text."},
    {"error('why?')", "why?"},
    {"error('two\\nlines\\t!')", "two lines !"},
    {"error('\\xff\\0x')", "??x."},
    {"error('')", "no reason given."},
    {"error()", "error was called without a text."},
    {"error({})", "error was called with a table: give it a text."},
    {"error(print)", "error was called with a function: give it a text."},
    {"setmetatable({}, 5)", "setmetatable takes a table or nil, and this is a number."},
};

static const mistake written_mistakes[] = {
    {"local a = { 1, 2 light { } }", "\"}\" is missing before \"light\"; or a comma is."},
    {"f(1 2)", "\")\" is missing before \"2\"; or a comma is."},
    {"local a = { x = 1", "\"}\" is missing before the end of the file."},
    {"local a = {\n\n", "the file ends in the middle of a statement: a value or a bracket is missing."},
    {"for i = 1, 3 do\n\n", "\"end\" is missing before the end of the file, for the \"for\" of line 2."},
    {"if x then print(1)", "\"end\" is missing before the end of the file."},
    {"if x print(1) end", "\"then\" is missing before \"print\"."},
    {"print \"abc", "a text is not closed before the end of its line: its second quotation mark is missing."},
    {"local a = [[abc\n", "a text is not closed (starting at line 2): its \"]]\" is missing."},
    {"--[[ abc\n", "a comment is not closed (starting at line 2): its \"]]\" is missing."},
    {"x = 3x", "\"3x\" is no number."},
    {"foo bar", "before \"bar\" stands no whole statement: a call with its brackets, or \"=\", is missing."},
    {"x = = 1", "\"=\" cannot stand here."},
    {"x = 1 }", "\"}\" cannot stand here; is it one too many?"},
    {"end", "\"end\" cannot stand here; is it one too many?"},
    {"local 5 = x", "a name is missing before \"5\"; a field of a table is written name = value, with no colon."},
    {"x = { alpha: 0.5 }",
        "a name is missing before \"0.5\"; a field of a table is written name = value, with no colon."},
    {"x = { color: \"red\" }",
        "a name is missing before \"red\"; a field of a table is written name = value, with no colon."},
    {"if x = 1 then end", "\"then\" is missing before \"=\": \"equal\" is written \"==\"."},
    {"do end // done", "\"//\" cannot stand here: a comment begins with \"--\"."},
    {"print('a\\q')", "\"a\\q\" holds a \"\\\" with a letter that means nothing: write \"\\\\\" for one \"\\\"."},
    {"local x <const> = 1; x = 2", "\"x\" is constant and takes no other value."},
    {"goto nowhere", "there is no label \"nowhere\" for this goto."},
    {"break", "this \"break\" stands outside every loop."},
    {"x = x != 1", "\"!\" cannot stand here: \"not equal\" is written \"~=\", and \"not\" with letters."},
    {"x += 1", "\"+\" cannot stand here: \"i += 1\" is written \"i = i + 1\"."},
};

static void check_mistakes(std::span<const mistake> mistakes)
{
    for (const mistake& m : mistakes) {
        CHECK(outcome_of(std::string("\n") + m.source) == std::string("show.lua:2: ") + m.told);
    }
}

TEST_CASE("what goes wrong while a source runs is told in words of shows")
{
    check_mistakes(running_mistakes);
}

TEST_CASE("what is written wrong is told in words of shows")
{
    for (const mistake& m : written_mistakes) {
        const std::string told = outcome_of(std::string("\n") + m.source);
        const size_t text = told.find(": ");
        REQUIRE(text != std::string::npos);
        CHECK(told.substr(text + 2) == m.told);
        CHECK(told.starts_with("show.lua:"));
    }
    CHECK(outcome_of(std::string(300, '('))
        == "show.lua:0: brackets, functions or blocks stand too deep in one another.");
}

TEST_CASE("a message's places are taken off, and the show's own counts")
{
    const std::vector<std::string> files
        = {"show.lua", "parts/a_folder_with_a_name_that_is_long/and_a_file_too_long.lua"};
    source_place place = {"other.lua", 5};
    CHECK(strip_place("show.lua:12: text: more", files, place) == "text: more");
    CHECK(place.file == "show.lua");
    CHECK(place.line == 12);
    CHECK(strip_place("library:fades:3: show.lua:13: text", files, place) == "text");
    CHECK(place.line == 13);
    CHECK(strip_place("...er_with_a_name_that_is_long/and_a_file_too_long.lua:7: x", files, place) == "x");
    CHECK(place.file == files[1]);
    CHECK(place.line == 7);
    for (const char* message : {"", ": ", "a: b", "show.lua: b", "show.lua:x: b", "nowhere.lua:1: b", "12: b"}) {
        source_place same = {"other.lua", 5};
        CHECK(strip_place(message, files, same) == message);
        CHECK(same.line == 5);
    }
}

TEST_CASE("a problem's text is one line of bounded length")
{
    CHECK(one_line(std::string(10'000, 'x')) == std::string(500, 'x') + " ...");
    CHECK(one_line("gr\xc3\xbc\xc3\x9f dich") == "gr\xc3\xbc\xc3\x9f dich.");
    CHECK(one_line("\xc3") == "?");
    CHECK(one_line("a\xe2\x82") == "a??");
    CHECK(one_line("a \n ") == "a.");
}
