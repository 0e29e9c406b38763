// How long one evaluation of an animation function takes, by formula; for single formulas, what the bare formula takes
// in single precision and with the C library's sine. Sines and splines are rounded from extended precision, so that all
// word sizes and processors agree: that is most of the difference.

#include "anim/animation_function.h"

#include "builders.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <string>

constexpr uint32_t evaluations = 100000; // times of a round; a new one each, so that the cache never answers

namespace {

enum bench_case : uint32_t {
    bench_constant,
    bench_linear,
    bench_sine,
    bench_sine_linear,
    bench_spline,
    bench_sixteen_segments,
    bench_ping_pong,
    bench_cached,
    bench_case_count
};

} // namespace

static const char* case_name(bench_case c)
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
    case bench_spline:
        return "spline dense";
    case bench_sixteen_segments:
        return "sixteen segments";
    case bench_ping_pong:
        return "ping-pong";
    case bench_cached:
        return "cached";
    case bench_case_count:
        break;
    }
    return "";
}

static animation_function case_function(bench_case c)
{
    switch (c) {
    case bench_linear:
        return linear_function();
    case bench_sine:
        return one_segment(segment_sine, evaluations, {2.5f, 0.0137f, 0.7f, -1.25f});
    case bench_sine_linear:
        return one_segment(segment_sine_linear, evaluations, {0.003f, 0.021f, 1.1f, 0.4f, -0.6f});
    case bench_spline:
        return one_segment(segment_spline, evaluations,
            {0, 1, 9000, -3, 18000, 4, 27000, 4, 36000, -7, 45000, 8, 54000, 2, 63000, 3, 72000, -9, 81000, 1, 90000, 6,
                99000, -2});
    case bench_sixteen_segments: {
        animation_function function = empty_function();
        for (uint32_t i = 0; i < max_segments; ++i)
            add_segment(function, segment_linear, evaluations / max_segments, {1.0f, 0.0f});
        return function;
    }
    case bench_ping_pong: {
        animation_function function = linear_function();
        function.loop_type = loop_ping_pong;
        function.loop_end = 1000.0f;
        return function;
    }
    case bench_constant:
    case bench_cached:
    case bench_case_count:
        break;
    }
    return constant_function(1.0f);
}

static void evaluate_ours(benchmark::State& state, bench_case c)
{
    animation_function function = case_function(c);
    const uint32_t step = c == bench_cached ? 0 : 1;
    uint32_t time = 0;
    for (auto _ : state) {
        time = time + step < evaluations ? time + step : 0;
        benchmark::DoNotOptimize(evaluate_function(function, time));
    }
}

static float plain_value(bench_case c, float x)
{
    if (c == bench_linear)
        return x;
    if (c == bench_sine)
        return 2.5f * std::sin(x * 0.0137f - 0.7f) - 1.25f;
    if (c == bench_sine_linear)
        return (0.003f * x - 0.6f) * std::sin(x * 0.021f - 1.1f) + 0.4f;
    return 1.0f;
}

static void evaluate_plain(benchmark::State& state, bench_case c)
{
    uint32_t time = 0;
    for (auto _ : state) {
        time = time + 1 < evaluations ? time + 1 : 0;
        benchmark::DoNotOptimize(plain_value(c, static_cast<float>(time)));
    }
}

int main(int argc, char** argv)
{
    for (uint32_t i = 0; i < bench_case_count; ++i) {
        const auto c = static_cast<bench_case>(i);
        benchmark::RegisterBenchmark((std::string(case_name(c)) + "/ours").c_str(), evaluate_ours, c);
        if (c <= bench_sine_linear) // the formulas that stand in one line
            benchmark::RegisterBenchmark((std::string(case_name(c)) + "/plain").c_str(), evaluate_plain, c);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
