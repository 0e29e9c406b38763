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

// OpenGL internal formats by a document's texture_format index 0..8.
constexpr uint32_t texture_format_count = 9;
struct texture_format_table {
    uint32_t format[texture_format_count];
};
