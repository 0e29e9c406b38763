#include "tools/preview/preview_options.h"

#include "shell/settings.h"
#include "tools/preview/preview_option_table.h"

#include <doctest/doctest.h>
#include <sstream>
#include <vector>

static preview_options accepted(std::initializer_list<const char*> arguments)
{
    const std::vector<const char*> list(arguments);
    preview_options options;
    std::string problem;
    const bool read = read_preview_options(list, options, problem);
    INFO(problem);
    CHECK(read);
    return options;
}

static std::string refusal(std::initializer_list<const char*> arguments)
{
    const std::vector<const char*> list(arguments);
    preview_options options;
    std::string problem;
    return read_preview_options(list, options, problem) ? "" : problem;
}

TEST_CASE("Without choices the preview plays the working directory with shaders, 60 times a second, in a window")
{
    const preview_options options = accepted({});
    CHECK(options.show.empty());
    CHECK(options.wish.glsl);
    CHECK(options.wish.aspect == aspect_automatic);
    CHECK(options.wish.seed == 1);
    CHECK(options.wish.card == lesser_card());
    CHECK(!options.size_given);
    CHECK(options.window_width == 1440);
    CHECK(options.window_height == 900);
    CHECK(options.rate.numerator == 60);
    CHECK(options.rate.denominator == 1);
    CHECK(options.at.kind == moment_unset);
    CHECK(!options.paused);
    CHECK(!options.muted);
    CHECK(!options.fullscreen);
    CHECK(options.control.empty());
}

TEST_CASE("Each option of the preview goes into its field")
{
    const preview_options options = accepted({"--size", "640x360", "--aspect=16:10", "--path", "fixed", "--caps",
        "no-vbo,units=2", "--seed", "4294967295", "--fps", "29.97", "--at", "1:02.25", "--paused", "--mute", "--window",
        "1600x1000", "--fullscreen", "--control", "/tmp/a", "a folder/show.lua"});
    CHECK(options.size_given);
    CHECK(options.wish.width == 640);
    CHECK(options.wish.height == 360);
    CHECK(options.wish.aspect == aspect_16_10);
    CHECK(!options.wish.glsl);
    CHECK(options.wish.card.no_vbo);
    CHECK(options.wish.card.units == 2);
    CHECK(options.wish.seed == 4294967295);
    CHECK(options.rate.numerator == 30000);
    CHECK(options.rate.denominator == 1001);
    CHECK(options.at.kind == moment_time);
    CHECK(options.at.value == 62250000);
    CHECK(options.paused);
    CHECK(options.muted);
    CHECK(options.window_width == 1600);
    CHECK(options.window_height == 1000);
    CHECK(options.fullscreen);
    CHECK(options.control == "/tmp/a");
    CHECK(options.show == "a folder/show.lua");
    CHECK(accepted({"--", "--size"}).show == "--size");
    CHECK(accepted({"-h"}).help);
    CHECK(accepted({"-V"}).version);
}

TEST_CASE("What the preview's command line gets wrong is one sentence that helps")
{
    CHECK(refusal({"--sise", "1x1"}) == "unknown option --sise (did you mean --size?)");
    CHECK(refusal({"--pause"}) == "unknown option --pause (did you mean --paused?)");
    CHECK(refusal({"--at", "soon"}) == "--at takes a time like 12.5, 1:02.25, 750f or 40%, not \"soon\"");
    CHECK(refusal({"--at", "1,2"}) == "--at takes a time like 12.5, 1:02.25, 750f or 40%, not \"1,2\"");
    CHECK(refusal({"--window", "100x100"})
        == "--window takes a size like 1440x900, from 320x240 to 16384x16384, not \"100x100\"");
    CHECK(refusal({"--window", "20000x900"}).starts_with("--window takes"));
    CHECK(refusal({"--size", "0x10"}).starts_with("--size takes"));
    CHECK(refusal({"--fps", "0"}).starts_with("--fps takes"));
    CHECK(refusal({"--caps", "no-vob"}).starts_with("--caps takes"));
    CHECK(refusal({"--control", ""}).starts_with("--control takes"));
    CHECK(refusal({"a.lua", "b.lua"}) == "one show at a time: \"a.lua\" and \"b.lua\" are two");
    CHECK(refusal({""}) == "the name of the show is empty");
}

TEST_CASE("Every option of the preview's table is read from the command line")
{
    for (const option_row& row : preview_option_rows) {
        CAPTURE(row.name);
        if (row.value != nullptr)
            CHECK(refusal({row.name}) == row.name + std::string(" ") + row.wants);
        else
            CHECK(refusal({row.name, row.name}) == row.name + std::string(" is given twice"));
    }
}

TEST_CASE("The words that shells are offered are values that the preview takes")
{
    for (const option_row& row : preview_option_rows) {
        std::istringstream words(row.words == nullptr ? "" : row.words);
        for (std::string word; words >> word;) {
            CAPTURE(word);
            CHECK(refusal({row.name, word.c_str()}).empty());
        }
    }
}
