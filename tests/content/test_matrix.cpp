#include "content/extended_trig.h"
#include "content/matrix.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>

static bool is_identity(const float m[16])
{
    for (int i = 0; i < 16; ++i)
        if (m[i] != (i % 5 == 0 ? 1.0f : 0.0f))
            return false;
    return true;
}

static void check_bits(const float* values, const uint32_t* expected, int count)
{
    for (int i = 0; i < count; ++i) {
        CAPTURE(i);
        // Adding 0 makes a negative zero a positive one.
        CHECK(std::bit_cast<uint32_t>(values[i] + 0.0f) == expected[i]);
    }
}

// The image of a point under a matrix and a division by w.
static void project(const float m[16], float x, float y, float z, float result[3])
{
    float out[4];
    for (int r = 0; r < 4; ++r)
        out[r] = m[r] * x + m[4 + r] * y + m[8 + r] * z + m[12 + r];
    for (int r = 0; r < 3; ++r)
        result[r] = out[r] / out[3];
}

static void check_point(const float m[16], float x, float y, float z, float ex, float ey, float ez)
{
    const float point[3] = {x, y, z};
    float moved[3];
    transform_point(m, point, moved);
    CHECK(moved[0] == doctest::Approx(ex).epsilon(1e-6));
    CHECK(moved[1] == doctest::Approx(ey).epsilon(1e-6));
    CHECK(moved[2] == doctest::Approx(ez).epsilon(1e-6));
}

namespace {

// A matrix to be changed; the identity at first.
struct test_matrix {
    float m[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
};

} // namespace

TEST_CASE("The identity has ones on its diagonal alone")
{
    CHECK(is_identity(identity));
}

TEST_CASE("A copy has all sixteen numbers and leaves the original as it is")
{
    float from[16];
    for (int i = 0; i < 16; ++i)
        from[i] = static_cast<float>(i + 1);
    test_matrix to;
    copy_matrix(from, to.m);
    for (int i = 0; i < 16; ++i) {
        CHECK(to.m[i] == static_cast<float>(i + 1));
        CHECK(from[i] == static_cast<float>(i + 1));
    }
}

TEST_CASE("A perspective of 90 degrees and aspect 1 has unit focal lengths")
{
    test_matrix t;
    std::fill_n(t.m, 16, 3.0f);
    set_perspective(t.m, 90, 1, 0.1f, 100);
    CHECK(t.m[0] == doctest::Approx(1.0));
    CHECK(t.m[5] == doctest::Approx(1.0));
    CHECK(t.m[10] == doctest::Approx(-100.1 / 99.9));
    CHECK(t.m[14] == doctest::Approx(-20.0 / 99.9));
    CHECK(t.m[11] == -1.0f);
    for (const int zero : {1, 2, 3, 4, 6, 7, 8, 9, 12, 13, 15})
        CHECK(t.m[zero] == 0.0f);
}

TEST_CASE("A perspective brings the near plane to -1 and the far plane to 1")
{
    test_matrix t;
    set_perspective(t.m, 60, 1.6f, 0.5f, 40);
    float p[3];
    project(t.m, 0, 0, -0.5f, p);
    CHECK(p[2] == doctest::Approx(-1.0));
    project(t.m, 0, 0, -40, p);
    CHECK(p[2] == doctest::Approx(1.0));
    // tan(30 degrees) up at distance 1 is the upper edge.
    project(t.m, 0.57735027f * 1.6f, 0.57735027f, -1, p);
    CHECK(p[0] == doctest::Approx(1.0));
    CHECK(p[1] == doctest::Approx(1.0));
}

TEST_CASE("The orthographic projection has its origin top left and y downward")
{
    test_matrix t;
    set_orthographic(t.m, 0, 1, 1, 0, -1, 1);
    CHECK(t.m[0] == 2.0f);
    CHECK(t.m[5] == -2.0f);
    CHECK(t.m[10] == -1.0f);
    CHECK(t.m[12] == -1.0f);
    CHECK(t.m[13] == 1.0f);
    CHECK(t.m[14] == 0.0f);
    CHECK(t.m[15] == 1.0f);
    check_point(t.m, 0, 0, 0, -1, 1, 0);
    check_point(t.m, 1, 1, 0, 1, -1, 0);
}

TEST_CASE("An orthographic projection maps any box to the unit cube")
{
    test_matrix t;
    std::fill_n(t.m, 16, 3.0f);
    set_orthographic(t.m, -3, 5, 2, 12, 4, 20);
    check_point(t.m, -3, 2, -4, -1, -1, -1);
    check_point(t.m, 5, 12, -20, 1, 1, 1);
    for (const int zero : {1, 2, 3, 4, 6, 7, 8, 9, 11})
        CHECK(t.m[zero] == 0.0f);
}

TEST_CASE("Translation goes along the matrix's own axes")
{
    test_matrix t;
    translate(t.m, 1, 2, 3);
    CHECK(t.m[12] == 1.0f);
    CHECK(t.m[13] == 2.0f);
    CHECK(t.m[14] == 3.0f);
    scale(t.m, 2, 3, 4);
    translate(t.m, 10, 10, 10);
    CHECK(t.m[12] == 21.0f);
    CHECK(t.m[13] == 32.0f);
    CHECK(t.m[14] == 43.0f);
}

TEST_CASE("Translation leaves the fourth row alone")
{
    test_matrix t;
    t.m[3] = 5.0f;
    t.m[15] = 7.0f;
    translate(t.m, 1, 2, 3);
    CHECK(t.m[3] == 5.0f);
    CHECK(t.m[15] == 7.0f);
}

TEST_CASE("A quarter turn about z brings the x axis to the y axis")
{
    test_matrix t;
    rotate_z(t.m, 90);
    check_point(t.m, 1, 0, 0, 0, 1, 0);
    check_point(t.m, 0, 1, 0, -1, 0, 0);
    check_point(t.m, 0, 0, 1, 0, 0, 1);
}

TEST_CASE("A quarter turn about x brings the y axis to the z axis")
{
    test_matrix t;
    rotate_x(t.m, 90);
    check_point(t.m, 0, 1, 0, 0, 0, 1);
    check_point(t.m, 0, 0, 1, 0, -1, 0);
    check_point(t.m, 1, 0, 0, 1, 0, 0);
}

TEST_CASE("A quarter turn about y brings the z axis to the x axis")
{
    test_matrix t;
    rotate_y(t.m, 90);
    check_point(t.m, 0, 0, 1, 1, 0, 0);
    check_point(t.m, 1, 0, 0, 0, 0, -1);
    check_point(t.m, 0, 1, 0, 0, 1, 0);
}

TEST_CASE("Both turned columns are made of the old ones")
{
    // At 45 degrees a column made from an already turned one would have the length 1.22 or so.
    for (int axis = 0; axis < 3; ++axis) {
        test_matrix t;
        if (axis == 0)
            rotate_x(t.m, 45);
        else if (axis == 1)
            rotate_y(t.m, 45);
        else
            rotate_z(t.m, 45);
        for (int c = 0; c < 3; ++c) {
            const float* column = t.m + 4 * c;
            CHECK(column[0] * column[0] + column[1] * column[1] + column[2] * column[2] == doctest::Approx(1.0));
        }
    }
}

TEST_CASE("Rotations post-multiply: the last one acts on a point first")
{
    test_matrix t;
    rotate_z(t.m, 90);
    rotate_x(t.m, 90);
    // y -> z (about x), z stays (about z)
    check_point(t.m, 0, 1, 0, 0, 0, 1);
}

TEST_CASE("Rotations turn all four rows")
{
    test_matrix t;
    t.m[3] = 2.0f;
    rotate_z(t.m, 90);
    CHECK(t.m[3] == doctest::Approx(0.0).epsilon(1e-6));
    CHECK(t.m[7] == doctest::Approx(-2.0));
}

static void check_same(float value, float expected)
{
    CHECK(std::isnan(value) == std::isnan(expected));
    if (!std::isnan(expected))
        CHECK(std::bit_cast<uint32_t>(value) == std::bit_cast<uint32_t>(expected));
}

TEST_CASE("A turn by nothing gives the bits that the general formula gives, finite or not")
{
    const float inf = std::numeric_limits<float>::infinity();
    const float columns[2][4] = {{0.1f, -0.0f, 1.17e-38f, 5.0f}, {-3e38f, 0.0f, inf, std::nanf("")}};
    for (const float angle : {0.0f, -0.0f})
        for (const int first : {0, 1}) {
            const float* a = columns[first];
            const float* b = columns[1 - first];
            test_matrix t;
            std::copy_n(a, 4, t.m);
            std::copy_n(b, 4, t.m + 4);
            rotate_z(t.m, angle);
            for (int r = 0; r < 4; ++r) {
                // a c + b s and b c - a s with c = 1 and s = the angle, in extended precision
                const long double s = angle;
                check_same(t.m[r], static_cast<float>(static_cast<long double>(a[r]) + b[r] * s));
                check_same(t.m[4 + r], static_cast<float>(static_cast<long double>(b[r]) - a[r] * s));
            }
        }
}

TEST_CASE("Scaling stretches the first three columns, all four rows")
{
    test_matrix t;
    std::fill_n(t.m, 16, 1.0f);
    scale(t.m, 2, 3, 4);
    for (int r = 0; r < 4; ++r) {
        CHECK(t.m[r] == 2.0f);
        CHECK(t.m[4 + r] == 3.0f);
        CHECK(t.m[8 + r] == 4.0f);
        CHECK(t.m[12 + r] == 1.0f);
    }
}

TEST_CASE("The normal matrix is the inverse, stored row by row")
{
    test_matrix t;
    // Rows 1 2 3 / 0 1 4 / 5 6 0 have the inverse -24 18 5 / 20 -15 -4 / -5 4 1.
    const float columns[3][3] = {{1, 0, 5}, {2, 1, 6}, {3, 4, 0}};
    for (int c = 0; c < 3; ++c)
        std::copy_n(columns[c], 3, t.m + 4 * c);
    translate(t.m, 7, 8, 9);
    float normal[9];
    compute_normal_matrix(t.m, normal);
    const float inverse[9] = {-24, 18, 5, 20, -15, -4, -5, 4, 1};
    for (int i = 0; i < 9; ++i)
        CHECK(normal[i] == inverse[i]);
}

TEST_CASE("The normal matrix of a modelview without inverse is the identity")
{
    test_matrix t;
    scale(t.m, 2, 0, 2);
    float normal[9];
    compute_normal_matrix(t.m, normal);
    for (int i = 0; i < 9; ++i)
        CHECK(normal[i] == (i % 4 == 0 ? 1.0f : 0.0f));

    test_matrix holed;
    holed.m[5] = std::nanf("");
    std::fill_n(normal, 9, 3.0f);
    compute_normal_matrix(holed.m, normal);
    for (int i = 0; i < 9; ++i)
        CHECK(normal[i] == (i % 4 == 0 ? 1.0f : 0.0f));
}

TEST_CASE("A point is moved by the whole affine matrix, also in place")
{
    test_matrix t;
    translate(t.m, 1, 2, 3);
    scale(t.m, 2, 3, 4);
    float point[3] = {1, 1, 1};
    transform_point(t.m, point, point);
    CHECK(point[0] == 3.0f);
    CHECK(point[1] == 5.0f);
    CHECK(point[2] == 7.0f);
}

TEST_CASE("Numbers that are none pass through without harm")
{
    for (const float bad : {std::nanf(""), std::numeric_limits<float>::infinity(), 0.0f, 3e38f}) {
        test_matrix t;
        set_perspective(t.m, bad, bad, bad, bad);
        set_orthographic(t.m, bad, bad, bad, bad, bad, bad);
        rotate_x(t.m, bad);
        rotate_y(t.m, bad);
        rotate_z(t.m, bad);
        translate(t.m, bad, bad, bad);
        scale(t.m, bad, bad, bad);
        float normal[9];
        compute_normal_matrix(t.m, normal);
        CHECK(is_identity(identity));
    }
}

// Worked out in exact arithmetic by tests/support/reference_numbers.py; both word
// sizes must give these bits.
TEST_CASE("A chain of turns and moves gives the bits of exact arithmetic rounded at each step")
{
    test_matrix t;
    rotate_z(t.m, 33.3f);
    rotate_x(t.m, -71.7f);
    rotate_y(t.m, 128.9f);
    translate(t.m, 1.1f, -2.7f, 0.3f);
    scale(t.m, 1.5f, 0.7f, -2.3f);
    const uint32_t modelview[16]
        = {0xBE371437u, 0xBFB8C47Au, 0xBEBBABA0u, 0x00000000u, 0xBDF7230Du, 0x3E3C1D71u, 0xBF2A2315u, 0x00000000u,
            0xC00FEE4Bu, 0x3E274F5Bu, 0x3EE831ADu, 0x00000000u, 0x3F20AF68u, 0xBFE4EC1Fu, 0x400F1263u, 0x3F800000u};
    check_bits(t.m, modelview, 16);

    float normal[9];
    compute_normal_matrix(t.m, normal);
    const uint32_t inverse[9] = {0xBDA2BCA3u, 0xBF243CDDu, 0xBE26D171u, 0xBE7C2E36u, 0x3EBFF43Fu, 0xBFAD9BF7u,
        0xBED9AA30u, 0x3CFD054Eu, 0x3DAF9274u};
    check_bits(normal, inverse, 9);
}

TEST_CASE("A perspective gives the bits of exact arithmetic")
{
    test_matrix t;
    set_perspective(t.m, 57.3f, 1.6f, 0.1f, 333.3f);
    const float picked[4] = {t.m[0], t.m[5], t.m[10], t.m[14]};
    const uint32_t expected[4] = {0x3F926D1Bu, 0x3FEA482Cu, 0xBF8013ABu, 0xBE4CDC89u};
    check_bits(picked, expected, 4);
}

// ---- extended precision ------------------------------------------------------------------

// Matrices are computed in double precision where that leads to the same single-precision
// number; here all is carried in extended precision.

constexpr long double exact_pi = 3.14159265358979323846264338327950288L;

static sine_cosine extended_turn(float angle)
{
    return extended_sine_cosine(static_cast<long double>(angle) * 0.0055555557f * exact_pi);
}

static float extended_sum(const float* row, const float point[3])
{
    const long double x = point[0], y = point[1], z = point[2];
    return static_cast<float>(row[12] + (row[0] * x + row[4] * y + row[8] * z));
}

// The inverse of the upper left 3 x 3; false: there is none.
static bool extended_inverse(const float m[16], float inverse[9])
{
    const auto at = [m](int r, int c) -> long double { return m[c % 3 * 4 + r % 3]; };
    const auto minor
        = [&at](int r, int c) { return at(r + 1, c + 1) * at(r + 2, c + 2) - at(r + 1, c + 2) * at(r + 2, c + 1); };
    const long double determinant = at(0, 0) * minor(0, 0) + at(0, 1) * minor(0, 1) + at(0, 2) * minor(0, 2);
    for (int i = 0; i < 9; ++i)
        inverse[i] = static_cast<float>(minor(i % 3, i / 3) / determinant);
    return determinant != 0.0L && std::isfinite(determinant);
}

namespace {

struct number_source {
    uint32_t state = 1;
};

} // namespace

// -1..1; now and then a number with few bits, zeros and ones among them.
static float next_number(number_source& source)
{
    source.state = source.state * 1664525u + 1013904223u;
    const uint32_t bits = source.state >> 4;
    if (bits % 8 == 0)
        return static_cast<float>(static_cast<int32_t>(bits / 8 % 5) - 2) * 0.5f;
    return static_cast<float>(static_cast<int32_t>(bits) - (1 << 27)) * 0x1p-27f;
}

// The number between a single-precision one and the next, from which both are as far away.
static long double boundary_at(long double value)
{
    const float below = std::nextafter(static_cast<float>(value), 0.0f);
    return (static_cast<long double>(below) + std::nextafter(below, 2.0f * below)) / 2;
}

TEST_CASE("Turns give the bits of extended precision, at every angle")
{
    number_source source;
    for (int i = 0; i < 100000; ++i) {
        float m[16];
        for (float& number : m)
            number = next_number(source);
        const float angle = next_number(source) * (i % 9 == 1 ? 1.0e9f : i % 3 == 0 ? 1000000.0f : 360.0f);
        float expected[16];
        std::copy_n(m, 16, expected);
        const auto [s, c] = extended_turn(angle);
        for (int r = 0; r < 4 && angle != 0.0f; ++r) {
            const long double a = m[r], b = m[4 + r];
            expected[r] = static_cast<float>(a * c + b * s);
            expected[4 + r] = static_cast<float>(b * c - a * s);
        }
        rotate_z(m, angle);
        CAPTURE(angle);
        for (int n = 0; n < 16; ++n)
            REQUIRE(std::bit_cast<uint32_t>(m[n] + 0.0f) == std::bit_cast<uint32_t>(expected[n] + 0.0f));
    }
}

TEST_CASE("Turns by whole quarters keep the signs of zeros as extended precision does")
{
    for (const float angle : {90.0f, -90.0f, 180.0f, 270.0f, 360.0f, 450.0f, 720000.0f, 1.0e7f, 3.0e38f})
        for (const float a : {0.0f, -0.0f, 1.0f})
            for (const float b : {0.0f, -0.0f, -1.0f}) {
                float m[16] = {a, 0, 0, 0, b};
                const auto [s, c] = extended_turn(angle);
                rotate_z(m, angle);
                check_same(m[0], static_cast<float>(a * c + b * s));
                check_same(m[4], static_cast<float>(b * c - a * s));
            }
}

TEST_CASE("Turns that end near the boundary between two numbers give the bits of extended precision")
{
    number_source source;
    for (int i = 0; i < 20000; ++i) {
        const float angle = next_number(source) * 360.0f;
        const auto [s, c] = extended_turn(angle);
        const float a = 1.0f + next_number(source) * 0.5f;
        if (std::fabs(s) < 0.1L || std::fabs(c) < 0.1L)
            continue;
        const float b = static_cast<float>((boundary_at(a * c) - a * c) / s); // tiny: fills a c up
        const float b_of_sine = static_cast<float>((boundary_at(a * s) - a * s) / -c);
        float m[16] = {a, 0, 0, 0, b};
        float of_sine[16] = {a, 0, 0, 0, b_of_sine};
        rotate_z(m, angle);
        rotate_z(of_sine, angle);
        CAPTURE(angle);
        REQUIRE(m[0] == static_cast<float>(a * c + b * s));
        REQUIRE(of_sine[4] == static_cast<float>(b_of_sine * c - a * s));
    }
}

// There the sine is so small that the last bit of the radians, as extended precision rounds them, is seen in it.
TEST_CASE("Turns close to many half turns give the bits of extended precision")
{
    number_source source;
    for (int half_turns = 1; half_turns <= 5555; ++half_turns) {
        const float angle = 180.0f * static_cast<float>(half_turns);
        const auto [s, c] = extended_turn(angle);
        CAPTURE(angle);
        for (int i = 0; i < 40; ++i) {
            const float b = next_number(source);
            float m[16] = {0, 0, 0, 0, b};
            rotate_z(m, angle);
            REQUIRE(m[0] == static_cast<float>(b * s));
            REQUIRE(m[4] == static_cast<float>(b * c));
        }
    }
}

TEST_CASE("Moves and points give the bits of extended precision, boundaries included")
{
    number_source source;
    for (int i = 0; i < 100000; ++i) {
        float m[16];
        for (float& number : m)
            number = next_number(source);
        float point[3] = {next_number(source) * 10.0f, next_number(source), next_number(source) * 0.001f};
        if (i % 4 == 0) { // one and a half steps above 1, and a little more, which double precision loses
            m[0] = m[4] = 1.0f;
            m[8] = 0.0f;
            m[12] = 1.0f;
            point[0] = 0x1p-24f;
            point[1] = i % 8 == 0 ? 0x1p-60f : -0x1p-60f;
        }
        float expected[3];
        for (int r = 0; r < 3; ++r)
            expected[r] = extended_sum(m + r, point);
        float moved[3];
        transform_point(m, point, moved);
        translate(m, point[0], point[1], point[2]);
        for (int r = 0; r < 3; ++r) {
            REQUIRE(m[12 + r] == expected[r]);
            REQUIRE(moved[r] == expected[r]);
        }
    }
}

TEST_CASE("Turning and scaling at once gives the bits of one after the other")
{
    const float inf = std::numeric_limits<float>::infinity();
    const float odd_angles[] = {0.0f, -0.0f, 90.0f, 1.0e7f, inf, std::nanf("")};
    number_source source;
    for (int i = 0; i < 50000; ++i) {
        test_matrix one;
        for (float& number : one.m)
            number = next_number(source);
        float rotation[3];
        float factors[3];
        for (int axis = 0; axis < 3; ++axis) {
            rotation[axis] = next_number(source) * 360.0f;
            if (i % 3 == axis)
                rotation[axis] = odd_angles[static_cast<size_t>(i / 3) % std::size(odd_angles)];
            factors[axis] = next_number(source) * 3.0f;
        }
        test_matrix other = one;
        rotate_x(one.m, rotation[0]);
        rotate_y(one.m, rotation[1]);
        rotate_z(one.m, rotation[2]);
        scale(one.m, factors[0], factors[1], factors[2]);
        turn_and_scale(other.m, rotation, factors);
        for (int n = 0; n < 16; ++n) {
            CAPTURE(n);
            check_same(other.m[n], one.m[n]);
        }
    }
}

TEST_CASE("Normal matrices have the bits of extended precision, boundaries included")
{
    number_source source;
    for (int i = 0; i < 100000; ++i) {
        float m[16];
        for (float& number : m)
            number = next_number(source);
        if (i % 2 == 0) { // a d - b fills d / (a d - b) up to a boundary
            std::copy_n(identity, 16, m);
            m[0] = 1.0f + std::fabs(next_number(source)) * 0.5f;
            m[5] = 1.0f + std::fabs(next_number(source)) * 0.5f;
            m[1] = 1.0f;
            const long double a = m[0], d = m[5];
            m[4] = static_cast<float>(a * d - d / boundary_at(1.0L / a));
        } else if (i % 4 == 1) { // nearly flat: what is left of the determinant's sum has lost half of its digits
            const float first = next_number(source), second = next_number(source), left = 1.0e-6f;
            for (int r = 0; r < 3; ++r)
                m[8 + r] = first * m[r] + second * m[4 + r] + left * m[8 + r];
        }
        float expected[9];
        if (!extended_inverse(m, expected))
            continue;
        float normal[9];
        compute_normal_matrix(m, normal);
        for (int n = 0; n < 9; ++n)
            REQUIRE(std::bit_cast<uint32_t>(normal[n]) == std::bit_cast<uint32_t>(expected[n]));
    }
}
