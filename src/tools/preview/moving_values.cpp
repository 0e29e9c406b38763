#include "tools/preview/moving_values.h"

#include "model/catalogues.h"
#include "model/glyphs.h"
#include "model/values.h"
#include "render/material_plan.h"
#include "render/scene_plan.h"
#include "render/shader_source.h"
#include "render/text.h"

#include <algorithm>
#include <cmath>

constexpr double ticks_per_second = 100;

namespace {

// Which clock a function is asked by.
enum value_clock : uint8_t { layer_clock, object_clock };

// What all values of an object are asked with.
struct asking {
    const document& d;
    const layer_record& layer;
    uint32_t start; // tick of the show at which the clip begins
    float object_offset;
    uint32_t tick; // now
    uint32_t samples;
    moving_values& out;
};

} // namespace

// ---- asking ---------------------------------------------------------------------------------------

static uint32_t function_time(const asking& a, value_clock clock, uint32_t tick)
{
    const uint32_t time = std::max(tick, a.start) - a.start + a.layer.offset;
    return clock == object_clock ? object_time(time, a.object_offset) : time;
}

static int64_t shift_of(const asking& a, value_clock clock)
{
    const int64_t shift = int64_t{a.layer.offset} - a.start;
    const bool has_offset = clock == object_clock && std::abs(a.object_offset) < 1e9f;
    return has_offset ? shift + static_cast<int64_t>(std::floor(a.object_offset)) : shift;
}

// The ticks are spread over the clip from its first to its last.
static uint32_t sample_tick(const asking& a, uint32_t sample)
{
    if (a.samples < 2 || a.layer.length == 0)
        return a.start;
    const uint64_t along = uint64_t{sample} * a.layer.length / (a.samples - 1);
    return a.start + static_cast<uint32_t>(std::min<uint64_t>(along, a.layer.length - 1));
}

// The function is asked as a copy of its own for each question, since an answer may depend on what was asked before.
static float ask(const animation_function& function, uint32_t time)
{
    animation_function copy = function;
    copy.cached_time = no_cached_time;
    return evaluate_function(copy, time);
}

// A handle that leads nowhere moves nothing. `sign` turns a value around that the document has the other way.
static void add_function(const asking& a, const std::string& name, uint32_t handle, value_clock clock, float sign = 1)
{
    const animation_function* function = table_get(a.d.function_table, handle);
    if (function == nullptr)
        return;
    moving_value value;
    value.name = name;
    value.function = handle;
    value.time_shift = shift_of(a, clock);
    value.now = sign * ask(*function, function_time(a, clock, a.tick));
    for (uint32_t i = 0; i < a.samples; ++i)
        value.values.push_back(sign * ask(*function, function_time(a, clock, sample_tick(a, i))));
    a.out.values.push_back(std::move(value));
}

static void add_value(const asking& a, const std::string& name, float value, bool dynamic, value_clock clock)
{
    if (dynamic)
        add_function(a, name, handle_of_value(value), clock);
}

// ---- the object -------------------------------------------------------------------------------------

static void add_placement(const asking& a, const scene_object& object)
{
    static const char* const names[placement_value_count]
        = {"x", "y", "z", "rotation x", "rotation y", "rotation z", "scale x", "scale y", "scale z"};
    for (uint32_t i = 0; i < placement_value_count; ++i)
        add_value(a, names[i], object.values[i].value, object.values[i].dynamic != 0, object_clock);
    add_function(a, "visibility", object.visibility, object_clock);
}

static void add_manipulators(const asking& a, const scene_object& object)
{
    for (uint32_t i = 0; i < std::min(object.manipulator_count, max_manipulators); ++i) {
        const manipulator_record& manipulator = object.manipulators[i];
        for (uint32_t p = 0; p < std::min(manipulator_param_count(manipulator.type), max_manipulator_params); ++p)
            add_value(a, "manipulator " + std::to_string(i + 1) + ": " + manipulators[manipulator.type].param_name[p],
                manipulator.params[p].value, manipulator.params[p].dynamic != 0, object_clock);
    }
}

static void add_mesh_effect(const asking& a, const scene_object& object)
{
    if (object.type != object_genmesh)
        return;
    const mesh_effect* effect = table_get(a.d.effect_table, resolve_scene_object(a.d, object));
    if (effect == nullptr || effect->type >= mesh_effect_kind_count)
        return;
    const effect_type_entry& entry = effect_types[effect->type];
    for (uint32_t p = 0; p < entry.param_count; ++p)
        add_function(a, std::string(entry.name) + ": " + entry.param_name[p], effect->functions[p], object_clock);
}

// ---- its materials ------------------------------------------------------------------------------------

static void add_triple(const asking& a, const std::string& before, const value_record& record, uint32_t first,
    const char* const (&names)[3])
{
    for (uint32_t i = 0; i < 3; ++i)
        add_value(a, before + names[i], record.values[first + i], value_is_dynamic(record, first + i), layer_clock);
}

constexpr const char* color_names[3] = {"red", "green", "blue"};
constexpr const char* place_names[3] = {"x", "y", "z"};

static void add_light(const asking& a, const std::string& name, uint32_t handle)
{
    const value_record* record = table_get(a.d.transform_table, handle);
    if (record == nullptr)
        return;
    add_triple(a, name + ", ambient ", *record, 0, color_names);
    add_triple(a, name + ", ", *record, 3, color_names);
    add_triple(a, name + ", ", *record, 6, place_names);
}

static void add_fog(const asking& a, const std::string& name, const material_record& material)
{
    if (material.fogtype == fog_none)
        return;
    if (const value_record* record = table_get(a.d.transform_table, material.fogcolor))
        add_triple(a, name + "fog ", *record, 3, color_names);
    add_value(a, name + "fog start", material.fogstart, material.fogstart_dynamic != 0, layer_clock);
    add_value(a, name + "fog end", material.fogend, material.fogend_dynamic != 0, layer_clock);
}

static void add_pictures(const asking& a, const std::string& name, const material_record& material)
{
    unit_plan units[texture_unit_count];
    const uint32_t count = plan_units(material, texture_tables_of(a.d), texture_unit_count, units);
    for (uint32_t i = 0; i < count; ++i) {
        const dynamic_texture* texture = table_get(a.d.dynamic_texture_table, units[i].dynamic_texture);
        if (texture == nullptr || texture->type >= effect_2d_kind_count)
            continue;
        const effect_2d_entry& entry = effects_2d[texture->type];
        for (uint32_t p = 0; p < entry.param_count; ++p)
            add_function(a, name + "picture " + std::to_string(i + 1) + ", " + entry.param_name[p],
                texture->functions[p], layer_clock);
    }
}

static void add_material(const asking& a, const std::string& name, const material_record& material)
{
    static const char* const names[4] = {"red", "green", "blue", "alpha"};
    for (uint32_t i = 0; i < 4; ++i)
        add_value(a, name + names[i], material.color[i], material.color_dynamic[i] != 0, layer_clock);
    if (material.wireframe != 0)
        add_value(a, name + "line width", material.linewidth, material.linewidth_dynamic != 0, layer_clock);
    add_light(a, name + "light 1", material.light1);
    add_light(a, name + "light 2", material.light2);
    add_fog(a, name, material);
    for (uint32_t i = 0; i < user_uniform_count && has_custom_program(material); ++i)
        add_function(a, name + "u" + std::to_string(i + 1), material.user_uniforms[i], layer_clock);
    add_pictures(a, name, material);
}

// The handles of an object's materials, each once, in the order of drawing: letters may have their own.
static std::vector<uint32_t> materials_of(const document& d, const scene_object& object)
{
    if (object.type != object_text)
        return {object.material};
    std::vector<uint32_t> handles;
    const font_record* font = table_get(d.font_table, object.font);
    placed_glyph glyphs[max_placed_glyphs];
    const uint32_t count = font == nullptr ? 0 : layout_text(object.text, *font, glyphs);
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t material = font->glyphs[glyphs[i].glyph].material;
        if (std::find(handles.begin(), handles.end(), material) == handles.end())
            handles.push_back(material);
    }
    return handles;
}

static void add_materials(const asking& a, const scene_object& object)
{
    uint32_t number = 0;
    for (const uint32_t handle : materials_of(a.d, object)) {
        const material_record* material = table_get(a.d.material_table, handle);
        if (material == nullptr)
            continue;
        ++number;
        add_material(a, number == 1 ? "material: " : "material " + std::to_string(number) + ": ", *material);
    }
}

// ---- the clip -------------------------------------------------------------------------------------------

// Documents say how the world is moved; the eye is where a source puts it.
static void add_camera(const asking& a)
{
    static const char* const names[camera_value_count]
        = {"x", "y", "z", "rotation x", "rotation y", "rotation z", "field of view", "far"};
    for (uint32_t i = 0; i < camera_value_count; ++i) {
        const uint8_t mode = a.layer.camera_mode[i];
        if (i == camera_fov ? mode == fov_dynamic : mode != 0)
            add_function(a, std::string("camera: ") + names[i], handle_of_value(a.layer.camera[i]), layer_clock,
                i <= camera_z ? -1.0f : 1.0f);
    }
}

moving_values moving_values_of(const document& d, const picked_object& picked, uint32_t tick, uint32_t samples)
{
    moving_values values;
    if (d.timeline == nullptr || picked.track >= track_count || picked.layer >= d.timeline->layer_count[picked.track])
        return values;
    const layer_record& layer = d.timeline->layers[picked.track][picked.layer];
    const uint32_t end = d.timeline->layer_end[picked.track][picked.layer];
    const uint32_t start = end - std::min(end, layer.length);
    values.from = start / ticks_per_second;
    values.to = end / ticks_per_second;
    const scene_record* scene = table_get(d.scene_table, picked.scene);
    const bool is_there = scene != nullptr && scene->objects != nullptr && picked.object < scene->object_count;
    const float offset = is_there ? scene->objects[picked.object].time_offset : 0;
    const asking a = {d, layer, start, offset, tick, samples, values};
    if (is_there) {
        const scene_object& object = scene->objects[picked.object];
        add_placement(a, object);
        add_manipulators(a, object);
        add_mesh_effect(a, object);
        add_materials(a, object);
    }
    add_camera(a);
    return values;
}
