#include "effects/dynamic_texture_gl.h"

#include "effects/dynamic_texture.h"

#include <GL/glew.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

static size_t picture_bytes(const dynamic_texture& texture)
{
    return static_cast<size_t>(texture.width) * texture.height * (texture.bpp / 8);
}

static GLenum pixel_format(const dynamic_texture& texture)
{
    return texture.bpp == 8 ? GL_LUMINANCE : GL_RGB;
}

// Rows are a multiple of 64 bytes long: any unpack alignment suits them.
static void replace_pixels(const dynamic_texture& texture, const void* pixels)
{
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, static_cast<GLsizei>(texture.width), static_cast<GLsizei>(texture.height),
        pixel_format(texture), GL_UNSIGNED_BYTE, pixels);
}

// Through the driver's memory. New storage every time, so that the driver need not wait for
// the upload before. False when the buffer could not be had.
static bool upload_through_buffer(dynamic_texture& texture, const uint8_t* pixels)
{
    if (texture.pbo == 0)
        glGenBuffers(1, &texture.pbo);
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, texture.pbo);
    glBufferData(GL_PIXEL_UNPACK_BUFFER, static_cast<GLsizeiptr>(picture_bytes(texture)), nullptr, GL_STREAM_DRAW);

    bool filled = false;
    if (void* mapping = glMapBuffer(GL_PIXEL_UNPACK_BUFFER, GL_WRITE_ONLY)) {
        std::memcpy(mapping, pixels, picture_bytes(texture));
        filled = glUnmapBuffer(GL_PIXEL_UNPACK_BUFFER) == GL_TRUE;
    }
    if (filled)
        replace_pixels(texture, nullptr);
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
    return filled;
}

void upload_dynamic_texture_gl(dynamic_texture& texture, const uint8_t* pixels, bool use_pbo)
{
    if (!use_pbo || !upload_through_buffer(texture, pixels))
        replace_pixels(texture, pixels);
}

// Storage of black pixels, so that a texture that is never refreshed is defined.
static void create_storage(dynamic_texture& texture, const texture_format_table& formats)
{
    const uint32_t index = std::min<uint32_t>(texture.texture_format, texture_format_count - 1);
    const GLint filter = texture.texture_filter != 0 ? GL_LINEAR : GL_NEAREST; // never mipmaps
    void* black = std::calloc(1, picture_bytes(texture));

    glGenTextures(1, &texture.texture);
    glBindTexture(GL_TEXTURE_2D, texture.texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, filter);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, filter);
    glTexImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(formats.format[index]), static_cast<GLsizei>(texture.width),
        static_cast<GLsizei>(texture.height), 0, pixel_format(texture), GL_UNSIGNED_BYTE, black);
    std::free(black);
}

void create_dynamic_texture_gl(dynamic_texture& texture, const table<animation_function>& functions,
    const texture_format_table& formats, bool first_image, bool use_pbo)
{
    texture.state = init_dynamic_texture(texture.type, texture.width, texture.height, texture.bpp);
    texture.pbo = 0;
    texture.refreshed = 0;
    create_storage(texture, formats);
    if (!first_image)
        return;
    std::vector<uint8_t> pixels;
    render_first_dynamic_texture(texture, functions, pixels);
    upload_dynamic_texture_gl(texture, pixels.data(), use_pbo);
}

void release_dynamic_texture_gl(dynamic_texture& texture)
{
    if (texture.texture != 0)
        glDeleteTextures(1, &texture.texture);
    if (texture.pbo != 0)
        glDeleteBuffers(1, &texture.pbo);
    free_dynamic_texture(texture.state);
    texture.texture = 0;
    texture.pbo = 0;
    texture.state = nullptr;
    texture.refreshed = 0;
}
