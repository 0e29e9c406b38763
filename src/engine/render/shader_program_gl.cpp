#include "render/shader_program_gl.h"

#include "render/material_plan.h"
#include "render/shader_log.h"

#include <GL/glew.h>

#include <algorithm>
#include <cassert>
#include <cstdio>
#include <cstring>

constexpr GLsizei kept_log_size = 251; // characters of each stage's log, its zero included
static_assert(3 + 1 + 3 + 2 * kept_log_size <= info_log_size);

// ---- compiling and linking ------------------------------------------------------

static void append_log(shader_program& program, const char* text)
{
    const size_t used = std::strlen(program.info_log);
    assert(used < info_log_size);
    std::snprintf(program.info_log + used, info_log_size - used, "%s", text);
}

static void compile_stage(shader_program& program, GLenum stage, uint32_t& shader, const char* source, int32_t length)
{
    assert(length >= 0 && (source != nullptr || length == 0));
    if (shader == 0)
        shader = glCreateShader(stage);
    const GLchar* text = source != nullptr ? source : "";
    const GLint text_size = source != nullptr ? length : 0;
    glShaderSource(shader, 1, &text, &text_size);
    glCompileShader(shader);

    char log[kept_log_size] = {};
    glGetShaderInfoLog(shader, kept_log_size, nullptr, log);
    append_log(program, log);
}

static bool link_program(shader_program& program)
{
    if (program.program == 0) {
        program.program = glCreateProgram();
    } else {
        glDetachShader(program.program, program.vertex_shader);
        glDetachShader(program.program, program.fragment_shader);
    }
    glAttachShader(program.program, program.vertex_shader);
    glAttachShader(program.program, program.fragment_shader);
    glLinkProgram(program.program);

    GLint linked = GL_FALSE;
    glGetProgramiv(program.program, GL_LINK_STATUS, &linked);
    return linked == GL_TRUE;
}

// ---- locations ------------------------------------------------------------------

static void forget_locations(shader_program& program)
{
    program.projection_location = -1;
    program.modelview_location = -1;
    program.position_location = -1;
    program.normal_matrix_location = -1;
    program.normal_location = -1;
    program.texture_matrix_location = -1;
    std::fill_n(program.light_position_location, 2, -1);
    std::fill_n(program.texcoord_location, texture_unit_count, -1);
    std::fill_n(program.uniform_locations, user_uniform_count, -1);
}

// Coordinates and samplers of the units in use; the program must be current.
static void find_unit_locations(
    shader_program& program, const material_record& material, const shader_unit units[texture_unit_count])
{
    constexpr const char* coordinate_names[texture_unit_count] = {"TexCoordIn1", "TexCoordIn2", "TexCoordIn3"};
    constexpr const char* sampler_names[texture_unit_count] = {"Texture0", "Texture1", "Texture2"};
    for (uint32_t i = 0; i < texture_unit_count && units[i].used; ++i) {
        if (!generates_coordinates(material.cgenmode[i]))
            program.texcoord_location[i] = glGetAttribLocation(program.program, coordinate_names[i]);
        glUniform1i(glGetUniformLocation(program.program, sampler_names[i]), static_cast<GLint>(i));
    }
}

static void find_user_uniforms(shader_program& program)
{
    for (uint32_t i = 0; i < user_uniform_count; ++i) {
        if (program.uniform_functions[i] == 0)
            continue;
        char name[8];
        std::snprintf(name, sizeof name, "u%u", (i + 1) % 100);
        program.uniform_locations[i] = glGetUniformLocation(program.program, name);
    }
}

static void find_locations(
    shader_program& program, const material_record& material, const shader_unit units[texture_unit_count])
{
    assert(program.program != 0); // it links
    const GLuint name = program.program;
    program.projection_location = glGetUniformLocation(name, "Projection");
    program.modelview_location = glGetUniformLocation(name, "Modelview");
    program.position_location = glGetAttribLocation(name, "Position");
    find_unit_locations(program, material, units);
    program.normal_matrix_location = glGetUniformLocation(name, "NormalMatrix");
    program.normal_location = glGetAttribLocation(name, "Normal");
    program.texture_matrix_location = glGetUniformLocation(name, "TextureMatrix");
    program.light_position_location[0] = glGetUniformLocation(name, "LightPosition1");
    program.light_position_location[1] = glGetUniformLocation(name, "LightPosition2");
    find_user_uniforms(program);
}

// ---- the program ----------------------------------------------------------------

void build_shader(material_record& material, const shader_unit units[texture_unit_count])
{
    assert(units != nullptr);
    if (material.program == nullptr || glCreateShader == nullptr)
        return;
    shader_program& program = *material.program;
    std::fill_n(program.info_log, info_log_size, '\0');
    forget_locations(program);

    append_log(program, "VS:");
    compile_stage(program, GL_VERTEX_SHADER, program.vertex_shader, program.vertex_source, program.vertex_length);
    append_log(program, "\nFS:");
    compile_stage(
        program, GL_FRAGMENT_SHADER, program.fragment_shader, program.fragment_source, program.fragment_length);

    if (!link_program(program)) {
        glDeleteProgram(program.program);
        program.program = 0;
        return;
    }
    glUseProgram(program.program);
    find_locations(program, material, units);
    glUseProgram(0); // the fixed-function path must never meet a program
}

// ---- why it did not build -------------------------------------------------------

static std::string shader_log(uint32_t shader)
{
    GLint size = 0;
    glGetShaderiv(shader, GL_INFO_LOG_LENGTH, &size);
    std::string log(static_cast<size_t>(std::max(size, 0)), '\0');
    if (size > 0)
        glGetShaderInfoLog(shader, size, nullptr, log.data());
    return log;
}

// The program itself is gone: its stages are linked again into another one.
static std::string link_log(const shader_program& program)
{
    const GLuint again = glCreateProgram();
    glAttachShader(again, program.vertex_shader);
    glAttachShader(again, program.fragment_shader);
    glLinkProgram(again);
    GLint size = 0;
    glGetProgramiv(again, GL_INFO_LOG_LENGTH, &size);
    std::string log(static_cast<size_t>(std::max(size, 0)), '\0');
    if (size > 0)
        glGetProgramInfoLog(again, size, nullptr, log.data());
    glDeleteProgram(again);
    return log;
}

// Empty for a stage that compiles.
static std::string explain_stage(uint32_t shader, const char* text, const std::string& begin, const char* stage)
{
    GLint compiled = GL_FALSE;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &compiled);
    if (compiled == GL_TRUE)
        return {};
    return begin + stage + " does not compile:\n" + explain_log(shader_log(shader), text != nullptr ? text : "");
}

std::string explain_shader_failure(
    const material_record& material, const shader_unit units[texture_unit_count], const std::string& place)
{
    if (material.program == nullptr || material.program->program != 0 || glCreateShader == nullptr)
        return {};
    const shader_program& program = *material.program;
    const bool own = has_custom_program(material);
    const std::string begin = "Warning: " + place + (own ? ": " : ": the generated ");
    const std::string stages = explain_stage(program.vertex_shader, program.vertex_source, begin, "vertex_shader")
        + explain_stage(program.fragment_shader, program.fragment_source, begin, "fragment_shader");
    if (!stages.empty())
        return stages;
    return begin + (own ? "its program" : "program") + " does not link:\n" + explain_log(link_log(program), {})
        + (own ? std::string() : explain_units(material, units));
}

void release_shader_gl(shader_program& program)
{
    if (glCreateShader == nullptr)
        return;
    if (program.is_borrowed)
        program.program = program.vertex_shader = program.fragment_shader = 0;
    program.is_borrowed = false;
    if (program.program != 0)
        glDeleteProgram(program.program);
    if (program.vertex_shader != 0)
        glDeleteShader(program.vertex_shader);
    if (program.fragment_shader != 0)
        glDeleteShader(program.fragment_shader);
    program.program = 0;
    program.vertex_shader = 0;
    program.fragment_shader = 0;
    forget_locations(program);
}
