// Operations on the pictures of texture nodes, beside what others take for the same work.
//
// "plain" is the formula as it is written down, a loop of real numbers; "opencv" the call that comes nearest, which
// rounds where we truncate and does not wrap at the edges.

#include "model/records.h"
#include "texgen/mipmaps.h"
#include "texgen/operations.h"

#include <benchmark/benchmark.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace {

// Two sources and a result of three bytes a pixel, and how wide they are.
struct three_pictures {
    uint32_t size;
    std::vector<uint8_t> a;
    std::vector<uint8_t> b;
    std::vector<uint8_t> out;
};

// The same as OpenCV sees them; `c` is for what it takes in two steps.
struct three_matrices {
    cv::Mat a;
    cv::Mat b;
    cv::Mat out;
    cv::Mat c;
};

// A row of the table: an operation with its values, and who does it besides us.
struct picture_work {
    const char* name;
    node_code code;
    float values[max_node_values];
    void (*opencv)(three_matrices& m, const float* values); // null: nothing like it
    void (*plain)(three_pictures& p, const float* values);
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

static three_matrices as_matrices(three_pictures& p)
{
    const cv::Mat out = as_matrix(p.out, p.size);
    return {as_matrix(p.a, p.size), as_matrix(p.b, p.size), out, out.clone()};
}

static void count_pixels(benchmark::State& state, uint64_t pixels)
{
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(pixels));
}

// ---- who else -------------------------------------------------------------------------

static uint8_t clamped(double value)
{
    return static_cast<uint8_t>(std::clamp(static_cast<int>(value), 0, 255));
}

static uint8_t capped(int value)
{
    return static_cast<uint8_t>(std::min(value, 255));
}

static void add_plain(three_pictures& p, const float* values)
{
    const double scale1 = values[0];
    const double scale2 = values[1];
    for (size_t n = 0; n < p.out.size(); ++n)
        p.out[n] = clamped(p.a[n] * scale1 + p.b[n] * scale2);
}

static void multiply_plain(three_pictures& p, const float* values)
{
    const double scale = values[0];
    for (size_t n = 0; n < p.out.size(); ++n)
        p.out[n] = clamped(p.a[n] * p.b[n] * scale);
}

static void greater_plain(three_pictures& p, const float* values)
{
    const double scale1 = values[0];
    const double scale2 = values[1];
    for (size_t n = 0; n < p.out.size(); ++n)
        p.out[n] = capped(std::max(static_cast<int>(p.a[n] * scale1), static_cast<int>(p.b[n] * scale2)));
}

static void lesser_plain(three_pictures& p, const float* values)
{
    const double scale1 = values[0];
    const double scale2 = values[1];
    for (size_t n = 0; n < p.out.size(); ++n)
        p.out[n] = capped(std::min(static_cast<int>(p.a[n] * scale1), static_cast<int>(p.b[n] * scale2)));
}

static void scale_plain(three_pictures& p, const float* values)
{
    const double scale = values[0];
    for (size_t n = 0; n < p.out.size(); ++n)
        p.out[n] = capped(static_cast<int>(p.a[n] * scale));
}

static void invert_plain(three_pictures& p, const float*)
{
    for (size_t n = 0; n < p.out.size(); ++n)
        p.out[n] = static_cast<uint8_t>(255 - p.a[n]);
}

static void offset_plain(three_pictures& p, const float* values)
{
    const auto rows = static_cast<uint32_t>(values[0]);
    const auto columns = static_cast<uint32_t>(values[1]);
    for (uint32_t y = 0; y < p.size; ++y)
        for (uint32_t x = 0; x < p.size; ++x)
            for (uint32_t c = 0; c < 3; ++c)
                p.out[3 * (y * p.size + x) + c] = p.a[3 * ((y + rows) % p.size * p.size + (x + columns) % p.size) + c];
}

static void filter_plain(three_pictures& p, const int (&factors)[3][3], double scale)
{
    const uint32_t size = p.size;
    for (uint32_t y = 0; y < size; ++y)
        for (uint32_t x = 0; x < size; ++x)
            for (uint32_t c = 0; c < 3; ++c) {
                int sum = 0;
                for (uint32_t i = 0; i < 3; ++i)
                    for (uint32_t j = 0; j < 3; ++j)
                        sum += factors[i][j]
                            * p.a[3 * ((y + size + i - 1) % size * size + (x + size + j - 1) % size) + c];
                p.out[3 * (y * size + x) + c] = clamped(scale * sum);
            }
}

static void blur_plain(three_pictures& p, const float*)
{
    filter_plain(p, {{1, 1, 1}, {1, 1, 1}, {1, 1, 1}}, 0.111111111);
}

static void emboss_plain(three_pictures& p, const float*)
{
    filter_plain(p, {{-2, -1, 0}, {-1, 1, 1}, {0, 1, 2}}, 1.0);
}

static void add_opencv(three_matrices& m, const float*)
{
    cv::add(m.a, m.b, m.out);
}

static void add_scaled_opencv(three_matrices& m, const float* values)
{
    cv::addWeighted(m.a, values[0], m.b, values[1], 0.0, m.out);
}

static void multiply_opencv(three_matrices& m, const float* values)
{
    cv::multiply(m.a, m.b, m.out, values[0]);
}

static void greater_opencv(three_matrices& m, const float*)
{
    cv::max(m.a, m.b, m.out);
}

static void greater_scaled_opencv(three_matrices& m, const float* values)
{
    m.a.convertTo(m.c, -1, values[0]);
    m.b.convertTo(m.out, -1, values[1]);
    cv::max(m.c, m.out, m.out);
}

static void lesser_opencv(three_matrices& m, const float*)
{
    cv::min(m.a, m.b, m.out);
}

static void lesser_scaled_opencv(three_matrices& m, const float* values)
{
    m.a.convertTo(m.c, -1, values[0]);
    m.b.convertTo(m.out, -1, values[1]);
    cv::min(m.c, m.out, m.out);
}

static void scale_opencv(three_matrices& m, const float* values)
{
    m.a.convertTo(m.out, -1, values[0]);
}

static void invert_opencv(three_matrices& m, const float*)
{
    cv::bitwise_not(m.a, m.out);
}

static void blur_opencv(three_matrices& m, const float*)
{
    cv::blur(m.a, m.out, cv::Size(3, 3), cv::Point(-1, -1), cv::BORDER_REFLECT101);
}

static void emboss_opencv(three_matrices& m, const float*)
{
    static const float factors[9] = {-2, -1, 0, -1, 1, 1, 0, 1, 2};
    const cv::Mat kernel(3, 3, CV_32F, const_cast<float*>(factors));
    cv::filter2D(m.a, m.out, -1, kernel, cv::Point(-1, -1), 0, cv::BORDER_REFLECT101);
}

// ---- pictures of texture nodes ----------------------------------------------------------

static const picture_work works[] = {
    {"add", node_add_2, {1.0f, 1.0f}, add_opencv, add_plain},
    {"add scaled", node_add_2, {0.52f, 0.62f}, add_scaled_opencv, add_plain},
    {"multiply", node_multiply_image, {1.0f / 255.0f}, multiply_opencv, multiply_plain},
    {"multiply clamped", node_mul_2, {1.0f / 150.0f}, multiply_opencv, multiply_plain},
    {"multiply up", node_mul_2, {1.0f}, multiply_opencv, multiply_plain},
    {"maximum", node_max_2, {1.0f, 1.0f}, greater_opencv, greater_plain},
    {"maximum scaled", node_max_2, {0.7f, 1.35f}, greater_scaled_opencv, greater_plain},
    {"minimum", node_min_2, {1.0f, 1.0f}, lesser_opencv, lesser_plain},
    {"minimum scaled", node_min_2, {0.7f, 1.35f}, lesser_scaled_opencv, lesser_plain},
    {"scale", node_multiply, {0.8f}, scale_opencv, scale_plain},
    {"scale up", node_multiply, {1.35f}, scale_opencv, scale_plain},
    {"invert", node_invert, {}, invert_opencv, invert_plain},
    {"offset", node_offset, {100.0f, 33.0f}, nullptr, offset_plain},
    {"offset by half", node_offset, {128.0f, 128.0f}, nullptr, offset_plain},
    {"blur", node_blur, {}, blur_opencv, blur_plain},
    {"emboss", node_emboss, {1.0f}, emboss_opencv, emboss_plain},
};

static void bench_ours(benchmark::State& state, const picture_work& work, uint32_t size)
{
    three_pictures p = make_pictures(size);
    for (auto _ : state) {
        apply_texture_operation(work.code, work.values, p.a.data(), p.b.data(), p.out.data(), size);
        benchmark::ClobberMemory();
    }
    count_pixels(state, uint64_t{size} * size);
}

static void bench_opencv(benchmark::State& state, const picture_work& work, uint32_t size)
{
    three_pictures p = make_pictures(size);
    three_matrices m = as_matrices(p);
    for (auto _ : state) {
        work.opencv(m, work.values);
        benchmark::ClobberMemory();
    }
    count_pixels(state, uint64_t{size} * size);
}

static void bench_plain(benchmark::State& state, const picture_work& work, uint32_t size)
{
    three_pictures p = make_pictures(size);
    for (auto _ : state) {
        work.plain(p, work.values);
        benchmark::ClobberMemory();
    }
    count_pixels(state, uint64_t{size} * size);
}

static void bench_memcpy(benchmark::State& state, uint32_t size)
{
    three_pictures p = make_pictures(size);
    for (auto _ : state) {
        std::memcpy(p.out.data(), p.a.data(), p.a.size());
        benchmark::ClobberMemory();
    }
    count_pixels(state, uint64_t{size} * size);
}

static void register_work(const picture_work& work, uint32_t size)
{
    const std::string name = std::string(work.name) + " " + std::to_string(size);
    benchmark::RegisterBenchmark((name + "/ours").c_str(), bench_ours, work, size);
    if (work.opencv != nullptr)
        benchmark::RegisterBenchmark((name + "/opencv").c_str(), bench_opencv, work, size);
    benchmark::RegisterBenchmark((name + "/plain").c_str(), bench_plain, work, size);
    if (work.code == node_invert || work.code == node_offset)
        benchmark::RegisterBenchmark((name + "/memcpy").c_str(), bench_memcpy, size);
}

// ---- mipmaps ----------------------------------------------------------------------------

namespace {

struct mipmap_work {
    const char* name;
    uint32_t width;
    uint32_t height;
    uint32_t components;
};

} // namespace

static const mipmap_work mipmap_works[] = {
    {"mipmap 256, 3 components", 256, 256, 3},
    {"mipmap 1024, 3 components", 1024, 1024, 3},
    {"mipmap 1023 wide, 3 components", 1023, 1024, 3},
    {"mipmap 256, 4 components", 256, 256, 4},
    {"mipmap 1024, 4 components", 1024, 1024, 4},
    {"mipmap 1023 wide, 4 components", 1023, 1024, 4},
    {"mipmap of a column, 3 components", 2, 4096, 3},
    {"mipmap of a column, 4 components", 2, 4096, 4},
    {"mipmap of a row, 3 components", 4096, 2, 3},
    {"mipmap of a row, 4 components", 4096, 2, 4},
};

static std::vector<uint8_t> make_level(const mipmap_work& work)
{
    std::vector<uint8_t> bytes(size_t{work.width} * work.height * work.components);
    for (size_t n = 0; n < bytes.size(); ++n)
        bytes[n] = static_cast<uint8_t>(n * 2654435761u >> 13);
    return bytes;
}

// The first level, its memory included, which the others reuse as we do.
static void bench_mipmap_ours(benchmark::State& state, const mipmap_work& work)
{
    const std::vector<uint8_t> level = make_level(work);
    for (auto _ : state) {
        mipmap_chain chain = begin_mipmaps(work.width, work.height, level.data(), work.components, nullptr, nullptr);
        next_mipmap(chain);
        benchmark::DoNotOptimize(chain.made.pixels.get());
        benchmark::ClobberMemory();
    }
    count_pixels(state, uint64_t{work.width} * work.height);
}

static void bench_mipmap_opencv(benchmark::State& state, const mipmap_work& work)
{
    std::vector<uint8_t> level = make_level(work);
    const int type = work.components == 3 ? CV_8UC3 : CV_8UC4;
    const cv::Mat source(static_cast<int>(work.height), static_cast<int>(work.width), type, level.data());
    const cv::Size half(static_cast<int>(work.width / 2), static_cast<int>(work.height / 2));
    for (auto _ : state) {
        cv::Mat out;
        cv::resize(source, out, half, 0, 0, cv::INTER_AREA);
        benchmark::DoNotOptimize(out.data);
        benchmark::ClobberMemory();
    }
    count_pixels(state, uint64_t{work.width} * work.height);
}

static void bench_mipmap_memcpy(benchmark::State& state, const mipmap_work& work)
{
    const std::vector<uint8_t> level = make_level(work);
    std::vector<uint8_t> out(level.size());
    for (auto _ : state) {
        std::memcpy(out.data(), level.data(), level.size());
        benchmark::ClobberMemory();
    }
    count_pixels(state, uint64_t{work.width} * work.height);
}

static void register_mipmap(const mipmap_work& work)
{
    const std::string name = work.name;
    benchmark::RegisterBenchmark((name + "/ours").c_str(), bench_mipmap_ours, work);
    benchmark::RegisterBenchmark((name + "/opencv").c_str(), bench_mipmap_opencv, work);
    benchmark::RegisterBenchmark((name + "/memcpy").c_str(), bench_mipmap_memcpy, work);
}

int main(int argc, char** argv)
{
    cv::setNumThreads(1); // one core beside one core
    for (const picture_work& work : works)
        for (const uint32_t size : {256u, 1024u})
            register_work(work, size);
    for (const mipmap_work& work : mipmap_works)
        register_mipmap(work);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
