#include "shell/display_gl.h"

#include "render/matrix.h"
#include "shell/capability_report.h"
#include "shell/display_ladder.h"
#include "shell/log.h"
#include "texgen/maze_tables.h"

#include <GL/glew.h>
#include <SDL/SDL.h>

#include <cstdio>

constexpr int window_depth = 24; // bits per pixel
constexpr Uint32 window_flags = SDL_HWSURFACE | SDL_OPENGL | SDL_ASYNCBLIT;
constexpr int small_width = 320; // the mode that tells a missing driver from a bad choice
constexpr int small_height = 240;

static void ask_for_multisampling(int buffers, int samples)
{
    SDL_GL_SetAttribute(SDL_GL_MULTISAMPLEBUFFERS, buffers);
    SDL_GL_SetAttribute(SDL_GL_MULTISAMPLESAMPLES, samples);
}

static bool open_chosen_mode(const player_settings& settings)
{
    const Uint32 flags = settings.fullscreen == 1 ? window_flags | SDL_FULLSCREEN : window_flags;
    const int width = static_cast<int>(settings.screen_width);
    const int height = static_cast<int>(settings.screen_height);
    return SDL_SetVideoMode(width, height, window_depth, flags) != nullptr;
}

static bool attempt(display_step step, const player_settings& settings)
{
    switch (step) {
    case display_step_chosen:
        return open_chosen_mode(settings);
    case display_step_without_antialiasing:
        ask_for_multisampling(0, 0);
        return open_chosen_mode(settings);
    case display_step_small:
        return SDL_SetVideoMode(small_width, small_height, window_depth, window_flags) != nullptr;
    case display_step_open:
    case display_step_open_plain:
    case display_step_no_driver:
    case display_step_other_resolution:
        break;
    }
    return false;
}

// The window is gone before the line appears.
static display_result fail(const char* line)
{
    SDL_Quit();
    log_message(0, line);
    return display_failed;
}

static display_result open_window(const player_settings& settings)
{
    display_step step = display_step_chosen;
    while (!display_step_opened(step)) {
        step = next_display_step(step, attempt(step, settings), settings.antialiasing == 1);
        const char* line = display_step_message(step);
        if (display_step_failed(step))
            return fail(line);
        if (line != nullptr)
            log_message(0, line);
    }
    return display_open;
}

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

static driver_offer ask_driver()
{
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

static void apply_report(player_settings& settings, const capability_report& report)
{
    settings.caps = report.caps;
    settings.loading_caps = report.loading_caps;
    settings.texture_formats = report.formats;
    settings.max_texture_units_raw = report.texture_units;
    settings.glsl_path = report.glsl_path;
    std::fputs(report.text.c_str(), stdout);
    if (report.compression_hint)
        glHint(GL_TEXTURE_COMPRESSION_HINT, GL_NICEST);
}

// What never changes again; viewport, projection and blend function belong to every frame.
static void set_initial_state(const player_settings& settings)
{
    init_matrices();
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    SDL_GL_SwapBuffers(); // the first visible frame is black
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glEnable(GL_BLEND); // never off again
    build_maze_tables();
    glShadeModel(GL_SMOOTH);
    glEnable(GL_COLOR_MATERIAL);
    const GLfloat no_ambient[] = {0.0f, 0.0f, 0.0f, 1.0f};
    glLightModelfv(GL_LIGHT_MODEL_AMBIENT, no_ambient);
    glTexGeni(GL_S, GL_TEXTURE_GEN_MODE, GL_SPHERE_MAP);
    glTexGeni(GL_T, GL_TEXTURE_GEN_MODE, GL_SPHERE_MAP);
    glColorMaterial(GL_FRONT, GL_AMBIENT_AND_DIFFUSE);
    SDL_GL_SwapBuffers();
    if (settings.fullscreen == 1)
        SDL_ShowCursor(SDL_DISABLE);
}

display_result open_display(player_settings& settings, int argc, char** argv)
{
    settings_choose_size(settings);
    if (settings.antialiasing == 1)
        ask_for_multisampling(1, 2);
    settings.glsl_path = static_cast<int8_t>(settings.use_glsl);
    if (settings.music_enabled == 1)
        SDL_Init(SDL_INIT_AUDIO);
    SDL_Init(SDL_INIT_TIMER);
    if (open_window(settings) != display_open)
        return display_failed;

    glewInit(); // its flags tell, not its result
    if (!GLEW_VERSION_1_3)
        return fail("Error: OpenGL 1.3 required, please install a proper OpenGL driver.");

    adopt_buffer_functions();
    const capability_wishes wishes = {
        .use_vbo = settings.use_vbo,
        .use_glsl = settings.use_glsl,
        .first_argument = argc > 1 ? argv[1] : nullptr,
    };
    apply_report(settings, report_capabilities(ask_driver(), wishes));
    set_initial_state(settings);
    return display_open;
}
