#include "effects/swarm_kernels.h"

#include "content/numbers.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

FAST_INLINE static void interleave(const swarm_axis (&axes)[3], float* vertices)
{
    for (uint32_t i = 0; i < swarm_size; ++i)
        for (uint32_t k = 0; k < 3; ++k)
            vertices[3 * i + k] = axes[k].position[i];
}

void write_particles(const swarm_axis (&axes)[3], float* vertices)
{
    interleave(axes, vertices);
}

// ---- plain -------------------------------------------------------------------------------

// The pull has the strength of the old distance and, on every axis, the direction of the
// new coordinate. At the origin 2 / r^2 is infinite, which the limit turns into 1.
static void move_particle(swarm_axis (&axes)[3], uint32_t particle, double dt)
{
    double squares = 0.0;
    for (const swarm_axis& axis : axes) {
        const double coordinate = static_cast<double>(axis.position[particle]);
        squares += coordinate * coordinate;
    }
    const double r = std::sqrt(squares);
    const double pull = std::min(2.0 / (r * r), 1.0) * dt;

    for (swarm_axis& axis : axes) {
        float& position = axis.position[particle];
        float& velocity = axis.velocity[particle];
        position = to_single(static_cast<double>(position) + static_cast<double>(velocity) * dt);
        velocity = to_single(static_cast<double>(velocity) + (position >= 0.0f ? -pull : pull));
    }
}

static void move_particles_plain(swarm_axis (&axes)[3], double dt, float* vertices)
{
    for (uint32_t i = 0; i < swarm_size; ++i)
        move_particle(axes, i, dt);
    write_particles(axes, vertices);
}

// ---- all particles at once ---------------------------------------------------------------

// Whether nothing comes near a single's range; false for what is not a number. Without their signs singles are in the
// order of their bits: the difference of these is below 0 for what is too far.
FAST_INLINE static bool has_room(const swarm_axis (&axes)[3], double dt)
{
    constexpr double far = 1e15;
    constexpr auto far_bits = std::bit_cast<int32_t>(static_cast<float>(far));
    int32_t room = 0;
    for (const swarm_axis& axis : axes)
        for (uint32_t i = 0; i < swarm_size; ++i) {
            room |= far_bits - (std::bit_cast<int32_t>(axis.position[i]) & 0x7FFFFFFF);
            room |= far_bits - (std::bit_cast<int32_t>(axis.velocity[i]) & 0x7FFFFFFF);
        }
    return room >= 0 && dt < far;
}

FAST_INLINE static void move_axis(swarm_axis& axis, const double* pulls, double dt)
{
    for (uint32_t i = 0; i < swarm_size; ++i) {
        const double velocity = static_cast<double>(axis.velocity[i]);
        const auto position = static_cast<float>(static_cast<double>(axis.position[i]) + velocity * dt);
        const float direction = position >= 0.0f ? -1.0f : 1.0f;
        axis.position[i] = position;
        axis.velocity[i] = static_cast<float>(velocity + static_cast<double>(direction) * pulls[i]);
    }
}

FAST_INLINE static void move_particles_fast(swarm_axis (&axes)[3], double dt, float* vertices)
{
    if (!has_room(axes, dt))
        return move_particles_plain(axes, dt, vertices);
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
    interleave(axes, vertices);
}

FAST_AVX2 static void move_particles_avx2(swarm_axis (&axes)[3], double dt, float* vertices)
{
    move_particles_fast(axes, dt, vertices);
}

void move_particles(instruction_set set, swarm_axis (&axes)[3], double dt, float* vertices)
{
    switch (set) {
    case instructions_avx2:
        return move_particles_avx2(axes, dt, vertices);
    case instructions_sse2:
        return move_particles_fast(axes, dt, vertices);
    case instructions_plain:
    case instruction_set_count:
        break;
    }
    move_particles_plain(axes, dt, vertices);
}
