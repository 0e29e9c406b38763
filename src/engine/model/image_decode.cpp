#include "model/image_decode.h"

#include "content/owners.h"
#include "content/pack.h"
#include "model/component_kernels.h"
#include "model/picture_check.h"

#include <cassert>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <stb/stb_image.h>

static_assert(sizeof(level_name::text) == pack_name_size);

image_status measure_image(const uint8_t* data, uint32_t size, uint32_t& width, uint32_t& height)
{
    assert(data != nullptr || size == 0);
    int w = 0;
    int h = 0;
    int components = 0;
    if (size == 0 || size > INT_MAX || !picture_is_harmless(data, size)
        || stbi_info_from_memory(data, static_cast<int>(size), &w, &h, &components) == 0 || w <= 0 || h <= 0)
        return image_undecodable;
    width = static_cast<uint32_t>(w);
    height = static_cast<uint32_t>(h);
    if (width > max_image_side || height > max_image_side || uint64_t{width} * height * 4 > max_image_bytes)
        return image_too_large;
    return image_decoded;
}

// Spreads or drops components: grey goes into all three colours, alpha that is missing is
// opaque. The decoder could do this on its way, but what it hands out for pictures of 16 bits
// in the portable formats is then shorter than it believes. `pixels` is freed; null without
// memory.
static uint8_t* change_components(uint8_t* pixels, size_t count, uint32_t from, uint32_t to)
{
    assert(from >= 1 && from <= 4 && (to == 3 || to == 4));
    const owned_block<uint8_t> old(pixels);
    owned_block<uint8_t> changed(static_cast<uint8_t*>(std::malloc(count * to)));
    if (!changed)
        return nullptr;
    const bool grey = from < 3;
    const bool has_alpha = from == 2 || from == 4;
    for (size_t i = 0; i < count; ++i) {
        const uint8_t* source = pixels + i * from;
        uint8_t* target = changed.get() + i * to;
        for (uint32_t c = 0; c < 3; ++c)
            target[c] = source[grey ? 0 : c];
        if (to == 4)
            target[3] = has_alpha ? source[from - 1] : 255;
    }
    return changed.release();
}

// Of a JPEG the decoder makes four components by vectors, and three one by one: the same colours, where grey is spread
// and nothing transparent. No picture of another kind begins with these two bytes.
static bool begins_as_jpeg(const uint8_t* data, uint32_t size)
{
    return size >= 2 && data[0] == 0xFF && data[1] == 0xD8;
}

image_status decode_image(const uint8_t* data, uint32_t size, uint32_t components, decoded_image& image)
{
    assert(components == 0 || components == 3 || components == 4);
    uint32_t width = 0;
    uint32_t height = 0;
    if (const image_status status = measure_image(data, size, width, height); status != image_decoded)
        return status;
    int w = 0;
    int h = 0;
    int found = 0;
    const bool jpeg = begins_as_jpeg(data, size);
    uint8_t* pixels = stbi_load_from_memory(data, static_cast<int>(size), &w, &h, &found, jpeg ? 4 : 0);
    if (pixels == nullptr || static_cast<uint32_t>(w) != width || static_cast<uint32_t>(h) != height) {
        std::free(pixels);
        return image_undecodable;
    }
    const auto stored = static_cast<uint32_t>(found);
    const uint32_t kept = stored == 1 || stored == 3 ? 3 : 4; // grey, and grey with alpha, become colours
    const uint32_t wanted = components != 0 ? components : kept;
    if (jpeg && wanted == 3)
        drop_fourth_components(best_instructions(), pixels, size_t{width} * height); // the block stays as it is
    else if (!jpeg && wanted != stored)
        pixels = change_components(pixels, size_t{width} * height, stored, wanted);
    if (pixels == nullptr)
        return image_too_large;
    image = {width, height, wanted, pixels};
    return image_decoded;
}

level_name name_of_level(const char* image_name, uint32_t level)
{
    assert(level == 1 || level == 2);
    constexpr size_t ending = 4;    // ".png"
    constexpr size_t insertion = 4; // "_mm1"
    level_name name{};
    const size_t length = std::strlen(image_name);
    if (length < ending || length + insertion >= sizeof(name.text))
        return name;
    const size_t stem = length - ending;
    std::memcpy(name.text, image_name, stem);
    std::memcpy(name.text + stem, level == 1 ? "_mm1" : "_mm2", insertion);
    std::memcpy(name.text + stem + insertion, image_name + stem, ending);
    return name;
}
