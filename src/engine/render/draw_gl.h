// Drawing one mesh: its arrays, its material or program, and its copies.
#pragma once

#include "model/capabilities.h"
#include "render/frame.h"
#include "render/gl_state.h"

// Carries out a draw command of the frame.
void draw_mesh_gl(const frame& f, const draw_command& draw, const gl_caps& caps, bool glsl, gl_state& gl);

// Puts moved vertices into the buffers for them.
void upload_vertices_gl(const vertices_command& vertices, gl_state& gl);
