// Dynamic textures as materials use them: when they are computed, what they show, and that
// pixel buffers change neither.
#include "small_show.h"

#include <GL/glew.h>

#include <doctest/doctest.h>

#include <algorithm>
#include <cstdlib>

namespace {

// The colour ramp of kind 0 at a pixel counted from the top left; o is its whole parameter.
rgb ramp_color(int o, int x, int y, int bits)
{
    const auto byte = [](int n) { return (n + n / 255) & 255; };
    if (bits == 8)
        return {byte(o + x + y), byte(o + x + y), byte(o + x + y)};
    return {byte(o + y), byte(o + x), byte(o + x + y)};
}

// A ramp whose parameter is the time of the layer in ticks, over the whole window.
struct ramp_show {
    show_text s;
    int bits;
    int moving;
    int material;

    explicit ramp_show(int bits_per_pixel)
        : bits(bits_per_pixel)
        , moving(s.dynamic_texture(0, bits, {s.linear(1), s.constant(0)}))
        , material(s.material(setting("blend_function", 2) + color(1, 1, 1)
              + unit(1, {.texture = s.reference(texture_dynamic, moving), .function = 2})))
    {
    }

    void check(const picture& p, int o) const
    {
        for (const int x : {1, 50, 101, 158}) {
            for (const int y : {1, 40, 118}) { // from the top
                const int column = static_cast<int>((x + 0.5) * 64 / 160);
                const int row = static_cast<int>((y + 0.5) * 64 / 120);
                check_pixel(p, x, 119 - y, ramp_color(o, column, row, bits), 1);
            }
        }
    }
};

int calls_of(const small_show& show, int moving)
{
    return show.moving(moving).state->calls;
}

} // namespace

TEST_CASE("a dynamic texture shows the picture of the layer's function time")
{
    for (const bool glsl : {false, true}) {
        for (const bool pbo : {false, true}) {
            for (const int bits : {24, 8}) {
                ramp_show k(bits);
                k.s.show(0, {.scene = k.s.full_scene(k.material), .offset = 5});
                small_show show(k.s, {.glsl = glsl, .pbo = pbo});
                for (const uint32_t time : {0u, 1u, 95u, 300u, 260u})
                    k.check(show.frame(time), static_cast<int>(time) + 5);
            }
        }
    }
}

TEST_CASE("a dynamic texture is computed at most once per function time, however often it is used")
{
    for (const bool glsl : {false, true}) {
        for (const bool pbo : {false, true}) {
            ramp_show k(24);
            const int mesh = k.s.mesh(square(0, 0, 1, 1));
            const int again = k.s.material(setting("blend_function", 1) + color(1, 1, 1)
                + unit(1, {.texture = k.s.reference(texture_dynamic, k.moving), .function = 2}));
            const int scene = k.s.scene({{.object = mesh, .material = k.material},
                {.object = mesh, .material = again, .place = {2, 0, 0, 0, 0, 0, 1, 1, 1}, .offset = 7}});
            k.s.show(0, {.scene = scene});
            k.s.show(1, {.scene = scene});
            small_show show(k.s, {.glsl = glsl, .pbo = pbo});
            CHECK(calls_of(show, k.moving) == 1); // the first picture, of time 0
            k.check(show.frame(0), 0);
            CHECK(calls_of(show, k.moving) == 1);
            k.check(show.frame(30), 30);
            CHECK(calls_of(show, k.moving) == 2);
            k.check(show.frame(30), 30);
            CHECK(calls_of(show, k.moving) == 2);
        }
    }
}

TEST_CASE("layers of different function times compute a dynamic texture in turns")
{
    for (const bool glsl : {false, true}) {
        ramp_show k(24);
        const int scene = k.s.full_scene(k.material);
        k.s.show(0, {.scene = scene});
        k.s.show(1, {.scene = scene, .offset = 10});
        small_show show(k.s, glsl);
        k.check(show.frame(50), 60);
        CHECK(calls_of(show, k.moving) == 3);
        k.check(show.frame(50), 60);
        CHECK(calls_of(show, k.moving) == 5);
    }
}

TEST_CASE("what no object shows is not computed")
{
    for (const bool glsl : {false, true}) {
        ramp_show k(24);
        const int mesh = k.s.mesh(square(0, 0, 1, 1));
        const int behind_an_empty_unit = k.s.material(setting("blend_function", 2) + color(1, 1, 1)
            + unit(2, {.texture = k.s.reference(texture_dynamic, k.moving)}));
        k.s.show(0,
            {.scene = k.s.scene({{.object = mesh, .material = k.material, .visibility = k.s.constant(0)},
                 {.object = mesh, .material = behind_an_empty_unit}})});
        small_show show(k.s, glsl);
        check_color(center_of(show.frame(20)), {255, 255, 255});
        CHECK(calls_of(show, k.moving) == 1);
    }
}

TEST_CASE("the loading screen's dynamic textures start black and are computed on first use")
{
    for (const bool glsl : {false, true}) {
        for (const int bits : {24, 8}) {
            ramp_show k(bits);
            k.s.show(0, {.scene = k.s.full_scene(k.material)});
            small_show show(k.s, {.glsl = glsl, .npot = false, .first_images = false});
            CHECK(calls_of(show, k.moving) == 0);
            const stored_texture t = read_texture(show.moving(k.moving).texture);
            CHECK(t.width == 64);
            CHECK(t.height == 64);
            CHECK(*std::max_element(t.bytes.begin(), t.bytes.end()) == 0);
            k.check(show.frame(0), 0);
            CHECK(calls_of(show, k.moving) == 1);
        }
    }
}

TEST_CASE("the production's dynamic textures have the picture of time 0 from the start")
{
    for (const bool pbo : {false, true}) {
        for (const int bits : {24, 8}) {
            ramp_show k(bits);
            k.s.show(0, {.scene = 0});
            small_show show(k.s, {.pbo = pbo});
            const stored_texture t = read_texture(show.moving(k.moving).texture);
            for (const int x : {0, 20, 63})
                for (const int y : {0, 33, 63})
                    if (bits == 24)
                        check_color(texel(t, x, y), ramp_color(0, x, y, bits), 0);
                    else // luminance comes back as red
                        CHECK(texel(t, x, y).red == ramp_color(0, x, y, bits).red);
        }
    }
}

TEST_CASE("computing a dynamic texture leaves the texture of another unit alone")
{
    // On the fixed path the third unit keeps the grey of the first material for the second one.
    ramp_show k(24);
    const int white = k.s.plain_texture({255, 255, 255});
    const int grey = k.s.plain_texture({128, 128, 128});
    const int three_units = k.s.material(setting("blend_function", 2) + color(1, 1, 1) + unit(1, {.texture = white})
        + unit(2, {.texture = white, .function = 1}) + unit(3, {.texture = grey, .function = 2})); // times previous
    k.s.show(0, {.scene = k.s.full_scene(three_units)});
    k.s.show(1, {.scene = k.s.full_scene(k.material)});
    small_show show(k.s, false);
    if (show.caps.texture_units < 3)
        return;
    const picture p = show.frame(100);
    const rgb moving = ramp_color(100, 32, 32, 24);
    check_pixel(p, 81, 58, {moving.red / 2, moving.green / 2, moving.blue / 2}, 3);
}

TEST_CASE("pixel buffers change no pixel of any kind of dynamic texture, over several frames")
{
    for (const bool glsl : {false, true}) {
        std::vector<picture> seen[2];
        for (const bool pbo : {false, true}) {
            show_text s;
            const int step = s.linear(0.7);
            const int mesh = s.mesh(square(0, 0, 1, 1));
            std::vector<placed_object> objects;
            for (int kind = 0; kind < 5; ++kind) {
                for (const int bits : {24, 8}) {
                    const int moving = s.dynamic_texture(kind, bits, {step, step});
                    const int material = s.material(setting("blend_function", 2) + color(1, 1, 1)
                        + unit(1, {.texture = s.reference(texture_dynamic, moving), .function = 2}));
                    objects.push_back({.object = mesh,
                        .material = material,
                        .place = {kind * 0.2, bits == 8 ? 0.5 : 0.0, 0, 0, 0, 0, 0.2, 0.5, 1}});
                }
            }
            s.show(0, {.scene = s.scene(objects)});
            small_show show(s, {.glsl = glsl, .pbo = pbo});
            for (const uint32_t time : {0u, 1u, 2u, 3u, 50u, 51u, 500u})
                seen[pbo].push_back(show.frame(time));
        }
        for (size_t n = 0; n < seen[0].size(); ++n)
            CHECK(greatest_difference(seen[0][n], seen[1][n]) == 0);
        CHECK(greatest_difference(seen[0][0], seen[0].back()) > 50);
    }
}
