// The records of a document: one plain record per thing that it describes.
//
// Records live in record tables as raw memory (table_new asks that they can): every
// one is an aggregate, zero is a usable empty state, and references between them
// are handles (1..4096, 0 is none), never pointers. Names of OpenGL objects are
// plain numbers, made and released by the files that call OpenGL. Buffers that a
// record points to belong to it; document_free releases them.
#pragma once

#include "anim/animation_function.h"

#include <cassert>
#include <cstdint>

// ---- values -------------------------------------------------------------------

// A number that is a constant or follows an animation function.
struct animated_value {
    float value;     // the constant, or a handle of function_table held as a number
    uint8_t dynamic; // 1: value is a handle
};

// Nine values in three triples. A light: 0..2 ambient, 3..5 diffuse, 6..8
// position; a colour: 3..5. Dynamic marks are bits: values 0..5 are 128, 64, 32,
// 16, 8, 4 of the first byte, 6..8 are 128, 64, 32 of the second.
struct value_record {
    float values[9]; // constants, or handles of function_table
    uint8_t dynamic_flags[2];
};

inline bool value_is_dynamic(const value_record& record, uint32_t index)
{
    assert(index < 9);
    return index < 6 ? ((record.dynamic_flags[0] << index) & 128) != 0
                     : ((record.dynamic_flags[1] << (index - 6)) & 128) != 0;
}

// ---- what all textures have ---------------------------------------------------

// How a texture's pixels are mixed where they do not fall on the screen's. What a number
// beyond the catalogue does is each texture's own.
enum filter_kind : uint8_t {
    filter_nearest = 0,
    filter_linear = 1,
    filter_mipmaps = 2, // linear, and between levels
    filter_kind_count
};

// ---- generated textures -------------------------------------------------------

constexpr uint32_t generated_size = 256; // side of every generated picture, pixels
constexpr uint32_t generated_param_slots = 33;
constexpr uint32_t first_value_slot = 9; // parameter values start here
constexpr uint32_t max_generator_values = 24;

enum generator_kind : int32_t {
    generator_color = 0,
    generator_sinus_plasma = 1,
    generator_radial_colors = 2,
    generator_maze = 3,
    generator_bricks = 4,
    generator_noise = 5,
    generator_kind_count
};

// Slot 0 is the generator kind, 1..8 are unused, the values follow from slot 9.
struct generator_params {
    int32_t kind;                       // slot 0
    int32_t unused[8];                  // slots 1..8
    float values[max_generator_values]; // slots 9..32
};
static_assert(sizeof(generator_params) == generated_param_slots * 4);

struct generated_image {
    generator_params params;
    uint8_t* pixels; // 3 x size x size bytes, owned; null until it is made
};

enum node_code : uint8_t {
    node_add_image = 101,
    node_multiply_image = 102,
    node_maximum_image = 103,
    node_minimum_image = 104,
    node_invert = 201,
    node_multiply = 202,
    node_offset = 203,
    node_ripple = 204,
    node_blur = 205,
    node_emboss = 206,
    node_add_2 = 207,
    node_mul_2 = 208,
    node_max_2 = 209,
    node_min_2 = 210,
    node_output = 255
};

enum node_state : uint8_t { node_done = 0, node_pending = 1, node_waiting = 2 };

constexpr uint32_t max_node_outputs = 255;
constexpr uint32_t max_node_values = 9;

struct texture_node {
    uint8_t type;      // node_code; other codes compute nothing
    char name[35];     // zero-terminated
    uint32_t layer_id; // no layer: the number of a generated image, from 0; below code 201
    float values[max_node_values];
    uint32_t input1; // handles of texture_table
    uint32_t input2;
    uint32_t output_count;
    uint32_t outputs[max_node_outputs]; // handles of the nodes that this one feeds
    uint8_t* pixels;                    // 3 x size x size bytes, owned; null until computed
    uint32_t texture;                   // OpenGL name, output nodes only
    uint8_t texture_format;             // texture_format_kind
    uint8_t texture_filter;             // filter_kind; others have the filter of mipmaps and no levels
    uint8_t state;                      // node_state
};

// ---- meshes -------------------------------------------------------------------

constexpr uint32_t max_texcoord_sets = 3;

// What drawing needs of a mesh, wherever it comes from: a file or an effect.
struct mesh_arrays {
    uint32_t vertex_count;               // at most 65,535
    uint32_t index_count;                // three a triangle
    uint32_t texcoord_sets;              // 0..3
    float* positions;                    // 3 a vertex
    float* texcoords[max_texcoord_sets]; // 2 a vertex; null beyond texcoord_sets
    float* normals;                      // 3 a vertex; null: none
    uint16_t* indices;                   // index_count entries
    uint16_t* line_indices;              // 2 x index_count entries, made on first use; owned
    uint32_t position_buffer;            // OpenGL buffer names, 0: client arrays
    uint32_t texcoord_buffer[max_texcoord_sets];
    uint32_t normal_buffer;
    uint32_t index_buffer;
    uint32_t line_index_buffer;
};

struct mesh_record {
    uint8_t* data; // the inflated bytes that arrays points into; owned
    mesh_arrays arrays;
};

// ---- textures that move, pictures from the pack --------------------------------

enum effect_2d_kind : uint32_t {
    effect_2d_test = 0,
    effect_2d_plasma = 1, // "Effect 1"
    effect_2d_amoba = 2,
    effect_2d_rotate = 3,
    effect_2d_normalmap = 4,
    effect_2d_kind_count
};

constexpr uint32_t max_effect_2d_params = 32;

struct effect_2d_state {
    uint8_t calls;   // pictures made, modulo 256; kind 0 only
    uint8_t* buffer; // owned; kind 2 only
    int32_t counter; // whole "Update" value of the last growth; kind 2 only
};

struct dynamic_texture {
    char name[32];
    uint32_t type;  // effect_2d_kind
    uint32_t width; // 64, 128, 256 or 512
    uint32_t height;
    uint32_t bpp;                             // 8 or 24
    uint32_t functions[max_effect_2d_params]; // handles of function_table
    uint32_t texture;                         // OpenGL name
    uint8_t texture_format;                   // texture_format_kind
    uint8_t texture_filter;                   // filter_kind; all but filter_nearest are linear
    uint32_t pbo;                             // OpenGL buffer name, 0: none
    effect_2d_state* state;                   // owned; null for kinds without
    uint32_t refresh_time;                    // function time of the last refresh
    uint8_t refreshed;                        // 0: never refreshed
};

constexpr uint32_t recreated_target_format = 3; // GL internal format: the old way to say RGB

struct image_texture {
    uint32_t width; // pixels
    uint32_t height;
    uint32_t components; // 3 or 4
    uint8_t* pixels;     // decoded, owned; null once uploaded
    uint8_t* level1;     // ready-made mipmap levels, same components; owned, null: none
    uint8_t* level2;
    uint8_t texture_format; // texture_format_kind
    uint8_t texture_filter; // filter_kind; others act as filter_mipmaps
    uint32_t format;        // GL internal format in use
    uint32_t texture;       // OpenGL name
};

constexpr uint32_t cube_face_count = 6; // +x, -x, +y, -y, +z, -z

struct cube_map {
    uint32_t size;                        // side of every face, pixels
    uint32_t components[cube_face_count]; // 3 or 4
    uint8_t* faces[cube_face_count];      // decoded, owned; null once uploaded
    uint8_t texture_format;               // texture_format_kind
    uint8_t texture_filter;               // filter_kind; others act as filter_mipmaps
    uint32_t texture;                     // OpenGL name
};

// ---- fonts, object references ----------------------------------------------------

constexpr uint32_t glyph_count = 87;

struct glyph_record {
    uint32_t model;    // handle of mesh_table; 0: a blank
    uint32_t material; // handle of material_table
    uint32_t bitmap;   // kept, not used
    float offset;
    float width;
};

struct font_record {
    glyph_record glyphs[glyph_count];
};

// A pair of kind and handle. Read by materials as a texture (texture_kind) and by
// scene objects as a mesh (object_kind).
struct object_reference {
    int32_t type;
    uint32_t id;
    uint8_t named_by_material; // 1: a material names it as a texture, so no scene object means it
};

enum texture_kind : int32_t {
    texture_generated = 0, // texture_table, an output node
    texture_image = 1,     // image_texture_table
    texture_dynamic = 2,   // dynamic_texture_table
    texture_cube = 3,      // cube_map_table
    texture_kind_count
};

// ---- materials ----------------------------------------------------------------

constexpr uint32_t texture_unit_count = 3;
constexpr uint32_t user_uniform_count = 24;
constexpr uint32_t info_log_size = 512;

// How what is drawn is put onto the picture: source and destination factors.
enum blend_kind : uint8_t {
    blend_alpha = 0,         // alpha, 1 - alpha
    blend_add = 1,           // 1, 1
    blend_replace = 2,       // 1, 0
    blend_premultiplied = 3, // 1, 1 - alpha: the colour has been multiplied already
    blend_subtract = 4,      // the picture less alpha x colour
    blend_kind_count
};

// Fog, and how carefully the driver is asked to draw it.
enum fog_kind : uint8_t { fog_none = 0, fog_fastest = 1, fog_nicest = 2, fog_kind_count };

// What lies beyond a picture's edges.
enum wrap_kind : uint8_t { wrap_repeat = 0, wrap_edge_clamp = 1, wrap_kind_count };

enum coordinate_generation : uint8_t {
    coordinates_off = 0,
    coordinates_sphere = 1,
    coordinates_cube = 2,
    coordinate_generation_count
};

// How a texture unit combines its picture with what is there: each unit has a list of its own
// (combine_mode.h), and other numbers act as its 0. Unit 1:
enum first_unit_combine : uint8_t {
    first_multiply_color = 0,
    first_ignore_alpha = 1, // multiply the colour, take the texture's alpha
    first_replace = 2,
    first_add_color = 3,
    first_unit_combine_count
};

// Unit 2. Unit 3 has a mode of its own as number 0 and unit 2's list, shifted by one, after it.
enum second_unit_combine : uint8_t {
    second_add_previous = 0,
    second_multiply_previous = 1,
    second_dot3_previous = 2,
    second_interpolate_color = 3,
    second_interpolate_alpha = 4,
    second_add_without_alpha = 5,
    second_unit_combine_count
};

constexpr uint8_t third_multiply_and_add = 0; // texture x primary + previous
constexpr uint8_t third_unit_shift = 1;       // of unit 2's list

// The program of one material: its texts and, once built, its OpenGL names.
struct shader_program {
    char* vertex_source; // owned, zero-terminated; null: none
    char* fragment_source;
    int32_t vertex_length; // bytes without the terminator
    int32_t fragment_length;
    char info_log[info_log_size]; // "VS:" log "\n" "FS:" log
    uint32_t vertex_shader;       // OpenGL names, 0 until created
    uint32_t fragment_shader;
    uint32_t program;
    uint32_t shared_program;     // stays 0
    bool is_borrowed;            // the names are an earlier material's, which gives them back
    int32_t projection_location; // -1: the program has none
    int32_t modelview_location;
    int32_t position_location;
    int32_t texcoord_location[texture_unit_count];
    uint32_t uniform_functions[user_uniform_count]; // handles of function_table that drive u1..u24; 0 unused
    int32_t uniform_locations[user_uniform_count];
    int32_t normal_matrix_location;
    int32_t normal_location;
    int32_t texture_matrix_location;
    int32_t light_position_location[2];
};

struct material_record {
    uint8_t backface_culling;
    uint8_t depth_test;
    uint8_t normalization;
    uint8_t wireframe;
    uint8_t blend_function; // blend_kind; others set nothing
    uint8_t fogtype;        // fog_kind
    uint8_t color_dynamic[4];
    uint8_t linewidth_dynamic;
    uint8_t fogstart_dynamic;
    uint8_t fogend_dynamic;
    float color[4]; // red, green, blue, alpha; or handles of function_table
    float linewidth;
    float fogstart;
    float fogend;
    uint32_t light1; // handles of transform_table, 0 none
    uint32_t light2;
    uint32_t fogcolor;                          // handle of transform_table, 0 white
    uint32_t texture[texture_unit_count];       // handles of object_table, 0 unused
    uint8_t wrapmode[texture_unit_count];       // wrap_kind
    uint8_t cgenmode[texture_unit_count];       // coordinate_generation
    uint8_t rotation[texture_unit_count];       // 1: the texture turns with the view
    uint8_t combine_mode[texture_unit_count];   // by the unit's own list, see combine_mode_of_unit
    uint8_t enable_glsl;                        // not 0: the material brings its own program
    uint32_t user_uniforms[user_uniform_count]; // glsl_uniforms: handles of function_table, own programs only
    char* custom_vertex_shader;                 // texts of the document, owned; null: none
    char* custom_fragment_shader;
    shader_program* program; // owned; null until generated
};

// ---- mesh effects, scenes -------------------------------------------------------

enum mesh_effect_kind : uint32_t {
    mesh_effect_lake = 0,
    mesh_effect_centerwave = 1,
    mesh_effect_swirl = 2,
    mesh_effect_particles = 3,
    mesh_effect_lake_2 = 4,
    mesh_effect_kind_count
};

constexpr uint32_t max_mesh_effect_params = 16;

struct mesh_effect {
    char name[32];
    uint32_t type;                              // mesh_effect_kind
    uint32_t functions[max_mesh_effect_params]; // handles of function_table; 0: the value 0
    void* state;                                // the kind's simulation, owned (effects/mesh_effect.h)
    mesh_arrays mesh;                           // the generated mesh; owns its arrays
};

enum object_kind : int32_t { object_model = 0, object_genmesh = 1, object_text = 2, object_kind_count };

enum manipulator_kind : int32_t {
    manipulator_xyz_multiplier = 0,
    manipulator_x_multiplier = 1,
    manipulator_rippler = 2,
    manipulator_model_placer = 3,
    manipulator_kind_count
};

constexpr uint32_t max_manipulator_params = 12;
constexpr uint32_t max_manipulators = 7;
constexpr uint32_t max_placements = 131072; // copies of one object: the first are drawn
constexpr uint32_t max_scene_objects = 128;
constexpr uint32_t placement_value_count = 9;
constexpr uint32_t scene_text_size = 32;

// Where the mesh comes from whose vertices a placer puts copies on.
enum placer_mesh_kind : int32_t {
    placer_mesh = 0,   // a record of mesh_table
    placer_effect = 1, // the generated mesh of a record of effect_table
    placer_mesh_kind_count
};

struct manipulator_record {
    int32_t type;       // manipulator_kind
    int32_t model_type; // placer_mesh_kind; others: no mesh
    uint32_t model;     // the mesh, in the document's word: a handle of the table that model_type says; 0 none
    animated_value params[max_manipulator_params];
};

enum copies_end : uint8_t { copies_all = 0, copies_cut_now = 1, copies_cut_told = 2 };

struct scene_object {
    int32_t type;                                 // object_kind
    uint32_t object;                              // as written; see resolve_scene_object
    uint32_t material;                            // handle of material_table
    uint32_t font;                                // handle of font_table
    char text[scene_text_size];                   // not terminated when it is 32 long
    animated_value values[placement_value_count]; // position, rotation in degrees, scale
    uint32_t visibility;                          // handle of function_table, 0: always visible
    float time_offset;                            // ticks
    uint32_t manipulator_count;
    manipulator_record manipulators[max_manipulators];
    uint8_t copies_cut; // copies_end: whether drawing has left some of its copies out
};

struct scene_record {
    char name[32];
    uint32_t object_count;
    uint8_t camera_facing[max_scene_objects / 8]; // object n: bit 128 >> (n % 8) of byte n / 8
    scene_object* objects;                        // object_count of them; owned, null when there are none
};
