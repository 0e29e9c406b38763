#include "effects/mesh_normals.h"
#include "reference.h"
#include "test_effect.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>
#include <random>
#include <vector>

// ---- "Swirl" -----------------------------------------------------------------------------

TEST_CASE("the swirl's points stand at (Y + k + c) c and (Y + k + s) s, with a shifted cosine for s")
{
    test_effect effect(mesh_effect_swirl);
    for (const std::array<float, 2> params :
        {std::array{0.0f, 0.0f}, std::array{0.1f, 3.0f}, std::array{-2.5f, 100.25f}, std::array{777.7f, -50.0f}}) {
        step(effect, params[0], params[1]);
        const auto x = static_cast<double>(params[0]);
        const auto y = static_cast<double>(params[1]);
        uint32_t wrong = 0;
        for (int k = 1; k < 256; ++k) {
            const double c = reference_cosine(static_cast<int64_t>(x * k * 651.8986));
            const double s = reference_cosine(static_cast<int64_t>((x * k + 1.5707964) * 651.8986));
            const float* p = effect.e.mesh.positions + 3 * k;
            wrong += p[0] != static_cast<float>((y + k + c) * c) || p[1] != static_cast<float>((y + k + s) * s)
                || p[2] != 0.0f;
        }
        CHECK(wrong == 0);
        for (int axis = 0; axis < 3; ++axis)
            CHECK(effect.e.mesh.positions[axis] == 0.0f);
    }
}

TEST_CASE("the swirl at X 0 is a line of k + 1 along x")
{
    test_effect effect(mesh_effect_swirl);
    step(effect, 0.0f, 0.0f);
    CHECK(effect.e.mesh.positions[3 * 1] == 2.0f);
    CHECK(effect.e.mesh.positions[3 * 255] == 256.0f);
    // a quarter of 4096 x 1.5707964 / 2 pi is 1023 after truncation or 1024: s is nearly 0
    CHECK(std::fabs(effect.e.mesh.positions[3 * 255 + 1]) < 0.5f);
}

// Those of any mesh with these triangles, to the last bit and the last sign of a zero.
static bool has_normals_of_its_triangles(const test_effect& effect)
{
    std::vector<float> expected(768, not_a_number);
    compute_mesh_normals(positions(effect), std::span<const uint16_t>(effect.e.mesh.indices, 765), expected);
    return std::memcmp(effect.e.mesh.normals, expected.data(), expected.size() * sizeof(float)) == 0;
}

TEST_CASE("the swirl recomputes its normals at every update")
{
    test_effect effect(mesh_effect_swirl);
    step(effect, 0.3f, 5.0f);
    CHECK(has_normals_of_its_triangles(effect));
    const std::vector<float> first = normals(effect);
    CHECK(first != std::vector<float>(768, 0.0f));
    step(effect, 0.0f, 5.0f); // a line, whose faces are nearly nothing
    CHECK(has_normals_of_its_triangles(effect));
    CHECK(normals(effect) != first);
}

TEST_CASE("the swirl's normals are those of its triangles, whatever its parameters")
{
    test_effect effect(mesh_effect_swirl);
    const float largest = std::numeric_limits<float>::max();
    std::mt19937 random(11);
    uint32_t wrong = 0;
    for (uint32_t n = 0; n < 6000; ++n) {
        const auto small = static_cast<float>(static_cast<double>(random()) / 4294967296.0);
        const float x[] = {
            small, small * 1000.0f, -small, small * 1e-4f, small * 1e-6f, 0.0f, 1.5707963f * static_cast<float>(n % 9)};
        // from -256 on a point comes to the middle, where faces are short
        const float y[]
            = {small * 20.0f, -256.0f * small, std::floor(-257.0f * small), 0.0f, 1e-30f, largest, -largest};
        step(effect, x[n % std::size(x)], y[n / std::size(x) % std::size(y)]);
        wrong += !has_normals_of_its_triangles(effect);
    }
    CHECK(wrong == 0);
}

TEST_CASE("the swirl stays within its radius over 200 updates")
{
    test_effect effect(mesh_effect_swirl);
    for (int time = 0; time < 200; ++time) {
        step(effect, static_cast<float>(time) * 0.013f, static_cast<float>(time));
        CHECK(all_finite(positions(effect)));
        CHECK(all_finite(normals(effect)));
        for (const float coordinate : positions(effect))
            CHECK(std::fabs(coordinate) <= 255.0f + 1.0f + 200.0f);
    }
}

// ---- "Particles" -------------------------------------------------------------------------

TEST_CASE("particles are drawn x, y, z, vx, vy, vz, one after the other")
{
    std::srand(42);
    test_effect effect(mesh_effect_particles);
    std::srand(42);
    uint32_t wrong = 0;
    for (uint32_t i = 0; i < swarm_size; ++i) {
        for (uint32_t axis = 0; axis < 3; ++axis) {
            const auto expected = static_cast<float>(random_real() * 10);
            wrong += swarm(effect).axes[axis].position[i] != expected
                || effect.e.mesh.positions[3 * i + axis] != expected;
        }
        for (uint32_t axis = 0; axis < 3; ++axis)
            wrong += swarm(effect).axes[axis].velocity[i] != static_cast<float>(random_real() * 0.1);
    }
    CHECK(wrong == 0);
    CHECK(swarm(effect).last == 0.0f);
}

TEST_CASE("a particle at the origin is pulled with strength 1")
{
    test_effect effect(mesh_effect_particles);
    place_particle(swarm(effect), 0, {0.0f, 0.0f, 0.0f, 0.5f, -0.5f, 0.0f});
    step(effect, 0.5f);
    const std::array<float, 6> p = particle(swarm(effect), 0);
    CHECK(p[0] == 0.25f);
    CHECK(p[1] == -0.25f);
    CHECK(p[2] == 0.0f);
    CHECK(p[3] == 0.0f);
    CHECK(p[4] == 0.0f);
    CHECK(p[5] == -0.5f); // a coordinate of 0 counts as positive
}

TEST_CASE("a particle is pulled by its old radius toward the side opposite to its new coordinate")
{
    test_effect effect(mesh_effect_particles);
    place_particle(swarm(effect), 0, {2.0f, 0.0f, 0.0f, -3.0f, 0.0f, 0.0f}); // 2 / 4 = 0.5
    step(effect, 1.0f);
    CHECK(swarm(effect).axes[0].position[0] == -1.0f);
    CHECK(swarm(effect).axes[0].velocity[0] == -2.5f);
}

TEST_CASE("the swarm's time counts both ways, and the mesh shows the new positions")
{
    test_effect effect(mesh_effect_particles);
    place_particle(swarm(effect), 0, {2.0f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f});
    step(effect, -2.0f);
    CHECK(swarm(effect).axes[0].position[0] == 4.0f);
    CHECK(swarm(effect).last == -2.0f);
    CHECK(effect.e.mesh.positions[0] == 4.0f);
    step(effect, -2.0f); // no time, no change
    CHECK(effect.e.mesh.positions[0] == 4.0f);
    CHECK(swarm(effect).axes[0].velocity[0] == 0.0f);
}

TEST_CASE("the swarm follows its rules for 300 updates and stays near the origin")
{
    std::srand(8);
    test_effect effect(mesh_effect_particles);
    std::vector<std::array<float, 6>> reference;
    for (uint32_t i = 0; i < swarm_size; ++i)
        reference.push_back(particle(swarm(effect), i));
    uint32_t wrong = 0;
    float farthest = 0.0f;
    for (int time = 1; time <= 300; ++time) {
        step(effect, static_cast<float>(time) * 0.125f);
        for (uint32_t i = 0; i < swarm_size; ++i) {
            std::array<float, 6>& p = reference[i];
            const double r
                = std::hypot(static_cast<double>(p[0]), static_cast<double>(p[1]), static_cast<double>(p[2]));
            const double strength = r * r > 2 ? 2 / (r * r) : 1.0;
            for (uint32_t axis = 0; axis < 3; ++axis) {
                p[axis] = static_cast<float>(static_cast<double>(p[axis]) + static_cast<double>(p[3 + axis]) * 0.125);
                const double pull = std::copysign(strength * 0.125, p[axis] < 0.0f ? 1.0 : -1.0);
                p[3 + axis] = static_cast<float>(static_cast<double>(p[3 + axis]) + pull);
                const float computed = effect.e.mesh.positions[3 * i + axis];
                wrong += std::fabs(computed - p[axis]) > 1e-3f;
                farthest = std::max(farthest, std::fabs(computed));
                p[axis] = computed; // rounding may differ in the last bit: start again from the same place
                p[3 + axis] = swarm(effect).axes[axis].velocity[i];
            }
        }
        CHECK(all_finite(positions(effect)));
    }
    CHECK(wrong == 0);
    CHECK(farthest < 100.0f);
}
