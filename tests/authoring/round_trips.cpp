// Opens packs and shows, builds what came out, and holds it against what went in: the same documents as the player
// reads them, and the same entries.
//
//     round_trips BRIMLOW-MAKE WORKING-FOLDER [--words-only] PLACE...
//
// A PLACE is a pack, a show's folder, or a folder with packs below it; one that is not there is told and skipped.
// Behind --words-only every record has to be said in words. Ends with 1 when something differs. A row for each pack:
// its records, those that are written as they stand, documents that are written as a whole text.
#include "authoring/check/diff.h"
#include "authoring/lua/source.h"
#include "content/owners.h"
#include "content/pack.h"
#include "content/xmlz.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

namespace fs = std::filesystem;

namespace {

struct round_trip {
    std::string make;
    std::string folder; // for what comes out
    uint32_t packs = 0;
    uint32_t failed = 0;
};

} // namespace

static std::string text_of_file(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

static uint32_t count_of(const std::string& text, const std::string& part)
{
    uint32_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

// The entries but for the documents. Of several with one name the first counts; one that is damaged is left out.
static std::map<std::string, std::string> entries_of(const pack_file* pack)
{
    std::map<std::string, std::string> entries;
    pack_slot slot{};
    for (uint32_t index = 0; pack_read_slot(pack, index, slot); ++index) {
        uint8_t* bytes = nullptr;
        const std::string name = slot.name;
        if (name == show_document_name || name == loading_document_name || entries.count(name) != 0
            || pack_read_slot_bytes(pack, slot, &bytes) != pack_found)
            continue;
        const owned_block<uint8_t> block(bytes);
        entries[name] = {reinterpret_cast<const char*>(bytes), slot.size};
    }
    return entries;
}

// What is in the envelope of documents and meshes, which may be packed otherwise; other bytes as they are.
static std::string unfolded(const std::string& bytes)
{
    uint8_t* content = nullptr;
    uint32_t size = 0;
    if (xmlz_inflate(
            reinterpret_cast<const uint8_t*>(bytes.data()), static_cast<uint32_t>(bytes.size()), &content, &size)
        != xmlz_ok)
        return bytes;
    const owned_block<uint8_t> block(content);
    return {reinterpret_cast<const char*>(content), size};
}

static std::string difference_of(const pack_file* before, const pack_file* after)
{
    std::string why;
    for (const char* name : {show_document_name, loading_document_name}) {
        const owned_read_document a = read_packed_document(name, before);
        const owned_read_document b = read_packed_document(name, after);
        if (!documents_equal(*a, *b, why))
            return std::string(name) + ": " + why;
    }
    const auto a = entries_of(before);
    const auto b = entries_of(after);
    for (const auto& [name, bytes] : a)
        if (b.count(name) == 0 || unfolded(b.at(name)) != unfolded(bytes))
            return "the entry \"" + name + "\" is another one, or gone.";
    for (const auto& [name, bytes] : b)
        if (a.count(name) == 0)
            return "the entry \"" + name + "\" is new.";
    return "";
}

static uint32_t records_of(const pack_file* pack)
{
    uint32_t count = 0;
    for (const char* name : {show_document_name, loading_document_name}) {
        const owned_read_document read = read_packed_document(name, pack);
        const xml_node* element = read->root != nullptr ? read->root->first_child : nullptr;
        for (const xml_node* section = element != nullptr ? element->first_child : nullptr; section != nullptr;
             section = section->next_sibling)
            for (const xml_node* record = section->first_child; record != nullptr; record = record->next_sibling)
                ++count;
    }
    return count;
}

static void try_pack(round_trip& r, const fs::path& path, bool words_only, const std::string& name)
{
    const std::string out = r.folder + "/opened-" + std::to_string(++r.packs);
    const std::string command
        = "'" + r.make + "' open '" + path.string() + "' -o '" + out + "' >'" + out + ".txt' 2>&1";
    if (std::system(command.c_str()) != 0) {
        ++r.failed;
        std::printf("%-28s is not opened: %s", name.c_str(), text_of_file(out + ".txt").c_str());
        return;
    }
    built_show built;
    build_source({out, "show.lua"}, built);
    const std::vector<uint8_t> bytes = pack_bytes(built.entries);
    const owned_pack after(pack_open_bytes(bytes));
    const owned_pack before(pack_open(std::fopen(path.c_str(), "rb")));
    const std::string why = difference_of(before.get(), after.get());
    const std::string source = text_of_file(out + "/show.lua");
    const uint32_t raw = count_of(source, "raw(\"");
    const uint32_t texts = count_of(source, "document(\"");
    const bool failed = !why.empty() || (words_only && raw + texts != 0);
    r.failed += failed ? 1 : 0;
    std::printf("%-28s %5u records, %3u as they stand, %u documents as texts: %s\n", name.c_str(),
        records_of(before.get()), raw, texts, why.empty() ? "equal" : why.c_str());
}

// A show's pack, to be opened then.
static void try_show(round_trip& r, const fs::path& folder, bool words_only)
{
    built_show built;
    build_source({folder.string(), "show.lua"}, built);
    const std::string name = folder.filename().string();
    if (has_errors(built.problems)) {
        ++r.failed;
        return static_cast<void>(
            std::printf("%-28s is not built: %s\n", name.c_str(), built.problems.front().text.c_str()));
    }
    const std::vector<uint8_t> bytes = pack_bytes(built.entries);
    const fs::path path = fs::path(r.folder) / (name + ".dpk");
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    try_pack(r, path, words_only, name);
}

static bool is_pack(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    char magic[pack_index_offset] = {};
    return fs::is_regular_file(path) && file.read(magic, sizeof magic)
        && std::equal(std::begin(magic), std::end(magic), pack_magic);
}

static void try_place(round_trip& r, const fs::path& place, bool words_only)
{
    std::vector<fs::path> paths;
    if (!fs::exists(place))
        return static_cast<void>(std::printf("%s is not there: skipped.\n", place.c_str()));
    if (fs::exists(place / "show.lua"))
        return try_show(r, place, words_only);
    if (is_pack(place))
        paths.push_back(place);
    else
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(place))
            if (entry.path().filename() == "show.lua" || is_pack(entry.path()))
                paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    for (const fs::path& path : paths) {
        if (path.filename() == "show.lua")
            try_show(r, path.parent_path(), words_only);
        else
            try_pack(r, path, words_only, fs::relative(path, place).string());
    }
}

int main(int argc, char** argv)
{
    round_trip r = {argc > 2 ? argv[1] : "", argc > 2 ? argv[2] : ""};
    if (argc < 4)
        return std::printf("write round_trips BRIMLOW-MAKE WORKING-FOLDER [--words-only] PLACE...\n"), 2;
    fs::remove_all(r.folder);
    fs::create_directories(r.folder);
    bool words_only = false;
    for (int index = 3; index < argc; ++index) {
        if (std::string(argv[index]) == "--words-only")
            words_only = true;
        else
            try_place(r, argv[index], words_only);
    }
    std::printf("%u packs, %u of them failed.\n", r.packs, r.failed);
    return r.failed == 0 ? 0 : 1;
}
