#include "render/material_gl.h"

#include "effects/dynamic_texture_gl.h"
#include "model/values.h"
#include "render/material_plan.h"
#include "render/matrix.h"
#include "render/shader_source.h"
#include "render/texture_unit_gl.h"

#include <GL/glew.h>

#include <algorithm>

// Units whose coordinate array is switched on (fixed path), and generic attributes that
// are (shader path): what the one context of the program is in.
static bool coordinate_array_on[texture_unit_count];
static int32_t attributes_on[texture_unit_count + 2];
static uint32_t attribute_count;
static program_in_use program_now;

// ---- what both paths share ------------------------------------------------------

void choose_unit_coordinates(const mesh_arrays& mesh, bool use_buffers, unit_coordinates& out)
{
    const uint32_t sets = std::min(mesh.texcoord_sets, max_texcoord_sets);
    for (uint32_t unit = 0; unit < texture_unit_count; ++unit) {
        const uint32_t set = unit < sets ? unit : 0;
        out.buffer[unit] = use_buffers && sets > 0 ? mesh.texcoord_buffer[set] : 0;
        out.set[unit] = sets > 0 && out.buffer[unit] == 0 ? mesh.texcoords[set] : nullptr;
    }
}

bool buffers_usable(const gl_caps& caps)
{
    return caps.vbo == 1 && glBindBuffer != nullptr;
}

static bool has_coordinates(const unit_coordinates& coordinates, uint32_t unit)
{
    return coordinates.set[unit] != nullptr || coordinates.buffer[unit] != 0;
}

static void bind_coordinate_buffer(const unit_coordinates& coordinates, uint32_t unit, const gl_caps& caps)
{
    if (buffers_usable(caps))
        glBindBuffer(GL_ARRAY_BUFFER, coordinates.buffer[unit]);
}

static void set_enabled(GLenum capability, bool on)
{
    if (on)
        glEnable(capability);
    else
        glDisable(capability);
}

struct blend_constants {
    GLenum equation;
    GLenum source;
    GLenum destination;
};

static bool find_blend_constants(uint8_t blend_function, blend_constants& out)
{
    switch (blend_function) {
    case 0:
        out = {GL_FUNC_ADD, GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA};
        return true;
    case 1:
        out = {GL_FUNC_ADD, GL_ONE, GL_ONE};
        return true;
    case 2:
        out = {GL_FUNC_ADD, GL_ONE, GL_ZERO};
        return true;
    case 3:
        out = {GL_FUNC_ADD, GL_ONE, GL_ONE_MINUS_SRC_ALPHA};
        return true;
    case 4:
        out = {GL_FUNC_REVERSE_SUBTRACT, GL_SRC_ALPHA, GL_ONE};
        return true;
    }
    return false; // beyond the catalogue: the previous material's stays
}

// Blending itself is on from the start of the program and never switched off.
static void set_blending(uint8_t blend_function)
{
    blend_constants constants;
    if (!find_blend_constants(blend_function, constants))
        return;
    if (glBlendEquation != nullptr)
        glBlendEquation(constants.equation);
    glBlendFunc(constants.source, constants.destination);
}

static void set_line_width(const material_record& material, const material_context& context)
{
    const float width = plan_line_width(material, *context.d, context.time);
    if (width > 0.0f) // others are an error to OpenGL and change nothing
        glLineWidth(width);
}

// Plans the units and brings their moving pictures up to date. The refresh binds its
// picture, so it is done on the first unit, which is bound anew right afterwards.
static uint32_t prepare_units(const material_record& material, const material_context& context, uint32_t limit,
    unit_plan units[texture_unit_count])
{
    document& d = *context.d;
    const uint32_t count = plan_units(material, texture_tables_of(d), limit, units);
    for (uint32_t i = 0; i < count; ++i) {
        if (units[i].dynamic_texture == 0)
            continue;
        glActiveTexture(GL_TEXTURE0);
        update_dynamic_texture(
            units[i].dynamic_texture, d.dynamic_texture_table, d.function_table, context.time, context.caps->pbo == 1);
    }
    return count;
}

void load_matrix(int selector)
{
    switch (static_cast<matrix_selector>(selector)) {
    case select_modelview:
        glMatrixMode(GL_MODELVIEW);
        glLoadMatrixf(matrices.modelview);
        return;
    case select_projection:
        glMatrixMode(GL_PROJECTION);
        glLoadMatrixf(matrices.projection);
        glMatrixMode(GL_MODELVIEW);
        return;
    case select_texture:
        glMatrixMode(GL_TEXTURE);
        glLoadMatrixf(matrices.texture_matrix);
        glMatrixMode(GL_MODELVIEW);
        return;
    }
}

// ---- the fixed-function path ----------------------------------------------------

// The modelview matrix of the moment is the camera's, so positions are the world's.
static void set_fixed_light(GLenum light, const light_plan& plan)
{
    const GLfloat position[4] = {plan.position[0], plan.position[1], plan.position[2], 1.0f};
    const GLfloat ambient[4] = {plan.ambient[0], plan.ambient[1], plan.ambient[2], 1.0f};
    const GLfloat diffuse[4] = {plan.diffuse[0], plan.diffuse[1], plan.diffuse[2], 1.0f};
    glEnable(light);
    glLightfv(light, GL_POSITION, position);
    glLightfv(light, GL_AMBIENT, ambient);
    glLightfv(light, GL_DIFFUSE, diffuse);
}

// A second light alone lights nothing here.
static void set_fixed_lights(const material_record& material, const material_context& context)
{
    light_plan light;
    if (!plan_light(material.light1, *context.d, context.time, light)) {
        glDisable(GL_LIGHTING);
        return;
    }
    glEnable(GL_LIGHTING);
    set_fixed_light(GL_LIGHT0, light);
    if (plan_light(material.light2, *context.d, context.time, light))
        set_fixed_light(GL_LIGHT1, light);
    else
        glDisable(GL_LIGHT1);
}

static void set_fixed_fog(const material_record& material, const material_context& context)
{
    if (material.fogtype == 0) {
        glDisable(GL_FOG);
        return;
    }
    const fog_plan fog = plan_fog(material, *context.d, context.time);
    const GLfloat color[4] = {fog.color[0], fog.color[1], fog.color[2], 1.0f};
    glEnable(GL_FOG);
    glFogi(GL_FOG_MODE, GL_LINEAR);
    glHint(GL_FOG_HINT, material.fogtype == 1 ? GL_FASTEST : GL_NICEST);
    glFogfv(GL_FOG_COLOR, color);
    glFogf(GL_FOG_START, fog.start);
    glFogf(GL_FOG_END, fog.end);
}

static void set_fixed_polygons(const material_record& material, const material_context& context)
{
    set_enabled(GL_CULL_FACE, material.backface_culling != 0);
    set_enabled(GL_DEPTH_TEST, material.depth_test != 0);
    set_enabled(GL_NORMALIZE, material.normalization != 0);
    if (material.wireframe != 0) {
        glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
        set_line_width(material, context);
    } else {
        glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    }
}

static uint32_t fixed_unit_limit(const material_context& context)
{
    return std::min<uint32_t>(context.caps->texture_units, texture_unit_count);
}

// Switches a unit's coordinate array on where it is wanted and the mesh has one. A mesh
// without coordinates has (0, 0) everywhere: what is current after a draw with an array is
// the driver's own affair.
static void point_coordinate_array(const unit_coordinates& coordinates, uint32_t unit, const gl_caps& caps)
{
    if (!coordinate_array_on[unit] || !has_coordinates(coordinates, unit)) {
        glDisableClientState(GL_TEXTURE_COORD_ARRAY);
        if (coordinate_array_on[unit])
            glMultiTexCoord4f(GL_TEXTURE0 + unit, 0.0f, 0.0f, 0.0f, 1.0f);
        return;
    }
    glEnableClientState(GL_TEXTURE_COORD_ARRAY);
    bind_coordinate_buffer(coordinates, unit, caps);
    glTexCoordPointer(2, GL_FLOAT, 0, coordinates.set[unit]); // null: the start of the bound buffer
}

static void select_unit(uint32_t unit)
{
    glActiveTexture(GL_TEXTURE0 + unit);
    glClientActiveTexture(GL_TEXTURE0 + unit);
}

// Quirk: units after the first empty one are not touched and keep the picture and the
// combiner of an earlier material (tests/gl: "units after the first empty one keep what
// an earlier material left"). Only their coordinate arrays follow the mesh at hand: an
// earlier mesh may be shorter, or gone.
static void point_stale_arrays(uint32_t first, const material_context& context, const unit_coordinates& coordinates)
{
    for (uint32_t unit = first; unit < fixed_unit_limit(context); ++unit) {
        if (!coordinate_array_on[unit])
            continue;
        glClientActiveTexture(GL_TEXTURE0 + unit);
        point_coordinate_array(coordinates, unit, *context.caps);
    }
}

static void set_fixed_units(const unit_plan units[texture_unit_count], uint32_t count, const material_context& context,
    const unit_coordinates& coordinates)
{
    for (uint32_t i = 0; i < count; ++i) {
        select_unit(i);
        set_fixed_unit(i, units[i], *context.caps, context.camera_angles);
        coordinate_array_on[i] = !generates_coordinates(units[i].cgenmode);
        point_coordinate_array(coordinates, i, *context.caps);
    }
    if (count < fixed_unit_limit(context)) {
        select_unit(count);
        disable_fixed_unit();
        coordinate_array_on[count] = false;
        glDisableClientState(GL_TEXTURE_COORD_ARRAY);
    }
    point_stale_arrays(count + 1, context, coordinates);
}

void apply_material_fixed(
    const material_record* material, const material_context& context, const unit_coordinates& coordinates)
{
    if (material == nullptr) {
        point_stale_arrays(0, context, coordinates);
        return;
    }
    unit_plan units[texture_unit_count];
    const uint32_t count = prepare_units(*material, context, fixed_unit_limit(context), units);
    set_fixed_polygons(*material, context);
    float color[4];
    plan_color(*material, *context.d, context.time, color);
    glColor4fv(color);
    set_blending(material->blend_function);
    set_fixed_lights(*material, context);
    set_fixed_fog(*material, context);
    set_fixed_units(units, count, context, coordinates);
}

// ---- the shader path ------------------------------------------------------------

const program_in_use& current_program()
{
    return program_now;
}

void feed_attribute(int32_t location, int32_t components, const void* data)
{
    if (location < 0 || attribute_count == std::size(attributes_on))
        return;
    const GLuint index = static_cast<GLuint>(location);
    glVertexAttribPointer(index, components, GL_FLOAT, GL_FALSE, 0, data);
    glEnableVertexAttribArray(index);
    attributes_on[attribute_count] = location;
    ++attribute_count;
}

void end_program_arrays()
{
    for (uint32_t i = 0; i < attribute_count; ++i)
        glDisableVertexAttribArray(static_cast<GLuint>(attributes_on[i]));
    attribute_count = 0;
}

// (0, 0) at every vertex, as on the fixed path.
static void set_origin_attribute(int32_t location)
{
    if (location >= 0 && glVertexAttrib4f != nullptr)
        glVertexAttrib4f(static_cast<GLuint>(location), 0.0f, 0.0f, 0.0f, 1.0f);
}

static void feed_program_coordinates(const unit_coordinates& coordinates, const gl_caps& caps)
{
    for (uint32_t i = 0; i < texture_unit_count; ++i) {
        if (has_coordinates(coordinates, i)) {
            bind_coordinate_buffer(coordinates, i, caps);
            feed_attribute(program_now.texcoord[i], 2, coordinates.set[i]);
        } else {
            set_origin_attribute(program_now.texcoord[i]);
        }
    }
}

// Makes a program current. One that did not build leaves none, and marks that nothing
// is to be drawn.
static void use_program(const shader_program* program)
{
    program_now = {.state = program_failed,
        .program = 0,
        .projection = -1,
        .modelview = -1,
        .normal_matrix = -1,
        .position = -1,
        .normal = -1,
        .texcoord = {-1, -1, -1}};
    if (program != nullptr && program->program != 0) {
        program_now.state = program_ready;
        program_now.program = program->program;
        program_now.projection = program->projection_location;
        program_now.modelview = program->modelview_location;
        program_now.normal_matrix = program->normal_matrix_location;
        program_now.position = program->position_location;
        program_now.normal = program->normal_location;
        std::copy_n(program->texcoord_location, texture_unit_count, program_now.texcoord);
    }
    glUseProgram(program_now.program);
}

// Generated programs read the matrix by rows where it is stored by columns, so to them it
// is uploaded transposed: sphere maps turn and reflections stay as they do on the fixed
// path. A material's own program gets it as it lies, so that TextureMatrix * v is what it
// says. Of several units that need one, the last wins.
static void set_program_units(const shader_program& program, bool own_program,
    const unit_plan units[texture_unit_count], uint32_t count, const material_context& context)
{
    const GLboolean transposed = own_program ? GL_FALSE : GL_TRUE;
    for (uint32_t i = 0; i < count; ++i) {
        glActiveTexture(GL_TEXTURE0 + i);
        bind_unit_texture(units[i]);
        const bool reflects = units[i].cgenmode == coordinates_cube;
        if (units[i].rotation == 0 && !reflects)
            continue;
        build_texture_matrix(units[i].rotation != 0, reflects, context.camera_angles);
        if (program.texture_matrix_location >= 0)
            glUniformMatrix4fv(program.texture_matrix_location, 1, transposed, matrices.texture_matrix);
    }
}

static void set_uniforms(const material_record& material, const material_context& context)
{
    const shader_program& program = *material.program;
    float values[user_uniform_count];
    evaluate_uniforms(material, context.d->function_table, context.time, values);
    for (uint32_t i = 0; i < user_uniform_count; ++i)
        if (program.uniform_functions[i] != 0 && program.uniform_locations[i] >= 0)
            glUniform1f(program.uniform_locations[i], values[i]);
}

static void set_light_positions(
    const material_record& material, const shader_program& program, const material_context& context)
{
    const uint32_t lights[2] = {material.light1, material.light2};
    for (uint32_t i = 0; i < 2; ++i) {
        float world[3];
        if (!plan_light_position(lights[i], *context.d, context.time, world))
            continue;
        float seen[3];
        transform_point(matrices.modelview, world, seen);
        if (program.light_position_location[i] >= 0)
            glUniform3fv(program.light_position_location[i], 1, seen);
    }
}

void apply_material_glsl(
    const material_record* material, const material_context& context, const unit_coordinates& coordinates)
{
    if (material == nullptr) {
        if (program_now.state == program_ready) {
            glUseProgram(program_now.program);
            feed_program_coordinates(coordinates, *context.caps);
        }
        return;
    }
    unit_plan units[texture_unit_count];
    const uint32_t count = prepare_units(*material, context, texture_unit_count, units);
    use_program(material->program);
    set_blending(material->blend_function);
    set_enabled(GL_CULL_FACE, material->backface_culling != 0);
    set_enabled(GL_DEPTH_TEST, material->depth_test != 0);
    if (material->wireframe != 0)
        set_line_width(*material, context);
    if (program_now.state != program_ready)
        return;
    const shader_program& program = *material->program;
    set_program_units(program, has_custom_program(*material), units, count, context);
    feed_program_coordinates(coordinates, *context.caps);
    set_uniforms(*material, context);
    set_light_positions(*material, program, context);
}
