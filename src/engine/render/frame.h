// The frame: what one moment's drawing is made of, as plain records in one place that is
// used again for every frame.
//
// Advancing fills the first part: what moves is brought to the moment, and each mesh that
// will be drawn is listed with its copies, vertices and pictures. Planning fills the second:
// the commands that drawing carries out in order. Nothing is allocated once the lists have
// grown to what a show needs. Addresses in a frame are good until the next one is advanced.
// Angles are degrees, sizes pixels, matrices as in content/matrix.h.
#pragma once

#include "effects/manipulator.h"
#include "model/records.h"
#include "model/timeline.h"

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <vector>

constexpr uint32_t no_index = 0xFFFFFFFFu;
constexpr size_t not_kept = ~size_t{0};

// ---- what advancing leaves ------------------------------------------------------

// Positions and normals of a mesh that moves, as one drawing needs them. They lie where the
// simulation has them; when that moves on within the frame, they are kept in frame.vertices.
struct moved_vertices {
    const void* owner;      // the mesh of an effect or the rippler's cache; null: kept from the start
    const float* positions; // 3 a vertex, while the owner has not moved on
    const float* normals;   // null: none
    uint32_t vertex_count;
    size_t kept_positions; // where they begin in frame.vertices, or not_kept
    size_t kept_normals;
    bool streamed; // they go through the buffers for moving vertices where buffers are used
};

// A picture that was computed anew before a mesh is drawn.
struct fresh_picture {
    dynamic_texture* texture;
    size_t pixels; // where they begin in frame.pixels
};

// One mesh in drawing order: a mesh of the pack, of an effect, or a letter.
struct mesh_to_draw {
    mesh_arrays* mesh;
    const material_record* material; // null: the state as it stands
    uint32_t numbers;                // the material's, in frame.numbers
    uint32_t first_placement;        // in frame.placements
    uint32_t placement_count;
    float pen;          // added to the x of every placement; 0 but for letters
    bool facing_camera; // copies turn back toward the camera
    uint32_t moved;     // index in frame.moved; no_index: the mesh's own vertices
    uint32_t fresh;     // first picture in frame.pictures
    uint32_t fresh_count;
    uint32_t object; // whose it is: from 0, in the layer's scene
};

// ---- what stands when a mesh is drawn -------------------------------------------

constexpr uint8_t wrap_as_it_is = 0xFF; // no material has shown the picture

struct light_state {
    float position[3]; // in the world
    float ambient[3];
    float diffuse[3];
};

struct fog_state {
    float color[3];
    float start; // distances from the eye
    float end;
};

// What the functions of a material say when a mesh is drawn with it. What the path or the
// material does not ask for is 0. Numbers of four bytes only, so that two compare as bytes.
struct material_numbers {
    float line_width;
    float color[4];        // (fixed path)
    uint32_t has_light[2]; // (fixed path: the second one only beside the first)
    light_state light[2];  // (shader path: the position alone)
    fog_state fog;         // (fixed path)
    float uniforms[user_uniform_count];
};

// One unit as materials and copies into textures have left it. On the shader path only
// the textures and how they wrap count.
struct unit_state {
    bool used;             // some material has set it up
    bool on;               // it takes part (fixed path)
    bool cube_map;         // its cube map wins over its flat picture
    bool mesh_coordinates; // it reads the mesh's coordinates
    uint8_t wrap;          // wrap_kind of the picture in use, or wrap_as_it_is
    uint8_t coordinates;   // coordinate_generation
    uint8_t combine_mode;  // by the unit's own list
    uint32_t flat_texture; // OpenGL names; 0: none
    uint32_t cube_texture;
    float matrix[16];
};

// Everything that stands. A mesh without a material is drawn with what the meshes before it
// left, so it passes from mesh to mesh and from frame to frame.
struct material_state {
    bool applied;     // some material has been; until then all but `depth_test` is a new context's
    bool depth_test;  // of the layer, then of the material
    bool cull_back;   // back faces are left out
    bool normalize;   // normals are brought to length 1 (fixed path)
    bool wireframe;   // polygons are drawn as their edges (fixed path)
    uint8_t lights;   // 0..2 (fixed path)
    uint8_t blending; // blend_kind; blend_none: never set
    uint8_t fog_type; // fog_kind (fixed path)
    float line_width; // 0: never set
    float color[4];   // (fixed path)
    light_state light[2];
    float light_view[16]; // the modelview matrix that the lights were given under
    fog_state fog;
    unit_state units[texture_unit_count];
};

constexpr uint8_t blend_none = 0xFF;

// The program in use and what its uniforms hold. Locations are -1 where it has none.
enum program_status : uint8_t {
    program_never, // no material has been applied: the fixed pipeline draws
    program_ready,
    program_failed // the last material's program did not build: nothing is drawn
};

struct program_state {
    uint8_t status; // program_status
    bool has_light[2];
    bool turns_texture; // texture_matrix is wanted
    bool transposed;    // texture_matrix goes up transposed
    uint32_t program;   // OpenGL name
    int32_t projection; // locations of uniforms
    int32_t modelview;
    int32_t normal_matrix;
    int32_t texture_matrix_location;
    int32_t light_location[2];
    int32_t uniform_location[user_uniform_count]; // -1 also where no function drives it
    int32_t position;                             // locations of attributes
    int32_t normal;
    int32_t texcoord[texture_unit_count];
    float texture_matrix[16];
    float light_position[2][3]; // as the eye sees them
    float uniforms[user_uniform_count];
};

// ---- commands ---------------------------------------------------------------------

enum command_kind : uint8_t {
    command_copy,     // the frame buffer's corner into a texture
    command_recreate, // a target's texture in another size
    command_viewport,
    command_clear,
    command_upload,   // a picture's pixels
    command_vertices, // moved vertices into the buffers for them
    command_lines,    // the lines of a mesh into a buffer, once
    command_draw
};

// The commands of a frame in order; `index` is into the list of the kind.
struct frame_command {
    uint8_t kind; // command_kind
    uint32_t index;
};

struct copy_command {
    uint32_t texture; // OpenGL name
    uint32_t width;
    uint32_t height;
};

struct recreate_command {
    uint32_t old_texture; // OpenGL names
    uint32_t texture;
    uint32_t width;
    uint32_t height;
};

struct viewport_command {
    uint32_t width;
    uint32_t height;
};

struct clear_command {
    uint8_t bits;   // clear_bits
    float color[4]; // of clear_color
};

struct upload_command {
    dynamic_texture* texture;
    size_t pixels; // where they begin in frame.pixels
};

struct vertices_command {
    const float* positions;
    const float* normals; // null: none
    uint32_t vertex_count;
};

struct lines_command {
    mesh_arrays* mesh;
};

// Where vertices or indices are: an address, or the start of a buffer. Neither: none.
struct array_source {
    const void* data;
    uint32_t buffer; // OpenGL name
    bool streamed;   // in the buffer that the last command_vertices filled
};

// What a layer's meshes are seen through.
struct view_state {
    float projection[16];
    float camera[16];
};

// One copy of a mesh.
struct copy_transform {
    float modelview[16];
    float normal_matrix[9]; // for programs that ask for it
};

struct draw_command {
    uint32_t mesh;     // index in frame.meshes
    uint32_t view;     // index in frame.views
    uint32_t material; // in frame.materials
    uint32_t program;  // in frame.programs; no_index: the fixed pipeline
    array_source positions;
    array_source normals;
    array_source coordinates[texture_unit_count];
    array_source indices;
    bool lines; // pairs of indices are lines, else threes are triangles
    uint32_t index_count;
    uint32_t first_copy; // in frame.copies
    uint32_t copy_count;
};

// ---- the frame --------------------------------------------------------------------

struct frame {
    // advancing
    std::vector<placement> placements;
    std::vector<float> vertices; // kept ones, 3 a vertex
    std::vector<uint8_t> pixels; // of fresh pictures
    std::vector<moved_vertices> moved;
    std::vector<fresh_picture> pictures;
    std::vector<material_numbers> numbers;
    std::vector<mesh_to_draw> meshes;
    uint32_t mesh_end[track_count]; // where each layer's meshes end

    // planning
    std::vector<frame_command> commands;
    uint32_t command_end[track_count]; // where each layer's commands end
    std::vector<copy_command> texture_copies;
    std::vector<recreate_command> recreations;
    std::vector<viewport_command> viewports;
    std::vector<clear_command> clears;
    std::vector<upload_command> uploads;
    std::vector<vertices_command> vertex_uploads;
    std::vector<lines_command> line_uploads;
    std::vector<draw_command> draws;
    std::vector<view_state> views;
    std::vector<material_state> materials;
    std::vector<program_state> programs;
    std::vector<copy_transform> copies;
};

// What a command or a draw names by its place in one of the lists.
template <typename record_type> const record_type& listed(const std::vector<record_type>& list, uint32_t index)
{
    assert(index < list.size());
    return list[index];
}

// Empties what advancing fills, or what planning fills; the storage stays.
void clear_advanced(frame& f);
void clear_planned(frame& f);

// What passes from frame to frame while frames are planned.
struct standing_state {
    float projection[16];
    float clear_color[4];
    uint32_t viewport_width; // of the last layer that chose one; 0: none has
    uint32_t viewport_height;
    bool viewport_on_screen; // so that tiles cut it
    material_state material;
    program_state program;
    std::vector<uint8_t>
        wraps; // wrap_kind that a material last gave a flat picture, by its OpenGL name, or wrap_as_it_is
};

// As the display's set-up leaves it.
standing_state initial_standing_state();
