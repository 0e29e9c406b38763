// Upload of pictures to OpenGL: generated textures, image textures, cube maps.
//
// Called on the render thread with a current context. Pixels stay the caller's
// unless it says otherwise.
#pragma once

#include "model/capabilities.h"
#include "model/document.h"
#include "model/records.h"

#include <cstdint>

// Uploads levels 1, 2, .. of the bound GL_TEXTURE_2D, whose level 0 is there.
void build_mipmaps(uint32_t width, uint32_t height, const uint8_t* pixels, uint32_t components,
    uint32_t internal_format);

// The same with ready-made levels 1 and 2 (null: computed).
void build_mipmaps_with_levels(uint32_t width, uint32_t height, const uint8_t* pixels, uint32_t components,
    uint32_t internal_format, const uint8_t* level1, const uint8_t* level2);

// Makes the empty 256 x 256 texture object of an output node, with its filters.
void create_output_texture_gl(texture_node& node, const texture_format_table& formats);

// Uploads every computed output node of the table; mipmaps for filter 2 only.
void upload_generated_textures_gl(record_table* texture_table, const texture_format_table& formats);

// Makes a picture's texture and frees its decoded pixels.
void upload_image_texture_gl(image_texture& image, const texture_format_table& formats);
void upload_cube_map_gl(cube_map& cube, const texture_format_table& formats);

// Replaces a render target's texture by an empty RGB one of the given size,
// both filters linear.
void recreate_target_gl(image_texture& image, uint32_t width, uint32_t height);
