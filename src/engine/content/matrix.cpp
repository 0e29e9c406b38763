#include "content/matrix.h"

#include "content/extended_trig.h"
#include "content/instructions.h"

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
    const float high = static_cast<float>(-(-value - error)); // value + error, but for the sign of zeros
    if (std::bit_cast<uint32_t>(low) != std::bit_cast<uint32_t>(high))
        return false;
    single = low;
    return true;
}

constexpr double step = 0x1p-52; // of double precision, relative

// The same of a column of four.

namespace {

using four_singles = float __attribute__((vector_size(16)));
using four_bits = int32_t __attribute__((vector_size(16)));
using four_doubles = double __attribute__((vector_size(32)));
using four_long_bits = int64_t __attribute__((vector_size(32)));

} // namespace

FAST_INLINE void load_four(const float from[4], four_singles& column)
{
    std::memcpy(&column, from, sizeof column);
}

FAST_INLINE void store_four(const four_singles& column, float to[4])
{
    std::memcpy(to, &column, sizeof column);
}

FAST_INLINE void load_doubles(const float from[4], four_doubles& column)
{
    four_singles singles;
    load_four(from, singles);
    column = __builtin_convertvector(singles, four_doubles);
}

FAST_INLINE void make_positive(four_doubles& column)
{
    constexpr int64_t without_sign = 0x7FFFFFFFFFFFFFFF;
    column = reinterpret_cast<four_doubles>(reinterpret_cast<four_long_bits>(column) & without_sign);
}

// `open` is 0 where `singles` has settled.
FAST_INLINE void settle_four(
    const four_doubles& value, const four_doubles& error, four_singles& singles, four_bits& open)
{
    singles = __builtin_convertvector(value - error, four_singles);
    const four_singles high = __builtin_convertvector(-(-value - error), four_singles);
    open = reinterpret_cast<four_bits>(singles) ^ reinterpret_cast<four_bits>(high);
}

FAST_INLINE bool is_any(const four_bits& bits)
{
    return (bits[0] | bits[1] | bits[2] | bits[3]) != 0;
}

// ---- turns in double precision -----------------------------------------------------------------

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

static void transform_origin_extended(const float matrix[16], const float position[3], float column[4])
{
    for (int r = 0; r < 3; ++r) {
        const long double moved = static_cast<long double>(matrix[r]) * position[0]
            + static_cast<long double>(matrix[4 + r]) * position[1]
            + static_cast<long double>(matrix[8 + r]) * position[2];
        column[r] = static_cast<float>(matrix[12 + r] + moved);
    }
    column[3] = matrix[15];
}

// m0 x + m4 y + m8 z + m12 of each row: products are exact in double precision. Matrices are affine:
// the fourth row is left as it is.
void transform_origin(const float matrix[16], const float position[3], float column[4])
{
    four_doubles parts[4];
    for (int i = 0; i < 4; ++i) {
        load_doubles(matrix + 4 * i, parts[i]);
        if (i < 3)
            parts[i] *= static_cast<double>(position[i]);
    }
    const four_doubles sum = parts[3] + (parts[0] + parts[1] + parts[2]);
    for (four_doubles& part : parts)
        make_positive(part);
    four_singles moved;
    four_bits open;
    settle_four(sum, (parts[0] + parts[1] + parts[2] + parts[3]) * (4 * step), moved, open);
    open[3] = 0;
    moved[3] = matrix[15];
    if (is_any(open))
        transform_origin_extended(matrix, position, column);
    else
        store_four(moved, column);
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
    four_doubles old_a;
    four_doubles old_b;
    load_doubles(a, old_a);
    load_doubles(b, old_b);
    const four_doubles new_a = old_a * t.cosine + old_b * t.sine;
    const four_doubles new_b = old_b * t.cosine - old_a * t.sine;
    make_positive(old_a);
    make_positive(old_b);
    four_singles settled_a;
    four_singles settled_b;
    four_bits open_a;
    four_bits open_b;
    settle_four(new_a, old_a * t.cosine_error + old_b * t.sine_error, settled_a, open_a);
    settle_four(new_b, old_b * t.cosine_error + old_a * t.sine_error, settled_b, open_b);
    if (is_any(open_a | open_b))
        return false;
    store_four(settled_a, a);
    store_four(settled_b, b);
    return true;
}

static void rotate_columns(float a[4], float b[4], float angle)
{
    if (angle == 0.0f) { // most of a frame's turns; what is not finite shows as it does below
        four_singles old_a;
        four_singles old_b;
        load_four(a, old_a);
        load_four(b, old_b);
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
    const float factors[3] = {x, y, z};
    for (int i = 0; i < 3; ++i) {
        four_singles column;
        load_four(matrix + 4 * i, column);
        store_four(column * factors[i], matrix + 4 * i);
    }
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
    float column[4];
    transform_origin(matrix, point, column);
    std::copy_n(column, 3, result);
}
