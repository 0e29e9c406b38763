// Pixels that a kernel has made as whole words, on their way into a picture of three bytes a pixel.
#pragma once

#include "content/instructions.h"

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>

// Writes `count` (one or more) pixels R | G << 8 | B << 16 as 3 * count bytes. The fourth byte of a word must be 0 and
// is overwritten by the next pixel; behind the last pixel nothing is written. For processors that store low bytes
// first.
FAST_INLINE void store_packed_pixels(const uint32_t* pixels, uint8_t* out, size_t count)
{
    assert(count > 0);
    for (size_t n = 0; n + 1 < count; ++n, out += 3)
        std::memcpy(out, pixels + n, sizeof *pixels);
    std::memcpy(out, pixels + count - 1, 3);
}
