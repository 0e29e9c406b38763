#include "tools/frames/picture_file.h"

#include "content/file_bytes.h"
#include "content/owners.h"
#include "model/image_decode.h"
#include "tools/frames/output_file.h"
#include "tools/frames/png_file.h"

#include <algorithm>
#include <stb/stb_image_write.h>

constexpr uint32_t max_file_bytes = 1u << 30; // of a picture that is read

static void append_bytes(void* context, void* data, int size)
{
    std::vector<uint8_t>& bytes = *static_cast<std::vector<uint8_t>*>(context);
    const uint8_t* first = static_cast<const uint8_t*>(data);
    bytes.insert(bytes.end(), first, first + size);
}

std::vector<uint8_t> encode_jpeg(const picture& p, int quality)
{
    std::vector<uint8_t> bytes;
    if (!can_be_encoded(p) || p.width > 65535 || p.height > 65535)
        return bytes;
    const int width = static_cast<int>(p.width);
    const int height = static_cast<int>(p.height);
    if (!stbi_write_jpg_to_func(append_bytes, &bytes, width, height, 3, p.rgb.data(), std::clamp(quality, 1, 100)))
        bytes.clear();
    return bytes;
}

bool save_png(const std::string& path, const picture& p, std::string& error)
{
    const std::vector<uint8_t> bytes = encode_png(p);
    if (bytes.empty()) {
        error = "cannot make a PNG of \"" + path + "\": the picture is empty or too large";
        return false;
    }
    return write_file(path, bytes, error);
}

bool load_png(const std::string& path, picture& p, std::string& error)
{
    uint8_t* data = nullptr;
    uint32_t size = 0;
    if (!read_whole_file(path.c_str(), max_file_bytes, &data, &size)) {
        error = "cannot read \"" + path + "\"";
        return false;
    }
    const owned_block<uint8_t> file(data);
    decoded_image image = {};
    switch (decode_image(data, size, 3, image)) {
    case image_undecodable:
        error = "\"" + path + "\" is not a picture that can be read";
        return false;
    case image_too_large:
        error = "the picture \"" + path + "\" is too large";
        return false;
    case image_decoded:
        break;
    }
    const owned_block<uint8_t> pixels(image.pixels);
    p.width = image.width;
    p.height = image.height;
    p.rgb.assign(image.pixels, image.pixels + size_t{image.width} * image.height * 3);
    return true;
}
