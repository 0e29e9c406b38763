// Components of pixels: each form against what it is to come to, in exactly as much memory as the pixels need.

#include "model/component_kernels.h"

#include <doctest/doctest.h>

#include <vector>

TEST_CASE("pixels without their fourth bytes stand together, for any count and address, with all instructions")
{
    for (const instruction_set set : {instructions_plain, instructions_sse2, instructions_avx2})
        for (size_t count = 0; has_instructions(set) && count <= 70; ++count) {
            const size_t gap = count % 16; // in front, to have every address
            std::vector<uint8_t> bytes(gap + 4 * count);
            std::vector<uint8_t> expected(gap);
            for (size_t i = 0; i < bytes.size(); ++i)
                bytes[i] = static_cast<uint8_t>(i * 2654435761u >> 11);
            for (size_t i = 0; i < gap; ++i)
                expected[i] = bytes[i];
            for (size_t i = gap; i < bytes.size(); ++i)
                if ((i - gap) % 4 != 3)
                    expected.push_back(bytes[i]);
            drop_fourth_components(set, bytes.data() + gap, count);
            bytes.resize(gap + 3 * count);
            CAPTURE(count);
            CAPTURE(static_cast<uint32_t>(set));
            CHECK(bytes == expected);
        }
}
