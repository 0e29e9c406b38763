// Loading, beside the sum of its parts: the bytes of every entry read, every picture decoded, every mesh and the
// document inflated, and the OpenGL calls of loading alone, recorded once and made again.
//
// Shows: First Light (where the build puts its pack), on both paths; one of 50 JPEG
// pictures and 100 meshes; one of 4,096 small meshes. "CPU" is that of the whole process, workers included. At the end
// stands what loading takes of memory, without a driver's.

#include "content/owners.h"
#include "content/pack.h"
#include "content/xml.h"
#include "model/image_decode.h"
#include "session_gl.h"
#include "shell/loading.h"
#include "texgen/cosine_table.h"

#include <GL/glew.h>
#include <benchmark/benchmark.h>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <map>
#include <stb/stb_image.h>
#include <stb/stb_image_write.h>
#include <zlib.h>

// ---- calls of OpenGL, recorded ------------------------------------------------------

namespace {

enum call_kind : uint32_t {
    call_gen_texture,
    call_bind_texture, // a: target, b: which texture
    call_pixel_store,
    call_tex_parameter,
    call_tex_image, // a: target, b: level, c: internal format, d, e: size, f: format
    call_tex_sub_image,
    call_gen_buffer,
    call_bind_buffer, // a: target, b: which buffer, 0: none
    call_buffer_data,
    call_fill_buffer, // maps, copies, unmaps
    call_program,     // the bytes: both texts
};

struct gl_call {
    call_kind kind;
    uint32_t a, b, c, d, e, f;
    std::string bytes;
    bool has_bytes;
    std::vector<std::string> names; // of a program: attributes and uniforms that are asked for; those begin with "u "
};

struct gl_recording {
    bool running = false;
    std::vector<gl_call> calls;
    std::map<uint32_t, uint32_t> textures; // name at the time of recording -> which
    std::map<uint32_t, uint32_t> buffers;
    void* mapped = nullptr;
    uint32_t mapped_target = 0;
    size_t mapped_size = 0;
};

gl_recording recording;

} // namespace

static void record(call_kind kind, uint32_t a = 0, uint32_t b = 0, uint32_t c = 0, uint32_t d = 0, uint32_t e = 0,
    uint32_t f = 0, const void* bytes = nullptr, size_t size = 0)
{
    if (recording.running)
        recording.calls.push_back({kind, a, b, c, d, e, f,
            bytes != nullptr ? std::string(static_cast<const char*>(bytes), size) : std::string(), bytes != nullptr,
            {}});
}

static size_t picture_bytes(GLsizei width, GLsizei height, GLenum format)
{
    const size_t components = format == GL_RGB ? 3 : format == GL_RGBA ? 4 : 1;
    return static_cast<size_t>(width) * static_cast<size_t>(height) * components;
}

template <typename function> static function* real(function*, const char* name)
{
    return reinterpret_cast<function*>(dlsym(RTLD_NEXT, name));
}

// Stand in front of the library's functions of the same names.
extern "C" {
void glGenTextures(GLsizei count, GLuint* names)
{
    static auto* const next = real(&glGenTextures, "glGenTextures");
    next(count, names);
    recording.textures[names[0]] = static_cast<uint32_t>(recording.textures.size());
    record(call_gen_texture);
}

void glBindTexture(GLenum target, GLuint name)
{
    static auto* const next = real(&glBindTexture, "glBindTexture");
    next(target, name);
    record(call_bind_texture, target, recording.textures[name]);
}

void glPixelStorei(GLenum name, GLint value)
{
    static auto* const next = real(&glPixelStorei, "glPixelStorei");
    next(name, value);
    record(call_pixel_store, name, static_cast<uint32_t>(value));
}

void glTexParameteri(GLenum target, GLenum name, GLint value)
{
    static auto* const next = real(&glTexParameteri, "glTexParameteri");
    next(target, name, value);
    record(call_tex_parameter, target, name, static_cast<uint32_t>(value));
}

void glTexImage2D(GLenum target, GLint level, GLint internal, GLsizei width, GLsizei height, GLint border,
    GLenum format, GLenum type, const void* pixels)
{
    static auto* const next = real(&glTexImage2D, "glTexImage2D");
    next(target, level, internal, width, height, border, format, type, pixels);
    record(call_tex_image, target, static_cast<uint32_t>(level), static_cast<uint32_t>(internal),
        static_cast<uint32_t>(width), static_cast<uint32_t>(height), format, pixels,
        picture_bytes(width, height, format));
}

void glTexSubImage2D(GLenum target, GLint level, GLint x, GLint y, GLsizei width, GLsizei height, GLenum format,
    GLenum type, const void* pixels)
{
    static auto* const next = real(&glTexSubImage2D, "glTexSubImage2D");
    next(target, level, x, y, width, height, format, type, pixels);
    record(call_tex_sub_image, target, 0, 0, static_cast<uint32_t>(width), static_cast<uint32_t>(height), format,
        pixels, picture_bytes(width, height, format));
}
}

// What a function pointer led to before, and what stands in its place while calls are recorded.
#define KEPT(name) static decltype(__glew##name) next_##name
KEPT(GenBuffers);
KEPT(BindBuffer);
KEPT(BufferData);
KEPT(MapBuffer);
KEPT(UnmapBuffer);
KEPT(ShaderSource);
KEPT(GetUniformLocation);
KEPT(GetAttribLocation);
#undef KEPT

static void record_gen_buffers(GLsizei count, GLuint* names)
{
    next_GenBuffers(count, names);
    recording.buffers[names[0]] = static_cast<uint32_t>(recording.buffers.size()) + 1;
    record(call_gen_buffer);
}

static void record_bind_buffer(GLenum target, GLuint name)
{
    next_BindBuffer(target, name);
    record(call_bind_buffer, target, name != 0 ? recording.buffers[name] : 0);
}

static void record_buffer_data(GLenum target, GLsizeiptr size, const void* data, GLenum usage)
{
    next_BufferData(target, size, data, usage);
    record(call_buffer_data, target, static_cast<uint32_t>(size), usage, 0, 0, 0, data, static_cast<size_t>(size));
    recording.mapped_size = static_cast<size_t>(size);
}

static void* record_map_buffer(GLenum target, GLenum access)
{
    recording.mapped_target = target;
    recording.mapped = next_MapBuffer(target, access);
    return recording.mapped;
}

static GLboolean record_unmap_buffer(GLenum target)
{
    record(call_fill_buffer, target, 0, 0, 0, 0, 0, recording.mapped, recording.mapped_size);
    return next_UnmapBuffer(target);
}

// The vertex text comes first, then the fragment text; what is asked for follows.
static void record_shader_source(GLuint shader, GLsizei count, const GLchar* const* texts, const GLint* sizes)
{
    next_ShaderSource(shader, count, texts, sizes);
    GLint stage = 0;
    glGetShaderiv(shader, GL_SHADER_TYPE, &stage);
    if (stage == GL_VERTEX_SHADER)
        record(call_program);
    if (recording.running)
        recording.calls.back().names.push_back("t" + std::string(texts[0], static_cast<size_t>(sizes[0])));
}

static GLint record_uniform_location(GLuint program, const GLchar* name)
{
    if (recording.running)
        recording.calls.back().names.push_back("u" + std::string(name));
    return next_GetUniformLocation(program, name);
}

static GLint record_attribute_location(GLuint program, const GLchar* name)
{
    if (recording.running)
        recording.calls.back().names.push_back("a" + std::string(name));
    return next_GetAttribLocation(program, name);
}

#define EXCHANGE(name, recorder) (next_##name = __glew##name, __glew##name = recorder)
#define PUT_BACK(name) (__glew##name = next_##name)
static void begin_recording()
{
    EXCHANGE(GenBuffers, record_gen_buffers);
    EXCHANGE(BindBuffer, record_bind_buffer);
    EXCHANGE(BufferData, record_buffer_data);
    EXCHANGE(MapBuffer, record_map_buffer);
    EXCHANGE(UnmapBuffer, record_unmap_buffer);
    EXCHANGE(ShaderSource, record_shader_source);
    EXCHANGE(GetUniformLocation, record_uniform_location);
    EXCHANGE(GetAttribLocation, record_attribute_location);
    recording = {};
    recording.running = true;
}

static std::vector<gl_call> end_recording()
{
    PUT_BACK(GenBuffers);
    PUT_BACK(BindBuffer);
    PUT_BACK(BufferData);
    PUT_BACK(MapBuffer);
    PUT_BACK(UnmapBuffer);
    PUT_BACK(ShaderSource);
    PUT_BACK(GetUniformLocation);
    PUT_BACK(GetAttribLocation);
    std::vector<gl_call> calls = std::move(recording.calls);
    recording = {};
    return calls;
}

// ---- and made again -----------------------------------------------------------------

namespace {

struct made_objects {
    std::vector<uint32_t> textures;
    std::vector<uint32_t> buffers = {0};
    std::vector<uint32_t> programs;
    std::vector<uint32_t> shaders;
};

} // namespace

static void make_program_again(const gl_call& call, made_objects& made)
{
    char log[251];
    const uint32_t program = glCreateProgram();
    made.programs.push_back(program);
    bool linked = false;
    for (size_t i = 0; i < call.names.size(); ++i) {
        const char* text = call.names[i].c_str() + 1;
        if (call.names[i][0] == 't') {
            const uint32_t shader = glCreateShader(i == 0 ? GL_VERTEX_SHADER : GL_FRAGMENT_SHADER);
            const auto size = static_cast<GLint>(call.names[i].size() - 1);
            glShaderSource(shader, 1, &text, &size);
            glCompileShader(shader);
            glGetShaderInfoLog(shader, sizeof log, nullptr, log);
            glAttachShader(program, shader);
            made.shaders.push_back(shader);
            continue;
        }
        if (!linked) {
            glLinkProgram(program);
            glUseProgram(program);
            linked = true;
        }
        if (call.names[i][0] == 'u')
            glGetUniformLocation(program, text);
        else
            glGetAttribLocation(program, text);
    }
    glUseProgram(0);
}

static void make_again(const gl_call& call, made_objects& made)
{
    const auto as_int = [](uint32_t n) { return static_cast<GLint>(n); };
    const void* bytes = call.has_bytes ? call.bytes.data() : nullptr;
    switch (call.kind) {
    case call_gen_texture:
        glGenTextures(1, &made.textures.emplace_back());
        return;
    case call_bind_texture:
        return glBindTexture(call.a, made.textures[call.b]);
    case call_pixel_store:
        return glPixelStorei(call.a, as_int(call.b));
    case call_tex_parameter:
        return glTexParameteri(call.a, call.b, as_int(call.c));
    case call_tex_image:
        return glTexImage2D(
            call.a, as_int(call.b), as_int(call.c), as_int(call.d), as_int(call.e), 0, call.f, GL_UNSIGNED_BYTE, bytes);
    case call_tex_sub_image:
        return glTexSubImage2D(call.a, 0, 0, 0, as_int(call.d), as_int(call.e), call.f, GL_UNSIGNED_BYTE, bytes);
    case call_gen_buffer:
        return glGenBuffers(1, &made.buffers.emplace_back());
    case call_bind_buffer:
        return glBindBuffer(call.a, made.buffers[call.b]);
    case call_buffer_data:
        return glBufferData(call.a, static_cast<GLsizeiptr>(call.b), bytes, call.c);
    case call_fill_buffer:
        std::memcpy(glMapBuffer(call.a, GL_WRITE_ONLY), bytes, call.bytes.size());
        glUnmapBuffer(call.a);
        return;
    case call_program:
        return make_program_again(call, made);
    }
}

static void drop(made_objects& made)
{
    glDeleteTextures(static_cast<GLsizei>(made.textures.size()), made.textures.data());
    glDeleteBuffers(static_cast<GLsizei>(made.buffers.size()), made.buffers.data());
    for (const uint32_t shader : made.shaders)
        glDeleteShader(shader);
    for (const uint32_t program : made.programs)
        glDeleteProgram(program);
}

// ---- shows --------------------------------------------------------------------------

namespace {

struct show {
    const pack_file* pack;
    std::vector<pack_slot> pictures; // entries that its document names, in its order
    std::vector<pack_slot> inflated; // and its document
};

gl_session session;
player_display display;

} // namespace

static void add_entry(const pack_file* pack, const std::string& name, std::vector<pack_slot>& entries)
{
    pack_slot slot;
    if (pack_knows_entry(pack, name.c_str(), slot))
        entries.push_back(slot);
}

static void add_records(show& s, uint32_t section, const xml_node& node)
{
    for (const xml_node* record = node.first_child; record != nullptr; record = record->next_sibling) {
        if (section == section_meshes)
            add_entry(s.pack, xml_get_attribute(record, "filename"), s.inflated);
        if (section == section_image_textures) {
            const char* name = xml_get_attribute(record, "filename");
            add_entry(s.pack, name, s.pictures);
            for (const uint32_t level : {1u, 2u})
                add_entry(s.pack, name_of_level(name, level).text, s.pictures);
        }
        if (section == section_cube_maps)
            for (const char* face : {"xp", "xn", "yp", "yn", "zp", "zn"})
                add_entry(s.pack, xml_get_attribute(record, face), s.pictures);
    }
}

static show open_show(const pack_file* pack)
{
    show s = {pack, {}, {}};
    std::string problem;
    const owned_tree tree(load_document_tree(pack, "demo.xmlz", problem));
    if (tree == nullptr || tree->first_child == nullptr) {
        std::fprintf(stderr, "there is no show: ninja first_light\n");
        return s;
    }
    add_entry(pack, "demo.xmlz", s.inflated);
    uint32_t section = 0;
    for (const xml_node* node = tree->first_child->first_child; node != nullptr; node = node->next_sibling)
        add_records(s, ++section, *node);
    return s;
}

static loading_options options_for(bool glsl)
{
    return {display.caps, display.texture_formats, glsl, true};
}

static bool load(const show& s, bool glsl, document& d)
{
    owned_tree tree;
    std::string problem;
    const bool loaded = load_document(s.pack, "demo.xmlz", timeline_new(), options_for(glsl), d, tree, problem);
    if (!loaded)
        std::fprintf(stderr, "%s\n", problem.c_str());
    return loaded;
}

// ---- the two that are compared --------------------------------------------------------

static void load_ours(benchmark::State& state, show& (*make)(), bool glsl)
{
    const show& s = make();
    for (auto _ : state) {
        document d = {};
        if (!load(s, glsl, d))
            return state.SkipWithError("it does not load");
        state.PauseTiming();
        unload_document(d);
        glFinish();
        state.ResumeTiming();
    }
}

static void read_and_unpack(const show& s)
{
    for (const auto* entries : {&s.inflated, &s.pictures})
        for (const pack_slot& slot : *entries) {
            uint8_t* bytes = nullptr;
            if (pack_read_slot_bytes(s.pack, slot, &bytes) != pack_found)
                continue;
            const owned_block<uint8_t> entry(bytes);
            if (entries == &s.pictures) {
                int w, h, n;
                std::free(stbi_load_from_memory(bytes, static_cast<int>(slot.size), &w, &h, &n, 0));
                continue;
            }
            const uint32_t size = bytes[0] | bytes[1] << 8 | bytes[2] << 16 | static_cast<uint32_t>(bytes[3]) << 24;
            const owned_block<uint8_t> content(static_cast<uint8_t*>(std::malloc(size)));
            uLongf length = size;
            uncompress(content.get(), &length, bytes + 4, slot.size - 4);
        }
}

static void load_parts(benchmark::State& state, show& (*make)(), bool glsl)
{
    const show& s = make();
    document d = {};
    begin_recording();
    load(s, glsl, d);
    const std::vector<gl_call> calls = end_recording();
    unload_document(d);
    for (auto _ : state) {
        made_objects made;
        read_and_unpack(s);
        for (const gl_call& call : calls)
            make_again(call, made);
        state.PauseTiming();
        drop(made);
        glFinish();
        state.ResumeTiming();
    }
}

// ---- generated shows --------------------------------------------------------------------

static std::string deflated(const std::string& bytes)
{
    uLongf size = compressBound(bytes.size());
    std::string entry(4 + size, '\0');
    for (uint32_t i = 0; i < 4; ++i)
        entry[i] = static_cast<char>(bytes.size() >> 8 * i);
    compress(
        reinterpret_cast<Bytef*>(entry.data() + 4), &size, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size());
    entry.resize(4 + size);
    return entry;
}

static std::string jpeg_picture(int side, uint32_t number)
{
    std::vector<uint8_t> pixels(static_cast<size_t>(side) * static_cast<size_t>(side) * 3);
    for (size_t i = 0; i < pixels.size(); ++i) {
        const size_t x = i / 3 % static_cast<size_t>(side);
        const size_t y = i / 3 / static_cast<size_t>(side);
        const size_t rough = (x * 2654435761u ^ y * 2246822519u ^ number) >> 9 & 15;
        pixels[i] = static_cast<uint8_t>((x * (i % 3 + 1) + y * number + rough) >> 2);
    }
    std::string jpeg;
    stbi_write_jpg_to_func(
        [](void* to, void* data, int size) {
            static_cast<std::string*>(to)->append(static_cast<char*>(data), static_cast<size_t>(size));
        },
        &jpeg, side, side, 3, pixels.data(), 85);
    return jpeg;
}

static std::string mesh_of(uint16_t vertices, uint32_t number)
{
    const uint16_t sets = 1;
    std::string mesh;
    mesh.append(reinterpret_cast<const char*>(&vertices), 2).append(reinterpret_cast<const char*>(&sets), 2);
    for (uint32_t i = 0; i < 8u * vertices; ++i) { // some roughness, or nothing would be left to inflate
        const float value = static_cast<float>((i * 2654435761u ^ number) >> (i % 4 == 0 ? 20 : 28)) / 64.0f;
        mesh.append(reinterpret_cast<const char*>(&value), sizeof value);
    }
    for (uint32_t i = 0; i < 3u * vertices; ++i) {
        const auto index = static_cast<uint16_t>(i * 7 % vertices);
        mesh.append(reinterpret_cast<const char*>(&index), sizeof index);
    }
    return deflated(mesh);
}

static std::string text_of(const std::string& meshes, const std::string& pictures)
{
    std::string text = "<document>";
    for (uint32_t section = section_generated_images; section <= section_timeline; ++section) {
        text += "<section>";
        if (section == section_meshes)
            text += meshes;
        if (section == section_image_textures)
            text += pictures;
        if (section == section_timeline)
            text += "<track/>";
        text += "</section>";
    }
    return text + "</document>";
}

static std::string big_endian(uint32_t value)
{
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes += static_cast<char>(value >> shift);
    return bytes;
}

static FILE* pack_of(const std::vector<std::pair<std::string, std::string>>& entries)
{
    std::string index(pack_magic, pack_magic + sizeof pack_magic);
    auto start = static_cast<uint32_t>(pack_index_offset + pack_slot_size * entries.size() + pack_name_size);
    for (auto [name, bytes] : entries) {
        const auto size = static_cast<uint32_t>(bytes.size());
        name.resize(pack_name_size);
        index += name + big_endian(start) + big_endian(start + size - 1);
        start += size;
    }
    index += std::string(pack_name_size, '\0');
    FILE* pack = std::tmpfile();
    std::fwrite(index.data(), 1, index.size(), pack);
    for (const auto& entry : entries)
        std::fwrite(entry.second.data(), 1, entry.second.size(), pack);
    std::fflush(pack); // others read the file, not the stream
    return pack;
}

// So many pictures of this side and meshes of so many vertices, each an entry.
static FILE* generated_pack(uint32_t picture_count, int side, uint32_t mesh_count, uint16_t vertices)
{
    std::string pictures;
    std::string meshes;
    std::vector<std::pair<std::string, std::string>> entries;
    for (uint32_t i = 0; i < picture_count; ++i) {
        const std::string name = "p" + std::to_string(i) + ".jpg";
        entries.push_back({name, jpeg_picture(side, i)});
        pictures += "<image filename=\"" + name + "\" texture_format=\"0\" texture_filter=\"2\"/>";
    }
    for (uint32_t i = 0; i < mesh_count; ++i) {
        const std::string name = "m" + std::to_string(i) + ".mesh";
        entries.push_back({name, mesh_of(vertices, i)});
        meshes += "<mesh filename=\"" + name + "\"/>";
    }
    entries.push_back({"demo.xmlz", deflated(text_of(meshes, pictures))});
    return pack_of(entries);
}

// ---- all of it ----------------------------------------------------------------------

static void add_pair(const std::string& work, show& (*make)(), bool glsl)
{
    for (const bool passing : {false, true})
        for (const bool ours : {true, false}) {
            const std::string name = work + (passing ? ", time that passes" : "") + (ours ? "/ours" : "/parts");
            auto* made = benchmark::RegisterBenchmark(name.c_str(), ours ? load_ours : load_parts, make, glsl);
            made->Unit(benchmark::kMillisecond);
            if (passing)
                made->UseRealTime();
            else
                made->MeasureProcessCPUTime();
        }
}

static std::string first_light_path()
{
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    return program.parent_path().parent_path() / "productions/first-light/demo.dpk";
}

static bool open_context()
{
    render_options options;
    options.width = 640;
    options.height = 480;
    std::string problem;
    if (session_open(session, options, display, problem))
        return true;
    std::fprintf(stderr, "%s\n", problem.c_str());
    return false;
}

// Made when they are asked for, since that takes longer than loading them.
static show& first_light()
{
    static show s = open_show(pack_open(std::fopen(first_light_path().c_str(), "rb")));
    return s;
}

static show& many_pictures()
{
    static show s = open_show(pack_open(generated_pack(50, 1024, 100, 2000)));
    return s;
}

static show& many_meshes()
{
    static show s = open_show(pack_open(generated_pack(0, 0, 4096, 24)));
    return s;
}

static show& half_as_many_meshes()
{
    static show s = open_show(pack_open(generated_pack(0, 0, 2048, 24)));
    return s;
}

// ---- one picture --------------------------------------------------------------------

static void decode_picture(benchmark::State& state, bool ours)
{
    static const std::string jpeg = jpeg_picture(1024, 7);
    const auto* bytes = reinterpret_cast<const uint8_t*>(jpeg.data());
    for (auto _ : state) {
        decoded_image image = {};
        int w, h, n;
        if (!ours)
            std::free(stbi_load_from_memory(bytes, static_cast<int>(jpeg.size()), &w, &h, &n, 3));
        else if (decode_image(bytes, static_cast<uint32_t>(jpeg.size()), 0, image) == image_decoded)
            std::free(image.pixels);
    }
}

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    build_cosine_table();
    if (!open_context())
        return 1;
    for (const bool ours : {true, false})
        benchmark::RegisterBenchmark(ours ? "decode jpeg 1024/ours" : "decode jpeg 1024/stb", decode_picture, ours)
            ->Unit(benchmark::kMillisecond);
    add_pair("load first light, fixed", first_light, false);
    add_pair("load first light, shaders", first_light, true);
    add_pair("load 50 pictures, 100 meshes", many_pictures, false);
    add_pair("load 2,048 meshes", half_as_many_meshes, false);
    add_pair("load 4,096 meshes", many_meshes, false);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
