// What the one OpenGL context is in, as far as the frame's drawing has told it.
//
// Calls that would change nothing are left out by comparing with it. A new record is for a new
// context, which has no buffers and clears to 0; of all else it knows nothing and tells it.
// OpenGL names are plain numbers; only the render thread touches it.
#pragma once

#include "render/frame.h"

#include <cstdint>
#include <vector>

constexpr uint32_t unknown_name = 0xFFFFFFFFu; // of a texture, buffer, program or unit
constexpr uint16_t unknown_kind = 0xFFFF;      // a document may say any byte

enum known_switch : uint8_t { switched_off = 0, switched_on = 1, switch_unknown = 2 };

// An array that is pointed at something.
struct known_array {
    uint8_t on = switch_unknown; // known_switch
    bool pointed = false;        // `source` holds
    array_source source = {};
};

constexpr uint32_t known_combiner_count = 35; // parameters of a unit's combiner

struct known_unit {
    uint8_t flat = switch_unknown; // texturing
    uint8_t cube = switch_unknown;
    uint32_t flat_texture = unknown_name;
    uint32_t cube_texture = unknown_name;
    uint16_t coordinates = unknown_kind; // as a whole, and in its parts, for S, T and R
    uint8_t generated[3] = {switch_unknown, switch_unknown, switch_unknown};
    uint16_t generation[3] = {unknown_kind, unknown_kind, unknown_kind};
    uint16_t combine_mode = unknown_kind;         // as a whole
    bool has_combiner[known_combiner_count] = {}; // `combiner` holds, by texture_unit_gl's numbers
    uint16_t combiner[known_combiner_count] = {};
    bool has_constant = false; // the combiner's colour is told
    bool has_matrix = false;
    float matrix[16] = {};
    known_array coordinate_array;
    bool at_origin = false; // the current coordinates are (0, 0), and no array has been drawn since
};

struct known_light {
    uint8_t on = switch_unknown;
    bool told = false; // `light` and `view` hold
    light_state light = {};
    float view[16] = {};
};

// What the uniforms of one program hold.
struct known_program {
    uint32_t name = 0; // OpenGL's
    bool told = false; // `values` hold
    bool has_projection = false;
    bool has_modelview = false;
    bool has_normal_matrix = false;
    program_state values = {};
    float projection[16] = {};
    float modelview[16] = {};
    float normal_matrix[9] = {};
};

constexpr uint32_t max_known_attributes = 32;

struct gl_state {
    uint8_t depth_test = switch_unknown;
    uint8_t cull_face = switch_unknown;
    uint8_t normalize = switch_unknown;
    uint8_t polygon_lines = switch_unknown;
    uint8_t lighting = switch_unknown;
    uint8_t fog = switch_unknown;
    uint16_t fog_type = unknown_kind; // that the hint speaks of
    uint16_t blending = unknown_kind;
    uint16_t blend_equation = unknown_kind;
    float line_width = 0.0f; // 0: unknown
    bool has_color = false;
    bool has_fog = false;
    bool has_clear_color = true; // a new context clears to (0, 0, 0, 0)
    bool has_projection = false;
    bool has_modelview = false;
    float color[4] = {};
    fog_state fog_values = {};
    float clear_color[4] = {};
    float projection[16] = {};
    float modelview[16] = {};
    known_light lights[2];

    // The state that the last mesh of the frame at hand was drawn with, told whole. Planning writes
    // down another one behind whatever binds textures itself.
    uint32_t drawn_material = no_index;

    uint32_t active_unit = unknown_name;
    uint32_t client_unit = unknown_name;
    known_unit units[texture_unit_count];
    std::vector<uint16_t> wraps; // how the coordinates of each texture wrap, by its name
    std::vector<uint8_t> linear; // 1: the texture of that name was told to be filtered linearly

    known_array positions;
    known_array normals;
    uint32_t array_buffer = 0; // a new context has none
    uint32_t element_buffer = 0;
    uint32_t moved_positions = 0; // buffers for moved vertices; made at their first use
    uint32_t moved_normals = 0;

    uint32_t program = unknown_name;
    std::vector<uint32_t> program_places; // at or behind its name's low bits: 0, or 1 more than its place in `programs`
    std::vector<known_program> programs;  // what is known of those that were met
    known_array attributes[max_known_attributes]; // by location; `on` is not used
    uint32_t attributes_on = 0;                   // one bit each; a new context has none
    bool attribute_at_origin[max_known_attributes]
        = {}; // its current value is (0, 0), and no array has been drawn since

    uint32_t viewport_width = 0; // 0: unknown
    uint32_t viewport_height = 0;
};

// Somebody else has made, bound or deleted textures, buffers and programs: nothing is known
// of them any more.
void forget_objects(gl_state& gl);

// The same of textures alone.
void forget_textures(gl_state& gl);
