#include "tools/frames/picture.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

picture make_picture(uint32_t width, uint32_t height, uint8_t red, uint8_t green, uint8_t blue)
{
    picture p;
    p.width = width;
    p.height = height;
    p.rgb.resize(size_t{width} * height * 3);
    for (size_t i = 0; i + 2 < p.rgb.size(); i += 3) {
        p.rgb[i] = red;
        p.rgb[i + 1] = green;
        p.rgb[i + 2] = blue;
    }
    return p;
}

picture make_picture_to_fill(uint32_t width, uint32_t height)
{
    picture p;
    p.width = width;
    p.height = height;
    p.rgb.reserve((size_t{width} * 3 + 1) * height);
    p.rgb.resize(size_t{width} * 3 * height);
    return p;
}

bool is_whole(const picture& p)
{
    return p.width > 0 && p.height > 0 && p.rgb.size() == uint64_t{p.width} * p.height * 3;
}

bool can_be_encoded(const picture& p)
{
    return is_whole(p) && p.rgb.size() + p.height <= max_encoded_bytes;
}

// ---- colours ----------------------------------------------------------------------

constexpr uint32_t guess_count = 4096;

namespace {

struct light_tables {
    float light[256];           // of each byte
    float threshold[257];       // [b]: the least light that becomes byte b; [256]: none does
    uint8_t guess[guess_count]; // the byte of the lower end of each part of 0..1
};

} // namespace

static double light_of(double value)
{
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

static light_tables make_light_tables()
{
    light_tables t = {};
    for (uint32_t b = 0; b < 256; ++b) {
        t.light[b] = static_cast<float>(light_of(b / 255.0));
        t.threshold[b] = b == 0 ? 0.0f : static_cast<float>(light_of((b - 0.5) / 255.0));
    }
    t.threshold[256] = 2.0f;
    uint32_t b = 0;
    for (uint32_t i = 0; i < guess_count; ++i) {
        while (b < 255 && t.threshold[b + 1] <= static_cast<float>(i) / guess_count)
            ++b;
        t.guess[i] = static_cast<uint8_t>(b);
    }
    return t;
}

static const light_tables& tables()
{
    static const light_tables t = make_light_tables();
    return t;
}

float linear_light(uint8_t value)
{
    return tables().light[value];
}

uint8_t srgb_byte(float light)
{
    if (!(light > 0.0f))
        return 0;
    if (light >= 1.0f)
        return 255;
    const light_tables& t = tables();
    uint32_t b = t.guess[static_cast<uint32_t>(light * guess_count)];
    while (b < 255 && light >= t.threshold[b + 1])
        ++b;
    return static_cast<uint8_t>(b);
}

// ---- sizes ------------------------------------------------------------------------

namespace {

// The source pixels that one new pixel covers along one axis.
struct cover {
    uint32_t first;
    uint32_t count;
    float first_weight; // of the whole; those in the middle weigh `weight`
    float weight;
    float last_weight;
};

} // namespace

static cover cover_of(uint32_t i, uint32_t size, uint32_t source_size)
{
    // In units of 1 / size of a source pixel, so that borders are whole numbers.
    const uint64_t begin = uint64_t{i} * source_size;
    const uint64_t end = begin + source_size;
    const uint64_t last = (end - 1) / size;
    cover c = {};
    c.first = static_cast<uint32_t>(begin / size);
    c.count = static_cast<uint32_t>(last) - c.first + 1;
    const double whole = source_size;
    const uint64_t first_end = std::min<uint64_t>((uint64_t{c.first} + 1) * size, end);
    c.first_weight = static_cast<float>(static_cast<double>(first_end - begin) / whole);
    c.weight = static_cast<float>(size / whole);
    c.last_weight = static_cast<float>(static_cast<double>(end - last * size) / whole);
    return c;
}

static float weight_at(const cover& c, uint32_t i)
{
    if (i == 0)
        return c.first_weight;
    return i + 1 == c.count ? c.last_weight : c.weight;
}

// One source row at the new width, in linear light.
static void scale_row(const uint8_t* source, const std::vector<cover>& columns, std::vector<float>& row)
{
    const float* light = tables().light;
    float* to = row.data();
    for (const cover& c : columns) {
        const uint8_t* from = source + size_t{c.first} * 3;
        float sum[3] = {};
        for (uint32_t i = 0; i < c.count; ++i, from += 3) {
            const float weight = weight_at(c, i);
            for (uint32_t k = 0; k < 3; ++k)
                sum[k] += weight * light[from[k]];
        }
        for (uint32_t k = 0; k < 3; ++k)
            *to++ = sum[k];
    }
}

picture scale_picture(const picture& p, uint32_t width, uint32_t height)
{
    if (!is_whole(p) || width == 0 || height == 0)
        return {};
    if (p.width == width && p.height == height)
        return p;
    std::vector<cover> columns(width);
    for (uint32_t x = 0; x < width; ++x)
        columns[x] = cover_of(x, width, p.width);
    picture result = make_picture(width, height, 0, 0, 0);
    std::vector<float> row(size_t{width} * 3);
    std::vector<float> sum(size_t{width} * 3);
    uint64_t row_in_hand = UINT64_MAX; // a row on a border counts in two new ones
    for (uint32_t y = 0; y < height; ++y) {
        const cover rows = cover_of(y, height, p.height);
        std::fill(sum.begin(), sum.end(), 0.0f);
        for (uint32_t i = 0; i < rows.count; ++i) {
            const uint64_t source_y = rows.first + i;
            if (source_y != row_in_hand)
                scale_row(p.rgb.data() + source_y * p.width * 3, columns, row);
            row_in_hand = source_y;
            const float weight = weight_at(rows, i);
            for (size_t k = 0; k < sum.size(); ++k)
                sum[k] += weight * row[k];
        }
        uint8_t* to = result.rgb.data() + size_t{y} * width * 3;
        for (size_t k = 0; k < sum.size(); ++k)
            to[k] = srgb_byte(sum[k]);
    }
    return result;
}

picture even_picture(const picture& p)
{
    const uint32_t width = p.width + p.width % 2;
    const uint32_t height = p.height + p.height % 2;
    if (!is_whole(p) || (width == p.width && height == p.height))
        return p;
    picture even = make_picture(width, height, 0, 0, 0);
    paste_picture(even, p, width - p.width, height - p.height); // what stays uncovered there ...
    paste_picture(even, p, 0, height - p.height);
    paste_picture(even, p, width - p.width, 0);
    paste_picture(even, p, 0, 0); // ... is the last column and row
    return even;
}

void fit_inside(const picture& p, uint32_t& width, uint32_t& height)
{
    if (p.width == 0 || p.height == 0)
        return;
    const uint64_t wide = uint64_t{p.width} * height;
    const uint64_t high = uint64_t{p.height} * width;
    if (wide <= high) // the height is what binds
        width = static_cast<uint32_t>(std::max<uint64_t>(1, (wide + p.height / 2) / p.height));
    else
        height = static_cast<uint32_t>(std::max<uint64_t>(1, (high + p.width / 2) / p.width));
    width = std::max(width, 1u);
    height = std::max(height, 1u);
}

void paste_picture(picture& to, const picture& from, uint32_t x, uint32_t y)
{
    if (!is_whole(to) || !is_whole(from) || x >= to.width || y >= to.height)
        return;
    const size_t length = size_t{std::min(from.width, to.width - x)} * 3;
    const uint32_t rows = std::min(from.height, to.height - y);
    for (uint32_t row = 0; row < rows; ++row)
        std::memcpy(&to.rgb[((size_t{y} + row) * to.width + x) * 3], &from.rgb[size_t{row} * from.width * 3], length);
}

// ---- differences ------------------------------------------------------------------

picture_comparison compare_pictures(const picture& a, const picture& b, uint32_t amplification)
{
    picture_comparison result;
    if (!is_whole(a) || !is_whole(b) || a.width != b.width || a.height != b.height)
        return result;
    result.same_size = true;
    if (amplification != 0)
        result.difference = make_picture(a.width, a.height, 0, 0, 0);
    uint64_t sums[3] = {};
    for (size_t i = 0; i < a.rgb.size(); i += 3) {
        bool differs = false;
        for (size_t k = 0; k < 3; ++k) {
            const uint32_t d = static_cast<uint32_t>(std::abs(int{a.rgb[i + k]} - int{b.rgb[i + k]}));
            sums[k] += d;
            result.greatest = std::max(result.greatest, d);
            differs = differs || d != 0;
            if (amplification != 0)
                result.difference.rgb[i + k]
                    = static_cast<uint8_t>(std::min<uint64_t>(255, uint64_t{d} * amplification));
        }
        result.differing_pixels += differs;
    }
    const double pixels = static_cast<double>(a.rgb.size() / 3);
    for (size_t k = 0; k < 3; ++k)
        result.mean[k] = static_cast<double>(sums[k]) / pixels;
    result.mean_of_all = (result.mean[0] + result.mean[1] + result.mean[2]) / 3;
    return result;
}
