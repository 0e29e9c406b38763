// The calls that a material is on the shader path, and those that build its program.
#include "record_bench.h"

#include "render/material_gl.h"
#include "render/matrix.h"
#include "render/shader_program_gl.h"
#include "render/shader_source.h"

#include <GL/glew.h>

#include <doctest/doctest.h>

#include <algorithm>
#include <cstring>
#include <vector>

// ---- applying -------------------------------------------------------------------

TEST_CASE("a material without settings makes its program current and sets blending, culling, depth")
{
    record_bench b;
    material_record& m = b.add_material();
    b.give_program(m);
    b.apply_glsl(m);
    end_program_arrays();
    CHECK(take_gl_calls() == R"(
glUseProgram(50)
glBlendEquation(GL_FUNC_ADD)
glBlendFunc(GL_ONE, GL_ZERO)
glDisable(GL_CULL_FACE)
glDisable(GL_DEPTH_TEST)
glVertexAttribPointer(3, 2, GL_FLOAT, GL_FALSE, 0, [1 0.5])
glEnableVertexAttribArray(3)
glVertexAttribPointer(4, 2, GL_FLOAT, GL_FALSE, 0, [2 0.5])
glEnableVertexAttribArray(4)
glVertexAttribPointer(5, 2, GL_FLOAT, GL_FALSE, 0, [3 0.5])
glEnableVertexAttribArray(5)
glDisableVertexAttribArray(3)
glDisableVertexAttribArray(4)
glDisableVertexAttribArray(5)
)");
}

// Program, blending, polygons, then the pictures with the one texture matrix, coordinates,
// the functions' uniforms, the lights as the camera sees them. Nothing of the fixed pipeline.
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
    reset_modelview();
    translate(1.0f, 2.0f, -10.0f);
    b.apply_glsl(m);
    end_program_arrays();
    CHECK(take_gl_calls() == R"(
glUseProgram(50)
glBlendEquation(GL_FUNC_REVERSE_SUBTRACT)
glBlendFunc(GL_SRC_ALPHA, GL_ONE)
glEnable(GL_CULL_FACE)
glEnable(GL_DEPTH_TEST)
glLineWidth(2.5)
glActiveTexture(GL_TEXTURE0)
glBindTexture(GL_TEXTURE_2D, 7)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE)
glActiveTexture(GL_TEXTURE1)
glBindTexture(GL_TEXTURE_CUBE_MAP, 8)
glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE)
glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE)
glUniformMatrix4fv(14, 1, GL_TRUE, [0 0 1 0 -1 0 0 0 0 -1 0 0 0 0 0 1])
glActiveTexture(GL_TEXTURE2)
glBindTexture(GL_TEXTURE_2D, 9)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT)
glUniformMatrix4fv(14, 1, GL_TRUE, [0 -1 0 0 1 0 0 0 0 0 1 0 0 1 0 1])
glVertexAttribPointer(3, 2, GL_FLOAT, GL_FALSE, 0, [1 0.5])
glEnableVertexAttribArray(3)
glUniform1f(21, 2)
glUniform1f(23, 12)
glUniform3fv(15, 1, [8 10 -1])
glUniform3fv(16, 1, [10 10 -3])
glDisableVertexAttribArray(3)
)");
}

TEST_CASE("the texture matrix is uploaded only for units that turn or reflect, where the program reads it")
{
    record_bench b;
    material_record& m = b.add_material();
    b.give_program(m);
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
    end_program_arrays();
}

TEST_CASE("a turned picture's matrix is not the reflection's, even with reflected coordinates")
{
    record_bench b;
    b.camera[1] = 90.0f;
    material_record& m = b.add_material();
    b.give_program(m);
    m.texture[0] = b.add_cube(7);
    m.cgenmode[0] = coordinates_cube;
    m.rotation[0] = 1;
    b.apply_glsl(m);
    CHECK(take_gl_calls({"glUniformMatrix4fv"})
        == "\nglUniformMatrix4fv(14, 1, GL_TRUE, [0 -1 0 0 1 0 0 0 0 0 1 0 0 1 0 1])\n");
    end_program_arrays();
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
    end_program_arrays();
    CHECK(take_gl_calls({"glUniform1f", "glUniform3fv", "glVertexAttribPointer"}) == R"(
glVertexAttribPointer(5, 2, GL_FLOAT, GL_FALSE, 0, [3 0.5])
glUniform1f(22, 0)
glUniform3fv(16, 1, [7 8 9])
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
glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, 0, [1 0.5])
glUniform1f(0, 0)
glUniform3fv(0, 1, [7 8 9])
glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, 0, [1 2 3])
glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, 0, [0 0 1])
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
    end_program_arrays();
    CHECK(take_gl_calls({"glUniform3fv"}) == "\nglUniform3fv(16, 1, [7 8 9])\n");
}

TEST_CASE("a program that did not build leaves none current, and nothing of it is set")
{
    record_bench b;
    material_record& m = b.add_material();
    b.give_program(m, 0);
    m.texture[0] = b.add_image(7);
    m.light1 = b.add_values({});
    m.program->uniform_functions[0] = b.add_time();
    b.apply_glsl(m);
    CHECK(take_gl_calls() == R"(
glUseProgram(0)
glBlendEquation(GL_FUNC_ADD)
glBlendFunc(GL_ONE, GL_ZERO)
glDisable(GL_CULL_FACE)
glDisable(GL_DEPTH_TEST)
)");
    CHECK(current_program().state == program_failed);
}

TEST_CASE("without a material the program in use is fed with the mesh at hand")
{
    record_bench b;
    const material_context context = {.d = &b.d, .caps = &b.caps, .time = 0, .camera_angles = {0, 0}};
    const float set[2] = {4, 5};
    const unit_coordinates coordinates = {.set = {set, nullptr, set}, .buffer = {0, 0, 0}};
    apply_material_glsl(nullptr, context, coordinates);
    CHECK(take_gl_calls() == "\n"); // none is in use
    material_record& m = b.add_material();
    b.give_program(m);
    b.apply_glsl(m);
    end_program_arrays();
    take_gl_calls();
    apply_material_glsl(nullptr, context, coordinates);
    end_program_arrays();
    CHECK(take_gl_calls({"glUseProgram", "glVertexAttribPointer", "glEnableVertexAttribArray",
              "glDisableVertexAttribArray", "glActiveTexture", "glBlendFunc", "glEnable", "glDisable"})
        == R"(
glUseProgram(50)
glVertexAttribPointer(3, 2, GL_FLOAT, GL_FALSE, 0, [4 5])
glEnableVertexAttribArray(3)
glVertexAttribPointer(5, 2, GL_FLOAT, GL_FALSE, 0, [4 5])
glEnableVertexAttribArray(5)
glDisableVertexAttribArray(3)
glDisableVertexAttribArray(5)
)");
}

TEST_CASE("coordinates in a buffer are read from its start")
{
    record_bench b;
    b.caps.vbo = 1;
    material_record& m = b.add_material();
    b.give_program(m);
    const material_context context = {.d = &b.d, .caps = &b.caps, .time = 0, .camera_angles = {0, 0}};
    const float set[2] = {4, 5};
    const unit_coordinates coordinates = {.set = {nullptr, set, nullptr}, .buffer = {101, 0, 103}};
    apply_material_glsl(&m, context, coordinates);
    end_program_arrays();
    CHECK(take_gl_calls({"glBindBuffer", "glVertexAttribPointer"}) == R"(
glBindBuffer(GL_ARRAY_BUFFER, 101)
glVertexAttribPointer(3, 2, GL_FLOAT, GL_FALSE, 0, 0)
glBindBuffer(GL_ARRAY_BUFFER, 0)
glVertexAttribPointer(4, 2, GL_FLOAT, GL_FALSE, 0, [4 5])
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
