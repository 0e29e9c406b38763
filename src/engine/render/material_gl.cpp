#include "render/material_gl.h"

#include "render/bindings_gl.h"
#include "render/texture_unit_gl.h"

#include <GL/glew.h>

#include <algorithm>
#include <cassert>
#include <cstring>
#include <iterator>

// ---- what both paths share ------------------------------------------------------

namespace {

struct blend_constants {
    GLenum equation;
    GLenum source;
    GLenum destination;
};

} // namespace

static blend_constants constants_of(uint8_t blending)
{
    switch (static_cast<blend_kind>(blending)) {
    case blend_alpha:
        return {GL_FUNC_ADD, GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA};
    case blend_add:
        return {GL_FUNC_ADD, GL_ONE, GL_ONE};
    case blend_replace:
        return {GL_FUNC_ADD, GL_ONE, GL_ZERO};
    case blend_premultiplied:
        return {GL_FUNC_ADD, GL_ONE, GL_ONE_MINUS_SRC_ALPHA};
    case blend_subtract:
        return {GL_FUNC_REVERSE_SUBTRACT, GL_SRC_ALPHA, GL_ONE};
    case blend_kind_count:
        break;
    }
    assert(false); // others never come to stand
    return {GL_FUNC_ADD, GL_ONE, GL_ZERO};
}

// What stood before any material said it is what a new context has. Nothing need be told of it
// but where the context is further on: when a tile is drawn again from there.

constexpr float white[4] = {1.0f, 1.0f, 1.0f, 1.0f};

// Blending itself is on from the start of the program and never switched off.
static void set_blending(uint8_t blending, gl_state& gl)
{
    const bool is_new = gl.blending == unknown_kind;
    const uint8_t wanted = blending == blend_none ? uint8_t{blend_replace} : blending;
    if (gl.blending == wanted || (blending == blend_none && is_new))
        return;
    gl.blending = wanted;
    const blend_constants constants = constants_of(wanted);
    if (glBlendEquation != nullptr && gl.blend_equation != constants.equation) {
        gl.blend_equation = static_cast<uint16_t>(constants.equation);
        glBlendEquation(constants.equation);
    }
    glBlendFunc(constants.source, constants.destination);
}

static void set_line_width(float width, gl_state& gl)
{
    const bool is_new = gl.line_width == 0.0f;
    const float wanted = width > 0.0f ? width : 1.0f;
    if (gl.line_width == wanted || (width <= 0.0f && is_new))
        return;
    gl.line_width = wanted;
    glLineWidth(wanted);
}

// ---- the fixed-function path ----------------------------------------------------

static void set_polygons(const material_state& material, gl_state& gl)
{
    switch_gl(GL_CULL_FACE, material.cull_back, gl.cull_face);
    switch_gl(GL_DEPTH_TEST, material.depth_test, gl.depth_test);
    switch_gl(GL_NORMALIZE, material.normalize, gl.normalize);
    const uint8_t lines = material.wireframe ? switched_on : switched_off;
    if (gl.polygon_lines != lines) {
        gl.polygon_lines = lines;
        glPolygonMode(GL_FRONT_AND_BACK, material.wireframe ? GL_LINE : GL_FILL);
    }
    set_line_width(material.line_width, gl);
}

static void tell_light(GLenum light, GLenum name, const float values[3])
{
    const GLfloat four[4] = {values[0], values[1], values[2], 1.0f};
    glLightfv(light, name, four);
}

// OpenGL turns a light's position by the modelview matrix of the moment.
static void set_light(GLenum light, const light_state& wanted, const float view[16], known_light& known, gl_state& gl)
{
    switch_gl(light, true, known.on);
    if (!known.told || !same_numbers<3>(known.light.position, wanted.position) || !same_numbers<16>(known.view, view)) {
        load_modelview_gl(view, gl);
        tell_light(light, GL_POSITION, wanted.position);
        std::copy_n(view, 16, known.view);
    }
    if (!known.told || !same_numbers<3>(known.light.ambient, wanted.ambient))
        tell_light(light, GL_AMBIENT, wanted.ambient);
    if (!known.told || !same_numbers<3>(known.light.diffuse, wanted.diffuse))
        tell_light(light, GL_DIFFUSE, wanted.diffuse);
    known.told = true;
    known.light = wanted;
}

static void set_lights(const material_state& material, gl_state& gl)
{
    assert(material.lights <= std::size(gl.lights));
    switch_gl(GL_LIGHTING, material.lights > 0, gl.lighting);
    if (material.lights > 0)
        set_light(GL_LIGHT0, material.light[0], material.light_view, gl.lights[0], gl);
    if (material.lights > 1)
        set_light(GL_LIGHT1, material.light[1], material.light_view, gl.lights[1], gl);
    else if (material.lights > 0)
        switch_gl(GL_LIGHT1, false, gl.lights[1].on);
}

static void set_fog_values(const fog_state& fog, gl_state& gl)
{
    const fog_state& known = gl.fog_values;
    const GLfloat color[4] = {fog.color[0], fog.color[1], fog.color[2], 1.0f};
    if (!gl.has_fog || !same_numbers<3>(fog.color, known.color))
        glFogfv(GL_FOG_COLOR, color);
    if (!gl.has_fog || !same_numbers<1>(&fog.start, &known.start))
        glFogf(GL_FOG_START, fog.start);
    if (!gl.has_fog || !same_numbers<1>(&fog.end, &known.end))
        glFogf(GL_FOG_END, fog.end);
    gl.has_fog = true;
    gl.fog_values = fog;
}

static void set_fog(const material_state& material, gl_state& gl)
{
    switch_gl(GL_FOG, material.fog_type != fog_none, gl.fog);
    if (material.fog_type == fog_none)
        return;
    if (gl.fog_type != material.fog_type) {
        gl.fog_type = material.fog_type;
        glFogi(GL_FOG_MODE, GL_LINEAR);
        glHint(GL_FOG_HINT, material.fog_type == fog_fastest ? GL_FASTEST : GL_NICEST);
    }
    set_fog_values(material.fog, gl);
}

void set_material_fixed_gl(const material_state& material, const gl_caps& caps, gl_state& gl)
{
    if (!material.applied && !gl.has_color)
        return switch_gl(GL_DEPTH_TEST, material.depth_test, gl.depth_test);
    set_polygons(material, gl);
    const float* color = material.applied ? material.color : white;
    if (remember_numbers(color, gl.color, gl.has_color))
        glColor4fv(color);
    set_blending(material.blending, gl);
    set_lights(material, gl);
    set_fog(material, gl);
    for (uint32_t i = 0; i < texture_unit_count; ++i)
        if (material.units[i].used || gl.units[i].flat == switched_on)
            set_fixed_unit_gl(i, material.units[i], caps, gl);
}

// ---- the shader path ------------------------------------------------------------

void set_material_glsl_gl(const material_state& material, gl_state& gl)
{
    switch_gl(GL_DEPTH_TEST, material.depth_test, gl.depth_test);
    if (!material.applied && gl.program == unknown_name)
        return;
    set_blending(material.blending, gl);
    switch_gl(GL_CULL_FACE, material.cull_back, gl.cull_face);
    set_line_width(material.line_width, gl);
    for (uint32_t i = 0; i < texture_unit_count; ++i)
        if (material.units[i].used)
            bind_unit_gl(i, material.units[i], gl);
}

// Where a program's place is written, or will be: there is room. Most drivers count names from 1, so that the first
// look finds it; others begin at 2^31, so that names cannot be places themselves.
static uint32_t& place_of_program(uint32_t program, gl_state& gl)
{
    const size_t mask = gl.program_places.size() - 1; // their number is a power of two
    size_t at = program & mask;
    while (gl.program_places[at] != 0 && gl.programs[gl.program_places[at] - 1].name != program)
        at = (at + 1) & mask;
    return gl.program_places[at];
}

static void make_room_for_program(gl_state& gl)
{
    constexpr size_t first_places = 64;
    if (gl.programs.size() * 2 < gl.program_places.size())
        return;
    gl.program_places.assign(std::max(first_places, gl.program_places.size() * 2), 0);
    for (uint32_t place = 0; place < gl.programs.size(); ++place)
        place_of_program(gl.programs[place].name, gl) = place + 1;
}

// A new record for a program that was not met yet. Most meshes change the program, and some shows have hundreds.
static known_program& find_known_program(uint32_t program, gl_state& gl)
{
    make_room_for_program(gl);
    uint32_t& place = place_of_program(program, gl);
    if (place == 0) {
        gl.programs.emplace_back();
        gl.programs.back().name = program;
        place = static_cast<uint32_t>(gl.programs.size());
    }
    assert(place <= gl.programs.size());
    return gl.programs[place - 1];
}

static void set_texture_matrix(const program_state& program, const known_program& known)
{
    if (!program.turns_texture || program.texture_matrix_location < 0)
        return;
    const bool is_known = known.told && known.values.turns_texture;
    if (is_known && same_numbers<16>(program.texture_matrix, known.values.texture_matrix))
        return;
    glUniformMatrix4fv(
        program.texture_matrix_location, 1, program.transposed ? GL_TRUE : GL_FALSE, program.texture_matrix);
}

static void set_uniforms(const program_state& program, const known_program& known)
{
    if (known.told && same_numbers<user_uniform_count>(program.uniforms, known.values.uniforms))
        return;
    for (uint32_t i = 0; i < user_uniform_count; ++i) {
        if (program.uniform_location[i] < 0)
            continue;
        if (!known.told || !same_numbers<1>(program.uniforms + i, known.values.uniforms + i))
            glUniform1f(program.uniform_location[i], program.uniforms[i]);
    }
}

static void set_light_positions(const program_state& program, const known_program& known)
{
    for (uint32_t i = 0; i < 2; ++i) {
        if (!program.has_light[i] || program.light_location[i] < 0)
            continue;
        const bool is_known = known.told && known.values.has_light[i];
        if (!is_known || !same_numbers<3>(program.light_position[i], known.values.light_position[i]))
            glUniform3fv(program.light_location[i], 1, program.light_position[i]);
    }
}

void use_no_program_gl(gl_state& gl)
{
    if (gl.program == unknown_name || gl.program == 0)
        return;
    gl.program = 0;
    glUseProgram(0);
}

known_program& set_program_gl(const program_state& program, gl_state& gl)
{
    assert(program.status == program_ready && program.program != 0);
    if (gl.program != program.program) {
        gl.program = program.program;
        glUseProgram(program.program);
    }
    known_program& known = find_known_program(program.program, gl);
    if (known.told && std::memcmp(&known.values, &program, sizeof program) == 0)
        return known; // to the last bit, so the uniforms are the same
    set_texture_matrix(program, known);
    set_uniforms(program, known);
    set_light_positions(program, known);
    known.told = true;
    known.values = program;
    return known;
}
