// A document: its record tables and timeline, and the reading of both from the
// element tree, one record at a time.
//
// Reading fills records from elements and checks them; it makes no OpenGL
// object. Whoever drives it (the loading sequence, a tool) takes one record after
// the other from a document_reader, makes what the record needs, and goes on.
// Problems are collected as whole lines of text: a fatal one ends the reading, a
// warning does not. Handles refer to tables of the same document.
#pragma once

#include "model/record_table.h"
#include "model/records.h"
#include "model/timeline.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <tuple>
#include <vector>

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

// What a section is called in messages ("image textures"); 1..15, else "unknown".
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

struct document_problem {
    bool fatal;
    std::string text; // a whole line: "Error: demo.xmlz: section 13 (scenes), record 2, ..."
};

// What the meshes and pictures of one document may unfold to: an entry can be named by
// many records, and a small one can unfold to much.
constexpr uint64_t max_unfolded_bytes = uint64_t{2} << 30;

// Where the reading stands. Starts with document_reader_begin.
struct document_reader {
    document* target;
    const xml_node* section_node; // the section under way, null at the end
    const xml_node* record_node;  // the record to read next
    FILE* pack;                   // where entries come from; not owned, may be null
    uint32_t section;             // number of the section under way, from 1
    uint32_t record;              // number of the record read last, from 1
    uint32_t handle;              // its handle (for section 14: its track number + 1), 0: none was made
    bool section_finished;        // the step ended a section instead of reading a record
    uint32_t layer_start;         // running position of the track under way, ticks
    uint64_t unfolded_bytes;      // decoded meshes and pictures so far
    uint32_t warning_count;       // all warnings; `problems` keeps the first 4096 of them
    std::vector<document_problem> problems;
};

enum read_step : uint32_t {
    read_record,      // `record` of `section` was read into `handle`
    read_section_end, // all records of `section` were read
    read_done,        // nothing is left
    read_failed       // the last problem is fatal
};

// Prepares to read the document below `root` (the unnamed root of the tree) into
// `target`, which document_create has prepared.
void document_reader_begin(document_reader& reader, document& target, const xml_node* root, FILE* pack);

// Reads the next record, or ends the section under way. Where it fails, the last problem
// names what is wrong with the text's tags, too, if the pack holds the document. One with
// fewer than fourteen sections fails at its first step; sections beyond the fifteenth are
// passed over; section 15 has no records of its own here, but its children are
// still counted as items and stepped over one by one (handle 0).
// References to records of sections yet to come are checked at the section's end
// where they can be resolved; dangling ones become warnings.
read_step document_read_step(document_reader& reader);

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
xml_node* load_document_tree(FILE* pack, const char* name, std::string& problem);

// For a document that was refused: what its text probably means otherwise than it is read,
// with the line, "<scene> of line 31 is not closed"; "" when its tags match, and when
// there is no such entry.
std::string find_text_fault(FILE* pack, const char* name);

// A unit's combine mode (0 = unit 1): the number as the document writes it, brought
// into the unit's own list. Numbers that the list lacks are read in the one long
// list of eleven names; what is in neither acts as 0.
uint8_t combine_mode_of_unit(uint32_t unit, int32_t number);
