#include "tools/preview/actions.h"
#include "tools/preview/interface.h"
#include "tools/preview/interface_style.h"
#include "tools/preview/picture_outline.h"

#include <imgui.h>

#include <algorithm>
#include <cmath>
#include <cstring>

constexpr uint32_t curve_samples = 160;
constexpr float curve_height = 36;
constexpr float curve_gap = 12; // between two beside each other

static const scene_object* selected_object(const preview& p)
{
    const scene_record* scene = table_get(p.shown.production.scene_table, p.selected->scene);
    return scene != nullptr && p.selected->object < scene->object_count ? &scene->objects[p.selected->object] : nullptr;
}

static const char* kind_text(const scene_object& object)
{
    switch (static_cast<object_kind>(object.type)) {
    case object_model:
        return "mesh";
    case object_genmesh:
        return "mesh effect";
    case object_text:
        return "text";
    case object_kind_count:
        break;
    }
    return "nothing that is drawn";
}

static std::string object_name(const preview& p, const scene_object& object)
{
    const std::string name = name_of_mark(p.build, section_scenes, p.selected->scene, p.selected->object + 1);
    if (!name.empty())
        return name;
    if (object.type == object_text)
        return "\"" + std::string(object.text, strnlen(object.text, sizeof object.text)) + "\"";
    return "object " + std::to_string(p.selected->object + 1);
}

static std::string scene_name(const preview& p)
{
    const std::string name = name_of_mark(p.build, section_scenes, p.selected->scene, 0);
    if (!name.empty())
        return name;
    const scene_record* scene = table_get(p.shown.production.scene_table, p.selected->scene);
    return scene == nullptr ? "" : std::string(scene->name, strnlen(scene->name, sizeof scene->name));
}

// ---- curves -------------------------------------------------------------------------------------------

static void take_curves(preview& p)
{
    const bool same = p.face.curves_of == p.selected && p.face.curves_build == p.build.number
        && p.time.position >= p.face.curves.from && p.time.position < p.face.curves.to;
    if (same)
        return;
    p.face.curves_of = p.selected;
    p.face.curves_build = p.build.number;
    const auto tick = static_cast<uint32_t>(p.time.position * 100 + 1e-6);
    p.face.curves = moving_values_of(p.shown.production, *p.selected, tick, curve_samples);
}

// Where the values stand now: between two samples.
static float value_at(const std::vector<float>& values, double share)
{
    if (values.empty())
        return 0;
    const double at = std::clamp(share, 0.0, 1.0) * static_cast<double>(values.size() - 1);
    const auto index = std::min(static_cast<size_t>(at), values.size() - 1);
    const auto next = std::min(index + 1, values.size() - 1);
    const auto part = static_cast<float>(at - std::floor(at));
    return values[index] + (values[next] - values[index]) * part;
}

static bool is_within(double share) // of the curves' span
{
    return share >= 0 && share <= 1;
}

static void draw_curve(const moving_value& value, double share, ImDrawList* list, const box& place)
{
    const value_range range = range_of_values(value.values);
    const auto y_of = [&](float v) {
        const float kept = std::isfinite(v) ? v : range.least;
        return place.y + place.height - (kept - range.least) / (range.most - range.least) * place.height;
    };
    list->AddRectFilled({place.x, place.y}, {place.x + place.width, place.y + place.height}, rgb(0x121214), 3);
    if (range.least < 0 && range.most > 0)
        list->AddLine(
            {place.x, std::round(y_of(0)) + 0.5f}, {place.x + place.width, std::round(y_of(0)) + 0.5f}, color_line);
    ImVec2 points[curve_samples];
    const size_t count = std::min<size_t>(value.values.size(), curve_samples);
    for (size_t n = 0; n < count; ++n)
        points[n] = {place.x + place.width * static_cast<float>(n) / static_cast<float>(std::max<size_t>(count, 2) - 1),
            y_of(value.values[n])};
    list->PushClipRect({place.x, place.y}, {place.x + place.width, place.y + place.height}, true);
    if (count > 1)
        list->AddPolyline(points, static_cast<int>(count), rgb(0xc9a26b), 0, 1.5f);
    list->PopClipRect();
    if (!is_within(share))
        return;
    const float x = std::round(place.x + place.width * static_cast<float>(share)) + 0.5f;
    list->AddLine({x, place.y}, {x, place.y + place.height}, with_alpha(color_accent, 0.5f));
    list->AddCircleFilled({x, y_of(value_at(value.values, share))}, 3, color_accent, 16);
}

static void draw_value(const moving_value& value, double share, float width)
{
    ImDrawList* list = ImGui::GetWindowDrawList();
    const ImVec2 from = ImGui::GetCursorScreenPos();
    const std::string now = is_within(share) ? value_text(static_cast<double>(value_at(value.values, share))) : "";
    draw_text_within(
        list, fonts().small, from.x, from.y + 8, width - size_of_text(fonts().small, now).x - 8, color_dim, value.name);
    draw_text(list, fonts().small, from.x + width, from.y + 8, color_accent, now, text_right);
    draw_curve(value, share, list, {from.x, from.y + 17, width, curve_height});
    ImGui::Dummy({width, 17 + curve_height});
    if (!ImGui::IsItemHovered() || value.values.empty())
        return;
    const auto [least, most] = std::minmax_element(value.values.begin(), value.values.end());
    hint_here(value.name + "\nfrom " + value_text(static_cast<double>(*least)) + " to "
        + value_text(static_cast<double>(*most)));
}

static void draw_curves(preview& p)
{
    take_curves(p);
    const moving_values& curves = p.face.curves;
    if (curves.values.empty())
        return panel_words("Nothing of it moves.", color_faint);
    const double span = curves.to - curves.from;
    const double share = span > 0 ? (p.time.position - curves.from) / span : 0;
    const float width = ImGui::GetContentRegionAvail().x;
    const float half = std::floor((width - curve_gap) / 2);
    for (size_t n = 0; n < curves.values.size(); ++n) {
        if (n % 2 == 1)
            ImGui::SameLine(0, curve_gap);
        draw_value(curves.values[n], share, half);
    }
    const ImVec2 from = ImGui::GetCursorScreenPos();
    ImDrawList* list = ImGui::GetWindowDrawList();
    draw_text(list, fonts().small, from.x, from.y + 5, color_faint, clock_text(curves.from));
    draw_text(list, fonts().small, from.x + width, from.y + 5, color_faint, clock_text(curves.to), text_right);
    ImGui::Dummy({width, 12});
}

// ---- the object ------------------------------------------------------------------------------------------

static void draw_place(preview& p, const source_place& place)
{
    if (place.line == 0)
        return;
    const ImVec2 from = ImGui::GetCursorScreenPos();
    const float width = ImGui::GetContentRegionAvail().x;
    const std::string text = place_text(place.file, place.line, 34);
    draw_text(ImGui::GetWindowDrawList(), fonts().text, from.x, from.y + 9, color_dim, "source");
    ImGui::SetCursorScreenPos({from.x + width - size_of_text(fonts().text, text).x, from.y});
    if (place_link("source", text, "opens the editor there"))
        open_place(p, place);
}

static std::string triple(const float values[3])
{
    const auto one = [](float v) { return value_text(static_cast<double>(v)); };
    return one(values[0]) + ",  " + one(values[1]) + ",  " + one(values[2]);
}

static void draw_placement(const preview& p)
{
    if (p.keeper.settling)
        return panel_line("at", "…", color_dim);
    const std::optional<placement> now = placement_of(p.shown.drawing.f, p.shown.layers, *p.selected);
    if (!now)
        return panel_line("at", "not drawn now", color_dim);
    panel_line("at", triple(now->position));
    if (now->rotation[0] != 0 || now->rotation[1] != 0 || now->rotation[2] != 0)
        panel_line("rotation", triple(now->rotation));
    if (now->scale[0] != 1 || now->scale[1] != 1 || now->scale[2] != 1)
        panel_line("scale", triple(now->scale));
}

static void draw_object(preview& p, const scene_object& object)
{
    const ImVec2 from = ImGui::GetCursorScreenPos();
    const float width = ImGui::GetContentRegionAvail().x;
    ImDrawList* list = ImGui::GetWindowDrawList();
    draw_text_within(list, fonts().bold, from.x, from.y + 10, width - 90, color_accent, object_name(p, object));
    if (p.under.size() > 1)
        draw_text(list, fonts().small, from.x + width, from.y + 10, color_faint,
            std::to_string(p.under_at + 1) + " of " + std::to_string(p.under.size()) + " here", text_right);
    ImGui::Dummy({width, 20});
    ImGui::PushStyleVar(ImGuiStyleVar_ItemSpacing, ImVec2(8, 1));
    panel_line("kind", kind_text(object));
    panel_line("scene", scene_name(p));
    panel_line("track", std::to_string(p.selected->track + 1));
    draw_place(p, selected_place(p));
    if (p.shown.at_frame)
        draw_placement(p);
    ImGui::PopStyleVar();
}

void draw_selection(preview& p)
{
    const bool has_one = p.selected && p.shown.has_show;
    if (!begin_panel("Selection"))
        return;
    const scene_object* object = has_one ? selected_object(p) : nullptr;
    if (object == nullptr)
        panel_words(
            "Click into the picture: what lies there tells its line of the source, and what of it moves.", color_faint);
    else {
        draw_object(p, *object);
        ImGui::Dummy({0, 2});
        draw_curves(p);
    }
    end_panel();
}
