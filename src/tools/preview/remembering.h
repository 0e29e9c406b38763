// What a show remembers from frame to frame, and whose pixels later frames take over: what has to be kept to come back
// to a frame, and which of the frames that are passed must be drawn.
//
// Pure: records and plans only. Planning changes what animation functions remember (kept_functions).
#pragma once

#include "model/document.h"
#include "render/layer_plan.h"
#include "tools/frames/frame_rate.h"

#include <cstdint>
#include <unordered_map>
#include <vector>

struct remembering {
    bool moves = false;                  // mesh effects, "Amoba", the rippler: numbers that every frame moves on
    bool bare = false;                   // objects without a material are drawn with what others have left
    std::vector<uint32_t> odd_functions; // functions that answer by what they answered before
    std::vector<uint32_t> targets;       // image textures that layers draw into
    uint32_t units = 0;                  // texture units that some material uses

    bool anything() const
    {
        return moves || bare || !odd_functions.empty() || !targets.empty();
    }
};

remembering what_is_remembered(const document& d);

// What the odd functions of a document remember.
struct kept_function {
    uint32_t handle;
    float value;
    uint32_t time;

    bool operator==(const kept_function&) const = default;
};

std::vector<kept_function> keep_functions(const document& d, const std::vector<uint32_t>& handles);
void put_functions(const document& d, const std::vector<kept_function>& functions);

// The first frame at which something happens to a target's pixels.
struct target_event {
    uint64_t looked_from = 0; // no event in looked_from .. looked_to - 1
    uint64_t looked_to = 0;
    bool found = false; // at looked_to
    bool shown = false; // they are shown there; otherwise they are drawn anew before
};

// Asked about frames of one show, played in one way. Frames in any order; going on from frame to frame is quick.
struct pixel_needs {
    document d = {}; // the show's tables and the timeline that is played; not owned
    frame_view view = {};
    gl_caps caps = {};
    frame_rate rate = {60, 1};
    uint64_t end = 0; // frames of the show
    std::vector<uint32_t> targets;
    std::unordered_map<uint32_t, std::vector<uint32_t>> scenes; // targets that each shows, as far as asked
    std::vector<target_event> events;                           // of each target
};

pixel_needs make_pixel_needs(const document& d, const std::vector<uint32_t>& targets, const frame_view& view,
    const gl_caps& caps, frame_rate rate, uint64_t end);

// Whether a frame takes over pixels, colour or depth, of the frame before it: it does not clear all first.
bool shows_through(const pixel_needs& n, uint64_t frame);

// The targets that may be shown as they are before `frame` by it or a later frame (true: their pixels count). One that
// nothing happens to for a long time counts.
std::vector<bool> awaited_targets(pixel_needs& n, uint64_t frame);

// For the frames from .. to - 1: which must be drawn whole, so that `to` and all that follow have the pixels that they
// take over. On the way there they need not be right.
std::vector<bool> passed_with_pixels(pixel_needs& n, uint64_t from, uint64_t to);
