#include "tools/preview/remembering.h"

#include "tools/frames/frame_clock.h"
#include "tools/frames/frame_needs.h"

#include <algorithm>

constexpr uint64_t longest_look = 600; // frames that are looked ahead for what becomes of a target

// ---- what is remembered ---------------------------------------------------------------------------

static bool ripples(const scene_object& object)
{
    const uint32_t count = std::min(object.manipulator_count, max_manipulators);
    return std::any_of(object.manipulators, object.manipulators + count,
        [](const manipulator_record& manipulator) { return manipulator.type == manipulator_rippler; });
}

static bool has_bare_glyphs(const document& d, const scene_object& object)
{
    const font_record* font = table_get(d.font_table, object.font);
    return font != nullptr
        && std::any_of(std::begin(font->glyphs), std::end(font->glyphs), [&](const glyph_record& glyph) {
               return glyph.model != 0 && table_get(d.material_table, glyph.material) == nullptr;
           });
}

static bool is_bare(const document& d, const scene_object& object)
{
    if (object.type == object_text)
        return has_bare_glyphs(d, object);
    return object.type == object_genmesh && table_get(d.material_table, object.material) == nullptr;
}

static void look_at_scenes(const document& d, remembering& found)
{
    for (auto [handle, scene] : d.scene_table)
        for (uint32_t i = 0; scene.objects != nullptr && i < scene.object_count; ++i) {
            found.moves |= ripples(scene.objects[i]);
            found.bare |= is_bare(d, scene.objects[i]);
        }
}

// An unknown formula gives 1 once and then what was answered before.
static bool is_odd(const animation_function& function)
{
    const uint32_t count = std::min<uint32_t>(function.segment_count, max_segments);
    return std::any_of(function.segment_type, function.segment_type + count,
        [](int32_t type) { return type < 0 || type >= segment_kind_count; });
}

remembering what_is_remembered(const document& d)
{
    remembering found;
    found.moves = table_count(d.effect_table) != 0;
    for (auto [handle, texture] : d.dynamic_texture_table)
        found.moves |= texture.type == effect_2d_amoba;
    look_at_scenes(d, found);
    for (auto [handle, function] : d.function_table)
        if (is_odd(function))
            found.odd_functions.push_back(handle);
    found.targets = render_targets(d);
    for (auto [handle, material] : d.material_table)
        for (uint32_t unit = 0; unit < texture_unit_count; ++unit)
            if (material.texture[unit] != 0)
                found.units = std::max(found.units, unit + 1);
    return found;
}

std::vector<kept_function> keep_functions(const document& d, const std::vector<uint32_t>& handles)
{
    std::vector<kept_function> kept;
    for (const uint32_t handle : handles)
        if (const animation_function* function = table_get(d.function_table, handle))
            kept.push_back({handle, function->cached_value, function->cached_time});
    return kept;
}

void put_functions(const document& d, const std::vector<kept_function>& functions)
{
    for (const kept_function& kept : functions)
        if (animation_function* function = table_get(d.function_table, kept.handle)) {
            function->cached_value = kept.value;
            function->cached_time = kept.time;
        }
}

// ---- single frames ------------------------------------------------------------------------------------

pixel_needs make_pixel_needs(const document& d, const std::vector<uint32_t>& targets, const frame_view& view,
    const gl_caps& caps, frame_rate rate, uint64_t end)
{
    pixel_needs n;
    n.d = d;
    n.view = view;
    n.caps = caps;
    n.rate = rate;
    n.end = end;
    n.targets = targets;
    n.events.resize(targets.size());
    return n;
}

static frame_layers layers_at(const pixel_needs& n, uint64_t frame)
{
    return plan_layers(n.d, tick_of_frame(frame, n.rate), n.view, n.caps);
}

static bool clears_all(const frame_layers& layers)
{
    return layers.layer_count != 0 && layers.layers[0].clear == (clear_color | clear_depth);
}

bool shows_through(const pixel_needs& n, uint64_t frame)
{
    return !clears_all(layers_at(n, frame));
}

static const std::vector<uint32_t>& shown_by(pixel_needs& n, uint32_t scene)
{
    const auto [place, is_new] = n.scenes.try_emplace(scene);
    if (is_new)
        place->second = targets_of_scene(n.d, scene, n.targets);
    return place->second;
}

static bool shows(pixel_needs& n, const layer_plan& layer, uint32_t target)
{
    const std::vector<uint32_t>& shown = shown_by(n, layer.model_id);
    return std::binary_search(shown.begin(), shown.end(), target);
}

// ---- looking ahead ------------------------------------------------------------------------------------

// A layer first copies what was drawn so far into a target, and then shows its scene.
static bool look_at_frame(pixel_needs& n, uint32_t target, uint64_t frame, target_event& event)
{
    const frame_layers layers = layers_at(n, frame);
    for (uint32_t i = 0; i < layers.layer_count && !event.found; ++i) {
        event.found = layers.layers[i].flush_texture == target;
        if (!event.found && shows(n, layers.layers[i], target))
            event.found = event.shown = true;
    }
    return event.found;
}

// Whether a target's pixels may be seen from `frame` on. What was found out of the frames before holds further.
static bool is_awaited(pixel_needs& n, size_t index, uint64_t frame)
{
    target_event& event = n.events[index];
    if (frame < event.looked_from || frame > event.looked_to)
        event = {frame, frame, false, false};
    while (!event.found && event.looked_to < std::min(frame + longest_look, n.end))
        if (!look_at_frame(n, n.targets[index], event.looked_to, event))
            ++event.looked_to;
    if (event.found)
        return event.shown;
    return event.looked_to < n.end;
}

std::vector<bool> awaited_targets(pixel_needs& n, uint64_t frame)
{
    std::vector<bool> awaited(n.targets.size());
    for (size_t i = 0; i < n.targets.size(); ++i)
        awaited[i] = is_awaited(n, i, frame);
    return awaited;
}

// ---- going back ---------------------------------------------------------------------------------------

static size_t index_of(const pixel_needs& n, uint32_t target)
{
    const auto found = std::lower_bound(n.targets.begin(), n.targets.end(), target);
    return found != n.targets.end() && *found == target ? static_cast<size_t>(found - n.targets.begin()) : SIZE_MAX;
}

static bool draws_awaited(const pixel_needs& n, const frame_layers& layers, const std::vector<bool>& awaited)
{
    return std::any_of(layers.layers, layers.layers + layers.layer_count, [&](const layer_plan& layer) {
        const size_t index = index_of(n, layer.flush_texture);
        return index != SIZE_MAX && awaited[index];
    });
}

// What must be there before a frame that is drawn.
static void go_back_over(pixel_needs& n, const frame_layers& layers, std::vector<bool>& awaited)
{
    for (uint32_t i = layers.layer_count; i-- > 0;) {
        for (const uint32_t target : shown_by(n, layers.layers[i].model_id))
            awaited[index_of(n, target)] = true;
        if (const size_t index = index_of(n, layers.layers[i].flush_texture); index != SIZE_MAX)
            awaited[index] = false;
    }
}

std::vector<bool> passed_with_pixels(pixel_needs& n, uint64_t from, uint64_t to)
{
    std::vector<bool> pixels(to > from ? to - from : 0);
    std::vector<bool> awaited = awaited_targets(n, to);
    bool through = to < n.end && shows_through(n, to);
    for (uint64_t frame = to; frame-- > from;) {
        const frame_layers layers = layers_at(n, frame);
        pixels[frame - from] = through || draws_awaited(n, layers, awaited);
        if (!pixels[frame - from])
            continue;
        go_back_over(n, layers, awaited);
        through = !clears_all(layers);
    }
    return pixels;
}
