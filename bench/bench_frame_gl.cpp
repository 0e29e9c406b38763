// Frames of First Light beside the very same OpenGL calls, bare: written down once with what
// they were given, and called again from a list. The driver skips drawing (GALLIUM_NOOP), so
// that what is left is what a frame costs before a card draws it.
//
// "bare" are the calls alone; "bare and computed" the calls and the pictures and meshes that the
// frame computes, by the same functions that it uses. "computed", "advance", "plan" and "draw"
// are parts. With --frames instead of a benchmark's options the median and the worst of single
// frames are printed.

#include "effects/dynamic_texture.h"
#include "effects/mesh_effect.h"
#include "render/compositor_gl.h"
#include "render/frame_advance.h"
#include "render/frame_plan.h"
#include "session_gl.h"
#include "shell/settings.h"
#include "tools/frames/production.h"

#include <GL/glew.h>
#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

// ---- calls on a list --------------------------------------------------------------------

namespace {

struct taped_call_head {
    void (*play)(const taped_call_head& call);
    size_t bytes; // to the next call
};

template <typename... arguments> struct taped_call {
    taped_call_head head;
    void (*function)(arguments...);
    std::tuple<arguments...> given;
};

// Calls in order, one behind the other. What a call was pointed at lies in `blocks`; vertices
// in client memory stay where they are.
struct call_tape {
    std::vector<uint64_t> words;
    std::vector<std::unique_ptr<std::byte[]>> blocks;
    size_t block_used = 0;
    size_t block_size = 0;
    uint32_t count = 0;
};

} // namespace

static call_tape* taping; // null: calls are only passed on

template <typename... arguments> static void play_call(const taped_call_head& head)
{
    const auto& call = reinterpret_cast<const taped_call<arguments...>&>(head);
    std::apply(call.function, call.given);
}

template <typename call_type> static void add_to_tape(const call_type& call)
{
    static_assert(std::is_trivially_destructible_v<call_type> && alignof(call_type) <= alignof(uint64_t));
    const size_t begin = taping->words.size();
    taping->words.resize(begin + sizeof(call_type) / sizeof(uint64_t));
    new (taping->words.data() + begin) call_type(call);
    ++taping->count;
}

// Never inlined: what is only passed on shall pay for the question alone.
template <typename... arguments>
[[gnu::noinline]] static void tape(void (*function)(arguments...), std::type_identity_t<arguments>... given)
{
    using call_type = taped_call<arguments...>;
    add_to_tape(call_type{{play_call<arguments...>, sizeof(call_type)}, function, {given...}});
}

// A copy of `size` bytes that lives as long as the tape; null for null.
static const void* kept(const void* from, size_t size)
{
    if (from == nullptr)
        return nullptr;
    const size_t rounded = (size + 15) / 16 * 16;
    if (taping->block_used + rounded > taping->block_size) {
        taping->block_size = std::max<size_t>(rounded, 1 << 20);
        taping->block_used = 0;
        taping->blocks.push_back(std::make_unique<std::byte[]>(taping->block_size));
    }
    std::byte* to = taping->blocks.back().get() + taping->block_used;
    taping->block_used += rounded;
    std::memcpy(to, from, size);
    return to;
}

static const float* kept_floats(const float* from, size_t count)
{
    return static_cast<const float*>(kept(from, count * sizeof(float)));
}

static void play(const call_tape& tape)
{
    const auto* at = reinterpret_cast<const std::byte*>(tape.words.data());
    const std::byte* end = at + tape.words.size() * sizeof(uint64_t);
    while (at != end) {
        const auto& call = *reinterpret_cast<const taped_call_head*>(at);
        call.play(call);
        at += call.bytes;
    }
}

// ---- OpenGL 1.1: these stand in the program itself and pass on to the library ------------

template <typename function> static function in_library(const char* name)
{
    void* found = dlsym(RTLD_NEXT, name);
    if (found == nullptr) {
        std::fprintf(stderr, "bench_frame_gl: the OpenGL library has no %s.\n", name);
        std::exit(1);
    }
    return reinterpret_cast<function>(found);
}

#define PASS_ON(name, parameters, given, taped)                                                                        \
    static const auto real_##name = in_library<decltype(&name)>(#name);                                                \
    extern "C" void name parameters                                                                                    \
    {                                                                                                                  \
        if (taping != nullptr) [[unlikely]]                                                                            \
            tape taped;                                                                                                \
        real_##name given;                                                                                             \
    }

PASS_ON(glBindTexture, (GLenum target, GLuint name), (target, name), (real_glBindTexture, target, name))
PASS_ON(glBlendFunc, (GLenum from, GLenum to), (from, to), (real_glBlendFunc, from, to))
PASS_ON(glClear, (GLbitfield bits), (bits), (real_glClear, bits))
PASS_ON(glClearColor, (GLclampf r, GLclampf g, GLclampf b, GLclampf a), (r, g, b, a), (real_glClearColor, r, g, b, a))
PASS_ON(glColor4fv, (const GLfloat* color), (color), (real_glColor4fv, kept_floats(color, 4)))
PASS_ON(glCopyTexSubImage2D,
    (GLenum target, GLint level, GLint to_x, GLint to_y, GLint x, GLint y, GLsizei width, GLsizei height),
    (target, level, to_x, to_y, x, y, width, height),
    (real_glCopyTexSubImage2D, target, level, to_x, to_y, x, y, width, height))
PASS_ON(glDisable, (GLenum name), (name), (real_glDisable, name))
PASS_ON(glDisableClientState, (GLenum name), (name), (real_glDisableClientState, name))
PASS_ON(glDrawElements, (GLenum mode, GLsizei count, GLenum type, const void* indices), (mode, count, type, indices),
    (real_glDrawElements, mode, count, type, indices))
PASS_ON(glEnable, (GLenum name), (name), (real_glEnable, name))
PASS_ON(glEnableClientState, (GLenum name), (name), (real_glEnableClientState, name))
PASS_ON(glFogf, (GLenum name, GLfloat value), (name, value), (real_glFogf, name, value))
PASS_ON(glFogfv, (GLenum name, const GLfloat* values), (name, values), (real_glFogfv, name, kept_floats(values, 4)))
PASS_ON(glFogi, (GLenum name, GLint value), (name, value), (real_glFogi, name, value))
PASS_ON(glHint, (GLenum name, GLenum value), (name, value), (real_glHint, name, value))
PASS_ON(glLightfv, (GLenum light, GLenum name, const GLfloat* values), (light, name, values),
    (real_glLightfv, light, name, kept_floats(values, 4)))
PASS_ON(glLineWidth, (GLfloat width), (width), (real_glLineWidth, width))
PASS_ON(glLoadMatrixf, (const GLfloat* matrix), (matrix), (real_glLoadMatrixf, kept_floats(matrix, 16)))
PASS_ON(glMatrixMode, (GLenum mode), (mode), (real_glMatrixMode, mode))
PASS_ON(glNormalPointer, (GLenum type, GLsizei step, const void* data), (type, step, data),
    (real_glNormalPointer, type, step, data))
PASS_ON(glPolygonMode, (GLenum face, GLenum mode), (face, mode), (real_glPolygonMode, face, mode))
PASS_ON(glTexCoordPointer, (GLint size, GLenum type, GLsizei step, const void* data), (size, type, step, data),
    (real_glTexCoordPointer, size, type, step, data))
PASS_ON(glTexEnvfv, (GLenum target, GLenum name, const GLfloat* values), (target, name, values),
    (real_glTexEnvfv, target, name, kept_floats(values, 4)))
PASS_ON(
    glTexEnvi, (GLenum target, GLenum name, GLint value), (target, name, value), (real_glTexEnvi, target, name, value))
PASS_ON(glTexGeni, (GLenum coordinate, GLenum name, GLint value), (coordinate, name, value),
    (real_glTexGeni, coordinate, name, value))
PASS_ON(glTexParameteri, (GLenum target, GLenum name, GLint value), (target, name, value),
    (real_glTexParameteri, target, name, value))
PASS_ON(glTexSubImage2D,
    (GLenum target, GLint level, GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type,
        const void* data),
    (target, level, x, y, width, height, format, type, data),
    (real_glTexSubImage2D, target, level, x, y, width, height, format, type,
        kept(data, static_cast<size_t>(width) * static_cast<size_t>(height) * (format == GL_RGB ? 3 : 1))))
PASS_ON(glVertexPointer, (GLint size, GLenum type, GLsizei step, const void* data), (size, type, step, data),
    (real_glVertexPointer, size, type, step, data))
PASS_ON(glViewport, (GLint x, GLint y, GLsizei width, GLsizei height), (x, y, width, height),
    (real_glViewport, x, y, width, height))

// ---- later functions: only while a tape is written does anything stand between --------------

namespace {

template <typename function, function& slot> struct later_function;

// One of the loader's pointers, whose arguments are plain values.
template <typename... arguments, void (*&slot)(arguments...)> struct later_function<void (*)(arguments...), slot> {
    static inline void (*real)(arguments...) = nullptr;
    static void call(arguments... given)
    {
        tape(real, given...);
        real(given...);
    }
    static void lead(bool to_tape)
    {
        real = real == nullptr ? slot : real;
        slot = to_tape ? call : real;
    }
};

} // namespace

#define LEAD(name) later_function<decltype(name), name>::lead(to_tape)

static PFNGLUNIFORM3FVPROC real_uniform_3fv;
static PFNGLUNIFORMMATRIX3FVPROC real_uniform_matrix_3fv;
static PFNGLUNIFORMMATRIX4FVPROC real_uniform_matrix_4fv;
static PFNGLBUFFERDATAPROC real_buffer_data;
static PFNGLMAPBUFFERPROC real_map_buffer;
static PFNGLUNMAPBUFFERPROC real_unmap_buffer;
static const void* mapped;
static size_t mapped_bytes;

static void tape_uniform_3fv(GLint location, GLsizei count, const GLfloat* values)
{
    tape(real_uniform_3fv, location, count, kept_floats(values, 3));
    real_uniform_3fv(location, count, values);
}

static void tape_uniform_matrix_3fv(GLint location, GLsizei count, GLboolean transposed, const GLfloat* values)
{
    tape(real_uniform_matrix_3fv, location, count, transposed, kept_floats(values, 9));
    real_uniform_matrix_3fv(location, count, transposed, values);
}

static void tape_uniform_matrix_4fv(GLint location, GLsizei count, GLboolean transposed, const GLfloat* values)
{
    tape(real_uniform_matrix_4fv, location, count, transposed, kept_floats(values, 16));
    real_uniform_matrix_4fv(location, count, transposed, values);
}

static void tape_buffer_data(GLenum target, GLsizeiptr size, const void* data, GLenum usage)
{
    mapped_bytes = static_cast<size_t>(size);
    tape(real_buffer_data, target, size, kept(data, mapped_bytes), usage);
    real_buffer_data(target, size, data, usage);
}

static void* tape_map_buffer(GLenum target, GLenum access)
{
    void* memory = real_map_buffer(target, access);
    mapped = memory;
    return memory;
}

// Mapping, filling and unmapping are one call of the tape.
static void fill_buffer(GLenum target, const void* data, size_t size)
{
    if (void* memory = real_map_buffer(target, GL_WRITE_ONLY))
        std::memcpy(memory, data, size);
    real_unmap_buffer(target);
}

static GLboolean tape_unmap_buffer(GLenum target)
{
    tape(fill_buffer, target, kept(mapped, mapped_bytes), mapped_bytes);
    return real_unmap_buffer(target);
}

template <typename function>
static void lead(function& slot, function& real, std::type_identity_t<function> to, bool to_tape)
{
    real = real == nullptr ? slot : real;
    slot = to_tape ? to : real;
}

static void lead_later_functions(bool to_tape)
{
    LEAD(__glewActiveTexture);
    LEAD(__glewBindBuffer);
    LEAD(__glewBlendEquation);
    LEAD(__glewClientActiveTexture);
    LEAD(__glewDisableVertexAttribArray);
    LEAD(__glewEnableVertexAttribArray);
    LEAD(__glewMultiTexCoord4f);
    LEAD(__glewUniform1f);
    LEAD(__glewUseProgram);
    LEAD(__glewVertexAttrib4f);
    LEAD(__glewVertexAttribPointer);
    lead(__glewUniform3fv, real_uniform_3fv, tape_uniform_3fv, to_tape);
    lead(__glewUniformMatrix3fv, real_uniform_matrix_3fv, tape_uniform_matrix_3fv, to_tape);
    lead(__glewUniformMatrix4fv, real_uniform_matrix_4fv, tape_uniform_matrix_4fv, to_tape);
    lead(__glewBufferData, real_buffer_data, tape_buffer_data, to_tape);
    lead(__glewMapBuffer, real_map_buffer, tape_map_buffer, to_tape);
    lead(__glewUnmapBuffer, real_unmap_buffer, tape_unmap_buffer, to_tape);
}

static void begin_tape(call_tape& tape)
{
    taping = &tape;
    lead_later_functions(true);
}

static void end_tape()
{
    taping = nullptr;
    lead_later_functions(false);
}

// ---- a show and its frames ------------------------------------------------------------------

constexpr uint32_t ticks_between = 100; // one frame of every second

namespace {

// A mesh effect that steps, a mesh that is rippled, or a picture that is made.
struct computed_thing {
    uint32_t effect;            // handle; 0: none
    const mesh_arrays* rippled; // null: none
    dynamic_texture* picture;   // null: none
    uint32_t time;
};

// One path on one card: its frames, drawn, written down and kept.
struct bench_show {
    const char* name;
    bool glsl;
    bool lesser; // a card without buffers
    gl_caps caps;
    std::vector<uint32_t> times;
    std::vector<call_tape> tapes;
    std::vector<std::vector<computed_thing>> computed; // of every frame, in order
    std::vector<frame_layers> layers;                  // as planned when the frames were kept
    std::vector<frame> frames;
    size_t calls = 0;
};

} // namespace

static player_settings settings;
static renderer drawing;
static std::vector<uint8_t> scratch_pixels;

static document& production()
{
    return settings.show.production;
}

static frame_view view_of_screen()
{
    return screen_view(settings.display);
}

static draw_context context_of(const bench_show& show)
{
    return context_for(production(), show.caps, show.glsl);
}

// A whole frame, as the player draws it.
static void draw_ours(const bench_show& show, uint32_t time)
{
    compose_frame(production(), time, view_of_screen(), show.caps, show.glsl, drawing);
}

static bool is_of_effect(const mesh_to_draw& mesh, uint32_t& handle)
{
    for (auto [number, effect] : production().effect_table)
        if (mesh.mesh == &effect.mesh) {
            handle = number;
            return true;
        }
    return false;
}

static void add_computed(const frame& f, const mesh_to_draw& mesh, uint32_t time, std::vector<computed_thing>& computed)
{
    uint32_t handle = 0;
    if (is_of_effect(mesh, handle))
        computed.push_back({handle, nullptr, nullptr, time});
    if (mesh.moved != no_index && handle == 0)
        computed.push_back({0, mesh.mesh, nullptr, time});
    for (uint32_t i = 0; i < mesh.fresh_count; ++i)
        computed.push_back({0, nullptr, f.pictures[mesh.fresh + i].texture, time});
}

static std::vector<computed_thing> what_was_computed(const frame& f, const frame_layers& layers)
{
    std::vector<computed_thing> computed;
    uint32_t next = 0;
    for (uint32_t i = 0; i < layers.layer_count; ++i)
        for (; next < f.mesh_end[i]; ++next)
            add_computed(f, f.meshes[next], layers.layers[i].time, computed);
    return computed;
}

static void compute(const std::vector<computed_thing>& computed)
{
    const document& d = production();
    const float still_ripple[3] = {0.0f, 0.0f, 4.0f};
    scratch_pixels.clear();
    for (const computed_thing& thing : computed) {
        if (thing.rippled != nullptr)
            apply_manipulator(
                drawing.tools.list, manipulator_rippler, still_ripple, thing.rippled, nullptr, drawing.tools);
        else if (thing.picture != nullptr)
            update_dynamic_texture(*thing.picture, d.function_table, thing.time, scratch_pixels);
        else
            update_mesh_effect(thing.effect, d.effect_table, d.function_table, thing.time);
    }
}

// Nothing is known of the context any more: the benchmark before drew on another path.
static void begin_drawing_anew()
{
    gl_state fresh;
    fresh.moved_positions = drawing.gl.moved_positions;
    fresh.moved_normals = drawing.gl.moved_normals;
    fresh.has_clear_color = false;
    drawing.gl = fresh;
    forget_objects(drawing.gl);
    forget_pictures(production().dynamic_texture_table);
    glUseProgram(0);
    for (GLuint attribute = 0; attribute < 16; ++attribute)
        glDisableVertexAttribArray(attribute);
}

// Frames follow each other round and round, so that the first one follows the last.
static void write_down(bench_show& show)
{
    for (uint32_t time : show.times)
        draw_ours(show, time);
    for (uint32_t time : show.times) {
        call_tape& tape = show.tapes.emplace_back();
        begin_tape(tape);
        draw_ours(show, time);
        end_tape();
        show.calls += tape.count;
        show.computed.push_back(
            what_was_computed(drawing.f, plan_layers(production(), time, view_of_screen(), show.caps)));
    }
}

// The frames themselves, so that planning and drawing can be done apart.
static void keep_frames(bench_show& show)
{
    for (uint32_t time : show.times) {
        drawing.f = {};
        frame_layers layers = plan_layers(production(), time, view_of_screen(), show.caps);
        advance_frame(layers, context_of(show), drawing);
        plan_frame(layers, context_of(show), view_of_screen(), drawing);
        draw_frame(layers, context_of(show), drawing);
        show.layers.push_back(layers);
        show.frames.push_back(std::move(drawing.f));
    }
    drawing.f = {};
}

static void prepare(bench_show& show)
{
    if (!show.times.empty())
        return;
    show.caps = settings.display.caps;
    if (show.lesser)
        show.caps.vbo = show.caps.pbo = 0;
    uint32_t end = 0;
    for (uint32_t track = 0; track < track_count; ++track)
        end = std::max(end, production().timeline->track_end[track]);
    for (uint32_t time = ticks_between / 2; time < end; time += ticks_between)
        if (plan_layers(production(), time, view_of_screen(), show.caps).drawn != 0)
            show.times.push_back(time);
    begin_drawing_anew();
    write_down(show);
    keep_frames(show);
}

// ---- benchmarks ---------------------------------------------------------------------------

static void count_frames(benchmark::State& state, const bench_show& show)
{
    const auto frames = static_cast<double>(show.times.size());
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(show.times.size()));
    state.counters["calls"] = static_cast<double>(show.calls) / frames;
}

// Brings the context to where the first frame of the tape begins.
static void draw_once(bench_show& show)
{
    prepare(show);
    begin_drawing_anew();
    for (const uint32_t time : show.times)
        draw_ours(show, time);
}

static void frame_ours(benchmark::State& state, bench_show& show)
{
    draw_once(show);
    for (auto _ : state)
        for (const uint32_t time : show.times)
            draw_ours(show, time);
    count_frames(state, show);
}

static void frame_bare(benchmark::State& state, bench_show& show)
{
    draw_once(show);
    for (auto _ : state)
        for (const call_tape& tape : show.tapes)
            play(tape);
    count_frames(state, show);
}

static void frame_computed(benchmark::State& state, bench_show& show)
{
    prepare(show);
    for (auto _ : state)
        for (const auto& computed : show.computed)
            compute(computed);
    count_frames(state, show);
}

static void frame_bare_and_computed(benchmark::State& state, bench_show& show)
{
    draw_once(show);
    for (auto _ : state)
        for (size_t i = 0; i < show.tapes.size(); ++i) {
            compute(show.computed[i]);
            play(show.tapes[i]);
        }
    count_frames(state, show);
}

static void advance_alone(benchmark::State& state, bench_show& show)
{
    prepare(show);
    for (auto _ : state)
        for (const uint32_t time : show.times) {
            const frame_layers layers = plan_layers(production(), time, view_of_screen(), show.caps);
            advance_frame(layers, context_of(show), drawing);
        }
    count_frames(state, show);
}

static void plan_alone(benchmark::State& state, bench_show& show)
{
    prepare(show);
    for (auto _ : state)
        for (size_t i = 0; i < show.frames.size(); ++i) {
            std::swap(drawing.f, show.frames[i]);
            plan_frame(show.layers[i], context_of(show), view_of_screen(), drawing);
            std::swap(drawing.f, show.frames[i]);
        }
    count_frames(state, show);
}

static void draw_alone(benchmark::State& state, bench_show& show)
{
    draw_once(show);
    for (auto _ : state)
        for (size_t i = 0; i < show.frames.size(); ++i) {
            std::swap(drawing.f, show.frames[i]);
            draw_frame(show.layers[i], context_of(show), drawing);
            std::swap(drawing.f, show.frames[i]);
        }
    count_frames(state, show);
}

// ---- single frames ------------------------------------------------------------------------

static uint64_t thread_nanoseconds()
{
    timespec now = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<uint64_t>(now.tv_sec) * 1000000000u + static_cast<uint64_t>(now.tv_nsec);
}

// The least of several passes, for each frame.
template <typename work> static std::vector<double> fastest(const bench_show& show, work&& do_frame)
{
    std::vector<double> least(show.times.size(), 1e30);
    for (int pass = 0; pass < 15; ++pass)
        for (size_t i = 0; i < show.times.size(); ++i) {
            const uint64_t begin = thread_nanoseconds();
            do_frame(i);
            least[i] = std::min(least[i], static_cast<double>(thread_nanoseconds() - begin) / 1000.0);
        }
    return least;
}

static void print_frames(bench_show& show)
{
    draw_once(show);
    const auto ours = fastest(show, [&](size_t i) { draw_ours(show, show.times[i]); });
    const auto calls = fastest(show, [&](size_t i) { play(show.tapes[i]); });
    const auto computing = fastest(show, [&](size_t i) { compute(show.computed[i]); });
    std::vector<size_t> order(ours.size());
    for (size_t i = 0; i < order.size(); ++i)
        order[i] = i;
    const auto ratio = [&](size_t i) { return ours[i] / (calls[i] + computing[i]); };
    std::sort(order.begin(), order.end(), [&](size_t a, size_t b) { return ratio(a) < ratio(b); });
    const auto tell = [&](const char* which, size_t i) {
        std::printf("%s, %s frame (at %u.%02u s): %.0f us; its calls %.0f, what it computes %.0f; %.2f x both\n",
            show.name, which, show.times[i] / 100, show.times[i] % 100, ours[i], calls[i], computing[i], ratio(i));
    };
    tell("median", order[order.size() / 2]);
    tell("worst", order.back());
}

// ---- the program --------------------------------------------------------------------------

// Beside the benchmarks' folder, where "ninja first_light" puts it.
static std::string path_of_show()
{
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    return program.parent_path().parent_path() / "productions" / "first-light" / "demo.dpk";
}

static bool open_show(std::string& problem)
{
    static gl_session session; // of the program
    static production_files files;
    render_options options;
    options.width = 640;
    options.height = 360;
    settings.choices = choices_for(options);
    set_screen_size(settings.display, options.width, options.height, settings.choices.aspect_index);
    std::string warning;
    return session_open(session, options, settings.display, problem)
        && open_pack(path_of_show(), settings, files, problem) && load_show(settings, files, problem, warning);
}

static bench_show shows[] = {{"shaders", true, false, {}, {}, {}, {}, {}, {}, 0},
    {"fixed", false, false, {}, {}, {}, {}, {}, {}, 0}, {"fixed, lesser card", false, true, {}, {}, {}, {}, {}, {}, 0}};

int main(int argc, char** argv)
{
    setenv("GALLIUM_NOOP", "1", 1);
    setenv("GALLIUM_THREAD", "0", 1);   // all that a call costs is counted
    mallopt(M_MMAP_THRESHOLD, 1 << 28); // the driver's copies of pictures are no new pages each time
    mallopt(M_TRIM_THRESHOLD, 1 << 28);
    setenv("EGL_PLATFORM", "surfaceless", 0);
    std::string problem;
    if (!open_show(problem)) {
        std::fprintf(stderr, "bench_frame_gl: %s.\n", problem.c_str());
        return 1;
    }
    const bool singly = argc > 1 && std::string_view(argv[1]) == "--frames";
    for (bench_show& show : shows) {
        if (singly) {
            print_frames(show);
            continue;
        }
        const std::string name = std::string("frame ") + show.name;
        const auto add = [&](const std::string& who, void (*run)(benchmark::State&, bench_show&)) {
            benchmark::RegisterBenchmark(who.c_str(), [&show, run](benchmark::State& state) {
                run(state, show);
            })->Unit(benchmark::kMicrosecond);
        };
        add(name + "/ours", frame_ours);
        add(name + "/bare", frame_bare);
        add(name + "/bare and computed", frame_bare_and_computed);
        add(name + "/computed", frame_computed);
        add(name + "/advance", advance_alone);
        add(name + "/plan", plan_alone);
        add(name + "/draw", draw_alone);
    }
    if (singly)
        return 0;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
