#include "shell/player.h"

#include "content/pack.h"
#include "content/xml.h"
#include "model/sections.h"
#include "music/device.h"
#include "music/music.h"
#include "render/compositor_gl.h"
#include "render/warming_gl.h"
#include "shell/dialog.h"
#include "shell/display_gl.h"
#include "shell/driver_gl.h"
#include "shell/interrupt.h"
#include "shell/loading.h"
#include "shell/log.h"
#include "shell/settings.h"
#include "shell/startup.h"
#include "texgen/cosine_table.h"

#include <cassert>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

constexpr uint32_t loading_frame_interval_ms = 50;

// Warming is a moment where the driver has kept what it compiled: no frame makes it longer. Where it compiles all of it
// for the first time, that takes seconds, and of a very large show minutes: then the loading screen goes on, and at
// some time the show begins, to wait for the driver where it comes to the rest.
constexpr uint32_t quiet_warming_ms = 500;
constexpr uint32_t longest_warming_ms = 10000;

// For who writes programs of their own; the show itself stays silent.
static bool wants_shader_log()
{
    const char* wanted = std::getenv("BRIMLOW_SHADER_LOG");
    return wanted != nullptr && wanted[0] != '\0' && std::strcmp(wanted, "0") != 0;
}

static loading_options options_for(const player_display& display, const gl_caps& caps, bool production)
{
    return {caps, display.texture_formats, display.glsl_path == 1, production, wants_shader_log()};
}

// The loading screen's clock is the progress itself: its first second is shown from tick 0
// to tick 100 as the items of the production are made.
static void show_loading_frame(document& loading, player_display& display, player_clock& clock, renderer& drawing)
{
    assert(clock.progress_total > 0 && clock.progress_done <= clock.progress_total);
    const int64_t percent = static_cast<int64_t>(clock.progress_done) * 100 / clock.progress_total;
    forget_objects(drawing.gl); // the production's have been made since the last frame
    compose_frame(loading, static_cast<uint32_t>(percent), screen_view(display), display.loading_caps,
        display.glsl_path == 1, drawing);
    window_swap(display.window);
    clear_standing_gl(drawing);
    ++clock.loading_frames;
    clock.progress_ticks = window_ticks();
}

// False: `problem` holds the line to print.
static bool load_loading_screen(player_show& show, const player_display& display, std::string& problem)
{
    assert(show.pack != nullptr);
    owned_tree tree;
    timeline* t = std::exchange(show.loading_timeline, nullptr);
    return load_document(
        show.pack, "loading.xmlz", t, options_for(display, display.loading_caps, false), show.loading, tree, problem);
}

// Makes the production section by section, with a loading frame at most every 50 ms. `tree` holds its elements
// then, null for a pack without one. False: `problem` holds the line to print.
static bool load_production(player_show& show, player_display& display, player_clock& clock, renderer& drawing,
    owned_tree& tree, std::string& problem)
{
    assert(show.pack != nullptr && tree == nullptr);
    clock.progress_ticks = window_ticks(); // reading and inflating count towards the first interval
    tree.reset(load_document_tree(show.pack, "demo.xmlz", problem));
    if (tree == nullptr)
        return problem.empty();
    document_create(show.production, "demo.xmlz", std::exchange(show.production_timeline, nullptr));
    clock.progress_total = static_cast<int32_t>(document_item_count(tree.get()));
    document_loader loader;
    document_loader_begin(loader, show.production, tree.get(), show.pack, options_for(display, display.caps, true));
    for (;;) {
        switch (document_loader_step(loader)) {
        case read_record:
            clock.progress_done += find_section(loader.reader.section)->is_progress ? 1 : 0;
            assert(clock.progress_done <= clock.progress_total);
            if (window_ticks() - clock.progress_ticks > loading_frame_interval_ms)
                show_loading_frame(show.loading, display, clock, drawing);
            break;
        case read_section_end:
            break;
        case read_done:
            return true;
        case read_failed:
            problem = loader.error;
            return false;
        }
    }
}

// What a loading frame leaves may be seen in the show. One that comes only because a driver compiles leaves
// nothing to draw with; only ripples and random numbers have gone on.
static void show_warming_frame(document& loading, player_display& display, player_clock& clock, renderer& drawing)
{
    const bool is_first = clock.loading_frames == 0;
    show_loading_frame(loading, display, clock, drawing);
    if (!is_first)
        return;
    clock.loading_frames = 0;
    drawing.standing = initial_standing_state();
    clear_standing_gl(drawing);
}

// Draws everything that the show comes to where nobody sees it, with loading frames in between where that takes long.
static void warm_production(player_show& show, player_display& display, player_clock& clock, renderer& drawing)
{
    show_warming warming = {&show.production, screen_view(display), display.caps, display.glsl_path == 1};
    while (warm_some_gl(warming, drawing, window_ticks, loading_frame_interval_ms)) {
        const uint32_t passed = window_ticks() - warming.begin_ticks;
        if (passed > longest_warming_ms || interrupted())
            break;
        if (passed > quiet_warming_ms && window_ticks() - clock.progress_ticks > loading_frame_interval_ms)
            show_warming_frame(show.loading, display, clock, drawing);
    }
    end_warming_gl(warming);
}

// False: the audio device cannot be opened, which ends the process.
static bool start_music(music_state& music, player_choices& choices, const xml_node* tree)
{
    const xml_node* element = document_music_element(tree);
    const char* file = element != nullptr ? xml_get_attribute(element, "file") : nullptr;
    const music_result result = choices.music_enabled == 1 ? music_open(music, file) : music_none;
    if (result != music_playing)
        choices.music_enabled = -1;
    return result != music_no_device;
}

static void start_clock(player_clock& clock, player_choices& choices, music_state& music)
{
    assert(clock.frame_count == 0);
    music_clear_counters(music);
    bool given_up = false;
    if (choices.music_enabled == 1)
        clock.production_time_ms = music_start_clock(music, choices.music_enabled, given_up);
    if (given_up) {
        log_message(0, "The audio device asks for nothing, so the timer keeps the time.");
        choices.music_enabled = -1;
    }
    if (choices.music_enabled != 1) {
        clock.production_time_ms = 0;
        clock.start_ticks = window_ticks();
    }
}

static void print_benchmark(const player_clock& clock)
{
    const double seconds = static_cast<double>(clock.production_time_ms) * static_cast<double>(0.001f);
    std::printf("Benchmark result: %.2f fps\n", static_cast<double>(clock.frame_count) / seconds);
}

static void close_show_pack(player_show& show)
{
    assert(show.pack != nullptr);
    pack_close(show.pack);
    show.pack = nullptr;
}

// One pass a frame, as fast as drawing and swapping allow: the clock decides what is shown.
static void play(player_settings& settings, renderer& drawing)
{
    assert(settings.show.pack != nullptr && settings.display.window.surface != nullptr);
    const player_display& display = settings.display;
    player_clock& clock = settings.clock;
    forget_objects(drawing.gl); // the production has been made
    for (;;) {
        const uint32_t drawn = compose_frame(settings.show.production, clock.production_time_ms / 10,
            screen_view(display), display.caps, display.glsl_path == 1, drawing);
        if (drawn == 0) {
            close_show_pack(settings.show);
            print_benchmark(clock);
            return;
        }
        ++clock.frame_count;

        const bool closed = window_next_event() == window_event_closed; // one a frame, others are dropped
        if (closed || interrupted())
            std::exit(0);
        if (window_escape_held()) {
            close_show_pack(settings.show);
            return;
        }
        window_swap(settings.display.window);
        clock.production_time_ms = settings.choices.music_enabled == 1 ? music_clock_update(settings.show.music)
                                                                       : window_ticks() - clock.start_ticks;
    }
}

// Says what is wrong with a document, behind the window's end. Returns the exit status.
static int report_broken(app_window& window, const std::string& line)
{
    assert(!line.empty());
    window_shut_down(window);
    log_message(0, line.c_str());
    return 1;
}

// Without the production's tables: the viewer closed the dialog before there were any.
static void leave_dialog(player_show& show, app_window& window)
{
    assert(show.pack == nullptr);
    std::puts("Bye!");
    timeline_free(std::exchange(show.production_timeline, nullptr));
    window_shut_down(window);
}

static void leave_show(player_show& show, renderer& drawing, app_window& window)
{
    assert(show.pack == nullptr); // playing has closed it
    std::puts("Bye!");
    unload_document(show.production);
    release_renderer_gl(drawing);
    timeline_free(std::exchange(show.production_timeline, nullptr)); // still here when there was no production
    window_shut_down(window);
}

// What the viewer wants, and the pack. False: the process ends with `status`.
static bool ask_viewer(player_settings& settings, int& status)
{
    assert(settings.show.loading_timeline == nullptr && settings.show.production_timeline == nullptr);
    settings.show.loading_timeline = timeline_new();
    settings.show.production_timeline = timeline_new();
    status = 1;
    switch (run_dialog(settings.choices, settings.display)) {
    case dialog_started:
        settings.show.pack = discover_pack();
        return settings.show.pack != nullptr;
    case dialog_quit:
        leave_dialog(settings.show, settings.display.window);
        status = 0;
        return false;
    case dialog_failed:
        break;
    }
    return false;
}

int run_player(int argc, char** argv)
{
    static player_settings settings;
    read_command_line(settings.choices, argc, argv);
    prepare_standard_streams();
    catch_interrupts();
    fix_audio_environment();
    fix_video_environment();
    std::puts(banner_text);
    int status = 0;
    if (!ask_viewer(settings, status))
        return status;

    // What the display offers.
    build_cosine_table();
    prepare_display(settings.display, settings.choices);
    if (settings.choices.music_enabled == 1)
        sound_start(); // before there is a window: it may take its time
    if (open_display(settings.display, settings.choices) != display_open)
        return 0;

    // The show.
    renderer drawing;
    {
        owned_tree tree;
        std::string problem;
        if (!load_loading_screen(settings.show, settings.display, problem)
            || !load_production(settings.show, settings.display, settings.clock, drawing, tree, problem))
            return report_broken(settings.display.window, problem);
        warm_production(settings.show, settings.display, settings.clock, drawing);
        if (!start_music(settings.show.music, settings.choices, tree.get()))
            return 1;
        unload_document_memory(settings.show.loading); // its OpenGL objects may be seen in the show's first frames
    }
    start_clock(settings.clock, settings.choices, settings.show.music);
    play(settings, drawing);
    leave_show(settings.show, drawing, settings.display.window);
    return 0;
}
