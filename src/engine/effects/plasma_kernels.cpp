#include "effects/plasma_kernels.h"

#include "content/numbers.h"
#include "content/vectors.h"
#include "texgen/packed_pixels.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

constexpr uint32_t max_channels = 3;

// ---- the formulas ------------------------------------------------------------------------

static double table_cosine(double steps)
{
    return static_cast<double>(cosine_at(truncate_to_int(steps)));
}

// Both factors lie in 0..2, so that the value lies in 0..252.
static uint8_t channel_value(const plasma_channel& channel, double p, double q)
{
    const double from_q = table_cosine(channel.q.density * q + channel.q.drift) + 1.0;
    const double from_p = table_cosine(channel.p.density * p + channel.p.drift) + 1.0;
    return low_byte(truncate_to_int(from_q * from_p * 63.0));
}

// The value of a field where the cosine of its turned coordinate is `cosine`.
FAST_INLINE static double turned_value(const turned_field& field, double cosine)
{
    return (1.0 - cosine) * field.amplitude + field.drift;
}

static void summed_row_plain(const summed_plasma& plasma, double p_row, double q_row, uint8_t* out, uint32_t count)
{
    for (uint32_t x = 0; x < count; ++x)
        for (const plasma_channel& channel : plasma.channels)
            *out++ = channel_value(channel, plasma.p_columns[x] + p_row, plasma.q_columns[x] + q_row);
}

static void turned_row_plain(
    const turned_plasma& plasma, const summed_field& p, const summed_field& q, uint8_t* out, uint32_t count)
{
    for (uint32_t x = 0; x < count; ++x) {
        const double along = table_cosine((p.columns[x] + p.row) * plasma.p.scale);
        const double across = table_cosine((q.columns[x] + q.row) * plasma.q.scale);
        for (const plasma_channel& channel : plasma.channels)
            *out++ = channel_value(channel, turned_value(plasma.p, along), turned_value(plasma.q, across));
    }
}

bool plasma_steps_fit(std::span<const plasma_channel> channels, double p_bound, double q_bound)
{
    constexpr double room = 2147483000.0;
    return std::all_of(channels.begin(), channels.end(), [=](const plasma_channel& channel) {
        return std::fabs(channel.p.density) * p_bound + std::fabs(channel.p.drift) < room
            && std::fabs(channel.q.density) * q_bound + std::fabs(channel.q.drift) < room;
    });
}

// ---- bytes without the table -------------------------------------------------------------
//
// Since 1 + cos a is twice the square of cos (a / 2), a byte is 252 times the square of the product of two cosines of
// half angles. For these a short polynomial does instead of a look-up, or the cosine of a sum: both are right to some
// 10^-7, and so the byte with 16 bits behind the point to less than `doubt`. Where that is near a whole number, the
// byte is computed from the table.

constexpr int32_t doubt = 16;              // of 65536
constexpr float byte_scale = 4063.8742f;   // the square root of 252 * 65536, in one of the two factors
constexpr float certain_half = 181.01933f; // times 1 a product whose square, a half, is never in doubt

// `scale` times cos(pi n / 4096) of the table's step n, brought into -2048..2047.
FAST_INLINE static float half_cosine(int32_t steps, float scale)
{
    const float n = static_cast<float>((steps << 20) >> 20);
    const float z = n * n;
    return 0.9999999534666967f * scale
        + z
        * (-2.9413657538149514e-07f * scale
            + z
                * (1.4418375521655253e-14f * scale
                    + z * (-2.820365945823363e-22f * scale + z * (2.772963445046067e-30f * scale))));
}

// A byte with 16 bits behind the point, `doubt` too large. None is below 0, and so those near 0 are beyond doubt.
FAST_INLINE static int32_t fixed_value(float half_q, float half_p)
{
    const float product = half_q * half_p;
    const float value = product * product + static_cast<float>(doubt);
    return static_cast<int32_t>(std::max(value, 2.0f * doubt));
}

FAST_INLINE static bool is_doubtful(int32_t value)
{
    return (value & 0xFFFF) < 2 * doubt;
}

// ---- fields that are sums ----------------------------------------------------------------

constexpr int32_t whole_part = 1 << 30; // parts of a step
constexpr int32_t part_doubt = 1 << 12; // more than the parts of a column and a row are wrong together

namespace {

// A number of table steps.
struct step_sum {
    int32_t whole; // the next whole number below, or itself
    int32_t part;  // what is left, of whole_part
};

} // namespace

FAST_INLINE static step_sum split_steps(double steps)
{
    int32_t whole = static_cast<int32_t>(steps);
    whole -= steps < whole ? 1 : 0;
    return {whole, static_cast<int32_t>((steps - whole) * whole_part)};
}

FAST_INLINE static void fill_wave_columns(
    const plasma_wave& wave, const double* columns, float factor, uint32_t width, wave_columns& made)
{
    for (uint32_t begin = 0; begin < width; begin += plasma_run) {
        int32_t least = INT32_MAX;
        int32_t most = INT32_MIN;
        for (uint32_t x = begin; x < begin + plasma_run; ++x) {
            const step_sum steps = split_steps(wave.density * columns[x]);
            const direction& half = half_angles[static_cast<uint32_t>(steps.whole) % half_angle_count];
            made.cosines[x] = half.cosine * factor;
            made.sines[x] = half.sine * factor;
            made.parts[x] = steps.part;
            made.wholes[x] = steps.whole;
            least = std::min(least, steps.whole);
            most = std::max(most, steps.whole);
        }
        made.least[begin / plasma_run] = least;
        made.most[begin / plasma_run] = most;
    }
}

FAST_INLINE static void fill_summed_fast(const summed_plasma& plasma, uint32_t width, summed_tables& tables)
{
    for (size_t c = 0; c < plasma.channels.size(); ++c) {
        fill_wave_columns(plasma.channels[c].p, plasma.p_columns, 1.0f, width, tables.p[c]);
        fill_wave_columns(plasma.channels[c].q, plasma.q_columns, byte_scale, width, tables.q[c]);
    }
}

namespace {

// What a row adds to the steps of its columns.
struct row_steps {
    step_sum steps;
    bool is_nothing; // exactly none: the columns' own steps are the pixels'
};

// One wave of a row over a run of columns.
struct wave_run {
    const float* cosines;
    const float* sines;
    const int32_t* parts;
    const int32_t* wholes;
    step_sum row;
    int32_t enough; // parts of a column that make one more step with the row's, less the doubt
    bool is_sure;   // the row's part alone is not in doubt
    bool is_across; // steps on both sides of 0
    bool is_negative;
};

} // namespace

FAST_INLINE static row_steps make_row_steps(const plasma_wave& wave, double row)
{
    return {split_steps(wave.density * row + wave.drift), row == 0.0 && wave.drift == 0.0};
}

FAST_INLINE static wave_run make_wave_run(const wave_columns& columns, uint32_t begin, const row_steps& row)
{
    const step_sum& steps = row.steps;
    const int32_t least = columns.least[begin / plasma_run] + steps.whole;
    const int32_t most = columns.most[begin / plasma_run] + steps.whole + 1;
    const bool is_exact = row.is_nothing && least >= 0;
    return {.cosines = columns.cosines + begin,
        .sines = columns.sines + begin,
        .parts = columns.parts + begin,
        .wholes = columns.wholes + begin,
        .row = steps,
        .enough = is_exact ? whole_part + (1 << 16) : whole_part - steps.part - part_doubt,
        .is_sure = is_exact || (steps.part >= part_doubt && steps.part <= whole_part - part_doubt),
        .is_across = least < 0 && most >= 0,
        .is_negative = least < 0};
}

// Values below the doubts of parts are doubtful, whichever of the three they come from.
FAST_INLINE static uint32_t least_certainty(int32_t beyond_p, int32_t beyond_q, int32_t value)
{
    constexpr uint32_t as_parts = 2 * part_doubt / (2 * doubt);
    const uint32_t of_parts = std::min(static_cast<uint32_t>(beyond_p), static_cast<uint32_t>(beyond_q));
    return std::min(of_parts, (static_cast<uint32_t>(value) & 0xFFFF) * as_parts);
}

// What fixed_value makes of each product.
template <typename words> FAST_INLINE static words fixed_values(eight_singles product)
{
    const words made = __builtin_convertvector(product * product + static_cast<float>(doubt), words);
    const words sure = words{} + 2 * doubt;
    return made > sure ? made : sure;
}

template <typename words> FAST_INLINE static words fixed_values(four_singles product)
{
    const four_singles value = product * product + static_cast<float>(doubt);
    return __builtin_convertvector(larger_singles(value, four_singles{} + 2.0f * doubt), words);
}

// The half cosines of a wave: of the steps of both, or of one more.
template <typename singles, typename words>
FAST_INLINE static singles half_cosines(const wave_run& wave, const direction* row, uint32_t n, words beyond)
{
    return (beyond < 0 ? row[0].cosine : row[1].cosine) * load_vector<singles>(wave.cosines + n)
        - (beyond < 0 ? row[0].sine : row[1].sine) * load_vector<singles>(wave.sines + n);
}

// The values of a run of pixels whose steps are all below 0 or all not, for each wave: truncation takes the next whole
// step below the sum, or the one after it. False where one may be in doubt: its upper half, of a value the lower, is
// small.
template <typename singles, typename words, typename shorts>
FAST_INLINE static bool values_of_one_sign(const wave_run& p, const wave_run& q, int32_t* values)
{
    static_assert(2 * part_doubt <= 1 << 16);
    const direction* row_p = &half_angles[static_cast<uint32_t>(p.row.whole + p.is_negative) % half_angle_count];
    const direction* row_q = &half_angles[static_cast<uint32_t>(q.row.whole + q.is_negative) % half_angle_count];
    shorts least_beyond = ~shorts{};
    shorts least_value = ~shorts{};
#pragma GCC unroll 1 // unrolled it has too few registers
    for (uint32_t n = 0; n < plasma_run; n += sizeof(words) / sizeof(int32_t)) {
        const words beyond_p = load_vector<words>(p.parts + n) - p.enough;
        const words beyond_q = load_vector<words>(q.parts + n) - q.enough;
        const singles product
            = half_cosines<singles>(p, row_p, n, beyond_p) * half_cosines<singles>(q, row_q, n, beyond_q);
        const words made = fixed_values<words>(product);
        std::memcpy(values + n, &made, sizeof made);
        least_beyond = lesser_shorts(reinterpret_cast<shorts>(beyond_p), least_beyond);
        least_beyond = lesser_shorts(reinterpret_cast<shorts>(beyond_q), least_beyond);
        least_value = lesser_shorts(reinterpret_cast<shorts>(made), least_value);
    }
    const words unsure = (reinterpret_cast<words>(least_beyond) >> 16 == 0)
        | ((reinterpret_cast<words>(least_value) & 0xFFFF) < 2 * doubt);
    return !any_lane(unsure);
}

FAST_INLINE static bool values_of_one_sign(instruction_set set, const wave_run& p, const wave_run& q, int32_t* values)
{
    if (set == instructions_avx2)
        return values_of_one_sign<eight_singles, eight_words, sixteen_shorts>(p, q, values);
    return values_of_one_sign<four_singles, four_words, eight_shorts>(p, q, values);
}

// Towards 0 from the whole step at or below.
FAST_INLINE static int32_t truncated_step(int32_t column, int32_t row, int32_t beyond)
{
    const int32_t below = column + row + (beyond < 0 ? 0 : 1);
    return below + (below < 0 ? 1 : 0);
}

// The same where a wave has steps on both sides of 0.
FAST_INLINE static bool values_across_0(const wave_run& p, const wave_run& q, int32_t* values)
{
    uint32_t least = UINT32_MAX;
    for (uint32_t n = 0; n < plasma_run; ++n) {
        const int32_t beyond_p = p.parts[n] - p.enough;
        const int32_t beyond_q = q.parts[n] - q.enough;
        const float half_p = half_cosine(truncated_step(p.wholes[n], p.row.whole, beyond_p), 1.0f);
        const float half_q = half_cosine(truncated_step(q.wholes[n], q.row.whole, beyond_q), byte_scale);
        values[n] = fixed_value(half_q, half_p);
        least = std::min(least, least_certainty(beyond_p, beyond_q, values[n]));
    }
    return least >= 2 * part_doubt;
}

namespace {

// A picture's row.
struct summed_row {
    double p;
    double q;
    row_steps p_steps[max_channels];
    row_steps q_steps[max_channels];
};

} // namespace

// The bytes of a channel for a run of pixels, in the upper halves of words of which the lower are rubbish.
FAST_INLINE static void summed_channel_run(instruction_set set, const summed_plasma& plasma,
    const summed_tables& tables, const summed_row& row, uint32_t c, uint32_t begin, int32_t* values)
{
    const wave_run p = make_wave_run(tables.p[c], begin, row.p_steps[c]);
    const wave_run q = make_wave_run(tables.q[c], begin, row.q_steps[c]);
    const bool is_sure = p.is_sure && q.is_sure;
    if (is_sure && (p.is_across || q.is_across ? values_across_0(p, q, values) : values_of_one_sign(set, p, q, values)))
        return;
    for (uint32_t n = 0; n < plasma_run; ++n)
        if (!is_sure || least_certainty(p.parts[n] - p.enough, q.parts[n] - q.enough, values[n]) < 2 * part_doubt)
            values[n] = channel_value(plasma.channels[c], plasma.p_columns[begin + n] + row.p,
                            plasma.q_columns[begin + n] + row.q)
                << 16;
}

FAST_INLINE static void store_run_of_3(instruction_set set, const int32_t values[max_channels][plasma_run],
    uint8_t* out, uint32_t count, uint32_t following)
{
    uint32_t pixels[plasma_run];
    for (uint32_t n = 0; n < plasma_run; ++n)
        pixels[n]
            = static_cast<uint32_t>(values[0][n] >> 16 | (values[1][n] >> 8 & 0xFF00) | (values[2][n] & 0xFF0000));
    store_packed_pixels(set, pixels, out, count, following);
}

FAST_INLINE static void store_run_of_1(const int32_t* values, uint8_t* out, uint32_t count)
{
    uint8_t bytes[plasma_run];
    for (uint32_t n = 0; n < plasma_run; ++n)
        bytes[n] = static_cast<uint8_t>(values[n] >> 16);
    std::memcpy(out, bytes, count);
}

FAST_INLINE static void summed_row_fast(instruction_set set, const summed_plasma& plasma, const summed_tables& tables,
    double p_row, double q_row, uint8_t* out, uint32_t count)
{
    const auto channel_count = static_cast<uint32_t>(plasma.channels.size());
    summed_row row = {.p = p_row, .q = q_row, .p_steps = {}, .q_steps = {}};
    for (uint32_t c = 0; c < channel_count; ++c) {
        const plasma_channel& channel = plasma.channels[c];
        row.p_steps[c] = make_row_steps(channel.p, p_row);
        row.q_steps[c] = make_row_steps(channel.q, q_row);
    }
    for (uint32_t begin = 0; begin < count; begin += plasma_run) {
        const uint32_t run = std::min(plasma_run, count - begin);
        int32_t values[max_channels][plasma_run];
        for (uint32_t c = 0; c < channel_count; ++c)
            summed_channel_run(set, plasma, tables, row, c, begin, values[c]);
        if (channel_count == max_channels)
            store_run_of_3(set, values, out + size_t{3} * begin, run, count - begin - run);
        else
            store_run_of_1(values[0], out + begin, run);
    }
}

// ---- fields on turned coordinates --------------------------------------------------------

// The half cosines of one channel's wave from entry `first` to `last`, rounded up to a whole run.
FAST_INLINE static void fill_wave(const turned_field& field, const plasma_wave& wave, float scale, uint32_t first,
    uint32_t last, float* halves, uint32_t stride)
{
    for (uint32_t begin = first - first % plasma_run; begin <= last; begin += plasma_run) {
        float made[plasma_run];
        for (uint32_t n = 0; n < plasma_run; ++n) {
            const double value = turned_value(field, static_cast<double>(cosine_table[begin + n]));
            made[n] = half_cosine(static_cast<int32_t>(wave.density * value + wave.drift), scale);
        }
        for (uint32_t n = 0; n < plasma_run; ++n)
            halves[(begin + n) * stride] = made[n];
    }
}

// Entries 1..4095 are those of negative steps, from 4096 on of the others; a full turn needs all of its half.
static uint32_t first_entry(step_range steps)
{
    return static_cast<uint32_t>(std::clamp(4096.0 + std::trunc(steps.least), 0.0, 4096.0));
}

static uint32_t last_entry(step_range steps)
{
    return static_cast<uint32_t>(std::clamp(4096.0 + std::trunc(steps.most), 4096.0, 8191.0));
}

FAST_INLINE static void fill_turned_fast(const turned_plasma& plasma, step_range p, step_range q, turned_tables& tables)
{
    const auto channel_count = static_cast<uint32_t>(plasma.channels.size());
    const uint32_t stride = channel_count == max_channels ? 4 : 1;
    for (uint32_t c = 0; c < channel_count; ++c) {
        const plasma_channel& channel = plasma.channels[c];
        fill_wave(plasma.p, channel.p, 1.0f, first_entry(p), last_entry(p), tables.p.halves + c, stride);
        fill_wave(plasma.q, channel.q, byte_scale, first_entry(q), last_entry(q), tables.q.halves + c, stride);
    }
    if (stride == 1)
        return;
    for (uint32_t entry = first_entry(p); entry <= last_entry(p); ++entry)
        tables.p.halves[4 * entry + 3] = 1.0f;
    for (uint32_t entry = first_entry(q); entry <= last_entry(q); ++entry)
        tables.q.halves[4 * entry + 3] = certain_half;
}

FAST_INLINE static void turned_entries(const turned_field& field, const double* columns, double row, int32_t* entries)
{
    for (uint32_t n = 0; n < plasma_run; ++n)
        entries[n] = 4096 + static_cast<int32_t>((columns[n] + row) * field.scale) % 4096;
}

static uint32_t exact_pixel(const turned_plasma& plasma, int32_t p_entry, int32_t q_entry)
{
    const double p = turned_value(plasma.p, static_cast<double>(cosine_table[p_entry]));
    const double q = turned_value(plasma.q, static_cast<double>(cosine_table[q_entry]));
    uint32_t pixel = 0;
    for (size_t c = 0; c < plasma.channels.size(); ++c)
        pixel |= uint32_t{channel_value(plasma.channels[c], p, q)} << (8 * c);
    return pixel;
}

FAST_INLINE static void turned_run_of_1(const turned_plasma& plasma, const turned_tables& tables,
    const int32_t* p_entries, const int32_t* q_entries, uint8_t* out, uint32_t count)
{
    float half_p[plasma_run];
    float half_q[plasma_run];
    for (uint32_t n = 0; n < plasma_run; ++n) {
        half_p[n] = tables.p.halves[p_entries[n]];
        half_q[n] = tables.q.halves[q_entries[n]];
    }
    int32_t values[plasma_run];
    uint32_t any = 0;
    for (uint32_t n = 0; n < plasma_run; ++n) {
        values[n] = fixed_value(half_q[n], half_p[n]);
        any |= is_doubtful(values[n]) ? 1u : 0u;
    }
    for (uint32_t n = 0; any != 0 && n < plasma_run; ++n)
        if (is_doubtful(values[n]))
            values[n] = static_cast<int32_t>(exact_pixel(plasma, p_entries[n], q_entries[n]) << 16);
    store_run_of_1(values, out, count);
}

#ifdef __SSE2__

// A pixel's fixed values: R, G, B and one that is never in doubt.
FAST_INLINE static __m128i turned_pixel(const turned_tables& tables, int32_t p_entry, int32_t q_entry)
{
    const __m128 product = _mm_mul_ps(
        _mm_loadu_ps(tables.q.halves + ptrdiff_t{4} * q_entry), _mm_loadu_ps(tables.p.halves + ptrdiff_t{4} * p_entry));
    const __m128 value = _mm_add_ps(_mm_mul_ps(product, product), _mm_set1_ps(static_cast<float>(doubt)));
    return _mm_cvttps_epi32(_mm_max_ps(value, _mm_set1_ps(2.0f * doubt)));
}

FAST_INLINE static __m128i doubtful_lanes(__m128i values)
{
    return _mm_cmplt_epi32(_mm_and_si128(values, _mm_set1_epi32(0xFFFF)), _mm_set1_epi32(2 * doubt));
}

// Four pixels at a time; if a byte of them is in doubt, the four are computed from the table.
FAST_INLINE static void turned_run_of_3(instruction_set set, const turned_plasma& plasma, const turned_tables& tables,
    const int32_t* p_entries, const int32_t* q_entries, uint8_t* out, uint32_t count, uint32_t following)
{
    uint32_t pixels[plasma_run];
    for (uint32_t n = 0; n < plasma_run; n += 4) {
        const __m128i a = turned_pixel(tables, p_entries[n], q_entries[n]);
        const __m128i b = turned_pixel(tables, p_entries[n + 1], q_entries[n + 1]);
        const __m128i c = turned_pixel(tables, p_entries[n + 2], q_entries[n + 2]);
        const __m128i d = turned_pixel(tables, p_entries[n + 3], q_entries[n + 3]);
        const __m128i in_doubt = _mm_or_si128(
            _mm_or_si128(doubtful_lanes(a), doubtful_lanes(b)), _mm_or_si128(doubtful_lanes(c), doubtful_lanes(d)));
        const __m128i ab = _mm_packs_epi32(_mm_srli_epi32(a, 16), _mm_srli_epi32(b, 16));
        const __m128i cd = _mm_packs_epi32(_mm_srli_epi32(c, 16), _mm_srli_epi32(d, 16));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(pixels + n), _mm_packus_epi16(ab, cd));
        if (_mm_movemask_epi8(in_doubt) != 0)
            for (uint32_t k = n; k < n + 4; ++k)
                pixels[k] = exact_pixel(plasma, p_entries[k], q_entries[k]);
    }
    store_packed_pixels(set, pixels, out, count, following);
}

#else

FAST_INLINE static void turned_run_of_3(instruction_set set, const turned_plasma& plasma, const turned_tables&,
    const int32_t* p_entries, const int32_t* q_entries, uint8_t* out, uint32_t count, uint32_t following)
{
    uint32_t pixels[plasma_run];
    for (uint32_t n = 0; n < plasma_run; ++n)
        pixels[n] = exact_pixel(plasma, p_entries[n], q_entries[n]);
    store_packed_pixels(set, pixels, out, count, following);
}

#endif

FAST_INLINE static void turned_row_fast(instruction_set set, const turned_plasma& plasma, const turned_tables& tables,
    const summed_field& p, const summed_field& q, uint8_t* out, uint32_t count)
{
    for (uint32_t begin = 0; begin < count; begin += plasma_run) {
        const uint32_t run = std::min(plasma_run, count - begin);
        int32_t p_entries[plasma_run];
        int32_t q_entries[plasma_run];
        turned_entries(plasma.p, p.columns + begin, p.row, p_entries);
        turned_entries(plasma.q, q.columns + begin, q.row, q_entries);
        if (plasma.channels.size() == max_channels)
            turned_run_of_3(
                set, plasma, tables, p_entries, q_entries, out + size_t{3} * begin, run, count - begin - run);
        else
            turned_run_of_1(plasma, tables, p_entries, q_entries, out + begin, run);
    }
}

// ---- by instructions ---------------------------------------------------------------------

FAST_AVX2 static void fill_summed_avx2(const summed_plasma& plasma, uint32_t width, summed_tables& tables)
{
    fill_summed_fast(plasma, width, tables);
}

void fill_summed_tables(instruction_set set, const summed_plasma& plasma, uint32_t width, summed_tables& tables)
{
    assert(half_angles[0].cosine == 1.0f); // build_cosine_table was called
    assert(plasma.channels.size() <= max_channels && width <= max_effect_side);
    switch (set) {
    case instructions_avx2:
        return fill_summed_avx2(plasma, width, tables);
    case instructions_sse2:
        return fill_summed_fast(plasma, width, tables);
    case instructions_plain:
    case instruction_set_count:
        break;
    }
}

FAST_AVX2 static void summed_row_avx2(
    const summed_plasma& plasma, const summed_tables& tables, double p_row, double q_row, uint8_t* out, uint32_t count)
{
    summed_row_fast(instructions_avx2, plasma, tables, p_row, q_row, out, count);
}

void summed_plasma_row(instruction_set set, const summed_plasma& plasma, const summed_tables& tables, double p_row,
    double q_row, uint8_t* out, uint32_t count)
{
    assert(cosine_table[0] == 1.0f); // build_cosine_table was called
    assert(plasma.channels.size() == 1 || plasma.channels.size() == max_channels);
    switch (set) {
    case instructions_avx2:
        return summed_row_avx2(plasma, tables, p_row, q_row, out, count);
    case instructions_sse2:
        return summed_row_fast(instructions_sse2, plasma, tables, p_row, q_row, out, count);
    case instructions_plain:
    case instruction_set_count:
        break;
    }
    summed_row_plain(plasma, p_row, q_row, out, count);
}

FAST_AVX2 static void fill_turned_avx2(const turned_plasma& plasma, step_range p, step_range q, turned_tables& tables)
{
    fill_turned_fast(plasma, p, q, tables);
}

void fill_turned_tables(
    instruction_set set, const turned_plasma& plasma, step_range p, step_range q, turned_tables& tables)
{
    assert(cosine_table[0] == 1.0f); // build_cosine_table was called
    switch (set) {
    case instructions_avx2:
        return fill_turned_avx2(plasma, p, q, tables);
    case instructions_sse2:
        return fill_turned_fast(plasma, p, q, tables);
    case instructions_plain:
    case instruction_set_count:
        break;
    }
}

FAST_AVX2 static void turned_row_avx2(const turned_plasma& plasma, const turned_tables& tables, const summed_field& p,
    const summed_field& q, uint8_t* out, uint32_t count)
{
    turned_row_fast(instructions_avx2, plasma, tables, p, q, out, count);
}

void turned_plasma_row(instruction_set set, const turned_plasma& plasma, const turned_tables& tables,
    const summed_field& p, const summed_field& q, uint8_t* out, uint32_t count)
{
    assert(cosine_table[0] == 1.0f); // build_cosine_table was called
    assert(plasma.channels.size() == 1 || plasma.channels.size() == max_channels);
    switch (set) {
    case instructions_avx2:
        return turned_row_avx2(plasma, tables, p, q, out, count);
    case instructions_sse2:
        return turned_row_fast(instructions_sse2, plasma, tables, p, q, out, count);
    case instructions_plain:
    case instruction_set_count:
        break;
    }
    turned_row_plain(plasma, p, q, out, count);
}
