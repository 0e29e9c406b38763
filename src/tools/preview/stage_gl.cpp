#include "tools/preview/stage.h"

#include "content/pack.h"
#include "render/frame_text.h"
#include "shell/driver_gl.h"
#include "shell/loading.h"
#include "shell/loading_again.h"
#include "texgen/cosine_table.h"
#include "tools/frames/frame_clock.h"
#include "tools/frames/frame_needs.h"
#include "tools/preview/chance.h"
#include "tools/preview/free_camera.h"
#include "tools/preview/loading_chance.h"
#include "tools/preview/stage_memory_gl.h"

#include <GL/glew.h>

#include <algorithm>
#include <cassert>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <utility>

constexpr GLenum framebuffer_flip_y = 0x8BBB; // which our list of extensions lacks

namespace {

using stopwatch = std::chrono::steady_clock;

// OpenGL names of a stage's frame buffer.
struct frame_buffer {
    uint32_t name = 0;
    uint32_t colors = 0; // a texture
    uint32_t depths = 0;
    bool from_top = false; // rows begin at the top
};

} // namespace

// ---- the frame buffer -----------------------------------------------------------------------

static std::string size_text(const stage_wish& wish)
{
    return std::to_string(wish.width) + " x " + std::to_string(wish.height);
}

static bool fits_driver(const stage_wish& wish)
{
    GLint viewport[2] = {0, 0};
    GLint texture = 0;
    GLint buffer = 0;
    glGetIntegerv(GL_MAX_VIEWPORT_DIMS, viewport);
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &texture);
    glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &buffer);
    const uint32_t side = static_cast<uint32_t>(std::max(0, std::min(texture, buffer)));
    return wish.width >= 1 && wish.height >= 1 && wish.width <= std::min(side, static_cast<uint32_t>(viewport[0]))
        && wish.height <= std::min(side, static_cast<uint32_t>(viewport[1]));
}

static frame_buffer frame_buffer_of(const stage& s)
{
    return {s.framebuffer, s.color_texture, s.depth_buffer, s.from_top};
}

static void use_frame_buffer(stage& s, const frame_buffer& used)
{
    s.framebuffer = used.name;
    s.color_texture = used.colors;
    s.depth_buffer = used.depths;
    s.from_top = used.from_top;
    glBindFramebuffer(GL_FRAMEBUFFER, used.name);
}

static void drop_frame_buffer(const frame_buffer& dropped)
{
    glDeleteFramebuffers(1, &dropped.name);
    glDeleteTextures(1, &dropped.colors);
    glDeleteRenderbuffers(1, &dropped.depths);
}

static uint32_t make_color_texture(GLsizei width, GLsizei height)
{
    GLuint name = 0;
    glGenTextures(1, &name);
    glBindTexture(GL_TEXTURE_2D, name);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB8, width, height, 0, GL_RGB, GL_UNSIGNED_BYTE, nullptr);
    glBindTexture(GL_TEXTURE_2D, 0);
    return name;
}

// Drivers that draw into windows from the top draw into frame buffers from the bottom, and round some numbers the other
// way. Where they can be told, this is drawn as a window is, byte by byte.
bool draw_from_top_gl()
{
    if (glFramebufferParameteri == nullptr || glewGetExtension("GL_MESA_framebuffer_flip_y") != GL_TRUE)
        return false;
    glFramebufferParameteri(GL_FRAMEBUFFER, framebuffer_flip_y, GL_TRUE);
    return true;
}

// The one that was bound before is bound again where this fails, and nothing is left of the new one.
static bool make_frame_buffer(const stage_wish& wish, frame_buffer& made, std::string& problem)
{
    const auto width = static_cast<GLsizei>(wish.width);
    const auto height = static_cast<GLsizei>(wish.height);
    problem = "the driver has no frame buffer of " + size_text(wish);
    if (!fits_driver(wish))
        return false;
    GLint bound = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &bound);
    made.colors = make_color_texture(width, height);
    glGenFramebuffers(1, &made.name);
    glGenRenderbuffers(1, &made.depths);
    glBindRenderbuffer(GL_RENDERBUFFER, made.depths);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH_COMPONENT24, width, height);
    glBindFramebuffer(GL_FRAMEBUFFER, made.name);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, made.colors, 0);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, made.depths);
    made.from_top = draw_from_top_gl();
    const bool complete = glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
    if (complete) {
        problem.clear();
        return true;
    }
    drop_frame_buffer(made);
    glBindFramebuffer(GL_FRAMEBUFFER, static_cast<GLuint>(bound));
    return false;
}

// ---- what the driver does ---------------------------------------------------------------------

// The stage's display by a wish. False: the driver has no shaders.
static bool display_of_wish(const driver_offer& offer, const stage_wish& wish, player_display& display)
{
    player_choices choices;
    choices.use_glsl = wish.glsl ? 1 : 0;
    choices.antialiasing = -1;
    choices.music_enabled = -1;
    display = {};
    apply_report_gl(display, report_capabilities(offer_of_card(offer, wish.card), choices));
    set_screen_size(display, wish.width, wish.height, wish.aspect);
    return (display.glsl_path == 1) == wish.glsl;
}

// ---- before the first frame -------------------------------------------------------------------

// OpenGL's state is again what it was when the context was new and set up, whatever shows have left there; the next
// frame is drawn as the first one of a process is.
static void stand_before_first_frame(stage& s)
{
    release_renderer_gl(s.drawing);
    if (glUseProgram != nullptr)
        glUseProgram(0);
    glPopClientAttrib();
    glPopAttrib();
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glPushClientAttrib(GL_CLIENT_ALL_ATTRIB_BITS);
    // The lit material follows the colour as it is set, not as it is taken back.
    glColor4f(0.0f, 0.0f, 0.0f, 1.0f);
    glColor4f(1.0f, 1.0f, 1.0f, 1.0f);
    glViewport(0, 0, static_cast<GLsizei>(s.wish.width), static_cast<GLsizei>(s.wish.height));
    clear_screen_gl();
    s.at_frame = false;
    s.frame = 0;
    s.layers = {};
    s.own_layers = {};
    s.times = {};
    s.asked[0] = s.asked[1] = {};
}

static void make_queries(stage& s)
{
    if (!GLEW_ARB_timer_query || glGetQueryObjectui64v == nullptr)
        return;
    for (auto& turn : s.queries)
        glGenQueries(track_count, turn);
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
    frame_buffer made;
    if (!make_frame_buffer(wish, made, problem))
        return false;
    use_frame_buffer(s, made);
    s.wish.glsl = display_of_wish(s.offer, wish, s.display) == wish.glsl;
    set_unchanging_state_gl();
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glPushClientAttrib(GL_CLIENT_ALL_ATTRIB_BITS);
    make_queries(s);
    stand_before_first_frame(s);
    return true;
}

// ---- loading --------------------------------------------------------------------------------------

namespace {

// A show that is not on the stage yet.
struct arriving_show {
    std::vector<uint8_t> pack;
    owned_pack file;
    document production = {};
    record_handover handover;
    std::vector<loading_remark> remarks;
};

} // namespace

static bool shows_something(const document& d, uint32_t tick)
{
    if (d.timeline == nullptr || timeline_is_over(*d.timeline, tick))
        return false;
    for (uint32_t track = 0; track < track_count; ++track) {
        const active_layer active = find_layer(*d.timeline, track, tick);
        if (active.found && table_get(d.scene_table, d.timeline->layers[track][active.layer].model_id) != nullptr)
            return true;
    }
    return false;
}

// Functions of formulas that nobody knows remember that they were asked, and brimlow-render asks all cameras while it
// counts.
static bool has_unknown_formula(const document& d)
{
    for (auto [handle, function] : d.function_table)
        for (uint32_t i = 0; i < std::min<uint32_t>(function.segment_count, max_segments); ++i)
            if (function.segment_type[i] < 0 || function.segment_type[i] >= segment_kind_count)
                return true;
    return false;
}

static uint64_t count_stage_frames(const document& d, const player_display& display, frame_rate rate)
{
    const bool asks_cameras = has_unknown_formula(d);
    uint32_t planned = UINT32_MAX;
    for (uint64_t frame = 0;; ++frame) {
        const uint32_t tick = tick_of_frame(frame, rate);
        if (tick != planned && !shows_something(d, tick))
            return frame;
        if (tick != planned && asks_cameras)
            plan_layers(d, tick, screen_view(display), display.caps);
        planned = tick;
    }
}

static bool load_arriving(const player_display& display, uint32_t seed, arriving_show& show, std::string& problem)
{
    owned_tree tree;
    std::srand(seed);
    if (!show.pack.empty()) {
        show.file.reset(pack_open_bytes(show.pack));
        draw_chance_of_loading_screen(show.file.get());
    }
    loading_options options = {display.caps, display.texture_formats, display.glsl_path == 1, true, true};
    options.handover = &show.handover;
    options.remarks = &show.remarks;
    if (!load_document(show.file.get(), "demo.xmlz", timeline_new(), options, show.production, tree, problem))
        return false;
    if (tree == nullptr)
        problem = "Error: the pack has no demo.xmlz.";
    return tree != nullptr;
}

static void drop_show(stage& s)
{
    if (s.has_show)
        unload_document(s.production);
    s.production = {};
    s.has_show = false;
    s.end = 0;
    pack_close(s.file);
    s.file = nullptr;
    timeline_free(s.shown);
    s.shown = nullptr;
}

static void take_arrived(stage& s, arriving_show& show)
{
    leave_taken(show.handover, show.production);
    drop_show(s);
    s.counts = {static_cast<uint32_t>(show.handover.taken.size()), show.handover.made};
    s.pack = std::move(show.pack);
    s.file = show.file.release();
    s.production = show.production;
    s.made_with = std::move(show.handover);
    s.remarks = std::move(show.remarks);
    s.has_show = true;
    s.end = count_stage_frames(s.production, s.display, s.rate);
    s.memory = measure_memory_gl(s.production, s.display.texture_formats);
    stage_mute(s, s.muted_tracks);
    stand_before_first_frame(s);
}

static std::ptrdiff_t count_own(const std::vector<loading_remark>& remarks)
{
    return std::count_if(
        remarks.begin(), remarks.end(), [](const loading_remark& remark) { return remark.own_program; });
}

// Its programs are what the author is at work on.
static bool breaks_programs(const stage& s, const arriving_show& next)
{
    return s.has_show && count_own(next.remarks) > count_own(s.remarks);
}

static void send_back(stage& s, arriving_show& next, const chance_place& chance)
{
    give_taken_back(next.handover, next.production);
    unload_document(next.production);
    chance_put(chance);
    forget_objects(s.drawing.gl);
}

bool stage_load(stage& s, const show_build& build, std::string& problem)
{
    arriving_show next;
    next.pack = build.pack;
    s.refused.clear();
    if (s.has_show)
        offer_records(next.handover, s.production, s.made_with, render_targets(s.production));
    const chance_place chance = chance_now();
    const bool loaded = load_arriving(s.display, s.wish.seed, next, problem);
    if (loaded && !breaks_programs(s, next)) {
        take_arrived(s, next);
        return true;
    }
    if (loaded) {
        s.refused = std::move(next.remarks);
        std::erase_if(s.refused, [](const loading_remark& remark) { return !remark.own_program; });
    }
    send_back(s, next, chance);
    return false;
}

// Everything is made anew: what another path or card has is not the same.
static bool load_for_display(stage& s, const player_display& display, arriving_show& next, std::string& problem)
{
    next.pack = s.pack;
    if (!s.has_show)
        return true;
    const chance_place chance = chance_now();
    if (load_arriving(display, s.wish.seed, next, problem))
        return true;
    send_back(s, next, chance);
    return false;
}

bool stage_choose(stage& s, const stage_wish& wish, std::string& problem)
{
    player_display display;
    if (!display_of_wish(s.offer, wish, display)) {
        problem = "the driver has no shaders";
        return false;
    }
    const frame_buffer old = frame_buffer_of(s);
    frame_buffer made;
    arriving_show next;
    if (!make_frame_buffer(wish, made, problem))
        return false;
    if (!load_for_display(s, display, next, problem)) {
        use_frame_buffer(s, old);
        drop_frame_buffer(made);
        return false;
    }
    use_frame_buffer(s, made);
    drop_frame_buffer(old);
    s.wish = wish;
    s.display = display;
    if (s.has_show)
        take_arrived(s, next);
    else
        stand_before_first_frame(s);
    return true;
}

// ---- which tracks ---------------------------------------------------------------------------------

void stage_mute(stage& s, uint32_t muted_tracks)
{
    s.muted_tracks = muted_tracks;
    timeline_free(s.shown);
    s.shown = nullptr;
    if (muted_tracks == 0 || s.production.timeline == nullptr)
        return;
    s.shown = timeline_new();
    *s.shown = *s.production.timeline;
    for (uint32_t track = 0; track < track_count; ++track)
        if ((muted_tracks & (1u << track)) != 0)
            for (layer_record& layer : s.shown->layers[track])
                layer.model_id = 0;
}

// ---- frames -----------------------------------------------------------------------------------------

static frame_view view_of(const stage& s)
{
    return screen_view(s.display);
}

static draw_context context_of(stage& s)
{
    return context_for(s.production, s.display.caps, s.display.glsl_path == 1);
}

static frame_layers layers_of(const stage& s, uint64_t frame)
{
    document shown = s.production; // the same records
    if (s.shown != nullptr)
        shown.timeline = s.shown;
    return plan_layers(shown, tick_of_frame(frame, s.rate), view_of(s), s.display.caps);
}

// A flown camera comes before advancing, which turns what faces it.
static void advance(stage& s, uint64_t frame, frame_cost_record* costs)
{
    s.layers = layers_of(s, frame);
    s.own_layers = s.layers;
    apply_camera(s.camera, s.layers);
    advance_frame(s.layers, context_of(s), s.drawing, costs);
    reserve_targets_gl(s.layers);
    s.frame = frame;
    s.at_frame = true;
    ++s.passed;
}

static void plan_and_draw(stage& s, frame_cost_record* costs)
{
    s.before = s.drawing.standing;
    plan_frame(s.layers, context_of(s), view_of(s), s.drawing, costs);
    draw_frame(s.layers, context_of(s), s.drawing, costs);
}

void stage_pass(stage& s, uint64_t frame, bool pixels)
{
    advance(s, frame, nullptr);
    if (pixels) {
        plan_and_draw(s, nullptr);
    } else {
        plan_frame(s.layers, context_of(s), view_of(s), s.drawing);
        draw_lasting_gl(context_of(s), s.drawing);
    }
    glFlush();
}

// ---- what frames cost --------------------------------------------------------------------------------

// The driver's times of the frame before, where they have come; never waits.
static void read_gpu_times(stage& s, uint32_t turn, stage_frame_times& times)
{
    const stage_frame_times& asked = s.asked[turn];
    double sum = 0;
    for (uint32_t i = 0; i < asked.layer_count; ++i) {
        GLuint has_come = GL_FALSE;
        glGetQueryObjectuiv(s.queries[turn][i], GL_QUERY_RESULT_AVAILABLE, &has_come);
        if (has_come == GL_FALSE)
            return;
    }
    for (uint32_t i = 0; i < asked.layer_count; ++i) {
        GLuint64 took = 0;
        glGetQueryObjectui64v(s.queries[turn][i], GL_QUERY_RESULT, &took);
        const double ms = static_cast<double>(took) * 1e-6;
        sum += ms;
        for (uint32_t k = 0; k < times.layer_count; ++k)
            if (times.layers[k].track == asked.layers[i].track)
                times.layers[k].gpu_ms = ms;
    }
    if (asked.layer_count > 0)
        times.gpu_ms = sum;
}

static stage_frame_times times_of(const frame_cost_record& costs, double cpu_ms)
{
    stage_frame_times times;
    times.cpu_ms = cpu_ms;
    times.layer_count = costs.layer_count;
    for (uint32_t i = 0; i < costs.layer_count; ++i)
        times.layers[i] = {costs.layers[i].track, costs.layers[i].cpu_ms, -1};
    return times;
}

void stage_draw(stage& s, uint64_t frame)
{
    const uint32_t turn = s.query_turn;
    s.query_turn = 1 - turn;
    frame_cost_record costs = {};
    std::copy_n(s.queries[turn], track_count, costs.queries);
    const auto begin = stopwatch::now();
    advance(s, frame, &costs);
    plan_and_draw(s, &costs);
    glFlush();
    s.times = times_of(costs, std::chrono::duration<double, std::milli>(stopwatch::now() - begin).count());
    s.asked[turn] = s.queries[turn][0] != 0 ? s.times : stage_frame_times{};
    read_gpu_times(s, 1 - turn, s.times);
}

// Targets have their new sizes already.
void stage_draw_again(stage& s)
{
    if (!s.at_frame)
        return;
    s.layers = s.own_layers;
    apply_camera(s.camera, s.layers);
    for (layer_plan& layer : s.layers.layers)
        layer.recreate_width = layer.recreate_height = layer.recreate_texture = 0;
    s.drawing.standing = s.before;
    plan_and_draw(s, nullptr);
    glFlush();
}

// ---- what there is --------------------------------------------------------------------------------------

picture stage_picture(stage& s)
{
    picture p = make_picture(s.wish.width, s.wish.height, 0, 0, 0);
    std::vector<uint8_t> rows(p.rgb.size());
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(
        0, 0, static_cast<GLsizei>(p.width), static_cast<GLsizei>(p.height), GL_RGB, GL_UNSIGNED_BYTE, rows.data());
    const size_t row = size_t{p.width} * 3;
    for (uint32_t y = 0; y < p.height; ++y)
        std::memcpy(p.rgb.data() + y * row, rows.data() + (p.height - 1 - y) * row, row);
    return p;
}

memory_kind stage_memory(const stage& s)
{
    memory_kind memory = s.memory;
    add_targets(s.production, memory);
    return memory;
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
    if (s.framebuffer == 0)
        return;
    if (glUseProgram != nullptr)
        glUseProgram(0);
    glPopClientAttrib();
    glPopAttrib();
    drop_frame_buffer(frame_buffer_of(s));
    s.framebuffer = s.color_texture = s.depth_buffer = 0;
    for (auto& turn : s.queries)
        if (turn[0] != 0)
            glDeleteQueries(track_count, turn);
}
