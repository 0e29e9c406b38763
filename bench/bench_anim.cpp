// How long one evaluation of an animation function takes, beside the same rule written down plainly: walked from the
// first segment, computed in extended precision, with the C library's sine and all of a spline's points. For sines also
// what a bare formula in single precision takes, which gives other bits.
//
// Times go forward a tick at a time, as a show asks, or jump about. Every time is a new one, but for "asked again".

#include "anim/animation_function.h"

#include "builders.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <string>

constexpr uint32_t length = 100000; // ticks of a function

namespace {

enum bench_case : uint32_t {
    bench_constant,
    bench_linear,
    bench_sine,
    bench_sine_linear,
    bench_spline_of_three,
    bench_spline_of_twelve,
    bench_sixteen_lines,
    bench_loop,
    bench_ping_pong,
    bench_case_count
};

enum bench_times : uint32_t { times_forward, times_jumping, times_again, bench_times_count };

} // namespace

static const char* name_of(bench_case c)
{
    switch (c) {
    case bench_constant:
        return "constant";
    case bench_linear:
        return "linear";
    case bench_sine:
        return "sine";
    case bench_sine_linear:
        return "sine linear";
    case bench_spline_of_three:
        return "spline of 3";
    case bench_spline_of_twelve:
        return "spline of 12";
    case bench_sixteen_lines:
        return "sixteen lines";
    case bench_loop:
        return "loop";
    case bench_ping_pong:
        return "ping-pong";
    case bench_case_count:
        break;
    }
    return "";
}

static const char* name_of(bench_times times)
{
    switch (times) {
    case times_forward:
        return "forward";
    case times_jumping:
        return "jumping";
    case times_again:
        return "asked again";
    case bench_times_count:
        break;
    }
    return "";
}

static animation_function looping_sine(uint8_t kind)
{
    animation_function function = one_segment(segment_sine, length, {2.5f, 0.0137f, 0.7f, -1.25f});
    function.loop_type = kind;
    function.loop_begin = 100.0f;
    function.loop_end = 1000.0f;
    return function;
}

static animation_function function_of(bench_case c)
{
    switch (c) {
    case bench_linear:
        return linear_function();
    case bench_sine:
        return one_segment(segment_sine, length, {2.5f, 0.0137f, 0.7f, -1.25f});
    case bench_sine_linear:
        return one_segment(segment_sine_linear, length, {0.003f, 0.021f, 1.1f, 0.4f, -0.6f});
    case bench_spline_of_three:
        return one_segment(segment_spline, length, {0, 1, 50000, -3, 99000, 4});
    case bench_spline_of_twelve:
        return one_segment(segment_spline, length,
            {0, 1, 9000, -3, 18000, 4, 27000, 4, 36000, -7, 45000, 8, 54000, 2, 63000, 3, 72000, -9, 81000, 1, 90000, 6,
                99000, -2});
    case bench_sixteen_lines: {
        animation_function function = empty_function();
        for (uint32_t i = 0; i < max_segments; ++i)
            add_segment(function, segment_linear, length / max_segments, {1.0f, 0.0f});
        return function;
    }
    case bench_loop:
        return looping_sine(loop_around);
    case bench_ping_pong:
        return looping_sine(loop_ping_pong);
    case bench_constant:
    case bench_case_count:
        break;
    }
    return constant_function(1.0f);
}

static uint32_t time_after(bench_times times, uint32_t time)
{
    if (times == times_again)
        return time;
    const uint32_t next = times == times_forward ? time + 1 : time + 61803;
    return next < length ? next : next - length;
}

static void evaluate_ours(benchmark::State& state, bench_case c, bench_times times)
{
    animation_function function = function_of(c);
    uint32_t time = 1;
    for (auto _ : state) {
        time = time_after(times, time);
        benchmark::DoNotOptimize(evaluate_function(function, time));
    }
}

// ---- plain -------------------------------------------------------------------------------

namespace {

struct plain_point {
    long double x;
    long double y;
};

} // namespace

static long double plain_spline(const float* p, long double x)
{
    plain_point points[16] = {{-999999.0L, p[1]}, {p[0] - 1.0L, p[1]}};
    for (uint32_t k = 2; k < 14; ++k) {
        const plain_point last = points[k - 1];
        points[k] = {p[2 * k - 4], p[2 * k - 3]};
        if (last.x + 1.0L > points[k].x)
            points[k] = {last.x + 1.0L, last.y};
    }
    points[14] = {points[13].x + 999999.0L, points[13].y};
    points[15] = {9999999.0L, points[13].y};
    uint32_t j = 2;
    while (x > points[j].x)
        ++j;
    const plain_point p0 = points[j - 2], p1 = points[j - 1], p2 = points[j], p3 = points[j + 1];
    const long double w = p2.x - p1.x;
    const long double y0 = (p1.y - p0.y) / (p0.x - p1.x) * w + p1.y;
    const long double y3 = (p3.y - p2.y) / (p3.x - p2.x) * w + p2.y;
    const long double u = (x - p1.x) / w;
    return 0.5L
        * (2.0L * p1.y + (p2.y - y0) * u + (2.0L * y0 - 5.0L * p1.y + 4.0L * p2.y - y3) * (u * u)
            + (-y0 + 3.0L * p1.y - 3.0L * p2.y + y3) * (u * u * u));
}

static uint32_t plain_looped(const animation_function& function, uint32_t time)
{
    const auto begin = static_cast<uint32_t>(function.loop_begin);
    const auto end = static_cast<uint32_t>(function.loop_end);
    const uint32_t range = end - begin;
    if (function.loop_type == loop_off || time <= end)
        return time;
    if (function.loop_type == loop_around)
        return (time - begin) % range + begin;
    const uint32_t place = (time - begin) % (2 * range);
    return place <= range ? place : 2 * range - place;
}

static float plain_value(const animation_function& function, uint32_t time)
{
    uint32_t rest = plain_looped(function, time);
    uint32_t i = 0;
    for (; rest > function.segment_length[i] && i + 1u < function.segment_count; ++i)
        rest -= function.segment_length[i];
    const float* p = function.segment_params[i];
    const long double x = rest < function.segment_length[i] ? rest : function.segment_length[i];
    switch (static_cast<segment_kind>(function.segment_type[i])) {
    case segment_constant:
        return p[0];
    case segment_linear:
        return static_cast<float>(x * p[0] + p[1]);
    case segment_quadratic:
        return static_cast<float>((x - p[1]) * (x - p[1]) * p[0] + p[2]);
    case segment_sine:
        return static_cast<float>(sinl(x * p[1] - p[2]) * p[0] + p[3]);
    case segment_spline:
        return static_cast<float>(plain_spline(p, x));
    case segment_sine_linear:
        return static_cast<float>(sinl(p[1] * x - p[2]) * (x * p[0] + p[4]) + p[3]);
    case segment_kind_count:
        break;
    }
    return 1.0f;
}

static void evaluate_plain(benchmark::State& state, bench_case c, bench_times times)
{
    const animation_function function = function_of(c);
    uint32_t time = 1;
    for (auto _ : state) {
        time = time_after(times, time);
        benchmark::DoNotOptimize(plain_value(function, time));
    }
}

static void evaluate_singles(benchmark::State& state, bench_case c, bench_times times)
{
    uint32_t time = 1;
    for (auto _ : state) {
        time = time_after(times, time);
        const auto x = static_cast<float>(time);
        benchmark::DoNotOptimize(c == bench_sine ? 2.5f * std::sin(x * 0.0137f - 0.7f) - 1.25f
                                                 : (0.003f * x - 0.6f) * std::sin(x * 0.021f - 1.1f) + 0.4f);
    }
}

// ---- all of it ---------------------------------------------------------------------------

int main(int argc, char** argv)
{
    for (uint32_t i = 0; i < bench_case_count; ++i)
        for (uint32_t k = 0; k < bench_times_count; ++k) {
            const auto c = static_cast<bench_case>(i);
            const auto times = static_cast<bench_times>(k);
            const std::string work = std::string(name_of(c)) + ", " + name_of(times);
            benchmark::RegisterBenchmark((work + "/ours").c_str(), evaluate_ours, c, times);
            benchmark::RegisterBenchmark((work + "/plain").c_str(), evaluate_plain, c, times);
            if (c == bench_sine || c == bench_sine_linear)
                benchmark::RegisterBenchmark((work + "/singles").c_str(), evaluate_singles, c, times);
        }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
