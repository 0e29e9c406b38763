// Each form of the plasmas' kernels against the plain one, byte for byte.

#include "effects/dynamic_texture_plasma.h"
#include "effects/plasma_kernels.h"
#include "faster_sets.h"
#include "reference.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <memory>
#include <vector>

constexpr uint32_t room = 512; // columns that a row of the tests has room for

static plasma_channel steps_as_they_are()
{
    return {.p = {.density = 1.0, .drift = 0.0}, .q = {.density = 1.0, .drift = 0.0}};
}

// Numbers that repeat late, -1..1.
static double scattered(uint32_t n)
{
    return static_cast<double>(static_cast<int32_t>(n * 2654435761u)) / 2147483648.0;
}

// A row by one form; what lies behind it keeps its 7s.
static std::vector<uint8_t> summed_row(
    instruction_set set, const summed_plasma& plasma, double p_row, double q_row, uint32_t count)
{
    const auto tables = std::make_unique<summed_tables>();
    fill_summed_tables(set, plasma, count, *tables);
    std::vector<uint8_t> out(room * 3 + 8, 7);
    summed_plasma_row(set, plasma, *tables, p_row, q_row, out.data(), count);
    return out;
}

// Whether all forms make the same bytes of a row, with three colours and with one.
static bool same_rows(instruction_set set, const summed_plasma& plasma, double p_row, double q_row, uint32_t count)
{
    summed_plasma red = plasma;
    red.channels = plasma.channels.first(1);
    return summed_row(set, plasma, p_row, q_row, count) == summed_row(instructions_plain, plasma, p_row, q_row, count)
        && summed_row(set, red, p_row, q_row, count) == summed_row(instructions_plain, red, p_row, q_row, count);
}

static const std::vector<plasma_channel> three_alike(3, steps_as_they_are());

// Every step of p and every 13th of q, and the other way round: all entries of the table against each other, so that
// no product that is near a whole number is missed. Half steps apart from the table's, no sum is in doubt.
TEST_CASE("a summed row has the same bytes with all instructions for all pairs of table steps")
{
    build_cosine_table();
    for (const instruction_set set : faster_sets())
        for (int32_t first = -4096; first < 4096; first += static_cast<int32_t>(room)) {
            std::vector<double> columns(room);
            for (uint32_t x = 0; x < room; ++x)
                columns[x] = first + static_cast<int32_t>(x);
            const std::vector<double> still(room);
            uint32_t different = 0;
            for (int32_t other = -4095; other < 4096; other += 13)
                for (const double rest : {0.5, -0.5}) {
                    const summed_plasma along = {columns.data(), still.data(), std::span(three_alike).first(1)};
                    const summed_plasma across = {still.data(), columns.data(), std::span(three_alike).first(1)};
                    different += summed_row(set, along, rest, other + rest, room)
                            != summed_row(instructions_plain, along, rest, other + rest, room)
                        ? 1u
                        : 0u;
                    different += summed_row(set, across, other + rest, rest, room)
                            != summed_row(instructions_plain, across, other + rest, rest, room)
                        ? 1u
                        : 0u;
                }
            CAPTURE(static_cast<uint32_t>(set));
            CAPTURE(first);
            CHECK(different == 0);
        }
}

// Sums that are whole steps, or miss one by a little, on both sides of 0: parts that add up to nothing, to one step,
// or to two.
TEST_CASE("a summed row has the same bytes with all instructions where sums are beside whole steps")
{
    build_cosine_table();
    const double misses[] = {0.0, 1e-16, 1e-12, 1e-9, 3e-9, 1e-6, 4e-6, 1e-4, 0.3};
    for (const instruction_set set : faster_sets())
        for (const double part : {0.0, 0.25, 1.0 / 3.0, 0.7, 1.0 - 1e-7, 1.0 - 1e-12, 1e-7, 1e-12})
            for (const double row : {0.0, 70.0, -70.0, -400.0, 1e6, -1e9, 1.5e9}) {
                std::vector<double> columns(room);
                for (uint32_t x = 0; x < room; ++x)
                    columns[x] = 0.75 * x - 200.0 - part + (x % 8 < 4 ? 1.0 : -1.0) * misses[x / 8 % std::size(misses)];
                CAPTURE(static_cast<uint32_t>(set));
                CAPTURE(part);
                CAPTURE(row);
                REQUIRE(same_rows(set, {columns.data(), columns.data(), three_alike}, row + part, part - row, room));
            }
}

TEST_CASE("a summed row of any length has the same bytes with all instructions, and nothing behind it")
{
    build_cosine_table();
    std::vector<double> p_columns(room);
    std::vector<double> q_columns(room);
    for (uint32_t x = 0; x < room; ++x) {
        p_columns[x] = 400.0 * scattered(x);
        q_columns[x] = 300.0 * scattered(x + 7000);
    }
    std::vector<plasma_channel> channels;
    for (uint32_t c = 0; c < 3; ++c)
        channels.push_back({.p = {.density = 60.0 + 11.0 * c, .drift = -900000.0 + 7777.7 * c},
            .q = {.density = -45.0 + 30.0 * c, .drift = 123456.7 * c}});
    for (const instruction_set set : faster_sets())
        for (uint32_t count = 1; count <= 200; ++count) {
            CAPTURE(static_cast<uint32_t>(set));
            CAPTURE(count);
            REQUIRE(same_rows(set, {p_columns.data(), q_columns.data(), channels}, 3.25 * count, -2.5 * count, count));
        }
}

// A picture of turned coordinates by one form: rows begin at 0 down to `least` table steps, and their columns add what
// is between that and `most`.
static std::vector<uint8_t> turned_picture(
    instruction_set set, const turned_plasma& plasma, double least, double most, uint32_t count)
{
    const auto tables = std::make_unique<turned_tables>();
    const step_range steps = {least, most - least};
    fill_turned_tables(set, plasma, steps, steps, *tables);
    std::vector<double> columns(room);
    for (uint32_t x = 0; x < room; ++x)
        columns[x] = (most - least) * (x % count) / count;
    const size_t row_bytes = size_t{count} * plasma.channels.size();
    std::vector<uint8_t> out(row_bytes * 24 + 8, 7);
    for (uint32_t y = 0; y < 24; ++y) {
        const double row = least * y / 24.0;
        turned_plasma_row(set, plasma, *tables, {columns.data(), row}, {columns.data(), least - row},
            out.data() + y * row_bytes, count);
    }
    return out;
}

TEST_CASE("turned rows have the same bytes with all instructions, whatever part of the table they read")
{
    build_cosine_table();
    std::vector<plasma_channel> channels;
    for (uint32_t c = 0; c < 3; ++c)
        channels.push_back({.p = {.density = 70.0 + 9.0 * c, .drift = 40000.0 - 90000.0 * c},
            .q = {.density = 95.0 - 17.0 * c, .drift = 1234.5}});
    const struct {
        double least, most;
    } reaches[] = {{0.0, 700.0}, {-700.0, 0.0}, {-300.0, 5000.0}, {-9000.0, 100.0}, {0.0, 4095.0}, {-4096.0, 4096.0}};
    for (const instruction_set set : faster_sets())
        for (const auto& reach : reaches)
            for (const uint32_t count : {1u, 2u, 3u, 5u, 63u, 64u, 65u, 129u, 512u})
                for (const size_t channel_count : {size_t{1}, size_t{3}}) {
                    const turned_plasma plasma = {.p = {.scale = 1.0, .amplitude = 2300.0, .drift = 12.0},
                        .q = {.scale = 1.0, .amplitude = 1700.0, .drift = -50.0},
                        .channels = std::span(channels).first(channel_count)};
                    CAPTURE(static_cast<uint32_t>(set));
                    CAPTURE(reach.least);
                    CAPTURE(count);
                    REQUIRE(turned_picture(set, plasma, reach.least, reach.most, count)
                        == turned_picture(instructions_plain, plasma, reach.least, reach.most, count));
                }
}

TEST_CASE("only steps that an integer holds are for the fast forms")
{
    const plasma_channel channels[] = {steps_as_they_are(), {.p = {2.0, -100.0}, .q = {-3.0, 50.0}}};
    CHECK(plasma_steps_fit(channels, 1e9, 1e8));
    CHECK(plasma_steps_fit(channels, 1.07e9, 7.1e8));
    CHECK(!plasma_steps_fit(channels, 1.08e9, 1e8));
    CHECK(!plasma_steps_fit(channels, 1e9, 7.2e8));
    CHECK(!plasma_steps_fit(channels, static_cast<double>(not_a_number), 1.0));
    CHECK(!plasma_steps_fit(channels, 1.0, static_cast<double>(infinity)));
    const plasma_channel broken[] = {{.p = {1.0, static_cast<double>(not_a_number)}, .q = {1.0, 0.0}}};
    CHECK(!plasma_steps_fit(broken, 1.0, 1.0));
}

// The hash was made with the plain forms; ctest runs it with all instructions and in both word sizes.
TEST_CASE("plasmas of all sizes and times are the same in every build")
{
    build_cosine_table();
    uint64_t hash = 14695981039346656037u;
    for (const uint32_t side : {1u, 2u, 3u, 17u, 64u, 65u, 512u})
        for (const float step : {0.0f, 0.4f, 33.3f, 317.0f, 641.5f, 1000.25f, 25599.0f, -1.0f, -777.7f, 3e5f, -2.5e6f,
                 2e7f, 4e9f, -1e30f, not_a_number, infinity})
            for (const uint32_t channels : {1u, 3u}) {
                std::vector<uint8_t> pixels(size_t{side} * side * channels);
                const effect_picture out = {pixels.data(), side, side, channels};
                render_plasma(out, step);
                hash = hash_of(std::span<const uint8_t>(pixels), hash);
                render_rotating_plasma(out, step);
                hash = hash_of(std::span<const uint8_t>(pixels), hash);
            }
    CHECK(hash == 13925037495984037158u);
}
