#include "tools/preview/tries_by_hand.h"

#include "authoring/lua/tries.h"
#include "scratch_folder.h"

#include <cmath>
#include <doctest/doctest.h>
#include <iterator>
#include <limits>
#include <sys/stat.h>

namespace fs = std::filesystem;
using namespace std::string_literals;

static std::string text_of(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// A number as a build of the text found it.
static tried_number number_in(const std::string& text, uint32_t site)
{
    const try_site found = find_tries(text).at(site);
    return {"show.lua", found.line, site, found.label, found.value, found.value, found.least.value_or(0),
        found.most.value_or(1), found.can_write, 0.001};
}

namespace {

struct written_show {
    scratch_folder folder;
    std::string path = folder / "show.lua";
    std::string problem;

    explicit written_show(const std::string& text)
    {
        write_text(path, text);
    }
    bool write(const tried_number& number, double value)
    {
        problem.clear();
        return write_try_into(path, number, value, problem);
    }
    size_t files() const
    {
        return static_cast<size_t>(std::distance(fs::directory_iterator(folder.path), fs::directory_iterator()));
    }
};

} // namespace

// ---- sliders ------------------------------------------------------------------------------------------

TEST_CASE("a slider stops at its steps and its ends")
{
    tried_number number = {"show.lua", 1, 0, "x", 0.5, 0.25, 0, 1, true, 0.001};
    CHECK(stop_of_slider(number, 0.12345) == 0.123);
    CHECK(stop_of_slider(number, 3) == 1);
    CHECK(stop_of_slider(number, -std::numeric_limits<double>::infinity()) == 0);
    CHECK(stop_of_slider(number, std::nan("")) == 0.25); // it stays
    number.step = 1;
    CHECK(stop_of_slider(number, 0.7) == 1);
    number.step = 0; // nobody said
    CHECK(stop_of_slider(number, 0.12345) == 0.123);
    number.most = -1;
    CHECK(stop_of_slider(number, 0.5) == 0.25);
}

TEST_CASE("one value is kept for a number, and none where it is that of the file")
{
    const tried_number x = {"show.lua", 1, 0, "x", 0.5, 0.5, 0, 1, true, 0.001};
    const tried_number y = {"show.lua", 2, 1, "y", 2, 2, 0, 9, true, 1};
    const tried_number z = {"parts.lua", 1, 0, "z", 3, 3, 0, 9, true, 1};
    std::vector<tried_value> tries;
    keep_tried(tries, x, 0.25);
    keep_tried(tries, y, 7);
    keep_tried(tries, z, 8);
    keep_tried(tries, x, 0.75);
    REQUIRE(tries.size() == 3);
    CHECK(tries[2].file == "show.lua");
    CHECK(tries[2].site == 0);
    CHECK(tries[2].written == 0.5);
    CHECK(tries[2].value == 0.75);
    keep_tried(tries, y, 2);
    REQUIRE(tries.size() == 2);
    CHECK(tries[0].file == "parts.lua");
}

TEST_CASE("what was tried for a number that is no longer in the file is forgotten, and nothing else")
{
    std::vector<tried_value> tries
        = {{"show.lua", 0, 0.5, 0.25}, {"show.lua", 1, 2, 7}, {"show.lua", 9, 1, 2}, {"parts.lua", 0, 0.5, 1}};
    const tried_number changed = {"show.lua", 1, 0, "x", 0.6, 0.6, 0, 1, true, 0.001};
    const tried_number same = {"show.lua", 2, 1, "y", 2, 7, 0, 9, true, 1};
    forget_stale(tries, {changed, same});
    REQUIRE(tries.size() == 3); // the call of the third is not made at the moment
    CHECK(tries[0].site == 1);
    CHECK(tries[1].site == 9);
    CHECK(tries[2].file == "parts.lua");
}

// ---- files ----------------------------------------------------------------------------------------------

TEST_CASE("a number goes into its file, and nothing else of it changes")
{
    const std::string before = "\xef\xbb\xbf-- m\xfcnze \0 try(0.35, 0, 1)\r\nx = try( 0.35,\t0, 1)\r\ny = 2"s;
    written_show show(before);
    REQUIRE(show.write(number_in(before, 0), 0.4));
    CHECK(text_of(show.path) == "\xef\xbb\xbf-- m\xfcnze \0 try(0.35, 0, 1)\r\nx = try( 0.4,\t0, 1)\r\ny = 2"s);
    CHECK(show.files() == 1);
}

TEST_CASE("a file keeps its permissions, and links to it stay links")
{
    const std::string text = "x = try(0.35, 0, 1)\n";
    written_show show("nothing");
    fs::create_directory(show.folder / "parts");
    write_text(show.folder / "parts/real.lua", text);
    chmod((show.folder / "parts/real.lua").c_str(), 0640);
    fs::remove(show.path);
    fs::create_symlink("parts/real.lua", show.path);
    REQUIRE(show.write(number_in(text, 0), 0.4));
    CHECK(fs::is_symlink(show.path));
    CHECK(text_of(show.folder / "parts/real.lua") == "x = try(0.4, 0, 1)\n");
    struct stat about = {};
    stat((show.folder / "parts/real.lua").c_str(), &about);
    CHECK((about.st_mode & 0777) == 0640);
}

TEST_CASE("a number is found again where its file has changed meanwhile")
{
    const std::string before = "x = try(0.35, 0, 1)\ny = try(0.35, 0, 1)\n";
    written_show show("local z = try(0.35, 0, 1) if then -- half a line\n\n" + before);
    REQUIRE(show.write(number_in(before, 1), 0.4));
    CHECK(text_of(show.path)
        == "local z = try(0.35, 0, 1) if then -- half a line\n\nx = try(0.35, 0, 1)\ny = try(0.4, 0, 1)\n");
}

TEST_CASE("a number that is gone, or could be either of two, is not written")
{
    const std::string before = "x = try(0.35, 0, 1)\n";
    for (const std::string now : {"x = try(0.36, 0, 1)\n", "x = 0.35\n", "", "-- x = try(0.35, 0, 1)\n",
             "q = try(1, 0, 2)\nx = try(0.35, 0, 1)\nx = try(0.35, 0, 1)\n"}) {
        written_show show(now);
        INFO(now);
        CHECK_FALSE(show.write(number_in(before, 0), 0.4));
        CHECK(show.problem == show.path + " has changed, and this number is not where it was: save it, and try again");
        CHECK(text_of(show.path) == now);
        CHECK(show.files() == 1);
    }
}

TEST_CASE("what cannot be written says why")
{
    const std::string text = "x = try(0.35, 0, 1)\ny = try(x, 0, 1)\n";
    written_show show(text);
    CHECK_FALSE(show.write(number_in(text, 1), 0.4));
    CHECK(show.problem
        == "line 2 of " + show.path
            + " computes this number: only one that is written out, like try(0.35, 0, 1), can be replaced");
    CHECK_FALSE(show.write(number_in(text, 0), std::nan("")));
    CHECK(show.problem == "what is tried is no number that a file can have");
    CHECK(text_of(show.path) == text);
    fs::remove(show.path);
    CHECK_FALSE(show.write(number_in(text, 0), 0.4));
    CHECK(show.problem == "cannot read " + show.path + ": No such file or directory");
    fs::create_directory(show.path);
    CHECK_FALSE(show.write(number_in(text, 0), 0.4));
    CHECK(show.problem.starts_with("cannot read " + show.path + ": "));
}

TEST_CASE("a file that has the number already is left alone")
{
    const std::string text = "x = try(3.5e-1, 0, 1)\n";
    written_show show(text);
    const auto far_past = fs::file_time_type::clock::now() - std::chrono::hours(5);
    fs::last_write_time(show.path, far_past);
    const auto before = fs::last_write_time(show.path);
    CHECK(show.write(number_in(text, 0), 0.35));
    CHECK(fs::last_write_time(show.path) == before);
    CHECK(text_of(show.path) == text);
}
