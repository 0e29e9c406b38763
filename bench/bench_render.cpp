// What brimlow-render does with a picture that has been drawn, beside what others take for the same work: PNG files
// beside those of libpng at its fastest, planes of 4:2:0 beside OpenCV's and beside a plain loop.

#include "tools/frames/png_file.h"
#include "y4m.h"

#include <benchmark/benchmark.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#define png_text png_text_of_libpng // ours is called so, too
#include <png.h>
#undef png_text

#include <cmath>
#include <vector>

constexpr uint32_t width = 640;
constexpr uint32_t height = 360;

// ---- pictures -------------------------------------------------------------------------------

static uint32_t next_random(uint32_t& state)
{
    state = state * 1664525u + 1013904223u;
    return state >> 24;
}

static uint8_t shade(uint32_t x, uint32_t y, uint32_t channel)
{
    const double across = std::sin(x * 0.021 + channel) * 50;
    const double down = std::sin(y * 0.017 * (channel + 1) + x * 0.005) * 50;
    return static_cast<uint8_t>(128 + across + down);
}

// Smooth light, and over a third of it fine grain: frames of shows pack about as well.
static picture rendered_picture()
{
    picture p = make_picture(width, height, 0, 0, 0);
    uint32_t state = 1;
    for (uint32_t y = 0; y < height; ++y)
        for (uint32_t x = 0; x < width; ++x)
            for (uint32_t channel = 0; channel < 3; ++channel) {
                const bool grain = (x / 80 + y / 60) % 3 == 0;
                const uint32_t more = grain ? next_random(state) % 12 : 0;
                p.rgb[(size_t{y} * width + x) * 3 + channel] = static_cast<uint8_t>(shade(x, y, channel) + more);
            }
    return p;
}

static picture noise_picture()
{
    picture p = make_picture(width, height, 0, 0, 0);
    uint32_t state = 1;
    for (uint8_t& byte : p.rgb)
        byte = static_cast<uint8_t>(next_random(state));
    return p;
}

// ---- PNG ------------------------------------------------------------------------------------

static void png_ours(benchmark::State& state, const picture& p)
{
    size_t bytes = 0;
    for (auto _ : state)
        bytes = encode_png(p).size();
    state.counters["bytes"] = static_cast<double>(bytes);
}

static void append(png_structp writer, png_bytep from, size_t count)
{
    auto& bytes = *static_cast<std::vector<uint8_t>*>(png_get_io_ptr(writer));
    bytes.insert(bytes.end(), from, from + count);
}

static void flush_nothing(png_structp) { }

// The fastest level and the filters that libpng itself calls fast.
static void png_libpng(benchmark::State& state, const picture& p)
{
    std::vector<uint8_t> bytes;
    for (auto _ : state) {
        bytes.clear();
        png_structp writer = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
        png_infop info = png_create_info_struct(writer);
        png_set_write_fn(writer, &bytes, append, flush_nothing);
        png_set_IHDR(writer, info, p.width, p.height, 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
            PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        png_set_compression_level(writer, 1);
        png_set_filter(writer, PNG_FILTER_TYPE_BASE, PNG_FAST_FILTERS);
        png_write_info(writer, info);
        for (uint32_t y = 0; y < p.height; ++y)
            png_write_row(writer, p.rgb.data() + size_t{y} * p.width * 3);
        png_write_end(writer, info);
        png_destroy_write_struct(&writer, &info);
    }
    state.counters["bytes"] = static_cast<double>(bytes.size());
}

static const picture rendered = rendered_picture();
static const picture noise = noise_picture();

BENCHMARK_CAPTURE(png_ours, rendered, rendered)->Name("png 640x360/ours");
BENCHMARK_CAPTURE(png_libpng, rendered, rendered)->Name("png 640x360/libpng");
BENCHMARK_CAPTURE(png_ours, noise, noise)->Name("png of noise 640x360/ours");
BENCHMARK_CAPTURE(png_libpng, noise, noise)->Name("png of noise 640x360/libpng");

// ---- planes -----------------------------------------------------------------------------------

static void planes_ours(benchmark::State& state)
{
    std::vector<uint8_t> bytes;
    for (auto _ : state) {
        y4m_frame(rendered, yuv_bt601, bytes);
        benchmark::ClobberMemory();
    }
}

static void planes_opencv(benchmark::State& state)
{
    picture p = rendered;
    const cv::Mat source(static_cast<int>(p.height), static_cast<int>(p.width), CV_8UC3, p.rgb.data());
    cv::Mat planes;
    for (auto _ : state) {
        cv::cvtColor(source, planes, cv::COLOR_RGB2YUV_I420);
        benchmark::ClobberMemory();
    }
}

static uint8_t byte_of(double value)
{
    return static_cast<uint8_t>(std::lround(value));
}

// The formula as it stands in books (ITU-R BT.601), in double.
static void planes_plain(benchmark::State& state)
{
    std::vector<uint8_t> planes(size_t{width} * height * 3 / 2);
    for (auto _ : state) {
        uint8_t* luma = planes.data();
        uint8_t* cb = luma + size_t{width} * height;
        uint8_t* cr = cb + size_t{width} * height / 4;
        for (size_t n = 0; n < size_t{width} * height; ++n) {
            const uint8_t* c = &rendered.rgb[n * 3];
            luma[n] = byte_of(16 + 219.0 / 255 * (0.299 * c[0] + 0.587 * c[1] + 0.114 * c[2]));
        }
        for (uint32_t y = 0; y < height; y += 2)
            for (uint32_t x = 0; x < width; x += 2) {
                const uint8_t* c = &rendered.rgb[(size_t{y} * width + x) * 3];
                double mean[3];
                for (size_t k = 0; k < 3; ++k)
                    mean[k] = (c[k] + c[k + 3] + c[width * 3 + k] + c[width * 3 + k + 3]) / 4.0;
                const double grey = 0.299 * mean[0] + 0.587 * mean[1] + 0.114 * mean[2];
                *cb++ = byte_of(128 + 112.0 / 255 * (mean[2] - grey) / (1 - 0.114));
                *cr++ = byte_of(128 + 112.0 / 255 * (mean[0] - grey) / (1 - 0.299));
            }
        benchmark::ClobberMemory();
    }
}

BENCHMARK(planes_ours)->Name("rgb to 4:2:0 640x360/ours");
BENCHMARK(planes_opencv)->Name("rgb to 4:2:0 640x360/opencv");
BENCHMARK(planes_plain)->Name("rgb to 4:2:0 640x360/plain");

int main(int argc, char** argv)
{
    cv::setNumThreads(1); // one core beside one core
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
