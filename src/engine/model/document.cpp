#include "model/document.h"

#include "content/owners.h"
#include "content/pack.h"
#include "content/printable.h"
#include "content/xml.h"
#include "content/xml_fault.h"
#include "content/xmlz.h"

#include <cassert>
#include <cstddef>
#include <cstdlib>

std::string record_label(const document& d, uint32_t section, uint32_t record)
{
    assert(d.name != nullptr);
    return std::string(d.name) + ": " + section_label(section) + ", record " + std::to_string(record);
}

// ---- making and freeing -------------------------------------------------------------

void document_create(document& d, const char* name, timeline* t)
{
    assert(name != nullptr);
    d = {};
    d.name = name;
    d.timeline = t;
    for_each_table(d, []<typename record>(table<record>& records) { records = table_new<record>(); });
}

// Frees a block of malloc and forgets it.
template <typename element> static void release(element*& block)
{
    std::free(block);
    block = nullptr;
}

static void free_buffers(texture_node& node)
{
    release(node.pixels);
}

static void free_buffers(mesh_record& mesh)
{
    release(mesh.arrays.line_indices);
    release(mesh.data);
    mesh.arrays = {};
}

static void free_buffers(image_texture& image)
{
    release(image.pixels);
    release(image.level1);
    release(image.level2);
}

static void free_buffers(cube_map& cube)
{
    for (uint8_t*& face : cube.faces)
        release(face);
}

static void free_buffers(dynamic_texture& texture)
{
    if (texture.state != nullptr)
        release(texture.state->buffer);
    release(texture.state);
}

static void free_buffers(material_record& material)
{
    if (material.program != nullptr) {
        release(material.program->vertex_source);
        release(material.program->fragment_source);
    }
    release(material.program);
    release(material.custom_vertex_shader);
    release(material.custom_fragment_shader);
}

static void free_buffers(scene_record& scene)
{
    release(scene.objects);
    scene.object_count = 0;
}

// The states of mesh effects are freed by the effects' own room, before.
static void free_buffers(mesh_effect&) { }

// Records that own nothing. Every kind is named, so that a new one is asked what it owns.
static void free_buffers(animation_function&) { }
static void free_buffers(value_record&) { }
static void free_buffers(font_record&) { }
static void free_buffers(object_reference&) { }

template <typename record_type> static void free_buffers_of_table(const table<record_type>& records)
{
    for (auto [handle, record] : records)
        free_buffers(record);
}

void document_free_generated_images(document& d)
{
    assert(d.generated_image_count == 0 || d.generated_images != nullptr);
    for (uint32_t i = 0; i < d.generated_image_count; ++i)
        std::free(d.generated_images[i].pixels);
    release(d.generated_images);
    d.generated_image_count = 0;
    free_buffers_of_table(d.texture_table);
}

void document_free(document& d)
{
    document_free_generated_images(d);
    for_each_table(d, [](auto& records) {
        free_buffers_of_table(records);
        table_free(records);
    });
    timeline_free(d.timeline);
    d = {};
}

// ---- questions ------------------------------------------------------------------------

static const xml_node* first_section(const xml_node* root)
{
    return root != nullptr && root->first_child != nullptr ? root->first_child->first_child : nullptr;
}

uint32_t document_item_count(const xml_node* root)
{
    uint32_t count = 0;
    for (const xml_node* section = first_section(root); section != nullptr; section = section->next_sibling) {
        for (const xml_node* item = section->first_child; item != nullptr; item = item->next_sibling)
            ++count;
    }
    return count;
}

const xml_node* document_music_element(const xml_node* root)
{
    const xml_node* section = first_section(root);
    for (uint32_t number = 1; section != nullptr && number < section_music; ++number)
        section = section->next_sibling;
    return section;
}

uint32_t resolve_scene_object(const document& d, const scene_object& object)
{
    const auto* reference = table_get(d.object_table, object.object);
    const bool is_kind = object.type == object_model || object.type == object_genmesh;
    if (reference != nullptr && is_kind && reference->type == object.type && reference->named_by_material == 0)
        return reference->id;
    return object.object;
}

// ---- documents in a pack ------------------------------------------------------------------

constexpr size_t shown_tag_name = 64; // bytes of a tag's name in a message

static std::nullptr_t refuse(const char* name, const char* what, std::string& problem)
{
    problem = std::string("Error: ") + name + ": the document " + what + ".";
    return nullptr;
}

// The text of a document's entry; null as load_document_tree is.
static owned_block<uint8_t> load_document_text(const pack_file* pack, const char* name, std::string& problem)
{
    assert(name != nullptr);
    problem.clear();
    uint8_t* bytes = nullptr;
    uint32_t size = 0;
    switch (pack_read_entry(pack, name, &bytes, &size)) {
    case pack_found:
        break;
    case pack_missing:
        return nullptr;
    case pack_damaged:
        return refuse(name, xmlz_status_text(xmlz_damaged), problem);
    case pack_out_of_memory:
        return refuse(name, xmlz_status_text(xmlz_out_of_memory), problem);
    }
    const owned_block<uint8_t> entry(bytes);
    uint8_t* text = nullptr;
    if (const xmlz_status status = xmlz_inflate(bytes, size, &text, &size); status != xmlz_ok)
        return refuse(name, xmlz_status_text(status), problem);
    return owned_block<uint8_t>(text);
}

xml_node* load_document_tree(const pack_file* pack, const char* name, std::string& problem)
{
    const owned_block<uint8_t> text = load_document_text(pack, name, problem);
    if (text == nullptr)
        return nullptr;
    xml_node* root = xml_parse(reinterpret_cast<const char*>(text.get()));
    if (root == nullptr)
        refuse(name, xmlz_status_text(xmlz_out_of_memory), problem);
    return root;
}

std::string find_text_fault(const pack_file* pack, const char* name)
{
    std::string problem;
    const owned_block<uint8_t> text = load_document_text(pack, name, problem);
    if (text == nullptr)
        return "";
    if ((text.get()[0] == 0xFF && text.get()[1] == 0xFE) || (text.get()[0] == 0xFE && text.get()[1] == 0xFF))
        return "the text is UTF-16 and has to be UTF-8";
    const xml_fault fault = xml_find_fault(reinterpret_cast<const char*>(text.get()));
    const std::string line = "line " + std::to_string(fault.line);
    const std::string shown = printable(fault.name.substr(0, shown_tag_name));
    switch (fault.kind) {
    case xml_no_fault:
        return "";
    case xml_unclosed_element:
        return "<" + shown + "> of " + line + " is not closed";
    case xml_stray_closing_tag:
        return "</" + shown + "> of " + line + " closes no element of its name";
    case xml_unquoted_value:
        return "the value of \"" + shown + "\" in " + line + " has no double quotes";
    case xml_cut_value:
        return "the value of \"" + shown + "\" in " + line + " ends at its \">\"";
    case xml_cut_comment:
        return "the comment of " + line + " ends at its \"/>\", and the element around it";
    case xml_unfinished_comment:
        return "the comment of " + line + " does not end";
    }
    return "";
}
