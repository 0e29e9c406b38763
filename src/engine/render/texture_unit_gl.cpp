#include "render/texture_unit_gl.h"

#include "render/material_gl.h"
#include "render/matrix.h"

#include <GL/glew.h>

// ---- the picture ----------------------------------------------------------------

static GLenum texture_target(const unit_plan& unit)
{
    return unit.cube_map ? GL_TEXTURE_CUBE_MAP : GL_TEXTURE_2D;
}

static GLint wrap_constant(uint8_t wrapmode)
{
    switch (wrapmode) {
    case 0:
        return GL_REPEAT;
    case 1:
        return GL_CLAMP_TO_EDGE;
    }
    return GL_REPEAT; // beyond the catalogue
}

void bind_unit_texture(const unit_plan& unit)
{
    const GLenum target = texture_target(unit);
    const GLint wrap = wrap_constant(unit.wrapmode);
    glBindTexture(target, unit.texture);
    glTexParameteri(target, GL_TEXTURE_WRAP_S, wrap);
    glTexParameteri(target, GL_TEXTURE_WRAP_T, wrap);
}

// ---- coordinates ----------------------------------------------------------------

static void set_enabled(GLenum capability, bool on)
{
    if (on)
        glEnable(capability);
    else
        glDisable(capability);
}

static void set_generation(bool s_and_t, bool r)
{
    set_enabled(GL_TEXTURE_GEN_S, s_and_t);
    set_enabled(GL_TEXTURE_GEN_T, s_and_t);
    set_enabled(GL_TEXTURE_GEN_R, r);
}

static void set_coordinate_generation(uint8_t cgenmode)
{
    switch (static_cast<coordinate_generation>(cgenmode)) {
    case coordinates_off:
        break;
    case coordinates_sphere:
        glTexGeni(GL_S, GL_TEXTURE_GEN_MODE, GL_SPHERE_MAP);
        glTexGeni(GL_T, GL_TEXTURE_GEN_MODE, GL_SPHERE_MAP);
        return set_generation(true, false);
    case coordinates_cube:
        glTexGeni(GL_S, GL_TEXTURE_GEN_MODE, GL_REFLECTION_MAP);
        glTexGeni(GL_T, GL_TEXTURE_GEN_MODE, GL_REFLECTION_MAP);
        glTexGeni(GL_R, GL_TEXTURE_GEN_MODE, GL_REFLECTION_MAP);
        return set_generation(true, true);
    }
    set_generation(false, false);
}

// ---- the combiner ---------------------------------------------------------------

static void set_environment(GLenum name, GLint value)
{
    glTexEnvi(GL_TEXTURE_ENV, name, value);
}

// Argument 0..2 of the colour combiner.
static void set_color_argument(uint32_t number, GLint source, GLint operand)
{
    set_environment(GL_SOURCE0_RGB + number, source);
    set_environment(GL_OPERAND0_RGB + number, operand);
}

static void set_alpha_argument(uint32_t number, GLint source)
{
    set_environment(GL_SOURCE0_ALPHA + number, source);
    set_environment(GL_OPERAND0_ALPHA + number, GL_SRC_ALPHA);
}

static void combine_colors(GLint function, GLint first, GLint second)
{
    set_environment(GL_COMBINE_RGB, function);
    set_color_argument(0, first, GL_SRC_COLOR);
    set_color_argument(1, second, GL_SRC_COLOR);
}

static void combine_alphas(GLint function, GLint first, GLint second)
{
    set_environment(GL_COMBINE_ALPHA, function);
    set_alpha_argument(0, first);
    set_alpha_argument(1, second);
}

static void set_first_combine(uint8_t mode)
{
    set_environment(GL_TEXTURE_ENV_MODE, GL_COMBINE);
    switch (static_cast<first_unit_combine>(mode)) {
    case first_multiply_color:
        break;
    case first_ignore_alpha:
        combine_colors(GL_MODULATE, GL_PRIMARY_COLOR, GL_TEXTURE);
        return combine_alphas(GL_REPLACE, GL_TEXTURE, GL_TEXTURE);
    case first_replace:
        combine_colors(GL_REPLACE, GL_TEXTURE, GL_TEXTURE);
        return combine_alphas(GL_REPLACE, GL_TEXTURE, GL_TEXTURE);
    case first_add_color:
        combine_colors(GL_ADD, GL_PRIMARY_COLOR, GL_TEXTURE);
        return combine_alphas(GL_ADD, GL_PRIMARY_COLOR, GL_TEXTURE);
    }
    combine_colors(GL_MODULATE, GL_PRIMARY_COLOR, GL_TEXTURE);
    combine_alphas(GL_MODULATE, GL_PRIMARY_COLOR, GL_TEXTURE);
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
    }
    return GL_ADD;
}

// The alpha combine is written out in every mode, so that "Add previous without alpha"
// of an earlier material does not stay.
static void set_second_combine(uint8_t mode)
{
    set_environment(GL_TEXTURE_ENV_MODE, GL_COMBINE);
    combine_colors(second_color_function(mode), GL_TEXTURE, GL_PREVIOUS);
    if (mode == second_interpolate_color)
        set_color_argument(2, GL_PRIMARY_COLOR, GL_SRC_COLOR);
    if (mode == second_interpolate_alpha)
        set_color_argument(2, GL_PRIMARY_COLOR, GL_SRC_ALPHA);
    if (mode == second_add_without_alpha)
        combine_alphas(GL_REPLACE, GL_PREVIOUS, GL_PREVIOUS);
    else
        combine_alphas(GL_MODULATE, GL_TEXTURE, GL_PREVIOUS);
}

// texture x primary + previous x 1: the constant's alpha is the 1. The mode knows sums of
// two products only, for alpha too: texture x previous + 0 x 0.
static void multiply_and_add_nv()
{
    constexpr GLfloat constant[4] = {0.0f, 0.0f, 0.0f, 1.0f};
    set_environment(GL_TEXTURE_ENV_MODE, GL_COMBINE4_NV);
    set_environment(GL_COMBINE_RGB, GL_ADD);
    set_color_argument(0, GL_TEXTURE, GL_SRC_COLOR);
    set_color_argument(1, GL_PRIMARY_COLOR, GL_SRC_COLOR);
    set_color_argument(2, GL_PREVIOUS, GL_SRC_COLOR);
    set_environment(GL_SOURCE3_RGB_NV, GL_CONSTANT);
    set_environment(GL_OPERAND3_RGB_NV, GL_SRC_ALPHA);
    glTexEnvfv(GL_TEXTURE_ENV, GL_TEXTURE_ENV_COLOR, constant);
    combine_alphas(GL_ADD, GL_TEXTURE, GL_PREVIOUS);
    set_alpha_argument(2, GL_ZERO);
    set_environment(GL_SOURCE3_ALPHA_NV, GL_ZERO);
    set_environment(GL_OPERAND3_ALPHA_NV, GL_SRC_ALPHA);
}

static void set_multiply_and_add(const gl_caps& caps)
{
    if (caps.nv_combine4 == 1)
        return multiply_and_add_nv();
    if (caps.ati_combine3 == 1) { // argument 0 x argument 2 + argument 1
        set_environment(GL_TEXTURE_ENV_MODE, GL_COMBINE);
        combine_colors(GL_MODULATE_ADD_ATI, GL_TEXTURE, GL_PREVIOUS);
        set_color_argument(2, GL_PRIMARY_COLOR, GL_SRC_COLOR);
    } else { // the factor is dropped
        set_environment(GL_TEXTURE_ENV_MODE, GL_COMBINE);
        combine_colors(GL_ADD, GL_TEXTURE, GL_PREVIOUS);
    }
    combine_alphas(GL_MODULATE, GL_TEXTURE, GL_PREVIOUS);
}

static void set_combine(uint32_t number, uint8_t mode, const gl_caps& caps)
{
    if (number == 0)
        set_first_combine(mode);
    else if (number == 1)
        set_second_combine(mode);
    else if (mode == third_multiply_and_add || mode > second_add_without_alpha + 1)
        set_multiply_and_add(caps);
    else
        set_second_combine(static_cast<uint8_t>(mode - 1));
}

// ---- the unit -------------------------------------------------------------------

void set_fixed_unit(uint32_t number, const unit_plan& unit, const gl_caps& caps, const float camera_angles[2])
{
    glEnable(GL_TEXTURE_2D);
    set_enabled(GL_TEXTURE_CUBE_MAP, unit.cube_map); // it would win over a flat picture
    bind_unit_texture(unit);
    set_coordinate_generation(unit.cgenmode);
    build_texture_matrix(unit.rotation != 0, unit.cube_map, camera_angles);
    load_matrix(select_texture);
    set_combine(number, unit.combine_mode, caps);
}

void disable_fixed_unit()
{
    glDisable(GL_TEXTURE_2D);
    glDisable(GL_TEXTURE_CUBE_MAP);
}
