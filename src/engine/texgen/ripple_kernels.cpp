#include "texgen/ripple_kernels.h"

#include "content/numbers.h"
#include "texgen/packed_pixels.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstring>

// ---- plain -------------------------------------------------------------------------------

static const uint8_t* pixel_at(const ripple_source& source, uint32_t x, uint32_t y)
{
    assert(x < source.size && y < source.size);
    return source.pixels + size_t{3} * (size_t{y} * source.size + x);
}

namespace {

// A sample's place along one axis: the pixel before it, the one behind it, and how
// far it lies between them.
struct sample_place {
    uint32_t before;
    uint32_t behind;
    double fraction; // 0..1
};

} // namespace

static sample_place place_sample(double position, uint32_t size)
{
    if (position < 0.0)
        position += size;
    if (!std::isfinite(position))
        position = 0.0;
    const double whole = std::floor(position);
    double pixel = std::fmod(whole, size);
    if (pixel < 0.0)
        pixel += size;
    const auto before = static_cast<uint32_t>(pixel);
    assert(before < size);
    return {before, (before + 1) % size, position - whole};
}

// The corners are weighted by their distances themselves, and the last corner's
// distance leaves the x fraction out: the look of existing productions.
static void mix_corners(const ripple_source& source, const sample_place& u, const sample_place& v, uint8_t* out)
{
    const double fx = u.fraction;
    const double fy = v.fraction;
    const double d00 = std::sqrt(fx * fx + fy * fy);
    const double d10 = std::sqrt((1.0 - fx) * (1.0 - fx) + fy * fy);
    const double d01 = std::sqrt(fx * fx + (1.0 - fy) * (1.0 - fy));
    const double d11 = std::sqrt(fy * fy + (1.0 - fy) * (1.0 - fy));
    const uint8_t* p00 = pixel_at(source, u.before, v.before);
    const uint8_t* p10 = pixel_at(source, u.behind, v.before);
    const uint8_t* p01 = pixel_at(source, u.before, v.behind);
    const uint8_t* p11 = pixel_at(source, u.behind, v.behind);
    for (uint32_t c = 0; c < 3; ++c) {
        const double sum = p00[c] * d00 + p10[c] * d10 + p01[c] * d01 + p11[c] * d11;
        out[c] = low_byte(truncate_to_int(sum / (d00 + d10 + d01 + d11)));
    }
}

static void ripple_row_plain(const ripple_source& source, const ripple_shift& shift, uint8_t* out)
{
    for (uint32_t x = 0; x < source.size; ++x, out += 3)
        mix_corners(source, place_sample(x + shift.x_shift, source.size),
            place_sample(shift.y + shift.y_shifts[x], source.size), out);
}

// ---- a run of pixels at a time -----------------------------------------------------------

namespace {

// Places along one axis.
struct place_run {
    int32_t before[ripple_run];
    double fraction[ripple_run];
};

// The words around each place, and their weights; [0] and [1] above, [2] and [3] below.
struct corner_run {
    uint32_t words[4][ripple_run];
    double weights[4][ripple_run];
    double sums[ripple_run]; // of the weights
};

} // namespace

// Positions lie within -size..2 * size, so that adding or taking away a size once is enough.
FAST_INLINE static void place_run_of(const double* positions, uint32_t size, place_run& places)
{
    const auto side = static_cast<int32_t>(size);
    const double back = side;
    double wrapped[ripple_run];
    for (uint32_t n = 0; n < ripple_run; ++n)
        wrapped[n] = positions[n] + (positions[n] < 0.0 ? back : 0.0);
    for (uint32_t n = 0; n < ripple_run; ++n)
        places.before[n] = static_cast<int32_t>(wrapped[n]);
    for (uint32_t n = 0; n < ripple_run; ++n)
        places.fraction[n] = wrapped[n] - places.before[n];
    for (uint32_t n = 0; n < ripple_run; ++n)
        places.before[n] -= places.before[n] < side ? 0 : side;
}

FAST_INLINE static void read_corners(
    const ripple_source& source, const place_run& u, const place_run& v, corner_run& corners)
{
    const size_t row = size_t{source.size} + 1;
    const uint32_t* first = source.words;
    const uint32_t* second = first + row;
    uint32_t words[ripple_run];
    for (uint32_t n = 0; n < ripple_run; ++n)
        words[n] = static_cast<uint32_t>(row) * static_cast<uint32_t>(v.before[n]) + static_cast<uint32_t>(u.before[n]);
    for (uint32_t n = 0; n < ripple_run; ++n) {
        corners.words[0][n] = first[words[n]];
        corners.words[1][n] = first[words[n] + 1];
        corners.words[2][n] = second[words[n]];
        corners.words[3][n] = second[words[n] + 1];
    }
}

// The last corner's weight follows the y fraction alone, which mostly is the one of the row before.
FAST_INLINE static void weigh_last_corner(const place_run& v, last_corner_run& last)
{
    if (std::memcmp(v.fraction, last.fraction, sizeof last.fraction) == 0)
        return;
    for (uint32_t n = 0; n < ripple_run; ++n) {
        const double below = (1.0 - v.fraction[n]) * (1.0 - v.fraction[n]);
        last.weight[n] = std::sqrt(v.fraction[n] * v.fraction[n] + below);
    }
    std::memcpy(last.fraction, v.fraction, sizeof last.fraction);
}

FAST_INLINE static void weigh_corners(
    const place_run& u, const place_run& v, const last_corner_run& last, corner_run& corners)
{
    for (uint32_t n = 0; n < ripple_run; ++n) {
        const double left = u.fraction[n] * u.fraction[n];
        const double right = (1.0 - u.fraction[n]) * (1.0 - u.fraction[n]);
        const double above = v.fraction[n] * v.fraction[n];
        const double below = (1.0 - v.fraction[n]) * (1.0 - v.fraction[n]);
        const double d00 = std::sqrt(left + above);
        const double d10 = std::sqrt(right + above);
        const double d01 = std::sqrt(left + below);
        const double d11 = last.weight[n];
        corners.weights[0][n] = d00;
        corners.weights[1][n] = d10;
        corners.weights[2][n] = d01;
        corners.weights[3][n] = d11;
        corners.sums[n] = d00 + d10 + d01 + d11;
    }
}

FAST_INLINE static double channel_of(uint32_t word, uint32_t channel)
{
    return static_cast<double>(static_cast<int32_t>(word >> (8 * channel) & 0xFF));
}

FAST_INLINE static void mix_channel(const corner_run& corners, uint32_t channel, uint32_t* values)
{
    for (uint32_t n = 0; n < ripple_run; ++n) {
        const double sum = channel_of(corners.words[0][n], channel) * corners.weights[0][n]
            + channel_of(corners.words[1][n], channel) * corners.weights[1][n]
            + channel_of(corners.words[2][n], channel) * corners.weights[2][n]
            + channel_of(corners.words[3][n], channel) * corners.weights[3][n];
        values[n] = static_cast<uint32_t>(static_cast<int32_t>(sum / corners.sums[n]));
    }
}

FAST_INLINE static void mix_run(const corner_run& corners, uint32_t* pixels)
{
    uint32_t red[ripple_run];
    uint32_t green[ripple_run];
    uint32_t blue[ripple_run];
    mix_channel(corners, 0, red);
    mix_channel(corners, 1, green);
    mix_channel(corners, 2, blue);
    for (uint32_t n = 0; n < ripple_run; ++n)
        pixels[n] = red[n] | green[n] << 8 | blue[n] << 16;
}

FAST_INLINE static void ripple_row_fast(
    instruction_set set, const ripple_source& source, const ripple_shift& shift, uint8_t* out)
{
    for (uint32_t begin = 0; begin < source.size; begin += ripple_run) {
        const uint32_t run = std::min(ripple_run, source.size - begin);
        double xs[ripple_run];
        double ys[ripple_run];
        for (uint32_t n = 0; n < ripple_run; ++n)
            xs[n] = static_cast<double>(static_cast<int32_t>(begin + std::min(n, run - 1))) + shift.x_shift;
        for (uint32_t n = 0; n < ripple_run; ++n)
            ys[n] = shift.y + shift.y_shifts[begin + n];
        place_run u;
        place_run v;
        corner_run corners;
        place_run_of(xs, source.size, u);
        place_run_of(ys, source.size, v);
        read_corners(source, u, v, corners);
        last_corner_run& last = shift.last_corners[begin / ripple_run];
        weigh_last_corner(v, last);
        weigh_corners(u, v, last, corners);
        uint32_t pixels[ripple_run];
        mix_run(corners, pixels);
        store_packed_pixels(set, pixels, out + size_t{3} * begin, run, source.size - begin - run);
    }
}

void spread_to_words(const uint8_t* pixels, uint32_t size, uint32_t* words)
{
    uint32_t* row = words;
    for (uint32_t y = 0; y < size; ++y, row += size + 1) {
        for (uint32_t x = 0; x + 1 < size; ++x, pixels += 3) { // with a byte of the next pixel, which is dropped
            std::memcpy(row + x, pixels, sizeof *row);
            row[x] &= 0xFFFFFF;
        }
        row[size - 1] = 0;
        std::memcpy(row + size - 1, pixels, 3);
        pixels += 3;
        row[size] = row[0];
    }
    std::memcpy(row, words, (size_t{size} + 1) * sizeof *row);
    row[size + 1] = 0;
}

FAST_AVX2 static void ripple_row_avx2(const ripple_source& source, const ripple_shift& shift, uint8_t* out)
{
    ripple_row_fast(instructions_avx2, source, shift, out);
}

void ripple_row(instruction_set set, const ripple_source& source, const ripple_shift& shift, uint8_t* out)
{
    switch (set) {
    case instructions_avx2:
        return ripple_row_avx2(source, shift, out);
    case instructions_sse2:
        return ripple_row_fast(instructions_sse2, source, shift, out);
    case instructions_plain:
    case instruction_set_count:
        break;
    }
    ripple_row_plain(source, shift, out);
}
