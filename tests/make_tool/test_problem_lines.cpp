#include "tools/make/problem_lines.h"

#include <cstdlib>
#include <doctest/doctest.h>

static show_problem problem(problem_severity severity, const char* file, uint32_t line, const char* text)
{
    return {severity, file, line, "", text};
}

TEST_CASE("A problem stands behind its place as compilers have it")
{
    show_problem p = problem(problem_error, "show.lua", 12, "there is no \"sead\".");
    CHECK(problem_line(p, "", false) == "show.lua:12: error: there is no \"sead\".");
    CHECK(problem_line(p, "my show/", false) == "my show/show.lua:12: error: there is no \"sead\".");
    p.line = 0;
    CHECK(problem_line(p, "", false) == "show.lua: error: there is no \"sead\".");
    p = {problem_warning, "demo.xmlz", 0, "section 11 (materials), record 4", "the blend mode 9 is unknown."};
    CHECK(problem_line(p, "", false)
        == "demo.xmlz: section 11 (materials), record 4: warning: the blend mode 9 is unknown.");
    CHECK(problem_line(problem(problem_note, "", 0, "nothing is shown."), "x/", false) == "note: nothing is shown.");
    CHECK(problem_line(problem(problem_note, "/a/b.lua", 1, "x."), "y/", false) == "/a/b.lua:1: note: x.");
}

TEST_CASE("Nothing that a name holds reaches a terminal raw")
{
    CHECK(problem_line(problem(problem_error, "a\x1b[2J.lua", 1, "no \"\x07\"."), "", false)
        == "a\\x1B[2J.lua:1: error: no \"\\x07\".");
}

TEST_CASE("On a terminal the place is bold and the severity has a color")
{
    CHECK(problem_line(problem(problem_error, "a.lua", 1, "x."), "", true)
        == "\x1b[1ma.lua:1:\x1b[0m \x1b[1;31merror:\x1b[0m x.");
    CHECK(problem_line(problem(problem_warning, "a.lua", 1, "x."), "", true)
        == "\x1b[1ma.lua:1:\x1b[0m \x1b[1;35mwarning:\x1b[0m x.");
}

TEST_CASE("Problems go by file and line, those of one line as they were found, and are counted")
{
    const problem_list problems = {problem(problem_error, "show.lua", 9, "one."),
        problem(problem_warning, "night.lua", 20, "two."), problem(problem_note, "show.lua", 9, "a third."),
        problem(problem_error, "show.lua", 2, "four."), problem(problem_warning, "night.lua", 3, "five.")};
    CHECK(problem_lines(problems, "", false)
        == "show.lua:2: error: four.\nshow.lua:9: error: one.\nshow.lua:9: note: a third.\n"
           "night.lua:3: warning: five.\nnight.lua:20: warning: two.\n2 errors, 2 warnings, 1 note\n");
    CHECK(problem_lines({}, "", false) == "");
    CHECK(problem_counts({}) == "no problems");
    CHECK(problem_counts({problems[0]}) == "1 error");
    CHECK(problem_counts({problems[1], problems[2]}) == "1 warning, 1 note");
}

TEST_CASE("As JSON a problem has what is known of it")
{
    const problem_list problems = {problem(problem_warning, "show.lua", 9, "a \"name\"."),
        {problem_error, "demo.xmlz", 0, "section 2 (textures)", "b\xff."}};
    const std::string expected
        = "{\"problems\":[{\"severity\":\"warning\",\"file\":\"d/show.lua\",\"line\":9,\"text\":\"a \\\"name\\\".\"},"
          "{\"severity\":\"error\",\"file\":\"demo.xmlz\",\"where\":\"section 2 (textures)\","
          "\"text\":\"b\xef\xbf\xbd.\"}],\"errors\":1,\"warnings\":1,\"notes\":0}\n";
    CHECK(json_line(problems_as_json(problems, "d/")) == expected);
}

TEST_CASE("What is no terminal gets no colors")
{
    CHECK_FALSE(wants_color(-1));
}
