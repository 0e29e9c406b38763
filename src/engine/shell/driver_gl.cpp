#include "shell/driver_gl.h"

#include "texgen/maze_tables.h"

#include <GL/glew.h>

#include <cassert>

// Buffer objects came as an extension before they came with OpenGL 1.5, with the same
// functions under other names: the renderer knows the later names only.
static void adopt_buffer_functions()
{
    if (!GLEW_ARB_vertex_buffer_object || glBindBuffer != nullptr)
        return;
    glBindBuffer = glBindBufferARB;
    glBufferData = glBufferDataARB;
    glBufferSubData = glBufferSubDataARB;
    glDeleteBuffers = glDeleteBuffersARB;
    glGenBuffers = glGenBuffersARB;
    glMapBuffer = glMapBufferARB;
    glUnmapBuffer = glUnmapBufferARB;
}

// The loader fills in OpenGL 2.0's functions all together or marks the version as absent;
// each one that programs use is looked at all the same.
static bool has_shader_entry_points()
{
    const bool shaders = glCreateShader != nullptr && glShaderSource != nullptr && glCompileShader != nullptr
        && glGetShaderiv != nullptr && glGetShaderInfoLog != nullptr && glDeleteShader != nullptr;
    const bool programs = glCreateProgram != nullptr && glAttachShader != nullptr && glDetachShader != nullptr
        && glLinkProgram != nullptr && glGetProgramiv != nullptr && glGetProgramInfoLog != nullptr
        && glDeleteProgram != nullptr && glUseProgram != nullptr;
    const bool uniforms = glGetUniformLocation != nullptr && glUniform1i != nullptr && glUniform1f != nullptr
        && glUniform3f != nullptr && glUniform3fv != nullptr && glUniformMatrix3fv != nullptr
        && glUniformMatrix4fv != nullptr;
    const bool attributes = glGetAttribLocation != nullptr && glVertexAttribPointer != nullptr
        && glEnableVertexAttribArray != nullptr && glDisableVertexAttribArray != nullptr;
    return shaders && programs && uniforms && attributes;
}

driver_offer ask_driver_gl()
{
    adopt_buffer_functions();
    GLint units = initial_caps.texture_units;
    glGetIntegerv(GL_MAX_TEXTURE_UNITS, &units);
    return {
        .version_2_1 = GLEW_VERSION_2_1 != 0,
        .vertex_buffer_object = GLEW_ARB_vertex_buffer_object != 0,
        .pixel_buffer_object = GLEW_ARB_pixel_buffer_object != 0,
        .texture_npot = GLEW_ARB_texture_non_power_of_two != 0,
        .texture_compression = GLEW_ARB_texture_compression != 0,
        .nv_combine4 = GLEW_NV_texture_env_combine4 != 0,
        .ati_combine3 = GLEW_ATI_texture_env_combine3 != 0,
        .nv_texture_shader = GLEW_NV_texture_shader != 0,
        .ati_envmap_bumpmap = GLEW_ATI_envmap_bumpmap != 0,
        .shader_objects = has_shader_entry_points(),
        .texture_units = units,
    };
}

void apply_report_gl(player_display& display, const capability_report& report)
{
    assert(report.texture_units <= max_texture_units && (report.glsl_path == 0 || report.glsl_path == 1));
    display.caps = report.caps;
    display.loading_caps = report.loading_caps;
    display.texture_formats = report.formats;
    display.max_texture_units_raw = report.texture_units;
    display.glsl_path = report.glsl_path;
    if (report.compression_hint)
        glHint(GL_TEXTURE_COMPRESSION_HINT, GL_NICEST);
}

void set_unchanging_state_gl()
{
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glEnable(GL_BLEND);
    build_maze_tables();
    glShadeModel(GL_SMOOTH);
    glEnable(GL_COLOR_MATERIAL);
    const GLfloat no_ambient[] = {0.0f, 0.0f, 0.0f, 1.0f};
    glLightModelfv(GL_LIGHT_MODEL_AMBIENT, no_ambient);
    glTexGeni(GL_S, GL_TEXTURE_GEN_MODE, GL_SPHERE_MAP);
    glTexGeni(GL_T, GL_TEXTURE_GEN_MODE, GL_SPHERE_MAP);
    glColorMaterial(GL_FRONT, GL_AMBIENT_AND_DIFFUSE);
}

void clear_screen_gl()
{
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}
