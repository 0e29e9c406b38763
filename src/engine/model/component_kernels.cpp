#include "model/component_kernels.h"

#include <cassert>
#include <cstring>

#ifdef __SSE2__
#include <immintrin.h>
#endif

// The target is never ahead of the source. Pixels from `first` on.
static void drop_plain(uint8_t* pixels, size_t first, size_t count)
{
    for (size_t i = first; i < count; ++i)
        for (size_t c = 0; c < 3; ++c)
            pixels[3 * i + c] = pixels[4 * i + c];
}

// Two pixels a number: both halves lose their fourth byte and move together.
static uint64_t two_packed(const uint8_t* source)
{
    uint64_t pixels;
    std::memcpy(&pixels, source, sizeof pixels);
    return (pixels & 0xFFFFFF) | (pixels >> 8 & 0xFFFFFF000000);
}

// Four pixels at a time. Returns how many are done.
static size_t drop_by_numbers(uint8_t* pixels, size_t count)
{
    size_t done = 0;
    for (; done + 4 <= count; done += 4) {
        const uint64_t begin = two_packed(pixels + 4 * done);
        const uint64_t end = two_packed(pixels + 4 * done + 8);
        const uint64_t low = begin | end << 48;
        const auto high = static_cast<uint32_t>(end >> 16);
        std::memcpy(pixels + 3 * done, &low, sizeof low);
        std::memcpy(pixels + 3 * done + 8, &high, sizeof high);
    }
    return done;
}

#ifdef __SSE2__
// The same. Each step writes four bytes more than it has, which lie in front of what is read next.
FAST_AVX2 static size_t drop_by_shuffling(uint8_t* pixels, size_t count)
{
    const __m128i kept = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
    size_t done = 0;
    for (; done + 4 <= count; done += 4) {
        const __m128i four = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pixels + 4 * done));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(pixels + 3 * done), _mm_shuffle_epi8(four, kept));
    }
    return done;
}
#else
static size_t drop_by_shuffling(uint8_t* pixels, size_t count)
{
    return drop_by_numbers(pixels, count);
}
#endif

void drop_fourth_components(instruction_set set, uint8_t* pixels, size_t count)
{
    assert(pixels != nullptr || count == 0);
    size_t done = 0;
    switch (set) {
    case instructions_plain:
    case instruction_set_count:
        break;
    case instructions_sse2:
        done = drop_by_numbers(pixels, count);
        break;
    case instructions_avx2:
        done = drop_by_shuffling(pixels, count);
        break;
    }
    drop_plain(pixels, done, count);
}
