#include "output_names.h"

#include "tools/frames/output_file.h"

#include <cstdlib>
#include <doctest/doctest.h>
#include <filesystem>

// The question itself needs a terminal, and is tested with the program.

TEST_CASE("The names of single outputs are known before anything is loaded")
{
    render_options options;
    options.contact_sheet = "sheet.png";
    options.times = "times.json";
    options.kind = output_still;
    options.output = "100%%.png";
    CHECK(fixed_output_names(options) == std::vector<std::string>{"sheet.png", "times.json", "100%.png"});
    options.kind = output_video;
    options.output = "100%%.mp4";
    CHECK(fixed_output_names(options).back() == "100%%.mp4");
    options.kind = output_stream;
    options.output = "-";
    CHECK(fixed_output_names(options).back() == "times.json");
    options.kind = output_pictures;
    options.output = "%d.png";
    CHECK(fixed_output_names(options).back() == "times.json");
}

TEST_CASE("Commands have a name of their own, but on standard output")
{
    render_options options;
    options.commands = "a.txt";
    CHECK(fixed_output_names(options).back() == "a.txt");
    options.commands = "-";
    CHECK(fixed_output_names(options) == std::vector<std::string>{"", ""});
}

TEST_CASE("Names that are taken may be written only where they may be replaced")
{
    char folder[] = "/tmp/brimlow-names-XXXXXX";
    REQUIRE(mkdtemp(folder) != nullptr);
    const std::string a = std::string(folder) + "/a";
    const std::string b = std::string(folder) + "/b";
    std::string problem;
    CHECK(may_write({a, b, ""}, existing_kept, problem));
    CHECK(problem.empty());
    REQUIRE(write_file(a, {}, problem));
    CHECK(may_write({b}, existing_kept, problem));
    CHECK_FALSE(may_write({b, a}, existing_kept, problem));
    CHECK(problem == a + " exists; -y replaces what exists");
    REQUIRE(write_file(b, {}, problem));
    CHECK_FALSE(may_write({b, a}, existing_kept, problem));
    CHECK(problem == b + " and 1 other exist; -y replaces what exists");
    problem.clear();
    CHECK(may_write({b, a}, existing_replaced, problem));
    CHECK(problem.empty());
    CHECK(may_write({folder, "/dev/null", std::string(folder) + "/none"}, existing_kept, problem));
    std::filesystem::create_symlink("a", std::string(folder) + "/link");
    std::filesystem::create_symlink("nowhere", std::string(folder) + "/lost");
    CHECK_FALSE(may_write({std::string(folder) + "/link"}, existing_kept, problem));
    CHECK(may_write({std::string(folder) + "/lost"}, existing_kept, problem));
    std::filesystem::remove_all(folder);
}
