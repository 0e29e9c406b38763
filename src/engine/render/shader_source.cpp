#include "render/shader_source.h"

#include "content/text_buffer.h"
#include "model/values.h"
#include "render/material_plan.h"

#include <algorithm>
#include <cassert>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

constexpr uint32_t first_source_capacity = 256; // bytes; texts grow from there

// Drives a uniform whose value record names no function: no table holds this handle,
// so it evaluates to 1.0 as every missing function does, where 0 would mean that the
// uniform is unused and leave it at the driver's 0.
constexpr uint32_t missing_function = 0xFFFFFFFFu;

// colour, two lights, fog colour, start and end: numbers can never run out
static_assert(4 + 6 + 6 + 3 + 2 <= user_uniform_count);

// ---- what the texts are made of -------------------------------------------------

namespace {

struct source_text {
    char* text; // owned until the program record takes it
    uint32_t capacity;
    uint32_t used;
};

// A number in a text: a literal, or the uniform "u" number.
struct source_value {
    float constant;
    uint32_t uniform; // 1..24; 0: the constant
};

struct source_light {
    bool used;
    source_value values[6]; // ambient, diffuse
};

struct source_fog {
    bool used;
    bool colored; // false: white
    source_value color[3];
    source_value start;
    source_value end;
};

struct source_plan {
    source_value color[4];
    source_light lights[2];
    source_fog fog;
    uint32_t vertex_uniforms; // u1..un belong to the vertex text, the rest to the fragment text
    uint32_t uniforms;
    uint32_t unit_count;
    bool cube_map[texture_unit_count];
    bool normalization;
    bool any_generated; // a unit makes its own coordinates
    bool any_sphere;
    bool any_turned_sphere; // a sphere map that the texture matrix turns
    bool any_texture_matrix;
};

} // namespace

// ---- deciding -------------------------------------------------------------------

static source_value plan_value(float value, bool dynamic, source_plan& plan, shader_program& program)
{
    if (!dynamic)
        return {value, 0};
    assert(plan.uniforms < user_uniform_count);
    const uint32_t handle = handle_of_value(value);
    program.uniform_functions[plan.uniforms] = handle == 0 ? missing_function : handle;
    ++plan.uniforms;
    return {0.0f, plan.uniforms};
}

static source_value plan_record_value(
    const value_record& record, uint32_t index, source_plan& plan, shader_program& program)
{
    assert(index < std::size(record.values));
    return plan_value(record.values[index], value_is_dynamic(record, index), plan, program);
}

static source_light plan_source_light(
    uint32_t handle, const table<value_record>& value_records, source_plan& plan, shader_program& program)
{
    source_light light = {};
    const value_record* record = table_get(value_records, handle);
    if (record == nullptr)
        return light;
    light.used = true;
    for (uint32_t i = 0; i < 6; ++i)
        light.values[i] = plan_record_value(*record, i, plan, program);
    return light;
}

// What no literal can say is written as the nearest number that one can.
static float literal(float value)
{
    return std::isnan(value) ? 0.0f : std::clamp(value, -FLT_MAX, FLT_MAX);
}

// A constant as the program reads it: with the six decimals of its text.
static float as_written(float value)
{
    char digits[64];
    std::snprintf(digits, sizeof digits, "%f", static_cast<double>(literal(value)));
    return std::strtof(digits, nullptr);
}

// Two constants whose texts are equal have no width in the program, even where their
// numbers differ: an end that lies before the start stays there.
static void widen_constant_fog(float& start, float& end)
{
    const bool reversed = end < start;
    float written_start = as_written(start);
    float written_end = as_written(end);
    if (written_start != written_end)
        return;
    widen_fog(written_start, written_end);
    start = written_start;
    end = reversed ? written_start - least_fog_width : written_end;
}

static source_fog plan_source_fog(const material_record& material, const table<value_record>& value_records,
    source_plan& plan, shader_program& program)
{
    source_fog fog = {};
    fog.used = material.fogtype != fog_none;
    if (!fog.used)
        return fog;
    if (const value_record* record = table_get(value_records, material.fogcolor)) {
        fog.colored = true;
        for (uint32_t i = 0; i < 3; ++i)
            fog.color[i] = plan_record_value(*record, 3 + i, plan, program);
    }
    float start = material.fogstart;
    float end = material.fogend;
    if (material.fogstart_dynamic == 0 && material.fogend_dynamic == 0)
        widen_constant_fog(start, end);
    fog.start = plan_value(start, material.fogstart_dynamic != 0, plan, program);
    fog.end = plan_value(end, material.fogend_dynamic != 0, plan, program);
    return fog;
}

static void plan_source_units(
    const material_record& material, const shader_unit units[texture_unit_count], source_plan& plan)
{
    for (uint32_t i = 0; i < texture_unit_count && units[i].used; ++i) {
        ++plan.unit_count;
        plan.cube_map[i] = units[i].cube_map;
        const bool turned = material.rotation[i] != 0;
        const bool sphere = material.cgenmode[i] == coordinates_sphere;
        const bool cube = material.cgenmode[i] == coordinates_cube;
        plan.any_generated |= sphere || cube;
        plan.any_sphere |= sphere;
        plan.any_turned_sphere |= sphere && turned;
        plan.any_texture_matrix |= turned || cube;
    }
}

// Numbers the dynamic values in this order: colour, light 1, light 2, fog.
static source_plan plan_source(const material_record& material, const table<value_record>& value_records,
    const shader_unit units[texture_unit_count], shader_program& program)
{
    source_plan plan = {};
    plan.normalization = material.normalization != 0;
    plan_source_units(material, units, plan);
    for (uint32_t i = 0; i < 4; ++i)
        plan.color[i] = plan_value(material.color[i], material.color_dynamic[i] != 0, plan, program);
    plan.lights[0] = plan_source_light(material.light1, value_records, plan, program);
    plan.lights[1] = plan_source_light(material.light2, value_records, plan, program);
    plan.vertex_uniforms = plan.uniforms;
    plan.fog = plan_source_fog(material, value_records, plan, program);
    assert(plan.unit_count <= texture_unit_count && plan.vertex_uniforms <= plan.uniforms);
    return plan;
}

// ---- writing --------------------------------------------------------------------

static void write(source_text& out, const char* text)
{
    assert(text != nullptr);
    buffer_printf(&out.text, &out.capacity, &out.used, "%s", text);
}

static void write_value(source_text& out, const source_value& value)
{
    assert(value.uniform <= user_uniform_count);
    if (value.uniform == 0) {
        buffer_printf(&out.text, &out.capacity, &out.used, "%f", static_cast<double>(literal(value.constant)));
        return;
    }
    char name[8];
    std::snprintf(name, sizeof name, "u%u", value.uniform % 100);
    buffer_printf(&out.text, &out.capacity, &out.used, "%s", name);
}

static void write_values(source_text& out, const source_value* values, uint32_t count)
{
    for (uint32_t i = 0; i < count; ++i) {
        if (i > 0)
            write(out, ", ");
        write_value(out, values[i]);
    }
}

// Uniforms first..last of the "u"s.
static void write_uniforms(source_text& out, uint32_t first, uint32_t last)
{
    assert(first >= 1 && last <= user_uniform_count);
    for (uint32_t n = first; n <= last; ++n) {
        write(out, "uniform float ");
        write_value(out, {0.0f, n});
        write(out, ";\n");
    }
}

// A text with the same digit (1..3) in every "#".
static void write_numbered(source_text& out, const char* pattern, uint32_t number)
{
    assert(number <= texture_unit_count);
    char line[512];
    uint32_t length = 0;
    for (; pattern[length] != '\0' && length + 1 < sizeof line; ++length)
        line[length] = pattern[length] == '#' ? static_cast<char>('0' + number) : pattern[length];
    assert(pattern[length] == '\0'); // nothing is cut
    line[length] = '\0';
    write(out, line);
}

// ---- vertex text ----------------------------------------------------------------

static void write_vertex_declarations(source_text& out, const source_plan& plan, const material_record& material)
{
    write(out,
        "attribute vec4 Position;\nuniform mat4 Projection;\nuniform mat4 Modelview;\nattribute vec3 Normal;\n"
        "uniform mat3 NormalMatrix;\n");
    for (uint32_t i = 0; i < plan.unit_count; ++i) {
        const bool cube = material.cgenmode[i] == coordinates_cube;
        write_numbered(out, cube ? "varying vec3 TexCoordOut#;\n" : "varying vec2 TexCoordOut#;\n", i + 1);
        if (!generates_coordinates(material.cgenmode[i]))
            write_numbered(out, "attribute vec2 TexCoordIn#;\n", i + 1);
    }
    if (plan.any_texture_matrix)
        write(out, "uniform mat4 TextureMatrix;\n");
    write(out, "varying vec4 Color;\n");
    write_uniforms(out, 1, plan.vertex_uniforms);
    for (uint32_t i = 0; i < 2; ++i)
        if (plan.lights[i].used)
            write_numbered(out, "uniform vec3 LightPosition#;\n", i + 1);
}

static void write_light(source_text& out, const source_light& light, uint32_t number)
{
    write_numbered(out, "  vec3 ambient# = vec3(", number);
    write_values(out, light.values, 3);
    write(out, ");\n");
    write_numbered(out, "  vec3 diffuse# = vec3(", number);
    write_values(out, light.values + 3, 3);
    write(out, ");\n");
    write_numbered(out,
        "  vec3 ul# = normalize(LightPosition# - vec3(mp));\n"
        "  float f# = max(dot(n, ul#), 0.0);\n",
        number);
}

static void write_lit_color(source_text& out, const source_plan& plan)
{
    assert(plan.lights[0].used || plan.lights[1].used);
    if (plan.lights[0].used && plan.lights[1].used) {
        for (uint32_t number = 1; number <= 2; ++number)
            write_numbered(out,
                "  vec3 Color# = vec3(basecolor.x * (f# * diffuse#.x + ambient#.x), "
                "basecolor.y * (f# * diffuse#.y + ambient#.y), basecolor.z * (f# * diffuse#.z + ambient#.z));\n",
                number);
        write(out,
            "  Color = vec4(min(Color1.x + Color2.x, 1.0), min(Color1.y + Color2.y, 1.0), "
            "min(Color1.z + Color2.z, 1.0), basecolor.w);\n");
        return;
    }
    write_numbered(out,
        "  Color = vec4(min(basecolor.x * (f# * diffuse#.x + ambient#.x), 1.0), "
        "min(basecolor.y * (f# * diffuse#.y + ambient#.y), 1.0), "
        "min(basecolor.z * (f# * diffuse#.z + ambient#.z), 1.0), basecolor.w);\n",
        plan.lights[0].used ? 1 : 2);
}

static void write_vertex_color(source_text& out, const source_plan& plan)
{
    const bool lit = plan.lights[0].used || plan.lights[1].used;
    write(out, lit ? "  vec4 basecolor = vec4(" : "  Color = vec4(");
    write_values(out, plan.color, 4);
    write(out, ");\n");
    if (!lit)
        return;
    for (uint32_t i = 0; i < 2; ++i)
        if (plan.lights[i].used)
            write_light(out, plan.lights[i], i + 1);
    write_lit_color(out, plan);
}

static const char* coordinate_text(uint8_t cgenmode, bool turned)
{
    switch (static_cast<coordinate_generation>(cgenmode)) {
    case coordinates_off:
        break;
    case coordinates_sphere:
        return turned ? "  TexCoordOut#.s = TextureMatrix[0][0] * rr.x + TextureMatrix[0][1] * rr.y + 0.5;\n"
                        "  TexCoordOut#.t = TextureMatrix[1][0] * rr.x + TextureMatrix[1][1] * rr.y + 0.5;\n"
                      : "  TexCoordOut#.s = r.x / m + 0.5;\n  TexCoordOut#.t = r.y / m + 0.5;\n";
    case coordinates_cube:
        return "  TexCoordOut#.x = TextureMatrix[0][0] * r.x + TextureMatrix[0][1] * r.y + TextureMatrix[0][2] * r.z;\n"
               "  TexCoordOut#.y = TextureMatrix[1][0] * r.x + TextureMatrix[1][1] * r.y + TextureMatrix[1][2] * r.z;\n"
               "  TexCoordOut#.z = TextureMatrix[2][0] * r.x + TextureMatrix[2][1] * r.y + TextureMatrix[2][2] * r.z;"
               "\n";
    case coordinate_generation_count:
        break;
    }
    return "  TexCoordOut# = TexCoordIn#;\n";
}

static void write_vertex_coordinates(source_text& out, const source_plan& plan, const material_record& material)
{
    if (plan.any_generated)
        write(out, "  vec3 ue = normalize(vec3(mp));\n  vec3 r = reflect(ue, n);\n");
    if (plan.any_sphere)
        write(out, "  float rz = r.z + 1.0;\n  float m = 2.0 * sqrt(r.x * r.x + r.y * r.y + rz * rz);\n");
    if (plan.any_turned_sphere)
        write(out, "  vec2 rr;\n  rr.x = r.x / m;\n  rr.y = r.y / m;\n");
    for (uint32_t i = 0; i < plan.unit_count; ++i)
        write_numbered(out, coordinate_text(material.cgenmode[i], material.rotation[i] != 0), i + 1);
}

static void write_vertex_source(source_text& out, const source_plan& plan, const material_record& material)
{
    write_vertex_declarations(out, plan, material);
    write(out, "void main(void)\n{\n");
    write(out, "  vec4 mp = Modelview * Position;\n");
    if (plan.any_generated || plan.lights[0].used || plan.lights[1].used)
        write(out,
            plan.normalization ? "  vec3 n = normalize(NormalMatrix * Normal);\n"
                               : "  vec3 n = NormalMatrix * Normal;\n");
    write_vertex_color(out, plan);
    write_vertex_coordinates(out, plan, material);
    write(out, "  gl_Position = Projection * mp;\n");
    write(out, "}");
}

// ---- fragment text --------------------------------------------------------------

static void write_fragment_declarations(source_text& out, const source_plan& plan)
{
    write(out, "varying vec4 Color;\n");
    for (uint32_t i = 0; i < plan.unit_count; ++i) {
        write_numbered(out, plan.cube_map[i] ? "varying vec3 TexCoordOut#;\n" : "varying vec2 TexCoordOut#;\n", i + 1);
        write_numbered(out, plan.cube_map[i] ? "uniform samplerCube Texture#;\n" : "uniform sampler2D Texture#;\n", i);
    }
    write_uniforms(out, plan.vertex_uniforms + 1, plan.uniforms);
}

// The look-up of unit 1..3; its sampler counts from 0.
static void write_lookup(source_text& out, const source_plan& plan, uint32_t unit)
{
    assert(unit >= 1 && unit <= plan.unit_count);
    buffer_printf(&out.text, &out.capacity, &out.used, "%s(Texture%u, TexCoordOut%u)",
        plan.cube_map[unit - 1] ? "textureCube" : "texture2D", unit - 1, unit);
}

static const char* first_unit_prefix(uint8_t mode)
{
    switch (static_cast<first_unit_combine>(mode)) {
    case first_multiply_color:
        break;
    case first_ignore_alpha:
        return "vec4(Color.x, Color.y, Color.z, 1.0) * ";
    case first_replace:
        return "";
    case first_add_color:
        return "Color + ";
    case first_unit_combine_count:
        break;
    }
    return "Color * ";
}

static void write_first_unit(source_text& out, const source_plan& plan, uint8_t mode)
{
    write(out, "  vec4 texunit1 = ");
    write(out, first_unit_prefix(mode));
    write_lookup(out, plan, 1);
    write(out, ";\n");
}

static void write_around_lookup(source_text& out, const source_plan& plan, const char* before, const char* after)
{
    write(out, before);
    write_lookup(out, plan, 2);
    write(out, after);
}

// All but the end of the statement.
static void write_second_unit(source_text& out, const source_plan& plan, uint8_t mode)
{
    switch (static_cast<second_unit_combine>(mode)) {
    case second_add_previous:
        break;
    case second_multiply_previous:
        return write_around_lookup(out, plan, "  vec4 texunit2 = texunit1 * ", "");
    case second_dot3_previous:
        return write_around_lookup(out, plan, "  float x = dot((texunit1.rgb - 0.5) * 2.0, (",
            ".rgb - 0.5) * 2.0);\n  x = clamp(x, 0.0, 1.0);\n  vec4 texunit2 = vec4(x, x, x, 0.0)");
    case second_interpolate_color:
        return write_around_lookup(out, plan, "  vec4 texunit2 = Color * ", " + (1.0 - Color) * texunit1");
    case second_interpolate_alpha:
        return write_around_lookup(out, plan, "  vec4 texunit2 = Color.a * ", " + (1.0 - Color.a) * texunit1");
    case second_add_without_alpha:
        return write_around_lookup(out, plan,
            "  vec4 texunit2 = ", ";\n  texunit2 = texunit1 + vec4(texunit2.x, texunit2.y, texunit2.z, 0.0)");
    case second_unit_combine_count:
        break;
    }
    write_around_lookup(out, plan, "  vec4 texunit2 = texunit1 + ", "");
}

static const char* result_name(uint32_t unit_count)
{
    return unit_count >= 2 ? "texunit2" : unit_count == 1 ? "texunit1" : "Color";
}

static void write_fog_values(source_text& out, const source_fog& fog)
{
    assert(fog.used);
    if (fog.colored) {
        write(out, "  vec4 fogcolor = vec4(");
        write_values(out, fog.color, 3);
        write(out, ", 1.0);\n");
    } else {
        write(out, "  vec4 fogcolor = vec4(1.0, 1.0, 1.0, 1.0);\n");
    }
    write(out, "  float fogstart = ");
    write_value(out, fog.start);
    write(out, ";\n  float fogend = ");
    write_value(out, fog.end);
    write(out, ";\n");
}

static void write_fragment_output(source_text& out, const source_plan& plan)
{
    const char* result = result_name(plan.unit_count);
    if (!plan.fog.used) {
        buffer_printf(&out.text, &out.capacity, &out.used, "  gl_FragColor = %s;\n", result);
        return;
    }
    write_fog_values(out, plan.fog);
    write(out, "  float z = (gl_FragCoord.z / gl_FragCoord.w - fogstart) / (fogend - fogstart);\n");
    buffer_printf(&out.text, &out.capacity, &out.used, "  fogcolor.w = %s.w;\n", result);
    buffer_printf(
        &out.text, &out.capacity, &out.used, "  gl_FragColor = mix(%s, fogcolor, clamp(z, 0.0, 1.0));\n", result);
}

static void write_fragment_source(source_text& out, const source_plan& plan, const material_record& material)
{
    write_fragment_declarations(out, plan);
    write(out, "void main(void)\n{\n");
    if (plan.unit_count >= 1)
        write_first_unit(out, plan, material.combine_mode[0]);
    if (plan.unit_count >= 2) {
        write_second_unit(out, plan, material.combine_mode[1]);
        if (plan.unit_count >= 3) { // whatever its mode, the third unit multiplies and adds
            write(out, " + Color * ");
            write_lookup(out, plan, 3);
        }
        write(out, ";\n");
    }
    write_fragment_output(out, plan);
    write(out, "}");
}

// ---- the program record ---------------------------------------------------------

static source_text new_source_text()
{
    source_text source = {static_cast<char*>(std::malloc(first_source_capacity)), first_source_capacity, 0};
    if (source.text != nullptr)
        source.text[0] = '\0';
    else
        source.capacity = 0;
    return source;
}

static char* copy_text(const char* text)
{
    const size_t size = std::strlen(text) + 1;
    char* copy = static_cast<char*>(std::malloc(size));
    if (copy != nullptr)
        std::memcpy(copy, text, size);
    return copy;
}

static int32_t text_length(const char* text)
{
    return text == nullptr ? 0 : static_cast<int32_t>(std::strlen(text));
}

static bool has_text(const char* text)
{
    return text != nullptr && text[0] != '\0';
}

static void clear_program_texts(shader_program& program)
{
    std::free(program.vertex_source);
    std::free(program.fragment_source);
    program.vertex_source = nullptr;
    program.fragment_source = nullptr;
    std::fill_n(program.uniform_functions, user_uniform_count, 0u);
}

static void write_generated_texts(material_record& material, const table<value_record>& value_records,
    const shader_unit units[texture_unit_count], shader_program& program)
{
    const source_plan plan = plan_source(material, value_records, units, program);
    source_text vertex = new_source_text();
    source_text fragment = new_source_text();
    write_vertex_source(vertex, plan, material);
    write_fragment_source(fragment, plan, material);
    program.vertex_source = vertex.text;
    program.fragment_source = fragment.text;
}

void resolve_shader_units(const material_record& material, const table<object_reference>& objects,
    const table<texture_node>& texture_table, const table<image_texture>& image_texture_table,
    const table<dynamic_texture>& dynamic_texture_table, const table<cube_map>& cube_map_table,
    shader_unit units[texture_unit_count])
{
    const texture_tables tables = {objects, texture_table, image_texture_table, dynamic_texture_table, cube_map_table};
    unit_plan planned[texture_unit_count] = {};
    const uint32_t count = plan_units(material, tables, texture_unit_count, planned);
    for (uint32_t i = 0; i < texture_unit_count; ++i)
        units[i] = {i < count, planned[i].cube_map};
}

shader_program* new_shader_program()
{
    shader_program* program = static_cast<shader_program*>(std::calloc(1, sizeof(shader_program)));
    if (program == nullptr)
        return nullptr;
    program->projection_location = program->modelview_location = program->position_location = -1;
    program->normal_matrix_location = program->normal_location = program->texture_matrix_location = -1;
    std::fill_n(program->light_position_location, 2, -1);
    std::fill_n(program->texcoord_location, texture_unit_count, -1);
    std::fill_n(program->uniform_locations, user_uniform_count, -1);
    return program;
}

void generate_shader(
    material_record& material, const table<value_record>& value_records, const shader_unit units[texture_unit_count])
{
    if (material.program == nullptr)
        material.program = new_shader_program();
    if (material.program == nullptr)
        return;
    shader_program& program = *material.program;
    clear_program_texts(program);
    if (has_custom_program(material)) {
        program.vertex_source = copy_text(material.custom_vertex_shader);
        program.fragment_source = copy_text(material.custom_fragment_shader);
        std::copy_n(material.user_uniforms, user_uniform_count, program.uniform_functions);
    } else {
        write_generated_texts(material, value_records, units, program);
    }
    program.vertex_length = text_length(program.vertex_source);
    program.fragment_length = text_length(program.fragment_source);
}

// Start and end of fog are numbered last; a constant one stands in the text.
static void widen_fog_uniforms(const material_record& material, uint32_t uniform_count, float* values)
{
    const bool end_moves = material.fogend_dynamic != 0;
    assert(uniform_count >= (end_moves ? 1u : 0u) + (material.fogstart_dynamic != 0 ? 1u : 0u));
    float* const end = end_moves ? values + --uniform_count : nullptr;
    float* const start = material.fogstart_dynamic != 0 ? values + --uniform_count : nullptr;
    float first = start != nullptr ? *start : as_written(material.fogstart);
    float last = end != nullptr ? *end : as_written(material.fogend);
    if (first != last)
        return;
    if (end == nullptr) { // the end stands in the text: the start gives way
        assert(start != nullptr);
        *start = std::min(last - least_fog_width, std::nextafter(last, -FLT_MAX));
        return;
    }
    widen_fog(first, last);
    *end = last;
    if (start != nullptr)
        *start = first;
}

// Up to the last one that a function drives: of 24 most programs have none or a few.
static uint32_t count_uniforms(const shader_program& program)
{
    const uint32_t* functions = program.uniform_functions;
    uint32_t count = user_uniform_count;
    while (
        count > 3 && (functions[count - 1] | functions[count - 2] | functions[count - 3] | functions[count - 4]) == 0)
        count -= 4;
    while (count > 0 && functions[count - 1] == 0)
        --count;
    return count;
}

void evaluate_uniforms(const material_record& material, const table<animation_function>& functions, uint32_t time,
    float values[user_uniform_count])
{
    assert(material.program != nullptr);
    std::fill_n(values, user_uniform_count, 0.0f);
    const uint32_t count = count_uniforms(*material.program);
    for (uint32_t i = 0; i < count; ++i)
        if (const uint32_t function = material.program->uniform_functions[i])
            values[i] = function_value(functions, function, time);
    const bool fog_moves = material.fogstart_dynamic != 0 || material.fogend_dynamic != 0;
    if (material.fogtype != fog_none && fog_moves && !has_custom_program(material))
        widen_fog_uniforms(material, count, values);
}

bool has_custom_program(const material_record& material)
{
    return material.enable_glsl != 0 && has_text(material.custom_vertex_shader)
        && has_text(material.custom_fragment_shader);
}
