#include "model/image_decode.h"

#include "content/pack.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <stb/stb_image.h>

static_assert(sizeof(level_name::text) == pack_name_size);

image_status measure_image(const uint8_t* data, uint32_t size, uint32_t& width, uint32_t& height)
{
    int w = 0;
    int h = 0;
    int components = 0;
    if (size == 0 || size > INT_MAX || stbi_info_from_memory(data, static_cast<int>(size), &w, &h, &components) == 0
        || w <= 0 || h <= 0)
        return image_undecodable;
    width = static_cast<uint32_t>(w);
    height = static_cast<uint32_t>(h);
    if (width > max_image_side || height > max_image_side || uint64_t{width} * height * 4 > max_image_bytes)
        return image_too_large;
    return image_decoded;
}

image_status decode_image(const uint8_t* data, uint32_t size, uint32_t components, decoded_image& image)
{
    uint32_t width = 0;
    uint32_t height = 0;
    if (const image_status status = measure_image(data, size, width, height); status != image_decoded)
        return status;
    int w = 0;
    int h = 0;
    int stored = 0;
    const int wanted = static_cast<int>(components);
    uint8_t* pixels = stbi_load_from_memory(data, static_cast<int>(size), &w, &h, &stored, wanted);
    if (pixels != nullptr && components == 0 && stored < 3) {
        // Grey: decoded again with the decoder's own spreading to three or four components.
        std::free(pixels);
        return decode_image(data, size, stored == 1 ? 3 : 4, image);
    }
    if (pixels == nullptr || static_cast<uint32_t>(w) != width || static_cast<uint32_t>(h) != height) {
        std::free(pixels);
        return image_undecodable;
    }
    image = {width, height, components != 0 ? components : static_cast<uint32_t>(stored), pixels};
    return image_decoded;
}

level_name name_of_level(const char* image_name, uint32_t level)
{
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
