#include "effects/water_kernels.h"

#include <algorithm>
#include <cstddef>

// ---- plain -------------------------------------------------------------------------------

static void spread_wave_plain(const int32_t* a, int32_t* b, uint32_t side, uint32_t count)
{
    for (uint32_t k = 0; k < count; ++k) {
        const int32_t* entry = a + k;
        const int64_t around = int64_t{entry[-1]} + entry[1] + *(entry - side) + entry[side];
        const int32_t height = static_cast<int32_t>((around >> 1) - b[k]);
        b[k] = std::min(height - (height >> 5), 4);
    }
}

static double blended_height(const water_fields& fields, uint32_t k, double phase)
{
    return (fields.heights[0][k] * 0.5 + fields.heights[1][k] * phase * 0.5 + fields.before[k] * (1.0 - phase) * 0.5)
        * 0.2;
}

static void blend_heights_plain(const water_fields& fields, double phase, uint32_t count, float* heights)
{
    for (uint32_t k = 0; k < count; ++k)
        heights[k] = static_cast<float>(blended_height(fields, k, phase));
}

static void blend_whole_heights_plain(const water_fields& fields, double phase, uint32_t count, float* heights)
{
    for (uint32_t k = 0; k < count; ++k)
        heights[k] = static_cast<float>(static_cast<int32_t>(blended_height(fields, k, phase)));
}

// ---- a vector at a time ------------------------------------------------------------------

// Half of a sum without its 33rd and 34th bit: the halves' sum, and half of what they dropped.
FAST_INLINE static void spread_wave_fast(
    const int32_t* __restrict a, int32_t* __restrict b, uint32_t side, uint32_t count)
{
    const auto* left = reinterpret_cast<const uint32_t*>(a) - 1;
    const uint32_t* right = left + 2;
    const uint32_t* above = left + 1 - side;
    const uint32_t* below = left + 1 + side;
    for (uint32_t k = 0; k < count; ++k) {
        const uint32_t rests = (left[k] & 1) + (right[k] & 1) + (above[k] & 1) + (below[k] & 1);
        const int32_t halves = static_cast<int32_t>(static_cast<uint32_t>(static_cast<int32_t>(left[k]) >> 1)
            + static_cast<uint32_t>(static_cast<int32_t>(right[k]) >> 1)
            + static_cast<uint32_t>(static_cast<int32_t>(above[k]) >> 1)
            + static_cast<uint32_t>(static_cast<int32_t>(below[k]) >> 1) + (rests >> 1) - static_cast<uint32_t>(b[k]));
        b[k] = std::min(halves - (halves >> 5), 4);
    }
}

// The compiler makes vectors of the plain loops, as wide as its caller's instructions.
FAST_INLINE static void blend_heights_fast(
    const water_fields& fields, double phase, uint32_t count, float* __restrict heights)
{
    const int32_t* first = fields.heights[0];
    const int32_t* second = fields.heights[1];
    const int32_t* before = fields.before;
    for (uint32_t k = 0; k < count; ++k)
        heights[k]
            = static_cast<float>((first[k] * 0.5 + second[k] * phase * 0.5 + before[k] * (1.0 - phase) * 0.5) * 0.2);
}

FAST_INLINE static void blend_whole_heights_fast(
    const water_fields& fields, double phase, uint32_t count, float* __restrict heights)
{
    const int32_t* first = fields.heights[0];
    const int32_t* second = fields.heights[1];
    const int32_t* before = fields.before;
    for (uint32_t k = 0; k < count; ++k)
        heights[k] = static_cast<float>(
            static_cast<int32_t>((first[k] * 0.5 + second[k] * phase * 0.5 + before[k] * (1.0 - phase) * 0.5) * 0.2));
}

// ---- by instructions ---------------------------------------------------------------------

FAST_AVX2 static void spread_wave_avx2(const int32_t* a, int32_t* b, uint32_t side, uint32_t count)
{
    spread_wave_fast(a, b, side, count);
}

FAST_AVX2 static void blend_heights_avx2(const water_fields& fields, double phase, uint32_t count, float* heights)
{
    blend_heights_fast(fields, phase, count, heights);
}

FAST_AVX2 static void blend_whole_heights_avx2(const water_fields& fields, double phase, uint32_t count, float* heights)
{
    blend_whole_heights_fast(fields, phase, count, heights);
}

void spread_wave_entries(instruction_set set, const int32_t* a, int32_t* b, uint32_t side, uint32_t count)
{
    switch (set) {
    case instructions_avx2:
        return spread_wave_avx2(a, b, side, count);
    case instructions_sse2:
        return spread_wave_fast(a, b, side, count);
    case instructions_plain:
    case instruction_set_count:
        break;
    }
    spread_wave_plain(a, b, side, count);
}

void blend_heights(instruction_set set, const water_fields& fields, double phase, uint32_t count, float* heights)
{
    switch (set) {
    case instructions_avx2:
        return blend_heights_avx2(fields, phase, count, heights);
    case instructions_sse2:
        return blend_heights_fast(fields, phase, count, heights);
    case instructions_plain:
    case instruction_set_count:
        break;
    }
    blend_heights_plain(fields, phase, count, heights);
}

void blend_whole_heights(instruction_set set, const water_fields& fields, double phase, uint32_t count, float* heights)
{
    switch (set) {
    case instructions_avx2:
        return blend_whole_heights_avx2(fields, phase, count, heights);
    case instructions_sse2:
        return blend_whole_heights_fast(fields, phase, count, heights);
    case instructions_plain:
    case instruction_set_count:
        break;
    }
    blend_whole_heights_plain(fields, phase, count, heights);
}
