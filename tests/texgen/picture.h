// Pictures for the tests of texgen: square, 3 bytes a pixel, in exactly as much memory
// as they need, so that the sanitizers see every step beside them.
#pragma once

#include "model/records.h"
#include "texgen/cosine_table.h"
#include "texgen/generators.h"
#include "texgen/maze_tables.h"
#include "texgen/operations.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <vector>

struct picture {
    uint32_t size;
    std::vector<uint8_t> bytes;

    bool operator==(const picture&) const = default;
};

inline picture flat_picture(uint32_t size, uint8_t value)
{
    return {size, std::vector<uint8_t>(size_t{3} * size * size, value)};
}

// Bytes without an order that a formula could share.
inline picture scrambled_picture(uint32_t size, uint32_t seed)
{
    picture made = flat_picture(size, 0);
    for (uint8_t& byte : made.bytes) {
        seed = seed * 1664525u + 1013904223u;
        byte = static_cast<uint8_t>(seed >> 24);
    }
    return made;
}

inline uint8_t& channel_at(picture& p, uint32_t x, uint32_t y, uint32_t c)
{
    return p.bytes[size_t{3} * (size_t{y} * p.size + x) + c];
}

inline int channel_at(const picture& p, uint32_t x, uint32_t y, uint32_t c)
{
    return p.bytes[size_t{3} * (size_t{y} * p.size + x) + c];
}

// The three bytes of a pixel as 0xRRGGBB.
inline uint32_t pixel_of(const picture& p, uint32_t x, uint32_t y)
{
    return static_cast<uint32_t>(channel_at(p, x, y, 0) << 16 | channel_at(p, x, y, 1) << 8 | channel_at(p, x, y, 2));
}

inline picture generated(int32_t kind, std::initializer_list<float> values, uint32_t size = 256, uint8_t before = 0)
{
    build_maze_tables();
    picture made = flat_picture(size, before);
    generated_image image = {};
    image.params.kind = kind;
    std::copy(values.begin(), values.end(), image.params.values);
    image.pixels = made.bytes.data();
    generate_image(image, size);
    return made;
}

// The result of an operation into a picture that was 77 everywhere.
inline picture operated(uint8_t code, std::initializer_list<float> values, const picture& a, const picture* b = nullptr)
{
    build_cosine_table();
    float node_values[max_node_values] = {};
    std::copy(values.begin(), values.end(), node_values);
    picture made = flat_picture(a.size, 77);
    apply_texture_operation(
        code, node_values, a.bytes.data(), b != nullptr ? b->bytes.data() : nullptr, made.bytes.data(), a.size);
    return made;
}

// True when a byte is the truncation of the exact value; either neighbour is right
// where the value is a whole number but for rounding.
inline bool truncates_to(long double exact, int byte)
{
    const long double nearest = std::round(exact);
    if (std::fabs(exact - nearest) < 1e-9L)
        return byte == static_cast<int>(nearest) || byte == static_cast<int>(nearest) - 1;
    return byte == static_cast<int>(exact);
}
