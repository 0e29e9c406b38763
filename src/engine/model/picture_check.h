// A look at a picture before the decoder sees it, at the few numbers of it that the decoder
// of the system's stb package believes.
//
// In a JPEG it writes as many codes as the counts of a code table say, up to 4080 into room
// for 256. In a PNG or a PSD it steps over as many bytes as a length says, past the end of
// the picture and, where addresses have 32 bits, round to the beginning of memory; for a
// PNG's pixels it first takes memory for that many.
#pragma once

#include <cstdint>

// False when a code table of a JPEG has more than 256 codes, or when a chunk of a PNG or a
// section of a PSD passes the picture's `size` bytes at `data`. True for pictures of other
// kinds, and for whatever else is wrong with one.
bool picture_is_harmless(const uint8_t* data, uint32_t size);
