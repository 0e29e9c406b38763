// Mipmaps: the player's own smaller levels of a picture, without OpenGL.
//
// Sizes in pixels, components 3 (RGB) or 4 (RGBA), rows without gaps.
#pragma once

#include <cstdint>
#include <memory>

struct mipmap_level {
    uint32_t width;
    uint32_t height;
    int32_t unpack_alignment;          // bytes, in force while this level is uploaded
    std::unique_ptr<uint8_t[]> pixels; // width x height x components
};

// Walks the levels below a picture one by one; each is made from the one before.
struct mipmap_chain {
    uint32_t width;        // of the level made last; at first of level 0
    uint32_t height;
    uint32_t components;
    uint32_t level;        // number of the level made last; 0 at first
    const uint8_t* source; // its pixels; level 0 is the caller's
    const uint8_t* level1; // ready-made levels of the right size, or null
    const uint8_t* level2;
    mipmap_level made;     // the level made last
};

// A component count other than 3 or 4 (also 34029 and 34030, on purpose) has no levels.
mipmap_chain begin_mipmaps(uint32_t width, uint32_t height, const uint8_t* pixels, uint32_t components,
    const uint8_t* level1, const uint8_t* level2);

// Makes the next level into chain.made. False when 1 x 1 has been reached.
bool next_mipmap(mipmap_chain& chain);
