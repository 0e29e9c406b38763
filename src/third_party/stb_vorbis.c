/* The Ogg Vorbis decoder of the system's stb package: here its header is the
   whole source. */
#include <stb/stb_vorbis.h>
