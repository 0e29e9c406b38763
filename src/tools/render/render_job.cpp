#include "render_job.h"

#include "comparison.h"
#include "contact_sheet.h"
#include "frame_commands.h"
#include "tools/frames/frame_needs.h"
#include "frame_source_gl.h"
#include "options.h"
#include "tools/frames/output_file.h"
#include "output_names.h"
#include "tools/frames/pack_input.h"
#include "tools/frames/picture_file.h"
#include "picture_worker.h"
#include "tools/frames/production.h"
#include "progress.h"
#include "release_shots.h"
#include "sound.h"
#include "sound_cut.h"
#include "tiles.h"
#include "video_pipe.h"
#include "y4m.h"

#include "authoring/counted.h"
#include "content/file_bytes.h"
#include "content/printable.h"
#include "shell/loading.h"
#include "tools/common/words.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <unistd.h>

constexpr uint32_t stills_of_a_sheet = 16;
constexpr uint32_t slowest_count = 10;

namespace {

using stopwatch = std::chrono::steady_clock;

struct render_job {
    render_options options;
    int output = -1;                   // the standard output that was
    std::vector<std::string> warnings; // told at the end
    std::string report_problem;        // why a report could not be printed
    player_settings settings = {};
    production_files files;
    gl_session session;
    frame_source source;

    uint64_t end = 0;             // frames of the whole production
    std::vector<uint64_t> wanted; // frames to be seen, ascending
    std::vector<uint64_t> sheet_frames;
    bool interrupted = false;
    double waiting_seconds = 0; // for those who take pictures

    picture_worker pictures; // of -o
    picture_worker flashes;
    bool writes_pictures = false;
    video_pipe video;
    new_file video_file;
    decoded_music music;
    std::vector<int16_t> sound; // of the video
    std::vector<reference_picture> references;
    bool all_passed = true;
    std::vector<sheet_still> stills;
    std::vector<std::string> shots; // names of those that are written
    time_report times;
    commands_output commands;
};

} // namespace

// ---- words ------------------------------------------------------------------------------

static exit_status complain(exit_status status, const std::string& problem)
{
    say("Error: " + problem + ".");
    return status;
}

// What a user who asked for quiet does not want to know.
static void tell(const render_job& job, const std::string& line)
{
    if (!job.options.quiet)
        say(line);
}

// Lines of a report; beside pictures or commands on standard output they go to standard error.
static void report(render_job& job, const std::string& lines)
{
    const bool taken = job.options.kind == output_stream || job.options.commands == "-";
    const int to = taken ? STDERR_FILENO : job.output;
    if (!write_all(to, {reinterpret_cast<const uint8_t*>(lines.data()), lines.size()}))
        job.report_problem = std::string("cannot write to standard output: ") + std::strerror(errno);
}

static std::string seconds_text(uint64_t frame, frame_rate rate)
{
    char text[48];
    std::snprintf(text, sizeof text, "%.2f s", time_of_frame(frame, rate));
    return text;
}

// ---- Ctrl-C --------------------------------------------------------------------------------

static volatile std::sig_atomic_t stop_signal = 0;

static void note_signal(int)
{
    stop_signal = 1;
}

// The first signal ends the run at the next frame, the second one at once. A terminal that
// goes away ends it as well, unless the run was begun with nohup.
static void watch_signals()
{
    struct sigaction action = {};
    action.sa_handler = note_signal;
    action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    struct sigaction hang_up = {};
    if (sigaction(SIGHUP, nullptr, &hang_up) == 0 && hang_up.sa_handler != SIG_IGN)
        sigaction(SIGHUP, &action, nullptr);
}

// ---- preparing -----------------------------------------------------------------------------

static void choose_size(render_job& job)
{
    job.settings.choices = choices_for(job.options);
    set_screen_size(job.settings.display, job.options.width, job.options.height, job.settings.choices.aspect_index);
}

static exit_status open_session(render_job& job)
{
    std::string problem;
    if (!session_open(job.session, job.options, job.settings.display, problem))
        return complain(exit_no_opengl, problem);
    if (job.options.verbose)
        std::fprintf(stderr, "%s\n%s", printable(job.session.driver).c_str(), job.session.report.c_str());
    source_begin(job.source, job.session, job.settings, job.options.rate, !job.options.times.empty());
    if (job.source.tiles.size() > 1)
        tell(job,
            "Rendering in " + std::to_string(job.source.tiles.size()) + " tiles of at most "
                + std::to_string(job.session.width) + " x " + std::to_string(job.session.height) + ".");
    return exit_done;
}

// The folder that a file goes into is made where it is missing.
static bool make_folder_of(const std::string& path, std::string& problem)
{
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    std::error_code error;
    if (!folder.empty())
        std::filesystem::create_directories(folder, error);
    if (error)
        problem = "cannot make the folder " + folder.string() + ": " + error.message();
    return !error;
}

static bool make_folders(const render_options& options, std::string& problem)
{
    const std::string folders[]
        = {options.kind == output_stream ? "" : options.output, options.contact_sheet, options.times,
            options.commands == "-" ? "" : options.commands, options.shots.empty() ? "" : options.shots + "/"};
    return std::all_of(std::begin(folders), std::end(folders),
        [&problem](const std::string& path) { return make_folder_of(path, problem); });
}

// ---- which frames ----------------------------------------------------------------------------

static std::string last_frame_text(const render_job& job)
{
    return std::to_string(job.end - 1) + " (" + seconds_text(job.end - 1, job.options.rate) + ")";
}

static exit_status choose_stills(render_job& job)
{
    for (const moment& still : job.options.stills)
        job.wanted.push_back(frame_at(still, job.options.rate, job.end));
    for (const reference_picture& reference : job.references)
        job.wanted.push_back(reference.frame);
    std::sort(job.wanted.begin(), job.wanted.end());
    job.wanted.erase(std::unique(job.wanted.begin(), job.wanted.end()), job.wanted.end());
    if (job.wanted.back() < job.end)
        return exit_done;
    return complain(exit_usage,
        "frame " + std::to_string(job.wanted.back()) + " (" + seconds_text(job.wanted.back(), job.options.rate)
            + ") is behind the end: the last one is " + last_frame_text(job));
}

static void choose_sheet_frames(render_job& job, uint64_t first, uint64_t last)
{
    const frame_rate rate = job.options.rate;
    const auto times = spread_times(time_of_frame(first, rate), time_of_frame(last, rate), stills_of_a_sheet);
    for (const double seconds : times) {
        const double frame = seconds * rate.numerator / rate.denominator;
        job.sheet_frames.push_back(std::clamp(static_cast<uint64_t>(frame), first, last - 1));
    }
    job.sheet_frames.erase(std::unique(job.sheet_frames.begin(), job.sheet_frames.end()), job.sheet_frames.end());
}

static exit_status choose_range(render_job& job)
{
    const render_options& options = job.options;
    const bool to_given = options.to.kind != moment_unset;
    const uint64_t first = frame_from(options.from, options.rate, job.end);
    const uint64_t last = std::min(to_given ? frame_from(options.to, options.rate, job.end) : job.end, job.end);
    if (first >= job.end)
        return complain(exit_usage,
            "--from (frame " + std::to_string(first) + ", " + seconds_text(first, options.rate)
                + ") is behind the end: the last frame is " + last_frame_text(job));
    if (first >= last)
        return complain(exit_usage,
            "there is no frame between --from and --to: the one begins with frame " + std::to_string(first) + " ("
                + seconds_text(first, options.rate) + "), the other ends before frame " + std::to_string(last) + " ("
                + seconds_text(last, options.rate) + ")");
    if (!options.contact_sheet.empty())
        choose_sheet_frames(job, first, last);
    const bool sheet_only
        = options.kind == output_none && !options.flashes && options.times.empty() && options.commands.empty();
    if (sheet_only) {
        job.wanted = job.sheet_frames;
        return exit_done;
    }
    for (uint64_t frame = first; frame < last; ++frame)
        job.wanted.push_back(frame);
    return exit_done;
}

static std::string name_of_shot(const render_job& job, uint64_t frame)
{
    return job.wanted.size() == 1 ? job.files.name : job.files.name + "-" + numbered_name("%05d", frame);
}

// Before anything is drawn: the frames before a poster take their time.
static exit_status check_tiling(const render_job& job)
{
    for (const uint64_t frame : job.wanted) {
        const std::string problem = source_tiling_problem(job.source, frame);
        if (!problem.empty())
            return complain(exit_broken, problem);
    }
    return exit_done;
}

static exit_status check_names(const render_job& job, const std::vector<std::string>& names)
{
    std::string problem;
    return may_write(names, job.options.existing, problem) ? exit_done : complain(exit_broken, problem);
}

// The outputs that are called by the numbers of their frames.
static std::vector<std::string> numbered_names(const render_job& job)
{
    std::vector<std::string> names;
    for (const uint64_t frame : job.wanted) {
        if (job.options.kind == output_pictures)
            names.push_back(numbered_name(job.options.output, frame));
        if (job.options.shots.empty())
            continue;
        for (const std::string& shot : release_shot_names(job.options.shots, name_of_shot(job, frame)))
            names.push_back(shot);
    }
    return names;
}

static exit_status choose_frames(render_job& job)
{
    job.end = count_frames(job.settings, job.options.rate);
    if (job.end == 0) {
        const bool empty = pack_has_entry(job.settings.show.pack, "demo.xmlz");
        return complain(exit_broken,
            empty ? "the production shows nothing"
                  : job.files.pack + " has no entry demo.xmlz, so there is nothing to show");
    }
    const bool range = job.options.stills.empty() && job.references.empty();
    const exit_status status = range ? choose_range(job) : choose_stills(job);
    if (status != exit_done)
        return status;
    if (!range && !job.options.contact_sheet.empty())
        job.sheet_frames = job.wanted;
    const exit_status tiles = check_tiling(job);
    return tiles == exit_done ? check_names(job, numbered_names(job)) : tiles;
}

// ---- outputs ------------------------------------------------------------------------------------

static void prepare_sound(render_job& job)
{
    if (job.files.music.empty())
        return;
    std::string warning;
    const uint64_t last = job.wanted.back() + 1;
    job.music = decode_music(job.files.music, time_of_frame(last, job.options.rate), warning);
    if (!warning.empty())
        job.warnings.push_back(warning);
    if (job.music.samples_per_second == 0)
        return;
    job.sound = fit_sound_to_frames(
        job.music.pairs, job.music.samples_per_second, job.wanted.front(), last, job.options.rate);
}

static bool open_video(render_job& job, std::string& problem)
{
    if (!begin_file(job.video_file, job.options.output, problem))
        return false;
    prepare_sound(job);
    const bool even = video_wants_even_sides(job.options.output);
    const video_plan plan = {.path = job.options.output,
        .file = new_file_path(job.video_file),
        .width = job.options.width + (even ? job.options.width % 2 : 0),
        .height = job.options.height + (even ? job.options.height % 2 : 0),
        .rate = job.options.rate,
        .crf = job.options.crf,
        .more = job.options.ffmpeg,
        .sound = job.sound,
        .samples_per_second = job.music.samples_per_second};
    const bool opened = video_open(job.video, plan, problem);
    if (!opened)
        new_file_drop(job.video_file);
    if (opened && (plan.width != job.options.width || plan.height != job.options.height))
        tell(job,
            "Such a video has even sides: it becomes " + std::to_string(plan.width) + " x "
                + std::to_string(plan.height) + ", with the last column or row twice.");
    job.pictures.kind = worker_video;
    job.pictures.even = even;
    job.pictures.descriptor = job.video.pictures;
    return opened;
}

static bool open_stream(render_job& job, std::string& problem)
{
    const std::string header = y4m_header(job.options.width, job.options.height, job.options.rate);
    job.pictures.kind = worker_stream;
    job.pictures.descriptor = job.output;
    if (write_all(job.output, {reinterpret_cast<const uint8_t*>(header.data()), header.size()}))
        return true;
    problem = std::string("cannot write to standard output: ") + std::strerror(errno);
    return false;
}

static bool open_pictures(render_job& job, std::string& problem)
{
    switch (job.options.kind) {
    case output_none:
        return true;
    case output_still:
    case output_pictures:
        job.pictures.kind = worker_files;
        job.pictures.pattern = job.options.output;
        job.pictures.driver = job.session.driver;
        job.pictures.png_level = job.options.png_level;
        job.pictures.alone = !job.options.flashes;
        job.pictures.picture_bytes = uint64_t{job.options.width} * job.options.height * 3;
        return true;
    case output_video:
        return open_video(job, problem);
    case output_stream:
        return open_stream(job, problem);
    }
    return true;
}

static exit_status open_outputs(render_job& job)
{
    std::string problem;
    if (!make_folders(job.options, problem) || !commands_begin(job.commands, job.options.commands, job.output, problem)
        || !open_pictures(job, problem)) {
        commands_drop(job.commands);
        return complain(exit_broken, problem);
    }
    job.source.tells_commands = job.commands.wanted;
    job.writes_pictures = job.options.kind != output_none;
    if (job.writes_pictures)
        worker_begin(job.pictures);
    if (job.options.flashes) {
        job.flashes.kind = worker_flashes;
        job.flashes.rate = job.options.rate;
        worker_begin(job.flashes);
    }
    return exit_done;
}

// ---- a picture has come ----------------------------------------------------------------------

// Small at once: the pictures of a sheet need not all be kept whole.
static void add_to_sheet(render_job& job, uint64_t frame, const picture& image)
{
    if (!std::binary_search(job.sheet_frames.begin(), job.sheet_frames.end(), frame))
        return;
    uint32_t width = sheet_layout().still_width;
    uint32_t height = UINT32_MAX;
    fit_inside(image, width, height);
    job.stills.push_back({time_of_frame(frame, job.options.rate), scale_picture(image, width, height)});
}

static bool write_shots(render_job& job, uint64_t frame, const picture& image, std::string& problem)
{
    if (job.options.shots.empty())
        return true;
    return write_release_shots(image, job.options.shots, name_of_shot(job, frame), job.shots, problem);
}

static void compare(render_job& job, uint64_t frame, const picture& image)
{
    for (const reference_picture& reference : job.references) {
        if (reference.frame != frame)
            continue;
        const comparison_result result = compare_with_reference(reference, image, job.session.driver);
        report(job, printable(result.text) + "\n");
        job.all_passed &= result.passed;
    }
}

static bool give(render_job& job, picture_worker& worker, uint64_t frame, const shared_picture& image)
{
    const auto begin = stopwatch::now();
    const bool given = worker_give(worker, frame, image);
    job.waiting_seconds += std::chrono::duration<double>(stopwatch::now() - begin).count();
    return given;
}

static bool take_picture(render_job& job, std::string& problem)
{
    uint64_t frame = 0;
    picture image;
    frame_time times;
    const bool measures = !job.options.times.empty();
    if (!source_take(job.source, frame, image, measures ? &times : nullptr))
        return true;
    if (measures)
        job.times.frames.push_back(std::move(times));
    add_to_sheet(job, frame, image);
    compare(job, frame, image);
    if (!write_shots(job, frame, image, problem))
        return false;
    const shared_picture shared = std::make_shared<picture>(std::move(image));
    if (job.options.flashes)
        give(job, job.flashes, frame, shared);
    return !job.writes_pictures || give(job, job.pictures, frame, shared);
}

// ---- the frames ----------------------------------------------------------------------------------

namespace {

struct frame_loop {
    uint64_t done = 0;  // wanted frames that were drawn
    double seconds = 0; // that it took
    bool failed = false;
    std::string problem; // may stay empty where a worker knows
};

} // namespace

static void run_frames(render_job& job, frame_loop& loop, progress& shown)
{
    const player_settings& settings = job.settings;
    const std::vector<bool> pixels = frames_with_pixels(
        settings.show.production, screen_view(settings.display), settings.display.caps, job.options.rate, job.wanted);
    for (uint64_t frame = 0; frame < pixels.size(); ++frame) {
        job.interrupted |= stop_signal != 0 || job.session.stop_asked;
        if (job.interrupted)
            return;
        if (frame < job.wanted[loop.done]) {
            source_pass(job.source, frame, pixels[frame]);
        } else {
            source_draw(job.source, frame);
            loop.failed = !commands_write(job.commands, job.source.commands, loop.problem)
                || (source_is_full(job.source) && !take_picture(job, loop.problem));
            if (loop.failed)
                return;
            ++loop.done;
        }
        progress_show(shown, loop.done, frame + 1);
    }
}

// What the program itself costs: all but OpenGL, and waiting for those who take pictures.
static void tell_times(const render_job& job, uint64_t frames, double seconds)
{
    const uint64_t unseen = frames - job.wanted.size();
    const double per_frame = 1000.0 / static_cast<double>(std::max<uint64_t>(frames, 1));
    const double own = std::max(seconds - job.source.gl_seconds - job.waiting_seconds, 0.0);
    char text[160];
    std::snprintf(text, sizeof text,
        " in %.1f s, %.1f frames a second; of %.2f ms a frame OpenGL took %.2f, waiting for outputs %.2f, the rest "
        "%.3f.",
        seconds, static_cast<double>(frames) / std::max(seconds, 1e-9), seconds * per_frame,
        job.source.gl_seconds * per_frame, job.waiting_seconds * per_frame, own * per_frame);
    const std::string others = unseen == 0 ? "" : " and " + counted(unseen, "unseen one");
    tell(job, counted(job.wanted.size(), "frame") + others + text);
}

static frame_loop render_frames(render_job& job)
{
    frame_loop loop;
    progress shown;
    const uint64_t frames = job.wanted.back() + 1;
    const auto begin = stopwatch::now();
    progress_begin(shown, frames, job.wanted.size(), job.options.quiet);
    run_frames(job, loop, shown);
    while (!loop.failed && job.source.waiting_count > 0)
        loop.failed = !take_picture(job, loop.problem);
    progress_end(shown);
    loop.seconds = std::chrono::duration<double>(stopwatch::now() - begin).count();
    return loop;
}

// ---- the end ---------------------------------------------------------------------------------------

static void note_problem(std::string& problem, const std::string& later)
{
    if (problem.empty())
        problem = later;
}

static void close_pictures(render_job& job, uint64_t done, std::string& problem)
{
    if (!worker_end(job.pictures))
        note_problem(problem, job.pictures.problem);
    const uint64_t first = job.wanted.front();
    const uint32_t rate = job.music.samples_per_second;
    const uint64_t samples
        = sample_of_frame(first + done, job.options.rate, rate) - sample_of_frame(first, job.options.rate, rate);
    std::string later;
    const bool closed = video_close(job.video, samples, later);
    const bool nothing_yet = job.interrupted && done == 0; // which is no video, as ffmpeg says
    if (!closed && !nothing_yet)
        problem = later; // ffmpeg knows better why its pipe broke
    if (job.options.kind != output_video)
        return;
    if (nothing_yet || !problem.empty())
        new_file_drop(job.video_file);
    else if (!keep_file(job.video_file, job.options.output, later))
        problem = later;
}

static void close_commands(render_job& job, const frame_loop& loop, std::string& problem)
{
    std::string later;
    if (loop.failed || loop.done == 0)
        commands_drop(job.commands);
    else if (!commands_keep(job.commands, later))
        note_problem(problem, later);
}

static void write_sheet(render_job& job, std::string& problem)
{
    if (job.options.contact_sheet.empty() || job.stills.empty())
        return;
    char note[96];
    std::snprintf(note, sizeof note, "%s, %u x %u", seconds_text(job.end, job.options.rate).c_str(), job.options.width,
        job.options.height);
    const picture sheet = make_contact_sheet({}, job.files.name, note, job.stills);
    std::string later;
    if (!save_png(job.options.contact_sheet, sheet, later))
        note_problem(problem, later);
}

static void write_times(render_job& job, std::string& problem)
{
    if (job.options.times.empty())
        return;
    time_report& times = job.times;
    times.production = job.files.pack;
    times.driver = job.session.driver;
    times.path = job.settings.display.glsl_path == 1 ? "glsl" : "fixed";
    times.width = job.options.width;
    times.height = job.options.height;
    times.rate = job.options.rate;
    std::string later;
    if (!write_time_report(job.options.times, times, later))
        note_problem(problem, later);
    for (const std::string& line : slowest_moment_lines(times, slowest_count))
        report(job, line + "\n");
}

// "a.png", "0.png to 9.png (10 pictures)".
static std::string written_pictures(const render_job& job, uint64_t done)
{
    const std::string first = numbered_name(job.options.output, job.wanted.front());
    if (done == 1)
        return first;
    return first + " to " + numbered_name(job.options.output, job.wanted[done - 1]) + " (" + counted(done, "picture")
        + ")";
}

static std::string written_video(const render_job& job, uint64_t done)
{
    return job.options.output + " (" + counted(done, "frame") + ", " + seconds_text(done, job.options.rate)
        + (job.sound.empty() ? ", without sound)" : ")");
}

static void add_first_output(const render_job& job, uint64_t done, std::vector<std::string>& written)
{
    switch (job.options.kind) {
    case output_none:
        return;
    case output_still:
    case output_pictures:
        written.push_back(written_pictures(job, done));
        return;
    case output_video:
        written.push_back(written_video(job, done));
        return;
    case output_stream:
        written.push_back(counted(done, "frame") + " to standard output");
        return;
    }
}

// The last line: what was written, and from which pack.
static void tell_outputs(const render_job& job, uint64_t done)
{
    constexpr size_t most_names = 3;
    std::vector<std::string> written;
    if (done > 0)
        add_first_output(job, done, written);
    if (!job.options.contact_sheet.empty() && !job.stills.empty())
        written.push_back(job.options.contact_sheet);
    if (job.shots.size() <= most_names)
        written.insert(written.end(), job.shots.begin(), job.shots.end());
    else
        written.push_back(counted(job.shots.size(), "picture") + " in " + job.options.shots);
    if (!job.options.times.empty())
        written.push_back(job.options.times);
    if (job.commands.wanted && done > 0)
        written.push_back(job.options.commands == "-" ? "commands to standard output" : job.options.commands);
    if (written.empty())
        tell(job, "Looked at " + counted(done, "frame") + " of " + job.files.pack + ", and wrote no file.");
    else
        tell(job, "Wrote " + enumerated(written) + " from " + job.files.pack + ".");
}

static void print_reports(render_job& job, std::string& problem)
{
    write_sheet(job, problem);
    write_times(job, problem);
    if (job.options.flashes)
        report(job, flash_report_text(job.flashes.report));
    if (!job.report_problem.empty())
        note_problem(problem, job.report_problem);
}

static exit_status finish(render_job& job, frame_loop& loop)
{
    std::string problem = loop.problem;
    close_pictures(job, loop.done, problem);
    worker_end(job.flashes);
    close_commands(job, loop, problem);
    if (!loop.failed)
        print_reports(job, problem);
    for (const std::string& warning : job.warnings)
        say("Warning: " + warning + ".");
    if (!problem.empty() || loop.failed)
        return complain(exit_broken, problem);
    if (!job.interrupted)
        tell_times(job, job.wanted.back() + 1, loop.seconds);
    else
        say("Stopped after " + std::to_string(loop.done) + " of " + counted(job.wanted.size(), "picture") + ".");
    tell_outputs(job, loop.done);
    if (job.interrupted)
        return exit_interrupted;
    if (!job.flashes.report.moments.empty())
        return exit_flashes;
    return job.all_passed ? exit_done : exit_broken;
}

// ---- the loading screen ----------------------------------------------------------------------------

// One frame a per cent, from 0 on: what a loading of many small steps shows.
static exit_status render_loading(render_job& job)
{
    std::string problem;
    const timeline* tracks = job.settings.show.loading.timeline;
    if (tracks == nullptr || tracks->layer_count[0] == 0)
        return complain(exit_broken, "the pack has no loading screen");
    if (job.source.tiles.size() > 1 && renders_to_textures(*tracks))
        return complain(exit_broken, "the loading screen draws into textures, which cannot be done in tiles");
    std::vector<uint32_t> per_cents = job.options.loading;
    std::sort(per_cents.begin(), per_cents.end());
    per_cents.erase(std::unique(per_cents.begin(), per_cents.end()), per_cents.end());
    job.wanted.assign(per_cents.begin(), per_cents.end());
    if (const exit_status status = check_names(job, numbered_names(job)); status != exit_done)
        return status;
    if (!make_folders(job.options, problem) || !open_pictures(job, problem))
        return complain(exit_broken, problem);
    worker_begin(job.pictures);
    uint64_t done = 0;
    for (uint32_t per_cent = 0; per_cent <= per_cents.back() && stop_signal == 0; ++per_cent) {
        picture image;
        const bool wanted = std::binary_search(per_cents.begin(), per_cents.end(), per_cent);
        source_draw_loading(job.source, per_cent, wanted ? &image : nullptr);
        if (wanted && !worker_give(job.pictures, per_cent, std::make_shared<picture>(std::move(image))))
            break;
        done += wanted ? 1 : 0;
    }
    if (!worker_end(job.pictures))
        return complain(exit_broken, job.pictures.problem);
    tell_outputs(job, done);
    return stop_signal == 0 ? exit_done : exit_interrupted;
}

// ---- the run -----------------------------------------------------------------------------------------

static exit_status fail_to_load(const std::string& line)
{
    say(line);
    return exit_broken;
}

static exit_status run_production(render_job& job)
{
    std::string problem;
    std::string warning;
    if (!load_show(job.settings, job.files, problem, warning))
        return fail_to_load(problem);
    unload_document_memory(job.settings.show.loading); // as the player does: its state may be seen
    if (!warning.empty())
        job.warnings.push_back(warning);
    exit_status status = choose_frames(job);
    if (status == exit_done)
        status = open_outputs(job);
    if (status != exit_done)
        return status;
    frame_loop loop = render_frames(job);
    return finish(job, loop);
}

static exit_status run_session(render_job& job)
{
    std::string problem;
    if (job.options.seed_given)
        std::srand(job.options.seed);
    if (!load_loading_screen(job.settings, problem))
        return fail_to_load(problem);
    return job.options.loading.empty() ? run_production(job) : render_loading(job);
}

exit_status run_render(const render_options& options, int output)
{
    render_job job;
    job.options = options;
    job.output = output;
    std::string problem;
    if (!options.compare.empty()) {
        if (!load_references(options.compare, job.references, problem))
            return complain(exit_usage, problem);
        job.options.width = job.references[0].image.width;
        job.options.height = job.references[0].image.height;
    }
    choose_size(job);
    if (const exit_status status = check_names(job, fixed_output_names(options)); status != exit_done)
        return status;
    if (!open_pack(options.pack, job.settings, job.files, problem))
        return complain(exit_broken, problem);
    watch_signals();
    exit_status status = open_session(job);
    if (status != exit_done)
        return status;
    status = run_session(job);
    std::fflush(stdout);
    unload_document(job.settings.show.loading);
    unload_document(job.settings.show.production);
    release_renderer_gl(job.source.drawing);
    session_close(job.session);
    return status;
}
