// Mipmaps: the player's own smaller levels of a picture, without OpenGL.
//
// Sizes in pixels, components 3 (RGB) or 4 (RGBA), rows without gaps. The caller
// keeps level 0 and the ready-made levels, which must outlive the chain; the chain
// owns the level that it made last and frees it when the next one is there.
#pragma once

#include <cstdint>
#include <memory>

struct mipmap_level {
    uint32_t width;
    uint32_t height;
    int32_t unpack_alignment;          // bytes, in force while this level is uploaded: 1, 2 or 4
    std::unique_ptr<uint8_t[]> pixels; // width x height x components
};

// Walks the levels below a picture one by one; each is made from the one before.
struct mipmap_chain {
    uint32_t width; // of the level made last; at first of level 0
    uint32_t height;
    uint32_t components;
    uint32_t level;        // number of the level made last; 0 at first
    const uint8_t* source; // its pixels; level 0 is the caller's
    const uint8_t* level1; // ready-made levels of the right size, or null
    const uint8_t* level2;
    mipmap_level made; // the level made last
};

// A chain in front of level 1. A component count other than 3 or 4 (also 34029 and
// 34030, the compressed formats, on purpose), no pixels or a side of 0 give a chain
// without levels.
mipmap_chain begin_mipmaps(uint32_t width, uint32_t height, const uint8_t* pixels, uint32_t components,
    const uint8_t* level1, const uint8_t* level2);

// Makes the next level into chain.made: both sides halved, to no less than 1.
// False when 1 x 1 has been reached, when the chain has no levels, or when memory
// for the level is not to be had; the chain is then as before.
//
// Pixels are truncated means of two (a level of one column or one row) or of four.
// Two quirks are deliberate: a level of one column takes the two pixels at the
// start of source row k and skips the lower half of the rows, and a level of one
// row takes the first source row only ("... reads the top rows only" tests both).
bool next_mipmap(mipmap_chain& chain);
