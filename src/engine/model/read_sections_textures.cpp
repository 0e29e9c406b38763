// Generated images, texture nodes, dynamic textures.
#include "model/read_sections.h"

#include "model/catalogues.h"

#include <cstdlib>

// ---- generated images -------------------------------------------------------------

static generated_image* add_generated_image(const place& at)
{
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

bool read_generated_image(const place& at, const xml_node& node)
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
    return true;
}

// ---- texture nodes ----------------------------------------------------------------

static bool read_input(const place& at, const char* name, const xml_node& node, uint32_t& handle)
{
    int32_t value = 0;
    if (!read_text_int(place_of_part(at, name), node, value))
        return false;
    handle = static_cast<uint32_t>(value);
    return true;
}

static bool add_output(const place& at, const xml_node& child, texture_node& node)
{
    if (node.output_count == max_node_outputs)
        return fail(at, line_of("more than %u outputs.", max_node_outputs));
    int32_t handle = 0;
    if (!read_text_int(place_of_part(at, "output", node.output_count + 1), child, handle))
        return false;
    node.outputs[node.output_count++] = static_cast<uint32_t>(handle);
    return true;
}

// Everything behind the first child: "input", every "output" that follows it, and
// parameters, of which the first nine are kept. An "output" behind a parameter is a
// parameter too.
static bool read_node_connections(const place& at, const xml_node* child, texture_node& node)
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
    for (uint32_t index = 0; child != nullptr; child = child->next_sibling, ++index) {
        float value = 0.0f;
        if (!read_text_real(place_of_part(at, "parameter", index + 1), *child, value))
            return false;
        if (index < max_node_values)
            node.values[index] = value;
    }
    return true;
}

bool read_texture_node(const place& at, const xml_node& element)
{
    texture_node* node = add_record<texture_node>(at, at.reader.target->texture_table);
    if (node == nullptr)
        return false;
    node->state = node_pending;
    const char* name = read_attribute(at, element, "name");
    if (name == nullptr || !read_byte(at, element, "type", node->type)
        || !read_format_and_filter(at, element, node->texture_format, node->texture_filter))
        return false;
    copy_name(node->name, sizeof(node->name), name);
    if (!need_children(at, element, 1) || !read_input(at, "input1", *element.first_child, node->input1))
        return false;
    if (node->type == node_output)
        return true; // its other children are not read
    if (node->type < node_invert && !read_handle(at, element, "layer_id", node->layer_id))
        return false;
    return read_node_connections(at, element.first_child->next_sibling, *node);
}

static void check_texture_node(const place& at, const document& d, const texture_node& node)
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
    const uint32_t count = d.texture_table != nullptr ? d.texture_table->count : 0;
    for (uint32_t record = 1; record <= count; ++record) {
        if (const auto* node = table_record<texture_node>(d.texture_table, record))
            check_texture_node(place_of_record(reader, section_texture_nodes, record), d, *node);
    }
}

// ---- dynamic textures ---------------------------------------------------------------

// 512 has no name of its own: every other text means it.
static uint32_t side_of_resolution(const char* text)
{
    if (std::strcmp(text, "64x64") == 0)
        return 64;
    if (std::strcmp(text, "128x128") == 0)
        return 128;
    if (std::strcmp(text, "256x256") == 0)
        return 256;
    return 512;
}

bool read_dynamic_texture(const place& at, const xml_node& node)
{
    dynamic_texture* texture = add_record<dynamic_texture>(at, at.reader.target->dynamic_texture_table);
    if (texture == nullptr)
        return false;
    const char* name = read_attribute(at, node, "name");
    int32_t type = 0;
    if (name == nullptr || !read_int(at, node, "type", type)
        || !read_format_and_filter(at, node, texture->texture_format, texture->texture_filter))
        return false;
    if (type < 0 || type >= static_cast<int32_t>(effect_2d_kind_count))
        return fail(at, line_of("type %d is no 2-D effect.", type));
    const char* resolution = read_attribute(at, node, "resolution");
    const char* bpp = resolution != nullptr ? read_attribute(at, node, "bpp") : nullptr;
    if (bpp == nullptr)
        return false;
    copy_name(texture->name, sizeof(texture->name), name);
    texture->type = static_cast<uint32_t>(type);
    texture->width = texture->height = side_of_resolution(resolution);
    texture->bpp = std::strcmp(bpp, "8") == 0 ? 8 : 24;
    return effect2d_param_count(texture->type) == 0
        || read_function_handles(at, node, texture->functions, max_effect_2d_params);
}
