// Loading, its frames, and how it ends when a document is broken.
#include "played.h"

#include "document_text.h"

#include <doctest/doctest.h>

#include <csignal>
#include <initializer_list>
#include <string>

// What can be clicked in the dialog.
constexpr scripted_click buffers_box = {289, 113};
constexpr scripted_click fixed_path_row = {320, 328};

static sdl_script started(uint32_t ms_per_reading)
{
    sdl_script script;
    script.clicks = {start_button};
    script.ms_per_reading = ms_per_reading;
    script.last_tick = -1;
    return script;
}

static std::string frame(uint32_t percent)
{
    return "compose_frame(loading at " + std::to_string(percent)
        + ", 800 x 600, 1.3333, vbo 0 pbo 0 npot 0, 4 units, nv 1 ati 0, glsl)\n"
          "SDL_GL_SwapBuffers()\n"
          "glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)\n";
}

static std::string readings(std::initializer_list<uint32_t> times)
{
    std::string text;
    for (const uint32_t time : times)
        text += "SDL_GetTicks() = " + std::to_string(time) + "\n";
    return text;
}

static const std::string over
    = "compose_frame(production at 0, 800 x 600, 1.3333, vbo 1 pbo 1 npot 1, 4 units, nv 1 ati 0, "
      "glsl) = 0\n";

// Behind the display's last call.
static std::string loading_of(const played_run& run)
{
    return part_of(run.calls, "SDL_ShowCursor(0)", "* the pack is closed");
}

// The loading screen goes when everything is there.
static const std::string loaded = "document_free(loading.xmlz)\ntimeline_free()\n";

TEST_CASE("a loading frame comes when more than 50 ms have passed since the last one was shown and cleared")
{
    sdl_script script = started(25); // 1030 at the start; each look at the clock takes 25 ms
    script.ms_per_frame = 3;
    script.ms_per_swap = 7;
    const played_run run = play(script, {.functions = 4, .has_loading = true}); // 6 items
    CHECK(loading_of(run)
        == "\nSDL_ShowCursor(0)\n" + readings({1044, 1069, 1094, 1119}) + frame(50) + readings({1154, 1179, 1204, 1229})
            + frame(100) + readings({1264}) + loaded + readings({1289}) + over + "* the pack is closed\n");
}

TEST_CASE("50 ms are no more than 50")
{
    const auto frames
        = [](uint32_t ms) { return lines_of(play(started(ms), {.functions = 1}).calls, {"compose_frame(loading"}); };
    CHECK(frames(50)
        == "\ncompose_frame(loading at 66, 800 x 600, 1.3333, vbo 0 pbo 0 npot 0, 4 units, nv 1 ati 0, glsl)\n");
    CHECK(frames(16) == "\n");
    CHECK(frames(17)
        == "\ncompose_frame(loading at 100, 800 x 600, 1.3333, vbo 0 pbo 0 npot 0, 4 units, nv 1 ati 0, glsl)\n");
}

TEST_CASE("reading and inflating the production count towards the first interval, the loading screen's do not")
{
    sdl_script script = started(1);
    script.ms_per_document = 48;                                                // 1078 behind the loading screen's
    const played_run run = play(script, {.functions = 2, .has_loading = true}); // 4 items
    CHECK(loading_of(run)
        == "\nSDL_ShowCursor(0)\n" + readings({1078, 1127, 1128, 1129}) + frame(75) + readings({1130, 1131}) + loaded
            + readings({1132}) + over + "* the pack is closed\n");
}

TEST_CASE("the loading screen's time is the percentage, cut off")
{
    const played_run run = play(started(51), {.functions = 1, .has_loading = true});
    CHECK(loading_of(run)
        == "\nSDL_ShowCursor(0)\n" + readings({1030, 1081}) + frame(33) + readings({1132, 1183}) + frame(66)
            + readings({1234, 1285}) + frame(100) + readings({1336}) + loaded + readings({1387}) + over
            + "* the pack is closed\n");
}

TEST_CASE("children of the music are items of the production that are never done")
{
    const played_run run = play(started(51), {.notes = 2}); // a scene, a track, two notes
    CHECK(loading_of(run)
        == "\nSDL_ShowCursor(0)\n" + readings({1030, 1081}) + frame(25) + readings({1132, 1183}) + frame(50)
            + readings({1234, 1285}) + frame(50) + readings({1336, 1387}) + frame(50) + readings({1438}) + loaded
            + readings({1489}) + over + "* the pack is closed\n");
}

TEST_CASE("the production is made with buffers and first pictures, the loading screen without, programs as chosen")
{
    const auto made = [](const sdl_script& script) {
        const played_run run = play(script, {.has_loading = true, .is_complete = true});
        return lines_of(run.calls,
            {"glTexImage2D(GL_TEXTURE_2D, 0", "glTexSubImage2D", "glGenBuffers", "glMapBuffer", "glCreateProgram",
                "document_free"});
    };
    // Texture formats 8 (no bump maps here), 1 and 2: the outputs of the graph, their pixels, the 2-D effect, the
    // image.
    const std::string pictures = R"(glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 256, 256, 0, GL_RGB, GL_UNSIGNED_BYTE, 0)
glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 256, 256, 0, GL_RGB, GL_UNSIGNED_BYTE, 196608 bytes #52239dc5)
document_free_generated_images()
)";
    const std::string effect
        = "glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 64, 64, 0, GL_RGB, GL_UNSIGNED_BYTE, 12288 bytes #52965dc5)\n";
    const std::string image
        = "glTexImage2D(GL_TEXTURE_2D, 0, GL_LUMINANCE, 4, 8, 0, GL_RGB, GL_UNSIGNED_BYTE, 96 bytes #21a46425)\n";
    const std::string first_picture
        = "glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 64, 64, GL_RGB, GL_UNSIGNED_BYTE, 12288 bytes #6ae8c67c)\n";
    const std::string freed = "document_free(loading.xmlz)\ndocument_free(demo.xmlz)\n";
    CHECK(made(started(0))
        == "\n" + pictures + effect + image + "glCreateProgram() = 301\n" + pictures
            + "glGenBuffers(1) = 101\nglGenBuffers(1) = 102\nglGenBuffers(1) = 103\nglGenBuffers(1) = 104\n" + effect
            + "glGenBuffers(1) = 105\nglMapBuffer(GL_PIXEL_UNPACK_BUFFER, GL_WRITE_ONLY) = memory\n" + first_picture
            + image + "glCreateProgram() = 302\n" + freed);

    sdl_script plain = started(0);
    plain.clicks = {buffers_box, fixed_path_row, start_button};
    CHECK(made(plain)
        == "\n" + pictures + effect + image + pictures + effect
            + "glGenBuffers(1) = 101\nglMapBuffer(GL_PIXEL_UNPACK_BUFFER, GL_WRITE_ONLY) = memory\n" + first_picture
            + image + freed);
}

TEST_CASE("everything that the show draws is drawn once behind its last record, before the loading screen goes")
{
    const auto warmed = [](const sdl_script& script) {
        const played_run run = play(script, {.has_loading = true, .is_complete = true});
        return lines_of(run.calls,
            {"glCreateProgram", "glScissor", "glDraw", "glFinish", "document_free(loading", "compose_frame("});
    };
    const std::string unseen = "glScissor(0, 0, 0, 0)\n";
    const std::string seen = "glScissor(0, 0, 800, 600)\nglFinish()\ndocument_free(loading.xmlz)\n";
    CHECK(warmed(started(0))
        == "\nglCreateProgram() = 301\nglCreateProgram() = 302\n" + unseen
            + "glDrawElements(GL_LINES, 2, GL_UNSIGNED_SHORT, [0 0])\n" + seen + over);
    sdl_script fixed = started(0);
    fixed.clicks = {fixed_path_row, start_button};
    const std::string calls = warmed(fixed);
    CHECK(calls.starts_with(
        "\n" + unseen + "glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 0 0])\n" + seen + "compose_frame("));
}

// ---- a driver that compiles -----------------------------------------------------------

// The lines that tell of drawing and of frames, behind the last record.
static std::string warming_of(const sdl_script& script, uint32_t ways)
{
    sdl_script fixed = script;
    fixed.clicks = {fixed_path_row, start_button};
    const auto take_signals = [] { std::signal(SIGTERM, SIG_DFL); }; // the test program has its own handler
    const played_run run = play(fixed, {.has_loading = true, .ways = ways}, {}, take_signals);
    return lines_of(run.calls,
        {"glDrawElements", "compose_frame(", "SDL_GL_Swap", "glClear(", "glFinish", "* it is drawn",
            "document_free(l"});
}

static std::string with_path(const std::string& text)
{
    return with(text, ", glsl)", ", fixed)");
}

constexpr const char* way = "glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 0 0])\n";
constexpr const char* window_opened = "\nglClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)\nSDL_GL_SwapBuffers()\n"
                                      "SDL_GL_SwapBuffers()\n";

TEST_CASE("a driver that has everything is not kept waiting by loading frames: half a second is a moment")
{
    sdl_script script = started(0);
    script.ms_per_mesh = 30; // two make a piece
    CHECK(warming_of(script, 16)
        == window_opened + repeated(std::string(way) + way + "glFinish()\n", 8) + "document_free(loading.xmlz)\n"
            + with_path(over));
}

TEST_CASE("while a driver compiles for longer, the loading screen goes on behind every 50 ms, with all items done")
{
    sdl_script script = started(0);
    script.ms_per_mesh = 200;
    const std::string piece = std::string(way) + "glFinish()\n";
    // It leaves nothing: the second clear is with the colour of a new context.
    const std::string shown = with_path(frame(100)) + "glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)\n";
    CHECK(warming_of(script, 5)
        == window_opened + piece + piece + piece + shown + piece + shown + piece + "document_free(loading.xmlz)\n"
            + with_path(over));
}

TEST_CASE("a loading frame that came only because a driver compiled leaves nothing behind, one between records does")
{
    sdl_script script = started(0);
    script.tells_standing = true;
    script.ms_per_mesh = 300;
    const std::string mark = "* it is drawn with what the loading screen left\n";
    CHECK(warming_of(script, 4).find(with_path(frame(100))) != std::string::npos);
    CHECK(warming_of(script, 4).find(mark) == std::string::npos);
    script.ms_per_reading = 51;
    CHECK(warming_of(script, 1).find(mark) != std::string::npos);
    CHECK(warming_of(script, 4).find(mark) != std::string::npos);
}

TEST_CASE("no show is warmed for longer than ten seconds, nor on when the process is asked to end")
{
    sdl_script script = started(0);
    script.ms_per_mesh = 1000;
    const auto ways_drawn = [&](uint32_t ways) {
        const std::string calls = warming_of(script, ways);
        CHECK(calls.ends_with("document_free(loading.xmlz)\n" + with_path(over)));
        size_t count = 0;
        for (size_t at = calls.find(way); at != std::string::npos; at = calls.find(way, at + 1))
            ++count;
        return count;
    };
    CHECK(ways_drawn(10) == 10);
    CHECK(ways_drawn(20) == 11); // the one that passes ten seconds is the last
    script.interrupting_mesh = 3;
    CHECK(ways_drawn(10) == 3);
}

TEST_CASE("the loading screen's OpenGL objects stay, as the show may be drawn with them; the show's go at its end")
{
    const played_run run = play(started(0), {.has_loading = true, .is_complete = true});
    // The loading screen has textures 1 to 4, shaders 201 and 202, program 301.
    CHECK(lines_of(run.calls, {"glDelete", "document_free(", "compose_frame(production", "| Bye", "SDL_Quit"})
        == "\ndocument_free(loading.xmlz)\n" + over + R"(| Bye!
glDeleteTextures(1, [5])
glDeleteBuffers(1, [101])
glDeleteBuffers(1, [102])
glDeleteBuffers(1, [103])
glDeleteBuffers(1, [104])
glDeleteTextures(1, [6])
glDeleteBuffers(1, [105])
glDeleteTextures(1, [7])
glDeleteTextures(1, [8])
glDeleteProgram(302)
glDeleteShader(203)
glDeleteShader(204)
document_free(demo.xmlz)
SDL_Quit()
)");
}

TEST_CASE("a pack without a production has an empty show, which is over at once")
{
    const played_run run = play(started(0), {.has_production = false});
    CHECK(part_of(run.calls, "SDL_ShowCursor(0)", "")
        == "\nSDL_ShowCursor(0)\n" + readings({1030}) + loaded + readings({1030}) + over
            + "* the pack is closed\n| Benchmark result: nan fps\n| "
              "Bye!\ndocument_free(nothing)\ntimeline_free(nothing)\ntimeline_free()\nSDL_Quit()\nrun_player() = 0\n");
}

TEST_CASE("a broken document ends it with one line behind SDL's end")
{
    const auto end_of = [](const scripted_show& show) {
        const played_run run = play(started(1), show);
        CHECK(run.status == 1);
        return part_of(run.calls, "SDL_ShowCursor(0)", "");
    };
    CHECK(end_of({.has_loading = true, .damaged = "loading.xmlz"}) == R"(
SDL_ShowCursor(0)
SDL_Quit()
| Error: loading.xmlz: the document is not compressed (no envelope).
run_player() = 1
)");
    CHECK(end_of({.has_loading = true, .empty_record = "loading.xmlz"}) == R"(
SDL_ShowCursor(0)
SDL_Quit()
| Error: loading.xmlz: section 4 (functions), record 1: attribute "type" is missing.
run_player() = 1
)");
    CHECK(end_of({.damaged = "demo.xmlz"}) == R"(
SDL_ShowCursor(0)
SDL_GetTicks() = 1030
SDL_Quit()
| Error: demo.xmlz: the document is not compressed (no envelope).
run_player() = 1
)");
    CHECK(end_of({.empty_record = "demo.xmlz"}) == R"(
SDL_ShowCursor(0)
SDL_GetTicks() = 1030
SDL_Quit()
| Error: demo.xmlz: section 4 (functions), record 1: attribute "type" is missing.
run_player() = 1
)");
}
