/* The packer and the font reader of the system's stb package, together, as the library of the interface asks for them.
   (Their package has a library, too: its decoders of pictures would come in the place of ours.) */
#define STB_RECT_PACK_IMPLEMENTATION
#include <stb/stb_rect_pack.h>
#define STB_TRUETYPE_IMPLEMENTATION
#include <stb/stb_truetype.h>
