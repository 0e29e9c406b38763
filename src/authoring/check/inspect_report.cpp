#include "authoring/asset/drawing_text.h"
#include "authoring/check/inspect.h"
#include "content/printable.h"

#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>

namespace {

using json = nlohmann::ordered_json;

} // namespace

static const char* kind_word(inspected_kind kind)
{
    switch (kind) {
    case inspected_other:
        return "other";
    case inspected_document:
        return "document";
    case inspected_mesh:
        return "mesh";
    case inspected_picture:
        return "picture";
    case inspected_music:
        return "music";
    case inspected_pack:
        return "pack";
    }
    return "";
}

static const char* alpha_word(alpha_use alpha)
{
    switch (alpha) {
    case alpha_none:
        return "none";
    case alpha_opaque:
        return "opaque everywhere";
    case alpha_on_or_off:
        return "on or off";
    case alpha_soft:
        return "soft";
    }
    return "";
}

// ---- lines -----------------------------------------------------------------------------------

static std::string number_text(float value)
{
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

static std::string counted(uint64_t count, const char* one, const char* many)
{
    return grouped_text(count) + " " + (count == 1 ? one : many);
}

static std::string point_text(const std::array<float, 3>& point)
{
    return "(" + number_text(point[0]) + ", " + number_text(point[1]) + ", " + number_text(point[2]) + ")";
}

static std::string document_lines(const inspected_document_facts& facts)
{
    std::string text;
    if (!facts.title.empty())
        text += "  title: " + printable(facts.title) + "\n";
    text += "  length: " + time_text(static_cast<double>(facts.ticks) / 100) + " (" + grouped_text(facts.ticks)
        + " ticks), " + counted(facts.tracks, "track", "tracks") + ", " + counted(facts.clips, "clip", "clips") + "\n";
    if (!facts.music.empty())
        text += "  music: " + printable(facts.music) + "\n";
    for (size_t i = 0; i < facts.sections.size(); ++i) {
        const std::string number = std::to_string(i + 1);
        const std::string count = grouped_text(facts.sections[i].records);
        const std::string name = facts.sections[i].name;
        text += "  " + std::string(2 - std::min<size_t>(number.size(), 2), ' ') + number + "  " + name
            + std::string(20 - std::min<size_t>(name.size(), 20), ' ')
            + std::string(6 - std::min<size_t>(count.size(), 6), ' ') + count + "\n";
    }
    return text;
}

static std::string mesh_lines(const inspected_mesh_facts& facts)
{
    std::string text = "  " + counted(facts.vertices, "vertex", "vertices") + ", "
        + counted(facts.triangles, "triangle", "triangles") + ", " + counted(facts.coordinate_sets, "set", "sets")
        + " of texture coordinates\n";
    if (facts.vertices > 0)
        text += "  box: " + point_text(facts.low) + " to " + point_text(facts.high) + "\n";
    if (facts.unused_vertices > 0)
        text += "  " + counted(facts.unused_vertices, "vertex", "vertices") + " of no triangle\n";
    if (facts.empty_triangles > 0)
        text += "  " + counted(facts.empty_triangles, "triangle", "triangles") + " without a face\n";
    return text;
}

static std::string picture_lines(const inspected_picture_facts& facts)
{
    std::string text = "  " + (facts.format.empty() ? "" : facts.format + ", ") + std::to_string(facts.width) + " x "
        + std::to_string(facts.height) + " pixels, " + (facts.components == 4 ? "RGBA" : "RGB") + "\n";
    if (facts.alpha != alpha_none)
        text += std::string("  alpha: ") + alpha_word(facts.alpha) + "\n";
    for (const inspected_level& level : facts.levels)
        text += "  ready-made level: " + printable(level.name) + ", " + std::to_string(level.width) + " x "
            + std::to_string(level.height) + "\n";
    return text;
}

static std::string music_lines(const inspected_music_facts& facts)
{
    if (facts.channels == 0)
        return "";
    const auto ticks = static_cast<uint64_t>(facts.seconds * 100);
    return "  length: " + time_text(facts.seconds) + " (" + grouped_text(ticks) + " ticks)\n  "
        + grouped_text(facts.samples_per_second) + " samples a second, "
        + counted(facts.channels, "channel", "channels") + "\n";
}

// Rows of sixteen bytes, as numbers and as letters.
static std::string byte_lines(const std::string& bytes)
{
    constexpr size_t row = 16;
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (size_t at = 0; at < bytes.size(); at += row) {
        std::string numbers;
        std::string letters;
        for (size_t i = at; i < std::min(at + row, bytes.size()); ++i) {
            const auto byte = static_cast<unsigned char>(bytes[i]);
            numbers += std::string{digits[byte >> 4], digits[byte & 15], ' '};
            letters += byte >= 32 && byte < 127 ? bytes[i] : '.';
        }
        text += "  " + numbers + std::string(3 * row - numbers.size() + 1, ' ') + letters + "\n";
    }
    return text;
}

static std::string kind_lines(const inspection& found)
{
    switch (found.kind) {
    case inspected_other:
        return byte_lines(found.first_bytes);
    case inspected_document:
        return document_lines(found.document);
    case inspected_mesh:
        return mesh_lines(found.mesh);
    case inspected_picture:
        return picture_lines(found.picture);
    case inspected_music:
        return music_lines(found.music);
    case inspected_pack:
        return "  " + counted(found.entries, "entry", "entries") + "\n";
    }
    return "";
}

std::string inspection_text(const inspection& found)
{
    std::string text = printable(found.name) + ": ";
    if (found.kind != inspected_other)
        text += std::string(found.kind == inspected_music ? "" : "a ") + kind_word(found.kind) + ", ";
    text += counted(found.size, "byte", "bytes");
    if (found.in_envelope)
        text += ", " + grouped_text(found.unfolded) + " out of its envelope";
    text += "\n" + kind_lines(found);
    for (const std::string& problem : found.problems)
        text += "  error: " + printable(problem) + "\n";
    for (const std::string& note : found.notes)
        text += "  note: " + printable(note) + "\n";
    return text;
}

// ---- JSON --------------------------------------------------------------------------------------

static json document_json(const inspected_document_facts& facts)
{
    json sections = json::array();
    for (const inspected_section& section : facts.sections)
        sections.push_back({{"name", section.name}, {"records", section.records}});
    return {{"title", facts.title}, {"music", facts.music}, {"tracks", facts.tracks}, {"clips", facts.clips},
        {"ticks", facts.ticks}, {"sections", sections}};
}

// A number that is none has no word in JSON: it becomes null.
static json mesh_json(const inspected_mesh_facts& facts)
{
    return {{"vertices", facts.vertices}, {"triangles", facts.triangles}, {"coordinate_sets", facts.coordinate_sets},
        {"box", {{"low", facts.low}, {"high", facts.high}}}, {"unused_vertices", facts.unused_vertices},
        {"empty_triangles", facts.empty_triangles}};
}

static json picture_json(const inspected_picture_facts& facts)
{
    json levels = json::array();
    for (const inspected_level& level : facts.levels)
        levels.push_back({{"name", level.name}, {"width", level.width}, {"height", level.height}});
    return {{"format", facts.format}, {"width", facts.width}, {"height", facts.height},
        {"components", facts.components}, {"alpha", alpha_word(facts.alpha)}, {"levels", levels}};
}

static json music_json(const inspected_music_facts& facts)
{
    return {{"seconds", facts.seconds}, {"samples_per_second", facts.samples_per_second}, {"channels", facts.channels}};
}

static json bytes_json(const std::string& bytes)
{
    json numbers = json::array();
    for (const char byte : bytes)
        numbers.push_back(static_cast<unsigned char>(byte));
    return numbers;
}

std::string inspection_json(const inspection& found)
{
    json all = {{"name", found.name}, {"kind", kind_word(found.kind)}, {"size", found.size}};
    if (found.in_envelope)
        all["unfolded"] = found.unfolded;
    switch (found.kind) {
    case inspected_other:
        all["first_bytes"] = bytes_json(found.first_bytes);
        break;
    case inspected_document:
        all["document"] = document_json(found.document);
        break;
    case inspected_mesh:
        all["mesh"] = mesh_json(found.mesh);
        break;
    case inspected_picture:
        all["picture"] = picture_json(found.picture);
        break;
    case inspected_music:
        all["music"] = music_json(found.music);
        break;
    case inspected_pack:
        all["entries"] = found.entries;
        break;
    }
    all["problems"] = found.problems;
    all["notes"] = found.notes;
    return all.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}
