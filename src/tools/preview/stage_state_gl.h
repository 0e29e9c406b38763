// All that a stage remembers between two frames, as something that can be kept and put back.
//
// Numbers are copied; pixels of targets are read from the card, and the picture itself stays on it. What has not
// changed since another state was kept is shared with it. Needs the picture's context, also for letting go.
#pragma once

#include "tools/preview/chance.h"
#include "tools/preview/remembering.h"
#include "tools/preview/stage.h"

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

using kept_bytes = std::shared_ptr<const std::vector<uint8_t>>;

struct kept_level {
    int32_t width = 0;
    int32_t height = 0;
    kept_bytes bytes; // RGBA, or compressed
};

// The pixels of a texture, and how it shows them.
struct kept_texture {
    int32_t format = 0; // OpenGL's internal one
    bool compressed = false;
    int32_t min_filter = 0;
    int32_t mag_filter = 0;
    std::vector<kept_level> levels;
};

struct kept_target {
    uint32_t handle = 0;
    image_texture record = {};                  // its size and name
    std::shared_ptr<const kept_texture> pixels; // null: drawn anew before they are seen
};

struct kept_effect {
    uint32_t handle = 0;
    kept_bytes state; // null: it has none
    kept_bytes positions;
    kept_bytes normals;
};

struct kept_moving_picture {
    uint32_t handle = 0;
    uint8_t calls = 0;
    int32_t counter = 0;
    kept_bytes buffer; // null: it has none
    uint32_t refresh_time = 0;
    uint8_t refreshed = 0;
    std::shared_ptr<const kept_texture> pixels; // null: it is computed anew
};

// Colour and depth, on the card.
struct kept_screen {
    uint32_t framebuffer = 0;
    uint32_t color = 0;
    uint32_t depth = 0;
    uint32_t width = 0;
    uint32_t height = 0;

    kept_screen() = default;
    ~kept_screen();
    kept_screen(const kept_screen&) = delete;
    kept_screen& operator=(const kept_screen&) = delete;
};

struct kept_state {
    uint64_t next = 0;  // the frame that it stands before
    uint32_t muted = 0; // the tracks with which it came about
    chance_place chance;
    standing_state standing;
    bool rippled = false; // the rippler's vertices are there
    kept_bytes ripple_positions;
    kept_bytes ripple_normals;
    std::vector<kept_effect> effects;
    std::vector<kept_moving_picture> moving_pictures;
    std::vector<kept_function> functions;
    std::vector<kept_target> targets;
    std::unique_ptr<kept_screen> picture; // null: the next frame clears all
};

// What is on the card in a target's texture, where that was kept and has not changed since.
using card_pixels = std::map<uint32_t, std::shared_ptr<const kept_texture>>; // by handle

// What a state is to hold beyond the numbers.
struct keeping {
    const remembering* memory;
    std::vector<bool> awaited;           // of the targets: their pixels count
    bool through = false;                // so does the picture
    const kept_state* similar = nullptr; // what is the same there is shared
};

std::unique_ptr<kept_state> keep_state_gl(stage& s, const keeping& wish, card_pixels& card);

// As it was kept. What OpenGL has been told stays known.
void put_state_gl(stage& s, const kept_state& state, const remembering& memory, card_pixels& card);

// Which targets the frame that was passed or drawn last has changed: they are not in `card` any more.
void forget_changed_targets(const stage& s, const std::vector<uint32_t>& targets, card_pixels& card);

// Whether pictures can be kept and copied on the card at all.
bool can_keep_pictures_gl();

// Makes one for the stage's size. Null: the driver does not.
std::unique_ptr<kept_screen> make_picture_gl(const stage& s);

// Colour and depth from one frame buffer to another of the same size.
void copy_picture_gl(uint32_t from, uint32_t to, uint32_t width, uint32_t height);

// Adds the bytes of a state that no state before it had; `seen` holds what has been counted.
uint64_t count_bytes(const kept_state& state, std::vector<const void*>& seen);
