#include "render/bindings_gl.h"

#include <GL/glew.h>

#include <cassert>

void switch_gl(uint32_t capability, bool on, uint8_t& known)
{
    assert(known <= switch_unknown);
    const uint8_t wanted = on ? switched_on : switched_off;
    if (known == wanted)
        return;
    known = wanted;
    if (on)
        glEnable(capability);
    else
        glDisable(capability);
}

void select_unit_gl(uint32_t unit, gl_state& gl)
{
    assert(unit < texture_unit_count);
    if (gl.active_unit == unit)
        return;
    gl.active_unit = unit;
    glActiveTexture(GL_TEXTURE0 + unit);
}

void bind_texture_gl(uint32_t unit, bool cube_map, uint32_t texture, gl_state& gl)
{
    assert(unit < texture_unit_count && texture != unknown_name);
    uint32_t& bound = cube_map ? gl.units[unit].cube_texture : gl.units[unit].flat_texture;
    if (bound == texture)
        return;
    bound = texture;
    select_unit_gl(unit, gl);
    glBindTexture(cube_map ? GL_TEXTURE_CUBE_MAP : GL_TEXTURE_2D, texture);
}

void bind_array_buffer_gl(uint32_t buffer, gl_state& gl)
{
    assert(buffer != unknown_name);
    if (gl.array_buffer == buffer || glBindBuffer == nullptr)
        return;
    gl.array_buffer = buffer;
    glBindBuffer(GL_ARRAY_BUFFER, buffer);
}

void bind_element_buffer_gl(uint32_t buffer, gl_state& gl)
{
    assert(buffer != unknown_name);
    if (gl.element_buffer == buffer || glBindBuffer == nullptr)
        return;
    gl.element_buffer = buffer;
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffer);
}

void load_modelview_gl(const float matrix[16], gl_state& gl)
{
    if (remember_numbers(matrix, gl.modelview, gl.has_modelview))
        glLoadMatrixf(matrix);
}

void load_projection_gl(const float matrix[16], gl_state& gl)
{
    if (!remember_numbers(matrix, gl.projection, gl.has_projection))
        return;
    glMatrixMode(GL_PROJECTION);
    glLoadMatrixf(matrix);
    glMatrixMode(GL_MODELVIEW);
}
