#include "tools/preview/frames_alike.h"

#include "render/layer_plan.h"

#include <algorithm>
#include <cstring>

constexpr float strange_number = 0.28125f;
constexpr uint32_t strange_name = 0x7FFFFFF0u; // of no texture and no program

planned_frame plan_of(const frame& f)
{
    return {f.commands, f.viewports, f.clears, f.draws, f.views, f.materials, f.programs, f.copies};
}

// ---- what drawing looks at --------------------------------------------------------------------------

static bool same_floats(const float* a, const float* b, size_t count)
{
    return std::memcmp(a, b, count * sizeof(float)) == 0;
}

static bool same_command(const frame_command& a, const frame_command& b)
{
    return a.kind == b.kind && a.index == b.index;
}

static bool same_viewport(const viewport_command& a, const viewport_command& b)
{
    return a.width == b.width && a.height == b.height;
}

static bool same_clear(const clear_command& a, const clear_command& b)
{
    return a.bits == b.bits && ((a.bits & clear_color) == 0 || same_floats(a.color, b.color, 4));
}

static bool same_view(const view_state& a, const view_state& b)
{
    return same_floats(a.projection, b.projection, 16) && same_floats(a.camera, b.camera, 16);
}

static bool same_copy(const copy_transform& a, const copy_transform& b)
{
    return same_floats(a.modelview, b.modelview, 16) && same_floats(a.normal_matrix, b.normal_matrix, 9);
}

static bool same_light(const light_state& a, const light_state& b)
{
    return same_floats(a.position, b.position, 3) && same_floats(a.ambient, b.ambient, 3)
        && same_floats(a.diffuse, b.diffuse, 3);
}

static bool same_lights(const material_state& a, const material_state& b)
{
    return a.lights == b.lights && (a.lights == 0 || same_floats(a.light_view, b.light_view, 16))
        && (a.lights < 1 || same_light(a.light[0], b.light[0])) && (a.lights < 2 || same_light(a.light[1], b.light[1]));
}

static bool same_fog(const material_state& a, const material_state& b)
{
    return a.fog_type == b.fog_type
        && (a.fog_type == fog_none
            || (same_floats(a.fog.color, b.fog.color, 3) && same_floats(&a.fog.start, &b.fog.start, 1)
                && same_floats(&a.fog.end, &b.fog.end, 1)));
}

static bool same_fixed_unit(const unit_state& a, const unit_state& b)
{
    if (!a.on && !b.on)
        return true;
    return a.on == b.on && a.cube_map == b.cube_map && a.mesh_coordinates == b.mesh_coordinates && a.wrap == b.wrap
        && a.coordinates == b.coordinates && a.combine_mode == b.combine_mode
        && (a.cube_map ? a.cube_texture == b.cube_texture : a.flat_texture == b.flat_texture)
        && same_floats(a.matrix, b.matrix, 16);
}

static bool same_polygons(const material_state& a, const material_state& b, bool lines)
{
    return a.applied == b.applied && a.depth_test == b.depth_test && a.cull_back == b.cull_back
        && a.blending == b.blending && (!lines || same_floats(&a.line_width, &b.line_width, 1));
}

static bool same_fixed(const material_state& a, const material_state& b)
{
    return same_polygons(a, b, a.wireframe) && a.normalize == b.normalize && a.wireframe == b.wireframe
        && same_floats(a.color, b.color, 4) && same_lights(a, b) && same_fog(a, b)
        && std::equal(a.units, a.units + texture_unit_count, b.units, same_fixed_unit);
}

static bool same_sampled_units(const material_state& a, const material_state& b, const sampled_units& sampled)
{
    for (uint32_t i = 0; i < texture_unit_count; ++i) {
        const bool flat = (sampled.flat >> i & 1) != 0;
        const bool cube = (sampled.cube >> i & 1) != 0;
        const unit_state& x = a.units[i];
        const unit_state& y = b.units[i];
        if ((flat || cube) && (x.used != y.used || x.cube_map != y.cube_map || x.wrap != y.wrap))
            return false;
        if ((flat && x.flat_texture != y.flat_texture) || (cube && x.cube_texture != y.cube_texture))
            return false;
    }
    return true;
}

static bool same_program(const program_state& a, const program_state& b)
{
    if (a.status != b.status || a.program != b.program || a.turns_texture != b.turns_texture)
        return false;
    if (a.turns_texture && (a.transposed != b.transposed || !same_floats(a.texture_matrix, b.texture_matrix, 16)))
        return false;
    for (uint32_t i = 0; i < 2; ++i)
        if (a.has_light[i] != b.has_light[i]
            || (a.has_light[i] && !same_floats(a.light_position[i], b.light_position[i], 3)))
            return false;
    for (uint32_t i = 0; i < user_uniform_count; ++i)
        if (a.uniform_location[i] != b.uniform_location[i]
            || (a.uniform_location[i] >= 0 && !same_floats(a.uniforms + i, b.uniforms + i, 1)))
            return false;
    return true;
}

// ---- draws ------------------------------------------------------------------------------------------

static bool same_draw(const planned_frame& f, const draw_command& a, const planned_frame& g, const draw_command& b,
    units_of_program units)
{
    if (a.view != b.view || a.lines != b.lines || a.index_count != b.index_count || a.first_copy != b.first_copy
        || a.copy_count != b.copy_count || (a.program == no_index) != (b.program == no_index))
        return false;
    const material_state& x = listed(f.materials, a.material);
    const material_state& y = listed(g.materials, b.material);
    if (a.program == no_index)
        return same_fixed(x, y);
    const program_state& program = listed(f.programs, a.program);
    return same_polygons(x, y, a.lines) && same_program(program, listed(g.programs, b.program))
        && same_sampled_units(x, y, units(program.program));
}

template <typename record, typename comparison>
static bool same_list(const std::vector<record>& a, const std::vector<record>& b, comparison same)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), same);
}

bool drawn_alike(const planned_frame& a, const planned_frame& b, units_of_program units)
{
    return same_list(a.commands, b.commands, same_command) && same_list(a.viewports, b.viewports, same_viewport)
        && same_list(a.clears, b.clears, same_clear) && same_list(a.views, b.views, same_view)
        && same_list(a.copies, b.copies, same_copy)
        && same_list(a.draws, b.draws,
            [&](const draw_command& x, const draw_command& y) { return same_draw(a, x, b, y, units); });
}

// ---- a strange past -----------------------------------------------------------------------------------

static unit_state strange_unit()
{
    unit_state unit = {};
    unit.used = unit.on = unit.mesh_coordinates = true;
    unit.wrap = wrap_edge_clamp;
    unit.flat_texture = unit.cube_texture = strange_name;
    std::fill_n(unit.matrix, 16, strange_number);
    return unit;
}

static material_state strange_material(uint32_t units)
{
    material_state material = {};
    material.applied = material.cull_back = material.normalize = material.wireframe = true;
    material.lights = 2;
    material.blending = blend_subtract;
    material.fog_type = fog_nicest;
    material.line_width = strange_number;
    std::fill_n(material.color, 4, strange_number);
    std::fill_n(material.light_view, 16, strange_number);
    material.fog = {{strange_number, strange_number, strange_number}, strange_number, strange_number};
    std::fill_n(material.units, std::min(units, texture_unit_count), strange_unit());
    return material;
}

standing_state strange_standing_state(uint32_t units)
{
    standing_state standing = initial_standing_state();
    std::fill_n(standing.projection, 16, strange_number);
    std::fill_n(standing.clear_color, 4, strange_number);
    standing.viewport_width = standing.viewport_height = 7;
    standing.material = strange_material(units);
    standing.program.status = program_ready;
    standing.program.program = strange_name;
    return standing;
}
