#include "tiles.h"

#include "tools/frames/frame_clock.h"
#include "tools/frames/frame_needs.h"

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

bool begins_on_screen(const document& d, const frame_view& view, const gl_caps& caps, frame_rate rate, uint64_t frame)
{
    uint32_t last = 1; // of this frame only the first layer counts
    for (uint64_t f = frame + 1; f-- > 0; last = track_count) {
        const frame_layers layers = plan_layers(d, tick_of_frame(f, rate), view, caps);
        for (uint32_t i = std::min(last, layers.layer_count); i-- > 0;)
            if (layers.layers[i].viewport_width != 0)
                return layers.layers[i].target == 0;
    }
    return false;
}

std::string tiling_problem(const document& d, const frame_layers& layers)
{
    if (layers.layer_count == 0 || layers.layers[0].clear != (clear_color | clear_depth))
        return "it is drawn over the frame before";
    const std::vector<uint32_t> targets = render_targets(d);
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
