// Which instructions the fast kernels use.
//
// A kernel is a short loop over a row of bytes or numbers. It exists as a plain loop, which says what it computes and
// runs anywhere, and as faster forms for the vector instructions that processors have. All forms of a kernel give the
// same bytes: who calls one cannot tell which it was, and tests compare each with the plain loop.
#pragma once

#include <cstdint>

enum instruction_set : uint32_t {
    instructions_plain, // one element after the other
    instructions_sse2,  // 16 bytes at a time; every x86 that the player is built for
    instructions_avx2,  // 32 bytes at a time; chosen while the program runs
    instruction_set_count
};

// Put before a function that is compiled for AVX2 in a program that must start without it. What it calls is compiled
// so only if it is inlined: kernels that several forms share are FAST_INLINE.
#if defined(__x86_64__) || defined(__i386__)
#define FAST_AVX2 [[gnu::target("avx2")]]
#else
#define FAST_AVX2
#endif
#define FAST_INLINE [[gnu::always_inline]] inline

// Whether this processor, and the system on it, can carry them out.
bool has_instructions(instruction_set set);

// The best that this machine has; the same at every call. The variable BRIMLOW_INSTRUCTIONS of the environment ("plain",
// "sse2") holds it to lower ones, for tests, comparisons and doubt; any other value is as if there were none.
instruction_set best_instructions();
