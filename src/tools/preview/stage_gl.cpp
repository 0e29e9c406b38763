#include "tools/preview/stage.h"

#include "content/owners.h"
#include "effects/dynamic_texture.h"
#include "render/frame_text.h"
#include "shell/driver_gl.h"
#include "shell/loading.h"
#include "texgen/cosine_table.h"
#include "tools/frames/frame_clock.h"
#include "tools/preview/free_camera.h"

#include <GL/glew.h>

#include <chrono>
#include <cstdlib>
#include <cstring>

namespace {

using stopwatch = std::chrono::steady_clock;

} // namespace

// ---- opening ------------------------------------------------------------------------------------

static bool make_frame_buffer(stage& s, std::string& problem)
{
    const auto width = static_cast<GLsizei>(s.wish.width);
    const auto height = static_cast<GLsizei>(s.wish.height);
    glGenFramebuffers(1, &s.framebuffer);
    glGenTextures(1, &s.color_texture);
    glGenRenderbuffers(1, &s.depth_buffer);
    glBindTexture(GL_TEXTURE_2D, s.color_texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB8, width, height, 0, GL_RGB, GL_UNSIGNED_BYTE, nullptr);
    glBindTexture(GL_TEXTURE_2D, 0);
    glBindRenderbuffer(GL_RENDERBUFFER, s.depth_buffer);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH_COMPONENT24, width, height);
    glBindFramebuffer(GL_FRAMEBUFFER, s.framebuffer);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, s.color_texture, 0);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, s.depth_buffer);
    if (glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE)
        return true;
    problem = "the driver has no frame buffer of " + std::to_string(width) + " x " + std::to_string(height);
    return false;
}

static void apply_wish(stage& s)
{
    player_choices choices;
    choices.use_glsl = s.wish.glsl ? 1 : 0;
    choices.antialiasing = -1;
    choices.music_enabled = -1;
    apply_report_gl(s.display, report_capabilities(offer_of_card(s.offer, s.wish.card), choices));
    set_screen_size(s.display, s.wish.width, s.wish.height, s.wish.aspect);
}

bool stage_open(stage& s, const stage_wish& wish, frame_rate rate, std::string& problem)
{
    glewInit(); // without an X display it says so, after it has loaded every function
    if (!GLEW_VERSION_1_3 || glGenFramebuffers == nullptr) {
        problem = GLEW_VERSION_1_3 ? "the driver has no frame buffer objects" : "OpenGL 1.3 is needed";
        return false;
    }
    s.wish = wish;
    s.rate = rate;
    s.offer = ask_driver_gl();
    build_cosine_table();
    if (!make_frame_buffer(s, problem))
        return false;
    apply_wish(s);
    clear_screen_gl();
    set_unchanging_state_gl();
    return true;
}

// ---- loading --------------------------------------------------------------------------------------

static frame_view view_of(const stage& s)
{
    return screen_view(s.display);
}

static uint64_t count_stage_frames(const stage& s)
{
    uint32_t planned = UINT32_MAX;
    for (uint64_t frame = 0;; ++frame) {
        const uint32_t tick = tick_of_frame(frame, s.rate);
        if (tick != planned && plan_layers(s.production, tick, view_of(s), s.display.caps).drawn == 0)
            return frame;
        planned = tick;
    }
}

static void drop_show(stage& s)
{
    if (s.has_show)
        unload_document(s.production);
    s.production = {};
    s.has_show = false;
    if (s.file != nullptr)
        std::fclose(s.file);
    s.file = nullptr;
}

static bool load_whole(stage& s, std::string& problem)
{
    owned_tree tree;
    std::srand(s.wish.seed);
    if (!load_document(s.file, "demo.xmlz", timeline_new(),
            {s.display.caps, s.display.texture_formats, s.display.glsl_path == 1, true, true}, s.production, tree,
            problem))
        return false;
    forget_objects(s.drawing.gl);
    s.has_show = true;
    s.at_frame = false;
    s.end = count_stage_frames(s);
    return true;
}

bool stage_load(stage& s, const show_build& build, std::string& problem)
{
    drop_show(s);
    s.pack = build.pack;
    s.file = fmemopen(s.pack.data(), s.pack.size(), "rb");
    return load_whole(s, problem);
}

bool stage_choose(stage& s, const stage_wish& wish, std::string& problem)
{
    const std::vector<uint8_t> pack = s.pack;
    s.wish = wish;
    glDeleteFramebuffers(1, &s.framebuffer);
    glDeleteTextures(1, &s.color_texture);
    glDeleteRenderbuffers(1, &s.depth_buffer);
    if (!make_frame_buffer(s, problem))
        return false;
    apply_wish(s);
    show_build build;
    build.pack = pack;
    return pack.empty() || stage_load(s, build, problem);
}

void stage_mute(stage& s, uint32_t muted_tracks)
{
    s.muted_tracks = muted_tracks;
}

// ---- frames -----------------------------------------------------------------------------------------

static draw_context context_of(stage& s)
{
    return context_for(s.production, s.display.caps, s.display.glsl_path == 1);
}

static void advance(stage& s, uint64_t frame)
{
    s.layers = plan_layers(s.production, tick_of_frame(frame, s.rate), view_of(s), s.display.caps);
    apply_camera(s.camera, s.layers);
    advance_frame(s.layers, context_of(s), s.drawing);
    reserve_targets_gl(s.layers);
    s.frame = frame;
    s.at_frame = true;
    ++s.passed;
}

void stage_pass(stage& s, uint64_t frame, bool pixels)
{
    advance(s, frame);
    plan_frame(s.layers, context_of(s), view_of(s), s.drawing);
    if (pixels)
        draw_frame(s.layers, context_of(s), s.drawing);
    else
        draw_lasting_gl(context_of(s), s.drawing);
    glFlush();
}

void stage_draw(stage& s, uint64_t frame)
{
    const auto begin = stopwatch::now();
    stage_pass(s, frame, true);
    s.times.cpu_ms = std::chrono::duration<double, std::milli>(stopwatch::now() - begin).count();
}

void stage_draw_again(stage& s)
{
    plan_frame(s.layers, context_of(s), view_of(s), s.drawing);
    draw_frame(s.layers, context_of(s), s.drawing);
    glFlush();
}

picture stage_picture(stage& s)
{
    picture p = make_picture(s.wish.width, s.wish.height, 0, 0, 0);
    std::vector<uint8_t> rows(p.rgb.size());
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, static_cast<GLsizei>(p.width), static_cast<GLsizei>(p.height), GL_RGB, GL_UNSIGNED_BYTE,
        rows.data());
    const size_t row = size_t{p.width} * 3;
    for (uint32_t y = 0; y < p.height; ++y)
        std::memcpy(p.rgb.data() + y * row, rows.data() + (p.height - 1 - y) * row, row);
    return p;
}

memory_kind stage_memory(const stage&)
{
    return {};
}

std::string stage_commands(const stage& s)
{
    return s.at_frame ? frame_as_text(s.drawing.f, s.layers) : "";
}

uint32_t stage_count_names()
{
    uint32_t count = 0;
    for (uint32_t name = 1; name < 65536; ++name) {
        count += glIsTexture(name) == GL_TRUE ? 1u : 0u;
        count += glIsBuffer != nullptr && glIsBuffer(name) == GL_TRUE ? 1u : 0u;
        count += glIsProgram != nullptr && glIsProgram(name) == GL_TRUE ? 1u : 0u;
        count += glIsShader != nullptr && glIsShader(name) == GL_TRUE ? 1u : 0u;
    }
    return count;
}

void stage_close(stage& s)
{
    drop_show(s);
    release_renderer_gl(s.drawing);
    glDeleteFramebuffers(1, &s.framebuffer);
    glDeleteTextures(1, &s.color_texture);
    glDeleteRenderbuffers(1, &s.depth_buffer);
}
