#include "authoring/lua/source.h"
#include "authoring/lua/tries.h"

#include "../built_source.h"

#include <doctest/doctest.h>

#include <cmath>
#include <limits>

namespace {

struct tried_run {
    std::string printed; // what the source printed, a blank between each
    built_show built;
};

} // namespace

static void add_printed(void* user, const char* line)
{
    std::string& printed = static_cast<tried_run*>(user)->printed;
    printed += (printed.empty() ? "" : " ") + std::string(line);
}

static tried_run run_folder(const test_folder& folder, const std::vector<try_override>& overrides)
{
    tried_run run;
    build_request request = {folder.path, "show.lua", add_printed, &run};
    request.tries = overrides;
    build_source(request, run.built);
    return run;
}

static tried_run run_with(const std::string& text, const std::vector<try_override>& overrides = {})
{
    const test_folder folder;
    write_file(folder, "show.lua", text);
    return run_folder(folder, overrides);
}

static std::string printed_by(const std::string& text, const std::vector<try_override>& overrides = {})
{
    return run_with(text, overrides).printed;
}

static std::string plain(double number)
{
    std::string text = std::to_string(number);
    text.erase(text.find_last_not_of('0') + 1);
    return text.ends_with('.') ? text.substr(0, text.size() - 1) : text;
}

// "show.lua:1 #0 x 0.35 0.4 [0 1 by 0.001]" for each; "-" in front of those that cannot be written.
static std::string listed(const built_show& built)
{
    std::string all;
    for (const tried_call& call : built.tried)
        all += (all.empty() ? "" : "|") + std::string(call.can_write ? "" : "-") + call.file + ":"
            + std::to_string(call.line) + " #" + std::to_string(call.site) + " " + call.label + " "
            + plain(call.written) + " " + plain(call.value) + " [" + plain(call.least) + " " + plain(call.most) + " by "
            + plain(call.step) + "]";
    return all;
}

// The notes and errors of a source, but for what any source without a clip is told.
static std::string told_of(const std::string& text)
{
    std::string all;
    for (const show_problem& problem : run_with(text).built.problems)
        if (problem.line != 0)
            all += (all.empty() ? "" : "|") + std::to_string(problem.line) + ": " + problem.text;
    return all;
}

TEST_CASE("a try is the number that is written, a whole one where a whole one is written")
{
    CHECK(printed_by("print(try(0.35, 0, 1), try(3, 0, 5), try(3.0, 0, 5), try(-1, -2, 2))") == "0.35\t3\t3.0\t-1");
    CHECK(printed_by("for i = 1, try(3, 1, 9) do print(i) end") == "1 2 3");
    CHECK(printed_by("print(#string.rep('a', try(4, 1, 9)), 7 // try(2, 1, 3))") == "4\t3");
}

TEST_CASE("the calls that were made are listed, with what a slider needs")
{
    CHECK(
        listed(run_with("local x = try(0.35, 0, 1)\nlocal t = { size = try(3, 1, 9), speed = try(3.0, 0, 360) }").built)
        == "show.lua:1 #0 x 0.35 0.35 [0 1 by 0.001]|show.lua:2 #1 size 3 3 [1 9 by 1]|show.lua:2 #2 speed 3 3 [0 360 "
           "by 0.1]");
    CHECK(listed(run_with("local function f() return try(1, 0, 2) end").built) == ""); // nobody calls it
    CHECK(
        listed(run_with("local n = 2 local x = try(n / 4, 0, n)").built) == "-show.lua:1 #0 x 0.5 0.5 [0 2 by 0.001]");
}

TEST_CASE("they stand in the order of files and texts, whichever was called first")
{
    const test_folder folder;
    write_file(folder, "show.lua",
        "local function late() return try(1, 0, 2) end\nrequire \"parts.walk\"\nlocal y = try(2, 0, 4)\nlate()");
    write_file(folder, "parts/walk.lua", "\xef\xbb\xbf#!\r\n-- try(1, 0, 2)\r\nlocal z = try(5, 0, 6)\r\n");
    const tried_run run = run_folder(folder, {{"parts/walk.lua", 0, 5, 6}, {"show.lua", 0, 1, 2}});
    CHECK(listed(run.built)
        == "show.lua:1 #0  1 2 [0 2 by 1]|show.lua:3 #1 y 2 2 [0 4 by 1]|parts/walk.lua:3 #0 z 5 6 [0 6 by 1]");
}

TEST_CASE("an override takes the place of the number, as whole as that is")
{
    CHECK(printed_by("print(try(0.35, 0, 1))", {{"show.lua", 0, 0.35, 0.5}}) == "0.5");
    CHECK(printed_by("print(try(3, 0, 5))", {{"show.lua", 0, 3, 4}}) == "4");
    CHECK(printed_by("print(try(3.0, 0, 5))", {{"show.lua", 0, 3, 4}}) == "4.0");
    CHECK(printed_by("print(try(3, 0, 5.5))", {{"show.lua", 0, 3, 4}}) == "4");
    CHECK(printed_by("print(try(3, 0, 5.5))", {{"show.lua", 0, 3, 4.25}}) == "4.25");
}

TEST_CASE("an override stands at a step of its slider, between its ends")
{
    CHECK(printed_by("print(try(3, 0, 5))", {{"show.lua", 0, 3, 4.4}}) == "4");
    CHECK(printed_by("print(try(0.5, 0, 1))", {{"show.lua", 0, 0.5, 0.12349}}) == "0.123");
    CHECK(printed_by("print(try(0.5, 0, 1))", {{"show.lua", 0, 0.5, 7}}) == "1.0");
    CHECK(listed(run_with("local x = try(0.5, 0, 1)", {{"show.lua", 0, 0.5, 7}}).built)
        == "show.lua:1 #0 x 0.5 1 [0 1 by 0.001]");
    for (const double none : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()})
        CHECK(printed_by("print(try(0.5, 0, 1))", {{"show.lua", 0, 0.5, none}}) == "0.5");
}

TEST_CASE("an override counts for its own call and number alone")
{
    const std::string text = "print(try(0.35, 0, 1), try(0.4, 0, 1))";
    CHECK(printed_by(text, {{"show.lua", 1, 0.4, 0.9}}) == "0.35\t0.9");
    CHECK(printed_by(text, {{"show.lua", 0, 0.36, 0.9}}) == "0.35\t0.4"); // the file says something new
    CHECK(printed_by(text, {{"other.lua", 0, 0.35, 0.9}}) == "0.35\t0.4");
    CHECK(printed_by(text, {{"show.lua", 7, 0.35, 0.9}}) == "0.35\t0.4");
}

TEST_CASE("a call that is made again and again has one value")
{
    CHECK(printed_by("for i = 1, 3 do print(try(0.5, 0, 1)) end", {{"show.lua", 0, 0.5, 0.25}}) == "0.25 0.25 0.25");
    CHECK(printed_by("local function f() return try(0.5, 0, 1) end\nprint(f())\nprint(f() + f())",
              {{"show.lua", 0, 0.5, 0.25}})
        == "0.25 0.5");
    const tried_run computed = run_with("for i = 1, 3 do print(try(i / 10, 0, 1)) end", {{"show.lua", 0, 0.1, 0.25}});
    CHECK(computed.printed == "0.25 0.25 0.25");
    CHECK(listed(computed.built) == "-show.lua:1 #0 print 1 0.1 0.25 [0 1 by 0.001]");
}

TEST_CASE("the call is found wherever in an expression it stands")
{
    const std::vector<try_override> half = {{"show.lua", 0, 1, 0.5}};
    CHECK(
        printed_by("local function f()\nreturn try(1, 0, 2.0)\nend print(f())", half) == "0.5"); // the last call of all
    CHECK(printed_by("print(\ntry\n(\n1,\n0, 2.0)\n)", half) == "0.5");
    CHECK(printed_by("local t = {\nx =\n-try(1, 0, 2.0) * 2 } print(t.x)", half) == "-1.0");
    CHECK(printed_by("print(pcall(function() return try(1, 0, 2.0) end))", half) == "true\t0.5");
    CHECK(
        printed_by("table.sort({ 3, 2, 1 }, function(a, b) return a < b * try(1, 0, 2.0) end) print(1)", half) == "1");
}

TEST_CASE("equal calls on one line take turns, in every round of a loop")
{
    const std::string text = "for i = 1, 2 do print(try(0, -5, 5), try(0, -5, 5), try(0, -5, 5)) end";
    CHECK(printed_by(text, {{"show.lua", 1, 0, 4}}) == "0\t4\t0 0\t4\t0");
    CHECK(printed_by(text, {{"show.lua", 2, 0, 1}, {"show.lua", 0, 0, 2}}) == "2\t0\t1 2\t0\t1");
}

TEST_CASE("unlike calls on one line are told apart, though some are not made")
{
    const std::string text = "for i = 1, 3 do print(i == 2 and try(1, 0, 9) or try(1, 0, 8), try(2, 0, 9)) end";
    CHECK(printed_by(text, {{"show.lua", 0, 1, 5}}) == "1\t2 5\t2 1\t2");
    CHECK(printed_by(text, {{"show.lua", 1, 1, 5}}) == "5\t2 1\t2 5\t2");
    CHECK(printed_by(text, {{"show.lua", 2, 2, 5}}) == "1\t5 1\t5 1\t5");
}

TEST_CASE("calls that differ in one number only are told apart")
{
    const char* const texts[] = {"try(1, 0, 9) end print(try(2, 0, 9))", "try(2, 1, 9) end print(try(2, 0, 9))",
        "try(2, 0, 8) end print(try(2, 0, 9))"};
    for (const char* const text : texts)
        CHECK(printed_by(
                  "for i = 1, 2 do if i == 2 then local x = " + std::string(text) + " end", {{"show.lua", 1, 2, 5}})
            == "5 5");
}

TEST_CASE("of a try in a try the inner one is called first, whatever it is tried at")
{
    const std::string text = "for i = 1, 2 do print(try(try(1, 0, 3), 0, 3)) end";
    CHECK(listed(run_with(text).built) == "-show.lua:1 #0 print 1 1 1 [0 3 by 1]|show.lua:1 #1 print 1 1 1 [0 3 by 1]");
    CHECK(printed_by(text, {{"show.lua", 1, 1, 2}}) == "2 2");
    CHECK(listed(run_with(text, {{"show.lua", 1, 1, 2}}).built)
        == "-show.lua:1 #0 print 1 2 2 [0 3 by 1]|show.lua:1 #1 print 1 1 2 [0 3 by 1]");
    CHECK(printed_by(text, {{"show.lua", 0, 1, 3}}) == "3 3");
}

TEST_CASE("a try under another name is its number and says once that it has no slider")
{
    const tried_run run = run_with(
        "local t = try\nfor i = 1, 3 do print(t(1, 0, 2)) end print(_G.try(0.5, 0, 1))", {{"show.lua", 0, 1, 2}});
    CHECK(run.printed == "1 1 1 0.5");
    CHECK(run.built.tried.empty());
    const std::string text
        = ": this try has no slider: write try(value, least, most) itself, and not another name for it.";
    CHECK(told_of("local t = try\nfor i = 1, 300 do t(1, 0, 2) end\nt(1, 0, 2) local y = try(5, 0, 6)")
        == "2" + text + "|3" + text);
}

TEST_CASE("more calls than a file may have are numbers, and say so")
{
    std::string text = "local x = {";
    for (int n = 0; n < 1001; ++n)
        text += "try(1, 0, 2),\n";
    text += "} print(#x)";
    const tried_run run = run_with(text);
    CHECK(run.printed == "1001");
    CHECK(run.built.tried.size() == 1000);
    CHECK(told_of(text) == "1001: this try has no slider: a file has 1,000 of them at most.");
}

TEST_CASE("a wrong try says what to write, is no slider, and the source goes on")
{
    const tried_run run = run_with("print(try(5, 0, 1), try(0.5, 1, 0), try('a', 0, 1))\nlocal x = try(1, 0, 2)");
    CHECK(run.printed == "5\t0.5\t0");
    CHECK(listed(run.built) == "show.lua:2 #3 x 1 1 [0 2 by 1]");
    CHECK(has_errors(run.built.problems));
}

TEST_CASE("a source that ends early has told of the calls before")
{
    CHECK(listed(run_with("local x = try(1, 0, 2)\nerror 'no'\nlocal y = try(1, 0, 2)").built)
        == "show.lua:1 #0 x 1 1 [0 2 by 1]");
}

// ---- packs ------------------------------------------------------------------------------------------

static const char* const whole_show = R"(local solids = require "solids"
local red = material { color = { try(1, 0, 2), try(0.5, 0, 1), try(0.5, 0, 1) } }
local s = scene "s" {}
for i = 1, try(3, 1, 9) do s:add(solids.ball() { material = red, at = { i * try(1.5, 0, 4), 0, 0 } }) end
track { s { from = 0, to = try(400, 1, 900), camera = { at = { 0, 0, 5 } } } }
)";

static std::vector<uint8_t> pack_of(const std::string& text, const std::vector<try_override>& overrides)
{
    const tried_run run = run_with(text, overrides);
    CHECK(!has_errors(run.built.problems));
    return pack_bytes(run.built.entries);
}

TEST_CASE("what is tried is byte for byte what the file gives once the number is written into it")
{
    const std::vector<try_site> sites = find_tries(whole_show);
    REQUIRE(sites.size() == 6);
    const double values[] = {2, 0.25, 0.125, 5, 1, 250};
    for (uint32_t site = 0; site < sites.size(); ++site) {
        INFO(site);
        const std::vector<uint8_t> tried = pack_of(whole_show, {{"show.lua", site, sites[site].value, values[site]}});
        CHECK(tried == pack_of(with_try_written(whole_show, sites[site], values[site]), {}));
        CHECK(tried != pack_of(whole_show, {}));
    }
}
