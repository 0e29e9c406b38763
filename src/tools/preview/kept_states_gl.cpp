#include "tools/preview/kept_states.h"

#include "effects/dynamic_texture.h"
#include "render/compositor_gl.h"
#include "tools/preview/frames_alike.h"
#include "tools/preview/remembering.h"
#include "tools/preview/stage_state_gl.h"

#include <GL/glew.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <map>

constexpr double rough_slice = 0.2;    // of the budget, for getting nearer before a rough picture
constexpr double longest_stretch = 32; // frames that are passed between two looks at the clock
constexpr uint64_t short_way = 8;      // frames that are passed at once where nothing is remembered

namespace {

using stopwatch = std::chrono::steady_clock;

} // namespace

struct keeper_parts {
    remembering memory;
    pixel_needs needs;
    card_pixels card;
    chance_place chance; // where the show's random numbers are
    uint32_t muted = 0;  // tracks that are not drawn, since `needs` were made
    uint64_t spacing = 120;

    bool clean = false; // the stage is in the state of a run from the start that stands before `next`
    uint64_t next = 0;
    bool flown = false; // since the state was put back, frames were seen from another camera

    std::unique_ptr<kept_state> resume; // where settling goes on after a rough picture
    uint64_t settle_from = 0;
    std::unique_ptr<kept_screen> aside; // where frames are drawn that nobody is to see; null: not needed yet
    bool is_aside = false;               // the state's picture is there

    uint64_t drawn_frame = 0; // how the picture was drawn
    bool drawn = false;
    flown_camera drawn_camera;

    std::map<uint64_t, uint64_t> keeping_frames; // by the frame at which a state is due
};

state_keeper::state_keeper() = default;
state_keeper::~state_keeper() = default;

static double ms_since(stopwatch::time_point begin)
{
    return std::chrono::duration<double, std::milli>(stopwatch::now() - begin).count();
}

// ---- beginning ------------------------------------------------------------------------------------

static void make_needs(keeper_parts& p, const stage& s)
{
    document d = s.production;
    if (s.shown != nullptr)
        d.timeline = s.shown;
    p.memory.targets = what_is_remembered(d).targets;
    p.needs = make_pixel_needs(d, p.memory.targets, screen_view(s.display), s.display.caps, s.rate, s.end);
    p.muted = s.muted_tracks;
    p.keeping_frames.clear();
}

// OpenGL may be further on than the records of a new show say.
static void forget_program(stage& s)
{
    if (glUseProgram == nullptr)
        return;
    glUseProgram(0);
    s.drawing.gl.program = 0;
}

static void keep_first(state_keeper& k, stage& s)
{
    keeper_parts& p = *k.parts;
    s.drawing.standing = initial_standing_state();
    reset_rippler_cache(s.drawing.tools.rippler);
    forget_program(s);
    p.chance = chance_now();
    k.states.push_back(keep_state_gl(s, {&p.memory, awaited_targets(p.needs, 0), false, nullptr}, p.card));
    put_state_gl(s, *k.states[0], p.memory, p.card);
    p.clean = true;
    p.next = 0;
}

void keeper_restart(state_keeper& k, stage& s)
{
    k.states.clear();
    k.parts = std::make_unique<keeper_parts>();
    k.exact = k.settling = k.remembers = false;
    if (!s.has_show)
        return;
    keeper_parts& p = *k.parts;
    p.memory = what_is_remembered(s.production);
    const double frames = kept_every * s.rate.numerator / s.rate.denominator;
    p.spacing = std::max<uint64_t>(1, static_cast<uint64_t>(std::llround(frames)));
    make_needs(p, s);
    k.remembers = p.memory.anything();
    keep_first(k, s);
}

// ---- keeping --------------------------------------------------------------------------------------

// Where a state is kept that is due at a frame: before the next one that clears all, so that the picture need not be
// kept; with the picture where there is none for a while.
static uint64_t find_keeping_frame(const keeper_parts& p, uint64_t due)
{
    for (uint64_t frame = due; frame < due + p.spacing / 2 && frame < p.needs.end; ++frame)
        if (!shows_through(p.needs, frame))
            return frame;
    return due;
}

static uint64_t keeping_frame(keeper_parts& p, uint64_t due)
{
    if (due == 0)
        return 0;
    const auto [place, is_new] = p.keeping_frames.try_emplace(due);
    if (is_new)
        place->second = find_keeping_frame(p, due);
    return place->second;
}

// The first one behind a frame.
static uint64_t next_keeping_frame(keeper_parts& p, uint64_t frame)
{
    uint64_t due = frame / p.spacing * p.spacing;
    while (keeping_frame(p, due) <= frame)
        due += p.spacing;
    return keeping_frame(p, due);
}

static const kept_state* newest_before(const state_keeper& k, uint64_t frame)
{
    const keeper_parts& p = *k.parts;
    const kept_state* newest = nullptr;
    for (const auto& state : k.states)
        if (state->next <= frame && (state->next == 0 || state->muted == p.muted)
            && (newest == nullptr || state->next > newest->next))
            newest = state.get();
    return newest;
}

uint64_t keeper_memory(const state_keeper& k)
{
    std::vector<const void*> seen;
    uint64_t bytes = 0;
    for (const auto& state : k.states)
        bytes += count_bytes(*state, seen);
    return bytes;
}

static void thin_out(state_keeper& k)
{
    while (k.states.size() > 2 && keeper_memory(k) > k.most_bytes) {
        for (size_t i = k.states.size() - 1; i >= 1; --i)
            if (i % 2 == 1)
                k.states.erase(k.states.begin() + static_cast<std::ptrdiff_t>(i));
        k.parts->spacing *= 2;
        k.parts->keeping_frames.clear();
    }
}

static std::unique_ptr<kept_state> keep_now(state_keeper& k, stage& s, bool picture)
{
    keeper_parts& p = *k.parts;
    auto state
        = keep_state_gl(s, {&p.memory, awaited_targets(p.needs, p.next), picture, newest_before(k, p.next)}, p.card);
    state->next = p.next;
    return state;
}

// The stage stands before a frame at which a state is due.
static void keep_if_due(state_keeper& k, stage& s)
{
    keeper_parts& p = *k.parts;
    if (!k.remembers || p.flown || p.next >= s.end || keeping_frame(p, p.next / p.spacing * p.spacing) != p.next)
        return;
    const kept_state* before = newest_before(k, p.next);
    if (before != nullptr && before->next == p.next)
        return;
    const bool picture = shows_through(p.needs, p.next);
    if (picture && !can_keep_pictures_gl())
        return;
    auto state = keep_now(k, s, picture);
    const auto place = std::find_if(k.states.begin(), k.states.end(),
        [&state](const std::unique_ptr<kept_state>& other) { return other->next > state->next; });
    k.states.insert(place, std::move(state));
    thin_out(k);
}

// ---- passing --------------------------------------------------------------------------------------

// The stage has gone on by one frame.
static void note_frame(state_keeper& k, stage& s)
{
    keeper_parts& p = *k.parts;
    p.flown |= s.camera.on;
    forget_changed_targets(s, p.memory.targets, p.card);
    ++p.next;
}

// So many frames that the stage is right for whatever comes next: on the way, pixels may be missing.
static void pass_stretch(state_keeper& k, stage& s, uint64_t to)
{
    keeper_parts& p = *k.parts;
    const std::vector<kept_function> functions = keep_functions(s.production, p.memory.odd_functions);
    const uint64_t from = p.next;
    const std::vector<bool> pixels = passed_with_pixels(p.needs, from, to);
    put_functions(s.production, functions);
    for (uint64_t frame = from; frame < to; ++frame) {
        stage_pass(s, frame, pixels[frame - from]);
        note_frame(k, s);
    }
}

// Passes frames until `to` is the next one or the time is over.
static void pass_frames(state_keeper& k, stage& s, uint64_t to, double budget_ms)
{
    keeper_parts& p = *k.parts;
    const auto begin = stopwatch::now();
    const uint64_t first = p.next;
    while (p.next < to && (p.next == first || ms_since(begin) < budget_ms)) {
        const auto stretch_begin = stopwatch::now();
        const double fitting = std::clamp(budget_ms / 4 / k.pass_ms, 1.0, longest_stretch);
        const uint64_t end = std::min({to, p.next + static_cast<uint64_t>(fitting), next_keeping_frame(p, p.next)});
        const auto count = static_cast<double>(end - p.next);
        pass_stretch(k, s, end);
        keep_if_due(k, s);
        k.pass_ms += (ms_since(stretch_begin) / count - k.pass_ms) * std::min(1.0, 0.05 * count);
    }
}

// Frames that are passed while another is shown are drawn elsewhere.
static void step_aside(keeper_parts& p, const stage& s)
{
    if (p.aside == nullptr)
        p.aside = make_picture_gl(s);
    if (p.aside == nullptr)
        return;
    if (!p.is_aside && p.clean)
        copy_picture_gl(s.framebuffer, p.aside->framebuffer, s.wish.width, s.wish.height);
    glBindFramebuffer(GL_FRAMEBUFFER, p.aside->framebuffer);
    p.is_aside = true;
}

static void come_back(keeper_parts& p, const stage& s)
{
    if (!p.is_aside)
        return;
    if (p.clean)
        copy_picture_gl(p.aside->framebuffer, s.framebuffer, s.wish.width, s.wish.height);
    glBindFramebuffer(GL_FRAMEBUFFER, s.framebuffer);
    p.is_aside = false;
}

static void draw_frame_now(keeper_parts& p, stage& s, uint64_t frame)
{
    stage_draw(s, frame);
    p.drawn = true;
    p.drawn_frame = frame;
    p.drawn_camera = s.camera;
}

static void arrive(state_keeper& k, stage& s, uint64_t frame)
{
    keeper_parts& p = *k.parts;
    draw_frame_now(p, s, frame);
    note_frame(k, s);
    keep_if_due(k, s);
    p.resume = nullptr;
    k.exact = true;
    k.settling = false;
}

// Roughly: with what is remembered as it is. The state before it waits for keeper_settle.
static void draw_roughly(state_keeper& k, stage& s, uint64_t frame)
{
    keeper_parts& p = *k.parts;
    if (p.clean && p.next > 0 && k.remembers
        && (p.resume == nullptr || p.resume->next != p.next || p.resume->muted != p.muted))
        p.resume = keep_now(k, s, can_keep_pictures_gl() && shows_through(p.needs, p.next));
    draw_frame_now(p, s, frame);
    forget_changed_targets(s, p.memory.targets, p.card);
    p.clean = false;
    k.exact = false;
    k.settling = true;
}

// ---- starting points ------------------------------------------------------------------------------

// The state from which the way to a frame is shortest; null: the one in which the stage is.
static const kept_state* starting_point(const state_keeper& k, uint64_t frame)
{
    const keeper_parts& p = *k.parts;
    const kept_state* best = newest_before(k, frame);
    if (p.resume != nullptr && p.resume->muted == p.muted && p.resume->next <= frame
        && (best == nullptr || p.resume->next > best->next))
        best = p.resume.get();
    const bool here = p.clean && p.next <= frame && (best == nullptr || p.next >= best->next);
    return here ? nullptr : best;
}

static void put_back(state_keeper& k, stage& s, const kept_state& state)
{
    keeper_parts& p = *k.parts;
    put_state_gl(s, state, p.memory, p.card);
    p.clean = true;
    p.next = state.next;
    p.flown = false;
}

// ---- the keeper -----------------------------------------------------------------------------------

static bool same_camera(const flown_camera& a, const flown_camera& b)
{
    return a.on == b.on
        && (!a.on
            || (std::memcmp(a.position, b.position, sizeof a.position) == 0
                && std::memcmp(a.rotation, b.rotation, sizeof a.rotation) == 0));
}

// What is wished may have changed since the last frame.
static void notice_changes(state_keeper& k, stage& s)
{
    keeper_parts& p = *k.parts;
    p.needs.d.timeline = s.shown != nullptr ? s.shown : s.production.timeline;
    if (p.muted != s.muted_tracks) {
        make_needs(p, s);
        p.clean = false;
        p.drawn = false;
    }
    if (p.flown && !s.camera.on) {
        p.clean = false;
        p.flown = false;
        p.resume = nullptr;
    }
    if (!s.at_frame)
        p.drawn = false;
}

// The frame at hand once more. True: that is all there is to do.
static bool draw_same_frame(state_keeper& k, stage& s, uint64_t frame)
{
    keeper_parts& p = *k.parts;
    if (!p.drawn || p.drawn_frame != frame || s.frame != frame)
        return false;
    if (same_camera(p.drawn_camera, s.camera))
        return k.exact;
    if (!s.camera.on)
        return false;
    stage_draw_again(s);
    p.drawn_camera = s.camera;
    p.flown = true;
    return true;
}

// ---- shows that remember nothing -----------------------------------------------------------------------

static void note_sampler(uint32_t program, GLint uniform, sampled_units& units)
{
    GLchar name[64] = "";
    GLint size = 0;
    GLenum type = 0;
    glGetActiveUniform(program, static_cast<GLuint>(uniform), sizeof name, nullptr, &size, &type, name);
    if (type != GL_SAMPLER_2D && type != GL_SAMPLER_CUBE)
        return;
    GLint unit = 0;
    glGetUniformiv(program, glGetUniformLocation(program, name), &unit);
    (type == GL_SAMPLER_2D ? units.flat : units.cube) |= uint32_t{1} << (static_cast<uint32_t>(unit) & 31);
}

static sampled_units sampled_by(uint32_t program)
{
    sampled_units units;
    GLint count = 0;
    if (glIsProgram(program) == GL_TRUE)
        glGetProgramiv(program, GL_ACTIVE_UNIFORMS, &count);
    for (GLint uniform = 0; uniform < count; ++uniform)
        note_sampler(program, uniform, units);
    return units;
}

// The frame after the few before it, from one past.
static void go_from(stage& s, const standing_state& past, uint64_t frame, uint64_t before)
{
    s.drawing.standing = past;
    forget_pictures(s.production.dynamic_texture_table);
    for (uint64_t i = frame - before; i < frame; ++i)
        stage_pass(s, i, false);
}

// What a frame takes over from those before it are a few things that all materials set and every frame says anew: most
// often the few frames before decide them. Two different pasts tell. False: they lead to different pictures.
static bool draw_at_once(state_keeper& k, stage& s, uint64_t frame)
{
    keeper_parts& p = *k.parts;
    constexpr uint64_t before = 2;
    const bool is_near = p.clean && p.next <= frame && frame - p.next <= short_way;
    if (k.remembers || is_near || frame <= short_way)
        return false;
    p.clean = false;
    if (shows_through(p.needs, frame)) {
        k.remembers = true;
        return false;
    }
    go_from(s, strange_standing_state(p.memory.units), frame, before);
    stage_pass(s, frame, false);
    const planned_frame strange = plan_of(s.drawing.f);
    go_from(s, initial_standing_state(), frame, before);
    draw_frame_now(p, s, frame);
    k.remembers = !drawn_alike(strange, plan_of(s.drawing.f), sampled_by);
    k.exact = !k.remembers;
    k.settling = false;
    return k.exact;
}

static void go(state_keeper& k, stage& s, uint64_t frame, double budget_ms)
{
    keeper_parts& p = *k.parts;
    const auto begin = stopwatch::now();
    const kept_state* start = starting_point(k, frame);
    const uint64_t from = start != nullptr ? start->next : p.next;
    const double estimate = static_cast<double>(frame - from) * k.pass_ms;
    const bool is_short = !k.remembers && frame - from <= short_way;
    const double slice = is_short ? HUGE_VAL : estimate <= budget_ms ? budget_ms : budget_ms * rough_slice;
    if (start != nullptr)
        put_back(k, s, *start);
    if (!k.settling)
        p.settle_from = p.next;
    if (p.next < frame)
        pass_frames(k, s, frame, std::max(0.0, slice - ms_since(begin)));
    if (p.next == frame)
        arrive(k, s, frame);
    else
        draw_roughly(k, s, frame);
}

void keeper_go(state_keeper& k, stage& s, uint64_t frame, double budget_ms)
{
    if (k.parts == nullptr || k.states.empty())
        return;
    keeper_parts& p = *k.parts;
    notice_changes(k, s);
    k.target = frame;
    chance_put(p.chance);
    come_back(p, s);
    if (!draw_same_frame(k, s, frame) && !draw_at_once(k, s, frame))
        go(k, s, frame, budget_ms);
    p.chance = chance_now();
}

bool keeper_settle(state_keeper& k, stage& s, double budget_ms)
{
    if (k.parts == nullptr || !k.settling)
        return false;
    keeper_parts& p = *k.parts;
    notice_changes(k, s);
    chance_put(p.chance);
    const kept_state* start = starting_point(k, k.target);
    step_aside(p, s);
    if (start != nullptr)
        put_back(k, s, *start);
    if (p.next < k.target)
        pass_frames(k, s, k.target, budget_ms);
    const bool arrived = p.next == k.target;
    if (arrived) {
        come_back(p, s);
        arrive(k, s, k.target);
    } else if (p.is_aside) { // what is shown is read there
        glBindFramebuffer(GL_FRAMEBUFFER, s.framebuffer);
    }
    p.chance = chance_now();
    return arrived;
}

double keeper_progress(const state_keeper& k)
{
    if (k.parts == nullptr || !k.settling || k.target <= k.parts->settle_from)
        return 1;
    const keeper_parts& p = *k.parts;
    const uint64_t reached = p.clean ? p.next : p.resume != nullptr ? p.resume->next : p.settle_from;
    return std::clamp(
        static_cast<double>(reached - std::min(reached, p.settle_from)) / static_cast<double>(k.target - p.settle_from),
        0.0, 1.0);
}
