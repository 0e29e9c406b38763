// Pictures and meshes that are computed anew in every frame, beside the same formulas as ordinary loops.
//
// A plain loop is what one would write who only wants the formula: its terms once a row or a column where that is
// obvious, one pixel after the other, singles where a mesh has singles.

#include "effects/dynamic_texture.h"
#include "effects/mesh_effect.h"
#include "effects/mesh_effect_kinds.h"
#include "effects/mesh_normals.h"
#include "effects/normal_kernels.h"
#include "model/records.h"
#include "texgen/cosine_table.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

// ---- pictures: plain loops ---------------------------------------------------------------

namespace {

struct plain_picture {
    uint8_t* pixels;
    uint32_t side;
    uint32_t channels; // 1 or 3
};

} // namespace

static uint8_t plain_ramp(int32_t sum)
{
    return static_cast<uint8_t>(sum + sum / 255);
}

static void plain_test(const plain_picture& out, int32_t o)
{
    uint8_t* pixel = out.pixels;
    const auto side = static_cast<int32_t>(out.side);
    for (int32_t y = 0; y < side; ++y)
        for (int32_t x = 0; x < side; ++x) {
            if (out.channels == 3) {
                *pixel++ = plain_ramp(o + y);
                *pixel++ = plain_ramp(o + x);
            }
            *pixel++ = plain_ramp(o + x + y);
        }
}

constexpr double plain_steps = 651.8986469;
constexpr double q[18]
    = {0.1, 0.12, 0.09, 0.07, 0.13, 0.135, 0.18, 0.2, 0.17, 0.22, 0.12, 0.2, 0.12, 0.15, 0.13, 0.14, 0.1, 0.08};

static double plain_cosine(double steps)
{
    return static_cast<double>(cosine_table[4096 + static_cast<int32_t>(steps) % 4096]);
}

namespace {

// The eight numbers that make three colours of two fields.
struct plain_colours {
    double density_p[3], density_q[3], drift_p[3], drift_q[3];
};

} // namespace

static plain_colours plain_make_colours(double cb, double cc, double t)
{
    plain_colours made = {};
    for (uint32_t c = 0; c < 3; ++c) {
        made.density_p[c] = (q[2 * c] * (cb - 1.0) + 1.0) * q[12 + 2 * c] * plain_steps;
        made.density_q[c] = (q[2 * c + 1] * (cc - 1.0) + 1.0) * q[13 + 2 * c] * plain_steps;
        made.drift_p[c] = q[6 + 2 * c] * t * plain_steps;
        made.drift_q[c] = q[7 + 2 * c] * t * plain_steps;
    }
    return made;
}

static uint8_t* plain_colour(uint8_t* pixel, uint32_t channels, const plain_colours& k, double P, double Q)
{
    for (uint32_t c = 0; c < channels; ++c)
        *pixel++ = static_cast<uint8_t>(static_cast<int32_t>((plain_cosine(k.density_q[c] * Q + k.drift_q[c]) + 1.0)
            * (plain_cosine(k.density_p[c] * P + k.drift_p[c]) + 1.0) * 63.0));
    return pixel;
}

static void plain_plasma(const plain_picture& out, double p)
{
    const double t = 0.5 * p;
    const double amplitude = std::sin(0.1 * t) + 1.88;
    const double c = std::cos(0.01 * t);
    const double a = std::sin(0.01 * t) * amplitude;
    const double b = (1.0 - c) * amplitude;
    const double fy = (0.2 * std::cos(0.11 * t) + 0.8) * 12.96912246068074;
    const double fx = (0.3 * std::cos(0.11 * t) + 0.7) * 9.72684185518603;
    const plain_colours k = plain_make_colours(std::cos(0.13 * t + 6.0), std::cos(0.17 * t + 8.0), t);
    std::vector<double> across(out.side);
    for (uint32_t x = 0; x < out.side; ++x)
        across[x] = (1.0 - plain_cosine(x * fx)) * 63.0 + 0.06 * t;
    uint8_t* pixel = out.pixels;
    for (uint32_t y = 0; y < out.side; ++y) {
        const double down = (1.0 - plain_cosine(y * fy)) * 63.0 + 0.08 * t;
        for (uint32_t x = 0; x < out.side; ++x)
            pixel
                = plain_colour(pixel, out.channels, k, amplitude * c * across[x] + a * down, a * across[x] + b * down);
    }
}

static void plain_rotate(const plain_picture& out, double p)
{
    const double t = 0.5 * p;
    const double a = (std::sin(0.1 * t) + 1.88) * 20.0;
    const double ca = std::cos(0.11 * t);
    const double gx = (0.0024543671875 * ca + 0.00981746875) * plain_steps;
    const double gy = (0.0027611630859375 * ca + 0.0064427138671875) * plain_steps;
    const double s = std::sin(0.15 * t);
    const double c = std::cos(0.15 * t);
    const plain_colours k = plain_make_colours(std::cos(0.13 * t) + 6.0, std::cos(0.17 * t) + 8.0, t);
    uint8_t* pixel = out.pixels;
    for (uint32_t y = 0; y < out.side; ++y)
        for (uint32_t x = 0; x < out.side; ++x) {
            const double P = (1.0 - plain_cosine((s * y + c * x) * gx)) * (63.0 * a) + 0.08 * a * t;
            const double Q = (1.0 - plain_cosine((s * x + (1.0 - c) * y) * gy)) * (63.0 * a) + 0.06 * a * t;
            pixel = plain_colour(pixel, out.channels, k, P, Q);
        }
}

static void plain_normalmap(const plain_picture& out, int32_t t)
{
    const auto side = static_cast<int32_t>(out.side);
    uint8_t* pixel = out.pixels;
    for (int32_t y = 0; y < side; ++y) {
        const double row_r = static_cast<double>(cosine_table[4096 + 2 * ((5 * (t + y)) & 2047)]);
        const double row_g = static_cast<double>(cosine_table[4096 + ((t + y + 1000) & 4095)]);
        for (int32_t x = 0; x < side; ++x) {
            const int32_t u = t + 10 * x;
            const double r = static_cast<double>(cosine_table[4096 + (u & 4095)]) + row_r;
            const double g = static_cast<double>(cosine_table[4096 + ((9 * t + 10000 + u) & 4095)]) + row_g;
            *pixel++ = static_cast<uint8_t>(static_cast<int32_t>(r * 255.0));
            *pixel++ = static_cast<uint8_t>(static_cast<int32_t>(g * 255.0));
            *pixel++ = 255;
        }
    }
}

static void plain_amoba(const plain_picture& out, std::vector<uint8_t>& colony)
{
    const size_t channels = out.channels;
    const size_t row_bytes = out.side * channels;
    for (uint32_t attempt = 0; attempt < out.side * out.side / 8; ++attempt) {
        const auto row = static_cast<size_t>(1 + static_cast<int32_t>(std::rand() * (out.side - 3.0) / 2147483648.0));
        const auto column
            = static_cast<size_t>(1 + static_cast<int32_t>(std::rand() * (out.side - 3.0) / 2147483648.0));
        uint8_t* cell = colony.data() + row * row_bytes + column * channels;
        if (channels == 3 ? cell[0] + cell[1] + cell[2] <= 32 : cell[0] <= 64)
            continue;
        for (size_t c = 0; c < channels; ++c)
            cell[channels + c] = cell[row_bytes + c] = (cell - channels)[c] = (cell - row_bytes)[c] = cell[c];
    }
    std::memcpy(out.pixels, colony.data(), colony.size());
}

// ---- pictures ----------------------------------------------------------------------------

namespace {

struct picture_case {
    uint32_t kind;
    uint32_t side;
    uint32_t bpp;
};

} // namespace

static void count_pixels(benchmark::State& state, const picture_case& c)
{
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * c.side * c.side);
}

static void picture_ours(benchmark::State& state, picture_case c)
{
    std::vector<uint8_t> pixels(size_t{c.side} * c.side * (c.bpp / 8));
    effect_2d_state* made = init_dynamic_texture(c.kind, c.side, c.side, c.bpp);
    float params[3] = {100.0f, 0.25f, 0.0f};
    for (auto _ : state) {
        params[0] += 1.0f;
        render_dynamic_texture(c.kind, c.side, c.side, c.bpp, params, made, pixels.data());
        benchmark::ClobberMemory();
    }
    free_dynamic_texture(made);
    count_pixels(state, c);
}

static void picture_plain(benchmark::State& state, picture_case c)
{
    std::vector<uint8_t> pixels(size_t{c.side} * c.side * (c.bpp / 8));
    const plain_picture out = {pixels.data(), c.side, c.bpp / 8};
    std::vector<uint8_t> colony(pixels.size());
    effect_2d_state* made = init_dynamic_texture(effect_2d_amoba, c.side, c.side, c.bpp);
    std::memcpy(colony.data(), made->buffer, colony.size());
    free_dynamic_texture(made);
    int32_t time = 100;
    for (auto _ : state) {
        ++time;
        switch (static_cast<effect_2d_kind>(c.kind)) {
        case effect_2d_test:
            plain_test(out, time);
            break;
        case effect_2d_plasma:
            plain_plasma(out, time);
            break;
        case effect_2d_amoba:
            plain_amoba(out, colony);
            break;
        case effect_2d_rotate:
            plain_rotate(out, time);
            break;
        case effect_2d_normalmap:
            plain_normalmap(out, time);
            break;
        case effect_2d_kind_count:
            break;
        }
        benchmark::ClobberMemory();
    }
    count_pixels(state, c);
}

// ---- meshes: plain loops -----------------------------------------------------------------

static void plain_normals(mesh_arrays& mesh)
{
    static uint32_t counts[65536];
    std::fill_n(counts, mesh.vertex_count, 0u);
    std::fill_n(mesh.normals, 3 * mesh.vertex_count, 0.0f);
    for (uint32_t i = 0; i + 2 < mesh.index_count; i += 3) {
        const uint16_t* corner = mesh.indices + i;
        const float* a = mesh.positions + 3 * corner[0];
        const float* b = mesh.positions + 3 * corner[1];
        const float* c = mesh.positions + 3 * corner[2];
        const float e1[3] = {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
        const float e2[3] = {b[0] - c[0], b[1] - c[1], b[2] - c[2]};
        const float n[3]
            = {e1[1] * e2[2] - e1[2] * e2[1], e1[2] * e2[0] - e1[0] * e2[2], e1[0] * e2[1] - e1[1] * e2[0]};
        float length = std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]);
        if (length < 0.001f)
            length = 1.0f;
        for (uint32_t k = 0; k < 3; ++k) {
            float* normal = mesh.normals + 3 * corner[k];
            for (uint32_t axis = 0; axis < 3; ++axis)
                normal[axis] += n[axis] / length;
            ++counts[corner[k]];
        }
    }
    for (uint32_t v = 0; v < mesh.vertex_count; ++v)
        if (counts[v] > 1)
            for (uint32_t axis = 0; axis < 3; ++axis)
                mesh.normals[3 * v + axis] /= static_cast<float>(counts[v]);
}

// The two waters that step: what they share, and a time that has moved by half a unit.
static void plain_water(mesh_effect& effect, float time, uint32_t side)
{
    water_state& water = *static_cast<water_state*>(effect.state);
    const uint32_t entries = side * side;
    if (time >= static_cast<float>(water.last + 1)) {
        water.last = static_cast<int32_t>(time);
        std::memcpy(water.fields[0], water.fields[1], entries * sizeof(int32_t));
        std::swap_ranges(water.fields[1], water.fields[1] + entries, water.fields[2]);
        int32_t* a = water.fields[1];
        int32_t* b = water.fields[2];
        for (uint32_t k = side; k < entries - side; ++k) {
            const int32_t sum = a[k - 1] + a[k + 1] + a[k - side] + a[k + side];
            if (side == lake_side) {
                b[k] = (sum >> 1) - b[k];
                b[k] -= b[k] >> 5;
                if (b[k] > 4)
                    b[k] = 4;
            } else {
                const auto v = static_cast<int32_t>((sum / 4 - a[k] + b[k]) * 0.99);
                a[k] += v;
                b[k] = std::clamp(v, -20, 20);
            }
        }
        for (uint32_t i = 0; i < side; ++i)
            b[i * side] = b[i * side + side - 1] = 0;
        if (side == lake_side)
            for (const int32_t depth : {-6, -5, -6, -5})
                a[static_cast<uint32_t>(std::rand() * 900.0 / 2147483648.0)] = depth;
        else if (++water.step_count == 6) {
            water.step_count = 0;
            a[static_cast<uint32_t>(std::rand() * 3600.0 / 2147483648.0)] = 6;
        }
    }
    const float f = time - static_cast<float>(water.last);
    for (uint32_t k = 0; k < entries; ++k) {
        const float height
            = (static_cast<float>(water.fields[1][k]) * 0.5f + static_cast<float>(water.fields[2][k]) * f * 0.5f
                  + static_cast<float>(water.fields[0][k]) * (1.0f - f) * 0.5f)
            * 0.2f;
        effect.mesh.positions[3 * k + 1] = side == lake_side ? height : std::trunc(height);
    }
    plain_normals(effect.mesh);
}

static float plain_mesh_cosine(float steps)
{
    return cosine_table[4096 + static_cast<int32_t>(steps) % 4096];
}

static void plain_centerwave(mesh_effect& effect, float time)
{
    for (int32_t i = 0; i < 30; ++i)
        for (int32_t j = 0; j < 30; ++j) {
            const int32_t a = i - 15;
            const int32_t b = j - 15;
            const float d = std::sqrt(static_cast<float>(a * a + b * b));
            effect.mesh.positions[3 * (30 * i + j) + 1]
                = d > 14.0f ? 0.0f : (14.0f - d) * 0.1f * plain_mesh_cosine((d - time) * 651.8986f);
        }
    plain_normals(effect.mesh);
}

static void plain_swirl(mesh_effect& effect, float x, float y)
{
    for (uint32_t k = 1; k < swirl_vertices; ++k) {
        const auto radius = static_cast<float>(k);
        const float c = plain_mesh_cosine(x * radius * 651.8986f);
        const float s = plain_mesh_cosine((x * radius + 1.5707964f) * 651.8986f);
        float* position = effect.mesh.positions + 3 * k;
        position[0] = (y + radius + c) * c;
        position[1] = (radius + y + s) * s;
        position[2] = 0.0f;
    }
    plain_normals(effect.mesh);
}

namespace {

struct plain_particle {
    float position[3];
    float velocity[3];
};

struct plain_swarm_state {
    float last;
    plain_particle particles[swarm_size];
};

} // namespace

// A swarm's own state has the same numbers in another order.
static_assert(sizeof(plain_swarm_state) == sizeof(swarm_state));

static void begin_plain_swarm(mesh_effect& effect)
{
    const swarm_state from = *static_cast<swarm_state*>(effect.state);
    plain_swarm_state& swarm = *static_cast<plain_swarm_state*>(effect.state);
    for (uint32_t i = 0; i < swarm_size; ++i)
        for (uint32_t axis = 0; axis < 3; ++axis) {
            swarm.particles[i].position[axis] = from.axes[axis].position[i];
            swarm.particles[i].velocity[axis] = from.axes[axis].velocity[i];
        }
}

static void plain_swarm(mesh_effect& effect, float time)
{
    plain_swarm_state& swarm = *static_cast<plain_swarm_state*>(effect.state);
    const float dt = std::fabs(time - swarm.last);
    swarm.last = time;
    float* vertex = effect.mesh.positions;
    for (plain_particle& particle : swarm.particles) {
        float* p = particle.position;
        const float squares = p[0] * p[0] + p[1] * p[1] + p[2] * p[2];
        const float g = std::min(2.0f / squares, 1.0f) * dt;
        for (uint32_t axis = 0; axis < 3; ++axis) {
            p[axis] += particle.velocity[axis] * dt;
            particle.velocity[axis] += p[axis] >= 0.0f ? -g : g;
            *vertex++ = p[axis];
        }
    }
}

// ---- meshes ------------------------------------------------------------------------------

static mesh_effect begin_mesh(uint32_t kind)
{
    mesh_effect effect = {};
    effect.type = kind;
    std::srand(5);
    init_mesh_effect(effect);
    return effect;
}

// A time of two frames a unit, so that waters step in every other.
static void mesh_ours(benchmark::State& state, uint32_t kind)
{
    mesh_effect effect = begin_mesh(kind);
    float params[2] = {0.0f, 0.25f};
    for (auto _ : state) {
        params[0] += 0.5f;
        step_mesh_effect(effect, params);
        benchmark::ClobberMemory();
    }
    free_mesh_effect(effect);
}

static void mesh_plain(benchmark::State& state, uint32_t kind)
{
    mesh_effect effect = begin_mesh(kind);
    if (kind == mesh_effect_particles)
        begin_plain_swarm(effect);
    float time = 0.0f;
    for (auto _ : state) {
        time += 0.5f;
        switch (static_cast<mesh_effect_kind>(kind)) {
        case mesh_effect_lake:
            plain_water(effect, time, lake_side);
            break;
        case mesh_effect_centerwave:
            plain_centerwave(effect, time);
            break;
        case mesh_effect_swirl:
            plain_swirl(effect, time, 0.25f);
            break;
        case mesh_effect_particles:
            plain_swarm(effect, time);
            break;
        case mesh_effect_lake_2:
            plain_water(effect, time, lake_2_side);
            break;
        case mesh_effect_kind_count:
            break;
        }
        benchmark::ClobberMemory();
    }
    free_mesh_effect(effect);
}

namespace {

enum normals_case : uint32_t { normals_of_grid, normals_of_any_mesh, normals_plain };

} // namespace

// Normals alone, of a lake in the middle of a wave.
static void normals(benchmark::State& state, normals_case which)
{
    mesh_effect effect = begin_mesh(mesh_effect_lake);
    std::vector<float> heights(effect.mesh.vertex_count);
    for (uint32_t k = 0; k < effect.mesh.vertex_count; ++k)
        heights[k] = effect.mesh.positions[3 * k + 1] = static_cast<float>(std::sin(k * 0.37));
    for (auto _ : state) {
        if (which == normals_of_grid)
            compute_grid_normals(best_instructions(), heights.data(), lake_side, effect.mesh.normals);
        else if (which == normals_of_any_mesh)
            compute_mesh_normals({effect.mesh.positions, size_t{3} * effect.mesh.vertex_count},
                {effect.mesh.indices, effect.mesh.index_count},
                {effect.mesh.normals, size_t{3} * effect.mesh.vertex_count});
        else
            plain_normals(effect.mesh);
        benchmark::ClobberMemory();
    }
    free_mesh_effect(effect);
}

// ---- all of it ---------------------------------------------------------------------------

static void add_picture(const char* name, uint32_t kind, uint32_t side, uint32_t bpp)
{
    const std::string work = std::string(name) + " " + std::to_string(side) + " " + std::to_string(bpp) + " bit";
    const picture_case c = {kind, side, bpp};
    benchmark::RegisterBenchmark((work + "/ours").c_str(), picture_ours, c);
    benchmark::RegisterBenchmark((work + "/plain").c_str(), picture_plain, c);
}

static void add_mesh(const char* name, uint32_t kind)
{
    benchmark::RegisterBenchmark((std::string(name) + "/ours").c_str(), mesh_ours, kind);
    benchmark::RegisterBenchmark((std::string(name) + "/plain").c_str(), mesh_plain, kind);
}

int main(int argc, char** argv)
{
    build_cosine_table();
    for (const uint32_t side : {256u, 512u})
        for (const uint32_t bpp : {24u, 8u}) {
            add_picture("test", effect_2d_test, side, bpp);
            add_picture("plasma", effect_2d_plasma, side, bpp);
            add_picture("amoba", effect_2d_amoba, side, bpp);
            add_picture("rotate", effect_2d_rotate, side, bpp);
            if (bpp == 24) // in 8 bits it leaves its texture as it is
                add_picture("normalmap", effect_2d_normalmap, side, bpp);
        }
    add_mesh("lake", mesh_effect_lake);
    add_mesh("centerwave", mesh_effect_centerwave);
    add_mesh("swirl", mesh_effect_swirl);
    add_mesh("swarm", mesh_effect_particles);
    add_mesh("lake 2", mesh_effect_lake_2);
    benchmark::RegisterBenchmark("normals of a grid/ours", normals, normals_of_grid);
    benchmark::RegisterBenchmark("normals of a grid/plain", normals, normals_plain);
    benchmark::RegisterBenchmark("normals of any mesh/ours", normals, normals_of_any_mesh);
    benchmark::RegisterBenchmark("normals of any mesh/plain", normals, normals_plain);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
