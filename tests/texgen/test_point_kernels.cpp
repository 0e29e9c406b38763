// Each form of a kernel against its plain loop: all bytes and pairs of bytes, every length up to a few vectors, every
// address, in place, and scales of all kinds. What the plain loops compute, test_operations.cpp holds.

#include "texgen/point_kernels.h"

#include <doctest/doctest.h>

#include <cmath>
#include <limits>
#include <vector>

constexpr instruction_set faster_sets[] = {instructions_sse2, instructions_avx2};

// Ordinary ones, those of shows, the borders of what whole numbers hold, what is too large, too small or no number.
static std::vector<float> varied_scales()
{
    std::vector<float> scales = {0.0f, 1.0f, 0.5f, 0.25f, 2.0f, 1.5f, 1.35f, 0.9f, 0.8f, 0.7f, 0.1f, 0.22f, 0.52f,
        0.62f, 1.0f / 255.0f, 1.0f / 180.0f, 1.0f / 150.0f, 1.0f / 3.0f, 0.333333f, 0.00392f, 0.99999994f, 1.0000001f,
        3.7f, 100.3f, 127.99999f, 128.0f, 254.5f, 255.0f, 255.99998f, 256.0f, 300.7f, 32767.99f, 32768.0f, 33025.0f,
        33026.0f, 65536.0f, 8421504.0f, 8421505.0f, 1e9f, 2147483648.0f, 1e30f, 0.007f, 0.0039062f, 1.0f / 65025.0f,
        1.0f / 65536.0f, 1.52e-5f, 1.53788e-5f, 0.000123f, 1e-8f, 1e-30f, 1e-42f, std::numeric_limits<float>::max(),
        std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()};
    uint32_t state = 5;
    for (uint32_t n = 0; n < 40; ++n) {
        state = state * 1664525 + 1013904223;
        scales.push_back(std::ldexp(static_cast<float>(state >> 8), static_cast<int>(state % 18) - 32));
    }
    const size_t count = scales.size();
    for (size_t n = 0; n < count; ++n)
        scales.push_back(-scales[n]);
    return scales;
}

// All values of a byte, and back again in another order; long enough for any length and address below.
static std::vector<uint8_t> varied_bytes(size_t count)
{
    std::vector<uint8_t> bytes(count);
    for (size_t n = 0; n < count; ++n)
        bytes[n] = static_cast<uint8_t>(n * 37 + n / 256);
    return bytes;
}

namespace {

enum kernel_kind : uint32_t {
    kernel_invert,
    kernel_scale,
    kernel_add,
    kernel_multiply_capped,
    kernel_multiply_clamped,
    kernel_greater,
    kernel_lesser,
    kernel_count
};

struct operands {
    const uint8_t* a;
    const uint8_t* b;
    float scale1;
    float scale2;
};

} // namespace

static void run_kernel(kernel_kind kind, instruction_set set, const operands& o, uint8_t* out, size_t count)
{
    const scaled_bytes a = {o.a, o.scale1};
    const scaled_bytes b = {o.b, o.scale2};
    switch (kind) {
    case kernel_invert:
        return invert_bytes(set, o.a, out, count);
    case kernel_scale:
        return scale_bytes(set, a, out, count);
    case kernel_add:
        return add_bytes(set, a, b, out, count);
    case kernel_multiply_capped:
        return multiply_bytes_capped(set, {o.a, o.b, o.scale1}, out, count);
    case kernel_multiply_clamped:
        return multiply_bytes_clamped(set, {o.a, o.b, o.scale1}, out, count);
    case kernel_greater:
        return take_greater_bytes(set, a, b, out, count);
    case kernel_lesser:
        return take_lesser_bytes(set, a, b, out, count);
    case kernel_count:
        break;
    }
}

static void run_all(instruction_set set, const operands& o, std::vector<uint8_t>& out, size_t count)
{
    for (uint32_t kind = 0; kind < kernel_count; ++kind)
        run_kernel(static_cast<kernel_kind>(kind), set, o, out.data() + kind * count, count);
}

static bool is_lacking(instruction_set set)
{
    if (has_instructions(set))
        return false;
    MESSAGE("this processor lacks instruction set ", static_cast<uint32_t>(set));
    return true;
}

static void require_same(const std::vector<uint8_t>& made, const std::vector<uint8_t>& expected, const operands& o)
{
    CAPTURE(o.scale1);
    CAPTURE(o.scale2);
    REQUIRE(made == expected);
}

// ---- scales -----------------------------------------------------------------------------

namespace {

// a is byte n / 256 and b byte n % 256: all pairs.
struct all_pairs {
    std::vector<uint8_t> a = std::vector<uint8_t>(65536);
    std::vector<uint8_t> b = std::vector<uint8_t>(65536);
};

} // namespace

static all_pairs make_all_pairs()
{
    all_pairs pairs;
    for (size_t n = 0; n < 65536; ++n) {
        pairs.a[n] = static_cast<uint8_t>(n / 256);
        pairs.b[n] = static_cast<uint8_t>(n);
    }
    return pairs;
}

TEST_CASE("all point operations give the same bytes with all instructions, for all pairs of bytes and any scale")
{
    const all_pairs pairs = make_all_pairs();
    const std::vector<float> scales = varied_scales();
    std::vector<uint8_t> expected(kernel_count * 65536);
    std::vector<uint8_t> made(kernel_count * 65536);
    for (size_t n = 0; n < scales.size(); ++n) {
        const operands o = {pairs.a.data(), pairs.b.data(), scales[n], scales[(n * 31 + 7) % scales.size()]};
        run_all(instructions_plain, o, expected, 65536);
        for (const instruction_set set : faster_sets) {
            if (is_lacking(set))
                continue;
            run_all(set, o, made, 65536);
            require_same(made, expected, o);
        }
    }
}

TEST_CASE("adding gives the same bytes with all instructions for any two ordinary scales")
{
    const all_pairs pairs = make_all_pairs();
    const float scales[] = {0.0f, 1.0f, -1.0f, 0.5f, 0.1f, 0.22f, 0.8f, 1.35f, -0.3f, 100.0f, 0.008f};
    std::vector<uint8_t> expected(65536);
    std::vector<uint8_t> made(65536);
    for (const float scale1 : scales)
        for (const float scale2 : scales) {
            const operands o = {pairs.a.data(), pairs.b.data(), scale1, scale2};
            run_kernel(kernel_add, instructions_plain, o, expected.data(), 65536);
            for (const instruction_set set : faster_sets) {
                if (is_lacking(set))
                    continue;
                run_kernel(kernel_add, set, o, made.data(), 65536);
                require_same(made, expected, o);
            }
        }
}

TEST_CASE("the greater and the lesser are the same with all instructions for any two ordinary scales")
{
    const all_pairs pairs = make_all_pairs();
    for (const kernel_kind kind : {kernel_greater, kernel_lesser})
        for (const float scale1 : {1.0f, 0.7f, 1.9f, -0.5f})
            for (const float scale2 : {1.0f, 0.31f, 2.6f, -2.0f}) {
                const operands o = {pairs.a.data(), pairs.b.data(), scale1, scale2};
                std::vector<uint8_t> expected(65536);
                std::vector<uint8_t> made(65536);
                run_kernel(kind, instructions_plain, o, expected.data(), 65536);
                for (const instruction_set set : faster_sets) {
                    if (is_lacking(set))
                        continue;
                    run_kernel(kind, set, o, made.data(), 65536);
                    require_same(made, expected, o);
                }
            }
}

// ---- lengths and addresses ----------------------------------------------------------------

// Scales that take each of the forms that a kernel has.
static const float form_scales[][2] = {{1.0f, 1.0f}, {0.7f, 0.9f}, {1.4f, 0.3f}, {-0.5f, 0.5f}, {0.0031f, 1e-9f}};

TEST_CASE("point operations give the same bytes with all instructions, at any length and address")
{
    const std::vector<uint8_t> source = varied_bytes(1200);
    for (const auto& scale : form_scales)
        for (const instruction_set set : faster_sets) {
            if (is_lacking(set))
                continue;
            for (size_t begin = 0; begin < 33; ++begin)
                for (size_t count = begin % 3; count < 130; count += 3) {
                    const operands o = {source.data() + begin, source.data() + 600 - begin, scale[0], scale[1]};
                    for (uint32_t kind = 0; kind < kernel_count; ++kind) {
                        std::vector<uint8_t> expected(200, 7);
                        std::vector<uint8_t> made(200, 7);
                        run_kernel(static_cast<kernel_kind>(kind), instructions_plain, o, expected.data() + 1, count);
                        run_kernel(static_cast<kernel_kind>(kind), set, o, made.data() + 1, count);
                        REQUIRE(made == expected);
                    }
                }
        }
}

TEST_CASE("point operations work in place of either source, with all instructions")
{
    const std::vector<uint8_t> first = varied_bytes(513);
    const std::vector<uint8_t> second(first.rbegin(), first.rend());
    for (const auto& scale : form_scales)
        for (const instruction_set set : {instructions_plain, instructions_sse2, instructions_avx2}) {
            if (is_lacking(set))
                continue;
            for (uint32_t kind = 0; kind < kernel_count; ++kind) {
                std::vector<uint8_t> apart(513);
                std::vector<uint8_t> a = first;
                std::vector<uint8_t> b = second;
                run_kernel(
                    static_cast<kernel_kind>(kind), set, {a.data(), b.data(), scale[0], scale[1]}, apart.data(), 513);
                run_kernel(
                    static_cast<kernel_kind>(kind), set, {a.data(), b.data(), scale[0], scale[1]}, a.data(), 513);
                REQUIRE(a == apart);
                a = first;
                run_kernel(
                    static_cast<kernel_kind>(kind), set, {a.data(), b.data(), scale[0], scale[1]}, b.data(), 513);
                REQUIRE(b == apart);
            }
        }
}
