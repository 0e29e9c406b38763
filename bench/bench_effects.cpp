// How long one picture of a 2-D effect and one update of a mesh effect take.
//
//   bench_effects [-l] [-b=name] [-r=n]
//
// -l lists the cases, -b picks one, -r repeats each n times (20 by default). Every line
// gives the fastest repeat in microseconds and its ratio to clearing a picture of the
// same run, which is what to compare between machines. Pictures are 256 x 256 of 24
// bits; meshes are updated by half a unit of time, so that waters step every other time.

#include "effects/dynamic_texture.h"
#include "effects/manipulator.h"
#include "effects/mesh_effect.h"
#include "texgen/cosine_table.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

constexpr uint32_t side = 256;
constexpr uint32_t runs = 20; // a repeat

namespace {

enum case_family : uint32_t { family_clear, family_picture, family_mesh, family_rippler };

struct bench_case {
    const char* name;
    case_family family;
    uint32_t kind;
};

} // namespace

constexpr bench_case cases[] = {
    {"clear", family_clear, 0},
    {"test_effect", family_picture, effect_2d_test},
    {"plasma", family_picture, effect_2d_plasma},
    {"amoba", family_picture, effect_2d_amoba},
    {"rotate", family_picture, effect_2d_rotate},
    {"normalmap", family_picture, effect_2d_normalmap},
    {"lake", family_mesh, mesh_effect_lake},
    {"centerwave", family_mesh, mesh_effect_centerwave},
    {"swirl", family_mesh, mesh_effect_swirl},
    {"particles", family_mesh, mesh_effect_particles},
    {"lake_2", family_mesh, mesh_effect_lake_2},
    {"rippler_3600", family_rippler, 0},
};

namespace {

// What the cases work on; one of each kind at a time.
struct bench_state {
    std::vector<uint8_t> pixels;
    effect_2d_state* picture;
    mesh_effect mesh;
    manipulator_tools tools;
    placement_list list;
    float time;
};

} // namespace

static void begin_case(const bench_case& c, bench_state& state)
{
    state = {std::vector<uint8_t>(size_t{side} * side * 3), nullptr, {}, {}, {}, 1.0f};
    if (c.family == family_picture)
        state.picture = init_dynamic_texture(c.kind, side, side, 24);
    state.mesh.type = c.family == family_mesh ? c.kind : uint32_t{mesh_effect_lake_2};
    init_mesh_effect(state.mesh);
}

static void end_case(bench_state& state)
{
    free_dynamic_texture(state.picture);
    free_mesh_effect(state.mesh);
    reset_rippler_cache(state.tools.rippler);
}

static void run_once(const bench_case& c, bench_state& state)
{
    state.time += 0.5f;
    const float params[3] = {state.time, 0.25f, 0.0f};
    switch (c.family) {
    case family_clear:
        std::fill(state.pixels.begin(), state.pixels.end(), static_cast<uint8_t>(state.time));
        break;
    case family_picture:
        render_dynamic_texture(c.kind, side, side, 24, params, state.picture, state.pixels.data());
        break;
    case family_mesh:
        step_mesh_effect(state.mesh, params);
        break;
    case family_rippler:
        apply_manipulator(state.list, manipulator_rippler, params, &state.mesh.mesh, nullptr, state.tools);
        break;
    }
}

// Microseconds a run, the fastest of `repeats`.
static double measure(const bench_case& c, int repeats)
{
    bench_state state;
    begin_case(c, state);
    double fastest = 1e30;
    for (int r = 0; r < repeats; ++r) {
        const auto begin = std::chrono::steady_clock::now();
        for (uint32_t i = 0; i < runs; ++i)
            run_once(c, state);
        const std::chrono::duration<double, std::micro> taken = std::chrono::steady_clock::now() - begin;
        fastest = std::min(fastest, taken.count() / runs);
    }
    end_case(state);
    return fastest;
}

int main(int argc, char** argv)
{
    std::string_view picked;
    int repeats = 20;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "-l") == 0) {
            for (const bench_case& c : cases)
                std::printf("%s\n", c.name);
            return 0;
        }
        if (std::strncmp(argv[i], "-b=", 3) == 0)
            picked = argv[i] + 3;
        else if (std::strncmp(argv[i], "-r=", 3) == 0)
            repeats = std::max(1, std::atoi(argv[i] + 3));
    }

    build_cosine_table();
    const double unit = measure(cases[0], repeats);
    std::printf("%-20s %12s %8s   (%u runs, fastest of %d)\n", "case", "us", "ratio", runs, repeats);
    for (const bench_case& c : cases) {
        if (!picked.empty() && picked != c.name)
            continue;
        const double taken = c.family == family_clear ? unit : measure(c, repeats);
        std::printf("%-20s %12.2f %8.2f\n", c.name, taken, taken / unit);
    }
    return 0;
}
