// Operations on the pictures of texture nodes, beside what others take for the same work.

#include "model/records.h"
#include "texgen/operations.h"

#include <benchmark/benchmark.h>
#include <opencv2/core.hpp>

#include <cstring>
#include <vector>

namespace {

// Two sources and a result of three bytes a pixel, and how wide they are.
struct three_pictures {
    uint32_t size;
    std::vector<uint8_t> a;
    std::vector<uint8_t> b;
    std::vector<uint8_t> out;
};

} // namespace

static three_pictures make_pictures(uint32_t size)
{
    const size_t bytes = size_t{3} * size * size;
    three_pictures made = {size, std::vector<uint8_t>(bytes), std::vector<uint8_t>(bytes), std::vector<uint8_t>(bytes)};
    for (size_t n = 0; n < bytes; ++n) {
        made.a[n] = static_cast<uint8_t>(n * 2654435761u >> 13);
        made.b[n] = static_cast<uint8_t>(n * 2246822519u >> 11);
    }
    return made;
}

static cv::Mat as_matrix(std::vector<uint8_t>& bytes, uint32_t size)
{
    const int side = static_cast<int>(size);
    return cv::Mat(side, side, CV_8UC3, bytes.data());
}

static void count_pixels(benchmark::State& state, const three_pictures& p)
{
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * p.size * p.size);
}

static void invert_ours(benchmark::State& state, uint32_t size)
{
    three_pictures p = make_pictures(size);
    const float values[max_node_values] = {};
    for (auto _ : state) {
        apply_texture_operation(node_invert, values, p.a.data(), nullptr, p.out.data(), size);
        benchmark::ClobberMemory();
    }
    count_pixels(state, p);
}

static void invert_opencv(benchmark::State& state, uint32_t size)
{
    three_pictures p = make_pictures(size);
    const cv::Mat a = as_matrix(p.a, size);
    cv::Mat out = as_matrix(p.out, size);
    for (auto _ : state) {
        cv::bitwise_not(a, out);
        benchmark::ClobberMemory();
    }
    count_pixels(state, p);
}

static void invert_memcpy(benchmark::State& state, uint32_t size)
{
    three_pictures p = make_pictures(size);
    for (auto _ : state) {
        std::memcpy(p.out.data(), p.a.data(), p.a.size());
        benchmark::ClobberMemory();
    }
    count_pixels(state, p);
}

BENCHMARK_CAPTURE(invert_ours, 256, 256)->Name("invert 256/ours");
BENCHMARK_CAPTURE(invert_opencv, 256, 256)->Name("invert 256/opencv");
BENCHMARK_CAPTURE(invert_memcpy, 256, 256)->Name("invert 256/memcpy");
BENCHMARK_CAPTURE(invert_ours, 1024, 1024)->Name("invert 1024/ours");
BENCHMARK_CAPTURE(invert_opencv, 1024, 1024)->Name("invert 1024/opencv");
BENCHMARK_CAPTURE(invert_memcpy, 1024, 1024)->Name("invert 1024/memcpy");

int main(int argc, char** argv)
{
    cv::setNumThreads(1); // one core beside one core
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
