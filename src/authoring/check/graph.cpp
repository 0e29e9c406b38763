#include "authoring/check/graph.h"

#include "authoring/asset/drawing_text.h"
#include "authoring/check/graph_pictures.h"
#include "authoring/counted.h"
#include "content/xml.h"
#include "model/catalogues.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <compare>
#include <iterator>
#include <map>

// ---- what a graph is made of ----------------------------------------------------------------

namespace {

enum thing_kind : uint8_t {
    thing_generated_image,
    thing_node,
    thing_dynamic_texture,
    thing_image,
    thing_cube_map,
    thing_mesh,
    thing_effect,
    thing_font,
    thing_material,
    thing_scene,
    thing_track,
    thing_kind_count
};

struct thing {
    thing_kind kind;
    uint32_t number; // of its record, from 1

    auto operator<=>(const thing&) const = default;
};

enum use_kind : uint8_t {
    use_plain,
    use_place,    // a mesh on whose vertices copies are put
    use_as_target // a clip draws into it
};

struct use {
    thing user;
    thing used;
    uint32_t port; // of a track: its clip, from 1; 0: none
    use_kind kind;

    auto operator<=>(const use&) const = default;
};

struct graph_maker {
    document& d;
    const xml_node* root;
    const graph_options& options;
    std::vector<use> uses;          // sorted, each once
    std::map<thing, thing> holders; // of all that is used: who holds it in its box
    document_graph graph;
};

// How the boxes of a kind look, and where their records are.
struct thing_look {
    const char* letter; // what their names in dot begin with
    const char* word;
    const char* fill;
    document_section section;
};

} // namespace

constexpr thing nobody = {thing_kind_count, 0};

constexpr thing_look thing_looks[] = {
    {"g", "generated image", "#ffffff", section_generated_images},
    {"n", "node", "#ffffff", section_texture_nodes},
    {"d", "dynamic texture", "#ffffff", section_dynamic_textures},
    {"i", "image", "#ffffff", section_image_textures},
    {"c", "cube map", "#ffffff", section_cube_maps},
    {"m", "mesh", "#eef2f5", section_meshes},
    {"e", "mesh effect", "#e3f1f4", section_mesh_effects},
    {"f", "font", "#f3ecf8", section_fonts},
    {"a", "material", "#fdf2df", section_materials},
    {"s", "scene", "#e6f3e8", section_scenes},
    {"t", "track", "#f4f6f8", section_timeline},
};
static_assert(std::size(thing_looks) == thing_kind_count);

static std::string dot_name(const thing& t)
{
    return thing_looks[t.kind].letter + std::to_string(t.number);
}

// ---- texts ------------------------------------------------------------------------------------

// For a label of dot, which does not like an empty one.
static std::string label_text(std::string_view text)
{
    return text.empty() ? " " : escaped_text(text);
}

static std::string number_text(float value)
{
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

template <size_t size> static std::string text_of(const char (&field)[size])
{
    return {field, std::find(field, field + size, '\0')};
}

// ---- names ------------------------------------------------------------------------------------

static const xml_node* child_at(const xml_node* node, uint32_t number)
{
    const xml_node* child = node != nullptr ? node->first_child : nullptr;
    for (uint32_t i = 1; child != nullptr && i < number; ++i)
        child = child->next_sibling;
    return child;
}

static std::string attribute_of(const graph_maker& maker, const thing& t, const char* name)
{
    const xml_node* section = child_at(maker.root->first_child, thing_looks[t.kind].section);
    const char* value = xml_get_attribute(child_at(section, t.number), name);
    return value != nullptr ? value : "";
}

static std::string generator_name(const document& d, uint32_t number)
{
    const int32_t kind = d.generated_images[number - 1].params.kind;
    return kind >= 0 && kind < generator_kind_count ? texture_generators[kind].name : "";
}

static std::string own_name(const graph_maker& maker, const thing& t)
{
    const document& d = maker.d;
    switch (t.kind) {
    case thing_generated_image:
        return generator_name(d, t.number);
    case thing_node:
        return text_of(table_get(d.texture_table, t.number)->name);
    case thing_dynamic_texture:
        return text_of(table_get(d.dynamic_texture_table, t.number)->name);
    case thing_image:
    case thing_mesh:
        return attribute_of(maker, t, "filename");
    case thing_cube_map:
        return attribute_of(maker, t, "xp");
    case thing_effect:
        return text_of(table_get(d.effect_table, t.number)->name);
    case thing_scene:
        return text_of(table_get(d.scene_table, t.number)->name);
    case thing_font:
    case thing_material:
    case thing_track:
    case thing_kind_count:
        break;
    }
    return "";
}

static std::string numbered(const thing& t)
{
    return std::string(thing_looks[t.kind].word) + " " + std::to_string(t.number);
}

// The name in the source, else the document's; empty: none.
static std::string given_name(const graph_maker& maker, const thing& t)
{
    std::string name;
    if (maker.options.name_of != nullptr)
        name = maker.options.name_of(maker.options.context, thing_looks[t.kind].section, t.number);
    return name.empty() ? own_name(maker, t) : name;
}

static std::string shown_name(const graph_maker& maker, const thing& t)
{
    const std::string name = given_name(maker, t);
    return name.empty() ? numbered(t) : name;
}

// ---- who uses whom ------------------------------------------------------------------------------

static bool is_there(const document& d, const thing& t)
{
    switch (t.kind) {
    case thing_generated_image:
        return t.number >= 1 && t.number <= d.generated_image_count;
    case thing_node:
        return table_get(d.texture_table, t.number) != nullptr;
    case thing_dynamic_texture:
        return table_get(d.dynamic_texture_table, t.number) != nullptr;
    case thing_image:
        return table_get(d.image_texture_table, t.number) != nullptr;
    case thing_cube_map:
        return table_get(d.cube_map_table, t.number) != nullptr;
    case thing_mesh:
        return table_get(d.mesh_table, t.number) != nullptr;
    case thing_effect:
        return table_get(d.effect_table, t.number) != nullptr;
    case thing_font:
        return table_get(d.font_table, t.number) != nullptr;
    case thing_material:
        return table_get(d.material_table, t.number) != nullptr;
    case thing_scene:
        return table_get(d.scene_table, t.number) != nullptr;
    case thing_track:
    case thing_kind_count:
        break;
    }
    return false;
}

// What does not exist is left out.
static void add_use(
    graph_maker& maker, const thing& user, const thing& used, use_kind kind = use_plain, uint32_t port = 0)
{
    if (is_there(maker.d, used))
        maker.uses.push_back({user, used, port, kind});
}

static void add_node_uses(graph_maker& maker)
{
    for (auto [handle, node] : maker.d.texture_table) {
        const thing self = {thing_node, handle};
        if (node.type >= node_add_image && node.type <= node_minimum_image)
            add_use(maker, self, {thing_generated_image, node.layer_id + 1});
        add_use(maker, self, {thing_node, node.input1});
        add_use(maker, self, {thing_node, node.input2});
    }
}

static void add_material_uses(graph_maker& maker)
{
    constexpr thing_kind kinds[texture_kind_count] = {thing_node, thing_image, thing_dynamic_texture, thing_cube_map};
    for (auto [handle, material] : maker.d.material_table)
        for (const uint32_t texture : material.texture) {
            const object_reference* object = table_get(maker.d.object_table, texture);
            if (object != nullptr && object->type >= 0 && object->type < texture_kind_count)
                add_use(maker, {thing_material, handle}, {kinds[object->type], object->id});
        }
}

static void add_font_uses(graph_maker& maker)
{
    for (auto [handle, font] : maker.d.font_table)
        for (const glyph_record& glyph : font.glyphs) {
            add_use(maker, {thing_font, handle}, {thing_mesh, glyph.model});
            add_use(maker, {thing_font, handle}, {thing_material, glyph.material});
        }
}

static void add_object_uses(graph_maker& maker, const thing& scene, const scene_object& object)
{
    const uint32_t shape = resolve_scene_object(maker.d, object);
    if (object.type == object_model)
        add_use(maker, scene, {thing_mesh, shape});
    if (object.type == object_genmesh)
        add_use(maker, scene, {thing_effect, shape});
    if (object.type == object_text)
        add_use(maker, scene, {thing_font, object.font});
    add_use(maker, scene, {thing_material, object.material});
    for (uint32_t i = 0; i < std::min(object.manipulator_count, max_manipulators); ++i) {
        const manipulator_record& manipulator = object.manipulators[i];
        if (manipulator.type != manipulator_model_placer)
            continue;
        if (manipulator.model_type == placer_mesh)
            add_use(maker, scene, {thing_mesh, manipulator.model}, use_place);
        if (manipulator.model_type == placer_effect)
            add_use(maker, scene, {thing_effect, manipulator.model}, use_place);
    }
}

static void add_scene_uses(graph_maker& maker)
{
    for (auto [handle, scene] : maker.d.scene_table)
        for (uint32_t i = 0; scene.objects != nullptr && i < scene.object_count; ++i)
            add_object_uses(maker, {thing_scene, handle}, scene.objects[i]);
}

static bool draws_to_texture(const layer_record& clip)
{
    return clip.type < render_mode_count && render_modes[clip.type].uses_target != 0;
}

static void add_clip_uses(graph_maker& maker)
{
    const timeline& t = *maker.d.timeline;
    for (uint32_t track = 0; track < track_count; ++track)
        for (uint32_t i = 0; i < std::min(t.layer_count[track], layers_per_track); ++i) {
            const layer_record& clip = t.layers[track][i];
            add_use(maker, {thing_track, track + 1}, {thing_scene, clip.model_id}, use_plain, i + 1);
            if (draws_to_texture(clip))
                add_use(maker, {thing_track, track + 1}, {thing_image, clip.rtex}, use_as_target, i + 1);
        }
}

static void collect_uses(graph_maker& maker)
{
    add_node_uses(maker);
    if (maker.options.extent == graph_everything) {
        add_material_uses(maker);
        add_font_uses(maker);
        add_scene_uses(maker);
        if (maker.d.timeline != nullptr)
            add_clip_uses(maker);
    }
    std::sort(maker.uses.begin(), maker.uses.end());
    maker.uses.erase(std::unique(maker.uses.begin(), maker.uses.end()), maker.uses.end());
}

// ---- what stands in another's box -----------------------------------------------------------------

static bool is_used(const graph_maker& maker, const thing& t)
{
    return maker.holders.contains(t);
}

// The one scene whose box holds this, or the last font that has a mesh for a letter and shows none of them; of kind
// thing_kind_count: it has a box of its own.
static thing holder_of(const graph_maker& maker, const thing& t)
{
    const auto found = maker.holders.find(t);
    return found != maker.holders.end() ? found->second : nobody;
}

// Who may hold a thing in its box.
static bool may_hold(const thing& user, const thing& used)
{
    const bool is_part = used.kind == thing_mesh || used.kind == thing_effect || used.kind == thing_material;
    return (user.kind == thing_scene && is_part) || (user.kind == thing_font && used.kind == thing_mesh);
}

static void find_holders(graph_maker& maker)
{
    for (const use& u : maker.uses) {
        const thing user = may_hold(u.user, u.used) ? u.user : nobody;
        const auto [entry, is_first] = maker.holders.try_emplace(u.used, user);
        thing& holder = entry->second;
        const bool are_letters = holder.kind == thing_font && user.kind == thing_font;
        if (!is_first && holder != user)
            holder = are_letters ? user : nobody;
    }
}

// ---- boxes -----------------------------------------------------------------------------------------

// Small letters; the text may have several lines.
static std::string small(const std::string& text, const char* color = "#5b6b78")
{
    std::string lines;
    for (size_t at = 0; at <= text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size());
        lines += (at == 0 ? "" : "<BR/>") + label_text(text.substr(at, end - at));
        at = end + 1;
    }
    return std::string("<FONT POINT-SIZE=\"9\" COLOR=\"") + color + "\">" + lines + "</FONT>";
}

// The cell of a picture, whose colour is unlike all others; empty for none.
static std::string picture_cell(graph_maker& maker, std::vector<uint8_t> png)
{
    if (png.empty())
        return "";
    char color[16];
    std::snprintf(color, sizeof color, "#ec%04x", static_cast<unsigned>(maker.graph.pictures.size() & 0xFFFF));
    maker.graph.pictures.push_back({color, std::move(png)});
    const std::string side = std::to_string(thumbnail_side);
    return "<TR><TD FIXEDSIZE=\"TRUE\" WIDTH=\"" + side + "\" HEIGHT=\"" + side + "\" BGCOLOR=\"" + color
        + "\"></TD></TR>";
}

// A box with its name, a line of facts and further rows. `problem` in place of the facts draws it in red.
static void add_box(graph_maker& maker, const thing& t, const std::string& facts, const std::string& problem,
    const std::string& picture, const std::string& rows)
{
    const std::string color = problem.empty() ? "#b9c6d0" : "#c62828";
    const std::string name = shown_name(maker, t);
    std::string lines = facts;
    if (name != numbered(t))
        lines = numbered(t) + (facts.empty() ? "" : "\n" + facts);
    std::string label = "<TABLE BORDER=\"1\" COLOR=\"" + color
        + "\" STYLE=\"ROUNDED\" CELLBORDER=\"0\" CELLSPACING=\"3\"" + " CELLPADDING=\"2\" BGCOLOR=\""
        + thing_looks[t.kind].fill + "\">" + picture + "<TR><TD><B>" + label_text(name) + "</B>";
    if (!lines.empty())
        label += "<BR/>" + small(lines);
    if (!problem.empty())
        label += "<BR/>" + small(problem, "#c62828");
    label += "</TD></TR>" + rows + "</TABLE>";
    maker.graph.dot += "  " + dot_name(t) + " [label=<" + label + ">];\n";
}

static std::string unused_text(const graph_maker& maker, const thing& t)
{
    return is_used(maker, t) ? "" : "nobody uses it";
}

// "Repeat x 2, Repeat y 3": colours are left out, the picture shows them.
static std::string generator_facts(const generated_image& image)
{
    const int32_t kind = image.params.kind;
    if (kind < 0 || kind >= generator_kind_count)
        return "";
    const texture_generator_entry& entry = texture_generators[kind];
    std::string facts;
    for (uint32_t i = 0; i < entry.number_count; ++i) {
        const std::string_view name = entry.param_name[entry.colour_count + i];
        facts += (facts.empty() ? "" : "\n") + std::string(name.substr(0, name.find(" ("))) + " "
            + number_text(image.params.values[3 * entry.colour_count + i]);
    }
    return facts;
}

static std::string node_facts(const texture_node& node)
{
    const texture_operation_entry* operation = operation_of(node.type);
    if (node.type == node_output)
        return "texture";
    if (operation == nullptr)
        return "";
    std::string facts = operation->name;
    for (uint32_t i = 0; i < operation->param_count; ++i)
        facts += (i == 0 ? " " : ", ") + number_text(node.values[i]);
    return facts;
}

static std::string node_problem(const graph_maker& maker, const thing& t, const texture_node& node)
{
    if (node.pixels == nullptr)
        return "never computed: black";
    if (node.type != node_output && operation_of(node.type) == nullptr)
        return "no operation: black";
    const bool users_shown = node.type != node_output || maker.options.extent == graph_everything;
    return users_shown ? unused_text(maker, t) : "";
}

static void add_texture_boxes(graph_maker& maker)
{
    document& d = maker.d;
    for (uint32_t i = 0; i < d.generated_image_count; ++i) {
        const thing t = {thing_generated_image, i + 1};
        const generated_image& image = d.generated_images[i];
        add_box(maker, t, generator_facts(image), unused_text(maker, t),
            picture_cell(maker, generated_image_thumbnail(image)), "");
    }
    for (auto [handle, node] : d.texture_table) {
        const thing t = {thing_node, handle};
        add_box(maker, t, node_facts(node), node_problem(maker, t, node),
            picture_cell(maker, texture_node_thumbnail(node)), "");
    }
}

static void add_picture_boxes(graph_maker& maker)
{
    document& d = maker.d;
    for (auto [handle, image] : d.image_texture_table) {
        const thing t = {thing_image, handle};
        add_box(maker, t, std::to_string(image.width) + " x " + std::to_string(image.height), unused_text(maker, t),
            picture_cell(maker, image_texture_thumbnail(image)), "");
    }
    for (auto [handle, cube] : d.cube_map_table) {
        const thing t = {thing_cube_map, handle};
        add_box(maker, t, "six of " + std::to_string(cube.size), unused_text(maker, t),
            picture_cell(maker, cube_map_thumbnail(cube)), "");
    }
    for (auto [handle, texture] : d.dynamic_texture_table) {
        const thing t = {thing_dynamic_texture, handle};
        add_box(maker, t, std::string(effects_2d[texture.type].name) + ", " + std::to_string(texture.width),
            unused_text(maker, t), picture_cell(maker, dynamic_texture_thumbnail(texture, d)), "");
    }
}

static std::string mesh_facts(const mesh_record& mesh)
{
    return counted(mesh.arrays.index_count / 3, "triangle", "triangles");
}

static bool has_box(const graph_maker& maker, const thing& t)
{
    return holder_of(maker, t).kind == thing_kind_count;
}

static std::string font_facts(const graph_maker& maker, const thing& t, const font_record& font)
{
    const auto letters = std::count_if(std::begin(font.glyphs), std::end(font.glyphs), [&](const glyph_record& glyph) {
        return is_there(maker.d, {thing_mesh, glyph.model});
    });
    const auto meshes = std::count_if(
        maker.uses.begin(), maker.uses.end(), [&](const use& u) { return u.user == t && u.used.kind == thing_mesh; });
    return counted(static_cast<uint32_t>(letters), "letter", "letters") + ", "
        + counted(static_cast<uint32_t>(meshes), "mesh", "meshes");
}

static void add_shape_boxes(graph_maker& maker)
{
    for (auto [handle, mesh] : maker.d.mesh_table)
        if (const thing t = {thing_mesh, handle}; has_box(maker, t))
            add_box(maker, t, mesh_facts(mesh), unused_text(maker, t), "", "");
    for (auto [handle, effect] : maker.d.effect_table)
        if (const thing t = {thing_effect, handle}; has_box(maker, t))
            add_box(maker, t, effect_types[effect.type].name, unused_text(maker, t), "", "");
    for (auto [handle, font] : maker.d.font_table) {
        const thing t = {thing_font, handle};
        add_box(maker, t, font_facts(maker, t, font), unused_text(maker, t), "", "");
    }
    for (auto [handle, material] : maker.d.material_table)
        if (const thing t = {thing_material, handle}; has_box(maker, t))
            add_box(maker, t,
                material.blend_function < blend_kind_count ? blend_functions[material.blend_function].name : "",
                unused_text(maker, t), "", "");
}

static std::string row_of(const std::string& text, const std::string& port = "")
{
    return "<TR><TD ALIGN=\"LEFT\"" + (port.empty() ? "" : " PORT=\"" + port + "\"") + ">" + small(text) + "</TD></TR>";
}

// What stands in the scene's box, with ports for what it uses itself, and the scene's texts.
static std::string scene_rows(const graph_maker& maker, const thing& t, const scene_record& scene)
{
    std::string rows;
    std::string last;
    for (const use& u : maker.uses)
        if (u.user == t && holder_of(maker, u.used) == t && dot_name(u.used) != last) {
            const std::string name = given_name(maker, u.used);
            last = dot_name(u.used);
            rows += row_of(numbered(u.used) + (name.empty() ? "" : " " + name), last);
        }
    for (uint32_t i = 0; scene.objects != nullptr && i < scene.object_count; ++i)
        if (scene.objects[i].type == object_text)
            rows += row_of("\"" + text_of(scene.objects[i].text) + "\"");
    return rows;
}

// The clips of a track with their times.
static std::string clip_rows(const graph_maker& maker, uint32_t track)
{
    const timeline& t = *maker.d.timeline;
    std::string rows;
    uint64_t begin = 0;
    for (uint32_t i = 0; i < std::min(t.layer_count[track], layers_per_track); ++i) {
        const layer_record& clip = t.layers[track][i];
        begin += clip.space_before;
        std::string text = time_text(static_cast<double>(begin) / 100) + " to "
            + time_text(static_cast<double>(begin + clip.length) / 100);
        if (clip.type != render_simple && clip.type < render_mode_count)
            text += ", " + text_of(render_modes[clip.type].name);
        rows += row_of(text, "c" + std::to_string(i + 1));
        begin += clip.length;
    }
    return rows;
}

static void add_scene_boxes(graph_maker& maker)
{
    for (auto [handle, scene] : maker.d.scene_table) {
        const thing t = {thing_scene, handle};
        add_box(maker, t, counted(scene.object_count, "object", "objects"), is_used(maker, t) ? "" : "no clip shows it",
            "", scene_rows(maker, t, scene));
    }
    for (uint32_t track = 0; maker.d.timeline != nullptr && track < track_count; ++track)
        if (maker.d.timeline->layer_count[track] > 0)
            add_box(maker, {thing_track, track + 1}, counted(maker.d.timeline->layer_count[track], "clip", "clips"), "",
                "", clip_rows(maker, track));
}

// ---- arrows ------------------------------------------------------------------------------------------

// Where an arrow ends at a thing: its box, its line in another's, or its clip.
static std::string arrow_end(const graph_maker& maker, const thing& t, uint32_t clip)
{
    const thing holder = holder_of(maker, t);
    if (holder.kind == thing_scene)
        return dot_name(holder) + ":" + dot_name(t);
    return dot_name(t) + (clip != 0 ? ":c" + std::to_string(clip) : "");
}

static void add_arrow(graph_maker& maker, const use& u)
{
    const thing holder = holder_of(maker, u.used);
    if (holder == u.user || holder.kind == thing_font)
        return; // stands in it, or is counted there
    const std::string user = arrow_end(maker, u.user, u.port);
    const std::string used = arrow_end(maker, u.used, 0);
    switch (u.kind) {
    case use_plain:
        maker.graph.dot += "  " + used + " -> " + user + ";\n";
        break;
    case use_place:
        maker.graph.dot += "  " + used + " -> " + user + " [style=dashed];\n";
        break;
    case use_as_target: // back from the clip, against the order of all others
        maker.graph.dot += "  " + user + " -> " + used + " [color=\"#b3541e\", constraint=false];\n";
        break;
    }
}

document_graph make_document_graph(document& d, const xml_node* root, const graph_options& options)
{
    graph_maker maker = {d, root, options, {}, {}, {}};
    compute_node_pictures(d);
    collect_uses(maker);
    find_holders(maker);
    maker.graph.dot = "digraph show {\n"
                      "  graph [rankdir=LR, ranksep=0.9, nodesep=0.18, bgcolor=\"#ffffff\", charset=\"UTF-8\"];\n"
                      "  node [shape=none, margin=0, fontname=\"Helvetica,Arial,sans-serif\", fontsize=11];\n"
                      "  edge [color=\"#6f8697\", arrowsize=0.6];\n";
    add_texture_boxes(maker);
    if (options.extent == graph_everything) {
        add_picture_boxes(maker);
        add_shape_boxes(maker);
        add_scene_boxes(maker);
    }
    for (const use& u : maker.uses)
        add_arrow(maker, u);
    maker.graph.dot += "}\n";
    return std::move(maker.graph);
}
