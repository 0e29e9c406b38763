// The instructions beyond the plain ones that this processor has, for tests that compare all forms of a kernel.
#pragma once

#include "content/instructions.h"

#include <doctest/doctest.h>

#include <vector>

inline std::vector<instruction_set> faster_sets()
{
    std::vector<instruction_set> sets;
    for (const instruction_set set : {instructions_sse2, instructions_avx2})
        if (has_instructions(set))
            sets.push_back(set);
        else
            MESSAGE("this processor lacks instruction set ", static_cast<uint32_t>(set));
    return sets;
}
