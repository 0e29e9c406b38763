#include "tools/preview/interface.h"

#include "tools/preview/actions.h"
#include "tools/preview/interface_places.h"
#include "tools/preview/interface_style.h"

#include <imgui.h>

#include <algorithm>

void set_interface_style(float scale)
{
    set_style(scale);
}

// A notice stands over the picture's upper edge for a moment.
static void draw_notice(preview& p)
{
    if (p.face.notice.empty() || steady_seconds() > p.face.notice_until)
        return;
    ImDrawList* list = ImGui::GetForegroundDrawList();
    const float width = std::min(size_of_text(fonts().text, p.face.notice).x, p.face.picture_width - 60) + 28;
    const float x = p.face.picture_x + (p.face.picture_width - width) / 2;
    const float y = p.face.picture_y + 16;
    list->AddRectFilled({x, y}, {x + width, y + 30}, rgb(0x18181b, 235), 15);
    list->AddRect({x, y}, {x + width, y + 30}, color_line, 15);
    draw_text_within(list, fonts().text, x + 14, y + 15, width - 28, color_text, p.face.notice);
}

static void draw_side(preview& p, const box& place)
{
    begin_place("side", place, color_panel, {16, 10});
    draw_selection(p);
    draw_tries(p);
    if (p.shown.has_show)
        draw_figures(p);
    const float x = place.x + 0.5f;
    ImDrawList* list = ImGui::GetWindowDrawList();
    list->PushClipRect({place.x, place.y}, {place.x + place.width, place.y + place.height});
    list->AddLine({x, place.y}, {x, place.y + place.height}, color_line);
    list->PopClipRect();
    ImGui::End();
}

void draw_interface(preview& p)
{
    const window_layout layout = layout_of(p);
    p.face.places.clear();
    send_tries(p);
    p.face.waits = p.face.next_try.has_value();
    draw_picture(p);
    note_place(p, "picture", p.face.picture_x, p.face.picture_y, p.face.picture_width, p.face.picture_height);
    if (p.face.shows_overlay) {
        if (layout.side.width > 0)
            draw_side(p, layout.side);
        draw_transport(p);
        draw_timeline(p);
        draw_errors(p);
        draw_commands(p);
    }
    p.face.double_clicked = false;
    draw_notice(p);
    draw_help(p);
}
