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
    case inspected_model:
        return "model";
    case inspected_font:
        return "font";
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

static std::string texture_text(const std::string& name)
{
    return name.starts_with('*') ? "one in the file itself" : "\"" + printable(name) + "\"";
}

static std::string sets_text(uint32_t sets)
{
    return counted(sets, "set", "sets") + " of texture coordinates";
}

// The names that a source may ask for as "part", and what they give.
static std::string part_line(const model_part& part)
{
    std::string names;
    for (const auto& [what, name] : {std::pair<const char*, const std::string&>{"node", part.node}, {"mesh", part.mesh},
             {"material", part.material}})
        if (!name.empty())
            names += std::string(names.empty() ? "" : ", ") + what + " \"" + printable(name) + "\"";
    std::string text = "    " + (names.empty() ? "without a name" : names) + ": "
        + counted(part.vertices, "vertex", "vertices") + ", " + counted(part.triangles, "triangle", "triangles") + ", "
        + counted(part.coordinate_sets, "set", "sets");
    for (size_t i = 0; i < part.textures.size(); ++i)
        text += (i > 0                              ? ", "
                        : part.textures.size() == 1 ? "; texture "
                                                    : "; textures ")
            + texture_text(part.textures[i]);
    return text + "\n";
}

static std::string left_out_line(const inspected_model_facts& facts)
{
    const model_left_out& out = facts.left_out;
    std::string text;
    const auto add = [&](uint32_t count, const char* one, const char* many) {
        if (count > 0)
            text += (text.empty() ? "" : ", ") + counted(count, one, many);
    };
    add(facts.triangles_dropped, "triangle without an area", "triangles without an area");
    add(out.other_faces, "point or line", "points and lines");
    add(out.animations, "animation", "animations");
    add(out.bones, "bone", "bones");
    add(out.lights, "light", "lights");
    add(out.cameras, "camera", "cameras");
    return text.empty() ? "" : "  left out: " + text + "\n";
}

static std::string model_lines(const inspected_model_facts& facts)
{
    constexpr size_t parts_told = 50;
    std::string text = facts.format.empty() ? "" : "  format: " + printable(facts.format) + "\n";
    if (facts.meshes > 0)
        text += "  becomes " + counted(facts.meshes, "mesh", "meshes") + ": "
            + counted(facts.vertices, "vertex", "vertices") + ", " + counted(facts.triangles, "triangle", "triangles")
            + ", " + sets_text(facts.coordinate_sets) + "\n  box: " + point_text(facts.low) + " to "
            + point_text(facts.high) + "\n";
    text += left_out_line(facts);
    for (const std::string& name : facts.files)
        text += "  reads: " + printable(name) + "\n";
    if (!facts.parts.empty())
        text += "  " + counted(facts.parts.size(), "part", "parts") + ":\n";
    for (size_t i = 0; i < std::min(facts.parts.size(), parts_told); ++i)
        text += part_line(facts.parts[i]);
    if (facts.parts.size() > parts_told)
        text += "    and " + grouped_text(facts.parts.size() - parts_told) + " more (--json has them all)\n";
    return text;
}

// Two digits behind the point.
static std::string share_text(double share)
{
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, share, std::chars_format::fixed, 2).ptr};
}

static std::string font_lines(const inspected_font_facts& facts, bool is_whole)
{
    const font_facts& file = facts.file;
    std::string text;
    if (!file.family.empty())
        text += "  " + printable(file.family) + (file.style.empty() ? "" : ", " + printable(file.style)) + "\n";
    if (!file.format.empty())
        text += "  format: " + printable(file.format) + "\n";
    if (file.faces > 1)
        text += "  the first of " + grouped_text(file.faces) + " faces\n";
    text += "  with height = 1, that of a capital: a small x " + share_text(file.small) + ", lines from "
        + share_text(file.above) + " above the base line to " + share_text(file.below) + " below; an em "
        + share_text(1 / file.capital) + "\n";
    if (!is_whole)
        return text;
    if (facts.lacking.empty())
        return text + "  has all " + std::to_string(font_letters) + " letters\n";
    text += "  lacks " + std::to_string(facts.lacking.size()) + " of " + std::to_string(font_letters) + " letters:";
    for (const std::string& letter : facts.lacking)
        text += " " + (letter == " " ? "the blank" : letter);
    return text + "\n";
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
    case inspected_model:
        return model_lines(found.model);
    case inspected_font:
        return font_lines(found.font, found.problems.empty());
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

static json model_json(const inspected_model_facts& facts)
{
    json parts = json::array();
    for (const model_part& part : facts.parts)
        parts.push_back({{"node", part.node}, {"mesh", part.mesh}, {"material", part.material},
            {"vertices", part.vertices}, {"triangles", part.triangles}, {"coordinate_sets", part.coordinate_sets},
            {"diffuse", part.diffuse}, {"textures", part.textures}});
    const model_left_out& out = facts.left_out;
    const json left_out = {{"empty_triangles", facts.triangles_dropped}, {"points_and_lines", out.other_faces},
        {"animations", out.animations}, {"bones", out.bones}, {"lights", out.lights}, {"cameras", out.cameras}};
    return {{"format", facts.format}, {"meshes", facts.meshes}, {"vertices", facts.vertices},
        {"triangles", facts.triangles}, {"coordinate_sets", facts.coordinate_sets},
        {"box", {{"low", facts.low}, {"high", facts.high}}}, {"left_out", left_out}, {"files", facts.files},
        {"parts", parts}};
}

static json font_json(const inspected_font_facts& facts)
{
    const font_facts& file = facts.file;
    return {{"family", file.family}, {"style", file.style}, {"format", file.format}, {"faces", file.faces},
        {"capital", file.capital}, {"small", file.small}, {"above", file.above}, {"below", file.below},
        {"lacking", facts.lacking}};
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
    case inspected_model:
        all["model"] = model_json(found.model);
        break;
    case inspected_font:
        all["font"] = font_json(found.font);
        break;
    case inspected_pack:
        all["entries"] = found.entries;
        break;
    }
    all["problems"] = found.problems;
    all["notes"] = found.notes;
    return all.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}
