#include "shell/dialog_images.h"

#include <cassert>
#include <cstddef>

// The assembler lays the files between two labels, so no generated copy of them is
// needed. BRIMLOW_ARTWORK_DIR is the artwork folder's absolute path.
#define EMBED_FILE(label, file)                                                                                        \
    asm(".pushsection .rodata\n"                                                                                       \
        ".balign 4\n"                                                                                                  \
        ".hidden " #label "_begin\n"                                                                                   \
        ".globl " #label "_begin\n" #label "_begin:\n"                                                                 \
        ".incbin \"" BRIMLOW_ARTWORK_DIR "/" file "\"\n"                                                               \
        ".hidden " #label "_end\n"                                                                                     \
        ".globl " #label "_end\n" #label "_end:\n"                                                                     \
        ".popsection\n");                                                                                              \
    extern "C" {                                                                                                       \
    [[gnu::visibility("hidden")]] extern const uint8_t label##_begin[];                                                \
    [[gnu::visibility("hidden")]] extern const uint8_t label##_end[];                                                  \
    }

EMBED_FILE(dialog_bmp_background, "background.bmp")
EMBED_FILE(dialog_bmp_resolution, "resolution.bmp")
EMBED_FILE(dialog_bmp_aspect, "aspect.bmp")
EMBED_FILE(dialog_bmp_check, "check.bmp")
EMBED_FILE(dialog_bmp_pressed, "start_pressed.bmp")
EMBED_FILE(dialog_bmp_path, "path.bmp")

#undef EMBED_FILE

static std::span<const uint8_t> between(const uint8_t* begin, const uint8_t* end)
{
    assert(begin < end);
    return {begin, static_cast<size_t>(end - begin)};
}

std::span<const uint8_t> dialog_image_file(dialog_image image)
{
    switch (image) {
    case dialog_image_background:
        return between(dialog_bmp_background_begin, dialog_bmp_background_end);
    case dialog_image_resolution:
        return between(dialog_bmp_resolution_begin, dialog_bmp_resolution_end);
    case dialog_image_aspect:
        return between(dialog_bmp_aspect_begin, dialog_bmp_aspect_end);
    case dialog_image_check:
        return between(dialog_bmp_check_begin, dialog_bmp_check_end);
    case dialog_image_pressed:
        return between(dialog_bmp_pressed_begin, dialog_bmp_pressed_end);
    case dialog_image_path:
        return between(dialog_bmp_path_begin, dialog_bmp_path_end);
    case dialog_image_count:
        break;
    }
    return {};
}
