// Looks at the timeline: what is shown when, for how long, and into what.
#include "authoring/check/lint.h"
#include "authoring/counted.h"

#include "model/render_modes.h"
#include "model/timeline.h"
#include "model/values.h"

#include <algorithm>
#include <cassert>
#include <cmath>

static std::vector<document_part> clip_part(uint32_t clip)
{
    return {{"clip", clip + 1}};
}

template <typename visitor> static void for_each_clip(const document& d, visitor&& visit)
{
    for (uint32_t track = 0; d.timeline != nullptr && track < track_count; ++track)
        for (uint32_t clip = 0; clip < d.timeline->layer_count[track]; ++clip)
            visit(track, clip, d.timeline->layers[track][clip]);
}

// ---- clips that slots lose -----------------------------------------------------------

// Rule: the clip before is in no slot, so that this one counts its time, and its pause, from the show's beginning.
void lint_lost_clips(const lint_target& t)
{
    uint32_t end[track_count] = {}; // of the clip before, as it was written
    for_each_clip(t.d, [&](uint32_t track, uint32_t clip, const layer_record& layer) {
        const uint32_t entered_end = clip > 0 ? t.d.timeline->layer_end[track][clip - 1] : 0;
        if (entered_end != end[track])
            add_finding(t, problem_warning, section_timeline, track + 1,
                "the clip before it is never shown, so its pause and the time of its functions begin at tick "
                    + std::to_string(entered_end) + " and not at tick " + std::to_string(end[track]) + ".",
                clip_part(clip));
        end[track] += layer.space_before + layer.length;
    });
}

// ---- the end ---------------------------------------------------------------------------

static bool draws_a_scene(const document& d, uint32_t time)
{
    for (uint32_t track = 0; track < track_count; ++track) {
        const active_layer active = find_layer(*d.timeline, track, time);
        if (active.found && table_get(d.scene_table, d.timeline->layers[track][active.layer].model_id) != nullptr)
            return true;
    }
    return false;
}

uint32_t show_end(const document& d)
{
    uint32_t time = 0;
    while (
        d.timeline != nullptr && time < max_track_end && !timeline_is_over(*d.timeline, time) && draws_a_scene(d, time))
        ++time;
    return time;
}

static uint32_t last_clip_end(const document& d)
{
    const uint32_t* ends = d.timeline->track_end;
    return *std::max_element(ends, ends + track_count);
}

// Rule: the show is over, and clips would have gone on for more than the second in which it ends. One that is over at
// once is warned of while it is read.
void lint_early_end(const lint_target& t)
{
    if (!t.is_show || t.d.timeline == nullptr)
        return;
    const uint32_t end = show_end(t.d);
    const uint32_t last = last_clip_end(t.d);
    if (end == 0 || last <= end)
        return;
    const bool without_track = timeline_is_over(*t.d.timeline, end);
    add_finding(t, problem_warning, section_timeline, 0,
        "the show is over at tick " + std::to_string(end) + ", "
            + (without_track ? "where track 1 has no clip any more" : "where no track draws a scene")
            + ": what would follow, up to tick " + std::to_string(last) + ", is never shown.");
}

// Rule: a show that is shorter than two seconds.
void lint_short_show(const lint_target& t)
{
    constexpr uint32_t shortest = 200;
    if (!t.is_show || t.d.timeline == nullptr)
        return;
    const uint32_t last = last_clip_end(t.d);
    if (last > 0 && last < shortest)
        add_finding(t, problem_note, section_timeline, 0,
            "the whole show lasts " + counted(last, "tick") + ", which are " + as_seconds(last)
                + ": a second has 100.");
}

// ---- targets -----------------------------------------------------------------------------

// Where anything may begin or end, in ticks: between two of these the same clips are shown. The tick behind each
// is one too, since a clip shows its last one.
static std::vector<uint32_t> changes(const document& d)
{
    std::vector<uint32_t> ticks;
    uint32_t start[track_count] = {};
    for_each_clip(d, [&](uint32_t track, uint32_t, const layer_record& layer) {
        const uint32_t begin = start[track] + layer.space_before;
        start[track] = begin + layer.length;
        ticks.insert(ticks.end(), {begin, begin + 1, start[track], start[track] + 1});
    });
    std::sort(ticks.begin(), ticks.end());
    ticks.erase(std::unique(ticks.begin(), ticks.end()), ticks.end());
    return ticks;
}

namespace {

struct target_clip {
    uint32_t track;
    uint32_t clip;
    bool waits; // in its frame nobody copies the target

    bool operator==(const target_clip&) const = default;
};

} // namespace

// The clip whose picture nobody copies at `time`.
static target_clip waiting_target(const document& d, uint32_t time)
{
    target_clip waiting = {0, 0, false};
    for (uint32_t track = 0; track < track_count; ++track) {
        const active_layer active = find_layer(*d.timeline, track, time);
        if (!active.found)
            continue;
        const layer_record& layer = d.timeline->layers[track][active.layer];
        const bool has_target = table_get(d.image_texture_table, layer.rtex) != nullptr;
        switch (render_mode_of(layer.type).target) {
        case mode_draws_to_screen:
            waiting.waits = false;
            break;
        case mode_draws_to_texture:
            if (has_target)
                waiting = {track, active.layer, true};
            break;
        case mode_draws_on:
            break;
        }
    }
    return waiting;
}

static void tell_waiting(const lint_target& t, const target_clip& waiting, uint32_t from)
{
    add_finding(t, problem_warning, section_timeline, waiting.track + 1,
        "from tick " + std::to_string(from)
            + " on its picture does not reach its texture: no clip on a later track draws to the screen or into "
              "another texture.",
        clip_part(waiting.clip));
}

static void tell_waiting_targets(const lint_target& t)
{
    constexpr uint32_t shortest = 10; // ticks
    std::vector<bool> told(track_count * layers_per_track, false);
    const std::vector<uint32_t> ticks = changes(t.d);
    const uint32_t end = t.is_show ? show_end(t.d) : max_track_end;
    target_clip before = {0, 0, false};
    uint32_t since = 0; // the clip of `before` waits
    for (size_t index = 0; index + 1 < ticks.size() && ticks[index] < end; ++index) {
        const target_clip waiting = waiting_target(t.d, ticks[index]);
        if (waiting != before)
            since = ticks[index];
        before = waiting;
        const uint32_t number = waiting.track * layers_per_track + waiting.clip;
        if (!waiting.waits || ticks[index + 1] - since < shortest || told[number])
            continue;
        told[number] = true;
        tell_waiting(t, waiting, since);
    }
}

// Whether one of a scene's materials shows an image texture.
static bool scene_shows(const document& d, const scene_record& scene, uint32_t image)
{
    for (uint32_t index = 0; index < scene.object_count; ++index) {
        const material_record* material = table_get(d.material_table, scene.objects[index].material);
        for (uint32_t unit = 0; material != nullptr && unit < texture_unit_count; ++unit) {
            const object_reference* shown = table_get(d.object_table, material->texture[unit]);
            if (shown != nullptr && shown->type == texture_image && shown->id == image)
                return true;
        }
    }
    return false;
}

// Rule: a clip shows the texture that it draws into. That is a way to make trails, and mostly a mistake.
void lint_own_target(const lint_target& t)
{
    for_each_clip(t.d, [&](uint32_t track, uint32_t clip, const layer_record& layer) {
        const scene_record* scene = table_get(t.d.scene_table, layer.model_id);
        const bool draws = render_mode_of(layer.type).target == mode_draws_to_texture && layer.rtex != 0;
        if (draws && scene != nullptr && scene_shows(t.d, *scene, layer.rtex))
            add_finding(t, problem_note, section_timeline, track + 1,
                "it shows the texture that it draws into: what is seen there is the picture of the frame before; show "
                "another one, unless trails are meant.",
                clip_part(clip));
    });
}

// Rules: a clip whose mode needs a texture to draw into names none; a clip draws into a texture for at least a tenth
// of a second in which no later clip with a target of its own makes the copy.
void lint_targets(const lint_target& t)
{
    if (t.d.timeline == nullptr)
        return;
    for_each_clip(t.d, [&](uint32_t track, uint32_t clip, const layer_record& layer) {
        if (render_mode_of(layer.type).target == mode_draws_to_texture && layer.rtex == 0)
            add_finding(t, problem_warning, section_timeline, track + 1,
                "its mode draws into a texture, and rtex is 0: what it draws is left wherever the clip before drew.",
                clip_part(clip));
    });
    tell_waiting_targets(t);
}

// ---- cameras -------------------------------------------------------------------------------

// Rule: a clip in perspective whose constant far plane is not behind the near one, or whose constant angle is none.
// A linked clip keeps the angle of the clip before; the far plane and the angle of one without a scene are nobody's.
void lint_cameras(const lint_target& t)
{
    constexpr float near_plane = 0.1f;
    for_each_clip(t.d, [&](uint32_t track, uint32_t clip, const layer_record& layer) {
        const bool keeps = render_mode_of(layer.type).keeps_projection;
        if (layer.camera_mode[camera_fov] != fov_constant || keeps || layer.model_id == 0)
            return;
        const float angle = layer.camera[camera_fov];
        const float far_plane = layer.camera[camera_far];
        if (!(angle > 0.0f && angle < 180.0f))
            add_finding(t, problem_warning, section_timeline, track + 1,
                "its field of view has to lie between 0 and 180 degrees: nothing that makes sense is seen.",
                clip_part(clip));
        if (layer.camera_mode[camera_far] == 0 && far_plane <= near_plane)
            add_finding(t, problem_warning, section_timeline, track + 1,
                "its far plane does not lie behind the near one, which is 0.1 away: nothing that makes sense is seen.",
                clip_part(clip));
    });
}

// ---- the loading screen ------------------------------------------------------------------

// Rules: a clip of the loading screen begins behind its last tick, 100; its clips leave the rest of loading black.
void lint_loading_time(const lint_target& t)
{
    constexpr uint32_t last_tick = 100;
    if (t.is_show || t.d.timeline == nullptr)
        return;
    uint32_t start[track_count] = {};
    for_each_clip(t.d, [&](uint32_t track, uint32_t clip, const layer_record& layer) {
        const uint32_t begin = start[track] + layer.space_before;
        start[track] = begin + layer.length;
        if (begin > last_tick && layer.model_id != 0)
            add_finding(t, problem_warning, section_timeline, track + 1,
                "it begins at tick " + std::to_string(begin)
                    + " and is never shown: the loading screen's time is how much is loaded, from 0 to 100.",
                clip_part(clip));
    });
    const uint32_t end = last_clip_end(t.d);
    if (end > 0 && end < last_tick)
        add_finding(t, problem_note, section_timeline, 0,
            "its last clip ends at tick " + std::to_string(end)
                + ": from there to 100, when all is loaded, the loading screen is not drawn.");
}

// ---- the music -------------------------------------------------------------------------------

// Rules: the file that the music names is not there, or is not what the player plays; its length and the show's
// differ by more than two seconds.
void lint_music(const lint_target& t)
{
    const char* file = xml_get_attribute(document_music_element(t.read.root), "file");
    if (!t.is_show && file != nullptr)
        return add_finding(t, problem_warning, section_music, 0,
            "the loading screen's music is not played: only demo.xmlz has music.");
    if (file == nullptr || !t.music.looked_for)
        return;
    const std::string name = "\"" + std::string(file) + "\"";
    if (!t.music.found)
        return add_finding(t, problem_warning, section_music, 0,
            name + " lies neither beside the pack nor in its folder \"music\": the show plays without music.");
    if (!t.music.is_vorbis)
        return add_finding(t, problem_warning, section_music, 0, name + " is no Ogg Vorbis: the show plays silent.");
    const double show = show_end(t.d) / 100.0;
    const double longer = t.music.seconds - show;
    if (std::fabs(longer) <= 2.0 || show == 0.0)
        return;
    const std::string difference = as_seconds(static_cast<uint64_t>(std::lround(std::fabs(longer) * 100)));
    add_finding(t, problem_note, section_music, 0,
        longer > 0 ? name + " goes on for " + difference + " behind the end of the show."
                   : "the last " + difference + " of the show are silent: " + name + " has ended.");
}
