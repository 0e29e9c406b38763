#include "content/matrix.h"

#include "content/extended_trig.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>

constexpr long double pi = 3.14159265358979323846264338327950288L;
constexpr float half_turns_per_degree = 0.0055555557f; // 1 / 180 in single precision, on purpose
constexpr float half_fov_per_degree = 0.0027777778f;   // 1 / 360

constexpr float identity_3x3[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};

// ---- extended precision in double precision ------------------------------------------------

// Numbers are carried in extended precision and stored in single precision. Double precision
// leads to the same single one unless a boundary between two of those lies within its error:
// once in millions, and then extended precision decides. Errors below are how far a number may
// be from the one in extended precision, with a factor of two and more to spare.

// False, and nothing written, where extended precision must decide, as for zeros whose sign is in
// doubt. Without an error the number is the same, zeros and their signs too.
static bool settles(double value, double error, float& single)
{
    const float low = static_cast<float>(value - error);
    const float high = error == 0.0 ? low : static_cast<float>(value + error);
    if (std::bit_cast<uint32_t>(low) != std::bit_cast<uint32_t>(high))
        return false;
    single = low;
    return true;
}

constexpr double step = 0x1p-52; // of double precision, relative

// m0 x + m4 y + m8 z + m12 of a row, whose products are exact in double precision.
static bool settle_sum(double a, double b, double c, double d, float& single)
{
    return settles(d + (a + b + c), (std::fabs(a) + std::fabs(b) + std::fabs(c) + std::fabs(d)) * (4 * step), single);
}

namespace {

struct fast_turn {
    double sine;
    double cosine;
    double sine_error;
    double cosine_error;
};

} // namespace

constexpr float max_fast_angle = 1.0e6f; // degrees; larger ones are left to extended precision

// Radians of a degree, and a quarter turn, in two parts each. The first ones are short, so that
// degrees in single precision, or quarter turns, times them are exact.
constexpr long double radians_per_degree = half_turns_per_degree * pi;
constexpr double radians_high = static_cast<double>(static_cast<int32_t>(radians_per_degree * 0x1p34L)) * 0x1p-34;
constexpr double radians_low = static_cast<double>(radians_per_degree - static_cast<long double>(radians_high));
constexpr double quarter_high = static_cast<double>(quarter_turn_high);
constexpr double quarter_low = static_cast<double>(quarter_turn_middle + quarter_turn_low);

// Taylor's series within 45 degrees of 0; what is left out is below 2^-60.
static double short_sine(double x)
{
    const double q = x * x;
    const double tail = 1.0 / 362880 + q * (-1.0 / 39916800 + q * (1.0 / 6227020800.0 + q * (-1.0 / 1307674368000.0)));
    return x + x * q * (-1.0 / 6 + q * (1.0 / 120 + q * (-1.0 / 5040 + q * tail)));
}

static double short_cosine(double x)
{
    const double q = x * x;
    const double tail
        = -1.0 / 3628800 + q * (1.0 / 479001600 + q * (-1.0 / 87178291200.0 + q * (1.0 / 20922789888000.0)));
    return 1.0 - q * (0.5 - q * (1.0 / 24 - q * (1.0 / 720 - q * (1.0 / 40320 + q * tail))));
}

// Extended precision has rounded the radians themselves, which tells where sine or cosine is small.
static fast_turn with_errors(double sine, double cosine, double radians)
{
    const double of_radians = std::fabs(radians) * 0x1p-61;
    return {sine, cosine, std::fabs(sine) * (8 * step) + of_radians, std::fabs(cosine) * (8 * step) + of_radians};
}

// `angle` within max_fast_angle.
static fast_turn turn_of(float angle)
{
    const double degrees = static_cast<double>(angle);
    assert(std::fabs(angle) <= max_fast_angle);
    const double radians = degrees * radians_high;
    const double half = radians < 0.0 ? -0.5 : 0.5;
    const int32_t quarters = static_cast<int32_t>(radians * 0.63661977236758134 + half);
    const double rest = (radians - quarters * quarter_high) + (degrees * radians_low - quarters * quarter_low);
    const double s = short_sine(rest);
    const double c = short_cosine(rest);
    switch (static_cast<uint32_t>(quarters) & 3u) {
    case 0:
        return with_errors(s, c, radians);
    case 1:
        return with_errors(c, -s, radians);
    case 2:
        return with_errors(-s, -c, radians);
    }
    return with_errors(-c, s, radians); // three quarter turns
}

// ---- columns ---------------------------------------------------------------------------------

using four_singles = float __attribute__((vector_size(16)));

static four_singles load_four(const float from[4])
{
    four_singles column;
    std::memcpy(&column, from, sizeof column);
    return column;
}

static void store_four(four_singles column, float to[4])
{
    std::memcpy(to, &column, sizeof column);
}

// ---- matrices --------------------------------------------------------------------------------

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
void transform_origin(const float matrix[16], const float position[3], float column[4])
{
    for (int r = 0; r < 3; ++r) {
        const double a = static_cast<double>(matrix[r]) * static_cast<double>(position[0]);
        const double b = static_cast<double>(matrix[4 + r]) * static_cast<double>(position[1]);
        const double c = static_cast<double>(matrix[8 + r]) * static_cast<double>(position[2]);
        if (settle_sum(a, b, c, static_cast<double>(matrix[12 + r]), column[r]))
            continue;
        const long double moved = static_cast<long double>(matrix[r]) * position[0]
            + static_cast<long double>(matrix[4 + r]) * position[1]
            + static_cast<long double>(matrix[8 + r]) * position[2];
        column[r] = static_cast<float>(matrix[12 + r] + moved);
    }
    column[3] = matrix[15];
}

void translate(float matrix[16], float x, float y, float z)
{
    const float position[3] = {x, y, z};
    transform_origin(matrix, position, matrix + 12);
}

// Two columns turned into each other: A' = A c + B s, B' = B c - A s.
static void turn_columns_extended(float a[4], float b[4], float angle)
{
    const long double radians = static_cast<long double>(angle) * half_turns_per_degree * pi;
    const auto [s, c] = extended_sine_cosine(radians);
    for (int r = 0; r < 4; ++r) {
        const long double old_a = a[r];
        const long double old_b = b[r];
        a[r] = static_cast<float>(old_a * c + old_b * s);
        b[r] = static_cast<float>(old_b * c - old_a * s);
    }
}

// False, and nothing changed, where one of the eight numbers is left to extended precision.
static bool turn_columns_fast(float a[4], float b[4], const fast_turn& t)
{
    // single-precision degrees come no closer to whole quarter turns: zeros get the right sign
    assert(std::fabs(t.sine) > t.sine_error && std::fabs(t.cosine) > t.cosine_error);
    float new_a[4];
    float new_b[4];
    bool settled = true;
    for (int r = 0; r < 4; ++r) {
        const double old_a = static_cast<double>(a[r]);
        const double old_b = static_cast<double>(b[r]);
        const double error_a = std::fabs(old_a) * t.cosine_error + std::fabs(old_b) * t.sine_error;
        const double error_b = std::fabs(old_b) * t.cosine_error + std::fabs(old_a) * t.sine_error;
        settled &= settles(old_a * t.cosine + old_b * t.sine, error_a, new_a[r]);
        settled &= settles(old_b * t.cosine - old_a * t.sine, error_b, new_b[r]);
    }
    if (!settled)
        return false;
    std::copy_n(new_a, 4, a);
    std::copy_n(new_b, 4, b);
    return true;
}

static void rotate_columns(float a[4], float b[4], float angle)
{
    if (angle == 0.0f) { // most of a frame's turns; what is not finite shows as it does below
        const four_singles old_a = load_four(a);
        const four_singles old_b = load_four(b);
        store_four(old_a + old_b * angle, a);
        store_four(old_b - old_a * angle, b);
        return;
    }
    if (!(std::fabs(angle) <= max_fast_angle) || !turn_columns_fast(a, b, turn_of(angle)))
        turn_columns_extended(a, b, angle);
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
    store_four(load_four(matrix) * x, matrix);
    store_four(load_four(matrix + 4) * y, matrix + 4);
    store_four(load_four(matrix + 8) * z, matrix + 8);
}

static void invert_extended(const float modelview[16], float normal_matrix[9])
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

// False, and some numbers written, where one of the nine is left to extended precision.
static bool invert_fast(const float modelview[16], float normal_matrix[9])
{
    double m[3][3];
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            m[r][c] = static_cast<double>(modelview[c * 4 + r]);
    double cofactor[3][3];
    double size[3][3]; // of what a cofactor is the difference of
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) {
            const double down = m[(r + 1) % 3][(c + 1) % 3] * m[(r + 2) % 3][(c + 2) % 3];
            const double up = m[(r + 1) % 3][(c + 2) % 3] * m[(r + 2) % 3][(c + 1) % 3];
            cofactor[r][c] = down - up;
            size[r][c] = std::fabs(down) + std::fabs(up);
        }
    double determinant = 0.0;
    double sum = 0.0;
    for (int c = 0; c < 3; ++c) {
        determinant += m[0][c] * cofactor[0][c];
        sum += std::fabs(m[0][c]) * size[0][c];
    }
    const double inverse = 1.0 / std::fabs(determinant);
    const double doubt = sum * (8 * step) * inverse; // of the determinant, relative
    if (!(doubt < 0x1p-20))
        return false;
    bool settled = true;
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) {
            const double quotient = cofactor[c][r] / determinant;
            const double error = size[c][r] * inverse * (4 * step) + std::fabs(quotient) * (2 * doubt);
            settled &= settles(quotient, error, normal_matrix[r * 3 + c]);
        }
    return settled;
}

void compute_normal_matrix(const float modelview[16], float normal_matrix[9])
{
    if (!invert_fast(modelview, normal_matrix))
        invert_extended(modelview, normal_matrix);
}

void transform_point(const float matrix[16], const float point[3], float result[3])
{
    const float from[3] = {point[0], point[1], point[2]}; // the result may lie there
    for (int r = 0; r < 3; ++r) {
        const double a = static_cast<double>(matrix[r]) * static_cast<double>(from[0]);
        const double b = static_cast<double>(matrix[4 + r]) * static_cast<double>(from[1]);
        const double c = static_cast<double>(matrix[8 + r]) * static_cast<double>(from[2]);
        if (settle_sum(a, b, c, static_cast<double>(matrix[12 + r]), result[r]))
            continue;
        const long double x = from[0];
        const long double y = from[1];
        const long double z = from[2];
        result[r] = static_cast<float>(matrix[r] * x + matrix[4 + r] * y + matrix[8 + r] * z + matrix[12 + r]);
    }
}
