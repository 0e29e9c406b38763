#include "render/layer_plan.h"

#include "model/render_modes.h"
#include "model/values.h"

#include <algorithm>
#include <cassert>
#include <iterator>

// ---- render targets -------------------------------------------------------------

namespace {

struct target_size {
    uint32_t texture; // image_texture handle
    uint32_t width;   // pixels
    uint32_t height;
};

// What passes from layer to layer while a frame is planned.
struct planning {
    const document& d;
    const frame_view& view;
    const gl_caps& caps;
    uint32_t pending_texture;           // waits to be copied from the frame buffer; 0 none
    bool flushed;                       // the layer at hand copied a pending target
    bool previous_keeps;                // the active layer before holds the clear back
    target_size recreated[track_count]; // targets with a new size in this frame
    uint32_t recreated_count;
};

} // namespace

static target_size size_of_target(const planning& p, uint32_t handle, const image_texture& texture)
{
    for (uint32_t i = 0; i < p.recreated_count; ++i)
        if (p.recreated[i].texture == handle)
            return p.recreated[i];
    return {handle, texture.width, texture.height};
}

static void remember_size(planning& p, const target_size& size)
{
    for (uint32_t i = 0; i < p.recreated_count; ++i)
        if (p.recreated[i].texture == size.texture) {
            p.recreated[i] = size;
            return;
        }
    assert(p.recreated_count < std::size(p.recreated));
    p.recreated[p.recreated_count++] = size; // at most one new target a track
}

uint32_t round_target_side(uint32_t side)
{
    if (side < 128)
        return 64;
    return side < 256 ? 128 : 256;
}

// A target's side for `side` pixels of screen; never 0, so that there is always a
// texture to make.
static uint32_t fitting_side(uint32_t side, const gl_caps& caps)
{
    return caps.npot != 0 ? std::max(side, 1u) : round_target_side(side);
}

target_fit fit_target(
    const layer_record& layer, uint32_t width, uint32_t height, const frame_view& view, const gl_caps& caps)
{
    target_fit fit = {false, width, height};
    if (render_mode_of(layer.type).quarter) {
        fit.width = fitting_side(view.width / 2, caps);
        fit.height = fitting_side(view.height / 2, caps);
        fit.recreate = fit.width != width || fit.height != height;
    }
    if (fit.width > view.width || fit.height > view.height)
        fit = {true, fitting_side(view.width, caps), fitting_side(view.height, caps)};
    return fit;
}

static void plan_flush(planning& p, layer_plan& plan)
{
    const image_texture* texture = table_get(p.d.image_texture_table, p.pending_texture);
    if (texture == nullptr)
        return;
    const target_size size = size_of_target(p, p.pending_texture, *texture);
    plan.flush_texture = p.pending_texture;
    plan.flush_width = size.width;
    plan.flush_height = size.height;
    p.flushed = true;
}

static void plan_screen(planning& p, layer_plan& plan)
{
    plan_flush(p, plan);
    plan.viewport_width = p.view.width;
    plan.viewport_height = p.view.height;
    p.pending_texture = 0;
}

// Without a texture of its own the layer leaves the target as it is: a pending
// one is copied now and stays pending.
static void plan_texture_target(planning& p, const layer_record& layer, layer_plan& plan)
{
    plan_flush(p, plan);
    const image_texture* texture = table_get(p.d.image_texture_table, layer.rtex);
    if (texture == nullptr)
        return;

    const target_size size = size_of_target(p, layer.rtex, *texture);
    const target_fit fit = fit_target(layer, size.width, size.height, p.view, p.caps);
    if (fit.recreate) {
        assert(fit.width > 0 && fit.height > 0);
        plan.recreate_width = fit.width;
        plan.recreate_height = fit.height;
        remember_size(p, {layer.rtex, fit.width, fit.height});
    }
    plan.target = layer.rtex;
    plan.viewport_width = fit.width;
    plan.viewport_height = fit.height;
    p.pending_texture = layer.rtex;
}

static void plan_target(planning& p, const layer_record& layer, layer_plan& plan)
{
    p.flushed = false;
    switch (render_mode_of(layer.type).target) {
    case mode_draws_to_screen:
        return plan_screen(p, plan);
    case mode_draws_to_texture:
        return plan_texture_target(p, layer, plan);
    case mode_draws_on:
        return;
    }
}

// ---- clearing -------------------------------------------------------------------

// A mode holds the clear back only from the active layer right after it: every active layer
// overwrites the mark.
static uint8_t plan_clear(planning& p, const layer_record& layer, uint32_t track)
{
    const bool after_flush = p.flushed && !p.previous_keeps;
    p.previous_keeps = render_mode_of(layer.type).holds_back_clear;
    if (track == 0 || after_flush)
        return clear_color | clear_depth;
    return render_mode_of(layer.type).clears_depth ? clear_depth : clear_nothing;
}

// Black without a value record.
static void plan_clear_color(const document& d, const layer_record& layer, layer_plan& plan)
{
    const value_record* color = table_get(d.transform_table, layer.clearcolor);
    if (color == nullptr)
        return;
    for (uint32_t i = 0; i < 3; ++i)
        plan.clear_color[i]
            = value_at(d.function_table, color->values[3 + i], value_is_dynamic(*color, 3 + i), plan.time);
}

// ---- camera ---------------------------------------------------------------------

static void plan_camera(const document& d, const layer_record& layer, layer_plan& plan)
{
    const auto value = [&](uint32_t index) {
        return value_at(d.function_table, layer.camera[index], layer.camera_mode[index] != 0, plan.time);
    };
    for (uint32_t i = 0; i < 3; ++i)
        plan.position[i] = value(camera_x + i);
    for (uint32_t i = 0; i < 3; ++i)
        plan.rotation[i] = value(camera_rotation_x + i);
    plan.far_distance = value(camera_far);
}

// Quirk: a linked layer keeps the projection in force only when its field of view
// is constant ("a dynamic field of view sets the projection of a linked layer too").
static void plan_projection(const planning& p, const layer_record& layer, layer_plan& plan)
{
    const render_mode_row& mode = render_mode_of(layer.type);
    plan.aspect = mode.aspect != 0.0f ? mode.aspect : p.view.aspect;
    plan.fov = layer.camera[camera_fov];
    plan.depth_test = 1;
    switch (static_cast<fov_mode>(layer.camera_mode[camera_fov])) {
    case fov_constant:
        plan.projection = mode.keeps_projection ? projection_kept : projection_perspective;
        return;
    case fov_orthographic:
        plan.projection = projection_orthographic;
        plan.depth_test = 0;
        return;
    case fov_dynamic:
        plan.projection = projection_perspective;
        plan.fov = value_at(p.d.function_table, layer.camera[camera_fov], true, plan.time);
        return;
    }
    plan.projection = projection_kept; // no such mode
}

// ---- the frame --------------------------------------------------------------------

static layer_plan plan_layer(planning& p, uint32_t track, const active_layer& active)
{
    assert(p.d.timeline != nullptr && active.found && active.layer < layers_per_track);
    const layer_record& layer = p.d.timeline->layers[track][active.layer];
    layer_plan plan = {};
    plan.track = track;
    plan.layer = active.layer;
    plan.time = active.local_time + layer.offset;
    plan_target(p, layer, plan);
    plan_camera(p.d, layer, plan);
    plan.clear = plan_clear(p, layer, track);
    plan_projection(p, layer, plan);
    plan_clear_color(p.d, layer, plan);
    if (table_get(p.d.scene_table, layer.model_id) != nullptr)
        plan.model_id = layer.model_id;
    return plan;
}

frame_layers plan_layers(const document& d, uint32_t time, const frame_view& view, const gl_caps& caps)
{
    frame_layers frame = {};
    if (d.timeline == nullptr || timeline_is_over(*d.timeline, time))
        return frame;

    planning p = {.d = d,
        .view = view,
        .caps = caps,
        .pending_texture = 0,
        .flushed = false,
        .previous_keeps = false,
        .recreated = {},
        .recreated_count = 0};
    for (uint32_t track = 0; track < track_count; ++track) {
        const active_layer active = find_layer(*d.timeline, track, time);
        if (!active.found)
            continue;
        layer_plan& plan = frame.layers[frame.layer_count++];
        plan = plan_layer(p, track, active);
        if (plan.model_id != 0)
            ++frame.drawn;
    }
    return frame;
}
