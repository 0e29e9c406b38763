#include "render/material_plan.h"

#include "content/matrix.h"
#include "model/values.h"

#include <algorithm>
#include <cassert>
#include <cfloat>
#include <cmath>
#include <iterator>

bool generates_coordinates(uint8_t cgenmode)
{
    return cgenmode == coordinates_sphere || cgenmode == coordinates_cube;
}

// ---- textures -------------------------------------------------------------------

texture_tables texture_tables_of(const document& d)
{
    return {d.object_table, d.texture_table, d.image_texture_table, d.dynamic_texture_table, d.cube_map_table};
}

// The OpenGL name of a kind's record; false when there is no such picture.
static bool find_texture_name(const texture_tables& tables, int32_t kind, uint32_t id, uint32_t& name)
{
    switch (static_cast<texture_kind>(kind)) {
    case texture_generated: {
        const texture_node* node = table_get(tables.generated, id);
        if (node == nullptr || node->type != node_output)
            return false; // only output nodes have a picture on the card
        name = node->texture;
        return true;
    }
    case texture_image:
        if (const image_texture* image = table_get(tables.images, id)) {
            name = image->texture;
            return true;
        }
        return false;
    case texture_dynamic:
        if (const dynamic_texture* moving = table_get(tables.dynamic, id)) {
            name = moving->texture;
            return true;
        }
        return false;
    case texture_cube:
        if (const cube_map* cube = table_get(tables.cubes, id)) {
            name = cube->texture;
            return true;
        }
        return false;
    case texture_kind_count:
        break;
    }
    return false;
}

resolved_texture resolve_texture(const texture_tables& tables, uint32_t reference)
{
    const object_reference* object = table_get(tables.objects, reference);
    if (object == nullptr)
        return {};
    uint32_t name = 0;
    if (!find_texture_name(tables, object->type, object->id, name))
        return {};
    return {true, object->type, object->id, name};
}

uint32_t plan_units(
    const material_record& material, const texture_tables& tables, uint32_t limit, unit_plan units[texture_unit_count])
{
    const uint32_t end = std::min(limit, texture_unit_count);
    for (uint32_t i = 0; i < end; ++i) {
        const resolved_texture found = resolve_texture(tables, material.texture[i]);
        if (!found.found)
            return i;
        units[i] = {
            .texture = found.texture,
            .dynamic_texture = found.kind == texture_dynamic ? found.id : 0,
            .cube_map = found.kind == texture_cube,
            .wrapmode = material.wrapmode[i],
            .cgenmode = material.cgenmode[i],
            .rotation = material.rotation[i],
            .combine_mode = material.combine_mode[i],
        };
    }
    return end;
}

// ---- colours, lights, fog -------------------------------------------------------

void plan_color(const material_record& material, const document& d, uint32_t time, float color[4])
{
    for (uint32_t i = 0; i < 4; ++i)
        color[i] = value_at(d.function_table, material.color[i], material.color_dynamic[i] != 0, time);
}

float plan_line_width(const material_record& material, const document& d, uint32_t time)
{
    return value_at(d.function_table, material.linewidth, material.linewidth_dynamic != 0, time);
}

static void evaluate_triple(const value_record& record, uint32_t first, const document& d, uint32_t time, float out[3])
{
    assert(first + 3 <= std::size(record.values));
    for (uint32_t i = 0; i < 3; ++i)
        out[i] = value_at(d.function_table, record.values[first + i], value_is_dynamic(record, first + i), time);
}

bool plan_light(uint32_t light, const document& d, uint32_t time, light_state& out)
{
    const value_record* record = table_get(d.transform_table, light);
    if (record == nullptr)
        return false;
    evaluate_triple(*record, 0, d, time, out.ambient);
    evaluate_triple(*record, 3, d, time, out.diffuse);
    evaluate_triple(*record, 6, d, time, out.position);
    return true;
}

bool plan_light_position(uint32_t light, const document& d, uint32_t time, float position[3])
{
    const value_record* record = table_get(d.transform_table, light);
    if (record == nullptr)
        return false;
    evaluate_triple(*record, 6, d, time, position);
    return true;
}

void widen_fog(float& start, float& end)
{
    if (start != end)
        return;
    start = std::clamp(start, -FLT_MAX, std::nextafter(FLT_MAX, 0.0f)); // so that something lies behind it
    end = std::max(start + least_fog_width, std::nextafter(start, FLT_MAX));
    assert(start < end);
}

fog_state plan_fog(const material_record& material, const document& d, uint32_t time)
{
    fog_state fog = {.color = {1.0f, 1.0f, 1.0f}, .start = 0.0f, .end = 0.0f};
    if (const value_record* record = table_get(d.transform_table, material.fogcolor))
        evaluate_triple(*record, 3, d, time, fog.color);
    fog.start = value_at(d.function_table, material.fogstart, material.fogstart_dynamic != 0, time);
    fog.end = value_at(d.function_table, material.fogend, material.fogend_dynamic != 0, time);
    widen_fog(fog.start, fog.end);
    return fog;
}

// ---- the texture matrix ---------------------------------------------------------

void build_texture_matrix(bool rotation, bool camera_rotation, const float camera_angles[2], float out[16])
{
    assert(camera_angles != nullptr && out != nullptr);
    copy_matrix(identity, out);
    if (rotation) {
        translate(out, 0.5f, 0.5f, 0.0f);
        rotate_z(out, -camera_angles[0]);
        translate(out, -0.5f, -0.5f, 0.0f);
    } else if (camera_rotation) {
        rotate_y(out, -camera_angles[0]);
        rotate_x(out, -camera_angles[1]);
    }
}
