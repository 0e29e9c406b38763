// How long one evaluation of an animation function takes, by formula.
//
//   bench_anim [-l] [-b=name] [-r=n]
//
// -l lists the cases, -b picks one, -r repeats each n times (20 by default). Every
// line gives the fastest repeat in ns an evaluation and its ratio to the constant
// formula of the same run, which is what to compare between machines.

#include "anim/animation_function.h"

#include "builders.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

constexpr uint32_t evaluations = 100000; // a repeat; a new time each, so that the cache never answers

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
        return "sine_linear";
    case bench_spline:
        return "spline_dense";
    case bench_sixteen_segments:
        return "sixteen_segments";
    case bench_ping_pong:
        return "ping_pong";
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

// Nanoseconds an evaluation, the fastest of `repeats`.
static double measure(bench_case c, int repeats)
{
    animation_function function = case_function(c);
    const uint32_t step = c == bench_cached ? 0 : 1;
    double fastest = 1e30;
    volatile float sink = 0.0f;
    for (int r = 0; r < repeats; ++r) {
        const auto begin = std::chrono::steady_clock::now();
        for (uint32_t i = 0; i < evaluations; ++i)
            sink = sink + evaluate_function(function, i * step);
        const std::chrono::duration<double, std::nano> taken = std::chrono::steady_clock::now() - begin;
        fastest = std::min(fastest, taken.count() / evaluations);
    }
    return fastest;
}

int main(int argc, char** argv)
{
    std::string_view picked;
    int repeats = 20;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "-l") == 0) {
            for (uint32_t c = 0; c < bench_case_count; ++c)
                std::printf("%s\n", case_name(static_cast<bench_case>(c)));
            return 0;
        }
        if (std::strncmp(argv[i], "-b=", 3) == 0)
            picked = argv[i] + 3;
        else if (std::strncmp(argv[i], "-r=", 3) == 0)
            repeats = std::max(1, std::atoi(argv[i] + 3));
    }

    const double unit = measure(bench_constant, repeats);
    std::printf("%-20s %12s %8s   (%u evaluations, fastest of %d)\n", "case", "ns", "ratio", evaluations, repeats);
    for (uint32_t i = 0; i < bench_case_count; ++i) {
        const bench_case c = static_cast<bench_case>(i);
        if (!picked.empty() && picked != case_name(c))
            continue;
        const double taken = c == bench_constant ? unit : measure(c, repeats);
        std::printf("%-20s %12.2f %8.2f\n", case_name(c), taken, taken / unit);
    }
    return 0;
}
