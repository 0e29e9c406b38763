// The readers of the sections: each fills one record from its element.
//
// A reader returns false after a fatal problem; the record that it had begun stays in
// its table, cleared or partly filled, and is freed with the document. The checks at
// the end of a section add warnings only.
#pragma once

#include "model/read_element.h"

bool read_generated_image(const document_place& at, const xml_node& node);
bool read_texture_node(const document_place& at, const xml_node& node);
bool read_mesh(const document_place& at, const xml_node& node);
bool read_function(const document_place& at, const xml_node& node);
bool read_value_record(const document_place& at, const xml_node& node);
bool read_dynamic_texture(const document_place& at, const xml_node& node);
bool read_image_texture(const document_place& at, const xml_node& node);
bool read_cube_map(const document_place& at, const xml_node& node);
bool read_font(const document_place& at, const xml_node& node);
bool read_object_reference(const document_place& at, const xml_node& node);
bool read_material(const document_place& at, const xml_node& node);
bool read_effect(const document_place& at, const xml_node& node);
bool read_scene(const document_place& at, const xml_node& node);

// The tracks beyond the last are passed over, as is every track of a document without a
// timeline.
bool read_track(const document_place& at, const xml_node& node);

// The music's file is the player's to find; children of its element are items without a meaning.
bool pass_over_music_item(const document_place& at, const xml_node& node);

// After section 2: what nodes and generated images the nodes name.
void check_texture_nodes(document_reader& reader);

// After section 14: a timeline that shows nothing, and tracks beyond the last.
void check_timeline(document_reader& reader);

// After section 11: checks the materials of the glyphs, and marks what the materials name as
// textures, so that no scene object takes it for a mesh.
void finish_materials(document_reader& reader);

// After section 15: an element that says something else than a file.
void check_music(document_reader& reader);
