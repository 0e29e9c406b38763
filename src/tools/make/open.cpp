#include "commands.h"

#include "authoring/check/diff.h"
#include "authoring/lua/source.h"
#include "authoring/open/open_pack.h"
#include "content/file_bytes.h"
#include "content/new_file.h"
#include "content/pack.h"
#include "content/printable.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <unistd.h>

namespace fs = std::filesystem;

static bool write_files(const std::string& folder, const opened_show& show)
{
    for (const opened_file& file : show.files) {
        const fs::path path = fs::path(folder) / file.name;
        std::error_code fault;
        fs::create_directories(path.parent_path(), fault);
        const char* problem = new_file_put(
            path.string(), {.permissions = 0666, .may_replace = true}, file.bytes.data(), file.bytes.size());
        if (problem != nullptr)
            return fail("cannot write ", path.string(), std::string(": ") + problem) == exit_done;
    }
    return true;
}

// Records of which the player says something that it does not say of the other document's.
static void add_other_problems(const read_document& a, const read_document& b, raw_records& raw)
{
    for (const document_problem& problem : a.problems) {
        const bool is_same = std::any_of(b.problems.begin(), b.problems.end(),
            [&problem](const document_problem& other) { return other.text == problem.text; });
        if (!is_same && problem.section != 0 && problem.record != 0)
            raw.insert({problem.section, problem.record});
    }
}

// What of a document the source does not give back: records that differ are to be written as they stand. False:
// nothing differs.
static bool find_differences(const pack_file* before, const pack_file* after, uint32_t index, opening_rules& rules)
{
    const owned_read_document a = read_packed_document(opened_documents[index], before);
    const owned_read_document b = read_packed_document(opened_documents[index], after);
    std::string why;
    if (rules.as_text || documents_equal(*a, *b, why))
        return false;
    const size_t known = rules.raw.size();
    for (const record_change& change : diff_documents(*a, *b))
        if (change.before != 0)
            rules.raw.insert({change.section, change.before});
    if (rules.raw.size() == known) {
        add_other_problems(*a, *b, rules.raw);
        add_other_problems(*b, *a, rules.raw);
    }
    rules.as_text = rules.raw.size() == known; // records alone do not mend it
    return true;
}

// Opens the pack into the folder, builds what came out, and opens again until both are the same.
static bool open_until_equal(
    const pack_file* pack, const std::string& folder, opened_show& show, std::vector<std::string>& notes)
{
    std::array<opening_rules, opened_document_count> rules;
    for (uint32_t tries = 0;; ++tries) {
        notes.clear();
        open_pack(pack, rules, show, notes);
        if (!write_files(folder, show))
            return false;
        built_show built;
        build_source({folder, "show.lua"}, built);
        const std::vector<uint8_t> bytes = pack_bytes(built.entries);
        const owned_pack rebuilt(pack_open_bytes(bytes));
        bool differs = false;
        for (uint32_t index = 0; index < opened_document_count; ++index)
            differs = find_differences(pack, rebuilt.get(), index, rules[index]) || differs;
        const auto error = std::find_if(built.problems.begin(), built.problems.end(),
            [](const show_problem& problem) { return problem.severity == problem_error; });
        const bool is_text = rules[0].as_text && rules[1].as_text;
        if (!differs && (error == built.problems.end() || is_text)) {
            if (error != built.problems.end())
                notes.push_back("the source does not build as it is: " + error->text);
            return true;
        }
        if (!differs || tries == 8) // texts build where records do not
            for (opening_rules& rule : rules)
                rule.as_text = true;
    }
}

// The music lies beside the pack, or in a folder "music" there. False: it does not.
static bool copy_music(const make_options& options, const std::string& music)
{
    const fs::path folder = fs::path(options.input).parent_path();
    for (const fs::path& path : {folder / music, folder / "music" / music}) {
        std::error_code fault;
        if (fs::path(music).has_parent_path() || !fs::is_regular_file(path, fault))
            continue;
        return fs::copy_file(path, fs::path(options.output) / music, fault) && !fault;
    }
    return false;
}

exit_status run_open(const make_options& options)
{
    const char* problem = nullptr;
    const owned_pack pack(pack_open(open_plain_file(options.input.c_str(), &problem)));
    if (pack == nullptr)
        return fail("cannot open ", options.input, std::string(": ") + problem);
    pack_slot slot;
    uint32_t slots = 0;
    while (pack_read_slot(pack.get(), slots, slot))
        ++slots;
    if (!pack_index_ends(pack.get(), slots))
        return fail("", options.input, " is no pack");
    std::error_code fault;
    if (fs::exists(options.output, fault)
        && (!fs::is_directory(options.output, fault) || !fs::is_empty(options.output, fault)))
        return fail("", options.output, " exists and holds something: name a new folder");
    // ... beside its place, and then there
    const std::string beside = options.output + "." + std::to_string(getpid()) + ".part";
    opened_show show;
    std::vector<std::string> notes;
    if (!fs::create_directories(beside, fault) && fault)
        return fail("cannot make the folder ", beside, ": " + fault.message());
    const bool done = open_until_equal(pack.get(), beside, show, notes);
    if (done) {
        fs::remove(options.output, fault);
        fs::rename(beside, options.output, fault);
    }
    if (!done || fault) {
        const std::string reason = fault.message();
        std::error_code ignored;
        fs::remove_all(beside, ignored);
        return done ? fail("cannot make the folder ", options.output, ": " + reason) : exit_failed;
    }
    for (const std::string& note : notes)
        std::fprintf(stderr, "Warning: %s\n", printable(note).c_str());
    std::printf("Opened %s into %s: %zu files.\n", printable(options.input).c_str(), printable(options.output).c_str(),
        show.files.size());
    if (!show.music.empty() && !copy_music(options, show.music))
        std::printf("Its music, %s, is not beside the pack: copy it there.\n", printable(show.music).c_str());
    return exit_done;
}
