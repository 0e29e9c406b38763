#include "render/warming_gl.h"

#include "render/bindings_gl.h"
#include "render/compositor_gl.h"
#include "render/draw_gl.h"
#include "render/material_gl.h"
#include "render/material_state.h"
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

static void release_lent(std::vector<warmed_target>& targets)
{
    for (const warmed_target& target : targets)
        glDeleteTextures(1, &target.lent);
    targets.clear();
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

// Targets are told as they will be.
static void plan(show_warming& w, const draw_context& context, const renderer& r)
{
    w.is_planned = true;
    plan_warming(context, r.standing, {}, w.f);
    if (!w.f.draws.empty())
        w.targets = find_warmed_targets(*w.d, w.view, context.caps);
}

static void lend_targets(show_warming& w, const draw_context& context, const renderer& r)
{
    for (warmed_target& target : w.targets)
        target.lent = make_lent(target);
    w.f = {};
    plan_warming(context, r.standing, w.targets, w.f);
}

// Nothing has a size, and nothing of the screen may be drawn on.
static void draw_unseen(show_warming& w, const draw_context& context, gl_state& gl, uint32_t (*ticks)(), uint32_t ms)
{
    const uint32_t begin = ticks != nullptr ? ticks() : 0;
    if (w.drawn == 0)
        w.begin_ticks = begin;
    gl.drawn_material = no_index; // numbers are of this frame
    glScissor(0, 0, 0, 0);
    glEnable(GL_SCISSOR_TEST);
    do
        draw_mesh_gl(w.f, w.f.draws[w.drawn++], context.caps, context.glsl, gl);
    while (w.drawn < w.f.draws.size() && (ticks == nullptr || ticks() - begin <= ms));
    glDisable(GL_SCISSOR_TEST);
    glScissor(0, 0, static_cast<GLsizei>(w.view.width), static_cast<GLsizei>(w.view.height));
}

bool warm_some_gl(show_warming& w, renderer& r, uint32_t (*ticks)(), uint32_t ms)
{
    const draw_context context = context_for(*w.d, w.caps, w.glsl);
    const bool is_first = !w.is_planned;
    if (is_first)
        plan(w, context, r);
    if (w.drawn == w.f.draws.size()) // nor is OpenGL told anything
        return false;
    const uint32_t unit_count = unit_limit(context.caps, w.glsl);
    const unit_bindings bindings = ask_bindings(unit_count);
    if (is_first && !w.targets.empty())
        lend_targets(w, context, r);
    forget_objects(r.gl);
    draw_unseen(w, context, r.gl, ticks, ms);
    put_context_back(r.standing, w.glsl, r.gl);
    const bool is_done = w.drawn == w.f.draws.size();
    if (is_done)
        release_lent(w.targets);
    put_wraps_back(*w.d, r.gl);
    put_bindings_back(bindings, unit_count);
    forget_objects(r.gl);
    glFinish(); // drivers may put their work off
    return !is_done;
}

void end_warming_gl(show_warming& w)
{
    release_lent(w.targets);
}
