// Small pictures of textures, as PNG files of at most 96 x 96 pixels; empty where there are no pixels.
#pragma once

#include "model/document.h"

#include <cstdint>
#include <vector>

constexpr uint32_t thumbnail_side = 96; // pixels

// Makes the pixels of all generated images and texture nodes, as loading does. They belong to the document.
void compute_node_pictures(document& d);

std::vector<uint8_t> generated_image_thumbnail(const generated_image& image);
std::vector<uint8_t> texture_node_thumbnail(const texture_node& node);
std::vector<uint8_t> image_texture_thumbnail(const image_texture& image);

// Its six faces, +x -x +y above -y +z -z.
std::vector<uint8_t> cube_map_thumbnail(const cube_map& cube);

// The picture of two seconds; one that grows was made anew a hundred times until then.
std::vector<uint8_t> dynamic_texture_thumbnail(const dynamic_texture& texture, const document& d);
