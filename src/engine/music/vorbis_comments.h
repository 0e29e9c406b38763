// A look at an Ogg Vorbis file before the decoder sees it: whether its comments lie inside
// their own packet.
//
// The decoder of the system's stb package believes the lengths and the number of the
// comments and takes memory, and time, for as many as they say.
#pragma once

#include <cstdio>

// False when the second packet of the file, from its start, is no packet of comments that
// end within it. Reads at most 16 MiB of packet; more is false too. Leaves the stream
// somewhere.
bool vorbis_comments_fit(FILE* file);
