#include "authoring/lua/source.h"

#include "authoring/check/findings.h"
#include "authoring/lua/sandbox.h"
#include "authoring/lua/source_wording.h"
#include "authoring/lua/word_state.h"
#include "authoring/lua/words.h"
#include "content/pack.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <set>
#include <tuple>
#include <unordered_set>

bool find_source(const std::string& path, std::string& folder, std::string& file)
{
    namespace fs = std::filesystem;
    std::error_code fault;
    const bool is_folder = fs::is_directory(path, fault);
    const fs::path source = is_folder ? fs::path(path) / "show.lua" : fs::path(path);
    if (!fs::is_regular_file(source, fault))
        return false;
    file = source.filename().string();
    folder = source.parent_path().string();
    if (folder.empty())
        folder = ".";
    return true;
}

static void order_problems(problem_list& problems, const std::vector<std::string>& files)
{
    const auto rank = [&files](const show_problem& problem) {
        return std::find(files.begin(), files.end(), problem.file) - files.begin();
    };
    std::stable_sort(problems.begin(), problems.end(), [&rank](const show_problem& a, const show_problem& b) {
        return rank(a) != rank(b) ? rank(a) < rank(b) : a.line < b.line;
    });
    // What a loop says in every turn is said once.
    std::set<std::tuple<std::string, uint32_t, std::string, std::string>> said;
    std::erase_if(problems, [&said](const show_problem& problem) {
        return !said.emplace(problem.file, problem.line, problem.where, problem.text).second;
    });
}

// Those of a file in the order of its text, whichever way the program went.
static void take_tries(const try_calls& tries, built_show& built)
{
    for (const std::string& file : built.files_taken)
        for (auto call = tries.made.lower_bound({file, 0}); call != tries.made.end() && call->first.first == file;
             ++call)
            built.tried.push_back(call->second);
}

// ---- the documents looked over ----------------------------------------------------------------

namespace {

struct checked_show {
    const show_description& show;
    const built_show& built;
    const std::string& main_file;
};

} // namespace

// What is said of a whole timeline belongs to its last clip.
static source_place last_clip_place(const authored_document& document)
{
    source_place place;
    for (const authored_record* track : document.sections[section_timeline])
        for (const element& clip : track->content.children)
            if (clip.place.line != 0)
                place = clip.place;
    return place;
}

static source_place place_of(const checked_show& checked, const document_finding& finding)
{
    if (finding.section == section_music)
        return checked.built.music_place;
    for (const auto& document : checked.built.documents) {
        if (document == nullptr || document->entry != finding.document)
            continue;
        if (finding.section == section_timeline && finding.record == 0)
            return last_clip_place(*document);
        const bool has_part
            = !finding.parts.empty() && (finding.parts[0].name == "object" || finding.parts[0].name == "clip");
        return place_in_document(*document, static_cast<document_section>(finding.section), finding.record,
            has_part ? finding.parts[0].number : 0);
    }
    return {};
}

static bool source_line(const void* context, const document_finding& finding, std::string& file, uint32_t& line)
{
    const auto& checked = *static_cast<const checked_show*>(context);
    const source_place place = place_of(checked, finding);
    const bool is_text_of_file = finding.section != 0 && place.line == 0; // its places are those of the document
    if (is_text_of_file)
        return false;
    file = place.line != 0 ? place.file : checked.main_file;
    line = place.line;
    return true;
}

// What a source says on purpose needs no note: a short show whose times have units, files that it names as entries.
static bool is_meant(const show_description& show, const document_finding& finding)
{
    return (show.has_units && finding.text.starts_with("the whole show lasts"))
        || finding.text.find("is named by no document") != std::string::npos;
}

// Pictures and fonts are looked at when they are taken, too, and then the names of their files are known.
static bool is_told(const problem_list& problems, const show_problem& problem)
{
    const bool is_picture = problem.text.find("cards that take") != std::string::npos;
    const bool is_font = problem.text.find(" has no mesh for ") != std::string::npos;
    return std::any_of(problems.begin(), problems.end(), [&](const show_problem& other) {
        const bool is_same_place = other.file == problem.file && other.line == problem.line;
        return (is_picture && is_same_place && other.text.find(" cards ") != std::string::npos)
            || (is_font && other.text.ends_with(": blanks stand there."));
    });
}

static void check_built(
    const show_description& show, const std::string& main_file, built_show& built, known_documents* known)
{
    const std::vector<uint8_t> bytes = pack_bytes(built.entries);
    const owned_pack pack(pack_open_bytes(bytes));
    const bool has_music = !built.music.empty();
    finding_list findings
        = check_documents(pack.get(), {has_music, has_music, built.music_seconds > 0, built.music_seconds}, known);
    std::erase_if(findings, [&show](const document_finding& finding) { return is_meant(show, finding); });
    const checked_show checked = {show, built, main_file};
    problem_list problems = findings_as_problems(findings, source_line, &checked);
    std::erase_if(problems, [&built](const show_problem& problem) { return is_told(built.problems, problem); });
    for (show_problem& problem : problems) {
        if (problem.where.empty() && !show.keep_order)
            problem.text = source_wording(problem.text);
        built.problems.push_back(std::move(problem));
    }
}

static void pass_line(void* user, const char* line)
{
    const word_state& state = *static_cast<const word_state*>(user);
    if (state.print != nullptr)
        state.print(state.print_user, line);
}

void build_source(const build_request& request, built_show& built)
{
    show_description show;
    show.folder = request.folder;
    show.kept = request.kept != nullptr ? &request.kept->files : nullptr;
    show.compression = request.compression;
    begin_build(work_of(show));
    word_state state = {&show};
    sandbox_options options;
    options.folder = request.folder;
    options.user = &state;
    options.print = pass_line;
    state.print = request.print;
    state.print_user = request.user;
    state.tries.overrides = request.tries;
    const owned_sandbox box = sandbox_open(options);
    if (box == nullptr) {
        built.problems.push_back({problem_error, request.file, 0, "", "there is not enough memory."});
        return;
    }
    const bool ran = sandbox_run_function(*box, add_words) && sandbox_run_library(*box, "words")
        && sandbox_run_file(*box, request.file);
    built.problems = sandbox_problems(*box);
    built.files_taken = sandbox_files(*box);
    take_tries(state.tries, built);
    const std::vector<std::string> sources = built.files_taken;
    built.title = show.title;
    built.bpm = show.bpm;
    built.beats_per_bar = show.beats_per_bar;
    if (ran && !has_errors(built.problems))
        lower_show(show, built);
    else
        look_at_files(show, built);
    if (!built.entries.empty() && !has_errors(built.problems))
        check_built(show, request.file, built, request.kept != nullptr ? &request.kept->documents : nullptr);
    for (const std::string& missing : sandbox_missing_files(*box))
        want_file(show, missing);
    built.files_wanted = std::move(show.files_wanted.in_order);
    const std::unordered_set<std::string> taken(built.files_taken.begin(), built.files_taken.end());
    std::erase_if(built.files_wanted, [&taken](const std::string& file) { return taken.contains(file); });
    for (show_problem& problem : built.problems)
        if (problem.file.empty())
            problem.file = request.file;
    order_problems(built.problems, sources);
    end_build(work_of(show), has_errors(built.problems));
}
