#include "authoring/show/entries.h"

#include "authoring/asset/picture_import.h"
#include "authoring/near_name.h"
#include "content/pack.h"
#include "model/image_decode.h"

#include <algorithm>
#include <cassert>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <zlib.h>

// ---- files ------------------------------------------------------------------------------

std::string stem_of(const std::string& file)
{
    return std::filesystem::path(file).stem().string();
}

static std::string base_of(const std::string& file)
{
    return std::filesystem::path(file).filename().string();
}

void note_file(lowering& l, const std::string& file)
{
    std::vector<std::string>& taken = l.built.files_taken;
    if (l.files_known.empty())
        l.files_known.insert(taken.begin(), taken.end()); // the sources
    if (l.files_known.insert(file).second)
        taken.push_back(file);
}

void add_name(distinct_names& names, const std::string& name)
{
    if (names.known.insert(name).second)
        names.in_order.push_back(name);
}

void want_file(show_description& show, const std::string& file)
{
    const std::filesystem::path wish = std::filesystem::path(file).lexically_normal();
    const bool is_inside = !file.empty() && !wish.is_absolute() && wish.begin()->string() != "..";
    if (is_inside)
        add_name(show.files_wanted, wish.string());
}

std::string near_file(const std::string& path)
{
    namespace fs = std::filesystem;
    std::error_code fault;
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(fs::path(path).parent_path(), fault))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    const std::string near = near_name(base_of(path), names);
    return near.empty() ? "" : ": did you mean \"" + near + "\"?";
}

// A link that leads out of the folder would let a stranger's show take any file of whoever builds it.
static bool stays_inside(const std::filesystem::path& folder, const std::filesystem::path& path)
{
    namespace fs = std::filesystem;
    std::error_code fault;
    const fs::path home = fs::weakly_canonical(folder, fault);
    const fs::path real = fault ? fs::path() : fs::weakly_canonical(path, fault);
    return !fault && std::mismatch(home.begin(), home.end(), real.begin(), real.end()).first == home.end();
}

std::string path_in_folder(const std::string& folder, const std::string& file, std::string& fault)
{
    namespace fs = std::filesystem;
    std::error_code system;
    const fs::path wish = fs::path(file).lexically_normal();
    const fs::path path = fs::path(folder) / wish;
    if (file.empty())
        fault = "the name of a file is empty: write the name of one in the show's folder.";
    else if (wish.is_absolute() || wish.begin()->string() == ".." || !stays_inside(folder, path))
        fault = "\"" + file + "\" leads out of the show's folder: copy the file into it.";
    else if (fs::is_directory(path, system))
        fault = "\"" + file + "\" is a folder: write the name of a file in it.";
    else if (!fs::is_regular_file(path, system)) {
        const std::string near = near_file(path);
        fault = "there is no file \"" + file + "\"" + (near.empty() ? " in the show's folder." : near);
    }
    return fault.empty() ? path.string() : "";
}

std::string find_file(lowering& l, const std::string& file, const source_place& place)
{
    if (const auto known = l.files.find(file); known != l.files.end())
        return known->second;
    std::string fault;
    const std::string path = path_in_folder(l.show.folder, file, fault);
    if (!fault.empty())
        add_problem(l.built.problems, problem_error, place, fault);
    want_file(l.show, file);
    if (!path.empty())
        note_file(l, std::filesystem::path(file).lexically_normal().string());
    return fault.empty() ? l.files[file] = path : path;
}

namespace {

struct file_kind {
    std::string_view begin;
    const char* kind;
    const char* name;
    const char* word; // what a source writes in front of it; null: nothing takes it
};

} // namespace

static constexpr file_kind file_kinds[] = {
    {"\xff\xd8\xff", "picture", "a JPEG picture", "image"},
    {"\x89PNG", "picture", "a PNG picture", "image"},
    {"GIF8", "picture", "a GIF picture", nullptr},
    {"OggS", "music", "an Ogg file", "show { music ="},
    {"ID3", "music", "an MP3 file", nullptr},
    {"\xff\xfb", "music", "an MP3 file", nullptr},
    {"OTTO", "font", "a font", "font"},
    {{"\0\1\0\0", 4}, "font", "a font", "font"},
    {"glTF", "model", "a model", "mesh"},
};

std::string other_kind_of_file(const std::string& path, const std::string& file, const std::string& wanted)
{
    char begin[8] = {};
    FILE* stream = std::fopen(path.c_str(), "rb");
    const size_t got = stream != nullptr ? std::fread(begin, 1, sizeof begin, stream) : 0;
    if (stream != nullptr)
        std::fclose(stream);
    const std::string_view bytes(begin, got);
    for (const file_kind& known : file_kinds)
        if (bytes.starts_with(known.begin) && wanted != known.kind)
            return "\"" + file + "\" is " + known.name + ", and no " + wanted
                + (known.word != nullptr ? std::string(": ") + known.word + " \"" + file + "\" takes it." : ".");
    return {};
}

bool read_file(lowering& l, const std::string& path, const source_place& place, std::vector<uint8_t>& bytes)
{
    constexpr uintmax_t most = 1u << 30;
    std::error_code fault;
    const uintmax_t size = std::filesystem::file_size(path, fault);
    FILE* file = fault || size > most ? nullptr : std::fopen(path.c_str(), "rb");
    if (file == nullptr) {
        add_problem(l.built.problems, problem_error, place,
            "cannot read \"" + base_of(path)
                + "\": " + (size > most && !fault ? "it is larger than 1 GiB" : std::strerror(errno)) + ".");
        return false;
    }
    bytes.resize(size);
    const size_t got = size == 0 ? 0 : std::fread(bytes.data(), 1, size, file);
    std::fclose(file);
    bytes.resize(got);
    return true;
}

// ---- names --------------------------------------------------------------------------------

// Cuts a name so that it fits with what is put in, between letters of UTF-8, and keeps its ending.
static std::string fitted(const std::string& wish, const std::string& mark)
{
    constexpr size_t longest_ending = 8;
    const size_t dot = wish.rfind('.');
    const bool has_ending = dot != std::string::npos && wish.size() - dot <= longest_ending;
    const std::string ending = has_ending ? wish.substr(dot) : "";
    std::string stem = wish.substr(0, wish.size() - ending.size());
    size_t kept = std::min(stem.size(), pack_name_size - 1 - ending.size() - mark.size());
    while (kept > 0 && kept < stem.size() && (stem[kept] & 0xC0) == 0x80) // inside of a letter
        --kept;
    return stem.substr(0, kept) + mark + ending;
}

static std::string free_name(lowering& l, const std::string& wish)
{
    std::string name = fitted(wish, "");
    for (uint32_t number = 2; !l.names.taken.insert(name).second; ++number)
        name = fitted(wish, "-" + std::to_string(number));
    return name;
}

static void add_entry(lowering& l, const std::string& name, std::vector<uint8_t> bytes, const std::string& file)
{
    l.built.entries.push_back({name, std::move(bytes), file});
}

// A stream of zlib that packs nothing. (At level 0 zlib clears its tables for each stream and copies all twice.)
static void append_stored(std::vector<uint8_t>& out, std::span<const uint8_t> bytes)
{
    constexpr size_t most = 65535; // bytes of a block
    const auto append_number = [&out](size_t number, uint32_t count, bool highest_first) {
        for (uint32_t byte = 0; byte < count; ++byte)
            out.push_back(static_cast<uint8_t>(number >> 8 * (highest_first ? count - 1 - byte : byte)));
    };
    append_number(0x7801, 2, true);
    for (size_t at = 0; at == 0 || at < bytes.size(); at += most) {
        const size_t size = std::min(bytes.size() - at, most);
        const bool is_last = at + size == bytes.size();
        out.push_back(is_last ? 1 : 0);
        append_number(size, 2, false);
        append_number(~size & 0xFFFF, 2, false);
        out.insert(
            out.end(), bytes.begin() + static_cast<ptrdiff_t>(at), bytes.begin() + static_cast<ptrdiff_t>(at + size));
    }
    append_number(adler32_z(1, bytes.data(), bytes.size()), 4, true);
}

static void append_packed(std::vector<uint8_t>& out, std::span<const uint8_t> bytes, int compression)
{
    const size_t begin = out.size();
    uLongf size = compressBound(static_cast<uLong>(bytes.size()));
    out.resize(begin + size);
    const int status
        = compress2(out.data() + begin, &size, bytes.data(), static_cast<uLong>(bytes.size()), compression);
    assert(status == Z_OK);
    static_cast<void>(status);
    out.resize(begin + size);
}

std::vector<uint8_t> enveloped(const show_description& show, const std::vector<uint8_t>& bytes)
{
    std::vector<uint8_t> out;
    out.reserve(bytes.size() + bytes.size() / 4096 + 64);
    for (uint32_t byte = 0; byte < 4; ++byte)
        out.push_back(static_cast<uint8_t>(bytes.size() >> (8 * byte)));
    if (show.compression == 0)
        append_stored(out, bytes);
    else
        append_packed(out, bytes, show.compression);
    return out;
}

// Sources that keep the order keep names: of a file the name that it has, or was given.
static std::string kept_name(lowering& l, const std::string& source, const std::string& name, bool& known)
{
    std::string& entry = l.names.by_source["kept|" + source];
    known = !entry.empty();
    if (!known)
        entry = free_name(l, name);
    return entry;
}

std::string take_mesh(lowering& l, const std::vector<uint8_t>& content, const std::string& wish)
{
    if (l.show.keep_order) {
        bool known = false;
        const std::string name = kept_name(l, wish, wish, known);
        if (!known)
            add_entry(l, name, enveloped(l.show, content), "");
        return name;
    }
    std::string key = "mesh|";
    key.append(reinterpret_cast<const char*>(content.data()), content.size());
    if (const auto known = l.names.by_source.find(key); known != l.names.by_source.end())
        return known->second;
    const std::string name = free_name(l, wish + ".mesh");
    l.names.by_source.emplace(std::move(key), name);
    add_entry(l, name, enveloped(l.show, content), "");
    return name;
}

// ---- pictures -----------------------------------------------------------------------------

// With one full stop, whether it came with its own or not.
static std::string sentence_of(const std::string& text)
{
    return !text.empty() && text.back() == '.' ? text : text + ".";
}

static void add_notes(lowering& l, const thing& made, const std::string& file, const std::vector<std::string>& notes)
{
    for (const std::string& note : notes)
        add_problem(l.built.problems, problem_note, made.place, "\"" + file + "\" " + sentence_of(note));
}

static std::string size_wish(const image_thing& image)
{
    return std::to_string(image.size[0]) + "x" + std::to_string(image.size[1]);
}

// The picture of a file; null, and a problem, where there is none.
static const imported_picture* read_picture(
    lowering& l, const thing& made, const image_thing& image, const std::string& path)
{
    if (const imported_picture* kept = find_picture(work_of(l.show), path, size_wish(image)))
        return kept;
    const read_stamp stamp = stamp_of(path);
    std::vector<uint8_t> bytes;
    imported_picture picture = {};
    std::string problem;
    if (!read_file(l, path, made.place, bytes))
        return nullptr;
    if (import_picture(bytes, {image.size[0], image.size[1]}, picture, problem))
        return &keep_picture(work_of(l.show), stamp, size_wish(image), std::move(picture));
    const std::string other = other_kind_of_file(path, image.file, "picture");
    add_problem(l.built.problems, problem_error, made.place,
        other.empty() ? "\"" + image.file + "\" " + sentence_of(problem) : other);
    return nullptr;
}

// The picture of a level's file, likewise.
static const imported_picture* read_level(lowering& l, const thing& made, const std::string& file, uint32_t level,
    const imported_picture& base, const std::string& path)
{
    const std::string wish
        = "level " + std::to_string(level) + " of " + std::to_string(base.width) + "x" + std::to_string(base.height);
    if (const imported_picture* kept = find_picture(work_of(l.show), path, wish))
        return kept;
    const read_stamp stamp = stamp_of(path);
    std::vector<uint8_t> bytes;
    imported_picture picture = {};
    std::string problem;
    if (!read_file(l, path, made.place, bytes))
        return nullptr;
    if (import_level(bytes, base, level, false, picture, problem))
        return &keep_picture(work_of(l.show), stamp, wish, std::move(picture));
    add_problem(l.built.problems, problem_error, made.place, "\"" + file + "\" " + sentence_of(problem));
    return nullptr;
}

// Ready-made levels are entries of their own, whose names follow from the picture's.
static void take_levels(
    lowering& l, const thing& made, const image_thing& image, const std::string& entry, const imported_picture& base)
{
    for (uint32_t level = 1; level <= image.levels.size(); ++level) {
        const std::string& file = image.levels[level - 1];
        if (file.empty())
            continue;
        const std::string path = find_file(l, file, made.place);
        const imported_picture* picture = path.empty() ? nullptr : read_level(l, made, file, level, base, path);
        if (picture == nullptr)
            continue;
        const std::string name = name_of_level(entry.c_str(), level).text;
        if (name.empty())
            add_problem(l.built.problems, problem_error, made.place,
                "the name \"" + entry + "\" is too long for levels: give the image a shorter name = \"...\".");
        else if (l.names.taken.insert(name).second)
            add_entry(l, name, picture->bytes, file);
    }
}

static std::string picture_key(const image_thing& image)
{
    return "picture|" + image.file + "|" + std::to_string(image.size[0]) + "x" + std::to_string(image.size[1]) + "|"
        + image.name;
}

taken_picture take_picture(lowering& l, const thing& made, const image_thing& image)
{
    const std::string key = picture_key(image);
    taken_picture taken;
    if (const auto known = l.pictures.find(key); known != l.pictures.end())
        return {l.names.by_source[key], known->second};
    const std::string path = find_file(l, image.file, made.place);
    const imported_picture* picture = path.empty() ? nullptr : read_picture(l, made, image, path);
    if (picture == nullptr)
        return taken;
    add_notes(l, made, image.file, picture->notes);
    const bool keeps = l.show.keep_order && image.name.empty();
    taken.entry = free_name(l, !image.name.empty() ? image.name : keeps ? image.file : base_of(image.file));
    taken.components = picture->components;
    l.names.by_source[key] = taken.entry;
    l.pictures[key] = picture->components;
    take_levels(l, made, image, taken.entry, *picture);
    add_entry(l, taken.entry, picture->bytes, image.file);
    return taken;
}

// ---- files as they are --------------------------------------------------------------------

void take_entries(lowering& l)
{
    for (const auto& made : l.show.things) {
        const entry_thing* entry = as<entry_thing>(made.get());
        std::vector<uint8_t> bytes;
        if (entry == nullptr)
            continue;
        const std::string path = find_file(l, entry->file, made->place);
        if (path.empty() || !read_file(l, path, made->place, bytes))
            continue;
        const std::string name = !entry->name.empty() ? entry->name : base_of(entry->file);
        if (name.size() >= pack_name_size) {
            add_problem(l.built.problems, problem_error, made->place,
                "\"" + name
                    + "\" is longer than the 31 bytes of an entry's name: give it one, { name = \"...\" } behind the "
                      "file.");
            continue;
        }
        const bool leads_away = name[0] == '/' || name.find("..") != std::string::npos;
        if (leads_away && !l.show.keep_order) { // opened packs keep the names that they have
            add_problem(l.built.problems, problem_error, made->place,
                "the name \"" + name
                    + "\" leads out of a folder: write one that begins with a letter and has no \"..\".");
            continue;
        }
        const bool replaces = entry->is_document && (name == "demo.xmlz" || name == "loading.xmlz");
        if (!replaces && !l.names.taken.insert(name).second)
            add_problem(
                l.built.problems, problem_error, made->place, "the pack has an entry \"" + name + "\" already.");
        else
            add_entry(l, name, entry->is_document ? enveloped(l.show, bytes) : std::move(bytes), entry->file);
    }
}

taken_picture take_target(lowering& l, std::array<uint32_t, 2> size)
{
    const std::string wish = "target-" + std::to_string(size[0]) + "x" + std::to_string(size[1]) + ".png";
    std::string& name = l.names.by_source["target|" + wish];
    if (name.empty()) {
        name = free_name(l, wish);
        add_entry(l, name, keep_target(work_of(l.show), size), "");
    }
    return {name, 3};
}
