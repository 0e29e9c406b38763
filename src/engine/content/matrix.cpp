#include "content/matrix.h"

#include "content/extended_trig.h"

#include <algorithm>
#include <cmath>
#include <iterator>

constexpr long double pi = 3.14159265358979323846264338327950288L;
constexpr float half_turns_per_degree = 0.0055555557f; // 1 / 180 in single precision, on purpose
constexpr float half_fov_per_degree = 0.0027777778f;   // 1 / 360

constexpr float identity_3x3[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};

void copy_matrix(const float from[16], float to[16])
{
    std::copy_n(from, 16, to);
}

void set_perspective(float matrix[16], float fov, float aspect, float near_distance, float far_distance)
{
    const long double half_angle = static_cast<long double>(fov) * half_fov_per_degree * pi;
    const long double f = 1.0L / tanl(half_angle);
    const long double n = near_distance;
    const long double d = far_distance;

    std::fill_n(matrix, 16, 0.0f);
    matrix[0] = static_cast<float>(f / aspect);
    matrix[5] = static_cast<float>(f);
    matrix[10] = static_cast<float>((d + n) / (n - d));
    matrix[11] = -1.0f;
    matrix[14] = static_cast<float>(2.0L * d * n / (n - d));
}

void set_orthographic(
    float matrix[16], float left, float right, float bottom, float top, float near_distance, float far_distance)
{
    const long double a = 1.0L / (static_cast<long double>(right) - left);
    const long double b = 1.0L / (static_cast<long double>(top) - bottom);
    const long double c = 1.0L / (static_cast<long double>(near_distance) - far_distance);

    std::fill_n(matrix, 16, 0.0f);
    matrix[0] = static_cast<float>(2.0L * a);
    matrix[5] = static_cast<float>(2.0L * b);
    matrix[10] = static_cast<float>(2.0L * c);
    matrix[12] = static_cast<float>(-(static_cast<long double>(right) + left) * a);
    matrix[13] = static_cast<float>(-(static_cast<long double>(top) + bottom) * b);
    matrix[14] = static_cast<float>((static_cast<long double>(far_distance) + near_distance) * c);
    matrix[15] = 1.0f;
}

// Matrices are affine: the fourth row is left as it is.
void translate(float matrix[16], float x, float y, float z)
{
    for (int r = 0; r < 3; ++r) {
        const long double moved = static_cast<long double>(matrix[r]) * x + static_cast<long double>(matrix[4 + r]) * y
            + static_cast<long double>(matrix[8 + r]) * z;
        matrix[12 + r] = static_cast<float>(matrix[12 + r] + moved);
    }
}

// Turns two columns into each other: A' = A c + B s, B' = B c - A s.
static void rotate_columns(float a[4], float b[4], float angle)
{
    if (angle == 0.0f) { // most of a frame's turns; what is not finite shows as it does below
        for (int r = 0; r < 4; ++r) {
            const float old_a = a[r];
            a[r] = old_a + b[r] * angle;
            b[r] = b[r] - old_a * angle;
        }
        return;
    }
    const long double radians = static_cast<long double>(angle) * half_turns_per_degree * pi;
    const auto [s, c] = extended_sine_cosine(radians);
    for (int r = 0; r < 4; ++r) {
        const long double old_a = a[r];
        const long double old_b = b[r];
        a[r] = static_cast<float>(old_a * c + old_b * s);
        b[r] = static_cast<float>(old_b * c - old_a * s);
    }
}

void rotate_x(float matrix[16], float angle)
{
    rotate_columns(matrix + 4, matrix + 8, angle);
}

// About y the third column turns into the first: C2' = C2 c + C0 s, C0' = C0 c - C2 s.
void rotate_y(float matrix[16], float angle)
{
    rotate_columns(matrix + 8, matrix, angle);
}

void rotate_z(float matrix[16], float angle)
{
    rotate_columns(matrix, matrix + 4, angle);
}

void scale(float matrix[16], float x, float y, float z)
{
    for (int r = 0; r < 4; ++r) {
        matrix[r] *= x;
        matrix[4 + r] *= y;
        matrix[8 + r] *= z;
    }
}

void compute_normal_matrix(const float modelview[16], float normal_matrix[9])
{
    // Rows are written r, columns c: m(r, c) of the upper left 3 x 3.
    const auto m = [modelview](int r, int c) -> long double { return modelview[c * 4 + r]; };
    // The cofactor of (r, c); going round the rows and columns brings its sign along.
    const auto cofactor = [&m](int r, int c) {
        const int r1 = (r + 1) % 3, r2 = (r + 2) % 3;
        const int c1 = (c + 1) % 3, c2 = (c + 2) % 3;
        return m(r1, c1) * m(r2, c2) - m(r1, c2) * m(r2, c1);
    };

    const long double determinant = m(0, 0) * cofactor(0, 0) + m(0, 1) * cofactor(0, 1) + m(0, 2) * cofactor(0, 2);
    if (determinant == 0.0L || !std::isfinite(determinant)) {
        std::copy_n(identity_3x3, std::size(identity_3x3), normal_matrix);
        return;
    }
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            normal_matrix[r * 3 + c] = static_cast<float>(cofactor(c, r) / determinant);
}

void transform_point(const float matrix[16], const float point[3], float result[3])
{
    const long double x = point[0];
    const long double y = point[1];
    const long double z = point[2];
    for (int r = 0; r < 3; ++r)
        result[r] = static_cast<float>(matrix[r] * x + matrix[4 + r] * y + matrix[8 + r] * z + matrix[12 + r]);
}
