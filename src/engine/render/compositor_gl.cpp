#include "render/compositor_gl.h"

#include "effects/dynamic_texture_gl.h"
#include "render/bindings_gl.h"
#include "render/draw_gl.h"
#include "render/frame_plan.h"
#include "render/mesh_buffers_gl.h"
#include "texgen/texture_upload_gl.h"

#include <GL/glew.h>

#include <algorithm>
#include <cassert>

// ---- commands -------------------------------------------------------------------------

// False: the texture was told before.
static bool remember_linear(uint32_t texture, gl_state& gl)
{
    if (texture >= gl.linear.size())
        gl.linear.resize(size_t{texture} + 1, 0);
    const bool is_new = gl.linear[texture] == 0;
    gl.linear[texture] = 1;
    return is_new;
}

static void filter_linearly(uint32_t texture, gl_state& gl)
{
    if (!remember_linear(texture, gl))
        return;
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
}

// Copies the lower left corner of the frame buffer into a target's texture.
static void copy_into_texture(const copy_command& copy, gl_state& gl)
{
    select_unit_gl(0, gl);
    bind_texture_gl(0, false, copy.texture, gl);
    filter_linearly(copy.texture, gl);
    glCopyTexSubImage2D(
        GL_TEXTURE_2D, 0, 0, 0, 0, 0, static_cast<GLsizei>(copy.width), static_cast<GLsizei>(copy.height));
}

static void recreate(const recreate_command& command, gl_state& gl)
{
    assert(command.texture != 0 && command.width > 0 && command.height > 0);
    select_unit_gl(0, gl);
    recreate_target_gl(command.old_texture, command.texture, command.width, command.height);
    forget_textures(gl); // the old name is free for another texture
    remember_linear(command.texture, gl);
}

static void set_viewport(const viewport_command& viewport, gl_state& gl)
{
    if (gl.viewport_width == viewport.width && gl.viewport_height == viewport.height)
        return;
    gl.viewport_width = viewport.width;
    gl.viewport_height = viewport.height;
    glViewport(0, 0, static_cast<GLsizei>(viewport.width), static_cast<GLsizei>(viewport.height));
}

static void clear(const clear_command& command, gl_state& gl)
{
    assert(command.bits != clear_nothing && command.bits <= (clear_color | clear_depth));
    GLbitfield buffers = 0;
    if ((command.bits & clear_color) != 0)
        buffers |= GL_COLOR_BUFFER_BIT;
    if ((command.bits & clear_depth) != 0)
        buffers |= GL_DEPTH_BUFFER_BIT;
    if ((command.bits & clear_color) != 0 && remember_numbers(command.color, gl.clear_color, gl.has_clear_color))
        glClearColor(command.color[0], command.color[1], command.color[2], command.color[3]);
    glClear(buffers);
}

static void upload_picture(const frame& f, const upload_command& upload, const gl_caps& caps, gl_state& gl)
{
    assert(upload.texture != nullptr && upload.pixels <= f.pixels.size());
    bind_texture_gl(0, false, upload.texture->texture, gl);
    select_unit_gl(0, gl);
    upload_dynamic_texture_gl(*upload.texture, f.pixels.data() + upload.pixels, caps.pbo == 1);
}

static void upload_lines(const lines_command& lines, gl_state& gl)
{
    assert(lines.mesh != nullptr && lines.mesh->line_indices != nullptr);
    const bool had_buffer = lines.mesh->line_index_buffer != 0; // drawn twice in the frame of its first use
    create_line_buffer_gl(*lines.mesh);
    if (!had_buffer)
        gl.element_buffer = 0; // none is bound behind the making of one
}

static void carry_out(const frame& f, const frame_command& command, const draw_context& context, gl_state& gl)
{
    switch (static_cast<command_kind>(command.kind)) {
    case command_copy:
        return copy_into_texture(listed(f.texture_copies, command.index), gl);
    case command_recreate:
        return recreate(listed(f.recreations, command.index), gl);
    case command_viewport:
        return set_viewport(listed(f.viewports, command.index), gl);
    case command_clear:
        return clear(listed(f.clears, command.index), gl);
    case command_upload:
        return upload_picture(f, listed(f.uploads, command.index), context.caps, gl);
    case command_vertices:
        return upload_vertices_gl(listed(f.vertex_uploads, command.index), gl);
    case command_lines:
        return upload_lines(listed(f.line_uploads, command.index), gl);
    case command_draw:
        return draw_mesh_gl(f, listed(f.draws, command.index), context.caps, context.glsl, gl);
    }
    assert(false); // no such command
}

static bool outlasts_the_frame(uint8_t kind)
{
    return kind == command_recreate || kind == command_upload || kind == command_lines;
}

void draw_lasting_gl(const draw_context& context, renderer& r)
{
    assert(context.d != nullptr);
    for (const frame_command& command : r.f.commands)
        if (outlasts_the_frame(command.kind))
            carry_out(r.f, command, context, r.gl);
}

// ---- frames -------------------------------------------------------------------------------

void draw_frame(const frame_layers& layers, const draw_context& context, renderer& r, frame_cost_record* costs)
{
    assert(context.d != nullptr && layers.layer_count <= track_count);
    r.gl.drawn_material = no_index; // numbers are of this frame
    uint32_t next = 0;
    for (uint32_t i = 0; i < layers.layer_count; ++i) {
        assert(next <= r.f.command_end[i] && r.f.command_end[i] <= r.f.commands.size());
        const auto begin = start_cost(costs);
        const uint32_t query = costs != nullptr ? costs->queries[i] : 0;
        if (query != 0)
            glBeginQuery(GL_TIME_ELAPSED, query);
        for (; next < r.f.command_end[i]; ++next)
            carry_out(r.f, r.f.commands[next], context, r.gl);
        if (query != 0)
            glEndQuery(GL_TIME_ELAPSED);
        add_cost(costs, i, begin);
    }
    assert(next == r.f.commands.size()); // the last layer ends where its frame does
}

void reserve_targets_gl(frame_layers& layers)
{
    for (uint32_t i = 0; i < layers.layer_count; ++i)
        if (layers.layers[i].recreate_width != 0)
            glGenTextures(1, &layers.layers[i].recreate_texture);
}

draw_context context_for(document& d, const gl_caps& caps, bool glsl)
{
    draw_context context = {&d, caps, glsl};
    if (glBindBuffer == nullptr)
        context.caps.vbo = 0;
    return context;
}

void draw_layers(document& d, frame_layers& layers, const frame_view& view, const gl_caps& caps, bool glsl, renderer& r,
    frame_cost_record* costs)
{
    const draw_context context = context_for(d, caps, glsl);
    advance_frame(layers, context, r, costs);
    reserve_targets_gl(layers);
    plan_frame(layers, context, view, r, costs);
    draw_frame(layers, context, r, costs);
}

uint32_t compose_frame(document& d, uint32_t time, const frame_view& view, const gl_caps& caps, bool glsl, renderer& r,
    frame_cost_record* costs)
{
    frame_layers layers = plan_layers(d, time, view, caps);
    draw_layers(d, layers, view, caps, glsl, r, costs);
    return layers.drawn;
}

// ---- beside frames --------------------------------------------------------------------------

void clear_standing_gl(renderer& r)
{
    clear(plan_clear_screen(r.standing), r.gl);
}

void release_renderer_gl(renderer& r)
{
    if (glDeleteBuffers != nullptr && r.gl.moved_positions != 0)
        glDeleteBuffers(1, &r.gl.moved_positions);
    if (glDeleteBuffers != nullptr && r.gl.moved_normals != 0)
        glDeleteBuffers(1, &r.gl.moved_normals);
    reset_rippler_cache(r.tools.rippler);
    r = renderer();
}
