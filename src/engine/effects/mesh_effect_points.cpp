#include "content/numbers.h"
#include "effects/mesh_effect_kinds.h"
#include "effects/mesh_normals.h"
#include "effects/swarm_kernels.h"
#include "texgen/cosine_table.h"

#include <algorithm>
#include <cassert>
#include <cmath>

constexpr double steps_per_radian = 651.8986; // 4096 / (2 pi): entries of the cosine table
constexpr double quarter_turn = 1.5707964;

// ---- "Swirl": a fan whose points wind round the origin -----------------------------------

static double table_cosine(double steps)
{
    return static_cast<double>(cosine_at(truncate_to_int(steps)));
}

static void fill_fan_indices(uint16_t* out)
{
    constexpr uint32_t last = swirl_vertices - 1;
    for (uint32_t k = 1; k <= last; ++k) {
        *out++ = 0;
        *out++ = static_cast<uint16_t>(k);
        *out++ = static_cast<uint16_t>(k == last ? 1 : k + 1);
    }
}

void init_swirl(mesh_effect& effect)
{
    mesh_arrays& mesh = effect.mesh;
    mesh.vertex_count = swirl_vertices;
    mesh.index_count = 3 * (swirl_vertices - 1);
    mesh.positions = allocate_cleared<float>(size_t{swirl_vertices} * 3);
    mesh.normals = allocate_cleared<float>(size_t{swirl_vertices} * 3);
    mesh.indices = allocate_cleared<uint16_t>(mesh.index_count);
    if (mesh.indices != nullptr)
        fill_fan_indices(mesh.indices);
}

// The faces' normals, of which only z is not 0: the fan lies in the plane of its middle, the origin. So the length that
// a normal is divided by is its z without the sign, and what is left is 1 or -1 for all but the shortest, which keep
// theirs. Returns whether there are such.
static bool make_fan_faces(const mesh_arrays& mesh, double faces[swirl_vertices])
{
    bool has_short = false;
    for (uint32_t k = 1; k < swirl_vertices; ++k) {
        const float* b = mesh.positions + size_t{3} * k;
        const float* c = k + 1 < swirl_vertices ? b + 3 : mesh.positions + 3;
        const double bx = static_cast<double>(b[0]);
        const double by = static_cast<double>(b[1]);
        const double z = (0.0 - bx) * (by - static_cast<double>(c[1])) - (0.0 - by) * (bx - static_cast<double>(c[0]));
        const bool is_short = std::fabs(z) < shortest_normal;
        faces[k] = is_short ? z : std::copysign(1.0, z);
        has_short |= is_short;
    }
    return has_short;
}

// Sums are singles that are rounded at every face; whole numbers add up to the same in any order.
static float add_fan_faces(const double faces[swirl_vertices], bool has_short)
{
    float sum = 0.0f;
    double whole_sum = 0.0;
    for (uint32_t k = 1; k < swirl_vertices; ++k)
        if (has_short)
            sum = static_cast<float>(static_cast<double>(sum) + faces[k]);
        else
            whole_sum += faces[k];
    return has_short ? sum : static_cast<float>(whole_sum);
}

// What compute_mesh_normals makes of the fan: all faces meet in the middle, two at every other point.
static void make_fan_normals(mesh_arrays& mesh)
{
    double faces[swirl_vertices];
    const float sum = add_fan_faces(faces, make_fan_faces(mesh, faces));
    mesh.normals[2] = static_cast<float>(static_cast<double>(sum) / (swirl_vertices - 1));
    for (uint32_t k = 1; k < swirl_vertices; ++k) {
        const bool is_first = k == 1; // its own face comes before the last one, which it closes
        const auto before = static_cast<float>(0.0 + faces[is_first ? 1 : k - 1]);
        const auto both = static_cast<float>(static_cast<double>(before) + faces[is_first ? swirl_vertices - 1 : k]);
        mesh.normals[3 * k + 2] = static_cast<float>(static_cast<double>(both) / 2.0);
    }
}

void step_swirl(mesh_effect& effect, float x, float y)
{
    assert(effect.mesh.vertex_count == swirl_vertices);
    assert(cosine_table[0] == 1.0f); // build_cosine_table was called
    const double turn = static_cast<double>(x);
    const double radius = static_cast<double>(y);
    for (uint32_t k = 1; k < swirl_vertices; ++k) {
        const double c = table_cosine(turn * k * steps_per_radian);
        const double s = table_cosine((turn * k + quarter_turn) * steps_per_radian);
        float* position = effect.mesh.positions + size_t{k} * 3;
        position[0] = to_single((radius + k + c) * c);
        position[1] = to_single((k + radius + s) * s);
    }
    make_fan_normals(effect.mesh);
}

// ---- "Particles": a swarm pulled toward the origin ---------------------------------------

// Coordinates lie axis by axis, for the kernel; a particle's six numbers are drawn together.
static void place_particle(swarm_axis (&axes)[3], uint32_t particle)
{
    for (swarm_axis& axis : axes)
        axis.position[particle] = static_cast<float>(random_unit() * 10.0);
    for (swarm_axis& axis : axes)
        axis.velocity[particle] = static_cast<float>(random_unit() * 0.1);
}

void init_swarm(mesh_effect& effect)
{
    auto* swarm = allocate_cleared<swarm_state>(1);
    effect.state = swarm;
    effect.mesh.vertex_count = swarm_size;
    effect.mesh.positions = allocate_cleared<float>(size_t{swarm_size} * 3);
    if (swarm == nullptr || effect.mesh.positions == nullptr)
        return;
    for (uint32_t i = 0; i < swarm_size; ++i)
        place_particle(swarm->axes, i);
    write_particles(swarm->axes, effect.mesh.positions);
}

void step_swarm(mesh_effect& effect, float time)
{
    assert(effect.state != nullptr && std::isfinite(time));
    assert(effect.mesh.vertex_count == swarm_size);
    swarm_state& swarm = *static_cast<swarm_state*>(effect.state);
    const double dt = std::fabs(static_cast<double>(time) - static_cast<double>(swarm.last));
    swarm.last = time;
    move_particles(best_instructions(), swarm.axes, dt, effect.mesh.positions);
}
