// Components of pixels: each form against what it is to come to. The pixels lie in exactly as much memory as they need,
// which the address sanitizer holds, and with bytes behind them.

#include "model/component_kernels.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cstddef>
#include <vector>

static void check_dropping(instruction_set set, size_t count, size_t behind)
{
    const size_t gap = count % 16; // in front, to have every address
    std::vector<uint8_t> bytes(gap + 4 * count + behind);
    std::vector<uint8_t> expected(gap);
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<uint8_t>(i * 2654435761u >> 11);
    for (size_t i = 0; i < gap; ++i)
        expected[i] = bytes[i];
    for (size_t i = gap; i < gap + 4 * count; ++i)
        if ((i - gap) % 4 != 3)
            expected.push_back(bytes[i]);
    const std::vector<uint8_t> rest(bytes.end() - static_cast<ptrdiff_t>(behind), bytes.end());
    drop_fourth_components(set, bytes.data() + gap, count);
    CAPTURE(count);
    CAPTURE(static_cast<uint32_t>(set));
    CHECK(std::equal(rest.begin(), rest.end(), bytes.end() - static_cast<ptrdiff_t>(behind)));
    bytes.resize(gap + 3 * count);
    CHECK(bytes == expected);
}

TEST_CASE("pixels without their fourth bytes stand together, for any count and address, with all instructions")
{
    for (const instruction_set set : {instructions_plain, instructions_sse2, instructions_avx2})
        for (size_t count = 0; has_instructions(set) && count <= 70; ++count)
            for (const size_t behind : {0u, 32u})
                check_dropping(set, count, behind);
}
