// Binding and switching: the calls that several parts of drawing share, each left out where
// the context is already so.
#pragma once

#include "render/gl_state.h"

#include <cstdint>

// glEnable or glDisable of a capability that `known` remembers.
void switch_gl(uint32_t capability, bool on, uint8_t& known);

// The unit that textures are bound to and that combiners belong to.
void select_unit_gl(uint32_t unit, gl_state& gl);

// Binds a flat picture or a cube map to a unit.
void bind_texture_gl(uint32_t unit, bool cube_map, uint32_t texture, gl_state& gl);

// The buffer that arrays are pointed into; 0: client memory. Nothing on drivers without buffers.
void bind_array_buffer_gl(uint32_t buffer, gl_state& gl);
void bind_element_buffer_gl(uint32_t buffer, gl_state& gl);

// Matrices of the fixed pipeline; the matrix mode is GL_MODELVIEW on return.
void load_modelview_gl(const float matrix[16], gl_state& gl);
void load_projection_gl(const float matrix[16], gl_state& gl);

// Remembers a matrix (or other numbers) in `known`; false: it was there already.
bool remember_numbers(const float* wanted, float* known, uint32_t count, bool& has);
