#include "tiles.h"

#include "frame_needs.h"

#include "effects/dynamic_texture.h"
#include "effects/manipulator.h"

#include <algorithm>
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

std::string tiling_problem(const document& d, const frame_plan& plan)
{
    if (plan.layer_count == 0 || plan.layers[0].clear != (clear_color | clear_depth))
        return "it is drawn over the frame before";
    if (plan.layers[0].projection == projection_kept)
        return "its first layer keeps the view of the frame before";
    const std::vector<uint32_t> targets = render_targets(d);
    for (uint32_t i = 0; i < plan.layer_count; ++i) {
        const layer_plan& layer = plan.layers[i];
        if (layer.target != 0 || layer.flush_texture != 0)
            return "track " + std::to_string(layer.track + 1) + " draws into a texture";
        // It would show what an earlier frame drew, and that was not drawn at this size.
        if (!targets_of_scene(d, layer.model_id, targets).empty())
            return "track " + std::to_string(layer.track + 1) + " shows a texture that layers draw into";
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
        if (const mesh_effect* effect = table_get(d.effect_table, handle))
            add_bytes(hash, effect->mesh.positions, size_t{effect->mesh.vertex_count} * 3 * sizeof(float));
        const auto* texture = table_get(d.dynamic_texture_table, handle);
        if (texture != nullptr && texture->state != nullptr)
            add_bytes(hash, texture->state->buffer, size_t{texture->width} * texture->height * (texture->bpp / 8));
    }
    return hash;
}
