// The calls that a material is on the shader path, and those that build its program.
#include "record_bench.h"

#include "render/shader_program_gl.h"
#include "render/shader_source.h"

#include <GL/glew.h>

#include <doctest/doctest.h>

#include <algorithm>
#include <cstring>
#include <vector>

// What comes before every first material of a bench: the fixed pipeline's arrays of the
// triangle, for programs that read them; and how it is drawn.
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

// ---- applying -------------------------------------------------------------------

TEST_CASE("a material without settings sets depth, blending, culling, and makes its program current")
{
    record_bench b;
    material_record& m = b.add_material();
    b.give_program(m);
    b.apply_glsl(m);
    CHECK(take_gl_calls() == first_arrays + R"(glDisable(GL_DEPTH_TEST)
glBlendEquation(GL_FUNC_ADD)
glBlendFunc(GL_ONE, GL_ZERO)
glDisable(GL_CULL_FACE)
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glUseProgram(50)
glVertexAttribPointer(1, 3, GL_FLOAT, GL_FALSE, 0, [1 2 3])
glEnableVertexAttribArray(1)
glVertexAttribPointer(2, 3, GL_FLOAT, GL_FALSE, 0, [0 0 1])
glEnableVertexAttribArray(2)
glVertexAttribPointer(3, 2, GL_FLOAT, GL_FALSE, 0, [1 0.5])
glEnableVertexAttribArray(3)
glVertexAttribPointer(4, 2, GL_FLOAT, GL_FALSE, 0, [2 0.5])
glEnableVertexAttribArray(4)
glVertexAttribPointer(5, 2, GL_FLOAT, GL_FALSE, 0, [3 0.5])
glEnableVertexAttribArray(5)
glUniformMatrix4fv(11, 1, GL_FALSE, [1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glUniformMatrix4fv(12, 1, GL_FALSE, [1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glUniformMatrix3fv(13, 1, GL_FALSE, [1 0 0 0 1 0 0 0 1])
)" + drawing);
}

// Depth, blending, polygons, the pictures; then the program with its one texture matrix (of
// several units the last one's), the functions' uniforms, the lights as the camera sees them; then
// vertices and matrices. Nothing of the fixed pipeline but its matrices and vertices.
TEST_CASE("a material with everything sets what its program reads, in a fixed order")
{
    record_bench b;
    b.time = 4;
    b.camera[1] = 90.0f;
    b.camera[0] = -90.0f;
    material_record& m = b.add_material();
    b.give_program(m);
    m.backface_culling = m.depth_test = m.normalization = m.wireframe = 1;
    m.linewidth = 2.5f;
    m.blend_function = 4;
    m.light1 = b.add_values({0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f, 7, 8, 9});
    m.light2 = b.add_values({0.3f, 0.2f, 0.1f, 0.6f, 0.5f, 0.4f, 9, 8, 7});
    m.fogtype = 2;
    m.texture[0] = b.add_image(7);
    m.wrapmode[0] = 1;
    m.texture[1] = b.add_cube(8);
    m.cgenmode[1] = coordinates_cube;
    m.wrapmode[1] = 1;
    m.texture[2] = b.add_image(9);
    m.cgenmode[2] = coordinates_sphere;
    m.rotation[2] = 1;
    m.program->texcoord_location[1] = m.program->texcoord_location[2] = -1;
    m.program->uniform_functions[0] = b.add_time(0.5f);
    m.program->uniform_functions[2] = b.add_time(3.0f);
    b.layer.position[0] = 1.0f;
    b.layer.position[1] = 2.0f;
    b.layer.position[2] = -10.0f;
    b.apply_glsl(m);
    // The camera, Rx(-90) Ry(90) behind the translation: (x, y, z) -> (z, -x, -y). It takes the lights,
    // at (8, 10, -1) and (10, 10, -3) behind the translation, to (-1, -8, -10) and (-3, -10, -10).
    CHECK(take_gl_calls() == first_arrays + R"(glEnable(GL_DEPTH_TEST)
glBlendEquation(GL_FUNC_REVERSE_SUBTRACT)
glBlendFunc(GL_SRC_ALPHA, GL_ONE)
glEnable(GL_CULL_FACE)
glLineWidth(2.5)
glActiveTexture(GL_TEXTURE0)
glBindTexture(GL_TEXTURE_2D, 7)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE)
glActiveTexture(GL_TEXTURE1)
glBindTexture(GL_TEXTURE_CUBE_MAP, 8)
glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE)
glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE)
glActiveTexture(GL_TEXTURE2)
glBindTexture(GL_TEXTURE_2D, 9)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT)
glLoadMatrixf([0 -1 0 0 0 0 -1 0 1 0 0 0 -10 -1 -2 1])
glUseProgram(50)
glUniformMatrix4fv(14, 1, GL_TRUE, [0 -1 0 0 1 0 0 0 0 0 1 0 0 1 0 1])
glUniform1f(21, 2)
glUniform1f(23, 12)
glUniform3fv(15, 1, [-1 -8 -10])
glUniform3fv(16, 1, [-3 -10 -10])
glVertexAttribPointer(1, 3, GL_FLOAT, GL_FALSE, 0, [1 2 3])
glEnableVertexAttribArray(1)
glVertexAttribPointer(2, 3, GL_FLOAT, GL_FALSE, 0, [0 0 1])
glEnableVertexAttribArray(2)
glVertexAttribPointer(3, 2, GL_FLOAT, GL_FALSE, 0, [1 0.5])
glEnableVertexAttribArray(3)
glUniformMatrix4fv(11, 1, GL_FALSE, [1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glUniformMatrix4fv(12, 1, GL_FALSE, [0 -1 0 0 0 0 -1 0 1 0 0 0 -10 -1 -2 1])
glUniformMatrix3fv(13, 1, GL_FALSE, [0 -1 0 0 0 -1 1 0 0])
glDrawElements(GL_LINES, 6, GL_UNSIGNED_SHORT, [0 1 1 2 2 0])
)");
    b.apply_glsl(m); // the same once more
    CHECK(take_gl_calls() == "\nglDrawElements(GL_LINES, 6, GL_UNSIGNED_SHORT, [0 1 1 2 2 0])\n");
}

// A program that reads no matrix of the mesh: what is left of a list is the material's.
static void forget_mesh_matrices(shader_program& program)
{
    program.projection_location = program.modelview_location = program.normal_matrix_location = -1;
}

TEST_CASE("of a program's uniforms only those are told that have changed")
{
    record_bench b;
    material_record& m = b.add_material();
    b.give_program(m);
    forget_mesh_matrices(*m.program);
    m.light1 = b.add_values({0, 0, 0, 0, 0, 0, 7, 8, 9});
    m.light2 = b.add_values({0, 0, 0, 0, 0, 0, 1, 2, 3});
    m.program->uniform_functions[0] = b.add_time();
    m.program->uniform_functions[1] = add_function(b.content, constant_function(4.0f));
    b.apply_glsl(m);
    CHECK(take_gl_calls({"glUniform1f", "glUniform3fv"})
        == "\nglUniform1f(21, 0)\nglUniform1f(22, 4)\nglUniform3fv(15, 1, [7 8 9])\nglUniform3fv(16, 1, [1 2 3])\n");
    b.time = 3;
    b.apply_glsl(m);
    CHECK(take_gl_calls() == "\nglUniform1f(21, 3)\n" + drawing);
    table_get(b.d.transform_table, m.light2)->values[6] = 5.0f;
    b.apply_glsl(m);
    CHECK(take_gl_calls() == "\nglUniform3fv(16, 1, [5 2 3])\n" + drawing);
    b.layer.position[0] = 1.0f; // the camera moves: both are seen elsewhere
    b.apply_glsl(m);
    CHECK(take_gl_calls() == R"(
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 1 0 0 1])
glUniform3fv(15, 1, [8 8 9])
glUniform3fv(16, 1, [6 2 3])
)" + drawing);
}

TEST_CASE("a light that comes or goes leaves the program's other light alone, and is told when it is back")
{
    record_bench b;
    material_record& m = b.add_material();
    b.give_program(m);
    const uint32_t light = b.add_values({0, 0, 0, 0, 0, 0, 7, 8, 9});
    m.light1 = light;
    b.apply_glsl(m);
    CHECK(take_gl_calls({"glUniform3fv"}) == "\nglUniform3fv(15, 1, [7 8 9])\n");
    m.light1 = 0;
    m.light2 = light;
    b.apply_glsl(m);
    CHECK(take_gl_calls({"glUniform3fv"}) == "\nglUniform3fv(16, 1, [7 8 9])\n");
    m.light1 = light;
    b.apply_glsl(m);
    CHECK(take_gl_calls({"glUniform3fv"}) == "\nglUniform3fv(15, 1, [7 8 9])\n");
}

TEST_CASE("each program keeps its own uniforms: another one in between makes nothing be told again")
{
    record_bench b;
    material_record& first = b.add_material();
    b.give_program(first, 50);
    forget_mesh_matrices(*first.program);
    first.program->uniform_functions[0] = add_function(b.content, constant_function(4.0f));
    material_record& second = b.add_material();
    b.give_program(second, 51);
    forget_mesh_matrices(*second.program);
    second.program->uniform_functions[0] = add_function(b.content, constant_function(5.0f));
    b.apply_glsl(first);
    take_gl_calls();
    b.apply_glsl(second);
    CHECK(take_gl_calls() == "\nglUseProgram(51)\nglUniform1f(21, 5)\n" + drawing);
    b.apply_glsl(first);
    CHECK(take_gl_calls() == "\nglUseProgram(50)\n" + drawing);
}

// Names 64 apart, and more of them than there was room for at first.
TEST_CASE("programs are told apart by their names, which may be any number")
{
    record_bench b;
    std::vector<material_record*> materials;
    for (uint32_t i = 0; i < 40; ++i) {
        material_record& m = b.add_material();
        b.give_program(m, 0x80000001u + 64 * i);
        m.program->uniform_functions[0] = add_function(b.content, constant_function(static_cast<float>(i)));
        materials.push_back(&m);
    }
    for (material_record* m : materials)
        b.apply_glsl(*m);
    take_gl_calls();
    for (material_record* m : materials)
        b.apply_glsl(*m);
    CHECK(take_gl_calls().find("glUniform1f") == std::string::npos); // each holds its own
}

TEST_CASE("each program is told the projection when it differs from what it was told before")
{
    record_bench b;
    material_record& first = b.add_material();
    b.give_program(first, 50);
    material_record& second = b.add_material();
    b.give_program(second, 51);
    first.program->modelview_location = second.program->modelview_location = -1;
    b.apply_glsl(first);
    take_gl_calls();
    b.layer.projection = projection_orthographic;
    b.apply_glsl(second);
    const std::string told = "\nglUniformMatrix4fv(11, 1, GL_FALSE, [2 0 0 0 0 -2 0 0 0 0 -1 0 -1 1 0 1])\n";
    CHECK(take_gl_calls({"glUniformMatrix4fv"}) == told);
    b.apply_glsl(first);
    CHECK(take_gl_calls({"glUniformMatrix4fv"}) == told);
    b.apply_glsl(first);
    b.apply_glsl(second);
    CHECK(take_gl_calls({"glUniformMatrix4fv"}) == "\n");
}

// ---- attributes -----------------------------------------------------------------

static std::string take_attribute_calls()
{
    return take_gl_calls(
        {"glVertexAttribPointer", "glEnableVertexAttribArray", "glDisableVertexAttribArray", "glVertexAttrib4f"});
}

TEST_CASE("an attribute's array is switched on once, and off when another program has none there")
{
    record_bench b;
    material_record& wide = b.add_material();
    b.give_program(wide, 50);
    material_record& narrow = b.add_material();
    b.give_program(narrow, 51);
    narrow.program->normal_location = narrow.program->texcoord_location[1] = -1;
    narrow.program->texcoord_location[2] = 7; // elsewhere
    b.apply_glsl(wide);
    take_gl_calls();
    b.apply_glsl(wide);
    CHECK(take_attribute_calls() == "\n");
    b.apply_glsl(narrow);
    CHECK(take_attribute_calls() == R"(
glVertexAttribPointer(7, 2, GL_FLOAT, GL_FALSE, 0, [3 0.5])
glEnableVertexAttribArray(7)
glDisableVertexAttribArray(2)
glDisableVertexAttribArray(4)
glDisableVertexAttribArray(5)
)");
    b.apply_glsl(wide); // the pointers are where they were
    CHECK(take_attribute_calls() == R"(
glEnableVertexAttribArray(2)
glEnableVertexAttribArray(4)
glEnableVertexAttribArray(5)
glDisableVertexAttribArray(7)
)");
}

TEST_CASE("a mesh without coordinates or normals has their arrays off, and (0, 0) for coordinates")
{
    record_bench b;
    uint32_t material = 0;
    b.give_program(b.add_material(&material));
    const uint32_t bare_mesh = b.add_triangle(0);
    b.arrays(bare_mesh).normals = nullptr;
    b.apply_glsl(*table_get(b.d.material_table, material));
    take_gl_calls();
    b.draw(b.add_scene({b.object(object_model, bare_mesh, material)}), true);
    CHECK(take_gl_calls() == R"(
glDisableClientState(GL_NORMAL_ARRAY)
glVertexPointer(3, GL_FLOAT, 0, [1 2 3])
glVertexAttribPointer(1, 3, GL_FLOAT, GL_FALSE, 0, [1 2 3])
glDisableVertexAttribArray(2)
glDisableVertexAttribArray(3)
glDisableVertexAttribArray(4)
glDisableVertexAttribArray(5)
glVertexAttrib4f(3, 0, 0, 0, 1)
glVertexAttrib4f(4, 0, 0, 0, 1)
glVertexAttrib4f(5, 0, 0, 0, 1)
)" + drawing);
}

// What is current after a draw with an array is the driver's own affair, as on the fixed path.
TEST_CASE("a mesh without coordinates has (0, 0) for each attribute that reads them, told anew behind an array")
{
    record_bench b;
    uint32_t material = 0;
    b.give_program(b.add_material(&material));
    const uint32_t bare = b.add_scene({b.object(object_model, b.add_triangle(0), material)});
    const uint32_t whole = b.add_scene({b.object(object_model, b.add_triangle(1), material)});
    const auto told = [&b](uint32_t scene) {
        b.draw(scene, true);
        return take_gl_calls({"glVertexAttrib4f"});
    };
    const std::string origins
        = "\nglVertexAttrib4f(3, 0, 0, 0, 1)\nglVertexAttrib4f(4, 0, 0, 0, 1)\nglVertexAttrib4f(5, 0, 0, 0, 1)\n";
    CHECK(told(bare) == origins);
    CHECK(told(bare) == "\n");
    CHECK(told(whole) == "\n");
    CHECK(told(bare) == origins);
}

TEST_CASE("the texture matrix is uploaded only for units that turn or reflect, where the program reads it")
{
    record_bench b;
    material_record& m = b.add_material();
    b.give_program(m);
    forget_mesh_matrices(*m.program);
    m.texture[0] = m.texture[1] = b.add_image(7);
    m.texture[2] = b.add_cube(8); // a cube map by itself does not reflect
    m.cgenmode[0] = coordinates_sphere;
    b.apply_glsl(m);
    CHECK(take_gl_calls({"glUniformMatrix4fv"}) == "\n");
    m.rotation[1] = 1;
    b.apply_glsl(m);
    CHECK(take_gl_calls({"glUniformMatrix4fv"})
        == "\nglUniformMatrix4fv(14, 1, GL_TRUE, [1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])\n");
    m.program->texture_matrix_location = -1;
    b.apply_glsl(m);
    CHECK(take_gl_calls({"glUniformMatrix4fv"}) == "\n");
}

TEST_CASE("a program that begins to turn its picture is told the matrix, though another one's stood already")
{
    record_bench b;
    b.camera[1] = 90.0f;
    material_record& turning = b.add_material();
    b.give_program(turning, 50);
    forget_mesh_matrices(*turning.program);
    turning.texture[0] = b.add_image(7);
    turning.rotation[0] = 1;
    material_record& still = b.add_material();
    b.give_program(still, 51);
    forget_mesh_matrices(*still.program);
    still.texture[0] = turning.texture[0];
    b.apply_glsl(turning);
    b.apply_glsl(still);
    take_gl_calls();
    still.rotation[0] = 1;
    b.apply_glsl(still);
    CHECK(take_gl_calls({"glUniformMatrix4fv"})
        == "\nglUniformMatrix4fv(14, 1, GL_TRUE, [0 -1 0 0 1 0 0 0 0 0 1 0 0 1 0 1])\n");
    b.apply_glsl(still);
    CHECK(take_gl_calls() == "\n" + drawing);
}

TEST_CASE("a material's own program gets the texture matrix as it lies, a generated one by rows")
{
    record_bench b;
    material_record& m = b.add_material();
    b.give_program(m);
    forget_mesh_matrices(*m.program);
    m.texture[0] = b.add_image(7);
    m.rotation[0] = 1;
    m.enable_glsl = 1;
    m.custom_vertex_shader = ::strdup("a");
    m.custom_fragment_shader = ::strdup("b");
    b.apply_glsl(m);
    CHECK(take_gl_calls({"glUniformMatrix4fv"})
        == "\nglUniformMatrix4fv(14, 1, GL_FALSE, [1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])\n");
    m.enable_glsl = 0;
    b.camera[1] = 90.0f;
    b.apply_glsl(m);
    CHECK(take_gl_calls({"glUniformMatrix4fv"})
        == "\nglUniformMatrix4fv(14, 1, GL_TRUE, [0 -1 0 0 1 0 0 0 0 0 1 0 0 1 0 1])\n");
}

TEST_CASE("a turned picture's matrix is not the reflection's, even with reflected coordinates")
{
    record_bench b;
    b.camera[1] = 90.0f;
    material_record& m = b.add_material();
    b.give_program(m);
    forget_mesh_matrices(*m.program);
    m.texture[0] = b.add_cube(7);
    m.cgenmode[0] = coordinates_cube;
    m.rotation[0] = 1;
    b.apply_glsl(m);
    CHECK(take_gl_calls({"glUniformMatrix4fv"})
        == "\nglUniformMatrix4fv(14, 1, GL_TRUE, [0 -1 0 0 1 0 0 0 0 0 1 0 0 1 0 1])\n");
}

TEST_CASE("what a program does not read is not uploaded")
{
    record_bench b;
    material_record& m = b.add_material();
    b.give_program(m);
    m.light1 = m.light2 = b.add_values({0, 0, 0, 0, 0, 0, 7, 8, 9});
    m.program->light_position_location[0] = -1;
    m.program->uniform_functions[0] = m.program->uniform_functions[1] = b.add_time();
    m.program->uniform_locations[0] = -1;
    m.program->texcoord_location[0] = m.program->texcoord_location[1] = -1;
    b.apply_glsl(m);
    CHECK(take_gl_calls({"glUniform1f", "glUniform3fv", "glVertexAttribPointer"}) == R"(
glUniform1f(22, 0)
glUniform3fv(16, 1, [7 8 9])
glVertexAttribPointer(1, 3, GL_FLOAT, GL_FALSE, 0, [1 2 3])
glVertexAttribPointer(2, 3, GL_FLOAT, GL_FALSE, 0, [0 0 1])
glVertexAttribPointer(5, 2, GL_FLOAT, GL_FALSE, 0, [3 0.5])
)");
}

TEST_CASE("location 0 is a location")
{
    record_bench b;
    uint32_t handle = 0;
    material_record& m = b.add_material(&handle);
    b.give_program(m);
    m.rotation[0] = 1;
    m.texture[0] = b.add_image(7);
    m.light1 = b.add_values({0, 0, 0, 0, 0, 0, 7, 8, 9});
    shader_program& p = *m.program;
    p.uniform_functions[0] = b.add_time();
    p.position_location = p.normal_location = p.texcoord_location[0] = 0;
    p.texcoord_location[1] = p.texcoord_location[2] = -1;
    p.projection_location = p.modelview_location = p.normal_matrix_location = p.texture_matrix_location = 0;
    p.light_position_location[0] = p.uniform_locations[0] = 0;
    b.draw(b.add_scene({b.object(object_model, b.add_triangle(1), handle)}), true);
    CHECK(take_gl_calls(
              {"glVertexAttribPointer", "glUniform1f", "glUniform3fv", "glUniformMatrix3fv", "glUniformMatrix4fv"})
        == R"(
glUniformMatrix4fv(0, 1, GL_TRUE, [1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glUniform1f(0, 0)
glUniform3fv(0, 1, [7 8 9])
glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, 0, [1 2 3])
glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, 0, [0 0 1])
glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, 0, [1 0.5])
glUniformMatrix4fv(0, 1, GL_FALSE, [1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glUniformMatrix4fv(0, 1, GL_FALSE, [1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glUniformMatrix3fv(0, 1, GL_FALSE, [1 0 0 0 1 0 0 0 1])
)");
}

TEST_CASE("on the shader path a second light needs no first")
{
    record_bench b;
    material_record& m = b.add_material();
    b.give_program(m);
    m.light2 = b.add_values({0, 0, 0, 0, 0, 0, 7, 8, 9});
    b.apply_glsl(m);
    CHECK(take_gl_calls({"glUniform3fv"}) == "\nglUniform3fv(16, 1, [7 8 9])\n");
}

// Nothing is drawn with it, so nothing is told; but it is the material that stands.
TEST_CASE("of a material whose program did not build nothing is told until another one draws")
{
    record_bench b;
    material_record& broken = b.add_material();
    b.give_program(broken, 0);
    broken.blend_function = 1;
    broken.texture[0] = b.add_image(7);
    broken.light1 = b.add_values({});
    broken.program->uniform_functions[0] = b.add_time();
    b.apply_glsl(broken);
    CHECK(take_gl_calls() == "\n");
    CHECK(b.r.standing.program.status == program_failed);
    b.draw(b.add_scene({b.bare_object(b.add_triangle(1))}), true); // nor is a mesh without a material drawn
    CHECK(take_gl_calls() == "\n");
    material_record& m = b.add_material();
    b.give_program(m);
    forget_mesh_matrices(*m.program);
    m.blend_function = 9; // beyond the catalogue: the other's stays
    b.apply_glsl(m);
    CHECK(take_gl_calls({"glUseProgram", "glBlendFunc", "glBindTexture", "glUniform1f", "glUniform3fv"})
        == "\nglBlendFunc(GL_ONE, GL_ONE)\nglUseProgram(50)\n");
}

TEST_CASE("without a material the program in use is fed with the mesh at hand, and keeps its uniforms")
{
    record_bench b;
    material_record& m = b.add_material();
    b.give_program(m);
    m.light1 = b.add_values({0, 0, 0, 0, 0, 0, 7, 8, 9});
    m.program->uniform_functions[0] = b.add_time();
    b.apply_glsl(m);
    take_gl_calls();
    b.time = 5;
    b.layer.position[0] = 1.0f; // uniforms stay those of the material's moment and camera
    b.draw(b.add_scene({b.bare_object(b.add_triangle(1))}), true);
    CHECK(take_gl_calls() == R"(
glNormalPointer(GL_FLOAT, 0, [0 0 1])
glVertexPointer(3, GL_FLOAT, 0, [1 2 3])
glEnable(GL_DEPTH_TEST)
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 1 0 0 1])
glVertexAttribPointer(1, 3, GL_FLOAT, GL_FALSE, 0, [1 2 3])
glVertexAttribPointer(2, 3, GL_FLOAT, GL_FALSE, 0, [0 0 1])
glVertexAttribPointer(3, 2, GL_FLOAT, GL_FALSE, 0, [1 0.5])
glVertexAttribPointer(4, 2, GL_FLOAT, GL_FALSE, 0, [1 0.5])
glVertexAttribPointer(5, 2, GL_FLOAT, GL_FALSE, 0, [1 0.5])
glUniformMatrix4fv(12, 1, GL_FALSE, [1 0 0 0 0 1 0 0 0 0 1 0 1 0 0 1])
)" + drawing);
}

TEST_CASE("coordinates in a buffer are read from its start, beside those in memory")
{
    record_bench b;
    b.caps.vbo = 1;
    uint32_t material = 0;
    b.give_program(b.add_material(&material));
    const uint32_t mesh = b.add_triangle(3);
    b.arrays(mesh).texcoord_buffer[0] = 101;
    b.arrays(mesh).texcoord_buffer[2] = 103;
    b.draw(b.add_scene({b.object(object_model, mesh, material)}), true);
    CHECK(take_gl_calls({"glBindBuffer", "glVertexAttribPointer"}) == R"(
glVertexAttribPointer(1, 3, GL_FLOAT, GL_FALSE, 0, [1 2 3])
glVertexAttribPointer(2, 3, GL_FLOAT, GL_FALSE, 0, [0 0 1])
glBindBuffer(GL_ARRAY_BUFFER, 101)
glVertexAttribPointer(3, 2, GL_FLOAT, GL_FALSE, 0, 0)
glBindBuffer(GL_ARRAY_BUFFER, 0)
glVertexAttribPointer(4, 2, GL_FLOAT, GL_FALSE, 0, [2 0.5])
glBindBuffer(GL_ARRAY_BUFFER, 103)
glVertexAttribPointer(5, 2, GL_FLOAT, GL_FALSE, 0, 0)
)");
}

// ---- building -------------------------------------------------------------------

// A material with a program record of its own texts.
static material_record& add_program_texts(record_bench& b, const char* vertex, const char* fragment)
{
    material_record& m = b.add_material();
    m.program = new_shader_program();
    m.program->vertex_source = ::strdup(vertex);
    m.program->vertex_length = static_cast<int32_t>(std::strlen(vertex));
    m.program->fragment_source = ::strdup(fragment);
    m.program->fragment_length = static_cast<int32_t>(std::strlen(fragment));
    return m;
}

TEST_CASE("a program is compiled, linked and asked for its locations; none stays current")
{
    record_bench b;
    b.answers.locations = {{"Projection", 31}, {"Modelview", 32}, {"Position", 7}, {"TexCoordIn1", 8},
        {"TexCoordIn2", 9}, {"TexCoordIn3", 10}, {"Texture0", 33}, {"Texture1", 34}, {"Texture2", 35},
        {"NormalMatrix", 36}, {"Normal", 6}, {"TextureMatrix", 37}, {"LightPosition1", 38}, {"LightPosition2", 39},
        {"u1", 41}, {"u3", 43}};
    material_record& m = add_program_texts(b, "vertex text", "fragment");
    m.cgenmode[1] = coordinates_sphere;
    m.program->uniform_functions[0] = m.program->uniform_functions[2] = 5;
    m.program->uniform_functions[23] = 5;
    const shader_unit units[texture_unit_count] = {{true, false}, {true, false}, {true, true}};
    build_shader(m, units);
    CHECK(take_gl_calls() == R"(
glCreateShader(GL_VERTEX_SHADER) = 201
glShaderSource(201, 1, "vertex text")
glCompileShader(201)
glGetShaderInfoLog(201, 251)
glCreateShader(GL_FRAGMENT_SHADER) = 202
glShaderSource(202, 1, "fragment")
glCompileShader(202)
glGetShaderInfoLog(202, 251)
glCreateProgram() = 301
glAttachShader(301, 201)
glAttachShader(301, 202)
glLinkProgram(301)
glGetProgramiv(301, GL_LINK_STATUS) = 1
glUseProgram(301)
glGetUniformLocation(301, Projection) = 31
glGetUniformLocation(301, Modelview) = 32
glGetAttribLocation(301, Position) = 7
glGetAttribLocation(301, TexCoordIn1) = 8
glGetUniformLocation(301, Texture0) = 33
glUniform1i(33, 0)
glGetUniformLocation(301, Texture1) = 34
glUniform1i(34, 1)
glGetAttribLocation(301, TexCoordIn3) = 10
glGetUniformLocation(301, Texture2) = 35
glUniform1i(35, 2)
glGetUniformLocation(301, NormalMatrix) = 36
glGetAttribLocation(301, Normal) = 6
glGetUniformLocation(301, TextureMatrix) = 37
glGetUniformLocation(301, LightPosition1) = 38
glGetUniformLocation(301, LightPosition2) = 39
glGetUniformLocation(301, u1) = 41
glGetUniformLocation(301, u3) = 43
glGetUniformLocation(301, u24) = -1
glUseProgram(0)
)");
    const shader_program& p = *m.program;
    CHECK(p.projection_location == 31);
    CHECK(p.modelview_location == 32);
    CHECK(p.position_location == 7);
    CHECK(p.texcoord_location[0] == 8);
    CHECK(p.texcoord_location[1] == -1);
    CHECK(p.texcoord_location[2] == 10);
    CHECK(p.normal_matrix_location == 36);
    CHECK(p.normal_location == 6);
    CHECK(p.texture_matrix_location == 37);
    CHECK(p.light_position_location[0] == 38);
    CHECK(p.light_position_location[1] == 39);
    CHECK(p.uniform_locations[0] == 41);
    CHECK(p.uniform_locations[1] == -1);
    CHECK(p.uniform_locations[2] == 43);
    CHECK(p.uniform_locations[23] == -1);
}

TEST_CASE("a program that is built again keeps its names and lets go of its old shaders first")
{
    record_bench b;
    material_record& m = add_program_texts(b, "a", "b");
    const shader_unit units[texture_unit_count] = {};
    build_shader(m, units);
    take_gl_calls();
    build_shader(m, units);
    CHECK(
        take_gl_calls({"glCreateShader", "glCreateProgram", "glDetachShader", "glAttachShader", "glLinkProgram"}) == R"(
glDetachShader(301, 201)
glDetachShader(301, 202)
glAttachShader(301, 201)
glAttachShader(301, 202)
glLinkProgram(301)
)");
}

TEST_CASE("each stage's log is kept to 250 characters behind its name, anew for every build")
{
    record_bench b;
    b.answers.shader_log = std::string(300, 'x');
    material_record& m = add_program_texts(b, "a", "b");
    const shader_unit units[texture_unit_count] = {};
    build_shader(m, units);
    CHECK(std::string(m.program->info_log) == "VS:" + std::string(250, 'x') + "\nFS:" + std::string(250, 'x'));
    b.answers.shader_log = "short";
    build_shader(m, units);
    CHECK(std::string(m.program->info_log) == "VS:short\nFS:short");
}

// Every location of a program, in the record's order.
static std::vector<int32_t> locations_of(const shader_program& p)
{
    std::vector<int32_t> all = {p.projection_location, p.modelview_location, p.position_location,
        p.normal_matrix_location, p.normal_location, p.texture_matrix_location};
    all.insert(all.end(), p.texcoord_location, p.texcoord_location + texture_unit_count);
    all.insert(all.end(), p.light_position_location, p.light_position_location + 2);
    all.insert(all.end(), p.uniform_locations, p.uniform_locations + user_uniform_count);
    return all;
}

TEST_CASE("a program that does not link is deleted and has no locations; the next build makes a new one")
{
    record_bench b;
    material_record& m = add_program_texts(b, "a", "b");
    const shader_unit units[texture_unit_count] = {};
    build_shader(m, units);
    b.answers.links = false;
    shader_program& p = *m.program;
    p.projection_location = p.modelview_location = p.position_location = p.normal_matrix_location = 5;
    p.normal_location = p.texture_matrix_location = 5;
    std::fill_n(p.texcoord_location, texture_unit_count, 5);
    std::fill_n(p.light_position_location, 2, 5);
    std::fill_n(p.uniform_locations, user_uniform_count, 5);
    build_shader(m, units);
    CHECK(p.program == 0);
    CHECK(locations_of(p) == std::vector<int32_t>(11 + user_uniform_count, -1));
    const std::string calls = take_gl_calls({"glDeleteProgram", "glUseProgram", "glCreateProgram"});
    CHECK(calls == "\nglCreateProgram() = 301\nglUseProgram(301)\nglUseProgram(0)\nglDeleteProgram(301)\n");
    b.answers.links = true;
    build_shader(m, units);
    CHECK(take_gl_calls({"glCreateShader", "glCreateProgram", "glDetachShader"}) == "\nglCreateProgram() = 302\n");
    CHECK(p.program == 302);
}

TEST_CASE("a program's objects are deleted once, and its locations forgotten")
{
    record_bench b;
    b.answers.locations = {{"Position", 7}, {"Projection", 8}};
    material_record& m = add_program_texts(b, "a", "b");
    const shader_unit units[texture_unit_count] = {};
    build_shader(m, units);
    take_gl_calls();
    release_shader_gl(*m.program);
    CHECK(take_gl_calls() == "\nglDeleteProgram(301)\nglDeleteShader(201)\nglDeleteShader(202)\n");
    CHECK(locations_of(*m.program) == std::vector<int32_t>(11 + user_uniform_count, -1));
    release_shader_gl(*m.program);
    CHECK(take_gl_calls() == "\n");
}

TEST_CASE("without shader entry points nothing is built")
{
    record_bench b;
    material_record& m = add_program_texts(b, "a", "b");
    glCreateShader = nullptr;
    const shader_unit units[texture_unit_count] = {};
    build_shader(m, units);
    release_shader_gl(*m.program);
    CHECK(take_gl_calls() == "\n");
    CHECK(m.program->program == 0);
}
