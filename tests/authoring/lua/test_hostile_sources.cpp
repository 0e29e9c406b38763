// Sources that nobody writes on purpose, and what they are told.
#include "authoring/lua/source.h"

#include <doctest/doctest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

struct built_source {
    std::vector<std::string> told; // problems without their places
    std::string document;          // entry's bytes, so that two can be compared
};

} // namespace

// A show of one still triangle, and what comes behind it: `thing` is placed, `walk` is its scene.
static constexpr const char* beginning = R"(
local thing = shape { positions = { {0, 0, 0}, {1, 0, 0}, {0, 1, 0} }, triangles = { {1, 2, 3} } }
local walk = scene "walk" { thing { material = material { color = "white" } } }
)";

static built_source built_of(const std::string& behind, const std::string& file = "")
{
    char folder[] = "/tmp/brimlow-hostile-XXXXXX";
    REQUIRE(mkdtemp(folder) != nullptr);
    std::ofstream(std::string(folder) + "/show.lua", std::ios::binary) << beginning << behind;
    if (!file.empty())
        std::ofstream(std::string(folder) + "/" + file, std::ios::binary) << "some bytes";
    built_show built;
    build_source({folder, "show.lua"}, built);
    std::filesystem::remove_all(folder);
    built_source made;
    for (const show_problem& problem : built.problems)
        if (problem.severity == problem_error)
            made.told.push_back(problem.text);
    if (built.documents[0] != nullptr)
        made.document = document_text(*built.documents[0]);
    return made;
}

static constexpr const char* a_clip = "track { walk { from = 0, to = 400 } }\n";

namespace {
using lines = std::vector<std::string>;
} // namespace

TEST_CASE("A list that stands in itself, or too deep in others, is told and ends the run")
{
    const lines told = {"lists stand more than 100 deep in one another: is one of them in itself?"};
    for (const char* word : {"curve(t)", "scene \"s\" (t)", "track(t)", "walk:add(t)", "segment(\"Linear\", 4, t)"}) {
        CAPTURE(word);
        CHECK(built_of(std::string("local t = {} t[1] = t ") + word).told == told);
        CHECK(built_of(std::string("local t = {} for i = 1, 100000 do t = {t} end ") + word).told == told);
    }
    CHECK(
        built_of(std::string("local t = thing {} for i = 1, 100 do t = {t} end walk:add(t)\n") + a_clip).told.empty());
}

TEST_CASE("Numbers that a document cannot hold are errors and not zeroes")
{
    const auto first_of = [](const std::string& number) {
        const lines told = built_of("walk:add(thing { at = {" + number + ", 0, 0} })\n" + a_clip).told;
        return told.empty() ? std::string() : told.front();
    };
    const std::string infinite = " is no number that can be written down: look for a division by 0.";
    const std::string large = " is too large a number: they end at 3.4e38.";
    CHECK(first_of("1 / 0") == "object: at's x" + infinite);
    CHECK(first_of("1e39") == "object: at's x" + large);
    CHECK(first_of("-1e300") == "object: at's x" + large);
    CHECK(first_of("3.4e38").empty());
    CHECK(first_of("linear(0, 1, 100) * (1 / 0)") == "a curve * a number" + infinite);
    CHECK(first_of("linear(0, 1, 100) - 1e39") == "a curve - a number" + large);
    CHECK(first_of("linear(-1e30, 1e30, 1) * 1e10")
        == "a curve reaches numbers that cannot be written down: they end at 3.4e38.");
}

TEST_CASE("Times beyond all shows do not come round to its beginning")
{
    const auto first_of = [](const std::string& to) {
        const lines told = built_of("track { walk { from = 0, to = " + to + " } }").told;
        return told.empty() ? std::string() : told.front();
    };
    const std::string late = "the clip of \"walk\" ends at 42949672.95s, and a show lasts 256s at most.";
    CHECK(first_of("2^32 + 400") == late);
    CHECK(first_of("1e30") == late);
    CHECK(first_of("\"" + std::string(50, '9') + "s\"")
        == "clip: to \"" + std::string(50, '9') + "s\" is longer than a number can say.");
    CHECK(first_of("\"-0:05\"") == "clip: to lies 500 ticks before the show begins: that is at 0.");
}

TEST_CASE("A way's point that moves is an error")
{
    CHECK(built_of(std::string("path { {0, {0, 0, 1}}, {100, {0, linear(0, 1, 5), 2}} }\n") + a_clip).told
        == lines{"path: a point stands still, and y of this one is a curve: add points."});
}

TEST_CASE("What is made behind a loading screen whose error was caught belongs to the show")
{
    const std::string rest = a_clip;
    const built_source caught = built_of("pcall(function() loading(function() error(\"x\") end) end)\n" + rest);
    CHECK(caught.told.empty());
    CHECK(caught.document == built_of(rest).document);
}

TEST_CASE("An entry's name that does not fit is an error, given or of the file")
{
    const std::string longest(31, 'a');
    const lines told = {"\"" + longest
        + "a\" is longer than the 31 bytes of an entry's name: give it one, { name = \"...\" } behind the file."};
    CHECK(built_of(std::string(a_clip) + "entry \"f\" { name = \"" + longest + "\" }", "f").told.empty());
    CHECK(built_of(std::string(a_clip) + "entry \"f\" { name = \"" + longest + "a\" }", "f").told == told);
    CHECK(built_of(std::string(a_clip) + "entry \"" + longest + "a\"", longest + "a").told == told);
}

TEST_CASE("A mesh whose longest side is nothing in single precision is an error")
{
    const std::string fault = ": write the length, above 0, that its longest side is to have.";
    for (const char* fit : {"-1", "1e-320"}) {
        const lines told = built_of(std::string(a_clip) + "mesh \"f.obj\" { fit = " + fit + " }", "f.obj").told;
        CHECK(std::any_of(told.begin(), told.end(), [&fault](const auto& line) { return line.ends_with(fault); }));
    }
}

TEST_CASE("There is no negative zero in a document")
{
    const std::string other = std::string("walk:add(thing { at = {0, 0, 0} })\n") + a_clip;
    CHECK(built_of(std::string("walk:add(thing { at = {-0.0, -1e-50, 0} })\n") + a_clip).document
        == built_of(other).document);
}
