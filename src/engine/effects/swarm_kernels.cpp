#include "effects/swarm_kernels.h"

#include "content/numbers.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>

// ---- plain -------------------------------------------------------------------------------

// The pull has the strength of the old distance and, on every axis, the direction of the
// new coordinate. At the origin 2 / r^2 is infinite, which the limit turns into 1.
static void move_particle(swarm_particle& particle, double dt)
{
    double squares = 0.0;
    for (const float coordinate : particle.position)
        squares += static_cast<double>(coordinate) * static_cast<double>(coordinate);
    const double r = std::sqrt(squares);
    const double pull = std::min(2.0 / (r * r), 1.0) * dt;

    for (uint32_t axis = 0; axis < 3; ++axis) {
        float& position = particle.position[axis];
        float& velocity = particle.velocity[axis];
        position = to_single(static_cast<double>(position) + static_cast<double>(velocity) * dt);
        velocity = to_single(static_cast<double>(velocity) + (position >= 0.0f ? -pull : pull));
    }
}

static void move_particles_plain(swarm_particle (&particles)[swarm_size], double dt)
{
    for (swarm_particle& particle : particles)
        move_particle(particle, dt);
}

// ---- all particles at once ---------------------------------------------------------------

static_assert(sizeof(swarm_particle[swarm_size]) == swarm_size * 6 * sizeof(int32_t));

// Whether nothing comes near a single's range; false for what is not a number. Without their signs singles are in the
// order of their bits.
FAST_INLINE static bool has_room(const swarm_particle (&particles)[swarm_size], double dt)
{
    constexpr double far = 1e15;
    constexpr auto far_bits = std::bit_cast<int32_t>(static_cast<float>(far));
    int32_t bits[swarm_size * 6];
    std::memcpy(bits, particles, sizeof bits);
    int32_t beyond = 0;
    for (const int32_t single : bits)
        beyond |= (single & 0x7FFFFFFF) > far_bits ? 1 : 0;
    return beyond == 0 && dt < far;
}

namespace {

// A coordinate of all particles, and its velocity.
struct swarm_axis {
    float position[swarm_size];
    float velocity[swarm_size];
};

} // namespace

FAST_INLINE static void move_axis(swarm_axis& axis, const double* pulls, double dt)
{
    for (uint32_t i = 0; i < swarm_size; ++i)
        axis.position[i]
            = static_cast<float>(static_cast<double>(axis.position[i]) + static_cast<double>(axis.velocity[i]) * dt);
    for (uint32_t i = 0; i < swarm_size; ++i) {
        const double pull = static_cast<double>(axis.position[i]) >= 0.0 ? -pulls[i] : pulls[i];
        axis.velocity[i] = static_cast<float>(static_cast<double>(axis.velocity[i]) + pull);
    }
}

FAST_INLINE static void move_particles_fast(swarm_particle (&particles)[swarm_size], double dt)
{
    if (!has_room(particles, dt))
        return move_particles_plain(particles, dt);
    swarm_axis axes[3];
    for (uint32_t i = 0; i < swarm_size; ++i)
        for (uint32_t k = 0; k < 3; ++k) {
            axes[k].position[i] = particles[i].position[k];
            axes[k].velocity[i] = particles[i].velocity[k];
        }
    double pulls[swarm_size];
    for (uint32_t i = 0; i < swarm_size; ++i) {
        const double x = static_cast<double>(axes[0].position[i]);
        const double y = static_cast<double>(axes[1].position[i]);
        const double z = static_cast<double>(axes[2].position[i]);
        const double r = std::sqrt(x * x + y * y + z * z);
        const double pull = 2.0 / (r * r);
        pulls[i] = (1.0 < pull ? 1.0 : pull) * dt;
    }
    for (swarm_axis& axis : axes)
        move_axis(axis, pulls, dt);
    for (uint32_t i = 0; i < swarm_size; ++i)
        for (uint32_t k = 0; k < 3; ++k) {
            particles[i].position[k] = axes[k].position[i];
            particles[i].velocity[k] = axes[k].velocity[i];
        }
}

FAST_AVX2 static void move_particles_avx2(swarm_particle (&particles)[swarm_size], double dt)
{
    move_particles_fast(particles, dt);
}

void move_particles(instruction_set set, swarm_particle (&particles)[swarm_size], double dt)
{
    switch (set) {
    case instructions_avx2:
        return move_particles_avx2(particles, dt);
    case instructions_sse2:
        return move_particles_fast(particles, dt);
    case instructions_plain:
    case instruction_set_count:
        break;
    }
    move_particles_plain(particles, dt);
}
