#include "options.h"

#include "shell/settings.h"

#include <doctest/doctest.h>
#include <initializer_list>
#include <vector>

// What is refused, and in which words, is tested with the program itself.

static render_options accepted(std::initializer_list<const char*> arguments)
{
    const std::vector<const char*> list(arguments);
    render_options options;
    std::string problem = "something";
    const bool read = read_options(list, options, problem);
    INFO(problem);
    CHECK(read);
    CHECK(problem.empty());
    return options;
}

TEST_CASE("Without choices a picture is 1280 x 720, with shaders, 60 times a second")
{
    const render_options options = accepted({"--flashes"});
    CHECK(options.width == 1280);
    CHECK(options.height == 720);
    CHECK(options.glsl);
    CHECK(options.aspect == aspect_automatic);
    CHECK(options.samples == 0);
    CHECK(options.rate.numerator == 60);
    CHECK(options.rate.denominator == 1);
    CHECK(options.kind == output_none);
    CHECK(options.pack.empty());
    CHECK_FALSE(options.seed_given);
    CHECK(options.png_level == 1);
    CHECK_FALSE(options.png_level_given);
}

TEST_CASE("Values stand behind an option or behind an equals sign")
{
    for (const render_options& options : {accepted({"--size", "640x480", "-o", "a.mp4", "my.dpk"}),
             accepted({"my.dpk", "--size=640x480", "--output=a.mp4"}),
             accepted({"--size=640x480", "-oa.mp4", "my.dpk"})}) {
        CHECK(options.width == 640);
        CHECK(options.height == 480);
        CHECK(options.size_given);
        CHECK(options.output == "a.mp4");
        CHECK(options.pack == "my.dpk");
    }
    CHECK(accepted({"--flashes", "--", "--size"}).pack == "--size");
    CHECK(accepted({"--flashes", "-"}).pack == "-");
    CHECK(accepted({"--contact-sheet=a=b.png"}).contact_sheet == "a=b.png");
    CHECK(accepted({"-o-"}).kind == output_stream);
    CHECK(accepted({"-o", "=a.mp4"}).output == "=a.mp4");
}

TEST_CASE("Each option goes into its field")
{
    const render_options options = accepted({"--aspect", "16:10", "--path", "fixed", "--samples", "4", "--seed", "7",
        "--tile", "512", "--window", "--fps", "25/2", "--from", "1", "--to", "2f", "--times", "t", "--flashes"});
    CHECK(options.aspect == aspect_16_10);
    CHECK_FALSE(options.glsl);
    CHECK(options.samples == 4);
    CHECK(options.seed_given);
    CHECK(options.seed == 7);
    CHECK(options.tile == 512);
    CHECK(options.window);
    CHECK(options.rate.numerator == 25);
    CHECK(options.rate.denominator == 2);
    CHECK(options.from.kind == moment_time);
    CHECK(options.to.kind == moment_frame);
    CHECK(options.times == "t");
    CHECK(options.flashes);
    CHECK(accepted({"--compare", "d"}).compare == "d");
    CHECK(accepted({"-o", "%d.png", "--png-level", "12"}).png_level == 12);
    CHECK(accepted({"-o", "a.png", "--at", "1", "--png-level", "0"}).png_level_given);
    CHECK(accepted({"--commands", "c.txt"}).commands == "c.txt");
    CHECK(accepted({"--commands", "-"}).commands == "-");
    CHECK(accepted({"--help", "--size", "1x1"}).help);
    CHECK(accepted({"--version"}).version);
    CHECK(accepted({"-V"}).version);
    CHECK(accepted({"-h"}).help);
    CHECK(accepted({"-hV"}).help);
    CHECK(accepted({"-hV"}).version);
}

TEST_CASE("Every capability is switched off by its own name")
{
    const lesser_card caps = accepted({"--flashes", "--caps", "no-vbo,no-npot,no-combine3,units=3"}).caps;
    CHECK(caps.no_vbo);
    CHECK_FALSE(caps.no_pbo);
    CHECK(caps.no_npot);
    CHECK_FALSE(caps.no_compression);
    CHECK_FALSE(caps.no_combine4);
    CHECK(caps.no_combine3);
    CHECK(caps.units == 3);
    const lesser_card others = accepted({"--flashes", "--caps=no-pbo,no-compression,no-combine4"}).caps;
    CHECK(others.no_pbo);
    CHECK(others.no_compression);
    CHECK(others.no_combine4);
    CHECK_FALSE(others.no_vbo);
    CHECK(others.units == 0);
}

TEST_CASE("Lists of moments and per cents keep their order")
{
    const render_options stills = accepted({"--at", "2,1f,50%", "--contact-sheet", "s.png"});
    REQUIRE(stills.stills.size() == 3);
    CHECK(stills.stills[0].value == 2000000);
    CHECK(stills.stills[1].kind == moment_frame);
    CHECK(stills.stills[2].kind == moment_share);
    CHECK(accepted({"--loading", "5,100%,0", "-o", "%d.png"}).loading == std::vector<uint32_t>{5, 100, 0});
}

TEST_CASE("The kind of an output follows from its name")
{
    CHECK(accepted({"-o", "a.mp4"}).kind == output_video);
    CHECK(accepted({"-o", "a.mkv"}).kind == output_video);
    CHECK(accepted({"-o", "a.webm"}).kind == output_video);
    CHECK(accepted({"-o", "-"}).kind == output_stream);
    CHECK(accepted({"-o", "%d.png"}).kind == output_pictures);
    CHECK(accepted({"-o", "50%%/%05d.png"}).kind == output_pictures);
    CHECK(accepted({"-o", "a.png", "--at", "1"}).kind == output_still);
    CHECK(accepted({"-o", "100%%.png", "--at", "1"}).kind == output_still);
}

TEST_CASE("An end alone is no name of an output")
{
    for (const char* name : {".png", ".mp4", ".mkv", ".webm", "webm"}) {
        render_options options;
        std::string problem;
        CHECK_FALSE(read_options(std::vector<const char*>{"-o", name}, options, problem));
        CHECK(problem
            == "the name of an output ends in .png, .mp4, .mkv or .webm, or is -; \"" + std::string(name)
                + "\" does not");
    }
}

TEST_CASE("Shots are rendered at their largest size")
{
    const render_options options = accepted({"--shots", "d", "--at", "1"});
    CHECK(options.width == 1920);
    CHECK(options.height == 1080);
    CHECK(accepted({"--shots", "d", "--at", "1", "--size", "3840x2160"}).width == 3840);
}

TEST_CASE("A number takes the place of the pattern")
{
    CHECK(numbered_name("frames/%05d.png", 42) == "frames/00042.png");
    CHECK(numbered_name("%d.png", 7) == "7.png");
    CHECK(numbered_name("%3d.png", 12345) == "12345.png");
    CHECK(numbered_name("100%%-%02d.png", 3) == "100%-03.png");
    CHECK(numbered_name("still.png", 3) == "still.png");
}
