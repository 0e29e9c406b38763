#include "tools/preview/interface.h"
#include "tools/preview/interface_style.h"

#include <imgui.h>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

struct help_line {
    const char* keys; // null: a heading
    const char* text;
};

} // namespace

static const help_line left_column[] = {
    {nullptr, "Time"},
    {"space", "play and pause"},
    {"←  →", "a second back and on"},
    {"shift ←  →", "a beat back and on"},
    {",  .", "a frame back and on"},
    {"Home  End", "the beginning, the end"},
    {nullptr, "Loop"},
    {"a  b", "begin and end it here"},
    {"x", "leave it"},
    {nullptr, "Timeline"},
    {"drag", "scrub"},
    {"shift drag", "a loop"},
    {"wheel", "zoom at the pointer"},
    {"middle drag", "move"},
    {"double click", "open a clip's line"},
    {nullptr, "Tries"},
    {"drag", "try a number"},
    {"ctrl click", "type one"},
};

static const help_line right_column[] = {
    {nullptr, "Picture"},
    {"click", "select what lies there; again: what lies below"},
    {"double click", "open its line in the editor"},
    {"right button", "free camera: the mouse looks,"},
    {"w a s d  q e", "fly, with shift fast"},
    {"C", "copy the camera's line"},
    {"s", "save a still"},
    {nullptr, "How it is played"},
    {"1  2", "shaders, texture combiners"},
    {"c", "the next lesser card"},
    {"m", "sound off and on"},
    {"r", "build again"},
    {nullptr, "Window"},
    {"f", "full screen"},
    {"Tab", "the picture alone"},
    {"F1", "this page"},
    {"Escape", "quit"},
};

constexpr float line_height = 23;
constexpr float space_above_heading = 14;

template <size_t count> static float height_of(const help_line (&lines)[count])
{
    float height = 0;
    for (const help_line& line : lines)
        height += line.keys == nullptr ? line_height + space_above_heading : line_height;
    return height;
}

static void draw_column(ImDrawList* list, const help_line* lines, size_t count, float x, float y, float width)
{
    for (size_t n = 0; n < count; ++n) {
        if (lines[n].keys == nullptr) {
            y += space_above_heading;
            draw_text(list, fonts().bold, x, y + line_height / 2, color_accent, lines[n].text);
            list->AddLine({x, y + line_height + 0.5f}, {x + width, y + line_height + 0.5f}, color_line);
            y += line_height;
            continue;
        }
        draw_text(list, fonts().text, x, y + line_height / 2 + 2, color_text, lines[n].keys);
        draw_text_within(list, fonts().text, x + 118, y + line_height / 2 + 2, width - 118, color_dim, lines[n].text);
        y += line_height;
    }
}

void draw_help(preview& p)
{
    if (!p.face.shows_help)
        return;
    const ImVec2 window = ImGui::GetIO().DisplaySize;
    ImDrawList* list = ImGui::GetForegroundDrawList();
    list->AddRectFilled({0, 0}, window, rgb(0x0a0a0c, 190));
    const float width = std::min(900.0f, window.x - 40);
    const float height = std::max(height_of(left_column), height_of(right_column)) + 62;
    const float x = std::round((window.x - width) / 2), y = std::round(std::max(10.0f, (window.y - height) / 2));
    list->AddRectFilled({x, y}, {x + width, y + height}, rgb(0x1a1a1d), 8);
    list->AddRect({x + 0.5f, y + 0.5f}, {x + width - 0.5f, y + height - 0.5f}, color_line, 8);
    const float column = (width - 96) / 2;
    draw_column(list, left_column, std::size(left_column), x + 32, y + 18, column);
    draw_column(list, right_column, std::size(right_column), x + 64 + column, y + 18, column);
    draw_text(list, fonts().small, x + width / 2, y + height - 20, color_faint, "F1 closes it", text_middle);
}
