#include "shell/player_choices.h"

#include <doctest/doctest.h>

TEST_CASE("choices: a viewer who only starts has the desktop's size, the whole screen and everything on")
{
    const player_choices choices;
    CHECK(choices.resolution_index == 0);
    CHECK(choices.aspect_index == aspect_automatic);
    CHECK(choices.fullscreen == 1);
    CHECK(choices.antialiasing == 1);
    CHECK(choices.music_enabled == 1);
    CHECK(choices.use_vbo == 1);
    CHECK(choices.use_glsl == 1);
}
