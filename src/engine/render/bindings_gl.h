// Binding and switching: the calls that several parts of drawing share, each left out where
// the context is already so.
#pragma once

#include "render/gl_state.h"

#include <cassert>
#include <cstdint>
#include <cstring>

// What is asked for thousands of times a frame and mostly known already is compared where it is asked. tell_..._gl
// are the calls that are left.

void tell_switch_gl(uint32_t capability, bool on, uint8_t& known);
void tell_unit_gl(uint32_t unit, gl_state& gl);
void tell_texture_gl(uint32_t unit, bool cube_map, uint32_t texture, gl_state& gl);
void tell_array_buffer_gl(uint32_t buffer, gl_state& gl);
void tell_element_buffer_gl(uint32_t buffer, gl_state& gl);
void tell_projection_gl(const float matrix[16]);

// glEnable or glDisable of a capability that `known` remembers.
inline void switch_gl(uint32_t capability, bool on, uint8_t& known)
{
    assert(known <= switch_unknown);
    if (known != (on ? switched_on : switched_off))
        tell_switch_gl(capability, on, known);
}

// The unit that textures are bound to and that combiners belong to.
inline void select_unit_gl(uint32_t unit, gl_state& gl)
{
    assert(unit < texture_unit_count);
    if (gl.active_unit != unit)
        tell_unit_gl(unit, gl);
}

// Binds a flat picture or a cube map to a unit.
inline void bind_texture_gl(uint32_t unit, bool cube_map, uint32_t texture, gl_state& gl)
{
    assert(unit < texture_unit_count && texture != unknown_name);
    if ((cube_map ? gl.units[unit].cube_texture : gl.units[unit].flat_texture) != texture)
        tell_texture_gl(unit, cube_map, texture, gl);
}

// The buffer that arrays are pointed into; 0: client memory. Nothing on drivers without buffers.
inline void bind_array_buffer_gl(uint32_t buffer, gl_state& gl)
{
    assert(buffer != unknown_name);
    if (gl.array_buffer != buffer)
        tell_array_buffer_gl(buffer, gl);
}

inline void bind_element_buffer_gl(uint32_t buffer, gl_state& gl)
{
    assert(buffer != unknown_name);
    if (gl.element_buffer != buffer)
        tell_element_buffer_gl(buffer, gl);
}

// Whether numbers have the same bits. Their count is known where it is asked, so that the answer is a
// few vector instructions: a frame asks thousands of times.
template <uint32_t count> inline bool same_numbers(const float* a, const float* b)
{
    if constexpr (count < 4) {
        return std::memcmp(a, b, count * sizeof(float)) == 0;
    } else {
        using four_bits = uint32_t __attribute__((vector_size(16)));
        using two_long_bits = uint64_t __attribute__((vector_size(16)));
        four_bits difference = {};
#pragma GCC unroll 8
        for (uint32_t i = 0; i < count; i += 4) {
            const uint32_t begin = i + 4 <= count ? i : count - 4; // the last four may overlap those before
            four_bits bits[2];
            std::memcpy(bits, a + begin, sizeof bits[0]);
            std::memcpy(bits + 1, b + begin, sizeof bits[1]);
            difference |= bits[0] ^ bits[1];
        }
        const two_long_bits halves = reinterpret_cast<two_long_bits>(difference);
        return (halves[0] | halves[1]) == 0;
    }
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

// Matrices of the fixed pipeline; the matrix mode is GL_MODELVIEW on return.
void load_modelview_gl(const float matrix[16], gl_state& gl);

inline void load_projection_gl(const float matrix[16], gl_state& gl)
{
    if (remember_numbers(matrix, gl.projection, gl.has_projection))
        tell_projection_gl(matrix);
}
