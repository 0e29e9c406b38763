// What every frame of a show costs, played once from its start as the player plays it. bench/hitches.py runs it and
// makes a table of it.
//
//     bench_hitches_gl PACK fixed|shaders warmed|cold WIDTH HEIGHT FPS PLAYS
//
// Lines: "layer TRACK BEGIN END" in ticks for every layer of the show that can be seen, "load MS" and "warm MS", and
// for every frame "frame PLAY TICK MS". Milliseconds are those of all threads of the process: they stay what they are
// when others want the processors, too. Each frame is finished before the next one begins.
#include "render/compositor_gl.h"
#include "render/warming_gl.h"
#include "session_gl.h"
#include "shell/loading.h"
#include "shell/settings.h"
#include "tools/frames/production.h"

#include <GL/glew.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

static double process_ms()
{
    timespec spent = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &spent);
    return static_cast<double>(spent.tv_sec) * 1e3 + static_cast<double>(spent.tv_nsec) * 1e-6;
}

static bool open_show(const char* pack, const render_options& options, gl_session& session, player_settings& settings,
    std::string& problem)
{
    settings.choices = choices_for(options);
    set_screen_size(settings.display, options.width, options.height, settings.choices.aspect_index);
    production_files files;
    std::string warning;
    if (!open_pack(pack, settings, files, problem) || !session_open(session, options, settings.display, problem))
        return false;
    double begin = process_ms();
    if (!load_loading_screen(settings, problem) || !load_show(settings, files, problem, warning))
        return false;
    glFinish();
    std::printf("load %.3f\n", process_ms() - begin);
    unload_document_memory(settings.show.loading);
    return true;
}

static void tell_layers(const timeline& t)
{
    for (uint32_t track = 0; track < track_count; ++track)
        for (uint32_t layer = 0; layer < t.layer_count[track]; ++layer)
            if (const uint32_t end = t.layer_end[track][layer]; end != 0)
                std::printf("layer %u %u %u\n", track, end - t.layers[track][layer].length, end);
}

static void warm(player_settings& settings, renderer& drawing)
{
    const player_display& display = settings.display;
    const double begin = process_ms();
    show_warming w = {&settings.show.production, screen_view(display), display.caps, display.glsl_path == 1};
    warm_some_gl(w, drawing, nullptr, 0);
    std::printf("warm %.3f\n", process_ms() - begin);
}

static void play(player_settings& settings, renderer& drawing, uint32_t play, uint32_t fps)
{
    const player_display& display = settings.display;
    for (uint32_t frame = 0;; ++frame) {
        const uint32_t tick = frame * 100 / fps;
        const double begin = process_ms();
        const uint32_t drawn = compose_frame(
            settings.show.production, tick, screen_view(display), display.caps, display.glsl_path == 1, drawing);
        glFinish();
        if (drawn == 0)
            return;
        std::printf("frame %u %u %.3f\n", play, tick, process_ms() - begin);
    }
}

int main(int argc, char** argv)
{
    if (argc != 8) {
        std::fprintf(stderr, "Usage: %s PACK fixed|shaders warmed|cold WIDTH HEIGHT FPS PLAYS\n", argv[0]);
        return 2;
    }
    render_options options;
    options.glsl = std::strcmp(argv[2], "shaders") == 0;
    options.width = static_cast<uint32_t>(std::atoi(argv[4]));
    options.height = static_cast<uint32_t>(std::atoi(argv[5]));
    static player_settings settings;
    gl_session session;
    std::string problem;
    if (!open_show(argv[1], options, session, settings, problem)) {
        std::fprintf(stderr, "Error: %s\n", problem.c_str());
        return 1;
    }
    tell_layers(*settings.show.production.timeline);
    renderer drawing;
    if (std::strcmp(argv[3], "warmed") == 0)
        warm(settings, drawing);
    forget_objects(drawing.gl);
    for (uint32_t number = 0; number < static_cast<uint32_t>(std::atoi(argv[7])); ++number)
        play(settings, drawing, number, static_cast<uint32_t>(std::atoi(argv[6])));
    unload_document(settings.show.production);
    release_renderer_gl(drawing);
    session_close(session);
    return 0;
}
