#include "shell/player.h"

#include "content/xml.h"
#include "music/music.h"
#include "render/compositor_gl.h"
#include "shell/dialog.h"
#include "shell/display_gl.h"
#include "shell/interrupt.h"
#include "shell/loading.h"
#include "shell/log.h"
#include "shell/settings.h"
#include "shell/startup.h"
#include "texgen/cosine_table.h"

#include <GL/glew.h>
#include <SDL/SDL.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

constexpr uint32_t loading_frame_interval_ms = 50;

static frame_view screen_view(const player_settings& settings)
{
    return {settings.screen_width, settings.screen_height, settings.aspect};
}

// For who writes programs of their own; the show itself stays silent.
static bool wants_shader_log()
{
    const char* wanted = std::getenv("BRIMLOW_SHADER_LOG");
    return wanted != nullptr && wanted[0] != '\0' && std::strcmp(wanted, "0") != 0;
}

static loading_options options_for(const player_settings& settings, const gl_caps& caps, bool production)
{
    return {caps, settings.texture_formats, settings.glsl_path == 1, production, wants_shader_log()};
}

// The loading screen's clock is the progress itself: its first second is shown from tick 0
// to tick 100 as the items of the production are made.
static void show_loading_frame(player_settings& settings)
{
    const int64_t percent = static_cast<int64_t>(settings.progress_done) * 100 / settings.progress_total;
    compose_frame(settings.loading, static_cast<uint32_t>(percent), screen_view(settings), settings.loading_caps,
        settings.glsl_path == 1);
    SDL_GL_SwapBuffers();
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    settings.progress_ticks = SDL_GetTicks();
}

// Says what is wrong with a document. The window is gone before the line appears.
static bool report_broken(const std::string& line)
{
    SDL_Quit();
    log_message(0, line.c_str());
    return false;
}

static bool load_loading_screen(player_settings& settings)
{
    owned_tree tree;
    std::string problem;
    timeline* tracks = std::exchange(settings.loading_timeline, nullptr);
    return load_document(settings.pack, "loading.xmlz", tracks, options_for(settings, settings.loading_caps, false),
               settings.loading, tree, problem)
        || report_broken(problem);
}

// Makes the production section by section, with a loading frame at most every 50 ms.
static bool load_production(player_settings& settings, owned_tree& tree)
{
    settings.progress_ticks = SDL_GetTicks(); // reading and inflating count towards the first interval
    std::string problem;
    tree.reset(load_document_tree(settings.pack, "demo.xmlz", problem));
    if (!problem.empty())
        return report_broken(problem);
    if (tree == nullptr)
        return true;
    document_create(settings.production, "demo.xmlz", settings.production_timeline);
    settings.production_timeline = nullptr;
    settings.progress_total = static_cast<int32_t>(document_item_count(tree.get()));
    document_loader loader;
    document_loader_begin(
        loader, settings.production, tree.get(), settings.pack, options_for(settings, settings.caps, true));
    for (;;) {
        switch (document_loader_step(loader)) {
        case read_record:
            settings.progress_done += loader.reader.section <= section_timeline ? 1 : 0;
            if (SDL_GetTicks() - settings.progress_ticks > loading_frame_interval_ms)
                show_loading_frame(settings);
            break;
        case read_section_end:
            break;
        case read_done:
            return true;
        case read_failed:
            return report_broken(loader.error);
        }
    }
}

// False: the audio device cannot be opened, which ends the process.
static bool start_music(player_settings& settings, const xml_node* tree)
{
    const xml_node* element = document_music_element(tree);
    const char* file = element != nullptr ? xml_get_attribute(element, "file") : nullptr;
    const music_result result = settings.music_enabled == 1 ? music_open(file) : music_none;
    if (result != music_playing)
        settings.music_enabled = -1;
    return result != music_no_device;
}

static void start_clock(player_settings& settings)
{
    music_clear_counters();
    bool given_up = false;
    if (settings.music_enabled == 1)
        settings.production_time_ms = music_start_clock(settings.music_enabled, given_up);
    if (given_up) {
        log_message(0, "The audio device asks for nothing, so the timer keeps the time.");
        settings.music_enabled = -1;
    }
    if (settings.music_enabled != 1) {
        settings.production_time_ms = 0;
        settings.start_ticks = SDL_GetTicks();
    }
}

static void print_benchmark(const player_settings& settings)
{
    const double seconds = static_cast<double>(settings.production_time_ms) * static_cast<double>(0.001f);
    std::printf("Benchmark result: %.2f fps\n", static_cast<double>(settings.frame_count) / seconds);
}

static void close_pack(player_settings& settings)
{
    std::fclose(settings.pack);
    settings.pack = nullptr;
}

// One pass a frame, as fast as drawing and swapping allow: the clock decides what is shown.
static void play(player_settings& settings)
{
    for (;;) {
        const uint32_t drawn = compose_frame(settings.production, settings.production_time_ms / 10,
            screen_view(settings), settings.caps, settings.glsl_path == 1);
        if (drawn == 0) {
            close_pack(settings);
            print_benchmark(settings);
            return;
        }
        ++settings.frame_count;

        const Uint8* keys = SDL_GetKeyState(nullptr);
        SDL_Event event;
        const bool closed = SDL_PollEvent(&event) != 0 && event.type == SDL_QUIT;
        if (closed || interrupted())
            std::exit(0);
        if (keys[SDLK_ESCAPE] != 0) {
            close_pack(settings);
            return;
        }
        SDL_GL_SwapBuffers();
        settings.production_time_ms
            = settings.music_enabled == 1 ? music_clock_update() : SDL_GetTicks() - settings.start_ticks;
    }
}

int run_player(int argc, char** argv)
{
    static player_settings settings;

    // What the viewer wants.
    prepare_standard_streams();
    catch_interrupts();
    fix_audio_environment();
    fix_video_environment();
    std::puts(banner_text);
    settings_defaults(settings);
    settings.loading_timeline = timeline_new();
    settings.production_timeline = timeline_new();
    switch (run_dialog(settings)) {
    case dialog_started:
        break;
    case dialog_quit:
        return 0;
    case dialog_failed:
        return 1;
    }
    if (!discover_pack(settings))
        return 1;

    // What the display offers.
    build_cosine_table();
    if (open_display(settings, argc, argv) != display_open)
        return 0;

    // The show.
    {
        owned_tree tree;
        if (!load_loading_screen(settings) || !load_production(settings, tree))
            return 1;
        if (!start_music(settings, tree.get()))
            return 1;
        unload_document(settings.loading);
    }
    start_clock(settings);
    play(settings);

    std::puts("Bye!");
    unload_document(settings.production);
    timeline_free(settings.production_timeline); // still here when there was no production
    SDL_Quit();
    return 0;
}
