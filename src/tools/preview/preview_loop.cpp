#include "tools/preview/preview_loop.h"

#include "authoring/lua/source.h"
#include "content/pack.h"
#include "tools/common/words.h"
#include "tools/frames/pack_input.h"
#include "tools/preview/actions.h"
#include "tools/preview/control_commands.h"
#include "tools/preview/interface.h"
#include "tools/preview/loading_problems.h"
#include "tools/preview/preview.h"
#include "tools/preview/tries_by_hand.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <utility>

constexpr double jump_budget_ms = 60;   // for a picture at once
constexpr double reload_budget_ms = 15; // for the first one of a new show, which is waited for most
constexpr double settle_budget_ms = 12; // beside the interface
constexpr uint32_t idle_wait_ms = 500;  // a watch that has to look at the times of files does it then
constexpr uint32_t lively_wait_ms = 100;
constexpr uint32_t unquiet_wait_ms = 2;  // a save that may not be the last, a line that is half sent, who waits
constexpr uint32_t settling_windows = 3; // until the interface shows all that follows from a change

constexpr int status_done = 0;
constexpr int status_broken = 1; // no such show, no such socket
constexpr int status_no_opengl = 3;

static int complain(int status, const std::string& problem)
{
    say("Error: " + problem + ".");
    return status;
}

// ---- opening --------------------------------------------------------------------------------------

// A source, a folder that has one, or a pack, which is played as it is.
static bool find_show(preview& p, std::string& problem)
{
    const std::string path = p.options.show.empty() ? "." : p.options.show;
    p.from_source = std::filesystem::is_directory(path) || path.ends_with(".lua");
    if (p.from_source && find_source(path, p.folder, p.file))
        return true;
    production_files files;
    const owned_pack pack(open_pack_input(path, files, problem));
    if (pack == nullptr) {
        if (std::filesystem::is_directory(path))
            problem = path + " has neither a show.lua nor a pack";
        return false;
    }
    p.from_source = false;
    const std::filesystem::path found = files.pack;
    p.folder = found.has_parent_path() ? found.parent_path().string() : ".";
    p.file = found.filename().string();
    return true;
}

static bool open_all(preview& p, int& status)
{
    std::string problem;
    status = status_broken;
    if (!find_show(p, problem)) {
        complain(status, problem);
        return false;
    }
    status = status_no_opengl;
    if (!preview_window_open(p.window, p.options.window_width, p.options.window_height, "brimlow-preview", problem)) {
        complain(status, problem);
        return false;
    }
    set_interface_style(p.window.scale);
    preview_window_use_picture(p.window);
    if (!stage_open(p.shown, p.options.wish, p.options.rate, problem)) {
        complain(status, problem);
        preview_window_close(p.window);
        return false;
    }
    if ((!p.options.control.empty() && !control_open(p.control, p.options.control, problem))
        || !watch_open(p.watch, problem)) {
        status = status_broken;
        complain(status, problem);
        preview_window_close(p.window);
        return false;
    }
    mute_sound(p, p.options.muted);
    return true;
}

// ---- builds -----------------------------------------------------------------------------------------

static void watch_build(preview& p, const show_build& build)
{
    std::vector<std::string> paths = {p.folder + "/" + p.file};
    for (const std::string& file : build.files)
        paths.push_back(p.folder + "/" + file);
    for (const std::string& file : p.build.files)
        paths.push_back(p.folder + "/" + file);
    watch_files(p.watch, paths);
}

static void begin_show(preview& p)
{
    if (p.options.at.kind != moment_unset)
        go_to_frame(p, frame_at(p.options.at, p.shown.rate, p.shown.end));
    play(p, !p.options.paused);
}

// What only the graphics card finds stands beside what the builder found.
static void tell_loading(preview& p, const std::vector<loading_remark>& remarks, const show_build& build)
{
    const problem_severity severity = p.latest.can_play ? problem_warning : problem_error;
    const problem_list found = problems_of_loading(remarks, build, severity);
    p.latest.problems.insert(p.latest.problems.end(), found.begin(), found.end());
}

// Where the show was stays, and so do sliders, loop, solo and camera.
static void show_new(preview& p, show_build&& build)
{
    std::string problem;
    preview_window_use_picture(p.window);
    if (!stage_load(p.shown, build, problem)) {
        p.latest.can_play = false;
        if (!problem.empty())
            p.latest.problems.push_back({problem_error, build.file, 0, "", problem});
        tell_loading(p, p.shown.refused, build);
        return;
    }
    const bool is_first = p.build.number == 0;
    const show_build before = std::exchange(p.build, std::move(build));
    keeper_restart(p.keeper, p.shown);
    transport_set_end(p.time, time_of_frame(p.shown.end, p.shown.rate));
    sound_take(p.sound, p.build.music);
    select_again(p, before);
    forget_stale(p.tries, p.build.tries);
    tell_loading(p, p.shown.remarks, p.build);
    preview_window_set_title(p.window, (p.build.title.empty() ? p.file : p.build.title) + " - brimlow-preview");
    if (is_first)
        begin_show(p);
    p.coming.loaded = steady_seconds();
    p.reload = p.coming;
    p.dirty = true;
}

static void take_builds(preview& p)
{
    if (watch_poll(p.watch, steady_seconds())) {
        reload(p);
        p.coming.noticed = p.watch.noticed;
    }
    std::optional<show_build> answer = builder_poll(p.process);
    if (!answer)
        return;
    p.active = true;
    p.windows_due = settling_windows; // panels that open are measured first, and seen in the next one
    p.waits_for_build = false;
    p.coming.built = steady_seconds();
    p.coming.number = answer->number;
    watch_build(p, *answer);
    p.latest = *answer;
    p.latest.pack.clear();
    p.face.shows_errors = true;
    if (answer->can_play)
        show_new(p, std::move(*answer));
}

// ---- time -----------------------------------------------------------------------------------------------

static void advance_time(preview& p)
{
    const bool runs = p.time.playing && !p.time.scrubbing;
    if (p.sound_starts != p.time.starts) {
        p.sound_starts = p.time.starts;
        if (runs)
            sound_play_from(p.sound, transport_stretch(p.time));
        else
            sound_stop(p.sound);
    }
    if (runs)
        transport_advance(p.time, sound_playing_for(p.sound));
}

// What is about to be built will have to settle anew, and the builder has better use for the processor.
static bool may_settle(const preview& p)
{
    return p.keeper.settling && !p.waits_for_build && p.watch.changed_at == 0;
}

// The picture that is due. True: there is a new one.
static bool bring_picture(preview& p)
{
    if (!p.shown.has_show || p.shown.end == 0)
        return false;
    const uint64_t frame = frame_now(p);
    const bool is_due = p.dirty || !p.shown.at_frame || (p.keeper.settling ? p.keeper.target : p.shown.frame) != frame;
    if (!is_due && !may_settle(p))
        return false;
    preview_window_use_picture(p.window);
    if (!is_due)
        return keeper_settle(p.keeper, p.shown, settle_budget_ms);
    const bool is_reload = p.reload.loaded > 0 && p.reload.shown == 0;
    keeper_go(p.keeper, p.shown, frame, is_reload ? reload_budget_ms : jump_budget_ms);
    p.dirty = false;
    p.face.frame_ms.push_back(static_cast<float>(p.shown.times.cpu_ms));
    if (p.face.frame_ms.size() > 240)
        p.face.frame_ms.erase(p.face.frame_ms.begin());
    return true;
}

// ---- the loop -----------------------------------------------------------------------------------------------

static void show_window(preview& p)
{
    preview_window_begin_frame(p.window);
    draw_interface(p);
    preview_window_end_frame(p.window);
    ++p.windows_shown;
}

// Something moves in the interface though nothing happens: what waits, what is said for a moment, a caret, a waveform.
static bool is_lively(const preview& p)
{
    return p.waits_for_build || p.keeper.settling || p.window.typing || p.face.waits
        || steady_seconds() < p.face.notice_until + lively_wait_ms / 1000.0 || (p.sound.music && !p.sound.music->ready);
}

static bool has_unsent(const control_socket& control)
{
    return std::any_of(control.clients.begin(), control.clients.end(),
        [](const control_client& client) { return !client.to_send.empty(); });
}

static uint32_t until_next_frame(const preview& p)
{
    const double due = time_of_frame(frame_now(p) + 1, p.shown.rate) - p.time.position;
    return static_cast<uint32_t>(std::ceil(std::clamp(due, 0.0, 1.0) * 1000));
}

// How long nothing has to be done, unless something happens.
static uint32_t time_to_wait(const preview& p)
{
    if (p.dirty || may_settle(p) || p.active)
        return 0;
    uint32_t wait = is_lively(p) ? lively_wait_ms : idle_wait_ms;
    if (p.windows_due > 0)
        wait = std::min(wait, preview_window_rests(p.window));
    if (p.time.playing && !p.time.scrubbing)
        wait = std::min(wait, until_next_frame(p));
    if (p.watch.changed_at > 0 || has_unsent(p.control) || !p.control.waits.empty())
        wait = std::min(wait, unquiet_wait_ms);
    return wait;
}

// What tells of saved files, builds and lines of the control socket.
static void list_awaited(preview& p)
{
    p.awaited = {p.watch.descriptor, builder_descriptor(p.process), p.control.descriptor};
    for (const control_client& client : p.control.clients)
        p.awaited.push_back(client.descriptor);
}

static void take_input(preview& p, window_input& input)
{
    list_awaited(p);
    preview_window_take_input(p.window, input, time_to_wait(p), p.awaited);
    p.active = input.any;
    if (input.any)
        p.windows_due = settling_windows;
    p.quit |= input.closed;
    p.face.double_clicked |= input.double_click;
    if (input.scale_changed) {
        set_interface_style(p.window.scale);
        preview_window_renew_letters(p.window);
    }
    for (const pressed_key& key : input.keys)
        if (!p.face.flies || key.key == key_escape) // otherwise the keys fly the camera
            do_key(p, key);
}

// A new show is seen at once, everything else as often as the window is drawn, and not while a save is about to be
// built. One that nobody sees counts as seen.
static void show_what_is_new(preview& p, bool new_picture)
{
    const bool is_reload = p.reload.loaded > 0 && p.reload.shown == 0;
    const bool is_late = steady_seconds() >= p.window.shown_at + lively_wait_ms / 1000.0;
    if (p.windows_due == 0 && (p.active || new_picture || (is_late && is_lively(p))))
        p.windows_due = 1;
    const bool may_draw = is_reload || (preview_window_rests(p.window) == 0 && p.watch.changed_at == 0);
    if (!p.window.hidden && p.windows_due > 0 && may_draw) {
        show_window(p);
        --p.windows_due;
    }
    if (is_reload) {
        p.reload.shown = steady_seconds();
        ++p.builds_shown;
        p.active = true;
    }
}

static void run_once(preview& p)
{
    window_input input;
    take_input(p, input);
    take_builds(p);
    serve_control(p);
    advance_time(p);
    const bool is_unseen = p.window.hidden && p.time.playing;
    const bool new_picture = !is_unseen && bring_picture(p);
    show_what_is_new(p, new_picture);
}

int run_preview(const preview_options& options)
{
    if (options.builder >= 0)
        return run_builder(options.builder);
    preview p;
    p.options = options;
    int status = status_done;
    if (!open_all(p, status))
        return status;
    reload(p);
    while (!p.quit)
        run_once(p);
    sound_close(p.sound);
    builder_close(p.process);
    control_close(p.control);
    watch_close(p.watch);
    preview_window_use_picture(p.window);
    keeper_restart(p.keeper, p.shown);
    stage_close(p.shown);
    preview_window_close(p.window);
    return status_done;
}
