#include "tools/preview/actions.h"
#include "tools/preview/free_camera.h"
#include "tools/preview/interface.h"
#include "tools/preview/interface_style.h"

#include <imgui.h>

#include <algorithm>
#include <cmath>

constexpr float graph_height = 58;
constexpr float frame_due_ms = 1000.0f / 60;
constexpr double memory_every = 0.5; // seconds

// ---- frame times -----------------------------------------------------------------------------------------

// What nine frames in ten stay below, rounded up: a single long one does not make all others small.
static float top_of_graph(std::vector<float> times)
{
    if (times.empty())
        return 5;
    const auto most = times.begin() + static_cast<ptrdiff_t>((times.size() - 1) * 9 / 10);
    std::nth_element(times.begin(), most, times.end());
    return *most <= 4 ? 5 : *most <= 18 ? 20 : std::ceil(*most * 1.2f / 20) * 20;
}

static void draw_graph(const preview& p)
{
    const ImVec2 from = ImGui::GetCursorScreenPos();
    const float width = std::floor(ImGui::GetContentRegionAvail().x);
    ImDrawList* list = ImGui::GetWindowDrawList();
    list->AddRectFilled(from, {from.x + width, from.y + graph_height}, rgb(0x121214), 3);
    const std::vector<float>& all = p.face.frame_ms;
    const float top = top_of_graph(all);
    const auto y_of = [&](float ms) { return from.y + graph_height - std::min(ms / top, 1.0f) * (graph_height - 3); };
    const float step = std::max(2.0f, std::floor(width / 120));
    const auto count = std::min(all.size(), static_cast<size_t>(width / step));
    for (size_t n = 0; n < count; ++n) {
        const float ms = all[all.size() - 1 - n];
        const float right = from.x + width - static_cast<float>(n) * step;
        list->AddRectFilled({right - step, y_of(ms)}, {right - 1, from.y + graph_height},
            ms > frame_due_ms ? color_error
                : n == 0      ? color_accent
                              : rgb(0x7d6445));
    }
    if (top >= 20) {
        const float y = std::round(y_of(frame_due_ms)) + 0.5f;
        list->AddLine({from.x, y}, {from.x + width, y}, rgb(0x4a4744));
        draw_text(list, fonts().small, from.x + 4, y - 7, color_faint, "16.7 ms");
    } else
        draw_text(
            list, fonts().small, from.x + 4, from.y + 8, color_faint, value_text(static_cast<double>(top)) + " ms");
    ImGui::Dummy({width, graph_height});
}

// A bar with a name before and a figure behind it.
static void draw_bar(const std::string& name, double value, double whole, const std::string& figure, ImU32 color)
{
    const ImVec2 from = ImGui::GetCursorScreenPos();
    const float width = ImGui::GetContentRegionAvail().x;
    const float name_width = std::floor(width * 0.42f), figure_width = 62;
    ImDrawList* list = ImGui::GetWindowDrawList();
    draw_text_within(list, fonts().small, from.x, from.y + 8, name_width - 8, color_dim, name);
    const float left = from.x + name_width, room = std::max(1.0f, width - name_width - figure_width);
    list->AddRectFilled({left, from.y + 5}, {left + room, from.y + 11}, rgb(0x202024), 3);
    const float share = whole > 0 ? static_cast<float>(std::clamp(value / whole, 0.0, 1.0)) : 0;
    if (share > 0)
        list->AddRectFilled({left, from.y + 5}, {left + std::max(2.0f, room * share), from.y + 11}, color, 3);
    draw_text(list, fonts().small, from.x + width, from.y + 8, color_dim, figure, text_right);
    ImGui::Dummy({width, 16});
}

static std::string active_name(const preview& p, uint32_t track)
{
    const auto tick = static_cast<uint32_t>(p.time.position * 100 + 1e-6);
    for (const timeline_row& row : p.face.rows)
        if (row.track == track)
            if (const timeline_clip* clip = clip_at(row, tick))
                return std::to_string(track + 1) + "  " + clip->name;
    return std::to_string(track + 1);
}

static void draw_layers(const preview& p)
{
    const stage_frame_times& times = p.shown.times;
    double whole = 0;
    for (uint32_t n = 0; n < times.layer_count; ++n)
        whole = std::max({whole, times.layers[n].cpu_ms, times.layers[n].gpu_ms});
    ImGui::PushStyleVar(ImGuiStyleVar_ItemSpacing, ImVec2(8, 1));
    for (uint32_t n = 0; n < times.layer_count; ++n) {
        const auto& layer = times.layers[n];
        const bool has_gpu = layer.gpu_ms >= 0;
        draw_bar(active_name(p, layer.track), has_gpu ? layer.gpu_ms : layer.cpu_ms, whole,
            milliseconds_text(has_gpu ? layer.gpu_ms : layer.cpu_ms), rgb(0x9a7443));
        if (ImGui::IsItemHovered())
            hint_here("track " + active_name(p, layer.track) + "\nprocessor " + milliseconds_text(layer.cpu_ms)
                + (has_gpu ? "\ncard " + milliseconds_text(layer.gpu_ms) : ""));
    }
    ImGui::PopStyleVar();
}

static std::string frame_text(const preview& p)
{
    const stage_frame_times& times = p.shown.times;
    std::string text = milliseconds_text(times.cpu_ms);
    if (times.gpu_ms >= 0)
        text += ", card " + milliseconds_text(times.gpu_ms);
    return text;
}

// ---- memory and camera --------------------------------------------------------------------------------------

static void take_memory(preview& p)
{
    if (steady_seconds() - p.face.memory_at < memory_every)
        return;
    p.face.memory_at = steady_seconds();
    p.face.memory = stage_memory(p.shown);
}

static void draw_memory(preview& p)
{
    take_memory(p);
    const memory_kind& m = p.face.memory;
    const auto line = [](const char* name, uint64_t bytes, uint32_t count) {
        panel_line(name, (count > 0 ? std::to_string(count) + "  ·  " : "") + bytes_text(bytes));
    };
    ImGui::PushStyleVar(ImGuiStyleVar_ItemSpacing, ImVec2(8, 1));
    line("meshes", m.meshes, m.mesh_count);
    line("pictures", m.pictures, m.picture_count);
    line("targets", m.targets, m.target_count);
    line("programs", m.programs, m.program_count);
    line("kept states", keeper_memory(p.keeper), static_cast<uint32_t>(p.keeper.states.size()));
    ImGui::PopStyleVar();
}

static std::string triple(const float values[3], double sign = 1)
{
    const auto one = [&](float v) { return value_text(sign * static_cast<double>(v)); };
    return one(values[0]) + ",  " + one(values[1]) + ",  " + one(values[2]);
}

// Named and signed as in a source: the world is moved against the eye.
static void draw_camera(preview& p)
{
    const flown_layer seen = p.shown.at_frame ? find_flown_layer(p.shown.layers) : flown_layer{};
    if (seen.layer == nullptr)
        panel_words("No view in perspective now.", color_faint);
    else {
        ImGui::PushStyleVar(ImGuiStyleVar_ItemSpacing, ImVec2(8, 1));
        panel_line("at", triple(p.shown.camera.on ? p.shown.camera.position : seen.layer->position, -1));
        panel_line("rotation", triple(p.shown.camera.on ? p.shown.camera.rotation : seen.layer->rotation));
        panel_line("fov", value_text(static_cast<double>(seen.fov)));
        ImGui::PopStyleVar();
        ImGui::Dummy({0, 1});
    }
    const bool on = p.shown.camera.on;
    if (panel_button("free", "free camera", on, "hold the right button in the picture and fly"))
        take_camera_over(p, !on);
    if (!on)
        return;
    ImGui::SameLine(0, 4);
    if (panel_button("copy", "copy line", false, "the camera's line for the source (C)"))
        copy_camera(p);
}

void draw_figures(preview& p)
{
    if (begin_panel("Frame", frame_text(p))) {
        draw_graph(p);
        draw_layers(p);
        ImGui::Dummy({0, 1});
        if (panel_button("commands", "commands", p.face.shows_commands, "what this frame tells OpenGL"))
            p.face.shows_commands = !p.face.shows_commands;
        end_panel();
    }
    if (begin_panel("Camera", p.shown.camera.on ? "free" : "")) {
        draw_camera(p);
        end_panel();
    }
    if (begin_panel("Memory", bytes_text(p.face.memory.meshes + p.face.memory.pictures + p.face.memory.targets))) {
        draw_memory(p);
        end_panel();
    }
}
