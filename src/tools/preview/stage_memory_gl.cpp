#include "tools/preview/stage_memory_gl.h"

#include "tools/frames/frame_needs.h"

#include <GL/glew.h>

#include <algorithm>

namespace {

// A picture's texture and what its levels are made of.
struct texture_size {
    uint32_t texture;
    GLenum target;
    uint32_t width;
    uint32_t height;
    uint8_t format; // texture_format_kind
    bool mipmapped;
};

} // namespace

static uint32_t bytes_of_pixel(GLenum internal_format)
{
    switch (internal_format) {
    case GL_LUMINANCE:
        return 1;
    case GL_LUMINANCE_ALPHA:
        return 2;
    case GL_RGBA:
        return 4;
    default:
        return 3;
    }
}

static bool is_compressed(GLenum internal_format)
{
    return internal_format == GL_COMPRESSED_RGB || internal_format == GL_COMPRESSED_RGBA
        || internal_format == GL_COMPRESSED_LUMINANCE || internal_format == GL_COMPRESSED_LUMINANCE_ALPHA;
}

// The driver may have chosen not to compress it.
static uint64_t compressed_bytes(GLenum face, GLint level, uint64_t otherwise)
{
    GLint compressed = GL_FALSE;
    GLint bytes = 0;
    glGetTexLevelParameteriv(face, level, GL_TEXTURE_COMPRESSED, &compressed);
    if (compressed != GL_TRUE)
        return otherwise;
    glGetTexLevelParameteriv(face, level, GL_TEXTURE_COMPRESSED_IMAGE_SIZE, &bytes);
    return static_cast<uint64_t>(std::max(bytes, 0));
}

static uint64_t texture_bytes(const texture_size& size, const texture_format_table& formats)
{
    const GLenum format = formats.format[std::min<uint32_t>(size.format, texture_format_count - 1)];
    const bool asks = is_compressed(format);
    const bool is_cube = size.target == GL_TEXTURE_CUBE_MAP;
    if (asks)
        glBindTexture(size.target, size.texture);
    uint64_t bytes = 0;
    uint32_t width = size.width;
    uint32_t height = size.height;
    for (GLint level = 0;; ++level) {
        const uint64_t plain = uint64_t{width} * height * bytes_of_pixel(format);
        bytes += asks ? compressed_bytes(is_cube ? GL_TEXTURE_CUBE_MAP_POSITIVE_X : size.target, level, plain) : plain;
        if (!size.mipmapped || (width <= 1 && height <= 1))
            return is_cube ? bytes * cube_face_count : bytes;
        width = std::max(1u, width / 2);
        height = std::max(1u, height / 2);
    }
}

static void add_picture(const texture_size& size, const texture_format_table& formats, memory_kind& memory)
{
    if (size.texture == 0)
        return;
    memory.pictures += texture_bytes(size, formats);
    ++memory.picture_count;
}

static void add_pictures(const document& d, const texture_format_table& formats, memory_kind& memory)
{
    const std::vector<uint32_t> targets = render_targets(d);
    for (auto [handle, node] : d.texture_table)
        add_picture({node.texture, GL_TEXTURE_2D, generated_size, generated_size, node.texture_format,
                        node.texture_filter == filter_mipmaps},
            formats, memory);
    for (auto [handle, image] : d.image_texture_table)
        if (!std::binary_search(targets.begin(), targets.end(), handle))
            add_picture({image.texture, GL_TEXTURE_2D, image.width, image.height, image.texture_format,
                            image.texture_filter >= filter_mipmaps},
                formats, memory);
    for (auto [handle, cube] : d.cube_map_table)
        add_picture({cube.texture, GL_TEXTURE_CUBE_MAP, cube.size, cube.size, cube.texture_format,
                        cube.texture_filter >= filter_mipmaps},
            formats, memory);
    for (auto [handle, moving] : d.dynamic_texture_table) {
        add_picture({moving.texture, GL_TEXTURE_2D, moving.width, moving.height, moving.texture_format, false}, formats,
            memory);
        memory.pictures += moving.pbo != 0 ? uint64_t{moving.width} * moving.height * (moving.bpp / 8) : 0;
    }
}

static uint64_t mesh_bytes(const mesh_arrays& mesh)
{
    const uint64_t numbers = 3 + (mesh.normals != nullptr ? 3 : 0) + uint64_t{2} * mesh.texcoord_sets;
    return mesh.vertex_count * numbers * sizeof(float) + uint64_t{mesh.index_count} * sizeof(uint16_t);
}

memory_kind measure_memory_gl(const document& d, const texture_format_table& formats)
{
    memory_kind memory;
    add_pictures(d, formats, memory);
    for (auto [handle, mesh] : d.mesh_table) {
        memory.meshes += mesh_bytes(mesh.arrays);
        ++memory.mesh_count;
    }
    for (auto [handle, material] : d.material_table) {
        if (material.program == nullptr || material.program->program == 0)
            continue;
        memory.programs += static_cast<uint64_t>(material.program->vertex_length)
            + static_cast<uint64_t>(material.program->fragment_length);
        ++memory.program_count;
    }
    return memory;
}

void add_targets(const document& d, memory_kind& memory)
{
    for (const uint32_t target : render_targets(d)) {
        const image_texture* image = table_get(d.image_texture_table, target);
        if (image == nullptr || image->texture == 0)
            continue;
        memory.targets += uint64_t{image->width} * image->height * 3;
        ++memory.target_count;
    }
}
