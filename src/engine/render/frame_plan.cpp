#include "render/frame_plan.h"

#include "content/matrix.h"
#include "render/material_state.h"
#include "render/scene_plan.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <cstring>

constexpr float near_distance = 0.1f;

namespace {

// A copy and how it was turned. Where it stands is in its last column alone, how it is turned and
// scaled in the others and in the normal matrix.
struct turned_copy {
    copy_transform copy;
    float rotation[3];
    float scale[3];
    bool facing_camera;
    bool has_columns; // the first three columns hold
    bool has_normals; // the normal matrix holds
};

// What the meshes of one layer share while they are planned.
struct planning {
    const layer_plan& layer;
    const draw_context& context;
    standing_state& standing;
    frame& f;
    uint32_t view;                  // index of the layer's view
    uint32_t material;              // index of what stands in frame.materials; no_index: to be written down
    const material_record* applied; // the last one, while nothing else has changed what stands
    uint32_t numbers;               // that it was applied with
    alignas(16) turned_copy turned; // the last copy: most have the turn of the one before
};

} // namespace

static void add_command(frame& f, command_kind kind, size_t list_size)
{
    assert(list_size > 0 && kind <= command_draw);
    f.commands.push_back({kind, static_cast<uint32_t>(list_size - 1)});
}

// ---- targets, clearing --------------------------------------------------------------

// Copies the lower left corner of the frame buffer into a target's texture.
static void plan_copy(const layer_plan& layer, const document& d, standing_state& standing, frame& f)
{
    const image_texture* target = table_get(d.image_texture_table, layer.flush_texture);
    if (target == nullptr)
        return;
    bind_flat_texture(standing, target->texture);
    f.texture_copies.push_back({target->texture, layer.flush_width, layer.flush_height});
    add_command(f, command_copy, f.texture_copies.size());
}

// The record of a target says what its texture will be once the command has been carried out.
static void make_target(image_texture& target, const recreate_command& command)
{
    assert(command.texture != 0 && command.width > 0 && command.height > 0);
    std::free(target.pixels);
    target.pixels = nullptr;
    target.format = recreated_target_format;
    target.components = 3;
    target.width = command.width;
    target.height = command.height;
    target.texture = command.texture;
}

static void plan_recreation(const layer_plan& layer, const document& d, standing_state& standing, frame& f)
{
    image_texture* target = table_get(d.image_texture_table, layer.target);
    if (layer.recreate_width == 0 || target == nullptr)
        return;
    forget_texture(standing, target->texture);
    bind_flat_texture(standing, layer.recreate_texture);
    f.recreations.push_back({target->texture, layer.recreate_texture, layer.recreate_width, layer.recreate_height});
    add_command(f, command_recreate, f.recreations.size());
    make_target(*target, f.recreations.back());
}

static void add_viewport(const standing_state& standing, const frame_tile& tile, frame& f)
{
    const bool cut = tile.width != 0 && standing.viewport_on_screen;
    f.viewports.push_back({cut ? tile.width : standing.viewport_width, cut ? tile.height : standing.viewport_height});
    add_command(f, command_viewport, f.viewports.size());
}

static void plan_viewport(const layer_plan& layer, const frame_tile& tile, standing_state& standing, frame& f)
{
    if (layer.viewport_width == 0)
        return;
    standing.viewport_width = layer.viewport_width;
    standing.viewport_height = layer.viewport_height;
    standing.viewport_on_screen = layer.target == 0;
    add_viewport(standing, tile, f);
}

// A first layer that keeps the viewport has that of the frame before, which may have been passed
// unseen, or drawn in tiles.
static void plan_kept_viewport(
    const layer_plan& first_layer, const frame_tile& tile, const standing_state& standing, frame& f)
{
    if (first_layer.viewport_width == 0 && standing.viewport_width != 0)
        add_viewport(standing, tile, f);
}

static clear_command clear_with(uint8_t bits, const standing_state& standing)
{
    clear_command clear = {bits, {}};
    std::copy_n(standing.clear_color, 4, clear.color);
    return clear;
}

// A layer's clear colour takes effect at the next clear, not at its own.
static void plan_clearing(const layer_plan& layer, standing_state& standing, frame& f)
{
    if (layer.clear != clear_nothing) {
        f.clears.push_back(clear_with(layer.clear, standing));
        add_command(f, command_clear, f.clears.size());
    }
    std::copy_n(layer.clear_color, 3, standing.clear_color);
    standing.clear_color[3] = 1.0f;
}

clear_command plan_clear_screen(const standing_state& standing)
{
    return clear_with(clear_color | clear_depth, standing);
}

// ---- projection, camera ---------------------------------------------------------------

// Spreads the tile's part of the projected picture over the whole of it: in clip space
// x' = (W / w) x + ((W - 2 left) / w - 1) w_clip, and y alike.
static void cut_projection(const frame_view& view, float projection[16])
{
    assert(view.tile.width > 0 && view.tile.height > 0);
    const double widths[2] = {static_cast<double>(view.width), static_cast<double>(view.height)};
    const double parts[2] = {static_cast<double>(view.tile.width), static_cast<double>(view.tile.height)};
    const double begins[2] = {static_cast<double>(view.tile.x), static_cast<double>(view.tile.y)};
    for (uint32_t row = 0; row < 2; ++row) {
        const double scale_by = widths[row] / parts[row];
        const double shift = (widths[row] - 2.0 * begins[row]) / parts[row] - 1.0;
        for (uint32_t column = 0; column < 4; ++column) {
            float& cell = projection[column * 4 + row];
            const double w = static_cast<double>(projection[column * 4 + 3]);
            cell = static_cast<float>(static_cast<double>(cell) * scale_by + w * shift);
        }
    }
}

static void plan_projection_matrix(const layer_plan& layer, float projection[16])
{
    assert(layer.projection <= projection_orthographic);
    switch (static_cast<projection_kind>(layer.projection)) {
    case projection_kept:
        return;
    case projection_perspective:
        return set_perspective(projection, layer.fov, layer.aspect, near_distance, layer.far_distance);
    case projection_orthographic: // (0, 0) is the top left corner
        return set_orthographic(projection, 0.0f, 1.0f, 1.0f, 0.0f, -1.0f, 1.0f);
    }
}

static uint32_t add_view(const layer_plan& layer, const frame_view& view, standing_state& standing, frame& f)
{
    plan_projection_matrix(layer, standing.projection);
    view_state seen;
    copy_matrix(standing.projection, seen.projection);
    if (view.tile.width != 0 && layer.target == 0)
        cut_projection(view, seen.projection);
    copy_matrix(identity, seen.camera);
    rotate_z(seen.camera, layer.rotation[2]);
    rotate_x(seen.camera, layer.rotation[0]);
    rotate_y(seen.camera, layer.rotation[1]);
    translate(seen.camera, layer.position[0], layer.position[1], layer.position[2]);
    f.views.push_back(seen);
    return static_cast<uint32_t>(f.views.size() - 1);
}

// ---- materials --------------------------------------------------------------------------

static void upload_pictures(planning& p, const mesh_to_draw& mesh)
{
    assert(size_t{mesh.fresh} + mesh.fresh_count <= p.f.pictures.size());
    for (uint32_t i = 0; i < mesh.fresh_count; ++i) {
        const fresh_picture& fresh = p.f.pictures[mesh.fresh + i];
        assert(fresh.texture != nullptr && fresh.pixels <= p.f.pixels.size());
        bind_flat_texture(p.standing, fresh.texture->texture);
        p.f.uploads.push_back({fresh.texture, fresh.pixels});
        add_command(p.f, command_upload, p.f.uploads.size());
        p.applied = nullptr;
    }
}

// A null material changes nothing.
static void apply_material(planning& p, const mesh_to_draw& mesh)
{
    const material_record* material = mesh.material;
    if (material == nullptr || (material == p.applied && mesh.numbers == p.numbers))
        return;
    assert(p.view < p.f.views.size());
    assert(mesh.numbers < p.f.numbers.size());
    const material_numbers& numbers = p.f.numbers[mesh.numbers];
    const material_context context = {
        .d = p.context.d,
        .caps = &p.context.caps,
        .camera_angles = {p.layer.rotation[1], p.layer.rotation[0]},
        .modelview = p.f.views[p.view].camera,
    };
    if (p.context.glsl)
        apply_material_glsl(*material, numbers, context, p.standing);
    else
        apply_material_fixed(*material, numbers, context, p.standing);
    p.applied = material;
    p.numbers = mesh.numbers;
    p.material = no_index;
}

// Writes down what stands, once for all meshes that are drawn with it.
static void write_state(planning& p)
{
    if (p.material != no_index)
        return;
    const material_state& material = p.standing.material;
    p.f.materials.insert(p.f.materials.end(), &material, &material + 1); // as bytes in one go
    p.material = static_cast<uint32_t>(p.f.materials.size() - 1);
    if (p.context.glsl)
        p.f.programs.insert(p.f.programs.end(), &p.standing.program, &p.standing.program + 1);
    assert(p.f.programs.size() == (p.context.glsl ? p.f.materials.size() : 0)); // they have the same numbers
}

// ---- vertex arrays ------------------------------------------------------------------------

static bool buffers_used(const planning& p)
{
    return p.context.caps.vbo == 1;
}

static array_source own_array(const void* data, uint32_t buffer, bool use_buffer)
{
    return use_buffer && buffer != 0 ? array_source{nullptr, buffer, false} : array_source{data, 0, false};
}

static const float* address_of(const frame& f, const float* live, size_t kept)
{
    assert(kept == not_kept || kept < f.vertices.size());
    return kept == not_kept ? live : f.vertices.data() + kept;
}

// Moved vertices stand in memory, or in the buffers for them, filled anew for every mesh.
static void choose_moved_vertices(planning& p, const moved_vertices& moved, draw_command& draw)
{
    const float* positions = address_of(p.f, moved.positions, moved.kept_positions);
    const float* normals = address_of(p.f, moved.normals, moved.kept_normals);
    assert(positions != nullptr && moved.vertex_count > 0);
    if (!buffers_used(p) || !moved.streamed) {
        draw.positions = {positions, 0, false};
        draw.normals = {normals, 0, false};
        return;
    }
    p.f.vertex_uploads.push_back({positions, normals, moved.vertex_count});
    add_command(p.f, command_vertices, p.f.vertex_uploads.size());
    draw.positions = {nullptr, 0, true};
    draw.normals = {nullptr, 0, normals != nullptr};
}

static void choose_vertices(planning& p, const mesh_to_draw& mesh, draw_command& draw)
{
    if (mesh.moved != no_index)
        return choose_moved_vertices(p, listed(p.f.moved, mesh.moved), draw);
    draw.positions = own_array(mesh.mesh->positions, mesh.mesh->position_buffer, buffers_used(p));
    draw.normals = own_array(mesh.mesh->normals, mesh.mesh->normal_buffer, buffers_used(p));
}

// Coordinate sets of the three units: a mesh with one set gives it to all, with two unit 2
// takes the second (unit 3 the first), with three each its own. None where the mesh has
// none: its vertices all have the coordinates (0, 0).
static void choose_coordinates(const planning& p, const mesh_arrays& mesh, draw_command& draw)
{
    const uint32_t sets = std::min(mesh.texcoord_sets, max_texcoord_sets);
    for (uint32_t unit = 0; unit < texture_unit_count && sets > 0; ++unit) {
        const uint32_t set = unit < sets ? unit : 0;
        draw.coordinates[unit] = own_array(mesh.texcoords[set], mesh.texcoord_buffer[set], buffers_used(p));
    }
}

// The lines of a wireframe go into a buffer of their own at their first use, from which they
// are drawn afterwards.
static void choose_lines(planning& p, mesh_arrays& mesh, draw_command& draw)
{
    if (mesh.line_indices == nullptr)
        generate_line_index_array(mesh);
    draw.lines = true;
    draw.index_count = mesh.line_indices == nullptr ? 0 : mesh.index_count / 3 * 6;
    draw.indices = own_array(mesh.line_indices, mesh.line_index_buffer, buffers_used(p));
    if (!buffers_used(p) || mesh.index_buffer == 0 || mesh.line_index_buffer != 0 || mesh.line_indices == nullptr)
        return;
    p.f.line_uploads.push_back({&mesh});
    add_command(p.f, command_lines, p.f.line_uploads.size());
}

static void choose_elements(planning& p, const mesh_to_draw& mesh, draw_command& draw)
{
    const bool wireframe = mesh.material != nullptr && mesh.material->wireframe != 0;
    if (draw.program != no_index && wireframe)
        return choose_lines(p, *mesh.mesh, draw);
    draw.index_count = mesh.mesh->index_count;
    draw.indices = own_array(mesh.mesh->indices, mesh.mesh->index_buffer, buffers_used(p));
}

// ---- copies -------------------------------------------------------------------------------

static bool is_turned_alike(const turned_copy& turned, const placement& place, bool facing_camera)
{
    return turned.has_columns && turned.facing_camera == facing_camera
        && std::memcmp(turned.rotation, place.rotation, sizeof place.rotation) == 0
        && std::memcmp(turned.scale, place.scale, sizeof place.scale) == 0;
}

// The first three columns of camera x the placement's transform.
static void turn_copy(const planning& p, const placement& place, bool facing_camera, turned_copy& turned)
{
    float* modelview = turned.copy.modelview;
    copy_matrix(p.f.views[p.view].camera, modelview);
    if (facing_camera) {
        rotate_y(modelview, -p.layer.rotation[1]);
        rotate_x(modelview, -p.layer.rotation[0]);
        rotate_z(modelview, -p.layer.rotation[2]);
    }
    turn_and_scale(modelview, place.rotation, place.scale);
    std::copy_n(place.rotation, 3, turned.rotation);
    std::copy_n(place.scale, 3, turned.scale);
    turned.facing_camera = facing_camera;
    turned.has_columns = true;
    turned.has_normals = false;
}

// modelview = camera x the placement's transform.
static void transform_copies(planning& p, const mesh_to_draw& mesh, draw_command& draw)
{
    assert(size_t{mesh.first_placement} + mesh.placement_count <= p.f.placements.size());
    draw.first_copy = static_cast<uint32_t>(p.f.copies.size());
    draw.copy_count = mesh.placement_count;
    const bool turns_normals = draw.program != no_index && p.standing.program.normal_matrix >= 0;
    const float* camera = p.f.views[p.view].camera;
    turned_copy& turned = p.turned;
    for (uint32_t i = 0; i < mesh.placement_count; ++i) {
        const placement& place = p.f.placements[mesh.first_placement + i];
        if (!is_turned_alike(turned, place, mesh.facing_camera))
            turn_copy(p, place, mesh.facing_camera, turned);
        if (turns_normals && !turned.has_normals) {
            compute_normal_matrix(turned.copy.modelview, turned.copy.normal_matrix);
            turned.has_normals = true;
        }
        const float position[3] = {place.position[0] + mesh.pen, place.position[1], place.position[2]};
        transform_origin(camera, position, turned.copy.modelview + 12);
        p.f.copies.push_back(turned.copy);
    }
}

// ---- meshes -------------------------------------------------------------------------------

static bool has_triangles(const mesh_arrays& mesh)
{
    return mesh.vertex_count != 0 && mesh.positions != nullptr && mesh.index_count != 0 && mesh.indices != nullptr;
}

// On the shader path a mesh is drawn by the fixed pipeline as long as no material has
// chosen a program, and not at all with a program that did not build.
static void plan_draw(planning& p, uint32_t index)
{
    const mesh_to_draw& mesh = p.f.meshes[index];
    const uint8_t status = p.context.glsl ? p.standing.program.status : uint8_t{program_never};
    if (status == program_failed || mesh.placement_count == 0)
        return;
    write_state(p);
    assert(p.material < p.f.materials.size());
    draw_command draw = {};
    draw.mesh = index;
    draw.view = p.view;
    draw.material = p.material;
    draw.program = status == program_ready ? static_cast<uint32_t>(p.f.programs.size() - 1) : no_index;

    choose_vertices(p, mesh, draw);
    choose_coordinates(p, *mesh.mesh, draw);
    choose_elements(p, mesh, draw);
    transform_copies(p, mesh, draw);
    p.f.draws.push_back(draw);
    add_command(p.f, command_draw, p.f.draws.size());
}

// A mesh without triangles (a swarm is one) draws nothing, but its material is applied:
// a later mesh without a material is drawn with the state as it stands.
static void plan_mesh(planning& p, uint32_t index)
{
    const mesh_to_draw& mesh = p.f.meshes[index];
    assert(mesh.mesh != nullptr);
    upload_pictures(p, mesh);
    apply_material(p, mesh);
    if (has_triangles(*mesh.mesh))
        plan_draw(p, index);
}

void plan_layer_commands(const layer_plan& layer, uint32_t first_mesh, uint32_t end_mesh, const draw_context& context,
    const frame_view& view, standing_state& standing, frame& f)
{
    assert(context.d != nullptr && first_mesh <= end_mesh && end_mesh <= f.meshes.size());
    if (layer.flush_texture != 0)
        plan_copy(layer, *context.d, standing, f);
    plan_recreation(layer, *context.d, standing, f);
    plan_viewport(layer, view.tile, standing, f);
    plan_clearing(layer, standing, f);
    standing.material.depth_test = layer.depth_test != 0;
    planning p = {layer, context, standing, f, add_view(layer, view, standing, f), no_index, nullptr, no_index, {}};
    for (uint32_t i = first_mesh; i < end_mesh; ++i)
        plan_mesh(p, i);
}

void plan_frame(const frame_layers& layers, const draw_context& context, const frame_view& view, renderer& r,
    frame_cost_record* costs)
{
    assert(layers.layer_count <= track_count);
    clear_planned(r.f);
    if (layers.layer_count != 0)
        plan_kept_viewport(layers.layers[0], view.tile, r.standing, r.f);
    for (uint32_t i = 0; i < layers.layer_count; ++i) {
        const auto begin = start_cost(costs);
        const uint32_t first = i == 0 ? 0 : r.f.mesh_end[i - 1];
        plan_layer_commands(layers.layers[i], first, r.f.mesh_end[i], context, view, r.standing, r.f);
        r.f.command_end[i] = static_cast<uint32_t>(r.f.commands.size());
        add_cost(costs, i, begin);
    }
}
