#include "render/warming.h"

#include "content/matrix.h"
#include "model/render_modes.h"
#include "model/timeline.h"
#include "render/material_state.h"
#include "render/text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <set>

// Of a camera that turns: a driver may know a matrix that turns nothing, and leave it out.
constexpr float stand_in_angle = 1.0f;

constexpr uint16_t no_size[3] = {0, 0, 0}; // a triangle, or a line, of one vertex

namespace {

// What makes two draws two to a driver. Numbers of materials and of meshes stand in, so they are the same for all.
using drawing_way = std::array<uint32_t, 16 + texture_unit_count * 26>;

// What shows in one moment: of each layer its scene and how it is seen.
using moment_look = std::vector<uint32_t>;

struct warming {
    const draw_context& context;
    standing_state standing;
    std::span<const warmed_target> targets;
    frame& f;
    std::set<drawing_way> known;
    uint32_t looks; // meshes that were looked at
};

// A layer as its meshes are drawn.
struct warmed_layer {
    uint32_t scene;  // handle of scene_table
    uint32_t target; // handle of image_texture_table; 0: none of its own
    bool depth_test;
    float camera_angles[2]; // about y, about x
};

} // namespace

// ---- moments ------------------------------------------------------------------------

// Where a layer of a track may begin or end: at its own times, and at whole seconds, from which layers are searched.
static std::vector<uint32_t> moments_of_change(const timeline& t)
{
    std::vector<uint32_t> moments;
    for (uint32_t second = 0; second < slots_per_track; ++second)
        moments.push_back(second * 100);
    for (uint32_t track = 0; track < track_count; ++track) {
        uint32_t before = 0;
        for (uint32_t layer = 0; layer < std::min(t.layer_count[track], layers_per_track); ++layer) {
            moments.push_back(before + t.layers[track][layer].space_before);
            moments.push_back(t.layer_end[track][layer] + 1);
            before = t.layer_end[track][layer];
        }
    }
    std::sort(moments.begin(), moments.end());
    moments.erase(std::unique(moments.begin(), moments.end()), moments.end());
    return moments;
}

static float camera_angle(const layer_record& layer, camera_value value)
{
    return layer.camera_mode[value] != 0 ? stand_in_angle : layer.camera[value];
}

static std::vector<warmed_layer> layers_at(const timeline& t, uint32_t time)
{
    std::vector<warmed_layer> layers;
    for (uint32_t track = 0; track < track_count; ++track) {
        const active_layer active = find_layer(t, track, time);
        if (!active.found)
            continue;
        const layer_record& layer = t.layers[track][active.layer];
        const bool into_texture = render_mode_of(layer.type).target == mode_draws_to_texture;
        layers.push_back(
            {layer.model_id, into_texture ? layer.rtex : 0, layer.camera_mode[camera_fov] != fov_orthographic,
                {camera_angle(layer, camera_rotation_y), camera_angle(layer, camera_rotation_x)}});
    }
    return layers;
}

static moment_look look_of(const std::vector<warmed_layer>& layers)
{
    moment_look look;
    for (const warmed_layer& layer : layers) {
        look.push_back(layer.scene);
        look.push_back(layer.target);
        look.push_back(layer.depth_test);
        for (const float angle : layer.camera_angles)
            look.push_back(std::bit_cast<uint32_t>(angle));
    }
    return look;
}

// ---- ways of drawing ------------------------------------------------------------------

static uint32_t* add_unit(const unit_state& unit, uint32_t* to)
{
    for (const uint32_t word : {uint32_t{unit.used}, uint32_t{unit.on}, uint32_t{unit.cube_map},
             uint32_t{unit.mesh_coordinates}, uint32_t{unit.wrap}, uint32_t{unit.coordinates},
             uint32_t{unit.combine_mode}, unit.flat_texture, unit.cube_texture})
        *to++ = word;
    for (const float number : unit.matrix)
        *to++ = std::bit_cast<uint32_t>(number);
    return to;
}

static uint32_t kind_of(const array_source& array)
{
    return array.buffer != 0 ? 2 : array.data != nullptr;
}

static drawing_way way_of(const draw_command& draw, const standing_state& standing)
{
    const material_state& state = standing.material;
    drawing_way way = {};
    uint32_t* to = way.data();
    for (const uint32_t word :
        {uint32_t{state.applied}, uint32_t{state.depth_test}, uint32_t{state.cull_back}, uint32_t{state.normalize},
            uint32_t{state.wireframe}, uint32_t{state.lights}, uint32_t{state.blending}, uint32_t{state.fog_type},
            std::bit_cast<uint32_t>(state.line_width), draw.program == no_index ? 0 : standing.program.program,
            uint32_t{draw.lines}, kind_of(draw.positions), kind_of(draw.normals)})
        *to++ = word;
    for (const array_source& coordinates : draw.coordinates)
        *to++ = kind_of(coordinates);
    for (const unit_state& unit : state.units)
        to = add_unit(unit, to);
    assert(to <= way.data() + way.size());
    return way;
}

// ---- materials --------------------------------------------------------------------------

static material_numbers stand_in_numbers(const material_record& material, const document& d, bool glsl)
{
    material_numbers numbers = {};
    if (material.wireframe != 0)
        numbers.line_width = material.linewidth_dynamic != 0 ? 1.0f : material.linewidth;
    std::fill_n(numbers.color, 4, 1.0f);
    numbers.fog = {{1.0f, 1.0f, 1.0f}, 0.0f, 1.0f};
    const bool has_first = table_get(d.transform_table, material.light1) != nullptr;
    numbers.has_light[0] = has_first;
    numbers.has_light[1] = (has_first || glsl) && table_get(d.transform_table, material.light2) != nullptr;
    return numbers;
}

static void apply_material(warming& w, const warmed_layer& layer, const material_record& material)
{
    const document& d = *w.context.d;
    const material_context context = {&d, &w.context.caps, {layer.camera_angles[0], layer.camera_angles[1]}, identity};
    const material_numbers numbers = stand_in_numbers(material, d, w.context.glsl);
    if (w.context.glsl)
        apply_material_glsl(material, numbers, context, w.standing);
    else
        apply_material_fixed(material, numbers, context, w.standing);
}

// ---- meshes -------------------------------------------------------------------------------

static array_source source_of(const warming& w, const void* data, uint32_t buffer)
{
    return w.context.caps.vbo == 1 && buffer != 0 ? array_source{nullptr, buffer, false} : array_source{data, 0, false};
}

static draw_command draw_of(const warming& w, const mesh_arrays& mesh, const material_record* material)
{
    const bool by_program = w.context.glsl && w.standing.program.status == program_ready;
    draw_command draw = {};
    draw.material = static_cast<uint32_t>(w.f.materials.size());
    draw.program = by_program ? static_cast<uint32_t>(w.f.programs.size()) : no_index;
    draw.positions = source_of(w, mesh.positions, mesh.position_buffer);
    draw.normals = source_of(w, mesh.normals, mesh.normal_buffer);
    const uint32_t sets = std::min(mesh.texcoord_sets, max_texcoord_sets);
    for (uint32_t unit = 0; unit < texture_unit_count && sets > 0; ++unit) {
        const uint32_t set = unit < sets ? unit : 0;
        draw.coordinates[unit] = source_of(w, mesh.texcoords[set], mesh.texcoord_buffer[set]);
    }
    draw.lines = by_program && material != nullptr && material->wireframe != 0;
    draw.indices.data = no_size;
    draw.index_count = draw.lines ? 2 : 3;
    draw.copy_count = 1;
    return draw;
}

// The same as drawing decides: a mesh without triangles only applies its material, and a program that did not build
// draws nothing.
static void look_at_mesh(
    warming& w, const warmed_layer& layer, const mesh_arrays& mesh, const material_record* material)
{
    ++w.looks;
    if (material != nullptr)
        apply_material(w, layer, *material);
    const bool has_triangles
        = mesh.vertex_count != 0 && mesh.positions != nullptr && mesh.index_count != 0 && mesh.indices != nullptr;
    if (!has_triangles || (w.context.glsl && w.standing.program.status == program_failed))
        return;
    const draw_command draw = draw_of(w, mesh, material);
    if (!w.known.insert(way_of(draw, w.standing)).second)
        return;
    w.f.materials.push_back(w.standing.material);
    if (w.context.glsl)
        w.f.programs.push_back(w.standing.program);
    w.f.draws.push_back(draw);
}

// ---- objects --------------------------------------------------------------------------------

static void look_at_model(warming& w, const warmed_layer& layer, const scene_object& object)
{
    const document& d = *w.context.d;
    const material_record* material = table_get(d.material_table, object.material);
    if (object.object == 0 || material == nullptr)
        return;
    if (const mesh_record* mesh = table_get(d.mesh_table, resolve_scene_object(d, object)))
        look_at_mesh(w, layer, mesh->arrays, material);
}

static void look_at_effect(warming& w, const warmed_layer& layer, const scene_object& object)
{
    const document& d = *w.context.d;
    if (object.object == 0)
        return;
    if (const mesh_effect* effect = table_get(d.effect_table, resolve_scene_object(d, object)))
        look_at_mesh(w, layer, effect->mesh, table_get(d.material_table, object.material));
}

static void look_at_text(warming& w, const warmed_layer& layer, const scene_object& object)
{
    const document& d = *w.context.d;
    const font_record* font = table_get(d.font_table, object.font);
    if (font == nullptr || object.text[0] == '\0')
        return;
    placed_glyph glyphs[max_placed_glyphs];
    const uint32_t count = layout_text(object.text, *font, glyphs);
    for (uint32_t i = 0; i < count; ++i) {
        const glyph_record& glyph = font->glyphs[glyphs[i].glyph];
        if (const mesh_record* mesh = table_get(d.mesh_table, glyph.model))
            look_at_mesh(w, layer, mesh->arrays, table_get(d.material_table, glyph.material));
    }
}

static void look_at_object(warming& w, const warmed_layer& layer, const scene_object& object)
{
    switch (static_cast<object_kind>(object.type)) {
    case object_model:
        return look_at_model(w, layer, object);
    case object_genmesh:
        return look_at_effect(w, layer, object);
    case object_text:
        return look_at_text(w, layer, object);
    case object_kind_count:
        break;
    }
    // beyond the catalogue: nothing is drawn
}

static void lend_target(const warming& w, uint32_t handle)
{
    for (const warmed_target& target : w.targets)
        if (target.texture == handle)
            table_get(w.context.d->image_texture_table, handle)->texture = target.lent;
}

static void look_at_layer(warming& w, const warmed_layer& layer)
{
    lend_target(w, layer.target);
    w.standing.material.depth_test = layer.depth_test;
    const scene_record* scene = table_get(w.context.d->scene_table, layer.scene);
    if (scene == nullptr || scene->objects == nullptr)
        return;
    for (uint32_t number = 0; number < scene->object_count && w.looks < max_warming_looks; ++number)
        look_at_object(w, layer, scene->objects[number]);
}

// ---- the whole --------------------------------------------------------------------------------

static void look_at_moments(warming& w, const timeline& t)
{
    std::set<moment_look> seen;
    for (const uint32_t moment : moments_of_change(t)) {
        if (timeline_is_over(t, moment) || w.looks >= max_warming_looks)
            return;
        const std::vector<warmed_layer> layers = layers_at(t, moment);
        if (!seen.insert(look_of(layers)).second)
            continue;
        for (uint32_t frames = 0; frames < 2; ++frames) // the first frame after others, and those after it
            for (const warmed_layer& layer : layers)
                look_at_layer(w, layer);
    }
}

static std::vector<uint32_t> textures_of(const document& d, std::span<const warmed_target> targets)
{
    std::vector<uint32_t> textures;
    for (const warmed_target& target : targets)
        textures.push_back(table_get(d.image_texture_table, target.texture)->texture);
    return textures;
}

void plan_warming(
    const draw_context& context, const standing_state& standing, std::span<const warmed_target> targets, frame& f)
{
    assert(context.d != nullptr && f.draws.empty() && f.materials.empty() && f.programs.empty());
    if (context.d->timeline == nullptr)
        return;
    warming w = {context, standing, targets, f, {}, 0};
    const std::vector<uint32_t> own = textures_of(*context.d, targets);
    look_at_moments(w, *context.d->timeline);
    for (size_t i = 0; i < targets.size(); ++i)
        table_get(context.d->image_texture_table, targets[i].texture)->texture = own[i];
    f.views.push_back({});
    copy_matrix(identity, f.views[0].projection);
    copy_matrix(identity, f.views[0].camera);
    f.copies.push_back({{}, {1, 0, 0, 0, 1, 0, 0, 0, 1}});
    copy_matrix(identity, f.copies[0].modelview);
}

// ---- targets ----------------------------------------------------------------------------------

static bool is_among(const std::vector<warmed_target>& targets, uint32_t texture)
{
    return std::any_of(
        targets.begin(), targets.end(), [texture](const warmed_target& target) { return target.texture == texture; });
}

static void add_target(const document& d, const layer_record& layer, const frame_view& view, const gl_caps& caps,
    std::vector<warmed_target>& targets)
{
    const image_texture* texture = table_get(d.image_texture_table, layer.rtex);
    if (render_mode_of(layer.type).target != mode_draws_to_texture || texture == nullptr
        || is_among(targets, layer.rtex))
        return;
    const target_fit fit = fit_target(layer, texture->width, texture->height, view, caps);
    targets.push_back({layer.rtex, fit.width, fit.height, fit.recreate ? recreated_target_format : texture->format, 0});
}

std::vector<warmed_target> find_warmed_targets(const document& d, const frame_view& view, const gl_caps& caps)
{
    std::vector<warmed_target> targets;
    if (d.timeline == nullptr)
        return targets;
    for (uint32_t track = 0; track < track_count; ++track)
        for (uint32_t layer = 0; layer < std::min(d.timeline->layer_count[track], layers_per_track); ++layer)
            if (d.timeline->layer_end[track][layer] != 0)
                add_target(d, d.timeline->layers[track][layer], view, caps, targets);
    return targets;
}
