// How long the engine takes over whole shows of growing size, without OpenGL; bench/growth.py makes the shows.
//
//   bench_growth STEP PACK
//
// Prints the nanoseconds of one step of playing the pack: "tree" reads the index, finds, inflates and parses the
// document; "read" reads all of its records, with their meshes and pictures; "layers" finds what a
// moment shows; "frame" advances and plans what a moment shows. It is the fastest repeat, counted in CPU time of the
// whole process.

#include "content/pack.h"
#include "content/xml.h"
#include "effects/mesh_effect.h"
#include "model/document.h"
#include "model/document_reader.h"
#include "model/timeline.h"
#include "render/frame_advance.h"
#include "render/frame_plan.h"
#include "render/layer_plan.h"
#include "render/renderer.h"
#include "texgen/cosine_table.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <iterator>
#include <string>
#include <string_view>

constexpr int64_t enough = 30'000'000; // ns that the repeats take together
constexpr int least_repeats = 5;
constexpr int most_repeats = 500;
constexpr gl_caps caps = {0, 0, 1, 0xFF, 3, 0, 0, 0, 0, 0}; // the fixed path, without buffers

static int64_t nanoseconds_used()
{
    timespec used;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return int64_t{used.tv_sec} * 1'000'000'000 + used.tv_nsec;
}

namespace {

// The fastest repeat of a step so far.
struct step_time {
    int64_t fastest = INT64_MAX;
    int64_t together = 0;
    int repeats = 0;
};

} // namespace

template <typename work> static void time_once(step_time& step, work&& each)
{
    const int64_t begin = nanoseconds_used();
    each();
    const int64_t taken = nanoseconds_used() - begin;
    step.fastest = std::min(step.fastest, taken);
    step.together += taken;
    ++step.repeats;
}

static bool has_enough(const step_time& step)
{
    return step.repeats >= most_repeats || (step.repeats >= least_repeats && step.together >= enough);
}

static pack_file* open_file(const char* path)
{
    FILE* stream = std::fopen(path, "rb");
    return stream != nullptr ? pack_open(stream) : nullptr;
}

// False: the document is broken, which is told.
static bool read_all(document& d, const xml_node* root, const pack_file* pack)
{
    document_reader reader;
    document_reader_begin(reader, d, root, pack);
    for (;;) {
        const read_step step = document_read_step(reader);
        if (step == read_failed)
            std::fprintf(stderr, "%s\n", reader.problems.back().text.c_str());
        if (step == read_failed)
            return false;
        if (step == read_done)
            break;
    }
    for (auto [handle, effect] : d.effect_table)
        init_mesh_effect(effect);
    return true;
}

static void free_all(document& d)
{
    for (auto [handle, effect] : d.effect_table)
        free_mesh_effect(effect);
    document_free(d);
}

// Moments of the show's fourth second, a tick apart, so that no function has been asked for its value before.
static void time_moments(document& d, step_time& layers_step, step_time& frame_step)
{
    const frame_view view = {640, 360, 16.0f / 9.0f, {0, 0, 0, 0}};
    const draw_context context = {&d, caps, false};
    renderer drawing;
    for (uint32_t n = 0; !has_enough(frame_step); ++n) {
        frame_layers layers = {};
        time_once(layers_step, [&] { layers = plan_layers(d, 300 + n % 90, view, caps); });
        time_once(frame_step, [&] {
            advance_frame(layers, context, drawing);
            plan_frame(layers, context, view, drawing);
        });
    }
    reset_rippler_cache(drawing.tools.rippler);
}

// Whoever plays opens the pack once: its index is read here.
static step_time time_tree(const char* path)
{
    step_time step;
    std::string problem;
    while (!has_enough(step))
        time_once(step, [&] {
            const owned_pack pack(open_file(path));
            const owned_tree root(load_document_tree(pack.get(), "demo.xmlz", problem));
        });
    return step;
}

// Repeats nothing that was not asked for. Without repeats: the document is broken, which is told.
static step_time time_records(const char* path, std::string_view name)
{
    std::string problem;
    const owned_pack pack(open_file(path));
    const owned_tree root(load_document_tree(pack.get(), "demo.xmlz", problem));
    document d = {};
    step_time read_step, layers_step, frame_step;
    bool read = true;
    do {
        free_all(d);
        document_create(d, "demo.xmlz", timeline_new());
        time_once(read_step, [&] { read = read_all(d, root.get(), pack.get()); });
    } while (read && name == "read" && !has_enough(read_step));
    if (read && name != "read")
        time_moments(d, layers_step, frame_step);
    free_all(d);
    return !read ? step_time{} : name == "read" ? read_step : name == "layers" ? layers_step : frame_step;
}

int main(int argc, char** argv)
{
    constexpr std::string_view names[] = {"tree", "read", "layers", "frame"};
    const std::string_view name = argc == 3 ? argv[1] : "";
    if (std::find(std::begin(names), std::end(names), name) == std::end(names)) {
        std::fprintf(stderr, "Usage: bench_growth tree|read|layers|frame PACK\n");
        return 2;
    }
    if (owned_pack(open_file(argv[2])) == nullptr) {
        std::fprintf(stderr, "Sorry: %s cannot be opened.\n", argv[2]);
        return 1;
    }
    build_cosine_table();
    const step_time step = name == "tree" ? time_tree(argv[2]) : time_records(argv[2], name);
    if (step.repeats != 0)
        std::printf("%lld\n", static_cast<long long>(step.fastest));
    return step.repeats != 0 ? 0 : 1;
}
