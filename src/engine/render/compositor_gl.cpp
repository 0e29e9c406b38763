#include "render/compositor_gl.h"

#include "render/material_gl.h"
#include "render/matrix.h"
#include "render/scene_gl.h"
#include "texgen/texture_upload_gl.h"

#include <GL/glew.h>

#include <chrono>

constexpr float near_distance = 0.1f;

// ---- targets --------------------------------------------------------------------

// Copies the lower left corner of the frame buffer into a target's texture. Materials
// leave their last unit active, and the copy must not disturb that unit's texture.
static void flush_target(const document& d, const layer_plan& plan)
{
    const image_texture* target = table_get(d.image_texture_table, plan.flush_texture);
    if (target == nullptr)
        return;
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, target->texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glCopyTexSubImage2D(
        GL_TEXTURE_2D, 0, 0, 0, 0, 0, static_cast<GLsizei>(plan.flush_width), static_cast<GLsizei>(plan.flush_height));
}

static void set_viewport(const layer_plan& plan, const frame_tile& tile)
{
    if (plan.viewport_width == 0)
        return;
    const bool cut = tile.width != 0 && plan.target == 0; // the screen, in tiles
    glViewport(0, 0, static_cast<GLsizei>(cut ? tile.width : plan.viewport_width),
        static_cast<GLsizei>(cut ? tile.height : plan.viewport_height));
}

static void set_target(const document& d, const layer_plan& plan, const frame_tile& tile)
{
    if (plan.recreate_width != 0) {
        if (image_texture* target = table_get(d.image_texture_table, plan.target)) {
            glActiveTexture(GL_TEXTURE0);
            recreate_target_gl(*target, plan.recreate_width, plan.recreate_height);
        }
    }
    set_viewport(plan, tile);
}

// ---- clearing, projection, camera -----------------------------------------------

static void clear_buffers(uint8_t bits)
{
    GLbitfield buffers = 0;
    if ((bits & clear_color) != 0)
        buffers |= GL_COLOR_BUFFER_BIT;
    if ((bits & clear_depth) != 0)
        buffers |= GL_DEPTH_BUFFER_BIT;
    if (buffers != 0)
        glClear(buffers);
}

// Spreads the tile's part of the projected picture over the whole of it: in clip space
// x' = (W / w) x + ((W - 2 left) / w - 1) w_clip, and y alike.
static void cut_projection(const frame_view& view)
{
    const double widths[2] = {static_cast<double>(view.width), static_cast<double>(view.height)};
    const double parts[2] = {static_cast<double>(view.tile.width), static_cast<double>(view.tile.height)};
    const double begins[2] = {static_cast<double>(view.tile.x), static_cast<double>(view.tile.y)};
    for (uint32_t row = 0; row < 2; ++row) {
        const double scale_by = widths[row] / parts[row];
        const double shift = (widths[row] - 2.0 * begins[row]) / parts[row] - 1.0;
        for (uint32_t column = 0; column < 4; ++column) {
            float& cell = matrices.projection[column * 4 + row];
            const double w = static_cast<double>(matrices.projection[column * 4 + 3]);
            cell = static_cast<float>(static_cast<double>(cell) * scale_by + w * shift);
        }
    }
}

static void set_projection(const layer_plan& plan, const frame_view& view)
{
    if (plan.depth_test != 0)
        glEnable(GL_DEPTH_TEST);
    else
        glDisable(GL_DEPTH_TEST);
    switch (static_cast<projection_kind>(plan.projection)) {
    case projection_kept:
        return;
    case projection_perspective:
        set_perspective(plan.fov, plan.aspect, near_distance, plan.far_distance);
        break;
    case projection_orthographic: // (0, 0) is the top left corner
        set_orthographic(0.0f, 1.0f, 1.0f, 0.0f, -1.0f, 1.0f);
        break;
    }
    if (view.tile.width != 0)
        cut_projection(view);
    load_matrix(select_projection);
}

static void set_camera(const layer_plan& plan)
{
    reset_modelview();
    rotate_z(plan.rotation[2], select_modelview);
    rotate_x(plan.rotation[0], select_modelview);
    rotate_y(plan.rotation[1], select_modelview);
    translate(plan.position[0], plan.position[1], plan.position[2]);
    load_matrix(select_modelview);
}

// ---- the frame ------------------------------------------------------------------

// The order of these steps is part of the picture: a layer's clear colour takes effect
// at the next clear, not at its own.
static void draw_layer(document& d, const layer_plan& plan, const frame_view& view, const gl_caps& caps, bool glsl)
{
    if (plan.flush_texture != 0)
        flush_target(d, plan);
    set_target(d, plan, view.tile);
    clear_buffers(plan.clear);
    set_projection(plan, view);
    glClearColor(plan.clear_color[0], plan.clear_color[1], plan.clear_color[2], 1.0f);
    set_camera(plan);
    if (plan.model_id == 0)
        return;
    draw_model(plan.model_id,
        {.d = &d,
            .caps = &caps,
            .glsl = glsl,
            .time = plan.time,
            .rotation = {plan.rotation[0], plan.rotation[1], plan.rotation[2]}});
}

// The same, with its cost: a stopwatch of this computer's time, not of the production's.
static void draw_layer_measured(document& d, const layer_plan& plan, const frame_view& view, const gl_caps& caps,
    bool glsl, frame_cost_record& costs)
{
    const uint32_t index = costs.layer_count++;
    const uint32_t query = costs.queries[index];
    const auto begin = std::chrono::steady_clock::now();
    if (query != 0)
        glBeginQuery(GL_TIME_ELAPSED, query);
    draw_layer(d, plan, view, caps, glsl);
    if (query != 0)
        glEndQuery(GL_TIME_ELAPSED);
    const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - begin;
    costs.layers[index] = {plan.track, took.count()};
}

uint32_t compose_frame(
    document& d, uint32_t time, const frame_view& view, const gl_caps& caps, bool glsl, frame_cost_record* costs)
{
    const frame_plan plan = plan_frame(d, time, view, caps);
    if (costs != nullptr)
        costs->layer_count = 0;
    for (uint32_t i = 0; i < plan.layer_count; ++i) {
        if (costs != nullptr)
            draw_layer_measured(d, plan.layers[i], view, caps, glsl, *costs);
        else
            draw_layer(d, plan.layers[i], view, caps, glsl);
    }
    return plan.drawn;
}
