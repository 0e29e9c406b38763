// A look at a file before the decoder sees it: whether it begins like an Ogg Vorbis file,
// with comments that lie inside their own packet.
//
// The decoder of the system's stb package believes the lengths and the number of the
// comments and takes memory, and time, for as many as they say.
#pragma once

#include <cstdio>

// False when the file does not start with a page of Ogg, or its second packet is no packet
// of comments that end within it. Reads at most 16 MiB of packet; more is false too. Leaves
// the stream at its start.
bool vorbis_comments_fit(FILE* file);
