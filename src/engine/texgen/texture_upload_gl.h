// Upload of pictures to OpenGL: generated textures, image textures, cube maps.
//
// Called on the render thread with a current context. Pixels stay the caller's
// unless it says otherwise. Each function leaves the texture it worked on bound and
// GL_UNPACK_ALIGNMENT at 4. Nothing is reported: what OpenGL refuses (a picture
// beyond the driver's greatest size) stays empty, and the show goes on. Beside each function
// that makes a texture stands the one that deletes it and forgets its name: OpenGL unbinds
// it where it is bound, and twice is harmless.
#pragma once

#include "model/capabilities.h"
#include "model/document.h"
#include "model/records.h"

#include <cstdint>

// Uploads levels 1, 2, .. of the bound GL_TEXTURE_2D, whose level 0 is there.
// `pixels` is level 0, rows without gaps. `components` is 3 or 4; any other number,
// also the compressed formats 34029 and 34030, uploads nothing.
void build_mipmaps(
    uint32_t width, uint32_t height, const uint8_t* pixels, uint32_t components, uint32_t internal_format);

// The same with ready-made levels 1 and 2 (null: computed).
void build_mipmaps_with_levels(uint32_t width, uint32_t height, const uint8_t* pixels, uint32_t components,
    uint32_t internal_format, const uint8_t* level1, const uint8_t* level2);

// Makes the empty 256 x 256 texture object of an output node, with its filters.
void create_output_texture_gl(texture_node& node, const texture_format_table& formats);
void release_output_texture_gl(texture_node& node);

// Uploads an output node that has a texture object: its pixels, or black where it was never
// computed. Mipmaps are built for filter_mipmaps only: greater numbers have the mipmapped filter
// too, and no levels, on purpose.
void upload_output_texture_gl(const texture_node& node, const texture_format_table& formats);

// All of a table.
void upload_generated_textures_gl(const table<texture_node>& texture_table, const texture_format_table& formats);

// Makes a picture's texture and frees its decoded pixels and ready-made levels.
void upload_image_texture_gl(image_texture& image, const texture_format_table& formats);

// Of a render target, the texture that was made for it last.
void release_image_texture_gl(image_texture& image);

// Makes a cube map's texture and frees its faces. Filters as of a picture, levels
// built face by face; how coordinates wrap is left to the material.
void upload_cube_map_gl(cube_map& cube, const texture_format_table& formats);
void release_cube_map_gl(cube_map& cube);

// Coordinates beyond a texture's edges do again what those of a new texture do.
void reset_wrap_gl(uint32_t texture, bool cube_map);

// Deletes a render target's texture and makes an empty (black) RGB one of the given size and
// name, both filters linear.
void recreate_target_gl(uint32_t old_texture, uint32_t texture, uint32_t width, uint32_t height);
