// Buffer objects of meshes: the arrays of a mesh that never change, on the graphics card.
//
// Called on the render thread with a current context. Names stand in the mesh itself and 0 is none;
// a buffer is made once, and an empty array gets none. Each function leaves no buffer bound. Nothing
// happens, and nothing is reported, where the driver has no buffers.
#pragma once

#include "model/records.h"

// Puts positions, normals, coordinate sets and indices into buffers. The arrays stay the mesh's.
void create_mesh_buffers_gl(mesh_arrays& mesh);

// The same for the line indices of a wireframe, once they are there (line_indices).
void create_line_buffer_gl(mesh_arrays& mesh);

// Deletes all buffers of a mesh and forgets their names; twice is harmless.
void release_mesh_buffers_gl(mesh_arrays& mesh);
