#include "texgen/ripple.h"

#include "content/numbers.h"
#include "texgen/cosine_table.h"
#include "texgen/ripple_kernels.h"

#include <cassert>
#include <cmath>
#include <cstddef>
#include <memory>
#include <new>

constexpr double cosine_turn = 4096.0; // steps of the cosine table in a full turn

// Whole waves across the picture; a sign is of no matter to a cosine.
static double wave_count(float wavelength)
{
    return std::fabs(static_cast<double>(truncate_to_int(wavelength)));
}

// The fast forms wrap a place once, and count in integers.
static bool reaches_one_picture(double reach, uint32_t size)
{
    return std::fabs(reach) <= size && size <= max_fast_ripple_side;
}

// The x displacement follows the row and the "Y wavelength", the y displacement the
// column and the "X wavelength".
void ripple_picture(const float values[4], const uint8_t* a, uint8_t* out, uint32_t size)
{
    assert(cosine_table[0] == 1.0f); // build_cosine_table was called
    const double x_reach = static_cast<double>(values[0]) * size;
    const double y_reach = static_cast<double>(values[1]) * size;
    const double x_waves = wave_count(values[2]);
    const double y_waves = wave_count(values[3]);
    const size_t columns = ripple_columns(size);
    const std::unique_ptr<double[]> y_shifts(new (std::nothrow) double[columns]{});
    if (y_shifts == nullptr)
        return;
    for (uint32_t x = 0; x < size; ++x) {
        const double column = static_cast<double>(x) / size;
        y_shifts[x] = y_reach * cosine_at(truncate_to_int(column * x_waves * cosine_turn));
    }

    instruction_set set = best_instructions();
    if (!reaches_one_picture(x_reach, size) || !reaches_one_picture(y_reach, size))
        set = instructions_plain;
    std::unique_ptr<uint32_t[]> words;
    std::unique_ptr<last_corner_run[]> last_corners;
    if (set != instructions_plain) {
        words.reset(new (std::nothrow) uint32_t[ripple_words(size)]);
        last_corners.reset(new (std::nothrow) last_corner_run[columns / ripple_run]);
    }
    if (words != nullptr && last_corners != nullptr) {
        spread_to_words(a, size, words.get());
        for (size_t run = 0; run < columns / ripple_run; ++run)
            last_corners[run].fraction[0] = -1.0; // none yet
    } else
        set = instructions_plain;
    for (uint32_t y = 0; y < size; ++y, out += size_t{3} * size) {
        const double x_shift = x_reach * cosine_at(truncate_to_int(y_waves * cosine_turn / size * y));
        ripple_row(set, {a, words.get(), size}, {y, x_shift, y_shifts.get(), last_corners.get()}, out);
    }
}
