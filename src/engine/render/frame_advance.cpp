#include "render/frame_advance.h"

#include "effects/dynamic_texture.h"
#include "effects/mesh_effect.h"
#include "model/values.h"
#include "render/material_plan.h"
#include "render/material_state.h"
#include "render/scene_plan.h"
#include "render/text.h"

#include <algorithm>
#include <cassert>
#include <cstdio>
#include <cstring>

namespace {

// What the objects of one layer share while it is advanced.
struct advancing {
    const draw_context& context;
    const layer_plan& layer;
    manipulator_tools& tools;
    placement_list& list; // of the object at hand
    frame& f;
};

// What the meshes of one object share.
struct placed_object {
    uint32_t number; // of the object in its scene, from 0
    uint32_t first_placement;
    uint32_t placement_count;
    bool facing_camera;
    bool rippled; // positions and normals come from the rippler's cache
};

} // namespace

// ---- vertices ---------------------------------------------------------------------

static size_t keep_vertices(frame& f, const float* from, uint32_t vertex_count)
{
    assert(from != nullptr);
    const size_t begin = f.vertices.size();
    f.vertices.insert(f.vertices.end(), from, from + size_t{vertex_count} * 3);
    return begin;
}

// Keeps an owner's vertices for the meshes that are to be drawn with them, before it moves on.
// Most frames show an effect once, so that nothing is ever copied.
static void keep_moved(frame& f, const void* owner)
{
    assert(owner != nullptr); // as of what is kept from the start
    for (moved_vertices& m : f.moved) {
        if (m.owner != owner)
            continue;
        m.kept_positions = keep_vertices(f, m.positions, m.vertex_count);
        if (m.normals != nullptr)
            m.kept_normals = keep_vertices(f, m.normals, m.vertex_count);
        m.owner = nullptr;
    }
}

static uint32_t add_moved(frame& f, const moved_vertices& m)
{
    assert(m.owner != nullptr ? m.positions != nullptr : m.kept_positions != not_kept);
    f.moved.push_back(m);
    return static_cast<uint32_t>(f.moved.size() - 1);
}

// `taken` vertices of the cache, then the mesh's own.
static size_t merge_vertices(frame& f, const float* cached, const float* own, uint32_t taken, uint32_t count)
{
    assert(own != nullptr && taken <= count);
    const size_t begin = keep_vertices(f, cached, taken);
    f.vertices.insert(f.vertices.end(), own + size_t{taken} * 3, own + size_t{count} * 3);
    return begin;
}

// The vertices of a mesh after the rippler: the cache's own where it has enough of them,
// otherwise copies that continue with the mesh's. no_index: the cache is empty.
static uint32_t add_rippled(frame& f, const mesh_arrays& mesh, const rippler_cache& cache)
{
    const uint32_t taken = std::min(mesh.vertex_count, cache.vertex_count);
    if (taken == 0 || cache.positions == nullptr || cache.normals == nullptr || mesh.positions == nullptr)
        return no_index;
    const bool has_normals = mesh.normals != nullptr;
    if (taken == mesh.vertex_count)
        return add_moved(
            f, {&cache, cache.positions, has_normals ? cache.normals : nullptr, taken, not_kept, not_kept, true});
    moved_vertices merged = {nullptr, nullptr, nullptr, mesh.vertex_count, not_kept, not_kept, false};
    merged.kept_positions = merge_vertices(f, cache.positions, mesh.positions, taken, mesh.vertex_count);
    if (has_normals)
        merged.kept_normals = merge_vertices(f, cache.normals, mesh.normals, taken, mesh.vertex_count);
    return add_moved(f, merged);
}

// ---- copies -----------------------------------------------------------------------

static void manipulate_copies(
    const advancing& a, const manipulator_record& manipulator, uint32_t time, const mesh_arrays* mesh, bool& rippled)
{
    const document& d = *a.context.d;
    float params[max_manipulator_params] = {};
    for (uint32_t p = 0; p < std::min(manipulator_param_count(manipulator.type), max_manipulator_params); ++p)
        params[p] = value_at(d.function_table, manipulator.params[p], time);
    if (manipulator.type == manipulator_rippler && mesh != nullptr) {
        keep_moved(a.f, &a.tools.rippler);
        rippled = true;
    }
    apply_manipulator(a.list, manipulator.type, params, mesh, manipulator_mesh(manipulator, d), a.tools);
}

// The object's placements after its manipulators, in order. `mesh` is what the object
// draws; null for texts, which no rippler deforms.
static placed_object place_object(
    const advancing& a, const scene_record& scene, uint32_t number, uint32_t time, const mesh_arrays* mesh)
{
    scene_object& object = scene.objects[number];
    placed_object placed
        = {number, static_cast<uint32_t>(a.f.placements.size()), 1, faces_camera(scene, number), false};
    if (object.manipulator_count == 0) { // most have none: no list is needed
        a.f.placements.push_back(object_placement(object, a.context.d->function_table, time));
        return placed;
    }
    a.list.items.clear();
    a.list.cut = false;
    a.list.items.push_back(object_placement(object, a.context.d->function_table, time));
    for (uint32_t i = 0; i < std::min(object.manipulator_count, max_manipulators); ++i)
        manipulate_copies(a, object.manipulators[i], time, mesh, placed.rippled);
    if (a.list.cut && object.copies_cut == copies_all)
        object.copies_cut = copies_cut_now;
    assert(a.list.items.size() <= max_placements);
    placed.placement_count = static_cast<uint32_t>(a.list.items.size());
    a.f.placements.insert(a.f.placements.end(), a.list.items.begin(), a.list.items.end());
    return placed;
}

// ---- pictures ---------------------------------------------------------------------

// Most materials have none: they need not be looked through unit by unit.
static bool may_have_moving_pictures(const material_record& material, const document& d)
{
    for (const uint32_t reference : material.texture)
        if (const object_reference* object = table_get(d.object_table, reference))
            if (object->type == texture_dynamic)
                return true;
    return false;
}

// Brings the moving pictures of a material up to date, in the order of its units.
static void refresh_pictures(const advancing& a, const material_record& material)
{
    document& d = *a.context.d;
    if (!may_have_moving_pictures(material, d))
        return;
    unit_plan units[texture_unit_count];
    const uint32_t limit = unit_limit(a.context.caps, a.context.glsl);
    const uint32_t count = plan_units(material, texture_tables_of(d), limit, units);
    for (uint32_t i = 0; i < count; ++i) {
        dynamic_texture* texture = table_get(d.dynamic_texture_table, units[i].dynamic_texture);
        if (texture == nullptr)
            continue;
        const size_t begin = a.f.pixels.size();
        if (update_dynamic_texture(*texture, d.function_table, a.layer.time, a.f.pixels))
            a.f.pictures.push_back({texture, begin});
    }
}

// ---- meshes -----------------------------------------------------------------------

// Asks the material's functions in drawing order. Meshes in a row that are told the same share it.
static uint32_t add_numbers(const advancing& a, const material_record& material)
{
    const material_numbers numbers = evaluate_material(material, *a.context.d, a.layer.time, a.context.glsl);
    if (a.f.numbers.empty() || std::memcmp(&a.f.numbers.back(), &numbers, sizeof numbers) != 0)
        a.f.numbers.push_back(numbers);
    return static_cast<uint32_t>(a.f.numbers.size() - 1);
}

static void add_mesh(const advancing& a, mesh_arrays& mesh, const material_record* material,
    const placed_object& placed, uint32_t moved, float pen)
{
    assert(size_t{placed.first_placement} + placed.placement_count <= a.f.placements.size());
    assert(moved == no_index || moved < a.f.moved.size());
    const uint32_t fresh = static_cast<uint32_t>(a.f.pictures.size());
    uint32_t numbers = no_index;
    if (material != nullptr) {
        refresh_pictures(a, *material);
        numbers = add_numbers(a, *material);
    }
    a.f.meshes.push_back({
        .mesh = &mesh,
        .material = material,
        .numbers = numbers,
        .first_placement = placed.first_placement,
        .placement_count = placed.placement_count,
        .pen = pen,
        .facing_camera = placed.facing_camera,
        .moved = moved,
        .fresh = fresh,
        .fresh_count = static_cast<uint32_t>(a.f.pictures.size()) - fresh,
        .object = placed.number,
    });
}

// Needs both an object and a material.
static void advance_model_object(const advancing& a, const scene_record& scene, uint32_t number, uint32_t time)
{
    const document& d = *a.context.d;
    const scene_object& object = scene.objects[number];
    const material_record* material = table_get(d.material_table, object.material);
    if (object.object == 0 || material == nullptr)
        return;
    mesh_record* mesh = table_get(d.mesh_table, resolve_scene_object(d, object));
    if (mesh == nullptr)
        return;
    const placed_object placed = place_object(a, scene, number, time, &mesh->arrays);
    const uint32_t moved = placed.rippled ? add_rippled(a.f, mesh->arrays, a.tools.rippler) : no_index;
    add_mesh(a, mesh->arrays, material, placed, moved, 0.0f);
}

static uint32_t add_effect_vertices(frame& f, const mesh_arrays& mesh)
{
    if (mesh.positions == nullptr)
        return no_index;
    return add_moved(f, {&mesh, mesh.positions, mesh.normals, mesh.vertex_count, not_kept, not_kept, false});
}

// Needs an object only; without a material the state stays as it stands.
static void advance_genmesh_object(const advancing& a, const scene_record& scene, uint32_t number, uint32_t time)
{
    const document& d = *a.context.d;
    const scene_object& object = scene.objects[number];
    if (object.object == 0)
        return;
    const uint32_t handle = resolve_scene_object(d, object);
    mesh_effect* effect = table_get(d.effect_table, handle);
    if (effect == nullptr)
        return;
    keep_moved(a.f, &effect->mesh);
    update_mesh_effect(handle, d.effect_table, d.function_table, time);
    const placed_object placed = place_object(a, scene, number, time, &effect->mesh);
    uint32_t moved = placed.rippled ? add_rippled(a.f, effect->mesh, a.tools.rippler) : no_index;
    if (moved == no_index)
        moved = add_effect_vertices(a.f, effect->mesh);
    add_mesh(a, effect->mesh, table_get(d.material_table, object.material), placed, moved, 0.0f);
}

// A letter with the material of the one before, whose functions have been asked twice now: they would say what they
// said then, and no picture would move again.
static void add_letter_alike(frame& f, mesh_arrays& mesh, float pen)
{
    assert(!f.meshes.empty());
    mesh_to_draw letter = f.meshes.back();
    letter.mesh = &mesh;
    letter.pen = pen;
    f.meshes.push_back(letter);
}

static void advance_text_object(const advancing& a, const scene_record& scene, uint32_t number, uint32_t time)
{
    const document& d = *a.context.d;
    const scene_object& object = scene.objects[number];
    const font_record* font = table_get(d.font_table, object.font);
    if (font == nullptr || object.text[0] == '\0')
        return;
    const placed_object placed = place_object(a, scene, number, time, nullptr);
    placed_glyph glyphs[max_placed_glyphs];
    const uint32_t count = layout_text(object.text, *font, glyphs);
    uint32_t standing = 0; // the material of the letter before
    uint32_t asked = 0;    // for how many letters in a row
    for (uint32_t i = 0; i < count; ++i) {
        const glyph_record& glyph = font->glyphs[glyphs[i].glyph];
        mesh_record* mesh = table_get(d.mesh_table, glyph.model);
        if (mesh == nullptr)
            continue;
        asked = glyph.material == standing ? asked : 0;
        standing = glyph.material;
        if (asked == 2) {
            add_letter_alike(a.f, mesh->arrays, glyphs[i].pen);
            continue;
        }
        add_mesh(a, mesh->arrays, table_get(d.material_table, standing), placed, no_index, glyphs[i].pen);
        ++asked;
    }
}

static void advance_object(const advancing& a, const scene_record& scene, uint32_t number)
{
    assert(scene.objects != nullptr && number < scene.object_count);
    const scene_object& object = scene.objects[number];
    const uint32_t time = object_time(a.layer.time, object.time_offset);
    if (!object_is_visible(object, a.context.d->function_table, time))
        return;
    switch (static_cast<object_kind>(object.type)) {
    case object_model:
        return advance_model_object(a, scene, number, time);
    case object_genmesh:
        return advance_genmesh_object(a, scene, number, time);
    case object_text:
        return advance_text_object(a, scene, number, time);
    case object_kind_count:
        break;
    }
    // beyond the catalogue: nothing is drawn
}

// Says once for an object that some of its copies are left out.
static void tell_cut_copies(const document& d, uint32_t scene_handle, scene_object& object, uint32_t number)
{
    if (object.copies_cut != copies_cut_now)
        return;
    object.copies_cut = copies_cut_told;
    std::fprintf(stderr, "%s\n", cut_copies_line(d, scene_handle, number).c_str());
}

void advance_layer(const layer_plan& layer, const draw_context& context, manipulator_tools& tools, frame& f)
{
    assert(context.d != nullptr);
    const scene_record* scene = table_get(context.d->scene_table, layer.model_id);
    if (scene == nullptr || scene->objects == nullptr)
        return;
    const advancing a = {context, layer, tools, tools.list, f};
    for (uint32_t number = 0; number < scene->object_count; ++number) {
        advance_object(a, *scene, number);
        tell_cut_copies(*context.d, layer.model_id, scene->objects[number], number);
    }
}

void advance_frame(const frame_layers& layers, const draw_context& context, renderer& r, frame_cost_record* costs)
{
    assert(layers.layer_count <= track_count);
    clear_advanced(r.f);
    if (costs != nullptr)
        costs->layer_count = layers.layer_count;
    for (uint32_t i = 0; i < layers.layer_count; ++i) {
        const auto begin = start_cost(costs);
        advance_layer(layers.layers[i], context, r.tools, r.f);
        r.f.mesh_end[i] = static_cast<uint32_t>(r.f.meshes.size());
        if (costs != nullptr)
            costs->layers[i] = {layers.layers[i].track, 0.0};
        add_cost(costs, i, begin);
    }
}
