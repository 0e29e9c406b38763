/* The image and zlib decoders of the system's stb package, compiled here once
   for either word size.

   One block of memory of the decoder is at most 512 MiB: a stream that unfolds
   beyond that is refused like any other that cannot be decoded. New blocks are
   cleared: the decoder reads tables and pixels that a broken picture never gave. */
#include <stdlib.h>

enum { largest_block = 512 * 1024 * 1024 };

static void *cleared_malloc(size_t size) { return size <= largest_block ? calloc(size > 0 ? size : 1, 1) : NULL; }
static void *bounded_realloc(void *block, size_t size) { return size <= largest_block ? realloc(block, size) : NULL; }

#define STBI_MALLOC(size) cleared_malloc(size)
#define STBI_REALLOC(block, size) bounded_realloc(block, size)
#define STBI_FREE(block) free(block)
#define STB_IMAGE_IMPLEMENTATION
#define STBI_NO_STDIO
#define STBI_FAILURE_USERMSG
#include <stb/stb_image.h>
