// The calls that drawing a scene is: arrays and buffers, copies, wireframes, texts.
#include "record_bench.h"

#include "effects/manipulator.h"
#include "effects/mesh_effect.h"
#include "render/mesh_buffers_gl.h"

#include <GL/glew.h>

#include <doctest/doctest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

// The part of a list from the first `from` on, up to the first `to` behind it.
static std::string part(const std::string& calls, const std::string& from, const std::string& to)
{
    const size_t begin = calls.find("\n" + from);
    return begin == std::string::npos ? "nothing" : calls.substr(begin, calls.find("\n" + to, begin) + 1 - begin);
}

// ---- client arrays, fixed path --------------------------------------------------

TEST_CASE("a model is drawn from its own arrays: projection, vertices, material, coordinates, then its copy")
{
    record_bench b;
    b.layer.position[2] = -5.0f;
    uint32_t material = 0;
    material_record& m = b.add_material(&material);
    m.texture[0] = b.add_image(7);
    scene_object object = b.object(object_model, b.add_triangle(), material);
    object.values[0].value = 10.0f;
    object.values[6].value = 2.0f;
    const uint32_t scene = b.add_scene({object});
    b.draw(scene, false);
    const std::string calls = take_gl_calls();
    CHECK(calls.starts_with(R"(
glMatrixMode(GL_PROJECTION)
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glMatrixMode(GL_MODELVIEW)
glEnableClientState(GL_NORMAL_ARRAY)
glNormalPointer(GL_FLOAT, 0, [0 0 1])
glEnableClientState(GL_VERTEX_ARRAY)
glVertexPointer(3, GL_FLOAT, 0, [1 2 3])
glDisable(GL_CULL_FACE)
)"));
    CHECK(calls.ends_with(R"(
glClientActiveTexture(GL_TEXTURE0)
glEnableClientState(GL_TEXTURE_COORD_ARRAY)
glTexCoordPointer(2, GL_FLOAT, 0, [1 0.5])
glClientActiveTexture(GL_TEXTURE1)
glDisableClientState(GL_TEXTURE_COORD_ARRAY)
glLoadMatrixf([2 0 0 0 0 1 0 0 0 0 1 0 10 0 -5 1])
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
)"));
    b.draw(scene, false); // the same once more: all of it stands
    CHECK(take_gl_calls() == "\nglDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])\n");
}

TEST_CASE("a second mesh of the same material and another place is its arrays, its matrix and its drawing")
{
    record_bench b;
    uint32_t material = 0;
    material_record& m = b.add_material(&material);
    m.texture[0] = b.add_image(7);
    m.light1 = b.add_values({0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f, 7, 8, 9});
    scene_object second = b.object(object_model, b.add_triangle(2), material);
    second.values[0].value = 10.0f;
    b.draw(b.add_scene({b.object(object_model, b.add_triangle(1), material), second}), false);
    const std::string calls = take_gl_calls();
    CHECK(calls.substr(calls.find("glDrawElements")) == R"(glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
glNormalPointer(GL_FLOAT, 0, [0 0 1])
glVertexPointer(3, GL_FLOAT, 0, [1 2 3])
glClientActiveTexture(GL_TEXTURE0)
glTexCoordPointer(2, GL_FLOAT, 0, [1 0.5])
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 10 0 0 1])
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
)");
}

TEST_CASE("a wireframe on the fixed path is a polygon mode: it draws triangles")
{
    record_bench b;
    uint32_t material = 0;
    b.add_material(&material).wireframe = 1;
    const uint32_t mesh = b.add_triangle();
    b.draw(b.add_scene({b.object(object_model, mesh, material)}), false);
    CHECK(take_gl_calls({"glDrawElements"}) == "\nglDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])\n");
    CHECK(b.arrays(mesh).line_indices == nullptr);
}

TEST_CASE("with two coordinate sets unit 2 takes the second and unit 3 the first")
{
    record_bench b;
    uint32_t material = 0;
    material_record& m = b.add_material(&material);
    m.texture[0] = m.texture[1] = m.texture[2] = b.add_image(7);
    constexpr const char* expected[3] = {R"(
glTexCoordPointer(2, GL_FLOAT, 0, [1 0.5])
glTexCoordPointer(2, GL_FLOAT, 0, [1 0.5])
glTexCoordPointer(2, GL_FLOAT, 0, [1 0.5])
)",
        R"(
glTexCoordPointer(2, GL_FLOAT, 0, [1 0.5])
glTexCoordPointer(2, GL_FLOAT, 0, [2 0.5])
glTexCoordPointer(2, GL_FLOAT, 0, [1 0.5])
)",
        R"(
glTexCoordPointer(2, GL_FLOAT, 0, [1 0.5])
glTexCoordPointer(2, GL_FLOAT, 0, [2 0.5])
glTexCoordPointer(2, GL_FLOAT, 0, [3 0.5])
)"};
    for (uint32_t sets = 1; sets <= 3; ++sets) {
        b.draw(b.add_scene({b.object(object_model, b.add_triangle(sets), material)}), false);
        CHECK(take_gl_calls({"glTexCoordPointer"}) == expected[sets - 1]);
    }
}

// ---- copies ---------------------------------------------------------------------

// "X Multiplier": so many copies, each a step of (10, 0, 0) further.
static manipulator_record multiplier(float copies)
{
    manipulator_record m = {};
    m.type = manipulator_x_multiplier;
    m.params[0].value = copies;
    m.params[1].value = 10.0f;
    return m;
}

TEST_CASE("one material serves all copies, each under a matrix of its own")
{
    record_bench b;
    uint32_t material = 0;
    b.add_material(&material);
    scene_object object = b.object(object_model, b.add_triangle(), material);
    object.manipulator_count = 1;
    object.manipulators[0] = multiplier(3.0f);
    b.draw(b.add_scene({object}), false);
    CHECK(take_gl_calls({"glPolygonMode", "glLoadMatrixf", "glDrawElements"}) == R"(
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glPolygonMode(GL_FRONT_AND_BACK, GL_FILL)
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 10 0 0 1])
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 20 0 0 1])
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
)");
}

// Position, then back toward the camera about y, x, z, then the object's own x, y, z, then scale.
TEST_CASE("a copy is placed, turned to the camera, turned by itself, and scaled, in this order")
{
    record_bench b;
    b.camera[0] = 90.0f;
    b.camera[1] = 90.0f;
    uint32_t material = 0;
    b.add_material(&material);
    scene_object object = b.object(object_model, b.add_triangle(), material);
    for (uint32_t i = 0; i < 3; ++i)
        object.values[i].value = static_cast<float>(i + 1);
    object.values[6].value = 2.0f;
    object.values[7].value = 3.0f;
    object.values[8].value = 4.0f;
    const uint32_t scene = b.add_scene({object});
    table_get(b.d.scene_table, scene)->camera_facing[0] = 128;
    b.draw(scene, false);
    // Facing the camera undoes its turn: what is left is the scale, at (1, 2, 3) as the camera
    // sees it. Ry(90): x -> -z, z -> x takes it to (3, 2, -1), Rx(90): y -> z, z -> -y to (3, 1, 2).
    CHECK(take_gl_calls({"glLoadMatrixf"}) == R"(
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glLoadMatrixf([2 0 0 0 0 3 0 0 0 0 4 0 3 1 2 1])
)"); // the first is the projection

    b.camera[2] = 90.0f; // then Rz(90): x -> y, y -> -x
    b.draw(scene, false);
    CHECK(take_gl_calls({"glLoadMatrixf"}) == "\nglLoadMatrixf([2 0 0 0 0 3 0 0 0 0 4 0 -1 3 2 1])\n");

    b.camera[0] = b.camera[1] = 0.0f;                         // Rz alone takes (1, 2, 3) to (-2, 1, 3)
    table_get(b.d.scene_table, scene)->camera_facing[0] = 64; // another object's bit
    scene_object& placed = table_get(b.d.scene_table, scene)->objects[0];
    placed.values[3].value = 90.0f; // Rx(90): y -> z, z -> -y
    placed.values[4].value = 90.0f; // Ry(90): x -> -z, z -> x
    b.draw(scene, false);
    // Rx Ry: x -> Rx(-z) = y, y -> Rx(y) = z, z -> Rx(x) = x; then Rz: x -> -x, y -> z, z -> y.
    CHECK(take_gl_calls({"glLoadMatrixf"}) == "\nglLoadMatrixf([-2 0 0 0 0 0 3 0 0 4 0 0 -2 1 3 1])\n");

    placed.values[4].value = 0.0f;
    placed.values[5].value = 90.0f; // Rx Rz: x -> z, y -> -x, z -> -y; then Rz: x -> z, y -> -y, z -> x
    b.draw(scene, false);
    CHECK(take_gl_calls({"glLoadMatrixf"}) == "\nglLoadMatrixf([0 0 2 0 0 -3 0 0 4 0 0 0 -2 1 3 1])\n");
}

// ---- shader path ----------------------------------------------------------------

TEST_CASE("on the shader path matrices are uniforms: the projection once, the others for every copy")
{
    record_bench b;
    b.layer.projection = projection_orthographic;
    uint32_t material = 0;
    b.give_program(b.add_material(&material));
    scene_object object = b.object(object_model, b.add_triangle(1), material);
    object.values[0].value = 5.0f;
    object.values[6].value = object.values[7].value = 2.0f;
    object.values[8].value = 4.0f;
    b.draw(b.add_scene({object}), true);
    CHECK(take_gl_calls() == R"(
glMatrixMode(GL_PROJECTION)
glLoadMatrixf([2 0 0 0 0 -2 0 0 0 0 -1 0 -1 1 0 1])
glMatrixMode(GL_MODELVIEW)
glEnableClientState(GL_NORMAL_ARRAY)
glNormalPointer(GL_FLOAT, 0, [0 0 1])
glEnableClientState(GL_VERTEX_ARRAY)
glVertexPointer(3, GL_FLOAT, 0, [1 2 3])
glDisable(GL_DEPTH_TEST)
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
glVertexAttribPointer(4, 2, GL_FLOAT, GL_FALSE, 0, [1 0.5])
glEnableVertexAttribArray(4)
glVertexAttribPointer(5, 2, GL_FLOAT, GL_FALSE, 0, [1 0.5])
glEnableVertexAttribArray(5)
glUniformMatrix4fv(11, 1, GL_FALSE, [2 0 0 0 0 -2 0 0 0 0 -1 0 -1 1 0 1])
glUniformMatrix4fv(12, 1, GL_FALSE, [2 0 0 0 0 2 0 0 0 0 4 0 5 0 0 1])
glUniformMatrix3fv(13, 1, GL_FALSE, [0.5 0 0 0 0.5 0 0 0 0.25])
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
)");
}

TEST_CASE("on the shader path every copy starts from the camera, which stays the fixed pipeline's matrix")
{
    record_bench b;
    uint32_t material = 0;
    b.give_program(b.add_material(&material));
    scene_object object = b.object(object_model, b.add_triangle(1), material);
    object.manipulator_count = 1;
    object.manipulators[0] = multiplier(2.0f);
    b.layer.position[2] = -5.0f;
    b.draw(b.add_scene({object}), true);
    CHECK(take_gl_calls({"glUniformMatrix4fv", "glLoadMatrixf"}) == R"(
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 -5 1])
glUniformMatrix4fv(11, 1, GL_FALSE, [1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glUniformMatrix4fv(12, 1, GL_FALSE, [1 0 0 0 0 1 0 0 0 0 1 0 0 0 -5 1])
glUniformMatrix4fv(12, 1, GL_FALSE, [1 0 0 0 0 1 0 0 0 0 1 0 10 0 -5 1])
)");
}

// The inverse of a turned and stretched matrix, by rows: read by columns it is the inverse transpose.
TEST_CASE("normals are turned by the inverse transpose")
{
    record_bench b;
    uint32_t material = 0;
    b.give_program(b.add_material(&material));
    scene_object object = b.object(object_model, b.add_triangle(1), material);
    object.values[5].value = 90.0f; // x -> y, y -> -x
    object.values[6].value = 2.0f;  // M: x -> 2 y, y -> -4 x
    object.values[7].value = 4.0f;
    b.draw(b.add_scene({object}), true);
    // The inverse takes y to x / 2 and x to -y / 4: its rows are (0, 1/2, 0), (-1/4, 0, 0), (0, 0, 1).
    CHECK(
        take_gl_calls({"glUniformMatrix3fv"}) == "\nglUniformMatrix3fv(13, 1, GL_FALSE, [0 0.5 0 -0.25 0 0 0 0 1])\n");
}

TEST_CASE("matrices that a program does not read are not uploaded")
{
    record_bench b;
    uint32_t material = 0;
    material_record& m = b.add_material(&material);
    b.give_program(m);
    const uint32_t scene = b.add_scene({b.object(object_model, b.add_triangle(1), material)});
    m.program->projection_location = -1;
    b.draw(scene, true);
    CHECK(take_gl_calls({"glUniformMatrix4fv"})
        == "\nglUniformMatrix4fv(12, 1, GL_FALSE, [1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])\n");
    m.program->modelview_location = m.program->normal_matrix_location = -1;
    b.draw(scene, true);
    CHECK(take_gl_calls({"glUniformMatrix4fv", "glUniformMatrix3fv"}) == "\n");
}

TEST_CASE("a wireframe on the shader path draws lines, whose indices are made once")
{
    record_bench b;
    uint32_t material = 0;
    material_record& m = b.add_material(&material);
    b.give_program(m);
    m.wireframe = 1;
    const uint32_t mesh = b.add_triangle(1);
    const uint32_t scene = b.add_scene({b.object(object_model, mesh, material)});
    b.draw(scene, true);
    CHECK(take_gl_calls({"glDrawElements"}) == "\nglDrawElements(GL_LINES, 6, GL_UNSIGNED_SHORT, [0 1 1 2 2 0])\n");
    const uint16_t* made = b.arrays(mesh).line_indices;
    b.draw(scene, true);
    CHECK(b.arrays(mesh).line_indices == made);
}

TEST_CASE("with a program that did not build nothing is drawn")
{
    record_bench b;
    uint32_t material = 0;
    b.give_program(b.add_material(&material), 0);
    b.draw(b.add_scene({b.object(object_model, b.add_triangle(1), material)}), true);
    CHECK(take_gl_calls() == "\n");
}

// ---- buffers --------------------------------------------------------------------

TEST_CASE("a mesh that never changes gets a buffer for each of its arrays, and loses them once")
{
    record_bench b;
    mesh_arrays& mesh = b.arrays(b.add_triangle(2));
    create_mesh_buffers_gl(mesh);
    CHECK(take_gl_calls() == R"(
glGenBuffers(1) = 101
glBindBuffer(GL_ARRAY_BUFFER, 101)
glBufferData(GL_ARRAY_BUFFER, 36, [1 2 3 4 2 3 1 5 3], GL_STATIC_DRAW)
glBindBuffer(GL_ARRAY_BUFFER, 0)
glGenBuffers(1) = 102
glBindBuffer(GL_ARRAY_BUFFER, 102)
glBufferData(GL_ARRAY_BUFFER, 36, [0 0 1 0 1 0 1 0 0], GL_STATIC_DRAW)
glBindBuffer(GL_ARRAY_BUFFER, 0)
glGenBuffers(1) = 103
glBindBuffer(GL_ARRAY_BUFFER, 103)
glBufferData(GL_ARRAY_BUFFER, 24, [1 0.5 0 0.5 0 0], GL_STATIC_DRAW)
glBindBuffer(GL_ARRAY_BUFFER, 0)
glGenBuffers(1) = 104
glBindBuffer(GL_ARRAY_BUFFER, 104)
glBufferData(GL_ARRAY_BUFFER, 24, [2 0.5 0 0.5 0 0], GL_STATIC_DRAW)
glBindBuffer(GL_ARRAY_BUFFER, 0)
glGenBuffers(1) = 105
glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 105)
glBufferData(GL_ELEMENT_ARRAY_BUFFER, 6, [0 1 2], GL_STATIC_DRAW)
glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0)
)");
    create_mesh_buffers_gl(mesh);
    CHECK(take_gl_calls() == "\n");
    mesh.line_index_buffer = 106;
    release_mesh_buffers_gl(mesh);
    CHECK(take_gl_calls() == R"(
glDeleteBuffers(1, [101])
glDeleteBuffers(1, [102])
glDeleteBuffers(1, [103])
glDeleteBuffers(1, [104])
glDeleteBuffers(1, [105])
glDeleteBuffers(1, [106])
)");
    release_mesh_buffers_gl(mesh);
    CHECK(take_gl_calls() == "\n");
    mesh.index_buffer = 105;
    glGenBuffers = nullptr; // a card without buffers
    glDeleteBuffers = nullptr;
    create_mesh_buffers_gl(mesh);
    release_mesh_buffers_gl(mesh);
    CHECK(take_gl_calls() == "\n");
}

// What says where vertices, coordinates and indices come from.
static std::string take_sources()
{
    return take_gl_calls({"glGenBuffers", "glBindBuffer", "glBufferData", "glVertexPointer", "glNormalPointer",
        "glTexCoordPointer", "glVertexAttribPointer", "glDrawElements"});
}

// The loading screen does without buffers where the show has them.
TEST_CASE("a mesh in buffers is drawn from their starts, and from memory while buffers are off")
{
    record_bench b;
    b.caps.vbo = 1;
    uint32_t material = 0;
    b.add_material(&material).texture[0] = b.add_image(7);
    const uint32_t mesh = b.add_triangle(1);
    create_mesh_buffers_gl(b.arrays(mesh));
    take_gl_calls();
    const uint32_t scene = b.add_scene({b.object(object_model, mesh, material)});
    b.draw(scene, false);
    const std::string from_buffers = take_sources();
    CHECK(from_buffers == R"(
glBindBuffer(GL_ARRAY_BUFFER, 102)
glNormalPointer(GL_FLOAT, 0, 0)
glBindBuffer(GL_ARRAY_BUFFER, 101)
glVertexPointer(3, GL_FLOAT, 0, 0)
glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 104)
glBindBuffer(GL_ARRAY_BUFFER, 103)
glTexCoordPointer(2, GL_FLOAT, 0, 0)
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, 0)
)");
    b.caps.vbo = 0;
    b.draw(scene, false);
    CHECK(take_sources() == R"(
glBindBuffer(GL_ARRAY_BUFFER, 0)
glNormalPointer(GL_FLOAT, 0, [0 0 1])
glVertexPointer(3, GL_FLOAT, 0, [1 2 3])
glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0)
glTexCoordPointer(2, GL_FLOAT, 0, [1 0.5])
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
)");
    b.caps.vbo = 1;
    b.draw(scene, false);
    CHECK(take_sources() == from_buffers);
    b.draw(scene, false);
    CHECK(take_sources() == "\nglDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, 0)\n");
}

TEST_CASE("on a driver without buffers the mesh's own arrays are drawn, whatever is wished")
{
    record_bench b;
    b.caps.vbo = 1;
    glBindBuffer = nullptr;
    uint32_t material = 0;
    b.add_material(&material);
    const uint32_t mesh = b.add_triangle(1);
    b.arrays(mesh).position_buffer = 101; // of another driver
    b.draw(b.add_scene({b.object(object_model, mesh, material)}), false);
    CHECK(take_sources() == R"(
glNormalPointer(GL_FLOAT, 0, [0 0 1])
glVertexPointer(3, GL_FLOAT, 0, [1 2 3])
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
)");
}

TEST_CASE("a wireframe in buffers gets one for its lines, made with the first frame, drawn from with the next")
{
    record_bench b;
    b.caps.vbo = 1;
    uint32_t material = 0;
    material_record& m = b.add_material(&material);
    b.give_program(m);
    std::fill_n(m.program->texcoord_location, texture_unit_count, -1);
    m.wireframe = 1;
    const uint32_t mesh = b.add_triangle(1);
    create_mesh_buffers_gl(b.arrays(mesh));
    take_gl_calls();
    const uint32_t scene = b.add_scene({b.object(object_model, mesh, material)});
    b.draw(scene, true);
    CHECK(take_sources() == R"(
glGenBuffers(1) = 105
glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 105)
glBufferData(GL_ELEMENT_ARRAY_BUFFER, 12, [0 1 1 2 2 0], GL_STATIC_DRAW)
glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0)
glBindBuffer(GL_ARRAY_BUFFER, 102)
glNormalPointer(GL_FLOAT, 0, 0)
glBindBuffer(GL_ARRAY_BUFFER, 101)
glVertexPointer(3, GL_FLOAT, 0, 0)
glVertexAttribPointer(1, 3, GL_FLOAT, GL_FALSE, 0, 0)
glBindBuffer(GL_ARRAY_BUFFER, 102)
glVertexAttribPointer(2, 3, GL_FLOAT, GL_FALSE, 0, 0)
glDrawElements(GL_LINES, 6, GL_UNSIGNED_SHORT, [0 1 1 2 2 0])
)");
    b.draw(scene, true);
    CHECK(take_sources() == R"(
glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 105)
glDrawElements(GL_LINES, 6, GL_UNSIGNED_SHORT, 0)
)");
    b.draw(scene, true);
    CHECK(take_sources() == "\nglDrawElements(GL_LINES, 6, GL_UNSIGNED_SHORT, 0)\n");
}

TEST_CASE("the lines of a mesh that a frame shows twice go into one buffer")
{
    record_bench b;
    b.caps.vbo = 1;
    uint32_t material = 0;
    material_record& m = b.add_material(&material);
    b.give_program(m);
    m.wireframe = 1;
    const uint32_t mesh = b.add_triangle(1);
    create_mesh_buffers_gl(b.arrays(mesh));
    take_gl_calls();
    const scene_object object = b.object(object_model, mesh, material);
    b.draw(b.add_scene({object, object}), true);
    CHECK(take_gl_calls({"glGenBuffers", "glBufferData", "glDrawElements"}) == R"(
glGenBuffers(1) = 105
glBufferData(GL_ELEMENT_ARRAY_BUFFER, 12, [0 1 1 2 2 0], GL_STATIC_DRAW)
glDrawElements(GL_LINES, 6, GL_UNSIGNED_SHORT, [0 1 1 2 2 0])
glDrawElements(GL_LINES, 6, GL_UNSIGNED_SHORT, [0 1 1 2 2 0])
)");
}

// A mesh in buffers, and behind it one that has none.
static uint32_t add_mixed_scene(record_bench& b, uint32_t material)
{
    b.caps.vbo = 1;
    const uint32_t buffered = b.add_triangle(1);
    create_mesh_buffers_gl(b.arrays(buffered));
    take_gl_calls();
    return b.add_scene(
        {b.object(object_model, buffered, material), b.object(object_model, b.add_triangle(1), material)});
}

TEST_CASE("a mesh without buffers is drawn from memory beside those that have them")
{
    record_bench b;
    uint32_t material = 0;
    b.give_program(b.add_material(&material));
    b.draw(add_mixed_scene(b, material), true);
    CHECK(take_sources() == R"(
glBindBuffer(GL_ARRAY_BUFFER, 102)
glNormalPointer(GL_FLOAT, 0, 0)
glBindBuffer(GL_ARRAY_BUFFER, 101)
glVertexPointer(3, GL_FLOAT, 0, 0)
glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 104)
glVertexAttribPointer(1, 3, GL_FLOAT, GL_FALSE, 0, 0)
glBindBuffer(GL_ARRAY_BUFFER, 102)
glVertexAttribPointer(2, 3, GL_FLOAT, GL_FALSE, 0, 0)
glBindBuffer(GL_ARRAY_BUFFER, 103)
glVertexAttribPointer(3, 2, GL_FLOAT, GL_FALSE, 0, 0)
glVertexAttribPointer(4, 2, GL_FLOAT, GL_FALSE, 0, 0)
glVertexAttribPointer(5, 2, GL_FLOAT, GL_FALSE, 0, 0)
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, 0)
glBindBuffer(GL_ARRAY_BUFFER, 0)
glNormalPointer(GL_FLOAT, 0, [0 0 1])
glVertexPointer(3, GL_FLOAT, 0, [1 2 3])
glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0)
glVertexAttribPointer(1, 3, GL_FLOAT, GL_FALSE, 0, [1 2 3])
glVertexAttribPointer(2, 3, GL_FLOAT, GL_FALSE, 0, [0 0 1])
glVertexAttribPointer(3, 2, GL_FLOAT, GL_FALSE, 0, [1 0.5])
glVertexAttribPointer(4, 2, GL_FLOAT, GL_FALSE, 0, [1 0.5])
glVertexAttribPointer(5, 2, GL_FLOAT, GL_FALSE, 0, [1 0.5])
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
)");
}

TEST_CASE("on the fixed path too a mesh without buffers has none bound for its arrays and indices")
{
    record_bench b;
    uint32_t material = 0;
    b.add_material(&material);
    b.draw(add_mixed_scene(b, material), false);
    CHECK(take_sources() == R"(
glBindBuffer(GL_ARRAY_BUFFER, 102)
glNormalPointer(GL_FLOAT, 0, 0)
glBindBuffer(GL_ARRAY_BUFFER, 101)
glVertexPointer(3, GL_FLOAT, 0, 0)
glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 104)
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, 0)
glBindBuffer(GL_ARRAY_BUFFER, 0)
glNormalPointer(GL_FLOAT, 0, [0 0 1])
glVertexPointer(3, GL_FLOAT, 0, [1 2 3])
glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0)
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
)");
}

// ---- rippled meshes -------------------------------------------------------------

static manipulator_record rippler(float amplitude)
{
    manipulator_record m = {};
    m.type = manipulator_rippler;
    m.params[1].value = amplitude;
    return m;
}

TEST_CASE("a rippled mesh is drawn from the cache; in buffers its vertices are handed over anew for each draw")
{
    record_bench b;
    uint32_t material = 0;
    b.add_material(&material).texture[0] = b.add_image(7);
    const uint32_t mesh = b.add_triangle(1);
    create_mesh_buffers_gl(b.arrays(mesh));
    scene_object object = b.object(object_model, mesh, material);
    object.manipulator_count = 1;
    object.manipulators[0] = rippler(0.0f);
    const uint32_t scene = b.add_scene({object});
    b.draw(scene, false);
    rippler_cache& cache = b.r.tools.rippler;
    REQUIRE(cache.vertex_count == 3);
    constexpr float ground[9] = {10, 0, 0, 10, 0, 1, 11, 0, 0}; // its normal is +y
    std::copy_n(ground, 9, cache.positions);
    take_gl_calls();
    b.draw(scene, false); // the cache stays where it is
    CHECK(take_sources() == "\nglDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])\n");
    forget_objects(b.r.gl);
    b.draw(scene, false);
    CHECK(take_gl_calls({"glVertexPointer", "glNormalPointer"})
        == "\nglNormalPointer(GL_FLOAT, 0, [0 1 0])\nglVertexPointer(3, GL_FLOAT, 0, [10 0 0])\n");

    b.caps.vbo = 1;
    b.draw(scene, false);
    CHECK(take_sources() == R"(
glGenBuffers(1) = 105
glBindBuffer(GL_ARRAY_BUFFER, 105)
glBufferData(GL_ARRAY_BUFFER, 36, [10 0 0 10 0 1 11 0 0], GL_STREAM_DRAW)
glGenBuffers(1) = 106
glBindBuffer(GL_ARRAY_BUFFER, 106)
glBufferData(GL_ARRAY_BUFFER, 36, [0 1 0 0 1 0 0 1 0], GL_STREAM_DRAW)
glNormalPointer(GL_FLOAT, 0, 0)
glBindBuffer(GL_ARRAY_BUFFER, 105)
glVertexPointer(3, GL_FLOAT, 0, 0)
glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 104)
glBindBuffer(GL_ARRAY_BUFFER, 103)
glTexCoordPointer(2, GL_FLOAT, 0, 0)
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, 0)
)");
    b.draw(scene, false);
    CHECK(take_sources() == R"(
glBindBuffer(GL_ARRAY_BUFFER, 105)
glBufferData(GL_ARRAY_BUFFER, 36, [10 0 0 10 0 1 11 0 0], GL_STREAM_DRAW)
glBindBuffer(GL_ARRAY_BUFFER, 106)
glBufferData(GL_ARRAY_BUFFER, 36, [0 1 0 0 1 0 0 1 0], GL_STREAM_DRAW)
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, 0)
)");
    cache.vertex_count = 0; // with an empty cache the mesh draws its own
    b.draw(scene, false);
    CHECK(take_sources() == R"(
glBindBuffer(GL_ARRAY_BUFFER, 102)
glNormalPointer(GL_FLOAT, 0, 0)
glBindBuffer(GL_ARRAY_BUFFER, 101)
glVertexPointer(3, GL_FLOAT, 0, 0)
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, 0)
)");
    cache.vertex_count = 2; // a larger model continues with its own vertices, from memory
    b.draw(scene, false);
    CHECK(take_gl_calls({"glVertexPointer", "glBufferData"}) == "\nglVertexPointer(3, GL_FLOAT, 0, [10 0 0])\n");
}

// Each ripple moves the whole cache on: what the first mesh needs is kept for it.
TEST_CASE("rippled meshes of one frame are each drawn as the cache stood behind their own ripple")
{
    record_bench b;
    b.caps.vbo = 1;
    uint32_t material = 0;
    b.add_material(&material);
    scene_object first = b.object(object_model, b.add_triangle(1), material);
    first.manipulator_count = 1;
    first.manipulators[0] = rippler(0.0f);
    const uint32_t scene = b.add_scene({first});
    b.draw(scene, false); // fills the cache
    take_gl_calls();
    b.draw(scene, false);
    const std::string still = take_gl_calls({"glBufferData"});
    CHECK(still.starts_with("\nglBufferData(GL_ARRAY_BUFFER, 36, [1 2 3 4 2 3 1 5 3], GL_STREAM_DRAW)\n"));
    scene_object moving = first;
    moving.manipulators[0] = rippler(1.0f);
    b.draw(b.add_scene({first, moving, moving}), false);
    const std::string all = take_gl_calls({"glBufferData"});
    CHECK(all.starts_with(still));
    CHECK(all.find("[1 2 3 4 2 3 1 5 3]", still.size()) == std::string::npos);
    b.draw(scene, false); // it stays as the last one left it
    const std::string last = take_gl_calls({"glBufferData"}).substr(1);
    CHECK(all.ends_with(last));
    CHECK(all.find(last) == all.size() - last.size()); // and the second was drawn before the third had moved it
}

// The vertices that a draw of the last frame takes from memory.
static std::vector<float> drawn_vertices(const record_bench& b, size_t draw, uint32_t vertex_count)
{
    const auto* from = static_cast<const float*>(b.r.f.draws[draw].positions.data);
    return std::vector<float>(from, from + size_t{vertex_count} * 3);
}

TEST_CASE("objects that share a mesh effect step it once each, and each is drawn as it left it")
{
    record_bench b;
    uint32_t material = 0;
    b.add_material(&material);
    mesh_effect water = {};
    water.type = mesh_effect_lake;
    water.functions[0] = b.add_time();
    init_mesh_effect(water);
    const uint32_t count = water.mesh.vertex_count;
    const uint32_t effect = table_add(b.d.effect_table, water);
    std::vector<scene_object> lakes(3, b.object(object_genmesh, effect, material));
    for (uint32_t i = 0; i < 3; ++i)
        lakes[i].time_offset = static_cast<float>(i + 1);
    std::srand(1); // drops fall where chance has them
    b.draw(b.add_scene(lakes), false);
    REQUIRE(b.r.f.draws.size() == 3);
    const std::vector<float> first = drawn_vertices(b, 0, count);
    const std::vector<float> second = drawn_vertices(b, 1, count);
    const std::vector<float> third = drawn_vertices(b, 2, count);
    CHECK(first != second);
    CHECK(second != third);
    CHECK(std::equal(third.begin(), third.end(), water.mesh.positions));
    mesh_effect again = {}; // the same water, stepped by hand
    again.type = mesh_effect_lake;
    init_mesh_effect(again);
    float params[2] = {0.0f, 0.0f};
    std::srand(1);
    for (const std::vector<float>& drawn : {first, second, third}) {
        params[0] += 1.0f;
        step_mesh_effect(again, params);
        CHECK(std::equal(drawn.begin(), drawn.end(), again.mesh.positions));
    }
    free_mesh_effect(again);
    free_mesh_effect(*table_get(b.d.effect_table, effect));
}

// ---- objects --------------------------------------------------------------------

TEST_CASE("objects are drawn in their order; one without a mesh or a material is passed over")
{
    record_bench b;
    uint32_t material = 0;
    b.add_material(&material);
    const uint32_t mesh = b.add_triangle(1);
    scene_object first = b.object(object_model, mesh, material);
    first.values[0].value = 1.0f;
    scene_object second = first;
    second.values[0].value = 2.0f;
    scene_object without_mesh = first;
    without_mesh.object = 0;
    scene_object without_material = first;
    without_material.material = 0;
    scene_object strange = first;
    strange.type = 3;
    b.draw(b.add_scene({second, without_mesh, without_material, strange, first}), false);
    CHECK(take_gl_calls({"glLoadMatrixf", "glDrawElements"}) == R"(
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 2 0 0 1])
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 1 0 0 1])
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
)");
}

TEST_CASE("a mesh without triangles or without copies is not drawn, but its material is what stands behind it")
{
    for (const bool glsl : {false, true}) {
        record_bench b;
        uint32_t red = 0;
        material_record& m = b.add_material(&red);
        b.give_program(m);
        m.blend_function = 1;
        const uint32_t empty = b.add_triangle(1);
        b.arrays(empty).index_count = 0;
        scene_object none = b.object(object_model, b.add_triangle(1), red);
        none.manipulator_count = 1;
        none.manipulators[0] = multiplier(0.0f);
        for (const scene_object& undrawn : {b.object(object_model, empty, red), none}) {
            b.r = renderer();
            b.draw(b.add_scene({undrawn}), glsl);
            CHECK(take_gl_calls() == "\n");
            b.draw(b.add_scene({b.bare_object(b.add_triangle(1))}), glsl);
            CHECK(take_gl_calls({"glBlendFunc", "glDrawElements"})
                == "\nglBlendFunc(GL_ONE, GL_ONE)\nglDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])\n");
        }
    }
}

// Handles of the object table, of meshes and of effects are told apart by what they lead to: mesh
// and effect n begin at x = 10 + n.
TEST_CASE("an object's number goes through the object table, unless a material names it or its kind differs")
{
    record_bench b;
    uint32_t material = 0;
    b.add_material(&material);
    for (uint32_t i = 0; i < 3; ++i) // so that numbers of meshes are other numbers than theirs
        b.add_image(7);
    const uint32_t to_mesh = table_add(b.d.object_table, object_reference{object_model, 2, 0});
    const uint32_t to_effect = table_add(b.d.object_table, object_reference{object_genmesh, 1, 0});
    const uint32_t named = table_add(b.d.object_table, object_reference{object_genmesh, 2, 1});
    for (uint32_t handle = 1; handle <= named; ++handle) {
        mesh_arrays& arrays = b.arrays(b.add_triangle(1));
        arrays.positions[0] = static_cast<float>(10 + handle);
        mesh_effect effect = {};
        effect.type = mesh_effect_kind_count; // one that keeps still
        effect.mesh = arrays;
        table_add(b.d.effect_table, effect);
    }
    REQUIRE(to_mesh == 4);
    b.draw(b.add_scene({b.object(object_model, to_mesh, material), b.object(object_model, to_effect, material),
               b.object(object_genmesh, to_mesh, material), b.object(object_genmesh, to_effect, material),
               b.object(object_genmesh, named, material)}),
        false);
    CHECK(take_gl_calls({"glVertexPointer"}) == R"(
glVertexPointer(3, GL_FLOAT, 0, [12 2 3])
glVertexPointer(3, GL_FLOAT, 0, [15 2 3])
glVertexPointer(3, GL_FLOAT, 0, [14 2 3])
glVertexPointer(3, GL_FLOAT, 0, [11 2 3])
glVertexPointer(3, GL_FLOAT, 0, [16 2 3])
)");
    for (uint32_t handle = 1; handle <= named; ++handle)
        table_get(b.d.effect_table, handle)->mesh = {}; // they were borrowed
}

TEST_CASE("a hidden object steps neither its mesh effect nor its rippler")
{
    record_bench b;
    uint32_t material = 0;
    b.add_material(&material);
    mesh_effect water = {};
    water.type = mesh_effect_lake;
    water.functions[0] = add_function(b.content, constant_function(1.0f));
    init_mesh_effect(water);
    const uint32_t effect = table_add(b.d.effect_table, water);
    scene_object lake = b.object(object_genmesh, effect, material);
    scene_object rippled = b.object(object_model, b.add_triangle(1), material);
    rippled.manipulator_count = 1;
    rippled.manipulators[0] = rippler(1.0f);
    lake.visibility = rippled.visibility = add_function(b.content, constant_function(0.999f));
    const std::vector<float> still(water.mesh.positions, water.mesh.positions + size_t{water.mesh.vertex_count} * 3);
    b.draw(b.add_scene({lake, rippled}), false);
    CHECK(take_gl_calls() == "\n");
    CHECK(b.r.tools.rippler.vertex_count == 0);
    CHECK(std::equal(still.begin(), still.end(), water.mesh.positions));
    lake.visibility = rippled.visibility = add_function(b.content, constant_function(1.0f));
    b.draw(b.add_scene({lake, rippled}), false);
    CHECK(b.r.tools.rippler.vertex_count == 3);
    CHECK_FALSE(std::equal(still.begin(), still.end(), water.mesh.positions));
    free_mesh_effect(*table_get(b.d.effect_table, effect));
}

TEST_CASE("an object's values, manipulators and visibility follow its own time, its material the layer's")
{
    record_bench b;
    b.time = 10;
    uint32_t material = 0;
    material_record& m = b.add_material(&material);
    m.color[0] = static_cast<float>(b.add_time(0.01f));
    m.color_dynamic[0] = 1;
    scene_object object = b.object(object_model, b.add_triangle(1), material);
    object.time_offset = 5.75f;
    object.values[0] = {static_cast<float>(b.add_time()), 1};
    object.manipulator_count = 1;
    object.manipulators[0] = multiplier(2.0f);
    object.manipulators[0].params[1] = {static_cast<float>(b.add_time(2.0f)), 1};
    object.visibility = add_function(b.content, linear_function(0.1f, -0.5f)); // 1.0 at 15 ticks
    b.draw(b.add_scene({object}), false);
    const std::string calls = take_gl_calls({"glColor4f", "glLoadMatrixf"});
    CHECK(part(calls, "glColor4f", "glLoad") == "\nglColor4f(0.1, 0.5, 0.75, 1)\n");
    CHECK(calls.find("0 0 1 0 15 0 0 1]") != std::string::npos); // the object's x at its own time
}

// ---- texts ----------------------------------------------------------------------

// A font whose a and b are triangles with offset 2 and width 5 in the given materials.
static uint32_t add_font(record_bench& b, uint32_t material_of_a, uint32_t material_of_b)
{
    font_record font = {};
    font.glyphs[0] = {b.add_triangle(1), material_of_a, 0, 2.0f, 5.0f};
    font.glyphs[4] = {b.add_triangle(2), material_of_b, 0, 2.0f, 5.0f};
    font.glyphs[86] = {0, 0, 0, 2.0f, 5.0f};
    return table_add(b.d.font_table, font);
}

static scene_object text_object(record_bench& b, uint32_t font, const char* text)
{
    scene_object object = b.object(object_text, 0, 0);
    object.font = font;
    std::snprintf(object.text, sizeof object.text, "%s", text);
    return object;
}

// a at -2, the blank moves on by 3: b at 5 + 3 - 2.
TEST_CASE("a text draws glyph by glyph, each with its own mesh, material and place")
{
    record_bench b;
    uint32_t red = 0;
    uint32_t green = 0;
    b.add_material(&red).color[0] = 1.0f;
    b.add_material(&green).color[1] = 1.0f;
    scene_object object = text_object(b, add_font(b, red, green), "a ~b");
    object.values[0].value = 100.0f;
    b.draw(b.add_scene({object}), false);
    CHECK(take_gl_calls({"glColor4f", "glLoadMatrixf", "glDrawElements"}) == R"(
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glColor4f(1, 0.5, 0.75, 1)
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 98 0 0 1])
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
glColor4f(0.25, 1, 0.75, 1)
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 106 0 0 1])
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
)");
}

TEST_CASE("a text's place follows its own time, and it turns to the camera where its bit says so")
{
    record_bench b;
    b.time = 10;
    b.camera[2] = 90.0f;
    uint32_t material = 0;
    b.add_material(&material);
    scene_object object = text_object(b, add_font(b, material, material), "a");
    object.time_offset = 5.0f;
    object.values[0] = {static_cast<float>(b.add_time()), 1};
    object.visibility = add_function(b.content, linear_function(0.1f, -0.5f)); // 1.0 at 15 ticks
    const uint32_t scene = b.add_scene({b.object(object_model, 0, 0), object});
    table_get(b.d.scene_table, scene)->camera_facing[0] = 64; // object 1
    b.draw(scene, false);
    // x is 15 at the object's time, less 2 for the letter; the camera's turn takes x to y.
    CHECK(take_gl_calls({"glLoadMatrixf"}) == R"(
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 13 0 1])
)");
    b.time = 9; // at its own time 14 it is hidden
    b.draw(scene, false);
    CHECK(take_gl_calls() == "\n");
}

// a at -2, b at 5 - 2; the copies are 10 apart.
TEST_CASE("a text at several places draws each glyph at all of them before the next glyph")
{
    record_bench b;
    uint32_t material = 0;
    b.add_material(&material);
    scene_object object = text_object(b, add_font(b, material, material), "ab");
    object.manipulator_count = 1;
    object.manipulators[0] = multiplier(2.0f);
    b.draw(b.add_scene({object}), false);
    CHECK(take_gl_calls({"glPolygonMode", "glLoadMatrixf", "glDrawElements"}) == R"(
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glPolygonMode(GL_FRONT_AND_BACK, GL_FILL)
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 -2 0 0 1])
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 8 0 0 1])
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 3 0 0 1])
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 13 0 0 1])
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
)");
}

TEST_CASE("a glyph without a material is drawn with the state as it stands: the layer's depth test, nothing else")
{
    record_bench b;
    b.draw(b.add_scene({text_object(b, add_font(b, 0, 0), "a")}), false);
    CHECK(take_gl_calls() == R"(
glMatrixMode(GL_PROJECTION)
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1])
glMatrixMode(GL_MODELVIEW)
glEnableClientState(GL_NORMAL_ARRAY)
glNormalPointer(GL_FLOAT, 0, [0 0 1])
glEnableClientState(GL_VERTEX_ARRAY)
glVertexPointer(3, GL_FLOAT, 0, [1 2 3])
glEnable(GL_DEPTH_TEST)
glLoadMatrixf([1 0 0 0 0 1 0 0 0 0 1 0 -2 0 0 1])
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 1 2])
)");
}

TEST_CASE("an empty text, one without a font and one without glyphs draw nothing")
{
    record_bench b;
    uint32_t material = 0;
    b.add_material(&material);
    const uint32_t font = add_font(b, material, material);
    b.draw(b.add_scene({text_object(b, font, ""), text_object(b, 0, "a"), text_object(b, font, "~~")}), false);
    CHECK(take_gl_calls() == "\n");
}
