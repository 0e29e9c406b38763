// Broken and odd input while drawing: nothing crashes, OpenGL reports no error, nothing is
// printed (small_show checks both in every frame), and what comes after is drawn as ever.
#include "small_show.h"

#include <GL/glew.h>

#include <doctest/doctest.h>

#include <limits>

namespace {

constexpr rgb black = {0, 0, 0};
constexpr rgb white = {255, 255, 255};
constexpr rgb green = {0, 255, 0};

// A green square in the window's top left corner, drawn in a layer after everything else.
// It uses two units, so that the third is switched off, whatever was left there.
void show_sign_of_life(show_text& s, int track)
{
    const int mesh = s.mesh(square(0, 0, 1, 1));
    const int one = s.plain_texture({255, 255, 255});
    const int material = s.material(setting("blend_function", 2) + color(0, 1, 0) + unit(1, {.texture = one})
        + unit(2, {.texture = one, .function = 1}));
    const int model = s.reference(texture_generated, mesh); // kind 0: a model
    s.show(
        track, {.scene = s.scene({{.object = model, .material = material, .place = {0, 0, 0, 0, 0, 0, 0.1, 0.1, 1}}})});
}

void check_sign_of_life(const picture& p)
{
    check_pixel(p, 5, 115, green);
}

const char* const odd_numbers[] = {"nan", "-nan", "inf", "-inf", "1e38", "-1e38", "1e-40", "1e300", "0", "-1"};

} // namespace

TEST_CASE("references to nothing draw nothing and disturb nothing")
{
    for (const bool glsl : {false, true}) {
        for (const bool vbo : {false, true}) {
            show_text s;
            const int mesh = s.mesh(square(0, 0, 1, 1));
            const int plain = s.plain_material(white);
            s.reference(texture_image, 55);
            s.reference(texture_dynamic, 55);
            s.reference(texture_cube, 55);
            s.reference(texture_generated, 55);
            s.reference(static_cast<texture_kind>(9), 1);
            std::vector<placed_object> objects;
            for (int texture = 1; texture <= 6; ++texture) { // dangling textures, lights, fog and functions
                const int material = s.material(setting("blend_function", 2)
                    + color(dynamic(99), dynamic(0), dynamic(-4), dynamic(5000)) + setting("light1", 44)
                    + setting("light2", 45) + setting("fogtype", 1) + setting("fogcolor", 46)
                    + setting("fogstart", dynamic(99)) + setting("fogend", dynamic(99))
                    + setting("linewidth", dynamic(99)) + unit(1, {.texture = texture == 6 ? 77 : texture}));
                objects.push_back({.object = mesh, .material = material, .place = {0.5, 0.5, 0, 0, 0, 0, 0.1, 0.1, 1}});
            }
            objects.push_back({.object = 88, .material = plain});
            objects.push_back({.object = mesh, .material = 88});
            objects.push_back({.type = object_genmesh, .object = 88, .material = plain});
            objects.push_back({.type = object_text, .font = 88, .text = "a"});
            objects.push_back({.type = 7, .object = mesh, .material = plain});
            objects.push_back({.type = -1, .object = mesh, .material = plain});
            objects.push_back({.object = -5, .material = -5});
            placed_object dangling = {.object = mesh, .material = plain, .visibility = 99};
            for (number& n : dangling.place)
                n = dynamic(99); // 1.0 each: out of sight
            dangling.manipulators = manipulator(3, std::vector<number>(9, dynamic(99)), 99)
                + manipulator(0, std::vector<number>(12, dynamic(99)))
                + manipulator(1, std::vector<number>(10, dynamic(99)));
            objects.push_back(dangling);
            clip c = {.scene = s.scene(objects), .mode = 1, .rtex = 99, .clearcolor = 99};
            s.show(0, c);
            for (number& n : c.camera)
                n = dynamic(99);
            s.show(1, c);
            s.show(2, {.scene = 99, .mode = 5, .rtex = 98});
            s.show(3, {.scene = -1, .mode = 17});
            show_sign_of_life(s, 4);
            small_show show(s, {.glsl = glsl, .vbo = vbo, .dangling = true});
            for (const uint32_t time : {0u, 10u, 11u})
                check_sign_of_life(show.frame(time));
        }
    }
}

TEST_CASE("numbers that are none: in cameras")
{
    for (const bool glsl : {false, true}) {
        for (const char* odd : odd_numbers) {
            for (const bool moving : {false, true}) {
                for (size_t index = 0; index < 8; ++index) {
                    show_text s;
                    clip c = {.scene = s.full_scene(s.plain_material(white)), .camera = wide_camera()};
                    c.camera[index] = moving ? dynamic(s.constant(written(odd))) : written(odd);
                    s.show(0, c);
                    s.show(1, {.scene = 0, .clearcolor = s.values({0, 0, 0, written(odd), written(odd), 0, 0, 0, 0})});
                    show_sign_of_life(s, 2);
                    small_show show(s, glsl);
                    for (const uint32_t time : {0u, 1u})
                        check_sign_of_life(show.frame(time));
                }
            }
        }
    }
}

TEST_CASE("numbers that are none: in placements and visibility")
{
    for (const bool glsl : {false, true}) {
        for (const char* odd : odd_numbers) {
            show_text s;
            const int mesh = s.mesh(square(0, 0, 1, 1));
            const int material = s.plain_material(white);
            const int function = s.constant(written(odd));
            std::vector<placed_object> objects;
            for (size_t index = 0; index < 9; ++index) {
                placed_object o = {.object = mesh,
                    .material = material,
                    .place = {0.5, 0.5, 0, 0, 0, 0, 0.1, 0.1, 1},
                    .facing = index % 2 == 1};
                o.place[index] = index % 2 == 0 ? written(odd) : dynamic(function);
                objects.push_back(o);
            }
            objects.push_back({.object = mesh,
                .material = material,
                .place = {0.5, 0.5, 0, 0, 0, 0, 0.1, 0.1, 1},
                .visibility = function,
                .offset = written(odd)});
            s.show(0, {.scene = s.scene(objects)});
            show_sign_of_life(s, 1);
            small_show show(s, glsl);
            for (const uint32_t time : {0u, 1u})
                check_sign_of_life(show.frame(time));
        }
    }
}

TEST_CASE("numbers that are none: in materials, lights and fog")
{
    for (const bool glsl : {false, true}) {
        for (const char* odd : odd_numbers) {
            for (const bool moving : {false, true}) {
                show_text s;
                const number n = moving ? dynamic(s.constant(written(odd))) : written(odd);
                const int light = s.values({n, n, n, n, n, n, n, n, n});
                const int mesh = s.mesh(square(-1, -1, 1, 1));
                const std::string fog = setting("fogtype", 2) + setting("fogstart", n) + setting("fogend", n)
                    + setting("fogcolor", light);
                const std::string lights
                    = setting("light1", light) + setting("light2", light) + setting("normalization", 1);
                std::vector<placed_object> objects;
                for (const std::string& settings : {color(n, n, n, n), color(1, 1, 1) + lights, color(1, 1, 1) + fog,
                         color(1, 1, 1) + setting("wireframe", 1) + setting("linewidth", n)})
                    objects.push_back({.object = mesh,
                        .material = s.material(setting("blend_function", 2) + settings),
                        .place = {0, 0, -3, 0, 0, 0, 0.5, 0.5, 1}});
                s.show(0, {.scene = s.scene(objects), .camera = wide_camera()});
                show_sign_of_life(s, 1);
                small_show show(s, glsl);
                for (const uint32_t time : {0u, 1u})
                    check_sign_of_life(show.frame(time));
            }
        }
    }
}

TEST_CASE("numbers that are none: in manipulators, effects and moving pictures")
{
    for (const bool glsl : {false, true}) {
        for (const bool vbo : {false, true}) {
            for (const char* odd : odd_numbers) {
                show_text s;
                const int function = s.constant(written(odd));
                const int mesh = s.mesh(square(0, 0, 0.1f, 0.1f));
                const int material = s.plain_material(white);
                std::vector<placed_object> objects;
                const auto add = [&](const std::string& manipulators) {
                    objects.push_back({.object = mesh,
                        .material = material,
                        .place = {0.5, 0.5, 0, 0, 0, 0, 1, 1, 1},
                        .manipulators = manipulators});
                };
                const number n = dynamic(function);
                add(manipulator(1, {3, n, n, n, n, n, n, n, n, n}));
                add(manipulator(0, {2, 2, 2, n, n, n, n, n, n, n, n, n}));
                add(manipulator(2, {n, 0.1, 0.1}) + manipulator(2, {0, n, 0}) + manipulator(2, {0, 0.1, n}));
                add(manipulator(3, {n, n, n, n, n, n, n, n, n}, mesh));
                for (int kind = 0; kind < manipulator_kind_count; ++kind)
                    add(manipulator(kind, std::vector<number>(max_manipulator_params, n), mesh));
                for (int kind = 0; kind < static_cast<int>(mesh_effect_kind_count); ++kind)
                    objects.push_back({.type = object_genmesh,
                        .object = s.effect(kind, {function, function}),
                        .material = material,
                        .place = {0.5, 0.5, 0, 0, 0, 0, 0.01, 0.01, 0.01}});
                for (int kind = 0; kind < static_cast<int>(effect_2d_kind_count); ++kind)
                    objects.push_back({.object = mesh,
                        .material = s.material(setting("blend_function", 2) + color(1, 1, 1)
                            + unit(1,
                                {.texture = s.reference(
                                     texture_dynamic, s.dynamic_texture(kind, 24, {function, function}))})),
                        .place = {0.5, 0.5, 0, 0, 0, 0, 1, 1, 1}});
                s.show(0, {.scene = s.scene(objects)});
                show_sign_of_life(s, 1);
                small_show show(s, {.glsl = glsl, .vbo = vbo, .pbo = vbo});
                for (const uint32_t time : {0u, 1u, 2u})
                    check_sign_of_life(show.frame(time));
            }
        }
    }
}

TEST_CASE("numbers that are none: in meshes and fonts")
{
    for (const bool glsl : {false, true}) {
        for (const bool vbo : {false, true}) {
            show_text s;
            mesh_content broken = sphere();
            const float odd[] = {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                -std::numeric_limits<float>::infinity(), 1e38f, -1e38f, 0.0f};
            for (size_t i = 0; i < broken.positions.size(); ++i) {
                broken.positions[i] = i % 7 == 0 ? odd[i % 6] : broken.positions[i];
                broken.normals[i] = i % 5 == 0 ? odd[i % 6] : broken.normals[i];
            }
            for (size_t i = 0; i < broken.sets[0].size(); i += 3)
                broken.sets[0][i] = odd[i % 6];
            const int light = s.light(0.1, 0.9, 1, 1, 1);
            const int mesh = s.mesh(broken);
            const int checked = s.texture(2, 2, {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {9, 9, 9}}, 2);
            const int material = s.material(setting("blend_function", 2) + setting("light1", light) + color(1, 1, 1)
                + unit(1, {.texture = checked}) + unit(2, {.texture = checked, .cgenmode = 1}));
            std::string font = "<font>";
            for (int g = 0; g < 87; ++g)
                font += "<g model=\"" + std::to_string(mesh) + "\" material=\"" + std::to_string(material)
                    + "\" bitmap=\"7\" offset=\"nan\" width=\"inf\"/>";
            s.add(section_fonts, font + "</font>");
            const placed_object o = {.object = mesh, .material = material, .place = {0, 0, -3, 0, 0, 0, 1, 1, 1}};
            placed_object rippled = o;
            rippled.manipulators = manipulator(2, {0, 0.1, 1});
            mesh_content few = lump(0, 0, 0, 1);
            for (size_t i = 0; i < 6; ++i)
                few.positions[3 * i] = odd[i];
            placed_object placed = o;
            placed.manipulators = manipulator(3, {0, 0, 0, 0, 0, 0, 1, 1, 1}, s.mesh(few));
            s.show(0,
                {.scene = s.scene({o, rippled, placed, {.type = object_text, .font = 1, .text = "abc"}}),
                    .camera = wide_camera()});
            show_sign_of_life(s, 1);
            small_show show(s, {.glsl = glsl, .vbo = vbo});
            for (const uint32_t time : {0u, 1u, 2u})
                check_sign_of_life(show.frame(time));
        }
    }
}

TEST_CASE("meshes without vertices, without triangles, and of points, as models, glyphs and models to place on")
{
    for (const bool glsl : {false, true}) {
        for (const bool vbo : {false, true}) {
            for (const int wireframe : {0, 1}) {
                show_text s;
                mesh_content no_triangles = square(0, 0, 1, 1);
                no_triangles.indices.clear();
                mesh_content points = square(0, 0, 1, 1);
                points.indices = {0, 0, 0, 3, 3, 3};
                const int empty = s.mesh({{}, {}, {{}}, {}});
                const int meshes[4] = {empty, s.mesh(no_triangles), s.mesh(points), s.mesh(square(0, 0, 1, 1))};
                const int material = s.material(setting("blend_function", 2) + setting("wireframe", wireframe)
                    + setting("linewidth", number(1)) + color(1, 1, 1)
                    + unit(1, {.texture = s.plain_texture({1, 2, 3})}));
                std::string font = "<font>";
                for (int g = 0; g < 87; ++g)
                    font += "<g model=\"" + std::to_string(meshes[g % 3]) + "\" material=\"" + std::to_string(material)
                        + "\" bitmap=\"0\" offset=\"0\" width=\"0\"/>";
                s.add(section_fonts, font + "</font>");
                std::vector<placed_object> objects = {{.type = object_text, .font = 1, .text = "abcABC"}};
                for (const int mesh : meshes) {
                    placed_object o
                        = {.object = mesh, .material = material, .place = {0.5, 0.5, 0, 0, 0, 0, 0.1, 0.1, 1}};
                    objects.push_back(o);
                    o.manipulators = manipulator(2, {0, 0.1, 1});
                    objects.push_back(o);
                    for (const int model : {empty, meshes[1], meshes[2]}) {
                        o.manipulators = manipulator(3, {0, 0, 0, 0, 0, 0, 1, 1, 1}, model);
                        objects.push_back(o);
                    }
                }
                s.show(0, {.scene = s.scene(objects)});
                show_sign_of_life(s, 1);
                small_show show(s, {.glsl = glsl, .vbo = vbo});
                for (const uint32_t time : {0u, 1u})
                    check_sign_of_life(show.frame(time));
            }
        }
    }
}

TEST_CASE("a placer on an empty model leaves nothing to draw")
{
    for (const bool glsl : {false, true}) {
        show_text s;
        const int empty = s.mesh({{}, {}, {{}}, {}});
        placed_object o = {.object = s.mesh(square(0, 0, 1, 1)), .material = s.plain_material(white)};
        o.manipulators = manipulator(3, {0, 0, 0, 0, 0, 0, 1, 1, 1}, empty);
        s.show(0, {.scene = s.scene({o})});
        small_show show(s, glsl);
        check_color(center_of(show.frame()), black);
    }
}

TEST_CASE("documents of empty sections, scenes without objects, tracks without layers")
{
    for (const bool glsl : {false, true}) {
        show_text nothing;
        nothing.tracks[0] = " ";
        small_show empty(nothing, glsl);
        for (const uint32_t time : {0u, 100u, 25599u, 25600u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
            empty.frame(time);
            CHECK(empty.drawn == 0);
        }
        show_text s;
        s.show(0, {.scene = s.scene({}), .length = 100});
        s.show(5, {.scene = s.scene({{.type = object_text}, {}})});
        s.tracks[31] = " ";
        small_show show(s, glsl);
        show.frame(50);
        CHECK(show.drawn == 2);
        for (const uint32_t time : {101u, 25600u, 0xFFFFFFFFu})
            show.frame(time);
        CHECK(show.drawn == 0);
    }
}

TEST_CASE("programs of their own that do not compile or link draw nothing and disturb nothing")
{
    const struct {
        const char* vertex;
        const char* fragment;
        bool draws; // on the shader path
    } table[] = {
        {"this is no shader", "neither is this", false},
        {"attribute vec4 Position; void main(void) { gl_Position = Position; }", "void main(void) { oops }", false},
        {"attribute vec4 Position; varying vec3 a; void main(void) { a = vec3(1.0); gl_Position = Position; }",
            "varying vec2 a; void main(void) { gl_FragColor = vec4(a, 1.0, 1.0); }", false},
        {"void f(void); void main(void) { f(); gl_Position = vec4(0.0); }",
            "void main(void) { gl_FragColor = vec4(1.0); }", false},
        {"attribute vec4 Position; void main(void) { gl_Position = Position; }",
            "void main(void) { gl_FragColor = vec4(1.0); }", true},
    };
    for (const bool glsl : {false, true}) {
        for (const bool vbo : {false, true}) {
            for (const auto& row : table) {
                show_text s;
                std::string uniforms = "<glsl_uniforms";
                for (int u = 1; u <= 24; ++u)
                    uniforms += " u" + std::to_string(u) + "=\"" + std::to_string(u * 3) + "\"";
                const int own = s.material(setting("enable_glsl", 1) + color(1, 1, 1) + setting("blend_function", 2)
                    + setting("light1", s.light(1, 1, 0, 0, 9))
                    + unit(1, {.texture = s.plain_texture({255, 255, 255}), .function = 2, .rotation = 1}) + uniforms
                    + "/><vertex_shader>" + row.vertex + "</vertex_shader><fragment_shader>" + row.fragment
                    + "</fragment_shader>");
                const int mesh = s.mesh(square(0, 0, 1, 1));
                s.show(0,
                    {.scene = s.scene({{.object = mesh, .material = own},
                         {.object = mesh, .material = own, .manipulators = manipulator(2, {0, 0, 0})}})});
                show_sign_of_life(s, 1);
                small_show show(s, {.glsl = glsl, .vbo = vbo, .dangling = true});
                for (const uint32_t time : {0u, 1u}) {
                    const picture p = show.frame(time);
                    check_sign_of_life(p);
                    check_pixel(p, 120, 90, glsl && !row.draws ? black : white);
                }
            }
        }
    }
}

TEST_CASE("ways to make coordinates that do not suit the picture do no harm")
{
    // A program can not read a flat picture by a cube's coordinates: it does not link.
    for (const bool glsl : {false, true}) {
        show_text s;
        const int cube = s.cube_texture();
        const int flat = s.plain_texture({255, 255, 255});
        const int mesh = s.mesh(square(0, 0, 1, 1));
        std::vector<placed_object> objects;
        for (const int texture : {cube, flat})
            for (const int cgenmode : {0, 1, 2, 3, 255, -1})
                for (const int rotation : {0, 1})
                    objects.push_back({.object = mesh,
                        .material = s.material(color(1, 1, 1)
                            + unit(1, {.texture = texture, .cgenmode = cgenmode, .rotation = rotation})
                            + unit(2, {.texture = flat, .cgenmode = cgenmode})
                            + unit(3, {.texture = cube, .cgenmode = cgenmode})),
                        .place = {0.5, 0.5, 0, 0, 0, 0, 0.1, 0.1, 1}});
        s.show(0, {.scene = s.scene(objects)});
        show_sign_of_life(s, 1);
        small_show show(s, glsl);
        for (const uint32_t time : {0u, 1u})
            check_sign_of_life(show.frame(time));
    }
}

TEST_CASE("a picture that is a target and a texture in one layer, and targets of 1 x 1 or no screen at all")
{
    for (const bool glsl : {false, true}) {
        for (const bool npot : {false, true}) {
            show_text s;
            const int target = s.black_image(1, 1);
            const int shown = s.material(setting("blend_function", 2) + color(1, 1, 1)
                + unit(1, {.texture = s.reference(texture_image, target)}));
            for (int mode = 0; mode < 11; ++mode)
                s.show(mode, {.scene = s.full_scene(shown), .mode = mode == 10 ? -1 : mode, .rtex = target});
            show_sign_of_life(s, 11);
            small_show show(s, {.glsl = glsl, .npot = npot});
            check_sign_of_life(show.frame());
            show.view = {0, 0, 0};
            show.frame();
            show.view = {1, 1, std::numeric_limits<float>::quiet_NaN()};
            show.frame();
            show.view = {window_width, window_height, 4.0f / 3.0f};
            check_sign_of_life(show.frame());
        }
    }
}
