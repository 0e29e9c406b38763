#include "tiles.h"

#include "effects/effect_2d.h"
#include "effects/manipulator.h"

#include <algorithm>
#include <iterator>
#include <span>

std::vector<frame_tile> plan_tiles(uint32_t width, uint32_t height, uint32_t side_x, uint32_t side_y)
{
    std::vector<frame_tile> tiles;
    for (uint32_t y = 0; y < height; y += std::min(side_y, height - y))
        for (uint32_t x = 0; x < width; x += std::min(side_x, width - x))
            tiles.push_back({x, y, std::min(side_x, width - x), std::min(side_y, height - y)});
    return tiles;
}

// ---- what cannot be tiled --------------------------------------------------------------------

// The image textures that any layer of the production draws into.
static std::vector<uint32_t> render_targets(const timeline& tracks)
{
    std::vector<uint32_t> targets;
    for (uint32_t track = 0; track < track_count; ++track)
        for (uint32_t layer = 0; layer < std::min(tracks.layer_count[track], layers_per_track); ++layer)
            if (tracks.layers[track][layer].rtex != 0)
                targets.push_back(tracks.layers[track][layer].rtex);
    return targets;
}

static bool material_shows(const document& d, uint32_t handle, const std::vector<uint32_t>& targets)
{
    const material_record* material = table_record<material_record>(d.material_table, handle);
    for (uint32_t unit = 0; material != nullptr && unit < texture_unit_count; ++unit) {
        const auto* reference = table_record<object_reference>(d.object_table, material->texture[unit]);
        if (reference != nullptr && reference->type == texture_image
            && std::find(targets.begin(), targets.end(), reference->id) != targets.end())
            return true;
    }
    return false;
}

static bool object_shows(const document& d, const scene_object& object, const std::vector<uint32_t>& targets)
{
    const font_record* font
        = object.type == object_text ? table_record<font_record>(d.font_table, object.font) : nullptr;
    if (font == nullptr)
        return material_shows(d, object.material, targets);
    return std::any_of(std::begin(font->glyphs), std::end(font->glyphs),
        [&](const glyph_record& glyph) { return material_shows(d, glyph.material, targets); });
}

// The textures keep what an earlier frame drew, and an earlier frame was not drawn at this size.
static bool scene_shows(const document& d, uint32_t handle, const std::vector<uint32_t>& targets)
{
    const scene_record* scene = table_record<scene_record>(d.scene_table, handle);
    if (scene == nullptr || scene->objects == nullptr)
        return false;
    return std::any_of(scene->objects, scene->objects + scene->object_count,
        [&](const scene_object& object) { return object_shows(d, object, targets); });
}

std::string tiling_problem(const document& d, const frame_plan& plan)
{
    if (plan.layer_count == 0 || plan.layers[0].clear != (clear_color | clear_depth))
        return "it is drawn over the frame before";
    if (plan.layers[0].projection == projection_kept)
        return "its first layer keeps the view of the frame before";
    const std::vector<uint32_t> targets = d.tracks == nullptr ? std::vector<uint32_t>{} : render_targets(*d.tracks);
    for (uint32_t i = 0; i < plan.layer_count; ++i) {
        const layer_plan& layer = plan.layers[i];
        if (layer.target != 0 || layer.flush_texture != 0)
            return "track " + std::to_string(layer.track) + " draws into a texture";
        if (scene_shows(d, layer.model_id, targets))
            return "track " + std::to_string(layer.track) + " shows a texture that layers draw into";
    }
    return "";
}

// ---- what moves on ---------------------------------------------------------------------------

rippler_memory remember_rippler()
{
    const rippler_cache& cache = shared_rippler_cache();
    if (cache.positions == nullptr)
        return {};
    return {{cache.positions, cache.positions + size_t{cache.vertex_count} * 3}, true};
}

void restore_rippler(const rippler_memory& memory)
{
    if (!memory.filled)
        reset_rippler_cache();
    else
        std::copy(memory.positions.begin(), memory.positions.end(), shared_rippler_cache().positions);
}

// The hash called FNV-1a.
static void add_bytes(uint64_t& hash, const void* data, size_t size)
{
    if (data == nullptr)
        return;
    for (const uint8_t byte : std::span(static_cast<const uint8_t*>(data), size))
        hash = (hash ^ byte) * 0x100000001B3u;
}

uint64_t effects_fingerprint(const document& d)
{
    uint64_t hash = 0xCBF29CE484222325u;
    for (uint32_t handle = 1; handle <= record_table_capacity; ++handle) {
        if (const mesh_effect* effect = table_record<mesh_effect>(d.effect_table, handle))
            add_bytes(hash, effect->mesh.positions, size_t{effect->mesh.vertex_count} * 3 * sizeof(float));
        const auto* texture = table_record<dynamic_texture>(d.dynamic_texture_table, handle);
        if (texture != nullptr && texture->state != nullptr)
            add_bytes(hash, texture->state->buffer, size_t{texture->width} * texture->height * (texture->bpp / 8));
    }
    return hash;
}
