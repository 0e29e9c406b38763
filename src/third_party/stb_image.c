/* The image and zlib decoders of the system's stb package, compiled here once
   for either word size. */
#define STB_IMAGE_IMPLEMENTATION
#define STBI_NO_STDIO
#define STBI_FAILURE_USERMSG
#include <stb/stb_image.h>
