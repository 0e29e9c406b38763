#include "authoring/curve/clear_colors.h"

#include "model/render_modes.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <set>
#include <utility>

constexpr uint32_t ticks_per_second = 100;

namespace {

// A colour that a clip must carry for a while. Between runs it does not matter what it carries.
struct color_run {
    uint32_t first; // ticks of the show
    uint32_t last;
    int32_t color;
    int32_t wisher; // clip whose wish it is; empty_clip: nobody's, black
};

// A clear of one moment.
struct clear_wish {
    size_t carrier; // place in plan.clips: who sets the colour that it takes
    int32_t color;
    int32_t wisher; // as above
};

struct clear_planning {
    const std::vector<clear_request>& requests;
    track_rules rules;
    track_plan& plan;
    std::vector<std::vector<color_run>> runs;       // of each placed clip
    std::array<size_t, track_count> clips_on = {};  // each track
    std::vector<bool> granted;                      // of each clip given: its wish was asked for
    std::set<std::pair<int32_t, std::string>> told; // problems, each once
};

} // namespace

static void tell(clear_planning& p, int32_t clip, const std::string& text)
{
    if (p.told.insert({clip, text}).second)
        p.plan.problems.push_back({clip, problem_warning, text});
}

static const clear_request& request_of(const clear_planning& p, size_t place)
{
    static const clear_request nothing;
    const int32_t clip = p.plan.clips[place].clip;
    return clip == empty_clip ? nothing : p.requests[static_cast<size_t>(clip)];
}

// ---- who clears -----------------------------------------------------------------------------

// Which layers of a frame clear the colour, as the player does it.
static std::vector<bool> clearing_layers(const clear_planning& p, const std::vector<size_t>& shown)
{
    std::vector<bool> clears;
    bool is_pending = false;    // a picture waits to be copied
    bool keeps_picture = false; // the layer before holds the clear back
    for (const size_t place : shown) {
        const clear_request& request = request_of(p, place);
        const render_mode_row& mode = render_mode_of(request.mode);
        const bool copies = mode.target != mode_draws_on && is_pending;
        if (mode.target == mode_draws_to_screen)
            is_pending = false;
        else if (mode.target == mode_draws_to_texture && request.has_target)
            is_pending = true;
        clears.push_back(p.plan.clips[place].track == 0 || (copies && !keeps_picture));
        keeps_picture = mode.holds_back_clear;
    }
    return clears;
}

// The clip whose wish a clearing layer has. An empty one stands in for those drawn behind it, up to the next clear.
static int32_t wisher_of(
    const clear_planning& p, const std::vector<size_t>& shown, const std::vector<bool>& clears, size_t layer)
{
    const int32_t own = p.plan.clips[shown[layer]].clip;
    if (own != empty_clip)
        return request_of(p, shown[layer]).wanted == no_clear_wish ? empty_clip : own;
    for (size_t next = layer + 1; next < shown.size() && !clears[next]; ++next)
        if (request_of(p, shown[next]).wanted != no_clear_wish)
            return p.plan.clips[shown[next]].clip;
    return empty_clip;
}

// The clears of a moment that lasts. Each takes the colour of the layer before it; the first one that of the last
// layer, from the frame before.
static std::vector<clear_wish> wishes_of(const clear_planning& p, const std::vector<size_t>& shown)
{
    std::vector<clear_wish> wishes;
    const std::vector<bool> clears = clearing_layers(p, shown);
    for (size_t layer = 0; layer < shown.size(); ++layer) {
        if (!clears[layer])
            continue;
        const int32_t wisher = wisher_of(p, shown, clears, layer);
        const int32_t color = wisher == empty_clip ? 0 : p.requests[static_cast<size_t>(wisher)].wanted;
        wishes.push_back({layer == 0 ? shown.back() : shown[layer - 1], color, wisher});
    }
    return wishes;
}

static void add_wish(clear_planning& p, const clear_wish& wish, uint32_t first, uint32_t last)
{
    std::vector<color_run>& runs = p.runs[wish.carrier];
    if (wish.wisher != empty_clip)
        p.granted[static_cast<size_t>(wish.wisher)] = true;
    if (!runs.empty() && runs.back().color == wish.color && runs.back().wisher == wish.wisher)
        runs.back().last = last;
    else
        runs.push_back({first, last, wish.color, wish.wisher});
}

// A wish of a single tick is that of clips that only meet there. The frame behind a change has the old colour anyhow.
static void drop_short_runs(std::vector<color_run>& runs)
{
    const auto is_short = [](const color_run& run) { return run.first == run.last; };
    if (!std::all_of(runs.begin(), runs.end(), is_short))
        std::erase_if(runs, is_short);
}

static void collect_runs(clear_planning& p)
{
    uint32_t end = 0;
    for (const placed_clip& c : p.plan.clips) {
        end = std::max(end, c.from + c.length);
        ++p.clips_on[c.track];
    }
    const shown_clips shown = show_plan(p.plan);
    std::vector<size_t> places;
    const uint32_t last = std::min(end, max_track_end - 1);
    std::vector<uint32_t> changes = change_ticks(p.plan, last);
    changes.push_back(last + 1);
    for (size_t i = 0; i + 1 < changes.size(); ++i) {
        clips_at(shown, changes[i], places);
        for (const clear_wish& wish : wishes_of(p, places))
            add_wish(p, wish, changes[i], changes[i + 1] - 1);
    }
    for (std::vector<color_run>& runs : p.runs)
        drop_short_runs(runs);
}

// ---- cutting --------------------------------------------------------------------------------

// Where a clip is cut so that its first piece shows at `last` and its second one at `first`: the second one gets the
// tick where they meet if it is a whole second, and so may come a tick early.
static uint32_t cut_between(uint32_t last, uint32_t first)
{
    const uint32_t whole = first / ticks_per_second * ticks_per_second;
    if (whole > last)
        return whole;
    return first - 1;
}

// Cuts the last piece at a tick, if both parts are long enough to be found.
static bool cut(clear_planning& p, std::vector<placed_clip>& pieces, uint32_t at)
{
    placed_clip& piece = pieces.back();
    const uint32_t end = piece.from + piece.length;
    if (p.rules == tracks_as_given || piece.clip == empty_clip || at <= piece.from || at >= end
        || p.clips_on[piece.track] >= layers_per_track || is_lost_span(piece.from - piece.space_before, at)
        || is_lost_span(at, end))
        return false;
    placed_clip next = piece;
    piece.length = at - piece.from;
    next.from = at;
    next.space_before = 0;
    next.length = end - at;
    next.skipped += piece.length;
    ++p.clips_on[piece.track];
    pieces.push_back(next);
    return true;
}

static void tell_lost_run(clear_planning& p, const color_run& run)
{
    const std::string when = " from " + ticks_text(run.first) + " to " + ticks_text(run.last + 1);
    constexpr const char* why = ": the clip drawn before the clear carries one colour after the other and cannot be "
                                "cut there, for a piece would be shorter than the player finds; let it begin or end "
                                "there";
    if (run.wisher == empty_clip)
        tell(p, empty_clip, "The background is not black" + when + why + ".");
    else
        tell(p, run.wisher, "has another clear colour behind it" + when + why);
}

static std::vector<placed_clip> pieces_of(clear_planning& p, size_t place)
{
    std::vector<placed_clip> pieces = {p.plan.clips[place]};
    const std::vector<color_run>& runs = p.runs[place];
    if (runs.empty())
        return pieces;
    pieces.back().clear = runs[0].color;
    color_run standing = runs[0]; // what the last piece carries
    for (size_t index = 1; index < runs.size(); ++index) {
        const color_run& run = runs[index];
        const bool is_same = run.color == standing.color;
        const bool is_cut = !is_same && cut(p, pieces, cut_between(runs[index - 1].last, run.first));
        if (!is_same && !is_cut) {
            const bool is_longer = run.last - run.first > standing.last - standing.first;
            tell_lost_run(p, is_longer ? standing : run);
            if (!is_longer)
                continue;
        }
        if (is_same)
            standing.last = run.last;
        else
            standing = run;
        pieces.back().clear = run.color;
    }
    return pieces;
}

// A clip that says itself what comes next.
static void carry_given(clear_planning& p, placed_clip& c, const std::vector<color_run>& runs, int32_t given)
{
    c.clear = given;
    for (const color_run& run : runs)
        if (run.wisher != empty_clip && run.color != given)
            tell(p, run.wisher,
                "has another clear colour behind it from " + ticks_text(run.first) + " to " + ticks_text(run.last + 1)
                    + ": a clip drawn before the clear says next_clear itself; leave that out, or this one's clear");
}

static void carry_colors(clear_planning& p)
{
    std::vector<placed_clip> carried;
    for (size_t place = 0; place < p.plan.clips.size(); ++place) {
        const int32_t given = request_of(p, place).next;
        if (given != no_clear_wish) {
            carried.push_back(p.plan.clips[place]);
            carry_given(p, carried.back(), p.runs[place], given);
            continue;
        }
        const std::vector<placed_clip> pieces = pieces_of(p, place);
        carried.insert(carried.end(), pieces.begin(), pieces.end());
    }
    p.plan.clips = carried;
}

// ---- what is told ---------------------------------------------------------------------------

// A colour that moves is asked at the time of the clip that carries it.
static void tell_moving_colors(clear_planning& p)
{
    for (size_t place = 0; place < p.plan.clips.size(); ++place)
        for (const color_run& run : p.runs[place]) {
            if (run.wisher == empty_clip || !p.requests[static_cast<size_t>(run.wisher)].wanted_moves)
                continue;
            const double ahead
                = p.requests[static_cast<size_t>(run.wisher)].function_start - request_of(p, place).function_start;
            if (ahead != 0)
                tell(p, run.wisher,
                    "has a clear colour that moves, and the clip drawn before the clear asks for it "
                        + ticks_text(static_cast<uint32_t>(ahead < 0 ? -ahead : ahead))
                        + (ahead > 0 ? " ahead" : " behind") + " of this clip's own time: shift its curves by that");
        }
}

static void tell_vain_wishes(clear_planning& p)
{
    for (size_t place = 0; place < p.plan.clips.size(); ++place) {
        const int32_t clip = p.plan.clips[place].clip;
        if (request_of(p, place).wanted != no_clear_wish && !p.granted[static_cast<size_t>(clip)])
            tell(p, clip, "clears nothing, so that its clear colour is seen nowhere: give it to the clip below it");
    }
}

void plan_clear_colors(const std::vector<clear_request>& requests, track_rules rules, track_plan& plan)
{
    clear_planning p = {.requests = requests,
        .rules = rules,
        .plan = plan,
        .runs = std::vector<std::vector<color_run>>(plan.clips.size()),
        .clips_on = {},
        .granted = std::vector<bool>(requests.size()),
        .told = {}};
    collect_runs(p);
    tell_moving_colors(p);
    tell_vain_wishes(p);
    carry_colors(p);
}
