#include "tools/preview/picture_outline.h"

#include <algorithm>
#include <cmath>

namespace {

struct extremes {
    float least[2] = {INFINITY, INFINITY}; // x, y of -1..1, y upward
    float most[2] = {-INFINITY, -INFINITY};
};

struct corners {
    const float* positions;
    uint32_t count;
};

} // namespace

// The corners that a mesh is drawn with: its own, or where they were moved to.
static corners corners_of(const frame& f, const mesh_to_draw& mesh)
{
    if (mesh.moved == no_index)
        return {mesh.mesh->positions, mesh.mesh->vertex_count};
    const moved_vertices& moved = listed(f.moved, mesh.moved);
    const bool kept = moved.kept_positions != not_kept;
    return {kept ? f.vertices.data() + moved.kept_positions : moved.positions, moved.vertex_count};
}

static void multiply(const float a[16], const float b[16], float product[16])
{
    for (int column = 0; column < 4; ++column)
        for (int row = 0; row < 4; ++row) {
            float sum = 0;
            for (int k = 0; k < 4; ++k)
                sum += a[k * 4 + row] * b[column * 4 + k];
            product[column * 4 + row] = sum;
        }
}

// Points behind the near plane are left out.
static void add_corners(extremes& e, const corners& c, const float seen[16])
{
    for (uint32_t n = 0; n < c.count; ++n) {
        const float* at = c.positions + size_t{n} * 3;
        float clip[4];
        for (int row = 0; row < 4; ++row)
            clip[row] = seen[row] * at[0] + seen[4 + row] * at[1] + seen[8 + row] * at[2] + seen[12 + row];
        if (!(clip[3] > 0) || clip[2] < -clip[3])
            continue;
        for (int axis = 0; axis < 2; ++axis) {
            e.least[axis] = std::min(e.least[axis], clip[axis] / clip[3]);
            e.most[axis] = std::max(e.most[axis], clip[axis] / clip[3]);
        }
    }
}

static void add_draw(extremes& e, const frame& f, const draw_command& draw)
{
    const corners c = corners_of(f, listed(f.meshes, draw.mesh));
    if (c.positions == nullptr)
        return;
    for (uint32_t n = 0; n < draw.copy_count; ++n) {
        float seen[16];
        multiply(listed(f.views, draw.view).projection, listed(f.copies, draw.first_copy + n).modelview, seen);
        add_corners(e, c, seen);
    }
}

static void add_layer(extremes& e, const frame& f, size_t from, size_t end, uint32_t object)
{
    for (size_t n = from; n < std::min(end, f.commands.size()); ++n) {
        if (f.commands[n].kind != command_draw)
            continue;
        const draw_command& draw = listed(f.draws, f.commands[n].index);
        if (listed(f.meshes, draw.mesh).object == object)
            add_draw(e, f, draw);
    }
}

static bool is_layer_of(const layer_plan& layer, const picked_object& picked)
{
    return layer.track == picked.track && layer.layer == picked.layer && layer.model_id == picked.scene;
}

std::optional<box> outline_of(const frame& f, const frame_layers& layers, const picked_object& picked)
{
    extremes e;
    for (uint32_t n = 0; n < layers.layer_count; ++n) {
        const size_t from = n > 0 ? f.command_end[n - 1] : 0;
        if (is_layer_of(layers.layers[n], picked))
            add_layer(e, f, from, f.command_end[n], picked.object);
    }
    if (!(e.least[0] <= e.most[0] && e.least[1] <= e.most[1]))
        return {};
    return box{(e.least[0] + 1) / 2, (1 - e.most[1]) / 2, (e.most[0] - e.least[0]) / 2, (e.most[1] - e.least[1]) / 2};
}

std::optional<placement> placement_of(const frame& f, const frame_layers& layers, const picked_object& picked)
{
    for (uint32_t n = 0; n < layers.layer_count; ++n) {
        if (!is_layer_of(layers.layers[n], picked))
            continue;
        for (size_t m = n > 0 ? f.mesh_end[n - 1] : 0; m < std::min<size_t>(f.mesh_end[n], f.meshes.size()); ++m)
            if (f.meshes[m].object == picked.object && f.meshes[m].placement_count > 0)
                return listed(f.placements, f.meshes[m].first_placement);
    }
    return {};
}
