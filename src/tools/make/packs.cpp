#include "commands.h"
#include "problem_lines.h"

#include "content/file_bytes.h"
#include "content/pack.h"
#include "content/printable.h"
#include "editing/pack_files.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <sys/stat.h>
#include <unordered_map>
#include <unordered_set>

// ---- packs that are there --------------------------------------------------------------

namespace {

struct pack_index {
    owned_pack file;
    std::vector<pack_slot> slots; // all, in order
    size_t damaged;               // how many of them do not lie inside the file
};

} // namespace

// Opens a pack and reads its index. False, with a line, for what is none or has lost a part
// of its index. A pack is known by its first bytes; the player does without them, so what
// is sound otherwise is read with a warning, unless it is to be written.
static bool open_pack(const std::string& path, bool to_write, pack_index& pack)
{
    const char* problem = nullptr;
    pack.file.reset(pack_open(open_plain_file(path.c_str(), &problem)));
    if (!pack.file)
        return fail("cannot open ", path, std::string(": ") + problem) == exit_done;
    if (pack.file->size == 0)
        return fail("", path, " is no pack: it is empty") == exit_done;
    const bool begins = pack_begins(pack.file.get());
    pack.damaged = 0;
    pack_slot slot;
    for (uint32_t index = 0; (begins || pack.damaged == 0) && pack_read_slot(pack.file.get(), index, slot); ++index) {
        pack.slots.push_back(slot);
        pack.damaged += slot.damaged;
    }
    const bool ends = pack_index_ends(pack.file.get(), static_cast<uint32_t>(pack.slots.size()));
    if (!begins && (to_write || !ends || pack.damaged > 0))
        return fail("", path, " is no pack: it does not begin with \"DP\" and the number 1") == exit_done;
    if (!ends)
        return fail("", path, " is cut off: its list of entries has no end") == exit_done;
    if (!begins)
        std::fprintf(stderr, "Warning: %s does not begin like a pack.\n", printable(path).c_str());
    return true;
}

static exit_status report_damage(const std::string& path, const pack_index& pack)
{
    if (pack.damaged == 0)
        return exit_done;
    const std::string counts = std::to_string(pack.damaged) + " of its " + std::to_string(pack.slots.size());
    return fail("", path, " is damaged: " + counts + " entries do not lie inside it");
}

// ---- lists of entries --------------------------------------------------------------------

namespace {

using file_list = std::unique_ptr<pack_file_list, decltype([](pack_file_list* list) { pack_file_list_free(list); })>;

} // namespace

static char* copy_text(const std::string& text)
{
    return strdup(text.c_str());
}

// The entries that can be reached: of two entries with one name the first counts.
static std::vector<pack_slot> reachable(const pack_index& pack)
{
    std::vector<pack_slot> slots;
    std::unordered_set<std::string> seen;
    for (const pack_slot& slot : pack.slots)
        if (seen.insert(slot.name).second)
            slots.push_back(slot);
    return slots;
}

// Entries of a pack, as they are there.
static file_list list_of(const std::vector<std::string>& names)
{
    file_list list(pack_file_list_new());
    pack_file_list* last = list.get();
    for (const std::string& name : names)
        last = pack_file_list_append(last, copy_text(name), nullptr);
    return list;
}

// ---- list ----------------------------------------------------------------------------------

static nlohmann::ordered_json entries_as_json(const pack_index& pack)
{
    nlohmann::ordered_json entries = nlohmann::ordered_json::array();
    for (const pack_slot& slot : pack.slots) {
        nlohmann::ordered_json entry = {{"name", slot.name}, {"damaged", slot.damaged}};
        if (!slot.damaged)
            entry["size"] = slot.size;
        entries.push_back(entry);
    }
    return {{"entries", entries}};
}

exit_status run_list(const make_options& options)
{
    pack_index pack;
    if (!open_pack(options.input, false, pack))
        return exit_failed;
    if (options.json)
        std::fputs(json_line(entries_as_json(pack)).c_str(), stdout);
    else
        for (const pack_slot& slot : pack.slots) {
            const std::string size = slot.damaged ? "damaged" : std::to_string(slot.size);
            std::printf("%10s  %s\n", size.c_str(), printable(slot.name).c_str());
        }
    return report_damage(options.input, pack);
}

// ---- extract -------------------------------------------------------------------------------

// The names that are asked for, each once; where none are, those of all sound entries.
static std::vector<std::string> wanted_names(const make_options& options, const pack_index& pack)
{
    std::vector<std::string> names;
    std::unordered_set<std::string> seen;
    for (const std::string& name : options.names)
        if (seen.insert(name).second)
            names.push_back(name);
    if (options.names.empty())
        for (const pack_slot& slot : reachable(pack))
            if (!slot.damaged)
                names.push_back(slot.name);
    return names;
}

// False, with a line, when a file of these names is there already.
static bool places_are_free(const std::string& prefix, const std::vector<std::string>& names)
{
    std::string first;
    size_t count = 0;
    for (const std::string& name : names) {
        struct stat status;
        const std::string path = prefix + name;
        if (pack_name_problem(name.c_str()) || lstat(path.c_str(), &status) != 0)
            continue;
        first = count == 0 ? path : first;
        ++count;
    }
    if (count == 0)
        return true;
    const std::string others = count == 1 ? "" : ", and so do " + std::to_string(count - 1) + " more";
    return fail("", first, " exists" + others + ": nothing is written. \"--force\" replaces what exists") == exit_done;
}

// Makes the folder of a prefix, and those above it; false with a line.
static bool make_folder(const std::string& prefix)
{
    const std::string folder = prefix.substr(0, prefix.rfind('/') + 1);
    std::error_code error;
    if (!folder.empty())
        std::filesystem::create_directories(folder, error);
    return !error || fail("cannot make the folder ", folder, ": " + error.message()) == exit_done;
}

exit_status run_extract(const make_options& options)
{
    pack_index pack;
    if (!open_pack(options.input, false, pack))
        return exit_failed;
    const std::vector<std::string> names = wanted_names(options, pack);
    if (!options.force && !places_are_free(options.prefix, names))
        return exit_failed;
    if (!make_folder(options.prefix))
        return exit_failed;
    const file_list list = list_of(names);
    const bool written = pack_export_list(list.get(), pack.file.get(), options.prefix.c_str(), options.force);
    const exit_status whole = options.names.empty() ? report_damage(options.input, pack) : exit_done;
    return written ? whole : exit_failed;
}

// ---- add, create, remove ---------------------------------------------------------------------

// False, with a line, for names that no entry may have and for names given twice.
static bool names_are_accepted(const make_options& options)
{
    std::unordered_set<std::string> seen;
    for (const make_source& source : options.sources) {
        const char* problem = pack_name_problem(source.name.c_str());
        if (source.name.empty() && !source.directory.empty())
            return fail("\"", source.directory, "\" is a folder: files go into a pack one by one") == exit_done;
        if (!problem && !seen.insert(source.name).second)
            problem = "is given twice";
        if (problem)
            return fail("the name \"", source.name, std::string("\" ") + problem) == exit_done;
    }
    return true;
}

// The player finds a pack by the end of its name alone.
void warn_of_unfound_name(const std::string& path)
{
    constexpr std::string_view end = "dpk";
    if (path.size() < end.size() || path.compare(path.size() - end.size(), end.size(), end) != 0)
        std::fprintf(stderr, "Warning: the player finds packs whose names end in \"dpk\", and %s does not.\n",
            printable(path).c_str());
}

static bool exists(const std::string& path)
{
    struct stat status;
    return stat(path.c_str(), &status) == 0 || errno != ENOENT; // what cannot be looked at is not new
}

// The entries of a pack and the sources: in place of an entry of their name, or behind the last.
static file_list list_with_sources(const pack_index& pack, const std::vector<make_source>& sources)
{
    std::unordered_map<std::string, const make_source*> waiting;
    for (const make_source& source : sources)
        waiting[source.name] = &source;
    file_list list(pack_file_list_new());
    pack_file_list* last = list.get();
    for (const pack_slot& slot : reachable(pack)) {
        const auto found = waiting.find(slot.name);
        char* directory = found == waiting.end() ? nullptr : copy_text(found->second->directory);
        last = pack_file_list_append(last, copy_text(slot.name), directory);
        waiting.erase(slot.name);
    }
    for (const make_source& source : sources)
        if (waiting.count(source.name) != 0)
            last = pack_file_list_append(last, copy_text(source.name), copy_text(source.directory));
    return list;
}

exit_status run_add(const make_options& options)
{
    if (!names_are_accepted(options))
        return exit_failed;
    pack_index pack = {};
    if (!exists(options.input))
        warn_of_unfound_name(options.input);
    else if (!open_pack(options.input, true, pack))
        return exit_failed;
    const file_list list = list_with_sources(pack, options.sources);
    return pack_write_in_place(list.get(), options.input.c_str(), pack.file.get()) ? exit_done : exit_failed;
}

bool may_become_pack(const std::string& path, bool force)
{
    if (!exists(path))
        return true;
    const char* problem = nullptr;
    const owned_pack pack(pack_open(open_plain_file(path.c_str(), &problem)));
    if (!pack)
        return fail("cannot write ", path, std::string(": ") + problem) == exit_done;
    if (pack->size > 0 && !pack_begins(pack.get()))
        return fail("", path, " exists and is no pack: it is left as it is") == exit_done;
    return force || fail("", path, " exists: it is left as it is. \"--force\" replaces it") == exit_done;
}

exit_status run_create(const make_options& options)
{
    if (!names_are_accepted(options) || !may_become_pack(options.input, options.force))
        return exit_failed;
    warn_of_unfound_name(options.input);
    const file_list list = list_with_sources({}, options.sources);
    return pack_write(list.get(), options.input.c_str(), nullptr) ? exit_done : exit_failed;
}

exit_status run_remove(const make_options& options)
{
    pack_index pack;
    if (!open_pack(options.input, true, pack))
        return exit_failed;
    std::vector<std::string> kept;
    for (const pack_slot& slot : reachable(pack))
        kept.push_back(slot.name);
    std::unordered_set<std::string> seen;
    for (const std::string& name : options.names) {
        if (!seen.insert(name).second)
            return fail("the name \"", name, "\" is given twice");
        const auto found = std::find(kept.begin(), kept.end(), name);
        if (found == kept.end())
            return fail("the entry \"", name, "\" is not in the pack");
        kept.erase(found);
    }
    const file_list list = list_of(kept);
    return pack_write_in_place(list.get(), options.input.c_str(), pack.file.get()) ? exit_done : exit_failed;
}
