#include "authoring/asset/pixels.h"

#include "content/owners.h"
#include "model/image_decode.h"

#include <cassert>
#include <spng.h>
#include <stb/stb_image_resize.h>

namespace {

struct free_context {
    void operator()(spng_ctx* context) const
    {
        spng_ctx_free(context);
    }
};

} // namespace

pixel_block scale_pixels(const pixel_block& from, uint32_t width, uint32_t height)
{
    assert(from.width > 0 && from.height > 0 && from.width <= max_image_side && from.height <= max_image_side);
    assert(width > 0 && height > 0 && width <= max_image_side && height <= max_image_side);
    assert(from.bytes.size() == size_t{from.width} * from.height * from.components);
    pixel_block to = {width, height, from.components, std::vector<uint8_t>(size_t{width} * height * from.components)};
    const int alpha = from.components == 4 ? 3 : STBIR_ALPHA_CHANNEL_NONE;
    if (stbir_resize_uint8_srgb(from.bytes.data(), static_cast<int>(from.width), static_cast<int>(from.height), 0,
            to.bytes.data(), static_cast<int>(width), static_cast<int>(height), 0, static_cast<int>(from.components),
            alpha, 0)
        == 0)
        return {};
    return to;
}

static uint8_t png_color_type(uint32_t components)
{
    if (components == 1)
        return SPNG_COLOR_TYPE_GRAYSCALE;
    return components == 3 ? SPNG_COLOR_TYPE_TRUECOLOR : SPNG_COLOR_TYPE_TRUECOLOR_ALPHA;
}

std::vector<uint8_t> png_of_pixels(const pixel_block& pixels)
{
    assert(pixels.components == 1 || pixels.components == 3 || pixels.components == 4);
    spng_ihdr header = {};
    header.width = pixels.width;
    header.height = pixels.height;
    header.bit_depth = 8;
    header.color_type = png_color_type(pixels.components);
    const std::unique_ptr<spng_ctx, free_context> context(spng_ctx_new(SPNG_CTX_ENCODER));
    if (!context || spng_set_option(context.get(), SPNG_ENCODE_TO_BUFFER, 1) != 0
        || spng_set_option(context.get(), SPNG_IMG_COMPRESSION_LEVEL, 9) != 0
        || spng_set_ihdr(context.get(), &header) != 0
        || spng_encode_image(
               context.get(), pixels.bytes.data(), pixels.bytes.size(), SPNG_FMT_PNG, SPNG_ENCODE_FINALIZE)
            != 0)
        return {};
    size_t size = 0;
    int error = 0;
    const owned_block<uint8_t> file(static_cast<uint8_t*>(spng_get_png_buffer(context.get(), &size, &error)));
    return file ? std::vector<uint8_t>(file.get(), file.get() + size) : std::vector<uint8_t>();
}

pixel_block decoded_pixels(std::span<const uint8_t> file)
{
    decoded_image image = {};
    if (file.size() > UINT32_MAX
        || decode_image(file.data(), static_cast<uint32_t>(file.size()), 0, image) != image_decoded)
        return {};
    const owned_block<uint8_t> pixels(image.pixels);
    const size_t size = size_t{image.width} * image.height * image.components;
    return {image.width, image.height, image.components, {pixels.get(), pixels.get() + size}};
}
