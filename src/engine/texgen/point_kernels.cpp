#include "texgen/point_kernels.h"

static void invert_plain(const uint8_t* a, uint8_t* out, size_t count)
{
    for (size_t n = 0; n < count; ++n)
        out[n] = static_cast<uint8_t>(255 - a[n]);
}

// The compiler makes vectors of this loop, as wide as its caller's instructions.
FAST_INLINE static void invert_fast(const uint8_t* a, uint8_t* out, size_t count)
{
    for (size_t n = 0; n < count; ++n)
        out[n] = static_cast<uint8_t>(~a[n]);
}

static void invert_sse2(const uint8_t* a, uint8_t* out, size_t count)
{
    invert_fast(a, out, count);
}

FAST_AVX2 static void invert_avx2(const uint8_t* a, uint8_t* out, size_t count)
{
    invert_fast(a, out, count);
}

void invert_bytes(instruction_set set, const uint8_t* a, uint8_t* out, size_t count)
{
    switch (set) {
    case instructions_avx2:
        return invert_avx2(a, out, count);
    case instructions_sse2:
        return invert_sse2(a, out, count);
    case instructions_plain:
    case instruction_set_count:
        break;
    }
    invert_plain(a, out, count);
}
