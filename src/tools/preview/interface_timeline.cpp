#include "tools/preview/actions.h"
#include "tools/preview/interface.h"
#include "tools/preview/interface_places.h"
#include "tools/preview/interface_style.h"

#include <imgui.h>

#include <algorithm>
#include <cmath>

constexpr float ruler_height = 26;
constexpr float row_height = 20;
constexpr float least_row_height = 15;
constexpr float bar_numbers = 14; // below the waveform
constexpr float wave_height = 52 + bar_numbers;
constexpr float silent_height = 6 + bar_numbers; // where there is no music
constexpr float space_between = 6;               // rows and waveform
constexpr float right_margin = 14;
constexpr float handle_reach = 6; // how near a loop's side is taken

namespace {

enum timeline_hand : uint8_t { hand_none, hand_head, hand_loop_from, hand_loop_to, hand_new_loop, hand_view };

} // namespace

namespace {

struct timeline_places {
    box whole;
    float gutter; // width of the tracks' names
    float row;    // height of one
    float rows_top;
    float rows_height; // of what is seen of them
    float wave_top;
    float wave_height;
    time_scale scale;
};

} // namespace

// ---- where things lie ---------------------------------------------------------------------------------

static float height_of_wave(const preview& p)
{
    return p.build.music.empty() ? silent_height : wave_height;
}

static float wanted_timeline_height(const preview& p)
{
    const auto rows = static_cast<float>(std::max<size_t>(p.face.rows.size(), 3));
    return ruler_height + rows * row_height + space_between * 2 + height_of_wave(p);
}

window_layout layout_of(const preview& p)
{
    return lay_out_window(static_cast<float>(p.window.width), static_cast<float>(p.window.height), p.face.shows_overlay,
        wanted_timeline_height(p));
}

static timeline_places places_of(const preview& p)
{
    timeline_places t;
    t.whole = layout_of(p).timeline;
    t.gutter = t.whole.width < 1100 ? 132.0f : 186.0f;
    t.wave_height = height_of_wave(p);
    t.rows_top = t.whole.y + ruler_height;
    t.rows_height = std::max(0.0f, t.whole.height - ruler_height - t.wave_height - space_between * 2);
    const auto rows = static_cast<float>(std::max<size_t>(p.face.rows.size(), 1));
    t.row = std::clamp(std::floor(t.rows_height / rows), least_row_height, row_height);
    t.wave_top = t.rows_top + t.rows_height + space_between;
    const bool whole_show = p.face.timeline_to <= p.face.timeline_from;
    t.scale.from = whole_show ? 0 : p.face.timeline_from;
    t.scale.to = whole_show ? std::max(p.time.end, 1.0) : p.face.timeline_to;
    t.scale.x = t.whole.x + t.gutter;
    t.scale.width = std::max(1.0f, t.whole.width - t.gutter - right_margin);
    return t;
}

static void keep_view(preview& p, const time_scale& scale)
{
    p.face.timeline_from = scale.from;
    p.face.timeline_to = scale.to;
    if (scale.from <= 0 && scale.to >= p.time.end)
        p.face.timeline_from = p.face.timeline_to = 0; // follows the show's length
}

static void take_rows(preview& p)
{
    if (p.face.rows_of == p.build.number + 1 || !p.shown.has_show)
        return;
    p.face.rows_of = p.build.number + 1;
    p.face.rows = rows_of_timeline(p.shown.production, p.build);
}

static bool is_silent(const preview& p, uint32_t track) // muted, or another one is soloed
{
    return ((p.soloed != 0 ? ~p.soloed : p.muted) >> track & 1) != 0;
}

// ---- ruler and grid --------------------------------------------------------------------------------------

static void draw_ruler(const preview& p, const timeline_places& t, ImDrawList* list)
{
    const double step = ruler_step(t.scale, 64);
    const float y = t.whole.y;
    for (double n = std::ceil(t.scale.from / step); n * step <= t.scale.to + 1e-9; ++n) {
        const float x = std::round(x_of_time(t.scale, n * step)) + 0.5f;
        list->AddLine({x, y + ruler_height - 7}, {x, y + ruler_height - 1}, color_faint);
        if (n * step <= p.time.end)
            draw_text(list, fonts().small, x + 4, y + 11, color_dim, ruler_text(n * step, step));
    }
}

static void draw_beats(const preview& p, const timeline_places& t, ImDrawList* list)
{
    if (p.build.bpm <= 0 || p.build.beats_per_bar <= 0)
        return;
    const double beat = 60 / p.build.bpm;
    const double bar = beat * p.build.beats_per_bar;
    const double points_a_second = t.scale.width / (t.scale.to - t.scale.from);
    const float top = t.rows_top, bottom = t.wave_top + t.wave_height;
    if (beat * points_a_second >= 7)
        for (double n = std::ceil(t.scale.from / beat); n * beat <= std::min(t.scale.to, p.time.end); ++n) {
            const float x = std::round(x_of_time(t.scale, n * beat)) + 0.5f;
            list->AddLine({x, t.wave_top}, {x, bottom}, rgb(0x222226));
        }
    const uint32_t line_step = bar_step(t.scale, bar, 9);
    const uint32_t text_step = bar_step(t.scale, bar, 30);
    for (double n = std::ceil(t.scale.from / bar / line_step) * line_step; n * bar <= std::min(t.scale.to, p.time.end);
         n += line_step) {
        const float x = std::round(x_of_time(t.scale, n * bar)) + 0.5f;
        const bool has_text = std::fmod(n, text_step) == 0;
        list->AddLine({x, top}, {x, bottom}, has_text ? rgb(0x2e2e33) : rgb(0x242428));
        if (has_text)
            draw_text(list, fonts().small, x + 4, bottom - 7, color_faint, std::to_string(static_cast<int>(n) + 1));
    }
}

// Why there is no waveform yet, or none at all.
static std::string silence_text(const preview& p)
{
    const std::string trouble = sound_trouble(p.sound);
    return trouble.empty() && !p.build.music.empty() ? "reading the music …" : trouble;
}

static void draw_waveform(const preview& p, const timeline_places& t, ImDrawList* list)
{
    const float middle = t.wave_top + (t.wave_height - bar_numbers) / 2;
    const std::span<const waveform_column> columns = sound_columns(p.sound);
    if (columns.empty())
        return draw_text_within(
            list, fonts().small, t.scale.x + 8, middle, t.scale.width - 16, color_faint, silence_text(p));
    const double second = (t.scale.to - t.scale.from) / t.scale.width;
    const waveform_column all = waveform_between(columns, 0, p.time.end);
    const float loudest = std::max({all.highest, -all.lowest, 0.05f});
    const float half = (t.wave_height - bar_numbers) / 2 - 1;
    const auto height_of = [&](float value) { return std::clamp(value / loudest, 0.02f, 1.0f) * half; };
    for (float x = 0; x < t.scale.width; ++x) {
        const double from = t.scale.from + x * second;
        if (from >= p.time.end)
            break;
        const waveform_column column = waveform_between(columns, from, from + second);
        const float left = t.scale.x + x;
        const float inner = height_of(column.loudness);
        list->AddRectFilled(
            {left, middle - height_of(column.highest)}, {left + 1, middle + height_of(-column.lowest)}, rgb(0x5c4a36));
        list->AddRectFilled({left, middle - inner}, {left + 1, middle + inner}, rgb(0xa97b45));
    }
}

// ---- clips ---------------------------------------------------------------------------------------------

namespace {

struct clip_look {
    ImU32 fill;
    ImU32 text;
    ImU32 edge; // 0: none
};

} // namespace

static clip_look look_of_clip(const preview& p, const timeline_clip& clip, bool is_active, bool is_hovered)
{
    if (is_silent(p, clip.track))
        return {rgb(0x1e1e21), color_faint, rgb(0x2a2a2e)};
    if (clip.scene == 0)
        return {rgb(0x1e1e21), color_faint, is_active ? color_accent_dim : rgb(0x2a2a2e)};
    if (clip.into_texture)
        return is_active ? clip_look{rgb(0x2c4a54), rgb(0xd6ecf2), rgb(0x5b8c9b)}
                         : clip_look{is_hovered ? rgb(0x2d4148) : rgb(0x26353b), rgb(0x8ea6ae), 0};
    return is_active ? clip_look{rgb(0x5f4522), rgb(0xffe8c8), rgb(0xb07f42)}
                     : clip_look{is_hovered ? rgb(0x3d3c41) : rgb(0x313136), rgb(0xaaa69f), 0};
}

static void draw_clip(const preview& p, const timeline_places& t, ImDrawList* list, const timeline_clip& clip, float y,
    bool is_active, bool is_hovered)
{
    const float left = std::max(x_of_time(t.scale, clip.from / 100.0), t.scale.x - 8);
    const float right = std::min(x_of_time(t.scale, clip.to / 100.0), t.scale.x + t.scale.width + 8);
    if (right < t.scale.x || left > t.scale.x + t.scale.width)
        return;
    const clip_look look = look_of_clip(p, clip, is_active, is_hovered);
    const ImVec2 from(std::round(left), y + 1),
        to(std::max(std::round(right) - 1, std::round(left) + 2), y + t.row - 1);
    list->AddRectFilled(from, to, look.fill, 3);
    if (look.edge != 0)
        list->AddRect({from.x + 0.5f, from.y + 0.5f}, {to.x - 0.5f, to.y - 0.5f}, look.edge, 3);
    const bool is_selected = p.selected && p.selected->track == clip.track && p.selected->layer == clip.layer;
    if (is_selected)
        list->AddRect({from.x - 0.5f, from.y - 0.5f}, {to.x + 0.5f, to.y + 0.5f}, color_text, 3.5f);
    const float text_x = std::max(from.x, t.scale.x) + 6;
    if (to.x - text_x > 14)
        draw_text_within(list, fonts().small, text_x, y + t.row / 2, to.x - text_x - 5, look.text, clip.name);
}

static void tell_clip(const timeline_clip& clip)
{
    const double from = clip.from / 100.0, to = clip.to / 100.0;
    std::string text = clip.name.empty() ? "a clip of track " + std::to_string(clip.track + 1) : clip.name;
    text += "\n" + clock_text(from) + " to " + clock_text(to);
    if (clip.into_texture)
        text += "\ndraws into a picture";
    if (clip.scene == 0)
        text += "\ndraws nothing itself";
    if (clip.place.line > 0)
        text += "\n" + place_text(clip.place.file, clip.place.line, 48) + ", double click opens it";
    hint_here(text);
}

static const timeline_clip* clip_under(const preview& p, const timeline_places& t, const ImVec2& mouse)
{
    if (mouse.y < t.rows_top || mouse.y >= t.rows_top + t.rows_height || mouse.x < t.scale.x)
        return nullptr;
    const auto row = static_cast<size_t>((mouse.y - t.rows_top + p.face.rows_scroll) / t.row);
    const double seconds = time_of_x(t.scale, mouse.x);
    if (row >= p.face.rows.size() || seconds < 0)
        return nullptr;
    return clip_at(p.face.rows[row], static_cast<uint32_t>(seconds * 100));
}

// A small square letter of a track's head. True: pressed.
static bool track_switch(const char* letter, float x, float y, bool on, ImU32 color, const char* hint)
{
    ImGui::SetCursorScreenPos({x, y - 8});
    const bool pressed = ImGui::InvisibleButton(letter, {17, 16});
    const bool hovered = ImGui::IsItemHovered();
    ImDrawList* list = ImGui::GetWindowDrawList();
    if (on || hovered)
        list->AddRectFilled({x, y - 7}, {x + 17, y + 7}, on ? color : color_hovered, 3);
    draw_text(list, fonts().small, x + 8.5f, y, on ? color_panel : color_faint, letter, text_middle);
    if (hovered)
        hint_here(hint);
    return pressed;
}

static void draw_track_head(preview& p, const timeline_places& t, const timeline_row& row, float y)
{
    const uint32_t track = row.track;
    const float middle = y + t.row / 2;
    const timeline_clip* active = clip_at(row, static_cast<uint32_t>(p.time.position * 100 + 1e-6));
    ImDrawList* list = ImGui::GetWindowDrawList();
    const bool silent = is_silent(p, track);
    draw_text(list, fonts().small, t.whole.x + 30, middle, silent ? color_faint : color_dim, std::to_string(track + 1),
        text_right);
    const float switches = t.whole.x + t.gutter - 48;
    if (active != nullptr)
        draw_text_within(list, fonts().small, t.whole.x + 40, middle, switches - t.whole.x - 46,
            silent ? color_faint : color_accent, active->name);
    ImGui::PushID(static_cast<int>(track));
    const bool muted = (p.muted >> track & 1) != 0, soloed = (p.soloed >> track & 1) != 0;
    if (track_switch("M", switches, middle, muted, color_error, "mute: this track is not drawn"))
        mute_track(p, track, !muted);
    if (track_switch("S", switches + 20, middle, soloed, color_accent, "solo: only these tracks are drawn"))
        solo_track(p, track, !soloed);
    ImGui::PopID();
}

static void draw_rows(preview& p, const timeline_places& t, const timeline_clip* hovered)
{
    ImDrawList* list = ImGui::GetWindowDrawList();
    list->PushClipRect({t.whole.x, t.rows_top}, {t.whole.x + t.whole.width, t.rows_top + t.rows_height}, true);
    const auto tick = static_cast<uint32_t>(p.time.position * 100 + 1e-6);
    for (size_t n = 0; n < p.face.rows.size(); ++n) {
        const timeline_row& row = p.face.rows[n];
        const float y = t.rows_top + static_cast<float>(n) * t.row - p.face.rows_scroll;
        if (y + t.row < t.rows_top || y > t.rows_top + t.rows_height)
            continue;
        draw_track_head(p, t, row, y);
        list->PushClipRect({t.scale.x, t.rows_top}, {t.scale.x + t.scale.width, t.rows_top + t.rows_height}, true);
        for (const timeline_clip& clip : row.clips)
            draw_clip(p, t, list, clip, y, tick >= clip.from && tick < clip.to, &clip == hovered);
        list->PopClipRect();
    }
    list->PopClipRect();
    const float content = static_cast<float>(p.face.rows.size()) * t.row;
    if (content > t.rows_height) { // how much of them is seen
        const float x = t.whole.x + t.whole.width - 7;
        const float from = t.rows_top + p.face.rows_scroll / content * t.rows_height;
        list->AddRectFilled({x, from}, {x + 4, from + t.rows_height * t.rows_height / content}, rgb(0x3a3a40), 2);
    }
}

// ---- loop and play head -------------------------------------------------------------------------------------

static void draw_loop_brace(const preview& p, const timeline_places& t, ImDrawList* list)
{
    if (!p.time.has_loop)
        return;
    const float left = std::round(x_of_time(t.scale, p.time.loop_from));
    const float right = std::round(x_of_time(t.scale, p.time.loop_to));
    const float top = t.whole.y + ruler_height - 5, bottom = t.wave_top + t.wave_height;
    list->PushClipRect({t.scale.x - 1, t.whole.y}, {t.scale.x + t.scale.width + right_margin, bottom}, true);
    list->AddRectFilled({left, t.rows_top}, {right, bottom}, with_alpha(color_accent, 0.05f));
    list->AddRectFilled({left, top}, {right, top + 4}, with_alpha(color_accent, 0.55f), 2);
    for (const float x : {left, right}) {
        const float inward = x == left ? 1.0f : -1.0f;
        list->AddLine({x + 0.5f, t.rows_top}, {x + 0.5f, bottom}, with_alpha(color_accent, 0.35f));
        list->AddTriangleFilled({x, top - 6}, {x + inward * 8, top}, {x, top + 4}, color_accent);
    }
    list->PopClipRect();
}

static void draw_head(const preview& p, const timeline_places& t, ImDrawList* list)
{
    const float x = std::round(x_of_time(t.scale, p.time.position)) + 0.5f;
    if (x < t.scale.x - 1 || x > t.scale.x + t.scale.width + 2)
        return;
    const float top = t.whole.y + ruler_height - 9;
    list->AddLine({x, top}, {x, t.wave_top + t.wave_height}, color_accent, 1.5f);
    list->AddTriangleFilled({x - 5.5f, top - 3}, {x + 5.5f, top - 3}, {x, top + 5}, color_accent);
    if (!p.time.scrubbing)
        return;
    const std::string text = clock_text(p.time.position);
    const float width = size_of_text(fonts().small, text).x + 12;
    const float left = std::clamp(x - width / 2, t.scale.x, t.scale.x + t.scale.width - width);
    list->AddRectFilled({left, t.whole.y + 1}, {left + width, t.whole.y + 15}, color_accent, 3);
    draw_text(list, fonts().small, left + 6, t.whole.y + 8, color_panel, text);
}

// ---- the hand ---------------------------------------------------------------------------------------------

static timeline_hand hand_at(const preview& p, const timeline_places& t, const ImVec2& mouse)
{
    if (ImGui::IsMouseDown(ImGuiMouseButton_Middle))
        return hand_view;
    if (ImGui::GetIO().KeyShift)
        return hand_new_loop;
    if (p.time.has_loop && mouse.y < t.rows_top) {
        if (std::fabs(mouse.x - x_of_time(t.scale, p.time.loop_from) - 3) < handle_reach)
            return hand_loop_from;
        if (std::fabs(mouse.x - x_of_time(t.scale, p.time.loop_to) + 3) < handle_reach)
            return hand_loop_to;
    }
    return hand_head;
}

static void move_hand(preview& p, timeline_places& t, const ImVec2& mouse, bool moved)
{
    const double at = std::clamp(time_of_x(t.scale, mouse.x), 0.0, p.time.end);
    switch (static_cast<timeline_hand>(p.face.hand)) {
    case hand_none:
        return;
    case hand_head:
        if (moved)
            transport_scrub(p.time, at);
        return;
    case hand_loop_from:
        return transport_loop_from(p.time, at);
    case hand_loop_to:
        return transport_loop_to(p.time, at);
    case hand_new_loop:
        if (std::fabs(at - p.face.hand_at) < (t.scale.to - t.scale.from) / t.scale.width * 3)
            return;
        transport_no_loop(p.time);
        p.time.loop_from = p.time.loop_to = std::min(at, p.face.hand_at);
        return transport_loop_to(p.time, std::max(at, p.face.hand_at));
    case hand_view:
        pan_time(t.scale,
            -static_cast<double>(ImGui::GetIO().MouseDelta.x) / t.scale.width * (t.scale.to - t.scale.from),
            p.time.end);
        return keep_view(p, t.scale);
    }
}

static void take_wheel(preview& p, timeline_places& t, const ImVec2& mouse)
{
    const ImGuiIO& io = ImGui::GetIO();
    if (io.MouseWheel == 0 && io.MouseWheelH == 0)
        return;
    const double shown = t.scale.to - t.scale.from;
    if (mouse.x < t.scale.x) {
        const float content = static_cast<float>(p.face.rows.size()) * t.row;
        p.face.rows_scroll -= io.MouseWheel * t.row * 2;
        p.face.rows_scroll = std::clamp(p.face.rows_scroll, 0.0f, std::max(0.0f, content - t.rows_height));
        return;
    }
    if (io.KeyShift || io.MouseWheelH != 0)
        pan_time(t.scale, -static_cast<double>(io.MouseWheel + io.MouseWheelH) * shown * 0.1, p.time.end);
    else
        zoom_time(t.scale, time_of_x(t.scale, mouse.x), std::pow(0.8, static_cast<double>(io.MouseWheel)), p.time.end);
    keep_view(p, t.scale);
}

static void take_hand(preview& p, timeline_places& t, const timeline_clip* clip)
{
    const ImVec2 mouse = ImGui::GetIO().MousePos;
    if (ImGui::IsItemActivated()) {
        p.face.hand = hand_at(p, t, mouse);
        p.face.hand_at = std::clamp(time_of_x(t.scale, mouse.x), 0.0, p.time.end);
    }
    if (clip != nullptr && p.face.double_clicked) {
        p.face.hand = hand_none;
        open_place(p, clip->place);
    }
    const ImVec2 delta = ImGui::GetIO().MouseDelta;
    if (ImGui::IsItemActive())
        move_hand(p, t, mouse, ImGui::IsItemActivated() || delta.x != 0);
    if (ImGui::IsItemDeactivated()) {
        if (p.time.scrubbing)
            transport_let_go(p.time);
        p.face.hand = hand_none;
    }
}

// While it plays, the play head stays in sight.
static void follow_head(preview& p, timeline_places& t)
{
    const double shown = t.scale.to - t.scale.from;
    const bool follows = p.time.playing && !p.time.scrubbing && p.face.hand == hand_none;
    if (!follows || p.face.timeline_to <= 0 || (p.time.position >= t.scale.from && p.time.position <= t.scale.to))
        return;
    pan_time(t.scale, p.time.position - t.scale.from - shown * 0.05, p.time.end);
    keep_view(p, t.scale);
}

static void show_cursor(const preview& p, const timeline_places& t)
{
    const timeline_hand hand
        = p.face.hand != hand_none ? static_cast<timeline_hand>(p.face.hand) : hand_at(p, t, ImGui::GetIO().MousePos);
    if (hand == hand_loop_from || hand == hand_loop_to)
        ImGui::SetMouseCursor(ImGuiMouseCursor_ResizeEW);
    if (hand == hand_view)
        ImGui::SetMouseCursor(ImGuiMouseCursor_ResizeAll);
}

void draw_timeline(preview& p)
{
    take_rows(p);
    timeline_places t = places_of(p);
    if (t.whole.height < ruler_height + t.wave_height)
        return;
    begin_place("timeline", t.whole, color_panel);
    follow_head(p, t);
    const ImVec2 mouse = ImGui::GetIO().MousePos;
    ImGui::SetCursorScreenPos({t.scale.x, t.whole.y});
    note_place(p, "timeline", t.scale.x, t.whole.y, t.scale.width, t.whole.height);
    ImGui::InvisibleButton("time", {t.scale.width + right_margin, t.whole.height},
        ImGuiButtonFlags_MouseButtonLeft | ImGuiButtonFlags_MouseButtonMiddle);
    const bool hovered = ImGui::IsItemHovered();
    const timeline_clip* clip = hovered ? clip_under(p, t, mouse) : nullptr;
    take_hand(p, t, clip);
    if (hovered)
        show_cursor(p, t);
    if (ImGui::IsWindowHovered(ImGuiHoveredFlags_AllowWhenBlockedByActiveItem))
        take_wheel(p, t, mouse);
    ImDrawList* list = ImGui::GetWindowDrawList();
    list->AddRectFilled(
        {t.scale.x, t.rows_top}, {t.whole.x + t.whole.width, t.whole.y + t.whole.height}, rgb(0x141416));
    if (p.shown.has_show) {
        draw_beats(p, t, list);
        draw_ruler(p, t, list);
        draw_rows(p, t, clip);
        draw_waveform(p, t, list);
        draw_loop_brace(p, t, list);
        draw_head(p, t, list);
    }
    list->AddLine({t.whole.x, t.rows_top - 0.5f}, {t.whole.x + t.whole.width, t.rows_top - 0.5f}, color_line);
    list->AddLine({t.scale.x - 0.5f, t.whole.y}, {t.scale.x - 0.5f, t.whole.y + t.whole.height}, color_line);
    if (clip != nullptr && p.face.hand == hand_none && !ImGui::IsMouseDown(ImGuiMouseButton_Left))
        tell_clip(*clip);
    ImGui::End();
}
