#include "authoring/check/inspect.h"

#include "authoring/asset/music_check.h"
#include "authoring/asset/picture_import.h"
#include "authoring/asset/pixels.h"
#include "content/file_bytes.h"
#include "content/owners.h"
#include "content/pack.h"
#include "content/printable.h"
#include "content/xml.h"
#include "content/xmlz.h"
#include "model/document.h"
#include "model/image_decode.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string_view>

namespace {

// Where the bytes come from, and what may lie beside them.
struct inspected_source {
    const pack_file* pack; // null: a file
    std::string folder;    // of a file, with its last "/"
};

struct bytes_read {
    owned_block<uint8_t> bytes;
    uint32_t size;
};

} // namespace

constexpr uint32_t largest_file = 1u << 30;

// ---- documents -----------------------------------------------------------------------------

static uint64_t ticks_of(const xml_node& clip, const char* name)
{
    const char* text = xml_get_attribute(&clip, name);
    const long ticks = text != nullptr ? std::strtol(text, nullptr, 10) : 0;
    return static_cast<uint64_t>(std::clamp(ticks, 0L, 1L << 31));
}

static void look_at_tracks(const xml_node& timeline, inspected_document_facts& facts)
{
    for (const xml_node* track = timeline.first_child; track != nullptr; track = track->next_sibling) {
        uint64_t end = 0;
        for (const xml_node* clip = track->first_child; clip != nullptr; clip = clip->next_sibling) {
            end += ticks_of(*clip, "space_before") + ticks_of(*clip, "length");
            ++facts.clips;
        }
        ++facts.tracks;
        facts.ticks = std::max(facts.ticks, end);
    }
}

static uint32_t count_children(const xml_node& node)
{
    uint32_t count = 0;
    for (const xml_node* child = node.first_child; child != nullptr; child = child->next_sibling)
        ++count;
    return count;
}

static void look_at_document(const char* text, inspection& found)
{
    const owned_tree tree(xml_parse(text));
    const xml_node* element = tree != nullptr ? tree->first_child : nullptr;
    found.kind = inspected_document;
    const char* title = xml_get_attribute(element, "name");
    found.document.title = title != nullptr ? title : "";
    uint32_t number = 0;
    for (const xml_node* node = element != nullptr ? element->first_child : nullptr; node != nullptr;
         node = node->next_sibling) {
        ++number;
        if (number >= no_more_sections)
            continue;
        found.document.sections.push_back({section_name(number), count_children(*node)});
        if (number == section_timeline)
            look_at_tracks(*node, found.document);
        const char* music = number == section_music ? xml_get_attribute(node, "file") : nullptr;
        found.document.music = music != nullptr ? music : found.document.music;
    }
    if (number < section_timeline)
        found.problems.push_back("has " + std::to_string(number) + " of the 14 sections that a document needs.");
    if (number >= no_more_sections)
        found.notes.push_back("has " + std::to_string(number) + " sections, of which the player reads 15.");
}

// A text that may be a document: it begins with a tag, behind blanks or a mark of UTF-8.
static bool begins_with_tag(std::span<const uint8_t> bytes)
{
    std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (text.starts_with("\xEF\xBB\xBF"))
        text.remove_prefix(3);
    const size_t at = text.find_first_not_of(" \t\r\n");
    return at != std::string_view::npos && text[at] == '<';
}

// ---- meshes --------------------------------------------------------------------------------

static void look_at_box(const mesh_arrays& arrays, inspection& found)
{
    inspected_mesh_facts& facts = found.mesh;
    bool finite = true;
    for (uint32_t vertex = 0; vertex < arrays.vertex_count; ++vertex)
        for (uint32_t axis = 0; axis < 3; ++axis) {
            const float value = arrays.positions[vertex * 3 + axis];
            finite = finite && std::isfinite(value) && std::isfinite(arrays.normals[vertex * 3 + axis]);
            facts.low[axis] = vertex == 0 ? value : std::min(facts.low[axis], value);
            facts.high[axis] = vertex == 0 ? value : std::max(facts.high[axis], value);
        }
    if (!finite)
        found.problems.push_back("has positions or normals that are no numbers.");
}

static void look_at_triangles(const mesh_arrays& arrays, inspected_mesh_facts& facts)
{
    std::vector<bool> used(arrays.vertex_count);
    for (uint32_t i = 0; i + 2 < arrays.index_count; i += 3) {
        const uint16_t* corner = arrays.indices + i;
        for (uint32_t k = 0; k < 3; ++k)
            used[corner[k]] = true;
        if (corner[0] == corner[1] || corner[1] == corner[2] || corner[2] == corner[0])
            ++facts.empty_triangles;
    }
    facts.unused_vertices = static_cast<uint32_t>(std::count(used.begin(), used.end(), false));
}

// `bytes` is aligned for floats and stays as it is. False when it is no mesh, with the reason.
static bool look_at_mesh(uint8_t* bytes, uint32_t size, inspection& found, std::string& fault)
{
    mesh_arrays arrays = {};
    fault = lay_out_mesh(bytes, size, arrays);
    if (!fault.empty())
        return false;
    found.kind = inspected_mesh;
    found.mesh.vertices = arrays.vertex_count;
    found.mesh.coordinate_sets = arrays.texcoord_sets;
    found.mesh.triangles = arrays.index_count / 3;
    look_at_box(arrays, found);
    look_at_triangles(arrays, found.mesh);
    const uint64_t used = 4 + uint64_t{arrays.vertex_count} * (24 + 8 * arrays.texcoord_sets) + arrays.index_count * 2;
    if (used < size)
        found.notes.push_back(
            "has " + std::to_string(size - used) + " bytes behind its last triangle, which are dropped.");
    return true;
}

// ---- pictures ------------------------------------------------------------------------------

static alpha_use alpha_of(const pixel_block& pixels)
{
    if (pixels.components != 4)
        return alpha_none;
    alpha_use use = alpha_opaque;
    for (size_t i = 3; i < pixels.bytes.size(); i += 4) {
        if (pixels.bytes[i] != 0 && pixels.bytes[i] != 255)
            return alpha_soft;
        if (pixels.bytes[i] == 0)
            use = alpha_on_or_off;
    }
    return use;
}

static bool read_beside(const inspected_source& source, const std::string& name, bytes_read& read)
{
    uint8_t* bytes = nullptr;
    const bool is_there = source.pack != nullptr
        ? pack_read_entry(source.pack, name.c_str(), &bytes, &read.size) == pack_found
        : read_whole_file((source.folder + name).c_str(), largest_file, &bytes, &read.size);
    read.bytes.reset(bytes);
    return is_there;
}

static void look_for_level(
    const inspected_source& source, const imported_picture& base, uint32_t level, inspection& found)
{
    const std::string name = name_of_level(found.name.c_str(), level).text;
    bytes_read read = {};
    if (name.empty() || !read_beside(source, name, read))
        return;
    imported_picture picture = {};
    std::string problem;
    if (import_level({read.bytes.get(), read.size}, base, level, false, picture, problem))
        found.picture.levels.push_back({name, picture.width, picture.height});
    else
        found.notes.push_back("has \"" + name + "\" beside it, which is not taken: it " + problem);
}

static bool look_at_picture(const inspected_source& source, std::span<const uint8_t> bytes, inspection& found)
{
    const char* format = picture_file_kind(bytes);
    imported_picture picture = {};
    std::string problem;
    if (!import_picture(bytes, {}, picture, problem)) {
        if (format[0] != '\0')
            found.problems.push_back(problem);
        return false;
    }
    found.kind = inspected_picture;
    found.picture = {format, picture.width, picture.height, picture.components, alpha_of(decoded_pixels(bytes)), {}};
    found.notes.insert(found.notes.end(), picture.notes.begin(), picture.notes.end());
    look_for_level(source, picture, 1, found);
    look_for_level(source, picture, 2, found);
    return true;
}

// ---- models --------------------------------------------------------------------------------

// A name in small letters ends in one of these.
static bool ends_in_one_of(const std::string& name, std::span<const std::string_view> endings)
{
    std::string small = name;
    for (char& letter : small)
        letter = static_cast<char>(letter >= 'A' && letter <= 'Z' ? letter + ('a' - 'A') : letter);
    return std::any_of(
        endings.begin(), endings.end(), [&](std::string_view ending) { return small.ends_with(ending); });
}

static bool begins_with_one_of(std::span<const uint8_t> bytes, std::span<const std::string_view> beginnings)
{
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    return std::any_of(
        beginnings.begin(), beginnings.end(), [&](std::string_view each) { return text.starts_with(each); });
}

// Whether a file is worth handing to the importer, which takes a while. Texts and pictures of other names are not.
static bool may_be_model(const std::string& name, std::span<const uint8_t> bytes)
{
    constexpr std::string_view ours[] = {".xml", ".xmlz"}; // documents, which an importer claims too
    constexpr std::string_view beginnings[]
        = {"glTF", "Kaydara FBX Binary", "BLENDER", "ply\n", "ply\r\n", "IDP2", "IDP3"};
    const std::string_view picture = picture_file_kind(bytes);
    if (!picture.empty() && picture != "SVG") // which any XML is
        return false;
    if (ends_in_one_of(name, ours))
        return name.ends_with(".mesh.xml");
    return is_model_name(name) || begins_with_one_of(bytes, beginnings);
}

static void look_at_shapes(const std::vector<shape_data>& shapes, inspected_model_facts& facts)
{
    facts.meshes = static_cast<uint32_t>(shapes.size());
    facts.low = {shapes[0].positions[0], shapes[0].positions[1], shapes[0].positions[2]};
    facts.high = facts.low;
    for (const shape_data& shape : shapes) {
        facts.vertices += shape_vertex_count(shape);
        facts.triangles += static_cast<uint32_t>(shape.triangles.size() / 3);
        uint32_t sets = 0;
        for (const std::vector<float>& set : shape.coordinates)
            sets += !set.empty();
        facts.coordinate_sets = std::max(facts.coordinate_sets, sets);
        for (size_t i = 0; i < shape.positions.size(); ++i) {
            facts.low[i % 3] = std::min(facts.low[i % 3], shape.positions[i]);
            facts.high[i % 3] = std::max(facts.high[i % 3], shape.positions[i]);
        }
    }
}

// Takes what `file` has apart; what keeps it from being a mesh is a problem.
static void look_into_model(const model_file& file, inspection& found)
{
    imported_model model;
    std::string problem;
    found.kind = inspected_model;
    found.model.format = file.scene.format;
    found.model.left_out = file.scene.left_out;
    if (!take_model(file, {}, model, problem)) {
        found.problems.push_back(problem.substr(printable(file.name).size() + 3)); // without the name in quotes
        return;
    }
    found.model.triangles_dropped = model.triangles_dropped;
    found.model.parts = std::move(model.parts);
    look_at_shapes(model.shapes, found.model);
    for (const std::string& name : model.files_taken)
        if (name != file.name)
            found.model.files.push_back(name);
    std::string refused;
    for (const std::string& name : model.files_refused)
        refused += (refused.empty() ? "\"" : ", \"") + name + "\"";
    if (!refused.empty())
        found.notes.push_back("asks for " + refused + " outside its own folder, which is not read.");
}

// False when the file is no model. Then a name that only models have is a problem; others may be anything.
static bool look_at_model(const std::string& path, std::span<const uint8_t> bytes, inspection& found)
{
    constexpr std::string_view of_others[]
        = {".ac", ".ask", ".csm", ".mesh", ".mot", ".off", ".pk3", ".prj", ".raw", ".scn", ".ter", ".uc", ".x", ".xml"};
    if (!may_be_model(found.name, bytes))
        return false;
    const model_file file = open_model(path);
    if (file.problem.empty() && file.mesh_content.empty()) { // else it is ours, and known otherwise
        look_into_model(file, found);
        return true;
    }
    if (is_model_name(found.name) && !ends_in_one_of(found.name, of_others))
        found.problems.push_back(file.problem + ".");
    return false;
}

// ---- fonts ---------------------------------------------------------------------------------

// False when the file is no font, which is a problem of one that is named like a font.
static bool look_at_font(const std::string& path, std::span<const uint8_t> bytes, inspection& found)
{
    using namespace std::string_view_literals;
    constexpr std::string_view endings[] = {".ttf", ".otf", ".ttc", ".otc", ".pfb", ".pfa", ".t1", ".t42", ".woff",
        ".woff2", ".afm", ".pfm", ".bdf", ".pcf"};
    constexpr std::string_view beginnings[] = {"\0\1\0\0"sv, "true\0"sv, "OTTO"sv, "ttcf"sv, "wOFF"sv, "wOF2"sv,
        "%!PS-AdobeFont"sv, "%!FontType"sv, "\x80\1"sv};
    const bool is_named = ends_in_one_of(found.name, endings);
    if (!is_named && !begins_with_one_of(bytes, beginnings))
        return false;
    const std::string quoted = "\"" + path + "\" ";
    std::string problem;
    if (!read_font_facts(path, 0, found.font.file, problem)) {
        if (is_named)
            found.problems.push_back(problem.starts_with(quoted) ? problem.substr(quoted.size()) : problem);
        return false;
    }
    found.kind = inspected_font;
    const font_options plain = {1, 0, 0, 0, default_font_detail, 0};
    imported_font font;
    if (import_font(path, plain, std::vector<bool>(font_letters, true), font, problem))
        found.font.lacking = std::move(font.lacking);
    else
        found.problems.push_back("cannot be taken whole: " + problem);
    return true;
}

// ---- all -----------------------------------------------------------------------------------

// The content of an envelope: a document, a mesh, or something else.
static void look_into_envelope(uint8_t* bytes, uint32_t size, inspection& found)
{
    found.in_envelope = true;
    found.unfolded = size;
    std::string fault;
    if (begins_with_tag({bytes, size}))
        look_at_document(reinterpret_cast<const char*>(bytes), found);
    else if (!look_at_mesh(bytes, size, found, fault))
        found.problems.push_back("holds an envelope whose content is no mesh: " + fault + ".");
}

// What lies bare: only tools take documents and meshes so, never the player.
static void look_at_bare(const inspected_source& source, uint8_t* bytes, uint32_t size, inspection& found)
{
    const std::span<const uint8_t> all(bytes, size);
    const bool is_mesh_name = found.name.ends_with(".mesh");
    std::string fault;
    if (begins_with_tag(all) && std::string_view(picture_file_kind(all)) != "SVG")
        look_at_document(reinterpret_cast<const char*>(bytes), found);
    else if (is_mesh_name && !look_at_mesh(bytes, size, found, fault))
        found.problems.push_back("is no mesh: " + fault + ".");
    else if (!is_mesh_name)
        look_at_picture(source, all, found);
    const bool needs_envelope = found.kind == inspected_document || found.kind == inspected_mesh;
    if (source.pack != nullptr && needs_envelope)
        found.problems.push_back(std::string("lies bare: in a pack a ")
            + (found.kind == inspected_mesh ? "mesh" : "document") + " has an envelope (brimlow-make wrap makes one).");
}

// `bytes` has a zero byte behind its size and is aligned for floats.
static void look_at_bytes(const inspected_source& source, uint8_t* bytes, uint32_t size, inspection& found)
{
    constexpr size_t bytes_told = 64;
    uint8_t* content = nullptr;
    uint32_t content_size = 0;
    const xmlz_status status = xmlz_inflate(bytes, size, &content, &content_size);
    const owned_block<uint8_t> unfolded(content);
    found.size = size;
    const bool wants_envelope = found.name.ends_with(".mesh") || found.name.ends_with(".xmlz");
    if (status == xmlz_ok)
        look_into_envelope(content, content_size, found);
    else if (status != xmlz_bare && wants_envelope)
        found.problems.push_back(std::string(xmlz_status_text(status)) + ".");
    else
        look_at_bare(source, bytes, size, found);
    if (found.kind == inspected_other)
        found.first_bytes.assign(reinterpret_cast<const char*>(bytes), std::min<size_t>(size, bytes_told));
}

// Whether a file is music, of whatever kind; then it is told as such.
static bool look_at_music(const std::string& path, std::span<const uint8_t> bytes, inspection& found)
{
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (!text.starts_with("OggS") && music_file_kind(text)[0] == '\0')
        return false;
    music_file_facts facts = {};
    std::string problem;
    found.kind = inspected_music;
    found.size = bytes.size();
    if (check_music(path, facts, problem))
        found.music = {music_seconds(facts), facts.samples_per_second, facts.channels};
    else
        found.problems.push_back(problem);
    found.notes.insert(found.notes.end(), facts.notes.begin(), facts.notes.end());
    return true;
}

static bool look_at_pack(const pack_file* pack, inspection& found)
{
    if (!pack_begins(pack))
        return false;
    found.kind = inspected_pack;
    found.size = pack->size;
    pack_slot slot;
    while (pack_read_slot(pack, found.entries, slot))
        ++found.entries;
    return true;
}

// A copy with a zero byte behind it, as documents are read.
static owned_block<uint8_t> with_end(const uint8_t* bytes, uint32_t size)
{
    owned_block<uint8_t> copy(static_cast<uint8_t*>(std::calloc(size_t{size} + 1, 1)));
    if (copy)
        std::copy_n(bytes, size, copy.get());
    return copy;
}

bool inspect_entry(const pack_file* pack, const std::string& name, inspection& found, std::string& problem)
{
    uint8_t* bytes = nullptr;
    uint32_t size = 0;
    const pack_status status
        = name.empty() ? pack_missing : pack_read_entry(pack, name.c_str(), &bytes, &size); // "" is the first of all
    const owned_block<uint8_t> read(bytes);
    const owned_block<uint8_t> content = status == pack_found ? with_end(bytes, size) : nullptr;
    if (!content) {
        problem = status == pack_missing ? "The pack has no entry \"" + printable(name) + "\"."
            : status == pack_damaged     ? "The entry \"" + printable(name) + "\" is damaged."
                                         : "The entry \"" + printable(name) + "\" does not fit in memory.";
        return false;
    }
    problem.clear();
    found = {};
    found.name = name;
    look_at_bytes({pack, ""}, content.get(), size, found);
    if (size >= 4 && std::memcmp(content.get(), "OggS", 4) == 0)
        found.notes.push_back("is music, which the player does not take from a pack: it lies beside it.");
    return true;
}

// Models and fonts are told by their names first: nothing else is as sure of a text, or of a picture by its content.
static void look_at_any_file(const std::string& path, uint8_t* bytes, uint32_t size, inspection& found)
{
    const std::span<const uint8_t> all(bytes, size);
    const inspection untouched = found;
    const bool is_ours_by_name = found.name.ends_with(".mesh");
    if (!is_ours_by_name && (look_at_font(path, all, found) || look_at_model(path, all, found))) {
        found.size = size;
        return;
    }
    look_at_bytes({nullptr, path.substr(0, path.rfind('/') + 1)}, bytes, size, found);
    inspection as_model = untouched;
    if (is_ours_by_name && found.kind == inspected_other && look_at_model(path, all, as_model)) { // others' ".mesh"
        as_model.size = size;
        found = std::move(as_model);
    }
}

bool inspect_file(const std::string& path, inspection& found, std::string& problem)
{
    const char* reason = nullptr;
    uint8_t* bytes = nullptr;
    uint32_t size = 0;
    const owned_pack pack(pack_open(open_plain_file(path.c_str(), &reason)));
    found = {};
    found.name = path.substr(path.rfind('/') + 1);
    if (look_at_pack(pack.get(), found)) { // of any size
        problem.clear();
        return true;
    }
    if (!pack || !read_whole_file(path.c_str(), largest_file, &bytes, &size, &reason)) {
        problem = "\"" + printable(path) + "\" cannot be read: " + reason + ".";
        return false;
    }
    const owned_block<uint8_t> content(bytes);
    problem.clear();
    if (!look_at_music(path, {bytes, size}, found))
        look_at_any_file(path, bytes, size, found);
    return true;
}
