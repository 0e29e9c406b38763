// What the two paths draw differently on purpose, where no other test of materials has it
// already; the list is docs/rendering-paths.md.
#include "small_show.h"
#include "vectors.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr rgb black = {0, 0, 0};
const std::string replaces = setting("blend_function", 2);

// A small square at `eye` before a camera turned about y, which faces it; the pixel there.
rgb color_at(show_text& s, int material, const vector& eye, double turn, bool glsl)
{
    const vector world = turned_y(eye, -turn);
    clip c = {.scene = s.scene({{.object = s.mesh(square(-1, -1, 1, 1)),
                  .material = material,
                  .place = {world.x, world.y, world.z, 0, 0, 0, 0.15, 0.15, 1},
                  .facing = true}}),
        .camera = wide_camera()};
    c.camera[4] = turn;
    s.show(0, c);
    small_show show(s, glsl);
    const spot at = spot_of(eye);
    return pixel_at(show.frame(), at.x, at.y);
}

} // namespace

TEST_CASE("culling takes the lines of turned triangles away on the fixed path only")
{
    for (const bool glsl : {false, true}) {
        for (const bool turned : {false, true}) {
            show_text s;
            const int wire = s.material(replaces + setting("wireframe", 1) + setting("linewidth", number(3))
                + setting("backface_culling", 1) + color(1, 1, 1));
            s.show(0,
                {.scene = s.scene({{.object = s.mesh(square(-1, -1, 1, 1)),
                     .material = wire,
                     .place = {0, 0, -2, 0, turned ? 180 : 0, 0, 1, 1, 1}}}),
                    .camera = wide_camera()});
            small_show show(s, glsl);
            const rgb edge = pixel_at(show.frame(), 50, 75); // the left edge
            CHECK(edge.red == (turned && !glsl ? 0 : 255));
        }
    }
}

TEST_CASE("units have a texture matrix each on the fixed path, a program has the last one")
{
    std::vector<rgba> pixels;
    for (int t = 0; t < 16; ++t)
        for (int x = 0; x < 16; ++x)
            pixels.push_back({x * 17, t * 17, 0});
    const vector eye = {2, 1.5, -3};
    const vector r = unit_length({eye.x, eye.y, eye.z});
    const vector h = unit_length({r.x, r.y, 1 - r.z});
    const double turn = 40;
    for (const bool glsl : {false, true}) {
        show_text s;
        const int material = s.material(replaces + color(1, 1, 1, 0)
            + unit(1, {.texture = s.texture(16, 16, pixels, 1), .function = 2, .cgenmode = 1, .rotation = 1})
            + unit(2, {.texture = s.cube_texture(), .function = 4, .cgenmode = 2})); // mixed in by alpha: not at all
        vector c = turned_z({h.x / 2, h.y / 2, 0}, -turn);
        if (glsl) // the reflection's matrix, seen from above: x gets shorter
            c = {h.x / 2 * std::cos(turn * 3.14159265358979 / 180), h.y / 2, 0};
        check_color(color_at(s, material, eye, turn, glsl),
            to_rgb((16 * (c.x + 0.5) - 0.5) / 15, (16 * (c.y + 0.5) - 0.5) / 15, 0), 5);
    }
}

TEST_CASE("a turned cube map turns about the middle of a picture on the fixed path, about its own in a program")
{
    const vector eye = {2, -1.2, -4};
    const vector u = unit_length(eye);
    for (const bool glsl : {false, true}) {
        show_text s;
        const int material = s.material(replaces + color(1, 1, 1)
            + unit(1, {.texture = s.cube_texture(), .function = 2, .cgenmode = 2, .rotation = 1}));
        // By 180 degrees, s and t become 1 - s and 1 - t, or -s and -t.
        const double middle = glsl ? 0 : 1;
        const double x = middle - u.x;
        const double y = middle - u.y;
        const double z = -u.z;
        const double parts[6] = {x, -x, y, -y, z, -z};
        const auto face = std::max_element(parts, parts + 6) - parts;
        CHECK(face == (glsl ? 4 : 2));
        check_color(color_at(s, material, eye, 180, glsl), cube_face_colors[face]);
    }
}

TEST_CASE("colours beyond white are cut before the first unit on the fixed path, at the end in a program")
{
    for (const bool glsl : {false, true}) {
        show_text s;
        const int material
            = s.material(replaces + color(4, 2, 0.5) + unit(1, {.texture = s.plain_texture({51, 51, 102})}));
        s.show(0, {.scene = s.full_scene(material)});
        small_show show(s, glsl);
        check_color(center_of(show.frame()), glsl ? to_rgb(0.8, 0.4, 0.2) : to_rgb(0.2, 0.2, 0.2));
    }
}

TEST_CASE("a generated texture that lacks its levels is left out on the fixed path, and black in a program")
{
    for (const bool glsl : {false, true}) {
        for (const int filter : {1, 2, 3, 255}) {
            for (const int function : {0, 2}) { // "Multiply color", "Replace"
                show_text s;
                s.add(section_generated_images, "<g type=\"0\"><r>1</r><g>0.4</g><b>0.2</b></g>");
                s.add(section_texture_nodes,
                    "<t name=\"color\" type=\"101\" texture_format=\"0\" texture_filter=\"0\" layer_id=\"0\"><i>0</i>"
                    "<output>2</output><a>0</a><b>1</b></t>");
                s.add(section_texture_nodes,
                    "<t name=\"out\" type=\"255\" texture_format=\"0\" texture_filter=\"" + std::to_string(filter)
                        + "\"><i>1</i></t>");
                const int picture = s.reference(texture_generated, 2);
                const int material
                    = s.material(replaces + color(0.5, 0.5, 0.5) + unit(1, {.texture = picture, .function = function}));
                s.show(0, {.scene = s.full_scene(material)});
                small_show show(s, glsl);
                const double shade = function == 0 ? 0.5 : 1;
                const rgb shown = to_rgb(shade, shade * 0.4, shade * 0.2);
                const rgb without = glsl ? black : to_rgb(0.5, 0.5, 0.5);
                CAPTURE(filter);
                check_color(center_of(show.frame()), filter <= 2 ? shown : without);
            }
        }
    }
}

TEST_CASE("a program draws nothing with a picture that its coordinates do not suit, the fixed path does")
{
    for (const bool glsl : {false, true}) {
        show_text s;
        const int material = s.material(replaces + color(1, 1, 1)
            + unit(1, {.texture = s.plain_texture({255, 255, 255}), .function = 2, .cgenmode = 2}));
        s.show(0, {.scene = s.full_scene(material)});
        small_show show(s, glsl);
        check_color(center_of(show.frame()), glsl ? black : rgb{255, 255, 255});
    }
}
