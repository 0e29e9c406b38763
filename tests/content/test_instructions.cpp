#include "content/instructions.h"

#include <doctest/doctest.h>

#include <cstdlib>
#include <string_view>

TEST_CASE("the best instructions are there, and no better than the environment allows")
{
    const instruction_set best = best_instructions();
    CHECK(has_instructions(best));
    const char* held = std::getenv("BRIMLOW_INSTRUCTIONS");
    const std::string_view name = held != nullptr ? held : "";
    if (name == "plain")
        CHECK(best == instructions_plain);
    else if (name == "sse2")
        CHECK(best <= instructions_sse2);
    else
        for (const instruction_set set : {instructions_sse2, instructions_avx2})
            CHECK((!has_instructions(set) || set <= best));
    CHECK_FALSE(has_instructions(instruction_set_count));
}
