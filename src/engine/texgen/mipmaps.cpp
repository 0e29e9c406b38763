#include "texgen/mipmaps.h"

#include "texgen/mipmap_kernels.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace {

// The pixels of a level that is being reduced.
struct mipmap_source {
    const uint8_t* pixels;
    size_t row; // bytes
    size_t components;
};

} // namespace

static uint8_t mean_of_two(const uint8_t* a, const uint8_t* b)
{
    return static_cast<uint8_t>((*a + *b) >> 1);
}

// One column: the pair at the start of each row, as if the source were two pixels
// wide at the least. A source of one column is so averaged in vertical pairs.
static void reduce_to_column(const mipmap_source& source, uint32_t height, uint8_t* out)
{
    const size_t row = std::max(source.row, 2 * source.components);
    for (uint32_t k = 0; k < height; ++k)
        for (size_t c = 0; c < source.components; ++c) {
            const uint8_t* pair = source.pixels + k * row + c;
            *out++ = mean_of_two(pair, pair + source.components);
        }
}

static void reduce_to_row(const mipmap_source& source, uint32_t width, uint8_t* out)
{
    assert(source.row >= 2 * width * source.components);
    for (uint32_t k = 0; k < width; ++k)
        for (size_t c = 0; c < source.components; ++c) {
            const uint8_t* pair = source.pixels + 2 * k * source.components + c;
            *out++ = mean_of_two(pair, pair + source.components);
        }
}

static void reduce_by_boxes(const mipmap_source& source, uint32_t width, uint32_t height, uint8_t* out)
{
    assert(source.row >= 2 * width * source.components);
    const instruction_set set = best_instructions();
    for (uint32_t y = 0; y < height; ++y, out += width * source.components) {
        const uint8_t* upper = source.pixels + 2 * y * source.row;
        halve_row_pair(set, {upper, upper + source.row, source.components}, out, width);
    }
}

static bool is_power_of_two(uint32_t n)
{
    return (n & (n - 1)) == 0;
}

// OpenGL's rows of a picture of powers of two are tight at min(width, height) below
// 4; rows of any other width are tight only at 1.
static int32_t level_alignment(uint32_t width, uint32_t height)
{
    assert(width > 0 && height > 0);
    if (!is_power_of_two(width) || !is_power_of_two(height))
        return 1;
    return static_cast<int32_t>(std::min({width, height, uint32_t{4}}));
}

mipmap_chain begin_mipmaps(uint32_t width, uint32_t height, const uint8_t* pixels, uint32_t components,
    const uint8_t* level1, const uint8_t* level2)
{
    mipmap_chain chain = {};
    if (pixels == nullptr || (components != 3 && components != 4) || width == 0 || height == 0)
        return chain;
    chain.width = width;
    chain.height = height;
    chain.components = components;
    chain.source = pixels;
    chain.level1 = level1;
    chain.level2 = level2;
    return chain;
}

bool next_mipmap(mipmap_chain& chain)
{
    if (chain.source == nullptr || (chain.width == 1 && chain.height == 1))
        return false;
    assert(chain.components == 3 || chain.components == 4);
    const uint32_t width = std::max(chain.width / 2, 1u);
    const uint32_t height = std::max(chain.height / 2, 1u);
    const uint64_t bytes = uint64_t{width} * height * chain.components;
    if (bytes > std::numeric_limits<size_t>::max() / 2)
        return false;
    std::unique_ptr<uint8_t[]> pixels(new (std::nothrow) uint8_t[static_cast<size_t>(bytes)]);
    if (pixels == nullptr)
        return false;

    const uint32_t level = chain.level + 1;
    assert(level <= 32); // a side is halved no more often than it has bits
    const uint8_t* ready_made = level == 1 ? chain.level1 : level == 2 ? chain.level2 : nullptr;
    const mipmap_source source = {chain.source, size_t{chain.width} * chain.components, chain.components};
    if (ready_made != nullptr)
        std::memcpy(pixels.get(), ready_made, static_cast<size_t>(bytes));
    else if (width == 1)
        reduce_to_column(source, height, pixels.get());
    else if (height == 1)
        reduce_to_row(source, width, pixels.get());
    else
        reduce_by_boxes(source, width, height, pixels.get());

    chain.made = {width, height, level_alignment(width, height), std::move(pixels)};
    chain.source = chain.made.pixels.get();
    chain.width = width;
    chain.height = height;
    chain.level = level;
    return true;
}
