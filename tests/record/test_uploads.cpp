// The calls that hand pictures over: formats, filters, levels, faces; and how records of a
// document come to them.
#include "record_bench.h"

#include "effects/dynamic_texture_gl.h"
#include "effects/dynamic_texture.h"
#include "texgen/texture_upload_gl.h"

#include <GL/glew.h>

#include <doctest/doctest.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

// A format of its own for every index, so that a wrong index shows.
static constexpr texture_format_table formats = {{GL_RGB, GL_RGBA, GL_LUMINANCE, GL_LUMINANCE_ALPHA, GL_COMPRESSED_RGB,
    GL_COMPRESSED_RGBA, GL_COMPRESSED_LUMINANCE, GL_COMPRESSED_LUMINANCE_ALPHA, 34550}};

static uint8_t* owned_bytes(const std::vector<uint8_t>& bytes)
{
    auto* owned = static_cast<uint8_t*>(std::malloc(bytes.size()));
    std::copy(bytes.begin(), bytes.end(), owned);
    return owned;
}

// A picture whose bytes count up from `first`.
static std::vector<uint8_t> counting(uint32_t width, uint32_t height, uint32_t components, uint8_t first = 0)
{
    std::vector<uint8_t> bytes(size_t{width} * height * components);
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<uint8_t>(first + i);
    return bytes;
}

static image_texture picture_of(uint32_t width, uint32_t height, uint32_t components, uint8_t format, uint8_t filter)
{
    image_texture image = {};
    image.width = width;
    image.height = height;
    image.components = components;
    image.pixels = owned_bytes(counting(width, height, components));
    image.texture_format = format;
    image.texture_filter = filter;
    return image;
}

// ---- pictures -------------------------------------------------------------------

TEST_CASE("a picture gets a name, its level 0, its filters, and its levels down to one pixel")
{
    begin_gl_recording();
    image_texture image = picture_of(4, 2, 4, 1, 2);
    upload_image_texture_gl(image, formats);
    // Level 1 is one row: pairs of the first row, (0 + 4) / 2 = 2 and (8 + 12) / 2 = 10. Then their mean.
    CHECK(take_gl_calls()
        == "\nglGenTextures(1) = 1\n"
           "glBindTexture(GL_TEXTURE_2D, 1)\n"
           "glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 4, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, "
            + bytes_as_text(counting(4, 2, 4)) + R"()
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR)
glPixelStorei(GL_UNPACK_ALIGNMENT, 1)
glTexImage2D(GL_TEXTURE_2D, 1, GL_RGBA, 2, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, [2 3 4 5 10 11 12 13])
glTexImage2D(GL_TEXTURE_2D, 2, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, [6 7 8 9])
glPixelStorei(GL_UNPACK_ALIGNMENT, 4)
)");
    CHECK(image.format == GL_RGBA);
    CHECK(image.texture == 1);
    CHECK(image.pixels == nullptr);
}

TEST_CASE("a picture's filter is nearest, linear, or with levels; its format is its table's")
{
    constexpr const char* filters[4]
        = {"GL_NEAREST", "GL_LINEAR", "GL_LINEAR_MIPMAP_LINEAR", "GL_LINEAR_MIPMAP_LINEAR"};
    constexpr const char* names[8] = {"GL_RGB", "GL_RGBA", "GL_LUMINANCE", "GL_LUMINANCE_ALPHA", "GL_COMPRESSED_RGB",
        "GL_COMPRESSED_RGBA", "GL_COMPRESSED_LUMINANCE", "GL_COMPRESSED_LUMINANCE_ALPHA"};
    for (uint8_t filter = 0; filter < 4; ++filter)
        for (uint8_t format = 0; format < 8; ++format) {
            begin_gl_recording();
            image_texture image = picture_of(2, 2, 4, format, filter);
            upload_image_texture_gl(image, formats);
            const std::string name = names[format];
            CHECK(take_gl_calls({"glTexImage2D", "glTexParameteri"})
                == "\nglTexImage2D(GL_TEXTURE_2D, 0, " + name
                    + ", 2, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, [0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15])\n"
                    + "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, "
                    + (filter == 0 ? "GL_NEAREST" : "GL_LINEAR") + ")\n"
                    + "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, " + filters[filter] + ")\n"
                    + (filter < 2 ? ""
                                  : "glTexImage2D(GL_TEXTURE_2D, 1, " + name
                                + ", 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, [2 3 4 5])\n"));
        }
}

TEST_CASE("rows of three components are read without gaps, whatever their length")
{
    begin_gl_recording();
    image_texture image = picture_of(1, 2, 3, 0, 0);
    upload_image_texture_gl(image, formats);
    CHECK(take_gl_calls({"glPixelStorei", "glTexImage2D"}) == R"(
glPixelStorei(GL_UNPACK_ALIGNMENT, 1)
glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 1, 2, 0, GL_RGB, GL_UNSIGNED_BYTE, [0 1 2 3 4 5])
glPixelStorei(GL_UNPACK_ALIGNMENT, 4)
)");
    image = picture_of(4, 1, 3, 0, 0); // twelve bytes a row need nothing
    upload_image_texture_gl(image, formats);
    CHECK(take_gl_calls({"glPixelStorei", "glTexImage2D"})
        == "\nglTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 4, 1, 0, GL_RGB, GL_UNSIGNED_BYTE, [0 1 2 3 4 5 6 7 8 9 10 "
           "11])\n");
}

TEST_CASE("levels below four pixels are uploaded at the alignment of their shorter side")
{
    begin_gl_recording();
    const std::vector<uint8_t> pixels(16 * 8 * 3, 9);
    build_mipmaps(16, 8, pixels.data(), 3, GL_RGB);
    CHECK(take_gl_calls()
        == R"(
glTexImage2D(GL_TEXTURE_2D, 1, GL_RGB, 8, 4, 0, GL_RGB, GL_UNSIGNED_BYTE, )"
            + bytes_as_text(std::vector<uint8_t>(96, 9)) + R"()
glPixelStorei(GL_UNPACK_ALIGNMENT, 2)
glTexImage2D(GL_TEXTURE_2D, 2, GL_RGB, 4, 2, 0, GL_RGB, GL_UNSIGNED_BYTE, )"
            + bytes_as_text(std::vector<uint8_t>(24, 9)) + R"()
glPixelStorei(GL_UNPACK_ALIGNMENT, 1)
glTexImage2D(GL_TEXTURE_2D, 3, GL_RGB, 2, 1, 0, GL_RGB, GL_UNSIGNED_BYTE, [9 9 9 9 9 9])
glTexImage2D(GL_TEXTURE_2D, 4, GL_RGB, 1, 1, 0, GL_RGB, GL_UNSIGNED_BYTE, [9 9 9])
glPixelStorei(GL_UNPACK_ALIGNMENT, 4)
)");
}

TEST_CASE("the compressed formats' numbers, given as a component count, build no levels")
{
    begin_gl_recording();
    const std::vector<uint8_t> pixels(8 * 8 * 4, 9);
    for (const uint32_t components : {34029u, 34030u, 0u, 1u, 2u, 5u})
        build_mipmaps(8, 8, pixels.data(), components, GL_RGB);
    CHECK(take_gl_calls() == "\n");
    build_mipmaps(1, 1, pixels.data(), 3, GL_RGB);
    CHECK(take_gl_calls() == "\n");
}

TEST_CASE("ready-made levels take the place of computed ones, and are freed")
{
    begin_gl_recording();
    image_texture image = picture_of(8, 8, 4, 0, 2);
    image.level2 = owned_bytes(std::vector<uint8_t>(16, 50));
    upload_image_texture_gl(image, formats);
    CHECK(image.level2 == nullptr);
    std::string calls = take_gl_calls({"glTexImage2D"});
    CHECK(calls.find("2, GL_RGB, 2, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, [50 50 50 50 50 50 50 50 50 50 50 50 50 50 50 50]")
        != std::string::npos);
    CHECK(calls.find("3, GL_RGB, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, [50 50 50 50]") != std::string::npos);

    image = picture_of(4, 4, 4, 0, 2);
    image.level1 = owned_bytes(std::vector<uint8_t>(16, 40));
    upload_image_texture_gl(image, formats);
    CHECK(image.level1 == nullptr);
    calls = take_gl_calls({"glTexImage2D"});
    CHECK(calls.find("1, GL_RGB, 2, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, [40 40 40 40 40 40 40 40 40 40 40 40 40 40 40 40]")
        != std::string::npos);
    CHECK(calls.find("2, GL_RGB, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, [40 40 40 40]") != std::string::npos);
}

TEST_CASE("a bump map is its own format inside and outside, with one filter for both and no levels")
{
    for (const uint32_t components : {3u, 4u})
        for (uint8_t filter = 0; filter < 3; ++filter) {
            begin_gl_recording();
            image_texture image = picture_of(2, 2, components, 8, filter);
            upload_image_texture_gl(image, formats);
            const std::string expected = filter == 0 ? "GL_NEAREST" : "GL_LINEAR";
            CHECK(take_gl_calls({"glTexImage2D", "glTexParameteri"})
                == std::string("\nglTexImage2D(GL_TEXTURE_2D, 0, 34550, 2, 2, 0, ")
                    + (components == 3 ? "34550" : "34551") + ", GL_UNSIGNED_BYTE, "
                    + bytes_as_text(counting(2, 2, components)) + ")\n"
                    + "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, " + expected + ")\n"
                    + "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, " + expected + ")\n");
            CHECK(image.format == 34550);
        }
}

// ---- cube maps ------------------------------------------------------------------

static cube_map cube_of(uint32_t size, uint8_t format, uint8_t filter)
{
    cube_map cube = {};
    cube.size = size;
    cube.texture_format = format;
    cube.texture_filter = filter;
    for (uint32_t face = 0; face < cube_face_count; ++face) {
        cube.components[face] = face == 2 ? 3 : 4;
        cube.faces[face] = owned_bytes(
            std::vector<uint8_t>(size_t{size} * size * cube.components[face], static_cast<uint8_t>(10 + face)));
    }
    return cube;
}

TEST_CASE("a cube map's six faces are uploaded in their order, each with its components and levels")
{
    begin_gl_recording();
    cube_map cube = cube_of(2, 5, 2);
    upload_cube_map_gl(cube, formats);
    constexpr const char* faces[cube_face_count]
        = {"POSITIVE_X", "NEGATIVE_X", "POSITIVE_Y", "NEGATIVE_Y", "POSITIVE_Z", "NEGATIVE_Z"};
    std::string expected = "\nglGenTextures(1) = 1\nglBindTexture(GL_TEXTURE_CUBE_MAP, 1)\n";
    for (uint32_t face = 0; face < cube_face_count; ++face) {
        const uint32_t components = face == 2 ? 3 : 4;
        for (uint32_t level = 0; level < 2; ++level) {
            const std::vector<uint8_t> bytes((level == 0 ? 4 : 1) * components, static_cast<uint8_t>(10 + face));
            expected += std::string("glTexImage2D(GL_TEXTURE_CUBE_MAP_") + faces[face]
                + (level == 0 ? ", 0, GL_COMPRESSED_RGBA, 2, 2, 0, " : ", 1, GL_COMPRESSED_RGBA, 1, 1, 0, ")
                + (components == 3 ? "GL_RGB" : "GL_RGBA") + ", GL_UNSIGNED_BYTE, " + bytes_as_text(bytes) + ")\n";
        }
    }
    CHECK(take_gl_calls({"glGenTextures", "glBindTexture", "glTexImage2D", "glTexParameteri"})
        == expected + R"(glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MAG_FILTER, GL_LINEAR)
glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR)
)");
    for (const uint8_t* face : cube.faces)
        CHECK(face == nullptr);
    CHECK(cube.texture == 1);
}

TEST_CASE("a cube map's filters are those of a picture; as a bump map it has no levels")
{
    struct filtering {
        uint8_t format, filter;
        const char* magnification;
        const char* minification;
        bool levels;
    };
    constexpr filtering filterings[] = {
        {0, 0, "GL_NEAREST", "GL_NEAREST", false},
        {1, 1, "GL_LINEAR", "GL_LINEAR", false},
        {2, 2, "GL_LINEAR", "GL_LINEAR_MIPMAP_LINEAR", true},
        {3, 3, "GL_LINEAR", "GL_LINEAR_MIPMAP_LINEAR", true},
        {8, 0, "GL_NEAREST", "GL_NEAREST", false},
        {8, 1, "GL_LINEAR", "GL_LINEAR", false},
        {8, 2, "GL_LINEAR", "GL_LINEAR", false},
    };
    for (const filtering& f : filterings) {
        begin_gl_recording();
        cube_map cube = cube_of(2, f.format, f.filter);
        upload_cube_map_gl(cube, formats);
        const std::string calls = take_gl_calls({"glTexImage2D", "glTexParameteri"});
        CHECK(calls.ends_with(std::string("\nglTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MAG_FILTER, ")
            + f.magnification + ")\nglTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MIN_FILTER, " + f.minification
            + ")\n"));
        CHECK((calls.find("POSITIVE_X, 1,") != std::string::npos) == f.levels);
        CHECK((calls.find("NEGATIVE_Z, 0, 34550, 2, 2, 0, 34551,") != std::string::npos) == (f.format == 8));
        CHECK((calls.find("POSITIVE_Y, 0, 34550, 2, 2, 0, 34550,") != std::string::npos) == (f.format == 8));
    }
}

// ---- generated pictures ---------------------------------------------------------

TEST_CASE("an output node's texture is made empty while the document is read")
{
    begin_gl_recording();
    texture_node node = {};
    node.type = node_output;
    node.texture_format = 5;
    node.texture_filter = 1;
    create_output_texture_gl(node, formats);
    CHECK(take_gl_calls() == R"(
glGenTextures(1) = 1
glBindTexture(GL_TEXTURE_2D, 1)
glTexImage2D(GL_TEXTURE_2D, 0, GL_COMPRESSED_RGBA, 256, 256, 0, GL_RGB, GL_UNSIGNED_BYTE, 0)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR)
)");
    constexpr const char* filters[3] = {"GL_NEAREST", "GL_LINEAR", "GL_LINEAR_MIPMAP_LINEAR"};
    for (uint8_t filter = 0; filter < 3; ++filter) {
        node.texture_filter = filter;
        create_output_texture_gl(node, formats);
        CHECK(take_gl_calls({"glTexParameteri"})
            == std::string("\nglTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, ")
                + (filter == 0 ? "GL_NEAREST" : "GL_LINEAR")
                + ")\nglTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, " + filters[filter] + ")\n");
    }
}

TEST_CASE("the graph's pictures are uploaded in the nodes' own formats, with levels for filter 2 only")
{
    record_bench b;
    const std::vector<uint8_t> pixels = counting(256, 256, 3, 7);
    texture_node node = {};
    node.type = node_output;
    node.texture = 21;
    node.texture_format = 3;
    node.pixels = owned_bytes(pixels);
    table_add(b.d.texture_table, node);
    texture_node no_output = node;
    no_output.type = node_blur;
    no_output.pixels = owned_bytes(pixels);
    table_add(b.d.texture_table, no_output);
    texture_node never_computed = node;
    never_computed.texture = 22;
    never_computed.texture_format = 4;
    never_computed.texture_filter = 2;
    never_computed.pixels = nullptr;
    table_add(b.d.texture_table, never_computed);
    upload_generated_textures_gl(b.d.texture_table, formats);
    const auto black = [](uint32_t side) { return bytes_as_text(std::vector<uint8_t>(size_t{side} * side * 3)); };
    std::string expected = "\nglBindTexture(GL_TEXTURE_2D, 21)\n"
                           "glTexImage2D(GL_TEXTURE_2D, 0, GL_LUMINANCE_ALPHA, 256, 256, 0, GL_RGB, GL_UNSIGNED_BYTE, "
        + bytes_as_text(pixels) + ")\nglBindTexture(GL_TEXTURE_2D, 22)\n";
    for (uint32_t level = 0; level < 9; ++level) {
        const uint32_t side = 256 >> level;
        if (side < 4)
            expected += "glPixelStorei(GL_UNPACK_ALIGNMENT, " + std::to_string(side) + ")\n";
        expected += "glTexImage2D(GL_TEXTURE_2D, " + std::to_string(level) + ", GL_COMPRESSED_RGB, "
            + std::to_string(side) + ", " + std::to_string(side) + ", 0, GL_RGB, GL_UNSIGNED_BYTE, " + black(side)
            + ")\n";
    }
    CHECK(take_gl_calls() == expected + "glPixelStorei(GL_UNPACK_ALIGNMENT, 4)\n");
}

// ---- giving back ----------------------------------------------------------------

TEST_CASE("outputs, pictures and cube maps delete their textures once; one that was never made is not deleted")
{
    begin_gl_recording();
    texture_node node = {};
    image_texture image = {};
    cube_map cube = {};
    const auto release = [&] {
        release_output_texture_gl(node);
        release_image_texture_gl(image);
        release_cube_map_gl(cube);
        return take_gl_calls();
    };
    CHECK(release() == "\n");
    node.texture = 5;
    image.texture = 7;
    cube.texture = 9;
    CHECK(release() == "\nglDeleteTextures(1, [5])\nglDeleteTextures(1, [7])\nglDeleteTextures(1, [9])\n");
    CHECK(release() == "\n");
}

// ---- moving pictures ------------------------------------------------------------

static dynamic_texture moving_picture(uint32_t bpp, uint8_t format, uint8_t filter)
{
    dynamic_texture texture = {};
    texture.type = effect_2d_test;
    texture.width = texture.height = 64;
    texture.bpp = bpp;
    texture.texture_format = format;
    texture.texture_filter = filter;
    return texture;
}

// The ramp of time 0: n = x + y, and n plus a 255th of it.
static std::vector<uint8_t> first_ramp()
{
    std::vector<uint8_t> ramp;
    for (uint32_t y = 0; y < 64; ++y)
        for (uint32_t x = 0; x < 64; ++x)
            ramp.push_back(static_cast<uint8_t>(x + y));
    return ramp;
}

TEST_CASE("a moving picture gets black storage in its format, then its first image")
{
    record_bench b;
    dynamic_texture texture = moving_picture(8, 6, 1);
    create_dynamic_texture_gl(texture, b.d.function_table, formats, true, false);
    CHECK(take_gl_calls()
        == "\nglGenTextures(1) = 1\n"
           "glBindTexture(GL_TEXTURE_2D, 1)\n"
           "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR)\n"
           "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR)\n"
           "glTexImage2D(GL_TEXTURE_2D, 0, GL_COMPRESSED_LUMINANCE, 64, 64, 0, GL_LUMINANCE, GL_UNSIGNED_BYTE, "
            + bytes_as_text(std::vector<uint8_t>(64 * 64)) + ")\n"
            + "glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 64, 64, GL_LUMINANCE, GL_UNSIGNED_BYTE, "
            + bytes_as_text(first_ramp()) + ")\n");
    release_dynamic_texture_gl(texture);
    CHECK(take_gl_calls() == "\nglDeleteTextures(1, [1])\n");
    release_dynamic_texture_gl(texture);
    CHECK(take_gl_calls() == "\n");
}

TEST_CASE("a moving picture of the loading screen starts black; filter 0 is nearest")
{
    record_bench b;
    dynamic_texture texture = moving_picture(24, 0, 0);
    create_dynamic_texture_gl(texture, b.d.function_table, formats, false, true);
    CHECK(take_gl_calls()
        == "\nglGenTextures(1) = 1\n"
           "glBindTexture(GL_TEXTURE_2D, 1)\n"
           "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST)\n"
           "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST)\n"
           "glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 64, 64, 0, GL_RGB, GL_UNSIGNED_BYTE, "
            + bytes_as_text(std::vector<uint8_t>(64 * 64 * 3)) + ")\n");
    release_dynamic_texture_gl(texture);
}

TEST_CASE("with a pixel buffer the image is written into the driver's memory and read from its start")
{
    record_bench b;
    dynamic_texture texture = moving_picture(8, 2, 1);
    create_dynamic_texture_gl(texture, b.d.function_table, formats, true, true);
    const std::string calls = take_gl_calls();
    const std::string refresh = R"(glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 101)
glBufferData(GL_PIXEL_UNPACK_BUFFER, 4096, 0, GL_STREAM_DRAW)
glMapBuffer(GL_PIXEL_UNPACK_BUFFER, GL_WRITE_ONLY) = memory
glUnmapBuffer(GL_PIXEL_UNPACK_BUFFER) = GL_TRUE
glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 64, 64, GL_LUMINANCE, GL_UNSIGNED_BYTE, )"
        + bytes_as_text(first_ramp()) + ")\nglBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0)\n";
    CHECK(calls.ends_with("\nglGenBuffers(1) = 101\n" + refresh));
    std::vector<uint8_t> pixels;
    CHECK(update_dynamic_texture(texture, b.d.function_table, 5, pixels));
    CHECK(take_gl_calls() == "\n"); // computing tells OpenGL nothing
    upload_dynamic_texture_gl(texture, pixels.data(), true);
    CHECK(take_gl_calls() == "\n" + refresh);
    CHECK_FALSE(update_dynamic_texture(texture, b.d.function_table, 5, pixels)); // this time's image is there
    CHECK(pixels.size() == 64 * 64);
    release_dynamic_texture_gl(texture);
    CHECK(take_gl_calls() == "\nglDeleteTextures(1, [1])\nglDeleteBuffers(1, [101])\n");
}

TEST_CASE("where the buffer cannot be mapped, or is lost, the image goes through memory")
{
    for (const bool maps : {false, true}) {
        record_bench b;
        b.answers.maps = maps;
        b.answers.unmaps = false;
        dynamic_texture texture = moving_picture(8, 2, 1);
        create_dynamic_texture_gl(texture, b.d.function_table, formats, true, true);
        const std::string calls = take_gl_calls({"glBindBuffer", "glTexSubImage2D"});
        CHECK(calls
            == "\nglBindBuffer(GL_PIXEL_UNPACK_BUFFER, 101)\nglBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0)\n"
               "glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 64, 64, GL_LUMINANCE, GL_UNSIGNED_BYTE, "
                + bytes_as_text(first_ramp()) + ")\n");
        release_dynamic_texture_gl(texture);
    }
}
