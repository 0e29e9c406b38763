#include "tools/frames/png_kernels.h"

#include <cstdlib>
#include <doctest/doctest.h>
#include <vector>

// As the format's own text words it.
static int textbook_paeth(int a, int b, int c)
{
    const int p = a + b - c;
    const int pa = std::abs(p - a);
    const int pb = std::abs(p - b);
    const int pc = std::abs(p - c);
    if (pa <= pb && pa <= pc)
        return a;
    return pb <= pc ? b : c;
}

static std::vector<uint8_t> textbook_row(const std::vector<uint8_t>& row, const std::vector<uint8_t>& above)
{
    std::vector<uint8_t> out(row.size());
    for (size_t i = 0; i < row.size(); ++i) {
        const int left = i < 3 ? 0 : row[i - 3];
        const int corner = i < 3 ? 0 : above[i - 3];
        out[i] = static_cast<uint8_t>(row[i] - textbook_paeth(left, above[i], corner));
    }
    return out;
}

TEST_CASE("Paeth's filter takes what the textbook takes, for all of left, above and corner")
{
    for (int corner = 0; corner < 256; corner += 3)
        for (int up = 0; up < 256; up += 3) {
            std::vector<uint8_t> row(6 * 256, 0);
            std::vector<uint8_t> above(row.size());
            for (size_t left = 0; left < 256; ++left)
                for (size_t k = 0; k < 3; ++k) {
                    row[left * 6 + k] = static_cast<uint8_t>(left);
                    above[left * 6 + k] = static_cast<uint8_t>(corner);
                    above[left * 6 + 3 + k] = static_cast<uint8_t>(up);
                }
            std::vector<uint8_t> out(row.size());
            filter_row_by_paeth(row.data(), above.data(), out.data(), row.size());
            REQUIRE(out == textbook_row(row, above));
        }
}

TEST_CASE("Paeth's filter writes a row of any length, and nothing behind it")
{
    for (size_t pixels = 1; pixels < 70; ++pixels) {
        std::vector<uint8_t> row(pixels * 3);
        std::vector<uint8_t> above(pixels * 3);
        for (size_t i = 0; i < row.size(); ++i) {
            row[i] = static_cast<uint8_t>(i * 89 + pixels);
            above[i] = static_cast<uint8_t>(i * 55);
        }
        std::vector<uint8_t> expected = textbook_row(row, above);
        expected.push_back(77);
        std::vector<uint8_t> out(row.size() + 1, 77);
        filter_row_by_paeth(row.data(), above.data(), out.data(), row.size());
        REQUIRE(out == expected);
    }
}
