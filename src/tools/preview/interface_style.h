// How the interface looks: its colours, its fonts, and the small things that all panels are made of.
//
// Needs the interface's context and lies within a frame of it. Lengths are points.
#pragma once

#include "tools/preview/interface_layout.h"

#include <imgui.h>

#include <cstdint>
#include <string>

// ---- colours ----------------------------------------------------------------------------------------

constexpr ImU32 rgb(uint32_t color, uint32_t alpha = 255) // 0xRRGGBB
{
    return IM_COL32(color >> 16 & 255, color >> 8 & 255, color & 255, alpha);
}

constexpr ImU32 color_backdrop = rgb(0x0f0f11); // behind the picture
constexpr ImU32 color_panel = rgb(0x18181b);
constexpr ImU32 color_raised = rgb(0x232327); // buttons, fields
constexpr ImU32 color_hovered = rgb(0x2e2e33);
constexpr ImU32 color_line = rgb(0x2a2a2f);
constexpr ImU32 color_faint_line = rgb(0x202024);
constexpr ImU32 color_text = rgb(0xd8d4cc);
constexpr ImU32 color_dim = rgb(0x8f8b84);
constexpr ImU32 color_faint = rgb(0x5f5c58);
constexpr ImU32 color_accent = rgb(0xf2a950); // first light
constexpr ImU32 color_accent_dim = rgb(0x8a6233);
constexpr ImU32 color_accent_faint = rgb(0x3a2d1e);
constexpr ImU32 color_error = rgb(0xe0685a);
constexpr ImU32 color_warning = rgb(0xdcb85a);
constexpr ImU32 color_note = rgb(0x86a3b8);
constexpr ImU32 color_good = rgb(0x8fb27c);

constexpr ImU32 with_alpha(ImU32 color, float alpha)
{
    return (color & ~IM_COL32_A_MASK) | static_cast<ImU32>(alpha * 255 + 0.5f) << IM_COL32_A_SHIFT;
}

// Fonts and colours for a window whose points have `scale` pixels.
void set_style(float scale);

// ---- fonts -------------------------------------------------------------------------------------------

struct interface_fonts {
    ImFont* text = nullptr;
    ImFont* small = nullptr;
    ImFont* bold = nullptr;
    ImFont* figures = nullptr; // large: the time
    ImFont* mono = nullptr;
};

interface_fonts fonts();

// ---- text where it is wanted ---------------------------------------------------------------------------

enum text_side : uint8_t { text_left, text_middle, text_right };

ImVec2 size_of_text(const ImFont* font, const std::string& text);

// A line of text; x is its left end, middle or right end, y its middle.
void draw_text(ImDrawList* list, const ImFont* font, float x, float y, ImU32 color, const std::string& text,
    text_side side = text_left);

// As draw_text, cut with "…" where it would be wider than `width`.
void draw_text_within(
    ImDrawList* list, const ImFont* font, float x, float y, float width, ImU32 color, const std::string& text);

// ---- controls --------------------------------------------------------------------------------------------

enum icon_kind : uint8_t {
    icon_play,
    icon_pause,
    icon_loop,
    icon_sound,
    icon_silence,
    icon_open, // the editor
    icon_close,
    icon_camera
};

void draw_icon(ImDrawList* list, icon_kind icon, float x, float y, float size, ImU32 color); // x, y: its middle

// Flat buttons of the height of a line; `on` lights them. True: pressed.
bool icon_button(const char* id, icon_kind icon, bool on, const char* hint);
bool text_button(const char* id, const std::string& text, bool on, const char* hint = nullptr);
bool panel_button(
    const char* id, const std::string& text, bool on, const char* hint = nullptr); // with a ground of its own

// A fixed window without decoration; end with ImGui::End.
void begin_place(const char* id, const box& place, ImU32 color, ImVec2 padding = {0, 0});

// A panel of the side column that can be folded; true: it is open.
bool begin_panel(const char* name, const std::string& beside = "");
void end_panel();

// A line "name   value" of a panel; the value stands at the right and is cut where it is too long.
void panel_line(const char* name, const std::string& value, ImU32 color = color_text);
void panel_words(const std::string& text, ImU32 color = color_dim); // wrapped

// A link "file:line" that opens the editor. True: pressed.
bool place_link(const char* id, const std::string& text, const char* hint);

void hint_here(const std::string& text); // a tooltip for what is hovered
