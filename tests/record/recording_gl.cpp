#include "recording_gl.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>

namespace {

struct recorded_buffer {
    std::vector<uint8_t> bytes;
};

// The one driver of the program.
struct recording_driver {
    gl_answers answers;
    std::vector<std::string> lines;
    uint32_t last_texture;
    uint32_t last_buffer;
    uint32_t last_shader;
    uint32_t last_program;
    int32_t unpack_alignment;
    std::map<uint32_t, uint32_t> bound_buffer; // by target
    std::map<uint32_t, recorded_buffer> buffers;
};

} // namespace

static recording_driver driver;

// ---- values as text -------------------------------------------------------------

namespace {

struct named_constant {
    GLenum value;
    const char* name;
};

} // namespace

static constexpr named_constant named(GLenum value, const char* text)
{
    return {value, text};
}

#define NAMED(constant) named(constant, #constant)
static constexpr named_constant constants[] = {NAMED(GL_LINES), NAMED(GL_TRIANGLES),
    // what can be enabled
    NAMED(GL_BLEND), NAMED(GL_COLOR_MATERIAL), NAMED(GL_CULL_FACE), NAMED(GL_DEPTH_TEST), NAMED(GL_FOG),
    NAMED(GL_LIGHTING), NAMED(GL_LIGHT0), NAMED(GL_LIGHT1), NAMED(GL_NORMALIZE), NAMED(GL_TEXTURE_2D),
    NAMED(GL_TEXTURE_CUBE_MAP), NAMED(GL_TEXTURE_GEN_S), NAMED(GL_TEXTURE_GEN_T), NAMED(GL_TEXTURE_GEN_R),
    NAMED(GL_SCISSOR_TEST), NAMED(GL_NORMAL_ARRAY), NAMED(GL_VERTEX_ARRAY), NAMED(GL_TEXTURE_COORD_ARRAY),
    // polygons, depth, blending
    NAMED(GL_FRONT), NAMED(GL_FRONT_AND_BACK), NAMED(GL_LINE), NAMED(GL_FILL), NAMED(GL_SMOOTH), NAMED(GL_LEQUAL),
    NAMED(GL_SRC_ALPHA), NAMED(GL_ONE_MINUS_SRC_ALPHA), NAMED(GL_FUNC_ADD), NAMED(GL_FUNC_REVERSE_SUBTRACT),
    // light, fog, hints
    NAMED(GL_POSITION), NAMED(GL_AMBIENT), NAMED(GL_DIFFUSE), NAMED(GL_AMBIENT_AND_DIFFUSE),
    NAMED(GL_LIGHT_MODEL_AMBIENT), NAMED(GL_FOG_MODE), NAMED(GL_FOG_COLOR), NAMED(GL_FOG_START), NAMED(GL_FOG_END),
    NAMED(GL_FOG_HINT), NAMED(GL_TEXTURE_COMPRESSION_HINT), NAMED(GL_FASTEST), NAMED(GL_NICEST),
    // matrices, types
    NAMED(GL_MODELVIEW), NAMED(GL_PROJECTION), NAMED(GL_TEXTURE), NAMED(GL_FLOAT), NAMED(GL_UNSIGNED_BYTE),
    NAMED(GL_UNSIGNED_SHORT),
    // textures
    NAMED(GL_TEXTURE0), NAMED(GL_TEXTURE1), NAMED(GL_TEXTURE2), NAMED(GL_TEXTURE_CUBE_MAP_POSITIVE_X),
    NAMED(GL_TEXTURE_CUBE_MAP_NEGATIVE_X), NAMED(GL_TEXTURE_CUBE_MAP_POSITIVE_Y), NAMED(GL_TEXTURE_CUBE_MAP_NEGATIVE_Y),
    NAMED(GL_TEXTURE_CUBE_MAP_POSITIVE_Z), NAMED(GL_TEXTURE_CUBE_MAP_NEGATIVE_Z), NAMED(GL_TEXTURE_WRAP_S),
    NAMED(GL_TEXTURE_WRAP_T), NAMED(GL_TEXTURE_MIN_FILTER), NAMED(GL_TEXTURE_MAG_FILTER), NAMED(GL_REPEAT),
    NAMED(GL_CLAMP_TO_EDGE), NAMED(GL_NEAREST), NAMED(GL_LINEAR), NAMED(GL_LINEAR_MIPMAP_LINEAR),
    NAMED(GL_UNPACK_ALIGNMENT), NAMED(GL_RGB), NAMED(GL_RGBA), NAMED(GL_LUMINANCE), NAMED(GL_LUMINANCE_ALPHA),
    NAMED(GL_COMPRESSED_RGB), NAMED(GL_COMPRESSED_RGBA), NAMED(GL_COMPRESSED_LUMINANCE),
    NAMED(GL_COMPRESSED_LUMINANCE_ALPHA),
    // coordinate generation
    NAMED(GL_S), NAMED(GL_T), NAMED(GL_R), NAMED(GL_TEXTURE_GEN_MODE), NAMED(GL_SPHERE_MAP), NAMED(GL_REFLECTION_MAP),
    // combiners
    NAMED(GL_TEXTURE_ENV), NAMED(GL_TEXTURE_ENV_MODE), NAMED(GL_TEXTURE_ENV_COLOR), NAMED(GL_COMBINE),
    NAMED(GL_COMBINE4_NV), NAMED(GL_COMBINE_RGB), NAMED(GL_COMBINE_ALPHA), NAMED(GL_MODULATE), NAMED(GL_REPLACE),
    NAMED(GL_ADD), NAMED(GL_INTERPOLATE), NAMED(GL_DOT3_RGB), NAMED(GL_MODULATE_ADD_ATI), NAMED(GL_SOURCE0_RGB),
    NAMED(GL_SOURCE1_RGB), NAMED(GL_SOURCE2_RGB), NAMED(GL_SOURCE3_RGB_NV), NAMED(GL_SOURCE0_ALPHA),
    NAMED(GL_SOURCE1_ALPHA), NAMED(GL_SOURCE2_ALPHA), NAMED(GL_SOURCE3_ALPHA_NV), NAMED(GL_OPERAND0_RGB),
    NAMED(GL_OPERAND1_RGB), NAMED(GL_OPERAND2_RGB), NAMED(GL_OPERAND3_RGB_NV), NAMED(GL_OPERAND0_ALPHA),
    NAMED(GL_OPERAND1_ALPHA), NAMED(GL_OPERAND2_ALPHA), NAMED(GL_OPERAND3_ALPHA_NV), NAMED(GL_PRIMARY_COLOR),
    NAMED(GL_PREVIOUS), NAMED(GL_CONSTANT), NAMED(GL_SRC_COLOR), NAMED(GL_ONE_MINUS_SRC_COLOR),
    // buffers, programs, answers
    NAMED(GL_ARRAY_BUFFER), NAMED(GL_ELEMENT_ARRAY_BUFFER), NAMED(GL_PIXEL_UNPACK_BUFFER), NAMED(GL_STATIC_DRAW),
    NAMED(GL_STREAM_DRAW), NAMED(GL_WRITE_ONLY), NAMED(GL_VERTEX_SHADER), NAMED(GL_FRAGMENT_SHADER),
    NAMED(GL_COMPILE_STATUS), NAMED(GL_LINK_STATUS), NAMED(GL_INFO_LOG_LENGTH), NAMED(GL_MAX_TEXTURE_UNITS),
    NAMED(GL_MAX_TEXTURE_SIZE), NAMED(GL_TIME_ELAPSED)};
#undef NAMED

static std::string name(GLenum value)
{
    const auto* found
        = std::find_if(std::begin(constants), std::end(constants), [&](const auto& c) { return c.value == value; });
    return found != std::end(constants) ? found->name : std::to_string(value);
}

static std::string name(GLint value)
{
    return name(static_cast<GLenum>(value));
}

static std::string blend_name(GLenum factor)
{
    return factor == GL_ZERO ? "GL_ZERO" : factor == GL_ONE ? "GL_ONE" : name(factor);
}

static std::string flag_name(GLboolean flag)
{
    return flag == GL_FALSE ? "GL_FALSE" : "GL_TRUE";
}

static std::string clear_name(GLbitfield bits)
{
    std::string text = (bits & GL_COLOR_BUFFER_BIT) != 0 ? "GL_COLOR_BUFFER_BIT" : "";
    if ((bits & GL_DEPTH_BUFFER_BIT) != 0)
        text += text.empty() ? "GL_DEPTH_BUFFER_BIT" : " | GL_DEPTH_BUFFER_BIT";
    const GLbitfield others = bits & ~static_cast<GLbitfield>(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    return others == 0 && !text.empty() ? text : std::to_string(bits);
}

static std::string as_text(const std::string& text)
{
    return text;
}

static std::string as_text(int64_t number)
{
    return std::to_string(number);
}

static std::string as_text(GLint number)
{
    return std::to_string(number);
}

static std::string as_text(GLuint number)
{
    return std::to_string(number);
}

static std::string as_text(float number)
{
    const double rounded = std::round(static_cast<double>(number) * 1e5) / 1e5 + 0.0; // no "-0"
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", std::isfinite(rounded) ? rounded : static_cast<double>(number));
    return text;
}

template <typename number> static std::string in_brackets(const number* numbers, size_t count)
{
    std::string text = "[";
    for (size_t i = 0; i < count; ++i)
        text += (i == 0 ? "" : " ") + as_text(numbers[i]);
    return text + "]";
}

std::string floats_as_text(std::span<const float> numbers)
{
    return in_brackets(numbers.data(), numbers.size());
}

std::string bytes_as_text(std::span<const uint8_t> bytes)
{
    if (bytes.size() <= 16) {
        const std::vector<GLint> numbers(bytes.begin(), bytes.end());
        return in_brackets(numbers.data(), numbers.size());
    }
    uint32_t hash = 2166136261u; // FNV-1a
    for (const uint8_t byte : bytes)
        hash = (hash ^ byte) * 16777619u;
    char text[48];
    std::snprintf(text, sizeof text, "%zu bytes #%08x", bytes.size(), hash);
    return text;
}

static const uint8_t* address(const void* data)
{
    return static_cast<const uint8_t*>(data);
}

// ---- the list -------------------------------------------------------------------

void record_call(const std::string& line)
{
    driver.lines.push_back(line);
}

template <typename... values> static void record(const std::string& function, const values&... arguments)
{
    const std::vector<std::string> texts = {as_text(arguments)...};
    std::string line = function + "(";
    for (size_t i = 0; i < texts.size(); ++i)
        line += (i == 0 ? "" : ", ") + texts[i];
    record_call(line + ")");
}

// The result of the call that was recorded last.
static void record_result(const std::string& result)
{
    driver.lines.back() += " = " + result;
}

std::string take_gl_calls()
{
    std::string text = "\n";
    for (const std::string& line : driver.lines)
        text += line + "\n";
    driver.lines.clear();
    return text;
}

std::string take_gl_calls(std::initializer_list<std::string_view> functions)
{
    std::erase_if(driver.lines, [&](const std::string& line) {
        const std::string_view function = std::string_view(line).substr(0, line.find('('));
        return std::find(functions.begin(), functions.end(), function) == functions.end();
    });
    return take_gl_calls();
}

// ---- names and buffers ----------------------------------------------------------

static std::string hand_out(GLsizei count, uint32_t& last, GLuint* names)
{
    for (GLsizei i = 0; i < count; ++i)
        names[i] = ++last;
    return count == 1 ? as_text(names[0]) : in_brackets(names, static_cast<size_t>(count));
}

static std::string names_as_text(GLsizei count, const GLuint* names)
{
    return in_brackets(names, static_cast<size_t>(count));
}

static recorded_buffer* bound_buffer(GLenum target)
{
    const uint32_t buffer = driver.bound_buffer[target];
    return buffer != 0 ? &driver.buffers[buffer] : nullptr;
}

// The first vertex of an array of floats: in client memory, or at an offset of a buffer.
static std::string vertex_as_text(GLint components, const void* data)
{
    if (data == nullptr || bound_buffer(GL_ARRAY_BUFFER) != nullptr)
        return as_text(static_cast<int64_t>(reinterpret_cast<intptr_t>(data)));
    return in_brackets(static_cast<const float*>(data), static_cast<size_t>(components));
}

static std::string indices_as_text(GLsizei count, const void* data)
{
    if (data == nullptr || bound_buffer(GL_ELEMENT_ARRAY_BUFFER) != nullptr)
        return as_text(static_cast<int64_t>(reinterpret_cast<intptr_t>(data)));
    const auto* indices = static_cast<const GLushort*>(data);
    const std::vector<GLint> numbers(indices, indices + count);
    return in_brackets(numbers.data(), numbers.size());
}

static std::string buffer_data_as_text(GLenum target, GLsizeiptr size, const void* data)
{
    const auto bytes = static_cast<size_t>(size);
    if (data == nullptr)
        return "0";
    if (bytes > 128)
        return bytes_as_text({address(data), bytes});
    if (target == GL_ELEMENT_ARRAY_BUFFER) {
        const auto* indices = static_cast<const GLushort*>(data);
        const std::vector<GLint> numbers(indices, indices + bytes / sizeof(GLushort));
        return in_brackets(numbers.data(), numbers.size());
    }
    return in_brackets(static_cast<const float*>(data), bytes / sizeof(float));
}

// ---- pixels ---------------------------------------------------------------------

static size_t components_of(GLenum format)
{
    switch (format) {
    case GL_LUMINANCE:
        return 1;
    case GL_RGB:
    case 34550:
        return 3;
    }
    return 4;
}

// The pixels without what OpenGL skips at the end of rows.
static std::string pixels_as_text(GLsizei width, GLsizei height, GLenum format, const void* data)
{
    const uint8_t* from = address(data);
    if (const recorded_buffer* buffer = bound_buffer(GL_PIXEL_UNPACK_BUFFER))
        from = buffer->bytes.data() + reinterpret_cast<intptr_t>(data);
    if (from == nullptr)
        return "0";
    const size_t row = static_cast<size_t>(width) * components_of(format);
    const auto alignment = static_cast<size_t>(driver.unpack_alignment);
    const size_t step = (row + alignment - 1) / alignment * alignment;
    std::vector<uint8_t> pixels;
    for (GLsizei y = 0; y < height; ++y)
        pixels.insert(pixels.end(), from + static_cast<size_t>(y) * step, from + static_cast<size_t>(y) * step + row);
    return bytes_as_text(pixels);
}

// ---- OpenGL 1.1: these stand in the program itself ------------------------------

void GLAPIENTRY glBindTexture(GLenum target, GLuint texture)
{
    record(__func__, name(target), texture);
}

void GLAPIENTRY glBlendFunc(GLenum source, GLenum destination)
{
    record(__func__, blend_name(source), blend_name(destination));
}

void GLAPIENTRY glClear(GLbitfield mask)
{
    record(__func__, clear_name(mask));
}

void GLAPIENTRY glClearColor(GLclampf red, GLclampf green, GLclampf blue, GLclampf alpha)
{
    record(__func__, red, green, blue, alpha);
}

void GLAPIENTRY glColor4f(GLfloat red, GLfloat green, GLfloat blue, GLfloat alpha)
{
    record("glColor4f", red, green, blue, alpha);
}

void GLAPIENTRY glColor4fv(const GLfloat* color)
{
    glColor4f(color[0], color[1], color[2], color[3]);
}

void GLAPIENTRY glColorMaterial(GLenum face, GLenum mode)
{
    record(__func__, name(face), name(mode));
}

void GLAPIENTRY glCopyTexSubImage2D(
    GLenum target, GLint level, GLint to_x, GLint to_y, GLint x, GLint y, GLsizei width, GLsizei height)
{
    record(__func__, name(target), level, to_x, to_y, x, y, width, height);
}

void GLAPIENTRY glDeleteTextures(GLsizei count, const GLuint* textures)
{
    record(__func__, count, names_as_text(count, textures));
}

void GLAPIENTRY glDepthFunc(GLenum function)
{
    record(__func__, name(function));
}

void GLAPIENTRY glDisable(GLenum capability)
{
    record(__func__, name(capability));
}

void GLAPIENTRY glDisableClientState(GLenum array)
{
    record(__func__, name(array));
}

void GLAPIENTRY glDrawElements(GLenum mode, GLsizei count, GLenum type, const void* indices)
{
    record(__func__, name(mode), count, name(type), indices_as_text(count, indices));
}

void GLAPIENTRY glEnable(GLenum capability)
{
    record(__func__, name(capability));
}

void GLAPIENTRY glEnableClientState(GLenum array)
{
    record(__func__, name(array));
}

void GLAPIENTRY glFinish()
{
    record(__func__);
}

void GLAPIENTRY glFogf(GLenum parameter, GLfloat value)
{
    record(__func__, name(parameter), value);
}

void GLAPIENTRY glFogfv(GLenum parameter, const GLfloat* values)
{
    record(__func__, name(parameter), in_brackets(values, 4));
}

void GLAPIENTRY glFogi(GLenum parameter, GLint value)
{
    record(__func__, name(parameter), name(value));
}

void GLAPIENTRY glGenTextures(GLsizei count, GLuint* textures)
{
    record(__func__, count);
    record_result(hand_out(count, driver.last_texture, textures));
}

void GLAPIENTRY glGetIntegerv(GLenum parameter, GLint* value)
{
    record(__func__, name(parameter));
    const auto found = driver.answers.integers.find(parameter);
    *value = found != driver.answers.integers.end() ? found->second : 0;
    record_result(as_text(*value));
}

void GLAPIENTRY glHint(GLenum target, GLenum mode)
{
    record(__func__, name(target), name(mode));
}

void GLAPIENTRY glLightModelfv(GLenum parameter, const GLfloat* values)
{
    record(__func__, name(parameter), in_brackets(values, 4));
}

void GLAPIENTRY glLightfv(GLenum light, GLenum parameter, const GLfloat* values)
{
    record(__func__, name(light), name(parameter), in_brackets(values, 4));
}

void GLAPIENTRY glLineWidth(GLfloat width)
{
    record(__func__, width);
}

void GLAPIENTRY glLoadMatrixf(const GLfloat* matrix)
{
    record(__func__, in_brackets(matrix, 16));
}

void GLAPIENTRY glMatrixMode(GLenum mode)
{
    record(__func__, name(mode));
}

void GLAPIENTRY glNormalPointer(GLenum type, GLsizei stride, const void* data)
{
    record(__func__, name(type), stride, vertex_as_text(3, data));
}

void GLAPIENTRY glPixelStorei(GLenum parameter, GLint value)
{
    record(__func__, name(parameter), value);
    if (parameter == GL_UNPACK_ALIGNMENT)
        driver.unpack_alignment = std::max(value, 1);
}

void GLAPIENTRY glPolygonMode(GLenum face, GLenum mode)
{
    record(__func__, name(face), name(mode));
}

void GLAPIENTRY glScissor(GLint x, GLint y, GLsizei width, GLsizei height)
{
    record(__func__, x, y, width, height);
}

void GLAPIENTRY glShadeModel(GLenum mode)
{
    record(__func__, name(mode));
}

void GLAPIENTRY glTexCoordPointer(GLint size, GLenum type, GLsizei stride, const void* data)
{
    record(__func__, size, name(type), stride, vertex_as_text(size, data));
}

void GLAPIENTRY glTexEnvfv(GLenum target, GLenum parameter, const GLfloat* values)
{
    record(__func__, name(target), name(parameter), in_brackets(values, 4));
}

void GLAPIENTRY glTexEnvi(GLenum target, GLenum parameter, GLint value)
{
    record(__func__, name(target), name(parameter), name(value));
}

void GLAPIENTRY glTexGeni(GLenum coordinate, GLenum parameter, GLint value)
{
    record(__func__, name(coordinate), name(parameter), name(value));
}

void GLAPIENTRY glTexImage2D(GLenum target, GLint level, GLint internal_format, GLsizei width, GLsizei height,
    GLint border, GLenum format, GLenum type, const void* pixels)
{
    record(__func__, name(target), level, name(internal_format), width, height, border, name(format), name(type),
        pixels_as_text(width, height, format, pixels));
}

void GLAPIENTRY glTexParameteri(GLenum target, GLenum parameter, GLint value)
{
    record(__func__, name(target), name(parameter), name(value));
}

void GLAPIENTRY glTexSubImage2D(GLenum target, GLint level, GLint x, GLint y, GLsizei width, GLsizei height,
    GLenum format, GLenum type, const void* pixels)
{
    record(__func__, name(target), level, x, y, width, height, name(format), name(type),
        pixels_as_text(width, height, format, pixels));
}

void GLAPIENTRY glVertexPointer(GLint size, GLenum type, GLsizei stride, const void* data)
{
    record(__func__, size, name(type), stride, vertex_as_text(size, data));
}

void GLAPIENTRY glViewport(GLint x, GLint y, GLsizei width, GLsizei height)
{
    record(__func__, x, y, width, height);
}

// ---- later functions, for the loader's pointers ---------------------------------

static void GLAPIENTRY record_active_texture(GLenum unit)
{
    record("glActiveTexture", name(unit));
}

static void GLAPIENTRY record_client_active_texture(GLenum unit)
{
    record("glClientActiveTexture", name(unit));
}

static void GLAPIENTRY record_multi_tex_coord_4f(GLenum unit, GLfloat s, GLfloat t, GLfloat r, GLfloat q)
{
    record("glMultiTexCoord4f", name(unit), s, t, r, q);
}

static void GLAPIENTRY record_blend_equation(GLenum equation)
{
    record("glBlendEquation", name(equation));
}

static void GLAPIENTRY record_bind_buffer(GLenum target, GLuint buffer)
{
    record("glBindBuffer", name(target), buffer);
    driver.bound_buffer[target] = buffer;
}

static void GLAPIENTRY record_buffer_data(GLenum target, GLsizeiptr size, const void* data, GLenum usage)
{
    record(
        "glBufferData", name(target), static_cast<int64_t>(size), buffer_data_as_text(target, size, data), name(usage));
    recorded_buffer* buffer = bound_buffer(target);
    if (buffer == nullptr)
        return;
    buffer->bytes.assign(static_cast<size_t>(size), 0xCD); // undefined until written
    if (data != nullptr)
        std::memcpy(buffer->bytes.data(), data, buffer->bytes.size());
}

static void GLAPIENTRY record_buffer_sub_data(GLenum target, GLintptr offset, GLsizeiptr size, const void* data)
{
    record("glBufferSubData", name(target), static_cast<int64_t>(offset), static_cast<int64_t>(size),
        buffer_data_as_text(target, size, data));
}

static void GLAPIENTRY record_delete_buffers(GLsizei count, const GLuint* buffers)
{
    record("glDeleteBuffers", count, names_as_text(count, buffers));
    for (GLsizei i = 0; i < count; ++i)
        driver.buffers.erase(buffers[i]);
}

static void GLAPIENTRY record_gen_buffers(GLsizei count, GLuint* buffers)
{
    record("glGenBuffers", count);
    record_result(hand_out(count, driver.last_buffer, buffers));
}

static void* GLAPIENTRY record_map_buffer(GLenum target, GLenum access)
{
    record("glMapBuffer", name(target), name(access));
    recorded_buffer* buffer = driver.answers.maps ? bound_buffer(target) : nullptr;
    record_result(buffer != nullptr ? "memory" : "0");
    return buffer != nullptr ? buffer->bytes.data() : nullptr;
}

static GLboolean GLAPIENTRY record_unmap_buffer(GLenum target)
{
    record("glUnmapBuffer", name(target));
    const GLboolean arrived = driver.answers.unmaps ? GL_TRUE : GL_FALSE;
    record_result(flag_name(arrived));
    return arrived;
}

static void GLAPIENTRY record_begin_query(GLenum target, GLuint query)
{
    record("glBeginQuery", name(target), query);
}

static void GLAPIENTRY record_end_query(GLenum target)
{
    record("glEndQuery", name(target));
}

// ---- programs -------------------------------------------------------------------

static GLuint GLAPIENTRY record_create_shader(GLenum stage)
{
    record("glCreateShader", name(stage));
    record_result(as_text(++driver.last_shader));
    return driver.last_shader;
}

static void GLAPIENTRY record_shader_source(
    GLuint shader, GLsizei count, const GLchar* const* texts, const GLint* lengths)
{
    const std::string_view text(texts[0], static_cast<size_t>(lengths[0]));
    const std::vector<uint8_t> bytes(text.begin(), text.end());
    record("glShaderSource", shader, count, text.size() <= 40 ? "\"" + std::string(text) + "\"" : bytes_as_text(bytes));
}

static void GLAPIENTRY record_compile_shader(GLuint shader)
{
    record("glCompileShader", shader);
}

static void GLAPIENTRY record_get_shader_info_log(GLuint shader, GLsizei size, GLsizei*, GLchar* log)
{
    record("glGetShaderInfoLog", shader, size);
    std::snprintf(log, static_cast<size_t>(size), "%s", driver.answers.shader_log.c_str());
}

static GLint log_length(const std::string& log)
{
    return log.empty() ? 0 : static_cast<GLint>(log.size()) + 1;
}

static void GLAPIENTRY record_get_shader_iv(GLuint shader, GLenum parameter, GLint* value)
{
    record("glGetShaderiv", shader, name(parameter));
    *value = parameter == GL_INFO_LOG_LENGTH ? log_length(driver.answers.shader_log)
        : driver.answers.compiles            ? GL_TRUE
                                             : GL_FALSE;
    record_result(as_text(*value));
}

static void GLAPIENTRY record_delete_shader(GLuint shader)
{
    record("glDeleteShader", shader);
}

static GLuint GLAPIENTRY record_create_program()
{
    record("glCreateProgram");
    record_result(as_text(++driver.last_program));
    return driver.last_program;
}

static void GLAPIENTRY record_attach_shader(GLuint program, GLuint shader)
{
    record("glAttachShader", program, shader);
}

static void GLAPIENTRY record_detach_shader(GLuint program, GLuint shader)
{
    record("glDetachShader", program, shader);
}

static void GLAPIENTRY record_link_program(GLuint program)
{
    record("glLinkProgram", program);
}

static void GLAPIENTRY record_get_program_iv(GLuint program, GLenum parameter, GLint* value)
{
    record("glGetProgramiv", program, name(parameter));
    *value = parameter == GL_INFO_LOG_LENGTH ? log_length(driver.answers.program_log)
        : driver.answers.links               ? GL_TRUE
                                             : GL_FALSE;
    record_result(as_text(*value));
}

static void GLAPIENTRY record_get_program_info_log(GLuint program, GLsizei size, GLsizei*, GLchar* log)
{
    record("glGetProgramInfoLog", program, size);
    std::snprintf(log, static_cast<size_t>(size), "%s", driver.answers.program_log.c_str());
}

static void GLAPIENTRY record_delete_program(GLuint program)
{
    record("glDeleteProgram", program);
}

static void GLAPIENTRY record_use_program(GLuint program)
{
    record("glUseProgram", program);
}

static GLint answer_location(const char* function, GLuint program, const GLchar* variable)
{
    record(function, program, std::string(variable));
    const auto found = driver.answers.locations.find(variable);
    const GLint location = found != driver.answers.locations.end() ? found->second : -1;
    record_result(as_text(location));
    return location;
}

static GLint GLAPIENTRY record_get_uniform_location(GLuint program, const GLchar* variable)
{
    return answer_location("glGetUniformLocation", program, variable);
}

static GLint GLAPIENTRY record_get_attrib_location(GLuint program, const GLchar* variable)
{
    return answer_location("glGetAttribLocation", program, variable);
}

static void GLAPIENTRY record_uniform_1i(GLint location, GLint value)
{
    record("glUniform1i", location, value);
}

static void GLAPIENTRY record_uniform_1f(GLint location, GLfloat value)
{
    record("glUniform1f", location, value);
}

static void GLAPIENTRY record_uniform_3f(GLint location, GLfloat x, GLfloat y, GLfloat z)
{
    record("glUniform3f", location, x, y, z);
}

static void GLAPIENTRY record_uniform_3fv(GLint location, GLsizei count, const GLfloat* values)
{
    record("glUniform3fv", location, count, in_brackets(values, 3));
}

static void GLAPIENTRY record_uniform_matrix_3fv(
    GLint location, GLsizei count, GLboolean transposed, const GLfloat* matrix)
{
    record("glUniformMatrix3fv", location, count, flag_name(transposed), in_brackets(matrix, 9));
}

static void GLAPIENTRY record_uniform_matrix_4fv(
    GLint location, GLsizei count, GLboolean transposed, const GLfloat* matrix)
{
    record("glUniformMatrix4fv", location, count, flag_name(transposed), in_brackets(matrix, 16));
}

static void GLAPIENTRY record_vertex_attrib_pointer(
    GLuint index, GLint size, GLenum type, GLboolean normalized, GLsizei stride, const void* data)
{
    record("glVertexAttribPointer", index, size, name(type), flag_name(normalized), stride, vertex_as_text(size, data));
}

static void GLAPIENTRY record_vertex_attrib_4f(GLuint index, GLfloat x, GLfloat y, GLfloat z, GLfloat w)
{
    record("glVertexAttrib4f", index, x, y, z, w);
}

static void GLAPIENTRY record_enable_vertex_attrib_array(GLuint index)
{
    record("glEnableVertexAttribArray", index);
}

static void GLAPIENTRY record_disable_vertex_attrib_array(GLuint index)
{
    record("glDisableVertexAttribArray", index);
}

// ---- the loader of entry points -------------------------------------------------

static void offer_entry_points()
{
    glActiveTexture = record_active_texture;
    glClientActiveTexture = record_client_active_texture;
    glMultiTexCoord4f = record_multi_tex_coord_4f;
    glBlendEquation = record_blend_equation;
    glBindBuffer = record_bind_buffer;
    glBufferData = record_buffer_data;
    glBufferSubData = record_buffer_sub_data;
    glDeleteBuffers = record_delete_buffers;
    glGenBuffers = record_gen_buffers;
    glMapBuffer = record_map_buffer;
    glUnmapBuffer = record_unmap_buffer;
    glBeginQuery = record_begin_query;
    glEndQuery = record_end_query;
}

static void offer_programs()
{
    glCreateShader = record_create_shader;
    glShaderSource = record_shader_source;
    glCompileShader = record_compile_shader;
    glGetShaderInfoLog = record_get_shader_info_log;
    glGetShaderiv = record_get_shader_iv;
    glDeleteShader = record_delete_shader;
    glCreateProgram = record_create_program;
    glAttachShader = record_attach_shader;
    glDetachShader = record_detach_shader;
    glLinkProgram = record_link_program;
    glGetProgramiv = record_get_program_iv;
    glGetProgramInfoLog = record_get_program_info_log;
    glDeleteProgram = record_delete_program;
    glUseProgram = record_use_program;
    glGetUniformLocation = record_get_uniform_location;
    glGetAttribLocation = record_get_attrib_location;
    glUniform1i = record_uniform_1i;
    glUniform1f = record_uniform_1f;
    glUniform3f = record_uniform_3f;
    glUniform3fv = record_uniform_3fv;
    glUniformMatrix3fv = record_uniform_matrix_3fv;
    glUniformMatrix4fv = record_uniform_matrix_4fv;
    glVertexAttribPointer = record_vertex_attrib_pointer;
    glVertexAttrib4f = record_vertex_attrib_4f;
    glEnableVertexAttribArray = record_enable_vertex_attrib_array;
    glDisableVertexAttribArray = record_disable_vertex_attrib_array;
}

static void withdraw_extensions()
{
    __GLEW_ARB_vertex_buffer_object = GL_FALSE;
    __GLEW_ARB_pixel_buffer_object = GL_FALSE;
    __GLEW_ARB_texture_non_power_of_two = GL_FALSE;
    __GLEW_ARB_texture_compression = GL_FALSE;
    __GLEW_NV_texture_env_combine4 = GL_FALSE;
    __GLEW_ATI_texture_env_combine3 = GL_FALSE;
    __GLEW_NV_texture_shader = GL_FALSE;
    __GLEW_ATI_envmap_bumpmap = GL_FALSE;
    glBindBufferARB = nullptr;
    glBufferDataARB = nullptr;
    glBufferSubDataARB = nullptr;
    glDeleteBuffersARB = nullptr;
    glGenBuffersARB = nullptr;
    glMapBufferARB = nullptr;
    glUnmapBufferARB = nullptr;
}

// The engine asks for the entry points; what a test has set stays.
GLenum GLEWAPIENTRY glewInit()
{
    record("glewInit");
    return GLEW_OK;
}

gl_answers& begin_gl_recording()
{
    driver = {};
    driver.unpack_alignment = 4;
    driver.last_buffer = 100;
    driver.last_shader = 200;
    driver.last_program = 300;
    offer_entry_points();
    offer_programs();
    withdraw_extensions();
    __GLEW_VERSION_1_3 = GL_TRUE;
    __GLEW_VERSION_2_1 = GL_TRUE;
    return driver.answers;
}
