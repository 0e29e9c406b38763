#include "editing/xml_edit.h"

#include "content/file_bytes.h"
#include "content/owners.h"
#include "content/text_buffer.h"
#include "content/xml_nodes.h"
#include "content/xmlz.h"

#include <algorithm>
#include <cassert>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

static constexpr size_t number_text_size = 32; // longer numbers are cut

static char* copy_into(xml_node* node, const char* text)
{
    return text ? xml_take_copy(node, text, std::strlen(text)) : nullptr;
}

// ---- files -----------------------------------------------------------------------

xml_node* xml_load_file(const char* path)
{
    uint8_t* bytes = nullptr;
    uint32_t size = 0;
    if (!path || !read_whole_file(path, xmlz_max_size, &bytes, &size))
        return nullptr;
    const owned_block<uint8_t> text(bytes);
    return xml_parse(reinterpret_cast<const char*>(text.get()));
}

// ---- changing ----------------------------------------------------------------------

char* xml_set_attribute(xml_node* node, const char* name, const char* value)
{
    if (!node || !name)
        return nullptr;
    xml_attribute* attribute = xml_find_attribute(node, name);
    if (!attribute) {
        char* name_copy = copy_into(node, name);
        attribute = name_copy ? xml_append_attribute(node, name_copy) : nullptr;
        if (!attribute)
            return nullptr;
    }
    attribute->value = copy_into(node, value);
    return attribute->value;
}

char* xml_set_attribute_u32(xml_node* node, const char* name, uint32_t value)
{
    char text[number_text_size];
    std::snprintf(text, sizeof text, "%u", value);
    return xml_set_attribute(node, name, text);
}

char* xml_set_attribute_i32(xml_node* node, const char* name, int32_t value)
{
    char text[number_text_size];
    std::snprintf(text, sizeof text, "%d", value);
    return xml_set_attribute(node, name, text);
}

char* xml_set_attribute_f32(xml_node* node, const char* name, float value)
{
    char text[number_text_size];
    std::snprintf(text, sizeof text, "%f", static_cast<double>(value));
    return xml_set_attribute(node, name, text);
}

xml_node* xml_new_node(const char* name)
{
    xml_node* node = xml_new_tree(0);
    if (node)
        node->name = copy_into(node, name);
    return node;
}

xml_node* xml_add_child(xml_node* parent, const char* name)
{
    if (!parent)
        return nullptr;
    xml_node* last_child = parent->first_child;
    while (last_child && last_child->next_sibling)
        last_child = last_child->next_sibling;
    xml_node* child = xml_new_child(parent, last_child);
    if (child)
        child->name = copy_into(child, name);
    return child;
}

void xml_set_text(xml_node* node, const char* text)
{
    if (node)
        node->text = copy_into(node, text);
}

void xml_set_text_u32(xml_node* node, uint32_t value)
{
    char text[number_text_size];
    std::snprintf(text, sizeof text, "%u", value);
    xml_set_text(node, text);
}

void xml_set_text_f32(xml_node* node, float value)
{
    char text[number_text_size];
    std::snprintf(text, sizeof text, "%f", static_cast<double>(value));
    xml_set_text(node, text);
}

void xml_set_text_f32_precise(xml_node* node, float value)
{
    char text[number_text_size];
    std::snprintf(text, sizeof text, "%.12f", static_cast<double>(value));
    xml_set_text(node, text);
}

// ---- writing ---------------------------------------------------------------------

namespace {

struct xml_writer {
    char* text;
    uint32_t capacity;
    uint32_t used;
    bool failed;
};

} // namespace

static void put(xml_writer& writer, const char* piece)
{
    assert(piece != nullptr);
    writer.failed = writer.failed || !buffer_printf(&writer.text, &writer.capacity, &writer.used, "%s", piece);
}

static void put_indentation(xml_writer& writer, size_t depth)
{
    constexpr size_t widest_piece = text_buffer_piece_size - 2; // whole levels, short enough not to be cut
    for (size_t blanks = 2 * depth; blanks > 0 && !writer.failed;) {
        const size_t width = std::min(blanks, widest_piece);
        writer.failed
            = !buffer_printf(&writer.text, &writer.capacity, &writer.used, "%*s", static_cast<int>(width), "");
        blanks -= width;
    }
}

// The start tag up to its last attribute.
static void put_start(xml_writer& writer, const xml_node* node, size_t depth)
{
    assert(node->attribute_count == 0 || node->attributes != nullptr);
    put_indentation(writer, depth);
    put(writer, "<");
    if (node->name)
        put(writer, node->name);
    for (int32_t i = 0; i < node->attribute_count && !writer.failed; ++i) {
        const xml_attribute& attribute = node->attributes[i];
        put(writer, " ");
        if (attribute.name)
            writer.failed
                = writer.failed || !buffer_printf(&writer.text, &writer.capacity, &writer.used, "%s=", attribute.name);
        put(writer, "\"");
        if (attribute.value)
            put(writer, attribute.value);
        put(writer, "\"");
    }
}

static void put_end(xml_writer& writer, const xml_node* node, size_t depth)
{
    put_indentation(writer, depth);
    writer.failed = writer.failed
        || !buffer_printf(&writer.text, &writer.capacity, &writer.used, "</%s>\n", node->name ? node->name : "");
}

// Writes what does not depend on the children; true when they are still to come.
static bool put_node(xml_writer& writer, const xml_node* node, size_t depth)
{
    assert(node != nullptr);
    put_start(writer, node, depth);
    if (node->text) { // text and closing tag are one piece, and are cut as one
        writer.failed = writer.failed
            || !buffer_printf(
                &writer.text, &writer.capacity, &writer.used, ">%s</%s>\n", node->text, node->name ? node->name : "");
        return false;
    }
    put(writer, node->first_child ? ">\n" : "/>\n");
    return node->first_child != nullptr;
}

char* xml_write(const xml_node* node)
{
    xml_writer writer = {};
    std::vector<const xml_node*> open_nodes; // the way down, written up to their ">"
    while (node && !writer.failed) {
        if (put_node(writer, node, open_nodes.size())) {
            open_nodes.push_back(node);
            node = node->first_child;
            continue;
        }
        while (!open_nodes.empty() && !node->next_sibling && !writer.failed) {
            node = open_nodes.back();
            open_nodes.pop_back();
            put_end(writer, node, open_nodes.size());
        }
        node = open_nodes.empty() ? nullptr : node->next_sibling;
    }
    if (!writer.failed)
        return writer.text;
    std::free(writer.text);
    return nullptr;
}
