// The catalogues: the names of every numbered choice of a document and of its
// parameters, in order.
//
// Constant tables of zero-padded fixed-width fields; entries are numbered from 0
// in table order and told apart by table and position, never by name. Reading takes
// from them how many numbers a choice has, and how messages call it. Where choices have an
// enum, there is an entry for each of them: a missing one does not compile.
#pragma once

#include "model/records.h"
#include "model/timeline.h"

#include <cstdint>

struct effect_type_entry {
    char name[32];
    uint8_t param_count;
    char param_name[16][32];
};
struct effect_2d_entry {
    char name[32];
    uint8_t param_count;
    char param_name[32][32];
};
struct manipulator_entry {
    char name[32];
    uint8_t places_model;
    uint8_t param_count;
    char param_name[32][32];
};
struct render_mode_entry {
    char name[52];
    uint8_t uses_target;
    char param_name[4][32];
};
struct texture_operation_entry {
    char name[32];
    uint8_t input_count;
    uint8_t param_count;
    char param_name[8][32];
};
struct texture_generator_entry {
    char name[32];
    uint32_t colour_count;
    uint32_t number_count;
    char param_name[8][32];
};
struct function_type_entry {
    char name[32];
    char formula[48];
    uint8_t param_count;
    char param_name[24][32];
};
struct name_entry {
    char name[32];
};
struct glyph_name_entry {
    char name[17];
};

extern const effect_type_entry effect_types[mesh_effect_kind_count];
extern const effect_2d_entry effects_2d[effect_2d_kind_count];
extern const manipulator_entry manipulators[manipulator_kind_count];
extern const render_mode_entry render_modes[render_mode_count];
extern const name_entry object_kinds[object_kind_count];
extern const texture_operation_entry image_operations[4]; // codes 101..104
extern const texture_operation_entry node_operations[10]; // codes 201..210
extern const texture_generator_entry texture_generators[generator_kind_count];
extern const function_type_entry function_types[segment_kind_count];
extern const name_entry loop_modes[loop_kind_count];
extern const name_entry quality_hints[fog_kind_count];
extern const name_entry coordinate_generations[coordinate_generation_count];
extern const name_entry wrap_modes[wrap_kind_count];
extern const name_entry combine_functions[11];
extern const name_entry blend_functions[blend_kind_count];
extern const name_entry parameter_kinds[2];
extern const glyph_name_entry glyph_names[15];

// Parameters of a 2-D effect; 0 for a kind beyond the catalogue.
uint8_t effect2d_param_count(uint32_t type);

// The entry of a node's operation; null for codes that compute nothing.
const texture_operation_entry* operation_of(uint8_t code);
