#include "tools/preview/actions.h"
#include "tools/preview/interface.h"
#include "tools/preview/interface_style.h"
#include "tools/preview/source_quote.h"

#include <imgui.h>

#include <algorithm>

constexpr size_t most_shown = 60; // problems; the rest is counted
constexpr float most_width = 860;
constexpr float margin = 16; // to the picture's edges

namespace {

struct problem_counts {
    size_t errors = 0;
    size_t warnings = 0;
    size_t notes = 0;
};

} // namespace

static problem_counts count_problems(const preview& p)
{
    problem_counts counts;
    for (const show_problem& problem : p.latest.problems)
        ++(problem.severity == problem_error          ? counts.errors
                : problem.severity == problem_warning ? counts.warnings
                                                      : counts.notes);
    return counts;
}

static ImU32 color_of(uint8_t severity)
{
    return severity == problem_error ? color_error : severity == problem_warning ? color_warning : color_note;
}

static std::string counted(size_t count, const char* one, const char* many)
{
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

static std::string lesser_text(const problem_counts& counts)
{
    std::string text = counts.warnings > 0 ? counted(counts.warnings, "warning", "warnings") : "";
    if (counts.notes > 0)
        text += (text.empty() ? "" : ", ") + counted(counts.notes, "note", "notes");
    return text;
}

static void take_quotes(preview& p)
{
    if (p.face.quoted_of == p.latest.number + 1 && p.face.quoted.size() == p.latest.problems.size())
        return;
    p.face.quoted_of = p.latest.number + 1;
    p.face.quoted.clear();
    for (const show_problem& problem : p.latest.problems)
        p.face.quoted.push_back(problem.line > 0 && p.face.quoted.size() < most_shown && p.from_source
                ? quote_line(p.folder + "/" + problem.file, problem.line)
                : "");
}

// ---- one problem ------------------------------------------------------------------------------------------

static void draw_quote(const std::string& text, float left, float width)
{
    if (text.empty())
        return;
    ImDrawList* list = ImGui::GetWindowDrawList();
    const ImVec2 from = ImGui::GetCursorScreenPos();
    list->AddRectFilled({left, from.y}, {left + width, from.y + 22}, rgb(0x101012), 3);
    draw_text_within(list, fonts().mono, left + 9, from.y + 11, width - 18, rgb(0xb9b4ab), text);
    ImGui::Dummy({1, 22});
}

static void draw_problem(preview& p, size_t n, float width)
{
    const show_problem& problem = p.latest.problems[n];
    ImDrawList* list = ImGui::GetWindowDrawList();
    ImGui::PushID(static_cast<int>(n));
    const ImVec2 from = ImGui::GetCursorScreenPos();
    const float left = from.x + 18;
    list->AddCircleFilled({from.x + 6, from.y + 9}, 3.5f, color_of(problem.severity), 16);
    ImGui::BeginGroup();
    ImGui::SetCursorScreenPos({left, from.y});
    const std::string where = problem.file + (problem.line > 0 ? ":" + std::to_string(problem.line) : "")
        + (problem.where.empty() ? "" : ", " + problem.where);
    ImGui::PushFont(fonts().bold);
    panel_words(where, color_of(problem.severity));
    ImGui::PopFont();
    ImGui::SetCursorScreenPos({left, ImGui::GetCursorScreenPos().y - 2});
    panel_words(problem.text, color_text);
    ImGui::SetCursorScreenPos({left, ImGui::GetCursorScreenPos().y});
    draw_quote(p.face.quoted[n], left, width - 18);
    ImGui::EndGroup();
    if (ImGui::IsItemHovered() && problem.line > 0) {
        ImGui::SetMouseCursor(ImGuiMouseCursor_Hand);
        if (p.face.double_clicked)
            open_place(p, {problem.file, problem.line});
    }
    ImGui::Dummy({0, 4});
    ImGui::PopID();
}

// ---- the panel --------------------------------------------------------------------------------------------

static void draw_heading(preview& p, bool broken, const std::string& text, float width)
{
    ImDrawList* list = ImGui::GetWindowDrawList();
    const ImVec2 from = ImGui::GetCursorScreenPos();
    draw_text_within(list, fonts().bold, from.x, from.y + 13, width - 34, broken ? rgb(0xffd9d2) : color_text, text);
    ImGui::SetCursorScreenPos({from.x + width - 28, from.y});
    if (icon_button("close", icon_close, false, "hide until the next build"))
        (broken ? p.face.shows_errors : p.face.opens_warnings) = false;
}

// The next window's lower left corner lies in the picture's.
static void put_into_corner(const preview& p)
{
    ImGui::SetNextWindowPos(
        {p.face.picture_x + margin, p.face.picture_y + p.face.picture_height - margin}, ImGuiCond_Always, {0, 1});
}

static void begin_problems(const preview& p, bool broken, float width)
{
    put_into_corner(p);
    ImGui::SetNextWindowSizeConstraints({width, 0}, {width, std::max(80.0f, p.face.picture_height * 0.7f)});
    ImGui::PushStyleColor(ImGuiCol_WindowBg, broken ? rgb(0x241a1a, 246) : rgb(0x1a1a1d, 246));
    ImGui::PushStyleColor(ImGuiCol_Border, broken ? rgb(0x6b3a34) : color_line);
    ImGui::Begin(broken ? "errors" : "warnings", nullptr,
        ImGuiWindowFlags_NoTitleBar | ImGuiWindowFlags_NoResize | ImGuiWindowFlags_NoMove | ImGuiWindowFlags_NoNav
            | ImGuiWindowFlags_AlwaysAutoResize | ImGuiWindowFlags_NoSavedSettings
            | ImGuiWindowFlags_NoFocusOnAppearing);
    ImGui::PopStyleColor(2);
}

// Errors, or all that is less than one, in the order in which they were found.
static void draw_list(preview& p, bool errors, float width)
{
    size_t shown = 0, left_out = 0;
    for (size_t n = 0; n < p.latest.problems.size(); ++n) {
        if ((p.latest.problems[n].severity == problem_error) != errors)
            continue;
        if (++shown <= most_shown)
            draw_problem(p, n, width);
        else
            ++left_out;
    }
    if (left_out > 0)
        panel_words("and " + std::to_string(left_out) + " more");
}

static void draw_broken(preview& p, const problem_counts& counts, float width)
{
    begin_problems(p, true, width);
    const ImVec2 at = ImGui::GetWindowPos();
    ImGui::GetWindowDrawList()->AddRectFilled(
        {at.x, at.y}, {at.x + 4, at.y + ImGui::GetWindowHeight()}, color_error, 6, ImDrawFlags_RoundCornersLeft);
    const float inner = width - 28;
    const bool has_picture = p.shown.has_show;
    draw_heading(
        p, true, p.latest.file + " does not build" + (has_picture ? ": the picture is that of before" : ""), inner);
    draw_list(p, true, inner);
    const std::string lesser = lesser_text(counts);
    if (!lesser.empty() && text_button("lesser", lesser, p.face.opens_warnings))
        p.face.opens_warnings = !p.face.opens_warnings;
    if (p.face.opens_warnings)
        draw_list(p, false, inner);
    ImGui::End();
}

// In the transport line: how much there is to be read. A press shows it and hides it again.
void draw_problem_sign(preview& p)
{
    const problem_counts counts = count_problems(p);
    if (counts.errors + counts.warnings + counts.notes == 0)
        return;
    const bool broken = counts.errors > 0;
    bool& open = broken ? p.face.shows_errors : p.face.opens_warnings;
    const ImVec2 from = ImGui::GetCursorScreenPos();
    const uint8_t severity = broken ? problem_error : counts.warnings > 0 ? problem_warning : problem_note;
    const std::string text = broken ? counted(counts.errors, "error", "errors") : lesser_text(counts);
    if (text_button("problems", "    " + text, open, open ? "hide what was found" : "show what was found"))
        open = !open;
    ImGui::GetWindowDrawList()->AddCircleFilled({from.x + 13, from.y + 13}, 3.5f, color_of(severity), 16);
}

void draw_errors(preview& p)
{
    const problem_counts counts = count_problems(p);
    const bool broken = counts.errors > 0;
    if (p.latest.problems.empty() || !(broken ? p.face.shows_errors : p.face.opens_warnings))
        return;
    take_quotes(p);
    const float width = std::max(200.0f, std::min(p.face.picture_width - 2 * margin, most_width));
    if (broken)
        return draw_broken(p, counts, width);
    begin_problems(p, false, width);
    draw_heading(p, false, lesser_text(counts), width - 28);
    draw_list(p, false, width - 28);
    ImGui::End();
}
