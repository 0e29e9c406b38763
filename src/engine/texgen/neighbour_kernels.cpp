#include "texgen/neighbour_kernels.h"

#include "content/numbers.h"
#include "content/vectors.h"

#include <algorithm>
#include <cassert>
#include <cstddef>

namespace {

// Factors of the nine pixels around one, the row above first.
struct kernel {
    int8_t factor[3][3];
};

// The rows of a pixel, above it and below.
struct three_rows {
    const uint8_t* upper;
    const uint8_t* middle;
    const uint8_t* lower;
};

} // namespace

constexpr double ninth = 0.111111111; // short of 1/9 on purpose: nine times 255 blurs to 254
constexpr uint16_t ninth_part = 7281; // of 65,536: the same for all sums of nine bytes

static constexpr bool is_ninth_the_same()
{
    for (uint32_t sum = 0; sum <= 9 * 255; ++sum)
        if (sum * ninth_part >> 16 != static_cast<uint32_t>(ninth * sum))
            return false;
    return true;
}

static_assert(is_ninth_the_same());

static constexpr kernel box_kernel = {{{1, 1, 1}, {1, 1, 1}, {1, 1, 1}}};

static constexpr kernel emboss_kernels[4] = {
    {{{-2, -1, 0}, {-1, 1, 1}, {0, 1, 2}}},
    {{{0, -1, -2}, {1, 1, -1}, {2, 1, 0}}},
    {{{2, 1, 0}, {1, 1, -1}, {0, -1, -2}}},
    {{{0, 1, 2}, {-1, 1, 1}, {-2, -1, 0}}},
};

static uint8_t clamped_byte(int32_t value)
{
    return static_cast<uint8_t>(std::clamp(value, 0, 255));
}

static uint8_t ninth_of(int32_t sum)
{
    return low_byte(truncate_to_int(ninth * sum));
}

// ---- pixel by pixel -------------------------------------------------------------------

static three_rows rows_around(const uint8_t* a, uint32_t size, uint32_t y)
{
    const size_t row = size_t{3} * size;
    return {a + (y == 0 ? size - 1 : y - 1) * row, a + y * row, a + (y == size - 1 ? 0 : y + 1) * row};
}

static int32_t filtered(const three_rows& rows, const kernel& k, uint32_t size, uint32_t x, uint32_t channel)
{
    const uint8_t* row[3] = {rows.upper, rows.middle, rows.lower};
    const uint32_t column[3] = {x == 0 ? size - 1 : x - 1, x, x == size - 1 ? 0 : x + 1};
    int32_t sum = 0;
    for (uint32_t i = 0; i < 3; ++i)
        for (uint32_t j = 0; j < 3; ++j)
            sum += k.factor[i][j] * row[i][size_t{3} * column[j] + channel];
    return sum;
}

static void blur_pixel(const three_rows& rows, uint32_t size, uint32_t x, uint8_t* out)
{
    for (uint32_t c = 0; c < 3; ++c)
        out[size_t{3} * x + c] = ninth_of(filtered(rows, box_kernel, size, x, c));
}

static void emboss_pixel(const three_rows& rows, const kernel& k, uint32_t size, uint32_t x, uint8_t* out)
{
    for (uint32_t c = 0; c < 3; ++c)
        out[size_t{3} * x + c] = clamped_byte(filtered(rows, k, size, x, c));
}

// ---- rows but for their first and last pixels -------------------------------------------
//
// `count` bytes from the second pixel on. The first pixel is 3 bytes before it.

constexpr size_t block_bytes = 1536; // of a row at a time, so that the sums stay near

// Sums of three rows, then of three columns of these.
FAST_INLINE static void blur_inside_fast(const three_rows rows, uint8_t* __restrict out, size_t count)
{
    uint16_t sums[block_bytes + 6];
    for (size_t begin = 0; begin < count; begin += block_bytes) {
        const size_t length = std::min(count - begin, block_bytes);
        const uint8_t* upper = rows.upper + begin;
        const uint8_t* middle = rows.middle + begin;
        const uint8_t* lower = rows.lower + begin;
        for (size_t n = 0; n < length + 6; ++n)
            sums[n] = static_cast<uint16_t>(upper[n] + middle[n] + lower[n]);
        for (size_t n = 0; n < length; ++n) {
            const auto sum = static_cast<uint16_t>(sums[n] + sums[n + 3] + sums[n + 6]);
            out[begin + 3 + n] = static_cast<uint8_t>(upper_product(sum, ninth_part));
        }
    }
}

static void blur_inside_sse2(const three_rows& rows, uint8_t* out, size_t count)
{
    blur_inside_fast(rows, out, count);
}

FAST_AVX2 static void blur_inside_avx2(const three_rows& rows, uint8_t* out, size_t count)
{
    blur_inside_fast(rows, out, count);
}

namespace {

// All four kernels are one, turned: twice the corner that the light comes from, once what lies beside it, the same
// opposite with a minus.
struct lit_rows {
    const uint8_t* light; // the row that is lit
    const uint8_t* middle;
    const uint8_t* shade;
    bool from_right;
};

} // namespace

static lit_rows light_rows(const three_rows& rows, uint32_t direction)
{
    const bool from_below = direction <= 2;
    const bool from_right = direction == 1 || direction == 4;
    return {from_below ? rows.lower : rows.upper, rows.middle, from_below ? rows.upper : rows.lower, from_right};
}

FAST_INLINE static void emboss_inside_fast(const lit_rows rows, uint8_t* __restrict out, size_t count)
{
    const size_t near = rows.from_right ? 6 : 0;
    const size_t far = 6 - near;
    for (size_t n = 0; n < count; ++n) {
        const auto light = static_cast<int16_t>(2 * rows.light[n + near] + rows.light[n + 3] + rows.middle[n + near]);
        const auto shade = static_cast<int16_t>(2 * rows.shade[n + far] + rows.shade[n + 3] + rows.middle[n + far]);
        const auto sum = static_cast<int16_t>(rows.middle[n + 3] + light - shade);
        out[n + 3] = static_cast<uint8_t>(std::clamp(sum, int16_t{0}, int16_t{255}));
    }
}

static void emboss_inside_sse2(const lit_rows& rows, uint8_t* out, size_t count)
{
    emboss_inside_fast(rows, out, count);
}

FAST_AVX2 static void emboss_inside_avx2(const lit_rows& rows, uint8_t* out, size_t count)
{
    emboss_inside_fast(rows, out, count);
}

// ---- pictures -------------------------------------------------------------------------

// Whether rows have an inside, and kernels for it.
static bool has_fast_inside(instruction_set set, uint32_t size)
{
    return size > 2 && (set == instructions_sse2 || set == instructions_avx2);
}

static void blur_row(instruction_set set, const three_rows& rows, uint32_t size, uint8_t* out)
{
    if (!has_fast_inside(set, size)) {
        for (uint32_t x = 0; x < size; ++x)
            blur_pixel(rows, size, x, out);
        return;
    }
    const size_t count = size_t{3} * (size - 2);
    blur_pixel(rows, size, 0, out);
    blur_pixel(rows, size, size - 1, out);
    set == instructions_avx2 ? blur_inside_avx2(rows, out, count) : blur_inside_sse2(rows, out, count);
}

void blur_picture(instruction_set set, const uint8_t* a, uint8_t* out, uint32_t size)
{
    for (uint32_t y = 0; y < size; ++y)
        blur_row(set, rows_around(a, size, y), size, out + size_t{3} * size * y);
}

static void emboss_row(instruction_set set, uint32_t direction, const three_rows& rows, uint32_t size, uint8_t* out)
{
    const kernel& k = emboss_kernels[direction - 1];
    if (!has_fast_inside(set, size)) {
        for (uint32_t x = 0; x < size; ++x)
            emboss_pixel(rows, k, size, x, out);
        return;
    }
    const lit_rows lit = light_rows(rows, direction);
    const size_t count = size_t{3} * (size - 2);
    emboss_pixel(rows, k, size, 0, out);
    emboss_pixel(rows, k, size, size - 1, out);
    set == instructions_avx2 ? emboss_inside_avx2(lit, out, count) : emboss_inside_sse2(lit, out, count);
}

void emboss_picture(instruction_set set, uint32_t direction, const uint8_t* a, uint8_t* out, uint32_t size)
{
    assert(direction >= 1 && direction <= 4);
    for (uint32_t y = 0; y < size; ++y)
        emboss_row(set, direction, rows_around(a, size, y), size, out + size_t{3} * size * y);
}
