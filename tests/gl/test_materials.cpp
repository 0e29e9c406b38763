// Materials in pixels: blending, culling, depth, lines, lights, fog, wrapping and made
// coordinates, on both paths, with expected values worked out here in doubles.
//
// The wide camera stands at the origin and looks along -z: a point (x, y, -d) is seen at
// pixel (80 + 60 x / d, 60 + 60 y / d).
#include "small_show.h"
#include "vectors.h"

#include <GL/glew.h>

#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr rgb black = {0, 0, 0};
constexpr rgb white = {255, 255, 255};
constexpr rgb red = {255, 0, 0};
constexpr rgb green = {0, 255, 0};

const std::string replaces = setting("blend_function", 2);

// One square of half size `size` at z = -distance, before the wide camera.
struct square_show {
    show_text s;
    int mesh = s.mesh(square(-1, -1, 1, 1));

    placed_object place(int material, double distance, double size = 1)
    {
        return {.object = mesh, .material = material, .place = {0, 0, -distance, 0, 0, 0, size, size, 1}};
    }

    void show(const std::vector<placed_object>& objects)
    {
        s.show(0, {.scene = s.scene(objects), .camera = wide_camera()});
    }
};

// The middle of the one square of a material at a distance.
rgb middle_of(const show_text& s, bool glsl, uint32_t time = 0, bool dangling = false)
{
    small_show show(s, {.glsl = glsl, .dangling = dangling});
    return center_of(show.frame(time));
}

} // namespace

// ---- blending, culling, depth ---------------------------------------------------

TEST_CASE("blend functions mix with what a material before has drawn; numbers beyond the list change nothing")
{
    const double source[4] = {0.6, 0.4, 0.2, 0.5};
    const double under[3] = {0.2, 0.5, 0.9};
    const struct {
        int before; // blend function of the material under it
        int mode;
        int acts_as;
    } table[] = {{2, 0, 0}, {2, 1, 1}, {2, 2, 2}, {2, 3, 3}, {2, 4, 4}, {2, 5, 2}, {2, 255, 2}, {1, 5, 1},
        {1, 100000, 1}, {2, -1, 2}};
    for (const bool glsl : {false, true}) {
        for (const auto& row : table) {
            show_text s;
            const int below = s.material(setting("blend_function", row.before) + color(under[0], under[1], under[2]));
            const int above
                = s.material(setting("blend_function", row.mode) + color(source[0], source[1], source[2], source[3]));
            s.show(0, {.scene = s.full_scene(below)}); // black before it: functions 1 and 2 give the same
            s.show(1, {.scene = s.full_scene(above)});
            double expected[3];
            for (int i = 0; i < 3; ++i) {
                const double by_mode[5] = {source[i] * source[3] + under[i] * (1 - source[3]), source[i] + under[i],
                    source[i], source[i] + under[i] * (1 - source[3]), under[i] - source[i] * source[3]};
                expected[i] = by_mode[row.acts_as];
            }
            CAPTURE(row.mode);
            check_color(middle_of(s, glsl), to_rgb(expected[0], expected[1], expected[2]));
        }
    }
}

TEST_CASE("after a subtracting material the next one adds again")
{
    for (const bool glsl : {false, true}) {
        show_text s;
        const int parts[3] = {s.material(setting("blend_function", 2) + color(0.5, 0.5, 0.5)),
            s.material(setting("blend_function", 4) + color(0.5, 0.25, 0, 0.5)),
            s.material(setting("blend_function", 1) + color(0.125, 0.125, 0.125))};
        for (int track = 0; track < 3; ++track)
            s.show(track, {.scene = s.full_scene(parts[track])});
        check_color(middle_of(s, glsl), to_rgb(0.375, 0.5, 0.625));
    }
}

TEST_CASE("culling hides what turns its back, and only that")
{
    for (const bool glsl : {false, true}) {
        for (const int culling : {0, 1}) {
            for (const bool turned : {false, true}) {
                square_show k;
                placed_object o
                    = k.place(k.s.material(replaces + setting("backface_culling", culling) + color(1, 1, 1)), 4);
                o.place[4] = turned ? 180 : 0;
                k.show({o});
                CAPTURE(culling);
                CAPTURE(turned);
                check_color(middle_of(k.s, glsl), culling && turned ? black : white);
            }
        }
    }
}

TEST_CASE("the depth test hides what is behind; without it nothing is hidden and no depth is left")
{
    for (const bool glsl : {false, true}) {
        for (const int near_test : {0, 1}) {
            for (const int far_test : {0, 1}) {
                square_show k;
                const int near_one = k.s.material(replaces + setting("depth_test", near_test) + color(1, 0, 0));
                const int far_one = k.s.material(replaces + setting("depth_test", far_test) + color(0, 1, 0));
                k.show({k.place(near_one, 4), k.place(far_one, 8, 4)});
                CAPTURE(near_test);
                CAPTURE(far_test);
                check_color(middle_of(k.s, glsl), near_test && far_test ? red : green);
            }
        }
    }
}

TEST_CASE("equal depths are drawn: a second pass over the same mesh shows")
{
    for (const bool glsl : {false, true}) {
        square_show k;
        const int first = k.s.material(replaces + setting("depth_test", 1) + color(1, 0, 0));
        const int second = k.s.material(setting("blend_function", 1) + setting("depth_test", 1) + color(0, 1, 0));
        k.show({k.place(first, 4), k.place(second, 4)});
        check_color(middle_of(k.s, glsl), {255, 255, 0});
    }
}

// ---- lines ------------------------------------------------------------------------

TEST_CASE("wireframes are lines of the material's width, constant or dynamic, and the next material fills")
{
    for (const bool glsl : {false, true}) {
        for (const bool moving : {false, true}) {
            square_show k;
            const number width = moving ? dynamic(k.s.linear(0.05)) : number(5);
            const int wire
                = k.s.material(replaces + setting("wireframe", 1) + setting("linewidth", width) + color(1, 1, 1));
            const int filled = k.s.material(replaces + color(0, 1, 0));
            placed_object o = k.place(filled, 20, 1);
            k.show({k.place(wire, 4, 2), o}); // edges 30 pixels from the middle
            small_show show(k.s, glsl);
            const picture p = show.frame(100);
            check_color(center_of(p), green);
            check_pixel(p, 80 + 12, 60 - 5, black); // off the diagonal
            int thickness = 0;
            for (int x = 40; x < 60; ++x)
                thickness += pixel_at(p, x, 70).red > 128; // the left edge at x = 50
            CHECK(std::abs(thickness - 5) <= 1);
        }
    }
}

TEST_CASE("line widths that mean nothing leave the one before and raise no error")
{
    for (const bool glsl : {false, true}) {
        for (const char* width : {"0", "-3", "nan", "-inf"}) {
            square_show k;
            const auto wire = [&](const number& w) {
                return k.s.material(replaces + setting("wireframe", 1) + setting("linewidth", w) + color(1, 1, 1));
            };
            k.show({k.place(wire(5), 40, 0.01), k.place(wire(written(width)), 4, 2)});
            small_show show(k.s, glsl);
            const picture p = show.frame();
            int thickness = 0;
            for (int x = 40; x < 60; ++x)
                thickness += pixel_at(p, x, 70).red > 128;
            CHECK(std::abs(thickness - 5) <= 1);
        }
    }
}

TEST_CASE("line widths between 0 and 1 are handed over as they are")
{
    for (const bool glsl : {false, true}) {
        square_show k;
        const int wire = k.s.material(replaces + setting("wireframe", 1) + setting("linewidth", number(0.25)));
        k.show({k.place(wire, 4, 2)});
        small_show show(k.s, glsl);
        glLineWidth(5.0f);
        show.frame();
        GLfloat width = 0.0f;
        glGetFloatv(GL_LINE_WIDTH, &width);
        CHECK(width == 0.25f);
    }
}

TEST_CASE("a mesh's lines are made once, on the shader path only")
{
    for (const bool glsl : {false, true}) {
        square_show k;
        const int wire = k.s.material(replaces + setting("wireframe", 1) + color(1, 1, 1));
        k.show({k.place(wire, 4), k.place(wire, 6)});
        small_show show(k.s, glsl);
        show.frame();
        show.frame();
        CHECK(show.line_arrays == (glsl ? 1 : 0));
    }
}

// ---- colours and lights -----------------------------------------------------------

TEST_CASE("each colour channel may follow its own function of the layer's time")
{
    for (const bool glsl : {false, true}) {
        square_show k;
        const int ramp = k.s.linear(0.01);
        const int material = k.s.material(
            setting("blend_function", 0) + color(dynamic(ramp), 0.5, dynamic(k.s.constant(0.25)), dynamic(ramp)));
        clip c = {.scene = k.s.scene({k.place(material, 4, 4)}), .offset = 10, .camera = wide_camera()};
        k.s.show(0, c);
        check_color(middle_of(k.s, glsl, 40), to_rgb(0.25, 0.25, 0.125)); // all at 0.5
        check_color(middle_of(k.s, glsl, 90), to_rgb(1.0, 0.5, 0.25));
    }
}

// The corners of the square are sqrt(2) off its middle, where the light stands at a height
// of `height`: all four see it at the same angle.
static double corner_cosine(double height)
{
    return height / std::sqrt(height * height + 2);
}

TEST_CASE("a light shines from where the world has it, with its ambient and diffuse parts")
{
    for (const bool glsl : {false, true}) {
        for (const bool moving : {false, true}) {
            square_show k;
            const int ramp = k.s.linear(0.01);
            const number height = moving ? dynamic(ramp) : number(1.5);
            const number ambient = moving ? dynamic(k.s.constant(0.1)) : number(0.1);
            const number diffuse = moving ? dynamic(k.s.linear(0.004)) : number(0.6);
            const int light = k.s.values({ambient, 0.2, 0.0, diffuse, 0.5, 0.8, 0, 0, height});
            const int material = k.s.material(replaces + setting("light1", light) + color(0.9, 0.8, 0.7));
            clip c = {.scene = k.s.scene({{.object = k.mesh, .material = material}}), .camera = wide_camera()};
            c.camera[2] = -4; // the camera stands off, the light stays at the square
            k.s.show(0, c);
            const double f = corner_cosine(1.5);
            check_color(
                middle_of(k.s, glsl, 150), to_rgb(0.9 * (0.1 + f * 0.6), 0.8 * (0.2 + f * 0.5), 0.7 * (0.0 + f * 0.8)));
        }
    }
}

TEST_CASE("a light keeps its place when the object moves away, and does not shine on backs")
{
    for (const bool glsl : {false, true}) {
        for (const bool behind : {false, true}) {
            square_show k;
            const int light = k.s.light(0.25, 0.75, 0, 0, behind ? -9 : -2);
            k.show({k.place(
                k.s.material(replaces + setting("light1", light) + setting("depth_test", 1) + color(1, 1, 1)), 4)});
            const double f = 0.25 + 0.75 * corner_cosine(2);
            check_color(middle_of(k.s, glsl), behind ? to_rgb(0.25, 0.25, 0.25) : to_rgb(f, f, f));
        }
    }
}

TEST_CASE("two lights add up and end at white; a second one alone counts on the shader path only")
{
    for (const bool glsl : {false, true}) {
        for (const bool first : {false, true}) {
            for (const double strength : {0.3, 0.8}) {
                square_show k;
                const int one = k.s.light(0.05, strength, 0, 0, -2);
                const int two = k.s.values({0, 0, 0.1, strength, 0, 0.4, 0, 0, -1});
                k.show({k.place(k.s.material(replaces + setting("light1", first ? one : 0) + setting("light2", two)
                                    + color(1, 1, 1)),
                    4)});
                const double f1 = first ? 0.05 + strength * corner_cosine(2) : 0;
                const double f2 = corner_cosine(3);
                const rgb lit = to_rgb(f1 + strength * f2, f1, f1 + 0.1 + 0.4 * f2);
                check_color(middle_of(k.s, glsl), !first && !glsl ? white : lit);
            }
        }
    }
}

TEST_CASE("a light that a material before has used does not stay on")
{
    for (const bool glsl : {false, true}) {
        square_show k;
        const int light = k.s.light(0, 1, 0, 0, -2);
        const std::string both = setting("light1", light) + setting("light2", light);
        const int lit = k.s.material(replaces + both + color(1, 1, 1));
        const int once = k.s.material(replaces + setting("light1", light) + color(0.4, 0.4, 0.4));
        const int plain = k.s.material(replaces + color(0.25, 0.5, 0.75));
        k.show({k.place(lit, 4, 2), k.place(once, 4), k.place(plain, 4, 0.25)});
        small_show show(k.s, glsl);
        const picture p = show.frame();
        check_color(center_of(p), to_rgb(0.25, 0.5, 0.75));
        const double f = 0.4 * corner_cosine(2);
        check_pixel(p, 80 + 10, 60 + 10, to_rgb(f, f, f));
    }
}

TEST_CASE("normals of a scaled object shorten the light, unless they are normalised")
{
    for (const bool glsl : {false, true}) {
        for (const int normalization : {0, 1}) {
            for (const double size : {0.5, 2.0}) {
                square_show k;
                const int light = k.s.light(0, 0.5, 0, 0, -4 + size * 2); // at twice the scale's height
                const int material = k.s.material(
                    replaces + setting("light1", light) + setting("normalization", normalization) + color(1, 1, 1));
                placed_object o = k.place(material, 4, size);
                o.place[8] = size;
                k.show({o});
                // normals go by the inverse: a larger object has shorter ones
                const double length = normalization == 1 ? 1 : 1 / size;
                const double f = 0.5 * corner_cosine(2) * length;
                check_color(middle_of(k.s, glsl), to_rgb(f, f, f));
            }
        }
    }
}

TEST_CASE("every copy of an object is lit by its own normals")
{
    // Three copies side by side, each turned by 30 degrees more toward the eye; the light stands far behind the eye.
    for (const bool glsl : {false, true}) {
        square_show k;
        const int light = k.s.light(0, 1, 0, 0, 100000);
        placed_object o = k.place(k.s.material(replaces + setting("light1", light) + color(1, 1, 1)), 8);
        o.place[0] = -4;
        o.manipulators = manipulator(1, {3, 4, 0, 0, 0, -30, 0, 0, 0, 0});
        k.show({o});
        small_show show(k.s, glsl);
        const picture p = show.frame();
        for (int n = 0; n < 3; ++n) {
            const double f = std::cos(n * 30 * 3.14159265358979 / 180);
            CAPTURE(n);
            check_pixel(p, 80 + 30 * (n - 1), 60, to_rgb(f, f, f), 3);
        }
    }
}

TEST_CASE("lights and colours that are dynamic reach the program in their order")
{
    // Twelve light values, four colours and the fog, each by a function of its own.
    for (const bool glsl : {false, true}) {
        square_show k;
        const auto own = [&](double v) { return dynamic(k.s.constant(v)); };
        const int one = k.s.values({own(0.1), own(0.05), own(0.02), own(0.3), own(0.2), own(0.1), 0, 0, own(-2)});
        const int two = k.s.values({own(0.03), own(0.06), own(0.09), own(0.2), own(0.3), own(0.4), 0, 0, -1});
        const int material = k.s.material(
            replaces + setting("light1", one) + setting("light2", two) + color(own(0.9), own(0.8), own(0.7), own(0.5)));
        k.show({k.place(material, 4)});
        const double a = corner_cosine(2);
        const double b = corner_cosine(3);
        check_color(middle_of(k.s, glsl),
            to_rgb(
                0.9 * (0.13 + 0.3 * a + 0.2 * b), 0.8 * (0.11 + 0.2 * a + 0.3 * b), 0.7 * (0.11 + 0.1 * a + 0.4 * b)));
    }
}

// ---- fog ----------------------------------------------------------------------------

// How far a square at a distance is on its way from `start` to `end`: by its distance on
// the fixed path, on the shader path by its depth in the buffer (near 0.1, far 100) times
// its distance, which is a little less.
static double fog_share(bool glsl, double distance, double start, double end)
{
    const double depth = (1 / 0.1 - 1 / distance) / (1 / 0.1 - 1 / 100.0);
    const double z = glsl ? depth * distance : distance;
    return std::clamp((z - start) / (end - start), 0.0, 1.0);
}

TEST_CASE("fog of both types goes from start to end, constant or dynamic, to its colour or to white")
{
    for (const bool glsl : {false, true}) {
        for (const int type : {1, 2, 3}) {
            for (const bool moving : {false, true}) {
                for (const bool colored : {false, true}) {
                    for (const double distance : {2.0, 10.0, 20.0}) {
                        square_show k;
                        const auto value = [&](double v) { return moving ? dynamic(k.s.constant(v)) : number(v); };
                        const int fog = k.s.values({0.9, 0.9, 0.9, value(0.2), value(0.6), value(0.4), 9, 9, 9});
                        const int material
                            = k.s.material(replaces + setting("fogtype", type) + setting("fogcolor", colored ? fog : 0)
                                + setting("fogstart", value(5)) + setting("fogend", value(15)) + color(1, 0, 0.5));
                        k.show({k.place(material, distance, distance / 2)});
                        const double f = fog_share(glsl, distance, 5, 15);
                        const double c[3] = {colored ? 0.2 : 1, colored ? 0.6 : 1, colored ? 0.4 : 1};
                        CAPTURE(distance);
                        check_color(middle_of(k.s, glsl), to_rgb(1 + f * (c[0] - 1), f * c[1], 0.5 + f * (c[2] - 0.5)));
                    }
                }
            }
        }
    }
}

TEST_CASE("fog whose start is its end covers everything from there on, constant or dynamic, near and far")
{
    for (const bool glsl : {false, true}) {
        for (const double start : {0.0, 5.0, 50000.0}) {
            for (const int moving : {0, 1, 2, 3}) { // bit 0: the start, bit 1: the end
                for (const double share : {0.5, 1.5}) {
                    square_show k;
                    const auto value = [&](bool moves) { return moves ? dynamic(k.s.constant(start)) : number(start); };
                    const int material
                        = k.s.material(replaces + setting("fogtype", 1) + setting("fogstart", value((moving & 1) != 0))
                            + setting("fogend", value((moving & 2) != 0)) + color(1, 0, 0.5));
                    const double distance = start == 0 ? share : start * share;
                    clip c = {.scene = k.s.scene({k.place(material, distance, distance / 2)}), .camera = wide_camera()};
                    c.camera[7] = 200000;
                    k.s.show(0, c);
                    CAPTURE(glsl);
                    CAPTURE(start);
                    CAPTURE(moving);
                    check_color(middle_of(k.s, glsl), share > 1 || start == 0 ? white : to_rgb(1, 0, 0.5));
                }
            }
        }
    }
}

TEST_CASE("fog changes no alpha and is off for the next material")
{
    for (const bool glsl : {false, true}) {
        square_show k;
        const int fogged = k.s.material(setting("blend_function", 0) + setting("fogtype", 1)
            + setting("fogstart", number(0)) + setting("fogend", number(1)) + color(1, 0, 0, 0.25));
        const int plain = k.s.material(replaces + color(0, 1, 0));
        k.show({k.place(fogged, 4, 2), k.place(plain, 4, 0.25)});
        small_show show(k.s, glsl);
        const picture p = show.frame();
        check_pixel(p, 80 + 15, 60, to_rgb(0.25, 0.25, 0.25)); // white fog at a quarter, over black
        check_color(center_of(p), green);
    }
}

TEST_CASE("fog without a distance, or with none that is a number, raises no error")
{
    for (const bool glsl : {false, true}) {
        for (const char* end : {"5", "nan", "inf", "-inf", "-5"}) {
            square_show k;
            const int fogged = k.s.material(replaces + setting("fogtype", 1) + setting("fogstart", number(5))
                + setting("fogend", written(end)) + color(1, 0, 0));
            k.show({k.place(fogged, 4, 2)});
            small_show show(k.s, glsl);
            show.frame();
        }
    }
}

// ---- textures -------------------------------------------------------------------------

TEST_CASE("wrap modes repeat the texture or hold its edge, each unit by its own, on both axes")
{
    // Two by two texels over coordinates 0..2: at 1.25 a repeated one is back at the first.
    const std::vector<rgba> pixels = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {255, 255, 255}};
    mesh_content doubled = square(0, 0, 1, 1);
    for (float& c : doubled.sets[0])
        c *= 2;
    for (const bool glsl : {false, true}) {
        for (const int unit_number : {1, 2}) {
            for (const int wrap : {0, 1, 7}) {
                show_text s;
                const int picture_reference = s.texture(2, 2, pixels);
                std::string settings = replaces + color(1, 1, 1);
                if (unit_number == 2)
                    settings
                        += unit(1, {.texture = s.plain_texture({255, 255, 255}), .function = 2, .wrapmode = 1 - wrap});
                settings += unit(unit_number,
                    {.texture = picture_reference, .function = unit_number == 1 ? 2 : 1, .wrapmode = wrap});
                s.show(0, {.scene = s.scene({{.object = s.mesh(doubled), .material = s.material(settings)}})});
                small_show show(s, glsl);
                const picture p = show.frame();
                const bool held = wrap == 1; // numbers beyond the list repeat
                const int low = 119 - 75;    // coordinate 1.25 from the top
                check_pixel(p, 20, 110, red);
                check_pixel(p, 60, 110, green);
                check_pixel(p, 100, 110, held ? green : red);
                check_pixel(p, 20, low, held ? rgb{0, 0, 255} : red);
                check_pixel(p, 100, low, held ? white : red);
            }
        }
    }
}

TEST_CASE("generated, image, dynamic and cube textures are bound by what their reference says")
{
    for (const bool glsl : {false, true}) {
        show_text s;
        s.add(section_generated_images, "<l type=\"0\"><r>0.5</r><g>0.25</g><b>1</b></l>");
        s.add(section_texture_nodes,
            "<t name=\"color\" type=\"101\" texture_format=\"0\" texture_filter=\"0\" layer_id=\"0\"><i>0</i>"
            "<output>2</output><p>0</p><p>1</p></t>");
        s.add(section_texture_nodes,
            "<t name=\"out\" type=\"255\" texture_format=\"0\" texture_filter=\"0\"><i>1</i></t>");
        const int names[5] = {s.reference(texture_generated, 2), s.plain_texture({10, 20, 200}),
            s.reference(texture_dynamic, s.dynamic_texture(1, 24, {})), s.cube_texture(),
            s.reference(texture_generated, 1)}; // no output node: nothing
        const rgb expected[5] = {{127, 63, 255}, {10, 20, 200}, {}, {255, 255, 0}, {255, 255, 255}};
        for (int n = 0; n < 5; ++n) {
            if (n == 2)
                continue; // tests of its own
            show_text one = s;
            const int shown = one.material(
                replaces + color(1, 1, 1) + unit(1, {.texture = names[n], .function = 2, .cgenmode = n == 3 ? 2 : 0}));
            // Section 10 has kinds of objects and of textures in one; the mesh is named through it,
            // because a number that it has as an unused texture of kind 0 would mean that one.
            const int model = one.reference(texture_generated, one.mesh(square(-1, -1, 1, 1)));
            placed_object o = {.object = model, .material = shown, .place = {0, 0, -4, 0, 0, 0, 1, 1, 1}};
            o.place[4] = n == 3 ? 180 : 0; // the normal away from the camera: the reflection does not care
            one.show(0, {.scene = one.scene({o}), .camera = wide_camera()});
            CAPTURE(n);
            check_color(middle_of(one, glsl, 0, n == 4), n == 3 ? cube_face_colors[4] : expected[n]);
        }
    }
}

// ---- made coordinates -------------------------------------------------------------------

namespace {

// A small square that faces the camera at a place before the turned camera, in one material.
void show_at(show_text& s, int material, const vector& eye, const vector& rotation)
{
    const vector world = turned_y(turned_x(turned_z(eye, -rotation.z), -rotation.x), -rotation.y);
    clip c = {.scene = s.scene({{.object = s.mesh(square(-1, -1, 1, 1)),
                  .material = material,
                  .place = {world.x, world.y, world.z, 0, 0, 0, 0.15, 0.15, 1},
                  .facing = true}}),
        .camera = wide_camera()};
    c.camera[3] = rotation.x;
    c.camera[4] = rotation.y;
    c.camera[5] = rotation.z;
    s.show(0, c);
}

rgb pixel_of(const picture& p, const vector& eye)
{
    const spot at = spot_of(eye);
    return pixel_at(p, at.x, at.y);
}

// Where a mirror that faces the camera at `eye` looks to.
vector reflected(const vector& eye)
{
    const vector u = unit_length(eye);
    return {u.x, u.y, -u.z};
}

// A texture whose colours are its coordinates: red s, green t.
int coordinate_texture(show_text& s)
{
    std::vector<rgba> pixels;
    for (int t = 0; t < 16; ++t)
        for (int x = 0; x < 16; ++x)
            pixels.push_back({x * 17, t * 17, 0});
    return s.texture(16, 16, pixels, 1);
}

rgb color_of_coordinates(double s, double t)
{
    return to_rgb((16 * s - 0.5) / 15, (16 * t - 0.5) / 15, 0);
}

} // namespace

TEST_CASE("sphere maps look up half way between the reflection and the eye, turned with the camera on demand")
{
    const vector eyes[] = {{0, 0, -4}, {2, 1, -4}, {-3, 1.5, -4}, {1, -2.5, -4}, {-2, -2, -4}};
    for (const bool glsl : {false, true}) {
        for (const int unit_number : {1, 2}) {
            for (const int turning : {0, 1}) {
                for (const vector& rotation : {vector{0, 0, 0}, vector{20, 35, -10}}) {
                    for (const vector& eye : eyes) {
                        show_text s;
                        std::string settings = replaces + color(1, 1, 1);
                        if (unit_number == 2)
                            settings += unit(1, {.texture = s.plain_texture({255, 255, 255}), .function = 2});
                        const int material = s.material(settings
                            + unit(unit_number,
                                {.texture = coordinate_texture(s),
                                    .function = unit_number == 1 ? 2 : 1,
                                    .cgenmode = 1,
                                    .rotation = turning}));
                        show_at(s, material, eye, rotation);
                        const vector r = reflected(eye);
                        const vector h = unit_length({r.x, r.y, r.z + 1});
                        vector c = {h.x / 2, h.y / 2, 0};
                        if (turning == 1)
                            c = turned_z(c, -rotation.y);
                        small_show show(s, glsl);
                        CAPTURE(turning);
                        check_color(pixel_of(show.frame(), eye), color_of_coordinates(c.x + 0.5, c.y + 0.5), 5);
                    }
                }
            }
        }
    }
}

TEST_CASE("cube maps reflect the world whichever way the camera is turned about x and y")
{
    const vector eyes[] = {{0, 0, -4}, {1, 0.5, -4}, {-1, -0.5, -4}};
    const vector rotations[] = {{0, 0, 0}, {0, 90, 0}, {0, -90, 0}, {0, 180, 0}, {90, 0, 0}, {-90, 0, 0}, {40, 100, 0},
        {-75, 30, 0}, {0, 0, 90}, {80, 70, 90}};
    for (const bool glsl : {false, true}) {
        for (const vector& rotation : rotations) {
            for (const vector& eye : eyes) {
                show_text s;
                const int material = s.material(
                    replaces + color(1, 1, 1) + unit(1, {.texture = s.cube_texture(), .function = 2, .cgenmode = 2}));
                show_at(s, material, eye, rotation);
                // Turned back about x, then y. A camera's roll is not taken back (on purpose).
                const vector w = turned_y(turned_x(reflected(eye), -rotation.x), -rotation.y);
                const double parts[6] = {w.x, -w.x, w.y, -w.y, w.z, -w.z};
                const auto face = std::max_element(parts, parts + 6) - parts;
                small_show show(s, glsl);
                CAPTURE(rotation.x);
                CAPTURE(rotation.y);
                check_color(pixel_of(show.frame(), eye), cube_face_colors[face]);
            }
        }
    }
}

TEST_CASE("plain coordinates turn about the picture's middle on the fixed path, and stay on the shader path")
{
    const std::vector<rgba> pixels = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {255, 255, 255}};
    for (const bool glsl : {false, true}) {
        show_text s;
        const int material = s.material(
            replaces + color(1, 1, 1) + unit(1, {.texture = s.texture(2, 2, pixels), .function = 2, .rotation = 1}));
        clip c = {.scene = s.scene({{.object = s.mesh(square(0, 0, 1, 1)), .material = material, .facing = true}})};
        c.camera[4] = 90; // the object faces the camera: only its texture is turned
        s.show(0, c);
        small_show show(s, glsl);
        const picture p = show.frame();
        check_pixel(p, 40, 90, glsl ? red : rgb{0, 0, 255}); // (0.25, 0.25) reads (0.25, 0.75)
        check_pixel(p, 120, 90, glsl ? green : red);
    }
}

TEST_CASE("a program of its own that multiplies by TextureMatrix turns flat pictures and reflections as the fixed path")
{
    const std::string flat = "<vertex_shader>attribute vec4 Position; attribute vec2 TexCoordIn1; varying vec2 C; "
                             "uniform mat4 Projection; uniform mat4 Modelview; uniform mat4 TextureMatrix; "
                             "void main(void) { C = vec2(TextureMatrix * vec4(TexCoordIn1, 0.0, 1.0)); "
                             "gl_Position = Projection * Modelview * Position; }</vertex_shader>"
                             "<fragment_shader>varying vec2 C; uniform sampler2D Texture0; "
                             "void main(void) { gl_FragColor = texture2D(Texture0, C); }</fragment_shader>";
    const std::string reflecting
        = "<vertex_shader>attribute vec4 Position; attribute vec3 Normal; varying vec3 C; uniform mat4 Projection; "
          "uniform mat4 Modelview; uniform mat3 NormalMatrix; uniform mat4 TextureMatrix; void main(void) { "
          "vec4 mp = Modelview * Position; vec3 r = reflect(normalize(vec3(mp)), normalize(NormalMatrix * Normal)); "
          "C = vec3(TextureMatrix * vec4(r, 1.0)); gl_Position = Projection * mp; }</vertex_shader>"
          "<fragment_shader>varying vec3 C; uniform samplerCube Texture0; "
          "void main(void) { gl_FragColor = textureCube(Texture0, C); }</fragment_shader>";
    for (const bool cube : {false, true}) {
        picture seen_by[2];
        for (const bool glsl : {false, true}) {
            show_text s;
            const unit_text u = cube ? unit_text{.texture = s.cube_texture(), .function = 2, .cgenmode = 2}
                                     : unit_text{.texture = coordinate_texture(s), .function = 2, .rotation = 1};
            const int material = s.material(replaces + setting("enable_glsl", 1) + setting("normalization", 1)
                + color(1, 1, 1) + unit(1, u) + (cube ? reflecting : flat));
            const vector place = cube ? turned_y(turned_x({0, 0, -2.5}, -25), -40) : vector{0, 0, 0};
            clip c = {.scene = s.scene({{.object = s.mesh(cube ? sphere() : square(0, 0, 1, 1)),
                          .material = material,
                          .place = {place.x, place.y, place.z, 0, 0, 0, 1, 1, 1},
                          .facing = !cube}})};
            if (cube)
                c.camera = wide_camera();
            c.camera[3] = cube ? 25 : 0;
            c.camera[4] = 40;
            s.show(0, c);
            small_show show(s, glsl);
            seen_by[glsl] = show.frame();
        }
        CAPTURE(cube);
        CHECK(mean_difference(seen_by[0], seen_by[1]) < 1.0);
        CHECK(lit_pixels_in_row(seen_by[0], 60) > 40);
    }
}

TEST_CASE("a material without made coordinates follows one with them, and the other way round")
{
    for (const bool glsl : {false, true}) {
        show_text s;
        const int mesh = s.mesh(square(-1, -1, 1, 1));
        const int flat = s.material(replaces + color(1, 1, 1)
            + unit(1, {.texture = s.texture(1, 1, {{0, 255, 0}}), .function = 2, .rotation = 1}));
        const int cube = s.material(
            replaces + color(1, 1, 1) + unit(1, {.texture = s.cube_texture(), .function = 2, .cgenmode = 2}));
        const int ball = s.material(
            replaces + color(1, 1, 1) + unit(1, {.texture = coordinate_texture(s), .function = 2, .cgenmode = 1}));
        const int corners
            = s.material(replaces + color(1, 1, 1) + unit(1, {.texture = coordinate_texture(s), .function = 2}));
        const auto at = [&](int material, double x) {
            return placed_object{.object = mesh, .material = material, .place = {x, 0, -8, 0, 0, 0, 1, 1, 1}};
        };
        s.show(0,
            {.scene = s.scene({at(flat, -8), at(cube, -4), at(ball, 0), at(corners, 4), at(cube, 6.4)}),
                .camera = wide_camera()});
        small_show show(s, glsl);
        const picture p = show.frame();
        check_pixel(p, 20, 60, green);
        check_pixel(p, 50, 60, cube_face_colors[4]);
        check_color(center_of(p), color_of_coordinates(0.5, 0.5), 8);
        check_pixel(p, 110 + 4, 60 - 4, color_of_coordinates(0.5 + 4.5 / 15, 0.5 - 3.5 / 15), 4);
        check_pixel(p, 128, 60, cube_face_colors[4]);
    }
}
