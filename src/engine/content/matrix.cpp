#include "content/matrix.h"

#include "content/extended_trig.h"
#include "content/instructions.h"
#include "content/short_trig.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

constexpr long double pi = 3.14159265358979323846264338327950288L;
constexpr float half_turns_per_degree = 0.0055555557f; // 1 / 180 in single precision, on purpose
constexpr float half_fov_per_degree = 0.0027777778f;   // 1 / 360

constexpr float identity_3x3[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};

// ---- extended precision in double precision ------------------------------------------------

// Numbers are carried in extended precision and stored in single precision. Double precision
// leads to the same single one unless a boundary between two of those lies within its error:
// once in millions, and then extended precision decides. Errors below are how far a number may
// be from the one in extended precision, with a factor of two and more to spare.

constexpr double step = 0x1p-52; // of double precision, relative

// Columns of four are computed at once. Double precision is carried in two halves, since SSE2 has no more in a register
// and the compiler puts a number that is to fill four lanes together in memory.

namespace {

using four_singles = float __attribute__((vector_size(16)));
using four_bits = int32_t __attribute__((vector_size(16)));
using two_doubles = double __attribute__((vector_size(16)));
using two_long_bits = int64_t __attribute__((vector_size(16)));

struct four_doubles {
    two_doubles low;
    two_doubles high;
};

} // namespace

FAST_INLINE four_singles load_four(const float from[4])
{
    four_singles column;
    std::memcpy(&column, from, sizeof column);
    return column;
}

FAST_INLINE void store_four(const four_singles& column, float to[4])
{
    std::memcpy(to, &column, sizeof column);
}

FAST_INLINE two_doubles widen_first(const four_singles& column)
{
#ifdef __SSE2__
    return _mm_cvtps_pd(column);
#else
    return {column[0], column[1]};
#endif
}

FAST_INLINE four_doubles widen(const four_singles& column)
{
    return {widen_first(column), widen_first(__builtin_shuffle(column, four_bits{2, 3, 2, 3}))};
}

FAST_INLINE four_singles narrow(const four_doubles& column)
{
#ifdef __SSE2__
    return _mm_movelh_ps(_mm_cvtpd_ps(column.low), _mm_cvtpd_ps(column.high));
#else
    return {static_cast<float>(column.low[0]), static_cast<float>(column.low[1]), static_cast<float>(column.high[0]),
        static_cast<float>(column.high[1])};
#endif
}

FAST_INLINE four_doubles operator+(const four_doubles& a, const four_doubles& b)
{
    return {a.low + b.low, a.high + b.high};
}

FAST_INLINE four_doubles operator-(const four_doubles& a, const four_doubles& b)
{
    return {a.low - b.low, a.high - b.high};
}

FAST_INLINE four_doubles operator-(const four_doubles& a)
{
    return {-a.low, -a.high};
}

FAST_INLINE four_doubles operator*(const four_doubles& a, double factor)
{
    const two_doubles both = {factor, factor};
    return {a.low * both, a.high * both};
}

FAST_INLINE two_doubles sizes_of_two(const two_doubles& values)
{
    constexpr int64_t without_sign = 0x7FFFFFFFFFFFFFFF;
    return reinterpret_cast<two_doubles>(reinterpret_cast<two_long_bits>(values) & without_sign);
}

FAST_INLINE four_doubles sizes_of(const four_doubles& values)
{
    return {sizes_of_two(values.low), sizes_of_two(values.high)};
}

// What is returned is 0 where `singles` has settled, else extended precision must decide, as for zeros whose sign is in
// doubt. Without an error the number is the same, zeros and their signs too.
FAST_INLINE four_bits settle_four(const four_doubles& value, const four_doubles& error, four_singles& singles)
{
    singles = narrow(value - error);
    const four_singles high = narrow(-(-value - error)); // value + error, but for the sign of zeros
    return reinterpret_cast<four_bits>(singles) ^ reinterpret_cast<four_bits>(high);
}

FAST_INLINE bool is_any_of_three(const four_bits& bits)
{
    return (bits[0] | bits[1] | bits[2]) != 0;
}

FAST_INLINE bool is_any(const four_bits& bits)
{
    const two_long_bits pairs = reinterpret_cast<two_long_bits>(bits);
    return (pairs[0] | pairs[1]) != 0;
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

// Radians of a degree in two parts, the first one short, so that degrees in single precision times it are exact.
constexpr long double radians_per_degree = half_turns_per_degree * pi;
constexpr double radians_high = static_cast<double>(static_cast<int32_t>(radians_per_degree * 0x1p34L)) * 0x1p-34;
constexpr double radians_low = static_cast<double>(radians_per_degree - static_cast<long double>(radians_high));

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
    const four_doubles x = widen(load_four(matrix)) * static_cast<double>(position[0]);
    const four_doubles y = widen(load_four(matrix + 4)) * static_cast<double>(position[1]);
    const four_doubles z = widen(load_four(matrix + 8)) * static_cast<double>(position[2]);
    const four_doubles origin = widen(load_four(matrix + 12));
    const four_doubles size = sizes_of(x) + sizes_of(y) + sizes_of(z) + sizes_of(origin);
    four_singles moved;
    const four_bits open = settle_four(origin + (x + y + z), size * (4 * step), moved);
    moved[3] = matrix[15];
    if (is_any_of_three(open))
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
FAST_INLINE bool turn_columns_fast(four_singles& a, four_singles& b, const fast_turn& t)
{
    // single-precision degrees come no closer to whole quarter turns: zeros get the right sign
    assert(std::fabs(t.sine) > t.sine_error && std::fabs(t.cosine) > t.cosine_error);
    const four_doubles old_a = widen(a);
    const four_doubles old_b = widen(b);
    const four_doubles size_a = sizes_of(old_a);
    const four_doubles size_b = sizes_of(old_b);
    four_singles new_a;
    four_singles new_b;
    const four_bits open_a
        = settle_four(old_a * t.cosine + old_b * t.sine, size_a * t.cosine_error + size_b * t.sine_error, new_a);
    const four_bits open_b
        = settle_four(old_b * t.cosine - old_a * t.sine, size_b * t.cosine_error + size_a * t.sine_error, new_b);
    if (is_any(open_a | open_b))
        return false;
    a = new_a;
    b = new_b;
    return true;
}

[[gnu::noinline]] static void turn_columns(four_singles& a, four_singles& b, float angle)
{
    if (std::fabs(angle) <= max_fast_angle && turn_columns_fast(a, b, turn_of(angle)))
        return;
    float columns[2][4];
    store_four(a, columns[0]);
    store_four(b, columns[1]);
    turn_columns_extended(columns[0], columns[1], angle);
    a = load_four(columns[0]);
    b = load_four(columns[1]);
}

FAST_INLINE void rotate_columns(four_singles& a, four_singles& b, float angle)
{
    if (angle == 0.0f) { // most of a frame's turns; what is not finite shows as it does otherwise
        const four_singles old_a = a;
        a = old_a + b * angle;
        b = b - old_a * angle;
    } else
        turn_columns(a, b, angle);
}

static void rotate_stored_columns(float a[4], float b[4], float angle)
{
    four_singles column_a = load_four(a);
    four_singles column_b = load_four(b);
    rotate_columns(column_a, column_b, angle);
    store_four(column_a, a);
    store_four(column_b, b);
}

void rotate_x(float matrix[16], float angle)
{
    rotate_stored_columns(matrix + 4, matrix + 8, angle);
}

// About y the third column turns into the first: C2' = C2 c + C0 s, C0' = C0 c - C2 s.
void rotate_y(float matrix[16], float angle)
{
    rotate_stored_columns(matrix + 8, matrix, angle);
}

void rotate_z(float matrix[16], float angle)
{
    rotate_stored_columns(matrix, matrix + 4, angle);
}

void scale(float matrix[16], float x, float y, float z)
{
    const float factors[3] = {x, y, z};
    for (int i = 0; i < 3; ++i)
        store_four(load_four(matrix + 4 * i) * factors[i], matrix + 4 * i);
}

void turn_and_scale(float matrix[16], const float rotation[3], const float factors[3])
{
    four_singles columns[3] = {load_four(matrix), load_four(matrix + 4), load_four(matrix + 8)};
    rotate_columns(columns[1], columns[2], rotation[0]);
    rotate_columns(columns[2], columns[0], rotation[1]);
    rotate_columns(columns[0], columns[1], rotation[2]);
    for (int i = 0; i < 3; ++i)
        store_four(columns[i] * factors[i], matrix + 4 * i);
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

// (y, z, x) and (z, x, y) of (x, y, z); the fourth number is none of any.
FAST_INLINE four_doubles next_axes(const four_doubles& v)
{
    return {two_doubles{v.low[1], v.high[0]}, two_doubles{v.low[0], v.low[0]}};
}

FAST_INLINE four_doubles last_axes(const four_doubles& v)
{
    return {two_doubles{v.high[0], v.low[0]}, two_doubles{v.low[1], v.low[1]}};
}

FAST_INLINE four_doubles operator*(const four_doubles& a, const four_doubles& b)
{
    return {a.low * b.low, a.high * b.high};
}

FAST_INLINE double sum_of_three(const four_doubles& v)
{
    return v.low[0] + v.low[1] + v.high[0];
}

namespace {

// The cofactors of one column, from the two others, and of what size they are the differences.
struct column_cofactors {
    four_doubles values;
    four_doubles sizes;
};

} // namespace

FAST_INLINE column_cofactors cofactors_of(const four_doubles& next, const four_doubles& last)
{
    const four_doubles down = next_axes(next) * last_axes(last);
    const four_doubles up = next_axes(last) * last_axes(next);
    return {down - up, sizes_of(down) + sizes_of(up)};
}

// False, and some numbers written, where one of the nine is left to extended precision.
static bool invert_fast(const float modelview[16], float normal_matrix[9])
{
    const four_doubles columns[3]
        = {widen(load_four(modelview)), widen(load_four(modelview + 4)), widen(load_four(modelview + 8))};
    const column_cofactors rows[3] = {cofactors_of(columns[1], columns[2]), cofactors_of(columns[2], columns[0]),
        cofactors_of(columns[0], columns[1])};
    const double determinant = sum_of_three(columns[0] * rows[0].values);
    const double inverse = 1.0 / std::fabs(determinant);
    const double doubt // of the determinant, relative
        = sum_of_three(sizes_of(columns[0]) * rows[0].sizes) * (8 * step) * inverse;
    if (!(doubt < 0x1p-20))
        return false;
    const two_doubles divisor = {determinant, determinant};
    four_bits open = {};
    for (int r = 0; r < 3; ++r) {
        const four_doubles quotients = {rows[r].values.low / divisor, rows[r].values.high / divisor};
        const four_doubles errors = rows[r].sizes * (inverse * (4 * step)) + sizes_of(quotients) * (2 * doubt);
        four_singles settled;
        open |= settle_four(quotients, errors, settled);
        std::memcpy(normal_matrix + 3 * r, &settled, 3 * sizeof(float));
    }
    return !is_any_of_three(open);
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
