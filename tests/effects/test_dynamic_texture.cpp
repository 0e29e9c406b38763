#include "builders.h"
#include "effects/dynamic_texture.h"
#include "reference.h"
#include "texgen/cosine_table.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <vector>

namespace {

struct free_state {
    void operator()(effect_2d_state* state) const
    {
        free_dynamic_texture(state);
    }
};

using owned_state = std::unique_ptr<effect_2d_state, free_state>;

} // namespace

// One picture with the first two parameters; the bytes start as 77.
static std::vector<uint8_t> rendered(
    uint32_t type, uint32_t side, uint32_t bpp, float first, float second = 0.0f, effect_2d_state* state = nullptr)
{
    build_cosine_table();
    std::vector<uint8_t> out(size_t{side} * side * (bpp / 8), 77);
    const float params[3] = {first, second, 0.0f};
    render_dynamic_texture(type, side, side, bpp, params, state, out.data());
    return out;
}

static uint8_t truncated_byte(double value)
{
    return static_cast<uint8_t>(static_cast<int64_t>(std::trunc(value)) & 255);
}

// ---- states and parameters ---------------------------------------------------------------

TEST_CASE("only the test effect and the amoba have a state, and only the amoba a buffer")
{
    const owned_state test(init_dynamic_texture(effect_2d_test, 64, 64, 24));
    REQUIRE(test != nullptr);
    CHECK(test->buffer == nullptr);
    CHECK(test->counter == 0);
    CHECK(test->calls == 0);
    const owned_state amoba(init_dynamic_texture(effect_2d_amoba, 64, 64, 24));
    REQUIRE(amoba != nullptr);
    CHECK(amoba->buffer != nullptr);
    CHECK(amoba->counter == 0);
    for (const uint32_t type : {1u, 3u, 4u, 5u, 4000000000u})
        CHECK(init_dynamic_texture(type, 64, 64, 24) == nullptr);
    free_dynamic_texture(nullptr); // what the others have is freed like a state
}

TEST_CASE("kind 0 has two parameters, all others one")
{
    CHECK(dynamic_texture_param_count(0) == 2);
    for (const uint32_t type : {1u, 2u, 3u, 4u, 5u})
        CHECK(dynamic_texture_param_count(type) == 1);
}

TEST_CASE("parameters are function values, 0 for handle 0 and 1 for a dangling handle")
{
    test_document t;
    dynamic_texture texture = {};
    texture.type = effect_2d_test;
    texture.functions[0] = 0;
    texture.functions[1] = add_function(t, linear_function());
    float params[3] = {9.0f, 9.0f, 9.0f};
    dynamic_texture_params(texture, t.d.function_table, 250, params);
    CHECK(params[0] == 0.0f);
    CHECK(params[1] == 250.0f);
    CHECK(params[2] == 0.0f);
    texture.functions[0] = 3000;
    dynamic_texture_params(texture, t.d.function_table, 250, params);
    CHECK(params[0] == 1.0f);
    dynamic_texture_params(texture, {}, 250, params);
    CHECK(params[0] == 1.0f);
    CHECK(params[1] == 1.0f);
}

TEST_CASE("kinds with one parameter never look at the second handle")
{
    test_document t;
    dynamic_texture texture = {};
    texture.type = effect_2d_plasma;
    texture.functions[0] = texture.functions[1] = add_function(t, constant_function(5.0f));
    float params[3];
    dynamic_texture_params(texture, t.d.function_table, 0, params);
    CHECK(params[0] == 5.0f);
    CHECK(params[1] == 0.0f);
}

// A texture of the test effect that was created.
static dynamic_texture test_effect_of_64()
{
    dynamic_texture texture = {};
    texture.type = effect_2d_test;
    texture.width = texture.height = 64;
    texture.bpp = 24;
    texture.texture = 5;
    return texture;
}

// The test effect with its two parameters.
static std::vector<uint8_t> test_effect_picture(float first, float second)
{
    std::vector<uint8_t> out(size_t{64} * 64 * 3);
    const float params[3] = {first, second, 0.0f};
    render_dynamic_texture(effect_2d_test, 64, 64, 24, params, nullptr, out.data());
    return out;
}

TEST_CASE("the first picture's parameters stop at the first handle 0 and are those of time 0")
{
    test_document t;
    dynamic_texture texture = test_effect_of_64();
    texture.functions[1] = add_function(t, constant_function(7.0f));
    std::vector<uint8_t> pixels;
    render_first_dynamic_texture(texture, t.d.function_table, pixels);
    CHECK(pixels == test_effect_picture(0.0f, 0.0f));
    texture.functions[0] = add_function(t, linear_function(2.0f, 30.0f));
    pixels.clear();
    render_first_dynamic_texture(texture, t.d.function_table, pixels);
    CHECK(pixels == test_effect_picture(30.0f, 7.0f));
    CHECK(pixels != test_effect_picture(30.0f, 0.0f));
    CHECK(texture.refreshed == 1);
    CHECK(texture.refresh_time == 0);
}

TEST_CASE("new pictures go behind what is there, one for each time that is not the last one's")
{
    test_document t;
    dynamic_texture texture = test_effect_of_64();
    texture.functions[0] = texture.functions[1] = add_function(t, linear_function());
    std::vector<uint8_t> pixels = {1, 2, 3};
    std::vector<uint8_t> expected = pixels;
    for (const uint32_t time : {4u, 4u, 5u, 5u, 4u})
        update_dynamic_texture(texture, t.d.function_table, time, pixels);
    for (const float value : {4.0f, 5.0f, 4.0f}) {
        const std::vector<uint8_t> picture = test_effect_picture(value, value);
        expected.insert(expected.end(), picture.begin(), picture.end());
    }
    CHECK(pixels == expected);
    CHECK(!update_dynamic_texture(texture, t.d.function_table, 4, pixels));
    texture.texture = 0; // never created, or released
    CHECK(!update_dynamic_texture(texture, t.d.function_table, 9, pixels));
    CHECK(pixels == expected);
}

// ---- "Test 2d effect" --------------------------------------------------------------------

TEST_CASE("a picture that is forgotten is made again, and an amoba is the same colony again")
{
    test_document t;
    const uint32_t function = add_function(t, linear_function());
    dynamic_texture ramp = test_effect_of_64();
    ramp.functions[0] = ramp.functions[1] = function;
    dynamic_texture colony = test_effect_of_64();
    const owned_state state(init_dynamic_texture(effect_2d_amoba, 64, 64, colony.bpp));
    colony.type = effect_2d_amoba;
    colony.state = state.get();
    colony.functions[0] = function;
    for (const dynamic_texture& texture : {ramp, colony}) {
        const uint32_t handle = table_add(t.d.dynamic_texture_table, texture);
        dynamic_texture& record = *table_get(t.d.dynamic_texture_table, handle);
        std::vector<uint8_t> first, again;
        CHECK(update_dynamic_texture(record, t.d.function_table, 7, first));
        CHECK(!update_dynamic_texture(record, t.d.function_table, 7, again));
        forget_pictures(t.d.dynamic_texture_table);
        CHECK(update_dynamic_texture(record, t.d.function_table, 7, again));
        CHECK(again == first);
        record.state = nullptr; // it was borrowed
    }
}

TEST_CASE("the test effect is three ramps of rows, columns and both, skipping a value at every 255")
{
    const owned_state state(init_dynamic_texture(effect_2d_test, 64, 64, 24));
    const std::vector<uint8_t> out = rendered(effect_2d_test, 64, 24, 200.9f, 20.0f, state.get());
    const auto pixel = [&](uint32_t x, uint32_t y) { return out.data() + (y * 64 + x) * 3; };
    // o = trunc(220.9) = 220
    CHECK(pixel(0, 0)[0] == 220);
    CHECK(pixel(0, 0)[1] == 220);
    CHECK(pixel(0, 0)[2] == 220);
    CHECK(pixel(34, 7)[0] == 227);
    CHECK(pixel(34, 7)[1] == 254);
    CHECK(pixel(34, 7)[2] == 6);   // 261 + 1 = 262
    CHECK(pixel(35, 0)[1] == 0);   // 255 + 1 = 256
    CHECK(pixel(63, 63)[2] == 91); // 346 + 1 = 347
}

TEST_CASE("the test effect divides negative sums toward zero")
{
    const std::vector<uint8_t> out = rendered(effect_2d_test, 64, 24, -300.0f, 0.0f);
    CHECK(out[0] == 211); // -300 - 1 = -301 = 211 - 512
    const auto* at_46 = out.data() + 46 * 3;
    CHECK(at_46[1] == 2); // -254 + 0
    const auto* at_45 = out.data() + 45 * 3;
    CHECK(at_45[1] == 0); // -255 - 1
}

TEST_CASE("the test effect in 8 bits adds the third value, which is never set, to the first")
{
    const std::vector<uint8_t> out = rendered(effect_2d_test, 64, 8, 40.5f, 100.0f);
    CHECK(out[0] == 40);
    CHECK(out[3 * 64 + 5] == 48);
    std::vector<uint8_t> third(64 * 64);
    const float params[3] = {40.5f, 100.0f, 2.5f};
    render_dynamic_texture(effect_2d_test, 64, 64, 8, params, nullptr, third.data());
    CHECK(third[0] == 43);
}

TEST_CASE("the test effect counts its pictures in the first byte of its state")
{
    const owned_state state(init_dynamic_texture(effect_2d_test, 64, 64, 24));
    for (int i = 0; i < 257; ++i)
        rendered(effect_2d_test, 8, 24, 0.0f, 0.0f, state.get());
    CHECK(reinterpret_cast<const uint8_t*>(state.get())[0] == 1); // 257 modulo 256
}

TEST_CASE("every kind takes any parameter, however large, infinite or not a number")
{
    for (uint32_t type = 0; type <= effect_2d_kind_count; ++type)
        for (const uint32_t bpp : {8u, 24u})
            for (const float value :
                {3e38f, -3e38f, 2147483520.0f, -2147483648.0f, infinity, -infinity, not_a_number}) {
                const owned_state state(init_dynamic_texture(type, 64, 64, bpp));
                CHECK(rendered(type, 64, bpp, value, value, state.get()).size() == 64 * 64 * bpp / 8);
            }
}

TEST_CASE("sums of the test effect wrap at 32 bits")
{
    // o = 2147483520; o + 128 is -2147483648, and -2147483648 / 255 = -8421504
    const std::vector<uint8_t> out = rendered(effect_2d_test, 256, 24, 2147483520.0f, 0.0f);
    CHECK(out[128 * 3 + 1] == ((0u - 8421504u) & 255));
}

TEST_CASE("a kind beyond the catalogue leaves the picture as it is")
{
    const std::vector<uint8_t> out = rendered(5, 64, 24, 3.0f);
    CHECK(std::count(out.begin(), out.end(), 77) == 64 * 64 * 3);
}

// ---- "Amoba" -----------------------------------------------------------------------------

namespace {

// The same colony, written down from the rules with real arithmetic. Goes on drawing from
// the C library's generator, so a replay must start where the colony's own start was.
struct reference_colony {
    uint32_t side;
    uint32_t channels;
    std::vector<uint8_t> bytes;
};

} // namespace

static double random_real()
{
    return std::rand() / 2147483648.0;
}

static reference_colony planted(uint32_t side, uint32_t channels)
{
    reference_colony colony = {side, channels, std::vector<uint8_t>(size_t{side} * side * channels, 0)};
    std::srand(5);
    for (uint32_t n = 0; n < side * side / 400; ++n) {
        const size_t index = static_cast<size_t>(random_real() * side * side);
        for (uint32_t c = 0; c < channels; ++c)
            colony.bytes[index * channels + c]
                = static_cast<uint8_t>(channels == 3 ? std::rand() / 8388608.0 : random_real() * 192 + 64);
    }
    return colony;
}

static void grow(reference_colony& colony)
{
    const auto value = [&](size_t row, size_t column, uint32_t c) -> uint8_t& {
        return colony.bytes[(row * colony.side + column) * colony.channels + c];
    };
    for (uint32_t n = 0; n < colony.side * colony.side / 8; ++n) {
        const size_t row = 1 + static_cast<size_t>(random_real() * (colony.side - 3));
        const size_t column = 1 + static_cast<size_t>(random_real() * (colony.side - 3));
        uint32_t sum = 0;
        for (uint32_t c = 0; c < colony.channels; ++c)
            sum += value(row, column, c);
        if (sum <= (colony.channels == 3 ? 32u : 64u))
            continue;
        for (uint32_t c = 0; c < colony.channels; ++c)
            value(row, column + 1, c) = value(row + 1, column, c) = value(row, column - 1, c)
                = value(row - 1, column, c) = value(row, column, c);
    }
}

TEST_CASE("an amoba starts from the seeds of generator seed 5, in both depths")
{
    for (const uint32_t bpp : {8u, 24u}) {
        std::srand(999); // whatever stood there before has no influence
        const owned_state state(init_dynamic_texture(effect_2d_amoba, 64, 64, bpp));
        const reference_colony colony = planted(64, bpp / 8);
        CHECK(rendered(effect_2d_amoba, 64, bpp, 0.99f, 0.0f, state.get()) == colony.bytes);
        CHECK(std::count(colony.bytes.begin(), colony.bytes.end(), 0) < 64 * 64 * int(bpp) / 8);
    }
}

TEST_CASE("planting an amoba seeds the generator that everything else draws from")
{
    const owned_state state(init_dynamic_texture(effect_2d_amoba, 64, 64, 24));
    const int next = std::rand();
    planted(64, 3);
    CHECK(next == std::rand());
}

TEST_CASE("an amoba with an unchanged whole update value returns the same picture")
{
    const owned_state state(init_dynamic_texture(effect_2d_amoba, 64, 64, 24));
    const auto grown = rendered(effect_2d_amoba, 64, 24, 4.1f, 0.0f, state.get());
    CHECK(rendered(effect_2d_amoba, 64, 24, 4.9f, 0.0f, state.get()) == grown);
    CHECK(rendered(effect_2d_amoba, 64, 24, 4.0f, 0.0f, state.get()) == grown);
    CHECK(state->counter == 4);
    CHECK(rendered(effect_2d_amoba, 64, 24, 3.9f, 0.0f, state.get()) != grown); // backward grows as well
    CHECK(state->counter == 3);
}

TEST_CASE("an amoba grows by the same draws as the rules say, over 200 growths, in both depths")
{
    for (const uint32_t bpp : {8u, 24u}) {
        const uint32_t side = bpp == 8 ? 64 : 40;
        std::vector<std::vector<uint8_t>> pictures;
        const owned_state state(init_dynamic_texture(effect_2d_amoba, side, side, bpp));
        for (int update = 1; update <= 200; ++update)
            pictures.push_back(rendered(effect_2d_amoba, side, bpp, static_cast<float>(update), 0.0f, state.get()));

        reference_colony colony = planted(side, bpp / 8);
        uint32_t different = 0;
        for (const std::vector<uint8_t>& picture : pictures) {
            grow(colony);
            different += picture != colony.bytes;
        }
        CHECK(different == 0);
    }
}

TEST_CASE("an amoba spreads from a living pixel to its four neighbours and not from a dying one")
{
    for (const uint8_t value : {uint8_t{64}, uint8_t{65}}) {
        const owned_state state(init_dynamic_texture(effect_2d_amoba, 8, 8, 8)); // too small for a seed
        state->buffer[3 * 8 + 3] = value;
        for (int update = 1; update < 600; ++update)
            rendered(effect_2d_amoba, 8, 8, static_cast<float>(update), 0.0f, state.get());
        const auto spread = std::count(state->buffer, state->buffer + 64, value);
        if (value == 64)
            CHECK(spread == 1);
        else
            CHECK(spread == 45); // rows and columns 0..6 but for the four corners
    }
}

TEST_CASE("a 24-bit pixel lives when its three channels add up to more than 32")
{
    for (const uint8_t last : {uint8_t{11}, uint8_t{12}}) {
        const owned_state state(init_dynamic_texture(effect_2d_amoba, 8, 8, 24));
        uint8_t* pixel = state->buffer + (3 * 8 + 3) * 3;
        pixel[0] = 10;
        pixel[1] = 11;
        pixel[2] = last;
        for (int update = 1; update < 600; ++update)
            rendered(effect_2d_amoba, 8, 24, static_cast<float>(update), 0.0f, state.get());
        CHECK(std::count(state->buffer, state->buffer + 192, 10) == (last == 11 ? 1 : 45));
    }
}

TEST_CASE("an amoba of any size from 3 on stays inside its buffer")
{
    for (uint32_t side = 1; side <= 24; ++side) {
        const owned_state state(init_dynamic_texture(effect_2d_amoba, side, side, 24));
        std::fill_n(state->buffer, size_t{side} * side * 3, uint8_t{200});
        for (int update = 1; update <= 20; ++update)
            rendered(effect_2d_amoba, side, 24, static_cast<float>(update), 0.0f, state.get());
        CHECK(std::count(state->buffer, state->buffer + size_t{side} * side * 3, 200) == side * side * 3);
    }
}

TEST_CASE("an amoba without a state leaves the picture as it is")
{
    const auto out = rendered(effect_2d_amoba, 16, 24, 5.0f);
    CHECK(std::count(out.begin(), out.end(), 77) == 16 * 16 * 3);
}

// ---- "Normalmap" -------------------------------------------------------------------------

TEST_CASE("the first pixel of the normal map at time 0 is (254, 28, 255)")
{
    // red: (1 + 1) x 255 = 510, minus 256; green: (cos 158.90625 degrees + cos 87.890625 degrees) x 255
    // = (-0.932993 + 0.036807) x 255 = -228.5, truncated -228, plus 256; blue is constant
    const auto out = rendered(effect_2d_normalmap, 64, 24, 0.0f);
    CHECK(out[0] == 254);
    CHECK(out[1] == 28);
    CHECK(out[2] == 255);
}

TEST_CASE("the normal map follows its two sums of cosines at every pixel and time")
{
    for (const int64_t t : {0, 1, 30, 4096, -1, -70000, 1000000}) {
        const auto out = rendered(effect_2d_normalmap, 64, 24, static_cast<float>(t) + (t < 0 ? -0.5f : 0.5f));
        uint32_t different = 0;
        for (int64_t i = 0; i < 64 * 64; ++i) {
            const int64_t x = i % 64;
            const int64_t y = i / 64;
            const auto modulo = [](int64_t n, int64_t m) { return (n % m + m) % m; };
            const double red
                = reference_cosine(modulo(t + 10 * x, 4096)) + reference_cosine(2 * modulo(5 * t + 5 * y, 2048));
            const double green = reference_cosine(modulo(10 * t + 10 * x + 10000, 4096))
                + reference_cosine(modulo(t + y + 1000, 4096));
            const uint8_t* pixel = out.data() + i * 3;
            different
                += pixel[0] != truncated_byte(red * 255) || pixel[1] != truncated_byte(green * 255) || pixel[2] != 255;
        }
        CHECK(different == 0);
    }
}

TEST_CASE("the normal map in 8 bits leaves the picture as it is")
{
    const auto out = rendered(effect_2d_normalmap, 64, 8, 12.0f);
    CHECK(std::count(out.begin(), out.end(), 77) == 64 * 64);
}

// ---- plasmas -----------------------------------------------------------------------------

namespace {

// One plasma pixel straight from the formulas, with every channel's coefficients by number.
struct plasma_numbers {
    double t, cb, cc;
};

} // namespace

static uint8_t reference_channel(const plasma_numbers& n, double P, double Q, const double (&q)[6])
{
    constexpr double K = 651.8986469;
    // q: the Q factor's sway, density and drift, then the P factor's
    const double F1 = (q[0] * (n.cc - 1) + 1) * q[1] * K;
    const double F0 = (q[3] * (n.cb - 1) + 1) * q[4] * K;
    const double by_q = reference_cosine(static_cast<int64_t>(F1 * Q + q[2] * n.t * K)) + 1;
    const double by_p = reference_cosine(static_cast<int64_t>(F0 * P + q[5] * n.t * K)) + 1;
    return truncated_byte(by_q * by_p * 63);
}

static uint32_t wrong_channels(const uint8_t* pixel, uint32_t channels, const plasma_numbers& n, double P, double Q)
{
    constexpr double q[3][6] = {{0.12, 0.15, 0.2, 0.1, 0.12, 0.18}, // q1 q13 q7, q0 q12 q6
        {0.07, 0.14, 0.22, 0.09, 0.13, 0.17},                       // q3 q15 q9, q2 q14 q8
        {0.135, 0.08, 0.2, 0.13, 0.1, 0.12}};                       // q5 q17 q11, q4 q16 q10
    uint32_t wrong = 0;
    for (uint32_t c = 0; c < channels; ++c)
        wrong += pixel[c] != reference_channel(n, P, Q, q[c]);
    return wrong;
}

static double wide_sin(double x)
{
    return static_cast<double>(sinl(x));
}

static double wide_cos(double x)
{
    return static_cast<double>(cosl(x));
}

TEST_CASE("the straight plasma follows its formulas at every pixel, in both depths")
{
    constexpr int64_t side = 64;
    for (const uint32_t channels : {1u, 3u})
        for (const float step : {0.0f, 1.0f, 30.0f, 333.25f, -77.5f, 12345.0f}) {
            const auto out = rendered(effect_2d_plasma, side, channels * 8, step);
            const double T = 0.5 * static_cast<double>(step);
            const double A = wide_sin(0.1 * T) + 1.88;
            const double a = wide_sin(0.01 * T) * A;
            const double b = (1 - wide_cos(0.01 * T)) * A;
            const double ca = wide_cos(0.11 * T);
            const plasma_numbers n = {T, wide_cos(0.13 * T + 6), wide_cos(0.17 * T + 8)};
            uint32_t wrong = 0;
            for (int64_t i = 0; i < side * side; ++i) {
                const auto x = static_cast<double>(i % side);
                const auto y = static_cast<double>(i / side);
                const double X
                    = (1 - reference_cosine(static_cast<int64_t>(x * ((0.3 * ca + 0.7) * 9.72684185518603)))) * 63
                    + 0.06 * T;
                const double Y
                    = (1 - reference_cosine(static_cast<int64_t>(y * ((0.2 * ca + 0.8) * 12.96912246068074)))) * 63
                    + 0.08 * T;
                wrong += wrong_channels(
                    out.data() + i * channels, channels, n, A * wide_cos(0.01 * T) * X + a * Y, a * X + b * Y);
            }
            CAPTURE(step);
            CHECK(wrong == 0);
        }
}

TEST_CASE("the rotating plasma follows its formulas at every pixel, in both depths")
{
    constexpr double K = 651.8986469;
    constexpr int64_t side = 64;
    for (const uint32_t channels : {1u, 3u})
        for (const float step : {0.0f, 1.0f, 30.0f, 333.25f, -77.5f, 12345.0f}) {
            const auto out = rendered(effect_2d_rotate, side, channels * 8, step);
            const double T = 0.5 * static_cast<double>(step);
            const double A = (wide_sin(0.1 * T) + 1.88) * 20;
            const double ca = wide_cos(0.11 * T);
            const double gx = (0.0024543671875 * ca + 0.00981746875) * K;
            const double gy = (0.0027611630859375 * ca + 0.0064427138671875) * K;
            const plasma_numbers n = {T, wide_cos(0.13 * T) + 6, wide_cos(0.17 * T) + 8};
            const double sr = wide_sin(0.15 * T);
            const double cr = wide_cos(0.15 * T);
            uint32_t wrong = 0;
            for (int64_t i = 0; i < side * side; ++i) {
                const auto x = static_cast<double>(i % side);
                const auto y = static_cast<double>(i / side);
                const double P
                    = (1 - reference_cosine(static_cast<int64_t>((sr * y + cr * x) * gx))) * (63 * A) + 0.08 * A * T;
                const double Q = (1 - reference_cosine(static_cast<int64_t>((sr * x + (1 - cr) * y) * gy))) * (63 * A)
                    + 0.06 * A * T;
                wrong += wrong_channels(out.data() + i * channels, channels, n, P, Q);
            }
            CAPTURE(step);
            CHECK(wrong == 0);
        }
}

TEST_CASE("both plasmas start with a pixel of 252 at time 0, where every cosine is 1")
{
    for (const uint32_t type : {1u, 3u}) {
        const auto out = rendered(type, 64, 24, 0.0f);
        CHECK(out[0] == 252);
        CHECK(out[1] == 252);
        CHECK(out[2] == 252);
    }
}

TEST_CASE("plasmas in 8 bits hold the red values of the 24-bit picture")
{
    for (const uint32_t type : {1u, 3u}) {
        const auto colour = rendered(type, 64, 24, 47.0f);
        const auto grey = rendered(type, 64, 8, 47.0f);
        uint32_t different = 0;
        for (size_t i = 0; i < grey.size(); ++i)
            different += grey[i] != colour[3 * i];
        CHECK(different == 0);
    }
}

TEST_CASE("every word size computes the same pictures")
{
    uint64_t hash = 14695981039346656037u;
    for (uint32_t type = 0; type < effect_2d_kind_count; ++type) {
        const owned_state state(init_dynamic_texture(type, 128, 128, 24));
        for (int step = 0; step < 40; ++step)
            hash = hash_of(rendered(type, 128, 24, static_cast<float>(step) * 7.3f, 3.0f, state.get()), hash);
    }
    CHECK(hash == 83618404921618322u);
}
