#include "render/frame_text.h"

#include <cassert>
#include <cstdio>
#include <iterator>
#include <span>

static std::string number(float value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%g", static_cast<double>(value) + 0.0); // no -0
    return text;
}

static std::string numbers(std::span<const float> values)
{
    std::string text;
    for (const float value : values)
        text += (text.empty() ? "" : " ") + number(value);
    return text;
}

static std::string count(uint32_t value)
{
    return std::to_string(value);
}

static std::string size(uint32_t width, uint32_t height)
{
    return count(width) + " x " + count(height);
}

// ---- what stands --------------------------------------------------------------------

static std::string unit_text(uint32_t index, const unit_state& unit)
{
    assert(index < texture_unit_count);
    std::string text = "    unit " + count(index + 1) + (unit.cube_map ? " cube map " : " picture ")
        + count(unit.cube_map ? unit.cube_texture : unit.flat_texture) + ", wrap "
        + (unit.wrap == wrap_as_it_is ? "as it is" : count(unit.wrap));
    if (!unit.on)
        return text + "\n"; // on the shader path, and switched off
    return text + ", coordinates " + count(unit.coordinates) + ", combine " + count(unit.combine_mode) + ", matrix "
        + numbers(unit.matrix) + "\n";
}

static std::string light_text(uint32_t index, const light_state& light)
{
    return "    light " + count(index + 1) + " at " + numbers(light.position) + ", ambient " + numbers(light.ambient)
        + ", diffuse " + numbers(light.diffuse) + "\n";
}

static std::string fog_text(const material_state& material)
{
    return "    fog " + count(material.fog_type) + " of " + numbers(material.fog.color) + " from "
        + number(material.fog.start) + " to " + number(material.fog.end) + "\n";
}

static std::string material_text(uint32_t index, const material_state& material)
{
    std::string text = "  state " + count(index) + ": depth " + count(material.depth_test);
    if (!material.applied)
        return text + ", no material\n";
    text += ", cull " + count(material.cull_back) + ", blend "
        + (material.blending == blend_none ? "none" : count(material.blending)) + ", line width "
        + number(material.line_width) + ", normalize " + count(material.normalize) + ", wireframe "
        + count(material.wireframe) + ", color " + numbers(material.color) + "\n";
    assert(material.lights <= std::size(material.light));
    for (uint32_t i = 0; i < material.lights; ++i)
        text += light_text(i, material.light[i]);
    if (material.lights > 0)
        text += "    lights given under " + numbers(material.light_view) + "\n";
    if (material.fog_type != fog_none)
        text += fog_text(material);
    for (uint32_t i = 0; i < texture_unit_count; ++i)
        if (material.units[i].used)
            text += unit_text(i, material.units[i]);
    return text;
}

static std::string program_text(const program_state& program)
{
    if (program.status != program_ready)
        return program.status == program_never ? "    no program yet\n" : "    a program that did not build\n";
    std::string text = "    program " + count(program.program);
    if (program.turns_texture)
        text += ", texture matrix " + numbers(program.texture_matrix);
    for (uint32_t i = 0; i < 2; ++i)
        if (program.has_light[i])
            text += ", light " + count(i + 1) + " at " + numbers(program.light_position[i]);
    for (uint32_t i = 0; i < user_uniform_count; ++i)
        if (program.uniform_location[i] >= 0)
            text += ", u" + count(i + 1) + " " + number(program.uniforms[i]);
    return text + "\n";
}

// ---- commands -------------------------------------------------------------------------

static std::string array_text(const char* name, const array_source& array)
{
    if (array.streamed)
        return std::string(", ") + name + " streamed";
    if (array.buffer != 0)
        return std::string(", ") + name + " in buffer " + count(array.buffer);
    return array.data != nullptr ? std::string(", ") + name + " in memory" : std::string();
}

static std::string draw_text(const frame& f, const draw_command& draw)
{
    assert(size_t{draw.first_copy} + draw.copy_count <= f.copies.size());
    std::string text = "draw " + count(draw.copy_count) + " x " + count(draw.index_count)
        + (draw.lines ? " line indices" : " indices") + " with state " + count(draw.material)
        + array_text("positions", draw.positions) + array_text("normals", draw.normals);
    for (const array_source& coordinates : draw.coordinates)
        text += array_text("coordinates", coordinates);
    text += array_text("indices", draw.indices) + "\n";
    for (uint32_t i = 0; i < draw.copy_count; ++i)
        text += "    at " + numbers(f.copies[draw.first_copy + i].modelview) + "\n";
    return text;
}

static std::string clear_text(const clear_command& clear)
{
    std::string text = "clear";
    if ((clear.bits & clear_color) != 0)
        text += " color to " + numbers(clear.color);
    return text + ((clear.bits & clear_depth) != 0 ? " depth\n" : "\n");
}

static std::string command_text(const frame& f, const frame_command& command)
{
    switch (static_cast<command_kind>(command.kind)) {
    case command_copy: {
        const copy_command& copy = listed(f.texture_copies, command.index);
        return "copy " + size(copy.width, copy.height) + " into texture " + count(copy.texture) + "\n";
    }
    case command_recreate: {
        const recreate_command& c = listed(f.recreations, command.index);
        return "recreate texture " + count(c.old_texture) + " as " + count(c.texture) + ", " + size(c.width, c.height)
            + "\n";
    }
    case command_viewport: {
        const viewport_command& viewport = listed(f.viewports, command.index);
        return "viewport " + size(viewport.width, viewport.height) + "\n";
    }
    case command_clear:
        return clear_text(listed(f.clears, command.index));
    case command_upload:
        return "upload texture " + count(listed(f.uploads, command.index).texture->texture) + "\n";
    case command_vertices:
        return "upload " + count(listed(f.vertex_uploads, command.index).vertex_count) + " moved vertices\n";
    case command_lines:
        return "upload lines of " + count(listed(f.line_uploads, command.index).mesh->index_count) + " indices\n";
    case command_draw:
        return draw_text(f, listed(f.draws, command.index));
    }
    assert(false); // no such command
    return "";
}

// ---- the frame --------------------------------------------------------------------------

namespace {

// What has been written already.
struct written {
    uint32_t views = 0; // up to the last one; those that nothing is seen through are left out
    uint32_t materials = 0;
};

} // namespace

static std::string view_text(uint32_t index, const view_state& view)
{
    return "  view " + count(index) + ": projection " + numbers(view.projection) + ", camera " + numbers(view.camera)
        + "\n";
}

static std::string states_before(const frame& f, const draw_command& draw, written& w)
{
    std::string text;
    if (w.views <= draw.view) {
        text = view_text(draw.view, listed(f.views, draw.view));
        w.views = draw.view + 1;
    }
    for (; w.materials <= draw.material; ++w.materials) {
        text += material_text(w.materials, listed(f.materials, w.materials));
        if (w.materials < f.programs.size())
            text += program_text(f.programs[w.materials]);
    }
    return text;
}

// The commands from one up to another.
static std::string commands_text(const frame& f, size_t begin, size_t end, written& w)
{
    assert(begin <= end && end <= f.commands.size());
    std::string text;
    for (size_t i = begin; i < end; ++i) {
        if (f.commands[i].kind == command_draw)
            text += states_before(f, listed(f.draws, f.commands[i].index), w);
        text += command_text(f, f.commands[i]);
    }
    return text;
}

static std::string layer_text(const layer_plan& layer, uint32_t mesh_count)
{
    std::string text = "\ntrack " + count(layer.track + 1) + ", layer " + count(layer.layer + 1) + ": time "
        + count(layer.time) + (layer.model_id == 0 ? ", no scene" : ", scene " + count(layer.model_id));
    if (layer.target != 0)
        text += ", for image " + count(layer.target);
    return text + ", " + count(mesh_count) + (mesh_count == 1 ? " mesh\n" : " meshes\n");
}

std::string frame_as_text(const frame& f)
{
    written w;
    return commands_text(f, 0, f.commands.size(), w);
}

std::string frame_as_text(const frame& f, const frame_layers& layers)
{
    assert(layers.layer_count <= track_count);
    std::string text;
    written w;
    uint32_t meshes = 0;
    uint32_t commands = 0;
    for (uint32_t i = 0; i < layers.layer_count; ++i) {
        assert(meshes <= f.mesh_end[i]);
        text += layer_text(layers.layers[i], f.mesh_end[i] - meshes);
        text += commands_text(f, commands, f.command_end[i], w);
        meshes = f.mesh_end[i];
        commands = f.command_end[i];
    }
    return text;
}
