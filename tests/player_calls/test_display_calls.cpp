// From the choices to the OpenGL window.
#include "played.h"
#include "recording_gl.h"
#include "shell/driver_gl.h"

#include <doctest/doctest.h>

#include <GL/glew.h>

#include <cstdint>
#include <initializer_list>
#include <utility>

// What can be clicked in the dialog.
constexpr scripted_click small_size = {80, 48};
constexpr scripted_click aspect_16_10_row = {224, 115};
constexpr scripted_click fullscreen_box = {289, 20};
constexpr scripted_click antialiasing_box = {289, 51};
constexpr scripted_click music_box = {289, 82};
constexpr scripted_click buffers_box = {289, 113};
constexpr scripted_click fixed_path_row = {320, 328};

// A run of an empty show with these choices.
static sdl_script choices(std::initializer_list<scripted_click> clicks)
{
    sdl_script script;
    script.clicks = clicks;
    script.clicks.push_back(start_button);
    script.last_tick = -1;
    return script;
}

static const std::string rule = "| " + std::string(74, '=') + "\n";

static const std::string first_drawing = R"(glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)
SDL_GL_SwapBuffers()
glEnable(GL_DEPTH_TEST)
glDepthFunc(GL_LEQUAL)
glEnable(GL_BLEND)
glShadeModel(GL_SMOOTH)
glEnable(GL_COLOR_MATERIAL)
glLightModelfv(GL_LIGHT_MODEL_AMBIENT, [0 0 0 1])
glTexGeni(GL_S, GL_TEXTURE_GEN_MODE, GL_SPHERE_MAP)
glTexGeni(GL_T, GL_TEXTURE_GEN_MODE, GL_SPHERE_MAP)
glColorMaterial(GL_FRONT, GL_AMBIENT_AND_DIFFUSE)
SDL_GL_SwapBuffers()
)";

TEST_CASE("with the defaults the whole screen opens with two samples and sound, black at first, without a cursor")
{
    const played_run run = play(choices({}), {});
    CHECK(part_of(run.calls, "| Starting the demo.", "SDL_GetTicks() = 1030")
        == R"(
| Starting the demo.
SDL_GL_SetAttribute(MULTISAMPLEBUFFERS, 1)
SDL_GL_SetAttribute(MULTISAMPLESAMPLES, 2)
SDL_Init(AUDIO)
SDL_Init(TIMER)
SDL_SetVideoMode(800, 600, 24, HWSURFACE | OPENGL | ASYNCBLIT | FULLSCREEN)
glewInit()
glGetIntegerv(GL_MAX_TEXTURE_UNITS) = 8
)" + rule + R"(| VBO support detected.
| PBO support detected.
| NPOT texture support detected.
| Texture compression support detected.
| Using GLSL shaders.
)" + rule + "glHint(GL_TEXTURE_COMPRESSION_HINT, GL_NICEST)\n"
            + first_drawing + R"(SDL_ShowCursor(0)
SDL_GetTicks() = 1030
)");
}

TEST_CASE("with everything off a window opens as it is, without sound, and the cursor stays")
{
    const sdl_script script = choices(
        {small_size, aspect_16_10_row, fullscreen_box, antialiasing_box, music_box, buffers_box, fixed_path_row});
    const played_run run = play(script, {}, {}, [] { __GLEW_ARB_texture_compression = GL_FALSE; });
    CHECK(part_of(run.calls, "| Starting the demo.", "SDL_GetTicks() = 1450")
        == R"(
| Starting the demo.
SDL_Init(TIMER)
SDL_SetVideoMode(320, 240, 24, HWSURFACE | OPENGL | ASYNCBLIT)
glewInit()
glGetIntegerv(GL_MAX_TEXTURE_UNITS) = 8
)" + rule + R"(| PBO support detected.
| NPOT texture support detected.
| No texture compression support.
| Using 4 texture units + NV_texture_env_combine4.
)" + rule + first_drawing
            + "SDL_GetTicks() = 1450\n");
    CHECK(lines_of(run.calls, {"compose_frame"}) == R"(
compose_frame(production at 0, 320 x 240, 1.6000, vbo 0 pbo 1 npot 1, 4 units, nv 1 ati 0, fixed) = 0
)");
}

static std::string attempts(std::initializer_list<scripted_click> clicks, std::initializer_list<uint32_t> failing)
{
    sdl_script script = choices(clicks);
    script.failing_modes = failing;
    const played_run run = play(script, {});
    const std::string calls = part_of(run.calls, "| Starting the demo.", "glewInit()");
    return lines_of(calls,
        {"SDL_GL_SetAttribute", "SDL_SetVideoMode(", "| Failed", "| Success", "| Error", "SDL_Quit", "glewInit",
            "run_player"});
}

TEST_CASE("a mode that fails is tried without antialiasing, then a small one tells what to say")
{
    const std::string first = R"(
SDL_GL_SetAttribute(MULTISAMPLEBUFFERS, 1)
SDL_GL_SetAttribute(MULTISAMPLESAMPLES, 2)
SDL_SetVideoMode(800, 600, 24, HWSURFACE | OPENGL | ASYNCBLIT | FULLSCREEN)
| Failed to create opengl context, trying without antialiasing.
SDL_GL_SetAttribute(MULTISAMPLEBUFFERS, 0)
SDL_GL_SetAttribute(MULTISAMPLESAMPLES, 0)
SDL_SetVideoMode(800, 600, 24, HWSURFACE | OPENGL | ASYNCBLIT | FULLSCREEN)
)";
    const std::string small = "SDL_SetVideoMode(320, 240, 24, HWSURFACE | OPENGL | ASYNCBLIT)\n";
    const std::string other = "SDL_Quit()\n| Error: failed to create opengl context, please try another resolution.\n"
                              "run_player() = 0\n";
    const std::string driver = "SDL_Quit()\n| Error: failed to create opengl context, please install OpenGL driver.\n"
                               "run_player() = 0\n";
    CHECK(attempts({}, {2}) == first + "| Success! :)\nglewInit()\n");
    CHECK(attempts({}, {2, 3}) == first + small + other);
    CHECK(attempts({}, {2, 3, 4}) == first + small + driver);

    const std::string plain = "\nSDL_SetVideoMode(800, 600, 24, HWSURFACE | OPENGL | ASYNCBLIT | FULLSCREEN)\n";
    CHECK(attempts({antialiasing_box}, {}) == plain + "glewInit()\n");
    CHECK(attempts({antialiasing_box}, {2}) == plain + small + other);
    CHECK(attempts({antialiasing_box}, {2, 3}) == plain + small + driver);
}

TEST_CASE("OpenGL below 1.3 is refused behind SDL's end, before anything is reported")
{
    const played_run run = play(choices({}), {}, {}, [] { __GLEW_VERSION_1_3 = GL_FALSE; });
    CHECK(part_of(run.calls, "glewInit()", "") == R"(
glewInit()
SDL_Quit()
| Error: OpenGL 1.3 required, please install a proper OpenGL driver.
run_player() = 0
)");
}

TEST_CASE("the first argument alone may force pixel buffers")
{
    const auto caps_with = [](const std::vector<std::string>& arguments) {
        const played_run run = play(choices({}), {}, arguments, [] { __GLEW_VERSION_2_1 = GL_FALSE; });
        return run.calls.find("vbo 1 pbo 1 npot 1") != std::string::npos;
    };
    CHECK(caps_with({"-forcepbo"}));
    CHECK_FALSE(caps_with({}));
    CHECK_FALSE(caps_with({"x", "-forcepbo"}));
}

TEST_CASE("without shader functions the show is drawn on the fixed path, whatever was chosen")
{
    const played_run run = play(choices({}), {}, {}, [] { glCreateShader = nullptr; });
    CHECK(lines_of(run.calls, {"| No GLSL", "| Using", "compose_frame"}) == R"(
| No GLSL support.
| Using 4 texture units + NV_texture_env_combine4.
compose_frame(production at 0, 800 x 600, 1.3333, vbo 1 pbo 1 npot 1, 4 units, nv 1 ati 0, fixed) = 0
)");
}

TEST_CASE("a driver that lacks any one of the shader functions has no shaders")
{
    begin_gl_recording();
    CHECK(ask_driver_gl().shader_objects);
    void** const functions[] = {reinterpret_cast<void**>(&glCreateShader), reinterpret_cast<void**>(&glShaderSource),
        reinterpret_cast<void**>(&glCompileShader), reinterpret_cast<void**>(&glGetShaderiv),
        reinterpret_cast<void**>(&glGetShaderInfoLog), reinterpret_cast<void**>(&glDeleteShader),
        reinterpret_cast<void**>(&glCreateProgram), reinterpret_cast<void**>(&glAttachShader),
        reinterpret_cast<void**>(&glDetachShader), reinterpret_cast<void**>(&glLinkProgram),
        reinterpret_cast<void**>(&glGetProgramiv), reinterpret_cast<void**>(&glGetProgramInfoLog),
        reinterpret_cast<void**>(&glDeleteProgram), reinterpret_cast<void**>(&glUseProgram),
        reinterpret_cast<void**>(&glGetUniformLocation), reinterpret_cast<void**>(&glUniform1i),
        reinterpret_cast<void**>(&glUniform1f), reinterpret_cast<void**>(&glUniform3f),
        reinterpret_cast<void**>(&glUniform3fv), reinterpret_cast<void**>(&glUniformMatrix3fv),
        reinterpret_cast<void**>(&glUniformMatrix4fv), reinterpret_cast<void**>(&glGetAttribLocation),
        reinterpret_cast<void**>(&glVertexAttribPointer), reinterpret_cast<void**>(&glEnableVertexAttribArray),
        reinterpret_cast<void**>(&glDisableVertexAttribArray)};
    for (void** function : functions) {
        void* const there = std::exchange(*function, nullptr);
        CHECK_FALSE(ask_driver_gl().shader_objects);
        *function = there;
    }
}

// An entry point that nobody calls here, at an address of its own.
template <typename function> static function entry_point(uintptr_t address)
{
    return reinterpret_cast<function>(address);
}

TEST_CASE("below OpenGL 1.5 the functions of the buffer extension take the places of the later ones")
{
    begin_gl_recording();
    const auto later_bind = glBindBuffer;
    glBindBufferARB = entry_point<PFNGLBINDBUFFERARBPROC>(1);
    glBufferDataARB = entry_point<PFNGLBUFFERDATAARBPROC>(2);
    glBufferSubDataARB = entry_point<PFNGLBUFFERSUBDATAARBPROC>(3);
    glDeleteBuffersARB = entry_point<PFNGLDELETEBUFFERSARBPROC>(4);
    glGenBuffersARB = entry_point<PFNGLGENBUFFERSARBPROC>(5);
    glMapBufferARB = entry_point<PFNGLMAPBUFFERARBPROC>(6);
    glUnmapBufferARB = entry_point<PFNGLUNMAPBUFFERARBPROC>(7);
    __GLEW_ARB_vertex_buffer_object = GL_TRUE;
    ask_driver_gl();
    CHECK((glBindBuffer == later_bind)); // it is there
    glBindBuffer = nullptr;
    ask_driver_gl();
    CHECK((glBindBuffer == glBindBufferARB));
    CHECK((glBufferData == glBufferDataARB));
    CHECK((glBufferSubData == glBufferSubDataARB));
    CHECK((glDeleteBuffers == glDeleteBuffersARB));
    CHECK((glGenBuffers == glGenBuffersARB));
    CHECK((glMapBuffer == glMapBufferARB));
    CHECK((glUnmapBuffer == glUnmapBufferARB));

    glBindBuffer = nullptr;
    __GLEW_ARB_vertex_buffer_object = GL_FALSE;
    ask_driver_gl();
    CHECK((glBindBuffer == nullptr));
    take_gl_calls();
}
