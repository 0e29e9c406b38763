#include "texgen/texture_upload_gl.h"

#include "texgen/mipmaps.h"

#include <GL/glew.h>

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdlib>

constexpr uint32_t bump_format = 0x86F6;      // internal format, and external format of 3 components
constexpr uint32_t bump_format_of_4 = 0x86F7; // external format of 4 components

static uint32_t internal_format_of(const texture_format_table& formats, uint8_t index)
{
    return formats.format[index < texture_format_count ? index : uint8_t{texture_format_rgb}];
}

static GLenum external_format(uint32_t internal_format, uint32_t components)
{
    if (internal_format == bump_format)
        return components == 3 ? bump_format : bump_format_of_4;
    return components == 3 ? GL_RGB : GL_RGBA;
}

static void set_filters(GLenum target, GLint magnification, GLint minification)
{
    glTexParameteri(target, GL_TEXTURE_MAG_FILTER, magnification);
    glTexParameteri(target, GL_TEXTURE_MIN_FILTER, minification);
}

static void set_texture_filter(GLenum target, uint8_t filter)
{
    switch (static_cast<filter_kind>(filter)) {
    case filter_nearest:
        return set_filters(target, GL_NEAREST, GL_NEAREST);
    case filter_linear:
        return set_filters(target, GL_LINEAR, GL_LINEAR);
    case filter_mipmaps:
    case filter_kind_count:
        break; // beyond the catalogue, too
    }
    set_filters(target, GL_LINEAR, GL_LINEAR_MIPMAP_LINEAR);
}

namespace {

// One picture in memory, as glTexImage2D takes it.
struct picture {
    uint32_t width;
    uint32_t height;
    uint32_t components;
    const uint8_t* pixels;
};

} // namespace

// Rows without gaps are tight at OpenGL's own alignment of 4 only if their bytes
// are a multiple of it.
static void upload_base_level(GLenum target, const picture& level, uint32_t internal_format, GLenum format)
{
    assert(level.components == 3 || level.components == 4);
    const bool unaligned = (uint64_t{level.width} * level.components) % 4 != 0;
    if (unaligned)
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glTexImage2D(target, 0, static_cast<GLint>(internal_format), static_cast<GLsizei>(level.width),
        static_cast<GLsizei>(level.height), 0, format, GL_UNSIGNED_BYTE, level.pixels);
    if (unaligned)
        glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
}

static void upload_mipmaps(
    GLenum target, const picture& base, uint32_t internal_format, const uint8_t* level1, const uint8_t* level2)
{
    mipmap_chain chain = begin_mipmaps(base.width, base.height, base.pixels, base.components, level1, level2);
    int32_t alignment = 4;
    while (next_mipmap(chain)) {
        const mipmap_level& level = chain.made;
        if (level.unpack_alignment != alignment) {
            alignment = level.unpack_alignment;
            glPixelStorei(GL_UNPACK_ALIGNMENT, alignment);
        }
        glTexImage2D(target, static_cast<GLint>(chain.level), static_cast<GLint>(internal_format),
            static_cast<GLsizei>(level.width), static_cast<GLsizei>(level.height), 0,
            base.components == 3 ? GL_RGB : GL_RGBA, GL_UNSIGNED_BYTE, level.pixels.get());
    }
    if (chain.level != 0)
        glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
}

static void drop_texture(uint32_t& texture)
{
    if (texture != 0)
        glDeleteTextures(1, &texture);
    texture = 0;
}

static void free_pixels(uint8_t*& pixels)
{
    std::free(pixels);
    pixels = nullptr;
}

void build_mipmaps(
    uint32_t width, uint32_t height, const uint8_t* pixels, uint32_t components, uint32_t internal_format)
{
    build_mipmaps_with_levels(width, height, pixels, components, internal_format, nullptr, nullptr);
}

void build_mipmaps_with_levels(uint32_t width, uint32_t height, const uint8_t* pixels, uint32_t components,
    uint32_t internal_format, const uint8_t* level1, const uint8_t* level2)
{
    upload_mipmaps(GL_TEXTURE_2D, {width, height, components, pixels}, internal_format, level1, level2);
}

void create_output_texture_gl(texture_node& node, const texture_format_table& formats)
{
    glGenTextures(1, &node.texture);
    glBindTexture(GL_TEXTURE_2D, node.texture);
    upload_base_level(GL_TEXTURE_2D, {generated_size, generated_size, 3, nullptr},
        internal_format_of(formats, node.texture_format), GL_RGB);
    set_texture_filter(GL_TEXTURE_2D, node.texture_filter);
}

void release_output_texture_gl(texture_node& node)
{
    drop_texture(node.texture);
}

void upload_output_texture_gl(const texture_node& node, const texture_format_table& formats)
{
    static const std::array<uint8_t, size_t{3}* generated_size* generated_size> black = {};
    if (node.type != node_output || node.texture == 0)
        return;
    const uint8_t* pixels = node.pixels != nullptr ? node.pixels : black.data();
    const picture base = {generated_size, generated_size, 3, pixels};
    const uint32_t format = internal_format_of(formats, node.texture_format);
    glBindTexture(GL_TEXTURE_2D, node.texture);
    upload_base_level(GL_TEXTURE_2D, base, format, GL_RGB);
    if (node.texture_filter == filter_mipmaps)
        build_mipmaps(base.width, base.height, base.pixels, base.components, format);
}

void upload_generated_textures_gl(const table<texture_node>& texture_table, const texture_format_table& formats)
{
    for (auto [handle, node] : texture_table)
        upload_output_texture_gl(node, formats);
}

void upload_image_texture_gl(image_texture& image, const texture_format_table& formats)
{
    assert(image.pixels != nullptr && image.texture == 0);
    image.format = internal_format_of(formats, image.texture_format);
    glGenTextures(1, &image.texture);
    glBindTexture(GL_TEXTURE_2D, image.texture);
    const picture base = {image.width, image.height, image.components, image.pixels};
    upload_base_level(GL_TEXTURE_2D, base, image.format, external_format(image.format, image.components));
    if (image.format == bump_format) {
        const GLint filter = image.texture_filter != filter_nearest ? GL_LINEAR : GL_NEAREST;
        set_filters(GL_TEXTURE_2D, filter, filter);
    } else {
        set_texture_filter(GL_TEXTURE_2D, image.texture_filter);
        if (image.texture_filter >= filter_mipmaps)
            build_mipmaps_with_levels(
                image.width, image.height, image.pixels, image.components, image.format, image.level1, image.level2);
    }
    free_pixels(image.pixels);
    free_pixels(image.level1);
    free_pixels(image.level2);
}

void release_image_texture_gl(image_texture& image)
{
    drop_texture(image.texture);
}

void upload_cube_map_gl(cube_map& cube, const texture_format_table& formats)
{
    assert(cube.size > 0 && cube.texture == 0);
    const uint32_t format = internal_format_of(formats, cube.texture_format);
    const bool mipmapped = cube.texture_filter >= filter_mipmaps && format != bump_format;
    glGenTextures(1, &cube.texture);
    glBindTexture(GL_TEXTURE_CUBE_MAP, cube.texture);
    for (uint32_t face = 0; face < cube_face_count; ++face) {
        const GLenum target = GL_TEXTURE_CUBE_MAP_POSITIVE_X + face;
        const picture base = {cube.size, cube.size, cube.components[face], cube.faces[face]};
        upload_base_level(target, base, format, external_format(format, base.components));
        if (mipmapped)
            upload_mipmaps(target, base, format, nullptr, nullptr);
        free_pixels(cube.faces[face]);
    }
    set_texture_filter(GL_TEXTURE_CUBE_MAP,
        mipmapped || cube.texture_filter == filter_nearest ? cube.texture_filter : uint8_t{filter_linear});
}

void release_cube_map_gl(cube_map& cube)
{
    drop_texture(cube.texture);
}

void reset_wrap_gl(uint32_t texture, bool cube_map)
{
    const GLenum target = cube_map ? GL_TEXTURE_CUBE_MAP : GL_TEXTURE_2D;
    glBindTexture(target, texture);
    glTexParameteri(target, GL_TEXTURE_WRAP_S, GL_REPEAT);
    glTexParameteri(target, GL_TEXTURE_WRAP_T, GL_REPEAT);
}

void recreate_target_gl(uint32_t old_texture, uint32_t texture, uint32_t width, uint32_t height)
{
    glDeleteTextures(1, &old_texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    // Black, so that a target that is shown before its first copy is the same on every run.
    uint8_t* black = nullptr;
    if (uint64_t{width} * height < (uint64_t{1} << 31) / 3)
        black = static_cast<uint8_t*>(std::calloc(size_t{width} * height, 3));
    upload_base_level(GL_TEXTURE_2D, {width, height, 3, black}, recreated_target_format, GL_RGB);
    set_filters(GL_TEXTURE_2D, GL_LINEAR, GL_LINEAR);
    std::free(black);
}
