// Looks at what scenes place: texts, sizes, meshes under light.
#include "authoring/check/lint.h"

#include "model/glyphs.h"
#include "model/values.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstring>
#include <span>

template <typename visitor> static void for_each_object(const document& d, visitor&& visit)
{
    for (auto [handle, scene] : d.scene_table)
        for (uint32_t index = 0; index < scene.object_count; ++index)
            visit(handle, index, scene.objects[index]);
}

static std::vector<document_part> object_part(uint32_t object)
{
    return {{"object", object + 1}};
}

// ---- letters --------------------------------------------------------------------------

// The glyphs of a text, each once, in the order of the text.
static std::vector<uint8_t> glyphs_of(const scene_object& object)
{
    std::vector<uint8_t> glyphs;
    const auto length = static_cast<uint32_t>(strnlen(object.text, scene_text_size));
    for (uint32_t at = 0; at < length; ++at) {
        uint8_t glyph = glyph_of_byte(static_cast<uint8_t>(object.text[at]));
        if (glyph == glyph_lead_byte && ++at < length)
            glyph = glyph_of_second_byte(static_cast<uint8_t>(object.text[at]));
        if (glyph < glyph_count && std::find(glyphs.begin(), glyphs.end(), glyph) == glyphs.end())
            glyphs.push_back(glyph);
    }
    return glyphs;
}

// Rule: a letter other than the space, whose glyph has no mesh in the text's font.
void lint_letters(const lint_target& t)
{
    for_each_object(t.d, [&t](uint32_t scene, uint32_t index, const scene_object& object) {
        const font_record* font = object.type == object_text ? table_get(t.d.font_table, object.font) : nullptr;
        if (font == nullptr)
            return;
        std::string blanks;
        for (const uint8_t glyph : glyphs_of(object))
            if (font->glyphs[glyph].model == 0 && std::strcmp(glyph_characters[glyph], " ") != 0)
                blanks += std::string(blanks.empty() ? "" : ", ") + "\"" + glyph_characters[glyph] + "\"";
        if (!blanks.empty())
            add_finding(t, problem_warning, section_scenes, scene,
                "font " + std::to_string(object.font) + " has no mesh for " + blanks + ": only a gap is seen there.",
                object_part(index));
    });
}

// ---- sizes -----------------------------------------------------------------------------

static bool is_constant(const animated_value& value, float number)
{
    return value.dynamic == 0 && value.value == number;
}

static bool is_multiplied(const scene_object& object)
{
    for (uint32_t index = 0; index < object.manipulator_count; ++index) {
        const int32_t type = object.manipulators[index].type;
        if (type == manipulator_xyz_multiplier || type == manipulator_x_multiplier)
            return true;
    }
    return false;
}

// What an object shows: its mesh, or none that is known.
static const mesh_record* mesh_of(const document& d, const scene_object& object)
{
    return object.type == object_model ? table_get(d.mesh_table, resolve_scene_object(d, object)) : nullptr;
}

static bool shows_something(const document& d, const scene_object& object)
{
    switch (static_cast<object_kind>(object.type)) {
    case object_model:
        return mesh_of(d, object) != nullptr;
    case object_genmesh:
        return object.object != 0;
    case object_text:
        return object.text[0] != 0;
    case object_kind_count:
        break;
    }
    return false;
}

// Rule: all three scales of an object are the constant 0, and no multiplier adds to them.
void lint_scale(const lint_target& t)
{
    constexpr uint32_t first_scale = 6;
    for_each_object(t.d, [&t](uint32_t scene, uint32_t index, const scene_object& object) {
        const animated_value* scale = object.values + first_scale;
        if (is_constant(scale[0], 0) && is_constant(scale[1], 0) && is_constant(scale[2], 0) && !is_multiplied(object)
            && shows_something(t.d, object))
            add_finding(t, problem_note, section_scenes, scene,
                "its scale is 0: it is never seen, 1 is as large as it was made.", object_part(index));
    });
}

// ---- light ------------------------------------------------------------------------------

static bool is_lit(const document& d, const scene_object& object)
{
    const material_record* material = table_get(d.material_table, object.material);
    const bool own_program = material != nullptr && material->enable_glsl != 0
        && material->custom_vertex_shader != nullptr && material->custom_fragment_shader != nullptr;
    return material != nullptr && material->light1 != 0 && !own_program;
}

static bool has_no_normals(const mesh_arrays& mesh)
{
    const std::span<const float> normals(mesh.normals, size_t{3} * mesh.vertex_count);
    return !normals.empty() && std::all_of(normals.begin(), normals.end(), [](float value) { return value == 0.0f; });
}

// Rule: a lit object whose mesh has normals of length 0 at every vertex: light does not reach it.
void lint_lit_meshes(const lint_target& t)
{
    for_each_object(t.d, [&t](uint32_t scene, uint32_t index, const scene_object& object) {
        const mesh_record* mesh = mesh_of(t.d, object);
        if (mesh != nullptr && mesh->arrays.normals != nullptr && is_lit(t.d, object) && has_no_normals(mesh->arrays))
            add_finding(t, problem_warning, section_scenes, scene,
                "its material is lit, and its mesh has no normals: it gets the ambient light alone.",
                object_part(index));
    });
}

static double mean_normal_length(const mesh_arrays& mesh)
{
    double sum = 0.0;
    for (uint32_t vertex = 0; vertex < mesh.vertex_count; ++vertex) {
        const float* n = mesh.normals + size_t{3} * vertex;
        sum += std::sqrt(static_cast<double>(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]));
    }
    return mesh.vertex_count > 0 ? sum / mesh.vertex_count : 1.0;
}

// Rule: the normals of a lit object have less than half or more than twice the length one once its constant scale has
// changed them, and its material does not bring them back to it. OpenGL divides them by the scale.
void lint_scaled_normals(const lint_target& t)
{
    for_each_object(t.d, [&t](uint32_t scene, uint32_t index, const scene_object& object) {
        const material_record* material = table_get(t.d.material_table, object.material);
        const mesh_record* mesh = mesh_of(t.d, object);
        const double scale = std::fabs(static_cast<double>(object.values[6].value));
        const bool known = object.values[6].dynamic == 0 && scale > 0.0;
        if (!known || mesh == nullptr || mesh->arrays.normals == nullptr || !is_lit(t.d, object)
            || material->normalization != 0)
            return;
        const double length = mean_normal_length(mesh->arrays) / scale;
        if (length > 2.0 || (length < 0.5 && length > 0.0))
            add_finding(t, problem_note, section_scenes, scene,
                std::string("its scale makes its light too ") + (length > 1.0 ? "bright" : "dark")
                    + ": its material does not set normalization.",
                object_part(index));
    });
}

// ---- vertices ------------------------------------------------------------------------------

static std::vector<bool> drawn_meshes(const document& d)
{
    std::vector<bool> drawn(table_count(d.mesh_table) + 1, false);
    const auto mark = [&drawn](uint32_t handle) {
        if (handle < drawn.size())
            drawn[handle] = true;
    };
    for_each_object(d, [&](uint32_t, uint32_t, const scene_object& object) {
        if (object.type == object_model)
            mark(resolve_scene_object(d, object));
    });
    for_each_object(d, [&](uint32_t, uint32_t, const scene_object& object) {
        for (uint32_t index = 0; index < object.manipulator_count; ++index) {
            const manipulator_record& manipulator = object.manipulators[index];
            const bool points = manipulator.type == manipulator_model_placer && manipulator.model_type == placer_mesh;
            if (points && manipulator.model < drawn.size())
                drawn[manipulator.model] = false; // its vertices are places
        }
    });
    return drawn;
}

static uint32_t loose_vertices(const mesh_arrays& mesh)
{
    std::vector<bool> used(mesh.vertex_count, false);
    for (uint32_t index = 0; index < mesh.index_count; ++index)
        used[mesh.indices[index]] = true;
    return static_cast<uint32_t>(std::count(used.begin(), used.end(), false));
}

// Rule: a mesh that is drawn, and is no row of places for a "Model placer", has more vertices in no triangle than in
// one.
void lint_loose_vertices(const lint_target& t)
{
    const std::vector<bool> drawn = drawn_meshes(t.d);
    for (auto [handle, mesh] : t.d.mesh_table) {
        const uint32_t loose = drawn[handle] ? loose_vertices(mesh.arrays) : 0;
        if (loose > mesh.arrays.vertex_count - loose)
            add_finding(t, problem_note, section_meshes, handle,
                std::to_string(loose) + " of its " + std::to_string(mesh.arrays.vertex_count)
                    + " vertices belong to no triangle: they cost time and show nothing.");
    }
}
