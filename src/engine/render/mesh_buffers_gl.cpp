#include "render/mesh_buffers_gl.h"

#include <GL/glew.h>

#include <algorithm>
#include <cstddef>

static void make_buffer(uint32_t& buffer, GLenum target, const void* data, size_t size)
{
    if (buffer != 0 || data == nullptr || size == 0)
        return;
    glGenBuffers(1, &buffer);
    glBindBuffer(target, buffer);
    glBufferData(target, static_cast<GLsizeiptr>(size), data, GL_STATIC_DRAW);
    glBindBuffer(target, 0);
}

static void drop_buffer(uint32_t& buffer)
{
    if (buffer != 0)
        glDeleteBuffers(1, &buffer);
    buffer = 0;
}

void create_mesh_buffers_gl(mesh_arrays& mesh)
{
    if (glGenBuffers == nullptr)
        return;
    const size_t vertex_bytes = size_t{mesh.vertex_count} * 3 * sizeof(float);
    make_buffer(mesh.position_buffer, GL_ARRAY_BUFFER, mesh.positions, vertex_bytes);
    make_buffer(mesh.normal_buffer, GL_ARRAY_BUFFER, mesh.normals, vertex_bytes);
    for (uint32_t set = 0; set < std::min(mesh.texcoord_sets, max_texcoord_sets); ++set)
        make_buffer(mesh.texcoord_buffer[set], GL_ARRAY_BUFFER, mesh.texcoords[set],
            size_t{mesh.vertex_count} * 2 * sizeof(float));
    make_buffer(mesh.index_buffer, GL_ELEMENT_ARRAY_BUFFER, mesh.indices, size_t{mesh.index_count} * sizeof(uint16_t));
}

void create_line_buffer_gl(mesh_arrays& mesh)
{
    if (glGenBuffers == nullptr)
        return;
    const size_t line_index_count = size_t{mesh.index_count} / 3 * 6; // three lines a triangle
    make_buffer(
        mesh.line_index_buffer, GL_ELEMENT_ARRAY_BUFFER, mesh.line_indices, line_index_count * sizeof(uint16_t));
}

void release_mesh_buffers_gl(mesh_arrays& mesh)
{
    if (glDeleteBuffers == nullptr)
        return;
    drop_buffer(mesh.position_buffer);
    drop_buffer(mesh.normal_buffer);
    for (uint32_t& buffer : mesh.texcoord_buffer)
        drop_buffer(buffer);
    drop_buffer(mesh.index_buffer);
    drop_buffer(mesh.line_index_buffer);
}
