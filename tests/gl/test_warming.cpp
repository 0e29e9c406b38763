// A show that was warmed while it was loaded looks as one that was not, in every frame; and warming shows nothing.
#include "small_show.h"

#include "render/warming_gl.h"

#include <GL/glew.h>

#include <doctest/doctest.h>

#include <cstdlib>
#include <vector>

namespace {

const std::vector<rgba> four_colors = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {250, 250, 50, 120}};

// Two scenes one after the other, over one that is drawn into a texture, before one that shows it. The first mesh of
// all has no material: it is drawn with a new context's state.
show_text show_of_every_sort()
{
    show_text s;
    const int ball = s.mesh(sphere());
    const int flat = s.mesh(square(-1, -1, 1, 1));
    const int unit_square = s.mesh(square(0, 0, 1, 1));
    const int checked = s.texture(2, 2, four_colors);
    const int cube = s.cube_texture();
    const int moving = s.reference(texture_dynamic, s.dynamic_texture(1, 24, {s.linear(0.3), s.linear(0.1)}));
    const int target = s.black_image(64, 64);
    const int light = s.light(0.2, 0.8, 3, 4, 5);
    const std::string base = setting("depth_test", 1) + color(s.linear(0.001), 0.9, 0.8);
    const int lit = s.material(base + setting("blend_function", 2) + setting("light1", light)
        + setting("normalization", 1) + unit(1, {.texture = checked}));
    const int three = s.material(base + setting("blend_function", 3) + unit(1, {.texture = moving, .wrapmode = 1})
        + unit(2, {.texture = checked, .function = 1, .wrapmode = 1}) + unit(3, {.texture = checked}));
    const int mirror = s.material(base + setting("blend_function", 1) + setting("fogtype", 1)
        + setting("fogend", number(30)) + unit(1, {.texture = cube, .wrapmode = 1, .cgenmode = 2}));
    const int wire
        = s.material(base + setting("blend_function", 4) + setting("wireframe", 1) + setting("linewidth", number(2)));
    const int shown = s.material(setting("blend_function", 0) + color(1, 1, 1, 0.5)
        + unit(1, {.texture = s.reference(texture_image, target), .function = 2, .wrapmode = 1, .rotation = 1}));
    const int water = s.effect(0, {s.linear(1)});
    const int swirl = s.effect(2, {s.linear(0.001, 0.01), 0});
    const int swarm = s.effect(3, {s.linear(1)});
    const auto bare = [&](double x) {
        return placed_object{.type = object_genmesh, .object = water, .place = {x, -3, -12, 0, 0, 0, 0.3, 0.3, 0.3}};
    };
    const int first = s.scene({bare(-5), {.object = ball, .material = lit, .place = {-2, 1, -6, 20, 0, 0, 1, 1, 1}},
        {.object = flat, .material = three, .place = {1, 1, -6, 0, 0, 0, 1, 1, 1}}, bare(5),
        {.type = object_genmesh, .object = swarm, .material = lit, .place = {0, 0, -9, 0, 0, 0, 1, 1, 1}}});
    const int second = s.scene({{.object = ball, .material = mirror, .place = {-2, 1, -6, 0, 0, 0, 1, 1, 1}}, bare(0),
        {.object = flat,
            .material = wire,
            .place = {2, 0, -6, 0, 0, 0, 1, 1, 1},
            .manipulators = manipulator(2, {dynamic(s.linear(0.02)), 0.05, 4})},
        {.type = object_genmesh,
            .object = swirl,
            .material = wire,
            .place = {0, 0, -9, 0, 0, 0, 0.01, 0.01, 0.01},
            .visibility = s.linear(0.01)},
        {.object = flat, .material = lit, .place = {0, -2, -6, 0, 0, 0, 1, 1, 1}}});
    s.show(0, {.scene = first, .length = 300, .camera = wide_camera()});
    s.show(0, {.scene = second, .length = 300, .camera = wide_camera()});
    s.show(1, {.scene = first, .mode = render_quarter, .rtex = target, .length = 600, .camera = wide_camera()});
    s.show(2, {.scene = s.scene({{.object = unit_square, .material = shown}}), .length = 600});
    return s;
}

} // namespace

// All at once.
static void warm(small_show& show)
{
    show_warming w = {&show.d, show.view, show.caps, show.glsl};
    CHECK_FALSE(warm_some_gl(w, test_renderer(), nullptr, 0));
}

static uint32_t moving_ticks()
{
    static uint32_t ticks = 0;
    return ticks++;
}

// Each way of drawing in a piece of its own; a number of them, or all.
static void warm_in_pieces(small_show& show, size_t count)
{
    show_warming w = {&show.d, show.view, show.caps, show.glsl};
    for (size_t piece = 0; piece < count && warm_some_gl(w, test_renderer(), moving_ticks, 0);)
        ++piece;
    end_warming_gl(w);
}

TEST_CASE("no pixel of a show depends on whether it was warmed")
{
    const show_text s = show_of_every_sort();
    for (const show_options& options : {show_options{.glsl = false}, show_options{.glsl = true},
             show_options{.glsl = false, .vbo = true, .pbo = true, .npot = false},
             show_options{.glsl = true, .vbo = true, .pbo = true}}) {
        std::vector<picture> seen[4];
        for (const size_t how : {0u, 1u, 2u, 3u}) {
            std::srand(1); // the swarm and the drops
            small_show show(s, options);
            if (how == 1)
                warm(show);
            else if (how > 1)
                warm_in_pieces(show, how == 2 ? 3 : 1000);
            CHECK(glGetError() == GL_NO_ERROR);
            for (const uint32_t time : {0u, 1u, 2u, 299u, 300u, 301u, 350u, 500u})
                seen[how].push_back(show.frame(time));
        }
        for (size_t n = 0; n < seen[0].size(); ++n)
            for (const size_t how : {1u, 2u, 3u})
                CHECK(greatest_difference(seen[0][n], seen[how][n]) == 0);
        CHECK(greatest_difference(seen[0][0], seen[0].back()) > 50);
    }
}

TEST_CASE("warming changes nothing of what is on the screen")
{
    const show_text s = show_of_every_sort();
    for (const bool glsl : {false, true}) {
        small_show show(s, glsl);
        for (const uint32_t time : {0u, 400u})
            show.frame(time);
        const picture before = read_window();
        forget_state();
        warm(show);
        CHECK(greatest_difference(before, read_window()) == 0);
    }
}

TEST_CASE("a target that is shown before it is drawn into shows its own picture, warmed or not")
{
    for (const bool glsl : {false, true}) {
        show_text s;
        const int target = s.image(2, 2, {{0, 0, 255}, {0, 0, 255}, {0, 0, 255}, {0, 0, 255}});
        const int shown = s.material(setting("blend_function", 2) + color(1, 1, 1)
            + unit(1, {.texture = s.reference(texture_image, target), .function = 2}));
        s.show(0, {.scene = s.full_scene(shown), .length = 200});
        s.show(1,
            {.scene = s.full_scene(s.plain_material({255, 0, 0})),
                .mode = render_to_texture,
                .rtex = target,
                .space_before = 100,
                .length = 100});
        small_show show(s, glsl);
        warm(show);
        check_pixel(show.frame(0), 80, 60, {0, 0, 255});
    }
}
