// The scene plan: what a placed object means at a moment - its own time, whether it
// shows, where it stands - without OpenGL.
//
// Times are ticks of 1/100 s. Evaluating changes function caches, nothing else.
#pragma once

#include "effects/manipulator.h"
#include "model/document.h"
#include "model/records.h"

#include <cstdint>
#include <string>

// The layer's time plus the object's offset, truncated and taken as an unsigned tick, as a
// clip's own offset is: a sum below 0 is a very late time, at which functions stand at
// their end or somewhere in their loop. What no int32_t holds (and not-a-number) is tick
// 2147483648.
uint32_t object_time(uint32_t layer_time, float offset);

// False where the visibility function is below 1.0. Without a function, or with a
// dangling one, the object shows.
bool object_is_visible(const scene_object& object, const table<animation_function>& functions, uint32_t time);

// The object's camera-facing flag.
bool faces_camera(const scene_record& scene, uint32_t object_number);

// The nine animated values of the object itself.
placement object_placement(const scene_object& object, const table<animation_function>& functions, uint32_t time);

// The line that says of an object (from 0) of a scene that its copies end too early.
std::string cut_copies_line(const document& d, uint32_t scene_handle, uint32_t object_number);

// The mesh a manipulator names: of mesh_table, or of an effect with model_type 1. Null: none.
const mesh_arrays* manipulator_mesh(const manipulator_record& manipulator, const document& d);

// The lines of a mesh's triangles: a, b, b, c, c, a each, 2 x index_count indices in
// mesh.line_indices (made anew, owned by the mesh). Prints "GenerateLineIndexArray" on
// standard output each time it is called; callers ask once per mesh.
void generate_line_index_array(mesh_arrays& mesh);
