#include "played.h"

#include "document_text.h"
#include "recording_gl.h"
#include "render/compositor_gl.h"
#include "render/draw_gl.h"
#include "shell/player.h"

#include <doctest/doctest.h>

#include <GL/glew.h>

#include <sys/wait.h>
#include <unistd.h>
#include <zlib.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>

// ---- the frame ------------------------------------------------------------------

// Stands in for the renderer: which frame was asked for, and with what.
extern "C" uint32_t __wrap__Z13compose_frameR8documentjRK10frame_viewRK7gl_capsbR8rendererP17frame_cost_record(
    document& d, uint32_t time, const frame_view& view, const gl_caps& caps, bool glsl, renderer& r, frame_cost_record*)
{
    const bool loading = d.name != nullptr && std::string(d.name) == "loading.xmlz";
    char line[200];
    std::snprintf(line, sizeof line,
        "compose_frame(%s at %u, %u x %u, %.4f, vbo %u pbo %u npot %u, %u units, nv %u ati %u, %s)",
        loading ? "loading" : "production", static_cast<unsigned>(time), static_cast<unsigned>(view.width),
        static_cast<unsigned>(view.height), static_cast<double>(view.aspect), caps.vbo, caps.pbo, caps.npot,
        caps.texture_units, caps.nv_combine4, caps.ati_combine3, glsl ? "glsl" : "fixed");
    const bool is_over = !loading && time > current_script().last_tick;
    record_line(std::string(line) + (is_over ? " = 0" : ""));
    if (!loading && current_script().tells_standing && r.standing.material.applied)
        record_line("* it is drawn with what the loading screen left");
    r.standing.material.applied |= loading;
    pass_time(is_over ? 0 : current_script().ms_per_frame);
    return is_over ? 0 : 1;
}

// ---- what is done on the way ------------------------------------------------------

extern "C" int __real_inflate(z_stream* stream, int flush);

extern "C" int __wrap_inflate(z_stream* stream, int flush)
{
    pass_time(current_script().ms_per_document);
    return __real_inflate(stream, flush);
}

extern "C" void __real__Z12draw_mesh_glRK5frameRK12draw_commandRK7gl_capsbR8gl_state(
    const frame& f, const draw_command& draw, const gl_caps& caps, bool glsl, gl_state& gl);

extern "C" void __wrap__Z12draw_mesh_glRK5frameRK12draw_commandRK7gl_capsbR8gl_state(
    const frame& f, const draw_command& draw, const gl_caps& caps, bool glsl, gl_state& gl)
{
    static uint32_t number = 0;
    if (++number == current_script().interrupting_mesh)
        std::raise(SIGTERM);
    pass_time(current_script().ms_per_mesh);
    __real__Z12draw_mesh_glRK5frameRK12draw_commandRK7gl_capsbR8gl_state(f, draw, caps, glsl, gl);
}

extern "C" void __real__Z13document_freeR8document(document& d);
extern "C" void __real__Z13timeline_freeP8timeline(timeline* t);
extern "C" void __real__Z30document_free_generated_imagesR8document(document& d);

extern "C" void __wrap__Z13document_freeR8document(document& d)
{
    record_line(std::string("document_free(") + (d.name != nullptr ? d.name : "nothing") + ")");
    __real__Z13document_freeR8document(d);
}

extern "C" void __wrap__Z13timeline_freeP8timeline(timeline* t)
{
    record_line(std::string("timeline_free(") + (t != nullptr ? "" : "nothing") + ")");
    __real__Z13timeline_freeP8timeline(t);
}

extern "C" void __wrap__Z30document_free_generated_imagesR8document(document& d)
{
    if (d.generated_image_count != 0)
        record_line("document_free_generated_images()");
    __real__Z30document_free_generated_imagesR8document(d);
}

// ---- the show -------------------------------------------------------------------

// Lines of so many widths, one object each.
static void add_ways(document_text& text, uint32_t ways)
{
    std::string objects;
    for (uint32_t way = 1; way <= ways; ++way) {
        const std::string width = std::to_string(way);
        text.records[section_materials]
            += "<material><wireframe value=\"1\"/><linewidth type=\"static\" value=\"" + width + "\"/></material>";
        objects += scene_object_text(0, 1, static_cast<int>(way), 0, "");
    }
    text.records[section_meshes] = "<mesh filename=\"cube.mesh\"/>";
    text.records[section_scenes] = "<scene name=\"lines\">" + objects + "</scene>";
}

static document_text production_text(const scripted_show& show)
{
    document_text text = show.is_complete ? complete_document() : document_text();
    if (show.is_complete)
        return text;
    text.records[section_functions] = repeated(function_text(), show.functions);
    text.records[section_scenes] = "<scene name=\"empty\"/>";
    if (show.ways > 0)
        add_ways(text, show.ways);
    text.records[section_timeline] = "<track>" + clip_text(1, 0, 100) + "</track>";
    text.records[section_music] = repeated("<note/>", show.notes);
    if (!show.music.empty())
        text.music_attributes = " file=\"" + show.music + "\"";
    return text;
}

static std::string bytes_of(const scripted_show& show, const std::string& name, document_text text)
{
    if (show.damaged == name)
        return std::string("\5\0\0\0nothing that inflates", 25);
    if (show.empty_record == name)
        text.records[section_functions] = "<function/>";
    return in_envelope(to_text(text));
}

static std::string read_to_end(FILE* file)
{
    std::string bytes;
    for (int byte = std::fgetc(file); byte != EOF; byte = std::fgetc(file))
        bytes += static_cast<char>(byte);
    std::fclose(file);
    return bytes;
}

static void write_file(const char* name, const std::string& bytes)
{
    FILE* file = std::fopen(name, "wb");
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::fclose(file);
}

static void write_show(const scripted_show& show)
{
    std::vector<pack_content> entries = complete_pack();
    if (show.has_loading)
        entries.push_back(
            {"loading.xmlz", bytes_of(show, "loading.xmlz", production_text({.is_complete = show.is_complete}))});
    if (show.has_production)
        entries.push_back({"demo.xmlz", bytes_of(show, "demo.xmlz", production_text(show))});
    write_file("demo.dpk", packed(entries));
    FILE* tone = std::fopen(TONE_FILE, "rb");
    std::string music = read_to_end(tone);
    write_file("tone.ogg", music);
    music[music.find("\3vorbis") + 8] = '\x7F'; // of the length of the encoder's name
    write_file("odd.ogg", music);
}

// ---- the process ----------------------------------------------------------------

static FILE* report; // where the process leaves its lines

// What the player prints, in whole or in parts of lines.
static ssize_t print_into(void* printed, const char* text, size_t size)
{
    std::string& line = *static_cast<std::string*>(printed);
    for (const char byte : std::string_view(text, size)) {
        if (byte == '\n')
            record_line(std::exchange(line, line.substr(0, 2)));
        else
            line += byte;
    }
    return static_cast<ssize_t>(size);
}

static void leave_report()
{
    std::fflush(stdout);
    std::fputs(take_gl_calls().c_str(), report);
    std::fclose(report);
}

static void offer_everything()
{
    gl_answers& answers = begin_gl_recording();
    answers.integers[GL_MAX_TEXTURE_UNITS] = 8;
    __GLEW_ARB_vertex_buffer_object = GL_TRUE;
    __GLEW_ARB_pixel_buffer_object = GL_TRUE;
    __GLEW_ARB_texture_non_power_of_two = GL_TRUE;
    __GLEW_ARB_texture_compression = GL_TRUE;
    __GLEW_NV_texture_env_combine4 = GL_TRUE;
}

[[noreturn]] static void run_in_process(const sdl_script& script, std::vector<std::string> words, void (*prepare)())
{
    alarm(60);
    static std::string printed = "| ";
    static std::string complained = "! ";
    stdout = fopencookie(&printed, "w", {nullptr, print_into, nullptr, nullptr});
    stderr = fopencookie(&complained, "w", {nullptr, print_into, nullptr, nullptr});
    std::setvbuf(stderr, nullptr, _IONBF, 0);
    offer_everything();
    begin_script(script);
    if (prepare != nullptr)
        prepare();
    std::atexit(leave_report);
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    const int status = run_player(static_cast<int>(words.size()), arguments.data());
    record_line("run_player() = " + std::to_string(status));
    std::exit(status);
}

played_run play(
    const sdl_script& script, const scripted_show& show, const std::vector<std::string>& arguments, void (*prepare)())
{
    std::vector<std::string> words = {"brimlow"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    char folder[] = "/tmp/brimlow_calls_XXXXXX";
    REQUIRE(mkdtemp(folder) != nullptr);
    report = std::tmpfile();
    REQUIRE(report != nullptr);
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        std::filesystem::current_path(folder);
        write_show(show);
        run_in_process(script, words, prepare);
    }
    played_run run = {"", 0};
    waitpid(child, &run.status, 0);
    run.status = WIFSIGNALED(run.status) ? 128 + WTERMSIG(run.status) : WEXITSTATUS(run.status);
    std::rewind(report);
    run.calls = read_to_end(report);
    if (const size_t at = run.calls.find("-nan"); at != std::string::npos)
        run.calls.erase(at, 1); // which sign it has is the machine's business
    std::filesystem::remove_all(folder);
    return run;
}

// ---- looking at lines -----------------------------------------------------------

static std::vector<std::string> split(const std::string& calls)
{
    std::vector<std::string> lines;
    for (size_t begin = 1; begin < calls.size();) {
        const size_t end = calls.find('\n', begin);
        lines.push_back(calls.substr(begin, end - begin));
        begin = end == std::string::npos ? calls.size() : end + 1;
    }
    return lines;
}

std::string lines_of(const std::string& calls, std::initializer_list<std::string_view> beginnings)
{
    std::string text = "\n";
    for (const std::string& line : split(calls))
        for (const std::string_view beginning : beginnings)
            if (line.starts_with(beginning)) {
                text += line + "\n";
                break;
            }
    return text;
}

std::string part_of(const std::string& calls, const std::string& from, const std::string& to)
{
    std::string text = "\n";
    bool inside = false;
    for (const std::string& line : split(calls)) {
        const bool begins = !inside && text.size() == 1 && line == from;
        inside = inside || begins;
        if (inside)
            text += line + "\n";
        if (!begins && line == to)
            inside = false;
    }
    return text;
}

size_t count_of(const std::string& calls, const std::string& line)
{
    size_t count = 0;
    for (const std::string& each : split(calls))
        count += each == line;
    return count;
}
