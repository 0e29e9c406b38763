#include "tools/preview/frames_alike.h"

#include <doctest/doctest.h>

static sampled_units first_flat(uint32_t)
{
    return {1, 0};
}

// One mesh drawn with one state on either path.
static planned_frame one_draw(const standing_state& standing, bool glsl)
{
    planned_frame f;
    f.materials.push_back(standing.material);
    if (glsl)
        f.programs.push_back(standing.program);
    f.views.emplace_back();
    f.copies.emplace_back();
    draw_command draw = {};
    draw.program = glsl ? 0 : no_index;
    draw.copy_count = 1;
    f.draws.push_back(draw);
    f.commands.push_back({command_draw, 0});
    return f;
}

static standing_state ready()
{
    standing_state standing = initial_standing_state();
    standing.material.applied = true;
    standing.material.blending = blend_alpha;
    standing.program.status = program_ready;
    standing.program.program = 5;
    for (int32_t& location : standing.program.uniform_location)
        location = -1;
    return standing;
}

static bool alike(const standing_state& a, const standing_state& b, bool glsl)
{
    return drawn_alike(one_draw(a, glsl), one_draw(b, glsl), first_flat);
}

TEST_CASE("the same state is drawn alike on both paths")
{
    CHECK(alike(ready(), ready(), true));
    CHECK(alike(ready(), ready(), false));
}

TEST_CASE("a strange past shows wherever nothing has been said since")
{
    CHECK(!alike(initial_standing_state(), strange_standing_state(3), true));
    CHECK(!alike(initial_standing_state(), strange_standing_state(3), false));
}

TEST_CASE("units that no material uses are in a strange past as they begin")
{
    const standing_state past = strange_standing_state(1);
    CHECK(past.material.units[0].on);
    CHECK(!past.material.units[1].on);
    CHECK(!past.material.units[2].used);
}

TEST_CASE("a unit that is off may hold anything, one that is on may not")
{
    standing_state a = ready();
    standing_state b = a;
    b.material.units[2].flat_texture = 9;
    CHECK(alike(a, b, false));
    a.material.units[2].on = b.material.units[2].on = true;
    CHECK(!alike(a, b, false));
}

TEST_CASE("of units, a program sees what it samples")
{
    const standing_state a = ready();
    standing_state b = a;
    b.material.units[1].flat_texture = 9;
    CHECK(alike(a, b, true));
    b.material.units[0].flat_texture = 9;
    CHECK(!alike(a, b, true));
}

TEST_CASE("lights, fog and the width of lines count where they are used")
{
    standing_state a = ready();
    standing_state b = a;
    b.material.light[1].diffuse[0] = 1;
    b.material.fog.end = 3;
    b.material.line_width = 4;
    CHECK(alike(a, b, false));
    SUBCASE("a second light")
    {
        a.material.lights = b.material.lights = 2;
    }
    SUBCASE("fog")
    {
        a.material.fog_type = b.material.fog_type = fog_nicest;
    }
    SUBCASE("lines")
    {
        a.material.wireframe = b.material.wireframe = true;
    }
    CHECK(!alike(a, b, false));
}

TEST_CASE("uniforms and light positions count where a program has them")
{
    standing_state a = ready();
    standing_state b = a;
    b.program.uniforms[3] = 1;
    b.program.light_position[0][1] = 1;
    b.program.texture_matrix[2] = 1;
    CHECK(alike(a, b, true));
    SUBCASE("a uniform")
    {
        a.program.uniform_location[3] = b.program.uniform_location[3] = 2;
    }
    SUBCASE("a light")
    {
        a.program.has_light[0] = b.program.has_light[0] = true;
    }
    SUBCASE("a matrix")
    {
        a.program.turns_texture = b.program.turns_texture = true;
    }
    CHECK(!alike(a, b, true));
}

TEST_CASE("the colour of a clear counts where colour is cleared")
{
    planned_frame a;
    a.clears.push_back({1, {0.5f, 0, 0, 1}}); // depth alone
    a.commands.push_back({command_clear, 0});
    planned_frame b = a;
    b.clears[0].color[0] = 0.75f;
    CHECK(drawn_alike(a, b, first_flat));
    a.clears[0].bits = b.clears[0].bits = 3;
    CHECK(!drawn_alike(a, b, first_flat));
}

TEST_CASE("viewports, views, copies and the number of draws count")
{
    const planned_frame a = one_draw(ready(), false);
    planned_frame b = a;
    SUBCASE("a viewport")
    {
        b.viewports.push_back({7, 7});
    }
    SUBCASE("a view")
    {
        b.views[0].projection[5] = 1;
    }
    SUBCASE("a copy")
    {
        b.copies[0].modelview[12] = 1;
    }
    SUBCASE("a draw")
    {
        b.draws.push_back(b.draws[0]);
        b.commands.push_back({command_draw, 1});
    }
    CHECK(!drawn_alike(a, b, first_flat));
}
