#include "authoring/curve/tracks.h"

#include "model/timeline.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstdlib>

constexpr uint32_t ticks_per_second = 100;

namespace {

// A clip or an empty one where it lies on its track.
struct lane_clip {
    int32_t clip; // as given; empty_clip: none
    uint32_t from;
    uint32_t to;
};

// The clips of a track, by time.
using track_lane = std::vector<lane_clip>;

struct track_planning {
    const std::vector<timed_clip>& clips;
    std::array<track_lane, track_count> lanes;
    std::vector<int32_t> track_of; // of each clip; -1: none so far
    std::vector<track_problem> problems;
};

} // namespace

std::string ticks_text(uint32_t ticks)
{
    std::string text = std::to_string(ticks / ticks_per_second);
    const uint32_t rest = ticks % ticks_per_second;
    if (rest != 0)
        text += rest % 10 == 0 ? "." + std::to_string(rest / 10)
                               : "." + std::to_string(rest / 10) + std::to_string(rest % 10);
    return text + "s";
}

static std::string span_text(uint32_t from, uint32_t to)
{
    return "from " + ticks_text(from) + " to " + ticks_text(to);
}

bool is_lost_span(uint32_t start, uint32_t end)
{
    const uint32_t into_second = start % ticks_per_second;
    return into_second != 0 && into_second + (end - start) < ticks_per_second;
}

// ---- placing ----------------------------------------------------------------------------

static void add_track_problem(track_planning& p, int32_t clip, problem_severity severity, const std::string& text)
{
    p.problems.push_back({clip, severity, text});
}

static bool do_overlap(const timed_clip& a, const timed_clip& b)
{
    return a.from < b.to && b.from < a.to;
}

// Whether a clip can be shown, wherever it lies.
static bool is_sound(track_planning& p, size_t clip, track_rules rules)
{
    const timed_clip& c = p.clips[clip];
    const bool may_be_short = rules == tracks_as_given && c.to == c.from;
    if (c.to <= c.from && !may_be_short) {
        add_track_problem(p, static_cast<int32_t>(clip), problem_error,
            c.to < c.from ? "ends at " + ticks_text(c.to) + ", before it begins at " + ticks_text(c.from)
                          : "ends where it begins, at " + ticks_text(c.from) + ": let it end later");
        return false;
    }
    if (c.to > max_track_end) {
        add_track_problem(p, static_cast<int32_t>(clip), problem_error,
            "ends at " + ticks_text(c.to) + ", and a show lasts " + ticks_text(max_track_end) + " at most");
        return false;
    }
    if (c.track >= static_cast<int32_t>(track_count)) {
        add_track_problem(p, static_cast<int32_t>(clip), problem_error,
            "lies on track " + std::to_string(c.track + 1) + ", and there are " + std::to_string(track_count));
        return false;
    }
    return true;
}

static size_t place_in(const track_lane& lane, uint32_t from)
{
    size_t place = 0;
    while (place < lane.size() && lane[place].from < from)
        ++place;
    return place;
}

static bool does_fit(const track_lane& lane, uint32_t from, uint32_t to)
{
    if (lane.size() >= layers_per_track)
        return false;
    const size_t place = place_in(lane, from);
    const uint32_t end_before = place == 0 ? 0 : lane[place - 1].to;
    if (end_before > from || is_lost_span(end_before, to))
        return false;
    return place == lane.size() || (lane[place].from >= to && !is_lost_span(to, lane[place].to));
}

static void put(track_planning& p, size_t clip, uint32_t track)
{
    assert(clip < p.clips.size() && track < track_count);
    const timed_clip& c = p.clips[clip];
    track_lane& lane = p.lanes[track];
    lane.insert(
        lane.begin() + static_cast<ptrdiff_t>(place_in(lane, c.from)), {static_cast<int32_t>(clip), c.from, c.to});
    p.track_of[clip] = static_cast<int32_t>(track);
}

// Why a clip does not lie where it is pinned.
static std::string pin_fault(const track_lane& lane, const timed_clip& c)
{
    const std::string track = "track " + std::to_string(c.track + 1);
    if (lane.size() >= layers_per_track)
        return "is one clip too many on " + track + ", which holds " + std::to_string(layers_per_track);
    for (const lane_clip& other : lane)
        if (c.from < other.to && other.from < c.to)
            return "lies on " + track + ", where another clip shows " + span_text(other.from, other.to)
                + ": give it a track of its own, or none";
    return "lies on " + track + " " + span_text(c.from, c.to)
        + ", within a second that another clip ends or is to "
          "reach the end of, and one of the two would never be shown: give it another track, or none";
}

static void place_pinned(track_planning& p, size_t clip)
{
    const timed_clip& c = p.clips[clip];
    const track_lane& lane = p.lanes[static_cast<size_t>(c.track)];
    if (does_fit(lane, c.from, c.to))
        put(p, clip, static_cast<uint32_t>(c.track));
    else
        add_track_problem(p, static_cast<int32_t>(clip), problem_error, pin_fault(lane, c));
}

// Above all that it covers, below what is pinned and covers it.
static void place_freely(track_planning& p, size_t clip)
{
    const timed_clip& c = p.clips[clip];
    int32_t lowest = 0;
    int32_t behind_highest = track_count;
    for (size_t other = 0; other < p.clips.size(); ++other) {
        if (p.track_of[other] < 0 || !do_overlap(c, p.clips[other]))
            continue;
        if (other < clip)
            lowest = std::max(lowest, p.track_of[other] + 1);
        else
            behind_highest = std::min(behind_highest, p.track_of[other]);
    }
    for (int32_t track = lowest; track < behind_highest; ++track)
        if (does_fit(p.lanes[static_cast<size_t>(track)], c.from, c.to))
            return put(p, clip, static_cast<uint32_t>(track));
    add_track_problem(p, static_cast<int32_t>(clip), problem_error,
        behind_highest < static_cast<int32_t>(track_count)
            ? "finds no track " + span_text(c.from, c.to) + ": a clip that is drawn over it lies on track "
                + std::to_string(behind_highest + 1) + "; pin that one higher, or not at all"
            : "finds no track " + span_text(c.from, c.to) + ": the " + std::to_string(track_count)
                + " tracks are taken; let fewer clips show at a time");
}

static void place_all(track_planning& p)
{
    std::vector<bool> sound(p.clips.size());
    for (size_t clip = 0; clip < p.clips.size(); ++clip)
        sound[clip] = is_sound(p, clip, tracks_of_show);
    for (size_t clip = 0; clip < p.clips.size(); ++clip)
        if (sound[clip] && p.clips[clip].track >= 0)
            place_pinned(p, clip);
    for (size_t clip = 0; clip < p.clips.size(); ++clip)
        if (sound[clip] && p.clips[clip].track < 0)
            place_freely(p, clip);
}

// As the source says, one behind the other.
static void place_as_given(track_planning& p)
{
    for (size_t clip = 0; clip < p.clips.size(); ++clip) {
        if (!is_sound(p, clip, tracks_as_given))
            continue;
        const timed_clip& c = p.clips[clip];
        track_lane& lane = p.lanes[static_cast<size_t>(std::max(c.track, 0))];
        const uint32_t end_before = lane.empty() ? 0 : lane.back().to;
        if (end_before > c.from || lane.size() >= layers_per_track) {
            add_track_problem(p, static_cast<int32_t>(clip), problem_error, pin_fault(lane, c));
            continue;
        }
        if (is_lost_span(end_before, c.to))
            add_track_problem(p, static_cast<int32_t>(clip), problem_warning,
                "is never shown: the clip before it ends at " + ticks_text(end_before)
                    + ", and it does not reach the next whole second; let it end at "
                    + ticks_text((c.to / ticks_per_second + 1) * ticks_per_second));
        lane.push_back({static_cast<int32_t>(clip), c.from, c.to});
        p.track_of[clip] = static_cast<int32_t>(std::max(c.track, 0));
    }
}

// ---- the lowest track -------------------------------------------------------------------

static uint32_t end_of_show(const track_planning& p)
{
    uint32_t end = 0;
    for (const track_lane& lane : p.lanes)
        if (!lane.empty())
            end = std::max(end, lane.back().to);
    return end;
}

static bool do_others_show(const track_planning& p, uint32_t from, uint32_t to)
{
    for (uint32_t track = 1; track < track_count; ++track)
        for (const lane_clip& other : p.lanes[track])
            if (other.from < to && from < other.to)
                return true;
    return false;
}

// An empty clip between `from` and the clip behind it. One that ended within a second would take that clip's first
// tick, so it ends one earlier.
static lane_clip filling(uint32_t from, uint32_t to)
{
    return {empty_clip, from, to % ticks_per_second == 0 ? to : to - 1};
}

// Behind the last clip of track 1, to the end of the show, or of the second where that is too short to be found.
static lane_clip filling_to_end(uint32_t from, uint32_t end)
{
    const uint32_t whole = (end + ticks_per_second - 1) / ticks_per_second * ticks_per_second;
    return {empty_clip, from, is_lost_span(from, end) ? whole : end};
}

// Track 1 with its holes filled. False where one is too short.
static bool fill_holes(const track_planning& p, uint32_t end, track_lane& filled, lane_clip& hole)
{
    const track_lane& lane = p.lanes[0];
    uint32_t at = 0;
    for (const lane_clip& c : lane) {
        const lane_clip empty = filling(at, c.from);
        if (c.from > at && empty.to > at && do_others_show(p, at, c.from)) {
            hole = {empty_clip, at, c.from};
            if (is_lost_span(at, empty.to) || is_lost_span(empty.to, c.to))
                return false;
            filled.push_back(empty);
        }
        filled.push_back(c);
        at = c.to;
    }
    if (at < end)
        filled.push_back(filling_to_end(at, end));
    hole = {empty_clip, at, end};
    return filled.size() <= layers_per_track;
}

static bool may_move_up(const track_planning& p)
{
    for (const timed_clip& c : p.clips)
        if (c.track >= 0)
            return false;
    return p.lanes.back().empty();
}

// While track 1 shows nothing, nothing is cleared.
static void keep_track_1_busy(track_planning& p)
{
    const uint32_t end = end_of_show(p);
    track_lane filled;
    lane_clip hole = {};
    if (fill_holes(p, end, filled, hole)) {
        p.lanes[0] = filled;
        return;
    }
    if (may_move_up(p)) {
        std::rotate(p.lanes.begin(), p.lanes.end() - 1, p.lanes.end());
        p.lanes[0] = {{empty_clip, 0, end}};
        for (int32_t& track : p.track_of)
            track += track >= 0 ? 1 : 0;
        return;
    }
    add_track_problem(p, -1, problem_warning,
        "Track 1 shows nothing " + span_text(hole.from, hole.to)
            + ", so that the screen is not cleared there: let a clip of it show.");
}

// ---- what comes of it -------------------------------------------------------------------

static track_plan lanes_as_plan(const track_planning& p)
{
    track_plan plan;
    plan.problems = p.problems;
    for (uint32_t track = 0; track < track_count; ++track) {
        uint32_t at = 0;
        for (const lane_clip& c : p.lanes[track]) {
            assert(c.from >= at && c.to >= c.from);
            plan.clips.push_back({c.clip, track, c.from - at, c.to - c.from, c.from, 0, 0});
            at = c.to;
        }
    }
    return plan;
}

// The clip that begins first of those that would draw from a tick on.
static int32_t first_behind(const std::vector<timed_clip>& clips, uint32_t tick)
{
    int32_t first = -1;
    for (size_t clip = 0; clip < clips.size(); ++clip)
        if (clips[clip].draws && clips[clip].to > tick
            && (first < 0 || clips[clip].from < clips[static_cast<size_t>(first)].from))
            first = static_cast<int32_t>(clip);
    return first;
}

static bool does_draw(const std::vector<timed_clip>& clips, const placed_clip& c)
{
    return c.clip != empty_clip && clips[static_cast<size_t>(c.clip)].draws;
}

static bool is_end_of_clip(const track_plan& plan, uint32_t tick)
{
    return std::any_of(
        plan.clips.begin(), plan.clips.end(), [&](const placed_clip& c) { return c.from + c.length == tick; });
}

static uint32_t end_of_scenes(const std::vector<timed_clip>& clips, const track_plan& plan)
{
    uint32_t end = 0;
    for (const placed_clip& c : plan.clips)
        if (does_draw(clips, c))
            end = std::max(end, c.from + c.length);
    return end;
}

namespace {

struct dark_moment {
    bool found;
    uint32_t from; // first tick at which nothing is drawn
    uint32_t to;   // the next one at which something is
};

} // namespace

// The first moment in which no scene is drawn, though one is later.
static dark_moment find_dark_moment(const std::vector<timed_clip>& clips, const track_plan& plan)
{
    const uint32_t end = std::min(end_of_scenes(clips, plan), max_track_end - 1);
    const shown_clips shown = show_plan(plan);
    dark_moment moment = {};
    bool was_dark = false;
    std::vector<size_t> places;
    for (const uint32_t tick : change_ticks(plan, end)) {
        clips_at(shown, tick, places);
        const bool is_dark = std::none_of(
            places.begin(), places.end(), [&](size_t place) { return does_draw(clips, plan.clips[place]); });
        if (is_dark && !was_dark)
            moment.from = tick;
        moment.to = tick;
        moment.found = was_dark && !is_dark;
        if (moment.found)
            break;
        was_dark = is_dark;
    }
    return moment;
}

// A frame in which no scene is drawn is the show's last.
static void tell_dark_moment(const std::vector<timed_clip>& clips, track_rules rules, track_plan& plan)
{
    const problem_severity severity = rules == tracks_as_given ? problem_warning : problem_error;
    if (end_of_scenes(clips, plan) == 0 && plan.problems.empty())
        plan.problems.push_back(
            {-1, severity, "No clip shows a scene, and so the show ends at once: put a scene on a track."});
    const dark_moment dark = find_dark_moment(clips, plan);
    if (!dark.found)
        return;
    std::string text = "is never seen: nothing is shown ";
    if (dark.from == 0)
        text += "before " + ticks_text(dark.to) + ", and so the show ends at once; let something show from 0s";
    else
        text += "between " + ticks_text(is_end_of_clip(plan, dark.from - 1) ? dark.from - 1 : dark.from) + " and "
            + ticks_text(dark.to) + ", and the show ends there; begin earlier, or let something show in between";
    plan.problems.push_back({first_behind(clips, dark.from), severity, text});
}

track_plan plan_tracks(const std::vector<timed_clip>& clips, track_rules rules)
{
    track_planning p = {clips, {}, std::vector<int32_t>(clips.size(), -1), {}};
    if (rules == tracks_as_given)
        place_as_given(p);
    else
        place_all(p);
    if (rules != tracks_as_given)
        keep_track_1_busy(p);
    track_plan plan = lanes_as_plan(p);
    if (rules != tracks_of_loading)
        tell_dark_moment(clips, rules, plan);
    return plan;
}

// ---- what is shown ----------------------------------------------------------------------

shown_clips show_plan(const track_plan& plan)
{
    shown_clips shown = {std::unique_ptr<timeline, free_timeline>(timeline_new()), {}};
    if (shown.tables == nullptr)
        std::abort(); // no memory
    timeline& t = *shown.tables;
    for (size_t place = 0; place < plan.clips.size(); ++place) {
        const placed_clip& c = plan.clips[place];
        uint32_t& count = t.layer_count[c.track];
        assert(c.track < track_count && count < layers_per_track);
        if (count == 0)
            shown.first[c.track] = place;
        t.layers[c.track][count].space_before = c.space_before;
        register_layer(c.from - c.space_before, c.from + c.length, count, c.track, t);
        ++count;
    }
    return shown;
}

// A clip begins, the one before it has ended, or the player looks into the next second.
std::vector<uint32_t> change_ticks(const track_plan& plan, uint32_t last)
{
    std::vector<uint32_t> ticks;
    for (uint32_t tick = 0; tick <= last; tick += ticks_per_second)
        ticks.push_back(tick);
    for (const placed_clip& c : plan.clips)
        for (const uint32_t tick : {c.from, c.from + c.length + 1})
            if (tick <= last)
                ticks.push_back(tick);
    std::sort(ticks.begin(), ticks.end());
    ticks.erase(std::unique(ticks.begin(), ticks.end()), ticks.end());
    return ticks;
}

void clips_at(const shown_clips& shown, uint32_t tick, std::vector<size_t>& places)
{
    places.clear();
    const timeline& t = *shown.tables;
    if (timeline_is_over(t, tick))
        return;
    for (uint32_t track = 0; track < track_count; ++track) {
        const active_layer active = find_layer(t, track, tick);
        if (active.found)
            places.push_back(shown.first[track] + active.layer);
    }
}
