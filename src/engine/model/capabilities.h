// What the graphics driver offers, as plain numbers without OpenGL's headers.
//
// Filled once by the capability probe; the loading screen gets a copy without
// vertex buffers, pixel buffers and textures of any size.
#pragma once

#include <cstdint>

struct gl_caps {
    uint8_t vbo;                 // 1: vertex buffer objects are used
    uint8_t pbo;                 // 1: pixel buffer objects are used
    uint8_t npot;                // 1: textures may have any size
    uint8_t flag_3;              // 0xFF, never changed
    uint8_t texture_units;       // fixed-function units, at most 4
    uint8_t nv_combine4;         // 1: GL_NV_texture_env_combine4
    uint8_t ati_combine3;        // 1: GL_ATI_texture_env_combine3 and not the NV one
    uint8_t texture_compression; // 1: GL_ARB_texture_compression
    uint8_t flag_8;              // 0, never changed
    uint8_t flag_9;              // 0, never changed
};
static_assert(sizeof(gl_caps) == 10, "ten flags of one byte");

constexpr gl_caps initial_caps = {0, 0, 0, 0xFF, 2, 0, 0, 0, 0, 0};

// What a document asks the driver to keep a texture as. One that the driver lacks is kept as
// the plain one of the same channels, bump maps as RGB.
enum texture_format_kind : uint8_t {
    texture_format_rgb = 0,
    texture_format_rgba = 1,
    texture_format_luminance = 2,
    texture_format_luminance_alpha = 3,
    texture_format_compressed_rgb = 4,
    texture_format_compressed_rgba = 5,
    texture_format_compressed_luminance = 6,
    texture_format_compressed_luminance_alpha = 7,
    texture_format_bump_map = 8,
    texture_format_count
};

// OpenGL's internal formats, by texture_format_kind.
struct texture_format_table {
    uint32_t format[texture_format_count];
};
