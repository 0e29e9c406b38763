// Scenes in pixels: the camera, placements, visibility, times and texts, on both paths.
#include "small_show.h"
#include "vectors.h"

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
constexpr rgb blue = {0, 0, 255};

constexpr int x_multiplier = 1;

int lit_pixels(const picture& p)
{
    int lit = 0;
    for (int y = 0; y < window_height; ++y)
        lit += lit_pixels_in_row(p, y);
    return lit;
}

// A small lump is lit where it is expected, and is all that is lit.
void check_lump_at(const picture& p, const vector& eye)
{
    const spot at = spot_of(eye);
    CAPTURE(at.x);
    CAPTURE(at.y);
    REQUIRE(at.x >= 0);
    REQUIRE(at.x < window_width);
    REQUIRE(at.y >= 0);
    REQUIRE(at.y < window_height);
    check_color(pixel_at(p, at.x, at.y), white);
    CHECK(lit_pixels(p) < 60);
}

struct lump_show {
    show_text s;
    int mesh = s.mesh(lump(0, 0, 0, 0.15f));
    int material = s.plain_material(white);
};

// A cell of the window in an orthographic layer: `columns` x `rows` of them.
placed_object cell_object(int mesh, int material, double width, double height)
{
    return {.object = mesh, .material = material, .place = {0, 0, 0, 0, 0, 0, width, height, 1}};
}

} // namespace

// ---- camera ---------------------------------------------------------------------------

TEST_CASE("the camera turns about z, x and y, in this order, and then moves")
{
    const vector rotations[]
        = {{0, 0, 0}, {25, 0, 0}, {0, 35, 0}, {0, 0, 70}, {30, 40, 60}, {-50, 20, 10}, {10, -140, 30}};
    const vector eye = {0.9, -0.6, -4};
    for (const bool glsl : {false, true}) {
        for (const vector& rotation : rotations) {
            for (const bool moving : {false, true}) {
                lump_show k;
                const vector translation = {1.5, -0.5, 2};
                vector world = turned_y(turned_x(turned_z(eye, -rotation.z), -rotation.x), -rotation.y);
                world = {world.x - translation.x, world.y - translation.y, world.z - translation.z};
                clip c = {.scene = k.s.scene({{.object = k.mesh,
                              .material = k.material,
                              .place = {world.x, world.y, world.z, 0, 0, 0, 1, 1, 1}}}),
                    .camera = wide_camera()};
                const double values[6]
                    = {translation.x, translation.y, translation.z, rotation.x, rotation.y, rotation.z};
                for (size_t i = 0; i < 6; ++i) // as functions: half of them at time 50, from 0
                    c.camera[i] = moving ? dynamic(k.s.linear(values[i] / 100, values[i] / 2)) : number(values[i]);
                k.s.show(0, c);
                small_show show(k.s, glsl);
                check_lump_at(show.frame(50), seen(world, rotation, translation));
            }
        }
    }
}

TEST_CASE("an orthographic layer has (0, 0) at the top left, y downward and z from -1 to 1")
{
    for (const bool glsl : {false, true}) {
        show_text s;
        const int mesh = s.mesh(square(0, 0, 1, 1));
        const auto at = [&](double x, double y, double z, const rgb& c) {
            placed_object o = cell_object(mesh, s.plain_material(c), 0.25, 0.25);
            o.place[0] = x;
            o.place[1] = y;
            o.place[2] = z;
            return o;
        };
        s.show(0,
            {.scene = s.scene({at(0, 0, 0, red), at(0.75, 0, 0.9, green), at(0, 0.75, -0.9, blue),
                 at(0.75, 0.75, 1.1, white), at(0.375, 0.375, -1.1, white)})});
        small_show show(s, glsl);
        const picture p = show.frame();
        check_pixel(p, 2, 117, red);
        check_pixel(p, 157, 117, green);
        check_pixel(p, 2, 2, blue);
        check_pixel(p, 157, 2, black); // beyond the far plane, and before the near one
        check_color(center_of(p), black);
    }
}

TEST_CASE("orthographic layers switch the depth test off, and a material may switch it on")
{
    for (const bool glsl : {false, true}) {
        for (const int test : {0, 1}) {
            show_text s;
            const int mesh = s.mesh(square(0, 0, 1, 1));
            placed_object in_front = cell_object(
                mesh, s.material(setting("blend_function", 2) + setting("depth_test", test) + color(1, 0, 0)), 1, 1);
            placed_object behind = cell_object(
                mesh, s.material(setting("blend_function", 2) + setting("depth_test", test) + color(0, 1, 0)), 1, 1);
            in_front.place[2] = 0.5;
            behind.place[2] = -0.5;
            s.show(0, {.scene = s.scene({in_front, behind})});
            small_show show(s, glsl);
            check_color(center_of(show.frame()), test == 1 ? red : green);
        }
    }
}

// ---- placements -----------------------------------------------------------------------

TEST_CASE("objects are moved, turned toward the camera, turned about x, y and z, and scaled, in this order")
{
    // A lump off the middle of its own mesh shows every step.
    const vector rotations[] = {{0, 0, 0}, {40, 0, 0}, {0, 50, 0}, {0, 0, 60}, {30, 20, 70}};
    const vector cameras[] = {{0, 0, 0}, {15, -25, 40}};
    const vector position = {0.4, -0.5, -7};
    const vector scaling = {1.2, 0.7, 1.5};
    const vector local = {0.8, 0.9, 0.5};
    for (const bool glsl : {false, true}) {
        for (const bool facing : {false, true}) {
            for (const vector& camera : cameras) {
                for (const vector& r : rotations) {
                    show_text s;
                    const int mesh = s.mesh(lump(0.8f, 0.9f, 0.5f, 0.25f));
                    const double values[9]
                        = {position.x, position.y, position.z, r.x, r.y, r.z, scaling.x, scaling.y, scaling.z};
                    placed_object o = {.object = mesh, .material = s.plain_material(white), .facing = facing};
                    for (size_t i = 0; i < 9; ++i) // as functions at time 50, every other one
                        o.place[i] = i % 2 == 0 ? number(values[i]) : dynamic(s.linear(values[i] / 100, values[i] / 2));
                    clip c = {.scene = s.scene({o}), .camera = wide_camera()};
                    c.camera[3] = camera.x;
                    c.camera[4] = camera.y;
                    c.camera[5] = camera.z;
                    s.show(0, c);
                    vector v = {local.x * scaling.x, local.y * scaling.y, local.z * scaling.z};
                    v = turned_x(turned_y(turned_z(v, r.z), r.y), r.x);
                    if (facing)
                        v = turned_y(turned_x(turned_z(v, -camera.z), -camera.x), -camera.y);
                    v = {v.x + position.x, v.y + position.y, v.z + position.z};
                    small_show show(s, glsl);
                    CAPTURE(facing);
                    check_lump_at(show.frame(50), seen(v, camera, {0, 0, 0}));
                }
            }
        }
    }
}

TEST_CASE("the camera-facing flag belongs to its object, also beyond the eighth")
{
    for (const bool glsl : {false, true}) {
        for (const size_t facing : {size_t{0}, size_t{7}, size_t{8}, size_t{13}}) {
            show_text s;
            const int mesh = s.mesh(square(-0.05f, 0.5f, 0.05f, 1)); // stands up on its place
            const int material = s.plain_material(white);
            std::vector<placed_object> objects;
            for (size_t n = 0; n < 16; ++n) {
                const double x = (7.5 - static_cast<double>(n)) * 10 / 60;
                objects.push_back({.object = mesh,
                    .material = material,
                    .place = {x, 0, -1, 0, 0, 0, 1, 1, 1},
                    .facing = n == facing});
            }
            clip c = {.scene = s.scene(objects), .camera = wide_camera()};
            c.camera[5] = 180; // the world is upside down, but for the one
            s.show(0, c);
            small_show show(s, glsl);
            const picture p = show.frame();
            for (int n = 0; n < 16; ++n) {
                const bool upright = static_cast<size_t>(n) == facing;
                check_pixel(p, n * 10 + 5, 105, upright ? white : black);
                check_pixel(p, n * 10 + 5, 15, upright ? black : white);
            }
        }
    }
}

TEST_CASE("later objects are drawn over earlier ones, in the order of the scene")
{
    for (const bool glsl : {false, true}) {
        show_text s;
        const int mesh = s.mesh(square(0, 0, 1, 1));
        s.show(0,
            {.scene = s.scene(
                 {cell_object(mesh, s.plain_material(red), 1, 1), cell_object(mesh, s.plain_material(green), 0.5, 1),
                     cell_object(mesh, s.plain_material(blue), 0.5, 0.5)})});
        small_show show(s, glsl);
        const picture p = show.frame();
        check_pixel(p, 40, 90, blue);
        check_pixel(p, 40, 30, green);
        check_pixel(p, 120, 30, red);
    }
}

// ---- visibility and time -----------------------------------------------------------------

TEST_CASE("an object is hidden below 1.0, at its own time")
{
    for (const bool glsl : {false, true}) {
        const struct {
            double value;
            bool shown;
        } table[] = {{0.999, false}, {1.0, true}, {1.001, true}, {0, false}, {-1, false}};
        for (const auto& row : table) {
            lump_show k;
            k.s.show(0,
                {.scene = k.s.scene({{.object = k.mesh,
                     .material = k.material,
                     .place = {0, 0, -4, 0, 0, 0, 1, 1, 1},
                     .visibility = k.s.constant(row.value)}}),
                    .camera = wide_camera()});
            small_show show(k.s, glsl);
            CAPTURE(row.value);
            check_color(center_of(show.frame()), row.shown ? white : black);
        }
        // visible from the object's time 100 on: the layer's offset and the object's own add up
        const struct {
            double offset;
            uint32_t time;
            bool shown;
        } times[] = {{0, 79, false}, {0, 80, true}, {1.5, 78, false}, {1.5, 79, true}, {-0.5, 80, false},
            {-0.5, 81, true}, {-20, 0, false}, {100, 0, true}, {1e30, 0, true}, {-1000, 500, true},
            {-1000, 980, false}}; // below 0 is very late: the function's end
        for (const auto& row : times) {
            lump_show k;
            k.s.show(0,
                {.scene = k.s.scene({{.object = k.mesh,
                     .material = k.material,
                     .place = {0, 0, -4, 0, 0, 0, 1, 1, 1},
                     .visibility = k.s.linear(0.01),
                     .offset = row.offset}}),
                    .offset = 20,
                    .camera = wide_camera()});
            small_show show(k.s, glsl);
            CAPTURE(row.offset);
            CAPTURE(row.time);
            check_color(center_of(show.frame(row.time)), row.shown ? white : black);
        }
    }
}

TEST_CASE("places and manipulators follow the object's time, materials the layer's")
{
    for (const bool glsl : {false, true}) {
        show_text s;
        const int ramp = s.linear(0.001);
        const int material = s.material(setting("blend_function", 2) + color(dynamic(s.linear(0.01)), 0, 0));
        placed_object o = cell_object(s.mesh(square(0, 0, 1, 1)), material, 0.05, 1);
        o.place[0] = dynamic(ramp);
        o.offset = 100.9;
        o.manipulators = manipulator(x_multiplier, {2, dynamic(s.linear(0.003)), 0, 0, 0, 0, 0, 0, 0, 0});
        s.show(0, {.scene = s.scene({o}), .offset = 50});
        small_show show(s, glsl);
        const picture p = show.frame(0); // layer's time 50, object's time 150
        const rgb half = to_rgb(0.5, 0, 0);
        check_pixel(p, 28, 60, half); // x from 0.15
        check_pixel(p, 20, 60, black);
        check_pixel(p, 100, 60, half); // and 0.45 on
        check_pixel(p, 92, 60, black);
    }
}

TEST_CASE("the time within a layer starts behind its pause and counts from there on")
{
    for (const bool glsl : {false, true}) {
        show_text s;
        placed_object o = cell_object(s.mesh(square(0, 0, 1, 1)), s.plain_material(white), 0.05, 1);
        o.place[0] = dynamic(s.linear(0.001));
        const int scene = s.scene({o});
        s.show(0, {.scene = scene, .length = 300});
        s.show(0, {.scene = scene, .space_before = 100, .length = 300});
        small_show show(s, glsl);
        check_pixel(show.frame(299), 52, 60, white); // x from 0.299
        show.frame(350);
        CHECK(show.drawn == 0); // the pause
        check_pixel(show.frame(400), 4, 60, white);
        check_pixel(show.frame(700), 52, 60, white);
        show.frame(701);
        CHECK(show.drawn == 0);
        show.frame(300); // the second layer's slot, in its pause
        CHECK(show.drawn == 0);
    }
}

// ---- texts ----------------------------------------------------------------------------

namespace {

// A font whose letters are squares of 10 pixels' width: glyph g has offset and width as told.
struct font_show {
    show_text s;
    int mesh = s.mesh(square(0, 0, 1, 1));
    int red_one = s.plain_material(red);
    int green_one = s.plain_material(green);
    int font = 0;

    // Even glyphs (small letters) are red, odd ones green; 86, the space, has no model.
    font_show()
    {
        std::string record = "<font>";
        for (int g = 0; g < 87; ++g) {
            const bool blank = g == 86;
            record += "<g model=\"" + std::to_string(blank ? 0 : mesh) + "\" material=\""
                + std::to_string(g % 2 == 0 ? red_one : green_one) + "\" bitmap=\"0\" offset=\""
                + (blank         ? "0.0625"
                        : g == 4 ? "0.03125"
                                 : "0")
                + "\" width=\"" + (blank ? "0.25" : "0.125") + "\"/>";
        }
        font = s.add(section_fonts, record + "</font>");
    }

    placed_object text(const std::string& bytes)
    {
        return {.type = object_text, .font = font, .text = bytes, .place = {0.0625, 0, 0, 0, 0, 0, 0.0625, 1, 1}};
    }

    // What stands in each of the 32 columns of 5 pixels: r, g or a dot.
    std::string columns(const placed_object& o, bool glsl)
    {
        show_text one = s;
        one.show(0, {.scene = one.scene({o})});
        small_show show(one, glsl);
        const picture p = show.frame();
        std::string result;
        for (int column = 0; column < 32; ++column) {
            const rgb c = pixel_at(p, column * 5 + 2, 60);
            result += is_near(c, red, 2) ? 'r' : is_near(c, green, 2) ? 'g' : is_near(c, black, 2) ? '.' : '?';
        }
        while (!result.empty() && result.back() == '.')
            result.pop_back();
        return result;
    }
};

} // namespace

TEST_CASE("texts: drawn letters move the pen by their width, blanks by width less offset")
{
    // A letter is two columns wide and moves the pen by four; the text starts at column 2.
    const struct {
        std::string text;
        std::string expected;
    } table[] = {
        {"a", "..rr"},
        {"aA", "..rr..gg"},
        {"a A", "..rr........gg"}, // the blank: 8 - 2 columns
        {"aba", "..rr.rr...rr"},   // b is shifted by one column, and takes it back
        {"ab a", "..rr.rr.........rr"},
        {"", ""},
        {"~", ""},
        {"~a^A", "..rr..gg"}, // without glyphs: no move
        {"\xC3\x81"
         "a",
            "..gg..rr"},                  // A with an accent, by two bytes
        {"\xC5\x91\xC5\x90", "..rr..gg"}, // small and large o with two accents
        {"\xC3\x90", "..gg"},             // the first byte does not matter
        {"\xC3"
         "a",
            ""},           // no such second byte: both are gone
        {"a\xC3", "..rr"}, // the second byte is the end
        {"?!0&/", "..rr..gg..rr..rr..gg"},
    };
    font_show k;
    for (const bool glsl : {false, true}) {
        for (const auto& row : table) {
            CAPTURE(row.text);
            CHECK(k.columns(k.text(row.text), glsl) == row.expected);
        }
    }
}

TEST_CASE("a text ends after 32 bytes, and starts anew in the next object")
{
    font_show k;
    placed_object o = k.text("~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~aAaA");
    for (const bool glsl : {false, true})
        CHECK(k.columns(o, glsl) == "..rr..gg");
}

TEST_CASE("texts stand at every placement; the pen is not scaled with them")
{
    font_show k;
    for (const bool glsl : {false, true}) {
        placed_object o = k.text("aA");
        o.manipulators = manipulator(x_multiplier, {2, 0.5, 0, 0, 0, 0, 0, -0.03125, 0, 0}); // the copy half as wide
        CHECK(k.columns(o, glsl) == "..rr..gg..........r...g");
        o.visibility = 0;
        o.font = 0;
        CHECK(k.columns(o, glsl) == "");
        o = k.text("aA");
        o.object = 5; // not looked at
        o.material = 99;
        show_text one = k.s;
        one.show(0, {.scene = one.scene({o})});
        small_show show(one, {.glsl = glsl, .dangling = true});
        check_pixel(show.frame(), 12, 60, red);
    }
}

TEST_CASE("glyphs without a material are drawn with the state as it stands, glyphs of dangling models are not")
{
    for (const bool glsl : {false, true}) {
        show_text s;
        const int mesh = s.mesh(square(0, 0, 1, 1));
        const int material = s.plain_material(green);
        std::string record = "<font>";
        for (int g = 0; g < 87; ++g)
            record += "<g model=\"" + std::to_string(g == 1 ? 55 : mesh) + "\" material=\""
                + (g == 0 ? std::to_string(material) : "0") + "\" bitmap=\"0\" offset=\"0\" width=\"0.125\"/>";
        const int font = s.add(section_fonts, record + "</font>");
        s.show(0,
            {.scene = s.scene(
                 {{.type = object_text, .font = font, .text = "aAb", .place = {0, 0, 0, 0, 0, 0, 0.0625, 1, 1}}})});
        small_show show(s, {.glsl = glsl, .dangling = true});
        const picture p = show.frame();
        check_pixel(p, 5, 60, green);
        check_pixel(p, 25, 60, black);
        check_pixel(p, 45, 60, green);
    }
}
