#include "shell/player_choices.h"

#include <doctest/doctest.h>

#include <vector>

TEST_CASE("choices: a viewer who only starts has the desktop's size, the whole screen and everything on")
{
    // Every choice by its place: a new one has to be named here, too.
    const auto& [resolution, aspect, fullscreen, antialiasing, music, vbo, glsl, force_pbo] = player_choices();
    CHECK(resolution == 0);
    CHECK(aspect == aspect_automatic);
    CHECK(fullscreen == 1);
    CHECK(antialiasing == 1);
    CHECK(music == 1);
    CHECK(vbo == 1);
    CHECK(glsl == 1);
    CHECK_FALSE(force_pbo);
}

// With the program's name before them, and the null behind them that every process is given.
static bool forces_pixel_buffers(std::vector<const char*> arguments)
{
    arguments.insert(arguments.begin(), "brimlow");
    arguments.push_back(nullptr);
    player_choices choices;
    read_command_line(choices, static_cast<int>(arguments.size()) - 1, arguments.data());
    return choices.force_pbo;
}

TEST_CASE("choices: an argument that begins with -forcepbo forces pixel buffers")
{
    CHECK(forces_pixel_buffers({"-forcepbo"}));
    CHECK(forces_pixel_buffers({"-forcepboXYZ"})); // nine characters are compared
    for (const char* other : {"-forcepb", "-FORCEPBO", " -forcepbo", "forcepbo", "--forcepbo", "-f", ""})
        CHECK_FALSE_MESSAGE(forces_pixel_buffers({other}), other);
}

TEST_CASE("choices: only the first argument is looked at")
{
    CHECK_FALSE(forces_pixel_buffers({}));
    CHECK_FALSE(forces_pixel_buffers({"x", "-forcepbo"}));
    CHECK(forces_pixel_buffers({"-forcepbo", "x"}));
    player_choices choices;
    const char* const nothing[] = {nullptr};
    read_command_line(choices, 0, nothing); // a process may be started without even a name
    CHECK_FALSE(choices.force_pbo);
}

TEST_CASE("choices: the command line changes nothing else")
{
    player_choices choices;
    choices.use_vbo = -1;
    const char* const arguments[] = {"brimlow", "-forcepbo", nullptr};
    read_command_line(choices, 2, arguments);
    CHECK(choices.use_vbo == -1);
    CHECK(choices.use_glsl == 1);
    CHECK(choices.fullscreen == 1);
}
