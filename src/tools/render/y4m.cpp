#include "y4m.h"

#include "yuv_kernels.h"

#include <algorithm>
#include <cmath>

namespace {

struct yuv_weights {
    luma_weights luma;
    chroma_weights cb;
    chroma_weights cr;
};

// Two rows of a picture, their colours apart.
struct row_pair {
    std::vector<uint8_t> bytes;
    split_row top;
    split_row bottom;
};

} // namespace

static uint32_t fixed(double value)
{
    return static_cast<uint32_t>(std::lround(value * (1 << weight_bits)));
}

static yuv_weights weights_of(yuv_matrix matrix)
{
    const double kr = matrix == yuv_bt709 ? 0.2126 : 0.299;
    const double kb = matrix == yuv_bt709 ? 0.0722 : 0.114;
    const double luma = 219.0 / 255;
    const double chroma = 224.0 / 255 / 2;
    yuv_weights w = {};
    w.luma.red = fixed(luma * kr);
    w.luma.blue = fixed(luma * kb);
    w.luma.green = fixed(luma) - w.luma.red - w.luma.blue; // white stays exactly white
    w.cb.first_other = fixed(chroma * kr / (1 - kb));
    w.cb.second_other = fixed(chroma) - w.cb.first_other; // grey has no colour
    w.cr.second_other = fixed(chroma * kb / (1 - kr));
    w.cr.first_other = fixed(chroma) - w.cr.second_other;
    return w;
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

static row_pair make_rows(size_t width)
{
    row_pair rows;
    rows.bytes.resize(6 * width);
    uint8_t* at = rows.bytes.data();
    for (uint8_t** row :
        {&rows.top.red, &rows.top.green, &rows.top.blue, &rows.bottom.red, &rows.bottom.green, &rows.bottom.blue}) {
        *row = at;
        at += width;
    }
    return rows;
}

// The colours of row y, the last pixel twice where the width is odd; and its luma.
static void write_luma(
    instruction_set set, const picture& p, uint32_t y, const yuv_weights& w, const split_row& row, uint8_t* luma)
{
    const size_t width = p.width;
    split_pixels(set, &p.rgb[y * width * 3], row, width);
    luma_row(set, row, w.luma, luma + y * width, width);
    for (uint8_t* colour : {row.red, row.green, row.blue})
        if (width % 2 != 0)
            colour[width] = colour[width - 1];
}

void y4m_frame(const picture& p, yuv_matrix matrix, std::vector<uint8_t>& bytes)
{
    if (!is_whole(p)) {
        bytes.clear();
        return;
    }
    bytes.resize(static_cast<size_t>(y4m_frame_size(p.width, p.height)));
    std::copy(std::begin(frame_line), std::end(frame_line), bytes.begin());
    uint8_t* luma = bytes.data() + sizeof frame_line;
    uint8_t* cb = luma + size_t{p.width} * p.height;
    uint8_t* cr = cb + static_cast<size_t>(chroma_size(p.width) * chroma_size(p.height));
    const yuv_weights w = weights_of(matrix);
    const instruction_set set = best_instructions();
    const size_t samples = static_cast<size_t>(chroma_size(p.width));
    row_pair rows = make_rows(samples * 2);
    // One sample for each 2 x 2 pixels. At odd borders the last pixel is taken twice, which is
    // the mean of what is there.
    for (uint32_t y = 0; y < p.height; y += 2, cb += samples, cr += samples) {
        write_luma(set, p, y, w, rows.top, luma);
        if (y + 1 < p.height)
            write_luma(set, p, y + 1, w, rows.bottom, luma);
        const split_row& bottom = y + 1 < p.height ? rows.bottom : rows.top;
        chroma_row(set, rows.top, bottom, w.cb, w.cr, cb, cr, samples);
    }
}
