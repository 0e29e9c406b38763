#include "y4m.h"

#include <algorithm>
#include <cmath>

// Weights of red, green, blue (of bytes 0..255) for Y, Cb, Cr, in 1 / 2^20: sums of
// four pixels times a weight stay within 32 bits.
constexpr int32_t weight_bits = 20;

namespace {

struct yuv_weights {
    int32_t y[3];
    int32_t cb[3];
    int32_t cr[3];
};

} // namespace

static int32_t fixed(double value)
{
    return static_cast<int32_t>(std::lround(value * (1 << weight_bits)));
}

static yuv_weights weights_of(yuv_matrix matrix)
{
    const double kr = matrix == yuv_bt709 ? 0.2126 : 0.299;
    const double kb = matrix == yuv_bt709 ? 0.0722 : 0.114;
    const double luma = 219.0 / 255;
    const double chroma = 224.0 / 255 / 2;
    yuv_weights w = {};
    w.y[0] = fixed(luma * kr);
    w.y[2] = fixed(luma * kb);
    w.y[1] = fixed(luma) - w.y[0] - w.y[2]; // white stays exactly white
    w.cb[0] = -fixed(chroma * kr / (1 - kb));
    w.cb[2] = fixed(chroma);
    w.cb[1] = -w.cb[0] - w.cb[2]; // grey has no colour
    w.cr[2] = -fixed(chroma * kb / (1 - kr));
    w.cr[0] = fixed(chroma);
    w.cr[1] = -w.cr[2] - w.cr[0];
    return w;
}

// offset + weights * rgb / count, rounded; rgb are sums of `count` pixels (1 or 4).
static uint8_t combine(const int32_t weights[3], const int32_t rgb[3], int32_t offset, int32_t count)
{
    const int32_t sum = weights[0] * rgb[0] + weights[1] * rgb[1] + weights[2] * rgb[2];
    const int32_t scale = count << weight_bits;
    return static_cast<uint8_t>(offset + ((sum + scale / 2) >> (weight_bits + (count == 4 ? 2 : 0))));
}

yuv_matrix matrix_for_size(uint32_t width, uint32_t height)
{
    return width >= 1280 || height > 576 ? yuv_bt709 : yuv_bt601;
}

std::string y4m_header(uint32_t width, uint32_t height, frame_rate rate)
{
    return "YUV4MPEG2 W" + std::to_string(width) + " H" + std::to_string(height) + " F" + std::to_string(rate.numerator)
        + ":" + std::to_string(rate.denominator) + " Ip A1:1 C420jpeg XCOLORRANGE=LIMITED\n";
}

constexpr char frame_line[] = {'F', 'R', 'A', 'M', 'E', '\n'};

static uint64_t chroma_size(uint32_t size)
{
    return (uint64_t{size} + 1) / 2;
}

uint64_t y4m_frame_size(uint32_t width, uint32_t height)
{
    return sizeof frame_line + uint64_t{width} * height + 2 * chroma_size(width) * chroma_size(height);
}

static void write_luma(const picture& p, const yuv_weights& w, uint8_t* to)
{
    for (size_t i = 0; i < p.rgb.size(); i += 3) {
        const int32_t rgb[3] = {p.rgb[i], p.rgb[i + 1], p.rgb[i + 2]};
        *to++ = combine(w.y, rgb, 16, 1);
    }
}

// One sample for each 2 x 2 pixels. At odd borders the last pixel is taken twice, which
// is the mean of what is there.
static void write_chroma(const picture& p, const yuv_weights& w, uint8_t* cb, uint8_t* cr)
{
    for (uint32_t y = 0; y < p.height; y += 2) {
        const uint8_t* top = &p.rgb[size_t{y} * p.width * 3];
        const uint8_t* bottom = y + 1 < p.height ? top + size_t{p.width} * 3 : top;
        for (uint32_t x = 0; x < p.width; x += 2) {
            const size_t a = size_t{x} * 3;
            const size_t b = x + 1 < p.width ? a + 3 : a;
            int32_t rgb[3];
            for (size_t k = 0; k < 3; ++k)
                rgb[k] = top[a + k] + top[b + k] + bottom[a + k] + bottom[b + k];
            *cb++ = combine(w.cb, rgb, 128, 4);
            *cr++ = combine(w.cr, rgb, 128, 4);
        }
    }
}

void y4m_frame(const picture& p, yuv_matrix matrix, std::vector<uint8_t>& bytes)
{
    bytes.clear();
    if (!is_whole(p))
        return;
    bytes.resize(static_cast<size_t>(y4m_frame_size(p.width, p.height)));
    std::copy(std::begin(frame_line), std::end(frame_line), bytes.begin());
    uint8_t* luma = bytes.data() + sizeof frame_line;
    uint8_t* cb = luma + size_t{p.width} * p.height;
    uint8_t* cr = cb + static_cast<size_t>(chroma_size(p.width) * chroma_size(p.height));
    const yuv_weights w = weights_of(matrix);
    write_luma(p, w, luma);
    write_chroma(p, w, cb, cr);
}
