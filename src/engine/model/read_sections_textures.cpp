// Generated images, texture nodes, dynamic textures.
#include "model/read_sections.h"

#include "model/catalogues.h"
#include "model/document.h"
#include "model/node_graph.h"

#include <cassert>
#include <cstdlib>
#include <iterator>

// ---- generated images -------------------------------------------------------------

static generated_image* add_generated_image(const document_place& at)
{
    assert(at.reader.target->generated_image_count <= record_table_capacity);
    document& d = *at.reader.target;
    if (d.generated_image_count >= record_table_capacity) {
        fail(at, line_of("more than %u records.", record_table_capacity));
        return nullptr;
    }
    const size_t size = (d.generated_image_count + 1) * sizeof(generated_image);
    auto* images = static_cast<generated_image*>(std::realloc(d.generated_images, size));
    if (images == nullptr) {
        fail(at, "not enough memory.");
        return nullptr;
    }
    d.generated_images = images;
    generated_image& image = images[d.generated_image_count++];
    image = {};
    at.reader.handle = d.generated_image_count;
    return &image;
}

// A colour is three parameters, a number one.
static void check_generator(const document_place& at, int32_t kind, uint32_t params)
{
    assert(params <= max_generator_values);
    if (!check_choice(at, "type", kind, generator_kind_count - 1, "the image is black"))
        return;
    const texture_generator_entry& entry = texture_generators[kind];
    check_parameter_count(at, entry.name, params, 3 * entry.colour_count + entry.number_count);
}

bool read_generated_image(const document_place& at, const xml_node& node)
{
    generated_image* image = add_generated_image(at);
    if (image == nullptr || !read_int(at, node, "type", image->params.kind))
        return false;
    uint32_t index = 0;
    for (const xml_node* child = node.first_child; child != nullptr; child = child->next_sibling, ++index) {
        if (index == max_generator_values)
            return fail(at, line_of("more than %u parameters.", max_generator_values));
        if (!read_text_real(place_of_part(at, "parameter", index + 1), *child, image->params.values[index]))
            return false;
    }
    check_generator(at, image->params.kind, index);
    return true;
}

// ---- texture nodes ----------------------------------------------------------------

static bool read_input(const document_place& at, const char* name, const xml_node& node, uint32_t& handle)
{
    int32_t value = 0;
    if (!read_text_int(place_of_part(at, name), node, value))
        return false;
    handle = static_cast<uint32_t>(value);
    return true;
}

static bool add_output(const document_place& at, const xml_node& child, texture_node& node)
{
    assert(node.output_count <= max_node_outputs);
    if (node.output_count == max_node_outputs)
        return fail(at, line_of("more than %u outputs.", max_node_outputs));
    int32_t handle = 0;
    if (!read_text_int(place_of_part(at, "output", node.output_count + 1), child, handle))
        return false;
    node.outputs[node.output_count++] = static_cast<uint32_t>(handle);
    return true;
}

static void check_operation(const document_place& at, const texture_node& node, uint32_t params)
{
    const texture_operation_entry* operation = operation_of(node.type);
    if (operation == nullptr)
        warn(at, line_of("type %d is no operation: the node computes nothing.", node.type));
    else
        check_parameter_count(at, operation->name, params, operation->param_count);
    if (params > max_node_values)
        warn(at, line_of("too many parameters: %u of %u; the others are dropped.", params, max_node_values));
}

// Everything behind the first child: "input", every "output" that follows it, and
// parameters, of which the first nine are kept. An "output" behind a parameter is a
// parameter too.
static bool read_node_connections(const document_place& at, const xml_node* child, texture_node& node)
{
    if (child != nullptr && is_named(*child, "input")) {
        if (!read_input(at, "input2", *child, node.input2))
            return false;
        child = child->next_sibling;
    }
    for (; child != nullptr && is_named(*child, "output"); child = child->next_sibling) {
        if (!add_output(at, *child, node))
            return false;
    }
    uint32_t index = 0;
    for (; child != nullptr; child = child->next_sibling, ++index) {
        const document_place here = place_of_part(at, "parameter", index + 1);
        float value = 0.0f;
        if (!read_text_real(here, *child, value))
            return false;
        if (is_named(*child, "input") || is_named(*child, "output"))
            warn(here, quoted(child->name) + " is read as a parameter: input 2 and then the outputs stand in front.");
        if (index < max_node_values)
            node.values[index] = value;
    }
    check_operation(at, node, index);
    return true;
}

bool read_texture_node(const document_place& at, const xml_node& element)
{
    texture_node* node = add_record(at, at.reader.target->texture_table);
    if (node == nullptr)
        return false;
    node->state = node_pending;
    const char* name = read_attribute(at, element, "name");
    if (name == nullptr || !read_byte(at, element, "type", node->type)
        || !read_format_and_filter(
            at, element, "the texture asks for mipmaps and has none", node->texture_format, node->texture_filter))
        return false;
    copy_name(at, node->name, sizeof(node->name), name);
    if (!need_children(at, element, 1) || !read_input(at, "input1", *element.first_child, node->input1))
        return false;
    if (node->type == node_output) {
        check_child_count(at, element, 1);
        return true;
    }
    if (node->type < node_invert && !read_handle(at, element, "layer_id", node->layer_id))
        return false;
    return read_node_connections(at, element.first_child->next_sibling, *node);
}

static void check_texture_node(const document_place& at, const document& d, const texture_node& node)
{
    check_handle(at, d.texture_table, "input1", node.input1);
    check_handle(at, d.texture_table, "input2", node.input2);
    for (uint32_t output = 0; output < node.output_count; ++output)
        check_handle(at, d.texture_table, "output", node.outputs[output]);
    const bool uses_image = node.type >= node_add_image && node.type <= node_minimum_image;
    if (uses_image && node.layer_id >= d.generated_image_count)
        warn(at, line_of("layer_id %d does not exist.", static_cast<int32_t>(node.layer_id)));
}

void check_texture_nodes(document_reader& reader)
{
    const document& d = *reader.target;
    for (auto [record, node] : d.texture_table) // handles are positions while a document is read
        check_texture_node(place_of_record(reader, section_texture_nodes, record), d, node);
    check_node_graph(reader);
}

// ---- dynamic textures ---------------------------------------------------------------

// Every other text means 512, too.
static uint32_t side_of_resolution(const document_place& at, const char* text)
{
    if (std::strcmp(text, "64x64") == 0)
        return 64;
    if (std::strcmp(text, "128x128") == 0)
        return 128;
    if (std::strcmp(text, "256x256") == 0)
        return 256;
    if (std::strcmp(text, "512x512") != 0)
        warn(at, "resolution " + quoted(text) + " is unknown: the texture is 512 x 512.");
    return 512;
}

static uint32_t read_bpp(const document_place& at, const char* text)
{
    if (std::strcmp(text, "8") == 0)
        return 8;
    if (std::strcmp(text, "24") != 0)
        warn(at, "bpp " + quoted(text) + " acts as \"24\".");
    return 24;
}

bool read_dynamic_texture(const document_place& at, const xml_node& node)
{
    dynamic_texture* texture = add_record(at, at.reader.target->dynamic_texture_table);
    if (texture == nullptr)
        return false;
    const char* name = read_attribute(at, node, "name");
    int32_t type = 0;
    if (name == nullptr || !read_int(at, node, "type", type)
        || !read_format_and_filter(at, node, "it acts as 1", texture->texture_format, texture->texture_filter))
        return false;
    if (type < 0 || type >= static_cast<int32_t>(effect_2d_kind_count))
        return fail(at, line_of("type %d is no 2-D effect.", type));
    const char* resolution = read_attribute(at, node, "resolution");
    const char* bpp = resolution != nullptr ? read_attribute(at, node, "bpp") : nullptr;
    if (bpp == nullptr)
        return false;
    copy_name(at, texture->name, sizeof(texture->name), name);
    texture->type = static_cast<uint32_t>(type);
    texture->width = texture->height = side_of_resolution(at, resolution);
    texture->bpp = read_bpp(at, bpp);
    if (type == effect_2d_normalmap && texture->bpp == 8)
        warn(at, line_of("\"%s\" with 8 bits a pixel stays black.", effects_2d[type].name));
    const parameter_list parameters = {effects_2d[type].name, effects_2d[type].param_count, max_effect_2d_params};
    return effect2d_param_count(texture->type) == 0 || read_function_handles(at, node, parameters, texture->functions);
}
