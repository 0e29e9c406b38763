#include "tools/preview/actions.h"
#include "tools/preview/free_camera.h"
#include "tools/preview/interface.h"
#include "tools/preview/interface_style.h"
#include "tools/preview/picture_outline.h"

#include <imgui.h>

#include <algorithm>
#include <cmath>

constexpr float picture_margin = 14;
constexpr double still_seconds = 0.2; // how long the window's size has to be the same before the picture takes it
constexpr double double_click_seconds = 0.8; // how long ago the first click may have been seen
constexpr float degrees_a_point = 0.2f;

namespace {

// Places of keys on every keyboard, as the window's library numbers them: what flies is where the hand lies, whatever
// letters stand there.
enum flying_key : int { place_a = 4, place_d = 7, place_e = 8, place_q = 20, place_s = 22, place_w = 26 };

} // namespace

// ---- its size ---------------------------------------------------------------------------------------------

static box picture_place(const preview& p)
{
    box place = layout_of(p).picture;
    if (!p.face.shows_overlay)
        return place;
    place.x += picture_margin;
    place.y += picture_margin;
    place.width = std::max(1.0f, place.width - 2 * picture_margin);
    place.height = std::max(1.0f, place.height - 2 * picture_margin);
    return place;
}

// Unless it is fixed, the picture's size is that of its place, once that has been still.
static void follow_place(preview& p, const box& place)
{
    if (p.options.size_given)
        return;
    if (place.width != p.face.wanted_width || place.height != p.face.wanted_height) {
        p.face.wanted_width = place.width;
        p.face.wanted_height = place.height;
        p.face.wanted_since = steady_seconds();
    }
    if (p.shown.has_show && steady_seconds() - p.face.wanted_since < still_seconds) {
        p.face.waits = true;
        return;
    }
    const picture_size size = size_for_place(place, p.window.scale, p.options.wish.width, p.options.wish.height);
    std::string problem;
    if ((size.width != p.shown.wish.width || size.height != p.shown.wish.height)
        && !choose_size(p, size.width, size.height, problem))
        say_for_a_moment(p, problem);
}

// ---- what lies over it ------------------------------------------------------------------------------------

// Corner marks around the selected object.
static void draw_selected(const preview& p, ImDrawList* list, const box& seen)
{
    if (!p.selected || !p.shown.at_frame || p.keeper.settling)
        return;
    const std::optional<box> outline = outline_of(p.shown.drawing.f, p.shown.layers, *p.selected);
    if (!outline)
        return;
    const float left = std::round(seen.x + std::clamp(outline->x, 0.0f, 1.0f) * seen.width) - 4;
    const float top = std::round(seen.y + std::clamp(outline->y, 0.0f, 1.0f) * seen.height) - 4;
    const float right = std::round(seen.x + std::clamp(outline->x + outline->width, 0.0f, 1.0f) * seen.width) + 4;
    const float bottom = std::round(seen.y + std::clamp(outline->y + outline->height, 0.0f, 1.0f) * seen.height) + 4;
    const float arm = std::clamp(std::min(right - left, bottom - top) / 4, 5.0f, 18.0f);
    for (const auto& [color, thickness] : {std::pair{rgb(0x000000, 140), 4.0f}, std::pair{color_accent, 2.0f}})
        for (const float x : {left, right})
            for (const float y : {top, bottom}) {
                const ImVec2 corner[] = {{x + (x == left ? arm : -arm), y}, {x, y}, {x, y + (y == top ? arm : -arm)}};
                list->AddPolyline(corner, 3, color, 0, thickness);
            }
}

static void draw_empty(const preview& p, ImDrawList* list, const box& seen)
{
    list->AddRectFilled({seen.x, seen.y}, {seen.x + seen.width, seen.y + seen.height}, rgb(0x141416), 3);
    const float x = seen.x + seen.width / 2, y = seen.y + seen.height / 2;
    const std::string text = p.waits_for_build ? "building " + p.file + " …" : "no picture yet";
    draw_text(list, fonts().text, x, y, color_faint, text, text_middle);
}

static void draw_camera_mark(preview& p, const box& seen)
{
    if (!p.shown.camera.on)
        return;
    ImGui::SetNextWindowPos({seen.x + seen.width - 14, seen.y + 14}, ImGuiCond_Always, {1, 0});
    ImGui::PushStyleVar(ImGuiStyleVar_WindowPadding, ImVec2(10, 4));
    ImGui::Begin("free camera", nullptr,
        ImGuiWindowFlags_NoDecoration | ImGuiWindowFlags_AlwaysAutoResize | ImGuiWindowFlags_NoMove
            | ImGuiWindowFlags_NoNav | ImGuiWindowFlags_NoFocusOnAppearing);
    ImGui::PopStyleVar();
    const ImVec2 from = ImGui::GetCursorScreenPos();
    draw_icon(ImGui::GetWindowDrawList(), icon_camera, from.x + 8, from.y + 13, 15, color_accent);
    draw_text(ImGui::GetWindowDrawList(), fonts().text, from.x + 24, from.y + 13, color_accent, "free camera");
    ImGui::Dummy({110, 26});
    ImGui::SameLine();
    if (text_button("copy", "copy line", false, "the camera's line for the source (C)") && copy_camera(p).empty())
        say_for_a_moment(p, "this camera has no line");
    ImGui::SameLine(0, 2);
    if (text_button("back", "back", false, "to the show's own camera"))
        take_camera_over(p, false);
    ImGui::End();
}

// ---- the hand in it -----------------------------------------------------------------------------------------

static float between_keys(int forward, int back)
{
    return (ImGui::IsKeyDown(forward) ? 1.0f : 0.0f) - (ImGui::IsKeyDown(back) ? 1.0f : 0.0f);
}

// While the right button is held, the mouse turns the camera and the left hand flies it.
static void fly_by_hand(preview& p, bool begins)
{
    const ImGuiIO& io = ImGui::GetIO();
    if (begins && !p.shown.camera.on) {
        take_camera_over(p, true);
        if (!p.shown.camera.on)
            say_for_a_moment(p, "this moment has no camera in perspective to fly");
    }
    p.face.flies = p.shown.camera.on && ImGui::IsMouseDown(ImGuiMouseButton_Right) && (begins || p.face.flies);
    if (!p.face.flies)
        return;
    flight f;
    f.forward = between_keys(place_w, place_s);
    f.right = between_keys(place_d, place_a);
    f.up = between_keys(place_e, place_q);
    f.turn = begins ? 0 : io.MouseDelta.x * degrees_a_point; // how the hand came there does not turn
    f.nod = begins ? 0 : -io.MouseDelta.y * degrees_a_point;
    f.fast = io.KeyShift;
    const bool moves = f.forward != 0 || f.right != 0 || f.up != 0 || f.turn != 0 || f.nod != 0;
    if (!moves)
        return;
    fly(p.shown.camera, f, std::min(static_cast<double>(io.DeltaTime), 0.1));
    p.dirty = true;
}

// The first click of two selects, the second opens what is selected. On a slow machine both are one.
static void take_click(preview& p, const box& seen)
{
    const bool follows = steady_seconds() - p.face.clicked_at < double_click_seconds;
    p.face.opens_waiting |= p.face.double_clicked;
    p.face.clicked_at = steady_seconds();
    if (p.face.double_clicked && follows)
        return;
    const ImVec2 mouse = ImGui::GetIO().MousePos;
    p.face.click_waits = true;
    p.under_again = false; // until it has been followed
    p.face.click_x = (mouse.x - seen.x) / seen.width;
    p.face.click_y = (mouse.y - seen.y) / seen.height;
}

// While frames are passed on the way to the one that is shown, nobody knows what lies where.
static void follow_click(preview& p)
{
    p.face.waits |= p.face.click_waits;
    if (!p.face.click_waits || p.keeper.settling || p.dirty)
        return;
    p.face.click_waits = false;
    const double x = static_cast<double>(p.face.click_x) * p.shown.wish.width;
    const double y = static_cast<double>(p.face.click_y) * p.shown.wish.height;
    if (!select_at(p, x, y))
        select_nothing(p);
}

static void follow_double_click(preview& p)
{
    if (!p.face.opens_waiting || p.face.click_waits)
        return;
    p.face.opens_waiting = false;
    take_step_back(p);
    if (p.selected)
        open_place(p, selected_place(p));
}

static void take_hand(preview& p, const box& seen)
{
    if (seen.width < 1 || !p.shown.has_show)
        return;
    ImGui::SetCursorScreenPos({seen.x, seen.y});
    ImGui::InvisibleButton(
        "picture", {seen.width, seen.height}, ImGuiButtonFlags_MouseButtonLeft | ImGuiButtonFlags_MouseButtonRight);
    const bool hovered = ImGui::IsItemHovered();
    if (hovered && (ImGui::IsMouseClicked(ImGuiMouseButton_Left) || p.face.double_clicked))
        take_click(p, seen);
    follow_click(p);
    follow_double_click(p);
    fly_by_hand(p, hovered && ImGui::IsMouseClicked(ImGuiMouseButton_Right));
}

void open_place(preview& p, const source_place& place)
{
    std::string problem;
    if (!open_editor(p, place, problem))
        say_for_a_moment(p, problem);
}

void draw_picture(preview& p)
{
    const box place = picture_place(p);
    follow_place(p, place);
    const box seen = fit_picture(place, p.shown.wish.width, p.shown.wish.height);
    p.face.picture_x = seen.x;
    p.face.picture_y = seen.y;
    p.face.picture_width = seen.width;
    p.face.picture_height = seen.height;
    begin_place("stage", layout_of(p).picture, p.face.shows_overlay ? color_backdrop : rgb(0));
    ImDrawList* list = ImGui::GetWindowDrawList();
    const float top = p.shown.from_top ? 0.0f : 1.0f;
    if (p.shown.has_show)
        list->AddImage(reinterpret_cast<ImTextureID>(static_cast<uintptr_t>(p.shown.color_texture)), {seen.x, seen.y},
            {seen.x + seen.width, seen.y + seen.height}, {0, top}, {1, 1 - top});
    else
        draw_empty(p, list, seen);
    take_hand(p, seen);
    if (p.face.shows_overlay)
        draw_selected(p, list, seen);
    ImGui::End();
    draw_camera_mark(p, seen);
}
