#include "tools/preview/interface_style.h"

#include <algorithm>
#include <cmath>

extern "C" {
extern const unsigned char interface_font_file[];
extern const unsigned char interface_font_end[];
extern const unsigned char interface_font_bold_file[];
extern const unsigned char interface_font_bold_end[];
extern const unsigned char interface_font_mono_file[];
extern const unsigned char interface_font_mono_end[];
}

// Letters of Europe, punctuation, arrows and signs.
static const ImWchar text_letters[] = {0x20, 0x24F, 0x300, 0x52F, 0x1E00, 0x1EFF, 0x2010, 0x2044, 0x20A0, 0x20BF,
    0x2190, 0x2199, 0x2200, 0x2265, 0x25A0, 0x25CF, 0xFFFD, 0xFFFD, 0};
static const ImWchar figure_letters[] = {0x20, 0x7E, 0};

interface_fonts fonts() // in the order in which set_fonts adds them
{
    const ImVector<ImFont*>& all = ImGui::GetIO().Fonts->Fonts;
    return {all[0], all[1], all[2], all[3], all[4]};
}

// ---- the library's own look ------------------------------------------------------------------------------

static void add_font(const unsigned char* file, const unsigned char* end, float pixels, const ImWchar* letters)
{
    ImFontConfig config;
    config.FontDataOwnedByAtlas = false;
    ImGui::GetIO().Fonts->AddFontFromMemoryTTF(
        const_cast<unsigned char*>(file), static_cast<int>(end - file), std::round(pixels), &config, letters);
}

static void set_fonts(float scale)
{
    scale *= 2; // twice as fine as they are shown: letters stand between pixels, too
    scale *= 2; // twice as fine as they are shown: letters stand between pixels, too
    ImFontAtlas& atlas = *ImGui::GetIO().Fonts;
    atlas.Clear();
    add_font(interface_font_file, interface_font_end, 13.5f * scale, text_letters);
    add_font(interface_font_file, interface_font_end, 11.5f * scale, text_letters);
    add_font(interface_font_bold_file, interface_font_bold_end, 13 * scale, text_letters);
    add_font(interface_font_file, interface_font_end, 21 * scale, figure_letters);
    add_font(interface_font_mono_file, interface_font_mono_end, 12.5f * scale, text_letters);
    ImGui::GetIO().FontGlobalScale = 1 / scale;
}

static void set_color(ImGuiCol which, ImU32 color)
{
    ImGui::GetStyle().Colors[which] = ImGui::ColorConvertU32ToFloat4(color);
}

static void set_colors()
{
    ImGui::StyleColorsDark();
    set_color(ImGuiCol_Text, color_text);
    set_color(ImGuiCol_TextDisabled, color_dim);
    set_color(ImGuiCol_WindowBg, color_panel);
    set_color(ImGuiCol_ChildBg, 0);
    set_color(ImGuiCol_PopupBg, rgb(0x1e1e22, 250));
    set_color(ImGuiCol_Border, color_line);
    set_color(ImGuiCol_FrameBg, color_raised);
    set_color(ImGuiCol_FrameBgHovered, color_hovered);
    set_color(ImGuiCol_FrameBgActive, color_hovered);
    set_color(ImGuiCol_TitleBg, color_panel);
    set_color(ImGuiCol_TitleBgActive, color_panel);
    set_color(ImGuiCol_TitleBgCollapsed, color_panel);
    set_color(ImGuiCol_ScrollbarBg, 0);
    set_color(ImGuiCol_ScrollbarGrab, rgb(0x35353a));
    set_color(ImGuiCol_ScrollbarGrabHovered, rgb(0x45454b));
    set_color(ImGuiCol_ScrollbarGrabActive, color_accent_dim);
    set_color(ImGuiCol_CheckMark, color_accent);
    set_color(ImGuiCol_SliderGrab, color_accent);
    set_color(ImGuiCol_SliderGrabActive, color_accent);
    set_color(ImGuiCol_Button, color_raised);
    set_color(ImGuiCol_ButtonHovered, color_hovered);
    set_color(ImGuiCol_ButtonActive, color_accent_dim);
    set_color(ImGuiCol_Header, color_raised);
    set_color(ImGuiCol_HeaderHovered, color_hovered);
    set_color(ImGuiCol_HeaderActive, color_accent_dim);
    set_color(ImGuiCol_Separator, color_line);
    set_color(ImGuiCol_ResizeGrip, 0);
    set_color(ImGuiCol_ResizeGripHovered, color_hovered);
    set_color(ImGuiCol_ResizeGripActive, color_accent_dim);
    set_color(ImGuiCol_TextSelectedBg, color_accent_dim);
    set_color(ImGuiCol_NavHighlight, 0);
}

void set_style(float scale)
{
    ImGuiStyle& style = ImGui::GetStyle();
    set_colors();
    style.WindowPadding = {14, 10};
    style.FramePadding = {8, 4};
    style.ItemSpacing = {8, 6};
    style.ItemInnerSpacing = {6, 4};
    style.WindowRounding = 6;
    style.FrameRounding = 4;
    style.PopupRounding = 5;
    style.GrabRounding = 4;
    style.GrabMinSize = 8;
    style.ScrollbarSize = 9;
    style.ScrollbarRounding = 5;
    style.WindowBorderSize = 1;
    style.PopupBorderSize = 1;
    style.WindowTitleAlign = {0, 0.5f};
    style.WindowMenuButtonPosition = ImGuiDir_None;
    style.AntiAliasedLinesUseTex = true;
    ImGui::GetIO().ConfigWindowsMoveFromTitleBarOnly = true;
    set_fonts(scale);
}

// ---- text where it is wanted ---------------------------------------------------------------------------

static float height_of(const ImFont* font)
{
    return font->FontSize * ImGui::GetIO().FontGlobalScale;
}

ImVec2 size_of_text(const ImFont* font, const std::string& text)
{
    return font->CalcTextSizeA(height_of(font), 1e6f, 0, text.data(), text.data() + text.size());
}

void draw_text(
    ImDrawList* list, const ImFont* font, float x, float y, ImU32 color, const std::string& text, text_side side)
{
    const float width = side == text_left ? 0 : size_of_text(font, text).x;
    const float left = side == text_middle ? x - width / 2 : x - width;
    const float height = height_of(font);
    list->AddText(
        font, height, {std::round(left), std::round(y - height / 2)}, color, text.data(), text.data() + text.size());
}

void draw_text_within(
    ImDrawList* list, const ImFont* font, float x, float y, float width, ImU32 color, const std::string& text)
{
    if (size_of_text(font, text).x <= width)
        return draw_text(list, font, x, y, color, text);
    const float dots = size_of_text(font, "…").x;
    if (width < dots * 1.5f)
        return;
    const char* rest = nullptr;
    font->CalcTextSizeA(height_of(font), width - dots, 0, text.data(), text.data() + text.size(), &rest);
    draw_text(list, font, x, y, color, std::string(text.data(), rest) + "…");
}

// ---- icons -----------------------------------------------------------------------------------------------

static void draw_speaker(ImDrawList* list, float x, float y, float s, ImU32 color)
{
    const ImVec2 cone[] = {{x - s * 0.5f, y - s * 0.16f}, {x - s * 0.28f, y - s * 0.16f}, {x, y - s * 0.42f},
        {x, y + s * 0.42f}, {x - s * 0.28f, y + s * 0.16f}, {x - s * 0.5f, y + s * 0.16f}};
    list->AddConvexPolyFilled(cone, 6, color);
}

static void draw_arc(ImDrawList* list, float x, float y, float radius, float from, float to, ImU32 color)
{
    list->PathArcTo({x, y}, radius, from, to, 16);
    list->PathStroke(color, 0, 1.5f);
}

static void draw_loop(ImDrawList* list, float x, float y, float s, ImU32 color)
{
    const float r = s * 0.4f;
    draw_arc(list, x, y, r, -2.6f, 0.6f, color);
    draw_arc(list, x, y, r, 0.55f + 0.6f, 3.2f, color);
    const float tip_x = x + r * std::cos(0.6f), tip_y = y + r * std::sin(0.6f);
    list->AddTriangleFilled({tip_x - s * 0.26f, tip_y - s * 0.1f}, {tip_x + s * 0.16f, tip_y - s * 0.14f},
        {tip_x - s * 0.08f, tip_y + s * 0.2f}, color);
}

void draw_icon(ImDrawList* list, icon_kind icon, float x, float y, float s, ImU32 color)
{
    switch (icon) {
    case icon_play:
        return list->AddTriangleFilled(
            {x - s * 0.32f, y - s * 0.42f}, {x - s * 0.32f, y + s * 0.42f}, {x + s * 0.44f, y}, color);
    case icon_pause:
        list->AddRectFilled({x - s * 0.32f, y - s * 0.38f}, {x - s * 0.09f, y + s * 0.38f}, color, 1);
        return list->AddRectFilled({x + s * 0.09f, y - s * 0.38f}, {x + s * 0.32f, y + s * 0.38f}, color, 1);
    case icon_loop:
        return draw_loop(list, x, y, s, color);
    case icon_sound:
        draw_speaker(list, x, y, s, color);
        draw_arc(list, x, y, s * 0.24f, -0.8f, 0.8f, color);
        return draw_arc(list, x, y, s * 0.46f, -0.8f, 0.8f, color);
    case icon_silence:
        draw_speaker(list, x, y, s, color);
        list->AddLine({x + s * 0.16f, y - s * 0.18f}, {x + s * 0.5f, y + s * 0.18f}, color, 1.5f);
        return list->AddLine({x + s * 0.16f, y + s * 0.18f}, {x + s * 0.5f, y - s * 0.18f}, color, 1.5f);
    case icon_open:
        list->AddLine({x - s * 0.3f, y + s * 0.3f}, {x + s * 0.34f, y - s * 0.34f}, color, 1.5f);
        list->AddLine({x - s * 0.1f, y - s * 0.36f}, {x + s * 0.36f, y - s * 0.36f}, color, 1.5f);
        return list->AddLine({x + s * 0.36f, y - s * 0.36f}, {x + s * 0.36f, y + s * 0.1f}, color, 1.5f);
    case icon_close:
        list->AddLine({x - s * 0.3f, y - s * 0.3f}, {x + s * 0.3f, y + s * 0.3f}, color, 1.5f);
        return list->AddLine({x - s * 0.3f, y + s * 0.3f}, {x + s * 0.3f, y - s * 0.3f}, color, 1.5f);
    case icon_camera:
        list->AddRect({x - s * 0.46f, y - s * 0.28f}, {x + s * 0.18f, y + s * 0.28f}, color, 2, 0, 1.5f);
        return list->AddTriangleFilled(
            {x + s * 0.2f, y}, {x + s * 0.5f, y - s * 0.26f}, {x + s * 0.5f, y + s * 0.26f}, color);
    }
}

// ---- controls --------------------------------------------------------------------------------------------

void hint_here(const std::string& text)
{
    ImGui::PushStyleVar(ImGuiStyleVar_WindowPadding, ImVec2(9, 6));
    ImGui::BeginTooltip();
    ImGui::PushTextWrapPos(420);
    ImGui::TextUnformatted(text.data(), text.data() + text.size());
    ImGui::PopTextWrapPos();
    ImGui::EndTooltip();
    ImGui::PopStyleVar();
}

namespace {

struct button_look {
    bool pressed;
    ImU32 color; // of what it shows
};

} // namespace

static button_look flat_button(const char* id, const ImVec2& size, bool on, const char* hint)
{
    const ImVec2 from = ImGui::GetCursorScreenPos();
    const bool pressed = ImGui::InvisibleButton(id, size);
    const bool hovered = ImGui::IsItemHovered();
    if (on || hovered)
        ImGui::GetWindowDrawList()->AddRectFilled(from, {from.x + size.x, from.y + size.y},
            ImGui::IsItemActive() ? color_accent_dim
                : on              ? color_accent_faint
                                  : color_hovered,
            4);
    if (hovered && hint != nullptr)
        hint_here(hint);
    return {pressed, on ? color_accent : hovered ? color_text : color_dim};
}

bool icon_button(const char* id, icon_kind icon, bool on, const char* hint)
{
    const ImVec2 from = ImGui::GetCursorScreenPos();
    const button_look look = flat_button(id, {28, 26}, on, hint);
    draw_icon(ImGui::GetWindowDrawList(), icon, from.x + 14, from.y + 13, 15, look.color);
    return look.pressed;
}

bool text_button(const char* id, const std::string& text, bool on, const char* hint)
{
    const ImVec2 from = ImGui::GetCursorScreenPos();
    const float width = std::round(size_of_text(fonts().text, text).x) + 18;
    const button_look look = flat_button(id, {width, 26}, on, hint);
    draw_text(ImGui::GetWindowDrawList(), fonts().text, from.x + 9, from.y + 13, look.color, text);
    return look.pressed;
}

bool panel_button(const char* id, const std::string& text, bool on, const char* hint)
{
    const ImVec2 from = ImGui::GetCursorScreenPos();
    const float width = std::round(size_of_text(fonts().text, text).x) + 20;
    ImGui::GetWindowDrawList()->AddRectFilled(from, {from.x + width, from.y + 24}, color_raised, 4);
    const button_look look = flat_button(id, {width, 24}, on, hint);
    draw_text(ImGui::GetWindowDrawList(), fonts().text, from.x + 10, from.y + 12, look.color, text);
    return look.pressed;
}

void begin_place(const char* id, const box& place, ImU32 color, ImVec2 padding)
{
    ImGui::SetNextWindowPos({place.x, place.y});
    ImGui::SetNextWindowSize({place.width, place.height});
    ImGui::PushStyleColor(ImGuiCol_WindowBg, color);
    ImGui::PushStyleVar(ImGuiStyleVar_WindowRounding, 0);
    ImGui::PushStyleVar(ImGuiStyleVar_WindowBorderSize, 0);
    ImGui::PushStyleVar(ImGuiStyleVar_WindowMinSize, ImVec2(1, 1));
    ImGui::PushStyleVar(ImGuiStyleVar_WindowPadding, padding);
    ImGui::Begin(id, nullptr,
        ImGuiWindowFlags_NoDecoration | ImGuiWindowFlags_NoMove | ImGuiWindowFlags_NoSavedSettings
            | ImGuiWindowFlags_NoBringToFrontOnFocus | ImGuiWindowFlags_NoNav
            | (padding.x == 0 ? ImGuiWindowFlags_NoScrollWithMouse : 0));
    ImGui::PopStyleVar(4);
    ImGui::PopStyleColor();
}

bool begin_panel(const char* name, const std::string& beside)
{
    ImGui::PushID(name);
    ImDrawList* list = ImGui::GetWindowDrawList();
    const ImVec2 from = ImGui::GetCursorScreenPos();
    const float width = ImGui::GetContentRegionAvail().x;
    bool* open = ImGui::GetStateStorage()->GetBoolRef(ImGui::GetID("open"), true);
    if (ImGui::InvisibleButton("head", {width, 26}))
        *open = !*open;
    const ImU32 color = ImGui::IsItemHovered() ? color_text : color_dim;
    const float x = from.x + 4, y = from.y + 13;
    if (*open)
        list->AddTriangleFilled({x - 4, y - 2}, {x + 4, y - 2}, {x, y + 3}, color);
    else
        list->AddTriangleFilled({x - 2, y - 4}, {x - 2, y + 4}, {x + 3, y}, color);
    draw_text(list, fonts().bold, from.x + 15, y, color, name);
    if (!beside.empty())
        draw_text(list, fonts().small, from.x + width, y, color_faint, beside, text_right);
    if (*open)
        ImGui::Dummy({0, 0});
    else
        end_panel();
    return *open;
}

void end_panel()
{
    ImGui::Dummy({0, 2});
    const ImVec2 at = ImGui::GetCursorScreenPos();
    const float left = ImGui::GetWindowPos().x;
    ImDrawList* list = ImGui::GetWindowDrawList();
    list->PushClipRect({left, list->GetClipRectMin().y}, {left + ImGui::GetWindowWidth(), list->GetClipRectMax().y});
    list->AddLine({left, at.y + 0.5f}, {left + ImGui::GetWindowWidth(), at.y + 0.5f}, color_line);
    list->PopClipRect();
    ImGui::Dummy({0, 3});
    ImGui::PopID();
}

void panel_line(const char* name, const std::string& value, ImU32 color)
{
    const ImVec2 from = ImGui::GetCursorScreenPos();
    const float width = ImGui::GetContentRegionAvail().x;
    ImDrawList* list = ImGui::GetWindowDrawList();
    const float name_width = size_of_text(fonts().text, name).x + 12;
    const float value_width = size_of_text(fonts().text, value).x;
    draw_text(list, fonts().text, from.x, from.y + 9, color_dim, name);
    const float room = width - name_width;
    draw_text_within(list, fonts().text, from.x + width - std::min(value_width, room), from.y + 9, room, color, value);
    ImGui::Dummy({width, 18});
}

void panel_words(const std::string& text, ImU32 color)
{
    ImGui::PushStyleColor(ImGuiCol_Text, color);
    ImGui::PushTextWrapPos(0);
    ImGui::TextUnformatted(text.data(), text.data() + text.size());
    ImGui::PopTextWrapPos();
    ImGui::PopStyleColor();
}

bool place_link(const char* id, const std::string& text, const char* hint)
{
    const ImVec2 from = ImGui::GetCursorScreenPos();
    const ImVec2 size = size_of_text(fonts().text, text);
    const bool pressed = ImGui::InvisibleButton(id, {std::max(size.x, 1.0f), 18});
    const bool hovered = ImGui::IsItemHovered();
    ImDrawList* list = ImGui::GetWindowDrawList();
    draw_text(list, fonts().text, from.x, from.y + 9, hovered ? color_accent : color_text, text);
    if (hovered) {
        list->AddLine({from.x, from.y + 17.5f}, {from.x + size.x, from.y + 17.5f}, color_accent_dim);
        ImGui::SetMouseCursor(ImGuiMouseCursor_Hand);
        if (hint != nullptr)
            hint_here(hint);
    }
    return pressed;
}
