#include "render/texture_unit_gl.h"

#include "model/records.h"
#include "render/bindings_gl.h"

#include <GL/glew.h>

#include <cassert>

// ---- the picture ----------------------------------------------------------------

static GLint wrap_constant(uint8_t wrap)
{
    switch (static_cast<wrap_kind>(wrap)) {
    case wrap_repeat:
        return GL_REPEAT;
    case wrap_edge_clamp:
        return GL_CLAMP_TO_EDGE;
    case wrap_kind_count:
        break;
    }
    return GL_REPEAT; // beyond the catalogue
}

// The texture is bound to the unit. How it wraps stays with it wherever it is bound.
static void set_wrap(uint32_t number, bool cube_map, uint32_t texture, uint8_t wrap, gl_state& gl)
{
    assert(texture != 0 && texture != unknown_name);
    if (texture >= gl.wraps.size())
        gl.wraps.resize(size_t{texture} + 1, unknown_kind);
    if (gl.wraps[texture] == wrap || wrap == wrap_as_it_is)
        return;
    gl.wraps[texture] = wrap;
    select_unit_gl(number, gl);
    const GLenum target = cube_map ? GL_TEXTURE_CUBE_MAP : GL_TEXTURE_2D;
    glTexParameteri(target, GL_TEXTURE_WRAP_S, wrap_constant(wrap));
    glTexParameteri(target, GL_TEXTURE_WRAP_T, wrap_constant(wrap));
}

void bind_unit_gl(uint32_t number, const unit_state& unit, gl_state& gl)
{
    assert(number < texture_unit_count);
    const uint32_t texture = unit.cube_map ? unit.cube_texture : unit.flat_texture;
    const uint32_t other = unit.cube_map ? unit.flat_texture : unit.cube_texture;
    if (other != 0) // a program may look at it
        bind_texture_gl(number, !unit.cube_map, other, gl);
    bind_texture_gl(number, unit.cube_map, texture, gl);
    if (texture != 0)
        set_wrap(number, unit.cube_map, texture, unit.wrap, gl);
}

// ---- coordinates ----------------------------------------------------------------

constexpr GLenum coordinate_names[] = {GL_S, GL_T, GL_R};
constexpr uint32_t coordinate_count = 3;

static void set_generation(uint32_t number, uint32_t coordinate, GLint mode, gl_state& gl)
{
    uint16_t& known = gl.units[number].generation[coordinate];
    if (known == mode)
        return;
    known = static_cast<uint16_t>(mode);
    select_unit_gl(number, gl);
    glTexGeni(coordinate_names[coordinate], GL_TEXTURE_GEN_MODE, mode);
}

static void switch_generation(uint32_t number, uint32_t coordinate, bool on, gl_state& gl)
{
    uint8_t& known = gl.units[number].generated[coordinate];
    if (known == (on ? switched_on : switched_off))
        return;
    select_unit_gl(number, gl);
    switch_gl(GL_TEXTURE_GEN_S + coordinate, on, known);
}

// The first `count` coordinates are generated, the others are not.
static void generate_coordinates(uint32_t number, uint32_t count, GLint mode, gl_state& gl)
{
    for (uint32_t i = 0; i < count; ++i)
        set_generation(number, i, mode, gl);
    for (uint32_t i = 0; i < coordinate_count; ++i)
        switch_generation(number, i, i < count, gl);
}

static void set_coordinate_generation(uint32_t number, uint8_t coordinates, gl_state& gl)
{
    switch (static_cast<coordinate_generation>(coordinates)) {
    case coordinates_off:
        break;
    case coordinates_sphere:
        return generate_coordinates(number, 2, GL_SPHERE_MAP, gl);
    case coordinates_cube:
        return generate_coordinates(number, 3, GL_REFLECTION_MAP, gl);
    case coordinate_generation_count:
        break;
    }
    generate_coordinates(number, 0, GL_SPHERE_MAP, gl);
}

static void load_texture_matrix(const float matrix[16])
{
    glMatrixMode(GL_TEXTURE);
    glLoadMatrixf(matrix);
    glMatrixMode(GL_MODELVIEW);
}

// ---- the combiner ---------------------------------------------------------------

// One parameter's place among the known ones. Sources and operands, of colours and of alphas, lie
// in fours between GL_SOURCE0_RGB and GL_OPERAND3_ALPHA_NV.
static uint32_t number_of_parameter(GLenum name)
{
    if (name == GL_TEXTURE_ENV_MODE)
        return 0;
    if (name == GL_COMBINE_RGB)
        return 1;
    if (name == GL_COMBINE_ALPHA)
        return 2;
    assert(name >= GL_SOURCE0_RGB && name < GL_SOURCE0_RGB + known_combiner_count - 3);
    return 3 + (name - GL_SOURCE0_RGB);
}

namespace {

// The combiner of one unit.
struct unit_combiner {
    uint32_t number;
    gl_state& gl;
};

} // namespace

static void set_environment(const unit_combiner& unit, GLenum name, GLint value)
{
    known_unit& known = unit.gl.units[unit.number];
    const uint32_t parameter = number_of_parameter(name);
    if (known.has_combiner[parameter] && known.combiner[parameter] == value)
        return;
    known.has_combiner[parameter] = true;
    known.combiner[parameter] = static_cast<uint16_t>(value);
    select_unit_gl(unit.number, unit.gl);
    glTexEnvi(GL_TEXTURE_ENV, name, value);
}

// Argument 0..2 of the colour combiner.
static void set_color_argument(const unit_combiner& unit, uint32_t number, GLint source, GLint operand)
{
    assert(number < 3);
    set_environment(unit, GL_SOURCE0_RGB + number, source);
    set_environment(unit, GL_OPERAND0_RGB + number, operand);
}

static void set_alpha_argument(const unit_combiner& unit, uint32_t number, GLint source)
{
    assert(number < 3);
    set_environment(unit, GL_SOURCE0_ALPHA + number, source);
    set_environment(unit, GL_OPERAND0_ALPHA + number, GL_SRC_ALPHA);
}

static void combine_colors(const unit_combiner& unit, GLint function, GLint first, GLint second)
{
    set_environment(unit, GL_COMBINE_RGB, function);
    set_color_argument(unit, 0, first, GL_SRC_COLOR);
    set_color_argument(unit, 1, second, GL_SRC_COLOR);
}

static void combine_alphas(const unit_combiner& unit, GLint function, GLint first, GLint second)
{
    set_environment(unit, GL_COMBINE_ALPHA, function);
    set_alpha_argument(unit, 0, first);
    set_alpha_argument(unit, 1, second);
}

static void set_first_combine(const unit_combiner& unit, uint8_t mode)
{
    set_environment(unit, GL_TEXTURE_ENV_MODE, GL_COMBINE);
    switch (static_cast<first_unit_combine>(mode)) {
    case first_multiply_color:
        break;
    case first_ignore_alpha:
        combine_colors(unit, GL_MODULATE, GL_PRIMARY_COLOR, GL_TEXTURE);
        return combine_alphas(unit, GL_REPLACE, GL_TEXTURE, GL_TEXTURE);
    case first_replace:
        combine_colors(unit, GL_REPLACE, GL_TEXTURE, GL_TEXTURE);
        return combine_alphas(unit, GL_REPLACE, GL_TEXTURE, GL_TEXTURE);
    case first_add_color:
        combine_colors(unit, GL_ADD, GL_PRIMARY_COLOR, GL_TEXTURE);
        return combine_alphas(unit, GL_ADD, GL_PRIMARY_COLOR, GL_TEXTURE);
    case first_unit_combine_count:
        break;
    }
    combine_colors(unit, GL_MODULATE, GL_PRIMARY_COLOR, GL_TEXTURE);
    combine_alphas(unit, GL_MODULATE, GL_PRIMARY_COLOR, GL_TEXTURE);
}

static GLint second_color_function(uint8_t mode)
{
    switch (static_cast<second_unit_combine>(mode)) {
    case second_add_previous:
        return GL_ADD;
    case second_multiply_previous:
        return GL_MODULATE;
    case second_dot3_previous:
        return GL_DOT3_RGB;
    case second_interpolate_color:
        return GL_INTERPOLATE;
    case second_interpolate_alpha:
        return GL_INTERPOLATE;
    case second_add_without_alpha:
        return GL_ADD;
    case second_unit_combine_count:
        break;
    }
    return GL_ADD;
}

// The alpha combine is written out in every mode, so that "Add previous without alpha"
// of an earlier material does not stay.
static void set_second_combine(const unit_combiner& unit, uint8_t mode)
{
    set_environment(unit, GL_TEXTURE_ENV_MODE, GL_COMBINE);
    combine_colors(unit, second_color_function(mode), GL_TEXTURE, GL_PREVIOUS);
    if (mode == second_interpolate_color)
        set_color_argument(unit, 2, GL_PRIMARY_COLOR, GL_SRC_COLOR);
    if (mode == second_interpolate_alpha)
        set_color_argument(unit, 2, GL_PRIMARY_COLOR, GL_SRC_ALPHA);
    if (mode == second_add_without_alpha)
        combine_alphas(unit, GL_REPLACE, GL_PREVIOUS, GL_PREVIOUS);
    else
        combine_alphas(unit, GL_MODULATE, GL_TEXTURE, GL_PREVIOUS);
}

// texture x primary + previous x 1: the constant's alpha is the 1. The mode knows sums of
// two products only, for alpha too: texture x previous + 0 x 0.
static void multiply_and_add_nv(const unit_combiner& unit)
{
    constexpr GLfloat constant[4] = {0.0f, 0.0f, 0.0f, 1.0f};
    set_environment(unit, GL_TEXTURE_ENV_MODE, GL_COMBINE4_NV);
    set_environment(unit, GL_COMBINE_RGB, GL_ADD);
    set_color_argument(unit, 0, GL_TEXTURE, GL_SRC_COLOR);
    set_color_argument(unit, 1, GL_PRIMARY_COLOR, GL_SRC_COLOR);
    set_color_argument(unit, 2, GL_PREVIOUS, GL_SRC_COLOR);
    set_environment(unit, GL_SOURCE3_RGB_NV, GL_CONSTANT);
    set_environment(unit, GL_OPERAND3_RGB_NV, GL_SRC_ALPHA);
    if (!unit.gl.units[unit.number].has_constant) { // there is no other
        unit.gl.units[unit.number].has_constant = true;
        select_unit_gl(unit.number, unit.gl);
        glTexEnvfv(GL_TEXTURE_ENV, GL_TEXTURE_ENV_COLOR, constant);
    }
    combine_alphas(unit, GL_ADD, GL_TEXTURE, GL_PREVIOUS);
    set_alpha_argument(unit, 2, GL_ZERO);
    set_environment(unit, GL_SOURCE3_ALPHA_NV, GL_ZERO);
    set_environment(unit, GL_OPERAND3_ALPHA_NV, GL_SRC_ALPHA);
}

static void set_multiply_and_add(const unit_combiner& unit, const gl_caps& caps)
{
    if (caps.nv_combine4 == 1)
        return multiply_and_add_nv(unit);
    if (caps.ati_combine3 == 1) { // argument 0 x argument 2 + argument 1
        set_environment(unit, GL_TEXTURE_ENV_MODE, GL_COMBINE);
        combine_colors(unit, GL_MODULATE_ADD_ATI, GL_TEXTURE, GL_PREVIOUS);
        set_color_argument(unit, 2, GL_PRIMARY_COLOR, GL_SRC_COLOR);
    } else { // the factor is dropped
        set_environment(unit, GL_TEXTURE_ENV_MODE, GL_COMBINE);
        combine_colors(unit, GL_ADD, GL_TEXTURE, GL_PREVIOUS);
    }
    combine_alphas(unit, GL_MODULATE, GL_TEXTURE, GL_PREVIOUS);
}

static void set_combine(const unit_combiner& unit, uint8_t mode, const gl_caps& caps)
{
    if (unit.number == 0)
        set_first_combine(unit, mode);
    else if (unit.number == 1)
        set_second_combine(unit, mode);
    else if (mode == third_multiply_and_add || mode >= third_unit_shift + second_unit_combine_count)
        set_multiply_and_add(unit, caps);
    else
        set_second_combine(unit, static_cast<uint8_t>(mode - third_unit_shift));
}

// ---- the unit -------------------------------------------------------------------

static void switch_unit_off(uint32_t number, gl_state& gl)
{
    known_unit& known = gl.units[number];
    if (known.flat == switched_off && known.cube == switched_off)
        return;
    select_unit_gl(number, gl);
    switch_gl(GL_TEXTURE_2D, false, known.flat);
    switch_gl(GL_TEXTURE_CUBE_MAP, false, known.cube);
}

static void switch_unit_on(uint32_t number, bool cube_map, gl_state& gl)
{
    known_unit& known = gl.units[number];
    if (known.flat == switched_on && known.cube == (cube_map ? switched_on : switched_off))
        return;
    select_unit_gl(number, gl);
    switch_gl(GL_TEXTURE_2D, true, known.flat);
    switch_gl(GL_TEXTURE_CUBE_MAP, cube_map, known.cube); // it would win over a flat picture
}

void set_fixed_unit_gl(uint32_t number, const unit_state& unit, const gl_caps& caps, gl_state& gl)
{
    assert(number < texture_unit_count);
    if (!unit.on)
        return switch_unit_off(number, gl);
    known_unit& known = gl.units[number];
    switch_unit_on(number, unit.cube_map, gl);
    bind_unit_gl(number, unit, gl);
    if (known.coordinates != unit.coordinates) {
        known.coordinates = unit.coordinates;
        set_coordinate_generation(number, unit.coordinates, gl);
    }
    if (remember_numbers(unit.matrix, known.matrix, known.has_matrix)) {
        select_unit_gl(number, gl);
        load_texture_matrix(unit.matrix);
    }
    if (known.combine_mode != unit.combine_mode) {
        known.combine_mode = unit.combine_mode;
        set_combine({number, gl}, unit.combine_mode, caps);
    }
}
