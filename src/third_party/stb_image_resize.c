/* The scaling of pictures of the system's stb package, compiled here once. */
#define STBIR_ASSERT(x) ((void)(x))
#define STB_IMAGE_RESIZE_IMPLEMENTATION
#include <stb/stb_image_resize.h>
