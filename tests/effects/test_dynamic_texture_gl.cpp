// The order of OpenGL calls, recorded in place of the real ones: no display is needed.
//
// The file under test is compiled into this one, so that its calls find the recorder.
#include "effects/dynamic_texture_gl.cpp"

#include "builders.h"
#include "effects/dynamic_texture.h"
#include "texgen/cosine_table.h"

#include <doctest/doctest.h>

#include <cstdio>
#include <string>
#include <vector>

// ---- the recorder ------------------------------------------------------------------------

namespace {

struct gl_recorder {
    std::string log;               // one line a call
    std::vector<uint8_t> storage;  // of the pixel buffer
    std::vector<uint8_t> uploaded; // bytes of the last upload
    bool map_fails;
    bool unmap_fails;
    bool mapped;
    GLuint bound_buffer;
    GLuint next_name;
};

} // namespace

static gl_recorder recorder;

static void record(const char* format, auto... values)
{
    char line[160];
    std::snprintf(line, sizeof(line), format, values...);
    recorder.log += line;
    recorder.log += '\n';
}

static std::string format_name(GLenum format)
{
    return format == GL_RGB ? "RGB" : format == GL_LUMINANCE ? "LUMINANCE" : std::to_string(format);
}

static void take_pixels(GLsizei width, GLsizei height, GLenum format, const void* pixels)
{
    const size_t size = static_cast<size_t>(width) * static_cast<size_t>(height) * (format == GL_RGB ? 3 : 1);
    const auto* bytes = recorder.bound_buffer != 0 ? recorder.storage.data() : static_cast<const uint8_t*>(pixels);
    recorder.uploaded.assign(bytes, bytes + size);
}

extern "C" {
void glGenTextures(GLsizei, GLuint* names)
{
    *names = ++recorder.next_name;
    record("gen texture %u", *names);
}
void glDeleteTextures(GLsizei, const GLuint* names)
{
    record("delete texture %u", *names);
}
void glBindTexture(GLenum target, GLuint name)
{
    record("bind texture %u%s", name, target == GL_TEXTURE_2D ? "" : " (not 2D)");
}
void glTexParameteri(GLenum, GLenum parameter, GLint value)
{
    record("%s %s",
        parameter == GL_TEXTURE_MIN_FILTER       ? "min"
            : parameter == GL_TEXTURE_MAG_FILTER ? "mag"
                                                 : "?",
        value == GL_LINEAR        ? "linear"
            : value == GL_NEAREST ? "nearest"
                                  : "?");
}
void glTexImage2D(GLenum, GLint level, GLint internal, GLsizei width, GLsizei height, GLint, GLenum format, GLenum,
    const void* pixels)
{
    record("image %d: %d %dx%d %s", level, internal, width, height, format_name(format).c_str());
    take_pixels(width, height, format, pixels);
}
void glTexSubImage2D(GLenum, GLint level, GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type,
    const void* pixels)
{
    record("sub image %d: %d,%d %dx%d %s%s from %s", level, x, y, width, height, format_name(format).c_str(),
        type == GL_UNSIGNED_BYTE ? "" : " (not bytes)", pixels == nullptr ? "offset 0" : "memory");
    take_pixels(width, height, format, pixels);
}
}

static void record_gen_buffers(GLsizei, GLuint* names)
{
    *names = ++recorder.next_name;
    record("gen buffer %u", *names);
}

static void record_delete_buffers(GLsizei, const GLuint* names)
{
    record("delete buffer %u", *names);
}

static void record_bind_buffer(GLenum target, GLuint name)
{
    record("bind buffer %u%s", name, target == GL_PIXEL_UNPACK_BUFFER ? "" : " (not for unpacking)");
    recorder.bound_buffer = name;
}

static void record_buffer_data(GLenum, GLsizeiptr size, const void* data, GLenum usage)
{
    record("storage %d %s%s", static_cast<int>(size), data == nullptr ? "null" : "data",
        usage == GL_STREAM_DRAW ? " stream draw" : "");
    recorder.storage.assign(static_cast<size_t>(size), 0xCD); // what new storage holds is undefined
}

static void* record_map_buffer(GLenum, GLenum access)
{
    record("map%s", access == GL_WRITE_ONLY ? " write only" : "");
    return recorder.map_fails ? nullptr : recorder.storage.data();
}

static GLboolean record_unmap_buffer(GLenum)
{
    record("unmap");
    return recorder.unmap_fails ? GL_FALSE : GL_TRUE;
}

// The loader's table of entry points, as far as the file under test uses it.
PFNGLGENBUFFERSPROC __glewGenBuffers = record_gen_buffers;
PFNGLDELETEBUFFERSPROC __glewDeleteBuffers = record_delete_buffers;
PFNGLBINDBUFFERPROC __glewBindBuffer = record_bind_buffer;
PFNGLBUFFERDATAPROC __glewBufferData = record_buffer_data;
PFNGLMAPBUFFERPROC __glewMapBuffer = record_map_buffer;
PFNGLUNMAPBUFFERPROC __glewUnmapBuffer = record_unmap_buffer;

// ---- what the tests share ----------------------------------------------------------------

constexpr texture_format_table formats = {{100, 101, 102, 103, 104, 105, 106, 107, 108}};

namespace {

// A dynamic texture in a document whose parameters follow the time.
struct recorded_texture {
    test_document t;
    uint32_t handle;

    recorded_texture(uint32_t type, uint32_t side, uint32_t bpp)
    {
        build_cosine_table();
        recorder = {};
        dynamic_texture texture = {};
        texture.type = type;
        texture.width = texture.height = side;
        texture.bpp = bpp;
        texture.functions[0] = texture.functions[1] = add_function(t, linear_function());
        handle = table_add(t.d.dynamic_texture_table, texture);
    }
    ~recorded_texture()
    {
        release_dynamic_texture_gl(record());
    }
    recorded_texture(const recorded_texture&) = delete;
    recorded_texture& operator=(const recorded_texture&) = delete;

    dynamic_texture& record()
    {
        return *table_get(t.d.dynamic_texture_table, handle);
    }
    void create(bool first_image, bool use_pbo)
    {
        recorder.log.clear();
        create_dynamic_texture_gl(record(), t.d.function_table, formats, first_image, use_pbo);
    }
    void update(uint32_t time, bool use_pbo)
    {
        recorder.log.clear();
        std::vector<uint8_t> pixels;
        if (update_dynamic_texture(record(), t.d.function_table, time, pixels))
            upload_dynamic_texture_gl(record(), pixels.data(), use_pbo);
    }
};

} // namespace

// The picture that a plain plasma of side 64 shows at a time.
static std::vector<uint8_t> plasma_at(uint32_t time, uint32_t bpp)
{
    std::vector<uint8_t> out(64 * 64 * bpp / 8);
    const float params[3] = {static_cast<float>(time), 0.0f, 0.0f};
    render_dynamic_texture(effect_2d_plasma, 64, 64, bpp, params, nullptr, out.data());
    return out;
}

// ---- creation ----------------------------------------------------------------------------

TEST_CASE("without a first image the texture is storage of black pixels with its filters")
{
    recorded_texture texture(effect_2d_plasma, 64, 24);
    texture.record().texture_filter = 7;
    texture.record().texture_format = 3;
    texture.create(false, true);
    CHECK(recorder.log == "gen texture 1\nbind texture 1\nmin linear\nmag linear\nimage 0: 103 64x64 RGB\n");
    CHECK(recorder.uploaded == std::vector<uint8_t>(64 * 64 * 3, 0));
    CHECK(texture.record().refreshed == 0);
    CHECK(texture.record().texture == 1);
}

TEST_CASE("filter 0 is nearest, 8 bits are luminance, the last format is 8")
{
    recorded_texture texture(effect_2d_plasma, 128, 8);
    texture.record().texture_format = 8;
    texture.create(false, false);
    CHECK(recorder.log == "gen texture 1\nbind texture 1\nmin nearest\nmag nearest\nimage 0: 108 128x128 LUMINANCE\n");
}

TEST_CASE("a first image is the picture of time 0, through either way")
{
    for (const bool use_pbo : {false, true}) {
        recorded_texture texture(effect_2d_plasma, 64, 24);
        texture.create(true, use_pbo);
        CHECK(recorder.uploaded == plasma_at(0, 24));
        CHECK(texture.record().refreshed == 1);
        texture.update(0, use_pbo);
        CHECK(recorder.log.empty());
    }
}

TEST_CASE("the first image takes no parameter after a handle 0, a refresh does")
{
    recorded_texture texture(effect_2d_test, 64, 24);
    texture.record().functions[1] = add_function(texture.t, constant_function(9.0f));
    texture.record().functions[0] = 0;
    texture.create(true, false);
    CHECK(recorder.uploaded[0] == 0);
    texture.update(5, false);
    CHECK(recorder.uploaded[0] == 9);
}

// ---- refresh -----------------------------------------------------------------------------

TEST_CASE("a refresh through memory is one upload of the picture of its time")
{
    recorded_texture texture(effect_2d_plasma, 64, 24);
    texture.create(false, false);
    texture.update(300, false);
    CHECK(recorder.log == "sub image 0: 0,0 64x64 RGB from memory\n");
    CHECK(recorder.uploaded == plasma_at(300, 24));
}

TEST_CASE("a refresh through a pixel buffer has new storage every time, and ends with buffer 0")
{
    recorded_texture texture(effect_2d_plasma, 64, 8);
    texture.create(false, true);
    const std::string calls = "bind buffer 2\nstorage 4096 null stream draw\nmap write only\nunmap\n"
                              "sub image 0: 0,0 64x64 LUMINANCE from offset 0\nbind buffer 0\n";
    texture.update(300, true);
    CHECK(recorder.log == "gen buffer 2\n" + calls);
    CHECK(recorder.uploaded == plasma_at(300, 8));
    texture.update(301, true);
    CHECK(recorder.log == calls);
    CHECK(recorder.uploaded == plasma_at(301, 8));
    CHECK(recorder.bound_buffer == 0);
}

TEST_CASE("a buffer that cannot be mapped, or loses its contents, falls back to memory")
{
    for (const bool map_fails : {true, false}) {
        recorded_texture texture(effect_2d_plasma, 64, 24);
        texture.create(false, true);
        recorder.map_fails = map_fails;
        recorder.unmap_fails = !map_fails;
        texture.update(40, true);
        CHECK(recorder.uploaded == plasma_at(40, 24));
        const std::string end = "bind buffer 0\nsub image 0: 0,0 64x64 RGB from memory\n";
        REQUIRE(recorder.log.size() > end.size());
        CHECK(recorder.log.substr(recorder.log.size() - end.size()) == end);
        CHECK(recorder.log.find("offset 0") == std::string::npos);
    }
}

TEST_CASE("a texture is refreshed at most once per function time, also at time 0")
{
    recorded_texture texture(effect_2d_plasma, 64, 24);
    texture.create(false, false);
    texture.update(0, false);
    CHECK(!recorder.log.empty());
    texture.update(0, false);
    CHECK(recorder.log.empty());
    texture.update(1, false);
    CHECK(!recorder.log.empty());
    texture.update(0, false); // an earlier time again
    CHECK(!recorder.log.empty());
    CHECK(texture.record().refresh_time == 0);
}

TEST_CASE("every kind uploads the same defined bytes both ways, also what it leaves as it is")
{
    for (uint32_t type = 0; type < effect_2d_kind_count; ++type)
        for (const uint32_t bpp : {8u, 24u}) {
            std::vector<uint8_t> pictures[2];
            for (const bool use_pbo : {false, true}) {
                recorded_texture texture(type, 64, bpp);
                texture.create(true, use_pbo);
                for (const uint32_t time : {17u, 18u})
                    texture.update(time, use_pbo);
                pictures[use_pbo] = recorder.uploaded;
            }
            CHECK(pictures[0] == pictures[1]);
            if (type == effect_2d_normalmap && bpp == 8)
                CHECK(pictures[0] == std::vector<uint8_t>(64 * 64, 0));
        }
}

TEST_CASE("a dynamic texture that was not made is not refreshed")
{
    recorded_texture texture(effect_2d_plasma, 64, 24);
    std::vector<uint8_t> pixels;
    CHECK(!update_dynamic_texture(texture.record(), texture.t.d.function_table, 5, pixels));
    CHECK(pixels.empty());
    CHECK(texture.record().refreshed == 0);
    texture.update(5, false);
    CHECK(recorder.log.empty());
}

// ---- release -----------------------------------------------------------------------------

TEST_CASE("releasing deletes the texture, its buffer and its state; twice is harmless")
{
    recorded_texture texture(effect_2d_amoba, 64, 24);
    texture.create(true, true);
    REQUIRE(texture.record().state != nullptr);
    recorder.log.clear();
    release_dynamic_texture_gl(texture.record());
    CHECK(recorder.log == "delete texture 1\ndelete buffer 2\n");
    CHECK(texture.record().state == nullptr);
    recorder.log.clear();
    release_dynamic_texture_gl(texture.record());
    CHECK(recorder.log.empty());
}
