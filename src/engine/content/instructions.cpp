#include "content/instructions.h"

#include <cstdlib>
#include <string_view>

bool has_instructions(instruction_set set)
{
    switch (set) {
    case instructions_plain:
        return true;
#if defined(__x86_64__) || defined(__i386__)
    case instructions_sse2:
        return __builtin_cpu_supports("sse2") != 0;
    case instructions_avx2:
        return __builtin_cpu_supports("avx2") != 0;
#else
    case instructions_sse2:
    case instructions_avx2:
        return false;
#endif
    case instruction_set_count:
        break;
    }
    return false;
}

static instruction_set highest_allowed()
{
    const char* held = std::getenv("BRIMLOW_INSTRUCTIONS");
    const std::string_view name = held != nullptr ? held : "";
    if (name == "plain")
        return instructions_plain;
    return name == "sse2" ? instructions_sse2 : instructions_avx2;
}

static instruction_set find_best_instructions()
{
    for (const instruction_set set : {instructions_avx2, instructions_sse2})
        if (set <= highest_allowed() && has_instructions(set))
            return set;
    return instructions_plain;
}

instruction_set best_instructions()
{
    static const instruction_set best = find_best_instructions();
    return best;
}
