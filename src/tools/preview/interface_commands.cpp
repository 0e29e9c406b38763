#include "tools/preview/actions.h"
#include "tools/preview/interface.h"
#include "tools/preview/interface_style.h"

#include <imgui.h>
#include <imgui_stdlib.h>

#include <algorithm>

constexpr double text_every = 0.25; // seconds: while it plays the text can be read all the same

static std::vector<std::string> lines_of(const std::string& text)
{
    std::vector<std::string> lines;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size());
        lines.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return lines;
}

static void take_commands(preview& p)
{
    if (steady_seconds() - p.face.commands_at < text_every)
        return;
    p.face.commands_at = steady_seconds();
    p.face.commands = lines_of(stage_commands(p.shown));
    if (!p.face.commands_filter.empty())
        std::erase_if(p.face.commands,
            [&](const std::string& line) { return line.find(p.face.commands_filter) == std::string::npos; });
}

// Layers, commands, and what stands when they are carried out.
static ImU32 color_of_line(const std::string& line)
{
    if (line.starts_with("track "))
        return color_accent;
    return line.starts_with(" ") ? color_dim : color_text;
}

static void draw_lines(const std::vector<std::string>& lines)
{
    ImGui::BeginChild("lines", {0, 0}, false, ImGuiWindowFlags_HorizontalScrollbar);
    ImGui::PushFont(fonts().mono);
    ImGui::PushStyleVar(ImGuiStyleVar_ItemSpacing, ImVec2(8, 2));
    ImGuiListClipper clipper;
    clipper.Begin(static_cast<int>(lines.size()));
    while (clipper.Step())
        for (int n = clipper.DisplayStart; n < clipper.DisplayEnd; ++n) {
            const std::string& line = lines[static_cast<size_t>(n)];
            ImGui::PushStyleColor(ImGuiCol_Text, color_of_line(line));
            ImGui::TextUnformatted(line.data(), line.data() + line.size());
            ImGui::PopStyleColor();
        }
    ImGui::PopStyleVar();
    ImGui::PopFont();
    ImGui::EndChild();
}

void draw_commands(preview& p)
{
    if (!p.face.shows_commands)
        return;
    const box place = layout_of(p).picture;
    ImGui::SetNextWindowPos({place.x + 40, place.y + 40}, ImGuiCond_Appearing);
    ImGui::SetNextWindowSize(
        {std::min(620.0f, place.width - 80), std::max(160.0f, place.height - 120)}, ImGuiCond_Appearing);
    ImGui::PushStyleColor(ImGuiCol_WindowBg, rgb(0x161619, 248));
    const bool open = ImGui::Begin("commands of the frame", &p.face.shows_commands,
        ImGuiWindowFlags_NoCollapse | ImGuiWindowFlags_NoSavedSettings | ImGuiWindowFlags_NoNav);
    ImGui::PopStyleColor();
    if (open) {
        take_commands(p);
        ImGui::SetNextItemWidth(std::min(260.0f, ImGui::GetContentRegionAvail().x * 0.5f));
        if (ImGui::InputTextWithHint("##filter", "only lines with …", &p.face.commands_filter))
            p.face.commands_at = 0;
        ImGui::SameLine(0, 12);
        ImGui::AlignTextToFramePadding();
        const std::string count = std::to_string(p.face.commands.size()) + " lines";
        ImGui::TextDisabled("%s", count.c_str());
        draw_lines(p.face.commands);
    }
    ImGui::End();
}
