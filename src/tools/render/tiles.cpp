#include "tiles.h"

#include "frame_needs.h"

#include <algorithm>

std::vector<frame_tile> plan_tiles(uint32_t width, uint32_t height, uint32_t side_x, uint32_t side_y)
{
    std::vector<frame_tile> tiles;
    for (uint32_t y = 0; y < height; y += std::min(side_y, height - y))
        for (uint32_t x = 0; x < width; x += std::min(side_x, width - x))
            tiles.push_back({x, y, std::min(side_x, width - x), std::min(side_y, height - y)});
    return tiles;
}

// ---- what cannot be tiled --------------------------------------------------------------------

std::string tiling_problem(const document& d, const frame_layers& layers)
{
    if (layers.layer_count == 0 || layers.layers[0].clear != (clear_color | clear_depth))
        return "it is drawn over the frame before";
    const std::vector<uint32_t> targets = render_targets(d);
    if (layers.layers[0].viewport_width == 0 && !targets.empty()) // it may be a texture's
        return "its first layer keeps the view of the frame before";
    for (uint32_t i = 0; i < layers.layer_count; ++i) {
        const layer_plan& layer = layers.layers[i];
        if (layer.target != 0 || layer.flush_texture != 0)
            return "track " + std::to_string(layer.track + 1) + " draws into a texture";
        // It would show what an earlier frame drew, and that was not drawn at this size.
        if (!targets_of_scene(d, layer.model_id, targets).empty())
            return "track " + std::to_string(layer.track + 1) + " shows a texture that layers draw into";
    }
    return "";
}
