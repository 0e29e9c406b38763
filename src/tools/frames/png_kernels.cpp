#include "tools/frames/png_kernels.h"

#include <algorithm>

constexpr size_t pixel = 3; // bytes

static int16_t size_of(int16_t difference)
{
    return difference < 0 ? static_cast<int16_t>(-difference) : difference;
}

// The compiler makes vectors of the second loop: nothing in it depends on what it has written.
void filter_row_by_paeth(
    const uint8_t* __restrict row, const uint8_t* __restrict above, uint8_t* __restrict out, size_t count)
{
    for (size_t i = 0; i < std::min(pixel, count); ++i)
        out[i] = static_cast<uint8_t>(row[i] - above[i]); // the nearest of 0, above and 0
    for (size_t i = pixel; i < count; ++i) {
        const int16_t left = row[i - pixel];
        const int16_t up = above[i];
        const int16_t corner = above[i - pixel];
        const int16_t from_left = static_cast<int16_t>(up - corner);
        const int16_t from_up = static_cast<int16_t>(left - corner);
        const int16_t to_left = size_of(from_left);
        const int16_t to_up = size_of(from_up);
        const int16_t to_corner = size_of(static_cast<int16_t>(from_left + from_up));
        const int16_t other = to_up <= to_corner ? up : corner;
        const int16_t nearest = to_left <= std::min(to_up, to_corner) ? left : other;
        out[i] = static_cast<uint8_t>(row[i] - nearest);
    }
}
