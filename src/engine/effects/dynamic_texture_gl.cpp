#include "effects/dynamic_texture_gl.h"

#include "effects/dynamic_texture.h"

#include <GL/glew.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

static size_t picture_bytes(const dynamic_texture& texture)
{
    return static_cast<size_t>(texture.width) * texture.height * (texture.bpp / 8);
}

static GLenum pixel_format(const dynamic_texture& texture)
{
    return texture.bpp == 8 ? GL_LUMINANCE : GL_RGB;
}

// Cleared first, because a kind may leave the picture as it is.
static void render_into(const dynamic_texture& texture, std::span<const float, 3> params, uint8_t* out)
{
    std::memset(out, 0, picture_bytes(texture));
    render_dynamic_texture(texture.type, texture.width, texture.height, texture.bpp, params, texture.state, out);
}

// Rows are a multiple of 64 bytes long: any unpack alignment suits them.
static void upload_pixels(const dynamic_texture& texture, const void* pixels)
{
    glBindTexture(GL_TEXTURE_2D, texture.texture);
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, static_cast<GLsizei>(texture.width), static_cast<GLsizei>(texture.height),
        pixel_format(texture), GL_UNSIGNED_BYTE, pixels);
}

// Renders straight into the driver's memory. New storage every time, so that the driver
// need not wait for the upload before. False when the buffer could not be had.
static bool refresh_through_buffer(dynamic_texture& texture, std::span<const float, 3> params)
{
    if (texture.pbo == 0)
        glGenBuffers(1, &texture.pbo);
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, texture.pbo);
    glBufferData(GL_PIXEL_UNPACK_BUFFER, static_cast<GLsizeiptr>(picture_bytes(texture)), nullptr, GL_STREAM_DRAW);

    bool filled = false;
    if (void* mapping = glMapBuffer(GL_PIXEL_UNPACK_BUFFER, GL_WRITE_ONLY)) {
        render_into(texture, params, static_cast<uint8_t*>(mapping));
        filled = glUnmapBuffer(GL_PIXEL_UNPACK_BUFFER) == GL_TRUE;
    }
    if (filled)
        upload_pixels(texture, nullptr);
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
    return filled;
}

static void refresh_through_memory(const dynamic_texture& texture, std::span<const float, 3> params)
{
    auto* pixels = static_cast<uint8_t*>(std::malloc(picture_bytes(texture)));
    if (pixels == nullptr)
        return;
    render_into(texture, params, pixels);
    upload_pixels(texture, pixels);
    std::free(pixels);
}

static void refresh(dynamic_texture& texture, std::span<const float, 3> params, uint32_t time, bool use_pbo)
{
    if (!use_pbo || !refresh_through_buffer(texture, params))
        refresh_through_memory(texture, params);
    texture.refresh_time = time;
    texture.refreshed = 1;
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
    float params[3];
    first_dynamic_texture_params(texture, functions, params);
    refresh(texture, params, 0, use_pbo);
}

void update_dynamic_texture(uint32_t handle, const table<dynamic_texture>& dynamic_textures,
    const table<animation_function>& functions, uint32_t time, bool use_pbo)
{
    dynamic_texture* texture = table_get(dynamic_textures, handle);
    if (texture == nullptr || texture->texture == 0 || (texture->refreshed != 0 && texture->refresh_time == time))
        return;
    float params[3];
    dynamic_texture_params(*texture, functions, time, params);
    refresh(*texture, params, time, use_pbo);
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
