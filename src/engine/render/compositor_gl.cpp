#include "render/compositor_gl.h"

#include "render/material_gl.h"
#include "render/matrix.h"
#include "render/scene_gl.h"
#include "texgen/texture_upload_gl.h"

#include <GL/glew.h>

constexpr float near_distance = 0.1f;

// ---- targets --------------------------------------------------------------------

// Copies the lower left corner of the frame buffer into a target's texture. Materials
// leave their last unit active, and the copy must not disturb that unit's texture.
static void flush_target(const document& d, const layer_plan& plan)
{
    const image_texture* target = table_record<image_texture>(d.image_texture_table, plan.flush_texture);
    if (target == nullptr)
        return;
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, target->texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glCopyTexSubImage2D(
        GL_TEXTURE_2D, 0, 0, 0, 0, 0, static_cast<GLsizei>(plan.flush_width), static_cast<GLsizei>(plan.flush_height));
}

static void set_target(const document& d, const layer_plan& plan)
{
    if (plan.recreate_width != 0) {
        if (image_texture* target = table_record<image_texture>(d.image_texture_table, plan.target)) {
            glActiveTexture(GL_TEXTURE0);
            recreate_target_gl(*target, plan.recreate_width, plan.recreate_height);
        }
    }
    if (plan.viewport_width != 0)
        glViewport(0, 0, static_cast<GLsizei>(plan.viewport_width), static_cast<GLsizei>(plan.viewport_height));
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

static void set_projection(const layer_plan& plan)
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
static void draw_layer(document& d, const layer_plan& plan, const gl_caps& caps, bool glsl)
{
    if (plan.flush_texture != 0)
        flush_target(d, plan);
    set_target(d, plan);
    clear_buffers(plan.clear);
    set_projection(plan);
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

uint32_t compose_frame(document& d, uint32_t time, const frame_view& view, const gl_caps& caps, bool glsl)
{
    const frame_plan plan = plan_frame(d, time, view, caps);
    for (uint32_t i = 0; i < plan.layer_count; ++i)
        draw_layer(d, plan.layers[i], caps, glsl);
    return plan.drawn;
}
