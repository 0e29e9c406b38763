#include "tools/preview/interface.h"

#include "tools/preview/actions.h"

#include <imgui.h>

void set_interface_style(float)
{
    ImGui::StyleColorsDark();
}

void draw_interface(preview& p)
{
    draw_picture(p);
    if (!p.face.shows_overlay)
        return;
    draw_transport(p);
    draw_timeline(p);
    draw_errors(p);
    draw_tries(p);
    draw_selection(p);
    draw_figures(p);
    draw_commands(p);
    draw_help(p);
}

void draw_picture(preview& p)
{
    const ImVec2 size(static_cast<float>(p.window.width), static_cast<float>(p.window.height));
    ImGui::GetBackgroundDrawList()->AddImage(
        reinterpret_cast<ImTextureID>(static_cast<uintptr_t>(p.shown.color_texture)), ImVec2(0, 0), size, ImVec2(0, 1),
        ImVec2(1, 0));
}

void draw_timeline(preview&) { }

void draw_transport(preview& p)
{
    ImGui::Begin("time");
    ImGui::Text("%.2f s  frame %llu", p.time.position, static_cast<unsigned long long>(p.shown.frame));
    ImGui::End();
}

void draw_errors(preview& p)
{
    for (const show_problem& problem : p.latest.problems)
        if (problem.severity == problem_error)
            ImGui::Text("%s:%u: %s", problem.file.c_str(), problem.line, problem.text.c_str());
}

void draw_tries(preview&) { }
void draw_selection(preview&) { }
void draw_figures(preview&) { }
void draw_commands(preview&) { }
void draw_help(preview&) { }
