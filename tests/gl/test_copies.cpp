// Generated meshes and manipulators in pixels, on both paths.
#include "small_show.h"

#include <GL/glew.h>

#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>

namespace {

constexpr rgb black = {0, 0, 0};
constexpr rgb white = {255, 255, 255};
constexpr rgb red = {255, 0, 0};
constexpr rgb green = {0, 255, 0};

enum manipulator_number { xyz_multiplier, x_multiplier, rippler, model_placer };

int lit_pixels(const picture& p)
{
    int lit = 0;
    for (int y = 0; y < window_height; ++y)
        lit += lit_pixels_in_row(p, y);
    return lit;
}

// A square of a size in an orthographic layer.
placed_object cell_object(int mesh, int material, double width, double height)
{
    return {.object = mesh, .material = material, .place = {0, 0, 0, 0, 0, 0, width, height, 1}};
}

} // namespace

// ---- generated meshes --------------------------------------------------------------------

namespace {

// The swirl of 256 points whose angle grows by pi / 128 from point to point: at 90, 180 and
// 270 degrees of its turn the spoke ends at 63 down, 127 left and 193 up; at 0.3 pixels a unit.
void check_swirl(const picture& p, const rgb& c)
{
    const auto at = [&](double x, double y) {
        return pixel_at(p, static_cast<int>(80 + 0.3 * x), static_cast<int>(60 + 0.3 * y));
    };
    check_color(at(0, -55), c);
    check_color(at(0, -75), black);
    check_color(at(-115, 0), c);
    check_color(at(-140, 0), black);
    check_color(at(0, 180), c);
    check_color(at(220, 8), c);
    check_color(at(-180, -180), black);
}

struct swirl_show {
    show_text s;
    int swirl = s.effect(2, {s.constant(3.14159265358979 / 128), 0});
    int material = s.plain_material(white);

    placed_object object(int material_handle)
    {
        return {.type = object_genmesh,
            .object = swirl,
            .material = material_handle,
            .place = {0, 0, -4, 0, 0, 0, 0.02, 0.02, 0.02}};
    }
};

} // namespace

TEST_CASE("generated meshes are updated and drawn like models, with buffers and without")
{
    for (const bool glsl : {false, true}) {
        for (const bool vbo : {false, true}) {
            swirl_show k;
            k.s.show(0, {.scene = k.s.scene({k.object(k.material)}), .camera = wide_camera()});
            small_show show(k.s, {.glsl = glsl, .vbo = vbo});
            check_swirl(show.frame(), white);
        }
    }
}

TEST_CASE("a mesh without texture coordinates shows the corner (0, 0), whatever a draw before has left current")
{
    const std::vector<rgba> pixels = {{200, 10, 20}, {0, 255, 0}, {0, 0, 255}, {255, 255, 255}};
    for (const bool glsl : {false, true}) {
        for (const bool vbo : {false, true}) {
            for (const bool own_material : {false, true}) {
                show_text s;
                const std::string first = color(1, 1, 1) + setting("blend_function", 2);
                const int ones = s.plain_texture({255, 255, 255});
                const int textured = s.material(first + unit(1, {.texture = ones, .function = 2})
                    + unit(2, {.texture = ones, .function = 1}) + unit(3, {.texture = ones}));
                const int checked = s.material(first + unit(1, {.texture = s.texture(2, 2, pixels), .function = 2})
                    + unit(
                        2, {.texture = s.texture(2, 2, {{255, 0, 0}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}}), .function = 1})
                    + unit(3, {.texture = s.texture(2, 2, {{0, 100, 0}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}})}));
                const int square_mesh = s.mesh(square(-1, -1, 1, 1));
                const int swirl = s.effect(2, {s.constant(1.0), s.constant(50.0)});
                s.show(0,
                    {.scene = s.scene({{.object = square_mesh,
                                           .material = own_material ? textured : checked,
                                           .place = {3, 3, -5, 0, 0, 0, 0.1, 0.1, 1}},
                         {.type = object_genmesh,
                             .object = swirl,
                             .material = own_material ? checked : 0,
                             .place = {0, 0, -5, 0, 0, 0, 0.01, 0.01, 1}}}),
                        .camera = wide_camera()});
                small_show show(s, {.glsl = glsl, .vbo = vbo});
                // What some drivers leave after a draw from arrays.
                for (GLenum unit_number = 0; unit_number < 3; ++unit_number)
                    glMultiTexCoord4f(GL_TEXTURE0 + unit_number, 0.75f, 0.75f, 0.5f, 1.0f);
                for (GLuint attribute = 1; attribute < 5; ++attribute)
                    glVertexAttrib4f(attribute, 0.75f, 0.75f, 0.5f, 1.0f);
                CAPTURE(glsl);
                CAPTURE(own_material);
                check_color(center_of(show.frame()), {200, 100, 0});
            }
        }
    }
}

TEST_CASE("generated meshes follow the object's time")
{
    for (const bool glsl : {false, true}) {
        swirl_show k;
        k.swirl = k.s.effect(2, {k.s.linear(3.14159265358979 / 128 / 150), 0});
        placed_object o = k.object(k.material);
        o.offset = 100;
        k.s.show(0, {.scene = k.s.scene({o}), .offset = 20, .camera = wide_camera()});
        small_show show(k.s, glsl);
        check_swirl(show.frame(30), white);
    }
}

TEST_CASE("a generated mesh without a material is drawn with the state as it stands")
{
    for (const bool glsl : {false, true}) {
        swirl_show k;
        const int setter = k.s.plain_material(green);
        k.s.show(0,
            {.scene = k.s.scene({{.object = k.s.mesh(lump(50, 50, 0, 0.1f)), .material = setter}, k.object(0)}),
                .camera = wide_camera()});
        small_show show(k.s, glsl);
        check_swirl(show.frame(), green);
    }
}

TEST_CASE("water moves with its function and stands still with its time")
{
    for (const bool glsl : {false, true}) {
        for (const int kind : {0, 1, 4}) {
            show_text s;
            const int water = s.effect(kind, {s.linear(kind == 1 ? 0.05 : 1)});
            const int light = s.light(0.2, 0.8, 0, 40, 0);
            const int material = s.material(setting("blend_function", 2) + setting("depth_test", 1)
                + setting("light1", light) + setting("normalization", 1) + color(1, 1, 1)
                + unit(1, {.texture = s.texture(2, 2, {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {255, 255, 0}})}));
            const double half = kind == 4 ? 29.5 : 14.5;
            clip c = {.scene = s.scene({{.type = object_genmesh,
                          .object = water,
                          .material = material,
                          .place = {-half, 0, -half, 0, 0, 0, 1, 1, 1}}}),
                .camera = wide_camera()};
            c.camera[1] = -10;
            c.camera[2] = -half - 5;
            c.camera[3] = 30;
            s.show(0, c);
            small_show show(s, glsl);
            picture before = show.frame(0);
            for (uint32_t time = 1; time <= 10; ++time)
                before = show.frame(time);
            CHECK(lit_pixels(before) > 1000);
            CHECK(greatest_difference(before, show.frame(10)) == 0);
            picture after = before;
            for (uint32_t time = 11; time <= 20; ++time)
                after = show.frame(time);
            if (kind != 4) // whose heights are whole numbers, mostly 0
                CHECK(greatest_difference(before, after) > 20);
        }
    }
}

// ---- manipulators -----------------------------------------------------------------------

TEST_CASE("the multiplier of three axes steps place, turn and size along each axis by its own number")
{
    for (const bool glsl : {false, true}) {
        show_text s;
        placed_object o = cell_object(s.mesh(square(0, 0, 1, 1)), s.plain_material(white), 0.0625, 0.125);
        // 3 to the right at 0.25, 2 downward at 0.5; twice as high with every step down
        o.manipulators = manipulator(xyz_multiplier, {3.9, 2, 1, 0.25, 0.5, 0, 0, 0, 0, 0, 0.125, 0});
        s.show(0, {.scene = s.scene({o})});
        small_show show(s, glsl);
        const picture p = show.frame();
        for (int ix = 0; ix < 4; ++ix) {
            check_pixel(p, ix * 40 + 5, 119 - 10, ix < 3 ? white : black);
            check_pixel(p, ix * 40 + 5, 119 - 20, black);
            check_pixel(p, ix * 40 + 5, 119 - 60 - 25, ix < 3 ? white : black);
            check_pixel(p, ix * 40 + 15, 119 - 10, black);
        }
    }
}

TEST_CASE("numbers of copies below one leave nothing to draw, and so does what follows")
{
    for (const bool glsl : {false, true}) {
        for (const number& count :
            {number(0), number(0.9), number(-1), number(-0.5), written("nan"), written("1e20")}) {
            for (const int kind : {xyz_multiplier, x_multiplier}) {
                show_text s;
                placed_object o = cell_object(s.mesh(square(0, 0, 1, 1)), s.plain_material(white), 1, 1);
                const std::vector<number> none(8, 0);
                std::vector<number> params
                    = kind == xyz_multiplier ? std::vector<number>{1, count, 1} : std::vector<number>{count};
                params.resize(kind == xyz_multiplier ? 12 : 10, number(0));
                o.manipulators = manipulator(kind, params) + manipulator(x_multiplier, {3, 0, 0, 0, 0, 0, 0, 0, 0, 0});
                s.show(0, {.scene = s.scene({o})});
                small_show show(s, glsl);
                CAPTURE(count.value);
                check_color(center_of(show.frame()), black);
            }
        }
    }
}

TEST_CASE("seven manipulators in a row: each works on what the one before has made")
{
    for (const bool glsl : {false, true}) {
        for (int single = -1; single < 7; ++single) {
            show_text s;
            const int mesh = s.mesh(square(0, 0, 1, 1));
            const int material = s.plain_material(white);
            placed_object o = cell_object(mesh, material, 0.03125, 0.0625); // half a cell of 16 x 8
            for (int n = 0; n < 7; ++n) {
                const double x = n < 4 ? 0.0625 * (1 << n) : 0;
                const double y = n < 4 ? 0 : 0.125 * (1 << (n - 4));
                if (n == single)
                    o.manipulators += manipulator(x_multiplier, {1, 9, 9, 9, 9, 9, 9, 9, 9, 9});
                else if (n % 2 == 0)
                    o.manipulators += manipulator(x_multiplier, {2, x, y, 0, 0, 0, 0, 0, 0, 0});
                else
                    o.manipulators += manipulator(
                        xyz_multiplier, {n < 4 ? 2.0 : 1.0, n < 4 ? 1.0 : 2.0, 1, x, y, 0, 0, 0, 0, 0, 0, 0});
            }
            s.show(0, {.scene = s.scene({o})});
            small_show show(s, glsl);
            const picture p = show.frame();
            int wrong = 0;
            for (int column = 0; column < 16; ++column) {
                for (int row = 0; row < 8; ++row) {
                    const int bits = column | row << 4;
                    const bool there = single < 0 || (bits >> single & 1) == 0;
                    wrong += (pixel_at(p, column * 10 + 2, 119 - row * 15 - 3).red == 255) != there;
                    wrong += pixel_at(p, column * 10 + 7, 119 - row * 15 - 3).red != 0;
                    wrong += pixel_at(p, column * 10 + 2, 119 - row * 15 - 11).red != 0;
                }
            }
            CAPTURE(single);
            CHECK(wrong == 0);
        }
    }
}

TEST_CASE("an object whose copies pass the limit says so once, at its first drawing")
{
    for (const bool glsl : {false, true}) {
        show_text s;
        mesh_content dots = square(0, 0, 1, 1);
        dots.indices.clear(); // nothing to draw, so that it is fast
        const int mesh = s.mesh(dots);
        const int material = s.plain_material(white);
        const auto row = [](const number& count) { return manipulator(1, {count, 0, 0, 0, 0, 0, 0, 0, 0, 0}); };
        const auto moving = [&](double count) { return row(dynamic(s.linear(0, count))); };
        std::string font = "<font>";
        for (int g = 0; g < 87; ++g)
            font += "<g model=\"" + std::to_string(mesh) + "\" material=\"0\" bitmap=\"0\" offset=\"0\" width=\"1\"/>";
        s.add(section_fonts, font + "</font>");
        s.scene({}); // so that ours is the second
        s.show(0,
            {.scene = s.scene({
                 {.object = mesh, .material = material, .manipulators = row(131072)},
                 {.object = mesh, .material = material, .manipulators = row(512) + moving(257)},
                 {.type = object_text, .font = 1, .text = "ab", .manipulators = moving(131073)},
                 {.object = mesh, .material = material, .manipulators = row(dynamic(s.linear(1, 131071)))},
                 {.object = mesh, .material = material, .manipulators = moving(131073) + row(0)},
                 {.object = mesh, .material = material, .manipulators = row(131073)}, // told while loading
             })});
        small_show show(s, {.glsl = glsl, .many_copies = true});
        const auto line = [](const char* object) {
            return std::string("Warning: demo.xmlz: section 13 (scenes), record 2, object ") + object
                + ": its manipulators make more than 131072 copies; the first 131072 are drawn.\n";
        };
        show.frame(0);
        CHECK(show.cut_copies == line("2") + line("3"));
        show.frame(1); // 131072 of the fourth
        CHECK(show.cut_copies == line("2") + line("3"));
        show.frame(2);
        CHECK(show.cut_copies == line("2") + line("3") + line("4"));
        show.frame(3);
        CHECK(show.cut_copies == line("2") + line("3") + line("4"));
    }
}

TEST_CASE("the order of manipulators matters: rows of shrinking copies, or one row that shrinks")
{
    for (const bool glsl : {false, true}) {
        show_text s;
        const int mesh = s.mesh(square(0, 0, 1, 1));
        const int material = s.plain_material(white);
        placed_object o = cell_object(mesh, material, 0.0625, 0.125);
        // copies at 0, 1/2 turned half round about z; then each copy again, downward
        o.manipulators = manipulator(x_multiplier, {2, 0.5, 0, 0, 0, 0, 180, 0, 0, 0})
            + manipulator(x_multiplier, {2, 0, 0.5, 0, 0, 0, 0, 0, 0, 0});
        s.show(0, {.scene = s.scene({o})});
        small_show show(s, glsl);
        const picture p = show.frame();
        check_pixel(p, 5, 119 - 5, white);
        check_pixel(p, 75, 119 + 5 - 10, black); // the turned one reaches up, out of the window
        check_pixel(p, 85, 119 - 5, black);
        check_pixel(p, 5, 119 - 65, white);
        check_pixel(p, 75, 119 - 55, white); // turned, half way down: left and up
        check_pixel(p, 85, 119 - 65, black);
    }
}

TEST_CASE("the model placer puts a copy at every vertex of a model under its own transform")
{
    for (const bool glsl : {false, true}) {
        show_text s;
        const int mesh = s.mesh(square(0, 0, 1, 1));
        placed_object o = cell_object(mesh, s.plain_material(white), 0.0625, 8.0 / 120);
        o.place[0] = 0.125;
        // the square's corners, scaled by (0.5, 0.25), turned by 90 degrees about z, moved by (0.5, 0.25)
        o.manipulators = manipulator(model_placer, {0.5, 0.25, 0, 0, 0, 90, 0.5, 0.25, 1}, mesh);
        s.show(0, {.scene = s.scene({o})});
        small_show show(s, glsl);
        const picture p = show.frame();
        const double corners[4][2] = {{0, 0}, {0, 0.5}, {-0.25, 0.5}, {-0.25, 0}};
        for (const auto& corner : corners) {
            const int x = static_cast<int>((corner[0] + 0.5 + 0.125) * 160);
            const int y = static_cast<int>((corner[1] + 0.25) * 120);
            check_pixel(p, x + 5, 119 - y - 4, white);
        }
        CHECK(lit_pixels(p) == 4 * 10 * 8);
    }
}

TEST_CASE("the model placer takes an effect's mesh as it is then, and no model at all leaves the list")
{
    // Without an angle the swirl's points lie in a row: 0, 2, 3, 4 ... units.
    for (const bool glsl : {false, true}) {
        for (const bool drawn_before : {false, true}) {
            show_text s;
            const int swirl = s.effect(2, {0, 0});
            const int mesh = s.mesh(square(0, 0, 1, 1));
            const int material = s.plain_material(white);
            placed_object o = cell_object(mesh, material, 0.03125, 1); // 5 pixels
            o.manipulators = manipulator(model_placer, {0, 0, 0, 0, 0, 0, 0.0625, 0, 0}, swirl, 1);
            placed_object update
                = {.type = object_genmesh, .object = swirl, .material = material, .place = {9, 9, 0, 0, 0, 0, 0, 0, 0}};
            s.show(0, {.scene = drawn_before ? s.scene({update, o}) : s.scene({o})});
            small_show show(s, glsl);
            const picture p = show.frame();
            for (int n = 0; n < 16; ++n)
                check_pixel(p, n * 10 + 2, 60, n == 0 || (drawn_before && n > 1) ? white : black);
        }
        for (const int model : {-1, 0, 77}) {
            for (const int type : {0, 1, 2}) {
                show_text s;
                placed_object o = cell_object(s.mesh(square(0, 0, 1, 1)), s.plain_material(white), 0.5, 1);
                o.manipulators = manipulator(model_placer, {0.5, 0, 0, 0, 0, 0, 1, 1, 1}, model, type);
                s.show(0, {.scene = s.scene({o})});
                small_show show(s, {.glsl = glsl, .dangling = model == 77 && type < 2});
                const picture p = show.frame();
                check_pixel(p, 40, 60, white); // not moved
                check_pixel(p, 120, 60, black);
            }
        }
    }
}

TEST_CASE("the rippler's displacement adds up from frame to frame, for all models in one cache")
{
    for (const bool glsl : {false, true}) {
        for (const bool vbo : {false, true}) {
            show_text s;
            const int first = s.mesh(square(0, 0, 0.25f, 1));
            const int second = s.mesh(square(0.5f, 0, 0.75f, 1)); // never seen: the cache has the first
            const int material = s.plain_material(white);
            placed_object a = {.object = first, .material = material};
            a.manipulators = manipulator(rippler, {0, 0.05, 0}); // every coordinate + 1/20
            placed_object b = a;
            b.object = second;
            b.manipulators = manipulator(rippler, {0, 0.05, 0});
            s.show(0, {.scene = s.scene({a}), .length = 100});
            s.show(0, {.scene = s.scene({b}), .length = 100});
            small_show show(s, {.glsl = glsl, .vbo = vbo});
            for (int n = 1; n <= 4; ++n) {
                const picture p = show.frame(n <= 2 ? 50 : 150); // the second model goes on where the first was
                CAPTURE(n);
                CHECK(lit_pixels_in_row(p, 20) == 40);
                check_pixel(p, 8 * n + 1, 20, white);
                check_pixel(p, 8 * n - 2, 20, black);
                check_pixel(p, 8 * n + 38, 20, white);
                check_pixel(p, 8 * n + 42, 20, black);
                CHECK(lit_pixels_in_column(p, 8 * n + 20) == 120 - 6 * n);
            }
        }
    }
}

TEST_CASE("the rippler's time and wavelength move each coordinate by the cosine of its own place")
{
    constexpr double pi = 3.14159265358979;
    for (const bool glsl : {false, true}) {
        show_text s;
        placed_object o = {.object = s.mesh(square(0, 0, 1, 1)), .material = s.plain_material(white)};
        // c + 0.25 cos(c pi + time)
        o.manipulators = manipulator(rippler, {dynamic(s.linear(pi / 100)), 0.25, pi});
        s.show(0, {.scene = s.scene({o})});
        small_show show(s, glsl);
        const picture p = show.frame(0); // 0 goes to 0.25, 1 to 0.75
        CHECK(lit_pixels_in_row(p, 60) == 80);
        CHECK(lit_pixels_in_column(p, 80) == 60);
        const picture back = show.frame(100); // each by 0.25 cos(pi / 4) outward
        const double half = 0.25 + 0.25 * std::sqrt(0.5);
        CHECK(std::abs(lit_pixels_in_row(back, 60) - 320 * half) <= 2);
        CHECK(std::abs(lit_pixels_in_column(back, 80) - 240 * half) <= 2);
    }
}

TEST_CASE("three copies draw three times and leave the camera to the next object")
{
    for (const bool glsl : {false, true}) {
        show_text s;
        const int mesh = s.mesh(square(0, 0, 1, 1));
        placed_object copies = cell_object(mesh, s.plain_material(red), 0.125, 0.5);
        copies.manipulators = manipulator(x_multiplier, {3, 0.25, 0, 0, 0, 0, 0, 0, 0, 0});
        placed_object after = cell_object(mesh, s.plain_material(green), 1, 0.25);
        after.place[1] = 0.75;
        s.show(0, {.scene = s.scene({copies, after})});
        small_show show(s, glsl);
        const picture p = show.frame();
        for (int n = 0; n < 4; ++n) {
            check_pixel(p, 40 * n + 10, 100, n < 3 ? red : black);
            check_pixel(p, 40 * n + 30, 100, black);
        }
        for (const int x : {2, 80, 157})
            check_pixel(p, x, 15, green);
        check_pixel(p, 80, 45, black);
    }
}
