// The words of the language that make something, and their fields: one table, from which sources are read and
// checked, documents are opened, and the reference and the editor's annotations are written.
//
// What a document numbers is named by the engine's catalogues (model/catalogues.h); nothing is listed twice.
#pragma once

#include "model/catalogues.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

// What a field takes.
enum field_type : uint8_t {
    field_number,   // a number
    field_moving,   // a number or a curve
    field_curve,    // a curve; a number where it stands still
    field_time,     // ticks, or a text: "4s", "8b"
    field_flag,     // true or false
    field_text,     // any text
    field_file,     // a file of the show's folder
    field_color,    // "#rrggbb", a name, { r, g, b }: components may move
    field_point,    // { x, y, z }: each may move
    field_scale,    // a moving number, or a point
    field_size,     // { width, height } in pixels, or one number for both
    field_choice,   // a name of `choices`
    field_texture,  // what a texture unit shows, or a table that says how: unit fields
    field_light,    // what light {} made
    field_value,    // a colour, or what color or light {} made
    field_material, // what material {} made
    field_mesh,     // what mesh, shape or effect made
    field_target,   // what target {} made
    field_camera,   // what camera {} or look_at made, or its fields
    field_fog,      // a table: fog fields
    field_shader,   // a table: shader fields
    field_list,     // a list
    field_table,    // a table that its help describes
    field_type_count
};

// The catalogues of names as one kind of thing: entry `index` of `count`.
struct choice_list {
    const char* what; // "blend function", for messages
    uint32_t count;
    const char* (*name)(uint32_t index);
};

extern const choice_list blend_choices;
extern const choice_list fog_choices;
extern const choice_list wrap_choices;
extern const choice_list coordinate_choices;
extern const choice_list combine_choices[texture_unit_count]; // of each unit, by its own numbers
extern const choice_list mode_choices;                        // render modes
extern const choice_list filter_choices;
extern const choice_list format_choices;
extern const choice_list segment_choices; // formulas of functions
extern const choice_list effect_choices;
extern const choice_list dynamic_choices;
extern const choice_list generator_choices;
extern const choice_list manipulator_choices;
extern const choice_list align_choices;  // of texts: left, center, right
extern const choice_list normal_choices; // how a mesh gets its normals

struct field_row {
    const char* name;
    field_type type;
    const char* fallback; // what it is when it is not given, as the reference says; "": it must be given; null: none
    const char* help;     // one sentence
    const choice_list* choices = nullptr;
};

enum kind_id : uint8_t {
    kind_show,
    kind_wave,
    kind_swelling_wave,
    kind_spline,
    kind_curve,
    kind_image,
    kind_target,
    kind_cube_map,
    kind_output,
    kind_dynamic,
    kind_mesh,
    kind_shape,
    kind_effect,
    kind_font,
    kind_glyph,
    kind_light,
    kind_material,
    kind_unit,
    kind_fog,
    kind_shader,
    kind_placed,
    kind_steps,
    kind_on_vertices,
    kind_clip,
    kind_track,
    kind_entry,
    kind_camera,
    kind_count
};

struct kind_row {
    kind_id id;
    const char* word; // as a source writes it
    const char* help; // one or two sentences
    std::span<const field_row> fields;
};

const kind_row& kind_of(kind_id id);

// A name without case, blanks and punctuation: how choices are compared.
std::string plain_name(const std::string& text);

// The number of a choice; -1 when there is none of that name.
int32_t find_choice(const choice_list& choices, const std::string& name);

// All names of a list, as they are written.
std::vector<std::string> choice_names(const choice_list& choices);

// A parameter of a catalogue as a field: "Maze size (1 - 7 integer)" is "maze_size", "1. scale" is "scale_1".
std::string parameter_field(const std::string& catalogue_name);

// The parameters of one kind of a catalogue as fields. A generator's first ones are colours.
struct parameter_field_row {
    std::string name;
    bool is_color;
};
std::vector<parameter_field_row> generator_fields(uint32_t generator);
std::vector<parameter_field_row> node_fields(uint8_t code); // 101..104, 201..210
std::vector<parameter_field_row> dynamic_fields(uint32_t type);
std::vector<parameter_field_row> effect_fields(uint32_t type);
std::vector<parameter_field_row> manipulator_fields(uint32_t type);
