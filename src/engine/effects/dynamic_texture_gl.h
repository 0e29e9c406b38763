// Dynamic textures on the graphics card: creation, and new pictures.
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

// Replaces the picture of the texture bound to GL_TEXTURE_2D of the active unit, which is this
// one. `pixels` has its whole size. With `use_pbo` through a pixel buffer, or from memory where
// that cannot be mapped.
void upload_dynamic_texture_gl(dynamic_texture& texture, const uint8_t* pixels, bool use_pbo);

// Releases the OpenGL objects and the effect's state; twice is harmless.
void release_dynamic_texture_gl(dynamic_texture& texture);
