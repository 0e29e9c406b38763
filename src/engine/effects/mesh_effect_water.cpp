#include "content/numbers.h"
#include "effects/mesh_effect_kinds.h"
#include "effects/normal_kernels.h"
#include "effects/water_kernels.h"
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

static_assert(lake_side <= max_grid_side && lake_2_side <= max_grid_side);

static bool has_heights(const mesh_arrays& mesh, const float* heights)
{
    for (uint32_t k = 0; k < mesh.vertex_count; ++k)
        if (mesh.positions[3 * k + 1] != heights[k])
            return false;
    return true;
}

// Heights of all vertices, and the normals that belong to them.
static void set_heights(mesh_arrays& mesh, const float* heights, uint32_t side)
{
    assert(mesh.vertex_count == side * side && mesh.normals != nullptr);
    for (uint32_t k = 0; k < side * side; ++k)
        mesh.positions[3 * k + 1] = heights[k];
    compute_grid_normals(best_instructions(), heights, side, mesh.normals);
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
static water_fields fields_of(const water_state& water)
{
    return {.before = water.fields[0], .heights = {water.fields[1], water.fields[2]}};
}

void init_lake(mesh_effect& effect, uint32_t side)
{
    effect.state = allocate_cleared<water_state>(1);
    init_grid(effect.mesh, side);
}

// ---- "Lake water": the discrete wave equation --------------------------------------------

// What passes 4.8 falls to 4, not to 4.8; troughs have no limit (on purpose).
static void spread_wave(const int32_t* a, int32_t* b, uint32_t side)
{
    spread_wave_entries(best_instructions(), a + side, b + side, side, side * side - 2 * side);
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

    float heights[entries];
    blend_heights(best_instructions(), fields_of(water), water_phase(water, t), entries, heights);
    set_heights(effect.mesh, heights, lake_side);
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
    float heights[entries];
    blend_whole_heights(best_instructions(), fields_of(water), water_phase(water, t), entries, heights);
    if (!water.normals_made || !has_heights(effect.mesh, heights))
        set_heights(effect.mesh, heights, lake_2_side);
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

// The height at a distance of the square root of `squares`.
static float centerwave_height(int32_t squares, double time)
{
    const double d = std::sqrt(static_cast<double>(squares));
    if (d > wave_radius)
        return 0.0f;
    const int32_t steps = truncate_to_int((d - time) * steps_per_radian);
    return static_cast<float>((wave_radius - d) * 0.1 * static_cast<double>(cosine_at(steps)));
}

// Vertices at the same distance have the same height: it is computed where the offsets are 0 <= b <= a, an eighth.
void step_centerwave(mesh_effect& effect, float time)
{
    assert(effect.state != nullptr && effect.mesh.vertex_count == lake_side * lake_side);
    assert(cosine_table[0] == 1.0f); // build_cosine_table was called
    centerwave_state& state = *static_cast<centerwave_state*>(effect.state);
    const double t = static_cast<double>(time);
    if (std::fabs(t - static_cast<double>(state.last)) < 0.01)
        return;
    state.last = time;

    constexpr int32_t center = lake_side / 2;
    float eighth[center + 1][center + 1];
    for (int32_t a = 0; a <= center; ++a)
        for (int32_t b = 0; b <= a; ++b)
            eighth[a][b] = centerwave_height(a * a + b * b, t);
    float heights[lake_side * lake_side];
    for (int32_t i = 0; i < 2 * center; ++i)
        for (int32_t j = 0; j < 2 * center; ++j) {
            const int32_t a = std::abs(i - center);
            const int32_t b = std::abs(j - center);
            heights[2 * center * i + j] = eighth[std::max(a, b)][std::min(a, b)];
        }
    set_heights(effect.mesh, heights, lake_side);
}
