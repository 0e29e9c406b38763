// Walks through a show on the stage as a viewer might - from the start, in jumps, hand over hand, after a reload, with
// tracks switched off and on again - and compares every picture that is said to be exact with that of a straight run.
//
//     stage_walk PACK [--size 160x120] [--path glsl|fixed] [--fps 60] [--frames 200] [--steps 60] [--seed 1] [--spread]
//         [--budget MS] [--memory BYTES]
//
// Prints one line, and "different" lines for what differs; the exit status says whether nothing did.
#include "tools/frames/frame_clock.h"
#include "tools/preview/kept_states.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GL/glew.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace {

struct walk {
    stage s;
    state_keeper k;
    show_build build;
    std::vector<uint64_t> frames;   // those that are compared, ascending
    std::vector<uint64_t> straight; // hashes of their pictures
    std::mt19937 chance;
    uint32_t compared = 0;
    uint32_t different = 0;
    uint32_t roughly = 0; // pictures that came roughly first
    double longest_go = 0;
    double longest_settle = 0;
};

struct walk_options {
    std::string pack;
    stage_wish wish;
    frame_rate rate = {60, 1};
    uint64_t frames = 200;
    uint32_t steps = 60;
    uint32_t seed = 1;
    bool spread = false; // frames from all of the show, not from its beginning
    double budget = 20;
    uint64_t memory = most_kept_bytes;
};

} // namespace

static double now_ms()
{
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

static bool open_context()
{
    EGLDisplay display = eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    const EGLint wanted[] = {EGL_SURFACE_TYPE, EGL_PBUFFER_BIT, EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_NONE};
    const EGLint size[] = {EGL_WIDTH, 16, EGL_HEIGHT, 16, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    if (eglInitialize(display, nullptr, nullptr) != EGL_TRUE || eglBindAPI(EGL_OPENGL_API) != EGL_TRUE
        || eglChooseConfig(display, wanted, &config, 1, &count) != EGL_TRUE || count == 0)
        return false;
    EGLContext context = eglCreateContext(display, config, EGL_NO_CONTEXT, nullptr);
    EGLSurface surface = eglCreatePbufferSurface(display, config, size);
    return eglMakeCurrent(display, surface, surface, context) == EGL_TRUE;
}

static uint64_t hash_of_picture(stage& s)
{
    const picture image = stage_picture(s);
    uint64_t hash = 14695981039346656037u;
    for (const uint8_t byte : image.rgb)
        hash = (hash ^ byte) * 1099511628211u;
    return hash;
}

// Frames that are not compared are passed as pixels need them, or all drawn.
static void run_straight(walk& w, std::vector<uint64_t>& hashes)
{
    hashes.clear();
    size_t next = 0;
    for (uint64_t frame = 0; next < w.frames.size(); ++frame) {
        stage_draw(w.s, frame);
        if (frame != w.frames[next])
            continue;
        hashes.push_back(hash_of_picture(w.s));
        ++next;
    }
}

static void compare(walk& w, size_t index, const char* what)
{
    ++w.compared;
    if (hash_of_picture(w.s) == w.straight[index] && w.k.exact)
        return;
    ++w.different;
    std::printf("different: frame %llu %s%s\n", static_cast<unsigned long long>(w.frames[index]), what,
        w.k.exact ? "" : " (not exact)");
}

static void go_and_settle(walk& w, uint64_t frame, double budget)
{
    double begin = now_ms();
    keeper_go(w.k, w.s, frame, budget);
    w.longest_go = std::max(w.longest_go, now_ms() - begin);
    w.roughly += w.k.exact ? 0u : 1u;
    const uint64_t shown = w.k.settling ? hash_of_picture(w.s) : 0;
    for (uint32_t slices = 0; w.k.settling && slices < 100000; ++slices) {
        begin = now_ms();
        keeper_settle(w.k, w.s, 12);
        w.longest_settle = std::max(w.longest_settle, now_ms() - begin);
        if (!w.k.settling || slices > 2 || hash_of_picture(w.s) == shown)
            continue;
        ++w.different;
        std::printf("different: frames on the way to %llu are seen\n", static_cast<unsigned long long>(frame));
    }
}

static size_t some_index(walk& w)
{
    return w.chance() % w.frames.size();
}

static void jump(walk& w, uint32_t steps, double budget, const char* what)
{
    for (uint32_t i = 0; i < steps; ++i) {
        const size_t index = some_index(w);
        go_and_settle(w, w.frames[index], budget);
        compare(w, index, what);
    }
}

// Plays from some frame on, some frames at a time, as it happens where drawing takes its time.
static void play(walk& w, double budget)
{
    size_t index = some_index(w);
    go_and_settle(w, w.frames[index], budget);
    for (uint32_t i = 0; i < 8 && index < w.frames.size(); ++i, index += 1 + w.chance() % 3) {
        go_and_settle(w, w.frames[index], budget);
        compare(w, index, "played");
    }
}

// A hand that moves faster than pictures become exact.
static void scrub(walk& w, double budget)
{
    size_t index = 0;
    for (uint32_t i = 0; i < 10; ++i) {
        index = some_index(w);
        keeper_go(w.k, w.s, w.frames[index], budget / 10);
        if (w.k.settling && i % 3 == 0)
            keeper_settle(w.k, w.s, 1);
    }
    go_and_settle(w, w.frames[index], budget);
    compare(w, index, "after scrubbing");
}

static bool reload(walk& w)
{
    std::string problem;
    if (!stage_load(w.s, w.build, problem)) {
        std::printf("cannot load: %s\n", problem.c_str());
        return false;
    }
    keeper_restart(w.k, w.s);
    return true;
}

// What was passed with a track off must not be gone on from, neither without it nor with it.
static void mute_and_back(walk& w, double budget)
{
    const size_t third = w.frames.size() / 3;
    const size_t first = w.chance() % (third + 1);
    const size_t later = std::min(first + third, w.frames.size() - 1);
    go_and_settle(w, w.frames[first], budget);
    stage_mute(w.s, uint32_t{1} << static_cast<uint32_t>(w.chance() % 3));
    go_and_settle(w, w.frames[first + third / 2], budget);
    stage_mute(w.s, 0);
    go_and_settle(w, w.frames[later], budget);
    compare(w, later, "after a track was off");
}

static void fly_and_back(walk& w, double budget)
{
    w.s.camera = {true, {0.5f, 0.2f, -3.0f}, {10.0f, 20.0f, 0.0f}};
    const size_t index = some_index(w);
    go_and_settle(w, w.frames[index], budget);
    w.s.camera.position[0] += 1.0f;
    go_and_settle(w, w.frames[index], budget);
    w.s.camera.on = false;
    go_and_settle(w, w.frames[index], budget);
    compare(w, index, "after another camera");
}

static void choose_frames(walk& w, const walk_options& options)
{
    const uint64_t end = options.spread ? w.s.end : std::min(options.frames, w.s.end);
    const uint64_t step = std::max<uint64_t>(1, end / options.frames);
    for (uint64_t frame = 0; frame < end; frame += step)
        w.frames.push_back(frame);
}

static bool walk_through(walk& w, const walk_options& options)
{
    if (!reload(w))
        return false;
    if (w.s.end == 0)
        return true;
    choose_frames(w, options);
    run_straight(w, w.straight);
    if (!reload(w))
        return false;
    std::vector<uint64_t> again;
    run_straight(w, again);
    if (again != w.straight)
        std::printf("different: a second straight run\n");
    w.different += again != w.straight ? 1u : 0u;
    if (!reload(w))
        return false;
    jump(w, options.steps / 4, options.budget, "jumped to, early");
    for (uint32_t i = 0; i < options.steps / 8; ++i)
        play(w, options.budget);
    jump(w, options.steps, options.budget, "jumped to");
    jump(w, options.steps / 4, 1, "jumped to in haste");
    for (uint32_t i = 0; i < 4; ++i)
        scrub(w, options.budget);
    for (uint32_t i = 0; i < 6; ++i)
        mute_and_back(w, options.budget);
    fly_and_back(w, options.budget);
    if (!reload(w))
        return false;
    jump(w, options.steps / 4, options.budget, "after a reload");
    return true;
}

static bool read_options(int count, char** words, walk_options& options)
{
    for (int i = 1; i < count; ++i) {
        const std::string word = words[i];
        const std::string value = i + 1 < count ? words[i + 1] : "";
        if (word[0] != '-') {
            options.pack = word;
            continue;
        }
        if (word == "--spread") {
            options.spread = true;
            continue;
        }
        ++i;
        if (word == "--size")
            std::sscanf(value.c_str(), "%ux%u", &options.wish.width, &options.wish.height);
        else if (word == "--path")
            options.wish.glsl = value == "glsl";
        else if (word == "--fps" && !read_frame_rate(value, options.rate))
            return false;
        else if (word == "--frames")
            options.frames = std::strtoull(value.c_str(), nullptr, 10);
        else if (word == "--steps")
            options.steps = static_cast<uint32_t>(std::strtoul(value.c_str(), nullptr, 10));
        else if (word == "--seed")
            options.seed = static_cast<uint32_t>(std::strtoul(value.c_str(), nullptr, 10));
        else if (word == "--memory")
            options.memory = std::strtoull(value.c_str(), nullptr, 10);
        else if (word == "--budget")
            options.budget = std::strtod(value.c_str(), nullptr);
    }
    return !options.pack.empty();
}

int main(int count, char** words)
{
    walk_options options;
    options.wish.width = 160;
    options.wish.height = 120;
    if (!read_options(count, words, options) || !open_context())
        return 2;
    walk w;
    std::ifstream file(options.pack, std::ios::binary);
    w.build.pack.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    w.build.can_play = true;
    w.chance.seed(options.seed);
    w.k.most_bytes = options.memory;
    std::string problem;
    if (!stage_open(w.s, options.wish, options.rate, problem)) {
        std::printf("cannot open: %s\n", problem.c_str());
        return 2;
    }
    const bool walked = walk_through(w, options);
    std::printf(
        "%s: %s, %u pictures, %u different, %u roughly first; pass %.3f ms, go %.1f ms, settle %.1f ms, %zu states "
        "of %llu bytes\n",
        options.pack.c_str(), w.k.remembers ? "remembers" : "forgets", w.compared, w.different, w.roughly, w.k.pass_ms,
        w.longest_go, w.longest_settle, w.k.states.size(), static_cast<unsigned long long>(keeper_memory(w.k)));
    return walked && w.different == 0 ? 0 : 1;
}
