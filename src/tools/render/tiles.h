// Tiles: how a picture above the driver's limits is cut, and which frames cannot be.
//
// Every tile draws the frame again, which was advanced once for all of them.
#pragma once

#include "tools/frames/frame_rate.h"

#include "model/document.h"
#include "render/layer_plan.h"

#include <cstdint>
#include <string>
#include <vector>

// Rectangles of at most `side_x` x `side_y` pixels (both above 0) that cover a picture, from
// its lower left corner on, row by row. One rectangle where the picture fits.
std::vector<frame_tile> plan_tiles(uint32_t width, uint32_t height, uint32_t side_x, uint32_t side_y);

// Why a frame cannot be put together from tiles, as the end of a sentence
// ("track 3 draws into a texture", counted from 1); empty when it can.
std::string tiling_problem(const document& d, const frame_layers& layers);

// Whether a frame's first layer is seen through the screen's viewport: its own, or the last one
// that a layer before it has chosen. It is not where that is a texture's, or where none has.
bool begins_on_screen(const document& d, const frame_view& view, const gl_caps& caps, frame_rate rate, uint64_t frame);
