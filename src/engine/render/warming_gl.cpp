#include "render/warming_gl.h"

#include "render/bindings_gl.h"
#include "render/compositor_gl.h"
#include "render/draw_gl.h"
#include "render/material_gl.h"
#include "render/material_state.h"
#include "render/warming.h"
#include "texgen/texture_upload_gl.h"

#include <GL/glew.h>

#include <vector>

// ---- targets ------------------------------------------------------------------------

// Copying into it is warmed, too.
static uint32_t make_lent(const warmed_target& target)
{
    uint32_t texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(target.format), static_cast<GLsizei>(target.width),
        static_cast<GLsizei>(target.height), 0, GL_RGB, GL_UNSIGNED_BYTE, nullptr);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glCopyTexSubImage2D(
        GL_TEXTURE_2D, 0, 0, 0, 0, 0, static_cast<GLsizei>(target.width), static_cast<GLsizei>(target.height));
    return texture;
}

static void release_lent(const std::vector<warmed_target>& targets)
{
    for (const warmed_target& target : targets)
        glDeleteTextures(1, &target.lent);
}

// ---- putting back -------------------------------------------------------------------

namespace {

// What units show. A program may look at one that its material does not use.
struct unit_bindings {
    GLint flat[texture_unit_count];
    GLint cube[texture_unit_count];
};

} // namespace

static unit_bindings ask_bindings(uint32_t unit_count)
{
    unit_bindings bindings = {};
    for (uint32_t unit = 0; unit < unit_count; ++unit) {
        glActiveTexture(GL_TEXTURE0 + unit);
        glGetIntegerv(GL_TEXTURE_BINDING_2D, &bindings.flat[unit]);
        glGetIntegerv(GL_TEXTURE_BINDING_CUBE_MAP, &bindings.cube[unit]);
    }
    return bindings;
}

static void put_bindings_back(const unit_bindings& bindings, uint32_t unit_count)
{
    for (uint32_t unit = 0; unit < unit_count; ++unit) {
        glActiveTexture(GL_TEXTURE0 + unit);
        glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(bindings.flat[unit]));
        glBindTexture(GL_TEXTURE_CUBE_MAP, static_cast<GLuint>(bindings.cube[unit]));
    }
}

// How a picture wraps stays with it, and until a material says it, it repeats.
static void put_wrap_back(uint32_t texture, bool cube_map, const gl_state& gl)
{
    if (texture < gl.wraps.size() && gl.wraps[texture] == wrap_edge_clamp)
        reset_wrap_gl(texture, cube_map);
}

static void put_wraps_back(const document& d, const gl_state& gl)
{
    for (auto [handle, node] : d.texture_table)
        put_wrap_back(node.texture, false, gl);
    for (auto [handle, texture] : d.dynamic_texture_table)
        put_wrap_back(texture.texture, false, gl);
    for (auto [handle, image] : d.image_texture_table)
        put_wrap_back(image.texture, false, gl);
    for (auto [handle, cube] : d.cube_map_table)
        put_wrap_back(cube.texture, true, gl);
}

// The shader path's first meshes may have no material, nor have had one: then they are told nothing and meet what a
// new context has. The fixed path tells them everything.
static void put_context_back(const standing_state& standing, bool glsl, gl_state& gl)
{
    if (!glsl || standing.material.applied)
        return;
    set_material_glsl_gl(standing.material, gl);
    use_no_program_gl(gl);
}

// ---- drawing ------------------------------------------------------------------------

// Nothing has a size, and nothing of the screen may be drawn on.
static void draw_unseen(const frame& f, const draw_context& context, const frame_view& view, gl_state& gl)
{
    glScissor(0, 0, 0, 0);
    glEnable(GL_SCISSOR_TEST);
    for (const draw_command& draw : f.draws)
        draw_mesh_gl(f, draw, context.caps, context.glsl, gl);
    glDisable(GL_SCISSOR_TEST);
    glScissor(0, 0, static_cast<GLsizei>(view.width), static_cast<GLsizei>(view.height));
}

// The same with the targets as they will be.
static void plan_with_lent(
    const draw_context& context, const standing_state& standing, std::vector<warmed_target>& targets, frame& f)
{
    for (warmed_target& target : targets)
        target.lent = make_lent(target);
    f = {};
    plan_warming(context, standing, targets, f);
}

void warm_show_gl(document& d, const frame_view& view, const gl_caps& caps, bool glsl, renderer& r)
{
    const draw_context context = context_for(d, caps, glsl);
    std::vector<warmed_target> targets = find_warmed_targets(d, view, context.caps);
    frame f = {};
    plan_warming(context, r.standing, {}, f);
    if (f.draws.empty()) // nor is OpenGL told anything
        return;
    const uint32_t unit_count = unit_limit(context.caps, glsl);
    const unit_bindings bindings = ask_bindings(unit_count);
    if (!targets.empty())
        plan_with_lent(context, r.standing, targets, f);
    forget_objects(r.gl);
    draw_unseen(f, context, view, r.gl);
    put_context_back(r.standing, glsl, r.gl);
    release_lent(targets);
    put_wraps_back(d, r.gl);
    put_bindings_back(bindings, unit_count);
    forget_objects(r.gl);
    glFinish(); // drivers may put their work off
}
