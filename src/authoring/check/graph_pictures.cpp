#include "authoring/check/graph_pictures.h"

#include "authoring/asset/pixels.h"
#include "effects/dynamic_texture.h"
#include "texgen/cosine_table.h"
#include "texgen/generators.h"
#include "texgen/maze_tables.h"
#include "texgen/texture_graph.h"

#include <algorithm>
#include <cstdlib>

void compute_node_pictures(document& d)
{
    build_cosine_table();
    build_maze_tables();
    for (uint32_t i = 0; i < d.generated_image_count; ++i) {
        generated_image& image = d.generated_images[i];
        if (image.pixels == nullptr)
            image.pixels = static_cast<uint8_t*>(std::calloc(size_t{generated_size} * generated_size, 3));
        if (image.pixels != nullptr)
            generate_image(image, generated_size);
    }
    generate_textures(d.texture_table, {d.generated_images, d.generated_image_count}, generated_size);
}

// Grey squares show through where a picture does.
static void lay_over_squares(pixel_block& block)
{
    constexpr uint32_t side = 8;
    pixel_block flat = {block.width, block.height, 3, {}};
    flat.bytes.reserve(size_t{block.width} * block.height * 3);
    for (uint32_t y = 0; y < block.height; ++y)
        for (uint32_t x = 0; x < block.width; ++x) {
            const uint8_t* pixel = block.bytes.data() + (size_t{y} * block.width + x) * 4;
            const uint32_t square = (x / side + y / side) % 2 == 0 ? 160 : 210;
            for (uint32_t c = 0; c < 3; ++c)
                flat.bytes.push_back(static_cast<uint8_t>((pixel[c] * pixel[3] + square * (255u - pixel[3])) / 255));
        }
    block = std::move(flat);
}

static std::vector<uint8_t> thumbnail_of(pixel_block block)
{
    const uint32_t longest = std::max(block.width, block.height);
    if (block.bytes.empty())
        return {};
    if (longest > thumbnail_side)
        block = scale_pixels(block, std::max(block.width * thumbnail_side / longest, 1u),
            std::max(block.height * thumbnail_side / longest, 1u));
    if (block.components == 4)
        lay_over_squares(block);
    return png_of_pixels(block);
}

static pixel_block block_of(const uint8_t* pixels, uint32_t width, uint32_t height, uint32_t components)
{
    if (pixels == nullptr || width == 0 || height == 0)
        return {};
    return {width, height, components, {pixels, pixels + size_t{width} * height * components}};
}

std::vector<uint8_t> generated_image_thumbnail(const generated_image& image)
{
    return thumbnail_of(block_of(image.pixels, generated_size, generated_size, 3));
}

std::vector<uint8_t> texture_node_thumbnail(const texture_node& node)
{
    return thumbnail_of(block_of(node.pixels, generated_size, generated_size, 3));
}

std::vector<uint8_t> image_texture_thumbnail(const image_texture& image)
{
    return thumbnail_of(block_of(image.pixels, image.width, image.height, image.components));
}

// Puts `from`, which fits, into `to` at (x, y); both have three components.
static void paste(pixel_block& to, const pixel_block& from, uint32_t x, uint32_t y)
{
    for (uint32_t row = 0; row < from.height; ++row)
        std::copy_n(from.bytes.data() + size_t{row} * from.width * 3, from.width * 3,
            to.bytes.data() + (size_t{y + row} * to.width + x) * 3);
}

std::vector<uint8_t> cube_map_thumbnail(const cube_map& cube)
{
    constexpr uint32_t side = thumbnail_side / 3;
    pixel_block all = {thumbnail_side, 2 * side, 3, std::vector<uint8_t>(size_t{thumbnail_side} * 2 * side * 3)};
    for (uint32_t face = 0; face < cube_face_count; ++face) {
        pixel_block block = block_of(cube.faces[face], cube.size, cube.size, cube.components[face]);
        if (block.bytes.empty())
            return {};
        block = scale_pixels(block, side, side);
        if (block.components == 4)
            lay_over_squares(block);
        paste(all, block, face % 3 * side, face / 3 * side);
    }
    return png_of_pixels(all);
}

std::vector<uint8_t> dynamic_texture_thumbnail(const dynamic_texture& texture, const document& d)
{
    constexpr uint32_t time = 200; // ticks
    constexpr uint32_t pictures_until_then = 100;
    if (texture.width == 0 || texture.type >= effect_2d_kind_count)
        return {};
    build_cosine_table();
    const uint32_t components = texture.bpp / 8;
    std::vector<uint8_t> pixels(size_t{texture.width} * texture.height * components);
    effect_2d_state* state = init_dynamic_texture(texture.type, texture.width, texture.height, texture.bpp);
    const uint32_t count = texture.type == effect_2d_amoba ? pictures_until_then : 1;
    for (uint32_t i = 1; i <= count; ++i) {
        float params[3] = {};
        dynamic_texture_params(texture, d.function_table, time * i / count, params);
        render_dynamic_texture(texture.type, texture.width, texture.height, texture.bpp, params, state, pixels.data());
    }
    free_dynamic_texture(state);
    return thumbnail_of(block_of(pixels.data(), texture.width, texture.height, components));
}
