#include "tools/preview/pick.h"

#include "render/shader_source.h"

#include <algorithm>
#include <cassert>
#include <cmath>

constexpr double line_reach = 3;              // pixels beside a line that still mean it
constexpr double line_depth_slack = 0.01;     // of the distance: a line lies as deep as what it lies on
constexpr float least_strength = 1.0f / 50;   // what shows less of itself is not seen
constexpr double depth_steps = (1 << 24) - 1; // of the depth buffer
constexpr float white[4] = {1, 1, 1, 1};

namespace {

// A corner as the pixel sees it: (0, 0) is the line of sight. All four are linear in the corner's place.
struct seen_point {
    double a; // clip coordinates x and y less the pixel's own times w
    double b;
    double z;
    double w; // not above 0: behind the eye
};

// How a copy's corners come to be seen: a row of four for each of a seen point's numbers.
struct sight {
    double rows[4][4];
};

struct bounds {
    double middle[3];
    double extent[3];
};

// What the pixel gets of a triangle or a line.
struct fragment {
    double depth;  // 0 near, 1 far
    double slack;  // that it may lie deeper and still be seen
    bool is_there; // in the pixel itself, so that it hides what lies deeper
};

struct found_object {
    picked_object what;
    bool has_depth; // it was tested against what was there, and hides what lies deeper
};

// How a draw treats the pixel.
struct drawing {
    picked_object what;
    bool counts; // it draws for the screen, and enough of it shows
    bool has_depth;
    bool cull_back;
    bool as_lines;
    double line_width; // pixels
    const float* positions;
    uint32_t vertex_count;
    const uint16_t* indices;
    uint32_t index_count;
};

// The pixel while the frame is followed.
struct pixel {
    const frame& f;
    double x; // its centre, from the lower left
    double y;
    double viewport[2]; // width, height
    bool into_texture;
    double depth;                    // what its depth buffer holds
    picked_object nearest;           // who wrote that
    std::vector<found_object> found; // what is on top comes last
    std::vector<seen_point> points;  // scratch
};

} // namespace

// ---- what shows of itself ---------------------------------------------------------------------

// The colour that a generated program gives its corners. Its moving numbers are counted from the colour's first.
static void generated_color(const material_record& material, const material_numbers& numbers, float color[4])
{
    uint32_t uniform = 0;
    for (uint32_t i = 0; i < 4; ++i)
        color[i] = material.color_dynamic[i] != 0 ? numbers.uniforms[uniform++] : material.color[i];
}

static bool scales_what_is_there(uint32_t unit, uint8_t mode)
{
    if (unit == 0)
        return mode != first_ignore_alpha && mode != first_replace && mode != first_add_color;
    return mode == second_multiply_previous + (unit == 2 ? third_unit_shift : 0);
}

// Whether pictures only take from the colour: then nothing shows where the colour is nothing.
static bool units_only_scale(const mesh_to_draw& mesh, const material_state& state, bool fixed)
{
    for (uint32_t unit = 0; unit < texture_unit_count; ++unit) {
        const bool on = fixed ? state.units[unit].on : mesh.material->texture[unit] != 0;
        const uint8_t mode = fixed ? state.units[unit].combine_mode : mesh.material->combine_mode[unit];
        if (on && !scales_what_is_there(unit, mode))
            return false;
        if (!on && !fixed)
            return true; // the first empty one ends them
    }
    return true;
}

static float strength_of(const float color[4], uint8_t blending)
{
    const float brightest = std::max({color[0], color[1], color[2]});
    switch (static_cast<blend_kind>(blending)) {
    case blend_alpha:
        return color[3];
    case blend_add:
        return brightest;
    case blend_replace:
        return 1;
    case blend_premultiplied:
        return std::max(brightest, color[3]);
    case blend_subtract:
        return std::min(brightest, color[3]);
    case blend_kind_count:
        break;
    }
    return 1; // never set
}

// Only what is sure to show nothing counts as nothing; what a program of the material's own does, nobody knows.
static bool shows(const frame& f, const draw_command& draw, const mesh_to_draw& mesh)
{
    const material_state& state = listed(f.materials, draw.material);
    const bool fixed = draw.program == no_index;
    if (!fixed && (mesh.material == nullptr || has_custom_program(*mesh.material)))
        return true;
    float color[4];
    std::copy_n(state.applied ? state.color : white, 4, color);
    if (!fixed)
        generated_color(*mesh.material, listed(f.numbers, mesh.numbers), color);
    return !(strength_of(color, state.blending) < least_strength) || !units_only_scale(mesh, state, fixed);
}

// ---- what lies over what ------------------------------------------------------------------------

static bool is_same_object(const picked_object& a, const picked_object& b)
{
    return a.track == b.track && a.layer == b.layer && a.scene == b.scene && a.object == b.object;
}

static std::vector<found_object>::iterator find_object(pixel& p, const picked_object& what)
{
    return std::find_if(
        p.found.begin(), p.found.end(), [&](const found_object& f) { return is_same_object(f.what, what); });
}

static void put_on_top(pixel& p, const drawing& d, double depth)
{
    const auto known = find_object(p, d.what);
    if (known != p.found.end())
        p.found.erase(known);
    p.found.push_back({d.what, d.has_depth});
    p.found.back().what.depth = static_cast<float>(depth);
}

// Something nearer hides it: it comes below that, and below what lies between the two.
static void put_below(pixel& p, const drawing& d, double depth)
{
    if (find_object(p, d.what) != p.found.end())
        return;
    auto place = find_object(p, p.nearest);
    if (place == p.found.end())
        place = p.found.begin();
    while (place != p.found.begin() && (place - 1)->has_depth && static_cast<double>((place - 1)->what.depth) <= depth)
        --place;
    place = p.found.insert(place, {d.what, d.has_depth});
    place->what.depth = static_cast<float>(depth);
}

static double in_steps(double depth)
{
    return std::floor(depth * depth_steps + 0.5);
}

static void add_fragment(pixel& p, const drawing& d, const fragment& g)
{
    const bool passes = !d.has_depth || in_steps(g.depth - g.slack) <= in_steps(p.depth);
    if (passes && d.has_depth && g.is_there) {
        p.depth = std::min(p.depth, g.depth);
        p.nearest = d.what;
    }
    if (!d.counts)
        return;
    if (passes)
        put_on_top(p, d, g.depth);
    else
        put_below(p, d, g.depth);
}

// ---- how a copy is seen ---------------------------------------------------------------------------

// projection x modelview, less the pixel.
static sight sight_of(const pixel& p, const float projection[16], const float modelview[16])
{
    const double at[2] = {2 * p.x / p.viewport[0] - 1, 2 * p.y / p.viewport[1] - 1};
    double seen[4][4];
    for (int row = 0; row < 4; ++row) {
        for (int k = 0; k < 4; ++k) {
            const double own = static_cast<double>(projection[k * 4 + row]);
            const double w = static_cast<double>(projection[k * 4 + 3]);
            seen[row][k] = row < 2 ? own - at[row] * w : own;
        }
    }
    sight s = {};
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            for (int k = 0; k < 4; ++k)
                s.rows[row][column] += seen[row][k] * static_cast<double>(modelview[column * 4 + k]);
    return s;
}

static double along(const double row[4], const float point[3])
{
    return row[0] * static_cast<double>(point[0]) + row[1] * static_cast<double>(point[1])
        + row[2] * static_cast<double>(point[2]) + row[3];
}

static bounds bounds_of(const drawing& d)
{
    bounds box = {};
    for (uint32_t axis = 0; axis < 3; ++axis) {
        double least = INFINITY, most = -INFINITY;
        for (uint32_t v = 0; v < d.vertex_count; ++v) {
            const double value = static_cast<double>(d.positions[size_t{v} * 3 + axis]);
            least = std::min(least, value);
            most = std::max(most, value);
        }
        box.middle[axis] = (least + most) / 2;
        box.extent[axis] = (most - least) / 2;
    }
    return box;
}

// Whether `plus` x first + w x second is above 0 everywhere in the box.
static bool is_above(const bounds& box, const double first[4], double plus, const double second[4], double w)
{
    double middle = plus * first[3] + w * second[3];
    double extent = 0;
    for (int k = 0; k < 3; ++k) {
        const double slope = plus * first[k] + w * second[k];
        middle += slope * box.middle[k];
        extent += std::abs(slope) * box.extent[k];
    }
    return middle > extent;
}

// Whether the line of sight passes a box, by so many pixels at least. Says no where it is not sure.
static bool passes_by(const pixel& p, const bounds& box, const sight& s, double reach)
{
    if (is_above(box, s.rows[3], -1, s.rows[3], 0))
        return true; // behind the eye
    for (int row = 0; row < 2; ++row)
        for (const double sign : {1.0, -1.0})
            if (is_above(box, s.rows[row], sign, s.rows[3], -2 * reach / p.viewport[row]))
                return true;
    return false;
}

// ---- triangles and lines ----------------------------------------------------------------------------

// A point within the view, from the near plane to the far one.
static bool is_in_depth(double z, double w)
{
    return w > 0 && z >= -w && z <= w;
}

// The weights of the corners where the line of sight goes through are the sides' areas as seen from it; so a triangle
// that reaches behind the eye needs no cutting.
static void add_triangle(pixel& p, const drawing& d, const seen_point* const corner[3])
{
    double weight[3];
    for (int k = 0; k < 3; ++k) {
        const seen_point& from = *corner[(k + 1) % 3];
        const seen_point& to = *corner[(k + 2) % 3];
        weight[k] = from.a * to.b - to.a * from.b;
    }
    const bool front = weight[0] >= 0 && weight[1] >= 0 && weight[2] >= 0;
    const bool back = weight[0] <= 0 && weight[1] <= 0 && weight[2] <= 0;
    const double all = weight[0] + weight[1] + weight[2];
    if (front == back || all == 0 || (d.cull_back && !front)) // both: seen from its edge
        return;
    double z = 0, w = 0;
    for (int k = 0; k < 3; ++k) {
        z += weight[k] / all * corner[k]->z;
        w += weight[k] / all * corner[k]->w;
    }
    if (is_in_depth(z, w))
        add_fragment(p, d, {z / w * 0.5 + 0.5, 0, true});
}

// Whether a triangle is turned toward the eye; one of which no part is in front of it is not asked about.
static bool is_front(const seen_point* const corner[3])
{
    double volume = 0;
    for (int k = 0; k < 3; ++k) {
        const seen_point& from = *corner[(k + 1) % 3];
        const seen_point& to = *corner[(k + 2) % 3];
        volume += corner[k]->w * (from.a * to.b - to.a * from.b);
    }
    return volume > 0;
}

static seen_point between(const seen_point& from, const seen_point& to, double t)
{
    return {from.a + t * (to.a - from.a), from.b + t * (to.b - from.b), from.z + t * (to.z - from.z),
        from.w + t * (to.w - from.w)};
}

// Cuts off what lies before the near plane. False: all of it does.
static bool cut_at_near_plane(seen_point& from, seen_point& to)
{
    const double before = from.z + from.w, behind = to.z + to.w;
    if (!(before > 0 || behind > 0))
        return false;
    if (before < 0)
        from = between(from, to, before / (before - behind));
    else if (behind < 0)
        to = between(from, to, before / (before - behind));
    return from.w > 0 && to.w > 0;
}

static void add_line(pixel& p, const drawing& d, seen_point from, seen_point to)
{
    if (!cut_at_near_plane(from, to))
        return;
    const double begin[2] = {from.a / from.w * p.viewport[0] / 2, from.b / from.w * p.viewport[1] / 2};
    const double end[2] = {to.a / to.w * p.viewport[0] / 2, to.b / to.w * p.viewport[1] / 2};
    const double along_line[2] = {end[0] - begin[0], end[1] - begin[1]};
    const double square = along_line[0] * along_line[0] + along_line[1] * along_line[1];
    const double dot = -(begin[0] * along_line[0] + begin[1] * along_line[1]);
    const double t = square > 0 ? std::clamp(dot / square, 0.0, 1.0) : 0;
    const double distance = std::hypot(begin[0] + t * along_line[0], begin[1] + t * along_line[1]);
    const double z = (1 - t) * (from.z / from.w) + t * (to.z / to.w);
    if (!(distance <= std::max(line_reach, d.line_width / 2)) || !is_in_depth(z, 1))
        return;
    const double depth = z * 0.5 + 0.5;
    add_fragment(p, d, {depth, line_depth_slack * (1 - depth), distance <= d.line_width / 2});
}

static void add_corners(pixel& p, const drawing& d, const sight& s)
{
    p.points.resize(d.vertex_count);
    for (uint32_t v = 0; v < d.vertex_count; ++v) {
        const float* at = d.positions + size_t{v} * 3;
        p.points[v] = {along(s.rows[0], at), along(s.rows[1], at), along(s.rows[2], at), along(s.rows[3], at)};
    }
}

static bool has_corners(const drawing& d, const uint16_t* index, uint32_t count)
{
    return std::all_of(index, index + count, [&](uint16_t i) { return i < d.vertex_count; });
}

static void add_edges(pixel& p, const drawing& d, const seen_point* const corner[3])
{
    if (d.cull_back && !is_front(corner))
        return;
    for (int k = 0; k < 3; ++k)
        add_line(p, d, *corner[k], *corner[(k + 1) % 3]);
}

static void add_triangles(pixel& p, const drawing& d)
{
    for (uint32_t i = 0; i + 3 <= d.index_count; i += 3) {
        const uint16_t* index = d.indices + i;
        if (!has_corners(d, index, 3))
            continue;
        const seen_point* const corner[3] = {&p.points[index[0]], &p.points[index[1]], &p.points[index[2]]};
        if (d.as_lines)
            add_edges(p, d, corner);
        else
            add_triangle(p, d, corner);
    }
}

static void add_lines(pixel& p, const drawing& d)
{
    for (uint32_t i = 0; i + 2 <= d.index_count; i += 2)
        if (has_corners(d, d.indices + i, 2))
            add_line(p, d, p.points[d.indices[i]], p.points[d.indices[i + 1]]);
}

// ---- draws ----------------------------------------------------------------------------------------

// The corners that a mesh is drawn with: its own, or where they were moved to.
static void find_corners(const frame& f, const mesh_to_draw& mesh, drawing& d)
{
    d.positions = mesh.mesh->positions;
    d.vertex_count = mesh.mesh->vertex_count;
    if (mesh.moved == no_index)
        return;
    const moved_vertices& moved = listed(f.moved, mesh.moved);
    d.positions = moved.kept_positions == not_kept ? moved.positions : f.vertices.data() + moved.kept_positions;
    d.vertex_count = moved.vertex_count;
}

static drawing drawing_of(const pixel& p, const draw_command& draw, const layer_plan& layer)
{
    const mesh_to_draw& mesh = listed(p.f.meshes, draw.mesh);
    const material_state& state = listed(p.f.materials, draw.material);
    drawing d = {};
    d.what = {layer.track, layer.layer, layer.model_id, mesh.object, 0};
    d.counts = !p.into_texture && shows(p.f, draw, mesh);
    d.has_depth = state.depth_test;
    d.cull_back = state.cull_back;
    d.as_lines = draw.lines || (draw.program == no_index && state.wireframe);
    d.line_width = std::max(1.0, static_cast<double>(state.line_width));
    find_corners(p.f, mesh, d);
    d.indices = draw.lines ? mesh.mesh->line_indices : mesh.mesh->indices;
    d.index_count = d.positions == nullptr || d.indices == nullptr ? 0 : draw.index_count;
    return d;
}

static void follow_draw(pixel& p, const draw_command& draw, const layer_plan& layer)
{
    const drawing d = drawing_of(p, draw, layer);
    if (d.index_count == 0 || p.x > p.viewport[0] || p.y > p.viewport[1])
        return;
    const float* projection = listed(p.f.views, draw.view).projection;
    const double reach = d.as_lines ? std::max(line_reach, d.line_width / 2) : 0;
    const bool has_box = draw.copy_count > 1; // for one copy it costs more than it saves
    const bounds box = has_box ? bounds_of(d) : bounds{};
    for (uint32_t i = 0; i < draw.copy_count; ++i) {
        const sight s = sight_of(p, projection, listed(p.f.copies, draw.first_copy + i).modelview);
        if (has_box && passes_by(p, box, s, reach))
            continue;
        add_corners(p, d, s);
        if (draw.lines)
            add_lines(p, d);
        else
            add_triangles(p, d);
    }
}

// ---- the frame --------------------------------------------------------------------------------------

// A clear covers all of the picture, wherever the layer draws.
static void follow_clear(pixel& p, const clear_command& clear)
{
    if ((clear.bits & clear_color) != 0)
        p.found.clear();
    if ((clear.bits & clear_depth) == 0)
        return;
    p.depth = 1;
    for (found_object& found : p.found)
        found.has_depth = false; // it hides nothing any more
}

static void follow_command(pixel& p, const frame_command& command, const layer_plan& layer)
{
    switch (static_cast<command_kind>(command.kind)) {
    case command_viewport: {
        const viewport_command& viewport = listed(p.f.viewports, command.index);
        p.viewport[0] = viewport.width;
        p.viewport[1] = viewport.height;
        return;
    }
    case command_clear:
        return follow_clear(p, listed(p.f.clears, command.index));
    case command_draw:
        return follow_draw(p, listed(p.f.draws, command.index), layer);
    case command_copy:
    case command_recreate:
    case command_upload:
    case command_vertices:
    case command_lines:
        return; // nothing of it is seen at once
    }
}

std::vector<picked_object> pick(
    const frame& f, const frame_layers& layers, uint32_t width, uint32_t height, double x, double y)
{
    assert(layers.layer_count <= track_count);
    if (!(x >= 0 && y >= 0 && x < width && y < height))
        return {};
    pixel p = {.f = f,
        .x = std::floor(x) + 0.5,
        .y = height - (std::floor(y) + 0.5),
        .viewport = {static_cast<double>(width), static_cast<double>(height)},
        .into_texture = false,
        .depth = 1,
        .nearest = {},
        .found = {},
        .points = {}};
    uint32_t next = 0;
    for (uint32_t i = 0; i < layers.layer_count; ++i) {
        const layer_plan& layer = layers.layers[i];
        if (layer.target != 0 || layer.viewport_width != 0) // others draw on where the layer before did
            p.into_texture = layer.target != 0;
        for (; next < std::min<size_t>(f.command_end[i], f.commands.size()); ++next)
            follow_command(p, f.commands[next], layer);
    }
    std::vector<picked_object> found;
    for (auto object = p.found.rbegin(); object != p.found.rend(); ++object)
        found.push_back(object->what);
    return found;
}
