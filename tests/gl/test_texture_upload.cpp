#include "drawing_window.h"

#include "texgen/mipmaps.h"
#include "texgen/texture_upload_gl.h"

#include <GL/glew.h>

#include <doctest/doctest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

static texture_format_table plain_formats()
{
    return {
        {GL_RGB, GL_RGBA, GL_LUMINANCE, GL_LUMINANCE_ALPHA, GL_RGB, GL_RGBA, GL_LUMINANCE, GL_LUMINANCE_ALPHA, GL_RGB}};
}

// Pixels as a decoder hands them over, without two that are the same.
static uint8_t* decoded_pixels(size_t bytes, uint32_t seed)
{
    auto* pixels = static_cast<uint8_t*>(std::malloc(bytes));
    for (size_t n = 0; n < bytes; ++n) {
        seed = seed * 1664525u + 1013904223u;
        pixels[n] = static_cast<uint8_t>(seed >> 24);
    }
    return pixels;
}

static image_texture decoded_image(uint32_t width, uint32_t height, uint32_t components, uint8_t filter)
{
    image_texture image = {};
    image.width = width;
    image.height = height;
    image.components = components;
    image.pixels = decoded_pixels(size_t{width} * height * components, width);
    image.texture_format = components == 3 ? 0 : 1;
    image.texture_filter = filter;
    return image;
}

// A level of the bound texture, rows without gaps; empty where there is no such level.
static std::vector<uint8_t> level_pixels(GLenum target, GLint level, uint32_t components)
{
    GLint width = 0;
    GLint height = 0;
    glGetTexLevelParameteriv(target, level, GL_TEXTURE_WIDTH, &width);
    glGetTexLevelParameteriv(target, level, GL_TEXTURE_HEIGHT, &height);
    std::vector<uint8_t> pixels(static_cast<size_t>(width) * static_cast<size_t>(height) * components);
    if (pixels.empty())
        return pixels;
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glGetTexImage(target, level, components == 3 ? GL_RGB : GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    return pixels;
}

static GLint parameter_of(GLenum target, GLenum name)
{
    GLint value = 0;
    glGetTexParameteriv(target, name, &value);
    return value;
}

static GLint unpack_alignment()
{
    GLint alignment = 0;
    glGetIntegerv(GL_UNPACK_ALIGNMENT, &alignment);
    return alignment;
}

TEST_CASE("pictures of any width arrive whole, and their pixels are freed")
{
    const drawing_window bench;
    for (const uint32_t components : {3u, 4u})
        for (uint32_t width = 1; width <= 9; ++width) {
            image_texture image = decoded_image(width, 5, components, 0);
            const std::vector<uint8_t> expected(image.pixels, image.pixels + size_t{width} * 5 * components);
            upload_image_texture_gl(image, plain_formats());
            CHECK(image.pixels == nullptr);
            CHECK(image.format == (components == 3 ? GL_RGB : GL_RGBA));
            CHECK(level_pixels(GL_TEXTURE_2D, 0, components) == expected);
            CHECK(level_pixels(GL_TEXTURE_2D, 1, components).empty());
            CHECK(unpack_alignment() == 4);
        }
    CHECK(glGetError() == GL_NO_ERROR);
}

TEST_CASE("filter 2 and above bring the player's own levels, of any size")
{
    const drawing_window bench;
    for (const auto& [width, height] : {std::pair{16u, 16u}, {16u, 4u}, {1u, 8u}, {13u, 7u}, {3u, 3u}}) {
        image_texture image = decoded_image(width, height, 3, static_cast<uint8_t>(width == 13 ? 9 : 2));
        const std::vector<uint8_t> base(image.pixels, image.pixels + size_t{width} * height * 3);
        upload_image_texture_gl(image, plain_formats());
        mipmap_chain chain = begin_mipmaps(width, height, base.data(), 3, nullptr, nullptr);
        while (next_mipmap(chain)) {
            const uint8_t* made = chain.made.pixels.get();
            const std::vector<uint8_t> expected(made, made + size_t{chain.made.width} * chain.made.height * 3);
            CHECK(level_pixels(GL_TEXTURE_2D, static_cast<GLint>(chain.level), 3) == expected);
        }
        CHECK(level_pixels(GL_TEXTURE_2D, static_cast<GLint>(chain.level + 1), 3).empty());
        CHECK(parameter_of(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER) == GL_LINEAR_MIPMAP_LINEAR);
        CHECK(parameter_of(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER) == GL_LINEAR);
        CHECK(unpack_alignment() == 4);
    }
    CHECK(glGetError() == GL_NO_ERROR);
}

TEST_CASE("ready-made levels are uploaded and freed, and the next level comes from them")
{
    const drawing_window bench;
    image_texture image = decoded_image(8, 8, 3, 2);
    image.level1 = static_cast<uint8_t*>(std::malloc(48));
    std::memset(image.level1, 200, 48);
    upload_image_texture_gl(image, plain_formats());
    CHECK(image.level1 == nullptr);
    CHECK(level_pixels(GL_TEXTURE_2D, 1, 3) == std::vector<uint8_t>(48, 200));
    CHECK(level_pixels(GL_TEXTURE_2D, 2, 3) == std::vector<uint8_t>(12, 200));
}

TEST_CASE("a picture beyond the driver's greatest size does no harm")
{
    const drawing_window bench;
    GLint greatest = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &greatest);
    image_texture image = decoded_image(static_cast<uint32_t>(greatest) + 1, 1, 3, 1);
    upload_image_texture_gl(image, plain_formats());
    CHECK(image.pixels == nullptr);
    CHECK(unpack_alignment() == 4);
    while (glGetError() != GL_NO_ERROR) { }
}

TEST_CASE("a cube map has six faces in their order, mipmapped face by face")
{
    const drawing_window bench;
    for (const uint8_t filter : {uint8_t{0}, uint8_t{1}, uint8_t{2}, uint8_t{5}}) {
        cube_map cube = {};
        cube.size = 5;
        cube.texture_filter = filter;
        std::vector<uint8_t> expected[cube_face_count];
        for (uint32_t face = 0; face < cube_face_count; ++face) {
            cube.components[face] = 3;
            cube.faces[face] = decoded_pixels(75, face);
            expected[face].assign(cube.faces[face], cube.faces[face] + 75);
        }
        upload_cube_map_gl(cube, plain_formats());
        for (uint32_t face = 0; face < cube_face_count; ++face) {
            const GLenum target = GL_TEXTURE_CUBE_MAP_POSITIVE_X + face;
            CHECK(cube.faces[face] == nullptr);
            CHECK(level_pixels(target, 0, 3) == expected[face]);
            CHECK(level_pixels(target, 1, 3).size() == (filter >= 2 ? 12 : 0));
            CHECK(level_pixels(target, 2, 3).size() == (filter >= 2 ? 3 : 0));
        }
        const GLint smaller[3] = {GL_NEAREST, GL_LINEAR, GL_LINEAR_MIPMAP_LINEAR};
        CHECK(parameter_of(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MIN_FILTER) == smaller[std::min(filter, uint8_t{2})]);
        CHECK(parameter_of(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MAG_FILTER) == (filter == 0 ? GL_NEAREST : GL_LINEAR));
    }
    CHECK(glGetError() == GL_NO_ERROR);
}

// An output node of a table, with pixels of one value or (-1) without any.
static texture_node& add_output_node(const table<texture_node>& nodes, uint8_t filter, int value)
{
    texture_node& node = *table_get(nodes, table_add(nodes));
    node = {};
    node.type = node_output;
    node.texture_filter = filter;
    create_output_texture_gl(node, plain_formats());
    if (value >= 0) {
        constexpr size_t bytes = size_t{3} * generated_size * generated_size;
        node.pixels = static_cast<uint8_t*>(std::malloc(bytes));
        std::memset(node.pixels, value, bytes);
    }
    return node;
}

TEST_CASE("output nodes are uploaded as computed, and black where they never were")
{
    const drawing_window bench;
    table<texture_node> nodes = table_new<texture_node>();
    texture_node& computed = add_output_node(nodes, 0, 99);
    texture_node& never = add_output_node(nodes, 1, -1);
    upload_generated_textures_gl(nodes, plain_formats());
    glBindTexture(GL_TEXTURE_2D, computed.texture);
    CHECK(level_pixels(GL_TEXTURE_2D, 0, 3) == std::vector<uint8_t>(256 * 256 * 3, 99));
    CHECK(parameter_of(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER) == GL_NEAREST);
    glBindTexture(GL_TEXTURE_2D, never.texture);
    CHECK(level_pixels(GL_TEXTURE_2D, 0, 3) == std::vector<uint8_t>(256 * 256 * 3, 0));
    CHECK(parameter_of(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER) == GL_LINEAR);
    std::free(computed.pixels);
    table_free(nodes);
    upload_generated_textures_gl({}, plain_formats());
}

TEST_CASE("only filter 2 builds the levels of an output node, though more have the filter of levels")
{
    const drawing_window bench;
    table<texture_node> nodes = table_new<texture_node>();
    for (const uint8_t filter : {uint8_t{1}, uint8_t{2}, uint8_t{3}}) {
        texture_node& node = add_output_node(nodes, filter, 10);
        upload_generated_textures_gl(nodes, plain_formats());
        glBindTexture(GL_TEXTURE_2D, node.texture);
        CHECK(level_pixels(GL_TEXTURE_2D, 8, 3).size() == (filter == 2 ? 3 : 0));
        CHECK(level_pixels(GL_TEXTURE_2D, 1, 3).size() == (filter == 2 ? 128 * 128 * 3 : 0));
        const GLint smaller = filter == 1 ? GL_LINEAR : GL_LINEAR_MIPMAP_LINEAR;
        CHECK(parameter_of(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER) == smaller);
        std::free(node.pixels);
        node.pixels = nullptr;
    }
    table_free(nodes);
    CHECK(glGetError() == GL_NO_ERROR);
}

TEST_CASE("a render target is made anew: RGB, of the new size, black and linear")
{
    const drawing_window bench;
    image_texture image = decoded_image(8, 8, 4, 2);
    upload_image_texture_gl(image, plain_formats());
    uint32_t texture = 0;
    glGenTextures(1, &texture);
    recreate_target_gl(image.texture, texture, 75, 31);
    CHECK(glIsTexture(image.texture) == GL_FALSE);
    GLint bound = 0;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
    CHECK(static_cast<uint32_t>(bound) == texture);
    GLint format = 0;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_INTERNAL_FORMAT, &format);
    CHECK(format == 3);
    CHECK(level_pixels(GL_TEXTURE_2D, 0, 3) == std::vector<uint8_t>(75 * 31 * 3, 0));
    CHECK(level_pixels(GL_TEXTURE_2D, 1, 3).empty());
    CHECK(parameter_of(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER) == GL_LINEAR);
    CHECK(parameter_of(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER) == GL_LINEAR);
    CHECK(glGetError() == GL_NO_ERROR);
}
