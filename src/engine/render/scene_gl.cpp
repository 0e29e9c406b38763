#include "render/scene_gl.h"

#include "effects/mesh_effect.h"
#include "render/material_gl.h"
#include "render/matrix.h"
#include "render/mesh_buffers_gl.h"
#include "render/scene_plan.h"
#include "render/text.h"

#include <GL/glew.h>

#include <cstdio>

// What all meshes of one object share while they are drawn.
struct object_drawing {
    const draw_context& context;
    placement_list* placements;
    float pen;          // added to the x of every placement; 0 but for texts
    bool facing_camera; // copies turn back toward the camera
    bool rippled;       // positions and normals come from the rippler's cache
};

// Where a mesh's arrays are: addresses, or offset 0 of a buffer.
struct array_source {
    const void* data;
    uint32_t buffer; // 0: client memory
};

struct mesh_source {
    array_source positions;
    array_source normals; // both null and 0: none
    bool use_buffers;     // buffer objects exist and are used by this run
};

// ---- buffers --------------------------------------------------------------------

static void bind_array_buffer(const mesh_source& source, uint32_t buffer)
{
    if (source.use_buffers)
        glBindBuffer(GL_ARRAY_BUFFER, buffer);
}

static void bind_index_buffer(const mesh_source& source, uint32_t buffer)
{
    if (source.use_buffers)
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffer);
}

static void unbind_buffers(const mesh_source& source)
{
    bind_array_buffer(source, 0);
    bind_index_buffer(source, 0);
}

// ---- vertex arrays --------------------------------------------------------------

static array_source own_array(const float* data, uint32_t buffer, bool use_buffers)
{
    return use_buffers && buffer != 0 ? array_source{nullptr, buffer} : array_source{data, 0};
}

// The rippled vertices go into the cache's two buffers anew for every draw.
static array_source fill_cache_buffer(uint32_t& buffer, const float* data, uint32_t vertex_count)
{
    if (data == nullptr)
        return {nullptr, 0};
    if (buffer == 0)
        glGenBuffers(1, &buffer);
    glBindBuffer(GL_ARRAY_BUFFER, buffer);
    glBufferData(
        GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(size_t{vertex_count} * 3 * sizeof(float)), data, GL_STATIC_DRAW);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    return {nullptr, buffer};
}

static void take_rippled_arrays(const rippled_arrays& arrays, mesh_source& source)
{
    if (arrays.positions == nullptr)
        return; // the cache is empty: the mesh draws its own
    rippler_cache& cache = shared_rippler_cache();
    if (arrays.from_cache && source.use_buffers) {
        source.positions = fill_cache_buffer(cache.position_buffer, arrays.positions, cache.vertex_count);
        source.normals = fill_cache_buffer(cache.normal_buffer, arrays.normals, cache.vertex_count);
    } else {
        source.positions = {arrays.positions, 0};
        source.normals = {arrays.normals, 0};
    }
}

static mesh_source choose_source(const mesh_arrays& mesh, bool use_buffers)
{
    return {own_array(mesh.positions, mesh.position_buffer, use_buffers),
        own_array(mesh.normals, mesh.normal_buffer, use_buffers), use_buffers};
}

static bool has_array(const array_source& array)
{
    return array.data != nullptr || array.buffer != 0;
}

static void begin_vertex_arrays(const mesh_source& source)
{
    if (has_array(source.normals)) {
        glEnableClientState(GL_NORMAL_ARRAY);
        bind_array_buffer(source, source.normals.buffer);
        glNormalPointer(GL_FLOAT, 0, source.normals.data);
    }
    glEnableClientState(GL_VERTEX_ARRAY);
    bind_array_buffer(source, source.positions.buffer);
    glVertexPointer(3, GL_FLOAT, 0, source.positions.data);
}

static void end_vertex_arrays()
{
    glDisableClientState(GL_NORMAL_ARRAY);
    glDisableClientState(GL_VERTEX_ARRAY);
}

static void feed_program_vertices(const mesh_source& source)
{
    const program_in_use& program = current_program();
    bind_array_buffer(source, source.positions.buffer);
    feed_attribute(program.position, 3, source.positions.data);
    if (has_array(source.normals)) {
        bind_array_buffer(source, source.normals.buffer);
        feed_attribute(program.normal, 3, source.normals.data);
    }
}

// ---- one copy after the other ---------------------------------------------------

// modelview = modelview x the placement's transform.
static void transform_to_placement(const object_drawing& drawing, const placement& place)
{
    translate(place.position[0] + drawing.pen, place.position[1], place.position[2]);
    if (drawing.facing_camera) {
        rotate_y(-drawing.context.rotation[1], select_modelview);
        rotate_x(-drawing.context.rotation[0], select_modelview);
        rotate_z(-drawing.context.rotation[2], select_modelview);
    }
    rotate_x(place.rotation[0], select_modelview);
    rotate_y(place.rotation[1], select_modelview);
    rotate_z(place.rotation[2], select_modelview);
    scale(place.scale[0], place.scale[1], place.scale[2]);
}

static void draw_copies_fixed(const object_drawing& drawing, const mesh_arrays& mesh, const mesh_source& source)
{
    const bool buffered = source.use_buffers && mesh.index_buffer != 0;
    bind_index_buffer(source, buffered ? mesh.index_buffer : 0);
    for (uint32_t i = 0; i < drawing.placements->count; ++i) {
        save_modelview();
        transform_to_placement(drawing, drawing.placements->items[i]);
        load_matrix(select_modelview);
        glDrawElements(
            GL_TRIANGLES, static_cast<GLsizei>(mesh.index_count), GL_UNSIGNED_SHORT, buffered ? nullptr : mesh.indices);
        restore_modelview();
        load_matrix(select_modelview);
    }
}

// What the shader path draws: triangles, or the lines of a wireframe.
struct element_source {
    GLenum mode;
    GLsizei count;
    array_source indices;
};

static element_source choose_elements(mesh_arrays& mesh, bool wireframe, bool use_buffers)
{
    const bool buffered = use_buffers && mesh.index_buffer != 0;
    if (!wireframe)
        return {GL_TRIANGLES, static_cast<GLsizei>(mesh.index_count),
            {buffered ? nullptr : mesh.indices, buffered ? mesh.index_buffer : 0}};

    if (mesh.line_indices == nullptr)
        generate_line_index_array(mesh);
    const uint32_t count = mesh.line_indices == nullptr ? 0 : mesh.index_count / 3 * 6;
    if (buffered)
        create_line_buffer_gl(mesh);
    const bool lines_buffered = buffered && mesh.line_index_buffer != 0;
    return {GL_LINES, static_cast<GLsizei>(count),
        {lines_buffered ? nullptr : mesh.line_indices, lines_buffered ? mesh.line_index_buffer : 0}};
}

static void draw_copies_glsl(const object_drawing& drawing, const element_source& elements, const mesh_source& source)
{
    const program_in_use& program = current_program();
    bind_index_buffer(source, elements.indices.buffer);
    if (program.projection >= 0)
        glUniformMatrix4fv(program.projection, 1, GL_FALSE, matrices.projection);
    for (uint32_t i = 0; i < drawing.placements->count; ++i) {
        save_modelview();
        transform_to_placement(drawing, drawing.placements->items[i]);
        compute_normal_matrix();
        if (program.modelview >= 0)
            glUniformMatrix4fv(program.modelview, 1, GL_FALSE, matrices.modelview);
        if (program.normal_matrix >= 0) // stored by rows, read by columns: the inverse transpose
            glUniformMatrix3fv(program.normal_matrix, 1, GL_FALSE, matrices.normal_matrix);
        glDrawElements(elements.mode, elements.count, GL_UNSIGNED_SHORT, elements.indices.data);
        restore_modelview();
    }
}

// ---- one mesh -------------------------------------------------------------------

static material_context material_context_of(const draw_context& context)
{
    return {.d = context.d,
        .caps = context.caps,
        .time = context.time,
        .camera_angles = {context.rotation[1], context.rotation[0]}};
}

static void apply_material(
    const object_drawing& drawing, const mesh_arrays& mesh, bool use_buffers, const material_record* material)
{
    unit_coordinates coordinates;
    choose_unit_coordinates(mesh, use_buffers, coordinates);
    if (drawing.context.glsl)
        apply_material_glsl(material, material_context_of(drawing.context), coordinates);
    else
        apply_material_fixed(material, material_context_of(drawing.context), coordinates);
}

// On the shader path a mesh is drawn by the fixed pipeline as long as no material has
// chosen a program, and not at all with a program that did not build.
static void draw_copies(
    const object_drawing& drawing, mesh_arrays& mesh, const mesh_source& source, const material_record* material)
{
    if (!drawing.context.glsl || current_program().state == program_never) {
        draw_copies_fixed(drawing, mesh, source);
    } else if (current_program().state == program_ready && drawing.placements->count > 0) {
        feed_program_vertices(source);
        const bool wireframe = material != nullptr && material->wireframe != 0;
        draw_copies_glsl(drawing, choose_elements(mesh, wireframe, source.use_buffers), source);
    }
}

static bool has_triangles(const mesh_arrays& mesh)
{
    return mesh.vertex_count != 0 && mesh.positions != nullptr && mesh.index_count != 0 && mesh.indices != nullptr;
}

// A mesh without triangles (a swarm is one) draws nothing, but its material is applied:
// a later mesh without a material is drawn with the state as it stands.
static void draw_mesh(const object_drawing& drawing, mesh_arrays& mesh, const material_record* material)
{
    mesh_source source = choose_source(mesh, buffers_usable(*drawing.context.caps));
    rippled_arrays rippled = {};
    if (drawing.rippled) {
        rippled = merge_rippled_arrays(mesh, shared_rippler_cache());
        take_rippled_arrays(rippled, source);
    }
    unbind_buffers(source);
    if (has_triangles(mesh)) {
        begin_vertex_arrays(source);
        apply_material(drawing, mesh, source.use_buffers, material);
        draw_copies(drawing, mesh, source, material);
        end_vertex_arrays();
    } else {
        apply_material(drawing, mesh, source.use_buffers, material);
    }
    end_program_arrays();
    unbind_buffers(source);
    release_rippled_arrays(rippled);
}

// ---- objects --------------------------------------------------------------------

// Placement and manipulators of an object; release_drawing frees them.
static object_drawing begin_drawing(
    const scene_record& scene, uint32_t number, uint32_t time, const draw_context& context, const mesh_arrays* mesh)
{
    const placed_copies copies = place_copies(scene.objects[number], *context.d, time, mesh);
    uint8_t& copies_cut = scene.objects[number].copies_cut;
    if (copies.list != nullptr && copies.list->cut && copies_cut == copies_all)
        copies_cut = copies_cut_now;
    return {context, copies.list, 0.0f, faces_camera(scene, number), copies.rippled};
}

static void release_drawing(object_drawing& drawing)
{
    if (drawing.placements != nullptr)
        placement_list_free(drawing.placements);
}

static void draw_object_mesh(
    const scene_record& scene, uint32_t number, uint32_t time, const draw_context& context, mesh_arrays& mesh)
{
    const material_record* material = table_get(context.d->material_table, scene.objects[number].material);
    object_drawing drawing = begin_drawing(scene, number, time, context, &mesh);
    if (drawing.placements != nullptr)
        draw_mesh(drawing, mesh, material);
    release_drawing(drawing);
}

// Needs both an object and a material.
static void draw_model_object(const scene_record& scene, uint32_t number, uint32_t time, const draw_context& context)
{
    const scene_object& object = scene.objects[number];
    if (object.object == 0 || table_get(context.d->material_table, object.material) == nullptr)
        return;
    mesh_record* mesh = table_get(context.d->mesh_table, resolve_scene_object(*context.d, object));
    if (mesh != nullptr)
        draw_object_mesh(scene, number, time, context, mesh->arrays);
}

// Needs an object only; without a material the state stays as it stands.
static void draw_genmesh_object(const scene_record& scene, uint32_t number, uint32_t time, const draw_context& context)
{
    const scene_object& object = scene.objects[number];
    if (object.object == 0)
        return;
    const uint32_t handle = resolve_scene_object(*context.d, object);
    mesh_effect* effect = table_get(context.d->effect_table, handle);
    if (effect == nullptr)
        return;
    update_mesh_effect(handle, context.d->effect_table, context.d->function_table, time);
    draw_object_mesh(scene, number, time, context, effect->mesh);
}

static void draw_text_object(const scene_record& scene, uint32_t number, uint32_t time, const draw_context& context)
{
    const scene_object& object = scene.objects[number];
    const font_record* font = table_get(context.d->font_table, object.font);
    if (font == nullptr || object.text[0] == '\0')
        return;
    object_drawing drawing = begin_drawing(scene, number, time, context, nullptr);
    placed_glyph glyphs[max_placed_glyphs];
    const uint32_t count = layout_text(object.text, *font, glyphs);
    for (uint32_t i = 0; i < count && drawing.placements != nullptr; ++i) {
        const glyph_record& glyph = font->glyphs[glyphs[i].glyph];
        mesh_record* mesh = table_get(context.d->mesh_table, glyph.model);
        if (mesh == nullptr)
            continue;
        drawing.pen = glyphs[i].pen;
        draw_mesh(drawing, mesh->arrays, table_get(context.d->material_table, glyph.material));
    }
    release_drawing(drawing);
}

static void draw_object(const scene_record& scene, uint32_t number, const draw_context& context)
{
    const scene_object& object = scene.objects[number];
    const uint32_t time = object_time(context.time, object.time_offset);
    if (!object_is_visible(object, context.d->function_table, time))
        return;
    switch (static_cast<object_kind>(object.type)) {
    case object_model:
        return draw_model_object(scene, number, time, context);
    case object_genmesh:
        return draw_genmesh_object(scene, number, time, context);
    case object_text:
        return draw_text_object(scene, number, time, context);
    }
    // beyond the catalogue: nothing is drawn
}

// Says once for an object that some of its copies are left out.
static void tell_cut_copies(const document& d, uint32_t scene_handle, scene_object& object, uint32_t number)
{
    if (object.copies_cut != copies_cut_now)
        return;
    object.copies_cut = copies_cut_told;
    std::fprintf(stderr, "%s\n", cut_copies_line(d, scene_handle, number).c_str());
}

void draw_model(uint32_t scene_handle, const draw_context& context)
{
    const scene_record* scene = table_get(context.d->scene_table, scene_handle);
    if (scene == nullptr || scene->objects == nullptr)
        return;
    for (uint32_t number = 0; number < scene->object_count; ++number) {
        draw_object(*scene, number, context);
        tell_cut_copies(*context.d, scene_handle, scene->objects[number], number);
    }
}
