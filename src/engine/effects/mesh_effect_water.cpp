#include "content/numbers.h"
#include "effects/mesh_effect_kinds.h"
#include "texgen/cosine_table.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <span>

constexpr double steps_per_radian = 651.8986; // 4096 / (2 pi): entries of the cosine table

// ---- the grid ----------------------------------------------------------------------------

static void append_triangle(uint16_t*& out, uint32_t a, uint32_t b, uint32_t c)
{
    *out++ = static_cast<uint16_t>(a);
    *out++ = static_cast<uint16_t>(b);
    *out++ = static_cast<uint16_t>(c);
}

// Both triangles of a cell share its diagonal; the first ones of all cells come first.
static void fill_grid_indices(uint16_t* out, uint32_t side)
{
    for (uint32_t half = 0; half < 2; ++half)
        for (uint32_t i = 0; i + 1 < side; ++i)
            for (uint32_t j = 0; j + 1 < side; ++j) {
                const uint32_t k = i * side + j;
                if (half == 0)
                    append_triangle(out, k, k + 1, k + side + 1);
                else
                    append_triangle(out, k, k + side + 1, k + side);
            }
}

// Vertex (i, j) stands at (i, 0, j). Coordinates go in steps of 1 / side, so that the
// last vertex stays short of 1 (on purpose).
static void fill_grid_vertices(mesh_arrays& mesh, uint32_t side)
{
    for (uint32_t k = 0; k < side * side; ++k) {
        const uint32_t i = k / side;
        const uint32_t j = k % side;
        mesh.positions[3 * k] = static_cast<float>(i);
        mesh.positions[3 * k + 2] = static_cast<float>(j);
        for (float* set : {mesh.texcoords[0], mesh.texcoords[1]}) {
            set[2 * k] = static_cast<float>(static_cast<double>(i) / side);
            set[2 * k + 1] = static_cast<float>(static_cast<double>(j) / side);
        }
    }
}

static void init_grid(mesh_arrays& mesh, uint32_t side)
{
    assert(side >= 2 && side * side <= max_water_entries);
    mesh.vertex_count = side * side;
    mesh.index_count = 6 * (side - 1) * (side - 1);
    mesh.texcoord_sets = 2;
    mesh.positions = allocate_cleared<float>(size_t{mesh.vertex_count} * 3);
    mesh.texcoords[0] = allocate_cleared<float>(size_t{mesh.vertex_count} * 2);
    mesh.texcoords[1] = allocate_cleared<float>(size_t{mesh.vertex_count} * 2);
    mesh.normals = allocate_cleared<float>(size_t{mesh.vertex_count} * 3);
    mesh.indices = allocate_cleared<uint16_t>(mesh.index_count);
    if (mesh.positions == nullptr || mesh.texcoords[0] == nullptr || mesh.texcoords[1] == nullptr
        || mesh.indices == nullptr)
        return;
    fill_grid_vertices(mesh, side);
    fill_grid_indices(mesh.indices, side);
}

// ---- what both lakes share ---------------------------------------------------------------

// Whether the time has come to step. A jump of two or more, either way, only moves the
// clock along, so that a surface that was out of sight is at most one step behind.
static bool water_step_due(water_state& water, double time)
{
    assert(std::isfinite(time));
    if (time >= water.last + 2.0 || time <= water.last - 2.0) {
        water.last = truncate_to_int(time);
        return false;
    }
    return time >= water.last + 1.0;
}

static void begin_water_step(water_state& water, double time, uint32_t entries)
{
    assert(entries <= max_water_entries);
    std::copy_n(water.fields[1], entries, water.fields[0]);
    water.last = truncate_to_int(time);
    std::swap_ranges(water.fields[1], water.fields[1] + entries, water.fields[2]);
}

static void clear_border_columns(int32_t* field, uint32_t side)
{
    for (uint32_t i = 0; i < side; ++i) {
        field[i * side] = 0;
        field[i * side + side - 1] = 0;
    }
}

// An entry somewhere on the surface; drops may fall on each other and on the border.
static uint32_t random_entry(uint32_t entries)
{
    const auto entry = static_cast<uint32_t>(random_unit() * entries);
    assert(entry < entries);
    return entry;
}

// How far the time is past the last step.
static double water_phase(const water_state& water, double time)
{
    const double f = std::fabs(time - water.last);
    return f > 1.0 ? f - std::trunc(f) : f;
}

// The fields are read by their place, although the last two change places at every step.
static double blended_height(const water_state& water, uint32_t k, double f)
{
    return (water.fields[1][k] * 0.5 + water.fields[2][k] * f * 0.5 + water.fields[0][k] * (1.0 - f) * 0.5) * 0.2;
}

void init_lake(mesh_effect& effect, uint32_t side)
{
    effect.state = allocate_cleared<water_state>(1);
    init_grid(effect.mesh, side);
}

// ---- "Lake water": the discrete wave equation --------------------------------------------

// Sums are 64 bits wide and stored as their low 32, so that no height can overflow.
static void spread_wave(const int32_t* a, int32_t* b, uint32_t side)
{
    for (uint32_t k = side; k < side * side - side; ++k) {
        const int64_t around = int64_t{a[k - 1]} + a[k + 1] + a[k - side] + a[k + side];
        b[k] = static_cast<int32_t>((around >> 1) - b[k]);
        b[k] -= b[k] >> 5;
        if (b[k] > 4.8) // what passes 4.8 falls to 4, not to 4.8; troughs have no limit (on purpose)
            b[k] = 4;
    }
    clear_border_columns(b, side);
}

void step_lake(mesh_effect& effect, float time)
{
    assert(effect.state != nullptr && effect.mesh.vertex_count == lake_side * lake_side);
    water_state& water = *static_cast<water_state*>(effect.state);
    const double t = static_cast<double>(time);
    constexpr uint32_t entries = lake_side * lake_side;
    if (water_step_due(water, t)) {
        begin_water_step(water, t, entries);
        spread_wave(water.fields[1], water.fields[2], lake_side);
        for (const int32_t depth : {-6, -5, -6, -5})
            water.fields[1][random_entry(entries)] = depth;
    }

    const double f = water_phase(water, t);
    for (uint32_t k = 0; k < entries; ++k)
        effect.mesh.positions[3 * k + 1] = to_single(blended_height(water, k, f));
    recompute_normals(effect.mesh);
}

// ---- "Lake water 2": a damped grid of springs --------------------------------------------

constexpr int32_t fastest_spring = 20;
constexpr int32_t steps_per_drop = 6;
constexpr int32_t drop_height = 6;

// One pass in place: an entry already sees its left and upper neighbours moved. The
// height moves by the whole velocity, which is limited only afterwards.
static void pull_springs(int32_t* heights, int32_t* velocities, uint32_t side)
{
    for (uint32_t k = side; k < side * side - side; ++k) {
        const int64_t around = int64_t{heights[k - 1]} + heights[k + 1] + heights[k - side] + heights[k + side];
        const int64_t pull = around / 4 - heights[k] + velocities[k];
        const int32_t velocity = truncate_to_int(static_cast<double>(pull) * 0.99);
        heights[k] = static_cast<int32_t>(int64_t{heights[k]} + velocity);
        velocities[k] = std::clamp(velocity, -fastest_spring, fastest_spring);
    }
    clear_border_columns(velocities, side);
}

void step_lake_2(mesh_effect& effect, float time)
{
    assert(effect.state != nullptr && effect.mesh.vertex_count == lake_2_side * lake_2_side);
    water_state& water = *static_cast<water_state*>(effect.state);
    const double t = static_cast<double>(time);
    constexpr uint32_t entries = lake_2_side * lake_2_side;
    if (water_step_due(water, t)) {
        begin_water_step(water, t, entries);
        pull_springs(water.fields[1], water.fields[2], lake_2_side);
        if (++water.step_count == steps_per_drop) {
            water.step_count = 0;
            water.fields[1][random_entry(entries)] = drop_height;
        }
    }

    // Whole heights only, on purpose: the surface has steps. It mostly stands still so,
    // and its normals with it.
    const double f = water_phase(water, t);
    for (uint32_t k = 0; k < entries; ++k) {
        float& height = effect.mesh.positions[3 * k + 1];
        const float whole = static_cast<float>(truncate_to_int(blended_height(water, k, f)));
        water.normals_made = water.normals_made && whole == height;
        height = whole;
    }
    if (!water.normals_made)
        recompute_normals(effect.mesh);
    water.normals_made = true;
}

// ---- "Centerwave water": a circular wave by formula --------------------------------------

constexpr double wave_radius = 14.0;

void init_centerwave(mesh_effect& effect)
{
    auto* state = allocate_cleared<centerwave_state>(1);
    if (state != nullptr)
        state->last = -1.0f;
    effect.state = state;
    init_grid(effect.mesh, lake_side);
}

static double centerwave_height(int32_t a, int32_t b, double time)
{
    const double d = std::sqrt(static_cast<double>(a * a + b * b));
    if (d > wave_radius)
        return 0.0;
    const int32_t steps = truncate_to_int((d - time) * steps_per_radian);
    return (wave_radius - d) * 0.1 * static_cast<double>(cosine_at(steps));
}

void step_centerwave(mesh_effect& effect, float time)
{
    assert(effect.state != nullptr && effect.mesh.vertex_count == lake_side * lake_side);
    assert(cosine_table[0] == 1.0f); // build_cosine_table was called
    centerwave_state& state = *static_cast<centerwave_state*>(effect.state);
    const double t = static_cast<double>(time);
    if (std::fabs(t - static_cast<double>(state.last)) < 0.01)
        return;
    state.last = time;

    constexpr int32_t side = lake_side;
    for (int32_t i = 0; i < side; ++i)
        for (int32_t j = 0; j < side; ++j)
            effect.mesh.positions[3 * (i * side + j) + 1]
                = static_cast<float>(centerwave_height(i - side / 2, j - side / 2, t));
    recompute_normals(effect.mesh);
}
