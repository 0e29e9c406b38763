#include "render/draw_gl.h"

#include "content/instructions.h"
#include "render/bindings_gl.h"
#include "render/material_gl.h"

#include <GL/glew.h>

#include <bit>
#include <cassert>
#include <cstring>

// ---- arrays -----------------------------------------------------------------------

static bool has_array(const array_source& array)
{
    return array.data != nullptr || array.buffer != 0;
}

// Where a streamed array is: in the buffer for it.
static array_source resolved(const array_source& array, uint32_t stream_buffer)
{
    assert(!array.streamed || stream_buffer != 0); // a command_vertices comes first
    return array.streamed ? array_source{nullptr, stream_buffer, false} : array;
}

// Whether an array must be pointed anew.
static bool points_elsewhere(const array_source& array, known_array& known)
{
    if (known.pointed && known.source.data == array.data && known.source.buffer == array.buffer)
        return false;
    known.pointed = true;
    known.source = array;
    return true;
}

static void switch_array(GLenum name, bool on, known_array& known)
{
    const uint8_t wanted = on ? switched_on : switched_off;
    if (known.on == wanted)
        return;
    known.on = wanted;
    if (on)
        glEnableClientState(name);
    else
        glDisableClientState(name);
}

static void point_vertices(const draw_command& draw, gl_state& gl)
{
    const array_source normals = resolved(draw.normals, gl.moved_normals);
    switch_array(GL_NORMAL_ARRAY, has_array(normals), gl.normals);
    if (has_array(normals) && points_elsewhere(normals, gl.normals)) {
        bind_array_buffer_gl(normals.buffer, gl);
        glNormalPointer(GL_FLOAT, 0, normals.data);
    }
    const array_source positions = resolved(draw.positions, gl.moved_positions);
    switch_array(GL_VERTEX_ARRAY, true, gl.positions);
    if (points_elsewhere(positions, gl.positions)) {
        bind_array_buffer_gl(positions.buffer, gl);
        glVertexPointer(3, GL_FLOAT, 0, positions.data);
    }
}

static void select_client_unit(uint32_t unit, gl_state& gl)
{
    assert(unit < texture_unit_count);
    if (gl.client_unit == unit)
        return;
    gl.client_unit = unit;
    glClientActiveTexture(GL_TEXTURE0 + unit);
}

// A mesh without coordinates has (0, 0) everywhere: what is current after a draw with an array
// is the driver's own affair.
static void set_origin_coordinates(uint32_t number, known_unit& known)
{
    if (known.at_origin)
        return;
    known.at_origin = true;
    glMultiTexCoord4f(GL_TEXTURE0 + number, 0.0f, 0.0f, 0.0f, 1.0f);
}

// Switches a unit's coordinate array on where it is wanted and the mesh has one.
static void point_unit_coordinates(const draw_command& draw, uint32_t number, const unit_state& unit, gl_state& gl)
{
    const array_source& array = draw.coordinates[number];
    known_unit& known = gl.units[number];
    known_array& known_coordinates = known.coordinate_array;
    const bool on = unit.mesh_coordinates && has_array(array);
    if (known_coordinates.on != (on ? switched_on : switched_off))
        select_client_unit(number, gl);
    switch_array(GL_TEXTURE_COORD_ARRAY, on, known_coordinates);
    if (on)
        known.at_origin = false;
    else if (unit.mesh_coordinates)
        set_origin_coordinates(number, known);
    if (!on || !points_elsewhere(array, known_coordinates))
        return;
    select_client_unit(number, gl);
    bind_array_buffer_gl(array.buffer, gl);
    glTexCoordPointer(2, GL_FLOAT, 0, array.data); // null: the start of the bound buffer
}

static void point_coordinates(const draw_command& draw, const material_state& material, gl_state& gl)
{
    for (uint32_t i = 0; i < texture_unit_count; ++i)
        if (material.units[i].used || gl.units[i].coordinate_array.on == switched_on)
            point_unit_coordinates(draw, i, material.units[i], gl);
}

// ---- attributes of programs -----------------------------------------------------------

FAST_INLINE void feed_attribute(
    int32_t location, int32_t components, const array_source& array, uint32_t& fed, gl_state& gl)
{
    if (location < 0 || location >= static_cast<int32_t>(max_known_attributes))
        return;
    assert(has_array(array));
    const GLuint index = static_cast<GLuint>(location);
    known_array& known = gl.attributes[index];
    fed |= 1u << index;
    gl.attribute_at_origin[index] = false;
    if (points_elsewhere(array, known)) {
        bind_array_buffer_gl(array.buffer, gl);
        glVertexAttribPointer(index, components, GL_FLOAT, GL_FALSE, 0, array.data);
    }
    if ((gl.attributes_on & (1u << index)) == 0)
        glEnableVertexAttribArray(index);
    gl.attributes_on |= 1u << index;
}

// (0, 0) at every vertex, as on the fixed path.
static void set_origin_attribute(int32_t location, gl_state& gl)
{
    if (location < 0 || location >= static_cast<int32_t>(max_known_attributes) || glVertexAttrib4f == nullptr)
        return;
    const GLuint index = static_cast<GLuint>(location);
    if (gl.attribute_at_origin[index])
        return;
    gl.attribute_at_origin[index] = true;
    glVertexAttrib4f(index, 0.0f, 0.0f, 0.0f, 1.0f);
}

static void switch_others_off(uint32_t fed, gl_state& gl)
{
    for (uint32_t others = gl.attributes_on & ~fed; others != 0; others &= others - 1)
        glDisableVertexAttribArray(static_cast<GLuint>(std::countr_zero(others)));
    gl.attributes_on &= fed;
}

// Positions first: their buffer is the one that is bound.
static void feed_program(const draw_command& draw, const program_state& program, gl_state& gl)
{
    uint32_t fed = 0;
    feed_attribute(program.position, 3, resolved(draw.positions, gl.moved_positions), fed, gl);
    const array_source normals = resolved(draw.normals, gl.moved_normals);
    if (has_array(normals))
        feed_attribute(program.normal, 3, normals, fed, gl);
    for (uint32_t i = 0; i < texture_unit_count; ++i)
        if (has_array(draw.coordinates[i]))
            feed_attribute(program.texcoord[i], 2, draw.coordinates[i], fed, gl);
    switch_others_off(fed, gl);
    for (uint32_t i = 0; i < texture_unit_count; ++i)
        if (!has_array(draw.coordinates[i]))
            set_origin_attribute(program.texcoord[i], gl);
}

// ---- copies -----------------------------------------------------------------------------

static void draw_elements(const draw_command& draw)
{
    glDrawElements(draw.lines ? GL_LINES : GL_TRIANGLES, static_cast<GLsizei>(draw.index_count), GL_UNSIGNED_SHORT,
        draw.indices.data);
}

static void draw_copies_fixed(const frame& f, const draw_command& draw, gl_state& gl)
{
    for (uint32_t i = 0; i < draw.copy_count; ++i) {
        load_modelview_gl(f.copies[draw.first_copy + i].modelview, gl);
        draw_elements(draw);
    }
}

static void draw_copies_glsl(
    const frame& f, const draw_command& draw, const program_state& program, known_program& known)
{
    const float* projection = f.views[draw.view].projection;
    if (program.projection >= 0 && remember_numbers(projection, known.projection, known.has_projection))
        glUniformMatrix4fv(program.projection, 1, GL_FALSE, projection);
    for (uint32_t i = 0; i < draw.copy_count; ++i) {
        const copy_transform& copy = f.copies[draw.first_copy + i];
        if (program.modelview >= 0 && remember_numbers(copy.modelview, known.modelview, known.has_modelview))
            glUniformMatrix4fv(program.modelview, 1, GL_FALSE, copy.modelview);
        if (program.normal_matrix >= 0 // stored by rows, read by columns: the inverse transpose
            && remember_numbers(copy.normal_matrix, known.normal_matrix, known.has_normal_matrix))
            glUniformMatrix3fv(program.normal_matrix, 1, GL_FALSE, copy.normal_matrix);
        draw_elements(draw);
    }
}

// ---- one mesh -----------------------------------------------------------------------------

void upload_vertices_gl(const vertices_command& vertices, gl_state& gl)
{
    assert(vertices.positions != nullptr && vertices.vertex_count > 0);
    const GLsizeiptr bytes = static_cast<GLsizeiptr>(size_t{vertices.vertex_count} * 3 * sizeof(float));
    if (gl.moved_positions == 0)
        glGenBuffers(1, &gl.moved_positions);
    bind_array_buffer_gl(gl.moved_positions, gl);
    glBufferData(GL_ARRAY_BUFFER, bytes, vertices.positions, GL_STREAM_DRAW);
    if (vertices.normals == nullptr)
        return;
    if (gl.moved_normals == 0)
        glGenBuffers(1, &gl.moved_normals);
    bind_array_buffer_gl(gl.moved_normals, gl);
    glBufferData(GL_ARRAY_BUFFER, bytes, vertices.normals, GL_STREAM_DRAW);
}

void draw_mesh_gl(const frame& f, const draw_command& draw, const gl_caps& caps, bool glsl, gl_state& gl)
{
    assert(size_t{draw.first_copy} + draw.copy_count <= f.copies.size());
    assert(glsl || draw.program == no_index);
    assert(has_array(draw.indices) || draw.index_count == 0);
    const material_state& material = listed(f.materials, draw.material);
    const view_state& view = listed(f.views, draw.view);
    load_projection_gl(view.projection, gl);
    point_vertices(draw, gl);
    bind_element_buffer_gl(draw.indices.buffer, gl);
    const bool stands = gl.drawn_material == draw.material;
    gl.drawn_material = draw.material;
    if (!glsl) {
        if (!stands)
            set_material_fixed_gl(material, caps, gl);
        point_coordinates(draw, material, gl);
        return draw_copies_fixed(f, draw, gl);
    }
    if (!stands)
        set_material_glsl_gl(material, gl);
    if (draw.program == no_index) {
        use_no_program_gl(gl);
        switch_others_off(0, gl);
        return draw_copies_fixed(f, draw, gl);
    }
    load_modelview_gl(view.camera, gl);
    const program_state& program = listed(f.programs, draw.program);
    known_program& known = set_program_gl(program, gl);
    feed_program(draw, program, gl);
    draw_copies_glsl(f, draw, program, known);
}
