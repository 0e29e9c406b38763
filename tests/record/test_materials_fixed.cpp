// The calls that a material is on the fixed-function path.
#include "record_bench.h"

#include <GL/glew.h>

#include <doctest/doctest.h>

#include <vector>

// What comes before every first material of a bench, and behind it: the arrays of the
// triangle, its matrix, its drawing.
static const std::string first_arrays = R"(
glMatrixMode(GL_PROJECTION)
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glMatrixMode(GL_MODELVIEW)
glEnableClientState(GL_NORMAL_ARRAY)
glNormalPointer(GL_FLOAT, 0, [0 0 1])
glEnableClientState(GL_VERTEX_ARRAY)
glVertexPointer(3, GL_FLOAT, 0, [1 2 3])
)";
static const std::string drawing = "glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])\n";

// The list with each unit's combiner as one line: its parts are held below.
static std::string without_combiner(const std::string& calls)
{
    return without(without(without(calls, ", GL_COMBINE_"), ", GL_SOURCE"), ", GL_OPERAND");
}

// ---- the whole list -------------------------------------------------------------

TEST_CASE("a material without settings switches off what it does not use, in a fixed order")
{
    record_bench b;
    b.apply_fixed(b.add_material());
    CHECK(take_gl_calls() == first_arrays + R"(glDisable(GL_CULL_FACE)
glDisable(GL_DEPTH_TEST)
glDisable(GL_NORMALIZE)
glPolygonMode(GL_FRONT_AND_BACK, GL_FILL)
glColor4f(0.25, 0.5, 0.75, 1)
glBlendEquation(GL_FUNC_ADD)
glBlendFunc(GL_ONE, GL_ZERO)
glDisable(GL_LIGHTING)
glDisable(GL_FOG)
glActiveTexture(GL_TEXTURE0)
glDisable(GL_TEXTURE_2D)
glDisable(GL_TEXTURE_CUBE_MAP)
glClientActiveTexture(GL_TEXTURE0)
glDisableClientState(GL_TEXTURE_COORD_ARRAY)
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
)" + drawing);
}

// Polygons, colour, blending, lights under the camera, fog, then unit by unit: its picture,
// where its coordinates come from, its matrix, its combiner; then the units' arrays.
TEST_CASE("a material with everything sets everything, in a fixed order")
{
    record_bench b;
    b.camera[1] = 90.0f;  // the first camera angle
    b.camera[0] = -90.0f; // the second
    material_record& m = b.add_material();
    m.backface_culling = m.depth_test = m.normalization = m.wireframe = 1;
    m.linewidth = 2.5f;
    m.blend_function = 0;
    m.light1 = b.add_values({0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f, 7, 8, 9});
    m.light2 = b.add_values({0.3f, 0.2f, 0.1f, 0.6f, 0.5f, 0.4f, 9, 8, 7});
    m.fogtype = 2;
    m.fogcolor = b.add_values({9, 9, 9, 0.7f, 0.8f, 0.9f, 9, 9, 9});
    m.fogstart = 10.0f;
    m.fogend = 20.0f;
    m.texture[0] = b.add_image(7);
    m.wrapmode[0] = 1;
    m.rotation[0] = 1;
    m.texture[1] = b.add_image(8);
    m.cgenmode[1] = coordinates_sphere;
    m.texture[2] = b.add_cube(9);
    m.wrapmode[2] = 1;
    m.cgenmode[2] = coordinates_cube;
    b.apply_fixed(m);
    // The camera, Rx(-90) Ry(90): x -> -y, y -> -z, z -> x. The triangle's copy is under the
    // same but for roundings behind the fifth decimal.
    CHECK(without_combiner(take_gl_calls()) == first_arrays + R"(glEnable(GL_CULL_FACE)
glEnable(GL_DEPTH_TEST)
glEnable(GL_NORMALIZE)
glPolygonMode(GL_FRONT_AND_BACK, GL_LINE)
glLineWidth(2.5)
glColor4f(0.25, 0.5, 0.75, 1)
glBlendEquation(GL_FUNC_ADD)
glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA)
glEnable(GL_LIGHTING)
glEnable(GL_LIGHT0)
glLoadMatrixf([0 -1 0 0 0 0 -1 0 1 0 0 0 0 0 0 1])
glLightfv(GL_LIGHT0, GL_POSITION, [7 8 9 1])
glLightfv(GL_LIGHT0, GL_AMBIENT, [0.1 0.2 0.3 1])
glLightfv(GL_LIGHT0, GL_DIFFUSE, [0.4 0.5 0.6 1])
glEnable(GL_LIGHT1)
glLightfv(GL_LIGHT1, GL_POSITION, [9 8 7 1])
glLightfv(GL_LIGHT1, GL_AMBIENT, [0.3 0.2 0.1 1])
glLightfv(GL_LIGHT1, GL_DIFFUSE, [0.6 0.5 0.4 1])
glEnable(GL_FOG)
glFogi(GL_FOG_MODE, GL_LINEAR)
glHint(GL_FOG_HINT, GL_NICEST)
glFogfv(GL_FOG_COLOR, [0.7 0.8 0.9 1])
glFogf(GL_FOG_START, 10)
glFogf(GL_FOG_END, 20)
glActiveTexture(GL_TEXTURE0)
glEnable(GL_TEXTURE_2D)
glDisable(GL_TEXTURE_CUBE_MAP)
glBindTexture(GL_TEXTURE_2D, 7)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE)
glDisable(GL_TEXTURE_GEN_S)
glDisable(GL_TEXTURE_GEN_T)
glDisable(GL_TEXTURE_GEN_R)
glMatrixMode(GL_TEXTURE)
glLoadMatrixf([0 -1 0 0 1 0 0 0 0 0 1 0 0 1 0 1])
glMatrixMode(GL_MODELVIEW)
glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_COMBINE)
glActiveTexture(GL_TEXTURE1)
glEnable(GL_TEXTURE_2D)
glDisable(GL_TEXTURE_CUBE_MAP)
glBindTexture(GL_TEXTURE_2D, 8)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT)
glTexGeni(GL_S, GL_TEXTURE_GEN_MODE, GL_SPHERE_MAP)
glTexGeni(GL_T, GL_TEXTURE_GEN_MODE, GL_SPHERE_MAP)
glEnable(GL_TEXTURE_GEN_S)
glEnable(GL_TEXTURE_GEN_T)
glDisable(GL_TEXTURE_GEN_R)
glMatrixMode(GL_TEXTURE)
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glMatrixMode(GL_MODELVIEW)
glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_COMBINE)
glActiveTexture(GL_TEXTURE2)
glEnable(GL_TEXTURE_2D)
glEnable(GL_TEXTURE_CUBE_MAP)
glBindTexture(GL_TEXTURE_CUBE_MAP, 9)
glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE)
glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE)
glTexGeni(GL_S, GL_TEXTURE_GEN_MODE, GL_REFLECTION_MAP)
glTexGeni(GL_T, GL_TEXTURE_GEN_MODE, GL_REFLECTION_MAP)
glTexGeni(GL_R, GL_TEXTURE_GEN_MODE, GL_REFLECTION_MAP)
glEnable(GL_TEXTURE_GEN_S)
glEnable(GL_TEXTURE_GEN_T)
glEnable(GL_TEXTURE_GEN_R)
glMatrixMode(GL_TEXTURE)
glLoadMatrixf([0 0 1 0 -1 0 0 0 0 -1 0 0 0 0 0 1])
glMatrixMode(GL_MODELVIEW)
glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_COMBINE)
glClientActiveTexture(GL_TEXTURE0)
glEnableClientState(GL_TEXTURE_COORD_ARRAY)
glTexCoordPointer(2, GL_FLOAT, 0, [1 0.5])
glClientActiveTexture(GL_TEXTURE1)
glDisableClientState(GL_TEXTURE_COORD_ARRAY)
glClientActiveTexture(GL_TEXTURE2)
glDisableClientState(GL_TEXTURE_COORD_ARRAY)
glLoadMatrixf([0 -1 0 0 0 0 -1 0 1 0 0 0 0 0 0 1])
)" + drawing);
    b.apply_fixed(m);
    CHECK(take_gl_calls() == "\n" + drawing);
}

// ---- what is left out -----------------------------------------------------------

// A material that uses most of what there is, applied.
static material_record& add_lit_textured_material(record_bench& b)
{
    material_record& m = b.add_material();
    m.light1 = b.add_values({0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f, 7, 8, 9});
    m.fogtype = fog_nicest;
    m.fogend = 5.0f;
    m.texture[0] = b.add_image(7);
    b.apply_fixed(m);
    take_gl_calls();
    return m;
}

TEST_CASE("a changed colour alone is told alone")
{
    record_bench b;
    material_record& m = add_lit_textured_material(b);
    m.color[1] = 0.625f;
    b.apply_fixed(m);
    CHECK(take_gl_calls() == "\nglColor4f(0.25, 0.625, 0.75, 1)\n" + drawing);
}

TEST_CASE("of a changed light, fog, combiner or matrix each is told alone")
{
    record_bench b;
    material_record& m = add_lit_textured_material(b);
    table_get(b.d.transform_table, m.light1)->values[3] = 0.75f;
    b.apply_fixed(m);
    CHECK(take_gl_calls() == "\nglLightfv(GL_LIGHT0, GL_DIFFUSE, [0.75 0.5 0.6 1])\n" + drawing);
    m.fogend = 6.0f;
    b.apply_fixed(m);
    CHECK(take_gl_calls() == "\nglFogf(GL_FOG_END, 6)\n" + drawing);
    m.combine_mode[0] = 3;
    b.apply_fixed(m);
    CHECK(take_gl_calls() == R"(
glActiveTexture(GL_TEXTURE0)
glTexEnvi(GL_TEXTURE_ENV, GL_COMBINE_RGB, GL_ADD)
glTexEnvi(GL_TEXTURE_ENV, GL_COMBINE_ALPHA, GL_ADD)
)" + drawing);
    m.rotation[0] = 1; // about the picture's middle, by nothing
    b.apply_fixed(m);
    CHECK(take_gl_calls() == "\n" + drawing);
    b.camera[1] = 90.0f;
    m.light1 = 0;
    b.apply_fixed(m);
    CHECK(take_gl_calls() == R"(
glDisable(GL_LIGHTING)
glMatrixMode(GL_TEXTURE)
glLoadMatrixf([0 -1 0 0 1 0 0 0 0 0 1 0 0 1 0 1])
glMatrixMode(GL_MODELVIEW)
glLoadMatrixf([0 0 -1 0 0 1 0 0 1 0 0 0 0 0 0 1])
)" + drawing);
}

// OpenGL keeps a light where the camera saw it.
TEST_CASE("lights are told again when the camera has moved, under its new matrix")
{
    record_bench b;
    add_lit_textured_material(b);
    material_record& m = *table_get(b.d.material_table, 1);
    b.layer.position[2] = -5.0f;
    b.apply_fixed(m);
    CHECK(take_gl_calls() == R"(
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 -5 1])
glLightfv(GL_LIGHT0, GL_POSITION, [7 8 9 1])
)" + drawing);
}

TEST_CASE("a light that was lit before is told when only its place among the meshes' matrices changed")
{
    record_bench b;
    material_record& m = add_lit_textured_material(b);
    scene_object moved = b.object(object_model, b.add_triangle(1), 1);
    moved.values[0].value = 10.0f; // the matrix of its copy is not the camera's
    const uint32_t scene = b.add_scene({moved});
    b.draw(scene, false);
    take_gl_calls();
    table_get(b.d.transform_table, m.light1)->values[8] = 3.0f;
    b.draw(scene, false);
    CHECK(take_gl_calls() == R"(
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glLightfv(GL_LIGHT0, GL_POSITION, [7 8 3 1])
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 10 0 0 1])
)" + drawing);
}

// ---- single settings ------------------------------------------------------------

TEST_CASE("each of culling, depth test and normalisation follows its own setting")
{
    record_bench b;
    material_record& m = b.add_material();
    const auto polygons = [&] {
        b.apply_fixed(m);
        const std::string calls = take_gl_calls({"glEnable", "glDisable"});
        return calls.substr(0, calls.find("glDisable(GL_LIGHTING)"));
    };
    m.backface_culling = 1;
    CHECK(polygons() == "\nglEnable(GL_CULL_FACE)\nglDisable(GL_DEPTH_TEST)\nglDisable(GL_NORMALIZE)\n");
    m.backface_culling = 0;
    m.depth_test = 255;
    CHECK(polygons() == "\nglDisable(GL_CULL_FACE)\nglEnable(GL_DEPTH_TEST)\n");
    m.depth_test = 0;
    m.normalization = 2;
    CHECK(polygons() == "\nglDisable(GL_DEPTH_TEST)\nglEnable(GL_NORMALIZE)\n");
}

TEST_CASE("only a wireframe has a line width, and only one that OpenGL takes")
{
    record_bench b;
    material_record& m = b.add_material();
    m.linewidth = 3.0f;
    b.apply_fixed(m);
    CHECK(take_gl_calls({"glPolygonMode", "glLineWidth"}) == "\nglPolygonMode(GL_FRONT_AND_BACK, GL_FILL)\n");
    m.wireframe = 1;
    m.linewidth = 0.0f;
    b.apply_fixed(m);
    CHECK(take_gl_calls({"glPolygonMode", "glLineWidth"}) == "\nglPolygonMode(GL_FRONT_AND_BACK, GL_LINE)\n");
    m.linewidth = 0.125f;
    b.apply_fixed(m);
    CHECK(take_gl_calls({"glLineWidth"}) == "\nglLineWidth(0.125)\n");
    m.linewidth = static_cast<float>(b.add_time(0.25f));
    m.linewidth_dynamic = 1;
    b.time = 6;
    b.apply_fixed(m);
    CHECK(take_gl_calls({"glLineWidth"}) == "\nglLineWidth(1.5)\n");
}

TEST_CASE("every number of a material may follow a function of time")
{
    record_bench b;
    b.time = 8;
    material_record& m = b.add_material();
    for (uint32_t i = 0; i < 4; ++i) {
        m.color[i] = static_cast<float>(b.add_time(0.125f / static_cast<float>(i + 1)));
        m.color_dynamic[i] = 1;
    }
    m.fogtype = 1;
    m.fogstart = static_cast<float>(b.add_time(2.0f));
    m.fogend = static_cast<float>(b.add_time(3.0f));
    m.fogstart_dynamic = m.fogend_dynamic = 1;
    m.fogcolor = b.add_values({0, 0, 0, 0.5f, static_cast<float>(b.add_time(0.1f)), 0.5f, 0, 0, 0});
    table_get(b.d.transform_table, m.fogcolor)->dynamic_flags[0] = 8; // value 4
    m.light1 = b.add_values({0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f, static_cast<float>(b.add_time(5.0f))});
    table_get(b.d.transform_table, m.light1)->dynamic_flags[1] = 32; // value 8
    b.apply_fixed(m);
    CHECK(take_gl_calls({"glColor4f", "glFogf", "glFogfv", "glLightfv"}) == R"(
glColor4f(1, 0.5, 0.33333, 0.25)
glLightfv(GL_LIGHT0, GL_POSITION, [0.5 0.5 40 1])
glLightfv(GL_LIGHT0, GL_AMBIENT, [0.5 0.5 0.5 1])
glLightfv(GL_LIGHT0, GL_DIFFUSE, [0.5 0.5 0.5 1])
glFogfv(GL_FOG_COLOR, [0.5 0.8 0.5 1])
glFogf(GL_FOG_START, 16)
glFogf(GL_FOG_END, 24)
)");
}

TEST_CASE("a blend function is an equation and two factors; beyond the catalogue nothing is set")
{
    constexpr const char* expected[6]
        = {"\nglBlendEquation(GL_FUNC_ADD)\nglBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA)\n",
            "\nglBlendFunc(GL_ONE, GL_ONE)\n", "\nglBlendFunc(GL_ONE, GL_ZERO)\n",
            "\nglBlendFunc(GL_ONE, GL_ONE_MINUS_SRC_ALPHA)\n",
            "\nglBlendEquation(GL_FUNC_REVERSE_SUBTRACT)\nglBlendFunc(GL_SRC_ALPHA, GL_ONE)\n", "\n"};
    for (const bool glsl : {false, true}) {
        record_bench b;
        material_record& m = b.add_material();
        b.give_program(m);
        for (uint8_t function = 0; function < 6; ++function) {
            m.blend_function = function;
            if (glsl)
                b.apply_glsl(m);
            else
                b.apply_fixed(m);
            CHECK(take_gl_calls({"glBlendEquation", "glBlendFunc"}) == expected[function]);
        }
    }
    record_bench b;
    glBlendEquation = nullptr; // a driver without equations
    material_record& m = b.add_material();
    m.blend_function = 4;
    b.apply_fixed(m);
    CHECK(take_gl_calls({"glBlendEquation", "glBlendFunc"}) == "\nglBlendFunc(GL_SRC_ALPHA, GL_ONE)\n");
}

TEST_CASE("a first blend function beyond the catalogue leaves blending as the driver has it")
{
    record_bench b;
    material_record& m = b.add_material();
    m.blend_function = 5;
    b.apply_fixed(m);
    CHECK(take_gl_calls({"glBlendEquation", "glBlendFunc"}) == "\n");
}

TEST_CASE("a second light alone lights nothing; a first light alone switches the second off")
{
    record_bench b;
    material_record& m = b.add_material();
    const uint32_t light = b.add_values({0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f, 7, 8, 9});
    m.light2 = light;
    b.apply_fixed(m);
    const std::string calls = take_gl_calls({"glEnable", "glDisable", "glLightfv"});
    CHECK(calls.find("LIGHT") == calls.find("LIGHTING)"));
    CHECK(calls.find("glDisable(GL_LIGHTING)\nglDisable(GL_FOG)\n") != std::string::npos);
    m.light1 = light;
    m.light2 = 0;
    b.apply_fixed(m);
    CHECK(take_gl_calls({"glEnable", "glDisable", "glLightfv"}) == R"(
glEnable(GL_LIGHTING)
glEnable(GL_LIGHT0)
glLightfv(GL_LIGHT0, GL_POSITION, [7 8 9 1])
glLightfv(GL_LIGHT0, GL_AMBIENT, [0.1 0.2 0.3 1])
glLightfv(GL_LIGHT0, GL_DIFFUSE, [0.4 0.5 0.6 1])
glDisable(GL_LIGHT1)
)");
}

TEST_CASE("fog of type 1 asks for the fastest, every other for the nicest; without a colour it is white")
{
    record_bench b;
    material_record& m = b.add_material();
    m.fogstart = 1.0f;
    m.fogend = 2.0f;
    m.fogtype = 1;
    b.apply_fixed(m);
    CHECK(take_gl_calls({"glFogi", "glHint", "glFogfv", "glFogf"}) == R"(
glFogi(GL_FOG_MODE, GL_LINEAR)
glHint(GL_FOG_HINT, GL_FASTEST)
glFogfv(GL_FOG_COLOR, [1 1 1 1])
glFogf(GL_FOG_START, 1)
glFogf(GL_FOG_END, 2)
)");
    m.fogtype = 2;
    b.apply_fixed(m);
    CHECK(take_gl_calls({"glHint"}) == "\nglHint(GL_FOG_HINT, GL_NICEST)\n");
    m.fogtype = 0;
    b.apply_fixed(m);
    CHECK(take_gl_calls({"glFogi", "glHint", "glFogfv", "glFogf"}) == "\n");
}

// The greatest number of a document's byte (-1 becomes it) is beyond every catalogue.
TEST_CASE("a kind of 255 is told like any other beyond its catalogue")
{
    record_bench b;
    material_record& m = b.add_material();
    m.fogtype = 255;
    m.fogend = 5.0f;
    m.texture[0] = m.texture[1] = b.add_image(7);
    m.cgenmode[1] = m.combine_mode[1] = m.wrapmode[0] = m.wrapmode[1] = 255;
    b.apply_fixed(m);
    const std::string calls = take_gl_calls();
    CHECK(calls.find("\nglEnable(GL_FOG)\nglFogi(GL_FOG_MODE, GL_LINEAR)\nglHint(GL_FOG_HINT, GL_NICEST)\n")
        != std::string::npos);
    CHECK(calls.find("\nglTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT)\n") != std::string::npos);
    CHECK(calls.find(R"(
glActiveTexture(GL_TEXTURE1)
glEnable(GL_TEXTURE_2D)
glDisable(GL_TEXTURE_CUBE_MAP)
glBindTexture(GL_TEXTURE_2D, 7)
glDisable(GL_TEXTURE_GEN_S)
glDisable(GL_TEXTURE_GEN_T)
glDisable(GL_TEXTURE_GEN_R)
)") != std::string::npos);
    CHECK(combiner_state(calls, 1).starts_with("GL_COMBINE: GL_ADD(GL_TEXTURE.GL_SRC_COLOR, "));
    CHECK(calls.ends_with("[2 0.5])\nglClientActiveTexture(GL_TEXTURE2)\nglDisableClientState(GL_TEXTURE_COORD_ARRAY)\n"
                          "glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])\n"
        + drawing));
}

// ---- units ----------------------------------------------------------------------

TEST_CASE("the first empty unit ends the list: it is switched off, and later ones are not reached")
{
    record_bench b;
    material_record& m = b.add_material();
    m.texture[1] = b.add_image(8);
    b.apply_fixed(m);
    CHECK(take_gl_calls({"glActiveTexture", "glBindTexture"}) == "\nglActiveTexture(GL_TEXTURE0)\n");
    m.texture[0] = b.add_image(7);
    m.texture[2] = m.texture[1];
    m.texture[1] = 0;
    b.apply_fixed(m);
    const std::string calls = take_gl_calls();
    CHECK(calls.substr(calls.find("\nglActiveTexture(GL_TEXTURE1)")) == R"(
glActiveTexture(GL_TEXTURE1)
glDisable(GL_TEXTURE_2D)
glDisable(GL_TEXTURE_CUBE_MAP)
glEnableClientState(GL_TEXTURE_COORD_ARRAY)
glTexCoordPointer(2, GL_FLOAT, 0, [1 0.5])
glClientActiveTexture(GL_TEXTURE1)
glDisableClientState(GL_TEXTURE_COORD_ARRAY)
)" + drawing);
}

TEST_CASE("a reference of any kind to a picture that is not there is an empty unit")
{
    record_bench b;
    material_record& m = b.add_material();
    texture_node blurred = {};
    blurred.type = node_blur; // no output node: it has no picture on the card
    const uint32_t node = table_add(b.d.texture_table, blurred);
    const object_reference references[] = {{texture_generated, 9, 1}, {texture_generated, node, 1},
        {texture_image, 9, 1}, {texture_dynamic, 9, 1}, {texture_cube, 9, 1}, {4, 1, 1}, {-1, 1, 1}};
    std::vector<uint32_t> empty = {99};
    for (const object_reference& reference : references)
        empty.push_back(table_add(b.d.object_table, reference));
    const uint32_t picture = b.add_image(7);
    for (const uint32_t reference : empty) {
        m.texture[0] = picture;
        b.apply_fixed(m);
        take_gl_calls();
        m.texture[0] = reference;
        b.apply_fixed(m);
        CHECK(take_gl_calls({"glBindTexture", "glTexEnvi", "glEnable", "glDisable"}) == "\nglDisable(GL_TEXTURE_2D)\n");
    }
    blurred.type = node_output;
    blurred.texture = 17;
    m.texture[0]
        = table_add(b.d.object_table, object_reference{texture_generated, table_add(b.d.texture_table, blurred), 1});
    b.apply_fixed(m);
    CHECK(take_gl_calls({"glBindTexture"}) == "\nglBindTexture(GL_TEXTURE_2D, 17)\n");
}

TEST_CASE("a card with two units is told nothing of a third")
{
    record_bench b;
    b.caps.texture_units = 2;
    material_record& m = b.add_material();
    m.texture[0] = m.texture[1] = m.texture[2] = b.add_image(7);
    b.apply_fixed(m);
    CHECK(take_gl_calls({"glActiveTexture", "glClientActiveTexture"}) == R"(
glActiveTexture(GL_TEXTURE0)
glActiveTexture(GL_TEXTURE1)
glClientActiveTexture(GL_TEXTURE0)
glClientActiveTexture(GL_TEXTURE1)
)");
}

static std::string take_array_calls()
{
    return take_gl_calls({"glClientActiveTexture", "glEnableClientState", "glDisableClientState", "glTexCoordPointer"});
}

TEST_CASE("coordinate arrays that an earlier material left on follow the mesh at hand")
{
    record_bench b;
    material_record& three = b.add_material();
    three.texture[0] = three.texture[1] = three.texture[2] = b.add_image(7);
    b.apply_fixed(three);
    CHECK(take_array_calls() == R"(
glEnableClientState(GL_NORMAL_ARRAY)
glEnableClientState(GL_VERTEX_ARRAY)
glClientActiveTexture(GL_TEXTURE0)
glEnableClientState(GL_TEXTURE_COORD_ARRAY)
glTexCoordPointer(2, GL_FLOAT, 0, [1 0.5])
glClientActiveTexture(GL_TEXTURE1)
glEnableClientState(GL_TEXTURE_COORD_ARRAY)
glTexCoordPointer(2, GL_FLOAT, 0, [2 0.5])
glClientActiveTexture(GL_TEXTURE2)
glEnableClientState(GL_TEXTURE_COORD_ARRAY)
glTexCoordPointer(2, GL_FLOAT, 0, [3 0.5])
)");
    b.apply_fixed(b.add_material(), 2);
    CHECK(take_array_calls() == R"(
glClientActiveTexture(GL_TEXTURE0)
glDisableClientState(GL_TEXTURE_COORD_ARRAY)
glClientActiveTexture(GL_TEXTURE1)
glTexCoordPointer(2, GL_FLOAT, 0, [2 0.5])
glClientActiveTexture(GL_TEXTURE2)
glTexCoordPointer(2, GL_FLOAT, 0, [1 0.5])
)");
}

TEST_CASE("a unit whose coordinates were generated generates none for the next material")
{
    record_bench b;
    material_record& m = b.add_material();
    m.texture[0] = b.add_image(7);
    constexpr const char* expected[4] = {"\nglDisable(GL_TEXTURE_GEN_S)\nglDisable(GL_TEXTURE_GEN_T)\n"
                                         "glDisable(GL_TEXTURE_GEN_R)\n",
        "\nglEnable(GL_TEXTURE_GEN_S)\nglEnable(GL_TEXTURE_GEN_T)\n", "\nglEnable(GL_TEXTURE_GEN_R)\n",
        "\nglDisable(GL_TEXTURE_GEN_S)\nglDisable(GL_TEXTURE_GEN_T)\nglDisable(GL_TEXTURE_GEN_R)\n"};
    for (uint8_t mode = 0; mode < 4; ++mode) {
        m.cgenmode[0] = mode;
        b.apply_fixed(m);
        const std::string calls = take_gl_calls({"glEnable", "glDisable"});
        const size_t begin = calls.find("able(GL_TEXTURE_GEN_");
        CHECK(calls.substr(calls.rfind('\n', begin)) // with the first, unit 2 is switched off
            == expected[mode]
                + std::string(mode == 0 ? "glDisable(GL_TEXTURE_2D)\nglDisable(GL_TEXTURE_CUBE_MAP)\n" : ""));
    }
}

TEST_CASE("only a cube map turns with both camera angles, whatever generates the coordinates")
{
    record_bench b;
    b.camera[1] = 90.0f;
    material_record& m = b.add_material();
    m.texture[0] = b.add_image(7);
    m.cgenmode[0] = coordinates_cube;
    m.texture[1] = b.add_cube(8);
    b.apply_fixed(m);
    CHECK(take_gl_calls({"glLoadMatrixf"}) == R"(
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glLoadMatrixf([0 0 1 0 0 1 0 0 -1 0 0 0 0 0 0 1])
glLoadMatrixf([0 0 -1 0 0 1 0 0 1 0 0 0 0 0 0 1])
)"); // the projection, the two units, the camera
}

TEST_CASE("wrap modes beyond the catalogue repeat")
{
    record_bench b;
    material_record& m = b.add_material();
    m.texture[0] = b.add_cube(7);
    m.wrapmode[0] = 2;
    b.apply_fixed(m);
    CHECK(take_gl_calls({"glTexParameteri"}) == R"(
glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_WRAP_S, GL_REPEAT)
glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_WRAP_T, GL_REPEAT)
)");
}

// How coordinates wrap is the picture's: with OpenGL the last unit that says so wins for all.
TEST_CASE("a picture in two units with other wrap modes wraps as the last of them says, in both")
{
    record_bench b;
    material_record& m = b.add_material();
    m.texture[0] = m.texture[1] = b.add_image(7);
    m.wrapmode[1] = wrap_edge_clamp;
    b.apply_fixed(m);
    CHECK(take_gl_calls({"glActiveTexture", "glBindTexture", "glTexParameteri"}) == R"(
glActiveTexture(GL_TEXTURE0)
glBindTexture(GL_TEXTURE_2D, 7)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE)
glActiveTexture(GL_TEXTURE1)
glBindTexture(GL_TEXTURE_2D, 7)
glActiveTexture(GL_TEXTURE2)
)");
    material_record& repeating = b.add_material();
    repeating.texture[0] = m.texture[0];
    b.apply_fixed(repeating); // the same picture for another material, bound already
    CHECK(take_gl_calls({"glBindTexture", "glTexParameteri"}) == R"(
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT)
)");
    b.apply_fixed(repeating);
    CHECK(take_gl_calls() == "\n" + drawing);
}

// The cube map wins over the flat picture, which stays bound beneath it.
TEST_CASE("a unit that changes between cube map and picture keeps both, and binds what is new")
{
    record_bench b;
    material_record& flat = b.add_material();
    flat.texture[0] = b.add_image(7);
    material_record& cube = b.add_material();
    cube.texture[0] = b.add_cube(8);
    b.apply_fixed(flat);
    b.apply_fixed(cube);
    take_gl_calls();
    b.apply_fixed(flat);
    CHECK(take_gl_calls() == "\nglDisable(GL_TEXTURE_CUBE_MAP)\n" + drawing);
    b.apply_fixed(cube);
    CHECK(take_gl_calls() == "\nglEnable(GL_TEXTURE_CUBE_MAP)\n" + drawing);
}

// Quirk: only the first empty unit is switched off.
TEST_CASE("units after the first empty one stay on with their picture, combiner and wrap, and nothing is told of them")
{
    record_bench b;
    material_record& three = b.add_material();
    three.texture[0] = b.add_image(7);
    three.texture[1] = b.add_image(8);
    three.texture[2] = b.add_image(9);
    three.combine_mode[2] = 2;
    three.wrapmode[2] = wrap_edge_clamp;
    b.apply_fixed(three);
    take_gl_calls();
    material_record& one = b.add_material();
    one.texture[0] = three.texture[0];
    b.apply_fixed(one);
    CHECK(take_gl_calls() == R"(
glActiveTexture(GL_TEXTURE1)
glDisable(GL_TEXTURE_2D)
glClientActiveTexture(GL_TEXTURE1)
glDisableClientState(GL_TEXTURE_COORD_ARRAY)
)" + drawing);
    const unit_state& third = b.r.f.materials[0].units[2]; // what the frame was drawn with
    CHECK(third.on);
    CHECK(third.flat_texture == 9);
    CHECK(third.combine_mode == 2);
    CHECK(third.wrap == wrap_edge_clamp);
    b.r.gl = gl_state(); // an OpenGL of which nothing is known is told of it
    b.apply_fixed(one);
    CHECK(take_gl_calls({"glActiveTexture", "glBindTexture"}) == R"(
glActiveTexture(GL_TEXTURE0)
glBindTexture(GL_TEXTURE_2D, 7)
glActiveTexture(GL_TEXTURE1)
glActiveTexture(GL_TEXTURE2)
glBindTexture(GL_TEXTURE_2D, 9)
)");
}

// What is current after a draw with an array is the driver's own affair.
TEST_CASE("a mesh without coordinates has (0, 0) in each unit that reads them, told anew behind an array")
{
    record_bench b;
    material_record& m = b.add_material();
    m.texture[0] = m.texture[1] = b.add_image(7);
    m.cgenmode[1] = coordinates_sphere;
    const std::string origin = "\nglMultiTexCoord4f(GL_TEXTURE0, 0, 0, 0, 1)\n";
    b.apply_fixed(m, 0);
    CHECK(take_gl_calls({"glMultiTexCoord4f"}) == origin);
    b.apply_fixed(m, 0);
    CHECK(take_gl_calls({"glMultiTexCoord4f"}) == "\n");
    b.apply_fixed(m, 1);
    CHECK(take_gl_calls({"glMultiTexCoord4f"}) == "\n");
    b.apply_fixed(m, 0);
    CHECK(take_gl_calls({"glMultiTexCoord4f"}) == origin);
    b.apply_fixed(m, 1);
    m.cgenmode[0] = coordinates_sphere; // the array goes off where nobody reads coordinates
    b.apply_fixed(m, 0);
    CHECK(take_gl_calls({"glMultiTexCoord4f"}) == "\n");
    m.cgenmode[0] = coordinates_off;
    b.apply_fixed(m, 0);
    CHECK(take_gl_calls({"glMultiTexCoord4f"}) == origin);
}

TEST_CASE("what changes in one unit is told while that unit is the active one")
{
    record_bench b;
    b.camera[1] = 90.0f;
    material_record& m = b.add_material();
    m.texture[0] = b.add_image(7);
    m.texture[1] = b.add_image(8);
    b.apply_fixed(m);
    take_gl_calls();
    m.cgenmode[0] = coordinates_sphere;
    b.apply_fixed(m);
    CHECK(take_gl_calls() == R"(
glActiveTexture(GL_TEXTURE0)
glTexGeni(GL_S, GL_TEXTURE_GEN_MODE, GL_SPHERE_MAP)
glTexGeni(GL_T, GL_TEXTURE_GEN_MODE, GL_SPHERE_MAP)
glEnable(GL_TEXTURE_GEN_S)
glEnable(GL_TEXTURE_GEN_T)
glClientActiveTexture(GL_TEXTURE0)
glDisableClientState(GL_TEXTURE_COORD_ARRAY)
)" + drawing);
    m.rotation[1] = 1;
    b.apply_fixed(m);
    CHECK(take_gl_calls() == R"(
glActiveTexture(GL_TEXTURE1)
glMatrixMode(GL_TEXTURE)
glLoadMatrixf([0 -1 0 0 1 0 0 0 0 0 1 0 0 1 0 1])
glMatrixMode(GL_MODELVIEW)
)" + drawing);
    m.wrapmode[0] = wrap_edge_clamp;
    b.apply_fixed(m);
    CHECK(take_gl_calls() == R"(
glActiveTexture(GL_TEXTURE0)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE)
)" + drawing);
    m.combine_mode[1] = 1;
    b.apply_fixed(m);
    CHECK(take_gl_calls()
        == "\nglActiveTexture(GL_TEXTURE1)\nglTexEnvi(GL_TEXTURE_ENV, GL_COMBINE_RGB, GL_MODULATE)\n" + drawing);
}

// ---- moving pictures ------------------------------------------------------------

TEST_CASE("a moving picture is brought up to date first, on the first unit, once per function time")
{
    record_bench b;
    b.time = 7;
    material_record& m = b.add_material();
    m.texture[0] = b.add_image(7);
    m.texture[1] = b.add_moving(9, b.add_time());
    b.apply_fixed(m);
    // The ramp of 8 bits: n = time + x + y, and n plus a 255th of it.
    std::vector<uint8_t> ramp;
    for (uint32_t y = 0; y < 64; ++y)
        for (uint32_t x = 0; x < 64; ++x)
            ramp.push_back(static_cast<uint8_t>((7 + x + y) + (7 + x + y) / 255));
    const std::string calls = take_gl_calls();
    CHECK(calls.substr(0, calls.find("glPolygonMode"))
        == R"(
glActiveTexture(GL_TEXTURE0)
glBindTexture(GL_TEXTURE_2D, 9)
glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 64, 64, GL_LUMINANCE, GL_UNSIGNED_BYTE, )"
            + bytes_as_text(ramp) + ")" + first_arrays + R"(glDisable(GL_CULL_FACE)
glDisable(GL_DEPTH_TEST)
glDisable(GL_NORMALIZE)
)");
    b.apply_fixed(m);
    CHECK(take_gl_calls({"glTexSubImage2D"}) == "\n");
    b.time = 8;
    b.apply_fixed(m);
    CHECK(take_gl_calls({"glTexSubImage2D"}) != "\n");
}

TEST_CASE("a moving picture that the first unit shows already is replaced there, while another unit is active")
{
    record_bench b;
    material_record& m = b.add_material();
    m.texture[0] = b.add_moving(9, b.add_time());
    b.apply_fixed(m);
    take_gl_calls();
    b.time = 1;
    b.apply_fixed(m);
    const std::string calls = take_gl_calls();
    CHECK(calls.starts_with("\nglActiveTexture(GL_TEXTURE0)\nglTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 64, 64, "));
    CHECK(without(calls, "glTexSubImage2D") == "\nglActiveTexture(GL_TEXTURE0)\n" + drawing);
}

TEST_CASE("an upload leaves its picture in the first unit, beneath a cube map")
{
    record_bench b;
    material_record& m = b.add_material();
    m.texture[0] = b.add_cube(5);
    m.texture[1] = b.add_moving(9, b.add_time());
    b.apply_fixed(m);
    CHECK(take_gl_calls({"glActiveTexture", "glBindTexture", "glTexParameteri"}) == R"(
glActiveTexture(GL_TEXTURE0)
glBindTexture(GL_TEXTURE_2D, 9)
glBindTexture(GL_TEXTURE_CUBE_MAP, 5)
glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_WRAP_S, GL_REPEAT)
glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_WRAP_T, GL_REPEAT)
glActiveTexture(GL_TEXTURE1)
glBindTexture(GL_TEXTURE_2D, 9)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT)
glActiveTexture(GL_TEXTURE2)
)");
    forget_objects(b.r.gl);
    b.apply_fixed(m);
    CHECK(take_gl_calls({"glActiveTexture", "glBindTexture"}) == R"(
glActiveTexture(GL_TEXTURE0)
glBindTexture(GL_TEXTURE_2D, 9)
glBindTexture(GL_TEXTURE_CUBE_MAP, 5)
glActiveTexture(GL_TEXTURE1)
glBindTexture(GL_TEXTURE_2D, 9)
)");
}

TEST_CASE("with pixel buffers a moving picture goes through one, and only where the card offers them")
{
    record_bench b;
    material_record& m = b.add_material();
    m.texture[0] = b.add_moving(9, b.add_time());
    for (const uint8_t pbo : {uint8_t{0}, uint8_t{1}}) {
        b.caps.pbo = pbo;
        b.time += 1;
        b.apply_glsl(m);
        CHECK(take_gl_calls({"glMapBuffer"})
            == (pbo != 0 ? "\nglMapBuffer(GL_PIXEL_UNPACK_BUFFER, GL_WRITE_ONLY) = memory\n" : "\n"));
    }
}

// ---- no material ----------------------------------------------------------------

TEST_CASE("no material changes nothing: the mesh's arrays follow it in the units that are on")
{
    record_bench b;
    const uint32_t bare = b.add_scene({b.bare_object(b.add_triangle(1))});
    const uint32_t other = b.add_scene({b.bare_object(b.add_triangle(2))});
    material_record& m = b.add_material();
    m.texture[0] = b.add_image(7);
    b.apply_fixed(m);
    take_gl_calls();
    b.draw(bare, false);
    CHECK(take_gl_calls() == R"(
glNormalPointer(GL_FLOAT, 0, [0 0 1])
glVertexPointer(3, GL_FLOAT, 0, [1 2 3])
glEnable(GL_DEPTH_TEST)
glClientActiveTexture(GL_TEXTURE0)
glTexCoordPointer(2, GL_FLOAT, 0, [1 0.5])
)" + drawing);                       // the depth test is the layer's
    b.apply_fixed(b.add_material()); // switches the unit off, array and all
    take_gl_calls();
    b.draw(other, false);
    CHECK(take_gl_calls() == R"(
glNormalPointer(GL_FLOAT, 0, [0 0 1])
glVertexPointer(3, GL_FLOAT, 0, [1 2 3])
glEnable(GL_DEPTH_TEST)
)" + drawing);
}
