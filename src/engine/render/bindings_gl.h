// Binding and switching: the calls that several parts of drawing share, each left out where
// the context is already so.
#pragma once

#include "render/gl_state.h"

#include <cassert>
#include <cstdint>
#include <cstring>

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

// Whether numbers have the same bits. Their count is known where it is asked, so that the answer is a
// few vector instructions: a frame asks thousands of times.
template <uint32_t count> inline bool same_numbers(const float* a, const float* b)
{
    uint32_t difference = 0;
    for (uint32_t i = 0; i < count; ++i) {
        uint32_t bits[2];
        std::memcpy(bits, a + i, sizeof bits[0]);
        std::memcpy(bits + 1, b + i, sizeof bits[1]);
        difference |= bits[0] ^ bits[1];
    }
    return difference == 0;
}

// Remembers a matrix (or other numbers) in `known`; false: it was there already.
template <uint32_t count> inline bool remember_numbers(const float* wanted, float (&known)[count], bool& has)
{
    assert(wanted != nullptr);
    if (has && same_numbers<count>(wanted, known))
        return false;
    std::memcpy(known, wanted, sizeof known);
    has = true;
    return true;
}
