#include "authoring/lua/tries.h"

#include <doctest/doctest.h>

#include <cmath>
#include <limits>
#include <string>

// "2 x=0.35 [0 1]" for each; "?" for what is not written out, a "." behind a number with a point.
static std::string said(const try_site& site)
{
    const auto number = [](double value) {
        std::string text = std::to_string(value);
        text.erase(text.find_last_not_of('0') + 1);
        return text.ends_with('.') ? text.substr(0, text.size() - 1) : text;
    };
    const std::string value = site.can_write ? number(site.value) + (site.has_point ? "." : "") : "?";
    return std::to_string(site.line) + " " + site.label + "=" + value + " [" + (site.least ? number(*site.least) : "?")
        + " " + (site.most ? number(*site.most) : "?") + "]";
}

static std::string tries_in(std::string_view text)
{
    std::string all;
    for (const try_site& site : find_tries(text))
        all += (all.empty() ? "" : "|") + said(site);
    return all;
}

TEST_CASE("a try is found with its number, its limits and what it is for")
{
    CHECK(tries_in("x = try(0.35, 0, 1)") == "1 x=0.35. [0 1]");
    CHECK(tries_in("\nlocal x <const> = try ( -3 , -0x10 , 1e1 )") == "2 x=-3 [-16 10]");
    CHECK(tries_in("lamp.alpha = 2 * try(1.0, 0, 5) / 3") == "1 lamp.alpha=1. [0 5]");
    CHECK(tries_in("material { color = red, alpha = try(.5, 0, 1) }") == "1 alpha=0.5. [0 1]");
    CHECK(tries_in("a, b.c[i + 1] = 0, try(1,0,2)") == "1 b.c[i + 1]=1 [0 2]");
    CHECK(tries_in("print(1) return try(1,0,2)") == "1 =1 [0 2]");
}

TEST_CASE("places in lists and of arguments are counted")
{
    CHECK(tries_in("at = { 0, try(1,0,2), try(3,0,4) }") == "1 at 2=1 [0 2]|1 at 3=3 [0 4]");
    CHECK(tries_in("y = linear(0, try(1,0,2), \"4s\")") == "1 y: linear 2=1 [0 2]");
    CHECK(tries_in("at = { size = 1, 7, f(a.b(9), try(1,0,2)) }") == "1 at 2: f 2=1 [0 2]");
    CHECK(tries_in("f { try(1,0,2) }") == "1 =1 [0 2]");
    CHECK(tries_in("x = (1 + (try(1,0,2)))") == "1 x=1 [0 2]");
    CHECK(tries_in("x = t[try(1,0,2)]") == "1 x=1 [0 2]");
}

TEST_CASE("a statement begins where the one before ends, with or without a sign")
{
    CHECK(tries_in("x = f(1) y = try(1,0,2)") == "1 y=1 [0 2]");
    CHECK(tries_in("x = 1; try(1,0,2)") == "1 =1 [0 2]");
    CHECK(tries_in("if a then x = try(1,0,2) else y = try(3,0,4) end f(try(5,0,6))")
        == "1 x=1 [0 2]|1 y=3 [0 4]|1 f 1=5 [0 6]");
    CHECK(tries_in("each(function(n) for i = 1, 3 do x = i end z = try(1,0,2) end, try(3,0,4))")
        == "1 z=1 [0 2]|1 each 2=3 [0 4]");
    CHECK(tries_in("a = { b = function() c = 1 end, d = x + try(1,0,2), try(3,0,4) }") == "1 d=1 [0 2]|1 a 1=3 [0 4]");
}

TEST_CASE("texts and comments hold no tries")
{
    CHECK(
        tries_in("x = 'try(1,0,2)' .. \"\\\"try(1,0,2)\" .. [[try(1,0,2)\n]] -- try(1,0,2)\n--[==[ try(1,0,2)\n]]\n]==]"
                 "y = try(--[[0,]] 4, --5,\n0, 9)")
        == "5 y=4 [0 9]");
}

TEST_CASE("other things of that name are no tries")
{
    CHECK(
        tries_in(
            "a.try(1,0,2) a:try(1,0,2) local function try(a) end function try(b) end retry(1,0,2) try_(1,0,2) try = 1 "
            "goto try ::try:: try{1,0,2} try'1' a . try (1,0,2)")
        == "");
    CHECK(tries_in("x = a ..try(1,0,2)") == "1 x=1 [0 2]");
}

TEST_CASE("tries stand in tries, several in a line, and over several lines")
{
    CHECK(tries_in("x = try(try(1,0,2),0,3)") == "1 x=? [0 3]|1 x=1 [0 2]");
    const auto nested = find_tries("x = try(try(1,0,2),0,3)");
    CHECK(nested[0].closed == 22);
    CHECK(nested[1].closed == 17);
    CHECK(tries_in("a = try(1,0,2) b = try(3,0,4)\tc = try(5,0,6)") == "1 a=1 [0 2]|1 b=3 [0 4]|1 c=5 [0 6]");
    CHECK(tries_in("x = try\n\t(\r\n  0.5,\n0,\n1)\ny = try(1,0,2)") == "1 x=0.5. [0 1]|6 y=1 [0 2]");
    CHECK(tries_in("x =\n\ntry(\n1,0,2)") == "3 x=1 [0 2]");
}

TEST_CASE("only a number that stands alone is one that can be written")
{
    for (const char* argument : {"a", "1 + 2", "- 1", "-\n1", "- -1", "2 * 3", "(1)", "#t", "-a", "1, ", "", "'1'",
             "3a", "1e999", "{}", "f()", "~1", "not 1", "2^3"})
        CHECK(!find_tries("x = try(" + std::string(argument) + " , 0, 1)").at(0).can_write
            == (argument != std::string("1, ")));
    CHECK(tries_in("x = try(n, 0, m)") == "1 x=? [0 ?]");
    CHECK(tries_in("x = try(1)") == "1 x=1 [? ?]");
    CHECK(tries_in("x = try()") == "1 x=? [? ?]");
    CHECK(tries_in("x = try(1, 2, 3, 4)") == "1 x=1 [2 3]");
}

TEST_CASE("texts that are cut anywhere, or are no Lua, give what is there")
{
    const std::string text = "\xef\xbb\xbf#!x\nlocal a = { b = [=[ ] ]=], try(0x1p2, -1, 8) } -- \"\r\nf(function() "
                             "c['ü'] = try(1, 2, 3) end)";
    for (size_t length = 0; length <= text.size(); ++length) {
        const std::string cut = text.substr(0, length);
        for (const try_site& site : find_tries(cut)) {
            CHECK(site.begin <= site.end);
            CHECK(site.end <= cut.size());
        }
    }
    CHECK(tries_in(text) == "2 a 1=4. [-1 8]|3 c['ü']=1 [2 3]");
    CHECK(tries_in(")}] end end x = try(1,0,2)") == "1 x=1 [0 2]");
    CHECK(tries_in("x = { f( } , try(1,0,2)") == "1 x=1 [0 2]");
    CHECK(tries_in(std::string(100'000, '(')) == "");
    CHECK(tries_in(std::string(100'000, '{') + "try(1,0,2)") == "");
}

TEST_CASE("a text of very many tries gives the first thousand")
{
    std::string text;
    for (int n = 0; n < 1200; ++n)
        text += "x = try(1,0,2)\n";
    const auto sites = find_tries(text);
    CHECK(sites.size() == 1000);
    CHECK(sites.back().can_write);
    CHECK(sites.back().line == 1000);
}

TEST_CASE("labels stay short and whole")
{
    std::string long_name;
    for (int n = 0; n < 40; ++n)
        long_name += "ü";
    const auto sites = find_tries("t['" + long_name + "'].x = try(1,0,2) tt['" + long_name.substr(0, 20)
        + "'][1]['üüüüüüüüüü']['x'] = try(1,0,2)");
    CHECK(sites.at(0).label == "t[...].x");
    const std::string cut = find_tries("ab = f(1, { try(1,0,2), " + long_name + "})").at(0).label;
    CHECK(cut == "ab: f 2 1");
    const std::string deep = find_tries(std::string(30, 'a') + " = t['üüüüüüüüü'].f(try(1,0,2))").at(0).label;
    CHECK(deep == std::string(30, 'a') + ": t['üüüüüü"); // 47 bytes: 48 would part a letter
    CHECK(sites.at(1).label == "tt['üüüüüüüüüü'][1]...['x']");
}

// ---- writing --------------------------------------------------------------------------------------

static std::string written(const std::string& text, double value, size_t number = 0)
{
    return with_try_written(text, find_tries(text).at(number), value);
}

TEST_CASE("writing changes the bytes of the number alone")
{
    CHECK(written("\tx = try( 0.35 , 0, 1) -- 0.35\r\n", 0.4) == "\tx = try( 0.4 , 0, 1) -- 0.35\r\n");
    CHECK(written("x = try(-1, -2, 2)y", 0.25) == "x = try(0.25, -2, 2)y");
    CHECK(written("x = try(1,-2,2)", -1) == "x = try(-1,-2,2)");
    CHECK(written("x = try(0x10,0,32)", 17) == "x = try(17,0,32)");
    CHECK(written("'ü' x = try(try(1,0,2),0,3)", 2, 1) == "'ü' x = try(try(2,0,2),0,3)");
    CHECK(written("x = try(1e3,0,2e3)", 1000) == "x = try(1e3,0,2e3)"); // it says that already
}

TEST_CASE("numbers are written as short as they read back, and keep their point")
{
    const double values[] = {0.1, 0.35, 1.0 / 3, 123456.75, 2e-5, 3.4e38, -0.001, 1e-30, 5e14};
    for (const double value : values) {
        const std::string text = written("x = try(7.0,0,1)", value);
        CHECK(find_tries(text).at(0).value == value);
        CHECK(find_tries(text).at(0).has_point);
    }
    CHECK(written("x = try(1.0,0,5)", 2) == "x = try(2.0,0,5)");
    CHECK(written("x = try(1,0,5.5)", 2) == "x = try(2,0,5.5)");
    CHECK(written("x = try(1.0,0,5)", -0.0) == "x = try(0.0,0,5)");
    CHECK(written("x = try(1.0,0,5)", 0.0001) == "x = try(0.0001,0,5)");
    CHECK(written("x = try(1.0,0,5)", 100000) == "x = try(100000.0,0,5)");
}

TEST_CASE("what cannot be written gives nothing")
{
    CHECK(written("x = try(a,0,1)", 0.5) == "");
    CHECK(written("x = try(1,0,2)", std::numeric_limits<double>::infinity()) == "");
    CHECK(with_try_written("x", find_tries("x = try(1,0,2)").at(0), 2) == ""); // a site of another text
}

// ---- sliders ----------------------------------------------------------------------------------------

TEST_CASE("a slider has a thousand steps or more, and none above 1")
{
    CHECK(try_step(0, 1, false) == 0.001);
    CHECK(try_step(-1, 1, false) == 0.001);
    CHECK(try_step(0, 0.5, false) == 0.0001);
    CHECK(try_step(0, 10, false) == 0.01);
    CHECK(try_step(0, 360, false) == 0.1);
    CHECK(try_step(0, 1000, false) == 1);
    CHECK(try_step(0, 1e9, false) == 1);
    CHECK(try_step(0, 10, true) == 1);
    CHECK(try_step(3, 3, false) == 1);
    CHECK(try_step(-3.4e38, 3.4e38, false) == 1);
}

TEST_CASE("a slider stands at the nearest step, as it is written, and not beyond its ends")
{
    CHECK(nearest_tried(0.35049, 0, 1, 0.001) == 0.35);
    CHECK(nearest_tried(0.3506, 0, 1, 0.001) == 0.351);
    CHECK(nearest_tried(7.3, 0, 10, 1) == 7);
    CHECK(nearest_tried(2, 0, 1, 0.001) == 1);
    CHECK(nearest_tried(-2, 0, 1, 0.001) == 0);
    CHECK(nearest_tried(0.1, 0.12345, 1, 0.0001) == 0.12345); // an end is an end, of however many digits
    CHECK(!std::signbit(nearest_tried(-0.0001, -1, 1, 0.001)));
    CHECK(nearest_tried(-3e38, -3.4e38, 3.4e38, 1) == -3e38);
}
