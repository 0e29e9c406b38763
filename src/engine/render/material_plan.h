// The material plan: the numbers that a material means at a moment - colours,
// lights, fog, the pictures of its texture units - without OpenGL.
//
// material_state puts them together. Times are ticks of 1/100 s, angles degrees. Dangling
// references count as none. Evaluating changes the functions' caches, nothing else.
#pragma once

#include "model/document.h"
#include "model/records.h"
#include "render/frame.h"

#include <cstdint>

// True for sphere and cube maps; what is neither reads the mesh's own coordinates.
bool generates_coordinates(uint8_t cgenmode);

// The tables that a material's texture references lead through. Null tables are empty.
struct texture_tables {
    table<object_reference> objects;
    table<texture_node> generated;
    table<image_texture> images;
    table<dynamic_texture> dynamic;
    table<cube_map> cubes;
};

texture_tables texture_tables_of(const document& d);

// The picture behind a texture reference.
struct resolved_texture {
    bool found;       // false: nothing is there, an empty unit
    int32_t kind;     // texture_kind
    uint32_t id;      // handle in the kind's table
    uint32_t texture; // OpenGL name
};

resolved_texture resolve_texture(const texture_tables& tables, uint32_t reference);

// One texture unit in use.
struct unit_plan {
    uint32_t texture;         // OpenGL name
    uint32_t dynamic_texture; // handle to refresh before use; 0: none
    bool cube_map;            // a cube map, else a flat picture
    uint8_t wrapmode;         // 0 repeat, 1 edge clamp
    uint8_t cgenmode;         // coordinate_generation
    uint8_t rotation;         // not 0: the texture turns with the view
    uint8_t combine_mode;     // by the unit's own list
};

// The units in use, from the first on: the first empty one ends them, and so does
// `limit`. Returns how many of `units` were filled.
uint32_t plan_units(
    const material_record& material, const texture_tables& tables, uint32_t limit, unit_plan units[texture_unit_count]);

// Red, green, blue, alpha.
void plan_color(const material_record& material, const document& d, uint32_t time, float color[4]);

// 1.0 for a constant 1.0; line widths that are not above 0 mean nothing to OpenGL.
float plan_line_width(const material_record& material, const document& d, uint32_t time);

// False, and nothing written, for a light that does not exist.
bool plan_light(uint32_t light, const document& d, uint32_t time, light_state& out);

// Only a light's position; false as above.
bool plan_light_position(uint32_t light, const document& d, uint32_t time, float position[3]);

// The least distance between start and end.
constexpr float least_fog_width = 0.001f;

// Fog whose start is its end is drawn as if the end lay `least_fog_width` behind the start,
// or one step of a float where that is more: all fog from there on. Others stay.
void widen_fog(float& start, float& end);

// White without a fog colour; start and end are never equal.
fog_state plan_fog(const material_record& material, const document& d, uint32_t time);

// The texture matrix of a unit: turned about the picture's centre by the
// first camera angle where `rotation` is set, else turned back by both where
// `camera_rotation` is (so that reflections stay fixed in the world), else the identity.
// `camera_angles` are the rotations about y and about x.
void build_texture_matrix(bool rotation, bool camera_rotation, const float camera_angles[2], float out[16]);
