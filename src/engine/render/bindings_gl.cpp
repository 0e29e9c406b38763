#include "render/bindings_gl.h"

#include <GL/glew.h>

void tell_switch_gl(uint32_t capability, bool on, uint8_t& known)
{
    known = on ? switched_on : switched_off;
    if (on)
        glEnable(capability);
    else
        glDisable(capability);
}

void tell_unit_gl(uint32_t unit, gl_state& gl)
{
    gl.active_unit = unit;
    glActiveTexture(GL_TEXTURE0 + unit);
}

void tell_texture_gl(uint32_t unit, bool cube_map, uint32_t texture, gl_state& gl)
{
    (cube_map ? gl.units[unit].cube_texture : gl.units[unit].flat_texture) = texture;
    select_unit_gl(unit, gl);
    glBindTexture(cube_map ? GL_TEXTURE_CUBE_MAP : GL_TEXTURE_2D, texture);
}

void tell_array_buffer_gl(uint32_t buffer, gl_state& gl)
{
    if (glBindBuffer == nullptr)
        return;
    gl.array_buffer = buffer;
    glBindBuffer(GL_ARRAY_BUFFER, buffer);
}

void tell_element_buffer_gl(uint32_t buffer, gl_state& gl)
{
    if (glBindBuffer == nullptr)
        return;
    gl.element_buffer = buffer;
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffer);
}

void tell_projection_gl(const float matrix[16])
{
    glMatrixMode(GL_PROJECTION);
    glLoadMatrixf(matrix);
    glMatrixMode(GL_MODELVIEW);
}

void load_modelview_gl(const float matrix[16], gl_state& gl)
{
    if (remember_numbers(matrix, gl.modelview, gl.has_modelview))
        glLoadMatrixf(matrix);
}
