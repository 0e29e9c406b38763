#include "tools/preview/actions.h"
#include "tools/preview/interface.h"
#include "tools/preview/interface_places.h"
#include "tools/preview/interface_style.h"

#include <imgui.h>

#include <algorithm>
#include <cmath>

constexpr float slider_grab = 4; // points

// Only one build is under way for a slider; when its answer has come, the next takes the newest value.
void send_tries(preview& p)
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

static void draw_slider(preview& p, const tried_number& number)
{
    const ImVec2 from = ImGui::GetCursorScreenPos();
    const float width = ImGui::GetContentRegionAvail().x, height = 24;
    double value = holds(p, number) ? p.face.held.value : number.value;
    const double span = number.most - number.least;
    const float end = slider_grab / 2 + 2; // how far the grab's middle stays from the slider's ends
    const auto x_of = [&](double at) {
        return from.x + end + (width - 2 * end) * static_cast<float>(std::clamp((at - number.least) / span, 0.0, 1.0));
    };
    ImDrawList* list = ImGui::GetWindowDrawList();
    list->AddRectFilled(from, {from.x + width, from.y + height}, color_raised, 4);
    if (span > 0) {
        list->AddRectFilled(from, {x_of(value), from.y + height}, color_accent_faint, 4);
        const float written = std::round(x_of(number.written));
        list->AddLine({written, from.y + height - 5}, {written, from.y + height}, color_accent_dim, 2);
    }
    for (const ImGuiCol which : {ImGuiCol_FrameBg, ImGuiCol_FrameBgHovered, ImGuiCol_FrameBgActive})
        ImGui::PushStyleColor(which, 0u);
    ImGui::PushStyleVar(ImGuiStyleVar_GrabMinSize, slider_grab);
    ImGui::SetNextItemWidth(width);
    const std::string format = "%." + std::to_string(decimals_of_step(number.step)) + "f"; // to which it rounds, too
    const bool moved = ImGui::SliderScalar("##value", ImGuiDataType_Double, &value, &number.least, &number.most,
        format.c_str(), ImGuiSliderFlags_AlwaysClamp);
    note_item(p, place_name("slider", number));
    ImGui::PopStyleVar();
    ImGui::PopStyleColor(3);
    if (moved) {
        p.face.holds_try = true;
        p.face.held = p.face.next_try.emplace(tried_value{number.file, number.site, number.written, value});
    }
    if (ImGui::IsItemDeactivated())
        p.face.holds_try = false;
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
    draw_text_within(
        ImGui::GetWindowDrawList(), fonts().text, from.x, from.y + 9, width - place_width - 12, color_text, label);
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
