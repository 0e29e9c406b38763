// Each form of the swarm's kernel against the plain one, bit for bit.

#include "effects/swarm_kernels.h"
#include "faster_sets.h"
#include "reference.h"
#include "test_effect.h"

#include <doctest/doctest.h>

#include <cstring>
#include <iterator>
#include <limits>

// Particles as far away as `reach`, some of them where they are special.
static swarm_state scattered_swarm(uint32_t seed, double reach)
{
    swarm_state swarm = {};
    uint32_t n = seed * 1000;
    for (uint32_t i = 0; i < swarm_size; ++i)
        for (swarm_axis& axis : swarm.axes) {
            axis.position[i] = static_cast<float>(static_cast<int32_t>(++n * 2654435761u) / 2147483648.0 * reach);
            axis.velocity[i] = static_cast<float>(static_cast<int32_t>(++n * 2246822519u) / 2147483648.0);
        }
    place_particle(swarm, 3, {0.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f});            // at the origin, at rest
    place_particle(swarm, 4, {-0.0f, 0.0f, -0.0f, -0.0f, -0.0f, 1.0f});        // on both sides of it
    place_particle(swarm, 5, {1e-30f, -1e-30f, 0.0f, -1e-30f, 1e-30f, -0.0f}); // about to cross
    return swarm;
}

static bool moves_alike(instruction_set set, swarm_state swarm, double dt)
{
    swarm_state expected = swarm;
    float vertices[3 * swarm_size];
    float expected_vertices[3 * swarm_size];
    for (uint32_t step = 0; step < 5; ++step) {
        move_particles(instructions_plain, expected.axes, dt, expected_vertices);
        move_particles(set, swarm.axes, dt, vertices);
        if (std::memcmp(&swarm, &expected, sizeof swarm) != 0
            || std::memcmp(vertices, expected_vertices, sizeof vertices) != 0)
            return false;
    }
    return true;
}

TEST_CASE("a swarm moves to the same places with all instructions")
{
    for (const instruction_set set : faster_sets())
        for (const double reach : {1e-20, 0.01, 1.0, 10.0, 1e5, 9e14})
            for (const double dt : {0.0, 1e-3, 0.5, 1.0, 77.7, 9e14})
                for (uint32_t seed = 0; seed < 20; ++seed) {
                    CAPTURE(static_cast<uint32_t>(set));
                    CAPTURE(reach);
                    CAPTURE(dt);
                    CHECK(moves_alike(set, scattered_swarm(seed, reach), dt));
                }
}

TEST_CASE("a swarm that reaches the end of its numbers stays there with all instructions")
{
    constexpr float largest = std::numeric_limits<float>::max();
    for (const instruction_set set : faster_sets())
        for (const float odd : {1e16f, largest, -largest, infinity, not_a_number})
            for (uint32_t k = 0; k < 6; ++k) {
                swarm_state swarm = scattered_swarm(1, 10.0);
                (k < 3 ? swarm.axes[k].position[7] : swarm.axes[k - 3].velocity[31]) = odd;
                CAPTURE(static_cast<uint32_t>(set));
                CAPTURE(odd);
                CAPTURE(k);
                CHECK(moves_alike(set, swarm, 1.5));
                CHECK(moves_alike(
                    set, scattered_swarm(k, 10.0), 2.0 * static_cast<double>(largest))); // from one end to the other
            }
}
