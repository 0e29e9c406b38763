#include "render/material_state.h"

#include "content/matrix.h"
#include "render/material_plan.h"
#include "render/shader_source.h"

#include <algorithm>
#include <cassert>
#include <cstring>

uint32_t unit_limit(const gl_caps& caps, bool glsl)
{
    return glsl ? texture_unit_count : std::min<uint32_t>(caps.texture_units, texture_unit_count);
}

// ---- numbers ------------------------------------------------------------------------

static void evaluate_fixed(const material_record& material, const document& d, uint32_t time, material_numbers& numbers)
{
    plan_color(material, d, time, numbers.color);
    numbers.has_light[0] = plan_light(material.light1, d, time, numbers.light[0]);
    if (numbers.has_light[0] != 0) // a second light alone lights nothing here
        numbers.has_light[1] = plan_light(material.light2, d, time, numbers.light[1]);
    if (material.fogtype != fog_none)
        numbers.fog = plan_fog(material, d, time);
}

static bool has_program(const material_record& material)
{
    return material.program != nullptr && material.program->program != 0;
}

static void evaluate_glsl(const material_record& material, const document& d, uint32_t time, material_numbers& numbers)
{
    if (!has_program(material))
        return;
    evaluate_uniforms(material, d.function_table, time, numbers.uniforms);
    numbers.has_light[0] = plan_light_position(material.light1, d, time, numbers.light[0].position);
    numbers.has_light[1] = plan_light_position(material.light2, d, time, numbers.light[1].position);
}

material_numbers evaluate_material(const material_record& material, const document& d, uint32_t time, bool glsl)
{
    material_numbers numbers = {};
    if (material.wireframe != 0)
        numbers.line_width = plan_line_width(material, d, time);
    if (glsl)
        evaluate_glsl(material, d, time, numbers);
    else
        evaluate_fixed(material, d, time, numbers);
    return numbers;
}

// ---- what both paths share --------------------------------------------------------

static void set_common_state(const material_record& material, float line_width, material_state& state)
{
    state.applied = true;
    state.cull_back = material.backface_culling != 0;
    state.depth_test = material.depth_test != 0;
    if (material.blend_function < blend_kind_count) // beyond the catalogue: the previous material's stays
        state.blending = material.blend_function;
    assert(state.blending < blend_kind_count || state.blending == blend_none);
    if (line_width > 0.0f) // others mean nothing and change nothing
        state.line_width = line_width;
}

static uint32_t texture_of(const unit_state& unit)
{
    return unit.cube_map ? unit.cube_texture : unit.flat_texture;
}

// How coordinates wrap belongs to the picture: it holds for every unit that shows it.
static void set_wrap(material_state& state, uint32_t number)
{
    assert(state.units[number].used);
    const unit_state& set = state.units[number];
    for (unit_state& unit : state.units)
        if (unit.used && unit.cube_map == set.cube_map && texture_of(unit) == texture_of(set))
            unit.wrap = set.wrap;
}

// The picture keeps its wrapping out of sight, too: until it is bound to a unit again.
static void remember_wrap(standing_state& standing, uint32_t texture, uint8_t wrap)
{
    if (texture >= standing.wraps.size())
        standing.wraps.resize(size_t{texture} + 1, wrap_as_it_is);
    standing.wraps[texture] = wrap;
}

static uint8_t remembered_wrap(const standing_state& standing, uint32_t texture)
{
    return texture < standing.wraps.size() ? standing.wraps[texture] : wrap_as_it_is;
}

static void set_unit_texture(standing_state& standing, uint32_t number, const unit_plan& plan)
{
    assert(number < texture_unit_count);
    unit_state& unit = standing.material.units[number];
    unit.used = true;
    unit.cube_map = plan.cube_map;
    unit.wrap = plan.wrapmode < wrap_kind_count ? plan.wrapmode : uint8_t{wrap_repeat}; // beyond the catalogue
    (plan.cube_map ? unit.cube_texture : unit.flat_texture) = plan.texture;
    set_wrap(standing.material, number);
    if (!plan.cube_map)
        remember_wrap(standing, plan.texture, unit.wrap);
}

// The wrap of a cube map above it stays; a picture that was there already keeps its own.
void bind_flat_texture(standing_state& standing, uint32_t texture)
{
    unit_state& unit = standing.material.units[0];
    if (!unit.cube_map && unit.flat_texture != texture)
        unit.wrap = remembered_wrap(standing, texture);
    unit.flat_texture = texture;
}

void forget_texture(standing_state& standing, uint32_t texture)
{
    for (unit_state& unit : standing.material.units) {
        if (unit.flat_texture == texture)
            unit.flat_texture = 0;
        if (unit.cube_texture == texture)
            unit.cube_texture = 0;
    }
    if (texture < standing.wraps.size())
        standing.wraps[texture] = wrap_as_it_is;
}

// ---- the fixed-function path --------------------------------------------------------

// The modelview matrix of the moment is the camera's, so positions are the world's.
static void set_fixed_lights(const material_numbers& numbers, const material_context& context, material_state& state)
{
    assert(context.modelview != nullptr);
    state.lights = 0;
    for (; state.lights < 2 && numbers.has_light[state.lights] != 0; ++state.lights)
        state.light[state.lights] = numbers.light[state.lights];
    if (state.lights > 0)
        copy_matrix(context.modelview, state.light_view);
}

static void set_fixed_unit(
    uint32_t number, const unit_plan& plan, const material_context& context, standing_state& standing)
{
    unit_state& unit = standing.material.units[number];
    set_unit_texture(standing, number, plan);
    unit.on = true;
    unit.coordinates = plan.cgenmode;
    unit.mesh_coordinates = !generates_coordinates(plan.cgenmode);
    unit.combine_mode = plan.combine_mode;
    build_texture_matrix(plan.rotation != 0, plan.cube_map, context.camera_angles, unit.matrix);
}

// Quirk: units after the first empty one are not touched and keep the picture and the
// combiner of an earlier material (tests/gl: "units after the first empty one keep what
// an earlier material left").
static void set_fixed_units(const material_record& material, const material_context& context, standing_state& standing)
{
    const uint32_t limit = unit_limit(*context.caps, false);
    unit_plan units[texture_unit_count];
    const uint32_t count = plan_units(material, texture_tables_of(*context.d), limit, units);
    for (uint32_t i = 0; i < count; ++i)
        set_fixed_unit(i, units[i], context, standing);
    if (count < limit) {
        unit_state& first_empty = standing.material.units[count];
        first_empty.used = true;
        first_empty.on = false;
        first_empty.mesh_coordinates = false;
    }
}

void apply_material_fixed(const material_record& material, const material_numbers& numbers,
    const material_context& context, standing_state& standing)
{
    assert(context.d != nullptr && context.caps != nullptr);
    material_state& state = standing.material;
    set_common_state(material, numbers.line_width, state);
    state.normalize = material.normalization != 0;
    state.wireframe = material.wireframe != 0;
    std::copy_n(numbers.color, 4, state.color);
    set_fixed_lights(numbers, context, state);
    state.fog_type = material.fogtype;
    if (material.fogtype != fog_none)
        state.fog = numbers.fog;
    set_fixed_units(material, context, standing);
}

// ---- the shader path ------------------------------------------------------------------

// Four at a time: -1 where no function drives a uniform.
static void set_driven_locations(const shader_program& program, int32_t locations[user_uniform_count])
{
    using four_numbers = int32_t __attribute__((vector_size(16)));
    static_assert(user_uniform_count % 4 == 0);
    for (uint32_t i = 0; i < user_uniform_count; i += 4) {
        four_numbers functions;
        four_numbers found;
        std::memcpy(&functions, program.uniform_functions + i, sizeof functions);
        std::memcpy(&found, program.uniform_locations + i, sizeof found);
        found |= functions == 0;
        std::memcpy(locations + i, &found, sizeof found);
    }
}

// What to draw with. A program that did not build leaves none, and marks that nothing is
// to be drawn.
static void use_program(const material_record& material, program_state& state)
{
    if (!has_program(material)) {
        state = {};
        state.status = program_failed;
        return;
    }
    const shader_program* program = material.program;
    state.status = program_ready;
    state.program = program->program;
    state.projection = program->projection_location;
    state.modelview = program->modelview_location;
    state.normal_matrix = program->normal_matrix_location;
    state.texture_matrix_location = program->texture_matrix_location;
    std::copy_n(program->light_position_location, 2, state.light_location);
    set_driven_locations(*program, state.uniform_location);
    state.position = program->position_location;
    state.normal = program->normal_location;
    std::copy_n(program->texcoord_location, texture_unit_count, state.texcoord);
}

// Generated programs read the matrix by rows where it is stored by columns, so to them it
// is uploaded transposed: sphere maps turn and reflections stay as they do on the fixed
// path. A material's own program gets it as it lies, so that TextureMatrix * v is what it
// says. Of several units that need one, the last wins.
static void set_program_units(
    const material_record& material, const material_context& context, standing_state& standing)
{
    program_state& program = standing.program;
    program.turns_texture = false;
    program.transposed = !has_custom_program(material);
    unit_plan units[texture_unit_count];
    const uint32_t count = plan_units(material, texture_tables_of(*context.d), texture_unit_count, units);
    for (uint32_t i = 0; i < count; ++i) {
        set_unit_texture(standing, i, units[i]);
        const bool reflects = units[i].cgenmode == coordinates_cube;
        if (units[i].rotation == 0 && !reflects)
            continue;
        build_texture_matrix(units[i].rotation != 0, reflects, context.camera_angles, program.texture_matrix);
        program.turns_texture = true;
    }
}

static void set_light_positions(
    const material_numbers& numbers, const material_context& context, program_state& program)
{
    for (uint32_t i = 0; i < 2; ++i) {
        program.has_light[i] = numbers.has_light[i] != 0;
        if (program.has_light[i])
            transform_point(context.modelview, numbers.light[i].position, program.light_position[i]);
    }
}

void apply_material_glsl(const material_record& material, const material_numbers& numbers,
    const material_context& context, standing_state& standing)
{
    assert(context.d != nullptr && context.modelview != nullptr);
    set_common_state(material, numbers.line_width, standing.material);
    use_program(material, standing.program);
    if (standing.program.status != program_ready)
        return;
    set_program_units(material, context, standing);
    std::copy_n(numbers.uniforms, user_uniform_count, standing.program.uniforms);
    set_light_positions(numbers, context, standing.program);
}
