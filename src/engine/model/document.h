// A document: its record tables and timeline, and the text that both are read from.
//
// Records are read by document_reader. Handles refer to tables of the same document.
#pragma once

#include "model/record_table.h"
#include "model/records.h"
#include "model/timeline.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <tuple>

struct pack_file;
struct xml_node;

enum document_section : uint32_t {
    section_generated_images = 1,
    section_texture_nodes = 2,
    section_meshes = 3,
    section_functions = 4,
    section_values = 5,
    section_dynamic_textures = 6,
    section_image_textures = 7,
    section_cube_maps = 8,
    section_fonts = 9,
    section_objects = 10,
    section_materials = 11,
    section_mesh_effects = 12,
    section_scenes = 13,
    section_timeline = 14,
    section_music = 15,
    no_more_sections
};

// What a section is called in messages ("image textures"); "unknown" for what is none.
const char* section_name(uint32_t section);

// A section as messages name it: "section 11 (materials)".
std::string section_label(uint32_t section);

struct document;

// A record as messages name it: "demo.xmlz: section 11 (materials), record 4".
std::string record_label(const document& d, uint32_t section, uint32_t record);

// Everything that one document is made of. {} tables are empty. The tables stand
// together, since for_each_table counts them.
struct document {
    const char* name;                  // "demo.xmlz"; not owned
    table<texture_node> texture_table; // only the generated ones, node by node
    table<mesh_record> mesh_table;
    table<animation_function> function_table;
    table<value_record> transform_table; // no transforms: lights and colours, nine values a record
    table<dynamic_texture> dynamic_texture_table;
    table<image_texture> image_texture_table;
    table<cube_map> cube_map_table;
    table<font_record> font_table;
    table<object_reference> object_table; // what materials and scenes point through: a kind and a handle
    table<material_record> material_table;
    table<mesh_effect> effect_table;
    table<scene_record> scene_table;
    struct timeline* timeline;         // owned; null: nothing to play
    generated_image* generated_images; // section 1, kept until section 2 is made; owned
    uint32_t generated_image_count;
};

// Calls `visit` with every table of the document, in the order of the sections. The one list
// of them: whoever makes, frees or looks through all tables goes by it.
template <typename visitor> void for_each_table(document& d, visitor&& visit)
{
    const auto tables = std::tie(d.texture_table, d.mesh_table, d.function_table, d.transform_table,
        d.dynamic_texture_table, d.image_texture_table, d.cube_map_table, d.font_table, d.object_table,
        d.material_table, d.effect_table, d.scene_table);
    static_assert(std::tuple_size_v<decltype(tables)> * sizeof(record_table*)
            == offsetof(document, timeline) - offsetof(document, texture_table),
        "a table of the document is missing in this list");
    std::apply([&visit](auto&... each) { (visit(each), ...); }, tables);
}

// Empty tables; the timeline is the caller's to give (timeline_new) and becomes
// the document's. `name` must outlive the document.
void document_create(document& d, const char* name, timeline* t);

// Frees generated images (pixels included) and every node's pixel buffer.
void document_free_generated_images(document& d);

// Frees all tables, the buffers that their records own (from malloc, shader programs
// and the states of dynamic textures included), and the timeline; clears the record,
// so that a second call does nothing. OpenGL objects and the states of mesh effects are
// released elsewhere, before this; whoever frees a record's buffer elsewhere clears
// its field.
void document_free(document& d);

// Items of a document: the children of all children of the document element.
uint32_t document_item_count(const xml_node* root);

// The music element: the document element's fifteenth child; null: there is none.
const xml_node* document_music_element(const xml_node* root);

// The handle of mesh_table (kind object_model) or effect_table (object_genmesh)
// that a scene object means: the id of the object_reference of that number, if it
// has the object's kind and no material names it as a texture; otherwise the
// number itself.
uint32_t resolve_scene_object(const document& d, const scene_object& object);

// Reads a document's entry of the pack into a tree (free it with xml_free).
// Null when there is no such entry (`problem` stays empty) or when it is damaged
// or does not inflate (`problem` gets the line "Error: demo.xmlz: ...").
xml_node* load_document_tree(const pack_file* pack, const char* name, std::string& problem);

// For a document that was refused: what its text probably means otherwise than it is read,
// with the line, "<scene> of line 31 is not closed"; "" when its tags match, and when
// there is no such entry.
std::string find_text_fault(const pack_file* pack, const char* name);
