// From things to records: what the files of this room share while they make documents of a description.
#pragma once

#include "authoring/show/show.h"

#include <list>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <unordered_set>
#include <vector>

// What a thing is used as: the same material is one record in space and another in a flat scene.
struct use_of_thing {
    const thing* what;
    const thing* with; // fonts: the material
    uint32_t variant;  // scenes, fonts, materials: 1 in flat scenes; meshes: coordinate sets to turn (sets_to_turn)
    auto operator<=>(const use_of_thing&) const = default;
};

struct entry_names {
    std::set<std::string> taken;
    std::map<std::string, std::string> by_source; // file and options: the name that it got
};

struct lowering {
    show_description& show;
    built_show& built;
    uint32_t document = 0; // that is being made
    bool places_references
        = false; // it places entries of the section of objects: then nothing is placed by its own number
    std::map<use_of_thing, std::vector<authored_record*>> made = {};
    std::map<const thing*, std::set<uint32_t>> letters = {}; // of each font, glyphs that texts use
    entry_names names = {};
    std::map<const thing*, const imported_model*> models = {};
    std::list<imported_model> own_models = {};               // of meshes that have no file
    std::map<const thing*, const imported_font*> fonts = {};
    std::map<std::string, uint32_t> pictures = {};    // components of those taken, by their keys
    std::unordered_set<std::string> files_known = {}; // built.files_taken; empty: not looked at yet
    std::map<std::string, std::string> files = {};    // whole paths of those found, by the names that the source has
};

authored_document& document_of(lowering& l);

// A new record, shared with an equal one where the show shares.
authored_record* new_record(
    lowering& l, document_section section, element content, const source_place& place, const std::string& name);

// ---- numbers ------------------------------------------------------------------------

// The function record of a curve.
authored_record* lower_curve(lowering& l, const thing& curve);

// <name type="static|dynamic" value="..."/>
void add_animated(lowering& l, element& parent, const char* name, const moving_number& number);

// The function that a number is where a document wants a function: none for 0, one that stands still for others.
authored_record* function_of(lowering& l, const moving_number& number, const source_place& place);

authored_record* lower_value(lowering& l, const thing& value);

// ---- pictures -----------------------------------------------------------------------

// The record of a texture and its kind in the section of objects (texture_kind); -1: it is none.
struct lowered_texture {
    authored_record* record;
    int32_t type;
};
lowered_texture lower_texture(lowering& l, const thing& texture);
authored_record* lower_image(lowering& l, const thing& image);
authored_record* lower_picture(lowering& l, const thing& picture);
authored_record* lower_node(lowering& l, const thing& node);

// Writes into every node's element which nodes it feeds: after all nodes are made.
void finish_nodes(lowering& l);

// A number times a factor, a new curve where it moves.
moving_number scaled_number(lowering& l, const moving_number& number, double factor);

// A number and an offset, likewise.
moving_number moved_number(lowering& l, const moving_number& number, double offset);

// Of a flat scene's unit to the right, beside the one downward: 0.75 on a screen of 4 : 3.
double flat_width(const lowering& l);

// ---- shapes -------------------------------------------------------------------------

// The records of a mesh: more than one where it has too many vertices for one.
const std::vector<authored_record*>& lower_mesh(lowering& l, const thing& mesh, uint32_t turned_sets);

// The one record of a mesh where a document takes one, unturned. A mesh of more is told at `place`.
authored_record* lower_one_mesh(lowering& l, const thing& mesh, const source_place& place);

authored_record* lower_effect(lowering& l, const thing& effect);
authored_record* lower_font(lowering& l, const thing& font, const thing* material, bool flat);

// The glyphs that a text shows, in order: those of letters that no font has are left out.
std::vector<uint32_t> glyphs_of_text(const std::string& text);

// How far the pen moves over a text.
double text_width(lowering& l, const thing& font, const std::string& text, bool flat);

// ---- surfaces and scenes --------------------------------------------------------------

authored_record* lower_reference(lowering& l, const thing& reference);

// What a placed object names: the record of its mesh or effect, or the entry of the section of objects that leads to
// it where another object's entry may have the same number.
authored_record* object_of_shape(lowering& l, int32_t kind, authored_record* shape, const source_place& place);
authored_record* lower_material(lowering& l, const thing& material, bool flat);
authored_record* lower_scene(lowering& l, const thing& scene, bool flat);

// An element as it stands.
authored_record* lower_raw(lowering& l, const thing& made);

constexpr uint32_t kept_first_set = 8; // beside the sets to turn: other units show their pictures as they are

// The coordinate sets of a mesh that units with upright targets read: 1, 2, 4, and kept_first_set. Null, or no
// material's words: none.
uint32_t sets_to_turn(const thing* material);

// ---- the timeline ---------------------------------------------------------------------

void lower_timeline(lowering& l);

// Notes on what was made and is not among `used`.
void tell_unused(lowering& l, const std::set<const thing*>& used);

// ---- entries ------------------------------------------------------------------------

// The whole path of a file that the source names, and the file is told to be taken. Empty, and a problem, where it
// leads out of the folder or is not there.
std::string find_file(lowering& l, const std::string& file, const source_place& place);

// Tells that a file below the show's folder was taken.
void note_file(lowering& l, const std::string& file);

// ": did you mean \"...\"?" when a file like it lies there.
std::string near_file(const std::string& path);

// Puts bytes into the envelope of documents and meshes.
std::vector<uint8_t> enveloped(const show_description& show, const std::vector<uint8_t>& bytes);
