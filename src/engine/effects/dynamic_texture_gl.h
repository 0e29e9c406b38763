// Dynamic textures on the graphics card: creation, and refresh per function time.
#pragma once

#include "model/capabilities.h"
#include "model/record_table.h"
#include "model/records.h"

#include <cstdint>

// Makes the texture object with its storage and filters and the effect's state;
// with `first_image` also renders and uploads the picture of time 0, otherwise the
// texture starts black.
void create_dynamic_texture_gl(dynamic_texture& texture, const table<animation_function>& functions,
    const texture_format_table& formats, bool first_image, bool use_pbo);

// Renders and uploads the picture of `time`, unless that time's picture is there.
// With `use_pbo` through a pixel buffer, or through memory where that cannot be mapped:
// the pixels are the same. Leaves the texture bound to GL_TEXTURE_2D of the active unit.
// A dangling handle, or a texture that was never created, does nothing.
void update_dynamic_texture(uint32_t handle, const table<dynamic_texture>& dynamic_textures,
    const table<animation_function>& functions, uint32_t time, bool use_pbo);

// Releases the OpenGL objects and the effect's state; twice is harmless.
void release_dynamic_texture_gl(dynamic_texture& texture);
