// Generated pictures and the ripple, beside the same formulas as ordinary loops: one pixel after the other, what does
// not change taken out of the loops where that is obvious. The ripple stands beside OpenCV's remapping too, which mixes
// four pixels by a map that is there already.

#include "model/records.h"
#include "texgen/cosine_table.h"
#include "texgen/generators.h"
#include "texgen/maze_tables.h"
#include "texgen/operations.h"

#include <benchmark/benchmark.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

// ---- plain generators --------------------------------------------------------------------

static uint8_t plain_byte(double value)
{
    return static_cast<uint8_t>(static_cast<int32_t>(value));
}

static uint8_t* plain_pixel(uint8_t* pixel, const float* color, double weight)
{
    for (uint32_t c = 0; c < 3; ++c)
        *pixel++ = plain_byte(static_cast<double>(color[c]) * weight);
    return pixel;
}

static void plain_color(const float* values, uint8_t* pixel, uint32_t size)
{
    const uint8_t color[3]
        = {plain_byte(values[0] * 255.0), plain_byte(values[1] * 255.0), plain_byte(values[2] * 255.0)};
    for (uint32_t n = 0; n < size * size; ++n)
        for (uint32_t c = 0; c < 3; ++c)
            *pixel++ = color[c];
}

static void plain_sinus_plasma(const float* values, uint8_t* pixel, uint32_t size)
{
    const double step = 6.283185307179586 / size;
    std::vector<double> across(size);
    for (uint32_t x = 0; x < size; ++x)
        across[x] = std::sin(x * step * static_cast<double>(values[3]));
    for (uint32_t y = 0; y < size; ++y) {
        const double down = std::sin(y * step * static_cast<double>(values[4]));
        for (uint32_t x = 0; x < size; ++x)
            pixel = plain_pixel(pixel, values, static_cast<int32_t>(127.0 + 63.5 * (across[x] + down)));
    }
}

static void plain_radial(const float* values, uint8_t* pixel, uint32_t size)
{
    const int32_t center = static_cast<int32_t>(size / 2);
    const int32_t offset = std::clamp(static_cast<int32_t>(values[7]), 0, 127);
    for (int32_t y = 0; y < static_cast<int32_t>(size); ++y)
        for (int32_t x = 0; x < static_cast<int32_t>(size); ++x) {
            const double d = std::sqrt(static_cast<double>((center - x) * (center - x) + (center - y) * (center - y)));
            const double t = center * (std::max(static_cast<double>(values[6]) * d - offset, 0.0) / (center - offset));
            const double a = t <= 127.0 ? 2.0 * t : 255.0;
            for (uint32_t c = 0; c < 3; ++c)
                *pixel++
                    = plain_byte(a * static_cast<double>(values[3 + c]) + (255.0 - a) * static_cast<double>(values[c]));
        }
}

static double plain_draw(uint32_t& state)
{
    state = state * 1103515245u + 12345u;
    return (state >> 16 & 0x7FFF) / 32768.0;
}

// Cells of four corners, of which the tables hold four shapes; the others are these turned and mirrored.
static void plain_maze(const float* values, uint8_t* pixels, uint32_t size)
{
    const auto level = static_cast<uint32_t>(values[3]);
    const uint32_t cells = size >> level;
    const uint32_t last = (1u << level) - 1;
    auto state = static_cast<uint32_t>(values[4]);
    std::vector<uint8_t> grid((cells + 1) * (cells + 1));
    for (uint8_t& bit : grid)
        bit = 2.0 * static_cast<double>(values[5]) - 1.0 + plain_draw(state) > 0.5;
    for (uint32_t r = 0; r <= cells; ++r)
        grid[r * (cells + 1) + cells] = grid[r * (cells + 1)];
    for (uint32_t r = 0; r <= cells; ++r)
        grid[cells * (cells + 1) + r] = grid[r];
    // clang-format off
    static const uint8_t plan[16][4] = {{0, 0, 0, 0}, {0, 1, 1, 0}, {0, 1, 0, 0}, {1, 0, 0, 0}, {0, 0, 1, 0},
        {1, 0, 0, 1}, {2, 0, 0, 0}, {3, 0, 0, 0}, {0, 0, 0, 0}, {2, 0, 1, 0}, {1, 0, 1, 1}, {3, 0, 1, 0},
        {1, 1, 0, 0}, {3, 1, 0, 0}, {3, 1, 1, 0}, {0, 0, 0, 0}}; // table, rows and columns mirrored, turned
    // clang-format on
    for (uint32_t y = 0; y < cells << level; ++y)
        for (uint32_t x = 0; x < cells << level; ++x) {
            const uint8_t* corner = &grid[(y >> level) * (cells + 1) + (x >> level)];
            const uint32_t kind = 8u * corner[0] + 4u * corner[1] + 2u * corner[cells + 1] + corner[cells + 2];
            uint8_t weight = kind == 15 ? 255 : 0;
            if (kind % 15 != 0) {
                const uint32_t i = plan[kind][1] != 0 ? last - (y & last) : y & last;
                const uint32_t j = plan[kind][2] != 0 ? last - (x & last) : x & last;
                weight = maze_table(level, plan[kind][0])[plan[kind][3] != 0 ? (j << level) + i : (i << level) + j];
            }
            plain_pixel(pixels + 3 * (y * size + x), values, weight);
        }
}

static void plain_bricks(const float* values, uint8_t* pixel, uint32_t size)
{
    const float pw = static_cast<float>(size) / std::trunc(values[7]);
    const float ph = static_cast<float>(size) / std::trunc(values[6]);
    const float mh = std::trunc(values[8]);
    const float mv = std::trunc(values[9]);
    const auto off = static_cast<uint32_t>(values[10]);
    std::vector<uint8_t> joint(size);
    for (uint32_t x = 0; x < size; ++x) {
        float t = static_cast<float>(x);
        while (t > pw)
            t -= pw;
        joint[x] = t >= mv && pw - t >= mv;
    }
    for (uint32_t y = 0; y < size; ++y) {
        float t = static_cast<float>(y);
        uint32_t k = 0;
        while (t > ph) {
            t -= ph;
            ++k;
        }
        const bool in_course = t >= mh && ph - t >= mh;
        for (uint32_t x = 0; x < size; ++x) {
            const bool brick = in_course && joint[(x + (k % 2 == 1 ? off : 0)) % size] != 0;
            pixel = plain_pixel(pixel, brick ? values : values + 3, 255.0);
        }
    }
}

static void plain_noise(const float* values, uint8_t* pixel, uint32_t size)
{
    auto state = static_cast<uint32_t>(values[3]);
    for (uint32_t n = 0; n < size * size; ++n)
        pixel = plain_pixel(pixel, values, plain_draw(state) * 255.0);
}

// ---- generators --------------------------------------------------------------------------

namespace {

struct generator_case {
    const char* name;
    int32_t kind;
    void (*plain)(const float* values, uint8_t* pixels, uint32_t size);
    std::vector<float> values;
};

} // namespace

static const generator_case generator_cases[] = {
    {"color", generator_color, plain_color, {0.9f, 0.6f, 0.3f}},
    {"sinus plasma", generator_sinus_plasma, plain_sinus_plasma, {1.0f, 0.7f, 0.3f, 3.0f, 2.0f}},
    {"radial", generator_radial_colors, plain_radial, {0.9f, 0.2f, 0.1f, 0.0f, 0.3f, 0.8f, 1.3f, 12.0f}},
    {"maze", generator_maze, plain_maze, {0.9f, 0.8f, 0.7f, 4.0f, 17.0f, 0.5f}},
    {"bricks", generator_bricks, plain_bricks, {0.8f, 0.3f, 0.2f, 0.6f, 0.6f, 0.6f, 12.0f, 7.0f, 1.0f, 2.0f, 18.0f}},
    {"noise", generator_noise, plain_noise, {0.9f, 0.8f, 0.7f, 4242.0f}},
};

static void count_pixels(benchmark::State& state, uint32_t size)
{
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * size * size);
}

static void generator_ours(benchmark::State& state, const generator_case* c, uint32_t size)
{
    std::vector<uint8_t> pixels(size_t{3} * size * size);
    generated_image image = {};
    image.params.kind = c->kind;
    std::copy(c->values.begin(), c->values.end(), image.params.values);
    image.pixels = pixels.data();
    for (auto _ : state) {
        generate_image(image, size);
        benchmark::ClobberMemory();
    }
    count_pixels(state, size);
}

static void generator_plain(benchmark::State& state, const generator_case* c, uint32_t size)
{
    std::vector<uint8_t> pixels(size_t{3} * size * size);
    for (auto _ : state) {
        c->plain(c->values.data(), pixels.data(), size);
        benchmark::ClobberMemory();
    }
    count_pixels(state, size);
}

// ---- ripple ------------------------------------------------------------------------------

static const float ripple_values[max_node_values] = {0.03f, 0.05f, 3.0f, 5.0f};

static std::vector<uint8_t> make_source(uint32_t size)
{
    std::vector<uint8_t> bytes(size_t{3} * size * size);
    for (size_t n = 0; n < bytes.size(); ++n)
        bytes[n] = static_cast<uint8_t>(n * 2654435761u >> 13);
    return bytes;
}

static void ripple_ours(benchmark::State& state, uint32_t size)
{
    const std::vector<uint8_t> source = make_source(size);
    std::vector<uint8_t> out(source.size());
    for (auto _ : state) {
        apply_texture_operation(node_ripple, ripple_values, source.data(), nullptr, out.data(), size);
        benchmark::ClobberMemory();
    }
    count_pixels(state, size);
}

static double plain_cosine(double steps)
{
    return static_cast<double>(cosine_table[4096 + static_cast<int32_t>(steps) % 4096]);
}

static void plain_ripple(const uint8_t* a, uint8_t* out, uint32_t size)
{
    const double side = size;
    for (uint32_t y = 0; y < size; ++y) {
        const double x_shift = static_cast<double>(ripple_values[0]) * side * plain_cosine(5.0 * 4096.0 / side * y);
        for (uint32_t x = 0; x < size; ++x) {
            double u = x + x_shift;
            double v = y + static_cast<double>(ripple_values[1]) * side * plain_cosine(x / side * 3.0 * 4096.0);
            u += u < 0.0 ? side : 0.0;
            v += v < 0.0 ? side : 0.0;
            const auto x0 = static_cast<uint32_t>(u);
            const auto y0 = static_cast<uint32_t>(v);
            const double fx = u - x0;
            const double fy = v - y0;
            const double d[4] = {std::sqrt(fx * fx + fy * fy), std::sqrt((1.0 - fx) * (1.0 - fx) + fy * fy),
                std::sqrt(fx * fx + (1.0 - fy) * (1.0 - fy)), std::sqrt(fy * fy + (1.0 - fy) * (1.0 - fy))};
            const uint8_t* above = a + size_t{3} * (y0 % size) * size;
            const uint8_t* below = a + size_t{3} * ((y0 + 1) % size) * size;
            const size_t left = size_t{3} * (x0 % size);
            const size_t right = size_t{3} * ((x0 + 1) % size);
            for (uint32_t c = 0; c < 3; ++c)
                *out++ = plain_byte((above[left + c] * d[0] + above[right + c] * d[1] + below[left + c] * d[2]
                                        + below[right + c] * d[3])
                    / (d[0] + d[1] + d[2] + d[3]));
        }
    }
}

static void ripple_plain(benchmark::State& state, uint32_t size)
{
    const std::vector<uint8_t> source = make_source(size);
    std::vector<uint8_t> out(source.size());
    for (auto _ : state) {
        plain_ripple(source.data(), out.data(), size);
        benchmark::ClobberMemory();
    }
    count_pixels(state, size);
}

static void ripple_opencv(benchmark::State& state, uint32_t size)
{
    std::vector<uint8_t> source = make_source(size);
    const int side = static_cast<int>(size);
    const cv::Mat a(side, side, CV_8UC3, source.data());
    cv::Mat xs(side, side, CV_32FC1);
    cv::Mat ys(side, side, CV_32FC1);
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x) {
            xs.at<float>(y, x) = static_cast<float>(x + 0.03 * side * plain_cosine(5.0 * 4096.0 / side * y));
            ys.at<float>(y, x) = static_cast<float>(y + 0.05 * side * plain_cosine(3.0 * 4096.0 / side * x));
        }
    cv::Mat out(side, side, CV_8UC3);
    for (auto _ : state) {
        cv::remap(a, out, xs, ys, cv::INTER_LINEAR, cv::BORDER_WRAP);
        benchmark::ClobberMemory();
    }
    count_pixels(state, size);
}

int main(int argc, char** argv)
{
    cv::setNumThreads(1); // one core beside one core
    build_cosine_table();
    build_maze_tables();
    for (const uint32_t size : {256u, 1024u}) {
        const std::string side = " " + std::to_string(size);
        for (const generator_case& c : generator_cases) {
            benchmark::RegisterBenchmark((c.name + side + "/ours").c_str(), generator_ours, &c, size);
            benchmark::RegisterBenchmark((c.name + side + "/plain").c_str(), generator_plain, &c, size);
        }
        benchmark::RegisterBenchmark(("ripple" + side + "/ours").c_str(), ripple_ours, size);
        benchmark::RegisterBenchmark(("ripple" + side + "/plain").c_str(), ripple_plain, size);
        benchmark::RegisterBenchmark(("ripple" + side + "/opencv").c_str(), ripple_opencv, size);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
