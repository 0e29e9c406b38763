#include "tools/frames/frame_needs.h"

#include "tools/frames/frame_clock.h"

#include <algorithm>
#include <iterator>
#include <unordered_map>

namespace {

using texture_set = std::vector<uint32_t>; // handles, ascending

} // namespace

// ---- what scenes show ----------------------------------------------------------------------

std::vector<uint32_t> render_targets(const document& d)
{
    texture_set targets;
    for (uint32_t track = 0; d.timeline != nullptr && track < track_count; ++track)
        for (uint32_t layer = 0; layer < std::min(d.timeline->layer_count[track], layers_per_track); ++layer)
            if (d.timeline->layers[track][layer].rtex != 0)
                targets.push_back(d.timeline->layers[track][layer].rtex);
    std::sort(targets.begin(), targets.end());
    targets.erase(std::unique(targets.begin(), targets.end()), targets.end());
    return targets;
}

static void add(texture_set& set, const texture_set& more)
{
    texture_set both;
    std::set_union(set.begin(), set.end(), more.begin(), more.end(), std::back_inserter(both));
    set = std::move(both);
}

static bool contains(const texture_set& set, uint32_t texture)
{
    return std::binary_search(set.begin(), set.end(), texture);
}

static void add_targets_of_material(const document& d, uint32_t handle, const texture_set& targets, texture_set& shown)
{
    const material_record* material = table_get(d.material_table, handle);
    if (material == nullptr)
        return add(shown, targets);
    for (const uint32_t texture : material->texture) {
        const auto* reference = table_get(d.object_table, texture);
        if (reference != nullptr && reference->type == texture_image && contains(targets, reference->id))
            add(shown, {reference->id});
    }
}

std::vector<uint32_t> targets_of_scene(const document& d, uint32_t scene, const std::vector<uint32_t>& targets)
{
    texture_set shown;
    const scene_record* record = table_get(d.scene_table, scene);
    for (uint32_t i = 0; record != nullptr && record->objects != nullptr && i < record->object_count; ++i) {
        const scene_object& object = record->objects[i];
        const font_record* font = table_get(d.font_table, object.font);
        if (object.type != object_text)
            add_targets_of_material(d, object.material, targets, shown);
        else if (font != nullptr)
            for (const glyph_record& glyph : font->glyphs)
                add_targets_of_material(d, glyph.material, targets, shown);
    }
    return shown;
}

// ---- what frames need ------------------------------------------------------------------------

namespace {

// Goes through the frames from the last to the first.
struct needs {
    const document& d;
    texture_set targets;
    std::unordered_map<uint32_t, texture_set> scenes; // what each shows, as far as it was asked
    texture_set awaited;                              // textures that a later frame shows as they are now
    bool shows_through;                               // into a later frame that needs its pixels
};

} // namespace

static const texture_set& shown_by(needs& n, uint32_t scene)
{
    const auto [place, is_new] = n.scenes.try_emplace(scene);
    if (is_new)
        place->second = targets_of_scene(n.d, scene, n.targets);
    return place->second;
}

static bool draws_what_is_awaited(const needs& n, const frame_layers& plan)
{
    return std::any_of(plan.layers, plan.layers + plan.layer_count,
        [&n](const layer_plan& layer) { return contains(n.awaited, layer.flush_texture); });
}

// A layer first copies what was drawn so far into a texture, and then shows its scene.
static void go_back_over(needs& n, const frame_layers& plan)
{
    for (uint32_t i = plan.layer_count; i-- > 0;) {
        const layer_plan& layer = plan.layers[i];
        add(n.awaited, shown_by(n, layer.model_id));
        std::erase(n.awaited, layer.flush_texture);
    }
    n.shows_through = plan.layer_count == 0 || plan.layers[0].clear != (clear_color | clear_depth);
}

std::vector<bool> frames_with_pixels(const document& d, const frame_view& view, const gl_caps& caps, frame_rate rate,
    const std::vector<uint64_t>& wanted)
{
    std::vector<bool> pixels(wanted.empty() ? 0 : wanted.back() + 1);
    needs n = {d, render_targets(d), {}, {}, false};
    size_t next = wanted.size();
    for (uint64_t frame = pixels.size(); frame-- > 0;) {
        const frame_layers plan = plan_layers(d, tick_of_frame(frame, rate), view, caps);
        const bool is_wanted = next > 0 && wanted[next - 1] == frame;
        next -= is_wanted ? 1 : 0;
        pixels[frame] = is_wanted || n.shows_through || draws_what_is_awaited(n, plan);
        if (pixels[frame])
            go_back_over(n, plan);
    }
    return pixels;
}
