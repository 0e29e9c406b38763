// Small scenes on both paths: pixels worked out by hand, and the two paths compared.
#include "drawing_window.h"

#include "content/matrix.h"
#include "effects/manipulator.h"
#include "render/mesh_buffers_gl.h"

#include <GL/glew.h>

#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <string>

namespace {

struct four {
    float v[4];
};

// A quad with one material over the whole window.
uint32_t add_full_scene(drawing_window& b, uint32_t material, uint32_t sets = 1)
{
    return b.add_scene({b.object(object_model, b.add_quad(sets), material)});
}

rgb to_rgb(const double color[3])
{
    const auto byte = [](double c) { return static_cast<int>(std::lround(std::clamp(c, 0.0, 1.0) * 255.0)); };
    return {byte(color[0]), byte(color[1]), byte(color[2])};
}

void check_center(drawing_window& b, uint32_t scene, const rgb& expected, int tolerance = 2)
{
    for (const bool glsl : {false, true}) {
        const rgb found = center_of(b.draw(scene, glsl));
        INFO(std::string(glsl ? "shader" : "fixed")
            << ": " << found.red << " " << found.green << " " << found.blue << ", expected " << expected.red << " "
            << expected.green << " " << expected.blue);
        CHECK(is_near(found, expected, tolerance));
    }
}

void check_paths_agree(drawing_window& b, uint32_t scene, const char* what, int allowed = 8)
{
    const picture fixed = b.draw(scene, false);
    const picture shader = b.draw(scene, true);
    INFO(std::string(what));
    CHECK(mean_difference(fixed, shader) < 1.0);
    // Edges of texels may fall to the other side: count what is off instead of the worst.
    size_t off = 0;
    for (size_t i = 0; i < fixed.bytes.size(); ++i)
        off += std::abs(fixed.bytes[i] - shader.bytes[i]) > allowed;
    CHECK(off < fixed.bytes.size() / 200);
    // and something must be there to compare
    CHECK(greatest_difference(fixed, picture{std::vector<uint8_t>(fixed.bytes.size(), 0)}) > 0);
}

const float texture_color[4] = {0.8f, 0.4f, 0.2f, 0.5f};
const float second_color[4] = {0.3f, 0.6f, 0.9f, 0.25f};
const float third_color[4] = {0.1f, 0.2f, 0.5f, 1.0f};

} // namespace

TEST_CASE("each blend function mixes as it says, on both paths; the ones beyond change nothing")
{
    const double s[4] = {0.6, 0.4, 0.2, 0.5}; // source, its alpha last
    const double under[3] = {100 / 255.0, 150 / 255.0, 200 / 255.0};
    for (const uint8_t mode : {uint8_t{0}, uint8_t{1}, uint8_t{2}, uint8_t{3}, uint8_t{4}, uint8_t{5}}) {
        drawing_window b;
        b.background = {100, 150, 200};
        uint32_t handle = 0;
        material_record& material = b.add_material(&handle);
        for (uint32_t i = 0; i < 4; ++i)
            material.color[i] = static_cast<float>(s[i]);
        material.blend_function = mode;
        REQUIRE(b.build_programs());
        double expected[3];
        for (int i = 0; i < 3; ++i) {
            switch (mode) {
            case 0:
                expected[i] = s[i] * s[3] + under[i] * (1 - s[3]);
                break;
            case 1:
                expected[i] = s[i] + under[i];
                break;
            case 2:
                expected[i] = s[i];
                break;
            case 3:
                expected[i] = s[i] + under[i] * (1 - s[3]);
                break;
            default: // 4, and 5 which keeps what 4 has set
                expected[i] = under[i] - s[i] * s[3];
                break;
            }
        }
        CAPTURE(static_cast<int>(mode));
        const uint32_t scene = add_full_scene(b, handle);
        if (mode < 5) {
            check_center(b, scene, to_rgb(expected));
            continue;
        }
        for (const bool glsl : {false, true}) {
            material.blend_function = 4;
            b.draw(scene, glsl);
            material.blend_function = 5;
            CHECK(is_near(center_of(b.draw(scene, glsl)), to_rgb(expected), 2));
        }
    }
}

TEST_CASE("each combine mode of unit 1 gives its colour on both paths")
{
    const double p[3] = {0.5, 0.7, 0.9};
    for (uint8_t mode = 0; mode < 4; ++mode) {
        drawing_window b;
        uint32_t handle = 0;
        material_record& material = b.add_material(&handle);
        for (uint32_t i = 0; i < 3; ++i)
            material.color[i] = static_cast<float>(p[i]);
        material.texture[0] = b.add_texture(texture_color);
        material.combine_mode[0] = mode;
        REQUIRE(b.build_programs());
        double expected[3];
        for (int i = 0; i < 3; ++i) {
            const double t = static_cast<double>(texture_color[i]);
            expected[i] = mode == 2 ? t : mode == 3 ? p[i] + t : p[i] * t;
        }
        CAPTURE(static_cast<int>(mode));
        check_center(b, add_full_scene(b, handle), to_rgb(expected));
    }
}

TEST_CASE("\"Ignore alpha, multiply color\" blends with the texture's own alpha")
{
    drawing_window b;
    uint32_t handle = 0;
    material_record& material = b.add_material(&handle);
    material.color[3] = 0.5f;
    material.blend_function = 0;
    material.texture[0] = b.add_texture(texture_color); // alpha 0.5
    material.combine_mode[0] = 1;
    REQUIRE(b.build_programs());
    const double expected[3] = {0.4, 0.2, 0.1};
    check_center(b, add_full_scene(b, handle), to_rgb(expected));
    material.combine_mode[0] = 0; // alpha 0.25
    REQUIRE(b.build_programs());
    const double multiplied[3] = {0.2, 0.1, 0.05};
    check_center(b, add_full_scene(b, handle), to_rgb(multiplied));
}

TEST_CASE("each combine mode of unit 2 gives its colour on both paths")
{
    const double p[4] = {0.5, 0.7, 0.9, 0.25};
    for (uint8_t mode = 0; mode < 6; ++mode) {
        drawing_window b;
        uint32_t handle = 0;
        material_record& material = b.add_material(&handle);
        for (uint32_t i = 0; i < 4; ++i)
            material.color[i] = static_cast<float>(p[i]);
        material.texture[0] = b.add_texture(texture_color);
        material.combine_mode[0] = 2; // previous is the first texture
        material.texture[1] = b.add_texture(second_color);
        material.combine_mode[1] = mode;
        REQUIRE(b.build_programs());
        double dot = 0;
        for (int i = 0; i < 3; ++i)
            dot += (static_cast<double>(texture_color[i]) - 0.5) * (static_cast<double>(second_color[i]) - 0.5) * 4;
        double expected[3];
        for (int i = 0; i < 3; ++i) {
            const double previous = static_cast<double>(texture_color[i]);
            const double t = static_cast<double>(second_color[i]);
            const double by_mode[6] = {t + previous, t * previous, dot, t * p[i] + previous * (1 - p[i]),
                t * p[3] + previous * (1 - p[3]), t + previous};
            expected[i] = by_mode[mode];
        }
        CAPTURE(static_cast<int>(mode));
        check_center(b, add_full_scene(b, handle), to_rgb(expected));
    }
}

TEST_CASE("unit 3 multiplies by the colour and adds, by whichever combiner the driver has")
{
    const double p[3] = {0.5, 0.7, 0.9};
    for (const bool with_extension : {true, false}) {
        drawing_window b;
        if (b.caps.texture_units < 3)
            return;
        uint32_t handle = 0;
        material_record& material = b.add_material(&handle);
        for (uint32_t i = 0; i < 3; ++i)
            material.color[i] = static_cast<float>(p[i]);
        const float* colors[3] = {texture_color, second_color, third_color};
        for (uint32_t i = 0; i < 3; ++i)
            material.texture[i] = b.add_texture(colors[i]);
        material.combine_mode[0] = 2;
        material.combine_mode[1] = 1;
        REQUIRE(b.build_programs());
        const uint32_t scene = add_full_scene(b, handle);
        double expected[3];
        double plain[3];
        for (int i = 0; i < 3; ++i) {
            const double previous = static_cast<double>(texture_color[i]) * static_cast<double>(second_color[i]);
            expected[i] = previous + p[i] * static_cast<double>(third_color[i]);
            plain[i] = previous + static_cast<double>(third_color[i]); // the factor is dropped
        }
        if (!with_extension)
            b.caps.nv_combine4 = b.caps.ati_combine3 = 0;
        const bool combines = b.caps.nv_combine4 == 1 || b.caps.ati_combine3 == 1;
        CHECK(is_near(center_of(b.draw(scene, false)), to_rgb(combines ? expected : plain), 2));
        CHECK(is_near(center_of(b.draw(scene, true)), to_rgb(expected), 2));
    }
}

TEST_CASE("both three-argument combiners of unit 3 give the same picture where the driver has both")
{
    drawing_window b;
    if (b.caps.texture_units < 3 || !GLEW_NV_texture_env_combine4 || !GLEW_ATI_texture_env_combine3)
        return;
    uint32_t handle = 0;
    material_record& material = b.add_material(&handle);
    for (uint32_t i = 0; i < 3; ++i) {
        material.color[i] = 0.3f + 0.2f * static_cast<float>(i);
        material.texture[i] = b.add_texture(i == 0 ? texture_color : i == 1 ? second_color : third_color);
    }
    const uint32_t scene = add_full_scene(b, handle);
    b.caps.nv_combine4 = 1;
    b.caps.ati_combine3 = 0;
    const picture first = b.draw(scene, false);
    b.caps.nv_combine4 = 0;
    b.caps.ati_combine3 = 1;
    CHECK(greatest_difference(first, b.draw(scene, false)) <= 2);
}

TEST_CASE("the alpha combine of \"Add previous without alpha\" does not stay for the next material")
{
    drawing_window b;
    uint32_t first = 0;
    uint32_t second = 0;
    for (uint32_t* handle : {&first, &second}) {
        material_record& material = b.add_material(handle);
        material.blend_function = 0;
        material.texture[0] = b.add_texture(texture_color); // alpha 0.5
        material.combine_mode[0] = 2;
        material.texture[1] = b.add_texture(second_color); // alpha 0.25
        material.combine_mode[1] = handle == &first ? 5 : 1;
    }
    b.draw(add_full_scene(b, first), false);
    // colour t p, alpha 0.5 x 0.25, over black
    const double expected[3] = {0.8 * 0.3 * 0.125, 0.4 * 0.6 * 0.125, 0.2 * 0.9 * 0.125};
    CHECK(is_near(center_of(b.draw(add_full_scene(b, second), false)), to_rgb(expected), 2));
}

TEST_CASE("a material with texture 1 empty and texture 2 set draws untextured")
{
    drawing_window b;
    uint32_t handle = 0;
    material_record& material = b.add_material(&handle);
    material.color[0] = 0.5f;
    material.texture[1] = b.add_texture(texture_color);
    REQUIRE(b.build_programs());
    const double expected[3] = {0.5, 1.0, 1.0};
    check_center(b, add_full_scene(b, handle), to_rgb(expected));
}

TEST_CASE("units after the first empty one keep what an earlier material left")
{
    drawing_window b;
    if (b.caps.texture_units < 3)
        return;
    uint32_t three = 0;
    uint32_t none = 0;
    material_record& material = b.add_material(&three);
    for (uint32_t i = 0; i < 3; ++i)
        material.texture[i] = b.add_texture(i == 2 ? third_color : texture_color);
    material.combine_mode[2] = 2; // texture x previous
    b.add_material(&none);
    const uint32_t plain = add_full_scene(b, none);
    b.draw(add_full_scene(b, three, 3), false);
    // Unit 1 is off now; units 2 and 3 still multiply and add: white + texture 2, times texture 3.
    const double expected[3] = {1.0 * 0.1, 1.0 * 0.2, 1.0 * 0.5};
    CHECK(is_near(center_of(b.draw(plain, false)), to_rgb(expected), 2));
}

TEST_CASE("a material with fewer units by one switches the next unit off, whichever it is")
{
    drawing_window b;
    if (b.caps.texture_units < 3)
        return;
    const float half[4] = {0.5f, 0.5f, 0.5f, 1.0f};
    uint32_t scenes[4];
    for (uint32_t count = 0; count <= 3; ++count) {
        uint32_t handle = 0;
        material_record& material = b.add_material(&handle);
        for (uint32_t i = 0; i < count; ++i) {
            material.texture[i] = b.add_texture(half);
            material.combine_mode[i] = i == 0 ? 0 : i == 1 ? 1 : 2; // each unit halves what comes
        }
        scenes[count] = add_full_scene(b, handle, 3);
    }
    for (uint32_t count = 4; count-- > 0;) {
        const double shade = 1.0 / (1 << count);
        const double expected[3] = {shade, shade, shade};
        CAPTURE(count);
        CHECK(is_near(center_of(b.draw(scenes[count], false)), to_rgb(expected), 3));
    }
}

TEST_CASE("a mesh with two coordinate sets gives unit 2 the second and unit 3 the first")
{
    const float white[4] = {1, 1, 1, 1};
    const int expected_set[3][3] = {{0, 0, 0}, {0, 1, 0}, {0, 1, 2}};
    for (uint32_t count = 1; count <= 3; ++count) {
        for (uint32_t unit = 0; unit < 3; ++unit) {
            drawing_window b;
            if (unit >= b.caps.texture_units)
                continue;
            // a picture of four colours, shown through this unit alone, tells the set
            uint32_t handle = 0;
            material_record& material = b.add_material(&handle);
            for (uint32_t i = 0; i < unit; ++i) {
                material.texture[i] = b.add_texture(white);
                material.combine_mode[i] = i == 0 ? 2 : 1;
            }
            material.texture[unit] = b.add_checkered_texture();
            material.combine_mode[unit] = unit == 1 ? 1 : 2;
            const picture p = b.draw(add_full_scene(b, handle, count), false);
            // At (0.4, 0.4) set 1 reads texel (0, 0) and the shifted ones texel (1, 1); at
            // (0.6, 0.6) set 3 (1.1, 1.1) is back at texel (0, 0), the others read (1, 1).
            const rgb left = pixel_at(p, window_width * 4 / 10, window_height * 6 / 10);
            const rgb right = pixel_at(p, window_width * 6 / 10, window_height * 4 / 10);
            const rgb first = {255, 0, 0};
            const rgb last = {200, 180, 40};
            const int set = expected_set[count - 1][unit];
            CAPTURE(count);
            CAPTURE(unit);
            CHECK(is_near(left, set == 0 ? first : last, 2));
            CHECK(is_near(right, set == 2 ? first : last, 2));
        }
    }
}

TEST_CASE("lit, textured and reflecting spheres look the same on both paths")
{
    struct look {
        const char* name;
        uint8_t lights; // 1: one, 3: both
        uint8_t normalization;
        uint8_t cgenmode;
        uint8_t rotation;
        bool textured;
        float scale;
    };
    const look looks[] = {
        {"plain", 0, 0, coordinates_off, 0, false, 1.0f},
        {"one light", 1, 0, coordinates_off, 0, false, 1.0f},
        {"two lights", 3, 0, coordinates_off, 0, false, 1.0f},
        {"scaled, not normalised", 1, 0, coordinates_off, 0, false, 0.7f},
        {"scaled, normalised", 1, 1, coordinates_off, 0, false, 0.7f},
        {"textured and lit", 1, 1, coordinates_off, 0, true, 1.0f},
        {"sphere map", 0, 1, coordinates_sphere, 0, true, 1.0f},
        {"turned sphere map", 0, 1, coordinates_sphere, 1, true, 1.0f},
        {"cube map", 0, 1, coordinates_cube, 0, true, 1.0f},
    };
    for (const look& l : looks) {
        drawing_window b;
        b.perspective = true;
        b.camera[0] = 12.0f;
        b.camera[1] = 25.0f;
        uint32_t handle = 0;
        material_record& material = b.add_material(&handle);
        const float first[3] = {2, 3, 4};
        const float second[3] = {-4, 0, 2};
        material.color[0] = 0.9f;
        material.color[1] = 0.7f;
        material.depth_test = 1;
        material.backface_culling = 1;
        material.light1 = (l.lights & 1) != 0 ? b.add_light(0.2f, 0.7f, first) : 0;
        material.light2 = (l.lights & 2) != 0 ? b.add_light(0.1f, 0.6f, second) : 0;
        material.normalization = l.normalization;
        if (l.textured) {
            material.texture[0] = l.cgenmode == coordinates_cube ? b.add_cube_map() : b.add_checkered_texture();
            material.cgenmode[0] = l.cgenmode;
            material.rotation[0] = l.rotation;
        }
        REQUIRE(b.build_programs());
        scene_object o = b.object(object_model, b.add_sphere(), handle);
        for (uint32_t i = 6; i < placement_value_count; ++i)
            o.values[i].value = l.scale;
        o.values[3].value = 20.0f;
        material.backface_culling = 0;
        check_paths_agree(b, b.add_scene({o}), l.name);
    }
}

TEST_CASE("reflections in a cube map stay fixed in the world while the camera turns")
{
    drawing_window b;
    b.perspective = true;
    uint32_t handle = 0;
    material_record& material = b.add_material(&handle);
    material.texture[0] = b.add_cube_map();
    material.cgenmode[0] = coordinates_cube;
    material.combine_mode[0] = 2;
    material.normalization = 1;
    REQUIRE(b.build_programs());
    // The middle of the sphere reflects what lies behind the eye: +z, and from the other
    // sides of the world +x, -x and -z. The camera goes round, the world stays.
    const uint32_t scene = b.add_scene({b.object(object_model, b.add_sphere(), handle)});
    const struct {
        float turn; // of the world before the camera, about y
        rgb behind;
    } table[] = {{0.0f, {0, 0, 255}}, {90.0f, {0, 255, 255}}, {-90.0f, {255, 0, 0}}, {180.0f, {255, 255, 0}}};
    for (const auto& row : table) {
        b.camera[1] = row.turn;
        CAPTURE(row.turn);
        for (const bool glsl : {false, true}) {
            // the sphere stands at (0.3, -0.2, -3) before the eye
            const rgb found = pixel_at(b.draw(scene, glsl), 90, 53);
            CHECK(is_near(found, row.behind, 2));
        }
    }
}

TEST_CASE("meshes in buffers and in client memory draw the same picture, on both paths")
{
    for (const bool glsl : {false, true}) {
        drawing_window b;
        b.perspective = true;
        uint32_t handle = 0;
        material_record& material = b.add_material(&handle);
        const float position[3] = {2, 3, 4};
        material.light1 = b.add_light(0.2f, 0.7f, position);
        material.texture[0] = b.add_checkered_texture();
        material.depth_test = 1;
        REQUIRE(b.build_programs());
        const uint32_t mesh = b.add_sphere();
        const uint32_t scene = b.add_scene({b.object(object_model, mesh, handle)});
        const picture client = b.draw(scene, glsl);
        mesh_arrays& arrays = table_get(b.d.mesh_table, mesh)->arrays;
        create_mesh_buffers_gl(arrays);
        CHECK(arrays.position_buffer != 0);
        CHECK(arrays.index_buffer != 0);
        b.caps.vbo = 1;
        float* kept = arrays.positions;
        CHECK(greatest_difference(client, b.draw(scene, glsl)) == 0);
        b.caps.vbo = 0; // the loading screen, beside meshes that have buffers
        CHECK(greatest_difference(client, b.draw(scene, glsl)) == 0);
        CHECK(arrays.positions == kept);
        release_mesh_buffers_gl(arrays);
        release_mesh_buffers_gl(arrays);
        CHECK(arrays.position_buffer == 0);
    }
}

TEST_CASE("wireframes draw lines on both paths, with and without buffers")
{
    for (const bool glsl : {false, true}) {
        drawing_window b;
        uint32_t wire = 0;
        uint32_t filled = 0;
        b.add_material(&wire).wireframe = 1;
        b.add_material(&filled);
        REQUIRE(b.build_programs());
        const uint32_t mesh = b.add_quad();
        scene_object o = b.object(object_model, mesh, wire);
        o.values[0].value = 0.25f;
        o.values[1].value = 0.25f;
        o.values[6].value = 0.5f;
        o.values[7].value = 0.5f;
        const uint32_t scene = b.add_scene({o});
        mesh_arrays& arrays = table_get(b.d.mesh_table, mesh)->arrays;
        for (const bool buffered : {false, true}) {
            b.caps.vbo = buffered;
            if (buffered)
                create_mesh_buffers_gl(arrays);
            const picture p = b.draw(scene, glsl);
            CHECK(pixel_at(p, 60, 45).red == 0);  // inside, off the diagonal
            CHECK(pixel_at(p, 100, 75).red == 0); // on the diagonal's other side
            int lit = 0;
            for (int x = 36; x < 45; ++x)
                lit += pixel_at(p, x, 70).red > 128;
            CHECK(lit > 0); // the left edge
        }
        CHECK((arrays.line_indices != nullptr) == glsl);
        const double white[3] = {1, 1, 1};
        CHECK(is_near(center_of(b.draw(add_full_scene(b, filled), glsl)), to_rgb(white), 0));
        release_mesh_buffers_gl(arrays);
    }
}

TEST_CASE("three placements draw three times and leave the camera as it was")
{
    for (const bool glsl : {false, true}) {
        drawing_window b;
        uint32_t handle = 0;
        b.add_material(&handle);
        REQUIRE(b.build_programs());
        scene_object o = b.object(object_model, b.add_quad(), handle);
        o.values[6].value = 0.1f;
        o.manipulator_count = 1;
        o.manipulators[0].type = manipulator_x_multiplier;
        o.manipulators[0].params[0] = {3.0f, 0};
        o.manipulators[0].params[1] = {0.3f, 0};
        const picture p = b.draw(b.add_scene({o}), glsl);
        for (const int x : {8, 56, 104})
            CHECK(pixel_at(p, x, 60).red == 255);
        for (const int x : {32, 80, 140})
            CHECK(pixel_at(p, x, 60).red == 0);
        for (int i = 0; i < 16; ++i)
            CHECK(test_renderer().f.views[0].camera[i] == identity[i]);
    }
}

TEST_CASE("models need a material, generated meshes do not, hidden objects and unknown kinds draw nothing")
{
    for (const bool glsl : {false, true}) {
        drawing_window b;
        uint32_t handle = 0;
        b.add_material(&handle);
        REQUIRE(b.build_programs());
        const uint32_t quad = b.add_quad();
        scene_object hidden = b.object(object_model, quad, handle);
        hidden.visibility = add_function(b.content, constant_function(0.999f));
        const scene_object objects[] = {b.object(object_model, quad, 0), b.object(object_model, quad, 99),
            b.object(object_model, 0, handle), b.object(object_model, 99, handle), hidden,
            b.object(static_cast<object_kind>(3), quad, handle), b.object(object_genmesh, 0, handle),
            b.object(object_genmesh, 99, handle), b.object(object_text, quad, handle)};
        for (const scene_object& o : objects)
            CHECK(center_of(b.draw(b.add_scene({o}), glsl)).red == 0);
        CHECK(center_of(b.draw(0, glsl)).red == 0);
        CHECK(center_of(b.draw(77, glsl)).red == 0);

        mesh_effect effect = {}; // a generated mesh that keeps still: its kind does not exist
        effect.type = mesh_effect_kind_count;
        const uint32_t generated = table_add(b.d.effect_table, effect);
        mesh_arrays& mesh = table_get(b.d.effect_table, generated)->mesh;
        mesh = table_get(b.d.mesh_table, quad)->arrays;
        b.draw(add_full_scene(b, handle), glsl); // the state that stands
        CHECK(center_of(b.draw(b.add_scene({b.object(object_genmesh, generated, 0)}), glsl)).red == 255);
        mesh = {}; // it was borrowed
    }
}

TEST_CASE("a material whose program does not build draws nothing and raises no error")
{
    drawing_window b;
    uint32_t good = 0;
    uint32_t bad = 0;
    b.add_material(&good);
    char broken[] = "no shader";
    material_record& material = b.add_material(&bad);
    material.enable_glsl = 1;
    material.custom_vertex_shader = broken;
    material.custom_fragment_shader = broken;
    CHECK(!b.build_programs());
    b.draw(add_full_scene(b, good), true);
    while (glGetError() != GL_NO_ERROR) { }
    CHECK(center_of(b.draw(add_full_scene(b, bad), true)).red == 0);
    CHECK(glGetError() == GL_NO_ERROR);
    CHECK(center_of(b.draw(add_full_scene(b, good), true)).red == 255);
    material.custom_vertex_shader = nullptr;
    material.custom_fragment_shader = nullptr;
}

TEST_CASE("a program of the material's own gets its user uniforms")
{
    drawing_window b;
    uint32_t handle = 0;
    material_record& material = b.add_material(&handle);
    char vertex[] = "attribute vec4 Position; uniform mat4 Projection; uniform mat4 Modelview;"
                    "void main(void) { gl_Position = Projection * (Modelview * Position); }";
    char fragment[]
        = "uniform float u1; uniform float u24; void main(void) { gl_FragColor = vec4(u1, u24, 0.0, 1.0); }";
    material.enable_glsl = 1;
    material.custom_vertex_shader = vertex;
    material.custom_fragment_shader = fragment;
    material.user_uniforms[0] = add_function(b.content, constant_function(0.25f));
    material.user_uniforms[23] = add_function(b.content, constant_function(0.75f));
    REQUIRE(b.build_programs());
    const double expected[3] = {0.25, 0.75, 0.0};
    CHECK(is_near(center_of(b.draw(add_full_scene(b, handle), true)), to_rgb(expected), 1));
    material.custom_vertex_shader = nullptr;
    material.custom_fragment_shader = nullptr;
}

TEST_CASE("dynamic colours follow their functions on both paths, and are 1.0 without one")
{
    drawing_window b;
    uint32_t handle = 0;
    material_record& material = b.add_material(&handle);
    for (uint32_t i = 0; i < 3; ++i)
        material.color_dynamic[i] = 1;
    material.color[0] = static_cast<float>(add_function(b.content, constant_function(0.25f)));
    material.color[1] = 0.0f;  // no function
    material.color[2] = 99.0f; // one that does not exist
    REQUIRE(b.build_programs());
    const double expected[3] = {0.25, 1.0, 1.0};
    check_center(b, add_full_scene(b, handle), to_rgb(expected));
}

TEST_CASE("a stale unit's coordinates follow the mesh at hand, which may be shorter or have none")
{
    drawing_window b;
    if (b.caps.texture_units < 3)
        return;
    uint32_t three = 0;
    uint32_t none = 0;
    material_record& material = b.add_material(&three);
    for (uint32_t i = 0; i < 3; ++i)
        material.texture[i] = b.add_texture(texture_color);
    b.add_material(&none);
    b.draw(b.add_scene({b.object(object_model, b.add_quad(3), three)}), false);
    const uint32_t bare = b.add_quad(0);
    CHECK(table_get(b.d.mesh_table, bare)->arrays.texcoords[0] == nullptr);
    b.perspective = true;
    b.draw(b.add_scene({b.object(object_model, b.add_sphere(), none)}), false); // longer
    b.draw(b.add_scene({b.object(object_model, bare, none)}), false);           // none
    CHECK(glGetError() == GL_NO_ERROR);
}

TEST_CASE("rippled meshes draw the cache's vertices, in buffers and without, and their own beyond it")
{
    for (const bool glsl : {false, true}) {
        for (const bool buffered : {false, true}) {
            drawing_window b;
            reset_rippler_cache(test_renderer().tools.rippler);
            b.caps.vbo = buffered;
            uint32_t handle = 0;
            b.add_material(&handle);
            REQUIRE(b.build_programs());
            scene_object o = b.object(object_model, b.add_quad(), handle);
            o.manipulator_count = 1;
            o.manipulators[0].type = manipulator_rippler; // all coordinates + 0.5
            o.manipulators[0].params[1] = {0.5f, 0};
            const uint32_t scene = b.add_scene({o});
            const picture first = b.draw(scene, glsl);
            CHECK(pixel_at(first, 40, 90).red == 0);    // top left is free
            CHECK(pixel_at(first, 120, 30).red == 255); // bottom right is covered
            const picture second = b.draw(scene, glsl); // the shift adds up
            CHECK(pixel_at(second, 120, 30).red == 0);
            CHECK(glGetError() == GL_NO_ERROR);
        }
    }
    reset_rippler_cache(test_renderer().tools.rippler);
}
