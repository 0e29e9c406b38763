#include "tools/preview/builder_builds.h"

#include "authoring/asset/music_check.h"
#include "authoring/check/findings.h"
#include "authoring/lua/source.h"
#include "content/file_bytes.h"
#include "content/owners.h"
#include "content/pack.h"
#include "content/xml.h"
#include "model/document.h"

#include <algorithm>
#include <chrono>
#include <filesystem>

static double seconds_now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// ---- a source -----------------------------------------------------------------------------

static void keep_line(void* user, const char* line)
{
    static_cast<std::vector<std::string>*>(user)->push_back(line);
}

// What the record that an attribute names is called; empty: it names none.
static std::string linked_name(const element& node, const char* attribute)
{
    for (const element_attribute& each : node.attributes)
        if (each.name == attribute && each.value.link != nullptr)
            return each.value.link->name;
    return "";
}

static std::string name_of_part(document_section section, const element& part)
{
    if (section == section_timeline)
        return linked_name(part, "id");
    if (section != section_scenes)
        return "";
    for (const element_attribute& each : part.attributes)
        if (each.name == "text" && !each.value.text.empty())
            return "\"" + each.value.text + "\"";
    return linked_name(part, "object");
}

static void add_record_marks(
    const authored_record& record, document_section section, uint32_t number, std::vector<source_mark>& marks)
{
    marks.push_back({section, number, 0, record.place, record.name});
    uint32_t part = 0;
    for (const element& child : record.content.children) {
        ++part;
        if (!child.place.file.empty())
            marks.push_back({section, number, part, child.place, name_of_part(section, child)});
    }
}

static std::vector<source_mark> marks_of(const authored_document& document)
{
    std::vector<source_mark> marks;
    for (uint32_t section = 0; section < no_more_sections; ++section) {
        uint32_t number = 0;
        for (const authored_record* record : document.sections[section])
            add_record_marks(*record, static_cast<document_section>(section), ++number, marks);
    }
    return marks;
}

static std::vector<try_override> overrides_of(const std::vector<tried_value>& tries)
{
    std::vector<try_override> overrides;
    for (const tried_value& tried : tries)
        overrides.push_back({tried.file, tried.site, tried.written, tried.value});
    return overrides;
}

static std::vector<tried_number> tries_of(const std::vector<tried_call>& calls)
{
    std::vector<tried_number> tries;
    for (const tried_call& call : calls)
        tries.push_back({call.file, call.line, call.site, call.label, call.written, call.value, call.least, call.most,
            call.can_write, call.step});
    return tries;
}

static show_build build_of_source(const build_wish& wish, build_memory* kept)
{
    show_build build;
    built_show built;
    const std::vector<try_override> overrides = overrides_of(wish.tries);
    build_request request = {wish.folder, wish.file, keep_line, &build.printed};
    request.tries = overrides;
    request.kept = kept;
    request.compression = 0;
    build_source(request, built);
    build.can_play = !has_errors(built.problems);
    build.from_source = true;
    build.problems = std::move(built.problems);
    build.files = std::move(built.files_taken);
    build.files.insert(build.files.end(), built.files_wanted.begin(), built.files_wanted.end());
    build.tries = tries_of(built.tried);
    build.title = built.title;
    build.bpm = built.bpm;
    build.beats_per_bar = built.beats_per_bar;
    if (!built.music.empty())
        build.music = wish.folder + "/" + built.music;
    if (build.can_play && built.documents[0] != nullptr)
        build.marks = marks_of(*built.documents[0]);
    if (build.can_play)
        build.pack = pack_bytes(built.entries);
    return build;
}

// ---- a pack ---------------------------------------------------------------------------------

static show_build unreadable_pack(const std::string& file, const std::string& reason)
{
    show_build build;
    build.problems.push_back({problem_error, file, 0, "", reason});
    return build;
}

// Beside the pack or in the folder "music" there, as the player looks for it. Empty: nowhere.
static std::string path_of_music(const std::string& folder, const std::string& file)
{
    if (file.empty())
        return "";
    for (const char* below : {"", "music/"}) {
        const std::string path = file[0] == '/' ? file : folder + "/" + below + file;
        if (const owned_file found(open_plain_file(path.c_str())); found != nullptr)
            return path;
    }
    return "";
}

static std::string title_of_pack(const pack_file* pack)
{
    std::string ignored;
    const owned_tree tree(load_document_tree(pack, "demo.xmlz", ignored));
    const xml_node* root = tree != nullptr ? tree->first_child : nullptr;
    const char* title = root != nullptr ? xml_get_attribute(root, "name") : nullptr;
    return title != nullptr ? title : "";
}

static void check_pack_bytes(
    const std::string& folder, const std::string& file, show_build& build, known_documents* known)
{
    const owned_pack pack(pack_open_bytes(build.pack));
    build.title = title_of_pack(pack.get());
    build.music = path_of_music(folder, music_file_of(pack.get()));
    music_facts music = {true, !build.music.empty(), false, 0};
    music_file_facts facts = {};
    std::string ignored;
    if (music.found && check_music(build.music, facts, ignored)) {
        music.is_vorbis = true;
        music.seconds = music_seconds(facts);
    }
    build.problems = findings_as_problems(check_documents(pack.get(), music, known));
    for (show_problem& problem : build.problems)
        if (problem.file.empty())
            problem.file = file;
}

show_build build_of_pack(const std::string& path, build_memory* kept)
{
    constexpr uint32_t largest_pack = 1u << 31;
    const std::filesystem::path whole = path;
    const std::string file = whole.filename().string();
    const std::string folder = whole.has_parent_path() ? whole.parent_path().string() : ".";
    uint8_t* bytes = nullptr;
    uint32_t size = 0;
    const char* reason = nullptr;
    show_build build;
    if (!read_whole_file(path.c_str(), largest_pack, &bytes, &size, &reason)) {
        build = unreadable_pack(file, std::string("cannot be opened: ") + reason + ".");
    } else if (const owned_block<uint8_t> block(bytes); size == 0) {
        build = unreadable_pack(file, "is empty: a pack is what \"brimlow-make build\" writes.");
    } else {
        build.pack.assign(bytes, bytes + size);
        check_pack_bytes(folder, file, build, kept != nullptr ? &kept->documents : nullptr);
    }
    build.can_play = std::none_of(build.problems.begin(), build.problems.end(),
        [](const show_problem& problem) { return problem.severity == problem_error; });
    if (!build.can_play)
        build.pack.clear();
    build.folder = folder;
    build.file = file;
    build.files = {file};
    return build;
}

// ---- either -----------------------------------------------------------------------------------

show_build build_of_wish(const build_wish& wish, build_memory* kept)
{
    const double begun = seconds_now();
    show_build build
        = wish.from_source ? build_of_source(wish, kept) : build_of_pack(wish.folder + "/" + wish.file, kept);
    build.folder = wish.folder;
    build.file = wish.file;
    build.seconds = seconds_now() - begun;
    return build;
}
