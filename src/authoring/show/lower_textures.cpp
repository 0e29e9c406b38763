// Generated pictures and their graph, images, cube maps, pictures that move.
#include "authoring/show/lowering.h"

#include "authoring/show/entries.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <iterator>

// ---- generated ------------------------------------------------------------------------

authored_record* lower_picture(lowering& l, const thing& made)
{
    const use_of_thing use = {&made, nullptr, 0};
    if (const auto known = l.made.find(use); known != l.made.end())
        return known->second.front();
    const picture_thing& picture = *as<picture_thing>(&made);
    element node = {"image"};
    add_attribute(node, "type", value_of_int(picture.generator));
    for (const double value : picture.values)
        add_text(node, "value", value_of(value));
    authored_record* record = new_record(l, section_generated_images, std::move(node), made.place, made.name);
    l.made[use] = {record};
    return record;
}

// Outputs come last, when it is known who they are (finish_nodes): values stand behind them.
static element node_element(
    lowering& l, const std::string& name, uint8_t code, uint32_t format, uint32_t filter, const thing* picture)
{
    element node = {code == node_output ? "output" : "node"};
    add_attribute(node, "name", value_of(name));
    add_attribute(node, "type", value_of_int(code));
    add_attribute(node, "texture_format", value_of_int(format));
    add_attribute(node, "texture_filter", value_of_int(filter));
    if (code < node_invert) {
        element_value layer = picture != nullptr ? value_of(lower_picture(l, *picture)) : value_of_int(0);
        layer.shift = -1; // generated images count from 0
        add_attribute(node, "layer_id", layer);
    }
    return node;
}

authored_record* lower_node(lowering& l, const thing& made)
{
    const use_of_thing use = {&made, nullptr, 0};
    if (const auto known = l.made.find(use); known != l.made.end())
        return known->second.front();
    if (const output_thing* output = as<output_thing>(&made)) {
        element node = node_element(l, output->name, node_output, output->format, output->filter, nullptr);
        add_text(node, "input", value_of(output->node != nullptr ? lower_node(l, *output->node) : nullptr));
        authored_record* record = add_authored(document_of(l), section_texture_nodes, std::move(node), made.place);
        record->name = made.name;
        l.made[use] = {record};
        return record;
    }
    const node_thing& described = *as<node_thing>(&made);
    if (described.code == node_black)
        return nullptr;
    authored_record* input1 = described.input1 != nullptr ? lower_node(l, *described.input1) : nullptr;
    authored_record* input2 = described.input2 != nullptr ? lower_node(l, *described.input2) : nullptr;
    element node
        = node_element(l, described.name, described.code, described.format, described.filter, described.picture);
    add_text(node, "input", value_of(input1));
    if (described.input2 != nullptr)
        add_text(node, "input", value_of(input2));
    for (const double value : described.values)
        add_text(node, "value", value_of(value));
    authored_record* record = add_authored(document_of(l), section_texture_nodes, std::move(node), made.place);
    record->name = made.name;
    l.made[use] = {record};
    return record;
}

// A node lists those that it feeds, each once, in front of its parameters.
static void add_output(authored_record& from, const authored_record& to)
{
    std::vector<element>& children = from.content.children;
    auto at = children.begin();
    while (at != children.end() && at->name == "input")
        ++at;
    while (at != children.end() && at->name == "output") {
        if (at->text->link == &to)
            return;
        ++at;
    }
    element output = {"output"};
    output.text = value_of(&to);
    children.insert(at, std::move(output));
}

// The node that an input names. One that the source wrote as it stands names others by their numbers, which are
// their places: whoever writes numbers keeps the order.
static authored_record* input_of(const authored_record& node, size_t input, const std::vector<authored_record*>& nodes)
{
    const std::vector<element>& children = node.content.children;
    if (input >= children.size() || !children[input].text)
        return nullptr;
    if (const authored_record* link = children[input].text->link; link != nullptr)
        return const_cast<authored_record*>(link); // ours
    const bool is_input = input == 0 || children[input].name == "input";
    const uint64_t number = is_input ? std::strtoull(children[input].text->text.c_str(), nullptr, 10) : 0;
    return number >= 1 && number <= nodes.size() ? nodes[number - 1] : nullptr;
}

void finish_nodes(lowering& l)
{
    std::vector<authored_record*> nodes;
    for (const auto& record : document_of(l).records)
        if (record->section == section_texture_nodes)
            nodes.push_back(record.get());
    for (const authored_record* node : nodes) {
        for (size_t input = 0; input < 2; ++input) {
            if (authored_record* from = input_of(*node, input, nodes); from != nullptr && !from->is_raw)
                add_output(*from, *node);
        }
    }
}

// ---- of files ---------------------------------------------------------------------------

static element texture_element(const char* name, uint32_t format, uint32_t filter)
{
    element node = {name};
    add_attribute(node, "texture_format", value_of_int(format));
    add_attribute(node, "texture_filter", value_of_int(filter));
    return node;
}

// Puts the attributes of files in front of format and filter.
static void name_file(element& node, size_t at, const char* attribute, const std::string& entry)
{
    node.attributes.insert(node.attributes.begin() + static_cast<std::ptrdiff_t>(at), {attribute, value_of(entry)});
}

authored_record* lower_image(lowering& l, const thing& made)
{
    const use_of_thing use = {&made, nullptr, 0};
    if (const auto known = l.made.find(use); known != l.made.end())
        return known->second.front();
    const image_thing& image = *as<image_thing>(&made);
    const taken_picture picture = image.file.empty() ? take_target(l, image.size) : take_picture(l, made, image);
    const uint32_t format = image.format.value_or(picture.components == 4 ? 1 : 0);
    element node = texture_element("image", format, image.filter);
    name_file(node, 0, "filename", picture.entry);
    authored_record* record = image.file.empty()
        ? add_authored(document_of(l), section_image_textures, std::move(node), made.place) // each its own picture
        : new_record(l, section_image_textures, std::move(node), made.place, made.name);
    l.made[use] = {record};
    return record;
}

static authored_record* lower_cube_map(lowering& l, const thing& made)
{
    static constexpr const char* faces[cube_face_count] = {"xp", "xn", "yp", "yn", "zp", "zn"};
    const cube_map_thing& cube = *as<cube_map_thing>(&made);
    element node = texture_element("cube_map", cube.format, cube.filter);
    for (uint32_t face = 0; face < cube_face_count; ++face) {
        image_thing image;
        image.file = cube.files[face]; // empty: that has been said
        name_file(node, face, faces[face], image.file.empty() ? "" : take_picture(l, made, image).entry);
    }
    return new_record(l, section_cube_maps, std::move(node), made.place, made.name);
}

static authored_record* lower_dynamic(lowering& l, const thing& made)
{
    const dynamic_thing& dynamic = *as<dynamic_thing>(&made);
    element node = {"effect"};
    add_attribute(node, "name", value_of(dynamic.name));
    add_attribute(node, "type", value_of_int(dynamic.type));
    add_attribute(node, "texture_format", value_of_int(dynamic.format));
    add_attribute(node, "texture_filter", value_of_int(dynamic.filter));
    add_attribute(
        node, "resolution", value_of(std::to_string(dynamic.size[0]) + "x" + std::to_string(dynamic.size[1])));
    add_attribute(node, "bpp", value_of_int(dynamic.bits));
    for (const moving_number& param : dynamic.params)
        add_text(node, "p", value_of(function_of(l, param, made.place)));
    return add_authored(document_of(l), section_dynamic_textures, std::move(node), made.place);
}

static int32_t texture_kind_of(const thing& texture)
{
    if (as<output_thing>(&texture) != nullptr)
        return texture_generated;
    if (as<image_thing>(&texture) != nullptr)
        return texture_image;
    if (as<dynamic_thing>(&texture) != nullptr)
        return texture_dynamic;
    if (as<cube_map_thing>(&texture) != nullptr)
        return texture_cube;
    return -1;
}

lowered_texture lower_texture(lowering& l, const thing& texture)
{
    const int32_t type = texture_kind_of(texture);
    const use_of_thing use = {&texture, nullptr, 0};
    if (const auto known = l.made.find(use); known != l.made.end())
        return {known->second.front(), type};
    if (type == texture_generated)
        return {lower_node(l, texture), type};
    if (type == texture_image)
        return {lower_image(l, texture), type};
    if (type != texture_dynamic && type != texture_cube)
        return {nullptr, -1};
    authored_record* record = type == texture_dynamic ? lower_dynamic(l, texture) : lower_cube_map(l, texture);
    record->name = texture.name;
    l.made[use] = {record};
    return {record, type};
}
