/* The Ogg Vorbis decoder of the system's stb package. */
#include <stb/stb_vorbis.c>
