#include "authoring/curve/clear_colors.h"

#include "played_plan.h"

#include "model/render_modes.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>

namespace {

// A clip and what it wants.
struct test_clip {
    uint32_t from;
    uint32_t to;
    clear_request request = {};
    int32_t track = -1;
};

} // namespace

static std::vector<timed_clip> times_of(const std::vector<test_clip>& clips)
{
    std::vector<timed_clip> times;
    for (const test_clip& c : clips)
        times.push_back({c.from, c.to, c.track});
    return times;
}

static std::vector<clear_request> requests_of(const std::vector<test_clip>& clips)
{
    std::vector<clear_request> requests;
    for (const test_clip& c : clips) {
        requests.push_back(c.request);
        requests.back().function_start += c.from;
    }
    return requests;
}

static track_plan colored_plan(const std::vector<test_clip>& clips, track_rules rules = tracks_of_show)
{
    track_plan plan = plan_tracks(times_of(clips), rules);
    plan_clear_colors(requests_of(clips), rules, plan);
    return plan;
}

// "track: clip from+length=colour" of each clip.
static std::string as_text(const track_plan& plan)
{
    std::string text;
    for (const placed_clip& c : plan.clips)
        text += std::to_string(c.track + 1) + ":" + (c.clip == empty_clip ? "-" : std::to_string(c.clip)) + " "
            + std::to_string(c.from) + "+" + std::to_string(c.length) + "=" + std::to_string(c.clear) + " ";
    return text;
}

static clear_request wants(int32_t color)
{
    return {.wanted = color};
}

static clear_request into_target(uint32_t mode, int32_t color)
{
    return {.mode = mode, .has_target = true, .wanted = color};
}

// ---- who carries what -----------------------------------------------------------------------

TEST_CASE("A clip that is alone carries its own colour")
{
    CHECK(as_text(colored_plan({{0, 300, wants(1)}, {300, 500, wants(2)}, {500, 700}}))
        == "1:0 0+300=1 1:1 300+200=2 1:2 500+200=0 ");
}

TEST_CASE("The last clip of a frame carries the colour of the first")
{
    CHECK(as_text(colored_plan({{0, 300, wants(1)}, {0, 300}})) == "1:0 0+300=0 2:1 0+300=1 ");
}

TEST_CASE("The last clip is cut where the first one changes, and its time goes on")
{
    const track_plan plan = colored_plan({{0, 300, wants(1)}, {300, 650, wants(2)}, {650, 900, wants(3)}, {100, 800}});
    CHECK(as_text(plan) == "1:0 0+300=1 1:1 300+350=0 1:2 650+250=3 2:3 100+200=1 2:3 300+350=2 2:3 650+150=3 ");
    CHECK(problem_texts(plan) == "");
    CHECK(plan.clips[3].space_before == 100);
    CHECK(plan.clips[4].space_before == 0);
    CHECK(plan.clips[3].skipped == 0);
    CHECK(plan.clips[4].skipped == 200);
    CHECK(plan.clips[5].skipped == 550);
}

TEST_CASE("A clip is not cut for a colour that it carries already, nor where none matters")
{
    // Clip 2 is covered from 300 on: what it carries then is overwritten before any clear.
    CHECK(as_text(colored_plan({{0, 300, wants(1)}, {300, 600, wants(2)}, {0, 600}, {300, 600}}))
        == "1:0 0+300=0 1:1 300+300=0 2:2 0+600=1 3:3 300+300=2 ");
    CHECK(as_text(colored_plan({{0, 300, wants(1)}, {300, 600, wants(1)}, {0, 600}}))
        == "1:0 0+300=0 1:1 300+300=0 2:2 0+600=1 ");
}

TEST_CASE("Who clears in the middle of a frame has its colour from the clip before it")
{
    // A picture of colour 2 on track 1, shown by a clip with colour 1 on track 2.
    CHECK(as_text(colored_plan({{0, 300, into_target(render_to_texture, 2)}, {0, 300, wants(1)}}))
        == "1:0 0+300=1 2:1 0+300=2 ");
    // Clips that link draw on and clear nothing: the last of them carries.
    CHECK(as_text(colored_plan(
              {{0, 300, into_target(render_to_texture, 2)}, {0, 300, {.mode = render_link}}, {0, 300, wants(1)}}))
        == "1:0 0+300=0 2:1 0+300=1 3:2 0+300=2 ");
    // The mode that keeps the small picture holds the clear back, and nobody needs the wish behind it.
    CHECK(
        as_text(colored_plan({{0, 300, into_target(render_quarter_keep, 2)}, {0, 300}})) == "1:0 0+300=0 2:1 0+300=2 ");
    // Without a target nothing is copied, and nothing cleared.
    CHECK(as_text(colored_plan({{0, 300, {.mode = render_to_texture, .wanted = 2}}, {0, 300, wants(1)}}))
        == "1:0 0+300=0 2:1 0+300=2 ");
}

TEST_CASE("An empty clip wants what is drawn behind it wants")
{
    // Track 1 is empty from 200 on.
    const track_plan plan = colored_plan({{0, 200, wants(1)}, {100, 600, wants(2)}});
    CHECK(as_text(plan) == "1:0 0+200=1 1:- 200+400=0 2:1 100+100=1 2:1 200+400=2 ");
    CHECK(problem_texts(plan) == "");
}

TEST_CASE("A clip that says what comes next carries that")
{
    CHECK(as_text(colored_plan({{0, 300, {.next = 4}}, {0, 300, {.next = 5}}})) == "1:0 0+300=4 2:1 0+300=5 ");
    const track_plan plan = colored_plan({{0, 300, wants(1)}, {0, 300, {.next = 5}}});
    CHECK(as_text(plan) == "1:0 0+300=0 2:1 0+300=5 ");
    CHECK(problem_texts(plan)
        == "0 has another clear colour behind it from 0s to 3.01s: a clip drawn before the clear says next_clear "
           "itself; leave that out, or this one's clear\n");
}

TEST_CASE("Clips as given are never split")
{
    const track_plan plan
        = colored_plan({{0, 300, wants(1), 0}, {300, 700, wants(2), 0}, {0, 700, {}, 1}}, tracks_as_given);
    CHECK(as_text(plan) == "1:0 0+300=0 1:1 300+400=0 2:2 0+700=2 ");
    CHECK(problem_texts(plan).find("0 has another clear colour behind it from 0s to 3s") == 0);
}

// ---- what is told -----------------------------------------------------------------------------

TEST_CASE("A wish of a clip that clears nothing is told")
{
    CHECK(problem_texts(colored_plan({{0, 300, wants(1)}, {0, 300, wants(2)}}))
        == "1 clears nothing, so that its clear colour is seen nowhere: give it to the clip below it\n");
    CHECK(problem_texts(colored_plan({{0, 300}, {0, 300}})) == "");
}

TEST_CASE("Where a clip cannot be cut it carries the colour that is wanted longer, and that is told")
{
    // The last clip lies behind 150 on its track; a piece that ends at 170 would be lost.
    const std::vector<test_clip> clips
        = {{0, 170, wants(1), 0}, {170, 400, wants(2), 0}, {0, 150, {}, 1}, {150, 300, {}, 1}};
    const track_plan plan = colored_plan(clips);
    CHECK(as_text(plan) == "1:0 0+170=0 1:1 170+230=2 2:2 0+150=1 2:3 150+150=2 ");
    CHECK(problem_texts(plan)
        == "0 has another clear colour behind it from 1.51s to 1.71s: the clip drawn before the clear carries one "
           "colour after the other and cannot be cut there, for a piece would be shorter than the player finds; let "
           "it begin or end there\n");
    // Nor may the piece behind the cut be lost.
    CHECK(as_text(colored_plan({{0, 210, wants(1)}, {210, 500, wants(2)}, {0, 230}}))
        == "1:0 0+210=0 1:1 210+290=2 2:2 0+230=1 ");
}

TEST_CASE("A clip is cut no more often than its track has room for")
{
    std::vector<test_clip> clips;
    for (uint32_t clip = 0; clip < 240; ++clip)
        clips.push_back({clip * 50, clip * 50 + 50, wants(static_cast<int32_t>(clip % 2) + 1)});
    clips.push_back({0, 12000, {}, 5});
    for (uint32_t clip = 240; clip < 280; ++clip)
        clips.push_back({clip * 50, clip * 50 + 50, {}, 5});
    const track_plan plan = colored_plan(clips);
    CHECK(
        std::count_if(plan.clips.begin(), plan.clips.end(), [](const placed_clip& c) { return c.track == 5; }) == 256);
}

TEST_CASE("A colour that moves is told when another clip's time carries it")
{
    clear_request moves = wants(1);
    moves.wanted_moves = true;
    CHECK(problem_texts(colored_plan({{0, 300, moves}})) == "");
    CHECK(problem_texts(colored_plan({{0, 300, moves}, {0, 300}})) == "");
    CHECK(problem_texts(colored_plan({{0, 200}, {200, 500, moves}, {0, 500}}))
        == "1 has a clear colour that moves, and the clip drawn before the clear asks for it 2s ahead of this clip's "
           "own time: shift its curves by that\n");
}

// ---- the player as the judge --------------------------------------------------------------------

static std::vector<test_clip> random_clips(std::mt19937& random, uint32_t duration, uint32_t step)
{
    constexpr uint32_t modes[] = {render_simple, render_simple, render_simple, render_to_texture, render_link,
        render_clear_depth, render_quarter, render_quarter_keep, render_clear_depth_link};
    std::vector<test_clip> clips;
    for (uint32_t count = 2 + random_below(random, 10); count > 0; --count) {
        const uint32_t a = random_tick(random, duration) / step * step;
        const uint32_t b = random_tick(random, duration) / step * step;
        if (a == b)
            continue;
        const uint32_t mode = modes[random_below(random, 9)];
        const int32_t color = static_cast<int32_t>(random_below(random, color_count + 1));
        clips.push_back({std::min(a, b), std::max(a, b),
            {.mode = mode,
                .has_target = render_mode_of(mode).target == mode_draws_to_texture,
                .wanted = random_below(random, 3) == 0 ? no_clear_wish : color}});
    }
    return clips;
}

static std::vector<int32_t> clips_of_frame(const played_plan& played, const frame_layers& frame)
{
    std::vector<int32_t> clips;
    for (uint32_t index = 0; index < frame.layer_count; ++index)
        clips.push_back(played.placed(frame.layers[index]).clip);
    return clips;
}

static bool does_clear_color(const layer_plan& layer)
{
    return (layer.clear & clear_color) != 0;
}

// The colour that a clearing layer should have.
static int32_t color_wanted(
    const played_plan& played, const std::vector<test_clip>& clips, const frame_layers& frame, uint32_t index)
{
    const int32_t own = played.placed(frame.layers[index]).clip;
    if (own != empty_clip)
        return std::max(clips[static_cast<size_t>(own)].request.wanted, 0);
    for (++index; index < frame.layer_count && !does_clear_color(frame.layers[index]); ++index) {
        const int32_t clip = played.placed(frame.layers[index]).clip;
        if (clips[static_cast<size_t>(clip)].request.wanted != no_clear_wish)
            return clips[static_cast<size_t>(clip)].request.wanted;
    }
    return 0;
}

// A second frame at this tick: each clear has the colour that its clip wants. How many have not.
static uint32_t wrong_clears(const played_plan& played, const std::vector<test_clip>& clips, const frame_layers& frame)
{
    uint32_t wrong = 0;
    float standing = frame.layer_count > 0 ? frame.layers[frame.layer_count - 1].clear_color[0] : 0;
    for (uint32_t index = 0; index < frame.layer_count; ++index) {
        const layer_plan& layer = frame.layers[index];
        const int32_t color = static_cast<int32_t>(std::lround(standing * 16));
        if (does_clear_color(layer) && color != color_wanted(played, clips, frame, index))
            ++wrong;
        standing = layer.clear_color[0];
    }
    return wrong;
}

TEST_CASE("Every clear has the colour that was asked for, or it is told")
{
    std::mt19937 random(1977);
    uint32_t cuts = 0;
    for (uint32_t round = 0; round < 200; ++round) {
        CAPTURE(round);
        const uint32_t step = round % 3 == 0 ? 1 : 50;
        const uint32_t duration = 300 + random_below(random, 2500);
        const std::vector<test_clip> clips = random_clips(random, duration, step);
        const track_plan plan = colored_plan(clips);
        const bool is_told = problem_texts(plan).find("cannot be cut there") != std::string::npos;
        if (step == 50)
            REQUIRE(!is_told); // every piece reaches a whole second
        const std::vector<clear_request> requests = requests_of(clips);
        const std::vector<timed_clip> times = times_of(clips);
        const played_plan played(plan, times, requests);
        const track_plan uncolored = plan_tracks(times, tracks_of_show);
        const played_plan uncut(uncolored, times, requests);
        std::vector<int32_t> before;
        for (uint32_t tick = 0; tick <= duration; ++tick) {
            CAPTURE(tick);
            const frame_layers frame = played.at(tick);
            for (uint32_t index = 0; index < frame.layer_count; ++index) {
                const int32_t clip = played.placed(frame.layers[index]).clip;
                if (clip != empty_clip)
                    REQUIRE(frame.layers[index].time == tick - clips[static_cast<size_t>(clip)].from);
            }
            // The tick of a change may still have the colour before it, and a whole second right before one that
            // behind it.
            const std::vector<int32_t> shown = clips_of_frame(played, frame);
            REQUIRE(shown == clips_of_frame(uncut, uncut.at(tick)));
            const bool is_early = tick % 100 == 0 && clips_of_frame(played, played.at(tick + 1)) != shown;
            if (!is_told && !is_early && shown == before)
                REQUIRE(wrong_clears(played, clips, frame) == 0);
            before = shown;
        }
        for (const placed_clip& c : plan.clips)
            cuts += c.skipped != 0 ? 1 : 0;
    }
    CHECK(cuts > 100);
}
