// Clips onto tracks.
#include "authoring/curve/clear_colors.h"
#include "authoring/curve/tracks.h"
#include "authoring/show/lowering.h"

#include "model/timeline.h"

#include <algorithm>
#include <cctype>

static bool is_flat(const clip_thing& clip)
{
    return clip.flat.value_or(false);
}

static void add_camera(lowering& l, element& node, const clip_thing& clip)
{
    static constexpr const char* names[] = {"x", "y", "z", "rotation_x", "rotation_y", "rotation_z"};
    const camera_thing camera = clip.camera.value_or(camera_thing());
    for (uint32_t axis = 0; axis < 3; ++axis)
        add_animated(l, node, names[axis],
            camera.moves_world ? camera.at[axis]
                               : scaled_number(l, camera.at[axis], -1)); // the world moves, not the eye
    for (uint32_t axis = 0; axis < 3; ++axis)
        add_animated(l, node, names[3 + axis], camera.rotation[axis]);
    if (is_flat(clip)) {
        element& fov = add_child(node, "field_of_view");
        add_attribute(fov, "type", value_of(std::string("ortographic")));
        add_attribute(fov, "value", value_of_int(0));
    } else {
        add_animated(l, node, "field_of_view", camera.fov);
    }
    add_animated(l, node, "far_plane", camera.far);
}

// A colour's record by the number that clear requests know it by; 0 is black.
static int32_t color_number(std::vector<const authored_record*>& colors, const authored_record* color)
{
    const auto known = std::find(colors.begin(), colors.end(), color);
    if (known == colors.end())
        colors.push_back(color);
    return static_cast<int32_t>(std::find(colors.begin(), colors.end(), color) - colors.begin());
}

static bool moves(const thing* color)
{
    const auto& values = as<value_thing>(color)->values;
    return std::any_of(
        values.begin(), values.end(), [](const moving_number& number) { return number.curve != nullptr; });
}

static element clip_element(lowering& l, const thing& made, const placed_clip& placed, const authored_record* color)
{
    const clip_thing& clip = *as<clip_thing>(&made);
    element node = {"clip"};
    node.place = made.place;
    add_attribute(node, "id", value_of(clip.scene != nullptr ? lower_scene(l, *clip.scene, is_flat(clip)) : nullptr));
    add_attribute(node, "space_before", value_of_int(placed.space_before));
    add_attribute(node, "length", value_of_int(placed.length));
    add_attribute(node, "offset", value_of_int(static_cast<int64_t>(clip.time_offset) + placed.skipped));
    add_attribute(node, "type", value_of_int(clip.mode));
    if (clip.into != nullptr)
        add_attribute(node, "rtex", value_of(lower_image(l, *clip.into)));
    add_attribute(node, "clearcolor", value_of(color));
    add_camera(l, node, clip);
    return node;
}

namespace {

struct timeline_lists {
    std::vector<const thing*> clips;
    std::vector<timed_clip> times;
    std::vector<clear_request> clears;
    std::vector<const authored_record*> colors = {nullptr};
};

} // namespace

static clear_request clear_request_of(lowering& l, const clip_thing& clip, std::vector<const authored_record*>& colors)
{
    clear_request request;
    request.mode = clip.mode;
    request.has_target = clip.into != nullptr;
    request.function_start = *clip.from - clip.time_offset;
    if (clip.clear != nullptr) {
        request.wanted = color_number(colors, lower_value(l, *clip.clear));
        request.wanted_moves = moves(clip.clear);
    }
    if (clip.next_clear != nullptr)
        request.next = color_number(colors, lower_value(l, *clip.next_clear));
    return request;
}

static timeline_lists list_clips(lowering& l)
{
    timeline_lists lists;
    int32_t track = 0;
    for (const auto& list : l.show.tracks[l.document]) {
        for (const thing* made : list) {
            if (as<raw_thing>(made) != nullptr)
                continue; // a whole track, which is not planned
            const clip_thing& clip = *as<clip_thing>(made);
            lists.clips.push_back(made);
            lists.times.push_back({static_cast<uint32_t>(*clip.from), static_cast<uint32_t>(*clip.to),
                l.show.keep_order ? track : -1, clip.scene != nullptr});
            lists.clears.push_back(clear_request_of(l, clip, lists.colors));
        }
        ++track;
    }
    return lists;
}

static void tell_problems(lowering& l, const timeline_lists& lists, const track_plan& plan)
{
    for (const track_problem& problem : plan.problems) {
        const thing* made = problem.clip >= 0 ? lists.clips[static_cast<size_t>(problem.clip)] : nullptr;
        const thing* scene = made != nullptr ? as<clip_thing>(made)->scene : nullptr;
        const std::string name = made == nullptr ? ""
            : scene != nullptr                   ? "the clip of \"" + scene->name + "\" "
                                                 : "the pause ";
        const bool has_end = !problem.text.empty() && problem.text.back() == '.';
        std::string text = name + problem.text + (has_end ? "" : ".");
        text[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
        add_problem(l.built.problems, problem.severity, made != nullptr ? made->place : source_place{}, text);
    }
}

static element empty_element(const placed_clip& placed, const authored_record* color)
{
    element node = {"clip"};
    add_attribute(node, "id", value_of_int(0));
    add_attribute(node, "space_before", value_of_int(placed.space_before));
    add_attribute(node, "length", value_of_int(placed.length));
    add_attribute(node, "offset", value_of_int(0));
    add_attribute(node, "type", value_of_int(render_simple));
    add_attribute(node, "clearcolor", value_of(color));
    for (const char* name : {"x", "y", "z", "rotation_x", "rotation_y", "rotation_z", "field_of_view", "far_plane"}) {
        element& child = add_child(node, name);
        add_attribute(child, "type", value_of(std::string("static")));
        add_attribute(child, "value",
            value_of_int(std::string(name) == "field_of_view" ? 60
                    : std::string(name) == "far_plane"        ? 600
                                                              : 0));
    }
    return node;
}

// Tracks that the source writes as they stand keep their places where all do; else they lie above the others.
static void add_tracks(lowering& l, std::vector<element>& tracks, const std::vector<source_place>& places)
{
    const auto& lists = l.show.tracks[l.document];
    const auto raw_of = [&lists](size_t track) {
        return track < lists.size() && lists[track].size() == 1 && as<raw_thing>(lists[track][0]) != nullptr
            ? lists[track][0]
            : nullptr;
    };
    for (size_t track = 0; track < tracks.size(); ++track) {
        if (const thing* raw = l.show.keep_order ? raw_of(track) : nullptr)
            lower_raw(l, *raw);
        else
            add_authored(document_of(l), section_timeline, std::move(tracks[track]), places[track]);
    }
    for (size_t track = 0; !l.show.keep_order && track < lists.size(); ++track)
        if (const thing* raw = raw_of(track))
            lower_raw(l, *raw);
}

void lower_timeline(lowering& l)
{
    const track_rules rules = l.show.keep_order ? tracks_as_given
        : l.document == 0                       ? tracks_of_show
                                                : tracks_of_loading;
    const timeline_lists lists = list_clips(l);
    track_plan plan = plan_tracks(lists.times, rules);
    plan_clear_colors(lists.clears, rules, plan);
    tell_problems(l, lists, plan);
    std::vector<element> tracks(l.show.keep_order ? l.show.tracks[l.document].size() : 0, element{"track"});
    std::vector<source_place> places(tracks.size());
    for (const placed_clip& placed : plan.clips) {
        if (placed.track >= tracks.size()) {
            tracks.resize(placed.track + 1, element{"track"});
            places.resize(placed.track + 1);
        }
        const authored_record* color = lists.colors[static_cast<size_t>(placed.clear)];
        if (placed.clip == empty_clip) {
            tracks[placed.track].children.push_back(empty_element(placed, color));
            continue;
        }
        const thing& made = *lists.clips[static_cast<size_t>(placed.clip)];
        tracks[placed.track].children.push_back(clip_element(l, made, placed, color));
        if (places[placed.track].file.empty())
            places[placed.track] = made.place;
    }
    add_tracks(l, tracks, places);
}
