#include "commands.h"
#include "problem_lines.h"
#include "show_input.h"

#include "authoring/asset/music_check.h"
#include "authoring/check/findings.h"
#include "content/file_bytes.h"
#include "content/new_file.h"
#include "content/owners.h"
#include "content/printable.h"

#include <filesystem>
#include <unistd.h>

static void print(FILE* stream, const std::string& text)
{
    std::fputs(text.c_str(), stream);
}

// ---- build -----------------------------------------------------------------------------

// What a player may read: everybody whom the process's mask lets.
constexpr new_file_rules everyday_file
    = {.permissions = 0666, .may_replace = true, .signals_wait = true, .safe_on_disk = true};

static bool same_place(const std::string& a, const std::string& b)
{
    std::error_code error;
    return std::filesystem::equivalent(a, b, error) && !error;
}

static std::string place_of_music(const std::string& music, const std::string& pack)
{
    return pack.substr(0, pack.rfind('/') + 1) + music;
}

// What lies where the music goes and is no music is somebody's.
static bool is_music_or_nothing(const std::string& path)
{
    std::error_code error;
    if (!std::filesystem::exists(path, error))
        return true;
    const char* problem = nullptr;
    const owned_file file(open_plain_file(path.c_str(), &problem));
    char begin[4] = {};
    return file != nullptr && std::fread(begin, 1, sizeof begin, file.get()) == sizeof begin
        && std::string_view(begin, sizeof begin) == "OggS";
}

// Puts the music, a file below the source's folder, beside the pack, where the player looks for it. False with a line.
// `copied` is its place when it was not there already.
static bool put_music(const show_source& source, const std::string& music, const std::string& pack, std::string& copied)
{
    const std::string from = source.folder + music;
    const std::string to = place_of_music(music, pack);
    if (music.empty() || same_place(from, to))
        return true;
    uint8_t* bytes = nullptr;
    uint32_t size = 0;
    const char* problem = nullptr;
    if (!read_whole_file(from.c_str(), UINT32_MAX - 1, &bytes, &size, &problem))
        return fail("cannot open ", from, std::string(": ") + problem) == exit_done;
    const owned_block<uint8_t> content(bytes);
    std::error_code error;
    const std::string folder = to.substr(0, to.rfind('/') + 1);
    if (!folder.empty())
        std::filesystem::create_directories(folder, error);
    problem = new_file_put(to, everyday_file, content.get(), size);
    copied = to;
    return problem == nullptr || fail("cannot write ", to, std::string(": ") + problem) == exit_done;
}

static exit_status write_show(const make_options& options, const show_source& source, const built_show& built,
    const std::string& pack, nlohmann::ordered_json& told)
{
    const std::string to = place_of_music(built.music, pack);
    if (!built.music.empty() && !same_place(source.folder + built.music, to) && !is_music_or_nothing(to))
        return fail("", to, " exists and is no music: it is left as it is");
    const std::vector<uint8_t> bytes = pack_bytes(built.entries);
    const char* problem = new_file_put(pack, everyday_file, bytes.data(), bytes.size());
    if (problem != nullptr)
        return fail("cannot write ", pack, std::string(": ") + problem);
    std::string music;
    if (!put_music(source, built.music, pack, music))
        return exit_failed;
    told["pack"] = pack;
    told["entries"] = built.entries.size();
    told["bytes"] = bytes.size();
    if (!music.empty())
        told["music"] = music;
    if (options.json)
        return exit_done;
    std::printf("Wrote %s: %zu entries, %zu bytes%s%s.\n", printable(pack).c_str(), built.entries.size(), bytes.size(),
        music.empty() ? "" : ", and the music beside it, ", printable(music).c_str());
    return exit_done;
}

exit_status run_build(const make_options& options)
{
    show_source source;
    if (!take_source(options.input, source))
        return exit_failed;
    const std::string pack = options.output.empty() ? source.folder + "demo.dpk" : options.output;
    if (!may_become_pack(pack, true))
        return exit_failed;
    warn_of_unfound_name(pack);
    built_show built;
    build(source, options.json, built);
    nlohmann::ordered_json told = problems_as_json(built.problems, source.folder);
    if (!options.json)
        print(stderr, problem_lines(built.problems, source.folder, wants_color(STDERR_FILENO)));
    const exit_status status
        = has_errors(built.problems) ? exit_failed : write_show(options, source, built, pack, told);
    if (options.json)
        print(stdout, json_line(told));
    return status;
}

// ---- check -----------------------------------------------------------------------------

// What is known of the music called `name` beside `folder`, which ends in "/" or is empty.
static music_facts facts_of_music(const std::string& folder, const std::string& name)
{
    music_facts facts = {.looked_for = true, .found = false, .is_vorbis = false, .seconds = 0};
    for (const std::string& path : {folder + name, folder + "music/" + name}) {
        std::error_code error;
        if (name.empty() || facts.found || !std::filesystem::is_regular_file(path, error))
            continue;
        facts.found = true;
        music_file_facts heard;
        std::string problem;
        facts.is_vorbis = check_music(path, heard, problem);
        facts.seconds = facts.is_vorbis ? music_seconds(heard) : 0;
    }
    return facts;
}

// False with a line: there is nothing to check.
static bool find_problems(const make_options& options, problem_list& problems, std::string& folder)
{
    show_input show;
    if (!open_show(options.input, options.json, show))
        return false;
    folder = show.source.folder;
    if (show.is_source) {
        problems = show.built.problems;
        return true;
    }
    const pack_file* pack = show.pack.get();
    const std::string beside = options.input.substr(0, options.input.rfind('/') + 1);
    problems = findings_as_problems(check_documents(pack, facts_of_music(beside, music_file_of(pack))));
    return true;
}

exit_status run_check(const make_options& options)
{
    problem_list problems;
    std::string folder;
    if (!find_problems(options, problems, folder))
        return exit_failed;
    if (options.json)
        print(stdout, json_line(problems_as_json(problems, folder)));
    else if (problems.empty())
        print(stdout, problem_counts(problems) + "\n");
    else
        print(stdout, problem_lines(problems, folder, wants_color(STDOUT_FILENO)));
    return has_errors(problems) ? exit_failed : exit_done;
}
