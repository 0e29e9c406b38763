#include "tools/preview/control_commands.h"

#include "content/printable.h"
#include "model/document.h"
#include "tools/frames/frame_clock.h"
#include "tools/frames/lesser_card.h"
#include "tools/preview/actions.h"
#include "tools/preview/control_request.h"
#include "tools/preview/moving_values.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <nlohmann/json.hpp>

constexpr double usual_wait = 10; // seconds
constexpr double longest_wait = 3600;
constexpr double still_wait = 120;
constexpr double usual_samples = 200;
constexpr double most_samples = 4096;

namespace {

using json = nlohmann::ordered_json;

enum awaited_thing : int32_t { wait_settled, wait_build, wait_shown, wait_still };

} // namespace

// ---- answers --------------------------------------------------------------------------------------------

static void answer(preview& p, uint64_t client, const std::string& id, const std::string& problem, const json& fields)
{
    json line = {{"ok", problem.empty()}};
    if (!id.empty())
        line["id"] = json::parse(id, nullptr, false);
    if (!problem.empty())
        line["error"] = problem + ".";
    else if (!fields.is_null())
        line.update(fields);
    control_answer(p.control, client, line.dump(-1, ' ', false, json::error_handler_t::replace));
}

static std::string seconds_text(double seconds)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.10g", seconds);
    return text;
}

// ---- what is asked of a value ---------------------------------------------------------------------------

// Whether a number is there and lies within; the problem otherwise.
static bool is_within(const control_request& r, const char* name, double least, double most, std::string& problem)
{
    const std::optional<double> number = number_in(r, name);
    if (number && *number >= least && *number <= most)
        return true;
    problem = std::string("\"") + name + "\" goes from " + seconds_text(least) + " to " + seconds_text(most);
    return false;
}

// Whether the fields are there that a command cannot do without.
static bool has_all(const control_request& r, std::initializer_list<const char*> names, std::string& problem)
{
    for (const char* name : names) {
        if (find_value(r, name) != nullptr)
            continue;
        problem = std::string("\"") + command_name(r.command) + "\" needs \"" + name + "\"";
        return false;
    }
    return true;
}

static bool has_show(const preview& p, std::string& problem)
{
    if (p.shown.has_show && p.shown.end > 0)
        return true;
    if (p.shown.has_show)
        problem = "the show has no frames";
    else if (p.waits_for_build || p.latest.number == 0)
        problem = R"(the show is still being built: {"do":"wait","for":"settled"} waits for it)";
    else
        problem = R"(there is no show yet: {"do":"errors"} tells what is wrong with its source)";
    return false;
}

// ---- status ----------------------------------------------------------------------------------------------

// The picture is that of now, and nothing is under way that would change it.
static bool is_exact(const preview& p)
{
    return p.shown.at_frame && p.keeper.exact && !p.keeper.settling && !p.dirty && p.shown.frame == frame_now(p);
}

static bool is_settled(const preview& p)
{
    return is_exact(p) && !p.waits_for_build && p.watch.changed_at == 0;
}

static json build_status(const show_build& build)
{
    const auto count = [&](problem_severity severity) {
        return std::count_if(build.problems.begin(), build.problems.end(),
            [&](const show_problem& problem) { return problem.severity == severity; });
    };
    return {{"number", build.number}, {"can_play", build.can_play}, {"errors", count(problem_error)},
        {"warnings", count(problem_warning)}, {"seconds", build.seconds}};
}

static json shown_status(const preview& p)
{
    const reload_times& t = p.reload;
    return {{"number", p.build.number}, {"noticed", t.noticed}, {"asked", t.asked}, {"built", t.built},
        {"loaded", t.loaded}, {"shown", t.shown}, {"kept", p.shown.counts.kept}, {"made", p.shown.counts.made}};
}

static json object_status(const preview& p, const picked_object& object)
{
    const source_place place = place_of_mark(p.build, section_scenes, object.scene, object.object + 1);
    json told = {{"track", object.track + 1}, {"layer", object.layer + 1}, {"scene", object.scene},
        {"object", object.object + 1},
        {"name", name_of_mark(p.build, section_scenes, object.scene, object.object + 1)}};
    if (place.line != 0)
        told.update({{"file", place.file}, {"line", place.line}});
    return told;
}

static json loop_status(const transport& t)
{
    return t.has_loop ? json{t.loop_from, t.loop_to} : json();
}

// For clients that run in another folder.
static std::string whole_path(const std::string& folder)
{
    std::error_code fault;
    const std::string path = std::filesystem::absolute(folder, fault).lexically_normal().string();
    return path.size() > 1 && path.ends_with('/') ? path.substr(0, path.size() - 1) : path;
}

static json status_of(const preview& p)
{
    const frame_rate rate = p.shown.rate;
    const stage_wish& wish = p.shown.wish;
    return {{"time", p.time.position}, {"frame", frame_now(p)}, {"end", p.time.end}, {"frames", p.shown.end},
        {"rate", static_cast<double>(rate.numerator) / rate.denominator}, {"playing", p.time.playing},
        {"scrubbing", p.time.scrubbing}, {"looping", loop_status(p.time)}, {"muted", p.sound.muted},
        {"path", wish.glsl ? "glsl" : "fixed"}, {"caps", lesser_card_text(wish.card)},
        {"size", {wish.width, wish.height}}, {"fullscreen", p.window.fullscreen}, {"exact", is_exact(p)},
        {"settling", p.keeper.settling}, {"progress", keeper_progress(p.keeper)}, {"folder", whole_path(p.folder)},
        {"file", p.file}, {"title", p.build.title}, {"build", build_status(p.latest)}, {"shown", shown_status(p)},
        {"builds_shown", p.builds_shown}, {"waits_for_build", p.waits_for_build},
        {"selected", p.selected ? object_status(p, *p.selected) : json()}, {"passed", p.shown.passed},
        {"windows", p.windows_shown}, {"now", steady_seconds()}};
}

// ---- time ---------------------------------------------------------------------------------------------------

static json place_of(const preview& p)
{
    return {{"time", p.time.position}, {"frame", frame_now(p)}, {"playing", p.time.playing}};
}

static json do_go(preview& p, const control_request& r, std::string& problem)
{
    if (r.values.size() != 1)
        problem = R"("go" needs one of "time", "frame", "by" and "by_frames")";
    else if (const auto by = number_in(r, "by"))
        go_to(p, p.time.position + *by);
    else if (const auto frames = number_in(r, "by_frames"))
        step_frames(p, static_cast<int64_t>(*frames));
    else if (const auto time = number_in(r, "time"); time && is_within(r, "time", 0, p.time.end, problem))
        go_to(p, *time);
    else if (const auto frame = number_in(r, "frame");
             frame && is_within(r, "frame", 0, static_cast<double>(p.shown.end - 1), problem))
        go_to_frame(p, static_cast<uint64_t>(*frame));
    return place_of(p);
}

static json do_scrub(preview& p, const control_request& r, std::string& problem)
{
    if (has_all(r, {"time"}, problem) && is_within(r, "time", 0, p.time.end, problem))
        transport_scrub(p.time, *number_in(r, "time"));
    return place_of(p);
}

static json do_loop(preview& p, const control_request& r, std::string& problem)
{
    if (r.values.size() == 1 && switch_in(r, "off").value_or(false)) {
        transport_no_loop(p.time);
        return {{"looping", loop_status(p.time)}};
    }
    if (r.values.size() != 2 || find_value(r, "from") == nullptr || find_value(r, "to") == nullptr) {
        problem = R"("loop" needs "from" and "to", or "off": true)";
    } else if (is_within(r, "from", 0, p.time.end, problem) && is_within(r, "to", 0, p.time.end, problem)) {
        const double from = *number_in(r, "from");
        const double to = *number_in(r, "to");
        if (from < to) {
            transport_no_loop(p.time);
            transport_loop_from(p.time, from);
            transport_loop_to(p.time, to);
        } else {
            problem = R"("from" lies before "to")";
        }
    }
    return {{"looping", loop_status(p.time)}};
}

// ---- how it is drawn ------------------------------------------------------------------------------------------

static json do_path(preview& p, const control_request& r, std::string& problem)
{
    if (!has_all(r, {"to"}, problem))
        return {};
    const std::string path = *text_in(r, "to");
    if (path != "glsl" && path != "fixed")
        problem = R"("to" is "glsl" or "fixed")";
    else if (choose_path(p, path == "glsl", problem))
        problem.clear();
    return {{"path", p.shown.wish.glsl ? "glsl" : "fixed"}};
}

static json do_caps(preview& p, const control_request& r, std::string& problem)
{
    if (!has_all(r, {"to"}, problem))
        return {};
    const std::string list = *text_in(r, "to");
    lesser_card card;
    if (!list.empty() && !read_lesser_card(list, card))
        problem
            = R"("to" is a list of no-vbo, no-pbo, no-npot, no-compression, no-combine4, no-combine3 and units=1 to units=4)";
    else if (choose_card(p, card, problem))
        problem.clear();
    return {{"caps", lesser_card_text(p.shown.wish.card)}};
}

// ---- tracks ---------------------------------------------------------------------------------------------------

// Track numbers as bits. False: one is no track.
static bool read_tracks(const preview& p, const control_value& value, uint32_t& bits, std::string& problem)
{
    const timeline& t = *p.shown.production.timeline;
    uint32_t count = 0;
    for (uint32_t track = 0; track < track_count; ++track)
        count = t.layer_count[track] > 0 ? track + 1 : count;
    bits = 0;
    for (const double number : value.list) {
        if (number < 1 || number > count) {
            problem = "there is no track " + seconds_text(number) + ": tracks go from 1 to " + std::to_string(count);
            return false;
        }
        bits |= 1u << (static_cast<uint32_t>(number) - 1);
    }
    return true;
}

static std::string scene_name(const preview& p, uint32_t handle)
{
    const std::string name = name_of_mark(p.build, section_scenes, handle, 0);
    const scene_record* scene = table_get(p.shown.production.scene_table, handle);
    return !name.empty() || scene == nullptr ? name : printable(scene->name);
}

static json clips_of(const preview& p, uint32_t track)
{
    const timeline& t = *p.shown.production.timeline;
    json clips = json::array();
    uint32_t end = 0; // ticks
    for (uint32_t n = 0; n < t.layer_count[track]; ++n) {
        const layer_record& layer = t.layers[track][n];
        const uint32_t begin = end + layer.space_before;
        end = begin + layer.length;
        const active_layer now = find_layer(t, track, tick_of_frame(frame_now(p), p.shown.rate));
        const source_place place = place_of_mark(p.build, section_timeline, track + 1, n + 1);
        json clip = {{"scene", scene_name(p, layer.model_id)}, {"scene_number", layer.model_id},
            {"name", name_of_mark(p.build, section_timeline, track + 1, n + 1)}, {"from", begin / 100.0},
            {"to", end / 100.0}};
        if (place.line != 0)
            clip.update({{"file", place.file}, {"line", place.line}});
        clip["active"] = now.found && now.layer == n;
        clips.push_back(clip);
    }
    return clips;
}

static json tracks_of(const preview& p)
{
    json tracks = json::array();
    for (uint32_t track = 0; track < track_count; ++track)
        if (p.shown.production.timeline->layer_count[track] > 0)
            tracks.push_back({{"number", track + 1}, {"name", name_of_mark(p.build, section_timeline, track + 1, 0)},
                {"muted", (p.muted >> track & 1) != 0}, {"soloed", (p.soloed >> track & 1) != 0},
                {"clips", clips_of(p, track)}});
    return {{"tracks", tracks}};
}

static json do_tracks(preview& p, const control_request& r, std::string& problem)
{
    uint32_t muted = p.muted;
    uint32_t soloed = p.soloed;
    const control_value* mute = find_value(r, "mute");
    const control_value* solo = find_value(r, "solo");
    if ((mute != nullptr && !read_tracks(p, *mute, muted, problem))
        || (solo != nullptr && !read_tracks(p, *solo, soloed, problem)))
        return {};
    for (uint32_t track = 0; track < track_count; ++track) {
        if (((muted ^ p.muted) >> track & 1) != 0)
            mute_track(p, track, (muted >> track & 1) != 0);
        if (((soloed ^ p.soloed) >> track & 1) != 0)
            solo_track(p, track, (soloed >> track & 1) != 0);
    }
    return tracks_of(p);
}

// ---- objects --------------------------------------------------------------------------------------------------

static json do_select(preview& p, const control_request& r, std::string& problem)
{
    if (r.values.empty())
        select_nothing(p);
    else if (!has_all(r, {"x", "y"}, problem) || !is_within(r, "x", 0, p.shown.wish.width, problem)
        || !is_within(r, "y", 0, p.shown.wish.height, problem))
        return {};
    else
        select_at(p, *number_in(r, "x"), *number_in(r, "y"));
    json objects = json::array();
    for (const picked_object& object : p.under)
        objects.push_back(object_status(p, object));
    return {{"objects", objects}, {"selected", p.selected ? json(p.under_at) : json()}};
}

static json do_values(preview& p, const control_request& r, std::string& problem)
{
    if (!p.selected) {
        problem = R"(no object is selected: {"do":"select","x":X,"y":Y} selects what is seen there)";
        return {};
    }
    if (find_value(r, "samples") != nullptr && !is_within(r, "samples", 2, most_samples, problem))
        return {};
    const auto samples = static_cast<uint32_t>(number_in(r, "samples").value_or(usual_samples));
    const uint32_t tick = tick_of_frame(frame_now(p), p.shown.rate);
    const moving_values moving = moving_values_of(p.shown.production, *p.selected, tick, samples);
    json values = json::array();
    for (const moving_value& value : moving.values)
        values.push_back({{"name", value.name}, {"now", value.now}, {"values", value.values}});
    return {{"from", moving.from}, {"to", moving.to}, {"values", values}};
}

// ---- numbers by hand --------------------------------------------------------------------------------------------

static json try_status(const tried_number& number)
{
    return {{"file", number.file}, {"line", number.line}, {"site", number.site}, {"label", number.label},
        {"written", number.written}, {"value", number.value}, {"least", number.least}, {"most", number.most},
        {"can_write", number.can_write}};
}

static const tried_number* find_try(const preview& p, const control_request& r, std::string& problem)
{
    if (!has_all(r, {"file", "site"}, problem))
        return nullptr;
    for (const tried_number& number : p.build.tries)
        if (number.file == *text_in(r, "file") && number.site == *number_in(r, "site"))
            return &number;
    problem = R"(no number is tried there: {"do":"tries"} lists those that are)";
    return nullptr;
}

static json tries_of(const preview& p)
{
    json tries = json::array();
    for (const tried_number& number : p.build.tries)
        tries.push_back(try_status(number));
    return {{"tries", tries}};
}

static json do_try(preview& p, const control_request& r, std::string& problem)
{
    const tried_number* number = find_try(p, r, problem);
    if (number == nullptr || !has_all(r, {"value"}, problem)
        || !is_within(r, "value", number->least, number->most, problem))
        return {};
    if (!try_value(p, number->file, number->site, *number_in(r, "value")))
        problem = "the number cannot be tried";
    return {{"build", p.latest.number}};
}

static json do_write_try(preview& p, const control_request& r, std::string& problem)
{
    const tried_number* number = find_try(p, r, problem);
    if (number == nullptr)
        return {};
    const std::string file = number->file; // writing may make all of them anew
    if (write_try(p, file, number->site, problem))
        problem.clear();
    return {{"file", file}};
}

// ---- the rest -----------------------------------------------------------------------------------------------------

static const char* severity_name(problem_severity severity)
{
    switch (severity) {
    case problem_error:
        return "error";
    case problem_warning:
        return "warning";
    case problem_note:
        return "note";
    }
    return "";
}

static json errors_of(const preview& p)
{
    json problems = json::array();
    for (const show_problem& problem : p.latest.problems) {
        json told = {{"severity", severity_name(problem.severity)}, {"file", problem.file}};
        if (problem.line != 0)
            told["line"] = problem.line;
        if (!problem.where.empty())
            told["where"] = problem.where;
        told["text"] = problem.text;
        problems.push_back(told);
    }
    return {{"build", p.latest.number}, {"problems", problems}};
}

static bool place_camera(preview& p, const control_request& r, std::string& problem)
{
    if (!p.shown.camera.on)
        take_camera_over(p, true);
    if (!p.shown.camera.on) {
        problem = "nothing is drawn in perspective here, so there is no camera to take";
        return false;
    }
    const control_value* position = find_value(r, "position");
    const control_value* rotation = find_value(r, "rotation");
    for (uint32_t i = 0; i < 3; ++i) {
        if (position != nullptr)
            p.shown.camera.position[i] = static_cast<float>(position->list[i]);
        if (rotation != nullptr)
            p.shown.camera.rotation[i] = static_cast<float>(rotation->list[i]);
    }
    p.dirty = true;
    return true;
}

static json do_camera(preview& p, const control_request& r, std::string& problem)
{
    if (const auto on = switch_in(r, "on"))
        take_camera_over(p, *on);
    const bool is_placed = find_value(r, "position") != nullptr || find_value(r, "rotation") != nullptr;
    if ((is_placed || switch_in(r, "on").value_or(false)) && !place_camera(p, r, problem))
        return {};
    const flown_camera& camera = p.shown.camera;
    json told = {{"on", camera.on}, {"position", camera.position}, {"rotation", camera.rotation}};
    if (switch_in(r, "copy").value_or(false)) {
        told["line"] = copy_camera(p);
        if (!camera.on)
            problem = R"(no camera is flown: {"do":"camera","on":true} takes it over)";
    }
    return told;
}

static json memory_of(preview& p)
{
    preview_window_use_picture(p.window);
    const memory_kind memory = stage_memory(p.shown);
    const auto kind = [](uint64_t bytes, uint32_t count) { return json{{"bytes", bytes}, {"count", count}}; };
    return {{"meshes", kind(memory.meshes, memory.mesh_count)},
        {"pictures", kind(memory.pictures, memory.picture_count)},
        {"targets", kind(memory.targets, memory.target_count)},
        {"programs", kind(memory.programs, memory.program_count)}, {"kept_states", keeper_memory(p.keeper)}};
}

static json names_of(preview& p)
{
    preview_window_use_picture(p.window);
    return {{"names", stage_count_names()}};
}

static json figures_of(const preview& p)
{
    const stage_frame_times& times = p.shown.times;
    json layers = json::array();
    for (uint32_t i = 0; i < std::min(times.layer_count, track_count); ++i)
        layers.push_back({{"track", times.layers[i].track + 1}, {"cpu_ms", times.layers[i].cpu_ms},
            {"gpu_ms", times.layers[i].gpu_ms < 0 ? json() : json(times.layers[i].gpu_ms)}});
    return {{"cpu_ms", times.cpu_ms}, {"gpu_ms", times.gpu_ms < 0 ? json() : json(times.gpu_ms)}, {"tracks", layers},
        {"frames_ms", p.face.frame_ms}};
}

static json places_of(const preview& p)
{
    json places = json::array();
    for (const named_place& place : p.face.places)
        places.push_back(
            {{"name", place.name}, {"x", place.x}, {"y", place.y}, {"width", place.width}, {"height", place.height}});
    return {{"places", places}};
}

static json help_text()
{
    json commands = json::array();
    for (int32_t command = 0; command < command_count; ++command)
        commands.push_back(command_usage(static_cast<control_command>(command)));
    return {{"commands", commands}};
}

static json do_switch(preview& p, const control_request& r, std::string& problem)
{
    if (!has_all(r, {"on"}, problem))
        return {};
    const bool on = *switch_in(r, "on");
    if (r.command == command_mute)
        mute_sound(p, on);
    else if (on != p.window.fullscreen)
        preview_window_set_fullscreen(p.window, on);
    return {{"on", on}};
}

// ---- answers that wait
// ------------------------------------------------------------------------------------------------

static void wait_for(preview& p, uint64_t client, const control_request& r, control_wait wait)
{
    wait.client = client;
    wait.id = r.id;
    wait.until = steady_seconds() + wait.seconds;
    p.control.waits.push_back(std::move(wait));
}

static bool read_wait(const preview& p, const control_request& r, control_wait& wait, std::string& problem)
{
    constexpr std::array things = {"settled", "build", "shown"};
    if (!has_all(r, {"for"}, problem))
        return false;
    const auto thing = std::find(things.begin(), things.end(), *text_in(r, "for"));
    if (thing == things.end()) {
        problem = R"("for" is "settled", "build" or "shown")";
        return false;
    }
    if (find_value(r, "timeout") != nullptr && !is_within(r, "timeout", 0, longest_wait, problem))
        return false;
    wait.kind = static_cast<int32_t>(thing - things.begin());
    wait.seconds = number_in(r, "timeout").value_or(usual_wait);
    const uint64_t number_now = wait.kind == wait_build ? p.latest.number : p.builds_shown;
    const std::optional<double> number = number_in(r, "number");
    wait.number = number ? static_cast<uint64_t>(*number) : number_now;
    return true;
}

// Whether what it waits for has happened, or cannot happen any more (`problem`).
static bool has_happened(preview& p, const control_wait& wait, json& fields, std::string& problem)
{
    if ((wait.kind == wait_settled || wait.kind == wait_still) && !p.waits_for_build && p.watch.changed_at == 0
        && p.latest.number != 0 && !has_show(p, problem))
        return true;
    switch (static_cast<awaited_thing>(wait.kind)) {
    case wait_settled:
        fields = status_of(p);
        return is_settled(p);
    case wait_build:
        fields = build_status(p.latest);
        return p.latest.number > wait.number;
    case wait_shown:
        fields = shown_status(p);
        fields["builds_shown"] = p.builds_shown;
        return p.builds_shown > wait.number;
    case wait_still: {
        if (!is_settled(p))
            return false;
        std::string written;
        if (save_still(p, wait.file, written, problem))
            problem.clear();
        fields = {{"file", written}, {"frame", p.shown.frame}, {"time", time_of_frame(p.shown.frame, p.shown.rate)}};
        return true;
    }
    }
    return true;
}

static void serve_waits(preview& p)
{
    // A client may have saved a file just before it asked: that is noticed before the next round.
    for (size_t i = 0; i < p.control.waits.size();) {
        control_wait& wait = p.control.waits[i];
        json fields;
        std::string problem;
        bool is_over = !wait.is_new && has_happened(p, wait, fields, problem);
        wait.is_new = false;
        if (!is_over && steady_seconds() >= wait.until) {
            problem = "it has not happened within " + seconds_text(wait.seconds) + " seconds";
            is_over = true;
        }
        if (!is_over) {
            ++i;
            continue;
        }
        const control_wait done = wait;
        p.control.waits.erase(p.control.waits.begin() + static_cast<std::ptrdiff_t>(i));
        answer(p, done.client, done.id, problem, fields);
    }
}

// ---- one line
// ---------------------------------------------------------------------------------------------------------

static bool needs_show(control_command command)
{
    switch (command) {
    case command_go:
    case command_play:
    case command_pause:
    case command_scrub:
    case command_let_go:
    case command_loop:
    case command_tracks:
    case command_select:
    case command_values:
    case command_camera:
    case command_commands:
        return true;
    case command_status:
    case command_mute:
    case command_reload:
    case command_path:
    case command_caps:
    case command_fullscreen:
    case command_quit:
    case command_still:
    case command_tries:
    case command_try:
    case command_write_try:
    case command_errors:
    case command_memory:
    case command_names:
    case command_figures:
    case command_places:
    case command_wait:
    case command_help:
    case command_count:
        return false;
    }
    return false;
}

static json do_command(preview& p, const control_request& r, std::string& problem)
{
    switch (r.command) {
    case command_status:
        return status_of(p);
    case command_go:
        return do_go(p, r, problem);
    case command_play:
    case command_pause:
        play(p, r.command == command_play);
        return place_of(p);
    case command_scrub:
        return do_scrub(p, r, problem);
    case command_let_go:
        transport_let_go(p.time);
        return place_of(p);
    case command_loop:
        return do_loop(p, r, problem);
    case command_mute:
    case command_fullscreen:
        return do_switch(p, r, problem);
    case command_reload:
        reload(p);
        return {{"build", p.latest.number}, {"builds_shown", p.builds_shown}};
    case command_path:
        return do_path(p, r, problem);
    case command_caps:
        return do_caps(p, r, problem);
    case command_quit:
        p.quit = true;
        return {};
    case command_tracks:
        return do_tracks(p, r, problem);
    case command_select:
        return do_select(p, r, problem);
    case command_values:
        return do_values(p, r, problem);
    case command_tries:
        return tries_of(p);
    case command_try:
        return do_try(p, r, problem);
    case command_write_try:
        return do_write_try(p, r, problem);
    case command_errors:
        return errors_of(p);
    case command_camera:
        return do_camera(p, r, problem);
    case command_memory:
        return memory_of(p);
    case command_names:
        return names_of(p);
    case command_commands:
        return {{"text", stage_commands(p.shown)}};
    case command_figures:
        return figures_of(p);
    case command_places:
        return places_of(p);
    case command_help:
        return help_text();
    case command_still: // answered later
    case command_wait:
    case command_count:
        break;
    }
    return {};
}

static void serve_line(preview& p, const control_line& line)
{
    control_request r;
    std::string problem;
    json fields;
    if (read_control_request(line.text, r, problem) && (!needs_show(r.command) || has_show(p, problem))) {
        control_wait wait;
        if (r.command == command_still)
            return wait_for(p, line.client, r,
                {.id = {}, .kind = wait_still, .file = text_in(r, "file").value_or(""), .seconds = still_wait});
        if (r.command == command_wait && read_wait(p, r, wait, problem))
            return wait_for(p, line.client, r, wait);
        if (r.command != command_wait)
            fields = do_command(p, r, problem);
    }
    answer(p, line.client, r.id, problem, fields);
}

void serve_control(preview& p)
{
    for (const control_line& line : control_poll(p.control)) {
        p.active = true;
        serve_line(p, line);
    }
    serve_waits(p);
}
