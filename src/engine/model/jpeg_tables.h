// A look at a JPEG picture before the decoder sees it: whether its code tables fit the
// decoder's arrays.
//
// The decoder of the system's stb package believes the sixteen counts of a code table
// and writes as many codes as they say, up to 4080 into room for 256.
#pragma once

#include <cstdint>

// False when any table of the picture in `size` bytes at `data` has more than 256 codes.
// True for pictures of other kinds, and for whatever else is wrong with this one. Beyond
// the end the bytes count as zero, as the decoder takes them.
bool jpeg_tables_fit(const uint8_t* data, uint32_t size);
