// Builds sources that a test writes, and reads what came of them as the player does.
#pragma once

#include "authoring/check/diff.h"
#include "authoring/check/record_fields.h"
#include "authoring/lua/source.h"
#include "content/pack.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

// A folder of its own, gone with its owner.
struct test_folder {
    std::string path;
    test_folder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "brimlow-show-XXXXXX").string();
        path = mkdtemp(name.data());
    }
    ~test_folder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    test_folder(const test_folder&) = delete;
    test_folder& operator=(const test_folder&) = delete;
};

inline void write_file(const test_folder& folder, const std::string& name, const std::string& text)
{
    const std::filesystem::path path = std::filesystem::path(folder.path) / name;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

// A file of the tests' own shows.
inline void copy_file(const test_folder& folder, const std::string& from, const std::string& name)
{
    const std::filesystem::path path = std::filesystem::path(folder.path) / name;
    std::filesystem::create_directories(path.parent_path());
    std::filesystem::copy_file(std::filesystem::path(BRIMLOW_SOURCE_DIR "/productions") / from, path);
}

struct built_source {
    built_show built;
    std::vector<uint8_t> pack; // empty: nothing to be played
    owned_pack file;
    owned_read_document demo, loading;
    std::string told;  // errors and warnings, "3: text" each
    std::string noted; // notes, likewise
};

inline built_source build_folder(const test_folder& folder)
{
    built_source b;
    build_source({folder.path, "show.lua"}, b.built);
    for (const show_problem& problem : b.built.problems) {
        std::string& lines = problem.severity == problem_note ? b.noted : b.told;
        lines += (lines.empty() ? "" : "\n") + std::to_string(problem.line) + ": " + problem.text;
    }
    if (has_errors(b.built.problems) || b.built.entries.empty())
        return b;
    b.pack = pack_bytes(b.built.entries);
    b.file.reset(pack_open_bytes(b.pack));
    b.demo = read_packed_document(show_document_name, b.file.get());
    b.loading = read_packed_document(loading_document_name, b.file.get());
    return b;
}

inline built_source build_text(const std::string& source)
{
    const test_folder folder;
    write_file(folder, "show.lua", source);
    return build_folder(folder);
}

// What a source would show, on a track of its own: `words` make the objects that stand in the list `objects`.
inline built_source build_scene(const std::string& words, const std::string& objects)
{
    return build_text(words + "\ntrack { scene \"s\" { " + objects + " } { from = 0, to = 100 } }");
}

inline uint32_t records(const built_source& b, uint32_t section)
{
    return b.demo != nullptr ? record_count(*b.demo, section) : 0;
}

inline std::string value_in(const field_list& fields, const std::string& name)
{
    for (const record_field& field : fields)
        if (field.name == name)
            return field.value;
    return "no field " + name;
}

// A field as it was read, by the names of record_fields.h: "0.5", "function 3".
inline std::string field_of(const built_source& b, uint32_t section, uint32_t record, const std::string& name)
{
    if (record > records(b, section))
        return "no record; " + b.told;
    return value_in(fields_of_record(*b.demo, section, record).fields, name);
}

inline std::string part_of(
    const built_source& b, uint32_t section, uint32_t record, uint32_t part, const std::string& name)
{
    if (record > records(b, section))
        return "no record; " + b.told;
    const record_fields fields = fields_of_record(*b.demo, section, record);
    return part <= fields.parts.size() ? value_in(fields.parts[part - 1], name) : "no part";
}

// Several of them, with a blank between each.
inline std::string parts_of(
    const built_source& b, uint32_t section, uint32_t record, uint32_t part, const std::vector<std::string>& names)
{
    std::string all;
    for (const std::string& name : names)
        all += (all.empty() ? "" : " ") + part_of(b, section, record, part, name);
    return all;
}

inline std::string fields_of(
    const built_source& b, uint32_t section, uint32_t record, const std::vector<std::string>& names)
{
    std::string all;
    for (const std::string& name : names)
        all += (all.empty() ? "" : " ") + field_of(b, section, record, name);
    return all;
}

inline uint32_t number_of(const std::string& text)
{
    return static_cast<uint32_t>(std::strtoul(text.c_str(), nullptr, 10));
}

// How many parts a record has: segments, objects, clips.
inline size_t part_count(const built_source& b, uint32_t section, uint32_t record)
{
    return record <= records(b, section) ? fields_of_record(*b.demo, section, record).parts.size() : 0;
}

// The text of a document, as it stands in the pack.
inline std::string text_of_document(const built_source& b, uint32_t document = 0)
{
    return b.built.documents[document] != nullptr ? document_text(*b.built.documents[document]) : "";
}
