// What a frame takes over from the frames before it: pictures that show through, and
// textures that layers drew into.
//
// Effects remember in numbers, which every frame moves on whether it is coloured or not;
// this is about the pixels. Pure: plans and records only.
#pragma once

#include "tools/frames/frame_rate.h"

#include "model/document.h"
#include "render/layer_plan.h"

#include <cstdint>
#include <vector>

// The image textures that any layer of a document draws into, ascending, each once.
std::vector<uint32_t> render_targets(const document& d);

// Those of `targets` that a scene may show, visible or not. An object without a material is
// drawn with whatever is set, so it counts as showing all of them.
std::vector<uint32_t> targets_of_scene(const document& d, uint32_t scene, const std::vector<uint32_t>& targets);

// Which of the frames 0 .. wanted.back() need their pixels, that the wanted ones (ascending)
// be right: these themselves; the frames before one that does not clear all of the screen;
// and those that draw into a texture which is shown before it is drawn again. The others may
// be passed with no pixel coloured.
std::vector<bool> frames_with_pixels(const document& d, const frame_view& view, const gl_caps& caps, frame_rate rate,
    const std::vector<uint64_t>& wanted);
