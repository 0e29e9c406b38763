#include "stage_bench.h"

#include "content/pack.h"
#include "model/record_handover.h"
#include "shell/loading.h"
#include "tools/frames/frame_clock.h"
#include "tools/preview/loading_chance.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <doctest/doctest.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <map>

#ifdef __SANITIZE_ADDRESS__
// What the driver keeps for itself.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libEGL\nleak:libgallium\n";
}
#endif

// ---- the context ------------------------------------------------------------------------

// Never closed: a driver that is unloaded before the program's end would look like a leak.
static void open_context()
{
    static bool opened = false;
    if (opened)
        return;
    opened = true;
    setenv("LIBGL_ALWAYS_SOFTWARE", "1", 0);
    // The software rasteriser's threads queue up to four pictures, and how many depends on how busy the machine is;
    // each keeps some 10 MB, deleted textures among them. Without threads its memory can be compared.
    setenv("LP_NUM_THREADS", "0", 1);
    const EGLDisplay display = eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    REQUIRE(eglInitialize(display, nullptr, nullptr) == EGL_TRUE);
    REQUIRE(eglBindAPI(EGL_OPENGL_API) == EGL_TRUE);
    const EGLint wanted[] = {EGL_SURFACE_TYPE, EGL_PBUFFER_BIT, EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_NONE};
    const EGLint size[] = {EGL_WIDTH, 16, EGL_HEIGHT, 16, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    REQUIRE(eglChooseConfig(display, wanted, &config, 1, &count) == EGL_TRUE);
    REQUIRE(count == 1);
    const EGLContext context = eglCreateContext(display, config, EGL_NO_CONTEXT, nullptr);
    const EGLSurface surface = eglCreatePbufferSurface(display, config, size);
    REQUIRE(eglMakeCurrent(display, surface, surface, context) == EGL_TRUE);
}

stage_bench::stage_bench(bool glsl, uint32_t width, uint32_t height)
{
    open_context();
    stage_wish wish;
    wish.width = width;
    wish.height = height;
    wish.glsl = glsl;
    std::string problem;
    REQUIRE_MESSAGE(stage_open(s, wish, {60, 1}, problem), problem);
}

stage_bench::~stage_bench()
{
    CHECK(glGetError() == GL_NO_ERROR);
    stage_close(s);
}

void stage_bench::load(const show_build& build)
{
    std::string problem;
    REQUIRE_MESSAGE(stage_load(s, build, problem), problem);
    CHECK(glGetError() == GL_NO_ERROR);
}

void stage_bench::load_plainly(const show_build& build)
{
    REQUIRE(!s.has_show);
    s.pack = build.pack;
    s.file = pack_open_bytes(s.pack);
    owned_tree tree;
    std::string problem;
    std::srand(s.wish.seed);
    draw_chance_of_loading_screen(s.file); // the player has shown it by then
    REQUIRE(load_document(s.file, "demo.xmlz", timeline_new(),
        {s.display.caps, s.display.texture_formats, s.display.glsl_path == 1, true, true}, s.production, tree,
        problem));
    s.has_show = true;
    forget_objects(s.drawing.gl);
    const frame_view view = screen_view(s.display);
    while (plan_layers(s.production, tick_of_frame(s.end, s.rate), view, s.display.caps).drawn != 0)
        ++s.end;
}

// ---- looks ------------------------------------------------------------------------------

static int parameter_of(GLenum target, GLenum name)
{
    GLint value = 0;
    glGetTexParameteriv(target, name, &value);
    return value;
}

// Every level of one face as its size, its format and its pixels.
static std::string levels_of(GLenum face)
{
    std::string text;
    for (GLint level = 0;; ++level) {
        GLint width = 0;
        GLint height = 0;
        GLint format = 0;
        glGetTexLevelParameteriv(face, level, GL_TEXTURE_WIDTH, &width);
        glGetTexLevelParameteriv(face, level, GL_TEXTURE_HEIGHT, &height);
        glGetTexLevelParameteriv(face, level, GL_TEXTURE_INTERNAL_FORMAT, &format);
        if (width == 0 || height == 0)
            return text;
        std::vector<uint8_t> pixels(static_cast<size_t>(width) * static_cast<size_t>(height) * 4);
        glGetTexImage(face, level, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
        source_key key;
        add_to_key(key, pixels.data(), pixels.size());
        text += " " + std::to_string(width) + "x" + std::to_string(height) + " " + std::to_string(format) + " "
            + std::to_string(key.low);
    }
}

static std::string texture_text(const std::string& name, GLenum target, uint32_t texture)
{
    if (texture == 0)
        return name + " none";
    GLint bound = 0;
    glGetIntegerv(target == GL_TEXTURE_2D ? GL_TEXTURE_BINDING_2D : GL_TEXTURE_BINDING_CUBE_MAP, &bound);
    glBindTexture(target, texture);
    std::string text = name;
    for (const GLenum parameter :
        {static_cast<GLenum>(GL_TEXTURE_MIN_FILTER), static_cast<GLenum>(GL_TEXTURE_MAG_FILTER),
            static_cast<GLenum>(GL_TEXTURE_WRAP_S), static_cast<GLenum>(GL_TEXTURE_WRAP_T)})
        text += " " + std::to_string(parameter_of(target, parameter));
    if (target == GL_TEXTURE_2D)
        text += levels_of(GL_TEXTURE_2D);
    else
        for (GLenum face = 0; face < 6; ++face)
            text += levels_of(GL_TEXTURE_CUBE_MAP_POSITIVE_X + face);
    glBindTexture(target, static_cast<GLuint>(bound));
    return text;
}

static std::vector<std::string> textures_of(const document& d)
{
    std::vector<std::string> texts;
    for (auto [handle, node] : d.texture_table)
        if (node.type == node_output)
            texts.push_back(texture_text("generated " + std::to_string(handle), GL_TEXTURE_2D, node.texture));
    for (auto [handle, image] : d.image_texture_table)
        texts.push_back(texture_text("image " + std::to_string(handle) + " " + std::to_string(image.width) + " "
                + std::to_string(image.height) + " " + std::to_string(image.components) + " "
                + std::to_string(image.format),
            GL_TEXTURE_2D, image.texture));
    for (auto [handle, cube] : d.cube_map_table)
        texts.push_back(texture_text("cube " + std::to_string(handle), GL_TEXTURE_CUBE_MAP, cube.texture));
    for (auto [handle, moving] : d.dynamic_texture_table)
        texts.push_back(texture_text("moving " + std::to_string(handle) + " " + std::to_string(moving.refreshed) + " "
                + std::to_string(moving.refresh_time),
            GL_TEXTURE_2D, moving.texture));
    return texts;
}

// Locations and functions; the numbers of programs differ.
static std::vector<std::string> programs_of(const document& d)
{
    std::vector<std::string> texts;
    for (auto [handle, material] : d.material_table) {
        std::string text = "material " + std::to_string(handle);
        if (material.program != nullptr) {
            shader_program p = *material.program;
            text += std::string(p.vertex_source) + p.fragment_source + p.info_log;
            text += p.program != 0 && glIsProgram(p.program) == GL_TRUE ? " built" : " not built";
            p.vertex_source = p.fragment_source = nullptr;
            p.program = p.vertex_shader = p.fragment_shader = 0;
            source_key key;
            add_to_key(key, &p.projection_location, sizeof p - offsetof(shader_program, projection_location));
            text += std::to_string(key.low);
        }
        texts.push_back(text);
    }
    return texts;
}

static std::vector<std::string> buffers_of(const document& d)
{
    std::vector<std::string> texts;
    for (auto [handle, mesh] : d.mesh_table) {
        std::string text = "mesh " + std::to_string(handle);
        const mesh_arrays& m = mesh.arrays;
        for (const uint32_t buffer : {m.position_buffer, m.normal_buffer, m.texcoord_buffer[0], m.texcoord_buffer[1],
                 m.texcoord_buffer[2], m.index_buffer}) {
            GLint size = -1;
            glBindBuffer(GL_ARRAY_BUFFER, buffer);
            if (buffer != 0)
                glGetBufferParameteriv(GL_ARRAY_BUFFER, GL_BUFFER_SIZE, &size);
            text += " " + std::to_string(size);
        }
        source_key key;
        add_to_key(key, m.positions, m.vertex_count * size_t{3} * sizeof(float));
        add_to_key(key, m.indices, m.index_count * sizeof(uint16_t));
        texts.push_back(text + " " + std::to_string(key.low));
    }
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    return texts;
}

stage_look look_of(stage_bench& b, const std::vector<uint64_t>& frames)
{
    stage_look look;
    look.random = std::rand();
    look.end = b.s.end;
    look.textures = textures_of(b.s.production);
    look.programs = programs_of(b.s.production);
    look.buffers = buffers_of(b.s.production);
    for (const uint64_t frame : frames) {
        stage_draw(b.s, frame);
        look.frames.push_back(stage_picture(b.s).rgb);
    }
    return look;
}

std::vector<uint64_t> some_frames(uint64_t end)
{
    std::vector<uint64_t> frames;
    const uint64_t step = std::max<uint64_t>(10, end / 7);
    for (uint64_t frame = 0; frame < end; frame += step)
        for (uint64_t k = 0; k < 2 && frame + k < end; ++k)
            frames.push_back(frame + k);
    return frames;
}

void check_same_look(const stage_look& found, const stage_look& expected)
{
    CHECK(found.end == expected.end);
    CHECK(found.random == expected.random);
    CHECK(found.textures == expected.textures);
    CHECK(found.programs == expected.programs);
    CHECK(found.buffers == expected.buffers);
    REQUIRE(found.frames.size() == expected.frames.size());
    for (size_t n = 0; n < found.frames.size(); ++n) {
        CAPTURE(n);
        CHECK(found.frames[n] == expected.frames[n]);
    }
}

// ---- shows ------------------------------------------------------------------------------

show_build built_from(const document_text& text, const std::vector<pack_content>& entries)
{
    std::vector<pack_content> all = entries;
    all.push_back({"demo.xmlz", in_envelope(to_text(text))});
    const std::string bytes = packed(all);
    show_build result;
    result.can_play = true;
    result.pack.assign(bytes.begin(), bytes.end());
    return result;
}

// ---- reloads ----------------------------------------------------------------------------

// Of a show loaded alone as the player loads it; asked again and again for the same one.
static const stage_look& look_alone(const show_build& build, bool glsl)
{
    static std::map<source_key, stage_look> looks[2];
    source_key key;
    add_to_key(key, build.pack.data(), build.pack.size());
    const auto [place, is_new] = looks[glsl].try_emplace(key);
    if (is_new) {
        stage_bench alone(glsl);
        alone.load_plainly(build);
        place->second = look_of(alone, some_frames(alone.s.end));
    }
    return place->second;
}

void check_reload(const show_build& before, const show_build& after)
{
    for (const bool glsl : {true, false}) {
        CAPTURE(glsl);
        const stage_look& before_alone = look_alone(before, glsl);
        const stage_look& after_alone = look_alone(after, glsl);
        stage_bench b(glsl);
        b.load(before);
        check_same_look(look_of(b, some_frames(b.s.end)), before_alone);
        b.load(after);
        check_same_look(look_of(b, some_frames(b.s.end)), after_alone);
        b.load(before);
        check_same_look(look_of(b, some_frames(b.s.end)), before_alone);
    }
}
