#include "render/matrix.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
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

TEST_CASE("Start-up sets every matrix to the identity")
{
    std::fill_n(matrices.modelview, 16, 3.0f);
    std::fill_n(matrices.projection, 16, 3.0f);
    init_matrices();
    CHECK(is_identity(matrices.identity));
    CHECK(is_identity(matrices.modelview));
    CHECK(is_identity(matrices.projection));
    CHECK(is_identity(matrices.texture_matrix));
    CHECK(is_identity(matrices.saved_modelview));
}

TEST_CASE("A reset copies the identity")
{
    init_matrices();
    translate(1, 2, 3);
    translate_texture(1, 2, 3);
    reset_modelview();
    CHECK(is_identity(matrices.modelview));
    CHECK_FALSE(is_identity(matrices.texture_matrix));
    reset_texture_matrix();
    CHECK(is_identity(matrices.texture_matrix));
}

TEST_CASE("A saved modelview comes back bit by bit")
{
    init_matrices();
    rotate_x(17, select_modelview);
    float before[16];
    std::copy_n(matrices.modelview, 16, before);
    save_modelview();
    translate(1, 2, 3);
    scale(2, 2, 2);
    restore_modelview();
    CHECK(std::equal(before, before + 16, matrices.modelview));
}

TEST_CASE("A perspective of 90 degrees and aspect 1 has unit focal lengths")
{
    set_perspective(90, 1, 0.1f, 100);
    CHECK(matrices.projection[0] == doctest::Approx(1.0));
    CHECK(matrices.projection[5] == doctest::Approx(1.0));
    CHECK(matrices.projection[10] == doctest::Approx(-100.1 / 99.9));
    CHECK(matrices.projection[14] == doctest::Approx(-20.0 / 99.9));
    CHECK(matrices.projection[11] == -1.0f);
    for (const int zero : {1, 2, 3, 4, 6, 7, 8, 9, 12, 13, 15})
        CHECK(matrices.projection[zero] == 0.0f);
}

TEST_CASE("A perspective brings the near plane to -1 and the far plane to 1")
{
    set_perspective(60, 1.6f, 0.5f, 40);
    float p[3];
    project(matrices.projection, 0, 0, -0.5f, p);
    CHECK(p[2] == doctest::Approx(-1.0));
    project(matrices.projection, 0, 0, -40, p);
    CHECK(p[2] == doctest::Approx(1.0));
    // tan(30 degrees) up at distance 1 is the upper edge.
    project(matrices.projection, 0.57735027f * 1.6f, 0.57735027f, -1, p);
    CHECK(p[0] == doctest::Approx(1.0));
    CHECK(p[1] == doctest::Approx(1.0));
}

TEST_CASE("The orthographic projection has its origin top left and y downward")
{
    set_orthographic(0, 1, 1, 0, -1, 1);
    CHECK(matrices.projection[0] == 2.0f);
    CHECK(matrices.projection[5] == -2.0f);
    CHECK(matrices.projection[10] == -1.0f);
    CHECK(matrices.projection[12] == -1.0f);
    CHECK(matrices.projection[13] == 1.0f);
    CHECK(matrices.projection[14] == 0.0f);
    CHECK(matrices.projection[15] == 1.0f);
    check_point(matrices.projection, 0, 0, 0, -1, 1, 0);
    check_point(matrices.projection, 1, 1, 0, 1, -1, 0);
}

TEST_CASE("An orthographic projection maps any box to the unit cube")
{
    set_orthographic(-3, 5, 2, 12, 4, 20);
    check_point(matrices.projection, -3, 2, -4, -1, -1, -1);
    check_point(matrices.projection, 5, 12, -20, 1, 1, 1);
    for (const int zero : {1, 2, 3, 4, 6, 7, 8, 9, 11})
        CHECK(matrices.projection[zero] == 0.0f);
}

TEST_CASE("Translation goes along the matrix's own axes")
{
    init_matrices();
    translate(1, 2, 3);
    CHECK(matrices.modelview[12] == 1.0f);
    CHECK(matrices.modelview[13] == 2.0f);
    CHECK(matrices.modelview[14] == 3.0f);
    scale(2, 3, 4);
    translate(10, 10, 10);
    CHECK(matrices.modelview[12] == 21.0f);
    CHECK(matrices.modelview[13] == 32.0f);
    CHECK(matrices.modelview[14] == 43.0f);
}

TEST_CASE("Translation leaves the fourth row alone")
{
    init_matrices();
    matrices.modelview[3] = 5.0f;
    matrices.modelview[15] = 7.0f;
    translate(1, 2, 3);
    CHECK(matrices.modelview[3] == 5.0f);
    CHECK(matrices.modelview[15] == 7.0f);
}

TEST_CASE("Texture translation changes the texture matrix only")
{
    init_matrices();
    translate_texture(0.5f, -0.5f, 2);
    CHECK(matrices.texture_matrix[12] == 0.5f);
    CHECK(matrices.texture_matrix[13] == -0.5f);
    CHECK(matrices.texture_matrix[14] == 2.0f);
    CHECK(is_identity(matrices.modelview));
    CHECK(is_identity(matrices.projection));
}

TEST_CASE("A quarter turn about z brings the x axis to the y axis")
{
    init_matrices();
    rotate_z(90, select_modelview);
    check_point(matrices.modelview, 1, 0, 0, 0, 1, 0);
    check_point(matrices.modelview, 0, 1, 0, -1, 0, 0);
    check_point(matrices.modelview, 0, 0, 1, 0, 0, 1);
}

TEST_CASE("A quarter turn about x brings the y axis to the z axis")
{
    init_matrices();
    rotate_x(90, select_modelview);
    check_point(matrices.modelview, 0, 1, 0, 0, 0, 1);
    check_point(matrices.modelview, 0, 0, 1, 0, -1, 0);
    check_point(matrices.modelview, 1, 0, 0, 1, 0, 0);
}

TEST_CASE("A quarter turn about y brings the z axis to the x axis")
{
    init_matrices();
    rotate_y(90, select_modelview);
    check_point(matrices.modelview, 0, 0, 1, 1, 0, 0);
    check_point(matrices.modelview, 1, 0, 0, 0, 0, -1);
    check_point(matrices.modelview, 0, 1, 0, 0, 1, 0);
}

TEST_CASE("Both turned columns are made of the old ones")
{
    // At 45 degrees a column made from an already turned one would have the length 1.22 or so.
    for (int axis = 0; axis < 3; ++axis) {
        init_matrices();
        if (axis == 0)
            rotate_x(45, select_modelview);
        else if (axis == 1)
            rotate_y(45, select_modelview);
        else
            rotate_z(45, select_modelview);
        for (int c = 0; c < 3; ++c) {
            const float* column = matrices.modelview + 4 * c;
            CHECK(column[0] * column[0] + column[1] * column[1] + column[2] * column[2] == doctest::Approx(1.0));
        }
    }
}

TEST_CASE("Rotations post-multiply: the last one acts on a point first")
{
    init_matrices();
    rotate_z(90, select_modelview);
    rotate_x(90, select_modelview);
    // y -> z (about x), z stays (about z)
    check_point(matrices.modelview, 0, 1, 0, 0, 0, 1);
}

TEST_CASE("Rotations turn all four rows")
{
    init_matrices();
    matrices.modelview[3] = 2.0f;
    rotate_z(90, select_modelview);
    CHECK(matrices.modelview[3] == doctest::Approx(0.0).epsilon(1e-6));
    CHECK(matrices.modelview[7] == doctest::Approx(-2.0));
}

TEST_CASE("The selector picks the matrix; other numbers pick none")
{
    init_matrices();
    rotate_x(30, select_projection);
    CHECK(is_identity(matrices.modelview));
    CHECK_FALSE(is_identity(matrices.projection));
    CHECK(is_identity(matrices.texture_matrix));
    rotate_y(30, select_texture);
    CHECK_FALSE(is_identity(matrices.texture_matrix));
    init_matrices();
    rotate_z(30, 3);
    rotate_z(30, -1);
    CHECK(is_identity(matrices.modelview));
    CHECK(is_identity(matrices.projection));
    CHECK(is_identity(matrices.texture_matrix));
    CHECK(is_identity(matrices.identity));
}

TEST_CASE("Scaling stretches the first three columns, all four rows")
{
    init_matrices();
    std::fill_n(matrices.modelview, 16, 1.0f);
    scale(2, 3, 4);
    for (int r = 0; r < 4; ++r) {
        CHECK(matrices.modelview[r] == 2.0f);
        CHECK(matrices.modelview[4 + r] == 3.0f);
        CHECK(matrices.modelview[8 + r] == 4.0f);
        CHECK(matrices.modelview[12 + r] == 1.0f);
    }
}

TEST_CASE("The normal matrix is the inverse, stored row by row")
{
    init_matrices();
    // Rows 1 2 3 / 0 1 4 / 5 6 0 have the inverse -24 18 5 / 20 -15 -4 / -5 4 1.
    const float columns[3][3] = {{1, 0, 5}, {2, 1, 6}, {3, 4, 0}};
    for (int c = 0; c < 3; ++c)
        std::copy_n(columns[c], 3, matrices.modelview + 4 * c);
    translate(7, 8, 9);
    compute_normal_matrix();
    const float inverse[9] = {-24, 18, 5, 20, -15, -4, -5, 4, 1};
    for (int i = 0; i < 9; ++i)
        CHECK(matrices.normal_matrix[i] == inverse[i]);
}

TEST_CASE("The normal matrix of a modelview without inverse is the identity")
{
    init_matrices();
    scale(2, 0, 2);
    compute_normal_matrix();
    for (int i = 0; i < 9; ++i)
        CHECK(matrices.normal_matrix[i] == (i % 4 == 0 ? 1.0f : 0.0f));

    init_matrices();
    matrices.modelview[5] = std::nanf("");
    compute_normal_matrix();
    for (int i = 0; i < 9; ++i)
        CHECK(matrices.normal_matrix[i] == (i % 4 == 0 ? 1.0f : 0.0f));
}

TEST_CASE("A point is moved by the whole affine matrix, also in place")
{
    init_matrices();
    translate(1, 2, 3);
    scale(2, 3, 4);
    float point[3] = {1, 1, 1};
    transform_point(matrices.modelview, point, point);
    CHECK(point[0] == 3.0f);
    CHECK(point[1] == 5.0f);
    CHECK(point[2] == 7.0f);
}

TEST_CASE("Numbers that are none pass through without harm")
{
    for (const float bad : {std::nanf(""), std::numeric_limits<float>::infinity(), 0.0f, 3e38f}) {
        init_matrices();
        set_perspective(bad, bad, bad, bad);
        set_orthographic(bad, bad, bad, bad, bad, bad);
        rotate_x(bad, select_modelview);
        rotate_y(bad, select_texture);
        rotate_z(bad, select_projection);
        translate(bad, bad, bad);
        scale(bad, bad, bad);
        compute_normal_matrix();
        CHECK(is_identity(matrices.identity));
    }
    init_matrices();
}

// Worked out in exact arithmetic by tests/support/reference_numbers.py; both word
// sizes must give these bits.
TEST_CASE("A chain of turns and moves gives the bits of exact arithmetic rounded at each step")
{
    init_matrices();
    rotate_z(33.3f, select_modelview);
    rotate_x(-71.7f, select_modelview);
    rotate_y(128.9f, select_modelview);
    translate(1.1f, -2.7f, 0.3f);
    scale(1.5f, 0.7f, -2.3f);
    const uint32_t modelview[16]
        = {0xBE371437u, 0xBFB8C47Au, 0xBEBBABA0u, 0x00000000u, 0xBDF7230Du, 0x3E3C1D71u, 0xBF2A2315u, 0x00000000u,
            0xC00FEE4Bu, 0x3E274F5Bu, 0x3EE831ADu, 0x00000000u, 0x3F20AF68u, 0xBFE4EC1Fu, 0x400F1263u, 0x3F800000u};
    check_bits(matrices.modelview, modelview, 16);

    compute_normal_matrix();
    const uint32_t normal[9] = {0xBDA2BCA3u, 0xBF243CDDu, 0xBE26D171u, 0xBE7C2E36u, 0x3EBFF43Fu, 0xBFAD9BF7u,
        0xBED9AA30u, 0x3CFD054Eu, 0x3DAF9274u};
    check_bits(matrices.normal_matrix, normal, 9);
}

TEST_CASE("A perspective gives the bits of exact arithmetic")
{
    set_perspective(57.3f, 1.6f, 0.1f, 333.3f);
    const float picked[4]
        = {matrices.projection[0], matrices.projection[5], matrices.projection[10], matrices.projection[14]};
    const uint32_t expected[4] = {0x3F926D1Bu, 0x3FEA482Cu, 0xBF8013ABu, 0xBE4CDC89u};
    check_bits(picked, expected, 4);
}
