#include "tools/preview/loading_chance.h"

#include "content/xml.h"
#include "effects/dynamic_texture.h"
#include "effects/mesh_effect.h"
#include "model/document_reader.h"

#include <cstdlib>
#include <string>

constexpr const char* loading_screen = "loading.xmlz";

static const xml_node* section_of(const xml_node* root, uint32_t number)
{
    const xml_node* section = root->first_child != nullptr ? root->first_child->first_child : nullptr;
    for (uint32_t i = 1; i < number && section != nullptr; ++i)
        section = section->next_sibling;
    return section;
}

static bool has_record_of(const xml_node* root, uint32_t section, uint32_t kind)
{
    const xml_node* node = section_of(root, section);
    for (const xml_node* record = node != nullptr ? node->first_child : nullptr; record != nullptr;
         record = record->next_sibling) {
        const char* type = xml_get_attribute(record, "type");
        if (type != nullptr && std::strtoul(type, nullptr, 10) == kind)
            return true;
    }
    return false;
}

// What is made of a record as loading makes it, and given back.
static void draw_for_record(const document_reader& reader, const document& d)
{
    if (reader.section == section_dynamic_textures)
        if (const dynamic_texture* texture = table_get(d.dynamic_texture_table, reader.handle))
            free_dynamic_texture(init_dynamic_texture(texture->type, texture->width, texture->height, texture->bpp));
    if (reader.section == section_mesh_effects)
        if (mesh_effect* effect = table_get(d.effect_table, reader.handle)) {
            init_mesh_effect(*effect);
            free_mesh_effect(*effect);
        }
}

void draw_chance_of_loading_screen(const pack_file* pack)
{
    std::string problem;
    const owned_tree tree(load_document_tree(pack, loading_screen, problem));
    if (tree == nullptr
        || (!has_record_of(tree.get(), section_dynamic_textures, effect_2d_amoba)
            && !has_record_of(tree.get(), section_mesh_effects, mesh_effect_particles)))
        return;
    document d;
    document_create(d, loading_screen, timeline_new());
    document_reader reader;
    document_reader_begin(reader, d, tree.get(), pack);
    for (read_step step = read_record; step == read_record || step == read_section_end;) {
        step = document_read_step(reader);
        if (step == read_record)
            draw_for_record(reader, d);
    }
    document_free(d);
}
