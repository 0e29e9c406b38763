#include "tools/preview/actions.h"
#include "tools/preview/interface.h"
#include "tools/preview/interface_places.h"
#include "tools/preview/interface_style.h"

#include <imgui.h>

#include <algorithm>
#include <cmath>

// Only one build is under way for a slider; when its answer has come, the next takes the newest value.
static void send_next(preview& p)
{
    if (!p.face.next_try || p.waits_for_build)
        return;
    const tried_value next = *p.face.next_try;
    p.face.next_try.reset();
    try_value(p, next.file, next.site, next.value);
}

static bool holds(const preview& p, const tried_number& number)
{
    return p.face.holds_try && p.face.held.file == number.file && p.face.held.site == number.site;
}

// "slider show.lua 0".
static std::string place_name(const std::string& what, const tried_number& number)
{
    return what + " " + number.file + " " + std::to_string(number.site);
}

// As fine as the slider is: a thousandth of its length.
static const char* format_of(const tried_number& number)
{
    const double step = (number.most - number.least) / 1000;
    return step >= 1 ? "%.0f" : step >= 0.1 ? "%.1f" : step >= 0.01 ? "%.2f" : step >= 0.001 ? "%.3f" : "%.5f";
}

static void draw_slider(preview& p, const tried_number& number)
{
    const ImVec2 from = ImGui::GetCursorScreenPos();
    const float width = ImGui::GetContentRegionAvail().x, height = 24;
    double value = holds(p, number) ? p.face.held.value : number.value;
    const double span = number.most - number.least;
    const auto share = [&](double at) { return static_cast<float>(std::clamp((at - number.least) / span, 0.0, 1.0)); };
    ImDrawList* list = ImGui::GetWindowDrawList();
    list->AddRectFilled(from, {from.x + width, from.y + height}, color_raised, 4);
    if (span > 0) {
        list->AddRectFilled(from, {from.x + width * share(value), from.y + height}, color_accent_faint, 4);
        const float written = std::round(from.x + width * share(number.written));
        list->AddLine({written + 0.5f, from.y + height - 5}, {written + 0.5f, from.y + height}, color_accent_dim, 2);
    }
    for (const ImGuiCol which : {ImGuiCol_FrameBg, ImGuiCol_FrameBgHovered, ImGuiCol_FrameBgActive})
        ImGui::PushStyleColor(which, 0u);
    ImGui::PushStyleVar(ImGuiStyleVar_GrabMinSize, 4.0f);
    ImGui::SetNextItemWidth(width);
    const bool moved = ImGui::SliderScalar(
        "value", ImGuiDataType_Double, &value, &number.least, &number.most, format_of(number), ImGuiSliderFlags_AlwaysClamp);
    note_place(p, place_name("slider", number), from.x, from.y, width, height);
    ImGui::PopStyleVar();
    ImGui::PopStyleColor(3);
    if (moved) {
        p.face.holds_try = true;
        p.face.held = p.face.next_try.emplace(tried_value {number.file, number.site, number.written, value});
    }
    if (ImGui::IsItemDeactivated())
        p.face.holds_try = false;
    if (ImGui::IsItemHovered() && !ImGui::IsItemActive())
        hint_here("Drag to try a number; a click with control held types one. In the file: " + value_text(number.written));
}

static void write_number(preview& p, const tried_number& number)
{
    const std::string told = "wrote " + value_text(number.value) + " into " + place_text(number.file, number.line, 40);
    std::string problem;
    say_for_a_moment(p, write_try(p, number.file, number.site, problem) ? told : problem);
}

static void draw_try(preview& p, const tried_number& number)
{
    const ImVec2 from = ImGui::GetCursorScreenPos();
    const float width = ImGui::GetContentRegionAvail().x;
    const std::string label = number.label.empty() ? "a number" : number.label;
    const std::string place = place_text(number.file, number.line, 26);
    const float place_width = size_of_text(fonts().text, place).x;
    draw_text_within(ImGui::GetWindowDrawList(), fonts().text, from.x, from.y + 9, width - place_width - 12, color_text, label);
    ImGui::SetCursorScreenPos({from.x + width - place_width, from.y});
    if (place_link("place", place, "opens the editor there"))
        open_place(p, {number.file, number.line});
    draw_slider(p, number);
    if (number.value == number.written)
        return;
    if (number.can_write) {
        if (panel_button("write", "write", true, "puts the number into the file, and changes nothing else there"))
            return write_number(p, number);
        note_item(p, place_name("write", number));
        ImGui::SameLine(0, 4);
    }
    if (panel_button("back", "back to " + value_text(number.written), false, "to the number that the file has"))
        p.face.next_try = {number.file, number.site, number.written, number.written};
}

void draw_tries(preview& p)
{
    send_next(p);
    if (p.build.tries.empty())
        return;
    if (!begin_panel("Tries", std::to_string(p.build.tries.size())))
        return;
    for (size_t n = 0; n < p.build.tries.size(); ++n) {
        ImGui::PushID(static_cast<int>(n));
        draw_try(p, tried_number(p.build.tries[n])); // a copy: what is done to it may build anew
        ImGui::Dummy({0, 2});
        ImGui::PopID();
    }
    end_panel();
}
