// Render modes: targets, copies, clears and projections, in pixels.
//
// The window is 160 x 120, and row 0 is its lowest. Orthographic layers have (0, 0) at the
// top left of their target; squares at distance 10 before the wide camera are 6 pixels
// wide for every unit.
#include "small_show.h"

#include <GL/glew.h>

#include <doctest/doctest.h>

namespace {

constexpr rgb black = {0, 0, 0};
constexpr rgb red = {255, 0, 0};
constexpr rgb green = {0, 255, 0};
constexpr rgb blue = {0, 0, 255};

enum mode { simple, to_texture, linked, clear_depth_mode, wide, quarter, quarter_keep, quarter_4_3, clear_link };

// What most shows here are made of: scenes that fill the whole target, or a half of it.
struct stock {
    show_text s;
    int unit_square = s.mesh(square(0, 0, 1, 1));
    int red_material = s.plain_material(red);
    int green_material = s.plain_material(green);
    int red_scene = s.scene({{.object = unit_square, .material = red_material}});
    int green_left = half(0, 0, 0.5, 1);
    int green_right = half(0.5, 0, 0.5, 1);
    int green_top = half(0, 0, 1, 0.5);

    int half(double x, double y, double width, double height)
    {
        return s.scene(
            {{.object = unit_square, .material = green_material, .place = {x, y, 0, 0, 0, 0, width, height, 1}}});
    }

    int scene_showing(int image)
    {
        return s.full_scene(s.material(setting("blend_function", 2) + color(1, 1, 1)
            + unit(1, {.texture = s.reference(texture_image, image), .function = 2})));
    }

    // A square of half size `size` at z = -10 before the wide camera.
    int far_scene(double size, int material, bool in_front = false)
    {
        const double z = in_front ? -8 : -10;
        return s.scene({{.object = s.mesh(square(-1, -1, 1, 1)),
            .material = material,
            .place = {0, 0, z, 0, 0, 0, size, size, 1}}});
    }
};

} // namespace

TEST_CASE("on the first track a simple layer clears, on the others it draws over what is there")
{
    for (const bool glsl : {false, true}) {
        stock k;
        k.s.show(0, {.scene = k.red_scene});
        k.s.show(1, {.scene = k.green_left});
        small_show show(k.s, glsl);
        for (int n = 0; n < 2; ++n) {
            const picture p = show.frame();
            check_pixel(p, 20, 60, green);
            check_pixel(p, 140, 60, red);
            CHECK(show.drawn == 2);
        }
    }
}

TEST_CASE("a clear colour takes effect one clear later")
{
    for (const bool glsl : {false, true}) {
        stock k;
        const int target = k.s.black_image(32, 32);
        k.s.show(0, {.scene = k.green_left, .clearcolor = k.s.clear_color(1, 0, 0)});
        small_show one(k.s, glsl);
        check_pixel(one.frame(), 140, 60, black); // the first clear of all
        check_pixel(one.frame(), 140, 60, red);

        // In one frame: the first layer's clear, then a copy and the clear after it, which uses the
        // colour of the layer between.
        k.s.show(
            1, {.scene = k.green_left, .mode = to_texture, .rtex = target, .clearcolor = k.s.clear_color(0, 0, 1)});
        k.s.show(2, {.scene = k.green_left});
        small_show three(k.s, glsl);
        check_pixel(three.frame(), 140, 60, blue);
        check_pixel(three.frame(), 140, 60, blue);
    }
}

TEST_CASE("a clear colour may follow functions of the layer's time")
{
    stock k;
    const int ramp = k.s.linear(0.01);
    const int animated_color = k.s.values({0, 0, 0, dynamic(ramp), 0.5, dynamic(99), 0, 0, 0});
    k.s.show(0, {.scene = k.green_left, .clearcolor = animated_color, .offset = 20});
    small_show show(k.s, {.dangling = true});
    show.frame(30);
    check_pixel(show.frame(60), 140, 60, to_rgb(0.5, 0.5, 1.0)); // the frame of time 30 has set it
    check_pixel(show.frame(0), 140, 60, to_rgb(0.8, 0.5, 1.0));
}

TEST_CASE("a layer in a texture is copied by the next layer that has a target, at the texture's size")
{
    for (const bool glsl : {false, true}) {
        stock k;
        const int target = k.s.image(64, 32, std::vector<rgba>(64 * 32, rgba{0, 0, 255}));
        k.s.show(0, {.scene = k.green_left, .mode = to_texture, .rtex = target});
        k.s.show(1, {.scene = k.scene_showing(target)});
        small_show show(k.s, glsl);
        const uint32_t name = show.image(target).texture;
        const picture p = show.frame();
        check_pixel(p, 20, 60, green); // 64 x 32 over the whole window
        check_pixel(p, 140, 60, black);
        const stored_texture t = read_texture(show.image(target).texture);
        CHECK(show.image(target).texture == name); // it fits: not made anew
        CHECK(t.width == 64);
        CHECK(t.height == 32);
        CHECK(t.magnification == GL_LINEAR);
        CHECK(t.minification == GL_LINEAR);
        check_color(texel(t, 31, 31), green); // the viewport was 64 x 32
        check_color(texel(t, 32, 0), black);
    }
}

TEST_CASE("between target and screen everything is cleared and the viewport is the screen's")
{
    for (const bool glsl : {false, true}) {
        stock k;
        const int target = k.s.black_image(64, 32);
        k.s.show(0, {.scene = 0});
        k.s.show(1, {.scene = k.red_scene, .mode = to_texture, .rtex = target});
        k.s.show(2, {.scene = k.green_top});
        small_show show(k.s, glsl);
        const picture p = show.frame();
        check_pixel(p, 10, 10, black); // where the target was drawn
        check_pixel(p, 150, 110, green);
        check_pixel(p, 150, 50, black);
        CHECK(show.drawn == 2); // layers without a scene do not count
        check_color(texel(read_texture(show.image(target).texture), 63, 31), red);
    }
}

TEST_CASE("a target that still waits at the end of a frame is not copied, not even by the next frame")
{
    for (const bool glsl : {false, true}) {
        stock k;
        const int target = k.s.image(64, 32, std::vector<rgba>(64 * 32, rgba{0, 0, 255}));
        k.s.show(0, {.scene = k.red_scene, .mode = to_texture, .rtex = target, .length = 100});
        k.s.show(0, {.scene = k.green_left, .length = 100});
        small_show show(k.s, glsl);
        const picture p = show.frame(50);
        check_pixel(p, 10, 10, red); // in the frame buffer's lower left corner
        check_pixel(p, 70, 10, black);
        check_pixel(p, 10, 40, black);
        show.frame(150);
        check_color(texel(read_texture(show.image(target).texture), 10, 10), blue);
    }
}

TEST_CASE("linked layers draw into the target before them and are part of the copy")
{
    for (const bool glsl : {false, true}) {
        for (const int mode : {linked, clear_link}) {
            stock k;
            const int target = k.s.black_image(64, 32);
            k.s.show(0, {.scene = k.red_scene, .mode = to_texture, .rtex = target});
            k.s.show(1, {.scene = k.green_right, .mode = mode});
            k.s.show(2, {.scene = k.scene_showing(target)});
            small_show show(k.s, glsl);
            const picture p = show.frame();
            check_pixel(p, 20, 60, red);
            check_pixel(p, 140, 60, green);
            const stored_texture t = read_texture(show.image(target).texture);
            check_color(texel(t, 31, 16), red); // the viewport was kept too
            check_color(texel(t, 32, 16), green);
        }
    }
}

TEST_CASE("one target after the other is copied on the way")
{
    for (const bool glsl : {false, true}) {
        for (const int second_mode : {to_texture, wide, quarter, quarter_keep, quarter_4_3}) {
            stock k;
            const int first = k.s.black_image(64, 32);
            const int second = k.s.black_image(80, 60);
            k.s.show(0, {.scene = k.red_scene, .mode = to_texture, .rtex = first});
            k.s.show(1, {.scene = k.green_left, .mode = second_mode, .rtex = second});
            k.s.show(2, {.scene = k.scene_showing(first), .mode = clear_depth_mode});
            small_show show(k.s, glsl);
            const picture p = show.frame();
            check_pixel(p, 140, 100, red);
            const stored_texture t = read_texture(show.image(second).texture);
            check_color(texel(t, 39, 30), green);
            check_color(texel(t, 40, 30), black); // cleared after the first copy
        }
    }
}

TEST_CASE("quarter targets get half the screen's sides, or 64, 128 or 256 without textures of any size")
{
    for (const bool glsl : {false, true}) {
        for (const bool npot : {false, true}) {
            for (const int mode : {quarter, quarter_keep, quarter_4_3}) {
                stock k;
                const int target = k.s.black_image(16, 16);
                k.s.show(0, {.scene = k.green_left, .mode = mode, .rtex = target});
                k.s.show(1, {.scene = k.scene_showing(target)});
                small_show show(k.s, {.glsl = glsl, .npot = npot});
                const picture p = show.frame();
                check_pixel(p, 20, 60, green);
                check_pixel(p, 140, 60, black);
                const stored_texture t = read_texture(show.image(target).texture);
                CHECK(t.width == (npot ? 80 : 64));
                CHECK(t.height == (npot ? 60 : 64)); // 60 is below 128
                CHECK(show.image(target).width == static_cast<uint32_t>(t.width));
                CHECK(show.image(target).format == 3);
                CHECK(t.internal_format == 3);
                CHECK(t.magnification == GL_LINEAR);
                check_color(texel(t, t.width / 2 - 1, 30), green);
                check_color(texel(t, t.width / 2, 30), black);
                const uint32_t name = show.image(target).texture;
                check_pixel(show.frame(), 20, 60, green);
                CHECK(show.image(target).texture == name); // it has the size now
            }
        }
    }
}

TEST_CASE("on larger screens quarter targets without textures of any size end at 256")
{
    stock k;
    const int target = k.s.black_image(16, 16);
    k.s.show(0, {.scene = k.green_left, .mode = quarter, .rtex = target});
    small_show show(k.s, {.npot = false});
    const struct {
        uint32_t width, height, expected_width, expected_height;
    } table[] = {{800, 600, 256, 256}, {400, 260, 128, 128}, {254, 256, 64, 128}, {511, 512, 128, 256}};
    for (const auto& row : table) {
        show.view = {row.width, row.height, 4.0f / 3.0f};
        show.frame();
        CHECK(show.image(target).width == row.expected_width);
        CHECK(show.image(target).height == row.expected_height);
    }
}

TEST_CASE("targets wider or taller than the screen are made anew at its size")
{
    const struct {
        int width, height;
        bool npot;
        int expected_width, expected_height;
    } table[]
        = {{256, 64, true, 160, 120}, {64, 128, true, 160, 120}, {256, 64, false, 128, 64}, {160, 120, true, 160, 120}};
    for (const bool glsl : {false, true}) {
        for (const auto& row : table) {
            for (const int mode : {to_texture, wide}) {
                stock k;
                const int target = k.s.black_image(row.width, row.height, 2); // luminance, until it is made anew
                k.s.show(0, {.scene = k.green_left, .mode = mode, .rtex = target});
                k.s.show(1, {.scene = k.scene_showing(target)});
                small_show show(k.s, {.glsl = glsl, .npot = row.npot});
                const uint32_t name = show.image(target).texture;
                show.frame();
                const stored_texture t = read_texture(show.image(target).texture);
                CHECK(t.width == row.expected_width);
                CHECK(t.height == row.expected_height);
                const bool fits = row.width == row.expected_width;
                CHECK((show.image(target).texture == name || t.internal_format == 3));
                CHECK((t.internal_format == 3) != fits);
                if (!fits)
                    check_color(texel(t, t.width / 2 - 1, t.height - 1), green);
            }
        }
    }
}

TEST_CASE("modes force aspects, and keep the projection where they are linked")
{
    // On a screen of aspect 2 a square of half size 5 at distance 10 covers a quarter of
    // its target's width, divided by the aspect, to each side; and a quarter of the height.
    const struct {
        int mode;
        int lit_width;
    } table[] = {{simple, 40}, {clear_depth_mode, 40}, {to_texture, 40}, {wide, 50}, {quarter, 20}, {quarter_keep, 20},
        {quarter_4_3, 30}};
    for (const bool glsl : {false, true}) {
        for (const auto& row : table) {
            stock k;
            const int target = k.s.black_image(160, 120);
            const bool small = row.mode >= quarter && row.mode <= quarter_4_3;
            k.s.show(0,
                {.scene = k.far_scene(5, k.red_material), .mode = row.mode, .rtex = target, .camera = wide_camera()});
            small_show show(k.s, glsl);
            show.view.aspect = 2.0f;
            const picture p = show.frame(); // the target's picture waits in the frame buffer
            CAPTURE(row.mode);
            CHECK(lit_pixels_in_row(p, small ? 30 : 60) == row.lit_width);
            CHECK(lit_pixels_in_column(p, small ? 40 : 80) == (small ? 30 : 60));
        }
    }
}

TEST_CASE("a constant field of view leaves a linked layer's projection alone, a dynamic one sets it")
{
    for (const bool glsl : {false, true}) {
        for (const int mode : {linked, clear_link}) {
            for (const bool moving : {false, true}) {
                stock k;
                const double narrow = 53.130102; // the tangent of its half is 0.5
                clip linked = {.scene = k.far_scene(2, k.red_material), .mode = mode, .camera = wide_camera()};
                linked.camera[6] = moving ? dynamic(k.s.constant(narrow)) : number(narrow);
                k.s.show(0, {.scene = 0, .camera = wide_camera()});
                k.s.show(1, linked);
                small_show show(k.s, glsl);
                CHECK(lit_pixels_in_column(show.frame(), 80) == (moving ? 48 : 24));
            }
        }
    }
}

TEST_CASE("an orthographic linked layer has its own projection, and the perspective one stays off after it")
{
    for (const bool glsl : {false, true}) {
        stock k;
        k.s.show(0, {.scene = k.red_scene, .camera = wide_camera()}); // behind the near plane
        k.s.show(1, {.scene = k.green_left, .mode = linked});
        clip constant_link = {.scene = k.green_top, .mode = linked, .camera = wide_camera()};
        k.s.show(2, constant_link);
        small_show show(k.s, glsl);
        const picture p = show.frame();
        check_pixel(p, 20, 20, green);
        check_pixel(p, 140, 20, black);
        check_pixel(p, 140, 100, green); // still orthographic
    }
}

TEST_CASE("modes 3 and 8 clear the depth of what is there, modes 0 and 2 keep it")
{
    for (const bool glsl : {false, true}) {
        for (const int mode : {simple, linked, clear_depth_mode, clear_link}) {
            stock k;
            const auto deep = [&](const rgb& c) {
                return k.s.material(setting("blend_function", 2) + setting("depth_test", 1)
                    + color(c.red / 255.0, c.green / 255.0, c.blue / 255.0));
            };
            k.s.show(0, {.scene = k.far_scene(3, deep(red), true), .camera = wide_camera()}); // 22 pixels around
            k.s.show(1, {.scene = k.far_scene(5, deep(green)), .mode = mode, .camera = wide_camera()}); // 30
            small_show show(k.s, glsl);
            const picture p = show.frame();
            const bool clears = mode == clear_depth_mode || mode == clear_link;
            CAPTURE(mode);
            check_pixel(p, 80, 60, clears ? green : red);
            check_pixel(p, 80 + 26, 60, green);
            check_pixel(p, 10, 10, black);
        }
    }
}

TEST_CASE("mode 3 after a copy clears the colours too")
{
    for (const bool glsl : {false, true}) {
        stock k;
        const int target = k.s.black_image(160, 120);
        k.s.show(0, {.scene = k.red_scene, .mode = to_texture, .rtex = target});
        k.s.show(1, {.scene = k.green_left, .mode = clear_depth_mode});
        small_show show(k.s, glsl);
        const picture p = show.frame();
        check_pixel(p, 20, 60, green);
        check_pixel(p, 140, 60, black);
    }
}

TEST_CASE("after mode 6 the very next layer's clear is held back, its copy is not")
{
    for (const bool glsl : {false, true}) {
        for (const int mode : {quarter, quarter_keep}) {
            for (const bool layer_between : {false, true}) {
                stock k;
                const int target = k.s.black_image(80, 60);
                k.s.show(0, {.scene = k.red_scene, .mode = mode, .rtex = target});
                if (layer_between)
                    k.s.show(1, {.scene = 0, .mode = linked});
                k.s.show(2, {.scene = k.green_top});
                small_show show(k.s, glsl);
                const picture p = show.frame();
                CAPTURE(mode);
                CAPTURE(layer_between);
                check_pixel(p, 40, 30, mode == quarter_keep && !layer_between ? red : black);
                check_pixel(p, 40, 90, green);
                check_color(texel(read_texture(show.image(target).texture), 40, 30), red);
                check_pixel(show.frame(), 140, 30, black); // the first track clears all the same
            }
        }
    }
}

TEST_CASE("a target of its own picture: each frame shows what the frame before has left in it")
{
    for (const bool glsl : {false, true}) {
        stock k;
        const int target = k.s.image(80, 60, std::vector<rgba>(80 * 60, rgba{200, 100, 40}), 0, 0);
        const int echo = k.s.material(setting("blend_function", 2) + color(0.5, 0.5, 0.5)
            + unit(1, {.texture = k.s.reference(texture_image, target)}));
        k.s.show(0, {.scene = k.s.full_scene(echo), .mode = quarter_keep, .rtex = target});
        k.s.show(1, {.scene = 0});
        small_show show(k.s, glsl);
        for (const rgb& expected : {rgb{100, 50, 20}, rgb{50, 25, 10}, rgb{25, 13, 5}})
            check_pixel(show.frame(), 20, 20, expected); // not cleared before the screen
    }
}

TEST_CASE("targets of no texture, or of one that does not exist, copy what waits and leave it waiting")
{
    for (const bool glsl : {false, true}) {
        for (const int mode : {to_texture, wide, quarter, quarter_keep, quarter_4_3}) {
            for (const int rtex : {0, 77}) {
                stock k;
                const int target = k.s.black_image(64, 32);
                const int stage = k.s.black_image(64, 32);
                k.s.show(0, {.scene = k.red_scene, .mode = to_texture, .rtex = target});
                k.s.show(1, {.scene = k.green_left, .mode = mode, .rtex = rtex}); // copies, clears, draws on
                k.s.show(2, {.scene = k.scene_showing(target), .mode = to_texture, .rtex = stage}); // copies again
                k.s.show(3, {.scene = k.scene_showing(stage)});
                small_show show(k.s, {.glsl = glsl, .dangling = rtex != 0});
                show.frame();
                const stored_texture t = read_texture(show.image(target).texture);
                CAPTURE(mode);
                check_color(texel(t, 31, 16), green);
                // Mode 6 holds back the clear of the layer after it, not its own.
                check_color(texel(t, 32, 16), black);
                check_color(texel(read_texture(show.image(stage).texture), 31, 16), green);
            }
        }
    }
}

TEST_CASE("without a waiting target, modes of no texture draw where the layer before drew")
{
    for (const bool glsl : {false, true}) {
        for (const int mode : {to_texture, wide, quarter, quarter_keep, quarter_4_3}) {
            stock k;
            k.s.show(0, {.scene = k.red_scene});
            k.s.show(1, {.scene = k.green_left, .mode = mode});
            small_show show(k.s, glsl);
            const picture p = show.frame();
            check_pixel(p, 79, 119, green);
            check_pixel(p, 80, 0, red);
        }
    }
}

TEST_CASE("targets of every format take the copy without an error")
{
    for (const bool glsl : {false, true}) {
        for (int format = 0; format < 9; ++format) {
            stock k;
            const int target = k.s.black_image(64, 32, format);
            k.s.show(0, {.scene = k.red_scene, .mode = to_texture, .rtex = target});
            k.s.show(1, {.scene = k.scene_showing(target)});
            small_show show(k.s, glsl);
            CAPTURE(format);
            CHECK(pixel_at(show.frame(), 80, 60).red > 200);
        }
    }
}

TEST_CASE("copies and new targets leave the texture of another unit alone")
{
    // The last unit of a material stays active, and on the fixed path later materials of fewer
    // units leave its picture in use: neither a copy nor a new target may be bound there.
    stock k;
    const int target = k.s.black_image(64, 32);
    const int made_anew = k.s.black_image(16, 16);
    const int white = k.s.plain_texture({255, 255, 255});
    const int grey = k.s.plain_texture({128, 128, 128});
    const int three_units = k.s.material(setting("blend_function", 2) + color(1, 0, 0) + unit(1, {.texture = white})
        + unit(2, {.texture = white, .function = 1}) + unit(3, {.texture = grey, .function = 2})); // texture x previous
    k.s.show(0, {.scene = k.s.full_scene(three_units), .mode = to_texture, .rtex = target});
    const int plain = k.s.full_scene(k.s.plain_material({200, 100, 50}));
    k.s.show(1, {.scene = plain});
    small_show copied(k.s, false);
    if (copied.caps.texture_units < 3)
        return;
    for (int n = 0; n < 2; ++n)
        check_pixel(copied.frame(), 80, 60, {100, 50, 25});
    k.s.tracks[0].clear();
    k.s.show(0, {.scene = k.s.full_scene(three_units)});
    k.s.tracks[1].clear();
    k.s.show(1, {.scene = plain, .mode = quarter, .rtex = made_anew});
    small_show recreated(k.s, false);
    check_pixel(recreated.frame(), 40, 30, {100, 50, 25});
}
