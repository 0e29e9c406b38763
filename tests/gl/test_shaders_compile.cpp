// Every generated text, on the driver at hand: no stage and no link leaves a log line.
#include "drawing_window.h"

#include "render/shader_program_gl.h"
#include "render/shader_source.h"

#include <GL/glew.h>

#include <doctest/doctest.h>

#include <cstring>
#include <string>

namespace {

// A unit's settings by number: the ways to make coordinates, with a picture that suits.
struct unit_choice {
    uint8_t cgenmode;
    uint8_t rotation;
    bool cube_map;
};
constexpr unit_choice choices[]
    = {{coordinates_off, 0, false}, {coordinates_off, 1, false}, {coordinates_sphere, 0, false},
        {coordinates_sphere, 1, false}, {coordinates_cube, 0, true}, {coordinates_cube, 1, true}};
constexpr uint32_t choice_count = 6;

// Compiles and links one material; all logs must be empty.
void check_silent(drawing_window& b, material_record& material, const shader_unit units[texture_unit_count])
{
    generate_shader(material, b.d.transform_table, units);
    build_shader(material, units);
    const shader_program& program = *material.program;
    CHECK(std::strcmp(program.info_log, "VS:\nFS:") == 0);
    REQUIRE(program.program != 0);
    char log[256] = {};
    glGetProgramInfoLog(program.program, sizeof log, nullptr, log);
    CHECK(std::strcmp(log, "") == 0);
    CHECK(program.projection_location >= 0);
    CHECK(program.modelview_location >= 0);
    CHECK(program.position_location >= 0);
    release_shader_gl(*material.program);
}

// Lights, fog and dynamic values by the bits of `variant`.
void set_variant(drawing_window& b, material_record& material, uint32_t variant, uint32_t constant, uint32_t dynamic)
{
    const bool moving = (variant & 1) != 0;
    for (uint32_t i = 0; i < 4; ++i) {
        material.color_dynamic[i] = moving;
        material.color[i] = 1.0f;
    }
    material.light1 = (variant & 2) != 0 ? (moving ? dynamic : constant) : 0;
    material.light2 = (variant & 4) != 0 ? (moving ? dynamic : constant) : 0;
    material.normalization = (variant & 8) != 0;
    material.fogtype = (variant & 16) != 0;
    material.fogcolor = (variant & 32) != 0 ? (moving ? dynamic : constant) : 0;
    material.fogstart_dynamic = material.fogend_dynamic = moving;
    material.fogend = 10.0f;
    static_cast<void>(b);
}

} // namespace

TEST_CASE("every combination of units, coordinates and combine modes compiles and links without a log line")
{
    drawing_window b;
    uint32_t handle = 0;
    material_record& material = b.add_material(&handle);
    const float position[3] = {1, 2, 3};
    const uint32_t constant = b.add_light(0.1f, 0.9f, position);
    const uint32_t dynamic = b.add_light(0.1f, 0.9f, position);
    table_get(b.d.transform_table, dynamic)->dynamic_flags[0] = 252;

    uint32_t turn = 0; // walks through modes and variants while the choices are counted out
    for (uint32_t count = 0, combinations = 1; count <= texture_unit_count; ++count, combinations *= choice_count) {
        for (uint32_t number = 0; number < combinations; ++number, ++turn) {
            shader_unit units[texture_unit_count] = {};
            uint32_t rest = number;
            for (uint32_t i = 0; i < count; ++i, rest /= choice_count) {
                const unit_choice& choice = choices[rest % choice_count];
                units[i] = {true, choice.cube_map};
                material.cgenmode[i] = choice.cgenmode;
                material.rotation[i] = choice.rotation;
            }
            material.combine_mode[0] = static_cast<uint8_t>(turn % 4);
            material.combine_mode[1] = static_cast<uint8_t>(turn % 6);
            set_variant(b, material, turn, constant, dynamic);
            check_silent(b, material, units);
        }
    }
}

TEST_CASE("every variant of lights, fog and dynamic values compiles with every unit count")
{
    drawing_window b;
    uint32_t handle = 0;
    material_record& material = b.add_material(&handle);
    const float position[3] = {1, 2, 3};
    const uint32_t constant = b.add_light(0.1f, 0.9f, position);
    const uint32_t dynamic = b.add_light(0.1f, 0.9f, position);
    table_get(b.d.transform_table, dynamic)->dynamic_flags[0] = 252;
    for (uint32_t variant = 0; variant < 64; ++variant) {
        for (uint32_t count = 0; count <= texture_unit_count; ++count) {
            shader_unit units[texture_unit_count] = {};
            for (uint32_t i = 0; i < count; ++i)
                units[i].used = true;
            material.combine_mode[1] = static_cast<uint8_t>(variant % 6);
            set_variant(b, material, variant, constant, dynamic);
            check_silent(b, material, units);
        }
    }
}

TEST_CASE("a text that does not compile keeps its log, at most 250 characters a stage, and makes no program")
{
    drawing_window b;
    uint32_t handle = 0;
    material_record& material = b.add_material(&handle);
    char vertex[] = "this is no shader, and it goes on; and on; and on; a; b; c; d; e; f; g; h; i; j; k; l; m; n; o;";
    char fragment[] = "void main(void) { gl_FragColor = undefined_name + another + third + fourth + fifth + sixth; }";
    material.enable_glsl = 1;
    material.custom_vertex_shader = vertex;
    material.custom_fragment_shader = fragment;
    const shader_unit units[texture_unit_count] = {};
    generate_shader(material, b.d.transform_table, units);
    for (int build = 0; build < 2; ++build) { // building again is harmless
        build_shader(material, units);
        const char* log = material.program->info_log;
        const char* second = std::strstr(log, "\nFS:");
        CHECK(std::strncmp(log, "VS:", 3) == 0);
        REQUIRE(second != nullptr);
        CHECK(second - log > 3);
        CHECK(second - log <= 253);
        CHECK(std::strlen(second) > 4);
        CHECK(std::strlen(second) <= 254);
        CHECK(material.program->program == 0);
        CHECK(material.program->position_location == -1);
    }
    release_shader_gl(*material.program);
    release_shader_gl(*material.program);
    material.custom_vertex_shader = nullptr; // not ours to free
    material.custom_fragment_shader = nullptr;
}

TEST_CASE("a program that does not build is explained stage by stage, and one that builds is not")
{
    drawing_window b;
    uint32_t handle = 0;
    material_record& material = b.add_material(&handle);
    char good_vertex[] = "attribute vec4 Position; void main(void) { gl_Position = Position; }";
    char good_fragment[] = "void main(void) { gl_FragColor = vec4(1.0); }";
    char bad_vertex[] = "void main(void)\n{ gl_Position = nowhere; }";
    char bad_fragment[] = "void main(void)\n{\n gl_FragColor = nothing; }";
    const struct {
        char* vertex;
        char* fragment;
        const char* vertex_line; // what is named; null: the stage compiles
        const char* fragment_line;
    } table[] = {{good_vertex, good_fragment, nullptr, nullptr},
        {bad_vertex, good_fragment, "    line 2: { gl_Position = nowhere; }\n", nullptr},
        {good_vertex, bad_fragment, nullptr, "    line 3: gl_FragColor = nothing; }\n"},
        {bad_vertex, bad_fragment, "    line 2: { gl_Position = nowhere; }\n",
            "    line 3: gl_FragColor = nothing; }\n"}};
    const shader_unit units[texture_unit_count] = {};
    CHECK(explain_shader_failure(material, units, "here") == ""); // never built
    material.enable_glsl = 1;
    for (const auto& row : table) {
        material.custom_vertex_shader = row.vertex;
        material.custom_fragment_shader = row.fragment;
        generate_shader(material, b.d.transform_table, units);
        build_shader(material, units);
        const shader_program before = *material.program;
        const std::string lines = explain_shader_failure(material, units, "here");
        CAPTURE(lines);
        CHECK((lines.find("Warning: here: vertex_shader does not compile:\n") == 0) == (row.vertex_line != nullptr));
        CHECK((lines.find("Warning: here: fragment_shader does not compile:\n") != std::string::npos)
            == (row.fragment_line != nullptr));
        for (const char* named : {row.vertex_line, row.fragment_line})
            if (named != nullptr)
                CHECK(lines.find(named) != std::string::npos);
        CHECK(lines.find("link") == std::string::npos);
        CHECK(lines.empty() == (before.program != 0));
        CHECK(std::memcmp(&before, material.program, sizeof before) == 0);
    }
    CHECK(glGetError() == GL_NO_ERROR);
    release_shader_gl(*material.program);
    material.custom_vertex_shader = nullptr; // not ours to free
    material.custom_fragment_shader = nullptr;
}

TEST_CASE("explaining a program that does not link leaves no program behind")
{
    drawing_window b;
    uint32_t handle = 0;
    material_record& material = b.add_material(&handle);
    char vertex[]
        = "attribute vec4 Position; varying vec3 a; void main(void) { a = vec3(1.0); gl_Position = Position; }";
    char fragment[] = "varying vec2 a; void main(void) { gl_FragColor = vec4(a, 1.0, 1.0); }";
    material.enable_glsl = 1;
    material.custom_vertex_shader = vertex;
    material.custom_fragment_shader = fragment;
    const shader_unit units[texture_unit_count] = {};
    generate_shader(material, b.d.transform_table, units);
    build_shader(material, units);
    const std::string lines = explain_shader_failure(material, units, "here");
    CHECK(lines.find("Warning: here: its program does not link:\n  ") == 0);
    CHECK(lines.find("does not say why") == std::string::npos);
    const GLuint last = glCreateProgram(); // names that were given back may come again, those below are in use
    for (GLuint name = last > 8 ? last - 8 : 1; name < last; ++name) {
        GLint attached = 0;
        if (glIsProgram(name) == GL_TRUE)
            glGetProgramiv(name, GL_ATTACHED_SHADERS, &attached);
        GLuint shaders[2] = {};
        if (attached == 2)
            glGetAttachedShaders(name, 2, nullptr, shaders);
        CHECK(shaders[0] != material.program->vertex_shader);
        CHECK(shaders[1] != material.program->vertex_shader);
    }
    glDeleteProgram(last);
    CHECK(glGetError() == GL_NO_ERROR);
    release_shader_gl(*material.program);
    material.custom_vertex_shader = nullptr; // not ours to free
    material.custom_fragment_shader = nullptr;
}

TEST_CASE("a material that is built again keeps its shaders and its program")
{
    drawing_window b;
    uint32_t handle = 0;
    material_record& material = b.add_material(&handle);
    REQUIRE(b.build_programs());
    const shader_program first = *material.program;
    material.color[0] = 0.5f;
    REQUIRE(b.build_programs());
    CHECK(material.program->program == first.program);
    CHECK(material.program->vertex_shader == first.vertex_shader);
    CHECK(material.program->fragment_shader == first.fragment_shader);
    GLint current = -1;
    glGetIntegerv(GL_CURRENT_PROGRAM, &current);
    CHECK(current == 0);
}
