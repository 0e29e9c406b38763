// The same show drawn in two ways gives the same picture: with vertex buffers and without,
// by the fixed pipeline and by programs. What the two paths show differently on purpose is
// told in docs/rendering-paths.md, and tested by itself elsewhere.
#include "small_show.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cstdlib>

// ---- buffers ----------------------------------------------------------------------------

namespace {

mesh_content square_of_three_sets()
{
    mesh_content m = square(-1, -1, 1, 1);
    m.sets.push_back({0.25f, 0, 1.25f, 0, 1.25f, 1, 0.25f, 1});
    m.sets.push_back({0, 0, 2, 0, 2, 2, 0, 2});
    return m;
}

// One object of every sort, in a lit and textured material.
show_text show_of_everything()
{
    show_text s;
    const std::vector<rgba> four = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {250, 250, 50}};
    const int ball = s.mesh(sphere());
    const int flat = s.mesh(square_of_three_sets());
    const int checked = s.texture(2, 2, four);
    const int light = s.light(0.2, 0.8, 3, 4, 5);
    const std::string base = setting("blend_function", 2) + setting("depth_test", 1) + color(1, 0.9, 0.8);
    const int lit
        = s.material(base + setting("light1", light) + setting("normalization", 1) + unit(1, {.texture = checked}));
    const int wire = s.material(base + setting("wireframe", 1) + setting("linewidth", number(1)));
    const int three = s.material(base + unit(1, {.texture = checked}) + unit(2, {.texture = checked, .function = 1})
        + unit(3, {.texture = checked, .function = 0}));
    const int water = s.effect(0, {s.linear(1)});
    const int swirl = s.effect(2, {s.linear(0.001, 0.01), 0});
    const int swarm = s.effect(3, {s.linear(1)});
    std::string font = "<font>";
    for (int g = 0; g < 87; ++g)
        font += "<g model=\"" + std::to_string(g == 86 ? 0 : flat) + "\" material=\""
            + std::to_string(g % 2 ? wire : three) + "\" bitmap=\"0\" offset=\"0\" width=\"2.5\"/>";
    const int letters = s.add(section_fonts, font + "</font>");
    const std::string rippled = manipulator(2, {dynamic(s.linear(0.02)), 0.05, 4});
    const std::string row = manipulator(1, {3, 2.2, 0.1, 0, 20, 0, 0, -0.2, -0.2, -0.2});
    s.show(0,
        {.scene = s.scene({
             {.object = ball, .material = lit, .place = {-2, 1, -6, 20, 0, 0, 1, 1, 1}, .manipulators = row},
             {.object = ball, .material = wire, .place = {2, -1.5, -6, 0, 20, 0, 1, 1, 1}},
             {.object = flat, .material = three, .place = {-3, -1.5, -6, 0, 30, 0, 1, 1, 1}},
             {.object = ball, .material = lit, .place = {0, -1.5, -6, 0, 0, 0, 1, 1, 1}, .manipulators = rippled + row},
             {.object = flat, .material = lit, .place = {3, 2.5, -6, 0, 0, 0, 0.5, 0.5, 1}, .manipulators = rippled},
             {.type = object_genmesh, .object = water, .material = lit, .place = {-5, -3, -12, 0, 0, 0, 0.3, 0.3, 0.3}},
             {.type = object_genmesh, .object = water, .place = {-5, 3, -12, 0, 0, 0, 0.3, 0.3, 0.3}},
             {.type = object_genmesh,
                 .object = swirl,
                 .material = wire,
                 .place = {0, 0, -9, 0, 0, 0, 0.01, 0.01, 0.01}},
             {.type = object_genmesh, .object = swarm, .material = lit, .place = {0, 0, -9, 0, 0, 0, 1, 1, 1}},
             {.object = flat,
                 .material = lit,
                 .place = {0, 0, -14, 0, 0, 0, 0.1, 0.1, 0.1},
                 .manipulators = manipulator(3, {0, 0, 0, 0, 0, 0, 6, 6, 6}, ball)},
             {.type = object_text,
                 .font = letters,
                 .text = "Ab c",
                 .place = {-3, 2.5, -7, 0, 0, 0, 0.4, 0.4, 0.4},
                 .manipulators = row},
         }),
            .camera = wide_camera()});
    return s;
}

} // namespace

TEST_CASE("vertex buffers change no pixel of any sort of object, over several frames")
{
    const show_text s = show_of_everything();
    for (const bool glsl : {false, true}) {
        std::vector<picture> seen[2];
        for (const bool vbo : {false, true}) {
            std::srand(1); // the swarm and the drops
            small_show show(s, {.glsl = glsl, .vbo = vbo});
            for (const uint32_t time : {0u, 1u, 2u, 3u, 10u, 50u})
                seen[vbo].push_back(show.frame(time));
            CHECK((table_get(show.d.mesh_table, 1)->arrays.position_buffer != 0) == vbo);
        }
        for (size_t n = 0; n < seen[0].size(); ++n)
            CHECK(greatest_difference(seen[0][n], seen[1][n]) == 0);
        CHECK(greatest_difference(seen[0][0], seen[0].back()) > 50);
    }
}

// ---- paths ------------------------------------------------------------------------------

namespace {

// True where neither picture has a step of colour within two pixels.
bool away_from_edges(const picture& a, const picture& b, int x, int y)
{
    for (const picture* p : {&a, &b}) {
        const rgb here = pixel_at(*p, x, y);
        for (int dy = -2; dy <= 2; ++dy)
            for (int dx = -2; dx <= 2; ++dx) {
                const int at_x = std::clamp(x + dx, 0, window_width - 1);
                const int at_y = std::clamp(y + dy, 0, window_height - 1);
                if (!is_near(here, pixel_at(*p, at_x, at_y), 30))
                    return false;
            }
    }
    return true;
}

double mean_of_channel(const picture& a, const picture& b, size_t channel)
{
    double sum = 0;
    for (size_t i = channel; i < a.bytes.size(); i += 3)
        sum += std::abs(a.bytes[i] - b.bytes[i]);
    return sum * 3 / static_cast<double>(a.bytes.size());
}

void check_same_picture(const picture& fixed, const picture& shader)
{
    for (size_t channel = 0; channel < 3; ++channel)
        CHECK(mean_of_channel(fixed, shader, channel) < 1.0);
    int compared = 0;
    int off = 0;
    int lit = 0;
    for (int y = 0; y < window_height; ++y) {
        for (int x = 0; x < window_width; ++x) {
            lit += !is_near(pixel_at(fixed, x, y), {20, 40, 60}, 3);
            if (!away_from_edges(fixed, shader, x, y))
                continue;
            ++compared;
            off += !is_near(pixel_at(fixed, x, y), pixel_at(shader, x, y), 8);
        }
    }
    CHECK(off == 0);
    CHECK(lit > 300); // there is something to compare
    CHECK(compared > window_width * window_height / 3);
}

// What a material of the table may name.
struct ingredients {
    int checked;
    int soft;
    int alpha;
    int cube;
    int moving;
    int generated;
    int light_one;
    int light_two;
    int light_moving;
    int ramp;
};

struct look {
    const char* name;
    std::string settings;
};

std::vector<look> looks_of(const ingredients& i)
{
    const std::string lit = setting("light1", i.light_one) + setting("normalization", 1);
    const std::string both = lit + setting("light2", i.light_two);
    const std::string tint = color(0.9, 0.7, 0.5, 0.6);
    const auto one = [](int texture, int function = 0) { return unit(1, {.texture = texture, .function = function}); };
    const auto two = [](int texture, int function) { return unit(2, {.texture = texture, .function = function}); };
    return {
        {"plain", tint},
        {"moving colour", color(dynamic(i.ramp), 0.5, dynamic(i.ramp), 1)},
        {"one light", tint + setting("light1", i.light_one)},
        {"one light, normalised", tint + lit},
        {"two lights", tint + both},
        {"two lights, not normalised", tint + setting("light1", i.light_one) + setting("light2", i.light_two)},
        {"moving light", tint + setting("light1", i.light_moving)},
        {"lit beyond white", color(1, 1, 1) + both + setting("light2", i.light_one)},
        {"nearest texture", tint + one(i.checked)},
        {"soft texture", tint + one(i.soft)},
        {"texture's own alpha", tint + one(i.alpha, 1)},
        {"texture alone", tint + one(i.soft, 2)},
        {"texture added", color(0.3, 0.2, 0.4, 0.2) + one(i.soft, 3)},
        {"held at its edge", tint + unit(1, {.texture = i.soft, .wrapmode = 1})},
        {"generated texture", tint + one(i.generated)},
        {"moving texture", tint + one(i.moving, 2)},
        {"lit texture", tint + both + one(i.soft)},
        {"sphere map", tint + setting("normalization", 1) + unit(1, {.texture = i.soft, .cgenmode = 1})},
        {"sphere map, turned",
            tint + setting("normalization", 1) + unit(1, {.texture = i.soft, .cgenmode = 1, .rotation = 1})},
        {"cube map", tint + setting("normalization", 1) + unit(1, {.texture = i.cube, .function = 2, .cgenmode = 2})},
        {"cube map, lit", tint + both + unit(1, {.texture = i.cube, .cgenmode = 2})},
        {"two textures multiplied", tint + one(i.soft) + two(i.soft, 1)},
        {"two textures mixed by colour", tint + one(i.soft, 2) + two(i.checked, 3)},
        {"two textures mixed by alpha", tint + one(i.soft, 2) + two(i.checked, 4)},
        {"two textures, a product of vectors", tint + one(i.soft, 2) + two(i.alpha, 2)},
        {"second one added", color(0.3, 0.2, 0.4) + one(i.soft) + two(i.alpha, 5)},
        {"second one is a sphere map",
            color(0.4, 0.4, 0.4) + setting("normalization", 1) + one(i.soft)
                + unit(2, {.texture = i.soft, .function = 1, .cgenmode = 1})},
        {"second one is a cube map",
            color(0.5, 0.5, 0.5) + setting("normalization", 1) + one(i.soft)
                + unit(2, {.texture = i.cube, .function = 4, .cgenmode = 2})},
        {"only what faces the camera", tint + setting("backface_culling", 1) + both},
        {"without a depth test", tint + setting("depth_test", 0) + lit},
    };
}

show_text show_of_look(size_t number, int blend, std::string* name)
{
    show_text s;
    ingredients i;
    const std::vector<rgba> four = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {250, 250, 50}};
    std::vector<rgba> gradient;
    for (int y = 0; y < 32; ++y)
        for (int x = 0; x < 32; ++x)
            gradient.push_back({std::abs(x - 16) * 15, std::abs(y - 16) * 15, 80 + 5 * std::abs(x - y), 255});
    i.checked = s.texture(2, 2, four);
    i.soft = s.texture(32, 32, gradient, 1);
    i.alpha = s.texture(2, 2, {{200, 100, 50, 40}, {200, 100, 50, 250}, {100, 200, 50, 120}, {50, 100, 200, 180}}, 1);
    i.cube = s.cube_texture();
    i.ramp = s.linear(0.01);
    i.moving = s.reference(texture_dynamic, s.dynamic_texture(1, 24, {i.ramp}));
    s.add(section_generated_images, "<l type=\"1\"><r>1</r><g>0.5</g><b>0.8</b><x>2</x><y>1</y></l>");
    s.add(section_texture_nodes,
        "<t name=\"p\" type=\"101\" texture_format=\"0\" texture_filter=\"0\" layer_id=\"0\"><i>0</i>"
        "<output>2</output><p>0</p><p>1</p></t>");
    s.add(section_texture_nodes, "<t name=\"o\" type=\"255\" texture_format=\"0\" texture_filter=\"1\"><i>1</i></t>");
    i.generated = s.reference(texture_generated, 2);
    i.light_one = s.values({0.2, 0.15, 0.1, 0.8, 0.7, 0.6, 2, 3, -2});
    i.light_two = s.values({0, 0.05, 0.1, 0.1, 0.2, 0.5, -4, 0, -3});
    i.light_moving = s.values({dynamic(i.ramp), 0.1, 0.1, 0.5, dynamic(i.ramp), 0.4, dynamic(i.ramp), 3, -1});
    const std::vector<look> looks = looks_of(i);
    if (number >= looks.size()) {
        name->clear();
        return s;
    }
    *name = looks[number].name;

    const int ball = s.reference(texture_generated, s.mesh(sphere())); // kind 0: a model
    const int flat = s.reference(texture_generated, s.mesh(square(-1, -1, 1, 1)));
    const int ground = s.material(setting("blend_function", 2) + color(20 / 255.0, 40 / 255.0, 60 / 255.0));
    // The material's own settings come last and win.
    const int material
        = s.material(setting("blend_function", blend) + setting("depth_test", 1) + looks[number].settings);
    s.show(0, {.scene = s.scene({{.object = flat, .material = ground, .place = {0, 0, 0, 0, 0, 0, 9, 9, 1}}})});
    clip c = {.scene = s.scene({
                  {.object = ball, .material = material, .place = {-1, 0.2, -3, 20, 30, 10, 1.1, 0.9, 1}},
                  {.object = flat, .material = material, .place = {1.2, 0.3, -3, -20, -35, 15, 0.9, 0.9, 1}},
                  {.object = ball, .material = material, .place = {0.6, -1.3, -3, 0, 0, 0, 0.5, 0.5, 0.5}},
              }),
        .mode = 3,
        .camera = wide_camera()};
    c.camera[3] = 6;
    c.camera[4] = 10;
    s.show(1, c);
    return s;
}

} // namespace

TEST_CASE("both paths draw the same picture of every material that both can express")
{
    for (size_t number = 0;; ++number) {
        std::string name;
        for (const int blend : {2, static_cast<int>(number % 5)}) {
            const show_text s = show_of_look(number, blend, &name);
            // The alpha of unit 2 differs on purpose; blending would show it.
            const bool two_units = s.text.records[section_materials].find("<texture2") != std::string::npos;
            if (name.empty() || (two_units && blend != 2 && blend != 1))
                continue;
            small_show fixed(s, false);
            const picture by_pipeline = fixed.frame(40);
            small_show shader(s, true);
            CAPTURE(name);
            CAPTURE(blend);
            check_same_picture(by_pipeline, shader.frame(40));
        }
        if (name.empty())
            break;
    }
}
